#pragma once

#include "ConversationFind.h"
#include "Widgets/SCompoundWidget.h"
#include "Widgets/SLeafWidget.h"

class SEditableTextBox;

/** The strip "Find" above the tabs. It shows itself while something that can be looked through stands in front, until it is closed. */
class SFindStrip : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SFindStrip) {}
	SLATE_END_ARGS()

	/** @param InOther  What is looked through besides the conversation. */
	void Construct(const FArguments& InArgs, const TSharedRef<FConversationFind>& InFind, const TSharedRef<IFindTarget>& InOther);

	/** Something that can be looked through stands in front. */
	bool CanFind() const { return GetTarget() != nullptr; }
	/** Shows the strip and gives it the keyboard; selected text of one line is looked for at once. */
	void Open();
	/** As if the words had been typed. */
	void OpenWith(const FString& Words);
	/** Frames the words in the conversation and goes to that message in it. The keyboard stays where it is. */
	void ShowMessage(const FString& Words, const FSoughtMessage& Message);
	/** Takes the frames away and gives the keyboard back to what had it. */
	void Close();
	bool IsOpen() const { return bIsOpen; }
	void Step(int32 Direction);

	virtual FReply OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override;

private:
	TSharedRef<SWidget> MakeButton(const char* Tag, const FText& Label, const FText& ToolTip, const FSimpleDelegate& Action);
	TSharedRef<SWidget> MakeOption(const char* Tag, const FText& Label, const FText& ToolTip, bool FFindQuery::*Option);
	TSharedRef<SWidget> MakeBoxAndCount();
	/** So that all controls stand in one line where there is room for that; units. */
	float GetBoxWidth() const;
	/** What stands in front; null for nothing that can be looked through. */
	IFindTarget* GetTarget() const;
	void TakeQuery();
	FText GetCountText() const;

	TSharedPtr<FConversationFind> Find;
	TArray<TSharedRef<IFindTarget>> Targets;
	TSharedPtr<SEditableTextBox> Box;
	FFindQuery Query;
	TWeakPtr<SWidget> FocusBefore;
	bool bIsOpen = false;
};

/** Lies over the dock area and frames what was found. Takes no input. */
class SFindMarks : public SLeafWidget
{
public:
	SLATE_BEGIN_ARGS(SFindMarks) {}
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs, const TSharedRef<FConversationFind>& InFind);
	virtual void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) override;

protected:
	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override;
	virtual FVector2D ComputeDesiredSize(float LayoutScaleMultiplier) const override;

private:
	TSharedRef<FConversationFind> Find = MakeShared<FConversationFind>();
};
