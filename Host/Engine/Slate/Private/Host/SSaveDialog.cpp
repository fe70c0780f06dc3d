#include "Host/SSaveDialog.h"

#include "Framework/Application/SlateApplication.h"
#include "Host/HostServices.h"
#include "Widgets/Input/SEditableTextBox.h"

// What the save dialog does; its looks are in SSaveDialogLayout.cpp, and what a typed name means in FSaveTarget. Nothing
// is written here: the dialog makes folders that were asked for and hands the chosen path on. A refusal is a sentence
// below the name, and leaves what was typed.

namespace
{
	const TCHAR* const ParentEntryName = TEXT("..");
}

void SSaveDialog::ShowEntries()
{
	Entries.Reset();
	List->ClearSelection();
	if (!Folder.Equals(TEXT("/")))
	{
		Entries.Add(MakeShared<FHostFolderEntry>(FHostFolderEntry{ ParentEntryName, true }));
	}
	const int32 Fixed = Entries.Num();
	for (const FHostFolderEntry& Entry : Found)
	{
		if (Entry.bIsFolder || (!bChoosesFolder && Filter->Matches(Entry.Name)))
		{
			Entries.Add(MakeShared<FHostFolderEntry>(Entry));
		}
	}
	EmptyNote = Entries.Num() > Fixed ? FString()
		: bChoosesFolder			  ? FString(TEXT("There is no folder in this one."))
		: Found.Num() > 0			  ? FString(TEXT("No file here fits the type."))
									  : FString(TEXT("This folder is empty."));
	List->ScrollToTop();
	List->RequestListRefresh();
}

bool SSaveDialog::GoTo(const FString& NewFolder)
{
	FString Reason;
	TArray<FHostFolderEntry> NewFound;
	if (!HostListFolder(NewFolder, NewFound, Reason))
	{
		Problem = FString::Printf(TEXT("The folder \"%s\" cannot be opened: %s."), *NewFolder, *Reason);
		return false;
	}
	const FString Left = Folder;
	Folder = NewFolder;
	Found = MoveTemp(NewFound);
	Problem.Reset();
	ShowNewFolder(false);
	ShowEntries();
	ShowFolderPath();
	// On the way up the folder that was left is the one to go on from.
	const bool bWentUp = FSaveTarget::GetParent(Left).Equals(Folder);
	for (const FEntry& Entry : Entries)
	{
		if (bWentUp ? Entry->Name.Equals(FSaveTarget::GetLeaf(Left)) : Entry == Entries[0])
		{
			List->SetSelection(Entry);
			List->RequestScrollIntoView(Entry);
			break;
		}
	}
	return true;
}

void SSaveDialog::ShowFolderPath()
{
	FolderBox->SetText(FText::FromString(Folder));
	FolderBox->GoTo(ETextLocation::EndOfDocument);
	if (bChoosesFolder)
	{
		TakenName = Folder;
		TakenText = FolderBox->GetText().ToString();
	}
}

void SSaveDialog::GoUp()
{
	// A folder that is gone has a parent that may be there.
	FString Parent = FSaveTarget::GetParent(Folder);
	while (!Parent.Equals(TEXT("/")) && HostGetPathKind(Parent) == EHostPathKind::Missing)
	{
		Parent = FSaveTarget::GetParent(Parent);
	}
	GoTo(Parent);
}

void SSaveDialog::OpenEntry(FEntry Entry)
{
	if (!Entry)
	{
		return;
	}
	if (Entry->Name.Equals(ParentEntryName))
	{
		GoUp();
	}
	else if (Entry->bIsFolder)
	{
		GoTo(FSaveTarget::Join(Folder, Entry->Name));
	}
	else
	{
		SetName(Entry->Name);
		Accept(false);
	}
}

void SSaveDialog::OnEntryPicked(FEntry Entry, ESelectInfo::Type Info)
{
	if (Entry && !Entry->bIsFolder && !bChoosesFolder)
	{
		SetName(Entry->Name);
	}
}

void SSaveDialog::SetName(const FString& Name)
{
	GetAnswerBox().SetText(FText::FromString(Name));
	TakenName = Name;
	TakenText = GetAnswerBox().GetText().ToString();
	Problem.Reset();
}

FString SSaveDialog::GetName() const
{
	const FString Text = GetAnswerBox().GetText().ToString();
	return Text.Equals(TakenText) ? TakenName : Text;
}

bool SSaveDialog::AskToReplace(const FString& Path) const
{
	FHostMessageDialog Question;
	Question.Type = EAppMsgType::YesNo;
	Question.Category = EAppMsgCategory::Warning;
	Question.DefaultAnswer = EAppReturnType::No;
	Question.Title = NSLOCTEXT("HostSaveDialog", "ReplaceTitle", "Replace File");
	Question.Message =
		FText::Format(NSLOCTEXT("HostSaveDialog", "Replace", "The file \"{0}\" exists already.\n\nDo you want to replace it?"),
			FText::FromString(FSaveTarget::GetLeaf(Path)));
	return FHostServices::OpenMessageDialog(Question) == EAppReturnType::Yes;
}

// 1. What the name means. 2. A folder is gone into. 3. An existing file is asked about. 4. The folder around a new file
// is made.
void SSaveDialog::Accept(bool bReplaceWithoutAsking)
{
	if (bChoosesFolder)
	{
		return ChooseFolder();
	}
	FSaveTarget Target = FSaveTarget::Find(Folder, GetName());
	if (Target.Kind == FSaveTarget::EKind::NewFile)
	{
		Target = FSaveTarget::Find(Folder, Filter->AddEnding(GetName()));
	}
	Problem = Target.Problem;
	switch (Target.Kind)
	{
	case FSaveTarget::EKind::None:
		return;
	case FSaveTarget::EKind::Folder:
		if (GoTo(Target.Path))
		{
			SetName(SuggestedName);
			NameBox->SelectAllText();
		}
		return;
	case FSaveTarget::EKind::ExistingFile:
		if (!bReplaceWithoutAsking && !AskToReplace(Target.Path))
		{
			return;
		}
		break;
	case FSaveTarget::EKind::NewFile:
		break;
	}
	FString Reason;
	const FString Parent = FSaveTarget::GetParent(Target.Path);
	if (!HostMakeFolder(Parent, Reason))
	{
		Problem = FString::Printf(TEXT("The folder \"%s\" cannot be made: %s."), *Parent, *Reason);
		return;
	}
	const FOnSaveFileChosen Handler = ChosenHandler;
	Handler.ExecuteIfBound(Target.Path);
}

void SSaveDialog::ChooseFolder()
{
	const FSaveTarget Target = FSaveTarget::Find(Folder, GetName().IsEmpty() ? Folder : GetName() + TEXT("/"));
	Problem = Target.Problem;
	if (Target.Kind == FSaveTarget::EKind::Folder)
	{
		const FOnSaveFileChosen Handler = ChosenHandler;
		Handler.ExecuteIfBound(Target.Path);
	}
}

void SSaveDialog::OnNameCommitted(const FText& Text, ETextCommit::Type Type)
{
	if (Type == ETextCommit::OnEnter)
	{
		Accept(false);
	}
}

void SSaveDialog::OnFolderCommitted(const FText& Text, ETextCommit::Type Type)
{
	if (Type != ETextCommit::OnEnter)
	{
		return;
	}
	const FSaveTarget Target = FSaveTarget::Find(Folder, Text.ToString() + TEXT("/"));
	Problem = Target.Problem;
	if (Target.Kind == FSaveTarget::EKind::Folder)
	{
		GoTo(Target.Path);
	}
}

void SSaveDialog::OnFilterPicked(FFilter NewFilter, ESelectInfo::Type Info)
{
	Filter = NewFilter;
	ShowEntries();
}

void SSaveDialog::ShowNewFolder(bool bShow)
{
	if (bNewFolderShown == bShow)
	{
		return;
	}
	const bool bHadFocus = NewFolderBox->HasKeyboardFocus();
	bNewFolderShown = bShow;
	NewFolderBox->SetText(FText::GetEmpty());
	if (bShow || bHadFocus)
	{
		FSlateApplication::Get().SetKeyboardFocus(
			bShow ? StaticCastSharedPtr<SWidget>(NewFolderBox) : StaticCastSharedPtr<SWidget>(List), EFocusCause::SetDirectly);
	}
}

void SSaveDialog::MakeNewFolder()
{
	const FString Name = NewFolderBox->GetText().ToString();
	int32 Slash = INDEX_NONE;
	FString Reason;
	if (Name.TrimStartAndEnd().IsEmpty() || Name.Equals(TEXT(".")) || Name.Equals(TEXT("..")) || Name.FindChar(TEXT('/'), Slash))
	{
		Problem = Name.TrimStartAndEnd().IsEmpty() ? FString(TEXT("Type a name for the folder."))
												   : FString::Printf(TEXT("A folder cannot be called \"%s\"."), *Name);
		return;
	}
	const FString Path = FSaveTarget::Join(Folder, Name);
	if (HostGetPathKind(Path) != EHostPathKind::Missing)
	{
		Problem = FString::Printf(TEXT("\"%s\" exists already."), *Name);
	}
	else if (!HostMakeFolder(Path, Reason))
	{
		Problem = FString::Printf(TEXT("The folder \"%s\" cannot be made: %s."), *Name, *Reason);
	}
	else
	{
		GoTo(Path);
	}
}

FReply SSaveDialog::OnFocusReceived(const FGeometry& MyGeometry, const FFocusEvent& InFocusEvent)
{
	return FReply::Handled().SetUserFocus(bChoosesFolder ? TSharedRef<SWidget>(List.ToSharedRef()) : NameBox.ToSharedRef());
}

FReply SSaveDialog::OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	const FKey Key = InKeyEvent.GetKey();
	if (Key == EKeys::Up && InKeyEvent.IsAltDown())
	{
		GoUp();
		return FReply::Handled();
	}
	if (Key == EKeys::Escape && bNewFolderShown)
	{
		ShowNewFolder(false);
		return FReply::Handled();
	}
	if (!List->HasKeyboardFocus())
	{
		return FReply::Unhandled();
	}
	if (Key == EKeys::BackSpace)
	{
		GoUp();
		return FReply::Handled();
	}
	if (Key == EKeys::Enter)
	{
		const TArray<FEntry> Selected = List->GetSelectedItems();
		if (Selected.IsEmpty())
		{
			Accept(false);
		}
		else
		{
			OpenEntry(Selected[0]);
		}
		return FReply::Handled();
	}
	return FReply::Unhandled();
}

FReply SSaveDialog::OnKeyChar(const FGeometry& MyGeometry, const FCharacterEvent& InCharacterEvent)
{
	const TCHAR Letter = FChar::ToLower(InCharacterEvent.GetCharacter());
	if (!List->HasKeyboardFocus() || Entries.IsEmpty() || Letter <= TEXT(' '))
	{
		return FReply::Unhandled();
	}
	// To the next entry that begins with the letter, around the end.
	const TArray<FEntry> Selected = List->GetSelectedItems();
	const int32 Start = Selected.IsEmpty() ? Entries.Num() - 1 : Entries.Find(Selected[0]);
	for (int32 Step = 1; Step <= Entries.Num(); ++Step)
	{
		const FEntry& Entry = Entries[(Start + Step) % Entries.Num()];
		if (!Entry->Name.IsEmpty() && FChar::ToLower(Entry->Name[0]) == Letter)
		{
			List->SetSelection(Entry, ESelectInfo::OnNavigation);
			List->RequestScrollIntoView(Entry);
			break;
		}
	}
	return FReply::Handled();
}
