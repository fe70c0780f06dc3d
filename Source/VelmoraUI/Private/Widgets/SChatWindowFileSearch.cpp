#include "Widgets/SChatWindow.h"

#include "FileSearch/AtTokenState.h"
#include "FileSearch/FileIndexEntry.h"
#include "Framework/Application/SlateApplication.h"
#include "InputCoreTypes.h"
#include "Misc/Paths.h"
#include "ViewModels/ChatViewModel.h"
#include "Widgets/Input/SMenuAnchor.h"
#include "Widgets/Input/SMultiLineEditableTextBox.h"
#include "Widgets/PromptLines.h"
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

} // namespace

TSharedRef<SWidget> SChatWindow::BuildFileSearchDropdownContent()
{
	// 1. The token may have been typed before the dropdown was ever made, so its query is computed here once.
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
	// 2. Made once: with each opening a new one would forget what its list had laid out.
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
	// 3. The controller holds the same query, or it would ask for it once more with the next key.
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
	// These five belong to the list; all others go on to the text, which has kept the keyboard.
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
	// 1. Close before open: one change of the text never asks for both.
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
	// 2. At its first opening the dropdown has its query from BuildFileSearchDropdownContent.
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
	// 1. The file itself. A pick counts even when the text cannot be changed.
	ViewModel->AddContextFile(Entry.FilePath);
	// 2. Its name in the text, in place of the token.
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
	// 3. The keyboard stays with the text.
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
	return FPromptLines::ToLinearIndex(Text, Location);
}

FTextLocation SChatWindow::LinearIndexToTextLocation(const FString& Text, int32 Index)
{
	return FPromptLines::ToTextLocation(Text, Index);
}
