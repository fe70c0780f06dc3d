#pragma once

#include "CoreMinimal.h"
#include "DesktopOptions.h"
#include "Host/HostWindow.h"
#include "ScriptRunner.h"

class FChatViewModel;
class FDraftKeeper;
class FHostIniStore;
class FOutputLog;
class SEditorFrame;

/** The program: makes the window, loads the module as an editor would, opens its tab and runs frames. */
class FDesktopProgram : private IScriptHost
{
public:
	explicit FDesktopProgram(const FDesktopOptions& InOptions);
	virtual ~FDesktopProgram() override;

	/** Runs to the end. Returns the exit code; what went wrong was told on standard error. */
	int32 Run();

private:
	// IScriptHost
	virtual TSharedPtr<const FChatViewModel> GetViewModel() const override;
	virtual void InvokeTab() override;
	virtual void CloseTab() override;
	virtual void FocusPrompt() override;
	virtual bool WriteDump(const FString& File) override;
	virtual bool WriteScreenshot(const FString& File) override;

	/** Reads the whole script, so that a wrong line is told before anything happens. */
	bool LoadScript();
	int32 RunScript();
	/** Console variables named on the command line; false after telling what is wrong. */
	bool SetVariables() const;
	bool SetUpFolders();
	/** Settings, and the release file that says whether this version may be used. */
	void SetUpServices();
	bool SetUpWindow();
	bool LoadModule();
	/** Starts the code index; a session with a user builds it in the background when there is none. */
	void StartCodeIndex();
	void OpenTab();
	int32 RunActions();
	int32 RunWindow();
	int32 RunLines();
	void ClearPrompt();
	/** Types a text into the tab's own box, sends it and waits for the end of the turn. False after telling why. */
	bool Answer(const FString& Prompt);
	bool WriteOutputs();
	/** Runs frames until the test holds; false when the time is over or the program is to end. */
	bool RunFramesUntil(TFunctionRef<bool()> Test, double Seconds);
	int32 Fail(const FString& Sentence) const;

	FDesktopOptions Options;
	/** The folder with the plug-in's description and resources. */
	FString HomeFolder;
	TSharedPtr<IHostWindow> Window;
	/** From the first line of the program on. */
	TSharedPtr<FOutputLog> Log;
	TSharedPtr<SEditorFrame> Frame;
	TUniquePtr<FScriptRunner> Script;
	/** Null in runs without a user, who would find a prompt that was not theirs. */
	TUniquePtr<FDraftKeeper> Draft;
	TSharedPtr<FHostIniStore> Settings;
	bool bScriptRuns = false;
	bool bHasDisplay = false;
};
