#include "SessionRecorder.h"

#include "ConversationPrinter.h"
#include "DesktopOptions.h"
#include "Async/TaskGraphInterfaces.h"
#include "History/AssetHistoryTracker.h"
#include "History/FileHistoryTracker.h"
#include "Host/HostClock.h"
#include "Host/HostInputTap.h"
#include "Host/HostMotion.h"
#include "Host/HostServices.h"
#include "Host/HostTasks.h"
#include "Host/StoreLocation.h"
#include "Misc/Paths.h"
#include "RecordSeeds.h"
#include "RecordedAgent.h"
#include "WindowContrast.h"

using Velmora::EAgentAnswer;
using Velmora::FAgent;
using Velmora::FAgentQuestion;
using Velmora::FAgentTurnStatus;
using Velmora::FConversationMetadata;
using Velmora::FLastMessage;
using Velmora::FProjectFileCacheEntry;
using Velmora::FUpdateGate;

namespace
{
	/** Of a project's files; a list of names is looked through by what was typed, which a long one stands for as well. */
	constexpr int32 MaxFiles = 20000;

	/** How many, over all conversations and groups. */
	template <typename FOperations>
	int32 CountOperations(const FOperations& All)
	{
		int32 Count = 0;
		for (const auto& Conversation : All)
		{
			for (const auto& Group : Conversation.Value)
			{
				Count += Group.Value.Num();
			}
		}
		return Count;
	}

	template <typename FOperations>
	void AddOperationLines(std::string& Lines, const FOperations& All, bool bIsAsset, const FRecordWriter& Writer)
	{
		for (const auto& Conversation : All)
		{
			for (const auto& Group : Conversation.Value)
			{
				for (const auto& Operation : Group.Value)
				{
					Lines += FRecordWords(ERecordKind::Operation)
								 .Flag(bIsAsset)
								 .Text(Conversation.Key)
								 .Text(Group.Key)
								 .Text(Writer.Veil(Operation.Path))
								 .Number(Operation.Action)
								 .Number(Operation.Time.GetTicks())
								 .GetLine();
				}
			}
		}
	}
}

FSessionRecorder::FSessionRecorder(const std::shared_ptr<FRecordWriter>& InWriter)
	: Writer(InWriter)
{
}

FSessionRecorder::~FSessionRecorder()
{
	Finish();
	Release();
}

void FSessionRecorder::Begin(const FDesktopOptions& Options, bool bHasUser, bool bHasDisplay, const IHostWindow& InWindow)
{
	const FIntPoint Size = InWindow.GetPixelSize();
	const FTimespan Zone = FDateTime(FHostClock::LocalNowTicks()) - FDateTime(FHostClock::UtcNowTicks());
	Writer->Add(MoveTemp(FRecordWords(ERecordKind::Version).Text(Options.Version)));
	Writer->Add(
		MoveTemp(FRecordWords(ERecordKind::Start).Number(FHostClock::UtcNowTicks()).Number(Zone.GetTicks() / ETimespan::TicksPerSecond)));
	Writer->Add(MoveTemp(FRecordWords(ERecordKind::Window).Number(Size.X).Number(Size.Y).Real(static_cast<double>(InWindow.GetScale()))));
	Writer->Add(MoveTemp(FRecordWords(ERecordKind::Session).Flag(bHasUser).Flag(bHasDisplay).Flag(Writer->Masks())));
	Writer->Add(MoveTemp(FRecordWords(ERecordKind::Project).Text(Writer->Veil(RecordSeeds::GetProjectName()))));
	const Velmora::FStoreLocation Location = Velmora::GetStoreLocation();
	const FString Kept = Location.KeepsConversations() ? Location.Folder : FString();
	Writer->Add(MoveTemp(FRecordWords(ERecordKind::Kept).Text(Writer->Veil(Kept))));
	for (const TPair<FString, FString>& Variable : Options.Variables)
	{
		Writer->Add(MoveTemp(FRecordWords(ERecordKind::Set).Text(Variable.Key).Text(Variable.Value)));
	}
	RecordSeeds::Write(*Writer, bHasUser);
	Writer->Add(FRecordWords(ERecordKind::Begin));
	// Lists of changes are read anew when a call returns.
	Writer->SetOnHandOver([this] { NoteOperations(); });
	NoteGate();
	GateHandle = FUpdateGate::Get().OnStateChanged().AddLambda([this](Velmora::EUpdateGateState) { NoteGate(); });
}

TSharedRef<IHostWindow> FSessionRecorder::Wrap(const TSharedRef<IHostWindow>& InWindow)
{
	const TSharedRef<FRecordedWindow> Recorded = MakeShared<FRecordedWindow>(InWindow, Writer);
	Window = Recorded;
	FHostInputTap::Set(&Recorded.Get());
	FHostServices::SetPasteSeam([this](FString& Text)
		{ Writer->Add(MoveTemp(FRecordWords(ERecordKind::Clipboard).Text(Writer->Veil(Text)))); },
		[this](bool& bCanPaste) { Writer->Add(MoveTemp(FRecordWords(ERecordKind::CanPaste).Flag(bCanPaste))); });
	return Recorded;
}

void FSessionRecorder::Finish()
{
	if (Window)
	{
		Window->NoteFrame();
	}
	Writer->SetOnHandOver(nullptr);
	Writer->Finish();
	// Who replays it would else look for the fault in what is missing.
	if (!Writer->GetProblem().IsEmpty())
	{
		PrintToStandardError(FString::Printf(TEXT("velmora: %s\n"), *Writer->GetProblem()));
	}
	if (GateHandle.IsValid())
	{
		FUpdateGate::Get().OnStateChanged().Remove(GateHandle);
		GateHandle.Reset();
	}
}

void FSessionRecorder::Release()
{
	FHostInputTap::Set(nullptr);
	FHostServices::SetPasteSeam(nullptr, nullptr);
	Window.Reset();
}

void FSessionRecorder::NoteDeed(const TCHAR* Deed, const FString& Subject)
{
	Writer->Add(MoveTemp(FRecordWords(ERecordKind::Do).Word(Deed).Text(Subject)));
}

void FSessionRecorder::NoteRemark(const FString& Remark)
{
	if (!Writer->Masks())
	{
		Writer->Add(MoveTemp(FRecordWords(ERecordKind::Note).Text(Remark)));
	}
}

void FSessionRecorder::NoteToast(const FString& Sentence)
{
	Writer->Add(MoveTemp(FRecordWords(ERecordKind::Toast).Text(Writer->Veil(Sentence))));
}

void FSessionRecorder::NoteLook()
{
	AddChanged(Look, MoveTemp(FRecordWords(ERecordKind::Look).Flag(FWindowContrast::IsHigh()).Flag(FHostMotion::IsReduced())));
}

void FSessionRecorder::NoteTurn()
{
	Window->NoteFrame();
	NoteOperations();
	Writer->MarkDriver();
}

void FSessionRecorder::NoteGate()
{
	const FUpdateGate& Gate = FUpdateGate::Get();
	Writer->Add(MoveTemp(
		FRecordWords(ERecordKind::Gate).Number(static_cast<int64>(Gate.GetState())).Text(Gate.GetMessage()).Text(Gate.GetVersion())));
}

void FSessionRecorder::NoteOperations()
{
	const auto& Files = FFileHistoryTracker::Get().GetAllFileOperations();
	const auto& Assets = FAssetHistoryTracker::Get().GetAllAssetOperations();
	const int32 Count = CountOperations(Files) + CountOperations(Assets);
	if (Count == OperationCount)
	{
		return;
	}
	OperationCount = Count;
	std::string Lines = FRecordWords(ERecordKind::Operations).GetLine();
	AddOperationLines(Lines, Files, false, *Writer);
	AddOperationLines(Lines, Assets, true, *Writer);
	Writer->AddLines(Lines);
}

void FSessionRecorder::AddChanged(std::string& Last, FRecordWords&& Words)
{
	if (Last != Words.GetLine())
	{
		Last = Words.GetLine();
		Writer->AddLines(Last);
	}
}

TSharedPtr<FAgent> FSessionRecorder::MakeAgent(TFunctionRef<TSharedPtr<FAgent>()> MakeUsual)
{
	const TSharedPtr<FAgent> Agent = MakeUsual();
	if (!Agent)
	{
		Writer->Add(MoveTemp(FRecordWords(ERecordKind::Agent).Number(0)));
		return nullptr;
	}
	Writer->Add(MoveTemp(FRecordWords(ERecordKind::Agent).Number(++AgentCount)));
	return MakeShared<FRecordedAgent>(Agent.ToSharedRef(), AgentCount, Writer);
}

TArray<FConversationMetadata> FSessionRecorder::ReadSummaries(TFunctionRef<TArray<FConversationMetadata>()> ReadUsual)
{
	const TArray<FConversationMetadata> Conversations = ReadUsual();
	// The list counts from when it reaches the game thread. It is read again and again, and rarely another one.
	const auto Note = [Writer = Writer, Last = Summaries, Lines = MakeSummaryLines(Conversations, *Writer), Count = Conversations.Num()]
	{
		const bool bIsSame = Count > 0 && *Last == Lines;
		Writer->AddLines(FRecordWords(ERecordKind::Summaries).Number(bIsSame ? -1 : Count).GetLine() + (bIsSame ? std::string() : Lines));
		*Last = Lines;
	};
	if (IsInGameThread())
	{
		Note();
	}
	else
	{
		FHostTasks::BeforeNextTask(Note);
	}
	return Conversations;
}

void FSessionRecorder::OnQuestion(const FAgentQuestion* Question)
{
	if (!Question)
	{
		Writer->Add(FRecordWords(ERecordKind::Asked));
		return;
	}
	Writer->Add(MoveTemp(FRecordWords(ERecordKind::Ask)
							 .Number(Question->Id)
							 .Text(Question->Tool)
							 .Text(Writer->Veil(Question->Subject))
							 .Text(Writer->Veil(Question->Text))
							 .Flag(Question->bMayBeRemembered)));
}

bool FSessionRecorder::AnswerQuestion(uint32 Id, EAgentAnswer Answer, TFunctionRef<bool()> AnswerUsual)
{
	const FRecordedCall Call(0, Writer, TEXT("answer"), { FString::FromInt(static_cast<int32>(Answer)) });
	return Call.Return(AnswerUsual());
}

TOptional<FLastMessage> FSessionRecorder::GetLastMessage(TFunctionRef<TOptional<FLastMessage>()> GetUsual)
{
	TOptional<FLastMessage> Last = GetUsual();
	FRecordWords Words(ERecordKind::Last);
	Words.Flag(Last.IsSet()).Flag(Last.IsSet() && Last->bCanUndo).Text(Last.IsSet() ? Writer->Veil(Last->Text) : FString());
	for (const FString& File : Last.IsSet() ? Last->Files : TArray<FString>())
	{
		Words.Text(Writer->Veil(File));
	}
	AddChanged(LastMessage, MoveTemp(Words));
	return Last;
}

FString FSessionRecorder::TakeBackLastMessage(TFunctionRef<FString()> TakeBackUsual)
{
	const FRecordedCall Call(0, Writer, TEXT("take-back"));
	return Call.Return(TakeBackUsual());
}

FAgentTurnStatus FSessionRecorder::GetTurnStatus(TFunctionRef<FAgentTurnStatus()> GetUsual)
{
	const FAgentTurnStatus Now = GetUsual();
	AddChanged(TurnStatus,
		MoveTemp(FRecordWords(ERecordKind::TurnStatus).Flag(Now.bIsRunning).Real(Now.Seconds).Number(Now.Tokens).Text(Now.Agent)));
	return Now;
}

void FSessionRecorder::GetStatus(bool& bReady, bool& bIndexing, int32& Count)
{
	if (IsInGameThread())
	{
		AddChanged(FileStatus, MoveTemp(FRecordWords(ERecordKind::Files).Flag(bReady).Flag(bIndexing).Number(Count)));
	}
}

void FSessionRecorder::GetFiles(TArray<FProjectFileCacheEntry>& Files)
{
	if (!IsInGameThread())
	{
		return;
	}
	const int32 Count = FMath::Min(Files.Num(), MaxFiles);
	std::string Lines = FRecordWords(ERecordKind::FileList).Number(Count).GetLine();
	for (int32 Index = 0; Index < Count; ++Index)
	{
		const FProjectFileCacheEntry& File = Files[Index];
		Lines += FRecordWords(ERecordKind::File)
					 .Text(Writer->Veil(File.Path))
					 .Flag(File.bIsDirectory)
					 .Number(static_cast<int64>(File.Type))
					 .GetLine();
	}
	if (Lines != FileList)
	{
		FileList = MoveTemp(Lines);
		Writer->AddLines(FileList);
	}
}
