#pragma once

#include "Framework/Commands/Commands.h"

/**
 * The table of all commands of the program's own menus, with the keys that they have now. When a key was changed they are registered
 * anew.
 */
class FEditorFrameCommands : public TCommands<FEditorFrameCommands>
{
public:
	FEditorFrameCommands();

	virtual void RegisterCommands() override;

	TSharedPtr<FUICommandInfo> NewConversation;
	TSharedPtr<FUICommandInfo> Conversations;
	TSharedPtr<FUICommandInfo> Exit;
	TSharedPtr<FUICommandInfo> Undo;
	TSharedPtr<FUICommandInfo> Redo;
	TSharedPtr<FUICommandInfo> Cut;
	TSharedPtr<FUICommandInfo> Copy;
	TSharedPtr<FUICommandInfo> Paste;
	TSharedPtr<FUICommandInfo> SelectAll;
	TSharedPtr<FUICommandInfo> Find;
	TSharedPtr<FUICommandInfo> FindNext;
	TSharedPtr<FUICommandInfo> FindPrevious;
	TSharedPtr<FUICommandInfo> FocusPrompt;
	TSharedPtr<FUICommandInfo> RecallPrompt;
	TSharedPtr<FUICommandInfo> CopyLastAnswer;
	TSharedPtr<FUICommandInfo> Stop;
	TSharedPtr<FUICommandInfo> Pause;
	TSharedPtr<FUICommandInfo> Continue;
	TSharedPtr<FUICommandInfo> ZoomIn;
	TSharedPtr<FUICommandInfo> ZoomOut;
	TSharedPtr<FUICommandInfo> ZoomReset;
	TSharedPtr<FUICommandInfo> CloseTab;
	TSharedPtr<FUICommandInfo> OpenProjectFolder;
	TSharedPtr<FUICommandInfo> RefreshFileIndex;
	// Answers to the question of the agent that is open.
	TSharedPtr<FUICommandInfo> AllowOnce;
	TSharedPtr<FUICommandInfo> AllowAlways;
	TSharedPtr<FUICommandInfo> RefuseQuestion;
	TSharedPtr<FUICommandInfo> Permissions;
	TSharedPtr<FUICommandInfo> SendAgain;
	TSharedPtr<FUICommandInfo> EditLast;
	TSharedPtr<FUICommandInfo> Keys;
	TSharedPtr<FUICommandInfo> FirstSteps;
	TSharedPtr<FUICommandInfo> UserGuide;
	TSharedPtr<FUICommandInfo> About;

private:
	// One for each menu.
	void RegisterFileCommands();
	void RegisterEditCommands();
	void RegisterAgentCommands();
	void RegisterWindowCommands();
};
