#include "Widgets/Views/STableViewBase.h"

#include "Host/HostAccess.h"
#include "Host/HostWidgetPaint.h"
#include "Host/ScrollThumb.h"
#include "Styling/AppStyle.h"

// A list makes widgets only for the rows in view, and lets go of those that leave it: a history may have thousands of
// rows. The scroll position is the index of the top row and the distance that it is scrolled out by, in units. Heights
// of rows that were never made are unknown, so the scroll bar reckons with the average of those in view; it moves a
// little when rows of other heights come in, the rows themselves do not.
//
// Rows are made while the list is painted, when its size is certain, and measured on the spot. One row is made before
// that, as a probe of how high rows are, and taken over as the first row.

namespace
{
	constexpr float TableWheelUnits = 54.0f;
	/** Stands in until a row has been measured. */
	constexpr float FallbackRowHeight = 26.0f;

	const FScrollBarStyle& GetTableBarStyle()
	{
		return FAppStyle::Get().GetWidgetStyle<FScrollBarStyle>(TEXT("ScrollBar"));
	}
}

ITableRow::~ITableRow() = default;

STableViewBase::STableViewBase()
	: Children(this)
	, Thumb(MakeUnique<FScrollThumb>())
{
}

STableViewBase::~STableViewBase() = default;

void STableViewBase::ConstructBase(const FTableRowStyle* InRowStyle, bool bInFocusable, int32 InMaxRows)
{
	RowStyle = InRowStyle ? InRowStyle : &FAppStyle::Get().GetWidgetStyle<FTableRowStyle>(TEXT("TableView.Row"));
	bFocusable = bInFocusable;
	MaxRows = InMaxRows;
	SetClipping(EWidgetClipping::ClipToBounds);
}

// Rows are made anew by the next painting; the scroll position stays.
void STableViewBase::RequestListRefresh()
{
	bRefresh = true;
	Probe.Reset();
	Invalidate(EInvalidateWidgetReason::Layout);
}

void STableViewBase::ScrollToTop()
{
	TopIndex = 0;
	TopDistance = 0.0f;
	WantedIndex = INDEX_NONE;
}

void STableViewBase::ScrollToBottom()
{
	WantedIndex = INDEX_NONE;
	bToBottom = true;
}

void STableViewBase::ScrollToIndex(int32 Index)
{
	WantedIndex = Index;
}

// By what was painted last: rows that came in since do not count, so that somebody who was at the bottom before they
// came can be brought to the new one.
bool STableViewBase::IsAtBottom() const
{
	if (Rows.IsEmpty())
	{
		return true;
	}
	const FRow& Last = Rows.Last();
	return Last.Index >= PaintedCount - 1 && Last.Top + Last.Height <= GetCachedGeometry().GetLocalSize().Y + 1.0;
}

void STableViewBase::DescribeAccess(FHostAccess& Out) const
{
	Out.Role = EHostRole::List;
}

bool STableViewBase::IsRowSelected(int32 Index) const
{
	return Index >= 0 && Index < GetItemCount() && IsIndexSelected(Index);
}

void STableViewBase::NotifyRowPressed(int32 Index)
{
	if (Index >= 0 && Index < GetItemCount())
	{
		SelectIndex(Index, ESelectInfo::OnMouseClick);
	}
}

void STableViewBase::NotifyRowClicked(int32 Index)
{
	if (Index >= 0 && Index < GetItemCount())
	{
		ClickIndex(Index);
	}
}

void STableViewBase::NotifyRowDoubleClicked(int32 Index)
{
	if (Index >= 0 && Index < GetItemCount())
	{
		DoubleClickIndex(Index);
	}
}

// Without a selection Down and Home begin at the top, Up and End at the bottom, as in a menu.
bool STableViewBase::MoveSelectionByKey(const FKey& Key, ESelectInfo::Type SelectInfo)
{
	const int32 Count = GetItemCount();
	const int32 Current = GetSelectedIndex();
	const int32 Page = FMath::Max(Rows.Num() - 2, 1);
	int32 Next = Current;
	if (Key == EKeys::Up)
	{
		Next = Current == INDEX_NONE ? Count - 1 : Current - 1;
	}
	else if (Key == EKeys::Down)
	{
		Next = Current + 1;
	}
	else if (Key == EKeys::Home)
	{
		Next = 0;
	}
	else if (Key == EKeys::End)
	{
		Next = Count - 1;
	}
	else if (Key == EKeys::PageUp)
	{
		Next = Current - Page;
	}
	else if (Key == EKeys::PageDown)
	{
		Next = Current + Page;
	}
	else
	{
		return false;
	}
	if (Count > 0)
	{
		Next = FMath::Clamp(Next, 0, Count - 1);
		if (Next != Current)
		{
			SelectIndex(Next, SelectInfo);
		}
		ScrollToIndex(Next);
	}
	return true;
}

FReply STableViewBase::OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	const bool bPlain = !InKeyEvent.IsControlDown() && !InKeyEvent.IsAltDown() && !InKeyEvent.IsShiftDown();
	return bPlain && MoveSelectionByKey(InKeyEvent.GetKey(), ESelectInfo::OnNavigation) ? FReply::Handled() : FReply::Unhandled();
}

// The last average stays known while there are no rows, so that an emptied and refilled list does not jump.
float STableViewBase::GetAverageHeight() const
{
	float Sum = 0.0f;
	for (const FRow& Row : Rows)
	{
		Sum += Row.Height;
	}
	if (Sum > 0.0f)
	{
		KnownHeight = Sum / static_cast<float>(Rows.Num());
	}
	return KnownHeight > 0.0f ? KnownHeight : FallbackRowHeight;
}

double STableViewBase::GetContentHeight() const
{
	return static_cast<double>(GetAverageHeight()) * GetItemCount();
}

double STableViewBase::GetScrollOffset() const
{
	return static_cast<double>(GetAverageHeight()) * TopIndex + TopDistance;
}

// The counterpart of GetScrollOffset, by the same average; UpdateRows settles the rest when the heights are known.
void STableViewBase::SetScrollOffset(double Offset)
{
	const float Average = GetAverageHeight();
	TopIndex = FMath::Clamp(FMath::FloorToInt32(static_cast<float>(Offset) / Average), 0, FMath::Max(GetItemCount() - 1, 0));
	TopDistance = static_cast<float>(Offset - static_cast<double>(Average) * TopIndex);
	WantedIndex = INDEX_NONE;
}

bool STableViewBase::HasOverflow(const FGeometry& Geometry) const
{
	return GetContentHeight() > Geometry.GetLocalSize().Y + 0.5;
}

FSlateRect STableViewBase::GetBarRect(const FGeometry& Geometry) const
{
	if (!HasOverflow(Geometry))
	{
		return FSlateRect();
	}
	const FSlateRect Bounds = Geometry.GetLayoutBoundingRect();
	return FSlateRect(Bounds.Right - GetTableBarStyle().Room * Geometry.GetAccumulatedScale(), Bounds.Top, Bounds.Right, Bounds.Bottom);
}

// 1. Met already in this round. 2. In view in the frame before. 3. Made new, where the probe serves as row 0. Heights
// are read anew in any case: a row may have grown.
STableViewBase::FRow& STableViewBase::FindOrMakeRow(int32 Index, TArray<FRow>& Kept)
{
	const int32 Present = Kept.IndexOfByPredicate([Index](const FRow& Row) { return Row.Index == Index; });
	if (Present != INDEX_NONE)
	{
		return Kept[Present];
	}
	FRow Row;
	Row.Index = Index;
	const int32 Old = Rows.IndexOfByPredicate([Index](const FRow& Other) { return Other.Index == Index; });
	if (Old != INDEX_NONE)
	{
		Row.Row = Rows[Old].Row;
	}
	else
	{
		Row.Row = Index == 0 && Probe ? Probe : TSharedPtr<ITableRow>(MakeRow(Index));
		Row.Row->SetIndexInList(Index);
		FSlotArguments Arguments;
		Arguments[Row.Row->AsWidget()];
		Children.InsertSlot(Arguments);
	}
	Row.Height = static_cast<float>(Row.Row->AsWidget()->GetDesiredSize().Y);
	return Kept.Add_GetRef(MoveTemp(Row));
}

void STableViewBase::DropRows()
{
	Rows.Reset();
	Children.Empty();
}

// The whole round of a frame. Kept collects each row that is looked at, in view or on the way to it; what is not shown
// in the end is let go of.
void STableViewBase::UpdateRows(const FGeometry& Geometry)
{
	if (bRefresh)
	{
		bRefresh = false;
		DropRows();
	}
	const int32 Count = GetItemCount();
	PaintedCount = Count;
	const float ViewHeight = static_cast<float>(Geometry.GetLocalSize().Y);
	if (Count == 0 || ViewHeight <= 0.0f)
	{
		DropRows();
		TopIndex = 0;
		TopDistance = 0.0f;
		return;
	}
	// A wish for the bottom is kept until here, where the number of rows is certain.
	if (bToBottom)
	{
		bToBottom = false;
		WantedIndex = Count - 1;
	}
	TArray<FRow> Kept;
	TopIndex = FMath::Clamp(TopIndex, 0, Count - 1);
	if (WantedIndex >= 0 && WantedIndex < Count)
	{
		BringIntoView(WantedIndex, ViewHeight, Kept);
	}
	WantedIndex = INDEX_NONE;
	SettleTop(Count, ViewHeight, Kept);
	ShowFromTop(Count, ViewHeight, Kept);
	Probe.Reset();
}

void STableViewBase::BringIntoView(int32 Wanted, float ViewHeight, TArray<FRow>& Kept)
{
	float Top = -TopDistance;
	int32 Index = TopIndex;
	while (Index < Wanted && Top < ViewHeight)
	{
		Top += FindOrMakeRow(Index++, Kept).Height;
	}
	const float Height = FindOrMakeRow(Wanted, Kept).Height;
	const bool bAbove = Wanted < TopIndex || (Wanted == TopIndex && Top < 0.0f);
	if (bAbove)
	{
		TopIndex = Wanted;
		TopDistance = 0.0f;
	}
	else if (Index < Wanted || Top + Height > ViewHeight)
	{
		// Below: its lower edge comes to that of the view.
		TopIndex = Wanted;
		TopDistance = Height - ViewHeight;
	}
}

void STableViewBase::SettleTop(int32 Count, float ViewHeight, TArray<FRow>& Kept)
{
	const auto ClimbWhileAboveTheView = [this, &Kept]()
	{
		while (TopDistance < 0.0f && TopIndex > 0)
		{
			TopDistance += FindOrMakeRow(--TopIndex, Kept).Height;
		}
		TopDistance = FMath::Max(TopDistance, 0.0f);
	};
	// 1. The top row is the one that the view's upper edge cuts.
	ClimbWhileAboveTheView();
	for (float Height = FindOrMakeRow(TopIndex, Kept).Height; TopDistance >= Height && TopIndex + 1 < Count;
		 Height = FindOrMakeRow(TopIndex, Kept).Height)
	{
		TopDistance -= Height;
		++TopIndex;
	}
	// 2. No room is left below the last row while something is above.
	float Bottom = -TopDistance;
	for (int32 End = TopIndex; Bottom < ViewHeight && End < Count; ++End)
	{
		Bottom += FindOrMakeRow(End, Kept).Height;
	}
	if (Bottom < ViewHeight)
	{
		TopDistance -= ViewHeight - Bottom;
		ClimbWhileAboveTheView();
	}
}

void STableViewBase::ShowFromTop(int32 Count, float ViewHeight, TArray<FRow>& Kept)
{
	float Top = -TopDistance;
	TArray<FRow> InView;
	for (int32 Index = TopIndex; Index < Count && Top < ViewHeight; ++Index)
	{
		FRow Row = FindOrMakeRow(Index, Kept);
		Row.Top = Top;
		Top += Row.Height;
		InView.Add(MoveTemp(Row));
	}
	const auto RemoveUnseen = [this, &InView](const TArray<FRow>& From)
	{
		for (const FRow& Row : From)
		{
			if (!InView.ContainsByPredicate([&Row](const FRow& Other) { return Other.Row == Row.Row; }))
			{
				Children.Remove(Row.Row->AsWidget());
			}
		}
	};
	RemoveUnseen(Rows);
	RemoveUnseen(Kept);
	Rows = MoveTemp(InView);
}

// As high as all rows, or as MaxRows of them. The width is that of the rows in view: asking all would mean making all.
FVector2D STableViewBase::ComputeDesiredSize(float LayoutScaleMultiplier) const
{
	const int32 Count = GetItemCount();
	if (Count == 0)
	{
		return FVector2D(0, 0);
	}
	double Width = 0.0;
	if (Rows.IsEmpty() || bRefresh)
	{
		if (!Probe)
		{
			Probe = const_cast<STableViewBase*>(this)->MakeRow(0);
			Probe->SetIndexInList(0);
		}
		Probe->AsWidget()->SlatePrepass(LayoutScaleMultiplier);
		KnownHeight = static_cast<float>(Probe->AsWidget()->GetDesiredSize().Y);
		Width = Probe->AsWidget()->GetDesiredSize().X;
	}
	for (const FRow& Row : Rows)
	{
		Width = FMath::Max(Width, Row.Row->AsWidget()->GetDesiredSize().X);
	}
	const int32 Shown = MaxRows > 0 ? FMath::Min(Count, MaxRows) : Count;
	// The bar stands beside the rows; a list that is as wide as they are would cut their ends.
	if (Shown < Count || HasOverflow(GetCachedGeometry()))
	{
		Width += GetTableBarStyle().Room;
	}
	const float Height = Rows.IsEmpty() || bRefresh ? KnownHeight : GetAverageHeight();
	return FVector2D(Width, static_cast<double>(Height) * Shown);
}

// The rows have their places from UpdateRows, which paints call first.
void STableViewBase::OnArrangeChildren(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const
{
	const float Room = HasOverflow(AllottedGeometry) ? GetTableBarStyle().Room : 0.0f;
	const double Width = FMath::Max(AllottedGeometry.GetLocalSize().X - Room, 0.0);
	for (const FRow& Row : Rows)
	{
		const TSharedRef<SWidget> Widget = Row.Row->AsWidget();
		ArrangedChildren.AddWidget(Widget->GetVisibility(),
			FArrangedWidget(Widget, AllottedGeometry.MakeChild(FVector2D(0.0, Row.Top), FVector2D(Width, Row.Height))));
	}
}

int32 STableViewBase::OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	const_cast<STableViewBase*>(this)->UpdateRows(AllottedGeometry);
	const int32 Layer = SPanel::OnPaint(Args, AllottedGeometry, MyCullingRect, OutDrawElements, LayerId, InWidgetStyle, bParentEnabled);
	const FSlateRect Bar = GetBarRect(AllottedGeometry);
	if (!Bar.IsEmpty())
	{
		const float Scale = AllottedGeometry.GetAccumulatedScale();
		const FSlateRect ThumbRect = FScrollThumb::GetThumb(
			Bar, AllottedGeometry.GetLocalSize().Y, GetContentHeight(), GetScrollOffset(), GetTableBarStyle(), Scale);
		Thumb->Paint(Bar, ThumbRect, OutDrawElements, GetTableBarStyle(), InWidgetStyle, Scale);
	}
	if (ShouldShowFocusRing())
	{
		FHostWidgetPaint::AddFocusRing(
			OutDrawElements, AllottedGeometry.GetLayoutBoundingRect(), 4.0f, AllottedGeometry.GetAccumulatedScale(), InWidgetStyle);
	}
	return Layer;
}

FReply STableViewBase::OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	const FSlateRect Bar = GetBarRect(MyGeometry);
	if (MouseEvent.GetEffectingButton() != EKeys::LeftMouseButton || Bar.IsEmpty() ||
		!Bar.ContainsPoint(MouseEvent.GetScreenSpacePosition()))
	{
		return FReply::Unhandled();
	}
	const float Scale = MyGeometry.GetAccumulatedScale();
	const float Y = static_cast<float>(MouseEvent.GetScreenSpacePosition().Y);
	const FSlateRect ThumbRect =
		FScrollThumb::GetThumb(Bar, MyGeometry.GetLocalSize().Y, GetContentHeight(), GetScrollOffset(), GetTableBarStyle(), Scale);
	const bool bOnThumb = Y >= ThumbRect.Top && Y < ThumbRect.Bottom;
	Thumb->bDragging = true;
	Thumb->Grip = bOnThumb ? Y - ThumbRect.Top : ThumbRect.Height() * 0.5f;
	if (!bOnThumb)
	{
		SetScrollOffset(
			FScrollThumb::GetOffsetFor(Bar, Y - Thumb->Grip, MyGeometry.GetLocalSize().Y, GetContentHeight(), GetTableBarStyle(), Scale));
	}
	return FReply::Handled().CaptureMouse(AsShared());
}

FReply STableViewBase::OnMouseButtonUp(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	if (!Thumb->bDragging)
	{
		return FReply::Unhandled();
	}
	Thumb->bDragging = false;
	return FReply::Handled().ReleaseMouseCapture();
}

FReply STableViewBase::OnMouseMove(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	const FSlateRect Bar = GetBarRect(MyGeometry);
	Thumb->bHovered = !Bar.IsEmpty() && Bar.ContainsPoint(MouseEvent.GetScreenSpacePosition());
	if (!Thumb->bDragging)
	{
		return FReply::Unhandled();
	}
	const float ThumbTop = static_cast<float>(MouseEvent.GetScreenSpacePosition().Y) - Thumb->Grip;
	SetScrollOffset(FScrollThumb::GetOffsetFor(
		Bar, ThumbTop, MyGeometry.GetLocalSize().Y, GetContentHeight(), GetTableBarStyle(), MyGeometry.GetAccumulatedScale()));
	return FReply::Handled();
}

// At its end the list leaves the wheel to what holds it.
FReply STableViewBase::OnMouseWheel(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	if (!HasOverflow(MyGeometry))
	{
		return FReply::Unhandled();
	}
	const double Before = GetScrollOffset();
	TopDistance -= MouseEvent.GetWheelDelta() * TableWheelUnits;
	WantedIndex = INDEX_NONE;
	UpdateRows(MyGeometry);
	return GetScrollOffset() != Before ? FReply::Handled() : FReply::Unhandled();
}

void STableViewBase::OnMouseLeave(const FPointerEvent& MouseEvent)
{
	Thumb->bHovered = false;
}

void STableViewBase::OnMouseCaptureLost()
{
	Thumb->bDragging = false;
}
