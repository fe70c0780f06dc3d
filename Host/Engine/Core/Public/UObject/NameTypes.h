#pragma once

#include "Containers/UnrealString.h"

enum EName
{
	NAME_None
};

/** One name as it was first spelled; lives to the end of the process. */
struct FNameEntry
{
	FString Text;
	uint32 Hash = 0;
};

/**
 * A name of something, kept once per process: copying and comparing cost as much as a pointer. Compares ignoring case and
 * shows the spelling that was seen first. Safe on any thread.
 */
class FName
{
public:
	constexpr FName() = default;
	constexpr FName(EName) {}
	FName(const TCHAR* Name)
		: Entry(Intern(Name))
	{
	}
	FName(const ANSICHAR* Name)
		: Entry(Intern(*FString(Name)))
	{
	}
	explicit FName(const FString& Name)
		: Entry(Intern(Name))
	{
	}
	explicit FName(FStringView Name)
		: Entry(Intern(Name))
	{
	}

	bool IsNone() const { return Entry == nullptr; }
	bool IsValid() const { return true; }
	CORE_API const FString& GetText() const;
	FString ToString() const { return GetText(); }
	void ToString(FString& Out) const { Out = GetText(); }
	/** Alphabetical, ignoring case. */
	int32 Compare(const FName& Other) const
	{
		return Entry == Other.Entry ? 0 : GetText().Compare(Other.GetText(), ESearchCase::IgnoreCase);
	}
	bool LexicalLess(const FName& Other) const { return Compare(Other) < 0; }
	/** Any fixed order within one process. */
	bool FastLess(const FName& Other) const { return Entry < Other.Entry; }

	friend bool operator==(FName A, FName B) { return A.Entry == B.Entry; }
	friend bool operator==(FName A, EName) { return A.Entry == nullptr; }
	friend bool operator==(FName A, const TCHAR* B) { return A.GetText() == B; }
	friend uint32 GetTypeHash(FName Name) { return PointerHash(Name.Entry); }

private:
	CORE_API static const FNameEntry* Intern(FStringView Name);
	/** Null for None. */
	const FNameEntry* Entry = nullptr;
};

struct FNameLexicalLess
{
	bool operator()(const FName& A, const FName& B) const { return A.LexicalLess(B); }
};
struct FNameFastLess
{
	bool operator()(const FName& A, const FName& B) const { return A.FastLess(B); }
};

inline FString LexToString(const FName& Name)
{
	return Name.ToString();
}
