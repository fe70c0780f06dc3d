#include "HAL/PlatformApplicationMisc.h"
#include "HAL/PlatformProcess.h"
#include "Host/HostConfigStore.h"
#include "Host/HostLog.h"
#include "Host/HostPlugins.h"
#include "Host/HostServices.h"
#include "Interfaces/IPluginManager.h"
#include "Misc/ConfigCacheIni.h"
#include "Misc/MessageDialog.h"
#include "Support/Base/Printers.h"

#include <gtest/gtest.h>

TEST(SystemServices, LaunchesGoThroughOneHook)
{
	FHostServices::ClearLaunchRecord();
	::testing::internal::CaptureStderr();
	FPlatformProcess::LaunchURL(TEXT("https://example.org"), nullptr, nullptr);
	EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Would open address: https://example.org\n");

	FHostLog::SetStderrVerbosity(ELogVerbosity::NoLogging);
	FHostServices::SetLaunchHook(
		[](const FHostLaunchRequest& Request, FString& OutError)
		{
			OutError = TEXT("no browser");
			return Request.Kind == FHostLaunchRequest::EKind::File;
		});
	FString Error = TEXT("old");
	FPlatformProcess::LaunchURL(TEXT("https://example.org"), nullptr, &Error);
	EXPECT_EQ(Utf8(Error), "no browser");
	EXPECT_TRUE(FPlatformProcess::LaunchFileInDefaultExternalApplication(TEXT("/tmp/x")));
	FHostServices::SetLaunchHook(nullptr);
	FHostLog::SetStderrVerbosity(ELogVerbosity::Warning);
	const TArray<FHostLaunchRequest> Record = FHostServices::GetLaunchRecord();
	ASSERT_EQ(Record.Num(), 3);
	EXPECT_EQ(Utf8(Record[2].Target), "/tmp/x");
}

TEST(SystemServices, Clipboard)
{
	FString Text = TEXT("old");
	FPlatformApplicationMisc::ClipboardCopy(TEXT("\u00E9"));
	FPlatformApplicationMisc::ClipboardPaste(Text);
	EXPECT_EQ(Utf8(Text), "\xC3\xA9");
	FString Outside;
	FHostServices::SetClipboardHooks([&Outside](const FString& New) { Outside = New; }, [](FString&) {});
	FPlatformApplicationMisc::ClipboardCopy(TEXT("hooked"));
	FPlatformApplicationMisc::ClipboardPaste(Text);
	EXPECT_EQ(Utf8(Outside), "hooked");
	EXPECT_EQ(Utf8(Text), "") << "a clipboard without text";
	FHostServices::SetClipboardHooks(nullptr, nullptr);
}

TEST(SystemServices, DialogsTakeTheHarmlessAnswerWhenNobodyIsThere)
{
	const FText Message = FText::FromString(TEXT("Delete?"));
	::testing::internal::CaptureStderr();
	EXPECT_EQ(FMessageDialog::Open(EAppMsgType::YesNo, Message, FText::FromString(TEXT("Chat"))), EAppReturnType::No);
	EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Nobody to ask, taking \"No\": Chat: Delete?\n");
	struct FCase
	{
		EAppMsgType::Type Type;
		EAppReturnType::Type Answer;
	};
	::testing::internal::CaptureStderr();
	for (const FCase& Case : { FCase{ EAppMsgType::Ok, EAppReturnType::Ok }, FCase{ EAppMsgType::OkCancel, EAppReturnType::Cancel },
			 FCase{ EAppMsgType::YesNoCancel, EAppReturnType::Cancel }, FCase{ EAppMsgType::YesNoYesAll, EAppReturnType::No } })
	{
		EXPECT_EQ(FMessageDialog::Open(Case.Type, Message), Case.Answer);
		EXPECT_EQ(FMessageDialog::Open(EAppMsgCategory::Error, Case.Type, EAppReturnType::Retry, Message), EAppReturnType::Retry);
	}
	FString Asked;
	FHostServices::SetMessageDialogHook(
		[&Asked](const FHostMessageDialog& Dialog)
		{
			Asked = Dialog.Title.ToString() + TEXT("|") + Dialog.Message.ToString();
			return EAppReturnType::Yes;
		});
	EXPECT_EQ(FMessageDialog::Open(EAppMsgType::YesNo, Message), EAppReturnType::Yes);
	EXPECT_EQ(Utf8(Asked), "|Delete?");
	FHostServices::SetMessageDialogHook(nullptr);
	::testing::internal::GetCapturedStderr();
}

TEST(SystemServices, Plugins)
{
	EXPECT_FALSE(IPluginManager::Get().FindPlugin(TEXT("SystemTest")).IsValid());
	FHostPlugins::RegisterPlugin(TEXT("SystemTest"), TEXT("/p/x/../Test/"), TEXT("1.2"));
	const TSharedPtr<IPlugin> Plugin = IPluginManager::Get().FindPlugin(TEXT("systemtest"));
	ASSERT_TRUE(Plugin.IsValid());
	EXPECT_EQ(Utf8(Plugin->GetBaseDir()), "/p/Test");
	EXPECT_EQ(Utf8(Plugin->GetDescriptor().VersionName), "1.2");
	FHostPlugins::UnregisterPlugin(TEXT("SystemTest"));
	EXPECT_FALSE(IPluginManager::Get().FindPlugin(TEXT("SystemTest")).IsValid());
}

TEST(SystemServices, ConfigurationValues)
{
	IHostConfigStore::SetCurrent(nullptr);
	GConfig->SetString(TEXT("S"), TEXT("Count"), TEXT("-3"), GEditorPerProjectIni);
	GConfig->SetString(TEXT("S"), TEXT("Text"), TEXT("abc"), GEditorPerProjectIni);
	int32 Count = 0;
	EXPECT_TRUE(GConfig->GetInt(TEXT("s"), TEXT("COUNT"), Count, GEditorPerProjectIni));
	EXPECT_EQ(Count, -3);
	EXPECT_FALSE(GConfig->GetInt(TEXT("S"), TEXT("Text"), Count, GEditorPerProjectIni)) << "no number";
	EXPECT_FALSE(GConfig->GetInt(TEXT("S"), TEXT("Count"), Count, GEngineIni)) << "another file";
	EXPECT_EQ(Count, -3);
}
