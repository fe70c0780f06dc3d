#include "Widgets/SChatWindow.h"

#include "FileSearch/AtTokenState.h"
#include "FileSearch/FileIndexEntry.h"
#include "Framework/Application/SlateApplication.h"
#include "InputCoreTypes.h"
#include "Math/UnrealMathUtility.h"
#include "Misc/Paths.h"
#include "ViewModels/ChatViewModel.h"
#include "Widgets/Input/SMenuAnchor.h"
#include "Widgets/Input/SMultiLineEditableTextBox.h"
#include "Widgets/SFileSearchDropdown.h"

namespace
{

	/** What stands in the text for a picked file. The full path travels apart from it. */
	FString GetInsertText(const Velmora::UI::FFileIndexEntry& Entry)
	{
		if (Entry.bIsDirectory)
		{
			return Entry.FilePath;
		}
		return Entry.FileType == Velmora::UI::EFileType::Asset ? FPaths::GetBaseFilename(Entry.FilePath)
															   : FPaths::GetCleanFilename(Entry.FilePath);
	}

	// What follows runs at each key over all that stands before the cursor, so line feeds are counted in blocks, without a branch
	// for each character.
	constexpr int32 LineScanBlock = 256;

	int32 CountLineFeedsOfBlock(const TCHAR* Block)
	{
		// As wide as the characters, so that many are compared at once.
		uint16 LineFeeds = 0;
		for (int32 Offset = 0; Offset < LineScanBlock; ++Offset)
		{
			LineFeeds += static_cast<uint16>(Block[Offset] == TEXT('\n'));
		}
		return LineFeeds;
	}

	/** Where a line begins; the text's length when there are not so many lines. */
	int32 FindLineBegin(const TCHAR* Text, int32 Length, int32 TargetLine)
	{
		int32 Line = 0;
		int32 Index = 0;
		for (; Length - Index >= LineScanBlock; Index += LineScanBlock)
		{
			const int32 LineFeeds = CountLineFeedsOfBlock(Text + Index);
			if (Line + LineFeeds >= TargetLine)
			{
				break;
			}
			Line += LineFeeds;
		}
		for (; Line < TargetLine && Index < Length; ++Index)
		{
			Line += Text[Index] == TEXT('\n') ? 1 : 0;
		}
		return Index;
	}

	/** Boxes join their lines in one way, so the first line end tells of all. */
	bool HasCarriageReturns(const FString& Text)
	{
		const int32 SecondLine = FindLineBegin(*Text, Text.Len(), 1);
		return SecondLine >= 2 && SecondLine <= Text.Len() && (*Text)[SecondLine - 1] == TEXT('\n') &&
			(*Text)[SecondLine - 2] == TEXT('\r');
	}

	bool HasLineFeedBetween(const TCHAR* Text, int32 Begin, int32 End)
	{
		int32 Index = Begin;
		while (End - Index >= LineScanBlock && CountLineFeedsOfBlock(Text + Index) == 0)
		{
			Index += LineScanBlock;
		}
		while (Index < End && Text[Index] != TEXT('\n'))
		{
			++Index;
		}
		return Index < End;
	}

} // namespace

TSharedRef<SWidget> SChatWindow::BuildFileSearchDropdownContent()
{
	FString Query;
	if (InputTextBox.IsValid())
	{
		const FString& Text = CurrentInputText.ToString();
		const Velmora::UI::FAtTokenState State =
			Velmora::UI::ComputeAtTokenState(Text, TextLocationToLinearIndex(Text, InputTextBox->GetCursorLocation()));
		if (State.bActive)
		{
			Query = State.Query;
		}
	}
	if (FileSearchDropdown.IsValid())
	{
		FileSearchDropdown->SetSearchQuery(Query);
	}
	else
	{
		SAssignNew(FileSearchDropdown, SFileSearchDropdown)
			.Tag(FName("FileSearchDropdown"))
			.InitialQuery(Query)
			.OnFileSelected(this, &SChatWindow::OnFileSelected)
			.OnCancelled(this, &SChatWindow::OnFileSearchCancelled);
	}
	if (AtFileController.IsValid())
	{
		AtFileController->SetLastQuery(Query);
	}
	return FileSearchDropdown.ToSharedRef();
}

FReply SChatWindow::OnInputKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	if (!FileSearchAnchor.IsValid() || !FileSearchAnchor->IsOpen() || !FileSearchDropdown.IsValid())
	{
		return FReply::Unhandled();
	}
	const FKey Key = InKeyEvent.GetKey();
	if (Key == EKeys::Enter || Key == EKeys::Tab)
	{
		FileSearchDropdown->SelectCurrentItem();
	}
	else if (Key == EKeys::Escape)
	{
		FileSearchDropdown->Cancel();
	}
	else if (Key == EKeys::Up)
	{
		FileSearchDropdown->NavigatePrevious();
	}
	else if (Key == EKeys::Down)
	{
		FileSearchDropdown->NavigateNext();
	}
	else
	{
		return FReply::Unhandled();
	}
	return FReply::Handled();
}

void SChatWindow::OnInputTextChanged(const FText& NewText)
{
	// Lines may come with carriage returns, while places in the box count line ends as one: all rules work on line feeds alone.
	CurrentInputText = HasCarriageReturns(NewText.ToString())
		? FText::FromString(NewText.ToString().Replace(TEXT("\r\n"), TEXT("\n"), ESearchCase::CaseSensitive))
		: NewText;
	if (InputTextBox.IsValid())
	{
		UpdateFileSearch(InputTextBox->GetCursorLocation());
	}
}

void SChatWindow::OnInputCursorMoved(const FTextLocation& NewLocation)
{
	if (InputTextBox.IsValid())
	{
		UpdateFileSearch(NewLocation);
	}
}

void SChatWindow::UpdateFileSearch(const FTextLocation& Cursor)
{
	if (!AtFileController.IsValid() || !FileSearchAnchor.IsValid())
	{
		return;
	}
	const Velmora::UI::FAtFileReferenceController::FDropdownDelta Delta = AtFileController->Update(CurrentInputText.ToString(), Cursor);
	AtTokenIndex = Delta.AtIndex;
	if (Delta.bShouldClose && FileSearchAnchor->IsOpen())
	{
		FileSearchAnchor->SetIsOpen(false, true, 0);
		AtFileController->Reset();
	}
	else if (Delta.bShouldOpen && !FileSearchAnchor->IsOpen())
	{
		// The keyboard stays in the prompt.
		FileSearchAnchor->SetIsOpen(true, false, 0);
	}
	if (Delta.bQueryChanged && FileSearchDropdown.IsValid())
	{
		FileSearchDropdown->SetSearchQuery(Delta.Query);
	}
}

void SChatWindow::OnFileSelected(const Velmora::UI::FFileIndexEntry& Entry)
{
	if (!ViewModel.IsValid())
	{
		return;
	}
	ViewModel->AddContextFile(Entry.FilePath);
	if (InputTextBox.IsValid() && AtFileController.IsValid())
	{
		const Velmora::UI::FAtFileReferenceController::FReplacement Replacement =
			AtFileController->BuildReplacement(CurrentInputText.ToString(), InputTextBox->GetCursorLocation(), GetInsertText(Entry));
		if (Replacement.bApplied)
		{
			// Neither the change nor the jump of the cursor may open the dropdown again.
			const Velmora::UI::FAtFileReferenceController::FScopedSuppression Suppression = AtFileController->SuppressUpdates();
			CurrentInputText = FText::FromString(Replacement.NewText);
			InputTextBox->SetText(CurrentInputText);
			InputTextBox->GoTo(Replacement.NewCursor);
		}
	}
	CloseFileSearch();
}

void SChatWindow::OnFileSearchCancelled()
{
	CloseFileSearch();
}

void SChatWindow::CloseFileSearch()
{
	AtTokenIndex = -1;
	if (FileSearchAnchor.IsValid())
	{
		FileSearchAnchor->SetIsOpen(false, true, 0);
	}
	if (AtFileController.IsValid())
	{
		AtFileController->Reset();
	}
	if (InputTextBox.IsValid())
	{
		FSlateApplication::Get().SetKeyboardFocus(InputTextBox, EFocusCause::SetDirectly);
	}
}

int32 SChatWindow::TextLocationToLinearIndex(const FString& Text, const FTextLocation& Location)
{
	const int32 TargetLine = FMath::Max(Location.GetLineIndex(), 0);
	const int32 TargetOffset = FMath::Max(Location.GetOffset(), 0);
	const TCHAR* const Begin = *Text;
	const int32 Length = Text.Len();
	const int32 LineBegin = FindLineBegin(Begin, Length, TargetLine);
	// A column beyond its line is a place that does not exist.
	const bool bExists = TargetOffset < Length - LineBegin && !HasLineFeedBetween(Begin, LineBegin, LineBegin + TargetOffset);
	return bExists ? LineBegin + TargetOffset : Length;
}

FTextLocation SChatWindow::LinearIndexToTextLocation(const FString& Text, int32 Index)
{
	const TCHAR* const Begin = *Text;
	const int32 End = FMath::Clamp(Index, 0, Text.Len());
	int32 Line = 0;
	int32 LineBegin = 0;
	for (int32 Position = 0; Position < End; ++Position)
	{
		if (Begin[Position] == TEXT('\n'))
		{
			++Line;
			LineBegin = Position + 1;
		}
	}
	return FTextLocation(Line, End - LineBegin);
}
