#include "SSourceViewer.h"

#include "Async/Async.h"
#include "Brushes/SlateRoundedBoxBrush.h"
#include "FoundMarks.h"
#include "Framework/Application/SlateApplication.h"
#include "Framework/Docking/TabManager.h"
#include "HAL/PlatformApplicationMisc.h"
#include "Host/HostSleep.h"
#include "Host/ProjectFileChanges.h"
#include "Host/TextShaper.h"
#include "PathText.h"
#include "Style/VelmoraUIStyles.h"
#include "Styling/AppStyle.h"
#include "ToolTab.h"
#include "Widgets/Docking/SDockTab.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SOverlay.h"
#include "Widgets/Text/STextBlock.h"

#define LOCTEXT_NAMESPACE "SourceViewer"

namespace
{
	/** Between the numbers and the text, and behind the widest line. */
	constexpr float NumberGap = 16.0f;
	constexpr float TextEnd = 40.0f;
	constexpr int32 MinNumberCells = 4;

	/** Around the line that was asked for. */
	const FSlateBrush* GetFrameBrush()
	{
		static const FSlateRoundedBoxBrush Brush(
			FLinearColor(FColor::FromHex(TEXT("7CB9FF1F"))), 3.0f, FLinearColor(FColor::FromHex(TEXT("7CB9FFB0"))), 1.0f);
		return &Brush;
	}

	FSlateColor GetSubdued()
	{
		return FSlateColor(FAppStyle::GetColor("Colors.ForegroundSubdued"));
	}
}

void SSourceViewer::ShowFile(const FString& Path, int32 Line)
{
	const TSharedPtr<SDockTab> Tab = FGlobalTabmanager::Get()->TryInvokeTab(FTabId(GetTabName()));
	// One that is about to close has no content any more.
	if (Tab && Tab->GetContent()->GetType() == FName(TEXT("SSourceViewer")))
	{
		StaticCastSharedRef<SSourceViewer>(Tab->GetContent())->Open(Path, Line);
	}
}

void SSourceViewer::Construct(const FArguments& InArgs, const TSharedRef<FSourceFind>& InFind)
{
	Find = InFind;
	constexpr int32 Sample = 10;
	CellWidth =
		ITextShaper::Get().MakeParagraph(FString::ChrN(Sample, TEXT('0')), ToolTab::GetMonoFont(), 1.0f)->GetUnwrappedWidth() / Sample;
	ChildSlot[ToolTab::MakeFrame(MakeHead(), MakeLines())];
	AttachFind();
	// What has changed is found out on a worker: the cache's thread only says that something has.
	Listener = Velmora::FProjectFileListeners::Add(
		[Weak = TWeakPtr<SSourceViewer>(SharedThis(this))](const Velmora::FProjectFileChanges&)
		{
			AsyncTask(ENamedThreads::GameThread,
				[Weak]
				{
					if (const TSharedPtr<SSourceViewer> Self = Weak.Pin())
					{
						Self->Follow();
					}
				});
		});
}

SSourceViewer::~SSourceViewer()
{
	Velmora::FProjectFileListeners::Remove(Listener);
	Find->Detach(&Text.Lines);
}

void SSourceViewer::AttachFind()
{
	FSourceFind::FViewer Viewer;
	const TWeakPtr<SSourceViewer> Weak = SharedThis(this);
	Viewer.IsInFront = []
	{
		const TSharedPtr<SDockTab> Tab = FGlobalTabmanager::Get()->FindExistingLiveTab(FTabId(GetTabName()));
		return Tab && Tab->IsForeground();
	};
	Viewer.GetLine = [Weak]
	{
		const TSharedPtr<SSourceViewer> Self = Weak.Pin();
		return Self ? FMath::Max(Self->GetSelectedLine() - 1, 0) : 0;
	};
	Viewer.Show = [Weak](const FSourceFind::FHit* Hit)
	{
		if (const TSharedPtr<SSourceViewer> Self = Weak.Pin())
		{
			Self->ShowHit(Hit);
		}
	};
	Find->Attach(Viewer);
	Find->SetLines(&Text.Lines);
}

TSharedRef<SWidget> SSourceViewer::MakeHead()
{
	// clang-format off
	SAssignNew(PathLabel, STextBlock)
		.Tag("SourcePath")
		.Text_Lambda([this]() { return FText::FromString(ShownPath); })
		.ToolTipText_Lambda([this]() { return FText::FromString(Path); })
		.TextStyle(FAppStyle::Get(), TEXT("NormalText.Important"))
		.OverflowPolicy(ETextOverflowPolicy::Ellipsis);
	const TSharedRef<SWidget> State = SNew(STextBlock)
		.Tag("SourceState")
		.Text(this, &SSourceViewer::GetStateText)
		.TextStyle(FAppStyle::Get(), TEXT("SmallText"))
		.ColorAndOpacity(GetSubdued());
	// clang-format on
	return ToolTab::MakeBar({ PathLabel.ToSharedRef(), State });
}

TSharedRef<SWidget> SSourceViewer::MakeLines()
{
	const auto GetProblemVisibility = [this]() { return Text.Problem.IsEmpty() ? EVisibility::Collapsed : EVisibility::HitTestInvisible; };
	// clang-format off
	return SNew(SOverlay)
		+ SOverlay::Slot()
		[
			SNew(SVerticalBox)
			+ SVerticalBox::Slot()
			.FillHeight(1.0f)
			[
				ToolTab::MakeListFrame(
					SAssignNew(List, SListView<FLine>)
					.Tag("SourceLines")
					.ListItemsSource(&Text.Lines)
					.OnGenerateRow(this, &SSourceViewer::MakeRow))
			]
			+ SVerticalBox::Slot()
			.AutoHeight()
			[
				// As wide as the lines, and nothing but its bar to be seen: the lines follow it, their upright bar does not.
				SAssignNew(Sides, SScrollBox)
				.Orientation(Orient_Horizontal)
				+ SScrollBox::Slot()
				[
					SNew(SBox)
					.WidthOverride_Lambda([this]() { return FOptionalSize(GetLinesWidth()); })
				]
			]
		]
		+ SOverlay::Slot()
		.Padding(16.0f)
		[
			SNew(STextBlock)
			.Tag("SourceProblem")
			.Text_Lambda([this]() { return FText::FromString(Text.Problem); })
			.ColorAndOpacity(GetSubdued())
			.AutoWrapText(true)
			.Visibility_Lambda(GetProblemVisibility)
		];
	// clang-format on
}

TSharedRef<ITableRow> SSourceViewer::MakeRow(FLine Line, const TSharedRef<STableViewBase>& Owner)
{
	int32 Current = INDEX_NONE;
	const TArray<Velmora::FFoundPlace> Places = Find->GetPlaces(Line->Number - 1, Current);
	const TSharedRef<SHorizontalBox> Pieces = SNew(SHorizontalBox);
	// clang-format off
	Pieces->AddSlot()
	.AutoWidth()
	.Padding(0.0f, 0.0f, NumberGap, 0.0f)
	[
		SNew(SBox)
		.WidthOverride(GetNumberWidth())
		.HAlign(HAlign_Right)
		[
			SNew(STextBlock)
			.Text(FText::FromString(FString::FromInt(Line->Number)))
			.Font(ToolTab::GetMonoFont())
			.ColorAndOpacity(GetSubdued())
		]
	];
	// clang-format on
	int32 Begin = 0;
	for (const Velmora::Markdown::FCodePiece& Piece : Line->Pieces)
	{
		Pieces->AddSlot().AutoWidth()[MakePiece(Piece, Begin, Places, Current)];
		Begin += Piece.Text.Len();
	}
	// clang-format off
	return SNew(STableRow<FLine>, Owner)
		[
			SNew(SBorder)
			.BorderImage(Line->Number == FramedLine ? GetFrameBrush() : FAppStyle::GetBrush("NoBorder"))
			.Padding(FMargin(ToolTab::RowSide, 1.0f))
			.Clipping(EWidgetClipping::ClipToBounds)
			[
				SNew(SBox)
				.Padding_Lambda([this]() { return FMargin(-GetShift(), 0.0f, 0.0f, 0.0f); })
				[
					Pieces
				]
			]
		];
	// clang-format on
}

TSharedRef<SWidget> SSourceViewer::MakePiece(
	const Velmora::Markdown::FCodePiece& Piece, int32 Begin, const TArray<Velmora::FFoundPlace>& Places, int32 Current) const
{
	// clang-format off
	const TSharedRef<SWidget> Words = SNew(STextBlock)
		.Text(FText::FromString(Piece.Text))
		.Font(ToolTab::GetMonoFont())
		.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetSyntaxTokenColor(Piece.Type)));
	// clang-format on
	TSharedPtr<SOverlay> Marked;
	for (int32 Index = 0; Index < Places.Num(); ++Index)
	{
		const int32 From = FMath::Max(Places[Index].Begin, Begin);
		const int32 To = FMath::Min(Places[Index].Begin + Places[Index].Length, Begin + Piece.Text.Len());
		if (From < To)
		{
			if (!Marked)
			{
				Marked = SNew(SOverlay);
			}
			// clang-format off
			Marked->AddSlot()
			[
				SNew(SFoundMarks)
				.Text(Piece.Text)
				.Font(ToolTab::GetMonoFont())
				.Places({ Velmora::FFoundPlace{ From - Begin, To - From } })
				.IsCurrent(Index == Current)
				.WrapTextAt(0.0f)
			];
			// clang-format on
		}
	}
	if (!Marked)
	{
		return Words;
	}
	Marked->AddSlot()[Words];
	return Marked.ToSharedRef();
}

float SSourceViewer::GetNumberWidth() const
{
	return CellWidth * static_cast<float>(FMath::Max(FString::FromInt(Text.Lines.Num()).Len(), MinNumberCells));
}

float SSourceViewer::GetLinesWidth() const
{
	return 2.0f * ToolTab::RowSide + GetNumberWidth() + NumberGap + CellWidth * static_cast<float>(Text.WidestCells) + TextEnd;
}

float SSourceViewer::GetShift() const
{
	// The lines are laid out before the bar, which does not know yet when the window got wider.
	const float End = GetLinesWidth() - static_cast<float>(List->GetCachedGeometry().GetLocalSize().X);
	return FMath::Clamp(Sides->GetScrollOffset(), 0.0f, FMath::Max(End, 0.0f));
}

FText SSourceViewer::GetStateText() const
{
	if (Path.IsEmpty())
	{
		return LOCTEXT("NoFile", "No file is shown. Links to files open here while there is no editor.");
	}
	const int32 Count = Text.Lines.Num();
	if (Count == 0)
	{
		return Reading.IsUnderWay() ? LOCTEXT("Reading", "Reading\u2026") : FText();
	}
	const FText All = Count == 1 ? LOCTEXT("OneLine", "1 line") : FText::Format(LOCTEXT("Lines", "{0} lines"), FText::AsNumber(Count));
	const int32 Line = GetSelectedLine();
	return Line == 0 ? All : FText::Format(LOCTEXT("LineOf", "Line {0}, {1}"), FText::AsNumber(Line), All);
}

void SSourceViewer::Open(const FString& InPath, int32 Line)
{
	FramedLine = Line;
	bWantsLine = true;
	if (!Path.Equals(InPath, ESearchCase::CaseSensitive))
	{
		Path = InPath;
		Take(FSourceText());
		bWantsLine = true;
	}
	else if (Text.Lines.Num() > 0)
	{
		GoToLine(FramedLine);
		// Once more when the file turns out to have changed: the line may be one that it did not have.
		bWantsLine = true;
	}
	FSlateApplication::Get().SetKeyboardFocus(List, EFocusCause::SetDirectly);
	Read();
}

void SSourceViewer::Follow()
{
	if (!Path.IsEmpty())
	{
		Read();
	}
}

void SSourceViewer::Read()
{
	if (!Reading.Begin())
	{
		return;
	}
	AsyncTask(ENamedThreads::AnyBackgroundThreadNormalTask,
		[Weak = TWeakPtr<SSourceViewer>(SharedThis(this)), File = Path, Stamp = Text.Stamp]
		{
			TOptional<FSourceText> Now = SourceText::Read(File, Stamp);
			AsyncTask(ENamedThreads::GameThread,
				[Weak, File, Now = MoveTemp(Now)]() mutable
				{
					const TSharedPtr<SSourceViewer> Self = Weak.Pin();
					if (!Self)
					{
						return;
					}
					const bool bReadAgain = Self->Reading.End();
					const bool bIsWanted = Self->Path.Equals(File, ESearchCase::CaseSensitive);
					if (bIsWanted && Now.IsSet())
					{
						Self->Take(MoveTemp(Now.GetValue()));
					}
					else if (bIsWanted && !bReadAgain)
					{
						Self->bWantsLine = false;
					}
					if (bReadAgain || !bIsWanted)
					{
						Self->Read();
					}
				});
		});
}

void SSourceViewer::Take(FSourceText&& Read)
{
	const int32 Line = GetSelectedLine();
	Find->SetLines(nullptr);
	List->ClearSelection();
	Text = MoveTemp(Read);
	Find->SetLines(&Text.Lines);
	List->RequestListRefresh();
	// A text that has changed stays where it was read.
	if (bWantsLine && Text.Lines.Num() > 0)
	{
		GoToLine(FramedLine);
	}
	else if (Text.Lines.IsValidIndex(Line - 1))
	{
		List->SetSelection(Text.Lines[Line - 1]);
	}
	Invalidate(EInvalidateWidgetReason::Layout);
}

void SSourceViewer::GoToLine(int32 Line)
{
	bWantsLine = false;
	// One behind the end stands for the last one: the file may be shorter than when the line was named.
	const int32 Index = FMath::Clamp(Line, 1, Text.Lines.Num()) - 1;
	List->SetSelection(Text.Lines[Index]);
	List->RequestListRefresh();
	List->ScrollToIndex(Index);
	Sides->SetScrollOffset(0.0f);
}

int32 SSourceViewer::GetSelectedLine() const
{
	const TArray<FLine> Selected = List->GetSelectedItems();
	return Selected.Num() > 0 && Selected[0] ? Selected[0]->Number : 0;
}

void SSourceViewer::ShowHit(const FSourceFind::FHit* Hit)
{
	List->RequestListRefresh();
	if (!Hit)
	{
		return;
	}
	List->ScrollToIndex(Hit->Line);
	// Sideways only where it is out of view.
	const float View = ToolTab::GetTextWidth(*List) + 2.0f * ToolTab::RowSide;
	const float Left = ToolTab::RowSide + GetNumberWidth() + NumberGap + CellWidth * static_cast<float>(Hit->Place.Begin);
	const float Right = Left + CellWidth * static_cast<float>(Hit->Place.Length);
	const float Offset = Sides->GetScrollOffset();
	if (Left < Offset || Right > Offset + View)
	{
		Sides->SetScrollOffset(Right <= View ? 0.0f : FMath::Max((Left + Right - View) / 2.0f, 0.0f));
	}
}

bool SSourceViewer::FitPath()
{
	const float Width = static_cast<float>(PathLabel->GetCachedGeometry().GetLocalSize().X);
	if (Width == FittedWidth && Path.Equals(FittedPath, ESearchCase::CaseSensitive))
	{
		return false;
	}
	FittedWidth = Width;
	FittedPath = Path;
	const FSlateFontInfo Font = FAppStyle::Get().GetWidgetStyle<FTextBlockStyle>("NormalText.Important").Font;
	const FString Fitted = PathText::Shorten(
		Path, Width, [&Font](const FString& Words) { return ITextShaper::Get().MakeParagraph(Words, Font, 1.0f)->GetUnwrappedWidth(); });
	const bool bIsOther = !Fitted.Equals(ShownPath, ESearchCase::CaseSensitive);
	ShownPath = Fitted;
	return bIsOther;
}

void SSourceViewer::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	SCompoundWidget::Tick(AllottedGeometry, InCurrentTime, InDeltaTime);
	const bool bFitsAnew = FitPath();
	if (Find->Update() || bFitsAnew)
	{
		FHostSleep::RequestFrameAt(InCurrentTime);
	}
}

FReply SSourceViewer::OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	const int32 Line = GetSelectedLine();
	if (InKeyEvent.GetKey() == EKeys::C && InKeyEvent.IsControlDown() && !InKeyEvent.IsShiftDown() && Text.Lines.IsValidIndex(Line - 1))
	{
		FPlatformApplicationMisc::ClipboardCopy(*Text.Lines[Line - 1]->Text);
		return FReply::Handled();
	}
	return Sides->OnKeyDown(Sides->GetCachedGeometry(), InKeyEvent);
}

FReply SSourceViewer::OnMouseWheel(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	return Sides->OnMouseWheel(Sides->GetCachedGeometry(), MouseEvent);
}

#undef LOCTEXT_NAMESPACE
