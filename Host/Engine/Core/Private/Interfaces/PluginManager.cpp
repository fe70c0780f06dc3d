#include "Interfaces/IPluginManager.h"

#include "Host/HostPlugins.h"
#include "Misc/Paths.h"

#include <mutex>

namespace
{
	class FHostPlugin final : public IPlugin
	{
	public:
		FHostPlugin(const FString& InName, const FString& InBaseDir, const FPluginDescriptor& InDescriptor)
			: Name(InName)
			, BaseDir(InBaseDir)
			, File(InBaseDir / (InName + TEXT(".uplugin")))
			, Descriptor(InDescriptor)
		{
			if (Descriptor.FriendlyName.IsEmpty())
			{
				Descriptor.FriendlyName = Name;
			}
		}
		const FString& GetName() const override { return Name; }
		FString GetBaseDir() const override { return BaseDir; }
		const FPluginDescriptor& GetDescriptor() const override { return Descriptor; }
		bool IsEnabled() const override { return true; }

	private:
		const FString Name;
		const FString BaseDir;
		const FString File;
		FPluginDescriptor Descriptor;
	};

	class FHostPluginManager final : public IPluginManager
	{
	public:
		TSharedPtr<IPlugin> FindPlugin(FStringView Name) override
		{
			const std::lock_guard<std::mutex> Lock(Mutex);
			for (const TSharedRef<IPlugin>& Plugin : Plugins)
			{
				if (Plugin->GetName() == FString(Name))
				{
					return Plugin;
				}
			}
			return nullptr;
		}

		void Remove(const FString& Name)
		{
			const std::lock_guard<std::mutex> Lock(Mutex);
			Plugins.RemoveAll([&Name](const TSharedRef<IPlugin>& Plugin) { return Plugin->GetName() == Name; });
		}
		void Add(const TSharedRef<IPlugin>& Plugin)
		{
			Remove(Plugin->GetName());
			const std::lock_guard<std::mutex> Lock(Mutex);
			Plugins.Add(Plugin);
		}

	private:
		std::mutex Mutex;
		TArray<TSharedRef<IPlugin>> Plugins;
	};

	FHostPluginManager& GetHostPluginManager()
	{
		static FHostPluginManager Manager;
		return Manager;
	}
}

IPluginManager& IPluginManager::Get()
{
	return GetHostPluginManager();
}

void FHostPlugins::RegisterPlugin(const FString& Name, const FString& BaseDir, const FString& VersionName)
{
	FPluginDescriptor Descriptor;
	Descriptor.VersionName = VersionName;
	RegisterPlugin(Name, BaseDir, Descriptor);
}

void FHostPlugins::RegisterPlugin(const FString& Name, const FString& BaseDir, const FPluginDescriptor& Descriptor)
{
	FString Full = FPaths::ConvertRelativePathToFull(BaseDir);
	FPaths::NormalizeDirectoryName(Full);
	GetHostPluginManager().Add(MakeShared<FHostPlugin>(Name, Full, Descriptor));
}

void FHostPlugins::UnregisterPlugin(const FString& Name)
{
	GetHostPluginManager().Remove(Name);
}
