#include "Host/SMenuBar.h"

#include "Brushes/SlateRoundedBoxBrush.h"
#include "Framework/Application/SlateApplication.h"
#include "Host/HostAccess.h"
#include "MenuItem.h"
#include "SMenu.h"
#include "Styling/AppStyle.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

// The bar above the window. A press on a name opens its menu, and while one is open resting on another name is enough.
// Menus are built at the moment they open, so that their entries are those of that moment.

namespace
{

	constexpr float MenuBarHeight = 28.0f;
	constexpr float MenuBarSide = 4.0f;
	constexpr float LeastMenuWidth = 180.0f;

	const FSlateBrush& GetMenuBarEntryBrush(bool bOpen)
	{
		static const FSlateRoundedBoxBrush Hovered(FLinearColor(FColor(255, 255, 255, 0x14)), 4.0f);
		static const FSlateRoundedBoxBrush Open(FLinearColor(FColor(255, 255, 255, 0x1A)), 4.0f);
		return bOpen ? Open : Hovered;
	}

} // namespace

/** The name of a menu in the bar. */
class SMenuBarEntry : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SMenuBarEntry) {}
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs, const FMenuBarPullDown& PullDown, const TWeakPtr<SMenuBar>& InBar, int32 InIndex)
	{
		Bar = InBar;
		Index = InIndex;
		SetToolTipText(PullDown.ToolTip);
		ChildSlot.Padding(10.0f, 4.0f, 10.0f, 4.0f)
			.VAlign(VAlign_Center)[SNew(STextBlock).Text(PullDown.Label).ColorAndOpacity(this, &SMenuBarEntry::GetTextColor)];
	}

	virtual void OnMouseEnter(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override
	{
		SCompoundWidget::OnMouseEnter(MyGeometry, MouseEvent);
		const TSharedPtr<SMenuBar> Owner = Bar.Pin();
		if (Owner && Owner->GetOpenIndex() != INDEX_NONE)
		{
			Owner->Open(Index, false);
		}
	}

	virtual FReply OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override
	{
		if (const TSharedPtr<SMenuBar> Owner = Bar.Pin())
		{
			Owner->Open(Index, false);
		}
		return FReply::Handled();
	}
	virtual FReply OnMouseButtonDoubleClick(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override
	{
		return OnMouseButtonDown(MyGeometry, MouseEvent);
	}
	virtual void DescribeAccess(FHostAccess& Out) const override
	{
		Out.Role = EHostRole::MenuItem;
		Out.bNamedByContents = true;
		Out.Action = "press";
		Out.States |= EHostAccessState::HasPopup | EHostAccessState::Expandable;
		Out.States |= IsOpen() ? EHostAccessState::Expanded : EHostAccessState::None;
	}
	virtual FReply DoAccessAction() override
	{
		if (const TSharedPtr<SMenuBar> Owner = Bar.Pin())
		{
			// As by the keyboard: the first entry is marked.
			Owner->Open(Index, true);
		}
		return FReply::Handled();
	}

protected:
	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override
	{
		if (IsOpen() || IsHovered())
		{
			OutDrawElements.AddBrush(AllottedGeometry.GetLayoutBoundingRect(), GetMenuBarEntryBrush(IsOpen()), FLinearColor::White,
				InWidgetStyle.GetColorAndOpacityTint());
		}
		return SCompoundWidget::OnPaint(Args, AllottedGeometry, MyCullingRect, OutDrawElements, LayerId, InWidgetStyle, bParentEnabled);
	}

private:
	bool IsOpen() const
	{
		const TSharedPtr<SMenuBar> Owner = Bar.Pin();
		return Owner && Owner->GetOpenIndex() == Index;
	}
	FSlateColor GetTextColor() const { return FSlateColor(FAppStyle::GetColor(IsOpen() ? "Colors.ForegroundHover" : "Colors.Foreground")); }

	TWeakPtr<SMenuBar> Bar;
	int32 Index = INDEX_NONE;
};

void SMenuBar::DescribeAccess(FHostAccess& Out) const
{
	Out.Role = EHostRole::MenuBar;
	Out.Name = NSLOCTEXT("HostAccess", "MenuBar", "Menus");
}

void SMenuBar::Construct(const FArguments& InArgs, const TArray<TSharedRef<FMenuBarPullDown>>& InPullDowns)
{
	PullDowns = InPullDowns;
	const TSharedRef<SHorizontalBox> Row = SNew(SHorizontalBox);
	for (const TSharedRef<FMenuBarPullDown>& PullDown : PullDowns)
	{
		const TSharedRef<SMenuBarEntry> Entry = SNew(SMenuBarEntry, *PullDown, SharedThis(this), Entries.Num());
		Entries.Add(Entry);
		Row->AddSlot().AutoWidth().VAlign(VAlign_Center)[Entry];
	}
	// clang-format off
	ChildSlot
	[
		SNew(SBorder)
		.BorderImage(FAppStyle::GetBrush("Window.Bar"))
		.Padding(FMargin(MenuBarSide, 0.0f))
		[
			SNew(SBox)
			.HeightOverride(MenuBarHeight)
			.HAlign(HAlign_Left)
			[
				Row
			]
		]
	];
	// clang-format on
}

// F10 opens the first menu, Alt with a letter the first that begins with it.
bool SMenuBar::HandleKey(const FKeyEvent& KeyEvent)
{
	if (KeyEvent.IsControlDown() || KeyEvent.IsShiftDown() || PullDowns.Num() == 0)
	{
		return false;
	}
	if (KeyEvent.GetKey() == EKeys::F10 && !KeyEvent.IsAltDown())
	{
		Open(0, true);
		return true;
	}
	// The right Alt key belongs to the letters of many keyboards.
	const bool bLeftAlt = KeyEvent.GetModifierKeys().IsLeftAltDown();
	const FString Letter = KeyEvent.GetKey().ToString();
	for (int32 Index = 0; bLeftAlt && Letter.Len() == 1 && Index < PullDowns.Num(); ++Index)
	{
		if (PullDowns[Index]->Label.Get().ToString().StartsWith(Letter))
		{
			Open(Index, true);
			return true;
		}
	}
	return false;
}

void SMenuBar::Open(int32 Index, bool bByKeyboard)
{
	if (Index == OpenIndex)
	{
		return;
	}
	FSlateApplication& Application = FSlateApplication::Get();
	Application.DismissAllMenus();
	const FSimpleDelegate Opening = MenuOpeningHandler;
	Opening.ExecuteIfBound();
	const TSharedRef<FMenuBarPullDown> PullDown = PullDowns[Index];
	FMenuBuilder Builder(true, PullDown->CommandList, PullDown->Extender);
	PullDown->Build.ExecuteIfBound(Builder);
	const TSharedRef<SMenu> Content = StaticCastSharedRef<SMenu>(Builder.MakeWidget());
	Content->SetBar(SharedThis(this));
	const FSlateRect Anchor = Entries[Index]->GetCachedGeometry().GetLayoutBoundingRect();
	const TSharedRef<IMenu> Opened =
		Application.PushMenu(Entries[Index], Content, Anchor, MenuPlacement_BelowAnchor, true, EHostOwnerPress::OnlyCloses, LeastMenuWidth);
	Opened->GetOnMenuDismissed().AddSP(this, &SMenuBar::OnMenuClosed);
	OpenMenu = Opened;
	OpenIndex = Index;
	if (bByKeyboard)
	{
		Content->HighlightFirst();
	}
}

void SMenuBar::OpenNeighbour(int32 Step)
{
	if (OpenIndex != INDEX_NONE)
	{
		const int32 Count = PullDowns.Num();
		Open((OpenIndex + Step + Count) % Count, true);
	}
}

void SMenuBar::OnMenuClosed(TSharedRef<IMenu> Closed)
{
	if (OpenMenu.HasSameObject(&Closed.Get()))
	{
		OpenMenu.Reset();
		OpenIndex = INDEX_NONE;
	}
}
