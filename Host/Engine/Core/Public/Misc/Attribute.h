#pragma once

#include "Delegates/Delegate.h"

#include <concepts>

/** The binding operations of TAttribute; P is empty, it is there for the family of bindings. */
template <typename AttributeType, typename R, typename... P>
class TAttributeBindings
{
public:
	using FGetter = TDelegate<R(P...)>;
	template <typename UserClass, typename... Vars>
	using TMethodPtr = typename TMemFunPtrType<false, UserClass, R(P..., Vars...)>::Type;
	template <typename UserClass, typename... Vars>
	using TConstMethodPtr = typename TMemFunPtrType<true, UserClass, R(P..., Vars...)>::Type;

	UE_DELEGATE_FAMILY(UE_NODISCARD static AttributeType, Create, AttributeType::FromInstance)
	UE_DELEGATE_FAMILY(void, Bind, SetInstance)

protected:
	void SetInstance(std::shared_ptr<UE::Delegates::TInstance<R(P...)>> Instance)
	{
		static_cast<AttributeType*>(this)->Bind(FGetter::FromInstance(static_cast<decltype(Instance)&&>(Instance)));
	}
};

/**
 * A value, or a function that is asked for it on every read, or unset. A function bound to an object by shared pointer is
 * weak: once the object is gone, Get gives what it gave last.
 */
template <typename ObjectType>
class TAttribute : public TAttributeBindings<TAttribute<ObjectType>, ObjectType>
{
public:
	using FGetter = TDelegate<ObjectType()>;

	TAttribute() = default;
	template <typename OtherType>
	requires(!std::same_as<std::decay_t<OtherType>, TAttribute> && std::convertible_to<OtherType, ObjectType>)
		TAttribute(OtherType&& InValue)
		: Value(Forward<OtherType>(InValue))
		, bIsSet(true)
	{
	}
	/** Binds a method of an object owned by a shared pointer. */
	template <class SourceType>
	TAttribute(const TSharedRef<SourceType>& Object, typename FGetter::template TConstMethodPtr<SourceType> Method)
		: Getter(FGetter::CreateSP(Object, Method))
		, bIsSet(true)
	{
	}
	template <class SourceType>
	TAttribute(SourceType* Object, typename FGetter::template TConstMethodPtr<SourceType> Method)
		: Getter(FGetter::CreateSP(Object, Method))
		, bIsSet(true)
	{
	}

	/** Replaces a bound function too. */
	template <typename OtherType>
	requires std::convertible_to<OtherType, ObjectType>
	void Set(OtherType&& InValue)
	{
		Getter.Unbind();
		Value = Forward<OtherType>(InValue);
		bIsSet = true;
	}
	bool IsSet() const { return bIsSet; }
	/** Good until the next Get, Set or Bind. */
	const ObjectType& Get() const
	{
		if (Getter.IsBound())
		{
			const FGetter Kept = Getter; // The function may set this attribute.
			Value = Kept.Execute();
		}
		return Value;
	}
	/** The caller's default unless set. */
	ObjectType Get(const ObjectType& DefaultValue) const { return bIsSet ? Get() : DefaultValue; }

	bool IsBound() const { return Getter.IsBound(); }
	/** Keeps the value read last. */
	void Unbind() { Getter.Unbind(); }
	void Bind(const FGetter& InGetter)
	{
		Getter = InGetter;
		bIsSet = true;
	}
	template <typename FunctorType>
	requires(!std::same_as<std::decay_t<FunctorType>, FGetter> && std::is_invocable_r_v<ObjectType, FunctorType&>) void Bind(
		FunctorType&& Functor)
	{
		Bind(FGetter::CreateLambda(Forward<FunctorType>(Functor)));
	}
	template <class SourceType>
	void Bind(SourceType* Object, typename FGetter::template TConstMethodPtr<SourceType> Method)
	{
		Bind(FGetter::CreateSP(Object, Method));
	}
	static TAttribute Create(const FGetter& InGetter)
	{
		TAttribute Result;
		Result.Bind(InGetter);
		return Result;
	}
	template <typename FunctorType>
	requires(!std::same_as<std::decay_t<FunctorType>, FGetter> && std::is_invocable_r_v<ObjectType, FunctorType&>) static TAttribute
		Create(FunctorType&& Functor)
	{
		return Create(FGetter::CreateLambda(Forward<FunctorType>(Functor)));
	}
	template <class SourceType>
	static TAttribute Create(SourceType* Object, typename FGetter::template TConstMethodPtr<SourceType> Method)
	{
		return Create(FGetter::CreateSP(Object, Method));
	}

	/** Same function, or equal values. */
	bool IdenticalTo(const TAttribute& Other) const
	{
		if (IsBound() != Other.IsBound())
		{
			return false;
		}
		if (IsBound())
		{
			return Getter.GetHandle() == Other.Getter.GetHandle();
		}
		return bIsSet == Other.bIsSet && (!bIsSet || Value == Other.Value);
	}

private:
	friend class TAttributeBindings<TAttribute, ObjectType>;
	static TAttribute FromInstance(std::shared_ptr<UE::Delegates::TInstance<ObjectType()>> Instance)
	{
		return Create(FGetter::FromInstance(static_cast<decltype(Instance)&&>(Instance)));
	}
	mutable ObjectType Value{};
	FGetter Getter;
	bool bIsSet = false;
};
