#pragma once

#include "Containers/Array.h"
#include "Containers/ArrayView.h"
#include "Containers/UnrealString.h"

#include <type_traits>

/** What is known about a property besides its name and value, for those who edit it. */
struct FHostPropertyHints
{
	bool bHasRange = false;
	double Min = 0.0;
	double Max = 0.0;
	/** Names of the numbers from Min on; empty for plain numbers. */
	TArrayView<const TCHAR* const> Choices;
};

/**
 * Reads or writes the configuration properties of an object, which the object shows one by one:
 *
 *   void UMySettings::VisitConfigProperties(FHostConfigVisitor& Visitor)
 *   {
 *       Visitor.Group(TEXT("General"));
 *       Visitor.Explain(TEXT("The language of the answers."));
 *       Visitor.Property(TEXT("Language"), Language);
 *       Visitor.Property(TEXT("MaxCount"), MaxCount, 1, 100);
 *   }
 *
 * The values go to the store of Host/HostConfigStore.h: at first one in memory, gone with the process, until the
 * program puts one that writes files in its place.
 */
class COREUOBJECT_API FHostConfigVisitor
{
public:
	virtual ~FHostConfigVisitor() = default;
	virtual void Property(const TCHAR* Name, FString& Value) = 0;
	virtual void Property(const TCHAR* Name, bool& Value) = 0;
	virtual void Property(const TCHAR* Name, int32& Value) = 0;
	virtual void Property(const TCHAR* Name, float& Value) = 0;
	virtual void Property(const TCHAR* Name, double& Value) = 0;
	/** Kept as Name.Num and Name.0, Name.1, ... */
	virtual void Property(const TCHAR* Name, TArray<FString>& Value) = 0;

	/** The properties that follow belong together under this heading, where one is shown. */
	virtual void Group(const TCHAR* Heading) {}
	/** What the next property is for, in a sentence or two for users. */
	virtual void Explain(const TCHAR* Sentence) {}
	/** Told right before the property of that name. */
	virtual void Describe(const TCHAR* Name, const FHostPropertyHints& Hints) {}

	/** A number that was edited by hand is brought into the range. */
	void Property(const TCHAR* Name, int32& Value, int32 Min, int32 Max);
	void Property(const TCHAR* Name, double& Value, double Min, double Max);
	/**
	 * A number that stands for one of the named choices, counted from 0. One that stands for none comes as it is, for the
	 * object to make sense of. The names must outlive the visitor.
	 */
	void Choice(const TCHAR* Name, int32& Value, TArrayView<const TCHAR* const> Choices);
	/** Kept as its number. */
	template <typename TEnum>
	requires std::is_enum_v<TEnum>
	void Enum(const TCHAR* Name, TEnum& Value, TEnum First, TEnum Last)
	{
		int32 Number = static_cast<int32>(Value);
		Property(Name, Number, static_cast<int32>(First), static_cast<int32>(Last));
		Value = static_cast<TEnum>(Number);
	}
};

/** Numbers as configurations hold them: the shortest text that reads back as the same number, whatever the locale. */
struct COREUOBJECT_API FHostConfigNumber
{
	static FString ToText(int32 Value);
	static FString ToText(float Value);
	static FString ToText(double Value);
	/** False, with the value left as it was, unless the text as a whole is a finite number of the type. */
	static bool Read(const FString& Text, int32& OutValue);
	static bool Read(const FString& Text, float& OutValue);
	static bool Read(const FString& Text, double& OutValue);
};
