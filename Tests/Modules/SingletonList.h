#pragma once

#include "CodeIntel/CodeIntelIndexManager.h"
#include "Containers/Ticker.h"
#include "FileCache/ProjectFileCache.h"
#include "Framework/Application/SlateApplication.h"
#include "Framework/Docking/TabManager.h"
#include "Framework/Notifications/NotificationManager.h"
#include "HAL/FileManager.h"
#include "HAL/IConsoleManager.h"
#include "History/AssetHistoryTracker.h"
#include "History/FileHistoryTracker.h"
#include "Host/HostFocus.h"
#include "Interfaces/IPluginManager.h"
#include "Modules/ModuleManager.h"
#include "Settings/VelmoraSettings.h"
#include "Styling/AppStyle.h"
#include "UObject/UObjectGlobals.h"
#include "UpdateGate.h"
#include "Widgets/SNullWidget.h"

#include <string>
#include <utility>
#include <vector>

using FSingletonList = std::vector<std::pair<std::string, const void*>>;

/** What there must be one of in the process, as seen from the program or library that compiles this. The application must exist. */
static FSingletonList ListSingletons()
{
	return {
		{ "FModuleManager", &FModuleManager::Get() },
		{ "FTSTicker", &FTSTicker::GetCoreTicker() },
		{ "IConsoleManager", &IConsoleManager::Get() },
		{ "IFileManager", &IFileManager::Get() },
		{ "IPluginManager", &IPluginManager::Get() },
		{ "UVelmoraSettings", GetDefault<UVelmoraSettings>() },
		{ "SNullWidget", &SNullWidget::NullWidget.Get() },
		{ "FHostFocus", &FHostFocus::Get() },
		{ "FAppStyle", &FAppStyle::Get() },
		{ "FSlateApplication", &FSlateApplication::Get() },
		{ "FGlobalTabmanager", &FGlobalTabmanager::Get().Get() },
		{ "FSlateNotificationManager", &FSlateNotificationManager::Get() },
		{ "FUpdateGate", &Velmora::FUpdateGate::Get() },
		{ "FFileHistoryTracker", &FFileHistoryTracker::Get() },
		{ "FAssetHistoryTracker", &FAssetHistoryTracker::Get() },
		{ "FProjectFileCache", &Velmora::FProjectFileCache::Get() },
		{ "FCodeIntelIndexManager", &Velmora::CodeIntel::FCodeIntelIndexManager::Get() },
	};
}
