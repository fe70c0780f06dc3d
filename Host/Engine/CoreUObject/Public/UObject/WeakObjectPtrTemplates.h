#pragma once

#include "Templates/TypeHash.h"
#include "UObject/ObjectPtr.h"
#include "UObject/WeakObjectPtr.h"

#include <cstddef>
#include <type_traits>

/** FWeakObjectPtr of a type. */
template <typename T>
struct TWeakObjectPtr
{
	TWeakObjectPtr() = default;
	TWeakObjectPtr(std::nullptr_t) {}
	template <typename OtherT>
	requires std::is_convertible_v<OtherT*, T*> TWeakObjectPtr(OtherT* InObject)
		: Object(InObject)
	{
	}
	template <typename OtherT>
	requires std::is_convertible_v<OtherT*, T*> TWeakObjectPtr(const TObjectPtr<OtherT>& InObject)
		: Object(InObject.Get())
	{
	}
	template <typename OtherT>
	requires std::is_convertible_v<OtherT*, T*> TWeakObjectPtr(const TWeakObjectPtr<OtherT>& Other)
		: Object(Other.Get())
	{
	}

	T* Get() const { return ::IsValid(Object) ? Object : nullptr; }
	T* operator->() const { return Get(); }
	T& operator*() const { return *Get(); }
	bool IsValid() const { return ::IsValid(Object); }
	explicit operator bool() const { return IsValid(); }
	void Reset() { Object = nullptr; }

	friend bool operator==(const TWeakObjectPtr& A, const TWeakObjectPtr& B) { return A.Get() == B.Get(); }
	friend bool operator==(const TWeakObjectPtr& A, const T* B) { return A.Get() == B; }
	friend bool operator==(const TWeakObjectPtr& A, std::nullptr_t) { return !A.IsValid(); }
	/** Of the object that was set, so that it stays the same in a container. */
	friend uint32 GetTypeHash(const TWeakObjectPtr& A) { return PointerHash(A.Object); }

private:
	T* Object = nullptr;
};
