#pragma once

#include "Templates/TypeHash.h"
#include "Templates/UnrealTemplate.h"

#include <cstddef>
#include <memory>

template <typename T>
using TDefaultDelete = std::default_delete<T>;

/** Sole owner of an object. Moves, never copies. */
template <typename T, typename Deleter = TDefaultDelete<T>>
class TUniquePtr
{
public:
	using ElementType = std::remove_extent_t<T>;

	TUniquePtr() = default;
	TUniquePtr(std::nullptr_t) {}
	explicit TUniquePtr(ElementType* InPtr)
		: Ptr(InPtr)
	{
	}
	TUniquePtr(ElementType* InPtr, Deleter InDeleter)
		: Ptr(InPtr, static_cast<Deleter&&>(InDeleter))
	{
	}
	TUniquePtr(TUniquePtr&&) = default;
	template <typename OtherT, typename OtherDeleter>
	requires std::is_convertible_v<std::unique_ptr<OtherT, OtherDeleter>, std::unique_ptr<T, Deleter>> TUniquePtr(
		TUniquePtr<OtherT, OtherDeleter>&& Other)
		: Ptr(static_cast<std::unique_ptr<OtherT, OtherDeleter>&&>(Other.Ptr))
	{
	}
	TUniquePtr& operator=(TUniquePtr&&) = default;
	template <typename OtherT, typename OtherDeleter>
	requires std::is_convertible_v<std::unique_ptr<OtherT, OtherDeleter>, std::unique_ptr<T, Deleter>> TUniquePtr& operator=(
		TUniquePtr<OtherT, OtherDeleter>&& Other)
	{
		Ptr = static_cast<std::unique_ptr<OtherT, OtherDeleter>&&>(Other.Ptr);
		return *this;
	}
	TUniquePtr& operator=(std::nullptr_t)
	{
		Ptr.reset();
		return *this;
	}

	bool IsValid() const { return Ptr != nullptr; }
	explicit operator bool() const { return IsValid(); }
	ElementType* Get() const { return Ptr.get(); }
	ElementType* operator->() const { return Ptr.get(); }
	ElementType& operator*() const { return *Ptr; }
	ElementType& operator[](SIZE_T Index) const requires std::is_array_v<T> { return Ptr[Index]; }
	/** Gives up ownership without destroying the object. */
	UE_NODISCARD ElementType* Release() { return Ptr.release(); }
	void Reset(ElementType* InPtr = nullptr) { Ptr.reset(InPtr); }

	friend bool operator==(const TUniquePtr& A, std::nullptr_t) { return !A.IsValid(); }
	template <typename OtherT, typename OtherDeleter>
	bool operator==(const TUniquePtr<OtherT, OtherDeleter>& Other) const
	{
		return Get() == Other.Get();
	}
	friend uint32 GetTypeHash(const TUniquePtr& A) { return PointerHash(A.Get()); }

private:
	template <typename OtherT, typename OtherDeleter>
	friend class TUniquePtr;
	std::unique_ptr<T, Deleter> Ptr;
};

template <typename T, typename... ArgTypes>
requires(!std::is_array_v<T>) TUniquePtr<T> MakeUnique(ArgTypes&&... Args)
{
	return TUniquePtr<T>(new T(Forward<ArgTypes>(Args)...));
}

template <typename T>
requires std::is_unbounded_array_v<T> TUniquePtr<T> MakeUnique(SIZE_T Size)
{
	return TUniquePtr<T>(new std::remove_extent_t<T>[Size]());
}
