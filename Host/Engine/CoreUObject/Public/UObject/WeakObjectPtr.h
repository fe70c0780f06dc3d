#pragma once

#include "UObject/Object.h"

/** Refers to an object without keeping it in use: null once the object is garbage. */
struct FWeakObjectPtr
{
	FWeakObjectPtr() = default;
	FWeakObjectPtr(const UObject* InObject)
		: Object(const_cast<UObject*>(InObject))
	{
	}

	UObject* Get() const { return ::IsValid(Object) ? Object : nullptr; }
	bool IsValid() const { return ::IsValid(Object); }
	void Reset() { Object = nullptr; }
	friend bool operator==(const FWeakObjectPtr& A, const FWeakObjectPtr& B) { return A.Get() == B.Get(); }

private:
	UObject* Object = nullptr;
};
