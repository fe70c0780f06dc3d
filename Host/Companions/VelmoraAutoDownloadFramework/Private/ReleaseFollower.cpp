#include "ReleaseFollower.h"

#include "Async/Async.h"
#include "HAL/FileManager.h"
#include "HAL/PlatformTime.h"
#include "Host/HostAtomicFile.h"
#include "Host/HostFileNames.h"
#include "Host/HostFolders.h"
#include "Host/UpdateGateControl.h"
#include "Logging/LogMacros.h"
#include "Misc/FileHelper.h"
#include "Misc/Paths.h"

#include <atomic>
#include <sys/stat.h>

DEFINE_LOG_CATEGORY_STATIC(LogUpdateGate, Log, All);

// Follows the file that tells of releases and takes the gate through an update: offered, downloading, waiting for the
// restart. The file is looked at once a second by its inode, size and times, since it may lie where nothing can be watched.
// An offer goes by version and package. What was downloaded and what is installed are remembered by that name, so that the
// same file does not offer the same update again.

namespace Velmora
{
	/** A copy that runs in the background. */
	struct FPackageCopy
	{
		std::atomic<int32> Percent = 0;
		std::atomic<bool> bStop = false;
		/** Set last; the two below are final then. */
		std::atomic<bool> bEnded = false;
		bool bDone = false;
		FString Reason;
	};

	namespace
	{
		/** No more often than the module looks: at rest each look wakes the processor, and two at one time wake it once. */
		constexpr float PollSeconds = 1.0f;

		TFunction<void(const FString&)>& GetProblemHandler()
		{
			static TFunction<void(const FString&)> Handler;
			return Handler;
		}

		void TellProblem(const FString& Sentence)
		{
			UE_LOG(LogUpdateGate, Log, TEXT("%s"), *Sentence);
			if (const TFunction<void(const FString&)> Handler = GetProblemHandler())
			{
				Handler(Sentence);
			}
		}

		TUniquePtr<FReleaseFollower>& GetFollower()
		{
			static TUniquePtr<FReleaseFollower> Follower;
			return Follower;
		}
	}

	FReleaseFollower::FReleaseFollower(const FString& InPath, const FString& InDownloadFolder)
		: Path(InPath)
		, DownloadFolder(InDownloadFolder)
	{
		// What was installed last stays known across a restart; without the record the same offer would come again.
		if (FPaths::FileExists(GetRecordPath()))
		{
			FFileHelper::LoadFileToString(InstalledOffer, *GetRecordPath());
		}
		Signature = GetSignature();
		if (!Signature.empty())
		{
			Read();
			if (!Complaint.IsEmpty())
			{
				TellProblem(Complaint);
				Complaint.Reset();
			}
		}
		PollTicker = FTSTicker::GetCoreTicker().AddTicker(TEXT("ReleaseFile"), PollSeconds,
			[this](float)
			{
				Poll();
				return true;
			});
	}

	FReleaseFollower::~FReleaseFollower()
	{
		FTSTicker::RemoveTicker(PollTicker);
		FTSTicker::RemoveTicker(DownloadTicker);
		if (Copy)
		{
			Copy->bStop = true;
		}
	}

	std::string FReleaseFollower::GetSignature() const
	{
		// Number, size and time: a file that is replaced is seen, also by one of the same size in the same second.
		struct stat Info;
		if (stat(HostFileNameToBytes(Path).c_str(), &Info) != 0)
		{
			return std::string();
		}
		return std::to_string(Info.st_ino) + " " + std::to_string(Info.st_size) + " " + std::to_string(Info.st_mtim.tv_sec) + "." +
			std::to_string(Info.st_mtim.tv_nsec);
	}

	// A complaint waits for the second look at the same file: one that is just being written is not complained about.
	void FReleaseFollower::Poll()
	{
		// A download is not disturbed; what has changed meanwhile is seen when it has ended.
		if (Copy)
		{
			return;
		}
		std::string Now = GetSignature();
		if (Now == Signature)
		{
			if (!Complaint.IsEmpty())
			{
				TellProblem(Complaint);
				Complaint.Reset();
			}
			return;
		}
		Signature = MoveTemp(Now);
		Complaint.Reset();
		// Gone: as if there had never been an update.
		if (Signature.empty())
		{
			Release = FReleaseFile();
			TakeOn();
			return;
		}
		Read();
	}

	void FReleaseFollower::Read()
	{
		Complaint = FReleaseFile::Read(Path, Release);
		if (Complaint.IsEmpty())
		{
			TakeOn();
		}
	}

	FString FReleaseFollower::GetOfferName() const
	{
		return Release.Version + TEXT("\n") + FPaths::GetCleanFilename(Release.Package);
	}

	void FReleaseFollower::TakeOn()
	{
		EUpdateGateState State = Release.State;
		// Downloaded and waiting for the restart.
		if (State == EUpdateGateState::UpdateAvailable && GetOfferName().Equals(WaitingOffer))
		{
			FUpdateGateControl::SetState(EUpdateGateState::RestartRequired, FString(), Release.Version);
			return;
		}
		// Installed by the restart, while the file still offers it.
		if (State == EUpdateGateState::UpdateAvailable && GetOfferName().Equals(InstalledOffer))
		{
			FUpdateGateControl::SetState(EUpdateGateState::Ready, FString(), FString());
			return;
		}
		FUpdateGateControl::SetState(State, Release.Message, Release.Version);
	}

	// The copy runs on another thread and is asked how far it is; it holds what it needs and may outlive this object.
	void FReleaseFollower::StartDownload()
	{
		if (Copy)
		{
			return;
		}
		if (Release.Package.IsEmpty())
		{
			const FString Sentence = TEXT("The update cannot be downloaded: the release file names no package. Please install it by hand.");
			FUpdateGateControl::SetState(EUpdateGateState::UpdateAvailable, Sentence, FUpdateGate::Get().GetVersion());
			TellProblem(Sentence);
			return;
		}
		Copy = MakeShared<FPackageCopy>();
		CopyStart = FPlatformTime::Seconds();
		const FString Source = Release.Package;
		const FString Target = DownloadFolder + TEXT("/") + FPaths::GetCleanFilename(Source);
		Async(EAsyncExecution::ThreadPool,
			[Running = Copy, Source, Target]()
			{
				const auto OnProgress = [&Running](int64 Done, int64 Total)
				{
					Running->Percent = Total > 0 ? static_cast<int32>(FMath::Min<int64>(Done * 100 / Total, 100)) : 100;
					return !Running->bStop;
				};
				Running->bDone = HostCopyFile(Source, Target, HostWritePrivate, OnProgress, Running->Reason);
				Running->bEnded = true;
			});
		FUpdateGateControl::SetState(EUpdateGateState::Downloading, FReleaseFile::MakeProgressMessage(FString(), 0), Release.Version);
		DownloadTicker = FTSTicker::GetCoreTicker().AddTicker(TEXT("Download"), 0.0f,
			[this](float)
			{
				TickDownload();
				return Copy.IsValid();
			});
	}

	// 1. While it runs, no further than the time that it is meant to take at least. 2. A record of what was taken. 3. The end, or
	// the offer again with the reason.
	void FReleaseFollower::TickDownload()
	{
		const bool bEnded = Copy->bEnded;
		const double Elapsed = FPlatformTime::Seconds() - CopyStart;
		// The file may say how long a download shall seem to take at least, so that its progress can be looked at.
		const int32 AllowedPercent =
			Elapsed >= Release.DownloadSeconds ? 100 : static_cast<int32>(Elapsed * 100.0 / Release.DownloadSeconds);
		if (!bEnded || (Copy->bDone && AllowedPercent < 100))
		{
			const FString Message = FReleaseFile::MakeProgressMessage(FString(), FMath::Min(Copy->Percent.load(), AllowedPercent));
			FUpdateGateControl::SetState(EUpdateGateState::Downloading, Message, Release.Version);
			return;
		}
		FString Reason = Copy->Reason;
		bool bDone = Copy->bDone;
		Copy.Reset();
		if (bDone)
		{
			// Without the record the same offer would come again after the restart.
			FString Name = GetOfferName();
			const std::string Bytes = HostFileNameToBytes(Name);
			bDone = HostSaveFile(GetRecordPath(), Bytes.data(), static_cast<int64>(Bytes.size()), HostWritePrivate, Reason);
			WaitingOffer = bDone ? MoveTemp(Name) : FString();
		}
		if (bDone)
		{
			FUpdateGateControl::SetState(EUpdateGateState::RestartRequired, FString(), Release.Version);
			return;
		}
		const FString Sentence = FString::Printf(TEXT("The update could not be downloaded: %s."), *Reason);
		FUpdateGateControl::SetState(EUpdateGateState::UpdateAvailable, Sentence, Release.Version);
		TellProblem(Sentence);
	}

	void FUpdateGateControl::Follow(const FString& Path, const FString& DownloadFolder)
	{
		StopFollowing();
		GetFollower() = MakeUnique<FReleaseFollower>(Path, DownloadFolder);
	}

	void FUpdateGateControl::StopFollowing()
	{
		GetFollower().Reset();
	}

	void FUpdateGateControl::StartDownload()
	{
		if (const TUniquePtr<FReleaseFollower>& Follower = GetFollower())
		{
			Follower->StartDownload();
			return;
		}
		SetState(EUpdateGateState::UpdateAvailable, TEXT("The update cannot be downloaded from here. Please install it by hand."),
			FUpdateGate::Get().GetVersion());
	}

	void FUpdateGateControl::SetProblemHandler(TFunction<void(const FString&)> Handler)
	{
		GetProblemHandler() = MoveTemp(Handler);
	}
}
