#pragma once

#include "Widgets/Docking/SDockTab.h"
#include "Widgets/SCompoundWidget.h"

class SBox;
class SHorizontalBox;
class SScrollBox;

/**
 * A tab well above the content of the tab in front. Ctrl+Tab and Ctrl+Shift+Tab go through the tabs. In a narrow area a content whose
 * rows would be cut keeps the width that they need, and scrolls sideways. In a low one a content keeps the height at which what fills it
 * can be used, and scrolls upright; what has the keyboard is brought into view by each key.
 */
class SLATE_API SDockArea : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SDockArea) {}
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

	/** The first tab comes to the front in any case. */
	void AddTab(const TSharedRef<SDockTab>& Tab, bool bActivate);
	/** The neighbour comes to the front when it was the one in front. */
	void RemoveTab(const TSharedRef<SDockTab>& Tab);
	/** Brings a tab to the front and gives the keyboard back to what had it there last. */
	void ActivateTab(const TSharedRef<SDockTab>& Tab, ETabActivationCause Cause);
	TSharedPtr<SDockTab> GetActiveTab() const { return ActiveTab.Pin(); }
	const TArray<TSharedRef<SDockTab>>& GetTabs() const { return Tabs; }
	/** The tab so many places further, around the ends. */
	TSharedRef<SDockTab> GetNeighbour(const TSharedRef<SDockTab>& Tab, int32 Distance) const;
	/** The content of the tab in front was replaced. */
	void RefreshContent();

	virtual FReply OnPreviewKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override;
	virtual FReply OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override;
	virtual void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) override;

private:
	/** Gives the content in front that size, in boxes that scroll; zero for that of the area, in none. */
	void SetContentSize(float Width, float Height);
	/** Puts the content, and what scrolls it, into its place. */
	void PlaceContent(const TSharedRef<SWidget>& Content);
	/** The width that the content needs beyond that of the area, looked at now and then; the same as before while it is not. */
	float FindWidth(const SWidget& Content, float Room, double Now);
	/** The height that the content needs beyond that of the area; zero when that is enough. */
	float FindHeight(const SWidget& Content) const;
	/** Scrolls upright to what has the keyboard in the content. */
	void ShowFocused();

	TArray<TSharedRef<SDockTab>> Tabs;
	TWeakPtr<SDockTab> ActiveTab;
	TSharedPtr<SHorizontalBox> Well;
	TSharedPtr<SBox> ContentHolder;
	/** Around the content while it is higher than the area. */
	TSharedPtr<SScrollBox> Upright;
	TSharedPtr<SBox> UprightContent;
	/** Units; zero while the content has the width, or the height, of the area. */
	float ContentWidth = 0.0f;
	float ContentHeight = 0.0f;
	double NextWidthLook = 0.0;
	/** To be had in the next frames, whatever the time. */
	int32 WidthLooksLeft = 0;
	float LastRoom = 0.0f;
};
