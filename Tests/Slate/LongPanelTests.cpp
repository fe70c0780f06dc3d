// A long panel lays out what is in view by sizes that it keeps. That it would lay out the same by looking at every child is proven by
// calling the operation that does, which is private.

#include "Host/ChildWatch.h"
#include "Layout/ArrangedWidget.h"
#include "Support/UiDriver.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/Layout/SSpacer.h"
#include "Widgets/Layout/SWrapBox.h"
#include "Widgets/SBoxPanel.h"

#include <random>

namespace
{
	using FLongPanel = FWidgetTest;

	struct FPlace
	{
		const SWidget* Widget;
		FSlateRect Rect;
		bool operator==(const FPlace& Other) const { return Widget == Other.Widget && Rect == Other.Rect; }
	};

	const FGeometry PanelGeometry = FGeometry::MakeRoot(FVector2D(300, 5000), FVector2D(10, -700), 1.25f);

	std::vector<FPlace> PlacesIn(const SWidget& Panel, const FSlateRect* Clip)
	{
		FArrangedChildren All(EVisibility::Visible);
		FArrangedChildren InView(EVisibility::Visible, Clip ? *Clip : FSlateRect());
		FArrangedChildren& Arranged = Clip ? InView : All;
		Panel.ArrangeChildren(PanelGeometry, Arranged);
		std::vector<FPlace> Places;
		for (int32 Index = 0; Index < Arranged.Num(); ++Index)
		{
			Places.push_back({ &Arranged[Index].Widget.Get(), Arranged[Index].Geometry.GetLayoutBoundingRect() });
		}
		return Places;
	}

	std::vector<FPlace> Meeting(const std::vector<FPlace>& Places, const FSlateRect& Clip)
	{
		std::vector<FPlace> Result;
		for (const FPlace& Place : Places)
		{
			const FSlateRect& Rect = Place.Rect;
			if (Rect.Left <= Clip.Right && Rect.Right >= Clip.Left && Rect.Top <= Clip.Bottom && Rect.Bottom >= Clip.Top)
			{
				Result.push_back(Place);
			}
		}
		return Result;
	}

	/** Whole units, so that sums do not depend on the order in which they are made; more than any padding takes away. */
	float AnySize(std::mt19937& Random)
	{
		return static_cast<float>(10 + Random() % 40);
	}
}

TEST_F(FLongPanel, KeptSizesAreThoseOfTheChildren)
{
	std::mt19937 Random(7);
	const TSharedRef<SVerticalBox> Panel = SNew(SVerticalBox);
	struct FRow
	{
		TSharedRef<SBox> Box;
		std::shared_ptr<float> Height = std::make_shared<float>(10.0f);
		std::shared_ptr<EVisibility> Visibility = std::make_shared<EVisibility>();
	};
	std::vector<FRow> Rows;
	const auto Insert = [&](int32 Where)
	{
		FRow Row{ SNew(SBox).HeightOverride(AnySize(Random)).WidthOverride(AnySize(Random)) };
		if (Random() % 8 == 0)
		{
			Row.Box->SetHeightOverride(TAttribute<FOptionalSize>::CreateLambda([Height = Row.Height] { return FOptionalSize(*Height); }));
		}
		if (Random() % 8 == 0)
		{
			Row.Box->SetVisibility(TAttribute<EVisibility>::CreateLambda([Visibility = Row.Visibility] { return *Visibility; }));
		}
		// Some paddings let a child reach out of its slot.
		const float Padding = Random() % 6 == 0 ? -3.0f : static_cast<float>(Random() % 4);
		Panel->InsertSlot(Where).AutoHeight().Padding(2.0f, Padding)[Row.Box];
		Rows.insert(Rows.begin() + Where, Row);
	};
	for (int32 Index = 0; Index < 150; ++Index)
	{
		Insert(Index);
	}
	for (int32 Step = 0; Step < 600; ++Step)
	{
		const int32 Where = static_cast<int32>(Random() % Rows.size());
		FRow& Row = Rows[Where];
		// What changes the panel itself makes it look at everything anew, so that is rare.
		switch (Random() % (Step % 20 == 0 ? 9 : 7))
		{
		case 0:
			Row.Box->SetHeightOverride(AnySize(Random));
			break;
		case 1:
			Row.Box->SetWidthOverride(AnySize(Random));
			break;
		case 2:
			Row.Box->SetVisibility(Random() % 2 ? EVisibility::Collapsed : EVisibility::Visible);
			break;
		case 3:
			*Row.Height = AnySize(Random);
			break;
		case 4:
			*Row.Visibility = Random() % 2 ? EVisibility::Collapsed : EVisibility::Hidden;
			break;
		case 5:
			Insert(static_cast<int32>(Rows.size()));
			break;
		case 6:
			Row.Box = SNew(SBox).HeightOverride(AnySize(Random)).WidthOverride(AnySize(Random));
			Panel->GetSlot(Where).AttachWidget(Row.Box);
			break;
		case 7:
			Insert(Where);
			break;
		case 8:
			Panel->RemoveSlot(Row.Box);
			Rows.erase(Rows.begin() + Where);
			break;
		}
		if (Random() % 3 == 0)
		{
			continue; // Several changes between two measurings.
		}
		if (Random() % 4 != 0)
		{
			Panel->SlatePrepass(1.25f);
		}
		const std::vector<FPlace> Kept = PlacesIn(*Panel, nullptr);
		const float Top = static_cast<float>(Random() % 2000) - 900.0f;
		const FSlateRect Clip(0.0f, Top, 400.0f, Top + 200.0f);
		const std::vector<FPlace> InView = PlacesIn(*Panel, &Clip);
		// The same by looking at every child, without touching what is kept.
		FArrangedChildren Arranged(EVisibility::Visible);
		Panel->ArrangeAll(PanelGeometry, Arranged);
		std::vector<FPlace> Literal;
		for (int32 Index = 0; Index < Arranged.Num(); ++Index)
		{
			Literal.push_back({ &Arranged[Index].Widget.Get(), Arranged[Index].Geometry.GetLayoutBoundingRect() });
		}
		Panel->SlatePrepass(1.25f);
		FVector2D LiteralSize(0, 0);
		for (int32 Index = 0; Index < Panel->NumSlots(); ++Index)
		{
			const SBoxPanel::FSlot& Slot = Panel->GetSlot(Index);
			if (!Slot.GetWidget()->GetVisibility().IsCollapsed())
			{
				const FVector2D Size = Slot.GetWidget()->GetDesiredSize() + Slot.GetPadding().GetDesiredSize();
				LiteralSize = FVector2D(FMath::Max(LiteralSize.X, Size.X), LiteralSize.Y + Size.Y);
			}
		}

		ASSERT_TRUE(Kept == Literal) << "step " << Step;
		ASSERT_TRUE(Panel->GetDesiredSize() == LiteralSize) << "step " << Step;
		ASSERT_TRUE(Meeting(InView, Clip) == Meeting(Literal, Clip)) << "step " << Step;
		ASSERT_LE(InView.size(), 80u);
	}
}

TEST_F(FLongPanel, ChildrenOutOfViewCostNothing)
{
	const TSharedRef<SVerticalBox> Panel = SNew(SVerticalBox);
	std::vector<TSharedRef<SBox>> Rows;
	for (int32 Index = 0; Index < 20000; ++Index)
	{
		Rows.push_back(SNew(SBox).HeightOverride(20.0f));
		Panel->AddSlot().AutoHeight()[Rows.back()];
	}
	const TSharedRef<SScrollBox> Box = SNew(SScrollBox) + SScrollBox::Slot()[Panel];
	Show(Box);
	PumpFrame();
	Box->SetScrollOffset(200000.0f);
	const FWidgetCounters Before = SWidget::GetCounters();
	PumpFrame();
	const FWidgetCounters After = SWidget::GetCounters();
	EXPECT_LE(After.Painted - Before.Painted, 100u);
	EXPECT_LE(After.Measured - Before.Measured, 10u);
	EXPECT_EQ(GetRect(*Rows[10000]).Top, 0.0f);
	EXPECT_TRUE(App().GetPathUnderPoint(FVector2D(100, 30)).Contains(StaticCastSharedRef<SWidget>(Rows[10001])));

	// One child set costs one child.
	Rows[3]->SetHeightOverride(50.0f);
	const uint64 Measured = SWidget::GetCounters().Measured;
	PumpFrame();
	EXPECT_LE(SWidget::GetCounters().Measured - Measured, 10u);
	EXPECT_EQ(Panel->GetDesiredSize().Y, 20000 * 20.0 + 30.0);
}

TEST_F(FLongPanel, LinesOfAWrapBoxInViewAreThoseOfAll)
{
	std::mt19937 Random(11);
	const TSharedRef<SWrapBox> Panel = SNew(SWrapBox).UseAllottedSize(true);
	for (int32 Index = 0; Index < 900; ++Index)
	{
		Panel->AddSlot().Padding(
			0.0f, Random() % 6 == 0 ? -3.0f : 1.0f)[SNew(SBox).WidthOverride(AnySize(Random)).HeightOverride(AnySize(Random))];
	}
	Panel->SlatePrepass(1.25f);
	const std::vector<FPlace> All = PlacesIn(*Panel, nullptr);
	for (float Top = -900.0f; Top < 4000.0f; Top += 137.0f)
	{
		const FSlateRect Clip(0.0f, Top, 400.0f, Top + 100.0f);
		const std::vector<FPlace> InView = PlacesIn(*Panel, &Clip);
		EXPECT_LT(InView.size(), 120u);
		EXPECT_TRUE(Meeting(InView, Clip) == Meeting(All, Clip)) << Top;
	}
}

TEST_F(FLongPanel, AWrapBoxThatBreaksItsLinesAnewSeesWhatElseHasChanged)
{
	std::mt19937 Random(12);
	const TSharedRef<SWrapBox> Panel = SNew(SWrapBox).UseAllottedSize(true);
	std::vector<FVector2f> Sizes;
	const auto AddTo = [](SWrapBox& Box, const FVector2f& Size) { Box.AddSlot()[SNew(SBox).WidthOverride(Size.X).HeightOverride(Size.Y)]; };
	const auto GetBox = [](SWrapBox& Wrap, int32 Index) { return StaticCastSharedRef<SBox>(Wrap.GetChildren()->GetChildAt(Index)); };
	for (int32 Round = 0; Round < 300; ++Round)
	{
		// 1. A new width asks for another layout; before it comes, something else may change.
		const double Width = 60.0 + Random() % 300;
		const auto Arrange = [Width](SWrapBox& Box)
		{
			FArrangedChildren Arranged(EVisibility::Visible);
			Box.ArrangeChildren(FGeometry::MakeRoot(FVector2D(Width, 500), FVector2D(0, 0), 1.0f), Arranged);
		};
		Arrange(*Panel);
		const std::size_t Which = Sizes.empty() ? 0 : Random() % Sizes.size();
		const FVector2f Size(10.0f + Random() % 50, 5.0f + Random() % 20);
		switch (Sizes.size() < 20 ? 0 : Random() % 4)
		{
		case 0:
			AddTo(*Panel, Size);
			Sizes.push_back(Size);
			break;
		case 1:
			GetBox(*Panel, static_cast<int32>(Which))->SetWidthOverride(Size.X);
			GetBox(*Panel, static_cast<int32>(Which))->SetHeightOverride(Size.Y);
			Sizes[Which] = Size;
			break;
		case 2:
			Panel->RemoveSlot(GetBox(*Panel, static_cast<int32>(Which)));
			Sizes.erase(Sizes.begin() + static_cast<std::ptrdiff_t>(Which));
			break;
		default:
			break;
		}
		Panel->SlatePrepass(1.0f);
		// 2. As a box that is made of the same from the start.
		const TSharedRef<SWrapBox> Fresh = SNew(SWrapBox).UseAllottedSize(true);
		for (const FVector2f& Each : Sizes)
		{
			AddTo(*Fresh, Each);
		}
		Arrange(*Fresh);
		Fresh->SlatePrepass(1.0f);
		ASSERT_EQ(Panel->GetDesiredSize(), Fresh->GetDesiredSize()) << Round;
	}
}
