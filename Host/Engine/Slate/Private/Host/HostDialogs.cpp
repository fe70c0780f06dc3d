#include "Host/HostDialogs.h"

#include "Containers/StringConv.h"
#include "Framework/Application/SlateApplication.h"
#include "Host/HostProgressWindow.h"
#include "Host/SMessageDialog.h"
#include "Misc/Optional.h"

#include <cstdio>

// Message dialogs of the program. Three ways of getting an answer, in this order: one that a test or the command line
// has queued for such buttons, the harmless one where nobody can be asked (no window, a headless one, a program about to
// end), a modal window with the user in front of it.

namespace
{
	/** Width of a message dialog's body: 520 less the frame's line on both sides. */
	constexpr double DialogBodyWidth = 518.0;

	/** A dialog on screen. */
	struct FDialogEntry
	{
		FHostMessageDialog Dialog;
		TSharedPtr<SWindow> Window;
		TOptional<EAppReturnType::Type> Answer;

		void SetAnswer(EAppReturnType::Type InAnswer)
		{
			Answer = InAnswer;
			Window->RequestDestroyWindow();
		}
	};

	struct FDialogState
	{
		TArray<TSharedRef<FDialogEntry>> Open;
		TArray<FString> QueuedAnswers;
		bool bAnswering = false;
	};

	FDialogState& GetDialogState()
	{
		static FDialogState State;
		return State;
	}

	TOptional<EAppReturnType::Type> FindAnswer(EAppMsgType::Type Type, const FString& ButtonName)
	{
		for (const EAppReturnType::Type Answer : SMessageDialog::GetButtons(Type))
		{
			// Names and labels ignore case by ==.
			if (ButtonName == LexToString(Answer) || ButtonName == SMessageDialog::GetLabel(Answer).ToString())
			{
				return Answer;
			}
		}
		return TOptional<EAppReturnType::Type>();
	}

	EAppReturnType::Type TakeDefaultAnswer(const FHostMessageDialog& Dialog)
	{
		const FString Title = Dialog.Title.IsEmpty() ? FString() : Dialog.Title.ToString() + TEXT(": ");
		const FString Line = FString::Printf(
			TEXT("Nobody to ask, taking \"%s\": %s%s"), LexToString(Dialog.DefaultAnswer), *Title, *Dialog.Message.ToString());
		std::fprintf(stderr, "%s\n", FTCHARToUTF8(FStringView(Line)).Get());
		return Dialog.DefaultAnswer;
	}

	// A queued answer serves the first dialog that has such a button.
	EAppReturnType::Type ShowMessageDialog(const FHostMessageDialog& Dialog)
	{
		FDialogState& State = GetDialogState();
		for (int32 Index = 0; Index < State.QueuedAnswers.Num(); ++Index)
		{
			const TOptional<EAppReturnType::Type> Answer = FindAnswer(Dialog.Type, State.QueuedAnswers[Index]);
			if (Answer.IsSet())
			{
				State.QueuedAnswers.RemoveAt(Index);
				return Answer.GetValue();
			}
		}
		if (!FSlateApplication::IsInitialized() || FSlateApplication::Get().IsExitRequested())
		{
			return TakeDefaultAnswer(Dialog);
		}
		FSlateApplication& Application = FSlateApplication::Get();
		if (Application.GetWindow().IsHeadless() && !State.bAnswering)
		{
			return TakeDefaultAnswer(Dialog);
		}
		const TSharedRef<FDialogEntry> Entry = MakeShared<FDialogEntry>();
		Entry->Dialog = Dialog;
		const TWeakPtr<FDialogEntry> WeakEntry = Entry;
		const auto OnAnswer = [WeakEntry](EAppReturnType::Type Answer)
		{
			if (const TSharedPtr<FDialogEntry> Pinned = WeakEntry.Pin())
			{
				Pinned->SetAnswer(Answer);
			}
		};
		// clang-format off
		Entry->Window = SNew(SWindow)
			.Title(Dialog.Title.IsEmpty() ? NSLOCTEXT("HostDialog", "Message", "Message") : Dialog.Title)
			.ClientSize(FVector2D(DialogBodyWidth, 0.0))
			.SizingRule(ESizingRule::Autosized)
			.SupportsMinimize(false)
			.SupportsMaximize(false)
			[
				SNew(SMessageDialog, Dialog)
				.OnAnswer_Lambda(OnAnswer)
			];
		// clang-format on
		State.Open.Add(Entry);
		Application.AddModalWindow(Entry->Window.ToSharedRef(), nullptr);
		State.Open.Remove(Entry);
		return Entry->Answer.Get(SMessageDialog::GetEscapeAnswer(Dialog.Type));
	}
}

void FHostDialogs::Install()
{
	FHostServices::SetMessageDialogHook([](const FHostMessageDialog& Dialog) { return ShowMessageDialog(Dialog); });
	FHostProgressWindow::Install();
}

void FHostDialogs::Uninstall()
{
	FHostProgressWindow::Uninstall();
	FHostServices::SetMessageDialogHook(nullptr);
	GetDialogState().QueuedAnswers.Reset();
	GetDialogState().bAnswering = false;
}

TArray<FHostOpenDialog> FHostDialogs::GetOpenDialogs()
{
	TArray<FHostOpenDialog> Result;
	for (const TSharedRef<FDialogEntry>& Entry : GetDialogState().Open)
	{
		FHostOpenDialog& Open = Result.AddDefaulted_GetRef();
		Open.Title = Entry->Window->GetTitle().ToString();
		Open.Message = Entry->Dialog.Message.ToString();
		for (const EAppReturnType::Type Answer : SMessageDialog::GetButtons(Entry->Dialog.Type))
		{
			Open.Buttons.Add(SMessageDialog::GetLabel(Answer).ToString());
		}
	}
	return Result;
}

bool FHostDialogs::AnswerOpenDialog(const FString& ButtonName)
{
	FDialogState& State = GetDialogState();
	if (State.Open.IsEmpty())
	{
		return false;
	}
	const TSharedRef<FDialogEntry> Entry = State.Open.Last();
	const TOptional<EAppReturnType::Type> Answer = FindAnswer(Entry->Dialog.Type, ButtonName);
	if (!Answer.IsSet())
	{
		return false;
	}
	Entry->SetAnswer(Answer.GetValue());
	return true;
}

FString FHostDialogs::DismissOpenDialog()
{
	FDialogState& State = GetDialogState();
	if (State.Open.IsEmpty())
	{
		return FString();
	}
	const TSharedRef<FDialogEntry> Entry = State.Open.Last();
	const EAppReturnType::Type Answer = SMessageDialog::GetEscapeAnswer(Entry->Dialog.Type);
	Entry->SetAnswer(Answer);
	return SMessageDialog::GetLabel(Answer).ToString();
}

void FHostDialogs::QueueAnswer(const FString& ButtonName)
{
	GetDialogState().QueuedAnswers.Add(ButtonName);
}

void FHostDialogs::SetAnswering(bool bInAnswering)
{
	GetDialogState().bAnswering = bInAnswering;
}

bool FHostDialogs::IsAnswering()
{
	return GetDialogState().bAnswering;
}
