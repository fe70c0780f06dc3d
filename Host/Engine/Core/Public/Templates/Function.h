#pragma once

#include "Misc/AssertionMacros.h"
#include "Templates/UnrealTemplate.h"

#include <cstddef>
#include <memory>

template <typename FuncType>
class TFunction;
template <typename FuncType>
class TUniqueFunction;
template <typename FuncType>
class TFunctionRef;

namespace UE::Function
{
	template <typename ReturnType, typename... ParamTypes>
	struct ICallable
	{
		virtual ~ICallable() = default;
		virtual ReturnType Call(ParamTypes... Params) = 0;
		/** Null for what cannot be copied. */
		virtual std::unique_ptr<ICallable> Clone() const = 0;
	};

	template <typename FunctorType, typename ReturnType, typename... ParamTypes>
	struct TCallable final : ICallable<ReturnType, ParamTypes...>
	{
		template <typename ArgType>
		explicit TCallable(ArgType&& InFunctor)
			: Functor(Forward<ArgType>(InFunctor))
		{
		}
		ReturnType Call(ParamTypes... Params) override { return (ReturnType)Functor(Forward<ParamTypes>(Params)...); }
		std::unique_ptr<ICallable<ReturnType, ParamTypes...>> Clone() const override
		{
			if constexpr (std::is_copy_constructible_v<FunctorType>)
			{
				return std::unique_ptr<ICallable<ReturnType, ParamTypes...>>(new TCallable(Functor));
			}
			else
			{
				return nullptr;
			}
		}
		FunctorType Functor;
	};

	template <typename T>
	inline constexpr bool TIsWrapper = false;
	template <typename T>
	inline constexpr bool TIsWrapper<TFunction<T>> = true;
	template <typename T>
	inline constexpr bool TIsWrapper<TUniqueFunction<T>> = true;

	template <typename T>
	bool IsCallableBound(const T& Functor)
	{
		if constexpr (std::is_pointer_v<T> || TIsWrapper<T>)
		{
			return !!Functor;
		}
		else
		{
			return true;
		}
	}

	template <typename FunctorType, typename ReturnType, typename... ParamTypes>
	concept CCallable = std::is_invocable_r_v<ReturnType, FunctorType&, ParamTypes...>;

	/** What TFunction and TUniqueFunction share: an owned callable or nothing. */
	template <typename ReturnType, typename... ParamTypes>
	class TStorage
	{
	public:
		explicit operator bool() const { return Callable != nullptr; }
		bool IsSet() const { return Callable != nullptr; }
		void Reset() { Callable.reset(); }
		ReturnType operator()(ParamTypes... Params) const
		{
			check(Callable != nullptr);
			return Callable->Call(Forward<ParamTypes>(Params)...);
		}

	protected:
		template <typename FunctorType>
		void Set(FunctorType&& Functor)
		{
			using StoredType = std::decay_t<FunctorType>;
			if (IsCallableBound<StoredType>(Functor))
			{
				Callable.reset(new TCallable<StoredType, ReturnType, ParamTypes...>(Forward<FunctorType>(Functor)));
			}
		}
		std::unique_ptr<ICallable<ReturnType, ParamTypes...>> Callable;
	};
}

/** Owns a copy of any callable; may be null, tests as bool. Calling a null one is an assertion. */
template <typename ReturnType, typename... ParamTypes>
class TFunction<ReturnType(ParamTypes...)> : public UE::Function::TStorage<ReturnType, ParamTypes...>
{
public:
	TFunction() = default;
	TFunction(std::nullptr_t) {}
	TFunction(const TFunction& Other)
	{
		if (Other.Callable)
		{
			this->Callable = Other.Callable->Clone();
		}
	}
	TFunction(TFunction&&) noexcept = default;
	template <typename FunctorType>
	// The unique function is told apart first: asking whether it can be copied would ask this very question again.
	requires(!std::is_same_v<std::decay_t<FunctorType>, TFunction> &&
		!std::is_same_v<std::decay_t<FunctorType>, TUniqueFunction<ReturnType(ParamTypes...)>> &&
		std::is_copy_constructible_v<std::decay_t<FunctorType>> &&
		UE::Function::CCallable<std::decay_t<FunctorType>, ReturnType, ParamTypes...>) TFunction(FunctorType&& Functor)
	{
		this->Set(Forward<FunctorType>(Functor));
	}
	TFunction& operator=(TFunction&&) noexcept = default;
	TFunction& operator=(const TFunction& Other)
	{
		TFunction Copy(Other);
		this->Callable.swap(Copy.Callable);
		return *this;
	}
	friend bool operator==(const TFunction& A, std::nullptr_t) { return !A.IsSet(); }

private:
	friend class TUniqueFunction<ReturnType(ParamTypes...)>;
};

/** TFunction for callables that only move. */
template <typename ReturnType, typename... ParamTypes>
class TUniqueFunction<ReturnType(ParamTypes...)> : public UE::Function::TStorage<ReturnType, ParamTypes...>
{
public:
	TUniqueFunction() = default;
	TUniqueFunction(std::nullptr_t) {}
	TUniqueFunction(TUniqueFunction&&) noexcept = default;
	/** A template, so that asking whether this class can be copied does not ask what converts to TFunction. */
	template <typename OtherType>
	requires std::is_same_v<OtherType, TFunction<ReturnType(ParamTypes...)>> TUniqueFunction(OtherType&& Other)
	{
		this->Callable = static_cast<decltype(Other.Callable)&&>(Other.Callable);
	}
	template <typename FunctorType>
	requires(!std::is_same_v<std::decay_t<FunctorType>, TUniqueFunction> &&
		!std::is_same_v<FunctorType, TFunction<ReturnType(ParamTypes...)>> &&
		UE::Function::CCallable<std::decay_t<FunctorType>, ReturnType, ParamTypes...>) TUniqueFunction(FunctorType&& Functor)
	{
		this->Set(Forward<FunctorType>(Functor));
	}
	TUniqueFunction& operator=(TUniqueFunction&&) noexcept = default;
	friend bool operator==(const TUniqueFunction& A, std::nullptr_t) { return !A.IsSet(); }
};

/** Refers to a callable that must outlive it: for parameters only. Never null. */
template <typename ReturnType, typename... ParamTypes>
class TFunctionRef<ReturnType(ParamTypes...)>
{
public:
	template <typename FunctorType>
	requires(!std::is_same_v<std::decay_t<FunctorType>, TFunctionRef> && std::is_invocable_r_v<ReturnType, FunctorType&, ParamTypes...>)
		TFunctionRef(FunctorType&& Functor)
	{
		using RawType = std::remove_reference_t<FunctorType>;
		if constexpr (std::is_function_v<RawType>)
		{
			Object = reinterpret_cast<void*>(&Functor);
			Thunk = [](void* InObject, ParamTypes... Params) -> ReturnType
			{ return (ReturnType) reinterpret_cast<RawType*>(InObject)(Forward<ParamTypes>(Params)...); };
		}
		else
		{
			check(UE::Function::IsCallableBound<std::decay_t<FunctorType>>(Functor));
			Object = const_cast<void*>(static_cast<const void*>(&Functor));
			Thunk = [](void* InObject, ParamTypes... Params) -> ReturnType
			{ return (ReturnType)(*static_cast<RawType*>(InObject))(Forward<ParamTypes>(Params)...); };
		}
	}
	ReturnType operator()(ParamTypes... Params) const { return Thunk(Object, Forward<ParamTypes>(Params)...); }

private:
	void* Object = nullptr;
	ReturnType (*Thunk)(void*, ParamTypes...) = nullptr;
};
