#pragma once

#include "Misc/AssertionMacros.h"
#include "Templates/TypeHash.h"
#include "Templates/UnrealTemplate.h"

#include <optional>

struct FNullOpt
{
	explicit constexpr FNullOpt(int) {}
};
inline constexpr FNullOpt NullOpt{ 0 };

/** A value or nothing. Reading nothing is an assertion. */
template <typename OptionalType>
struct TOptional
{
public:
	using ElementType = OptionalType;

	TOptional() = default;
	TOptional(FNullOpt) {}
	TOptional(const OptionalType& InValue)
		: Value(InValue)
	{
	}
	TOptional(OptionalType&& InValue)
		: Value(static_cast<OptionalType&&>(InValue))
	{
	}
	template <typename... ArgTypes>
	explicit TOptional(std::in_place_t, ArgTypes&&... Args)
		: Value(std::in_place, Forward<ArgTypes>(Args)...)
	{
	}
	TOptional& operator=(const OptionalType& InValue)
	{
		Value = InValue;
		return *this;
	}
	TOptional& operator=(OptionalType&& InValue)
	{
		Value = static_cast<OptionalType&&>(InValue);
		return *this;
	}
	TOptional& operator=(FNullOpt)
	{
		Value.reset();
		return *this;
	}

	bool IsSet() const { return Value.has_value(); }
	explicit operator bool() const { return IsSet(); }
	void Reset() { Value.reset(); }
	template <typename... ArgTypes>
	OptionalType& Emplace(ArgTypes&&... Args)
	{
		return Value.emplace(Forward<ArgTypes>(Args)...);
	}
	const OptionalType& GetValue() const
	{
		check(IsSet());
		return *Value;
	}
	OptionalType& GetValue()
	{
		check(IsSet());
		return *Value;
	}
	const OptionalType& operator*() const { return GetValue(); }
	OptionalType& operator*() { return GetValue(); }
	const OptionalType* operator->() const { return &GetValue(); }
	OptionalType* operator->() { return &GetValue(); }
	/** Default must outlive the result. */
	const OptionalType& Get(const OptionalType& Default) const { return IsSet() ? *Value : Default; }

	friend bool operator==(const TOptional& A, const TOptional& B)
	{
		return A.IsSet() == B.IsSet() && (!A.IsSet() || *A.Value == *B.Value);
	}
	friend uint32 GetTypeHash(const TOptional& Optional) { return Optional.IsSet() ? GetTypeHash(*Optional.Value) : 0; }

private:
	std::optional<OptionalType> Value;
};
