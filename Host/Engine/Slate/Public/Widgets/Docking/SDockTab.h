#pragma once

#include "Framework/Docking/TabManager.h"
#include "Widgets/Layout/SBorder.h"

enum ETabRole
{
	MajorTab,
	PanelTab,
	NomadTab,
	DocumentTab,
};

enum class ETabActivationCause : uint8
{
	UserClickedOnTab,
	SetDirectly,
};

DECLARE_DELEGATE_OneParam(FOnTabClosedCallback, TSharedRef<SDockTab>)
	DECLARE_DELEGATE_TwoParams(FOnTabActivatedCallback, TSharedRef<SDockTab>, ETabActivationCause)
		DECLARE_DELEGATE_RetVal(bool, FCanCloseTab)

	/**
	 * A tab: this widget is what stands in the tab well; the content that it brings is shown by the dock area while the tab
	 * is in front. Closing takes the content away, also from inside a handler of that content: it dies with its last user.
	 */
	class SLATE_API SDockTab : public SBorder
{
public:
	SLATE_BEGIN_ARGS(SDockTab) {}
	SLATE_DEFAULT_SLOT(FArguments, Content)
	SLATE_ARGUMENT_DEFAULT(ETabRole, TabRole) = ETabRole::PanelTab;
	/** The spawner's display name unless given. */
	SLATE_ATTRIBUTE(FText, Label)
	SLATE_EVENT(FOnTabClosedCallback, OnTabClosed)
	SLATE_EVENT(FOnTabActivatedCallback, OnTabActivated)
	SLATE_EVENT(FCanCloseTab, OnCanCloseTab)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

	ETabRole GetTabRole() const { return TabRole; }
	const FTabId& GetLayoutIdentifier() const { return TabId; }
	FText GetTabLabel() const { return Label.Get(); }
	void SetLabel(const TAttribute<FText>& InLabel);
	const FSlateBrush* GetTabIcon() const { return Icon.Get(); }
	const TSharedRef<SWidget>& GetContent() const { return TabContent; }
	void SetContent(const TSharedRef<SWidget>& InContent);
	void SetOnTabClosed(const FOnTabClosedCallback& InHandler) { TabClosedHandler = InHandler; }
	void SetCanCloseTab(const FCanCloseTab& InHandler) { CanCloseHandler = InHandler; }

	/** Closes unless OnCanCloseTab objects; false then. */
	bool RequestCloseTab();
	/** Closes without asking. */
	void RemoveTabFromParent();
	void ActivateInParent(ETabActivationCause ActivationCause);
	bool IsForeground() const;

	// Host only.
	void SetUpBySpawner(const FTabId& InTabId, const FTabSpawnerEntry& Spawner);
	void SetArea(const TWeakPtr<SDockArea>& InArea) { Area = InArea; }
	/** The area calls this once the tab is in front. */
	void NotifyActivated(ETabActivationCause Cause);
	/** What had the keyboard in the content when the tab went to the back. */
	TWeakPtr<SWidget> LastFocused;

	virtual bool SupportsKeyboardFocus() const override { return true; }
	/** The arrows reach the other tabs. */
	virtual bool IsTabStop() const override { return IsForeground(); }
	virtual FReply OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override;
	virtual FReply OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual void DescribeAccess(FHostAccess& Out) const override;
	virtual FReply DoAccessAction() override;

protected:
	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override;

private:
	FSlateColor GetIconColor() const;
	EVisibility GetIconVisibility() const;
	TSharedRef<SWidget> MakeCloseButton();
	FReply OnCloseClicked();

	TSharedRef<SWidget> TabContent = SNullWidget::NullWidget;
	TAttribute<FText> Label;
	TAttribute<const FSlateBrush*> Icon;
	FTabId TabId;
	ETabRole TabRole = ETabRole::PanelTab;
	FOnTabClosedCallback TabClosedHandler;
	FOnTabActivatedCallback TabActivatedHandler;
	FCanCloseTab CanCloseHandler;
	TWeakPtr<SDockArea> Area;
	TSharedPtr<SWidget> CloseButton;
	bool bClosed = false;
};
