#pragma once

#include "CoreMinimal.h"
#include "DesktopOptions.h"
#include "PromptBox.h"
#include "ScriptRunner.h"

#include <memory>

class FChatViewModel;
class FConversationPrinter;
class FDesktopSession;
class FSessionRecorder;
class FSessionReplay;

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
	virtual void NoteAnswer(const FString& Button) override;

	/** Reads the whole script, so that a wrong line is told before anything happens. */
	bool LoadScript();
	int32 RunScript();
	/** Console variables named on the command line; false after telling what is wrong. */
	bool SetVariables() const;
	int32 RunActions();
	int32 RunWindow();
	int32 RunLines();
	/** Opens the recording that is to be shown, or the file of the one to be made. Empty, or what is wrong. */
	FString PrepareTape();
	int32 RunReplay();
	/** Does again what a script of the recording did without input. */
	void DoAgain(const std::string& Deed, const FString& Subject);
	/** Types a prompt into the tab's own box and sends it. Empty, or why it was not taken. */
	FString SendPrompt(const FString& Prompt, const FChatViewModel& ViewModel, FConversationPrinter& Printer);
	/** Sends a prompt, prints what comes and waits for the end of the turn. Empty, or why it did not do what was asked. */
	FString Answer(const FString& Prompt);
	bool WriteOutputs();
	/** The same of this very moment. */
	bool WriteOutputsNow();
	/** Runs frames until the test holds; false when the time is over or the program is to end. */
	bool RunFramesUntil(TFunctionRef<bool()> Test, double Seconds);
	int32 Fail(const FString& Sentence) const;

	FDesktopOptions Options;
	TUniquePtr<FScriptRunner> Script;
	/** Null where nothing is recorded or shown again. */
	std::shared_ptr<FSessionRecorder> Recorder;
	std::shared_ptr<FSessionReplay> Replay;
	TUniquePtr<FDesktopSession> Session;
	bool bScriptRuns = false;
	/** Why the run fails, printed when all else is: who starts programs looks at the last line. */
	FString Failure;
};
