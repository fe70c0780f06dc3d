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
	// Function keys: no layout of a keyboard types anything with them, so no draft gets a stray letter.
	UI_COMMAND(
		AllowOnce, "Allow Once", "Let the agent do what it asks for, this time", EUserInterfaceActionType::Button, FInputChord(EKeys::F8));
	UI_COMMAND(AllowAlways, "Always in This Project", "Let the agent do it, and do not ask again in this project",
		EUserInterfaceActionType::Button, FInputChord(EKeys::F8, true, false));
	UI_COMMAND(
		RefuseQuestion, "Refuse", "The agent goes on without it", EUserInterfaceActionType::Button, FInputChord(EKeys::F8, false, true));
	// Without keys: each takes something back.
	UI_COMMAND(SendAgain, "Send Last Message Again", "Undo to your last message and send it once more", EUserInterfaceActionType::Button,
		FInputChord());
	UI_COMMAND(EditLast, "Edit Last Message", "Undo to your last message and put it back into the box", EUserInterfaceActionType::Button,
		FInputChord());
	UI_COMMAND(Permissions, "Permissions", "Show what the agent may do in this project without asking", EUserInterfaceActionType::Button,
		FInputChord());
	UI_COMMAND(UserGuide, "User Guide", "Open the user guide", EUserInterfaceActionType::Button, FInputChord(EKeys::F1));
	UI_COMMAND(About, "About Velmora UI", "Name and version of this program", EUserInterfaceActionType::Button, FInputChord());
}

#undef LOCTEXT_NAMESPACE
