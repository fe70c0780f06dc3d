#pragma once

#include "Templates/UnrealTemplate.h"

namespace UE::ScopeExit
{
	template <typename FuncType>
	class TGuard : private FNoncopyable
	{
	public:
		explicit TGuard(FuncType&& InFunc)
			: Func(static_cast<FuncType&&>(InFunc))
		{
		}
		~TGuard() { Func(); }

	private:
		FuncType Func;
	};

	struct FSyntaxSupport
	{
		template <typename FuncType>
		TGuard<FuncType> operator+(FuncType&& InFunc)
		{
			return TGuard<FuncType>(Forward<FuncType>(InFunc));
		}
	};
}

/** ON_SCOPE_EXIT { … }; runs the block when the scope is left. */
#define ON_SCOPE_EXIT const auto PREPROCESSOR_JOIN(ScopeGuard_, __LINE__) = ::UE::ScopeExit::FSyntaxSupport() + [&]()
