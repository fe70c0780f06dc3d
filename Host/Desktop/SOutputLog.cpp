#include "SOutputLog.h"

#include "HAL/PlatformApplicationMisc.h"
#include "Host/HostConsole.h"
#include "Host/HostSleep.h"
#include "Styling/AppStyle.h"
#include "Styling/CoreStyle.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Input/SEditableTextBox.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

#define LOCTEXT_NAMESPACE "OutputLog"

namespace
{

	/** About a tenth of what the log holds, so that a filter over all of it is done in ten frames. */
	constexpr int32 LinesFilteredAFrame = 10000;
	constexpr int32 MaxListedNames = 100;
	constexpr float LogTextSide = 8.0f;
	constexpr float LogBarRoom = 12.0f;

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

} // namespace

void SOutputLog::Construct(const FArguments& InArgs, const TSharedRef<FOutputLog>& InLog)
{
	Log = InLog;
	Log->Update();
	SeenFirstNumber = Log->GetFirstNumber();
	// clang-format off
	ChildSlot
	[
		SNew(SBorder)
		.BorderImage(FAppStyle::GetBrush("ToolPanel.GroupBorder"))
		.Padding(8.0f)
		[
			SNew(SVerticalBox)
			+ SVerticalBox::Slot()
			.AutoHeight()
			.Padding(0.0f, 0.0f, 0.0f, 8.0f)
			[
				MakeToolBar()
			]
			+ SVerticalBox::Slot()
			.FillHeight(1.0f)
			[
				SNew(SBorder)
				.BorderImage(FAppStyle::GetBrush("ToolPanel.DarkGroupBorder"))
				.Padding(FMargin(0.0f, 4.0f))
				[
					SAssignNew(List, SListView<FLine>)
					.Tag("LogList")
					.Clipping(EWidgetClipping::ClipToBounds)
					.ListItemsSource(&Log->GetLines())
					.OnGenerateRow(this, &SOutputLog::MakeRow)
				]
			]
			+ SVerticalBox::Slot()
			.AutoHeight()
			.Padding(0.0f, 8.0f, 0.0f, 0.0f)
			[
				MakeConsole()
			]
		]
	];
	// clang-format on
	List->ScrollToBottom();
}

TSharedRef<SWidget> SOutputLog::MakeToolBar()
{
	// clang-format off
	return SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.FillWidth(1.0f)
		[
			SNew(SEditableTextBox)
			.Tag("LogFilter")
			.HintText(LOCTEXT("FilterHint", "Filter"))
			.ToolTipText(LOCTEXT("FilterTooltip", "Show the lines that contain this text"))
			.ClearKeyboardFocusOnCommit(false)
			.OnTextChanged(this, &SOutputLog::OnFilterChanged)
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.Padding(8.0f, 0.0f, 0.0f, 0.0f)
		[
			SNew(SButton)
			.Text(LOCTEXT("CopyAll", "Copy All"))
			.ToolTipText(LOCTEXT("CopyAllTooltip", "Copy the lines shown; Ctrl+C copies the selected one"))
			.OnClicked(this, &SOutputLog::OnCopyAll)
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.Padding(8.0f, 0.0f, 0.0f, 0.0f)
		[
			SNew(SButton)
			.Text(LOCTEXT("ClearLog", "Clear Log"))
			.ToolTipText(LOCTEXT("ClearLogTooltip", "Take all lines away"))
			.OnClicked(this, &SOutputLog::OnClear)
		];
	// clang-format on
}

TSharedRef<SWidget> SOutputLog::MakeConsole()
{
	return SAssignNew(Console, SEditableTextBox)
		.Tag("ConsoleInput")
		.HintText(LOCTEXT("ConsoleHint", "Console: list, name, name value, name ?"))
		.ToolTipText(LOCTEXT("ConsoleTooltip", "Console variables: list names them, Tab completes a name, Up brings former lines back"))
		.Font(FCoreStyle::GetDefaultFontStyle("Mono", 9.0f))
		.ClearKeyboardFocusOnCommit(false)
		.OnTextCommitted(this, &SOutputLog::OnConsoleCommitted)
		.OnKeyDownHandler(this, &SOutputLog::OnConsoleKey);
}

TSharedRef<ITableRow> SOutputLog::MakeRow(FLine Line, const TSharedRef<STableViewBase>& Owner)
{
	// clang-format off
	return SNew(STableRow<FLine>, Owner)
		.Padding(FMargin(LogTextSide, 1.0f))
		[
			SNew(STextBlock)
			.Text(FText::FromString(Line->Text))
			.Font(FCoreStyle::GetDefaultFontStyle("Mono", 9.0f))
			.ColorAndOpacity(GetLogColor(Line->Verbosity))
			.WrapTextAt(this, &SOutputLog::GetWrapWidth)
		];
	// clang-format on
}

float SOutputLog::GetWrapWidth() const
{
	return FMath::Max(static_cast<float>(List->GetCachedGeometry().GetLocalSize().X) - 2.0f * LogTextSide - LogBarRoom, 0.0f);
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

FReply SOutputLog::OnCopyAll()
{
	FString All;
	for (const FLine& Line : GetShown())
	{
		All += Line->Text;
		All += TEXT("\n");
	}
	FPlatformApplicationMisc::ClipboardCopy(*All);
	return FReply::Handled();
}

FReply SOutputLog::OnClear()
{
	Log->Clear();
	Matching.Reset();
	List->ClearSelection();
	List->RequestListRefresh();
	return FReply::Handled();
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
