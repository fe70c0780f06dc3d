#include "ScriptRunner.h"

#include "ConversationPrinter.h"
#include "Framework/Application/SlateApplication.h"
#include "HAL/PlatformTime.h"
#include "Host/HostDialogs.h"
#include "Host/HostFileDialogs.h"
#include "Host/HostInput.h"
#include "Host/HostProgress.h"
#include "Host/HostTasks.h"
#include "Host/UpdateGateControl.h"
#include "StateWords.h"
#include "Environment.h"
#include "ViewModels/ChatViewModel.h"

namespace
{
	/** Two equal pictures so far apart mean that nothing moves. */
	constexpr double StillSeconds = 0.5;
	/** A caret that blinks shows the same again within this time; a picture that does not come back is an old one. */
	constexpr double PictureSeconds = 1.2;
	/** A turn that takes longer than this counts for no more of the time in which nothing moved. */
	constexpr double MaxTurnSeconds = 0.05;
	constexpr int32 DragMoves = 8;
	/** Until what was scrolled into view stands there. */
	constexpr int32 ScrollFrames = 3;

	/** Where events of the platform enter: what a script does goes the whole way that a user's hand would go. */
	IHostMessageHandler& GetScriptInput()
	{
		return FSlateApplication::Get().GetMessageHandler();
	}

	/** A chord that has opened a dialog is still under way, while a hand has long let go of it. */
	void LetGoOfModifiers()
	{
		const FModifierKeysState Held = FSlateApplication::Get().GetModifierKeys();
		if (Held.IsControlDown() || Held.IsAltDown())
		{
			GetScriptInput().OnKeyUp(Held.IsControlDown() ? EKeys::LeftControl : EKeys::LeftAlt, FModifierKeysState());
		}
	}

	/** Window content, popup, toast or dialog: widgets of the same layer have the same root. */
	TSharedPtr<SWidget> GetLayerRoot(TSharedPtr<SWidget> Widget)
	{
		while (Widget && Widget->GetParentWidget())
		{
			Widget = Widget->GetParentWidget();
		}
		return Widget;
	}
}

FScriptRunner::FScriptRunner(const FString& InName, TArray<FScriptStep>&& InSteps, IScriptHost& InHost)
	: Name(InName)
	, Steps(MoveTemp(InSteps))
	, Host(InHost)
{
}

void FScriptRunner::Fail(const FScriptStep& Step, const FString& Sentence)
{
	// As compilers say it, so that editors find the line.
	Error = FString::Printf(TEXT("script %s:%d: %s"), *Name, Step.Line, *Sentence);
	Finish();
}

void FScriptRunner::Finish()
{
	Pending.Reset();
	bFinished = true;
	// The loop of a dialog would go on without anybody to answer it.
	if (!Error.IsEmpty() || FSlateApplication::Get().GetActiveModalWindow())
	{
		FSlateApplication::Get().RequestExit();
	}
}

void FScriptRunner::OnFrame()
{
	// What the program waits for itself, a script waits for, too.
	if (bFinished || FHostProgress::IsShown())
	{
		return;
	}
	// 1. What a step still has to do comes before the next step: press, moves, release, a frame each.
	if (Pending.Num() > 0)
	{
		// Taken out first: it may open a dialog, whose loop comes back here.
		const TFunction<void()> Action = MoveTemp(Pending[0]);
		Pending.RemoveAt(0);
		FSlateApplication::Get().RequestFrame();
		Action();
		return;
	}
	// 2. Frames that a "tick" lets pass.
	if (FramesLeft > 0)
	{
		--FramesLeft;
		return;
	}
	// 3. A dialog holds the program up in a loop of its own, so it is dealt with before steps go on: by one of them, or by No.
	const int32 OpenDialogs = CountOpenDialogs();
	const bool bJustOpened = OpenDialogs > SeenDialogs;
	SeenDialogs = OpenDialogs;
	if (bJustOpened)
	{
		// The frame that follows lays it out; before that nothing in it can be found.
		FSlateApplication::Get().RequestFrame();
		return;
	}
	if (OpenDialogs > 0 && !IsDialogAnswered())
	{
		DismissDialog();
		return;
	}
	// 4. The next step. A wait stays the next one until it is over.
	if (Next >= Steps.Num())
	{
		Finish();
		return;
	}
	const FScriptStep& Step = Steps[Next];
	if (Step.Verb == EScriptVerb::WaitIdle || Step.Verb == EScriptVerb::WaitState)
	{
		Next += HasWaited(Step) ? 1 : 0;
		return;
	}
	++Next;
	// What a step does is on screen before the next one. Steps that wait bring no frame, so that they see what a user would.
	if (Step.Verb != EScriptVerb::Tick)
	{
		FSlateApplication::Get().RequestFrame();
	}
	Begin(Step);
}

void FScriptRunner::Begin(const FScriptStep& Step)
{
	switch (Step.Verb)
	{
	case EScriptVerb::Type:
		LetGoOfModifiers();
		HostInput::Type(Step.Text);
		break;
	case EScriptVerb::Key:
		HostInput::PressKey(Step.Key, Step.Modifiers);
		break;
	case EScriptVerb::Click:
	case EScriptVerb::RightClick:
	case EScriptVerb::Move:
	case EScriptVerb::Drag:
	case EScriptVerb::Scroll:
		Point(Step, true);
		break;
	case EScriptVerb::Tick:
		// This frame is the first.
		FramesLeft = static_cast<int64>(Step.X) - 1;
		break;
	case EScriptVerb::Resize:
		FSlateApplication::Get().GetWindow().Resize(FIntPoint(static_cast<int32>(Step.X), static_cast<int32>(Step.Y)));
		break;
	case EScriptVerb::Answer:
	case EScriptVerb::AnswerFile:
		AnswerDialog(Step);
		break;
	case EScriptVerb::Update:
		Velmora::FUpdateGateControl::SetStateByWord(
			Step.Text, Step.X < 0.0 ? TOptional<int32>() : TOptional<int32>(static_cast<int32>(Step.X)));
		break;
	case EScriptVerb::Dump:
	case EScriptVerb::Screenshot:
		if (!(Step.Verb == EScriptVerb::Dump ? Host.WriteDump(Step.Text) : Host.WriteScreenshot(Step.Text)))
		{
			Fail(Step, FString::Printf(TEXT("The file \"%s\" could not be written."), *Step.Text));
		}
		break;
	case EScriptVerb::CloseTab:
		Host.CloseTab();
		break;
	case EScriptVerb::OpenTab:
		Host.InvokeTab();
		// The box takes the keyboard once the tab has been laid out.
		Pending.Add([this]() { Host.FocusPrompt(); });
		break;
	case EScriptVerb::Quit:
		Finish();
		FSlateApplication::Get().RequestExit();
		break;
	case EScriptVerb::WaitIdle:
	case EScriptVerb::WaitState:
		break;
	}
}

void FScriptRunner::Point(const FScriptStep& Step, bool bMayScroll)
{
	// 1. A place needs no widget.
	if (const TOptional<FVector2D> Place = FScriptTarget::GetPlace(Step.Text, FSlateApplication::Get().GetWindow().GetPixelSize()))
	{
		PointAt(Step, Place.GetValue());
		return;
	}
	FScriptTarget Target;
	// 2. A widget that is scrolled away is brought into view first, as a user would do without a word.
	FString Complaint = FScriptTarget::Find(Step.Text, Target.Widget);
	if (Complaint.IsEmpty() && bMayScroll && !FScriptTarget::GetVisiblePoint(*Target.Widget).IsSet() &&
		FScriptTarget::BringIntoView(Target.Widget.ToSharedRef()))
	{
		// One frame scrolls, the next has everything in its place; a box within another one has its own turn.
		for (int32 Frame = 0; Frame < ScrollFrames; ++Frame)
		{
			Pending.Add([]() {});
		}
		Pending.Add([this, &Step]() { Point(Step, false); });
		return;
	}
	// 3. What lies over it would take the click.
	if (Complaint.IsEmpty())
	{
		Complaint = FScriptTarget::Reach(Step.Text, Target);
	}
	if (!Complaint.IsEmpty())
	{
		Fail(Step, Complaint);
		return;
	}
	PointAt(Step, Target.Point);
}

void FScriptRunner::PointAt(const FScriptStep& Step, const FVector2D& From)
{
	const FModifierKeysState None;
	// The pointer is there before it presses: what appears on hover takes the press, as it would from a hand.
	GetScriptInput().OnMouseMove(From, None);
	if (Step.Verb == EScriptVerb::Scroll)
	{
		GetScriptInput().OnMouseWheel(FVector2D(0.0, Step.X), From, None);
	}
	if (Step.Verb != EScriptVerb::Click && Step.Verb != EScriptVerb::RightClick && Step.Verb != EScriptVerb::Drag)
	{
		return;
	}
	const FKey Button = Step.Verb == EScriptVerb::RightClick ? EKeys::RightMouseButton : EKeys::LeftMouseButton;
	Pending.Add([From, Button]() { GetScriptInput().OnMouseDown(Button, From, FModifierKeysState()); });
	// A drag in one move would be none: those who wait for a distance see it pass in pieces.
	const FVector2D To = Step.Verb == EScriptVerb::Drag ? From + FVector2D(Step.X, Step.Y) : From;
	for (int32 Move = 1; Step.Verb == EScriptVerb::Drag && Move <= DragMoves; ++Move)
	{
		const FVector2D Position = From + (To - From) * (static_cast<double>(Move) / DragMoves);
		Pending.Add([Position]() { GetScriptInput().OnMouseMove(Position, FModifierKeysState()); });
	}
	Pending.Add([To, Button]() { GetScriptInput().OnMouseUp(Button, To, FModifierKeysState()); });
}

bool FScriptRunner::HasStoodStill(double Now)
{
	// Elements, not pixels: they are there anyway, and a comparison of them is cheap enough for every frame.
	const TArray<FSlateDrawElement>& Current = FSlateApplication::Get().GetLastElements().GetElements();
	// What the agent has reported enters the list and fades in with the frames that follow. One slow frame is a frame all the same,
	// so it must not pass for the time that these would have had.
	const double Passed = FMath::Min(Now - LastLook, MaxTurnSeconds);
	LastLook = Now;
	PictureAge += PictureAge >= 0.0 ? Passed : 0.0;
	if (PictureAge >= 0.0 && PictureAge < StillSeconds)
	{
		return false;
	}
	if (PictureAge >= 0.0 && Picture == Current)
	{
		return true;
	}
	if (PictureAge < 0.0 || PictureAge > PictureSeconds)
	{
		Picture = Current;
		PictureAge = 0.0;
	}
	return false;
}

bool FScriptRunner::HasWaited(const FScriptStep& Step)
{
	const double Now = FPlatformTime::Seconds();
	// The time runs from the first look, not from the step before: that may have opened a dialog.
	if (WaitStart < 0.0)
	{
		WaitStart = Now;
		LastLook = Now;
		PictureAge = -1.0;
	}
	const TSharedPtr<const FChatViewModel> ViewModel = Host.GetViewModel();
	const FString State = FStateWords::Get(ViewModel ? ViewModel->GetState() : Velmora::EConversationState::NotStarted);
	bool bReached = false;
	FString Sentence;
	if (Step.Verb == EScriptVerb::WaitState)
	{
		bReached = State.Equals(Step.Text, ESearchCase::IgnoreCase);
		Sentence = FString::Printf(TEXT("The state is not %s, but %s after %g seconds."), *Step.Text, *State, Step.X);
	}
	else if ((ViewModel && ViewModel->IsBusy()) || FHostTasks::HasPending())
	{
		PictureAge = -1.0;
		// What the agent still does will change the picture, so a picture from before proves nothing.
		Sentence = FString::Printf(TEXT("The agent is still busy after %g seconds (%s)."), Step.X, *State);
	}
	else
	{
		bReached = HasStoodStill(Now);
		Sentence = FString::Printf(TEXT("The picture still changes after %g seconds."), Step.X);
	}
	if (!bReached && Now - WaitStart < Step.X)
	{
		return false;
	}
	// Over, well or badly: the next wait begins anew.
	WaitStart = -1.0;
	Picture.Reset();
	if (!bReached)
	{
		Fail(Step, Sentence);
	}
	return true;
}

bool FScriptRunner::IsDialogAnswered() const
{
	// A message may be asked over a save dialog, not the other way round.
	const bool bIsMessage = FHostDialogs::GetOpenDialogs().Num() > 0;
	for (int32 Index = Next; Index < Steps.Num(); ++Index)
	{
		switch (Steps[Index].Verb)
		{
		case EScriptVerb::Answer:
		case EScriptVerb::Key:
			return true;
		case EScriptVerb::AnswerFile:
		case EScriptVerb::Type:
			return !bIsMessage;
		case EScriptVerb::Click:
		case EScriptVerb::RightClick:
		case EScriptVerb::Scroll:
		{
			// A click counts as an answer if it hits the dialog itself; what lies below it cannot be clicked.
			TSharedPtr<SWidget> Widget;
			const TSharedPtr<SWindow> Dialog = FSlateApplication::Get().GetActiveModalWindow();
			const FIntPoint Size = FSlateApplication::Get().GetWindow().GetPixelSize();
			if (FScriptTarget::GetPlace(Steps[Index].Text, Size).IsSet())
			{
				// Wherever it is, the dialog takes it, or takes it away from what lies below.
				return Dialog.IsValid();
			}
			return Dialog && FScriptTarget::Find(Steps[Index].Text, Widget).IsEmpty() &&
				GetLayerRoot(Widget) == GetLayerRoot(Dialog->GetContent());
		}
			// Looking at a dialog answers nothing; who answers it comes later.
		case EScriptVerb::Move:
		case EScriptVerb::WaitIdle:
		case EScriptVerb::WaitState:
		case EScriptVerb::Tick:
		case EScriptVerb::Resize:
		case EScriptVerb::Dump:
		case EScriptVerb::Screenshot:
		case EScriptVerb::Update:
			continue;
		case EScriptVerb::Drag:
		case EScriptVerb::CloseTab:
		case EScriptVerb::OpenTab:
		case EScriptVerb::Quit:
			return false;
		}
	}
	return false;
}

int32 FScriptRunner::CountOpenDialogs()
{
	// The save dialog is the host's own and not among the messages.
	return FHostDialogs::GetOpenDialogs().Num() + (FHostFileDialogs::GetOpen().IsSet() ? 1 : 0);
}

void FScriptRunner::AnswerDialog(const FScriptStep& Step)
{
	const TArray<FHostOpenDialog> Messages = FHostDialogs::GetOpenDialogs();
	const bool bIsFile = Messages.IsEmpty() && FHostFileDialogs::GetOpen().IsSet();
	// A replay saves nothing.
	Host.NoteAnswer(Step.Verb == EScriptVerb::AnswerFile ? FString(TEXT("Cancel")) : Step.Text);
	if (Step.Verb == EScriptVerb::AnswerFile)
	{
		const FString Complaint =
			bIsFile ? FHostFileDialogs::AnswerOpen(MakeAbsolute(Step.Text)) : FString(TEXT("No save dialog is open."));
		if (!Complaint.IsEmpty())
		{
			Fail(Step, Complaint);
		}
	}
	else if (bIsFile)
	{
		if (!FHostFileDialogs::PressOpen(Step.Text))
		{
			const TCHAR* const Accept = FHostFileDialogs::GetOpen()->bChoosesFolder ? TEXT("Choose") : TEXT("Save");
			Fail(Step, FString::Printf(TEXT("The dialog has no button \"%s\", but: %s, Cancel."), *Step.Text, Accept));
		}
	}
	else if (Messages.IsEmpty())
	{
		Fail(Step, TEXT("No dialog is open."));
	}
	else if (!FHostDialogs::AnswerOpenDialog(Step.Text))
	{
		Fail(Step,
			FString::Printf(
				TEXT("The dialog has no button \"%s\", but: %s."), *Step.Text, *FString::Join(Messages.Last().Buttons, TEXT(", "))));
	}
}

void FScriptRunner::DismissDialog()
{
	if (FHostDialogs::GetOpenDialogs().IsEmpty())
	{
		const FString Title = FHostFileDialogs::GetOpen().Get(FHostOpenSaveDialog()).Title;
		Host.NoteAnswer(TEXT("Cancel"));
		FHostFileDialogs::PressOpen(TEXT("Cancel"));
		PrintToStandardError(FString::Printf(TEXT("velmora: script %s: no step answers \"%s\", so it takes Cancel.\n"), *Name, *Title));
		return;
	}
	const FHostOpenDialog Dialog = FHostDialogs::GetOpenDialogs().Last();
	// The loop of the dialog ends later, so nothing has come of it yet.
	const FString Button = FHostDialogs::DismissOpenDialog();
	Host.NoteAnswer(Button);
	PrintToStandardError(FString::Printf(
		TEXT("velmora: script %s: no step answers \"%s: %s\", so it takes %s.\n"), *Name, *Dialog.Title, *Dialog.Message, *Button));
}
