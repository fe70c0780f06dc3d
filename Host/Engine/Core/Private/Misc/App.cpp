#include "Misc/App.h"

#include <atomic>

namespace
{
	std::atomic<bool> bUnattendedRun{ false };

	FString& GetProjectNameStorage()
	{
		static FString Name;
		return Name;
	}
}

bool FApp::IsUnattended()
{
	return bUnattendedRun.load(std::memory_order_relaxed);
}

void FApp::SetUnattended(bool bUnattended)
{
	bUnattendedRun.store(bUnattended, std::memory_order_relaxed);
}

const TCHAR* FApp::GetProjectName()
{
	return *GetProjectNameStorage();
}

void FApp::SetProjectName(const TCHAR* Name)
{
	GetProjectNameStorage() = Name;
}
