#pragma once

#include "Containers/UnrealString.h"
#include "Logging/LogCategory.h"

namespace HostLogPrivate
{
	/** Hands one line to every sink. Ends the process when the line is fatal. */
	CORE_API void Write(const FLogCategoryBase& Category, ELogVerbosity::Type Verbosity, FString&& Text);
}

#define DECLARE_LOG_CATEGORY_EXTERN(CategoryName, DefaultVerbosity, CompileTimeVerbosity) \
	extern struct FLogCategory##CategoryName : public FLogCategory<ELogVerbosity::DefaultVerbosity, ELogVerbosity::CompileTimeVerbosity> \
	{ \
		constexpr FLogCategory##CategoryName() \
			: FLogCategory(TEXT(#CategoryName)) \
		{ \
		} \
	} CategoryName

#define DEFINE_LOG_CATEGORY(CategoryName) FLogCategory##CategoryName CategoryName

#define DEFINE_LOG_CATEGORY_STATIC(CategoryName, DefaultVerbosity, CompileTimeVerbosity) \
	[[maybe_unused]] static struct FLogCategory##CategoryName \
		: public FLogCategory<ELogVerbosity::DefaultVerbosity, ELogVerbosity::CompileTimeVerbosity> \
	{ \
		constexpr FLogCategory##CategoryName() \
			: FLogCategory(TEXT(#CategoryName)) \
		{ \
		} \
	} CategoryName

#define DECLARE_LOG_CATEGORY_CLASS(CategoryName, DefaultVerbosity, CompileTimeVerbosity) \
	DEFINE_LOG_CATEGORY_STATIC(CategoryName, DefaultVerbosity, CompileTimeVerbosity)

#define UE_LOG_ACTIVE(CategoryName, Verbosity) \
	(ELogVerbosity::Verbosity <= std::remove_cvref_t<decltype(CategoryName)>::CompileTimeVerbosity && \
		!CategoryName.IsSuppressed(ELogVerbosity::Verbosity))

/** The arguments are evaluated only when the line is to be written. */
#define UE_LOG(CategoryName, Verbosity, Format, ...) \
	do \
	{ \
		if (UE_LOG_ACTIVE(CategoryName, Verbosity)) \
		{ \
			::HostLogPrivate::Write(CategoryName, ELogVerbosity::Verbosity, FString::Printf(Format __VA_OPT__(, ) __VA_ARGS__)); \
		} \
	} while (false)

#define UE_CLOG(Condition, CategoryName, Verbosity, Format, ...) \
	do \
	{ \
		if (Condition) \
		{ \
			UE_LOG(CategoryName, Verbosity, Format __VA_OPT__(, ) __VA_ARGS__); \
		} \
	} while (false)
