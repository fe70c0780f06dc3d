#pragma once

#include "CoreMinimal.h"
#include "AccessSupport.h"
#include "DesktopOptions.h"
#include "Host/HostSession.h"
#include "PluginDescriptor.h"
#include "PrimarySelection.h"
#include "KeyboardPlace.h"
#include "PromptFocus.h"
#include "SavedFileToast.h"

#include <memory>

class FAgentPages;
class FKeysPage;
class FDraftKeeper;
class FHostIniStore;
class FOpenTabs;
class FOutputLog;
class FSessionRecorder;
class FSessionReplay;
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

	/** Writes this session down, or shows another one again; null for neither. Before Start. */
	void SetRecorder(const std::shared_ptr<FSessionRecorder>& InRecorder) { Recorder = InRecorder; }
	void SetReplay(const std::shared_ptr<FSessionReplay>& InReplay) { Replay = InReplay; }

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
	TSharedPtr<IHostWindow> OpenDesktopWindow(float Scale);
	/** The window as recorder or replay have it. */
	TSharedRef<IHostWindow> WrapWindow(const TSharedRef<IHostWindow>& Window);
	void RunHook();
	/** Somebody works in the window, or the run is to be as if. */
	bool HasUser() const;
	/** A frame is about to be run outside of the loop. */
	void BeginDirectFrame();
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
	std::shared_ptr<FSessionRecorder> Recorder;
	std::shared_ptr<FSessionReplay> Replay;
	TSharedPtr<FHostIniStore> Settings;
	TSharedPtr<SEditorFrame> Frame;
	TUniquePtr<FAgentPages> AgentPages;
	TUniquePtr<FKeysPage> KeysPage;
	FPromptFocus PromptFocus;
	FKeyboardPlace KeyboardPlace;
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
