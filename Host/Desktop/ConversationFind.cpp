#include "ConversationFind.h"

#include "FoundMarks.h"
#include "HAL/PlatformTime.h"
#include "Layout/ArrangedWidget.h"
#include "OpenChat.h"
#include "Rendering/DrawElements.h"
#include "ViewModels/ChatViewModel.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/SNullWidget.h"

namespace
{
	const FName MessageListType(TEXT("SMessageList"));
	const FName ScrollBoxType(TEXT("SScrollBox"));

	/** Of a frame's work. */
	constexpr double LookSeconds = 0.003;
	constexpr double LookAgainSeconds = 0.5;
	/** Frames that the list is given to come to rest at a hit. */
	constexpr int32 MaxRevealTries = 12;
	/** A conversation is there within some frames; one that cannot be opened never is. */
	constexpr double SoughtSeconds = 5.0;
	/** Around a hit that is brought into view, pixels at scale 1. */
	constexpr float RevealRoom = 24.0f;

	TSharedPtr<SWidget> FindBelow(SWidget& Widget, FName Type)
	{
		if (Widget.GetType() == Type)
		{
			return Widget.AsShared();
		}
		FChildren& Children = *Widget.GetChildren();
		for (int32 Index = 0; Index < Children.Num(); ++Index)
		{
			if (const TSharedPtr<SWidget> Found = FindBelow(Children.GetChildRefAt(Index), Type))
			{
				return Found;
			}
		}
		return nullptr;
	}

	/** A row that was never near what is in view holds nothing. */
	bool HasWidgets(SWidget& Row)
	{
		FChildren& Children = *Row.GetChildren();
		return Children.Num() > 0 && &Children.GetChildRefAt(0) != &SNullWidget::NullWidget.Get();
	}

	/** Rows stand for messages one by one; null while the one has not caught up with the other. */
	TSharedPtr<FChatMessage> GetMessage(const SScrollBox& Box, int32 Index)
	{
		const TSharedPtr<FChatViewModel> ViewModel = FOpenChat::GetViewModel();
		return ViewModel && ViewModel->GetMessages().Num() == Box.NumSlots() ? ViewModel->GetMessages()[Index] : nullptr;
	}

	/** How far a stretch must be moved so that it lies within another one, in its middle if it does not. */
	float GetWayInto(float Begin, float End, float OuterBegin, float OuterEnd)
	{
		return Begin >= OuterBegin && End <= OuterEnd ? 0.0f : (Begin + End) / 2.0f - (OuterBegin + OuterEnd) / 2.0f;
	}
}

TSharedPtr<SScrollBox> FConversationFind::FindList()
{
	const TSharedPtr<SWidget> Content = FOpenChat::GetContent();
	TSharedPtr<SScrollBox> Box = List.Pin();
	if (!Content || (Box && Box->GetParentWidget()))
	{
		return Content ? Box : nullptr;
	}
	if (const TSharedPtr<SWidget> Messages = FindBelow(*Content, MessageListType))
	{
		Box = StaticCastSharedPtr<SScrollBox>(FindBelow(*Messages, ScrollBoxType));
	}
	List = Box;
	ForgetRows(0);
	return Box;
}

bool FConversationFind::IsInFront() const
{
	return FOpenChat::IsInFront();
}

void FConversationFind::SetQuery(const FFindQuery& InQuery)
{
	if (Query.IsSame(InQuery))
	{
		return;
	}
	Query = InQuery;
	Sought.Reset();
	const TSharedPtr<SScrollBox> Box = FindList();
	const TArray<int32> InView = Box ? GetRowsInView(*Box) : TArray<int32>();
	AnchorRow = InView.Num() > 0 ? InView[0] : 0;
	ForgetRows(0);
	bWantsFirst = true;
}

void FConversationFind::Show(const FFindQuery& InQuery, const FSoughtMessage& Message)
{
	Query = FFindQuery();
	SetQuery(InQuery);
	Sought = Message;
	SoughtUntil = 0.0;
}

void FConversationFind::TakeSought(const SScrollBox& Box, double Now)
{
	SoughtUntil = SoughtUntil == 0.0 ? Now + SoughtSeconds : SoughtUntil;
	const TSharedPtr<FChatViewModel> ViewModel = FOpenChat::GetViewModel();
	const TSharedPtr<Velmora::FConversationMetadata> Shown = ViewModel ? ViewModel->GetCurrentConversationMetadata() : nullptr;
	const bool bIsThere =
		Shown && Shown->Id == Sought->ConversationId && Box.NumSlots() > 0 && ViewModel->GetMessages().Num() == Box.NumSlots();
	if (bIsThere)
	{
		AnchorRow = FMath::Max(SoughtMessage::Find(ViewModel->GetMessages(), *Sought), 0);
	}
	if (bIsThere || Now >= SoughtUntil)
	{
		Sought.Reset();
	}
}

void FConversationFind::ForgetRows(int32 First)
{
	for (int32 Index = First; Index < Rows.Num(); ++Index)
	{
		Count -= Rows[Index].Hits.Num();
	}
	Rows.SetNum(FMath::Min(Rows.Num(), First));
	if (Current.Row >= First)
	{
		Current = FCursor();
	}
	bIsComplete = false;
}

bool FConversationFind::Update(double Now)
{
	const TSharedPtr<SScrollBox> Box = FindList();
	if (!Box || Query.Words.IsEmpty())
	{
		ForgetRows(0);
		bIsComplete = true;
		return false;
	}
	// 1. The rows are the ones that were looked through: another conversation has other ones, a longer one has more.
	const int32 RowCount = Box->NumSlots();
	const auto IsStill = [this, &Box](int32 Index) { return Rows[Index].Widget.Pin() == Box->GetSlot(Index).GetWidget(); };
	if (Rows.Num() > RowCount || (Rows.Num() > 0 && (!IsStill(0) || !IsStill(Rows.Num() - 1))))
	{
		ForgetRows(0);
	}
	// 2. On through the rest.
	const bool bGoesOn = LookThrough(*Box);
	if (!bGoesOn && Now - LastLookAgain >= LookAgainSeconds)
	{
		LastLookAgain = Now;
		LookAgain(*Box);
	}
	// 3. Where the user stands.
	if (Sought.IsSet())
	{
		TakeSought(*Box, Now);
	}
	if (bWantsFirst && !Sought.IsSet())
	{
		ChooseFirst(*Box);
	}
	if (RevealTries > 0)
	{
		--RevealTries;
		Reveal(*Box);
	}
	return bGoesOn || RevealTries > 0 || Sought.IsSet();
}

bool FConversationFind::LookThrough(SScrollBox& Box)
{
	const double End = FPlatformTime::Seconds() + LookSeconds;
	const int32 RowCount = Box.NumSlots();
	while (Rows.Num() < RowCount && Count < MaxHits)
	{
		const int32 Index = Rows.Num();
		Rows.Add({ TWeakPtr<SWidget>(Box.GetSlot(Index).GetWidget()), LookInto(Box, Index) });
		Count += Rows.Last().Hits.Num();
		if (FPlatformTime::Seconds() >= End)
		{
			break;
		}
	}
	bIsComplete = Rows.Num() == RowCount || Count >= MaxHits;
	return !bIsComplete;
}

TArray<FConversationFind::FHit> FConversationFind::LookInto(const SScrollBox& Box, int32 Index) const
{
	TArray<FHit> Hits;
	SWidget& Row = *Box.GetSlot(Index).GetWidget();
	if (!HasWidgets(Row))
	{
		// By what the row will be made from, marks included; it is looked through again when it is seen.
		const TSharedPtr<FChatMessage> Message = GetMessage(Box, Index);
		Hits.SetNum(Message ? FindText::FindAll(Message->Content, Query, MaxHits).Num() : 0);
		return Hits;
	}
	for (const FShownText& Text : ShownTexts::Collect(Row))
	{
		for (const Velmora::FFoundPlace& Place : FindText::FindAll(Text.Text, Query, MaxHits))
		{
			Hits.Add(ShownTexts::Split(Text, Place));
		}
	}
	return Hits;
}

void FConversationFind::LookAgain(SScrollBox& Box)
{
	for (const int32 Index : GetRowsInView(Box))
	{
		if (Index < Rows.Num())
		{
			FRow& Row = Rows[Index];
			TArray<FHit> Hits = LookInto(Box, Index);
			Count += Hits.Num() - Row.Hits.Num();
			Row.Hits = MoveTemp(Hits);
			if (Current.Row == Index)
			{
				// Where there was none after all, on in the same direction.
				FCursor Next{ Index, LastDirection > 0 ? INDEX_NONE : 0 };
				const bool bHasNext = Row.Hits.Num() > 0 || Move(Next, LastDirection);
				Current = Row.Hits.Num() > 0 ? FCursor{ Index, FMath::Min(Current.Hit, Row.Hits.Num() - 1) } : bHasNext ? Next : FCursor();
			}
		}
	}
}

void FConversationFind::ChooseFirst(const SScrollBox& Box)
{
	for (int32 Index = AnchorRow; Index < Rows.Num() && bWantsFirst; ++Index)
	{
		if (Rows[Index].Hits.Num() > 0)
		{
			Current = { Index, 0 };
			bWantsFirst = false;
		}
	}
	// None below: the last one above is the nearest.
	if (bWantsFirst && bIsComplete)
	{
		FCursor Last{ Rows.Num(), 0 };
		Current = Move(Last, -1) ? Last : FCursor();
		bWantsFirst = false;
	}
	RevealTries = Current.IsSet() ? MaxRevealTries : 0;
}

bool FConversationFind::Move(FCursor& Cursor, int32 Direction) const
{
	const int32 InRow = Cursor.Hit + Direction;
	if (Rows.IsValidIndex(Cursor.Row) && InRow >= 0 && InRow < Rows[Cursor.Row].Hits.Num())
	{
		Cursor.Hit = InRow;
		return true;
	}
	for (int32 Distance = 1; Distance <= Rows.Num() + 1; ++Distance)
	{
		const int32 Around = Rows.Num() + 1;
		const int32 Index = ((Cursor.Row + Direction * Distance) % Around + Around) % Around;
		if (Rows.IsValidIndex(Index) && Rows[Index].Hits.Num() > 0)
		{
			Cursor = { Index, Direction > 0 ? 0 : Rows[Index].Hits.Num() - 1 };
			return true;
		}
	}
	return false;
}

void FConversationFind::Step(int32 Direction)
{
	LastDirection = Direction;
	FCursor Next = Current.IsSet() ? Current : FCursor{ Rows.Num(), 0 };
	if (Count > 0 && Move(Next, Direction))
	{
		Current = Next;
		bWantsFirst = false;
		RevealTries = MaxRevealTries;
	}
}

const FConversationFind::FHit* FConversationFind::GetCurrentHit() const
{
	const bool bIsThere = Rows.IsValidIndex(Current.Row) && Rows[Current.Row].Hits.IsValidIndex(Current.Hit);
	return bIsThere ? &Rows[Current.Row].Hits[Current.Hit] : nullptr;
}

int32 FConversationFind::GetCurrentNumber() const
{
	if (!GetCurrentHit())
	{
		return 0;
	}
	int32 Number = Current.Hit + 1;
	for (int32 Index = 0; Index < Current.Row; ++Index)
	{
		Number += Rows[Index].Hits.Num();
	}
	return Number;
}

TArray<int32> FConversationFind::GetRowsInView(const SScrollBox& Box)
{
	FArrangedChildren Arranged(EVisibility::Visible, Box.GetCachedGeometry().GetLayoutBoundingRect());
	Box.ArrangeChildren(Box.GetCachedGeometry(), Arranged);
	TArray<int32> InView;
	if (Arranged.Num() == 0)
	{
		return InView;
	}
	// Rows in view follow each other: the first one is looked for, the others are behind it.
	int32 Index = 0;
	while (Index < Box.NumSlots() && Box.GetSlot(Index).GetWidget() != Arranged[0].Widget)
	{
		++Index;
	}
	for (int32 Shown = 0; Shown < Arranged.Num() && Index < Box.NumSlots(); ++Shown, ++Index)
	{
		if (Box.GetSlot(Index).GetWidget() == Arranged[Shown].Widget)
		{
			InView.Add(Index);
		}
	}
	return InView;
}

void FConversationFind::Reveal(SScrollBox& Box)
{
	const FHit* const Hit = GetCurrentHit();
	if (!Hit)
	{
		RevealTries = 0;
		return;
	}
	// 1. The row, so that its parts have places.
	if (!GetRowsInView(Box).Contains(Current.Row))
	{
		Box.ScrollDescendantIntoView(Rows[Current.Row].Widget.Pin(), false, EDescendantScrollDestination::TopOrLeft);
		return;
	}
	// 2. It has its widgets now, if it had none before, and what is folded away is opened. Both have places in the next frame.
	const TSharedPtr<SWidget> Widget = Hit->Num() > 0 ? (*Hit)[0].Widget.Pin() : nullptr;
	if (!Widget)
	{
		return LookAgain(Box);
	}
	if (ShownTexts::Unfold(*Widget, Box))
	{
		return;
	}
	const TOptional<FGeometry> Place = ShownTexts::FindGeometry(*Widget, Box);
	const TArray<FSlateRect> Rects = Place ? ShownTexts::GetRects((*Hit)[0], *Place) : TArray<FSlateRect>();
	if (Rects.Num() == 0)
	{
		return;
	}
	// 3. The line in the row, sideways in code; then the list itself in a tab that scrolls upright, once that has its place.
	bool bIsAround = false;
	const float Scale = Box.GetCachedGeometry().GetAccumulatedScale();
	for (TSharedPtr<SWidget> Parent = Widget->GetParentWidget(); Parent; Parent = Parent->GetParentWidget())
	{
		if (Parent->GetType() != ScrollBoxType)
		{
			continue;
		}
		SScrollBox& Around = static_cast<SScrollBox&>(*Parent);
		const bool bIsColumn = Around.GetOrientation() == Orient_Vertical;
		if (bIsColumn && bIsAround)
		{
			Around.ScrollDescendantIntoView(Box.AsShared(), false);
			continue;
		}
		const FSlateRect View = Around.GetCachedGeometry().GetLayoutBoundingRect();
		const float Room = bIsColumn ? RevealRoom * Scale : 0.0f;
		const float Way = bIsColumn ? GetWayInto(Rects[0].Top - Room, Rects[0].Bottom + Room, View.Top, View.Bottom)
									: GetWayInto(Rects[0].Left, Rects[0].Right, View.Left, View.Right);
		if (Way != 0.0f)
		{
			Around.SetScrollOffset(FMath::Max(Around.GetScrollOffset() + Way / Scale, 0.0f));
		}
		bIsAround = bIsAround || Parent.Get() == &Box;
	}
}

void FConversationFind::Paint(FSlateWindowElementList& Out) const
{
	const TSharedPtr<SScrollBox> Box = List.Pin();
	if (!Box || Count == 0 || !FOpenChat::IsInFront())
	{
		return;
	}
	const FHit* const CurrentHit = GetCurrentHit();
	// The list may stand in a tab that scrolls, partly out of view.
	FSlateRect Clip = Box->GetCachedGeometry().GetLayoutBoundingRect();
	for (TSharedPtr<SWidget> Parent = Box->GetParentWidget(); Parent; Parent = Parent->GetParentWidget())
	{
		if (Parent->GetClipping() != EWidgetClipping::Inherit)
		{
			Clip = Clip.IntersectionWith(Parent->GetCachedGeometry().GetLayoutBoundingRect());
		}
	}
	if (Clip.IsEmpty())
	{
		return;
	}
	Out.PushClip(Clip);
	const TMap<const SWidget*, FSeenWidget> Seen = ShownTexts::CollectSeen(*Box);
	for (const int32 Index : GetRowsInView(*Box))
	{
		if (Index >= Rows.Num())
		{
			break;
		}
		for (const FHit& Hit : Rows[Index].Hits)
		{
			for (const FShownPlace& Place : Hit)
			{
				const FSeenWidget* const Widget = Seen.Find(Place.Widget.Pin().Get());
				if (!Widget)
				{
					continue;
				}
				Out.PushClip(Widget->Clip);
				for (const FSlateRect& Rect : ShownTexts::GetRects(Place, Widget->Geometry))
				{
					FoundMarks::Paint(Rect, Out.GetScale(), &Hit == CurrentHit, Out);
				}
				Out.PopClip();
			}
		}
	}
	Out.PopClip();
}
