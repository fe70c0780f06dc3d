#include "SConversations.h"

#include "Async/Async.h"
#include "Containers/Ticker.h"
#include "DesktopPlatformModule.h"
#include "Framework/Application/SlateApplication.h"
#include "HAL/PlatformTime.h"
#include "Host/HostFileNames.h"
#include "Host/HostSleep.h"
#include "Host/StoreLocation.h"
#include "IDesktopPlatform.h"
#include "Misc/FileHelper.h"
#include "Misc/Paths.h"
#include "OpenChat.h"
#include "ProblemToasts.h"
#include "PromptBox.h"
#include "SoughtMessage.h"
#include "ViewModels/ChatMessage.h"
#include "ViewModels/ChatViewModel.h"
#include "ViewModels/ConversationExport.h"
#include "Widgets/Input/SEditableTextBox.h"

#include <sys/stat.h>

using Velmora::FConversationMark;
using Velmora::FStoredConversations;

namespace
{
	/** Between two looks at the store's files, which cost next to nothing. */
	constexpr double LookSeconds = 1.0;

	/** Tells a failure of a worker; an empty one is none. */
	void TellLater(const FString& Sentence)
	{
		if (!Sentence.IsEmpty())
		{
			AsyncTask(ENamedThreads::GameThread, [Sentence] { FProblemToasts::Tell(Sentence); });
		}
	}

	/** Messages as they stand in the window when the conversation is opened. */
	TArray<TSharedPtr<FChatMessage>> MakeMessages(const Velmora::FConversationMetadata& Conversation)
	{
		TArray<TSharedPtr<FChatMessage>> Messages;
		for (const Velmora::FConversationMessage& Stored : Conversation.Messages)
		{
			if (Stored.IsUserMessage() && !Stored.Content.IsEmpty())
			{
				Messages.Add(FChatMessage::CreateUserMessage(Stored.Content));
			}
			else if (Stored.IsAssistantMessage() && !Stored.Content.IsEmpty())
			{
				Messages.Add(FChatMessage::CreateAIMessage(Stored.Content, Stored.HasToolCalls()));
			}
		}
		return Messages;
	}

	FString AskForFile()
	{
		IDesktopPlatform* const Desktop = FDesktopPlatformModule::Get();
		const FString Folder = FPaths::Combine(FPaths::ProjectSavedDir(), TEXT("Velmora"));
		const FString Name = FString::Printf(TEXT("conversation_%s"), *FDateTime::Now().ToString(TEXT("%Y%m%d_%H%M%S")));
		const FString Types =
			TEXT("Markdown Files (*.md)|*.md|Plain Text (*.txt)|*.txt|HTML Files (*.html)|*.html|JSON Files (*.json)|*.json");
		TArray<FString> Files;
		const bool bIsChosen = Desktop && Desktop->SaveFileDialog(nullptr, TEXT("Export Conversation"), Folder, Name, Types, 0, Files);
		return bIsChosen && Files.Num() > 0 ? Files[0] : FString();
	}

	bool IsCurrent(const TSharedPtr<FChatViewModel>& ViewModel, const FString& Id)
	{
		const TSharedPtr<Velmora::FConversationMetadata> Current = ViewModel ? ViewModel->GetCurrentConversationMetadata() : nullptr;
		return Current && Current->Id == Id;
	}
}

SConversations::~SConversations()
{
	// Who closed the tab can no longer take a deletion back.
	for (const FString& Id : Deletions.TakeDue(FHostSleep::Never()))
	{
		DeleteNow(Id);
	}
}

void SConversations::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	SCompoundWidget::Tick(AllottedGeometry, InCurrentTime, InDeltaTime);
	if (bWantsFocus)
	{
		bWantsFocus = false;
		FocusSearch();
	}
	if (InCurrentTime - LastLook >= LookSeconds)
	{
		LastLook = InCurrentTime;
		if (HasStoreChanged())
		{
			ReadStore();
		}
	}
}

bool SConversations::HasStoreChanged()
{
	const Velmora::FStoreLocation Location = Velmora::GetStoreLocation();
	FString Seen;
	for (const FString& File : { Location.GetDatabasePath(), Location.GetDatabasePath() + TEXT("-wal"), Location.GetMarksPath() })
	{
		struct stat Info = {};
		if (stat(HostFileNameToBytes(File).c_str(), &Info) == 0)
		{
			Seen += FString::Printf(TEXT("%lld.%lld %lld;"), static_cast<long long>(Info.st_mtim.tv_sec),
				static_cast<long long>(Info.st_mtim.tv_nsec), static_cast<long long>(Info.st_size));
		}
	}
	const bool bHasChanged = !Seen.Equals(SeenStore);
	SeenStore = Seen;
	return bHasChanged;
}

void SConversations::ReadStore()
{
	if (!Reading.Begin())
	{
		return;
	}
	AsyncTask(ENamedThreads::AnyBackgroundThreadNormalTask,
		[Weak = TWeakPtr<SConversations>(SharedThis(this)), Begun = MarkChanges]
		{
			FConversationItems::FRead Read = FConversationItems::Read();
			AsyncTask(ENamedThreads::GameThread,
				[Weak, Begun, Read = MoveTemp(Read)]() mutable
				{
					if (const TSharedPtr<SConversations> Self = Weak.Pin())
					{
						const bool bReadAgain = Self->Reading.End();
						// What the user has changed since stands in the list already; this reading does not know of it.
						const bool bIsBehind = Begun != Self->MarkChanges || Self->MarksUnderWay > 0;
						if (!bIsBehind)
						{
							Self->bWasRead = true;
							Self->Items.Take(MoveTemp(Read));
							Self->ShowItems();
						}
						if (bReadAgain || (bIsBehind && Self->MarksUnderWay == 0))
						{
							Self->ReadStore();
						}
					}
				});
		});
	// What was said since is to be found, too.
	if (!Items.GetQuery().IsEmpty())
	{
		Search();
	}
}

void SConversations::Search()
{
	const FString Query = SearchBox->GetText().ToString();
	bIsSearching = !Query.TrimStartAndEnd().IsEmpty();
	Problem.Empty();
	Finder.Search(Query,
		[this](const Velmora::FConversationSearchResult& Result)
		{
			bIsSearching = !Result.bIsComplete;
			Problem = Result.Problem;
			Items.TakeHits(Result);
			ShowItems();
		});
}

void SConversations::ShowItems()
{
	// The rows are made anew; the choice is found again by what it is.
	const FItem Selected = GetSelected();
	List->ClearSelection();
	List->RequestListRefresh();
	if (Selected)
	{
		const auto IsIt = [&Selected](const FItem& Item) { return Item->Id == Selected->Id && Item->Excerpt.Equals(Selected->Excerpt); };
		if (const FItem* const Found = Items.GetShown().FindByPredicate(IsIt))
		{
			List->SetSelection(*Found);
		}
	}
	Invalidate(EInvalidateWidgetReason::Layout);
}

SConversations::FItem SConversations::GetSelected() const
{
	const TArray<FItem> Selected = List->GetSelectedItems();
	return Selected.Num() > 0 ? Selected[0] : nullptr;
}

void SConversations::Open()
{
	const FItem Item = GetSelected();
	if (!Item)
	{
		return;
	}
	const TSharedPtr<FChatViewModel> ViewModel = FOpenChat::Show();
	if (!ViewModel)
	{
		return FProblemToasts::Tell(TEXT("The conversation cannot be shown: the chat could not be opened."));
	}
	if (!IsCurrent(ViewModel, Item->Id))
	{
		if (ViewModel->IsBusy())
		{
			return FProblemToasts::Tell(TEXT("Another conversation can be opened when the agent has finished or is stopped."));
		}
		ViewModel->LoadConversation(Item->Id);
	}
	if (!Item->Excerpt.IsEmpty())
	{
		OnShowFoundMessage.ExecuteIfBound(SoughtMessage::ChooseWords(Items.GetQuery(), Item->Excerpt, Item->Places),
			FSoughtMessage{ Item->Id, Item->Position, Item->bIsUser, Item->Excerpt });
	}
	FPromptBox::Focus();
}

void SConversations::BeginRename()
{
	if (const FItem Item = GetSelected())
	{
		RenamedId = Item->Id;
		NameBox->SetText(FText::FromString(Item->Title));
		Invalidate(EInvalidateWidgetReason::Layout);
		FSlateApplication::Get().SetKeyboardFocus(NameBox, EFocusCause::SetDirectly);
		NameBox->SelectAllText();
	}
}

void SConversations::EndRename(bool bTakesName)
{
	if (bTakesName && !RenamedId.IsEmpty())
	{
		FConversationMark Mark = Items.GetMark(RenamedId);
		Mark.Name = NameBox->GetText().ToString().TrimStartAndEnd();
		ChangeMark(RenamedId, Mark);
	}
	RenamedId.Empty();
	Invalidate(EInvalidateWidgetReason::Layout);
	FocusList();
}

void SConversations::TogglePin()
{
	if (const FItem Item = GetSelected())
	{
		FConversationMark Mark = Items.GetMark(Item->Id);
		Mark.bIsPinned = !Mark.bIsPinned;
		ChangeMark(Item->Id, Mark);
	}
}

void SConversations::ChangeMark(const FString& Id, const FConversationMark& Mark)
{
	++MarkChanges;
	++MarksUnderWay;
	Items.SetMark(Id, Mark);
	ShowItems();
	AsyncTask(ENamedThreads::AnyBackgroundThreadNormalTask,
		[Weak = TWeakPtr<SConversations>(SharedThis(this)), Id, Mark]
		{
			TellLater(FStoredConversations::ChangeMark(Id, [&Mark](FConversationMark& Stored) { Stored = Mark; }));
			// A reading that was under way meanwhile brings the mark as it was before.
			AsyncTask(ENamedThreads::GameThread,
				[Weak]
				{
					if (const TSharedPtr<SConversations> Self = Weak.Pin())
					{
						--Self->MarksUnderWay;
						Self->ReadStore();
					}
				});
		});
}

void SConversations::Export()
{
	const FItem Item = GetSelected();
	const FString File = Item ? AskForFile() : FString();
	if (File.IsEmpty())
	{
		return;
	}
	AsyncTask(ENamedThreads::AnyBackgroundThreadNormalTask,
		[Id = Item->Id, File]
		{
			Velmora::FConversationMetadata Conversation;
			if (const FString Complaint = FStoredConversations::Load(Id, Conversation); !Complaint.IsEmpty())
			{
				return TellLater(Complaint);
			}
			// A failed save is reported by whoever writes files. The texts hold symbols; UTF-8 is what readers of JSON and Markdown expect.
			FFileHelper::SaveStringToFile(
				FConversationExport::Export(MakeMessages(Conversation), FConversationExport::GetFormatOfFile(File), FDateTime::Now()),
				*File, FFileHelper::EEncodingOptions::ForceUTF8WithoutBOM);
		});
}

void SConversations::Delete()
{
	const FItem Item = GetSelected();
	if (!Item)
	{
		return;
	}
	// The agent lets go of it first: what is said from here on belongs to another one.
	const TSharedPtr<FChatViewModel> ViewModel = FOpenChat::GetViewModel();
	if (IsCurrent(ViewModel, Item->Id))
	{
		if (ViewModel->IsBusy())
		{
			return FProblemToasts::Tell(
				TEXT("The agent is at work on this conversation. It can be deleted when the agent has finished or is stopped."));
		}
		ViewModel->StartNewConversation(ViewModel->GetMode());
	}
	const int32 Place = FMath::Max(Items.GetShown().Find(Item), 0);
	Deletions.Add(Item->Id, Item->Title, FPlatformTime::Seconds());
	// Also while another tab stands in front.
	FTSTicker::GetCoreTicker().AddTicker(TEXT("ConversationDeletion"), static_cast<float>(FConversationDeletions::UndoSeconds),
		[Weak = TWeakPtr<SConversations>(SharedThis(this))](float)
		{
			if (const TSharedPtr<SConversations> Self = Weak.Pin())
			{
				Self->FinishDeletions();
			}
			return false;
		});
	Items.SetHidden(Item->Id, true);
	ShowItems();
	if (Items.GetShown().Num() > 0)
	{
		List->SetSelection(Items.GetShown()[FMath::Min(Place, Items.GetShown().Num() - 1)]);
	}
	FocusList();
}

void SConversations::FinishDeletions()
{
	// The ticker and the clock need not agree to the last digit.
	constexpr double Slack = 0.1;
	for (const FString& Id : Deletions.TakeDue(FPlatformTime::Seconds() + Slack))
	{
		DeleteNow(Id);
	}
	Invalidate(EInvalidateWidgetReason::Layout);
	// A ticker brings no frame, and in a window that nobody touches the strip would stay.
	FSlateApplication::Get().NoteActivity();
}

void SConversations::UndoDelete()
{
	const FString Id = Deletions.TakeBack();
	if (!Id.IsEmpty())
	{
		Items.SetHidden(Id, false);
		ShowItems();
		if (const FItem* const Found = Items.GetShown().FindByPredicate([&Id](const FItem& Item) { return Item->Id == Id; }))
		{
			List->SetSelection(*Found);
		}
		FocusList();
	}
}

void SConversations::DeleteNow(const FString& Id)
{
	const TSharedPtr<FChatViewModel> ViewModel = FOpenChat::GetViewModel();
	// Who has opened it again since wants it.
	if (IsCurrent(ViewModel, Id))
	{
		return;
	}
	if (ViewModel)
	{
		// The agent may hold what is not stored yet.
		ViewModel->DeleteConversationHistory(Id);
	}
	AsyncTask(ENamedThreads::AnyBackgroundThreadNormalTask, [Id] { TellLater(FStoredConversations::Delete(Id)); });
}

void SConversations::FocusSearch()
{
	FSlateApplication::Get().SetKeyboardFocus(SearchBox, EFocusCause::SetDirectly);
	SearchBox->SelectAllText();
}

void SConversations::FocusList()
{
	FSlateApplication::Get().SetKeyboardFocus(List, EFocusCause::SetDirectly);
}

FReply SConversations::OnSearchKey(const FGeometry& Geometry, const FKeyEvent& KeyEvent)
{
	if (KeyEvent.GetKey() == EKeys::Down && Items.GetShown().Num() > 0)
	{
		if (!GetSelected())
		{
			List->SetSelection(Items.GetShown()[0]);
		}
		FocusList();
		return FReply::Handled();
	}
	// The strip says that the key takes the deletion back; an empty box has nothing that it could mean instead.
	const bool bControl = KeyEvent.IsControlDown() && !KeyEvent.IsShiftDown() && !KeyEvent.IsAltDown();
	if (KeyEvent.GetKey() == EKeys::Z && bControl && Deletions.GetLatest() && SearchBox->GetText().IsEmpty())
	{
		UndoDelete();
		return FReply::Handled();
	}
	if (KeyEvent.GetKey() == EKeys::Escape && !SearchBox->GetText().IsEmpty())
	{
		SearchBox->SetText(FText());
		return FReply::Handled();
	}
	if (KeyEvent.GetKey() == EKeys::Enter && Items.GetShown().Num() > 0)
	{
		if (!GetSelected())
		{
			List->SetSelection(Items.GetShown()[0]);
		}
		Open();
		return FReply::Handled();
	}
	return FReply::Unhandled();
}

FReply SConversations::OnNameKey(const FGeometry& Geometry, const FKeyEvent& KeyEvent)
{
	if (KeyEvent.GetKey() == EKeys::Enter || KeyEvent.GetKey() == EKeys::Escape)
	{
		EndRename(KeyEvent.GetKey() == EKeys::Enter);
		return FReply::Handled();
	}
	return FReply::Unhandled();
}

FReply SConversations::OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	const FKey& Key = InKeyEvent.GetKey();
	const bool bControl = InKeyEvent.IsControlDown() && !InKeyEvent.IsShiftDown() && !InKeyEvent.IsAltDown();
	const bool bInList = List->HasKeyboardFocus();
	void (SConversations::*Action)() = nullptr;
	if (bControl)
	{
		Action = Key == EKeys::F					   ? &SConversations::FocusSearch
			: Key == EKeys::Z && Deletions.GetLatest() ? &SConversations::UndoDelete
			: Key == EKeys::P						   ? &SConversations::TogglePin
			: Key == EKeys::E						   ? &SConversations::Export
													   : nullptr;
	}
	else if (!InKeyEvent.IsAltDown() && !InKeyEvent.IsShiftDown() && bInList)
	{
		Action = Key == EKeys::Enter ? &SConversations::Open
			: Key == EKeys::F2		 ? &SConversations::BeginRename
			: Key == EKeys::Delete	 ? &SConversations::Delete
									 : nullptr;
	}
	if (Action)
	{
		(this->*Action)();
		return FReply::Handled();
	}
	return FReply::Unhandled();
}
