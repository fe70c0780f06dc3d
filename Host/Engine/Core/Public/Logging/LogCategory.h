#pragma once

#include "Logging/LogVerbosity.h"
#include "UObject/NameTypes.h"

#include <atomic>

/** A name under which lines are logged, with the limit that can be changed at run time. Any thread. */
struct CORE_API FLogCategoryBase
{
	/** InName must outlive the category (a literal). */
	constexpr FLogCategoryBase(const TCHAR* InName, ELogVerbosity::Type InDefault, ELogVerbosity::Type InCompileTime)
		: Name(InName)
		, Limit(InDefault)
		, CompileTimeLimit(InCompileTime)
	{
	}
	FLogCategoryBase(const FLogCategoryBase&) = delete;
	FLogCategoryBase& operator=(const FLogCategoryBase&) = delete;

	bool IsSuppressed(ELogVerbosity::Type Verbosity) const { return Verbosity > Limit.load(std::memory_order_relaxed); }
	/** Cannot be raised above the limit chosen at compile time. */
	void SetVerbosity(ELogVerbosity::Type Verbosity);
	FName GetCategoryName() const { return FName(Name); }

private:
	const TCHAR* const Name;
	std::atomic<ELogVerbosity::Type> Limit;
	const ELogVerbosity::Type CompileTimeLimit;
};

template <ELogVerbosity::Type InDefault, ELogVerbosity::Type InCompileTime>
struct FLogCategory : public FLogCategoryBase
{
	static constexpr ELogVerbosity::Type CompileTimeVerbosity = InCompileTime;
	explicit constexpr FLogCategory(const TCHAR* InName)
		: FLogCategoryBase(InName, InDefault, InCompileTime)
	{
	}
};
