#include "Widgets/Notifications/SNotificationList.h"

#include "Framework/Application/SlateApplication.h"
#include "HAL/PlatformTime.h"
#include "Host/HostAccess.h"
#include "Host/HostMotion.h"
#include "Host/HostSleep.h"
#include "Host/HostWidgetPaint.h"
#include "Rendering/DrawElements.h"
#include "Styling/AppStyle.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Images/SThrobber.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Input/SHyperlink.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SWrapBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SOverlay.h"
#include "Widgets/Text/STextBlock.h"

// A toast: a sign of its state, a text, links and buttons, and a life of its own. It fades in, waits for its time when
// it was asked to, and fades out; under the pointer it stays. Frames are asked for exactly while something of that moves.

namespace
{
	constexpr float ToastWidth = 360.0f;
	constexpr float ToastPadding = 12.0f;
	constexpr float ToastLineHeight = 18.0f;
	constexpr float ToastMarkSize = 20.0f;
	constexpr float ToastMarkGap = 10.0f;
	constexpr float ToastActionGap = 8.0f;
	constexpr float ToastDismissSize = 10.0f;

	/** Toasts are told of from tickers and timers, which wake nobody; the engine's move by animations, which do. */
	void WakeForToast()
	{
		if (FSlateApplication::IsInitialized())
		{
			FSlateApplication::Get().NoteActivity();
		}
	}
}

FNotificationButtonInfo::FNotificationButtonInfo(
	TAttribute<FText> InText, TAttribute<FText> InToolTip, FSimpleDelegate InCallback, SNotificationItem::ECompletionState InVisibleInState)
	: Text(MoveTemp(InText))
	, ToolTip(MoveTemp(InToolTip))
	, Callback(MoveTemp(InCallback))
	, VisibleInState(InVisibleInState)
{
}

void SNotificationItem::Construct(const FArguments& InArgs, const FNotificationInfo& Info)
{
	OwnImage = Info.Image;
	ExpireDuration = Info.ExpireDuration;
	FadeInDuration = Info.FadeInDuration;
	FadeOutDuration = Info.FadeOutDuration;
	bUseThrobber = Info.bUseThrobber;
	bUseIcons = Info.bUseSuccessFailIcons;
	bAsks = !Info.bFireAndForget && !Info.ButtonDetails.IsEmpty();
	ShownSince = FPlatformTime::Seconds();
	// clang-format off
	ChildSlot
	[
		SNew(SOverlay)
		+ SOverlay::Slot()
		[
			MakeBody(Info)
		]
		+ SOverlay::Slot()
		.HAlign(HAlign_Right)
		.VAlign(VAlign_Top)
		[
			SNew(SButton)
			.Visibility(this, &SNotificationItem::GetDismissVisibility)
			.ToolTipText(NSLOCTEXT("HostToast", "Dismiss", "Dismiss"))
			.ButtonStyle(FAppStyle::Get(), "SimpleButton")
			.ContentPadding(FMargin(4.0f))
			.OnClicked(this, &SNotificationItem::OnDismissClicked)
			[
				SNew(SImage)
				.Image(FAppStyle::GetBrush("Icons.X"))
				.DesiredSizeOverride(TOptional<FVector2D>(FVector2D(ToastDismissSize, ToastDismissSize)))
				.ColorAndOpacity(FSlateColor(FAppStyle::GetColor("Colors.ForegroundSubdued")))
			]
		]
	];
	// clang-format on
	ApplyState();
	if (Info.bFireAndForget)
	{
		ExpireAndFadeout();
	}
}

TSharedRef<SWidget> SNotificationItem::MakeBody(const FNotificationInfo& Info)
{
	const FSlateFontInfo Font = FAppStyle::GetFontStyle(Info.bUseLargeFont ? "NormalFontBold" : "NormalFont");
	// clang-format off
	return SNew(SBox)
		.WidthOverride(Info.WidthOverride.Get(ToastWidth))
		.Padding(ToastPadding)
		[
			SNew(SVerticalBox)
			+ SVerticalBox::Slot()
			.AutoHeight()
			[
				SNew(SHorizontalBox)
				+ SHorizontalBox::Slot()
				.AutoWidth()
				.VAlign(VAlign_Top)
				[
					SAssignNew(Mark, SBox)
					.HeightOverride(ToastMarkSize)
					.Padding(0.0f, 0.0f, ToastMarkGap, 0.0f)
					.VAlign(VAlign_Center)
				]
				+ SHorizontalBox::Slot()
				.FillWidth(1.0f)
				.VAlign(VAlign_Center)
				[
					SAssignNew(TextBlock, STextBlock)
					.Text(Info.Text)
					.Font(Font)
					.ColorAndOpacity(FSlateColor(FAppStyle::GetColor("Colors.ForegroundStrong")))
					.LineHeightPercentage(FHostWidgetPaint::GetLineHeightPercentage(Font, ToastLineHeight))
					.AutoWrapText(true)
				]
			]
			+ SVerticalBox::Slot()
			.AutoHeight()
			[
				MakeActions(Info)
			]
		];
	// clang-format on
}

TSharedRef<SWidget> SNotificationItem::MakeActions(const FNotificationInfo& Info)
{
	// In a narrow window they stand below each other.
	const TSharedRef<SWrapBox> Row =
		SNew(SWrapBox).UseAllottedSize(true).HAlign(HAlign_Right).InnerSlotPadding(FVector2D(ToastActionGap, ToastActionGap));
	HyperlinkHandler = Info.Hyperlink;
	// clang-format off
	Row->AddSlot()
	.VAlign(VAlign_Center)
	[
		SAssignNew(LinkBox, SBox)
		.Visibility(EVisibility::Collapsed)
	];
	// clang-format on
	if (Info.Hyperlink.IsBound() || Info.HyperlinkText.IsSet())
	{
		SetHyperlink(Info.Hyperlink, Info.HyperlinkText);
	}
	for (const FNotificationButtonInfo& Button : Info.ButtonDetails)
	{
		const FSimpleDelegate Callback = Button.Callback;
		const TSharedRef<SWidget> Widget = SNew(SButton)
											   .Text(Button.Text)
											   .ToolTipText(Button.ToolTip)
											   .OnClicked_Lambda(
												   [Callback]()
												   {
													   Callback.ExecuteIfBound();
													   return FReply::Handled();
												   });
		Buttons.Add({ Widget, Button.VisibleInState });
		Row->AddSlot()[Widget];
	}
	return SAssignNew(Actions, SBox).Padding(0.0f, ToastActionGap, 0.0f, 0.0f)[Row];
}

void SNotificationItem::SetText(const TAttribute<FText>& InText)
{
	TextBlock->SetText(InText);
	WakeForToast();
}

FText SNotificationItem::GetText() const
{
	return TextBlock->GetText();
}

void SNotificationItem::SetHyperlink(const FSimpleDelegate& InHyperlink, const TAttribute<FText>& InHyperlinkText)
{
	HyperlinkHandler = InHyperlink;
	LinkBox->SetContent(SNew(SHyperlink).Text(InHyperlinkText).OnNavigate(this, &SNotificationItem::OnHyperlinkClicked));
	LinkBox->SetVisibility(EVisibility::Visible);
	if (Actions)
	{
		ApplyState();
	}
}

void SNotificationItem::OnHyperlinkClicked()
{
	HyperlinkHandler.ExecuteIfBound();
}

void SNotificationItem::SetCompletionState(ECompletionState InState)
{
	if (State != InState)
	{
		State = InState;
		ApplyState();
		WakeForToast();
	}
}

// Sign and buttons follow the state; a row of actions without any takes no room.
void SNotificationItem::ApplyState()
{
	TSharedPtr<SWidget> Sign;
	const auto MakeIcon = [](const FSlateBrush* Brush, const FLinearColor& Color) -> TSharedRef<SWidget>
	{
		return SNew(SImage)
			.Image(Brush)
			.ColorAndOpacity(FSlateColor(Color))
			.DesiredSizeOverride(TOptional<FVector2D>(FVector2D(ToastMarkSize, ToastMarkSize)));
	};
	switch (State)
	{
	case CS_None:
		if (OwnImage)
		{
			Sign = MakeIcon(OwnImage, FLinearColor::White);
		}
		break;
	case CS_Pending:
		if (bUseThrobber)
		{
			Sign = SNew(SThrobber);
		}
		break;
	case CS_Success:
		if (bUseIcons)
		{
			Sign = MakeIcon(FAppStyle::GetBrush("Icons.Success"), FAppStyle::GetColor("Colors.Success"));
		}
		break;
	case CS_Fail:
		if (bUseIcons)
		{
			Sign = MakeIcon(FAppStyle::GetBrush("Icons.Error"), FAppStyle::GetColor("Colors.Error"));
		}
		break;
	}
	Mark->SetContent(Sign ? Sign.ToSharedRef() : SNullWidget::NullWidget);
	Mark->SetVisibility(Sign ? EVisibility::Visible : EVisibility::Collapsed);

	bool bAnyAction = LinkBox->GetVisibility().IsVisible();
	for (const FStateButton& Button : Buttons)
	{
		const bool bVisible = Button.VisibleIn == State;
		Button.Widget->SetVisibility(bVisible ? EVisibility::Visible : EVisibility::Collapsed);
		bAnyAction = bAnyAction || bVisible;
	}
	Actions->SetVisibility(bAnyAction ? EVisibility::Visible : EVisibility::Collapsed);
}

EVisibility SNotificationItem::GetDismissVisibility() const
{
	// Hidden keeps its room, so that nothing moves; a toast that goes by itself, or that something will end, needs none.
	return IsHovered() && FadeAt < 0.0 && State != CS_Pending ? EVisibility::Visible : EVisibility::Hidden;
}

FReply SNotificationItem::OnDismissClicked()
{
	bDismissed = true;
	Fadeout();
	return FReply::Handled();
}

void SNotificationItem::ExpireAndFadeout()
{
	if (FadeAt < 0.0)
	{
		FadeAt = FPlatformTime::Seconds() + ExpireDuration;
		WakeForToast();
	}
}

// An earlier end that was planned already stays.
void SNotificationItem::Fadeout()
{
	const double Now = FPlatformTime::Seconds();
	FadeAt = FadeAt < 0.0 ? Now : FMath::Min(FadeAt, Now);
	WakeForToast();
}

void SNotificationItem::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	SCompoundWidget::Tick(AllottedGeometry, InCurrentTime, InDeltaTime);
	double Opacity = 1.0;
	const bool bFades = !FHostMotion::IsReduced();
	if (bFades && FadeInDuration > 0.0f)
	{
		Opacity = FMath::Clamp((InCurrentTime - ShownSince) / FadeInDuration, 0.0, 1.0);
	}
	if (FadeAt >= 0.0 && IsHovered() && !bDismissed)
	{
		// What the user is reading or about to press does not go away.
		FadeAt = FMath::Max(FadeAt, InCurrentTime);
	}
	if (FadeAt >= 0.0 && InCurrentTime >= FadeAt)
	{
		const double Left = bFades && FadeOutDuration > 0.0f ? 1.0 - (InCurrentTime - FadeAt) / FadeOutDuration : 0.0;
		bGone = Left <= 0.0;
		Opacity = FMath::Min(Opacity, FMath::Max(Left, 0.0));
	}
	// The next frame that will show something else.
	const bool bFadesIn = bFades && FadeInDuration > 0.0f && InCurrentTime < ShownSince + FadeInDuration;
	if (bFadesIn)
	{
		FHostSleep::RequestFrameAt(InCurrentTime);
	}
	else if (FadeAt >= 0.0 && (bDismissed || !IsHovered()))
	{
		// Once more after the end as well: the list takes it out then.
		FHostSleep::RequestFrameAt(FMath::Max(FadeAt, InCurrentTime));
	}
	SetRenderOpacity(static_cast<float>(Opacity));
}

int32 SNotificationItem::OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	FHostWidgetPaint::AddToastSurface(
		OutDrawElements, AllottedGeometry.GetLayoutBoundingRect(), AllottedGeometry.GetAccumulatedScale(), InWidgetStyle);
	return SCompoundWidget::OnPaint(Args, AllottedGeometry, MyCullingRect, OutDrawElements, LayerId, InWidgetStyle, bParentEnabled);
}

void SNotificationItem::DescribeAccess(FHostAccess& Out) const
{
	Out.Role = EHostRole::Notification;
	Out.Name = GetText();
	Out.States |= State == CS_Pending ? EHostAccessState::Busy : EHostAccessState::None;
}
