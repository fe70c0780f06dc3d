#pragma once

#include "CoreMinimal.h"
#include "DesktopOptions.h"
#include "PromptBox.h"
#include "ScriptRunner.h"

class FChatViewModel;
class FConversationPrinter;
class FDesktopSession;

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
	virtual void FocusPrompt() override { FPromptBox::Focus(); }
	virtual bool WriteDump(const FString& File) override;
	virtual bool WriteScreenshot(const FString& File) override;

	/** Reads the whole script, so that a wrong line is told before anything happens. */
	bool LoadScript();
	int32 RunScript();
	/** Console variables named on the command line; false after telling what is wrong. */
	bool SetVariables() const;
	int32 RunActions();
	int32 RunWindow();
	int32 RunLines();
	/** Types a prompt into the tab's own box and sends it. Empty, or why it was not taken. */
	FString SendPrompt(const FString& Prompt, const FChatViewModel& ViewModel, FConversationPrinter& Printer);
	/** Sends a prompt, prints what comes and waits for the end of the turn. Empty, or why it did not do what was asked. */
	FString Answer(const FString& Prompt);
	bool WriteOutputs();
	/** Runs frames until the test holds; false when the time is over or the program is to end. */
	bool RunFramesUntil(TFunctionRef<bool()> Test, double Seconds);
	int32 Fail(const FString& Sentence) const;

	FDesktopOptions Options;
	TUniquePtr<FScriptRunner> Script;
	TUniquePtr<FDesktopSession> Session;
	bool bScriptRuns = false;
	/** Why the run fails, printed when all else is: who starts programs looks at the last line. */
	FString Failure;
};
