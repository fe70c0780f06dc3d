#include "ChipScroll.h"

#include "Input/Events.h"
#include "OpenChat.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/SNullWidget.h"

namespace
{
	/** Units a notch: about half a chip. */
	constexpr float WheelNotch = 64.0f;

	/** What clips the chips: the border in the border that has the tag. Null when it is built otherwise. */
	TSharedPtr<SBorder> FindClip(const SWidget& Area)
	{
		static const FName BorderType(TEXT("SBorder"));
		if (Area.GetType() != BorderType)
		{
			return nullptr;
		}
		const TSharedRef<SWidget> Inner = static_cast<const SBorder&>(Area).GetContent();
		return Inner->GetType() == BorderType ? StaticCastSharedRef<SBorder>(Inner).ToSharedPtr() : nullptr;
	}

	/** Keeps its look: no bar, and the same row in it. */
	TSharedRef<SScrollBox> PutIntoScrollBox(SBorder& Clip)
	{
		static const FName ScrollBoxType(TEXT("SScrollBox"));
		const TSharedRef<SWidget> Content = Clip.GetContent();
		if (Content->GetType() == ScrollBoxType)
		{
			return StaticCastSharedRef<SScrollBox>(Content);
		}
		Clip.SetContent(SNullWidget::NullWidget);
		// clang-format off
		const TSharedRef<SScrollBox> Box = SNew(SScrollBox)
			.Orientation(Orient_Horizontal)
			.ScrollBarVisibility(EVisibility::Collapsed)
			+ SScrollBox::Slot()
			[
				Content
			];
		// clang-format on
		Clip.SetContent(Box);
		return Box;
	}
}

bool FChipScroll::HandleWheel(const FPointerEvent& Event)
{
	const TSharedPtr<SWidget> Area = FOpenChat::FindByTag(FName("ContextChips"));
	if (!Area || !Area->GetCachedGeometry().IsUnderLocation(Event.GetScreenSpacePosition()))
	{
		return false;
	}
	const TSharedPtr<SBorder> Clip = FindClip(*Area);
	if (!Clip || Clip->GetDesiredSize().X <= Clip->GetCachedGeometry().GetLocalSize().X)
	{
		return false;
	}
	const FVector2D& Wheel = Event.GetWheelDelta2D();
	const float Notches = static_cast<float>(Wheel.X != 0.0 ? Wheel.X : -Wheel.Y);
	const TSharedRef<SScrollBox> Box = PutIntoScrollBox(*Clip);
	const float Room = static_cast<float>(Clip->GetDesiredSize().X - Clip->GetCachedGeometry().GetLocalSize().X);
	Box->SetScrollOffset(FMath::Clamp(Box->GetScrollOffset() + Notches * WheelNotch, 0.0f, Room));
	return true;
}
