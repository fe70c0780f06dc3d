#include "EditorServices.h"
#include "Host/HostNotifications.h"
#include "Host/HostServices.h"
#include "Host/Platform.h"
#include "ProblemToasts.h"
#include "SourceCodeNavigation.h"
#include "Support/UiDriver.h"

#include <thread>

class ProblemToasts : public FWidgetTest
{
protected:
	virtual void SetUp() override
	{
		FWidgetTest::SetUp();
		FHostNotifications::Clear();
		FProblemToasts::Install(false);
	}
	virtual void TearDown() override
	{
		FProblemToasts::Uninstall();
		FHostNotifications::Clear();
		FWidgetTest::TearDown();
	}
};

TEST_F(ProblemToasts, TellAFailedSaveOfAnyThreadOnce)
{
	std::thread Saver(
		[]()
		{
			FHostServices::ReportSaveFailure(TEXT("/data/a.txt"), TEXT("No space left on device"));
			FHostServices::ReportSaveFailure(TEXT("/data/a.txt"), TEXT("No space left on device"));
		});
	Saver.join();
	EXPECT_EQ(FHostNotifications::GetVisible().Num(), 0);
	PumpFrame();
	const TArray<FHostToast> Toasts = FHostNotifications::GetVisible();
	ASSERT_EQ(Toasts.Num(), 1);
	EXPECT_EQ(Utf8(Toasts[0].Text.ToString()), "/data/a.txt could not be saved: No space left on device");
	EXPECT_EQ(Toasts[0].State, SNotificationItem::CS_Fail);
	// As long as the notice of the failure that it explains: until the cross under the pointer is pressed.
	PumpSeconds(60.0);
	EXPECT_EQ(FHostNotifications::GetVisible().Num(), 1);
	Hover(FindByText("/data/a.txt could not be saved: No space left on device"));
	PumpFrame();
	Click(FindByToolTip("Dismiss"));
	PumpSeconds(2.0);
	EXPECT_EQ(FHostNotifications::GetVisible().Num(), 0);
	// A flood leaves room for work.
	for (int32 Index = 0; Index < 9; ++Index)
	{
		FProblemToasts::Tell(FString::Printf(TEXT("Problem %d"), Index));
	}
	PumpSeconds(5.0);
	EXPECT_EQ(FHostNotifications::GetVisible().Num(), 4);
	EXPECT_EQ(Utf8(FHostNotifications::GetVisible().Last().Text.ToString()), "Problem 8");
}

TEST_F(ProblemToasts, TellWhatThePlatformCouldNotDo)
{
	FHostPlatform::InstallLauncher(true);
	FString Error;
	EXPECT_FALSE(FHostServices::Launch({ FHostLaunchRequest::EKind::Url, TEXT("-version"), FString() }, Error));
	FHostServices::SetLaunchHook(nullptr);
	PumpFrame();
	const TArray<FHostToast> Toasts = FHostNotifications::GetVisible();
	ASSERT_EQ(Toasts.Num(), 1);
	ASSERT_FALSE(Error.IsEmpty());
	EXPECT_EQ(Utf8(Toasts[0].Text.ToString()), Utf8(Error));
	EXPECT_TRUE(Error.StartsWith(TEXT("-version: "))) << Utf8(Error);
}

TEST_F(ProblemToasts, TellThatASourceFileIsGone)
{
	FEditorServices::Install();
	EXPECT_FALSE(FSourceCodeNavigation::OpenSourceFile(TEXT("/nowhere/gone.md")));
	FEditorServices::Uninstall();
	PumpFrame();
	const TArray<FHostToast> Toasts = FHostNotifications::GetVisible();
	ASSERT_EQ(Toasts.Num(), 1);
	EXPECT_EQ(Utf8(Toasts[0].Text.ToString()), "/nowhere/gone.md does not exist.");
}
