#include "Host/ProjectFileChanges.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <vector>

namespace Velmora
{
	namespace
	{
		struct FFileListener
		{
			int32 Handle = 0;

			/** Held while the listener runs; it may remove itself meanwhile. */
			std::recursive_mutex Mutex;
			FProjectFileListeners::FListener Callback;
			bool bIsRemoved = false;
		};

		struct FFileListenerTable
		{
			std::mutex Mutex;
			std::vector<std::shared_ptr<FFileListener>> Listeners;
			int32 NextHandle = 1;
		};

		FFileListenerTable& GetFileListenerTable()
		{
			// Never destroyed: the cache's thread may still be at work when the process goes down.
			static FFileListenerTable* const Table = std::make_unique<FFileListenerTable>().release();
			return *Table;
		}
	}

	int32 FProjectFileListeners::Add(FListener Listener)
	{
		const auto Added = std::make_shared<FFileListener>();
		Added->Callback = MoveTemp(Listener);
		FFileListenerTable& Table = GetFileListenerTable();
		const std::scoped_lock Lock(Table.Mutex);
		Added->Handle = Table.NextHandle++;
		Table.Listeners.push_back(Added);
		return Added->Handle;
	}

	void FProjectFileListeners::Remove(int32 Handle)
	{
		std::shared_ptr<FFileListener> Gone;
		FFileListenerTable& Table = GetFileListenerTable();
		{
			const std::scoped_lock Lock(Table.Mutex);
			const auto Found = std::find_if(
				Table.Listeners.begin(), Table.Listeners.end(), [Handle](const auto& Listener) { return Listener->Handle == Handle; });
			if (Found == Table.Listeners.end())
			{
				return;
			}
			Gone = *Found;
			Table.Listeners.erase(Found);
		}
		const std::scoped_lock Lock(Gone->Mutex);
		Gone->bIsRemoved = true;
	}

	void FProjectFileListeners::Broadcast(const FProjectFileChanges& Changes)
	{
		std::vector<std::shared_ptr<FFileListener>> Listeners;
		FFileListenerTable& Table = GetFileListenerTable();
		{
			const std::scoped_lock Lock(Table.Mutex);
			Listeners = Table.Listeners;
		}
		for (const std::shared_ptr<FFileListener>& Listener : Listeners)
		{
			const std::scoped_lock Lock(Listener->Mutex);
			if (!Listener->bIsRemoved)
			{
				Listener->Callback(Changes);
			}
		}
	}
}
