#pragma once

#include "Containers/UnrealString.h"

enum class EGuidFormats
{
	/** 32 upper-case digits. */
	Digits,
	DigitsLower,
	/** 8-4-4-4-12. */
	DigitsWithHyphens,
	DigitsWithHyphensLower,
	DigitsWithHyphensInBraces,
	DigitsWithHyphensInParentheses
};

/** 128 bits that nobody else has. All zero is the invalid one. */
struct CORE_API FGuid
{
	constexpr FGuid() = default;
	constexpr FGuid(uint32 InA, uint32 InB, uint32 InC, uint32 InD)
		: A(InA)
		, B(InB)
		, C(InC)
		, D(InD)
	{
	}

	bool IsValid() const { return (A | B | C | D) != 0; }
	void Invalidate() { *this = FGuid(); }
	FString ToString(EGuidFormats Format = EGuidFormats::Digits) const;
	/** Random, from the system's source; of the shape that marks a random identifier. */
	static FGuid NewGuid();
	/** Any format of ToString. False, and OutGuid untouched, on anything else. */
	static bool Parse(const FString& GuidString, FGuid& OutGuid);

	bool operator==(const FGuid&) const = default;
	auto operator<=>(const FGuid&) const = default;
	friend uint32 GetTypeHash(const FGuid& Guid) { return HashCombine(HashCombine(Guid.A, Guid.B), HashCombine(Guid.C, Guid.D)); }

	uint32 A = 0;
	uint32 B = 0;
	uint32 C = 0;
	uint32 D = 0;
};

inline FString LexToString(const FGuid& Guid)
{
	return Guid.ToString();
}
