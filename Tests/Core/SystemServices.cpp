#include "HAL/PlatformProcess.h"
#include "Host/HostLog.h"
#include "Host/HostServices.h"
#include "Misc/MessageDialog.h"
#include "Support/Base/Printers.h"

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
