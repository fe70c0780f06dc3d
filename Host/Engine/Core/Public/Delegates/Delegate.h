#pragma once

#include "Delegates/DelegateInstances.h"

#include <algorithm>
#include <memory>
#include <vector>

template <typename FuncType>
class TDelegate;
template <typename FuncType>
class TMulticastDelegate;
template <typename AttributeType, typename R, typename... P>
class TAttributeBindings;
template <typename ObjectType>
class TAttribute;

/**
 * Something to call, or nothing. Copies share one binding, so copying is cheap. A binding to an object by shared pointer or
 * UObject is weak and unbound once the object is gone; the object is kept for the time of the call. Payload values are kept
 * by copy and passed behind the parameters.
 */
template <typename R, typename... P>
class TDelegate<R(P...)>
{
	using FInstance = UE::Delegates::TInstance<R(P...)>;

public:
	using RetValType = R;
	using TFuncType = R(P...);
	template <typename UserClass, typename... Vars>
	using TMethodPtr = typename TMemFunPtrType<false, UserClass, R(P..., Vars...)>::Type;
	template <typename UserClass, typename... Vars>
	using TConstMethodPtr = typename TMemFunPtrType<true, UserClass, R(P..., Vars...)>::Type;

	TDelegate() = default;
	TDelegate(std::nullptr_t) {}

	bool IsBound() const { return Instance && Instance->IsSafeToExecute(); }
	FDelegateHandle GetHandle() const { return Instance ? Instance->Handle : FDelegateHandle(); }
	void Unbind() { Instance.reset(); }
	/** Must be bound. The handler may unbind or destroy this delegate. */
	R Execute(P... Params) const
	{
		const std::shared_ptr<FInstance> Kept = Instance;
		check(Kept != nullptr);
		return Kept->Execute(Forward<P>(Params)...);
	}
	/** False when nothing was called. */
	bool ExecuteIfBound(P... Params) const requires std::is_void_v<R>
	{
		const std::shared_ptr<FInstance> Kept = Instance;
		return Kept && Kept->ExecuteIfSafe(Forward<P>(Params)...);
	}

	UE_DELEGATE_FAMILY(UE_NODISCARD static TDelegate, Create, FromInstance)
	UE_DELEGATE_FAMILY(void, Bind, SetInstance)

private:
	friend class TMulticastDelegate<void(P...)>;
	template <typename AttributeType, typename GetterReturn, typename... GetterParams>
	friend class TAttributeBindings;
	template <typename AttributeObject>
	friend class TAttribute;

	static TDelegate FromInstance(std::shared_ptr<FInstance> InInstance)
	{
		TDelegate Result;
		Result.SetInstance(static_cast<std::shared_ptr<FInstance>&&>(InInstance));
		return Result;
	}
	void SetInstance(std::shared_ptr<FInstance> InInstance) { Instance.swap(InInstance); }
	std::shared_ptr<FInstance> Instance;
};

/**
 * Any number of bindings, called last added first. A handler may add, remove, clear or destroy while it is called: what was
 * removed is not called any more, what was added is not called by the broadcast under way. Not for several threads at once.
 */
template <typename... P>
class TMulticastDelegate<void(P...)>
{
	using R = void;
	using FInstance = UE::Delegates::TInstance<void(P...)>;

public:
	using FDelegate = TDelegate<void(P...)>;
	template <typename UserClass, typename... Vars>
	using TMethodPtr = typename TMemFunPtrType<false, UserClass, void(P..., Vars...)>::Type;
	template <typename UserClass, typename... Vars>
	using TConstMethodPtr = typename TMemFunPtrType<true, UserClass, void(P..., Vars...)>::Type;

	TMulticastDelegate() = default;
	TMulticastDelegate(const TMulticastDelegate& Other) { CopyFrom(Other); }
	TMulticastDelegate(TMulticastDelegate&& Other) noexcept { List.swap(Other.List); }
	TMulticastDelegate& operator=(const TMulticastDelegate& Other)
	{
		if (this != &Other)
		{
			Clear();
			CopyFrom(Other);
		}
		return *this;
	}
	TMulticastDelegate& operator=(TMulticastDelegate&& Other) noexcept
	{
		if (this != &Other)
		{
			Clear();
			List.swap(Other.List);
		}
		return *this;
	}
	~TMulticastDelegate() { Clear(); }

	FDelegateHandle Add(const FDelegate& Delegate) { return Delegate.Instance ? AddInstance(Delegate.Instance) : FDelegateHandle(); }
	UE_DELEGATE_FAMILY(FDelegateHandle, Add, AddInstance)

	bool Remove(FDelegateHandle Handle)
	{
		return RemoveIf([&Handle](const FInstance& Instance) { return Instance.Handle == Handle; }) > 0;
	}
	/** All bindings to this object. Returns their number. */
	int32 RemoveAll(const void* Object)
	{
		return RemoveIf([Object](const FInstance& Instance) { return Object && Instance.GetObject() == Object; });
	}
	void Clear()
	{
		RemoveIf([](const FInstance&) { return true; });
		List.reset();
	}
	bool IsBound() const
	{
		return List &&
			std::any_of(List->Entries.begin(), List->Entries.end(), [](const auto& Entry) { return Entry && Entry->IsSafeToExecute(); });
	}
	void Broadcast(P... Params) const
	{
		const std::shared_ptr<FList> Kept = List;
		if (!Kept)
		{
			return;
		}
		++Kept->Depth;
		for (std::size_t Index = Kept->Entries.size(); Index-- > 0;)
		{
			const std::shared_ptr<FInstance> Instance = Kept->Entries[Index];
			if (Instance)
			{
				(void)Instance->ExecuteIfSafe(Params...);
			}
		}
		if (--Kept->Depth == 0)
		{
			Kept->Compact();
		}
	}

private:
	struct FList
	{
		void Compact()
		{
			std::erase_if(Entries, [](const auto& Entry) { return !Entry || !Entry->IsSafeToExecute(); });
		}
		/** Null where one was removed while broadcasting, when places must not move. */
		std::vector<std::shared_ptr<FInstance>> Entries;
		int32 Depth = 0;
	};

	void CopyFrom(const TMulticastDelegate& Other)
	{
		if (Other.List)
		{
			List = std::make_shared<FList>();
			List->Entries = Other.List->Entries;
			List->Compact();
		}
	}
	FDelegateHandle AddInstance(std::shared_ptr<FInstance> Instance)
	{
		if (!List)
		{
			List = std::make_shared<FList>();
		}
		// Now and then the dead are dropped, so that an event that is never broadcast does not grow for ever.
		if (List->Depth == 0 && List->Entries.size() == List->Entries.capacity())
		{
			List->Compact();
		}
		List->Entries.push_back(static_cast<std::shared_ptr<FInstance>&&>(Instance));
		return List->Entries.back()->Handle;
	}
	template <typename PredicateType>
	int32 RemoveIf(const PredicateType& Predicate)
	{
		// Kept to the end of the call: destroying a binding may run code that comes back here.
		std::vector<std::shared_ptr<FInstance>> Dying;
		const std::shared_ptr<FList> Kept = List;
		if (Kept)
		{
			for (std::shared_ptr<FInstance>& Entry : Kept->Entries)
			{
				if (Entry && Predicate(*Entry))
				{
					Dying.emplace_back();
					Dying.back().swap(Entry);
				}
			}
			if (Kept->Depth == 0 && !Dying.empty())
			{
				Kept->Compact();
			}
		}
		return (int32)Dying.size();
	}
	std::shared_ptr<FList> List;
};

using FSimpleDelegate = TDelegate<void()>;
using FSimpleMulticastDelegate = TMulticastDelegate<void()>;

#include "Delegates/DelegateCombinations.h"
