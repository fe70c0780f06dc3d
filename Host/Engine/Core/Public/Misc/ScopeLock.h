#pragma once

#include "HAL/CriticalSection.h"

/** Holds a critical section until the end of the scope or Unlock. A null section is not locked. */
class FScopeLock
{
public:
	[[nodiscard]] explicit FScopeLock(FCriticalSection* InSection)
		: Section(InSection)
	{
		if (Section)
		{
			Section->Lock();
		}
	}
	~FScopeLock() { Unlock(); }
	FScopeLock(const FScopeLock&) = delete;
	FScopeLock& operator=(const FScopeLock&) = delete;

	void Unlock()
	{
		if (Section)
		{
			Section->Unlock();
			Section = nullptr;
		}
	}

private:
	FCriticalSection* Section;
};
