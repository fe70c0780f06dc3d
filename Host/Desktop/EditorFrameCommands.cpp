#include "EditorFrameCommands.h"

#include "KeyBindings.h"
#include "Styling/AppStyle.h"

#define LOCTEXT_NAMESPACE "EditorFrameCommands"

/** A command whose key the user can change. */
#define FRAME_COMMAND(CommandId, FriendlyName, InDescription, InDefaultChord) \
	UI_COMMAND( \
		CommandId, FriendlyName, InDescription, EUserInterfaceActionType::Button, FKeyBindings::Get(TEXT(#CommandId), InDefaultChord))

FEditorFrameCommands::FEditorFrameCommands()
	: TCommands<FEditorFrameCommands>(
		  TEXT("EditorFrame"), NSLOCTEXT("Contexts", "EditorFrame", "Editor Frame"), NAME_None, FAppStyle::GetAppStyleSetName())
{
}

void FEditorFrameCommands::RegisterCommands()
{
	RegisterFileCommands();
	RegisterEditCommands();
	RegisterAgentCommands();
	RegisterWindowCommands();
}

void FEditorFrameCommands::RegisterFileCommands()
{
	FRAME_COMMAND(NewConversation, "New Conversation", "Begin a new conversation; this one is kept", FInputChord(EKeys::N, false, true));
	FRAME_COMMAND(Conversations, "Conversations", "Show all conversations of this project", FInputChord(EKeys::H, true, true));
	FRAME_COMMAND(Exit, "Exit", "Close the window and end the program", FInputChord(EKeys::Q, false, true));
}

void FEditorFrameCommands::RegisterEditCommands()
{
	// These keys belong to text boxes, which know them by themselves.
	UI_COMMAND(Undo, "Undo", "Take the last change of the text back", EUserInterfaceActionType::Button, FInputChord(EKeys::Z, false, true));
	UI_COMMAND(
		Redo, "Redo", "Make the change again that was taken back", EUserInterfaceActionType::Button, FInputChord(EKeys::Y, false, true));
	UI_COMMAND(Cut, "Cut", "Move the selected text to the clipboard", EUserInterfaceActionType::Button, FInputChord(EKeys::X, false, true));
	UI_COMMAND(
		Copy, "Copy", "Copy the selected text to the clipboard", EUserInterfaceActionType::Button, FInputChord(EKeys::C, false, true));
	UI_COMMAND(Paste, "Paste", "Insert the text of the clipboard", EUserInterfaceActionType::Button, FInputChord(EKeys::V, false, true));
	UI_COMMAND(SelectAll, "Select All", "Select the whole text", EUserInterfaceActionType::Button, FInputChord(EKeys::A, false, true));

	FRAME_COMMAND(Find, "Find", "Look for a text in the conversation", FInputChord(EKeys::F, false, true));
	FRAME_COMMAND(FindNext, "Find Next", "Go to the next place below", FInputChord(EKeys::F3));
	FRAME_COMMAND(FindPrevious, "Find Previous", "Go to the next place above", FInputChord(EKeys::F3, true, false));
	FRAME_COMMAND(
		FocusPrompt, "Go to Prompt", "Give the keyboard to the box that prompts are typed into", FInputChord(EKeys::L, false, true));
	FRAME_COMMAND(RecallPrompt, "Bring Back Last Prompt", "Put what you said last into the empty box", FInputChord(EKeys::Up));
	FRAME_COMMAND(CopyLastAnswer, "Copy Last Answer", "Copy what the agent said last", FInputChord(EKeys::C, true, true));
	// Without keys: each takes something back.
	FRAME_COMMAND(SendAgain, "Send Last Message Again", "Undo to your last message and send it once more", FInputChord());
	FRAME_COMMAND(EditLast, "Edit Last Message", "Undo to your last message and put it back into the box", FInputChord());
}

void FEditorFrameCommands::RegisterAgentCommands()
{
	FRAME_COMMAND(Stop, "Stop", "Stop the agent; what was said stays", FInputChord(EKeys::Escape));
	// Function keys: no layout of a keyboard types anything with them, so no draft gets a stray letter.
	FRAME_COMMAND(Pause, "Pause", "Let the agent wait", FInputChord(EKeys::F9));
	FRAME_COMMAND(
		Continue, "Continue", "Let the agent go on, with what stands in the box if anything does", FInputChord(EKeys::F9, true, false));
	FRAME_COMMAND(AllowOnce, "Allow Once", "Let the agent do what it asks for, this time", FInputChord(EKeys::F8));
	FRAME_COMMAND(AllowAlways, "Always in This Project", "Let the agent do it, and do not ask again in this project",
		FInputChord(EKeys::F8, true, false));
	FRAME_COMMAND(RefuseQuestion, "Refuse", "The agent goes on without it", FInputChord(EKeys::F8, false, true));
	FRAME_COMMAND(Permissions, "Permissions", "Show what the agent may do in this project without asking", FInputChord());
	FRAME_COMMAND(OpenProjectFolder, "Open Project Folder", "Show the project's folder in the file manager", FInputChord());
	FRAME_COMMAND(RefreshFileIndex, "Refresh File Index", "Compare the list of the project's files with the disk", FInputChord());
	FRAME_COMMAND(Keys, "Keys", "Show all keys, and change them", FInputChord());
}

void FEditorFrameCommands::RegisterWindowCommands()
{
	FRAME_COMMAND(ZoomIn, "Larger", "Show everything larger", FInputChord(EKeys::Equals, false, true));
	FRAME_COMMAND(ZoomOut, "Smaller", "Show everything smaller", FInputChord(EKeys::Hyphen, false, true));
	FRAME_COMMAND(ZoomReset, "Normal Size", "Show everything at the size of the screen", FInputChord(EKeys::Zero, false, true));
	FRAME_COMMAND(CloseTab, "Close Tab", "Close the tab in front; this menu opens it again", FInputChord(EKeys::F4, false, true));
	FRAME_COMMAND(FirstSteps, "First Steps", "Show prompts to try, and where things are", FInputChord());
	FRAME_COMMAND(UserGuide, "User Guide", "Open the user guide", FInputChord(EKeys::F1));
	FRAME_COMMAND(About, "About Velmora UI", "Name and version of this program", FInputChord());
}

#undef FRAME_COMMAND
#undef LOCTEXT_NAMESPACE
