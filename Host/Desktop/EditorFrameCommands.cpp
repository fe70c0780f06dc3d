#include "EditorFrameCommands.h"

#include "Styling/AppStyle.h"

#define LOCTEXT_NAMESPACE "EditorFrameCommands"

FEditorFrameCommands::FEditorFrameCommands()
	: TCommands<FEditorFrameCommands>(
		  TEXT("EditorFrame"), NSLOCTEXT("Contexts", "EditorFrame", "Editor Frame"), NAME_None, FAppStyle::GetAppStyleSetName())
{
}

void FEditorFrameCommands::RegisterCommands()
{
	UI_COMMAND(Exit, "Exit", "Close the window and end the program", EUserInterfaceActionType::Button, FInputChord(EKeys::Q, false, true));
	UI_COMMAND(Undo, "Undo", "Take the last change of the text back", EUserInterfaceActionType::Button, FInputChord(EKeys::Z, false, true));
	UI_COMMAND(
		Redo, "Redo", "Make the change again that was taken back", EUserInterfaceActionType::Button, FInputChord(EKeys::Y, false, true));
	UI_COMMAND(Cut, "Cut", "Move the selected text to the clipboard", EUserInterfaceActionType::Button, FInputChord(EKeys::X, false, true));
	UI_COMMAND(
		Copy, "Copy", "Copy the selected text to the clipboard", EUserInterfaceActionType::Button, FInputChord(EKeys::C, false, true));
	UI_COMMAND(Paste, "Paste", "Insert the text of the clipboard", EUserInterfaceActionType::Button, FInputChord(EKeys::V, false, true));
	UI_COMMAND(SelectAll, "Select All", "Select the whole text", EUserInterfaceActionType::Button, FInputChord(EKeys::A, false, true));
	UI_COMMAND(CloseTab, "Close Tab", "Close the tab in front; this menu opens it again", EUserInterfaceActionType::Button,
		FInputChord(EKeys::F4, false, true));
	UI_COMMAND(OpenProjectFolder, "Open Project Folder", "Show the project's folder in the file manager", EUserInterfaceActionType::Button,
		FInputChord());
	UI_COMMAND(RefreshFileIndex, "Refresh File Index", "Compare the list of the project's files with the disk",
		EUserInterfaceActionType::Button, FInputChord());
	UI_COMMAND(UserGuide, "User Guide", "Open the user guide", EUserInterfaceActionType::Button, FInputChord(EKeys::F1));
	UI_COMMAND(About, "About Velmora UI", "Name and version of this program", EUserInterfaceActionType::Button, FInputChord());
}

#undef LOCTEXT_NAMESPACE
