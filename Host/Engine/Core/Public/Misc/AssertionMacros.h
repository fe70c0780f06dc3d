#pragma once

#include "HAL/Platform.h"

namespace UE::Assert
{
	/** Writes the failed expression to stderr and ends the process. Message may be null. */
	UE_NORETURN CORE_API void Failed(const char* Expression, const char* File, int32 Line, const TCHAR* Message);
	/** Writes the failed expression to stderr, once per place and process. Returns false, so that it can end an expression. */
	CORE_API bool EnsureFailed(const char* Expression, const char* File, int32 Line, const TCHAR* Message, bool bAlways);
}

// Conditions are evaluated in every configuration, as in an editor build. The forms with a message need FString.

#define check(Expression) \
	do \
	{ \
		if (UNLIKELY(!(Expression))) \
		{ \
			::UE::Assert::Failed(#Expression, __FILE__, __LINE__, nullptr); \
		} \
	} while (false)

#define checkf(Expression, Format, ...) \
	do \
	{ \
		if (UNLIKELY(!(Expression))) \
		{ \
			::UE::Assert::Failed(#Expression, __FILE__, __LINE__, *FString::Printf(Format __VA_OPT__(, ) __VA_ARGS__)); \
		} \
	} while (false)

#define checkSlow(Expression) check(Expression)
#define verify(Expression) check(Expression)
#define verifyf(Expression, Format, ...) checkf(Expression, Format __VA_OPT__(, ) __VA_ARGS__)
#define checkNoEntry() ::UE::Assert::Failed("Enclosing block should never be called", __FILE__, __LINE__, nullptr)

#define ensure(Expression) (LIKELY(!!(Expression)) || ::UE::Assert::EnsureFailed(#Expression, __FILE__, __LINE__, nullptr, false))
#define ensureAlways(Expression) (LIKELY(!!(Expression)) || ::UE::Assert::EnsureFailed(#Expression, __FILE__, __LINE__, nullptr, true))
#define ensureMsgf(Expression, Format, ...) \
	(LIKELY(!!(Expression)) || \
		::UE::Assert::EnsureFailed(#Expression, __FILE__, __LINE__, *FString::Printf(Format __VA_OPT__(, ) __VA_ARGS__), false))
#define ensureAlwaysMsgf(Expression, Format, ...) \
	(LIKELY(!!(Expression)) || \
		::UE::Assert::EnsureFailed(#Expression, __FILE__, __LINE__, *FString::Printf(Format __VA_OPT__(, ) __VA_ARGS__), true))
