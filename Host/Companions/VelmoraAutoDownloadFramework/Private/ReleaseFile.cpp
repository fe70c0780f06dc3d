#include "ReleaseFile.h"

#include "Dom/JsonObject.h"
#include "HAL/FileManager.h"
#include "Host/HostFolders.h"
#include "Host/UpdateGateControl.h"
#include "Misc/FileHelper.h"
#include "Misc/Paths.h"
#include "Serialization/JsonReader.h"
#include "Serialization/JsonSerializer.h"

namespace Velmora
{
	namespace
	{
		/** A longer file is something else. */
		constexpr int64 MaxReleaseBytes = 1024 * 1024;
		constexpr double MaxDownloadSeconds = 3600.0;

		struct FStateRow
		{
			const TCHAR* Word;
			EUpdateGateState State;
		};
		constexpr FStateRow StateRows[] = {
			{ TEXT("Checking"), EUpdateGateState::Checking },
			{ TEXT("Ready"), EUpdateGateState::Ready },
			{ TEXT("UpdateAvailable"), EUpdateGateState::UpdateAvailable },
			{ TEXT("Downloading"), EUpdateGateState::Downloading },
			{ TEXT("RestartRequired"), EUpdateGateState::RestartRequired },
		};
	}

	bool FReleaseFile::FindState(const FString& Word, EUpdateGateState& OutState)
	{
		for (const FStateRow& Row : StateRows)
		{
			if (Word.Equals(Row.Word))
			{
				OutState = Row.State;
				return true;
			}
		}
		return false;
	}

	FString FUpdateGateControl::GetStateWords()
	{
		FString Words;
		for (const FStateRow& Row : StateRows)
		{
			Words += (Words.IsEmpty() ? TEXT("") : TEXT(", ")) + FString(Row.Word);
		}
		return Words;
	}

	FString FReleaseFile::MakeProgressMessage(const FString& Message, int32 Percent)
	{
		return FString::Printf(
			TEXT("%s %d%%"), Message.IsEmpty() ? TEXT("Downloading update...") : *Message, FMath::Clamp(Percent, 0, 100));
	}

	FString FReleaseFile::Read(const FString& Path, FReleaseFile& OutRelease)
	{
		FString Text;
		TSharedPtr<FJsonObject> Object;
		const bool bFile = HostGetPathKind(Path) == EHostPathKind::File && IFileManager::Get().FileSize(*Path) <= MaxReleaseBytes;
		if (!bFile || !FFileHelper::LoadFileToString(Text, *Path) ||
			!FJsonSerializer::Deserialize(TJsonReaderFactory<>::Create(Text), Object) || !Object)
		{
			return FString::Printf(TEXT("The release file \"%s\" cannot be read as a JSON object."), *Path);
		}
		FReleaseFile Release;
		FString Word;
		Object->TryGetStringField(TEXT("state"), Word);
		if (!FindState(Word, Release.State))
		{
			return FString::Printf(
				TEXT("The release file \"%s\" names no known state. The states are: %s."), *Path, *FUpdateGateControl::GetStateWords());
		}
		Object->TryGetStringField(TEXT("version"), Release.Version);
		Object->TryGetStringField(TEXT("message"), Release.Message);
		double Progress = 0.0;
		if (Release.State == EUpdateGateState::Downloading && Object->TryGetNumberField(TEXT("progress"), Progress))
		{
			Release.Message = MakeProgressMessage(Release.Message, static_cast<int32>(FMath::Clamp(Progress, 0.0, 100.0)));
		}
		if (Object->TryGetStringField(TEXT("package"), Release.Package) && !Release.Package.IsEmpty() &&
			!Release.Package.StartsWith(TEXT("/")))
		{
			Release.Package = FPaths::GetPath(Path) + TEXT("/") + Release.Package;
		}
		if (Object->TryGetNumberField(TEXT("downloadSeconds"), Release.DownloadSeconds))
		{
			Release.DownloadSeconds = FMath::Clamp(Release.DownloadSeconds, 0.0, MaxDownloadSeconds);
		}
		OutRelease = MoveTemp(Release);
		return FString();
	}
}
