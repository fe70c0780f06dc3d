#pragma once

#include "CoreMinimal.h"
#include "Rendering/DrawElements.h"
#include "ScriptFile.h"
#include "ScriptTarget.h"

class FChatViewModel;

/** What a script needs of the program that runs it. */
class IScriptHost
{
public:
	virtual ~IScriptHost() = default;
	/** Null while the tab is closed. */
	virtual TSharedPtr<const FChatViewModel> GetViewModel() const = 0;
	virtual void InvokeTab() = 0;
	virtual void CloseTab() = 0;
	virtual void FocusPrompt() = 0;
	/** Both answer whether the file was written. */
	virtual bool WriteDump(const FString& File) = 0;
	virtual bool WriteScreenshot(const FString& File) = 0;
	/** An open dialog is about to be answered by that button, without a hand. */
	virtual void NoteAnswer(const FString& Button) {}
};

/**
 * Runs a script from inside the frame loop, nested loops of dialogs too: one thing a frame, so that every step sees what
 * the one before has done. Game thread.
 */
class FScriptRunner
{
public:
	/** @param InName  The script's file as it is told in messages. */
	FScriptRunner(const FString& InName, TArray<FScriptStep>&& InSteps, IScriptHost& InHost);

	/** Before each frame. May be called again from inside itself, by the loop of a dialog that a step has opened. */
	void OnFrame();
	/** At the end, or after an error. */
	bool IsFinished() const { return bFinished; }
	/** "script FILE:LINE: what was wrong"; empty when all went well. */
	const FString& GetError() const { return Error; }

private:
	void Begin(const FScriptStep& Step);
	void Point(const FScriptStep& Step, bool bMayScroll);
	void PointAt(const FScriptStep& Step, const FVector2D& From);
	/** True when the wait is over, well or badly. */
	bool HasWaited(const FScriptStep& Step);
	bool HasStoodStill(double Now);
	/** Message dialogs and save dialogs. */
	static int32 CountOpenDialogs();
	/** Whether one of the next steps answers the open dialog, before anything else is done. */
	bool IsDialogAnswered() const;
	void AnswerDialog(const FScriptStep& Step);
	void DismissDialog();
	void Fail(const FScriptStep& Step, const FString& Sentence);
	void Finish();

	const FString Name;
	const TArray<FScriptStep> Steps;
	IScriptHost& Host;
	int32 Next = 0;
	/** What is still to be done of the step begun, one a frame. */
	TArray<TFunction<void()>> Pending;
	int64 FramesLeft = 0;
	int32 SeenDialogs = 0;
	/** When the wait under way began; negative when there is none. */
	double WaitStart = -1.0;
	double LastLook = 0.0;
	TArray<FSlateDrawElement> Picture;
	/** As far as frames had it, in seconds; negative when there is no picture. */
	double PictureAge = -1.0;
	bool bFinished = false;
	FString Error;
};
