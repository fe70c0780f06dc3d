#pragma once

#include "Misc/AssertionMacros.h"
#include "Templates/TypeHash.h"
#include "Templates/UnrealTemplate.h"

#include <cstddef>
#include <memory>

enum class ESPMode : uint8
{
	/** Kept for the spelling: counting is always thread-safe here. */
	NotThreadSafe = 0,
	ThreadSafe = 1
};

template <class ObjectType, ESPMode Mode = ESPMode::ThreadSafe>
class TSharedRef;
template <class ObjectType, ESPMode Mode = ESPMode::ThreadSafe>
class TSharedPtr;
template <class ObjectType, ESPMode Mode = ESPMode::ThreadSafe>
class TWeakPtr;
template <class ObjectType, ESPMode Mode = ESPMode::ThreadSafe>
class TSharedFromThis;

namespace UE::SharedPointer
{
	/** What MakeShareable returns: becomes a shared pointer or reference of any base type. */
	template <class ObjectType>
	struct TRawProxy
	{
		std::shared_ptr<ObjectType> Owner;
	};

	template <class From, class To>
	concept CConvertible = std::is_convertible_v<From*, To*>;
}

/** Shared ownership that is never null. Moving from one copies it, so the source stays valid. */
template <class ObjectType, ESPMode Mode>
class TSharedRef
{
public:
	using ElementType = ObjectType;
	static constexpr ESPMode ModeValue = Mode;

	explicit TSharedRef(ObjectType* InObject)
		: Object(InObject)
	{
		check(InObject != nullptr);
	}
	template <class OtherType>
	requires UE::SharedPointer::CConvertible<OtherType, ObjectType> TSharedRef(UE::SharedPointer::TRawProxy<OtherType>&& Proxy)
		: Object(static_cast<std::shared_ptr<OtherType>&&>(Proxy.Owner))
	{
		check(Object != nullptr);
	}
	TSharedRef(const TSharedRef& Other) = default;
	template <class OtherType>
	requires UE::SharedPointer::CConvertible<OtherType, ObjectType> TSharedRef(const TSharedRef<OtherType, Mode>& Other)
		: Object(Other.Object)
	{
	}
	TSharedRef& operator=(const TSharedRef& Other) = default;

	ObjectType& Get() const { return *Object; }
	ObjectType& operator*() const { return *Object; }
	ObjectType* operator->() const { return Object.get(); }
	TSharedPtr<ObjectType, Mode> ToSharedPtr() const { return TSharedPtr<ObjectType, Mode>(*this); }

	/** For the conversions of this header. Owner must not be null. */
	static TSharedRef FromStd(std::shared_ptr<ObjectType> Owner)
	{
		return TSharedRef(FStdTag(), static_cast<std::shared_ptr<ObjectType>&&>(Owner));
	}
	const std::shared_ptr<ObjectType>& ToStd() const { return Object; }

	friend uint32 GetTypeHash(const TSharedRef& Ref) { return PointerHash(Ref.Object.get()); }

private:
	struct FStdTag
	{
	};
	TSharedRef(FStdTag, std::shared_ptr<ObjectType> Owner)
		: Object(static_cast<std::shared_ptr<ObjectType>&&>(Owner))
	{
		check(Object != nullptr);
	}
	template <class OtherType, ESPMode OtherMode>
	friend class TSharedRef;
	template <class OtherType, ESPMode OtherMode>
	friend class TSharedPtr;
	template <class OtherType, ESPMode OtherMode>
	friend class TWeakPtr;
	std::shared_ptr<ObjectType> Object;
};

/** Shared ownership that may be null. */
template <class ObjectType, ESPMode Mode>
class TSharedPtr
{
public:
	using ElementType = ObjectType;
	static constexpr ESPMode ModeValue = Mode;

	TSharedPtr() = default;
	TSharedPtr(std::nullptr_t) {}
	template <class OtherType>
	requires UE::SharedPointer::CConvertible<OtherType, ObjectType>
	explicit TSharedPtr(OtherType* InObject)
		: Object(InObject)
	{
	}
	template <class OtherType, class DeleterType>
	requires UE::SharedPointer::CConvertible<OtherType, ObjectType> TSharedPtr(OtherType* InObject, DeleterType&& Deleter)
		: Object(InObject, Forward<DeleterType>(Deleter))
	{
	}
	template <class OtherType>
	requires UE::SharedPointer::CConvertible<OtherType, ObjectType> TSharedPtr(UE::SharedPointer::TRawProxy<OtherType>&& Proxy)
		: Object(static_cast<std::shared_ptr<OtherType>&&>(Proxy.Owner))
	{
	}
	TSharedPtr(const TSharedPtr&) = default;
	TSharedPtr(TSharedPtr&&) noexcept = default;
	template <class OtherType>
	requires UE::SharedPointer::CConvertible<OtherType, ObjectType> TSharedPtr(const TSharedPtr<OtherType, Mode>& Other)
		: Object(Other.Object)
	{
	}
	template <class OtherType>
	requires UE::SharedPointer::CConvertible<OtherType, ObjectType> TSharedPtr(TSharedPtr<OtherType, Mode>&& Other)
		: Object(static_cast<std::shared_ptr<OtherType>&&>(Other.Object))
	{
	}
	template <class OtherType>
	requires UE::SharedPointer::CConvertible<OtherType, ObjectType> TSharedPtr(const TSharedRef<OtherType, Mode>& Other)
		: Object(Other.Object)
	{
	}
	/** Shares ownership with Other but points to InObject, usually a part of it. */
	template <class OtherType>
	TSharedPtr(const TSharedPtr<OtherType, Mode>& Other, ObjectType* InObject)
		: Object(Other.Object, InObject)
	{
	}
	TSharedPtr& operator=(const TSharedPtr&) = default;
	TSharedPtr& operator=(TSharedPtr&&) noexcept = default;
	TSharedPtr& operator=(std::nullptr_t)
	{
		Reset();
		return *this;
	}

	bool IsValid() const { return Object != nullptr; }
	explicit operator bool() const { return IsValid(); }
	ObjectType* Get() const { return Object.get(); }
	std::add_lvalue_reference_t<ObjectType> operator*() const
	{
		check(IsValid());
		return *Object;
	}
	ObjectType* operator->() const
	{
		check(IsValid());
		return Object.get();
	}
	TSharedRef<ObjectType, Mode> ToSharedRef() const& { return TSharedRef<ObjectType, Mode>::FromStd(Object); }
	TSharedRef<ObjectType, Mode> ToSharedRef() &&
	{
		return TSharedRef<ObjectType, Mode>::FromStd(static_cast<std::shared_ptr<ObjectType>&&>(Object));
	}
	void Reset() { Object.reset(); }

	static TSharedPtr FromStd(std::shared_ptr<ObjectType> Owner)
	{
		TSharedPtr Result;
		Result.Object = static_cast<std::shared_ptr<ObjectType>&&>(Owner);
		return Result;
	}
	const std::shared_ptr<ObjectType>& ToStd() const { return Object; }

	friend uint32 GetTypeHash(const TSharedPtr& Pointer) { return PointerHash(Pointer.Object.get()); }

private:
	template <class OtherType, ESPMode OtherMode>
	friend class TSharedPtr;
	template <class OtherType, ESPMode OtherMode>
	friend class TWeakPtr;
	std::shared_ptr<ObjectType> Object;
};

/** Watches a shared object without keeping it alive. */
template <class ObjectType, ESPMode Mode>
class TWeakPtr
{
public:
	using ElementType = ObjectType;

	TWeakPtr() = default;
	TWeakPtr(std::nullptr_t) {}
	TWeakPtr(const TWeakPtr&) = default;
	TWeakPtr(TWeakPtr&&) noexcept = default;
	template <class OtherType>
	requires UE::SharedPointer::CConvertible<OtherType, ObjectType> TWeakPtr(const TSharedRef<OtherType, Mode>& Other)
		: Object(Other.Object)
	{
	}
	template <class OtherType>
	requires UE::SharedPointer::CConvertible<OtherType, ObjectType> TWeakPtr(const TSharedPtr<OtherType, Mode>& Other)
		: Object(Other.Object)
	{
	}
	template <class OtherType>
	requires UE::SharedPointer::CConvertible<OtherType, ObjectType> TWeakPtr(const TWeakPtr<OtherType, Mode>& Other)
		: Object(Other.Object)
	{
	}
	TWeakPtr& operator=(const TWeakPtr&) = default;
	TWeakPtr& operator=(TWeakPtr&&) noexcept = default;
	TWeakPtr& operator=(std::nullptr_t)
	{
		Reset();
		return *this;
	}

	/** A shared pointer to the object, null once it is gone. */
	TSharedPtr<ObjectType, Mode> Pin() const { return TSharedPtr<ObjectType, Mode>::FromStd(Object.lock()); }
	bool IsValid() const { return !Object.expired(); }
	void Reset() { Object.reset(); }
	bool HasSameObject(const void* Other) const { return (const void*)Object.lock().get() == Other; }

	/** Same owner, or both empty; a dead pointer equals its own copies. */
	template <class OtherType>
	bool operator==(const TWeakPtr<OtherType, Mode>& Other) const
	{
		return !Object.owner_before(Other.Object) && !Other.Object.owner_before(Object);
	}
	template <class OtherType>
	bool operator==(const TSharedPtr<OtherType, Mode>& Other) const
	{
		return Object.lock() == Other.ToStd();
	}
	template <class OtherType>
	bool operator==(const TSharedRef<OtherType, Mode>& Other) const
	{
		return Object.lock() == Other.ToStd();
	}
	bool operator==(std::nullptr_t) const { return !IsValid(); }
	const std::weak_ptr<ObjectType>& ToStd() const { return Object; }

private:
	template <class OtherType, ESPMode OtherMode>
	friend class TWeakPtr;
	std::weak_ptr<ObjectType> Object;
};

template <class A, class B, ESPMode Mode>
bool operator==(const TSharedPtr<A, Mode>& X, const TSharedPtr<B, Mode>& Y)
{
	return X.Get() == Y.Get();
}
template <class A, class B, ESPMode Mode>
bool operator==(const TSharedRef<A, Mode>& X, const TSharedRef<B, Mode>& Y)
{
	return &X.Get() == &Y.Get();
}
template <class A, class B, ESPMode Mode>
bool operator==(const TSharedPtr<A, Mode>& X, const TSharedRef<B, Mode>& Y)
{
	return X.Get() == &Y.Get();
}
template <class A, ESPMode Mode>
bool operator==(const TSharedPtr<A, Mode>& X, std::nullptr_t)
{
	return !X.IsValid();
}
template <class A, class B, ESPMode Mode>
requires(UE::SharedPointer::CConvertible<A, const volatile void>&& UE::SharedPointer::CConvertible<B, const volatile void>) bool operator==(
	const TSharedPtr<A, Mode>& X, B* Y)
{
	return X.Get() == Y;
}

/** Base of classes that hand out shared references to themselves. Not usable before the first owner exists, so not in a constructor. */
template <class ObjectType, ESPMode Mode>
class TSharedFromThis : public std::enable_shared_from_this<ObjectType>
{
public:
	TSharedRef<ObjectType, Mode> AsShared()
	{
		std::shared_ptr<ObjectType> Owner = this->weak_from_this().lock();
		return TSharedRef<ObjectType, Mode>::FromStd(static_cast<std::shared_ptr<ObjectType>&&>(Owner));
	}
	TSharedRef<const ObjectType, Mode> AsShared() const
	{
		std::shared_ptr<const ObjectType> Owner = this->weak_from_this().lock();
		return TSharedRef<const ObjectType, Mode>::FromStd(static_cast<std::shared_ptr<const ObjectType>&&>(Owner));
	}

protected:
	/** AsShared with the type of the pointer: SharedThis(this). */
	template <class OtherType>
	static TSharedRef<OtherType, Mode> SharedThis(OtherType* ThisPtr)
	{
		auto Shared = ThisPtr->AsShared();
		return TSharedRef<OtherType, Mode>::FromStd(std::static_pointer_cast<OtherType>(Shared.ToStd()));
	}
};

/** Object and count in one allocation. */
template <class ObjectType, ESPMode Mode = ESPMode::ThreadSafe, typename... ArgTypes>
TSharedRef<ObjectType, Mode> MakeShared(ArgTypes&&... Args)
{
	return TSharedRef<ObjectType, Mode>::FromStd(std::make_shared<ObjectType>(Forward<ArgTypes>(Args)...));
}

template <class CastTo, class CastFrom, ESPMode Mode>
TSharedPtr<CastTo, Mode> StaticCastSharedPtr(const TSharedPtr<CastFrom, Mode>& Pointer)
{
	return TSharedPtr<CastTo, Mode>::FromStd(std::static_pointer_cast<CastTo>(Pointer.ToStd()));
}

template <class CastTo, class CastFrom, ESPMode Mode>
TSharedRef<CastTo, Mode> StaticCastSharedRef(const TSharedRef<CastFrom, Mode>& Reference)
{
	return TSharedRef<CastTo, Mode>::FromStd(std::static_pointer_cast<CastTo>(Reference.ToStd()));
}
