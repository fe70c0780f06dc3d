#pragma once

#include "HAL/CriticalSection.h"

class FReadScopeLock
{
public:
	[[nodiscard]] explicit FReadScopeLock(FRWLock& InLock)
		: Lock(InLock)
	{
		Lock.ReadLock();
	}
	~FReadScopeLock() { Lock.ReadUnlock(); }
	FReadScopeLock(const FReadScopeLock&) = delete;
	FReadScopeLock& operator=(const FReadScopeLock&) = delete;

private:
	FRWLock& Lock;
};

class FWriteScopeLock
{
public:
	[[nodiscard]] explicit FWriteScopeLock(FRWLock& InLock)
		: Lock(InLock)
	{
		Lock.WriteLock();
	}
	~FWriteScopeLock() { Lock.WriteUnlock(); }
	FWriteScopeLock(const FWriteScopeLock&) = delete;
	FWriteScopeLock& operator=(const FWriteScopeLock&) = delete;

private:
	FRWLock& Lock;
};
