#include "Host/SDockArea.h"

#include "Framework/Application/SlateApplication.h"
#include "Host/ColumnHeights.h"
#include "Host/HostSleep.h"
#include "Host/RowWidths.h"
#include "Host/SBesideBar.h"
#include "Styling/AppStyle.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

// A well of tabs and the content of one of them. Contents of the others are kept by their tabs and are out of the tree, so
// they cost nothing; with a tab goes which of its widgets had the keyboard.

namespace
{
	constexpr float DockWellHeight = 32.0f;
	constexpr float DockWellSide = 4.0f;

	/** Every content has room enough from here on. */
	constexpr float RoomyWidth = 720.0f;
	/** Between two looks at the rows, when nothing was cut the last time. */
	constexpr double WidthLookSeconds = 0.5;
	/** Frames after a change until everything has its place. */
	constexpr int32 SettlingLooks = 3;

	/** Where all tabs are closed, how to open one. */
	TSharedRef<SWidget> MakeEmptyHint()
	{
		// clang-format off
		return SNew(SBox)
			.HAlign(HAlign_Center)
			.VAlign(VAlign_Center)
			.Padding(FMargin(16.0f))
			[
				SNew(STextBlock)
				.Tag(FName(TEXT("NoTabHint")))
				.Text(NSLOCTEXT("HostDock", "NoTab", "Every tab is closed. The menu Window opens them again."))
				.ColorAndOpacity(FSlateColor(FAppStyle::GetColor(TEXT("Colors.ForegroundSubdued"))))
				.AutoWrapText(true)
			];
		// clang-format on
	}

	bool IsInside(const TSharedRef<SWidget>& Ancestor, TSharedPtr<SWidget> Widget)
	{
		while (Widget && Widget != Ancestor)
		{
			Widget = Widget->GetParentWidget();
		}
		return Widget.IsValid();
	}
}

void SDockArea::Construct(const FArguments& InArgs)
{
	// clang-format off
	ChildSlot
	[
		SNew(SVerticalBox)
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			SNew(SBorder)
			.BorderImage(FAppStyle::GetBrush(TEXT("Window.Bar")))
			.Padding(FMargin(DockWellSide, 0.0f))
			[
				SNew(SBox)
				.HeightOverride(DockWellHeight)
				.VAlign(VAlign_Bottom)
				.HAlign(HAlign_Left)
				[
					SAssignNew(Well, SHorizontalBox)
					.Clipping(EWidgetClipping::ClipToBounds)
				]
			]
		]
		+ SVerticalBox::Slot()
		.FillHeight(1.0f)
		[
			SNew(SBorder)
			.BorderImage(FAppStyle::GetBrush(TEXT("Window.Background")))
			.Padding(FMargin(0.0f))
			[
				SAssignNew(ContentHolder, SBox)
				.Clipping(EWidgetClipping::ClipToBounds)
			]
		]
	];
	// clang-format on
}

void SDockArea::AddTab(const TSharedRef<SDockTab>& Tab, bool bActivate)
{
	if (Tabs.Contains(Tab))
	{
		return;
	}
	Tabs.Add(Tab);
	Tab->SetArea(SharedThis(this));
	Well->AddSlot().AutoWidth()[Tab];
	if (bActivate || Tabs.Num() == 1)
	{
		ActivateTab(Tab, ETabActivationCause::SetDirectly);
	}
}

// The neighbour that moves into its place is shown next, and the last one when it was the last.
void SDockArea::RemoveTab(const TSharedRef<SDockTab>& Tab)
{
	const int32 Index = Tabs.Find(Tab);
	if (Index == INDEX_NONE)
	{
		return;
	}
	const bool bWasActive = GetActiveTab() == Tab;
	Tabs.RemoveAt(Index);
	Well->RemoveSlot(Tab);
	Tab->SetArea(nullptr);
	if (!bWasActive)
	{
		return;
	}
	ActiveTab.Reset();
	if (Tabs.Num() > 0)
	{
		ActivateTab(Tabs[FMath::Min(Index, Tabs.Num() - 1)], ETabActivationCause::SetDirectly);
	}
	else
	{
		RefreshContent();
	}
}

// 1. The old tab remembers its focus. 2. The content changes. 3. The keyboard follows if it was here or nowhere: a tab that
// opens by itself must not take it from another part of the window.
void SDockArea::ActivateTab(const TSharedRef<SDockTab>& Tab, ETabActivationCause Cause)
{
	const TSharedPtr<SDockTab> Before = GetActiveTab();
	if (Before == Tab || !Tabs.Contains(Tab))
	{
		return;
	}
	const TSharedPtr<SWidget> Focused = FSlateApplication::IsInitialized() ? FSlateApplication::Get().GetKeyboardFocusedWidget() : nullptr;
	const bool bTakeFocus = Focused && IsInside(ContentHolder.ToSharedRef(), Focused);
	if (Before && bTakeFocus)
	{
		Before->LastFocused = Focused;
	}
	ActiveTab = Tab;
	RefreshContent();
	if (FSlateApplication::IsInitialized() && (bTakeFocus || !Focused))
	{
		// The keyboard must not stay in a content that is out of sight.
		const TSharedPtr<SWidget> Last = Tab->LastFocused.Pin();
		FSlateApplication::Get().SetKeyboardFocus(Last ? Last : nullptr, EFocusCause::SetDirectly);
	}
	Tab->NotifyActivated(Cause);
}

void SDockArea::RefreshContent()
{
	const TSharedPtr<SDockTab> Tab = GetActiveTab();
	ContentWidth = 0.0f;
	ContentHeight = 0.0f;
	Upright.Reset();
	UprightContent.Reset();
	WidthLooksLeft = SettlingLooks;
	ContentHolder->SetContent(Tab ? Tab->GetContent() : MakeEmptyHint());
}

// A content that is shown must leave its place before it takes another one, so it stays in its boxes while only their size changes.
void SDockArea::SetContentSize(float Width, float Height)
{
	const TSharedPtr<SDockTab> Tab = GetActiveTab();
	if (!Tab || (Width == ContentWidth && Height == ContentHeight))
	{
		return;
	}
	const bool bSameBoxes = Width == ContentWidth && UprightContent && Height > 0.0f;
	ContentWidth = Width;
	ContentHeight = Height;
	if (bSameBoxes)
	{
		UprightContent->SetHeightOverride(FOptionalSize(Height));
	}
	else
	{
		PlaceContent(Tab->GetContent());
	}
	ShowFocused();
}

void SDockArea::PlaceContent(const TSharedRef<SWidget>& Content)
{
	const TOptional<float> Offset = Upright ? TOptional<float>(Upright->GetScrollOffset()) : TOptional<float>();
	Upright.Reset();
	UprightContent.Reset();
	ContentHolder->SetContent(SNullWidget::NullWidget);
	TSharedRef<SWidget> Placed = Content;
	// clang-format off
	if (ContentHeight > 0.0f)
	{
		Placed = SAssignNew(Upright, SScrollBox)
			.ScrollBarVisibility(ContentWidth > 0.0f ? EVisibility::Collapsed : EVisibility::Visible)
			+ SScrollBox::Slot()
			[
				SAssignNew(UprightContent, SBox)
				.HeightOverride(ContentHeight)
				[
					Content
				]
			];
		// The lower end first: there stands what is typed into, right below what it is about.
		Offset.IsSet() ? Upright->SetScrollOffset(Offset.GetValue()) : Upright->ScrollToEnd();
	}
	if (ContentWidth > 0.0f)
	{
		Placed = SNew(SScrollBox)
			.Orientation(Orient_Horizontal)
			+ SScrollBox::Slot()
			[
				SNew(SBox)
				.WidthOverride(ContentWidth)
				[
					Placed
				]
			];
		if (Upright)
		{
			// Its own bar would stand at the far end of what is moved sideways.
			Placed = SNew(SHorizontalBox)
				+ SHorizontalBox::Slot()
				.FillWidth(1.0f)
				[
					Placed
				]
				+ SHorizontalBox::Slot()
				.AutoWidth()
				[
					SNew(SBesideBar, Upright.ToSharedRef())
				];
		}
	}
	// clang-format on
	ContentHolder->SetContent(Placed);
}

void SDockArea::ShowFocused()
{
	const TSharedPtr<SWidget> Focused = FSlateApplication::IsInitialized() ? FSlateApplication::Get().GetKeyboardFocusedWidget() : nullptr;
	if (Upright && Focused && IsInside(UprightContent.ToSharedRef(), Focused))
	{
		Upright->ScrollDescendantIntoView(Focused, false);
	}
}

void SDockArea::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	SCompoundWidget::Tick(AllottedGeometry, InCurrentTime, InDeltaTime);
	const TSharedPtr<SDockTab> Tab = GetActiveTab();
	const float Room = static_cast<float>(AllottedGeometry.GetLocalSize().X);
	if (Room != LastRoom)
	{
		LastRoom = Room;
		WidthLooksLeft = SettlingLooks;
	}
	if (!Tab || Room <= 0.0f)
	{
		return;
	}
	const SWidget& Content = Tab->GetContent().Get();
	const float Width = FindWidth(Content, Room, InCurrentTime);
	const float Height = FindHeight(Content);
	if (Width != ContentWidth || Height != ContentHeight)
	{
		SetContentSize(Width, Height);
		FHostSleep::RequestFrameAt(InCurrentTime);
	}
}

float SDockArea::FindWidth(const SWidget& Content, float Room, double Now)
{
	// 1. What has room enough scrolls no longer.
	const float Before = Room >= FMath::Min(RoomyWidth, ContentWidth) ? 0.0f : ContentWidth;
	if (Room >= RoomyWidth || (WidthLooksLeft == 0 && Now < NextWidthLook))
	{
		return Before;
	}
	if (WidthLooksLeft > 0)
	{
		--WidthLooksLeft;
		FHostSleep::RequestFrameAt(Now);
	}
	// 2. Wider by what is cut. Some rows get but a part of that, so it is looked at again in the next frame.
	const FGeometry& Present = Content.GetCachedGeometry();
	const float Missing = RowWidths::FindMissing(Content, Present);
	// Counted from the width that was looked at, which may be that of the frame before.
	const float Wanted = FMath::Min(FMath::CeilToFloat(static_cast<float>(Present.GetLocalSize().X) + Missing), RoomyWidth);
	if (Missing >= 1.0f && Wanted > FMath::Max(Room, Before))
	{
		WidthLooksLeft = SettlingLooks;
		return Wanted;
	}
	NextWidthLook = Now + WidthLookSeconds;
	return Before;
}

float SDockArea::FindHeight(const SWidget& Content) const
{
	const FGeometry& Present = Content.GetCachedGeometry();
	const float Room = static_cast<float>(ContentHolder->GetCachedGeometry().GetLocalSize().Y);
	const float PresentHeight = static_cast<float>(Present.GetLocalSize().Y);
	if (Room <= 0.0f || PresentHeight <= 0.0f)
	{
		return ContentHeight;
	}
	const TOptional<float> Missing = ColumnHeights::FindMissing(Content, Present);
	const float Wanted = Missing.IsSet() ? FMath::CeilToFloat(PresentHeight + Missing.GetValue()) : 0.0f;
	return Wanted > Room ? Wanted : 0.0f;
}

// Around the ends; the remainder of a negative number is negative.
TSharedRef<SDockTab> SDockArea::GetNeighbour(const TSharedRef<SDockTab>& Tab, int32 Distance) const
{
	const int32 Count = Tabs.Num();
	const int32 Index = Tabs.Find(Tab);
	return Index == INDEX_NONE ? Tab : Tabs[((Index + Distance) % Count + Count) % Count];
}

FReply SDockArea::OnPreviewKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	// With one of these a key is a command, which may be about what is elsewhere.
	if (!InKeyEvent.IsControlDown() && !InKeyEvent.IsAltDown() && !InKeyEvent.GetKey().IsModifierKey())
	{
		ShowFocused();
	}
	return FReply::Unhandled();
}

FReply SDockArea::OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	const TSharedPtr<SDockTab> Tab = GetActiveTab();
	if (!Tab || InKeyEvent.GetKey() != EKeys::Tab || !InKeyEvent.IsControlDown())
	{
		return FReply::Unhandled();
	}
	ActivateTab(GetNeighbour(Tab.ToSharedRef(), InKeyEvent.IsShiftDown() ? -1 : 1), ETabActivationCause::SetDirectly);
	return FReply::Handled();
}
