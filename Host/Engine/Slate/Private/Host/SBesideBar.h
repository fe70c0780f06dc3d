#pragma once

#include "Widgets/SCompoundWidget.h"

class SScrollBar;
class SScrollBox;

/** The bar of an upright scroll box that stands elsewhere, so that it stays in view while the box itself is moved sideways. Game thread. */
class SBesideBar : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SBesideBar) {}
	SLATE_END_ARGS()

	/** @param InBox  Shows no bar of its own. */
	void Construct(const FArguments& InArgs, const TSharedRef<SScrollBox>& InBox);
	virtual void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) override;

private:
	/** Of what the box shows all of in the course of time, units. */
	float GetLength(const SScrollBox& Scrolled) const;

	TWeakPtr<SScrollBox> Box;
	TSharedPtr<SScrollBar> Bar;
};
