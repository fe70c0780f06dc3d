#pragma once

#include "Templates/TypeHash.h"

/** Names one binding. Default-made handles are invalid; a valid one is never given twice. */
class FDelegateHandle
{
public:
	enum EGenerateNewHandleType
	{
		GenerateNewHandle
	};

	FDelegateHandle() = default;
	explicit FDelegateHandle(EGenerateNewHandleType)
		: Id(NewId())
	{
	}
	bool IsValid() const { return Id != 0; }
	void Reset() { Id = 0; }
	bool operator==(const FDelegateHandle&) const = default;
	friend uint32 GetTypeHash(const FDelegateHandle& Handle) { return GetTypeHash(Handle.Id); }

private:
	CORE_API static uint64 NewId();
	uint64 Id = 0;
};
