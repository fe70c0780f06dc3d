#pragma once

#include "Containers/Map.h"
#include "Containers/UnrealString.h"
#include "Misc/Optional.h"
#include "Templates/SharedPointer.h"
#include "UObject/NameTypes.h"

struct FDateTime;
struct FTimespan;
class FText;
class FCulture;
using FCulturePtr = TSharedPtr<FCulture, ESPMode::ThreadSafe>;
struct FFormatArgumentValue;
using FFormatNamedArguments = TMap<FString, FFormatArgumentValue>;
using FFormatOrderedArguments = TArray<FFormatArgumentValue>;

namespace EDateTimeStyle
{
	enum Type
	{
		Default,
		Short,
		Medium,
		Long,
		Full
	};
}

namespace ETextComparisonLevel
{
	enum Type
	{
		Default,
		Primary,
		Secondary,
		Tertiary,
		Quaternary,
		Quinary
	};
}

/** What a text is made of. Immutable and shared by copies. */
struct FTextData
{
	FString Display;
	FString Namespace;
	FString Key;
};

/** A pattern for FText::Format. `{0}` and `{Name}` stand for arguments, a backtick takes the meaning from what follows it. */
class FTextFormat;

/**
 * Text for the user. Copies share it. Localisable text knows its namespace and key; text made from strings, numbers or by
 * Format does not. Written in English, whatever the locale of the process.
 */
class CORE_API FText
{
public:
	FText() = default;

	static const FText& GetEmpty();
	static FText FromString(const FString& String);
	static FText FromString(FString&& String);
	static FText FromName(const FName& Name) { return FromString(Name.ToString()); }
	static FText AsCultureInvariant(const FString& String) { return FromString(String); }
	/** What LOCTEXT and NSLOCTEXT make. */
	static FText AsLocalizable_Advanced(const TCHAR* Namespace, const TCHAR* Key, const TCHAR* Source);

	const FString& ToString() const;
	bool IsEmpty() const { return ToString().IsEmpty(); }
	/** Letter by letter, respecting case. */
	bool EqualTo(const FText& Other, ETextComparisonLevel::Type Level = ETextComparisonLevel::Default) const
	{
		return Data == Other.Data || ToString().Equals(Other.ToString());
	}
	/** Shares its data with Other. Equal texts made apart are not identical. */
	bool IdenticalTo(const FText& Other) const { return Data == Other.Data; }
	FText ToLower() const { return FromString(ToString().ToLower()); }
	FText ToUpper() const { return FromString(ToString().ToUpper()); }

	/** An argument that is missing leaves its placeholder in place. Numbers are written as AsNumber does. */
	static FText Format(const FTextFormat& Pattern, const FFormatNamedArguments& Arguments);
	static FText Format(const FTextFormat& Pattern, const FFormatOrderedArguments& Arguments);
	template <typename... ArgTypes>
	requires(sizeof...(ArgTypes) > 0 && (std::is_constructible_v<FFormatArgumentValue, const ArgTypes&> && ...)) static FText
		Format(const FTextFormat& Pattern, const ArgTypes&... Arguments);
	static FText Join(const FText& Delimiter, const FFormatOrderedArguments& Arguments);
	static FText Join(const FText& Delimiter, const TArray<FText>& Arguments);

	static FText AsNumber(int8 Value) { return AsNumber((int64)Value); }
	static FText AsNumber(int16 Value) { return AsNumber((int64)Value); }
	static FText AsNumber(int32 Value) { return AsNumber((int64)Value); }
	static FText AsNumber(uint8 Value) { return AsNumber((int64)Value); }
	static FText AsNumber(uint16 Value) { return AsNumber((int64)Value); }
	static FText AsNumber(uint32 Value) { return AsNumber((int64)Value); }
	static FText AsNumber(long Value) { return AsNumber((int64)Value); }
	static FText AsNumber(int64 Value);
	static FText AsNumber(uint64 Value);
	static FText AsNumber(float Value) { return AsNumber((double)Value); }
	static FText AsNumber(double Value);
	/** The value is UTC and shown in local time, unless the time zone is the invariant one. */
	static FText AsDate(const FDateTime& DateTime, EDateTimeStyle::Type Style = EDateTimeStyle::Default,
		const FString& TimeZone = FString(), const FCulturePtr& Culture = nullptr);
	static FString GetInvariantTimeZone();

private:
	friend class FTextInspector;
	explicit FText(TSharedPtr<const FTextData>&& InData)
		: Data(static_cast<TSharedPtr<const FTextData>&&>(InData))
	{
	}
	/** Null for the empty text. */
	TSharedPtr<const FTextData> Data;
};

class FTextFormat
{
public:
	FTextFormat() = default;
	FTextFormat(const FText& InSource)
		: Source(InSource)
	{
	}
	static FTextFormat FromString(const FString& Text) { return FTextFormat(FText::FromString(Text)); }
	const FText& GetSourceText() const { return Source; }

private:
	FText Source;
};

/** One argument of FText::Format: a text or a number, never an FString. */
struct FFormatArgumentValue
{
	FFormatArgumentValue() = default;
	FFormatArgumentValue(const FText& Value)
		: Text(Value)
	{
	}
	template <typename NumberType>
	requires(std::is_arithmetic_v<NumberType> && !std::is_same_v<NumberType, bool> && !std::is_same_v<NumberType, char> &&
		!std::is_same_v<NumberType, TCHAR>) FFormatArgumentValue(NumberType Value)
		: Text(FText::AsNumber(Value))
	{
	}
	/** As it is shown. */
	FText Text;
};

template <typename... ArgTypes>
requires(sizeof...(ArgTypes) > 0 && (std::is_constructible_v<FFormatArgumentValue, const ArgTypes&> && ...)) FText FText::Format(
	const FTextFormat& Pattern, const ArgTypes&... Arguments)
{
	return Format(Pattern, FFormatOrderedArguments{ FFormatArgumentValue(Arguments)... });
}

namespace UE::Text
{
	inline void AddNamed(FFormatNamedArguments&) {}
	template <typename NameType, typename ValueType, typename... Rest>
	void AddNamed(FFormatNamedArguments& Arguments, const NameType& Name, const ValueType& Value, const Rest&... Others)
	{
		Arguments.Add(FString(Name), FFormatArgumentValue(Value));
		AddNamed(Arguments, Others...);
	}
}

/** Looks into a text. Unset where a text has no such part. */
class CORE_API FTextInspector
{
public:
	static TOptional<FString> GetNamespace(const FText& Text);
	static TOptional<FString> GetKey(const FText& Text);
};

// Made once per place and shared from then on. The text is a plain narrow literal.
#define UE_TEXT_LITERAL(Namespace, Key, Source) \
	( \
		[]() -> FText \
		{ \
			static const FText Made = FText::AsLocalizable_Advanced(Namespace, TEXT(Key), TEXT(Source)); \
			return Made; \
		}())
#define NSLOCTEXT(Namespace, Key, Source) UE_TEXT_LITERAL(TEXT(Namespace), Key, Source)
/** In the namespace LOCTEXT_NAMESPACE. */
#define LOCTEXT(Key, Source) UE_TEXT_LITERAL(TEXT(LOCTEXT_NAMESPACE), Key, Source)
/** Text that is the same in every language. */
#define INVTEXT(Source) FText::AsCultureInvariant(FString(TEXT(Source)))
