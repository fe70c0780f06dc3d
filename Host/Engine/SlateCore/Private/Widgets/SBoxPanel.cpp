#include "Widgets/SBoxPanel.h"

#include "Host/KeptLengths.h"
#include "Layout/LayoutUtils.h"
#include "Widgets/SNullWidget.h"

#include <algorithm>
#include <array>

// Rows and columns. A short panel looks at all its children in each layout. A long one, such as the messages of a
// conversation, keeps what they want (FKeptLengths): measuring then costs what changed, and arranging what is in view.
// That works only while starts can be looked up, so a panel whose children share room, or reach over each other, is
// arranged as a short one.

SBoxPanel::FSlotArguments& SBoxPanel::FSlotArguments::SetAuto()
{
	_Size.SizeRule = FSizeParam::SizeRule_Auto;
	return *this;
}

SBoxPanel::FSlotArguments& SBoxPanel::FSlotArguments::SetFill(TAttribute<float> Weight)
{
	_Size.SizeRule = FSizeParam::SizeRule_Stretch;
	_Size.Value = MoveTemp(Weight);
	return *this;
}

SBoxPanel::FSlotArguments& SBoxPanel::FSlotArguments::SetMax(TAttribute<float> Size)
{
	_MaxSize = MoveTemp(Size);
	return *this;
}

SBoxPanel::FSlotArguments& SBoxPanel::FSlotArguments::SetMin(TAttribute<float> Size)
{
	_MinSize = MoveTemp(Size);
	return *this;
}

void SBoxPanel::FSlot::Construct(const FSlotArguments& Arguments)
{
	SizeRule = Arguments._Size.SizeRule;
	Weight = Arguments._Size.Value;
	MaxSize = Arguments._MaxSize;
	MinSize = Arguments._MinSize;
	ConstructLayout(Arguments);
	// One note is enough for all attributes of a slot.
	NoteBinding(Arguments._Padding.IsBound() || Weight.IsBound() || MaxSize.IsBound() || MinSize.IsBound());
}

void SBoxPanel::FSlot::SetAuto()
{
	SizeRule = FSizeParam::SizeRule_Auto;
	InvalidateLayout();
}

void SBoxPanel::FSlot::SetFill(TAttribute<float> InWeight)
{
	SizeRule = FSizeParam::SizeRule_Stretch;
	Weight = InWeight;
	InvalidateLayout();
}

namespace
{
	/** Panels of fewer children are as quick without keeping anything. */
	constexpr int32 LongPanel = 32;
	bool bMeasureEveryBoxChild = false;

	float ClampToSlotLimits(float Size, const SBoxPanel::FSlot& Slot)
	{
		const float Max = Slot.GetMaxSize();
		if (Max > 0.0f)
		{
			Size = FMath::Min(Size, Max);
		}
		return FMath::Max(Size, Slot.GetMinSize());
	}
}

struct SBoxPanel::FKeptSizes
{
	FKeptLengths Lengths;
	/** How far a child may reach out of its slot by negative padding. */
	float Overhang = 0.0f;
	/** Children share room, or starts do not grow, so that places cannot be looked up. */
	bool bUnsearchable = false;
	/** A slot between others came or got another widget, so that what is kept stands for others. */
	bool bStale = false;
	/** The last child that is kept, to be compared and not to be used. */
	const SWidget* LastChild = nullptr;

	/** Goes on to the children that came at the end. False when others came or went. */
	bool TakeAppended(SBoxPanel& Panel);
	/** Begins anew, and measures every child. */
	void MeasureAll(SBoxPanel& Panel, float LayoutScale);
	/** False when a bound function added or removed children meanwhile: the next measuring is asked for then. */
	bool Measure(SBoxPanel& Panel, int32 Index, float LayoutScale);
};

SBoxPanel::SBoxPanel(EOrientation InOrientation)
	: Children(this)
	, Orientation(InOrientation)
{
	SetCanTick(false);
}

SBoxPanel::~SBoxPanel() = default;

void SBoxPanel::SetMeasureEverything(bool bInMeasureEverything)
{
	bMeasureEveryBoxChild = bInMeasureEverything;
}

void SBoxPanel::PrepassChildren(float LayoutScale, bool bOwnChange)
{
	const int32 Count = Children.Num();
	if (Count < LongPanel || bMeasureEveryBoxChild)
	{
		Kept.Reset();
		SPanel::PrepassChildren(LayoutScale, bOwnChange);
		return;
	}
	// What the panel itself changed may concern every child; that is rare, and all are measured anew.
	if (!Kept || bOwnChange || Kept->bStale || !Kept->TakeAppended(*this))
	{
		Kept = MakeUnique<FKeptSizes>();
		Kept->MeasureAll(*this, LayoutScale);
		return;
	}
	const auto Measure = [this, LayoutScale](int32 Index) { return Kept->Measure(*this, Index, LayoutScale); };
	const auto MeasureEach = [&Measure](const int32* Each, const int32* End)
	{
		while (Each != End && Measure(*Each))
		{
			++Each;
		}
		return Each == End;
	};
	// 1. The children that reported a change.
	const TArray<int32> Changed = Kept->Lengths.Watch.TakeChanged();
	if (!MeasureEach(Changed.GetData(), Changed.GetData() + Changed.Num()))
	{
		return;
	}
	// 2. Those in view whose size hangs on a bound function: they are right in every frame.
	const TArray<int32>& Bound = Kept->Lengths.Watch.GetBound();
	const int32* const BoundEnd = Bound.GetData() + Bound.Num();
	const int32* const First = std::lower_bound(Bound.GetData(), BoundEnd, Kept->Lengths.GetShownBegin());
	if (!MeasureEach(First, std::lower_bound(First, BoundEnd, Kept->Lengths.GetShownEnd())))
	{
		return;
	}
	// 3. Of the bound ones out of view, as many as a frame can bear.
	Kept->Lengths.MeasureInTurn(Kept->bUnsearchable, Measure);
}

bool SBoxPanel::FKeptSizes::TakeAppended(SBoxPanel& Panel)
{
	const int32 Known = Lengths.Num();
	const int32 Count = Panel.Children.Num();
	if (Count == Known)
	{
		return true;
	}
	if (Count < Known || &Panel.Children.GetChildRefAt(Known - 1) != LastChild)
	{
		return false;
	}
	for (int32 Index = Known; Index < Count; ++Index)
	{
		Panel.SetChildNumber(Panel.Children.GetChildRefAt(Index), Index);
	}
	LastChild = &Panel.Children.GetChildRefAt(Count - 1);
	Lengths.SetCount(Count);
	Lengths.Watch.Grow(Count);
	return true;
}

void SBoxPanel::FKeptSizes::MeasureAll(SBoxPanel& Panel, float LayoutScale)
{
	const int32 Count = Panel.Children.Num();
	Panel.WatchChildren();
	Lengths.SetCount(Count);
	Lengths.Watch.Reset(Count);
	LastChild = &Panel.Children.GetChildRefAt(Count - 1);
	// Numbers first: a child may report a change while its elder siblings are measured.
	for (int32 Index = 0; Index < Count; ++Index)
	{
		Panel.SetChildNumber(Panel.Children.GetChildRefAt(Index), Index);
	}
	for (int32 Index = 0; Index < Count && Measure(Panel, Index, LayoutScale); ++Index)
	{
	}
}

bool SBoxPanel::FKeptSizes::Measure(SBoxPanel& Panel, int32 Index, float LayoutScale)
{
	const int32 Count = Panel.Children.Num();
	SWidget& Child = Panel.Children.GetChildRefAt(Index);
	if (!Child.GetVisibility().IsCollapsed())
	{
		Child.SlatePrepass(LayoutScale);
	}
	if (Panel.Children.Num() != Count)
	{
		return false;
	}
	Lengths.Watch.SetBound(Index, Child.HasSizeBindings() || Panel.Children[Index].HasSizeBinding());
	Panel.KeepSize(Index);
	return true;
}

void SBoxPanel::OnChildChanged(SWidget& Child)
{
	if (!Kept || Kept->bStale)
	{
		return;
	}
	// 1. One that is kept. The empty widget may stand in several slots, so that its number says nothing.
	const int32 Known = Kept->Lengths.Num();
	const int32 Index = GetChildNumber(Child);
	const bool bIsEmpty = &Child == &SNullWidget::GetNullWidget().Get();
	if (!bIsEmpty && Index >= 0 && Index < FMath::Min(Known, Children.Num()) && &Children.GetChildRefAt(Index) == &Child)
	{
		Kept->Lengths.Watch.NoteChanged(Index);
		return;
	}
	// 2. One that came at the end will be measured in any case. Anything else means that slots are no longer what they were.
	bool bIsNew = false;
	for (int32 New = Children.Num() - 1; New >= Known && !bIsNew; --New)
	{
		bIsNew = &Children.GetChildRefAt(New) == &Child;
	}
	Kept->bStale = Kept->bStale || !bIsNew;
}

void SBoxPanel::KeepSize(int32 Index) const
{
	const bool bVertical = Orientation == Orient_Vertical;
	const FSlot& Slot = Children[Index];
	const SWidget& Child = Slot.GetWidgetRef();
	double Length = 0.0;
	double Across = 0.0;
	if (!Child.GetVisibility().IsCollapsed())
	{
		const FVector2D& Desired = Child.GetDesiredSize();
		const FMargin Margin = Slot.GetPadding();
		const FVector2D Padding = Margin.GetDesiredSize();
		Length = ClampToSlotLimits(static_cast<float>(bVertical ? Desired.Y : Desired.X), Slot) + (bVertical ? Padding.Y : Padding.X);
		Across = bVertical ? Desired.X + Padding.X : Desired.Y + Padding.Y;
		const float Before = bVertical ? Margin.Top : Margin.Left;
		const float After = bVertical ? Margin.Bottom : Margin.Right;
		Kept->Overhang = FMath::Max(Kept->Overhang, FMath::Max(-Before, -After));
		Kept->bUnsearchable = Kept->bUnsearchable || !Slot.IsAuto() || !(Length >= 0.0);
	}
	Kept->Lengths.Keep(Index, Length, Across);
}

bool SBoxPanel::HasKeptSizes() const
{
	return Kept && !Kept->bStale && Kept->Lengths.Num() == Children.Num();
}

FVector2D SBoxPanel::ComputeDesiredSize(float LayoutScaleMultiplier) const
{
	const bool bVertical = Orientation == Orient_Vertical;
	if (HasKeptSizes())
	{
		FKeptLengths& Lengths = Kept->Lengths;
		Lengths.Update();
		return bVertical ? FVector2D(Lengths.GetMaxAcross(), Lengths.GetTotal()) : FVector2D(Lengths.GetTotal(), Lengths.GetMaxAcross());
	}
	double Along = 0.0;
	double Across = 0.0;
	for (int32 Index = 0; Index < Children.Num(); ++Index)
	{
		const FSlot& Slot = Children[Index];
		const SWidget& Child = Slot.GetWidgetRef();
		if (Child.GetVisibility().IsCollapsed())
		{
			continue;
		}
		const FVector2D& Desired = Child.GetDesiredSize();
		const FVector2D Padding = Slot.GetPadding().GetDesiredSize();
		const float ChildAlong = ClampToSlotLimits(static_cast<float>(bVertical ? Desired.Y : Desired.X), Slot);
		Along += ChildAlong + (bVertical ? Padding.Y : Padding.X);
		Across = FMath::Max(Across, bVertical ? Desired.X + Padding.X : Desired.Y + Padding.Y);
	}
	return bVertical ? FVector2D(Across, Along) : FVector2D(Along, Across);
}

void SBoxPanel::OnArrangeChildren(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const
{
	if (Kept && NeedsPrepass())
	{
		// Something was set since the prepass; it is measured where it is met.
		GetDesiredSize();
	}
	if (HasKeptSizes() && !Kept->bUnsearchable)
	{
		ArrangeKept(AllottedGeometry, ArrangedChildren);
	}
	else
	{
		ArrangeAll(AllottedGeometry, ArrangedChildren);
	}
}

void SBoxPanel::ArrangeKept(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const
{
	// 1. What is bound may have changed within this frame.
	FKeptLengths& Lengths = Kept->Lengths;
	for (const int32 Index : Lengths.Watch.GetBound())
	{
		KeepSize(Index);
	}
	Lengths.Update();

	// 2. The children that reach into the clip, found by search.
	const bool bVertical = Orientation == Orient_Vertical;
	const int32 Count = Children.Num();
	int32 First = 0;
	double End = Lengths.GetTotal();
	if (const FSlateRect* Clip = ArrangedChildren.GetClip())
	{
		const double Scale = AllottedGeometry.GetAccumulatedScale();
		const double Corner = bVertical ? AllottedGeometry.GetAbsolutePosition().Y : AllottedGeometry.GetAbsolutePosition().X;
		// A unit more than needed: what lies just outside costs little, what is missing would be seen.
		const double Margin = Kept->Overhang + 1.0;
		const double ViewBegin = ((bVertical ? Clip->Top : Clip->Left) - Corner) / Scale - Margin;
		const double ViewEnd = ((bVertical ? Clip->Bottom : Clip->Right) - Corner) / Scale + Margin;
		First = Lengths.FindEndingFrom(ViewBegin);
		End = FMath::Min(End, ViewEnd);
	}

	// 3. Their places.
	int32 Index = First;
	for (; Index < Count && Lengths.GetStart(Index) <= End; ++Index)
	{
		const FSlot& Slot = Children[Index];
		if (Slot.GetWidgetRef().GetVisibility().IsCollapsed())
		{
			continue;
		}
		const FMargin Padding = Slot.GetPadding();
		const float Pads = bVertical ? Padding.Top + Padding.Bottom : Padding.Left + Padding.Right;
		ArrangeChild(
			AllottedGeometry, Index, Lengths.GetStart(Index), static_cast<float>(Lengths.GetLength(Index)) - Pads, ArrangedChildren);
	}
	Lengths.SetShown(First, Index);
}

void SBoxPanel::ArrangeChild(
	const FGeometry& AllottedGeometry, int32 Index, double Start, float Along, FArrangedChildren& ArrangedChildren) const
{
	const bool bVertical = Orientation == Orient_Vertical;
	const FVector2D& Size = AllottedGeometry.GetLocalSize();
	const FSlot& Slot = Children[Index];
	const TSharedRef<SWidget>& Widget = Slot.GetWidget();
	const FMargin Padding = Slot.GetPadding();
	const FVector2D& Desired = Widget->GetDesiredSize();
	const float SlotAlong = Along + (bVertical ? Padding.Top + Padding.Bottom : Padding.Left + Padding.Right);
	const float SlotX = bVertical ? static_cast<float>(Size.X) : SlotAlong;
	const float SlotY = bVertical ? SlotAlong : static_cast<float>(Size.Y);
	const FAlignedAxis X = AlignChild(Slot.GetHorizontalAlignment(), SlotX, static_cast<float>(Desired.X), Padding);
	const FAlignedAxis Y = AlignChild(Slot.GetVerticalAlignment(), SlotY, static_cast<float>(Desired.Y), Padding);
	const FVector2D Position = bVertical ? FVector2D(X.Offset, Start + Y.Offset) : FVector2D(Start + X.Offset, Y.Offset);
	ArrangedChildren.AddWidget(
		Widget->GetVisibility(), FArrangedWidget(Widget, AllottedGeometry.MakeChild(Position, FVector2D(X.Size, Y.Size))));
}

namespace
{
	/** A child on the way to its place. */
	struct FLaidChild
	{
		int32 Index;
		float Along;
		float Weight;
		/** Still takes part in sharing what is left. */
		bool bOpen;
	};

	/** The children of one layout. Most panels are short and need no memory of their own for it. */
	class FLaidChildren
	{
	public:
		explicit FLaidChildren(int32 Most)
		{
			if (Most > LongPanel)
			{
				Many.SetNumUninitialized(Most);
				Laid = Many.GetData();
			}
		}
		FLaidChildren(const FLaidChildren&) = delete;
		FLaidChildren& operator=(const FLaidChildren&) = delete;
		void Add(const FLaidChild& Child) { Laid[Count++] = Child; }
		FLaidChild* begin() { return Laid; }
		FLaidChild* end() { return Laid + Count; }

	private:
		std::array<FLaidChild, LongPanel> Few;
		TArray<FLaidChild> Many;
		FLaidChild* Laid = Few.data();
		int32 Count = 0;
	};

	/**
	 * Shares Room by weight. A slot that meets its limit is closed at it, and the rest is shared anew among the others, so
	 * that each round closes a slot at least or is the last.
	 */
	void ShareRoom(FLaidChildren& Laid, const TPanelChildren<SBoxPanel::FSlot>& Slots, float Room, float WeightSum)
	{
		for (bool bSettled = false; !bSettled;)
		{
			bSettled = true;
			float ClosedSize = 0.0f;
			float ClosedWeight = 0.0f;
			for (FLaidChild& Child : Laid)
			{
				if (!Child.bOpen)
				{
					continue;
				}
				const float Share = WeightSum > 0.0f ? Room * Child.Weight / WeightSum : 0.0f;
				Child.Along = ClampToSlotLimits(Share, Slots[Child.Index]);
				if (Child.Along != Share)
				{
					Child.bOpen = false;
					ClosedSize += Child.Along;
					ClosedWeight += Child.Weight;
					bSettled = false;
				}
			}
			Room = FMath::Max(Room - ClosedSize, 0.0f);
			WeightSum -= ClosedWeight;
		}
	}
}

void SBoxPanel::ArrangeAll(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const
{
	const bool bVertical = Orientation == Orient_Vertical;
	const FVector2D& Size = AllottedGeometry.GetLocalSize();
	const auto GetPads = [bVertical](const FMargin& Padding)
	{ return bVertical ? Padding.Top + Padding.Bottom : Padding.Left + Padding.Right; };

	// 1. What the auto slots and all paddings take for certain.
	FLaidChildren Laid(Children.Num());
	float Fixed = 0.0f;
	float WeightSum = 0.0f;
	for (int32 Index = 0; Index < Children.Num(); ++Index)
	{
		const FSlot& Slot = Children[Index];
		const SWidget& Child = Slot.GetWidgetRef();
		if (Child.GetVisibility().IsCollapsed())
		{
			continue;
		}
		Fixed += GetPads(Slot.GetPadding());
		if (Slot.IsAuto())
		{
			const FVector2D& Desired = Child.GetDesiredSize();
			const float Along = ClampToSlotLimits(static_cast<float>(bVertical ? Desired.Y : Desired.X), Slot);
			Fixed += Along;
			Laid.Add({ Index, Along, 0.0f, false });
		}
		else
		{
			const float Weight = FMath::Max(Slot.GetWeight(), 0.0f);
			WeightSum += Weight;
			Laid.Add({ Index, 0.0f, Weight, true });
		}
	}

	// 2. The rest goes to the others.
	ShareRoom(Laid, Children, FMath::Max(static_cast<float>(bVertical ? Size.Y : Size.X) - Fixed, 0.0f), WeightSum);

	// 3. One after the other.
	double Start = 0.0;
	for (const FLaidChild& Child : Laid)
	{
		ArrangeChild(AllottedGeometry, Child.Index, Start, Child.Along, ArrangedChildren);
		Start += Child.Along + GetPads(Children[Child.Index].GetPadding());
	}
}

SHorizontalBox::SHorizontalBox()
	: SBoxPanel(Orient_Horizontal)
{
}

void SHorizontalBox::Construct(const FArguments& InArgs)
{
	Children.AddSlots(InArgs._Slots);
}

SVerticalBox::SVerticalBox()
	: SBoxPanel(Orient_Vertical)
{
}

void SVerticalBox::Construct(const FArguments& InArgs)
{
	Children.AddSlots(InArgs._Slots);
}
