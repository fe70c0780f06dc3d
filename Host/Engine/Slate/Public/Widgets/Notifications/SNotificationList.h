#pragma once

#include "Styling/SlateBrush.h"
#include "Widgets/SCompoundWidget.h"

class SBox;
class SHorizontalBox;
class STextBlock;
class SVerticalBox;
struct FNotificationInfo;

/** One toast. Gone from the screen, and from memory unless somebody keeps it, once it has faded out; stays under the pointer. */
class SLATE_API SNotificationItem : public SCompoundWidget
{
public:
	enum ECompletionState
	{
		CS_None,
		CS_Pending,
		CS_Success,
		CS_Fail,
	};

	SLATE_BEGIN_ARGS(SNotificationItem) {}
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs, const FNotificationInfo& Info);

	void SetText(const TAttribute<FText>& InText);
	FText GetText() const;
	void SetHyperlink(const FSimpleDelegate& InHyperlink, const TAttribute<FText>& InHyperlinkText = TAttribute<FText>());
	ECompletionState GetCompletionState() const { return State; }
	/** Chooses the mark and which buttons show. */
	void SetCompletionState(ECompletionState InState);
	/** Starts the time until the fade; asked for twice, the first time counts. */
	void ExpireAndFadeout();
	/** Starts the fade at once. */
	void Fadeout();
	/** It stays until it is answered by one of its buttons. */
	bool IsAsking() const { return bAsks; }
	/** False once it has faded out. */
	bool IsShown() const { return !bGone; }

	virtual void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) override;
	virtual void DescribeAccess(FHostAccess& Out) const override;

protected:
	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override;

private:
	struct FStateButton
	{
		TSharedRef<SWidget> Widget;
		ECompletionState VisibleIn;
	};
	TSharedRef<SWidget> MakeBody(const FNotificationInfo& Info);
	TSharedRef<SWidget> MakeActions(const FNotificationInfo& Info);
	void ApplyState();
	void OnHyperlinkClicked();
	EVisibility GetDismissVisibility() const;
	FReply OnDismissClicked();

	TSharedPtr<STextBlock> TextBlock;
	TSharedPtr<SBox> Mark;
	TSharedPtr<SBox> Actions;
	TSharedPtr<SBox> LinkBox;
	TArray<FStateButton> Buttons;
	FSimpleDelegate HyperlinkHandler;
	const FSlateBrush* OwnImage = nullptr;
	ECompletionState State = CS_None;
	double ShownSince = 0.0;
	/** When the fade starts; negative while nothing has asked for it. */
	double FadeAt = -1.0;
	float ExpireDuration = 1.0f;
	float FadeInDuration = 0.0f;
	float FadeOutDuration = 0.5f;
	bool bUseThrobber = true;
	bool bUseIcons = true;
	bool bAsks = false;
	bool bDismissed = false;
	bool bGone = false;
};

/** A button of a toast. */
struct SLATE_API FNotificationButtonInfo
{
	/** @param VisibleInState  The one state of the toast in which the button shows. */
	FNotificationButtonInfo(TAttribute<FText> InText, TAttribute<FText> InToolTip, FSimpleDelegate InCallback,
		SNotificationItem::ECompletionState VisibleInState = SNotificationItem::CS_Pending);

	TAttribute<FText> Text;
	TAttribute<FText> ToolTip;
	FSimpleDelegate Callback;
	SNotificationItem::ECompletionState VisibleInState;
};

/** What a toast says and how long it stays. Times are seconds. */
struct SLATE_API FNotificationInfo
{
	FNotificationInfo(const FText& InText)
		: Text(InText)
	{
	}

	TAttribute<FText> Text;
	TArray<FNotificationButtonInfo> ButtonDetails;
	/** In place of a state's mark while there is no state; the pointer is kept. */
	const FSlateBrush* Image = nullptr;
	float FadeInDuration = 0.0f;
	float FadeOutDuration = 0.5f;
	float ExpireDuration = 1.0f;
	/** A throbber while pending. */
	bool bUseThrobber = true;
	/** A mark once succeeded or failed. */
	bool bUseSuccessFailIcons = true;
	/** Bold text. */
	bool bUseLargeFont = false;
	/** Expires by itself; otherwise it stays until ExpireAndFadeout. */
	bool bFireAndForget = true;
	TOptional<float> WidthOverride;
	FSimpleDelegate Hyperlink;
	TAttribute<FText> HyperlinkText;
};

/** The stack of toasts: as wide as one, newest lowest. Those that ask stand below the others: what comes meanwhile hides no question. */
class SLATE_API SNotificationList : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SNotificationList) {}
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
	TSharedRef<SNotificationItem> AddNotification(const FNotificationInfo& Info);
	/** Those that have not faded out, oldest first. */
	const TArray<TSharedRef<SNotificationItem>>& GetItems() const { return Items; }
	void RemoveAll();

	virtual void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) override;

private:
	TSharedPtr<SVerticalBox> Stack;
	TArray<TSharedRef<SNotificationItem>> Items;
};
