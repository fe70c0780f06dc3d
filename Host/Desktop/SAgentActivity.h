#pragma once

#include "Host/AgentActivity.h"
#include "Widgets/SCompoundWidget.h"
#include "Widgets/Views/SListView.h"

class SExpandableArea;
class SMultiLineEditableTextBox;
class SScrollBox;

/**
 * The tab "Agent Activity": figures of the turn above, one line an event, and below what belongs to the chosen one: the text as it
 * streams, thinking apart, what was sent. Without a choice it follows what happens. What is shown is bounded and taken over at most
 * ten times a second, so that no stream keeps a frame waiting.
 */
class SAgentActivity : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SAgentActivity) {}
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
	virtual ~SAgentActivity() override;

	virtual void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) override;
	virtual FReply OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override;

private:
	using FEntry = TSharedPtr<const Velmora::FAgentActivityEntry>;

	TSharedRef<SWidget> MakeModelRow();
	TSharedRef<SWidget> MakeFigures();
	TSharedRef<SWidget> MakeFollowBox();
	TSharedRef<SWidget> MakeCopyButton();
	TSharedRef<SWidget> MakeClearButton();
	TSharedRef<SWidget> MakeBar();
	float GetFiguresWidth() const;
	TSharedRef<SWidget> MakeEvents();
	TSharedRef<SWidget> MakeDetails();
	TSharedRef<SWidget> MakePart(const FText& Title, const char* Tag, bool bItalic, bool bCollapsed,
		TSharedPtr<SMultiLineEditableTextBox>& OutBox, TSharedPtr<SExpandableArea>& OutArea);
	TSharedRef<ITableRow> MakeRow(FEntry Entry, const TSharedRef<STableViewBase>& Owner);
	float GetWrapWidth() const;

	void TakeOver();
	void ShowDetails();
	/** The chosen event, or the one that is of most interest now; null when there is none. */
	FEntry GetShown() const;
	/** The last request; null when there is none. */
	FEntry GetLastRequest() const;
	/** What is copied of events: all that is kept, not what is on screen. */
	static FString MakeCopy(const TArray<FEntry>& Copied);

	TOptional<float> GetContextShare() const;
	FSlateColor GetContextColor() const;
	FText GetModelText() const;
	FText GetFiguresText() const;

	TArray<FEntry> Entries;
	TSharedPtr<SListView<FEntry>> List;
	TSharedPtr<SMultiLineEditableTextBox> TextBox;
	TSharedPtr<SMultiLineEditableTextBox> ThinkingBox;
	TSharedPtr<SMultiLineEditableTextBox> SentBox;
	TSharedPtr<SScrollBox> Details;
	TSharedPtr<SExpandableArea> TextArea;
	TSharedPtr<SExpandableArea> ThinkingArea;
	TSharedPtr<SExpandableArea> SentArea;
	uint32 SeenRevision = 0;
	uint32 ShownId = 0;
	double LastTakeOver = -1.0;
	bool bFollows = true;
};
