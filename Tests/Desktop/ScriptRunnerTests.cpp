#include "HAL/PlatformTime.h"
#include "Host/HostClock.h"
#include "Host/HostDialogs.h"
#include "Host/HostFileDialogs.h"
#include "Host/UpdateGateControl.h"
#include "Misc/MessageDialog.h"
#include "ScriptRunner.h"
#include "Support/Base/TempFolder.h"
#include "Support/UiDriver.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

namespace
{
	/** A program without a tab. */
	class FEmptyScriptHost : public IScriptHost
	{
	public:
		virtual TSharedPtr<const FChatViewModel> GetViewModel() const override { return nullptr; }
		virtual void InvokeTab() override {}
		virtual void CloseTab() override {}
		virtual void FocusPrompt() override {}
		virtual bool WriteDump(const FString& File) override { return true; }
		virtual bool WriteScreenshot(const FString& File) override { return true; }
	};

	/** A text that comes as a row of the conversation does: with the frames and not with the clock. The first frame takes long. */
	class SLateText : public SCompoundWidget
	{
	public:
		SLATE_BEGIN_ARGS(SLateText) {}
		SLATE_END_ARGS()

		void Construct(const FArguments&) { ChildSlot[SAssignNew(Label, STextBlock)]; }

		void Restart()
		{
			Seen = 0.0f;
			bWasSlow = false;
			const auto Waits = [this](double, float)
			{ return Seen < ComesAfter ? EActiveTimerReturnType::Continue : EActiveTimerReturnType::Stop; };
			RegisterActiveTimer(0.0f, FWidgetActiveTimerDelegate::CreateLambda(Waits));
		}

		virtual void Tick(const FGeometry& Geometry, double Now, float Delta) override
		{
			FHostClock::Advance(std::exchange(bWasSlow, true) ? 0.0 : 2.0);
			Seen += Delta;
			Label->SetText(FText::FromString(Seen < ComesAfter ? TEXT("not yet") : TEXT("here")));
		}

		TSharedPtr<STextBlock> Label;

	private:
		/** Seconds: a row waits for its batch, then fades in. */
		static constexpr float ComesAfter = 0.1f + 0.3f;
		float Seen = 0.0f;
		bool bWasSlow = true;
	};
}

/** Scripts on widgets of the test's own. */
class ScriptRunner : public FWidgetTest
{
protected:
	virtual void SetUp() override
	{
		FWidgetTest::SetUp();
		FHostDialogs::Install();
		FHostDialogs::SetAnswering(true);
	}
	virtual void TearDown() override
	{
		FHostDialogs::Uninstall();
		FWidgetTest::TearDown();
	}

	/** Runs a script to its end; returns its error. */
	std::string RunLines(const TArray<FString>& Lines)
	{
		TArray<FScriptStep> Steps;
		int32 Line = 0;
		EXPECT_EQ(Utf8(FScriptFile::Parse(Lines, Steps, Line)), "");
		FEmptyScriptHost Host;
		FScriptRunner Runner(TEXT("t"), MoveTemp(Steps), Host);
		App().SetFrameHook(
			[&Runner]()
			{
				Runner.OnFrame();
				FHostClock::Advance(1.0 / 60.0);
			});
		for (int32 Frame = 0; Frame < 3000 && !Runner.IsFinished(); ++Frame)
		{
			App().RunTurn();
		}
		App().SetFrameHook(nullptr);
		EXPECT_TRUE(Runner.IsFinished());
		return Utf8(Runner.GetError());
	}

	/** A text that counts for three seconds. */
	void ShowCounter(double Start)
	{
		const TSharedRef<STextBlock> Counter =
			SNew(STextBlock)
				.Text_Lambda(
					[Start]() { return FText::AsNumber(static_cast<int32>(FMath::Min(FPlatformTime::Seconds() - Start, 3.0) * 20.0)); });
		Show(Counter);
		const auto GoesOn = [Start](double Now, float)
		{ return Now - Start < 3.1 ? EActiveTimerReturnType::Continue : EActiveTimerReturnType::Stop; };
		Counter->RegisterActiveTimer(0.0f, FWidgetActiveTimerDelegate::CreateLambda(GoesOn));
	}

	/** A button whose click asks, and keeps the answer. */
	TSharedRef<SWidget> MakeAsker()
	{
		return SNew(SButton)
			.Tag(FName(TEXT("Ask")))
			.Text(FText::FromString(TEXT("Ask")))
			.OnClicked_Lambda(
				[this]()
				{
					Answers.push_back(
						LexToString(FMessageDialog::Open(EAppMsgType::YesNo, FText::FromString(TEXT("Really?")))) == FString(TEXT("Yes"))
							? "Yes"
							: "No");
					return FReply::Handled();
				});
	}

	/** A button whose click asks for a file to save, and keeps the answer. */
	TSharedRef<SWidget> MakeSaver()
	{
		return SNew(SButton)
			.Tag(FName(TEXT("Save")))
			.Text(FText::FromString(TEXT("Export")))
			.OnClicked_Lambda(
				[this]()
				{
					FHostSaveDialog Dialog;
					Dialog.Title = TEXT("Export");
					Dialog.Folder = Folder.At();
					Dialog.File = TEXT("talk.md");
					FString File;
					Answers.push_back(FHostFileDialogs::AskForSaveFile(Dialog, File) ? Utf8(File) : "cancelled");
					return FReply::Handled();
				});
	}

	std::vector<std::string> Answers;
	FTempFolder Folder;
};

TEST_F(ScriptRunner, AnswersASaveDialog)
{
	Folder.Write("old.md", "old");
	Show(MakeSaver());
	const FString Old = Folder.At(TEXT("old.md"));
	testing::internal::CaptureStderr();
	EXPECT_EQ(
		RunLines({ TEXT("click #Save"), TEXT("tick 2"), TEXT("answer file ") + Old, TEXT("click #Save"), TEXT("type typed"),
			TEXT("key ENTER"), TEXT("click #Save"), TEXT("answer cancel"), TEXT("click #Save"), TEXT("type old.md"), TEXT("answer save"),
			TEXT("answer yes"), TEXT("click #Save"), TEXT("click #SaveCancelButton"), TEXT("click #Save"), TEXT("key ESC") }),
		"");
	EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
	EXPECT_EQ(Answers, (std::vector<std::string>{ Utf8(Old), Folder.AtBytes("typed"), "cancelled", Utf8(Old), "cancelled", "cancelled" }));
}

TEST_F(ScriptRunner, TellsWhyASaveDialogDidNotTakeAnAnswer)
{
	Show(MakeSaver());
	const FString Missing = Folder.At(TEXT("missing/x"));
	EXPECT_EQ(RunLines({ TEXT("click #Save"), TEXT("answer file ") + Missing }),
		"script t:2: There is no folder \"" + Folder.AtBytes("missing") + "\".");
}

TEST_F(ScriptRunner, ASaveDialogThatNoStepAnswersIsCancelledAndSaysSo)
{
	Show(MakeSaver());
	testing::internal::CaptureStderr();
	EXPECT_EQ(RunLines({ TEXT("click #Save"), TEXT("tick 5"), TEXT("open-tab") }), "");
	EXPECT_EQ(Answers, std::vector<std::string>{ "cancelled" });
	EXPECT_EQ(testing::internal::GetCapturedStderr(), "velmora: script t: no step answers \"Export\", so it takes Cancel.\n");
}

TEST_F(ScriptRunner, TakesTheUpdateGateToAState)
{
	Show(SNew(SBox));
	EXPECT_EQ(RunLines({ TEXT("update Downloading 40") }), "");
	EXPECT_EQ(Utf8(Velmora::FUpdateGate::Get().GetMessage()), "Downloading update... 40%");
	EXPECT_EQ(RunLines({ TEXT("update Ready") }), "");
	EXPECT_EQ(Velmora::FUpdateGate::Get().GetState(), Velmora::EUpdateGateState::Ready);
}

TEST_F(ScriptRunner, AnswersADialogFromInsideItsLoop)
{
	Show(MakeAsker());
	testing::internal::CaptureStderr();
	EXPECT_EQ(RunLines({ TEXT("click #Ask"), TEXT("tick 5"), TEXT("answer yes"), TEXT("click #Ask"), TEXT("click Yes"), TEXT("click #Ask"),
				  TEXT("key ENTER") }),
		"");
	// The last dialog's default is No; the key answered it, or standard error would tell otherwise.
	EXPECT_EQ(Answers, (std::vector<std::string>{ "Yes", "Yes", "No" }));
	EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(ScriptRunner, ADialogThatNoStepAnswersTakesNoAndSaysSo)
{
	Show(MakeAsker());
	testing::internal::CaptureStderr();
	EXPECT_EQ(RunLines({ TEXT("click #Ask"), TEXT("tick 5"), TEXT("type x") }), "");
	EXPECT_EQ(Answers, (std::vector<std::string>{ "No" }));
	const std::string Said = testing::internal::GetCapturedStderr();
	EXPECT_NE(Said.find("no step answers \"Message: Really?\", so it takes No."), std::string::npos) << Said;
}

TEST_F(ScriptRunner, TellsTheButtonsWhenAnAnswerDoesNotFit)
{
	Show(MakeAsker());
	EXPECT_EQ(RunLines({ TEXT("click #Ask"), TEXT("answer Maybe") }), "script t:2: The dialog has no button \"Maybe\", but: Yes, No.");
}

TEST_F(ScriptRunner, BringsWhatIsScrolledAwayIntoView)
{
	int32 Clicks = 0;
	const TSharedRef<SScrollBox> Box = SNew(SScrollBox);
	Box->AddSlot()[SNew(SBox).HeightOverride(3000.0f)];
	// clang-format off
	Box->AddSlot()
	[
		SNew(SButton)
		.Text(FText::FromString(TEXT("Low")))
		.OnClicked_Lambda([&Clicks]() { ++Clicks; return FReply::Handled(); })
	];
	// clang-format on
	Show(Box);
	EXPECT_EQ(RunLines({ TEXT("click Low") }), "");
	EXPECT_EQ(Clicks, 1);
}

TEST_F(ScriptRunner, PointsAtAPlaceOfTheWindow)
{
	int32 Clicks = 0;
	// clang-format off
	Show(
		SNew(SButton)
		.Text(FText::FromString(TEXT("All")))
		.OnClicked_Lambda([&Clicks]() { ++Clicks; return FReply::Handled(); }));
	// clang-format on
	EXPECT_EQ(RunLines({ TEXT("click @0%,0%"), TEXT("click @100%,100%"), TEXT("move @50%,12.5%"), TEXT("scroll @1%,99% -3") }), "");
	EXPECT_EQ(Clicks, 2) << "both ends lie within the window";
	for (const TCHAR* const Name :
		{ TEXT("@"), TEXT("@1%"), TEXT("@101%,0%"), TEXT("@-1%,0%"), TEXT("@1,2"), TEXT("@nan%,0%"), TEXT("@1%,2%,3%") })
	{
		EXPECT_EQ(RunLines({ TEXT("click ") + FString(Name) }), "script t:1: Nothing on screen is called \"" + Utf8(Name) + "\".");
	}
}

TEST_F(ScriptRunner, WaitsUntilThePictureStandsStill)
{
	const double Start = FPlatformTime::Seconds();
	ShowCounter(Start);
	EXPECT_EQ(RunLines({ TEXT("wait idle 1") }), "script t:1: The picture still changes after 1 seconds.");
}

TEST_F(ScriptRunner, GoesOnOnceThePictureStandsStill)
{
	const double Start = FPlatformTime::Seconds();
	ShowCounter(Start);
	EXPECT_EQ(RunLines({ TEXT("wait idle 10") }), "");
	EXPECT_GE(FPlatformTime::Seconds() - Start, 3.5);
	EXPECT_LE(FPlatformTime::Seconds() - Start, 5.5);
}

TEST_F(ScriptRunner, OneSlowFrameIsNoTimeInWhichNothingMoved)
{
	const TSharedRef<SLateText> Late = SNew(SLateText);
	Show(Late);
	Late->Restart();
	EXPECT_EQ(RunLines({ TEXT("wait idle 60"), TEXT("move here") }), "");
}
