#pragma once

#include "Delegates/IDelegateInstance.h"
#include "Templates/SharedPointer.h"
#include "Templates/UnrealTemplate.h"

#include <tuple>

class UObject;

/** Completed by the room that has objects: `UObject/WeakObjectPtrTemplates.h`. Needed only where a delegate binds to an object. */
template <class T>
struct TWeakObjectPtr;

/** The type of a member function. */
template <bool bConst, typename Class, typename FuncType>
struct TMemFunPtrType;
template <typename Class, typename R, typename... A>
struct TMemFunPtrType<false, Class, R(A...)>
{
	using Type = R (Class::*)(A...);
};
template <typename Class, typename R, typename... A>
struct TMemFunPtrType<true, Class, R(A...)>
{
	using Type = R (Class::*)(A...) const;
};

namespace UE::Delegates
{
	/** One binding: what to call, with its payload, and whether it may still be called. Shared by copies of a delegate. */
	template <typename FuncType>
	class TInstance;

	template <typename R, typename... P>
	class TInstance<R(P...)>
	{
	public:
		TInstance()
			: Handle(FDelegateHandle::GenerateNewHandle)
		{
		}
		virtual ~TInstance() = default;
		/** False when the object is gone; then nothing was called. Result is where the return value goes. */
		virtual R Execute(P... Params) = 0;
		virtual bool ExecuteIfSafe(P... Params) = 0;
		virtual bool IsSafeToExecute() const = 0;
		/** The object bound to, or null. */
		virtual const void* GetObject() const = 0;
		const FDelegateHandle Handle;
	};

	// Holders keep the object of a binding: Pin() gives something that tests as bool and keeps the object for the call.
	struct FNoHolder
	{
		bool Pin() const { return true; }
		bool IsAlive() const { return true; }
		const void* GetObject() const { return nullptr; }
	};

	template <typename T>
	struct TRawHolder
	{
		T* Object;
		T* Pin() const { return Object; }
		bool IsAlive() const { return true; }
		const void* GetObject() const { return (const void*)Object; }
	};

	template <typename T, ESPMode Mode>
	struct TSPHolder
	{
		explicit TSPHolder(const TSharedRef<T, Mode>& Ref)
			: Weak(Ref)
			, Address(&Ref.Get())
		{
		}
		TSharedPtr<T, Mode> Pin() const { return Weak.Pin(); }
		bool IsAlive() const { return Weak.IsValid(); }
		const void* GetObject() const { return Address; }
		TWeakPtr<T, Mode> Weak;
		/** Compared only; the object may be gone. */
		const void* Address;
	};

	template <typename T>
	struct TUObjectHolder
	{
		explicit TUObjectHolder(T* InObject)
			: Weak(InObject)
			, Address(InObject)
		{
		}
		T* Pin() const { return Weak.Get(); }
		bool IsAlive() const { return Weak.IsValid(); }
		const void* GetObject() const { return Address; }
		TWeakObjectPtr<T> Weak;
		const void* Address;
	};

	template <typename T>
	T* ToAddress(T* Pointer)
	{
		return Pointer;
	}
	template <typename T, ESPMode Mode>
	T* ToAddress(const TSharedPtr<T, Mode>& Pointer)
	{
		return Pointer.Get();
	}
	inline bool ToAddress(bool bAlive)
	{
		return bAlive;
	}

	template <typename FuncType, typename HolderType, typename CallableType, typename... PayloadTypes>
	class TBound;

	template <typename R, typename... P, typename HolderType, typename CallableType, typename... PayloadTypes>
	class TBound<R(P...), HolderType, CallableType, PayloadTypes...> final : public TInstance<R(P...)>
	{
	public:
		template <typename HolderArg, typename CallableArg, typename... PayloadArgs>
		TBound(HolderArg&& InHolder, CallableArg&& InCallable, PayloadArgs&&... InPayload)
			: Holder(Forward<HolderArg>(InHolder))
			, Callable(Forward<CallableArg>(InCallable))
			, Payload(Forward<PayloadArgs>(InPayload)...)
		{
		}
		R Execute(P... Params) override
		{
			const auto Pinned = Holder.Pin();
			check(Pinned);
			return Call(Pinned, Forward<P>(Params)...);
		}
		bool ExecuteIfSafe(P... Params) override
		{
			const auto Pinned = Holder.Pin();
			if (!Pinned)
			{
				return false;
			}
			(void)Call(Pinned, Forward<P>(Params)...);
			return true;
		}
		bool IsSafeToExecute() const override { return Holder.IsAlive(); }
		const void* GetObject() const override { return Holder.GetObject(); }

	private:
		template <typename PinType>
		R Call(const PinType& Pinned, P... Params)
		{
			// By name: with payloads g++ 12 gives the lambda a wrong "this" under the undefined-behaviour sanitizer.
			return std::apply(
				[&, &Callee = Callable](PayloadTypes&... Each) -> R
				{
					if constexpr (std::is_member_function_pointer_v<CallableType>)
					{
						auto& Object = *ToAddress(Pinned);
						return (Object.*Callee)(Forward<P>(Params)..., Each...);
					}
					else
					{
						return Callee(Forward<P>(Params)..., Each...);
					}
				},
				Payload);
		}
		HolderType Holder;
		CallableType Callable;
		std::tuple<PayloadTypes...> Payload;
	};
}

namespace UE::Delegates
{
	template <typename UserClass>
	auto ToSharedRef(UserClass* Object)
	{
		auto Shared = Object->AsShared();
		return StaticCastSharedRef<UserClass>(Shared);
	}
	template <typename UserClass, ESPMode Mode>
	TSPHolder<UserClass, Mode> MakeSPHolder(const TSharedRef<UserClass, Mode>& Ref)
	{
		return TSPHolder<UserClass, Mode>(Ref);
	}

	template <typename FuncType, typename HolderType, typename CallableType, typename... Vars>
	std::shared_ptr<TInstance<FuncType>> MakeInstance(HolderType&& Holder, CallableType&& Callable, Vars&&... Payload)
	{
		using FBound = TBound<FuncType, std::decay_t<HolderType>, std::decay_t<CallableType>, std::decay_t<Vars>...>;
		return std::make_shared<FBound>(Forward<HolderType>(Holder), Forward<CallableType>(Callable), Forward<Vars>(Payload)...);
	}
}

/**
 * The ways of binding, once for CreateX, BindX and AddX: Use takes the new instance. Stands in a class with R, P and the two
 * method types. Written out per kind of object and method, since the address of an overloaded method cannot be forwarded.
 */
#define UE_DELEGATE_FAMILY(ResultSpec, Prefix, Use) \
	template <typename... Vars> \
	ResultSpec Prefix##Static(std::type_identity_t<R (*)(P..., std::decay_t<Vars>...)> Func, Vars&&... Payload) \
	{ \
		check(Func != nullptr); \
		return Use(UE::Delegates::MakeInstance<R(P...)>(UE::Delegates::FNoHolder(), Func, Forward<Vars>(Payload)...)); \
	} \
	template <typename FunctorType, typename... Vars> \
	ResultSpec Prefix##Lambda(FunctorType&& Functor, Vars&&... Payload) \
	{ \
		return Use( \
			UE::Delegates::MakeInstance<R(P...)>(UE::Delegates::FNoHolder(), Forward<FunctorType>(Functor), Forward<Vars>(Payload)...)); \
	} \
	template <typename UserClass, typename... Vars> \
	ResultSpec Prefix##Raw(UserClass* Object, TMethodPtr<UserClass, std::decay_t<Vars>...> Func, Vars&&... Payload) \
	{ \
		check(Object != nullptr); \
		return Use(UE::Delegates::MakeInstance<R(P...)>(UE::Delegates::TRawHolder<UserClass>{ Object }, Func, Forward<Vars>(Payload)...)); \
	} \
	template <typename UserClass, typename... Vars> \
	ResultSpec Prefix##Raw(const UserClass* Object, TConstMethodPtr<UserClass, std::decay_t<Vars>...> Func, Vars&&... Payload) \
	{ \
		check(Object != nullptr); \
		return Use( \
			UE::Delegates::MakeInstance<R(P...)>(UE::Delegates::TRawHolder<const UserClass>{ Object }, Func, Forward<Vars>(Payload)...)); \
	} \
	template <typename UserClass, ESPMode Mode, typename... Vars> \
	ResultSpec Prefix##SP(const TSharedRef<UserClass, Mode>& Object, TMethodPtr<UserClass, std::decay_t<Vars>...> Func, Vars&&... Payload) \
	{ \
		return Use(UE::Delegates::MakeInstance<R(P...)>(UE::Delegates::MakeSPHolder(Object), Func, Forward<Vars>(Payload)...)); \
	} \
	template <typename UserClass, ESPMode Mode, typename... Vars> \
	ResultSpec Prefix##SP( \
		const TSharedRef<UserClass, Mode>& Object, TConstMethodPtr<UserClass, std::decay_t<Vars>...> Func, Vars&&... Payload) \
	{ \
		return Use(UE::Delegates::MakeInstance<R(P...)>(UE::Delegates::MakeSPHolder(Object), Func, Forward<Vars>(Payload)...)); \
	} \
	template <typename UserClass, typename... Vars> \
	ResultSpec Prefix##SP(UserClass* Object, TMethodPtr<UserClass, std::decay_t<Vars>...> Func, Vars&&... Payload) \
	{ \
		return Use(UE::Delegates::MakeInstance<R(P...)>( \
			UE::Delegates::MakeSPHolder(UE::Delegates::ToSharedRef(Object)), Func, Forward<Vars>(Payload)...)); \
	} \
	template <typename UserClass, typename... Vars> \
	ResultSpec Prefix##SP(const UserClass* Object, TConstMethodPtr<UserClass, std::decay_t<Vars>...> Func, Vars&&... Payload) \
	{ \
		return Use(UE::Delegates::MakeInstance<R(P...)>( \
			UE::Delegates::MakeSPHolder(UE::Delegates::ToSharedRef(Object)), Func, Forward<Vars>(Payload)...)); \
	} \
	template <typename UserClass, typename FunctorType, typename... Vars> \
	ResultSpec Prefix##SPLambda(UserClass* Object, FunctorType&& Functor, Vars&&... Payload) \
	{ \
		return Use(UE::Delegates::MakeInstance<R(P...)>( \
			UE::Delegates::MakeSPHolder(UE::Delegates::ToSharedRef(Object)), Forward<FunctorType>(Functor), Forward<Vars>(Payload)...)); \
	} \
	template <typename UserClass, ESPMode Mode, typename FunctorType, typename... Vars> \
	ResultSpec Prefix##SPLambda(const TSharedRef<UserClass, Mode>& Object, FunctorType&& Functor, Vars&&... Payload) \
	{ \
		return Use(UE::Delegates::MakeInstance<R(P...)>( \
			UE::Delegates::MakeSPHolder(Object), Forward<FunctorType>(Functor), Forward<Vars>(Payload)...)); \
	} \
	template <typename UserClass, typename... Vars> \
	ResultSpec Prefix##UObject(UserClass* Object, TMethodPtr<UserClass, std::decay_t<Vars>...> Func, Vars&&... Payload) \
	{ \
		return Use( \
			UE::Delegates::MakeInstance<R(P...)>(UE::Delegates::TUObjectHolder<UserClass>(Object), Func, Forward<Vars>(Payload)...)); \
	} \
	template <typename UserClass, typename... Vars> \
	ResultSpec Prefix##UObject(const UserClass* Object, TConstMethodPtr<UserClass, std::decay_t<Vars>...> Func, Vars&&... Payload) \
	{ \
		return Use(UE::Delegates::MakeInstance<R(P...)>( \
			UE::Delegates::TUObjectHolder<const UserClass>(Object), Func, Forward<Vars>(Payload)...)); \
	} \
	template <typename UserClass, typename FunctorType, typename... Vars> \
	ResultSpec Prefix##WeakLambda(UserClass* Object, FunctorType&& Functor, Vars&&... Payload) \
	{ \
		return Use(UE::Delegates::MakeInstance<R(P...)>( \
			UE::Delegates::TUObjectHolder<UserClass>(Object), Forward<FunctorType>(Functor), Forward<Vars>(Payload)...)); \
	}
