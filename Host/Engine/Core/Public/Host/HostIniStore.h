#pragma once

#include "Host/HostConfigStore.h"
#include "Templates/UniquePtr.h"

/**
 * Keeps configurations in ini files. What is set can be got at once and is written by a thread of its own, at most every
 * half second, and by Finish. Only keys that were set here are written: comments, order, keys of others, and what others
 * have changed in the file meanwhile stay. Of one key the last write counts, but nothing that another program wrote is emptied
 * or removed by one that has never read it. Files are private to the user.
 *
 * A write that fails is told once by FHostServices::ReportSaveFailure, and tried again at the next change and at the end; the
 * values stay in memory. A file that is there and cannot be read is never written.
 */
class CORE_API FHostIniStore final : public IHostConfigStore
{
public:
	/** @param InFolder  Where configurations that are a bare name lie: "Name" is the file "Name.ini" there. Made when needed. */
	explicit FHostIniStore(const FString& InFolder);
	/** Finishes. */
	virtual ~FHostIniStore() override;

	virtual bool Get(const FString& File, const FString& Section, const FString& Key, FString& OutValue) const override;
	virtual void Set(const FString& File, const FString& Section, const FString& Key, const FString& Value) override;
	virtual void Remove(const FString& File, const FString& Section, const FString& Key) override;
	/** Writes soon. @return False while the last write of this file has failed. */
	virtual bool Flush(const FString& File) override;

	/** Writes what is not written yet, and waits for it. */
	void Finish();
	FString GetPath(const FString& File) const;

private:
	struct FState;
	TUniquePtr<FState> State;
};
