#include "Host/SBesideBar.h"

#include "Widgets/Layout/SScrollBar.h"
#include "Widgets/Layout/SScrollBox.h"

void SBesideBar::Construct(const FArguments& InArgs, const TSharedRef<SScrollBox>& InBox)
{
	Box = InBox;
	const auto OnScrolled = [this](float Fraction)
	{
		if (const TSharedPtr<SScrollBox> Scrolled = Box.Pin())
		{
			Scrolled->SetScrollOffset(FMath::Min(Fraction * GetLength(*Scrolled), Scrolled->GetScrollOffsetOfEnd()));
		}
	};
	ChildSlot[SAssignNew(Bar, SScrollBar).OnUserScrolled_Lambda(OnScrolled)];
}

float SBesideBar::GetLength(const SScrollBox& Scrolled) const
{
	return Scrolled.GetScrollOffsetOfEnd() + static_cast<float>(Scrolled.GetCachedGeometry().GetLocalSize().Y);
}

void SBesideBar::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	SCompoundWidget::Tick(AllottedGeometry, InCurrentTime, InDeltaTime);
	const TSharedPtr<SScrollBox> Scrolled = Box.Pin();
	const float Length = Scrolled ? GetLength(*Scrolled) : 0.0f;
	if (Length > 0.0f)
	{
		const float View = static_cast<float>(Scrolled->GetCachedGeometry().GetLocalSize().Y);
		Bar->SetState(Scrolled->GetScrollOffset() / Length, View / Length);
	}
}
