#pragma once

#include "Misc/AssertionMacros.h"
#include "UObject/Class.h"
#include "UObject/ObjectPtr.h"

/** nullptr when the object is null or of another class. */
template <typename To, typename From>
To* Cast(From* Object)
{
	return Object && Object->IsA(To::StaticClass()) ? static_cast<To*>(Object) : nullptr;
}
template <typename To, typename From>
const To* Cast(const From* Object)
{
	return Object && Object->IsA(To::StaticClass()) ? static_cast<const To*>(Object) : nullptr;
}

template <typename To, typename From>
To* Cast(const TObjectPtr<From>& Object)
{
	return Cast<To>(Object.Get());
}

/** Like Cast, but null or another class is an assertion. */
template <typename To, typename From>
To* CastChecked(From* Object)
{
	To* Result = Cast<To>(Object);
	check(Result != nullptr);
	return Result;
}
