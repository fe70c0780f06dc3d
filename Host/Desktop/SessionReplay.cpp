#include "SessionReplay.h"

#include "Async/TaskGraphInterfaces.h"
#include "ConversationPrinter.h"
#include "Host/HostAtomicFile.h"
#include "Host/HostClock.h"
#include "Host/HostFileNames.h"
#include "Host/HostFolders.h"
#include "Host/HostInputTap.h"
#include "Host/HostServices.h"
#include "Host/StoreLocation.h"
#include "RecordSeeds.h"
#include "ReplayAgent.h"
#include "StoreFolders.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <system_error>

using Velmora::EAgentAnswer;
using Velmora::FAgent;
using Velmora::FAgentTurnStatus;
using Velmora::FConversationMetadata;
using Velmora::FLastMessage;
using Velmora::FProjectFileCacheEntry;

namespace
{
	constexpr int64 LargestSide = 16384;
	constexpr int64 DaySeconds = 24 * 3600;

	/** The times of day that were shown then, wherever this machine is. By the rule of the variable, east is negative. */
	void MoveToZone(int64 Seconds)
	{
		const int64 West = -FMath::Clamp<int64>(Seconds, -DaySeconds, DaySeconds);
		const int64 Size = West < 0 ? -West : West;
		const std::string Zone = std::string("REC") + (West < 0 ? "-" : "") + std::to_string(Size / 3600) + ':' +
			std::to_string(Size / 60 % 60) + ':' + std::to_string(Size % 60);
		setenv("TZ", Zone.c_str(), 1);
		tzset();
	}
}

FSessionReplay::~FSessionReplay()
{
	Finish();
	Release();
	HostLimitSaves(FString());
	Velmora::SetConfigFolder(FString());
	if (!Folder.empty())
	{
		std::error_code Ignored;
		std::filesystem::remove_all(Folder, Ignored);
	}
}

FString FSessionReplay::Load(const FString& Path, const FString& Version)
{
	FRecordReader Reader;
	if (const FString Complaint = Reader.Load(Path); !Complaint.IsEmpty())
	{
		return Complaint;
	}
	ReadHead(Reader);
	Tape = std::make_shared<FReplayTape>(MoveTemp(Reader));
	// Texts of other widths are other pictures.
	Tape->SetComparing(!Head.bIsMasked);
	if (!Head.Version.Equals(Version))
	{
		PrintToStandardError(FString::Printf(
			TEXT("velmora: The recording was made by version %s; this is %s, and its pictures may differ.\n"), *Head.Version, *Version));
	}
	return FString();
}

void FSessionReplay::ReadHead(FRecordReader& Reader)
{
	while (Reader.Peek())
	{
		const FRecordLine Line = Reader.Take();
		switch (Line.GetKind())
		{
		case ERecordKind::Version:
			Head.Version = Line.Text(0);
			break;
		case ERecordKind::Start:
			Head.UtcTicks = Line.Number(0);
			Head.ZoneSeconds = Line.Number(1);
			break;
		case ERecordKind::Window:
			Head.Size = FIntPoint(static_cast<int32>(FMath::Clamp<int64>(Line.Number(0), 1, LargestSide)),
				static_cast<int32>(FMath::Clamp<int64>(Line.Number(1), 1, LargestSide)));
			Head.Scale = static_cast<float>(FMath::Clamp(Line.Real(2), 0.1, 16.0));
			break;
		case ERecordKind::Session:
			Head.bHasUser = Line.Flag(0);
			Head.bIsMasked = Line.Flag(2);
			break;
		case ERecordKind::Project:
			Head.Project = Line.Text(0);
			break;
		case ERecordKind::Kept:
			Head.KeptFolder = Line.Text(0);
			break;
		case ERecordKind::Set:
			Head.Variables.Emplace(Line.Text(0), Line.Text(1));
			break;
		case ERecordKind::Seed:
			Head.Seeds.Add(Line);
			break;
		case ERecordKind::Begin:
			return;
		default:
			break;
		}
	}
}

FString FSessionReplay::Begin()
{
	Folder = StoreFolders::MakeVolatileFolder();
	std::error_code Error;
	if (Folder.empty() || !std::filesystem::create_directories(HostFileNameToBytes(GetProjectFolder()), Error))
	{
		return FString::Printf(TEXT("No folder can be made for this run: %s."), UTF8_TO_TCHAR(strerror(errno)));
	}
	// The hand that drives this run is whoever made the recording.
	AllowSaves(false);
	Velmora::SetConfigFolder(HostFileNameFromBytes(Folder + "/config"));
	setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);
	MoveToZone(Head.ZoneSeconds);
	const int64 Last = FDateTime::MaxValue().GetTicks() - DaySeconds * ETimespan::TicksPerSecond;
	FHostClock::UseSimulatedTime(FHostClock::UtcToLocal(FDateTime(FMath::Clamp<int64>(Head.UtcTicks, 0, Last))));
	return FString();
}

void FSessionReplay::AllowSaves(bool bEverywhere) const
{
	HostLimitSaves(bEverywhere ? FString() : HostFileNameFromBytes(Folder));
}

FString FSessionReplay::GetProjectFolder() const
{
	return RecordSeeds::MakeProjectPath(HostFileNameFromBytes(Folder + "/projects"), Head.Project);
}

FString FSessionReplay::GetDataFolder() const
{
	return HostFileNameFromBytes(Folder + "/data");
}

void FSessionReplay::RestoreFiles() const
{
	for (const FRecordLine& Seed : Head.Seeds)
	{
		(void)RecordSeeds::Restore(Seed);
	}
}

TSharedRef<IHostWindow> FSessionReplay::Wrap(const TSharedRef<IHostWindow>& InWindow)
{
	const TSharedRef<FReplayWindow> Shown = MakeShared<FReplayWindow>(InWindow, Head.Size, Head.Scale, Tape);
	Window = Shown;
	FHostInputTap::Set(&Shown.Get());
	// The desktop's clipboard is the user's: neither read nor written.
	FHostServices::SetClipboardHooks(nullptr, nullptr);
	FHostServices::SetPasteSeam(
		[this](FString& Text) { Tape->TakeClipboard(Text); }, [this](bool& bCanPaste) { Tape->TakeCanPaste(bCanPaste); });
	return Shown;
}

void FSessionReplay::Finish()
{
	if (Tape)
	{
		Tape->SetComparing(false);
		Tape->Stop();
	}
}

void FSessionReplay::Release()
{
	FHostInputTap::Set(nullptr);
	FHostServices::SetPasteSeam(nullptr, nullptr);
	Window.Reset();
}

TSharedPtr<FAgent> FSessionReplay::MakeAgent(TFunctionRef<TSharedPtr<FAgent>()> MakeUsual)
{
	const int32 Number = Tape->TakeAgent();
	return Number == 0 ? TSharedPtr<FAgent>() : MakeShared<FReplayAgent>(Tape, Number).ToSharedPtr();
}

TArray<FConversationMetadata> FSessionReplay::ReadSummaries(TFunctionRef<TArray<FConversationMetadata>()> ReadUsual)
{
	return IsInGameThread() ? TArray<FConversationMetadata>() : Tape->WaitForSummaries();
}

bool FSessionReplay::AnswerQuestion(uint32 Id, EAgentAnswer Answer, TFunctionRef<bool()> AnswerUsual)
{
	const TOptional<FString> Answered = Tape->Call(0, "answer");
	return Answered.IsSet() && Answered->Equals(TEXT("1"));
}

TOptional<FLastMessage> FSessionReplay::GetLastMessage(TFunctionRef<TOptional<FLastMessage>()> GetUsual)
{
	Tape->TakeAnswers();
	return Tape->GetLastMessage();
}

FString FSessionReplay::TakeBackLastMessage(TFunctionRef<FString()> TakeBackUsual)
{
	return Tape->Call(0, "take-back").Get(FString());
}

FAgentTurnStatus FSessionReplay::GetTurnStatus(TFunctionRef<FAgentTurnStatus()> GetUsual)
{
	Tape->TakeAnswers();
	return Tape->GetTurnStatus();
}

void FSessionReplay::GetStatus(bool& bReady, bool& bIndexing, int32& Count)
{
	if (IsInGameThread())
	{
		Tape->TakeAnswers();
		bReady = Tape->AreFilesReady();
		bIndexing = Tape->AreFilesIndexing();
		Count = Tape->GetFileCount();
	}
}

void FSessionReplay::GetFiles(TArray<FProjectFileCacheEntry>& Files)
{
	if (IsInGameThread())
	{
		Tape->TakeAnswers();
		Files = Tape->GetFiles();
	}
}
