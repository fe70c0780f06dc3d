#pragma once

#include "HAL/Platform.h"

#include <cstddef>
#include <initializer_list>
#include <type_traits>
#include <utility>

/** std::move that refuses a const object or an rvalue, where it would silently copy or do nothing. */
template <typename T>
constexpr std::remove_reference_t<T>&& MoveTemp(T&& Object) noexcept
{
	using CastType = std::remove_reference_t<T>;
	static_assert(std::is_lvalue_reference_v<T>, "MoveTemp called on an rvalue");
	static_assert(!std::is_const_v<CastType>, "MoveTemp called on a const object");
	return static_cast<CastType&&>(Object);
}

template <typename T>
constexpr T&& Forward(std::remove_reference_t<T>& Object) noexcept
{
	return static_cast<T&&>(Object);
}

template <typename T>
constexpr T&& Forward(std::remove_reference_t<T>&& Object) noexcept
{
	return static_cast<T&&>(Object);
}

template <typename T>
constexpr void Swap(T& A, T& B)
{
	T Temp = static_cast<T&&>(A);
	A = static_cast<T&&>(B);
	B = static_cast<T&&>(Temp);
}

// Contiguous containers by their own members, and C arrays.
template <typename T>
constexpr auto GetData(T&& Container) -> decltype(Container.GetData())
{
	return Container.GetData();
}

template <typename T, std::size_t N>
constexpr T* GetData(T (&Container)[N])
{
	return Container;
}

template <typename T>
constexpr T* GetData(std::initializer_list<T> List)
{
	return List.begin();
}

template <typename T>
constexpr auto GetNum(const T& Container) -> decltype(Container.Num())
{
	return Container.Num();
}

template <typename T, std::size_t N>
constexpr std::size_t GetNum(T (&)[N])
{
	return N;
}

class FNoncopyable
{
protected:
	FNoncopyable() = default;
	~FNoncopyable() = default;

public:
	FNoncopyable(const FNoncopyable&) = delete;
	FNoncopyable& operator=(const FNoncopyable&) = delete;
};

#define UE_NONCOPYABLE(TypeName) \
	TypeName(TypeName&&) = delete; \
	TypeName(const TypeName&) = delete; \
	TypeName& operator=(const TypeName&) = delete; \
	TypeName& operator=(TypeName&&) = delete;

/** Gives a variable a new value and puts the old one back at the end of the scope. */
template <typename RefType, typename AssignedType = RefType>
class TGuardValue : private FNoncopyable
{
public:
	TGuardValue(RefType& InVariable, const AssignedType& NewValue)
		: Variable(InVariable)
		, OldValue(InVariable)
	{
		Variable = NewValue;
	}
	~TGuardValue() { Variable = OldValue; }

private:
	RefType& Variable;
	AssignedType OldValue;
};
