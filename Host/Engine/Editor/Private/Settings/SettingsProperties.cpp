#include "Settings/SettingsProperties.h"

#include "Host/HostConfig.h"
#include "UObject/UObjectGlobals.h"

// Properties of a settings object as texts, by visiting it as the configuration does. A text that does not fit changes
// nothing and gives a sentence that says what would fit.

namespace
{
	using EKind = FSettingsProperty::EKind;

	class FPropertyLister final : public FHostConfigVisitor
	{
	public:
		TArray<FSettingsProperty> Found;

		void Group(const TCHAR* Heading) override { CurrentGroup = Heading; }
		void Explain(const TCHAR* Sentence) override { Explanation = Sentence; }
		void Describe(const TCHAR* Name, const FHostPropertyHints& InHints) override
		{
			Hints = InHints;
			HintsName = Name;
		}
		using FHostConfigVisitor::Property;
		void Property(const TCHAR* Name, FString& Value) override { Add(Name, EKind::Text); }
		void Property(const TCHAR* Name, bool& Value) override { Add(Name, EKind::Bool); }
		void Property(const TCHAR* Name, int32& Value) override { Add(Name, EKind::WholeNumber); }
		void Property(const TCHAR* Name, float& Value) override { Add(Name, EKind::Number); }
		void Property(const TCHAR* Name, double& Value) override { Add(Name, EKind::Number); }
		void Property(const TCHAR* Name, TArray<FString>& Value) override { Add(Name, EKind::Lines); }

	private:
		void Add(const TCHAR* Name, EKind Kind)
		{
			FSettingsProperty& Property = Found.AddDefaulted_GetRef();
			Property.Name = Name;
			Property.Group = CurrentGroup;
			Property.Description = MoveTemp(Explanation);
			Explanation.Reset();
			Property.Kind = Kind;
			if (HintsName.Equals(Name))
			{
				Property.bHasRange = Hints.bHasRange;
				Property.Min = Hints.Min;
				Property.Max = Hints.Max;
				for (const TCHAR* Choice : Hints.Choices)
				{
					Property.Choices.Add(Choice);
				}
			}
		}

		FString CurrentGroup;
		FString Explanation;
		FString HintsName;
		FHostPropertyHints Hints;
	};

	/** Visits the one property of a name. */
	class FOneProperty : public FHostConfigVisitor
	{
	public:
		explicit FOneProperty(const FString& InName)
			: Name(InName)
		{
		}
		using FHostConfigVisitor::Property;
		void Property(const TCHAR* OtherName, FString& Value) override { VisitIfNamed(OtherName, Value); }
		void Property(const TCHAR* OtherName, bool& Value) override { VisitIfNamed(OtherName, Value); }
		void Property(const TCHAR* OtherName, int32& Value) override { VisitIfNamed(OtherName, Value); }
		void Property(const TCHAR* OtherName, float& Value) override { VisitIfNamed(OtherName, Value); }
		void Property(const TCHAR* OtherName, double& Value) override { VisitIfNamed(OtherName, Value); }
		void Property(const TCHAR* OtherName, TArray<FString>& Value) override { VisitIfNamed(OtherName, Value); }

	protected:
		virtual void Visit(FString& Value) = 0;
		virtual void Visit(bool& Value) = 0;
		virtual void Visit(int32& Value) = 0;
		virtual void Visit(float& Value) = 0;
		virtual void Visit(double& Value) = 0;
		virtual void Visit(TArray<FString>& Value) = 0;

	private:
		template <typename ValueType>
		void VisitIfNamed(const TCHAR* OtherName, ValueType& Value)
		{
			if (FStringView(Name).Equals(FStringView(OtherName)))
			{
				Visit(Value);
			}
		}

		const FString& Name;
	};

	class FPropertyReader final : public FOneProperty
	{
	public:
		using FOneProperty::FOneProperty;
		FString Text;

	protected:
		void Visit(FString& Value) override { Text = Value; }
		void Visit(bool& Value) override { Text = Value ? TEXT("True") : TEXT("False"); }
		void Visit(int32& Value) override { Text = FHostConfigNumber::ToText(Value); }
		void Visit(float& Value) override { Text = FHostConfigNumber::ToText(Value); }
		void Visit(double& Value) override { Text = FHostConfigNumber::ToText(Value); }
		void Visit(TArray<FString>& Value) override { Text = FString::Join(Value, TEXT("\n")); }
	};

	class FPropertyWriter final : public FOneProperty
	{
	public:
		FPropertyWriter(const FSettingsProperty& InProperty, const FString& InText)
			: FOneProperty(InProperty.Name)
			, Edited(InProperty)
			, Text(InText)
		{
		}
		FString Complaint;

	protected:
		void Visit(FString& Value) override { Value = Text; }
		void Visit(bool& Value) override
		{
			const FString Word = Text.TrimStartAndEnd();
			if (Word == TEXT("true") || Word == TEXT("false"))
			{
				Value = Word == TEXT("true");
				return;
			}
			Complaint =
				FString::Printf(TEXT("\"%s\" is neither True nor False. The value stays %s."), *Text, Value ? TEXT("True") : TEXT("False"));
		}
		void Visit(int32& Value) override { Take(Value, TEXT("a whole number")); }
		void Visit(float& Value) override { Take(Value, TEXT("a number")); }
		void Visit(double& Value) override { Take(Value, TEXT("a number")); }
		void Visit(TArray<FString>& Value) override
		{
			Value.Reset();
			if (!Text.IsEmpty())
			{
				Text.ParseIntoArray(Value, TEXT("\n"), false);
			}
		}

	private:
		template <typename NumberType>
		void Take(NumberType& Value, const TCHAR* Kind)
		{
			NumberType Number = 0;
			if (!FHostConfigNumber::Read(Text, Number))
			{
				const FString Entered = Text.TrimStartAndEnd().Left(40);
				const FString Wrong = Entered.IsEmpty() ? FString(TEXT("An empty text")) : TEXT("\"") + Entered + TEXT("\"");
				Complaint = FString::Printf(TEXT("%s is not %s. The value stays %s."), *Wrong, Kind, *FHostConfigNumber::ToText(Value));
			}
			else if (Edited.bHasRange && (double(Number) < Edited.Min || double(Number) > Edited.Max))
			{
				Complaint = FString::Printf(TEXT("%s is not between %s and %s. The value stays %s."), *FHostConfigNumber::ToText(Number),
					*FHostConfigNumber::ToText(Edited.Min), *FHostConfigNumber::ToText(Edited.Max), *FHostConfigNumber::ToText(Value));
			}
			else
			{
				Value = Number;
			}
		}

		const FSettingsProperty& Edited;
		const FString& Text;
	};

	/** Words that stay small inside of a label. */
	bool IsSmallWord(const FString& Word)
	{
		constexpr const TCHAR* SmallWords[] = { TEXT("Of"), TEXT("And"), TEXT("In"), TEXT("To"), TEXT("For"), TEXT("The"), TEXT("Or") };
		for (const TCHAR* SmallWord : SmallWords)
		{
			if (Word.Equals(SmallWord))
			{
				return true;
			}
		}
		return false;
	}
}

FString FSettingsProperty::GetLabel() const
{
	const auto IsUpperAt = [this](int32 Index) { return Index < Name.Len() && FChar::IsUpper(Name[Index]); };
	const bool bFlagLetter = Kind == EKind::Bool && Name.Len() > 1 && Name[0] == TEXT('b') && IsUpperAt(1);
	TArray<FString> Words;
	for (int32 Index = bFlagLetter ? 1 : 0; Index < Name.Len(); ++Index)
	{
		// A run of capitals is one word: "MaxURLLength" has three.
		const bool bAfterSmall = Index > 0 && !FChar::IsUpper(Name[Index - 1]);
		const bool bBeforeSmall = Index + 1 < Name.Len() && FChar::IsLower(Name[Index + 1]);
		if (Words.Num() == 0 || (IsUpperAt(Index) && (bAfterSmall || bBeforeSmall)))
		{
			Words.Add(FString());
		}
		Words.Last().AppendChar(Name[Index]);
	}
	for (int32 Index = 1; Index < Words.Num(); ++Index)
	{
		if (IsSmallWord(Words[Index]))
		{
			Words[Index] = Words[Index].ToLower();
		}
	}
	return FString::Join(Words, TEXT(" "));
}

bool FSettingsProperty::IsFolder() const
{
	return Kind == EKind::Text && (Name.EndsWith(TEXT("Folder")) || Name.EndsWith(TEXT("Directory")));
}

bool FSettingsProperty::IsPath() const
{
	return IsFolder() || (Kind == EKind::Text && (Name.EndsWith(TEXT("File")) || Name.EndsWith(TEXT("Path"))));
}

TArray<FSettingsProperty> FSettingsProperties::List(UObject& Object)
{
	FPropertyLister Lister;
	Object.VisitConfigProperties(Lister);
	return Lister.Found;
}

FString FSettingsProperties::GetText(UObject& Object, const FSettingsProperty& Property)
{
	FPropertyReader Reader(Property.Name);
	Object.VisitConfigProperties(Reader);
	return Reader.Text;
}

TArray<FString> FSettingsProperties::ReadDefaults(UObject& Object, const TArray<FSettingsProperty>& Properties)
{
	// A new object is as its class makes it; only a class's default object has read the configuration.
	UObject* const Fresh = StaticConstructObject(Object.GetClass(), nullptr, NAME_None, RF_NoFlags);
	TArray<FString> Texts;
	for (const FSettingsProperty& Property : Properties)
	{
		Texts.Add(Fresh ? GetText(*Fresh, Property) : FString());
	}
	if (Fresh)
	{
		Fresh->MarkAsGarbage();
	}
	return Texts;
}

FString FSettingsProperties::SetText(UObject& Object, const FSettingsProperty& Property, const FString& Text)
{
	FPropertyWriter Writer(Property, Text);
	Object.VisitConfigProperties(Writer);
	return Writer.Complaint;
}
