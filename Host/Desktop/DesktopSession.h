#pragma once

#include "CoreMinimal.h"
#include "AccessSupport.h"
#include "DesktopOptions.h"
#include "Host/HostSession.h"
#include "PluginDescriptor.h"
#include "PrimarySelection.h"
#include "PromptFocus.h"
#include "SavedFileToast.h"

class FAgentPages;
class FKeysPage;
class FDraftKeeper;
class FHostIniStore;
class FOpenTabs;
class FOutputLog;
class SEditorFrame;

/**
 * Everything that the program runs on, in the order in which an editor comes up: folders, settings, window, services of the editor,
 * frame, module, code index, tab, draft. What was begun is ended in reverse order, also when the start fails half-way. Game thread.
 */
class FDesktopSession
{
public:
	FDesktopSession(const FDesktopOptions& InOptions, const TSharedRef<FOutputLog>& InLog);
	~FDesktopSession();
	FDesktopSession(const FDesktopSession&) = delete;
	FDesktopSession& operator=(const FDesktopSession&) = delete;

	/** @param OnFrame  Called before each turn of the loop. Empty when all is up; else the sentence why not. */
	FString Start(TFunction<void()> OnFrame);
	/** Somebody can look at the window and use it. */
	bool HasDisplay() const { return bHasDisplay; }
	IHostWindow& GetWindow() const { return Host->GetWindow(); }

private:
	FString SetUpFolders();
	/** Settings, and the release file that says whether this version may be used. */
	void SetUpSettings();
	TSharedPtr<IHostWindow> OpenWindow();
	/** Somebody works in the window, or the run is to be as if. */
	bool HasUser() const;
	/** Keys and zoom as the user left them. */
	void LoadUserView() const;
	void SetUpWindow();
	void SetUpEditor();
	void SetUpFrame();
	FString LoadModule();
	/** Starts the code index; a session with a user builds it in the background when there is none. */
	void StartCodeIndex();
	/** Who may be asked, and what need not be. */
	void SetAgentOptions() const;
	void OpenTab();
	/** A session with a user has the tabs open that were open. */
	void RestoreTabs();
	/** A session with a user puts back the prompt that was not sent. */
	void KeepDraft();

	const FDesktopOptions& Options;
	const TSharedRef<FOutputLog> Log;
	TFunction<void()> OnFrame;
	/** The folder with the plug-in's description and resources. */
	FString HomeFolder;
	FPluginDescriptor Plugin;
	/** What is to be said of where things are kept. */
	FString StoreNotice;
	bool bHasDisplay = false;
	TSharedPtr<FHostIniStore> Settings;
	TSharedPtr<SEditorFrame> Frame;
	TUniquePtr<FAgentPages> AgentPages;
	TUniquePtr<FKeysPage> KeysPage;
	FPromptFocus PromptFocus;
	FPrimarySelection PrimarySelection;
	FSavedFileToast SavedFileToast;
	/** As the draft below. */
	TUniquePtr<FOpenTabs> OpenTabs;
	FAccessSupport Access;
	/** Null in runs without a user, who would find a prompt that was not theirs. */
	TUniquePtr<FDraftKeeper> Draft;
	/** Last: what ends with it uses the others. */
	TUniquePtr<FHostSession> Host;
};
