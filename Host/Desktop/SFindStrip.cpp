#include "SFindStrip.h"

#include "Framework/Application/SlateApplication.h"
#include "Host/HostSleep.h"
#include "Host/HostTextWidget.h"
#include "OpenChat.h"
#include "PromptBox.h"
#include "Styling/AppStyle.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Input/SCheckBox.h"
#include "Widgets/Input/SEditableTextBox.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SWrapBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

#define LOCTEXT_NAMESPACE "FindStrip"

namespace
{
	/** Fits the narrowest window, where the controls have several lines. */
	constexpr float BoxWidth = 200.0f;
	constexpr float MinBoxWidth = 120.0f;
	constexpr float MaxBoxWidth = 280.0f;
	constexpr float CountWidth = 80.0f;
	/** Of all controls but the box when they stand in one line. */
	constexpr float OtherWidth = 590.0f;
	/** A longer selection is no word to look for. */
	constexpr int32 MaxSelectedLength = 200;

	TSharedPtr<SHostTextWidget> GetFocusedText()
	{
		const TSharedPtr<SWidget> Focused = FSlateApplication::Get().GetKeyboardFocusedWidget();
		return dynamic_cast<SHostTextWidget*>(Focused.Get()) ? StaticCastSharedPtr<SHostTextWidget>(Focused) : nullptr;
	}
}

void SFindStrip::Construct(const FArguments& InArgs, const TSharedRef<FConversationFind>& InFind, const TSharedRef<IFindTarget>& InOther)
{
	Find = InFind;
	Targets = { InFind, InOther };
	const auto GetVisibility = [this]() { return bIsOpen && CanFind() ? EVisibility::Visible : EVisibility::Collapsed; };
	const TSharedRef<SWrapBox> Controls = SNew(SWrapBox).UseAllottedSize(true).InnerSlotPadding(FVector2D(8.0, 4.0));
	Controls->AddSlot().VAlign(VAlign_Center)[MakeBoxAndCount()];
	Controls->AddSlot().VAlign(VAlign_Center)[MakeButton("FindPrevious", LOCTEXT("Previous", "Previous"),
		LOCTEXT("PreviousTip", "The hit above (Shift+Enter)"), FSimpleDelegate::CreateSPLambda(this, [this] { Step(-1); }))];
	Controls->AddSlot().VAlign(VAlign_Center)[MakeButton("FindNext", LOCTEXT("Next", "Next"), LOCTEXT("NextTip", "The hit below (Enter)"),
		FSimpleDelegate::CreateSPLambda(this, [this] { Step(1); }))];
	Controls->AddSlot().VAlign(VAlign_Center)[MakeOption(
		"FindCase", LOCTEXT("Case", "Match case"), LOCTEXT("CaseTip", "Capital and small letters are different"), &FFindQuery::bMatchCase)];
	Controls->AddSlot().VAlign(VAlign_Center)[MakeOption(
		"FindWords", LOCTEXT("Words", "Whole words"), LOCTEXT("WordsTip", "Not within longer words"), &FFindQuery::bWholeWords)];
	Controls->AddSlot().VAlign(VAlign_Center)[MakeButton("CloseFind", LOCTEXT("Close", "Close"),
		LOCTEXT("CloseTip", "Back to where you were (Escape)"), FSimpleDelegate::CreateSPLambda(this, [this] { Close(); }))];
	// clang-format off
	ChildSlot
	[
		SNew(SBorder)
		.Tag("FindStrip")
		.BorderImage(FAppStyle::GetBrush("ToolPanel.GroupBorder"))
		.Padding(FMargin(8.0f, 4.0f))
		.Visibility_Lambda(GetVisibility)
		[
			Controls
		]
	];
	// clang-format on
}

TSharedRef<SWidget> SFindStrip::MakeBoxAndCount()
{
	// clang-format off
	return SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.AutoWidth()
		[
			SNew(SBox)
			.WidthOverride_Lambda([this]() { return FOptionalSize(GetBoxWidth()); })
			[
				SAssignNew(Box, SEditableTextBox)
				.Tag("FindBox")
				.HintText(LOCTEXT("Hint", "Find"))
				.ClearKeyboardFocusOnCommit(false)
				.OnTextChanged_Lambda([this](const FText&) { TakeQuery(); })
				.OnKeyDownHandler(this, &SFindStrip::OnKeyDown)
			]
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Center)
		.Padding(8.0f, 0.0f, 0.0f, 0.0f)
		[
			SNew(SBox)
			.WidthOverride(CountWidth)
			[
				SNew(STextBlock)
				.Tag("FindCount")
				.Text(this, &SFindStrip::GetCountText)
				.OverflowPolicy(ETextOverflowPolicy::Ellipsis)
			]
		];
	// clang-format on
}

float SFindStrip::GetBoxWidth() const
{
	const float Room = static_cast<float>(GetCachedGeometry().GetLocalSize().X) - OtherWidth;
	return Room < MinBoxWidth ? BoxWidth : FMath::Min(Room, MaxBoxWidth);
}

TSharedRef<SWidget> SFindStrip::MakeButton(const char* Tag, const FText& Label, const FText& ToolTip, const FSimpleDelegate& Action)
{
	const auto OnClicked = [Action]()
	{
		Action.ExecuteIfBound();
		return FReply::Handled();
	};
	return SNew(SButton).Tag(FName(Tag)).Text(Label).ToolTipText(ToolTip).OnClicked_Lambda(OnClicked);
}

TSharedRef<SWidget> SFindStrip::MakeOption(const char* Tag, const FText& Label, const FText& ToolTip, bool FFindQuery::*Option)
{
	const auto IsChecked = [this, Option]() { return Query.*Option ? ECheckBoxState::Checked : ECheckBoxState::Unchecked; };
	const auto OnChanged = [this, Option](ECheckBoxState State)
	{
		Query.*Option = State == ECheckBoxState::Checked;
		TakeQuery();
	};
	// clang-format off
	return SNew(SCheckBox)
		.Tag(FName(Tag))
		.ToolTipText(ToolTip)
		.IsChecked_Lambda(IsChecked)
		.OnCheckStateChanged_Lambda(OnChanged)
		[
			SNew(STextBlock)
			.Text(Label)
		];
	// clang-format on
}

IFindTarget* SFindStrip::GetTarget() const
{
	const TSharedRef<IFindTarget>* const Target =
		Targets.FindByPredicate([](const TSharedRef<IFindTarget>& Candidate) { return Candidate->IsInFront(); });
	return Target ? &Target->Get() : nullptr;
}

void SFindStrip::Step(int32 Direction)
{
	if (IFindTarget* const Target = GetTarget())
	{
		Target->Step(Direction);
	}
}

void SFindStrip::TakeQuery()
{
	Query.Words = Box->GetText().ToString();
	for (const TSharedRef<IFindTarget>& Target : Targets)
	{
		Target->SetQuery(Query);
	}
	FSlateApplication::Get().RequestFrame();
}

FText SFindStrip::GetCountText() const
{
	const IFindTarget* const Target = GetTarget();
	if (Query.Words.IsEmpty() || !Target)
	{
		return FText();
	}
	const int32 Count = Target->GetCount();
	if (Count == 0)
	{
		return Target->IsComplete() ? LOCTEXT("NoHits", "No hits") : LOCTEXT("Looking", "\u2026");
	}
	const FText All = FText::Format(
		Target->IsComplete() && Count < IFindTarget::MaxHits ? LOCTEXT("All", "{0}") : LOCTEXT("More", "{0}+"), FText::AsNumber(Count));
	const int32 Number = Target->GetCurrentNumber();
	return Number == 0 ? All : FText::Format(LOCTEXT("NumberOf", "{0} of {1}"), FText::AsNumber(Number), All);
}

void SFindStrip::Open()
{
	FString Words;
	if (const TSharedPtr<SHostTextWidget> Text = GetFocusedText(); Text && Text != Box)
	{
		Words = Text->GetSelectedText().ToString();
	}
	const bool bIsWord = !Words.IsEmpty() && Words.Len() <= MaxSelectedLength && !Words.Contains(TEXT("\n"));
	OpenWith(bIsWord ? Words : Box->GetText().ToString());
}

void SFindStrip::OpenWith(const FString& Words)
{
	FSlateApplication& Application = FSlateApplication::Get();
	if (const TSharedPtr<SWidget> Focused = Application.GetKeyboardFocusedWidget(); Focused && !HasFocusedDescendants())
	{
		FocusBefore = Focused;
	}
	bIsOpen = true;
	Box->SetText(FText::FromString(Words));
	TakeQuery();
	Invalidate(EInvalidateWidgetReason::Layout);
	Application.SetKeyboardFocus(Box, EFocusCause::SetDirectly);
	Box->SelectAllText();
}

void SFindStrip::ShowMessage(const FString& Words, const FSoughtMessage& Message)
{
	bIsOpen = true;
	Query = FFindQuery();
	Query.Words = Words;
	Box->SetText(FText::FromString(Words));
	Find->Show(Query, Message);
	Invalidate(EInvalidateWidgetReason::Layout);
	FSlateApplication::Get().RequestFrame();
}

void SFindStrip::Close()
{
	bIsOpen = false;
	for (const TSharedRef<IFindTarget>& Target : Targets)
	{
		Target->SetQuery(FFindQuery());
	}
	Invalidate(EInvalidateWidgetReason::Layout);
	const TSharedPtr<SWidget> Before = FocusBefore.Pin();
	if (!Before || !FSlateApplication::Get().SetKeyboardFocus(Before, EFocusCause::SetDirectly))
	{
		FPromptBox::Focus();
	}
}

FReply SFindStrip::OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	if (InKeyEvent.GetKey() == EKeys::Escape)
	{
		Close();
		return FReply::Handled();
	}
	if (InKeyEvent.GetKey() == EKeys::Enter && Box->HasKeyboardFocus())
	{
		Step(InKeyEvent.IsShiftDown() ? -1 : 1);
		return FReply::Handled();
	}
	return FReply::Unhandled();
}

void SFindMarks::Construct(const FArguments& InArgs, const TSharedRef<FConversationFind>& InFind)
{
	Find = InFind;
	SetVisibility(EVisibility::HitTestInvisible);
}

void SFindMarks::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	if (Find->Update(InCurrentTime))
	{
		FHostSleep::RequestFrameAt(InCurrentTime);
	}
}

int32 SFindMarks::OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	Find->Paint(OutDrawElements);
	return LayerId;
}

FVector2D SFindMarks::ComputeDesiredSize(float LayoutScaleMultiplier) const
{
	return FVector2D(0, 0);
}

#undef LOCTEXT_NAMESPACE
