#pragma once

#include "Templates/TypeHash.h"

#include <cstddef>
#include <type_traits>

/** A member that refers to an object; behaves as a plain pointer. */
template <typename T>
struct TObjectPtr
{
	using ElementType = T;

	TObjectPtr() = default;
	TObjectPtr(std::nullptr_t) {}
	TObjectPtr(T* InObject)
		: Object(InObject)
	{
	}
	template <typename OtherT>
	requires(!std::is_same_v<OtherT, T> && std::is_convertible_v<OtherT*, T*>) TObjectPtr(const TObjectPtr<OtherT>& Other)
		: Object(Other.Get())
	{
	}

	T* Get() const { return Object; }
	T* operator->() const { return Object; }
	T& operator*() const { return *Object; }
	operator T*() const { return Object; }
	friend uint32 GetTypeHash(const TObjectPtr& A) { return PointerHash(A.Object); }

private:
	T* Object = nullptr;
};
