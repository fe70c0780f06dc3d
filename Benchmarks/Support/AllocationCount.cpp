#include "AllocationCount.h"

#include <atomic>
#include <cstddef>

// The C library's own entry points below the ones that are replaced here.
extern "C" void* __libc_malloc(size_t Size);
extern "C" void* __libc_calloc(size_t Count, size_t Size);
extern "C" void* __libc_realloc(void* Block, size_t Size);

namespace
{
	std::atomic<uint64_t> AllocationCount;

	void CountAllocation()
	{
		AllocationCount.fetch_add(1, std::memory_order_relaxed);
	}
}

uint64_t GetAllocationCount()
{
	return AllocationCount.load(std::memory_order_relaxed);
}

extern "C" void* malloc(size_t Size)
{
	CountAllocation();
	return __libc_malloc(Size);
}

extern "C" void* calloc(size_t Count, size_t Size)
{
	CountAllocation();
	return __libc_calloc(Count, Size);
}

extern "C" void* realloc(void* Block, size_t Size)
{
	CountAllocation();
	return __libc_realloc(Block, Size);
}
