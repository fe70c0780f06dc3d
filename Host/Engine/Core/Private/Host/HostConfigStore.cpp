#include "Host/HostConfigStore.h"

#include "Containers/Map.h"

#include <mutex>
#include <utility>

namespace
{
	/** Keys ignore letter case, as in ini files. */
	class FMemoryConfigStore final : public IHostConfigStore
	{
	public:
		bool Get(const FString& File, const FString& Section, const FString& Key, FString& OutValue) const override
		{
			const std::lock_guard<std::mutex> Lock(Mutex);
			const FString* Value = Values.Find(MakeKey(File, Section, Key));
			if (Value)
			{
				OutValue = *Value;
			}
			return Value != nullptr;
		}
		void Set(const FString& File, const FString& Section, const FString& Key, const FString& Value) override
		{
			const std::lock_guard<std::mutex> Lock(Mutex);
			Values.Add(MakeKey(File, Section, Key), Value);
		}
		void Remove(const FString& File, const FString& Section, const FString& Key) override
		{
			const std::lock_guard<std::mutex> Lock(Mutex);
			Values.Remove(MakeKey(File, Section, Key));
		}
		bool Flush(const FString&) override { return true; }

	private:
		/** Line feeds occur in no name of an ini file. */
		static FString MakeKey(const FString& File, const FString& Section, const FString& Key)
		{
			return File + TEXT("\n") + Section + TEXT("\n") + Key;
		}

		mutable std::mutex Mutex;
		TMap<FString, FString> Values;
	};

	struct FCurrentStore
	{
		std::mutex Mutex;
		TSharedRef<IHostConfigStore> Store = MakeShared<FMemoryConfigStore>();
	};

	FCurrentStore& GetCurrentStore()
	{
		static FCurrentStore Current;
		return Current;
	}
}

TSharedRef<IHostConfigStore> IHostConfigStore::GetCurrent()
{
	FCurrentStore& Current = GetCurrentStore();
	const std::lock_guard<std::mutex> Lock(Current.Mutex);
	return Current.Store;
}

void IHostConfigStore::SetCurrent(TSharedPtr<IHostConfigStore> Store)
{
	FCurrentStore& Current = GetCurrentStore();
	TSharedRef<IHostConfigStore> New = Store ? Store.ToSharedRef() : TSharedRef<IHostConfigStore>(MakeShared<FMemoryConfigStore>());
	const std::lock_guard<std::mutex> Lock(Current.Mutex);
	std::swap(Current.Store, New);
}
