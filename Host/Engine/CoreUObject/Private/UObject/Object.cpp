#include "UObject/Object.h"

#include "Containers/Map.h"
#include "Host/HostConfig.h"
#include "Host/HostConfigStore.h"
#include "Host/HostNumbers.h"
#include "Misc/AssertionMacros.h"
#include "UObject/ObjectTable.h"
#include "UObject/UObjectGlobals.h"

#include <charconv>
#include <cmath>
#include <string>

// Objects, and how their settings reach a file. Each class visits its own properties (VisitConfigProperties); a writer
// and a reader are two visitors of them. The writer remembers the texts that it knows to be in the file and writes what
// differs, so that saving one setting does not write all the others over what another program has set meanwhile.

namespace
{
	constexpr int32 MaxListLength = 100000; // A hand-edited count beyond this is a slip.

	template <typename T>
	bool ReadNumberText(const FString& Text, T& OutValue)
	{
		const FString Trimmed = Text.TrimStartAndEnd();
		std::string Bytes;
		for (const TCHAR Char : Trimmed)
		{
			Bytes.push_back(Char < 0x80 ? char(Char) : '?');
		}
		T Value{};
		const std::from_chars_result Result = std::from_chars(Bytes.data(), Bytes.data() + Bytes.size(), Value);
		if (Bytes.empty() || Result.ec != std::errc() || Result.ptr != Bytes.data() + Bytes.size())
		{
			return false;
		}
		if constexpr (std::is_floating_point_v<T>)
		{
			if (!std::isfinite(Value))
			{
				return false;
			}
		}
		OutValue = Value;
		return true;
	}

	FString ListKey(const TCHAR* Name, const FString& Index)
	{
		return FString(Name) + TEXT(".") + Index;
	}

	/** Texts by the name of the property. */
	using FConfigTexts = TMap<FString, FString>;

	/** Writes what differs from the known texts, and brings these up to date. */
	class FConfigWriter final : public FHostConfigVisitor
	{
	public:
		/** @param InStore  Null for learning the texts alone. */
		FConfigWriter(IHostConfigStore* InStore, const FString& InFile, const FString& InSection, FConfigTexts& InKnown)
			: Store(InStore)
			, File(InFile)
			, Section(InSection)
			, Known(InKnown)
		{
		}
		void Property(const TCHAR* Name, FString& Value) override { Write(Name, Value); }
		void Property(const TCHAR* Name, bool& Value) override { Write(Name, Value ? TEXT("True") : TEXT("False")); }
		void Property(const TCHAR* Name, int32& Value) override { Write(Name, FString::FromInt(Value)); }
		void Property(const TCHAR* Name, float& Value) override { Write(Name, FHostConfigNumber::ToText(Value)); }
		void Property(const TCHAR* Name, double& Value) override { Write(Name, FHostConfigNumber::ToText(Value)); }
		void Property(const TCHAR* Name, TArray<FString>& Value) override
		{
			FString Text;
			for (const FString& Item : Value)
			{
				Text += FString::FromInt(Item.Len()) + TEXT(":") + Item;
			}
			if (Learn(Name, Text) && Store)
			{
				WriteList(Name, Value);
			}
		}

	private:
		bool Learn(const TCHAR* Name, const FString& Text)
		{
			const FString* const Last = Known.Find(Name);
			const bool bNew = !Last || !Last->Equals(Text);
			if (bNew)
			{
				Known.Add(Name, Text);
			}
			return bNew;
		}
		void Write(const TCHAR* Name, const FString& Text)
		{
			if (Learn(Name, Text) && Store)
			{
				Store->Set(File, Section, Name, Text);
			}
		}
		// Entries that a longer list has left are taken away first.
		void WriteList(const TCHAR* Name, const TArray<FString>& Value)
		{
			FString OldText;
			int32 OldNum = 0;
			if (Store->Get(File, Section, ListKey(Name, TEXT("Num")), OldText) && FHostConfigNumber::Read(OldText, OldNum) &&
				OldNum <= MaxListLength)
			{
				for (int32 Index = Value.Num(); Index < OldNum; ++Index)
				{
					Store->Remove(File, Section, ListKey(Name, FString::FromInt(Index)));
				}
			}
			Store->Set(File, Section, ListKey(Name, TEXT("Num")), FString::FromInt(Value.Num()));
			for (int32 Index = 0; Index < Value.Num(); ++Index)
			{
				Store->Set(File, Section, ListKey(Name, FString::FromInt(Index)), Value[Index]);
			}
		}

		IHostConfigStore* const Store;
		const FString File;
		const FString Section;
		FConfigTexts& Known;
	};

	class FConfigReader final : public FHostConfigVisitor
	{
	public:
		FConfigReader(const IHostConfigStore& InStore, const FString& InFile, const FString& InSection)
			: Store(InStore)
			, File(InFile)
			, Section(InSection)
		{
		}
		void Property(const TCHAR* Name, FString& Value) override { Store.Get(File, Section, Name, Value); }
		void Property(const TCHAR* Name, bool& Value) override
		{
			FString Text;
			int32 Number = 0;
			if (Store.Get(File, Section, Name, Text))
			{
				if (Text == TEXT("true") || Text == TEXT("yes") || Text == TEXT("on"))
				{
					Value = true;
				}
				else if (Text == TEXT("false") || Text == TEXT("no") || Text == TEXT("off"))
				{
					Value = false;
				}
				else if (FHostConfigNumber::Read(Text, Number))
				{
					Value = Number != 0;
				}
			}
		}
		void Property(const TCHAR* Name, int32& Value) override { ReadProperty(Name, Value); }
		void Property(const TCHAR* Name, float& Value) override { ReadProperty(Name, Value); }
		void Property(const TCHAR* Name, double& Value) override { ReadProperty(Name, Value); }
		void Property(const TCHAR* Name, TArray<FString>& Value) override
		{
			int32 Count = -1;
			ReadProperty(*ListKey(Name, TEXT("Num")), Count);
			if (Count < 0 || Count > MaxListLength)
			{
				return;
			}
			Value.Reset();
			for (int32 Index = 0; Index < Count; ++Index)
			{
				FString Text;
				Store.Get(File, Section, ListKey(Name, FString::FromInt(Index)), Text);
				Value.Add(MoveTemp(Text));
			}
		}

	private:
		template <typename T>
		void ReadProperty(const TCHAR* Name, T& Value)
		{
			FString Text;
			if (Store.Get(File, Section, Name, Text))
			{
				FHostConfigNumber::Read(Text, Value);
			}
		}

		const IHostConfigStore& Store;
		const FString File;
		const FString Section;
	};
}

FString FHostConfigNumber::ToText(int32 Value)
{
	return HostNumberToText(Value);
}

FString FHostConfigNumber::ToText(float Value)
{
	return HostNumberToText(Value);
}

FString FHostConfigNumber::ToText(double Value)
{
	return HostNumberToText(Value);
}

bool FHostConfigNumber::Read(const FString& Text, int32& OutValue)
{
	return ReadNumberText(Text, OutValue);
}

bool FHostConfigNumber::Read(const FString& Text, float& OutValue)
{
	return ReadNumberText(Text, OutValue);
}

bool FHostConfigNumber::Read(const FString& Text, double& OutValue)
{
	return ReadNumberText(Text, OutValue);
}

void FHostConfigVisitor::Property(const TCHAR* Name, int32& Value, int32 Min, int32 Max)
{
	Describe(Name, FHostPropertyHints{ true, double(Min), double(Max), {} });
	Property(Name, Value);
	Value = Value < Min ? Min : Value > Max ? Max : Value;
}

void FHostConfigVisitor::Choice(const TCHAR* Name, int32& Value, TArrayView<const TCHAR* const> Choices)
{
	Describe(Name, FHostPropertyHints{ true, 0.0, double(Choices.Num() - 1), Choices });
	Property(Name, Value);
}

void FHostConfigVisitor::Property(const TCHAR* Name, double& Value, double Min, double Max)
{
	Describe(Name, FHostPropertyHints{ true, Min, Max, {} });
	Property(Name, Value);
	Value = Value < Min ? Min : Value > Max ? Max : Value;
}

struct UObject::FConfigMemory
{
	/** What is known holds for this file of this store alone. */
	TWeakPtr<IHostConfigStore> Store;
	FString File;
	FConfigTexts Texts;
};

// Class, outer and name lie ready from NewObject: a constructor has no parameters to hand them over by.
UObject::UObject()
{
	const FHostObjectTable::FBirth*& Birth = FHostObjectTable::CurrentBirth();
	checkf(Birth != nullptr, TEXT("Objects are made by NewObject"));
	Class = Birth->Class;
	Outer = Birth->Outer;
	Name = Birth->Name;
	Flags = Birth->Flags;
	// An object on the stack inside this constructor's body must not take the same names.
	Birth = nullptr;
}

UObject::~UObject() = default;

UClass* UObject::GetClass() const
{
	return Class ? Class : UClass::StaticClass(); // The first classes are made before the class of classes.
}

UPackage* UObject::GetPackage() const
{
	const UObject* Outermost = this;
	while (Outermost->Outer)
	{
		Outermost = Outermost->Outer;
	}
	return Outermost->IsA(UPackage::StaticClass()) ? static_cast<UPackage*>(const_cast<UObject*>(Outermost)) : nullptr;
}

FString UObject::GetPathName() const
{
	return Outer ? Outer->GetPathName() + TEXT(".") + GetName() : GetName();
}

bool UObject::IsA(const UClass* OtherClass) const
{
	return GetClass()->IsChildOf(OtherClass);
}

FString UObject::GetConfigName() const
{
	return TEXT("EditorPerProjectUserSettings");
}

FString UObject::GetDefaultConfigFilename() const
{
	return GetConfigName();
}

bool UObject::WriteConfig(const FString& File)
{
	const TSharedRef<IHostConfigStore> Store = IHostConfigStore::GetCurrent();
	if (!ConfigMemory || ConfigMemory->Store.Pin() != Store || !ConfigMemory->File.Equals(File))
	{
		ConfigMemory = MakeUnique<FConfigMemory>(FConfigMemory{ Store, File, {} });
	}
	FConfigWriter Writer(&*Store, File, GetClass()->GetPathName(), ConfigMemory->Texts);
	VisitConfigProperties(Writer);
	return Store->Flush(File);
}

void UObject::SaveConfig(uint64 PropertyFlags, const TCHAR* Filename, FConfigCacheIni* Config, bool bAllowCopyToDefaultObject)
{
	WriteConfig(Filename && *Filename ? FString(Filename) : GetDefaultConfigFilename());
}

// What was read is what is known to be in the file.
void UObject::LoadConfig(UClass* ConfigClass, const TCHAR* Filename)
{
	const TSharedRef<IHostConfigStore> Store = IHostConfigStore::GetCurrent();
	const FString File = Filename && *Filename ? FString(Filename) : GetDefaultConfigFilename();
	FConfigReader Reader(*Store, File, (ConfigClass ? ConfigClass : GetClass())->GetPathName());
	VisitConfigProperties(Reader);
	if (!ConfigClass || ConfigClass == GetClass())
	{
		ConfigMemory = MakeUnique<FConfigMemory>(FConfigMemory{ Store, File, {} });
		FConfigWriter Learner(nullptr, File, FString(), ConfigMemory->Texts);
		VisitConfigProperties(Learner);
	}
}
