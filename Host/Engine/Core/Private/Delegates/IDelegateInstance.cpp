#include "Delegates/IDelegateInstance.h"

#include <atomic>

uint64 FDelegateHandle::NewId()
{
	static std::atomic<uint64> LastId{ 0 };
	return ++LastId;
}
