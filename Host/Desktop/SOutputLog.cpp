#include "SOutputLog.h"

#include "HAL/PlatformApplicationMisc.h"
#include "Host/HostConsole.h"
#include "Host/HostSleep.h"
#include "SettingRows.h"
#include "Styling/AppStyle.h"
#include "ToolTab.h"
#include "Widgets/Input/SEditableTextBox.h"
#include "Widgets/Text/STextBlock.h"

#define LOCTEXT_NAMESPACE "OutputLog"

namespace
{
	/** About a tenth of what the log holds, so that a filter over all of it is done in ten frames. */
	constexpr int32 LinesFilteredAFrame = 10000;
	constexpr int32 MaxListedNames = 100;

	FSlateColor GetLogColor(ELogVerbosity::Type Verbosity)
	{
		switch (Verbosity)
		{
		case ELogVerbosity::Fatal:
		case ELogVerbosity::Error:
			return FSlateColor(FAppStyle::GetColor("Colors.Error"));
		case ELogVerbosity::Warning:
			return FSlateColor(FAppStyle::GetColor("Colors.Warning"));
		case ELogVerbosity::Display:
			return FSlateColor(FAppStyle::GetColor("Colors.ForegroundStrong"));
		case ELogVerbosity::Verbose:
		case ELogVerbosity::VeryVerbose:
			return FSlateColor(FAppStyle::GetColor("Colors.ForegroundSubdued"));
		default:
			return FSlateColor(FAppStyle::GetColor("Colors.Foreground"));
		}
	}
}

void SOutputLog::Construct(const FArguments& InArgs, const TSharedRef<FOutputLog>& InLog)
{
	Log = InLog;
	Log->Update();
	SeenFirstNumber = Log->GetFirstNumber();
	// clang-format off
	const TSharedRef<SWidget> Lines = ToolTab::MakeListFrame(
		SAssignNew(List, SListView<FLine>)
		.Tag("LogList")
		.ListItemsSource(&Log->GetLines())
		.OnGenerateRow(this, &SOutputLog::MakeRow));
	ChildSlot
	[
		ToolTab::MakeFrame(MakeToolBar(), Lines, MakeConsole())
	];
	// clang-format on
	List->ScrollToBottom();
}

TSharedRef<SWidget> SOutputLog::MakeToolBar()
{
	// clang-format off
	const TSharedRef<SWidget> FilterBox = SNew(SEditableTextBox)
		.Tag("LogFilter")
		.HintText(LOCTEXT("FilterHint", "Filter"))
		.ToolTipText(LOCTEXT("FilterTooltip", "Show the lines that contain this text"))
		.ClearKeyboardFocusOnCommit(false)
		.OnTextChanged(this, &SOutputLog::OnFilterChanged);
	// clang-format on
	return ToolTab::MakeBar({ FilterBox,
		SettingRows::MakeButton("CopyLog", LOCTEXT("CopyAll", "Copy All"),
			LOCTEXT("CopyAllTooltip", "Copy the lines shown; Ctrl+C copies the selected one"), [this] { CopyAll(); }),
		SettingRows::MakeButton(
			"ClearLog", LOCTEXT("ClearLog", "Clear Log"), LOCTEXT("ClearLogTooltip", "Take all lines away"), [this] { Clear(); }) });
}

TSharedRef<SWidget> SOutputLog::MakeConsole()
{
	return SAssignNew(Console, SEditableTextBox)
		.Tag("ConsoleInput")
		.HintText(LOCTEXT("ConsoleHint", "Console: list, name, name value, name ?"))
		.ToolTipText(LOCTEXT("ConsoleTooltip", "Console variables: list names them, Tab completes a name, Up brings former lines back"))
		.Font(ToolTab::GetMonoFont())
		.ClearKeyboardFocusOnCommit(false)
		.OnTextCommitted(this, &SOutputLog::OnConsoleCommitted)
		.OnKeyDownHandler(this, &SOutputLog::OnConsoleKey);
}

TSharedRef<ITableRow> SOutputLog::MakeRow(FLine Line, const TSharedRef<STableViewBase>& Owner)
{
	// clang-format off
	return SNew(STableRow<FLine>, Owner)
		.Padding(FMargin(ToolTab::RowSide, 1.0f))
		[
			SNew(STextBlock)
			.Text(FText::FromString(Line->Text))
			.Font(ToolTab::GetMonoFont())
			.ColorAndOpacity(GetLogColor(Line->Verbosity))
			.WrapTextAt(this, &SOutputLog::GetWrapWidth)
		];
	// clang-format on
}

float SOutputLog::GetWrapWidth() const
{
	return ToolTab::GetTextWidth(*List);
}

void SOutputLog::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	SCompoundWidget::Tick(AllottedGeometry, InCurrentTime, InDeltaTime);
	// Asked before the new lines: behind them the end is elsewhere.
	const bool bFollow = List->IsAtBottom();
	Log->Update();
	GoOnFiltering();
	if (!Filter.IsEmpty() && NextNumber < Log->GetFirstNumber() + Log->GetLines().Num())
	{
		FHostSleep::RequestFrameAt(InCurrentTime);
	}
	if (SeenFirstNumber != Log->GetFirstNumber())
	{
		SeenFirstNumber = Log->GetFirstNumber();
		List->RequestListRefresh();
	}
	if (bFollow && GetShown().Num() != SeenCount)
	{
		List->ScrollToBottom();
	}
	SeenCount = GetShown().Num();
}

void SOutputLog::OnFilterChanged(const FText& Text)
{
	Filter = Text.ToString();
	Matching.Reset();
	NextNumber = Log->GetFirstNumber();
	List->ClearSelection();
	List->SetItemsSource(Filter.IsEmpty() ? &Log->GetLines() : &Matching);
	GoOnFiltering();
	List->ScrollToBottom();
}

void SOutputLog::GoOnFiltering()
{
	if (Filter.IsEmpty())
	{
		return;
	}
	const int64 First = Log->GetFirstNumber();
	// 1. What the log has dropped goes from the matches too.
	int32 Gone = 0;
	while (Gone < Matching.Num() && Matching[Gone]->Number < First)
	{
		++Gone;
	}
	Matching.RemoveAt(0, Gone);
	// 2. So many lines further.
	NextNumber = FMath::Max(NextNumber, First);
	const TArray<FLine>& Lines = Log->GetLines();
	const int64 End = FMath::Min(First + Lines.Num(), NextNumber + LinesFilteredAFrame);
	for (; NextNumber < End; ++NextNumber)
	{
		const FLine& Line = Lines[static_cast<int32>(NextNumber - First)];
		if (Line->Text.Contains(Filter, ESearchCase::IgnoreCase))
		{
			Matching.Add(Line);
		}
	}
}

FReply SOutputLog::OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	const TArray<FLine> Selected = List->GetSelectedItems();
	if (InKeyEvent.GetKey() == EKeys::C && InKeyEvent.IsControlDown() && Selected.Num() > 0)
	{
		FPlatformApplicationMisc::ClipboardCopy(*Selected[0]->Text);
		return FReply::Handled();
	}
	return FReply::Unhandled();
}

void SOutputLog::CopyAll()
{
	FString All;
	for (const FLine& Line : GetShown())
	{
		All += Line->Text;
		All += TEXT("\n");
	}
	FPlatformApplicationMisc::ClipboardCopy(*All);
}

void SOutputLog::Clear()
{
	Log->Clear();
	Matching.Reset();
	List->ClearSelection();
	List->RequestListRefresh();
}

void SOutputLog::OnConsoleCommitted(const FText& Text, ETextCommit::Type Type)
{
	const FString Line = Text.ToString().TrimStartAndEnd();
	if (Type != ETextCommit::OnEnter || Line.IsEmpty())
	{
		return;
	}
	// A line that is given again moves to the end of the history instead of standing there twice.
	Commands.Remove(Line);
	Commands.Add(Line);
	RecalledCommand = Commands.Num();
	Log->Add(TEXT("> ") + Line, ELogVerbosity::Display);
	TArray<FString> Answer;
	const bool bDone = FHostConsole::Execute(Line, Answer);
	for (const FString& Words : Answer)
	{
		Log->Add(Words, bDone ? ELogVerbosity::Log : ELogVerbosity::Error);
	}
	SetConsoleText(FString());
	List->ScrollToBottom();
}

FReply SOutputLog::OnConsoleKey(const FGeometry& Geometry, const FKeyEvent& KeyEvent)
{
	const bool bPlain = !KeyEvent.IsControlDown() && !KeyEvent.IsAltDown() && !KeyEvent.IsShiftDown();
	if (bPlain && (KeyEvent.GetKey() == EKeys::Up || KeyEvent.GetKey() == EKeys::Down))
	{
		RecallCommand(KeyEvent.GetKey() == EKeys::Up ? -1 : 1);
		return FReply::Handled();
	}
	// An empty line lets the key go on to the next control.
	if (bPlain && KeyEvent.GetKey() == EKeys::Tab && !Console->GetText().IsEmpty())
	{
		CompleteConsole();
		return FReply::Handled();
	}
	return FReply::Unhandled();
}

void SOutputLog::CompleteConsole()
{
	const FString Prefix = Console->GetText().ToString().TrimStart();
	const TArray<FString> Names = FHostConsole::Complete(Prefix, MaxListedNames);
	if (Names.IsEmpty())
	{
		return;
	}
	FString Common = Names[0];
	for (const FString& Name : Names)
	{
		int32 Length = 0;
		while (Length < FMath::Min(Common.Len(), Name.Len()) && FChar::ToLower(Common[Length]) == FChar::ToLower(Name[Length]))
		{
			++Length;
		}
		Common = Common.Left(Length);
		if (Names.Num() > 1)
		{
			Log->Add(Name, ELogVerbosity::Log);
		}
	}
	SetConsoleText(Names.Num() == 1 ? Common + TEXT(" ") : Common);
	List->ScrollToBottom();
}

void SOutputLog::RecallCommand(int32 Step)
{
	RecalledCommand = FMath::Clamp(RecalledCommand + Step, 0, Commands.Num());
	SetConsoleText(Commands.IsValidIndex(RecalledCommand) ? Commands[RecalledCommand] : FString());
}

void SOutputLog::SetConsoleText(const FString& Text)
{
	Console->SetText(FText::FromString(Text));
	Console->GoTo(ETextLocation::EndOfDocument);
}

#undef LOCTEXT_NAMESPACE
