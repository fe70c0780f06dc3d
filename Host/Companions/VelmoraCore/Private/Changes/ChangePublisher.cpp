#include "Changes/ChangePublisher.h"

#include <filesystem>

#include "Text/Utf8Text.h"
#include "History/AssetHistoryTracker.h"
#include "History/FileHistoryTracker.h"
#include "Host/HostFileNames.h"
#include "Misc/DateTime.h"
#include "Misc/Paths.h"
#include "Misc/Timespan.h"

namespace Velmora
{
	namespace
	{
		constexpr std::string_view ContentFolder = "Content/";

		/** "Content/Heroes/BP_Hero.uasset" is the asset "/Game/Heroes/BP_Hero". Empty for what is no asset. */
		std::string GetAssetPath(const std::string& Path)
		{
			const std::string Lower = Utf8Text::ToLower(Path);
			const bool bIsAsset =
				Utf8Text::StartsWith(Path, ContentFolder) && (Utf8Text::EndsWith(Lower, ".uasset") || Utf8Text::EndsWith(Lower, ".umap"));
			return bIsAsset ? "/Game/" + Path.substr(ContentFolder.size(), Path.rfind('.') - ContentFolder.size()) : std::string();
		}

		/**
		 * As seen from the folder that relative paths are taken from: an absolute path would begin with a slash, by which
		 * the readers of the tracker know an asset.
		 */
		std::string GetRelativePath(const FPerformedChange& Change)
		{
			const std::string Base = HostFileNameToBytes(FPaths::ConvertRelativePathToFull(FString(TEXT("."))));
			return (std::filesystem::path(Change.Root) / Change.Path).lexically_relative(Base).native();
		}

		/** Now, and later than any change before: of two at one moment, readers of the tracker could not tell which was the last. */
		FDateTime TakeTime()
		{
			static FDateTime Last(0);
			FDateTime Time = FDateTime::Now();
			if (Time <= Last && Last - Time < FTimespan::FromSeconds(1.0))
			{
				Time = Last + FTimespan(1);
			}
			Last = Time;
			return Time;
		}
	}

	void PublishToTrackers(const std::vector<FPerformedChange>& Changes)
	{
		for (const FPerformedChange& Change : Changes)
		{
			const FString ConversationId = HostFileNameFromBytes(Change.ConversationId);
			const FString Group = HostFileNameFromBytes(Change.TransactionId);
			const std::string AssetPath = GetAssetPath(Change.Path);
			const FDateTime Time = TakeTime();
			if (AssetPath.empty())
			{
				FFileHistoryTracker::Get().AddOperation(
					ConversationId, Group, { HostFileNameFromBytes(GetRelativePath(Change)), static_cast<uint8>(Change.Action), Time });
			}
			else
			{
				FAssetHistoryTracker::Get().AddOperation(
					ConversationId, Group, { HostFileNameFromBytes(AssetPath), static_cast<uint8>(Change.Action), Time });
			}
		}
	}

	void RemoveFromTrackers(const std::string& ConversationId, const std::vector<std::string>& TransactionIds)
	{
		for (const std::string& Id : TransactionIds)
		{
			FFileHistoryTracker::Get().RemoveGroup(HostFileNameFromBytes(ConversationId), HostFileNameFromBytes(Id));
			FAssetHistoryTracker::Get().RemoveGroup(HostFileNameFromBytes(ConversationId), HostFileNameFromBytes(Id));
		}
	}
}
