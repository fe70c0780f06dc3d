#pragma once

#include "CoreMinimal.h"

#include "Containers/Ticker.h"
#include "ReleaseFile.h"
#include "Templates/SharedPointer.h"

#include <string>

namespace Velmora
{
	struct FPackageCopy;

	/** Keeps the gate in step with a release file, and downloads what it offers. Game thread; copies run in the background. */
	class FReleaseFollower
	{
	public:
		FReleaseFollower(const FString& InPath, const FString& InDownloadFolder);
		~FReleaseFollower();
		FReleaseFollower(const FReleaseFollower&) = delete;
		FReleaseFollower& operator=(const FReleaseFollower&) = delete;

		void StartDownload();

	private:
		/** What tells that a file is another one than before; empty for no file. */
		std::string GetSignature() const;
		void Poll();
		void Read();
		void TakeOn();
		void TickDownload();
		/** The offer's name in the record of what was downloaded. */
		FString GetOfferName() const;
		FString GetRecordPath() const { return DownloadFolder + TEXT("/Downloaded.txt"); }

		const FString Path;
		const FString DownloadFolder;
		FReleaseFile Release;
		std::string Signature;
		/** A complaint about a file that somebody may still be writing: told when the file stays as it is. */
		FString Complaint;
		/** What an earlier run has downloaded, and what this one has. */
		FString InstalledOffer;
		FString WaitingOffer;
		TSharedPtr<FPackageCopy> Copy;
		double CopyStart = 0.0;
		FTSTicker::FDelegateHandle PollTicker;
		FTSTicker::FDelegateHandle DownloadTicker;
	};
}
