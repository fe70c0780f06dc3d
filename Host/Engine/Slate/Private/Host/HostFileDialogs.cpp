#include "Host/HostFileDialogs.h"

#include "Containers/StringConv.h"
#include "Framework/Application/SlateApplication.h"
#include "Host/HostDialogs.h"
#include "Host/SSaveDialog.h"
#include "Misc/Paths.h"
#include "Widgets/SWindow.h"

#include <cstdio>

// Save dialogs, answered in the same order as message dialogs. Without anybody to ask the answer is to cancel.

namespace
{
	constexpr double SaveDialogWidth = 640.0;
	constexpr double SaveDialogMargin = 24.0;
	constexpr float SaveListHeight = 260.0f;
	constexpr float MinSaveListHeight = 80.0f;
	/** What the dialog needs beside its list, title bar included. */
	constexpr float SaveDialogRest = 320.0f;

	struct FSaveEntry
	{
		FString Title;
		bool bChoosesFolder = false;
		TSharedPtr<SWindow> Window;
		TSharedPtr<SSaveDialog> Widget;
		TOptional<FString> Chosen;
	};

	struct FSaveDialogState
	{
		TArray<TSharedRef<FSaveEntry>> Open;
		TArray<FString> QueuedAnswers;
	};

	FSaveDialogState& GetSaveDialogState()
	{
		static FSaveDialogState State;
		return State;
	}

	bool CanShowSaveDialog()
	{
		if (!FSlateApplication::IsInitialized() || FSlateApplication::Get().IsExitRequested())
		{
			return false;
		}
		return !FSlateApplication::Get().GetWindow().IsHeadless() || FHostDialogs::IsAnswering();
	}

	/** A window smaller than the dialog gets a smaller dialog. */
	void FitSaveDialog(double& OutWidth, float& OutListHeight)
	{
		const double Scale = FMath::Max(static_cast<double>(SWidget::GetLayoutScale()), 0.1);
		const FIntPoint Pixels = FSlateApplication::Get().GetWindow().GetPixelSize();
		OutWidth = FMath::Min(SaveDialogWidth, Pixels.X / Scale - 2.0 * SaveDialogMargin);
		OutListHeight = FMath::Clamp(static_cast<float>(Pixels.Y / Scale) - SaveDialogRest, MinSaveListHeight, SaveListHeight);
	}
}

bool FHostFileDialogs::AskForSaveFile(const FHostSaveDialog& Dialog, FString& OutFile)
{
	OutFile.Reset();
	FSaveDialogState& State = GetSaveDialogState();
	FHostSaveDialog Asked = Dialog;
	Asked.Folder =
		FSaveTarget::Collapse(FPaths::IsRelative(Dialog.Folder) ? FPaths::ConvertRelativePathToFull(Dialog.Folder) : Dialog.Folder);
	if (State.QueuedAnswers.Num() > 0)
	{
		const FString Path = State.QueuedAnswers[0];
		State.QueuedAnswers.RemoveAt(0);
		OutFile = Path.IsEmpty() || Path.StartsWith(TEXT("/")) ? Path : FSaveTarget::Join(Asked.Folder, Path);
		return !OutFile.IsEmpty();
	}
	if (!CanShowSaveDialog())
	{
		const FString Line = FString::Printf(TEXT("Nobody to ask, taking \"Cancel\": %s"), *Dialog.Title);
		std::fprintf(stderr, "%s\n", FTCHARToUTF8(FStringView(Line)).Get());
		return false;
	}
	double Width = 0.0;
	float ListHeight = 0.0f;
	FitSaveDialog(Width, ListHeight);
	const TSharedRef<FSaveEntry> Entry = MakeShared<FSaveEntry>();
	const TWeakPtr<FSaveEntry> WeakEntry = Entry;
	const auto Close = [WeakEntry](const TOptional<FString>& Chosen)
	{
		if (const TSharedPtr<FSaveEntry> Pinned = WeakEntry.Pin())
		{
			Pinned->Chosen = Chosen;
			Pinned->Window->RequestDestroyWindow();
		}
	};
	Entry->Title = Dialog.Title;
	Entry->bChoosesFolder = Dialog.bChoosesFolder;
	// clang-format off
	Entry->Window = SNew(SWindow)
		.Title(FText::FromString(Dialog.Title))
		.ClientSize(FVector2D(Width, 0.0))
		.SizingRule(ESizingRule::Autosized)
		.SupportsMinimize(false)
		.SupportsMaximize(false)
		[
			SAssignNew(Entry->Widget, SSaveDialog, Asked)
			.ListHeight(ListHeight)
			.OnChosen_Lambda([Close](const FString& Path) { Close(TOptional<FString>(Path)); })
			.OnCancelled_Lambda([Close]() { Close(TOptional<FString>()); })
		];
	// clang-format on
	State.Open.Add(Entry);
	FSlateApplication::Get().AddModalWindow(Entry->Window.ToSharedRef(), nullptr);
	State.Open.Remove(Entry);
	OutFile = Entry->Chosen.Get(FString());
	return Entry->Chosen.IsSet();
}

bool FHostFileDialogs::AskForFolder(const FString& Title, const FString& Folder, FString& OutFolder)
{
	FHostSaveDialog Dialog;
	Dialog.Title = Title;
	Dialog.Folder = Folder;
	Dialog.bChoosesFolder = true;
	return AskForSaveFile(Dialog, OutFolder);
}

void FHostFileDialogs::QueueAnswer(const FString& Path)
{
	GetSaveDialogState().QueuedAnswers.Add(Path);
}

TOptional<FHostOpenSaveDialog> FHostFileDialogs::GetOpen()
{
	const FSaveDialogState& State = GetSaveDialogState();
	if (State.Open.IsEmpty())
	{
		return TOptional<FHostOpenSaveDialog>();
	}
	const FSaveEntry& Entry = State.Open.Last().Get();
	FHostOpenSaveDialog Open;
	Open.Title = Entry.Title;
	Open.Folder = Entry.Widget->GetFolder();
	Open.Name = Entry.Widget->GetName();
	Open.Problem = Entry.Widget->GetProblem();
	Open.bChoosesFolder = Entry.bChoosesFolder;
	return Open;
}

FString FHostFileDialogs::AnswerOpen(const FString& Path)
{
	const FSaveDialogState& State = GetSaveDialogState();
	if (State.Open.IsEmpty())
	{
		return TEXT("No save dialog is open.");
	}
	const TSharedRef<FSaveEntry> Entry = State.Open.Last();
	Entry->Widget->SetName(Path);
	Entry->Widget->Accept(true);
	if (Entry->Chosen.IsSet())
	{
		return FString();
	}
	const FString& Problem = Entry->Widget->GetProblem();
	return Problem.IsEmpty() ? FString::Printf(TEXT("\"%s\" is a folder."), *Path) : Problem;
}

bool FHostFileDialogs::PressOpen(const FString& ButtonName)
{
	const FSaveDialogState& State = GetSaveDialogState();
	if (State.Open.IsEmpty())
	{
		return false;
	}
	const TSharedRef<FSaveEntry> Entry = State.Open.Last();
	if (ButtonName == TEXT("Cancel"))
	{
		Entry->Window->RequestDestroyWindow();
		return true;
	}
	if (ButtonName == (Entry->bChoosesFolder ? TEXT("Choose") : TEXT("Save")))
	{
		Entry->Widget->Accept(false);
		return true;
	}
	return false;
}
