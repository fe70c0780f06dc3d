#pragma once

#include "OutputLog.h"
#include "Widgets/SCompoundWidget.h"
#include "Widgets/Views/SListView.h"

class SEditableTextBox;

/**
 * The log window: lines in the colours of their verbosity, a filter, and the line of the console below. Follows the end
 * while the end is in view. A filter goes through so many lines a frame that no frame waits for it.
 */
class SOutputLog : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SOutputLog) {}
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs, const TSharedRef<FOutputLog>& InLog);

	virtual void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) override;
	virtual FReply OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override;

private:
	using FLine = TSharedPtr<const FOutputLogLine>;

	TSharedRef<SWidget> MakeToolBar();
	TSharedRef<SWidget> MakeConsole();
	TSharedRef<ITableRow> MakeRow(FLine Line, const TSharedRef<STableViewBase>& Owner);
	float GetWrapWidth() const;
	const TArray<FLine>& GetShown() const { return Filter.IsEmpty() ? Log->GetLines() : Matching; }
	void OnFilterChanged(const FText& Text);
	/** Takes the next lines into those that match. */
	void GoOnFiltering();
	void CopyAll();
	void Clear();
	void OnConsoleCommitted(const FText& Text, ETextCommit::Type Type);
	FReply OnConsoleKey(const FGeometry& Geometry, const FKeyEvent& KeyEvent);
	/** The names that begin with what stands in the console: one is written out, several are listed. */
	void CompleteConsole();
	void RecallCommand(int32 Step);
	void SetConsoleText(const FString& Text);

	TSharedRef<FOutputLog> Log = MakeShared<FOutputLog>();
	TSharedPtr<SListView<FLine>> List;
	TSharedPtr<SEditableTextBox> Console;
	FString Filter;
	TArray<FLine> Matching;
	/** The line that the filter looks at next. */
	int64 NextNumber = 0;
	/** The first line of the log when the list was last told of a change. */
	int64 SeenFirstNumber = 0;
	int32 SeenCount = 0;
	TArray<FString> Commands;
	int32 RecalledCommand = 0;
};
