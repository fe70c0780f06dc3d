#include "Host/HostProgressWindow.h"

#include "Framework/Application/SlateApplication.h"
#include "Host/HostProgress.h"
#include "Styling/AppStyle.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Notifications/SProgressBar.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

namespace
{
	constexpr double ProgressBodyWidth = 418.0;
	constexpr float ProgressBarHeight = 6.0f;
	constexpr float ProgressBarGap = 16.0f;

	/** Looks in every frame whether the work is over, and closes its window then. */
	class SProgressBody : public SCompoundWidget
	{
	public:
		SLATE_BEGIN_ARGS(SProgressBody) {}
		SLATE_END_ARGS()

		void Construct(const FArguments& InArgs, const FHostLongWork& InWork)
		{
			Work = InWork;
			RegisterActiveTimer(0.0f, FWidgetActiveTimerDelegate::CreateSP(this, &SProgressBody::Look));
			// clang-format off
			ChildSlot
			[
				SNew(SVerticalBox)
				+ SVerticalBox::Slot()
				.AutoHeight()
				[
					SNew(STextBlock)
					.Tag(TEXT("ProgressMessage"))
					.Text_Lambda([this]() { return Work.GetMessage(); })
					.TextStyle(FAppStyle::Get(), TEXT("NormalText"))
					.AutoWrapText(true)
				]
				+ SVerticalBox::Slot()
				.AutoHeight()
				.Padding(0.0f, ProgressBarGap, 0.0f, 0.0f)
				[
					SNew(SBox)
					.HeightOverride(ProgressBarHeight)
					[
						SNew(SProgressBar)
						.Percent_Lambda([this]() { return TOptional<float>(Work.GetFraction()); })
					]
				]
			];
			// clang-format on
		}

		virtual bool SupportsKeyboardFocus() const override { return true; }
		virtual bool IsTabStop() const override { return false; }
		virtual FReply OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override
		{
			// Escape closes windows, and this one has nothing that could be left.
			return FReply::Handled();
		}
		TWeakPtr<SWindow> Window;

	private:
		EActiveTimerReturnType Look(double, float)
		{
			if (const TSharedPtr<SWindow> Shown = Window.Pin(); Shown && Work.WaitForEnd(0.0))
			{
				Shown->RequestDestroyWindow();
				return EActiveTimerReturnType::Stop;
			}
			return EActiveTimerReturnType::Continue;
		}

		FHostLongWork Work;
	};

	void ShowProgress(const FHostLongWork& Work)
	{
		// Its close mark does not end the work, so the window comes back; only the end of the program does without it.
		while (FSlateApplication::IsInitialized() && !FSlateApplication::Get().IsExitRequested() && !Work.WaitForEnd(0.0))
		{
			const TSharedRef<SProgressBody> Body = SNew(SProgressBody, Work);
			// clang-format off
			const TSharedRef<SWindow> Window = SNew(SWindow)
				.Title(NSLOCTEXT("HostProgress", "Title", "Please wait"))
				.ClientSize(FVector2D(ProgressBodyWidth, 0.0))
				.SizingRule(ESizingRule::Autosized)
				.SupportsMinimize(false)
				.SupportsMaximize(false)
				[
					Body
				];
			// clang-format on
			Body->Window = Window;
			FSlateApplication::Get().AddModalWindow(Window, nullptr);
		}
	}
}

void FHostProgressWindow::Install()
{
	FHostProgress::SetShowHook([](const FHostLongWork& Work) { ShowProgress(Work); });
}

void FHostProgressWindow::Uninstall()
{
	FHostProgress::SetShowHook(nullptr);
}
