#pragma once

#include "Framework/Commands/Commands.h"

/** The commands of the program's own menus. */
class FEditorFrameCommands : public TCommands<FEditorFrameCommands>
{
public:
	FEditorFrameCommands();

	virtual void RegisterCommands() override;

	TSharedPtr<FUICommandInfo> Exit;
	TSharedPtr<FUICommandInfo> Undo;
	TSharedPtr<FUICommandInfo> Redo;
	TSharedPtr<FUICommandInfo> Cut;
	TSharedPtr<FUICommandInfo> Copy;
	TSharedPtr<FUICommandInfo> Paste;
	TSharedPtr<FUICommandInfo> SelectAll;
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
	TSharedPtr<FUICommandInfo> UserGuide;
	TSharedPtr<FUICommandInfo> About;
};
