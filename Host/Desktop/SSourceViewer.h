#pragma once

#include "OneReading.h"
#include "SourceFind.h"
#include "Widgets/SCompoundWidget.h"
#include "Widgets/Views/SListView.h"

class SScrollBox;
class STextBlock;

/**
 * The tab "Source": a text to be read, with the numbers of its lines, in the colours of its language; the line that was asked for is
 * framed. Files are read on a worker. The text follows its file: by what the project's file cache tells, and whenever the tab comes to
 * the front.
 */
class SSourceViewer : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SSourceViewer) {}
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs, const TSharedRef<FSourceFind>& InFind);
	virtual ~SSourceViewer() override;

	static FName GetTabName() { return FName(TEXT("SourceViewer")); }
	/** Opens the tab or brings it to the front, with that file. @param Line  From 1; 0 for none. */
	static void ShowFile(const FString& Path, int32 Line);

	/** @param Line  From 1; 0 for none. */
	void Open(const FString& InPath, int32 Line);
	/** Reads the file again if it is another one than was read. */
	void Follow();

	virtual void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) override;
	virtual FReply OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override;
	virtual FReply OnMouseWheel(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;

private:
	using FLine = FSourceFind::FLine;

	TSharedRef<SWidget> MakeHead();
	TSharedRef<SWidget> MakeLines();
	TSharedRef<ITableRow> MakeRow(FLine Line, const TSharedRef<STableViewBase>& Owner);
	/** A piece of a line with the frames of what was found in it. */
	TSharedRef<SWidget> MakePiece(
		const Velmora::Markdown::FCodePiece& Piece, int32 Begin, const TArray<Velmora::FFoundPlace>& Places, int32 Current) const;
	void AttachFind();
	void ShowHit(const FSourceFind::FHit* Hit);
	/** Reads on a worker; nothing happens when the file is as it was read. */
	void Read();
	void Take(FSourceText&& Read);
	void GoToLine(int32 Line);
	int32 GetSelectedLine() const;
	float GetNumberWidth() const;
	float GetLinesWidth() const;
	/** How far the lines are moved to the left, units. */
	float GetShift() const;
	FText GetStateText() const;
	/** Fits the path into the head. True when other words are shown now. */
	bool FitPath();

	FString Path;
	/** As far as there is room for it; the file's name in any case. */
	FString ShownPath;
	/** What it was fitted to. */
	FString FittedPath;
	float FittedWidth = 0.0f;
	TSharedPtr<STextBlock> PathLabel;
	FSourceText Text;
	/** Framed; 0 for none. */
	int32 FramedLine = 0;
	/** Where to go once the text is there. */
	bool bWantsLine = false;
	FOneReading Reading;
	int32 Listener = 0;
	/** Units of one cell of the font. */
	float CellWidth = 0.0f;
	TSharedRef<FSourceFind> Find = MakeShared<FSourceFind>();
	TSharedPtr<SListView<FLine>> List;
	TSharedPtr<SScrollBox> Sides;
};
