#include "HAL/IConsoleManager.h"

#include "Host/HostConsole.h"
#include "Host/HostNumbers.h"
#include "Logging/LogMacros.h"
#include "Math/UnrealMathUtility.h"
#include "Templates/UniquePtr.h"

#include <atomic>
#include <charconv>
#include <map>
#include <mutex>
#include <string>

// Console variables are read by any thread at any time, so their values are atomic, or locked for texts; registering and
// finding takes the manager's own lock. Several modules may register the same variable: it is there until the last one
// leaves, and a value that was set by the user stays known for the next registration.
//
// Setting by text never fails here; what a user types is checked first (FindWrongValue), since a typing error that turns
// into a silent zero is hard to find.

DEFINE_LOG_CATEGORY_STATIC(LogConsole, Log, All);

namespace
{
	// The words that the editor takes for a one.
	int32 ToInteger(const FString& Text)
	{
		return Text == TEXT("true") || Text == TEXT("on") || Text == TEXT("yes") ? 1 : FCString::Atoi(*Text);
	}

	float ToFloat(const FString& Text)
	{
		return Text == TEXT("true") || Text == TEXT("on") || Text == TEXT("yes") ? 1.0f : FCString::Atof(*Text);
	}

	/** A value that any thread may read. */
	template <typename T>
	class TConsoleValue
	{
	public:
		explicit TConsoleValue(const T& InValue)
			: Value(InValue)
		{
		}
		T Get() const { return Value.load(std::memory_order_relaxed); }
		void Set(const T& NewValue) { Value.store(NewValue, std::memory_order_relaxed); }

	private:
		std::atomic<T> Value;
	};

	template <>
	class TConsoleValue<FString>
	{
	public:
		explicit TConsoleValue(const FString& InValue)
			: Value(InValue)
		{
		}
		FString Get() const
		{
			const std::lock_guard<std::mutex> Lock(Mutex);
			return Value;
		}
		void Set(const FString& NewValue)
		{
			const std::lock_guard<std::mutex> Lock(Mutex);
			Value = NewValue;
		}

	private:
		mutable std::mutex Mutex;
		FString Value;
	};

	FString ValueText(bool bValue)
	{
		return bValue ? TEXT("true") : TEXT("false");
	}
	FString ValueText(int32 Value)
	{
		return FString::FromInt(Value);
	}
	FString ValueText(float Value)
	{
		return HostNumberToText(Value);
	}
	FString ValueText(const FString& Value)
	{
		return Value;
	}

	template <typename T>
	class TConsoleVariable final : public IConsoleVariable
	{
	public:
		TConsoleVariable(const T& InDefault, const TCHAR* InHelp, uint32 InFlags)
			: Value(InDefault)
			, Help(InHelp)
			, Flags(EConsoleVariableFlags(InFlags))
		{
		}

		const TCHAR* GetHelp() const override { return *Help; }
		EConsoleVariableFlags GetFlags() const override { return Flags; }

		void Set(const TCHAR* Text, EConsoleVariableFlags SetBy) override
		{
			const FString String(Text);
			if constexpr (std::is_same_v<T, bool>)
			{
				Value.Set(ToFloat(String) != 0.0f);
			}
			else if constexpr (std::is_same_v<T, int32>)
			{
				Value.Set(ToInteger(String));
			}
			else if constexpr (std::is_same_v<T, float>)
			{
				Value.Set(ToFloat(String));
			}
			else
			{
				Value.Set(String);
			}
		}
		void Set(bool bNewValue, EConsoleVariableFlags SetBy) override { SetNumber(bNewValue); }
		void Set(int32 NewValue, EConsoleVariableFlags SetBy) override { SetNumber(NewValue); }
		void Set(float NewValue, EConsoleVariableFlags SetBy) override { SetNumber(NewValue); }

		bool GetBool() const override
		{
			if constexpr (std::is_same_v<T, FString>)
			{
				return Value.Get().ToBool();
			}
			else
			{
				return Value.Get() != T();
			}
		}
		// A conversion of a float that is too large would be undefined; it stops at the ends instead.
		int32 GetInt() const override
		{
			if constexpr (std::is_same_v<T, FString>)
			{
				return ToInteger(Value.Get());
			}
			else if constexpr (std::is_same_v<T, float>)
			{
				const float Number = Value.Get();
				return Number >= 2147483648.0f ? MAX_int32 : Number >= -2147483648.0f ? int32(Number) : MIN_int32;
			}
			else
			{
				return int32(Value.Get());
			}
		}
		float GetFloat() const override
		{
			if constexpr (std::is_same_v<T, FString>)
			{
				return ToFloat(Value.Get());
			}
			else
			{
				return float(Value.Get());
			}
		}
		FString GetString() const override { return ValueText(Value.Get()); }

		bool IsVariableBool() const override { return std::is_same_v<T, bool>; }
		bool IsVariableInt() const override { return std::is_same_v<T, int32>; }
		bool IsVariableFloat() const override { return std::is_same_v<T, float>; }
		bool IsVariableString() const override { return std::is_same_v<T, FString>; }

	private:
		template <typename TNumber>
		void SetNumber(TNumber Number)
		{
			if constexpr (std::is_same_v<T, FString>)
			{
				Value.Set(ValueText(Number));
			}
			else if constexpr (std::is_same_v<T, int32> && std::is_same_v<TNumber, float>)
			{
				Value.Set(Number >= 2147483648.0f ? MAX_int32 : Number >= -2147483648.0f ? int32(Number) : MIN_int32);
			}
			else
			{
				Value.Set(T(Number));
			}
		}

		TConsoleValue<T> Value;
		FString Help;
		const EConsoleVariableFlags Flags;
	};

	class FHostConsoleCommand final : public IConsoleCommand
	{
	public:
		FHostConsoleCommand(const TCHAR* InHelp, uint32 InFlags, const FConsoleCommandWithArgsDelegate& InCommand)
			: Help(InHelp)
			, Flags(EConsoleVariableFlags(InFlags))
			, Command(InCommand)
		{
		}
		const TCHAR* GetHelp() const override { return *Help; }
		EConsoleVariableFlags GetFlags() const override { return Flags; }
		bool Execute(const TArray<FString>& Args) override { return Command.ExecuteIfBound(Args); }

	private:
		FString Help;
		const EConsoleVariableFlags Flags;
		FConsoleCommandWithArgsDelegate Command;
	};

	class FHostConsoleManager final : public IConsoleManager
	{
	public:
		IConsoleVariable* RegisterConsoleVariable(const TCHAR* Name, bool Default, const TCHAR* Help, uint32 Flags) override
		{
			return RegisterVariable<bool>(Name, Default, Help, Flags);
		}
		IConsoleVariable* RegisterConsoleVariable(const TCHAR* Name, int32 Default, const TCHAR* Help, uint32 Flags) override
		{
			return RegisterVariable<int32>(Name, Default, Help, Flags);
		}
		IConsoleVariable* RegisterConsoleVariable(const TCHAR* Name, float Default, const TCHAR* Help, uint32 Flags) override
		{
			return RegisterVariable<float>(Name, Default, Help, Flags);
		}
		IConsoleVariable* RegisterConsoleVariable(const TCHAR* Name, const FString& Default, const TCHAR* Help, uint32 Flags) override
		{
			return RegisterVariable<FString>(Name, Default, Help, Flags);
		}
		IConsoleCommand* RegisterConsoleCommand(
			const TCHAR* Name, const TCHAR* Help, const FConsoleCommandDelegate& Command, uint32 Flags) override
		{
			return RegisterConsoleCommand(Name, Help,
				FConsoleCommandWithArgsDelegate::CreateLambda([Command](const TArray<FString>&) { Command.ExecuteIfBound(); }), Flags);
		}
		IConsoleCommand* RegisterConsoleCommand(
			const TCHAR* Name, const TCHAR* Help, const FConsoleCommandWithArgsDelegate& Command, uint32 Flags) override
		{
			const std::lock_guard<std::recursive_mutex> Lock(Mutex);
			FEntry& Entry = Entries[MakeKey(Name)];
			if (Entry.Object)
			{
				UE_LOG(LogConsole, Warning, TEXT("The console name %s is taken"), Name);
				return nullptr;
			}
			Entry.Name = Name;
			Entry.Uses = 1;
			Entry.Object = MakeUnique<FHostConsoleCommand>(Help, Flags, Command);
			return Entry.Object->AsCommand();
		}

		// Whoever asks keeps the pointer, so an object lives until the last one that registered it is gone.
		IConsoleVariable* FindConsoleVariable(const TCHAR* Name, bool) const override
		{
			IConsoleObject* Object = FindConsoleObject(Name, true);
			return Object ? Object->AsVariable() : nullptr;
		}

		// Names ignore letter case: the key is the name in small letters.
		IConsoleObject* FindConsoleObject(const TCHAR* Name, bool) const override
		{
			const std::lock_guard<std::recursive_mutex> Lock(Mutex);
			const auto Found = Entries.find(MakeKey(Name));
			return Found != Entries.end() ? Found->second.Object.Get() : nullptr;
		}

		void ForEachConsoleObjectThatStartsWith(
			TFunctionRef<void(const TCHAR*, IConsoleObject*)> Visitor, const TCHAR* Prefix) const override
		{
			const std::u16string Key = MakeKey(Prefix);
			TArray<FString> Names;
			{
				const std::lock_guard<std::recursive_mutex> Lock(Mutex);
				for (auto Position = Entries.lower_bound(Key); Position != Entries.end() && Position->first.starts_with(Key); ++Position)
				{
					if (Position->second.Object)
					{
						Names.Add(Position->second.Name);
					}
				}
			}
			// The visitor may register and unregister.
			for (const FString& Name : Names)
			{
				if (IConsoleObject* Object = FindConsoleObject(*Name, true))
				{
					Visitor(*Name, Object);
				}
			}
		}

		void UnregisterConsoleObject(IConsoleObject* Object, bool bKeepState) override
		{
			TUniquePtr<IConsoleObject> Gone; // Destroyed outside the lock.
			const std::lock_guard<std::recursive_mutex> Lock(Mutex);
			for (auto& [Key, Entry] : Entries)
			{
				if (Object && Entry.Object.Get() == Object)
				{
					if (--Entry.Uses > 0)
					{
						return;
					}
					const IConsoleVariable* Variable = Object->AsVariable();
					Entry.bKept = bKeepState && Variable;
					Entry.KeptValue = Entry.bKept ? Variable->GetString() : FString();
					Gone = MoveTemp(Entry.Object);
					return;
				}
			}
		}

	private:
		struct FEntry
		{
			FString Name;
			TUniquePtr<IConsoleObject> Object;
			int32 Uses = 0;
			/** Value of a name that is not registered at present. */
			FString KeptValue;
			bool bKept = false;
		};

		static std::u16string MakeKey(const TCHAR* Name)
		{
			const FString Lower = FString(Name).ToLower();
			return std::u16string(*Lower, std::size_t(Lower.Len()));
		}

		template <typename T>
		static bool IsKind(const IConsoleVariable& Variable)
		{
			return std::is_same_v<T, bool> ? Variable.IsVariableBool()
				: std::is_same_v<T, int32> ? Variable.IsVariableInt()
				: std::is_same_v<T, float> ? Variable.IsVariableFloat()
										   : Variable.IsVariableString();
		}

		// 1. The same name and kind again is the same variable; another kind is refused.
		template <typename T>
		IConsoleVariable* RegisterVariable(const TCHAR* Name, const T& Default, const TCHAR* Help, uint32 Flags)
		{
			const std::lock_guard<std::recursive_mutex> Lock(Mutex);
			FEntry& Entry = Entries[MakeKey(Name)];
			if (Entry.Object)
			{
				IConsoleVariable* Existing = Entry.Object->AsVariable();
				if (!Existing || !IsKind<T>(*Existing))
				{
					UE_LOG(LogConsole, Warning, TEXT("The console name %s is taken by something of another kind"), Name);
					return nullptr;
				}
				++Entry.Uses;
				return Existing;
			}
			// 2. A new one; what was kept of an earlier life comes back.
			Entry.Name = Entry.Name.IsEmpty() ? FString(Name) : Entry.Name;
			Entry.Uses = 1;
			Entry.Object = MakeUnique<TConsoleVariable<T>>(Default, Help, Flags);
			IConsoleVariable* Variable = Entry.Object->AsVariable();
			if (Entry.bKept)
			{
				Variable->Set(*Entry.KeptValue);
				Entry.bKept = false;
			}
			return Variable;
		}

		mutable std::recursive_mutex Mutex;
		std::map<std::u16string, FEntry> Entries;
	};

	/** The whole text as a number, exponents included; endless and undefined ones are none. */
	bool ReadNumber(const FString& Text, double& OutNumber)
	{
		std::string Ascii;
		for (const TCHAR Char : Text)
		{
			Ascii.push_back(Char < 128 ? char(Char) : '?');
		}
		const char* const Begin = Ascii.c_str() + (Ascii.starts_with('+') ? 1 : 0);
		const char* const End = Ascii.c_str() + Ascii.size();
		const std::from_chars_result Result = std::from_chars(Begin, End, OutNumber);
		return Result.ec == std::errc() && Result.ptr == End && FMath::IsFinite(OutNumber);
	}

	/** One sentence when the text is no value of the variable's kind. */
	// Numbers have to be whole texts: "5x" is no number although reading would give 5.
	FString FindWrongValue(const FString& Name, const IConsoleVariable& Variable, const FString& Value)
	{
		double Number = 0.0;
		const bool bNumber = ReadNumber(Value, Number);
		const TCHAR* Wanted = nullptr;
		if (Variable.IsVariableBool())
		{
			static const TCHAR* const Words[] = { TEXT("true"), TEXT("false"), TEXT("on"), TEXT("off"), TEXT("yes"), TEXT("no") };
			bool bWord = false;
			for (const TCHAR* Word : Words)
			{
				bWord = bWord || Value == Word;
			}
			Wanted = bWord || (bNumber && (Number == 0.0 || Number == 1.0)) ? nullptr : TEXT("true or false");
		}
		else if (Variable.IsVariableInt())
		{
			const bool bWhole = bNumber && Number >= MIN_int32 && Number <= MAX_int32 && double(int64(Number)) == Number;
			Wanted = bWhole ? nullptr : TEXT("a whole number");
		}
		else if (Variable.IsVariableFloat())
		{
			Wanted = bNumber && FMath::Abs(Number) <= 3.4e38 ? nullptr : TEXT("a number");
		}
		return Wanted ? FString::Printf(TEXT("%s takes %s, not \"%s\"."), *Name, Wanted, *Value) : FString();
	}

	FString DescribeUnknownName(const FString& Name)
	{
		return FString::Printf(TEXT("There is no console variable or command \"%s\"."), *Name);
	}

	void ListObjects(const FString& Prefix, TArray<FString>& OutLines)
	{
		IConsoleManager::Get().ForEachConsoleObjectThatStartsWith(
			[&OutLines](const TCHAR* Name, IConsoleObject* Object)
			{
				const IConsoleVariable* Variable = Object->AsVariable();
				const FString Value = Variable ? FString::Printf(TEXT(" = \"%s\""), *Variable->GetString()) : FString();
				OutLines.Add(Name + Value + TEXT("  ") + Object->GetHelp());
			},
			*Prefix);
		if (OutLines.IsEmpty())
		{
			OutLines.Add(Prefix.IsEmpty() ? FString(TEXT("There are no console variables."))
										  : FString::Printf(TEXT("No console variable begins with \"%s\"."), *Prefix));
		}
	}

	/** Parts of a command line at blanks; double quotes keep blanks together and are dropped. */
	TArray<FString> SplitArguments(const FString& Text)
	{
		TArray<FString> Parts;
		FString Part;
		bool bQuoted = false;
		bool bAny = false;
		for (const TCHAR Char : Text)
		{
			if (Char == TEXT('"'))
			{
				bQuoted = !bQuoted;
				bAny = true;
			}
			else if (FChar::IsWhitespace(Char) && !bQuoted)
			{
				if (bAny)
				{
					Parts.Add(Part);
				}
				Part.Reset();
				bAny = false;
			}
			else
			{
				Part.AppendChar(Char);
				bAny = true;
			}
		}
		if (bAny)
		{
			Parts.Add(Part);
		}
		return Parts;
	}
}

IConsoleManager& IConsoleManager::Get()
{
	static FHostConsoleManager Manager;
	return Manager;
}

FAutoConsoleObject::~FAutoConsoleObject()
{
	IConsoleManager::Get().UnregisterConsoleObject(Target);
}

bool FHostConsole::Execute(const FString& Line, TArray<FString>& OutLines)
{
	OutLines.Reset();
	const FString Trimmed = Line.TrimStartAndEnd();
	int32 End = 0;
	while (End < Trimmed.Len() && !FChar::IsWhitespace(Trimmed[End]) && Trimmed[End] != TEXT('='))
	{
		++End;
	}
	const FString Name = Trimmed.Left(End);
	FString Rest = Trimmed.RightChop(End).TrimStart();
	IConsoleObject* Object = IConsoleManager::Get().FindConsoleObject(*Name);
	if (!Object && Name == TEXT("list"))
	{
		ListObjects(Rest, OutLines);
		return true;
	}
	if (!Object)
	{
		OutLines.Add(Name.IsEmpty() ? FString(TEXT("Nothing to run.")) : DescribeUnknownName(Name));
		return false;
	}
	if (Rest.Equals(TEXT("?")))
	{
		OutLines.Add(FString::Printf(TEXT("%s: %s"), *Name, Object->GetHelp()));
		return true;
	}
	if (IConsoleCommand* Command = Object->AsCommand())
	{
		return Command->Execute(SplitArguments(Rest));
	}
	IConsoleVariable* Variable = Object->AsVariable();
	if (Rest.IsEmpty())
	{
		OutLines.Add(FString::Printf(TEXT("%s = \"%s\""), *Name, *Variable->GetString()));
		return true;
	}
	if (Rest.RemoveFromStart(TEXT("=")))
	{
		Rest.TrimStartInline();
	}
	const FString Complaint = SetVariable(Name, Rest.TrimQuotes());
	OutLines.Add(Complaint.IsEmpty() ? FString::Printf(TEXT("%s = \"%s\""), *Name, *Variable->GetString()) : Complaint);
	return Complaint.IsEmpty();
}

FString FHostConsole::SetVariable(const FString& Name, const FString& Value, EConsoleVariableFlags SetBy)
{
	IConsoleObject* const Object = IConsoleManager::Get().FindConsoleObject(*Name);
	IConsoleVariable* const Variable = Object ? Object->AsVariable() : nullptr;
	if (!Variable)
	{
		return Object ? FString::Printf(TEXT("%s is a command and has no value."), *Name) : DescribeUnknownName(Name);
	}
	if (Variable->TestFlags(ECVF_ReadOnly))
	{
		return FString::Printf(TEXT("%s cannot be changed."), *Name);
	}
	const FString Complaint = FindWrongValue(Name, *Variable, Value);
	if (Complaint.IsEmpty())
	{
		Variable->Set(*Value, SetBy);
	}
	return Complaint;
}

TArray<FString> FHostConsole::Complete(const FString& Prefix, int32 MaxCount)
{
	TArray<FString> Names;
	IConsoleManager::Get().ForEachConsoleObjectThatStartsWith(
		[&Names, MaxCount](const TCHAR* Name, IConsoleObject*)
		{
			if (Names.Num() < MaxCount)
			{
				Names.Add(Name);
			}
		},
		*Prefix);
	return Names;
}
