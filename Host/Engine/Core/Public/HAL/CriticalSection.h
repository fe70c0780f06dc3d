#pragma once

#include "CoreTypes.h"

#include <mutex>
#include <shared_mutex>

/** A lock that its owner may take again. */
class FCriticalSection
{
public:
	FCriticalSection() = default;
	FCriticalSection(const FCriticalSection&) = delete;
	FCriticalSection& operator=(const FCriticalSection&) = delete;

	void Lock() { Mutex.lock(); }
	bool TryLock() { return Mutex.try_lock(); }
	void Unlock() { Mutex.unlock(); }

private:
	std::recursive_mutex Mutex;
};

/** Many readers or one writer. Not recursive. */
class FRWLock
{
public:
	FRWLock() = default;
	FRWLock(const FRWLock&) = delete;
	FRWLock& operator=(const FRWLock&) = delete;

	void ReadLock() { Mutex.lock_shared(); }
	void ReadUnlock() { Mutex.unlock_shared(); }
	void WriteLock() { Mutex.lock(); }
	void WriteUnlock() { Mutex.unlock(); }

private:
	std::shared_mutex Mutex;
};
