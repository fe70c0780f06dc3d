#include "RecordSeeds.h"

#include "HAL/FileManager.h"
#include "Host/HostFileNames.h"
#include "Host/HostFolders.h"
#include "Host/StoreLocation.h"
#include "Misc/FileHelper.h"
#include "Misc/Paths.h"
#include "RecordFile.h"

namespace
{
	/** Larger ones are none of ours. */
	constexpr int32 MaxSeedLength = 256 * 1024;
	constexpr int32 MaxNameLength = 100;

	/** Whose file it is, and so what it may say. */
	enum class ESeedKind : uint8
	{
		/** Switches, numbers and names of keys. */
		Plain,
		/** Texts of the user's may stand in it. */
		Private,
	};

	struct FSeed
	{
		const TCHAR* Place;
		/** Below the place; null for the folder's ini files. */
		const TCHAR* Name;
		ESeedKind Kind;
		/** Runs without a user do not read it. */
		bool bIsUsers;
	};

	constexpr FSeed Seeds[] = {
		{ TEXT("user"), TEXT("Keys.txt"), ESeedKind::Plain, true },
		{ TEXT("user"), TEXT("Zoom.txt"), ESeedKind::Plain, true },
		{ TEXT("user"), TEXT("Tabs.txt"), ESeedKind::Plain, true },
		{ TEXT("user"), TEXT("Welcome.txt"), ESeedKind::Plain, true },
		{ TEXT("saved"), TEXT("TabState.json"), ESeedKind::Plain, false },
		{ TEXT("draft"), TEXT("draft"), ESeedKind::Private, true },
		{ TEXT("config"), nullptr, ESeedKind::Private, false },
	};

	FString GetPlace(const FString& Place)
	{
		if (Place.Equals(TEXT("user")))
		{
			return FPaths::EngineSavedDir() / TEXT("Velmora");
		}
		return FPaths::ProjectSavedDir() / (Place.Equals(TEXT("saved")) ? TEXT("Velmora") : TEXT("Config/LinuxEditor"));
	}

	FString GetSeedPath(const FSeed& Seed, const FString& Name)
	{
		const FString Place(Seed.Place);
		return Place.Equals(TEXT("draft")) ? Velmora::GetStoreLocation().GetDraftPath() : GetPlace(Place) / Name;
	}

	/** Letters and digits, then ".ini". */
	bool IsIniName(const FString& Name)
	{
		const FString Base = Name.LeftChop(4);
		bool bPlain = !Base.IsEmpty() && Name.Len() <= MaxNameLength && Name.EndsWith(TEXT(".ini"), ESearchCase::CaseSensitive);
		for (const TCHAR Letter : Base)
		{
			bPlain = bPlain &&
				((Letter >= TEXT('a') && Letter <= TEXT('z')) || (Letter >= TEXT('A') && Letter <= TEXT('Z')) ||
					(Letter >= TEXT('0') && Letter <= TEXT('9')));
		}
		return bPlain;
	}

	void WriteOne(FRecordWriter& Writer, const FSeed& Seed, const FString& Name)
	{
		const FString Path = GetSeedPath(Seed, Name);
		FString Text;
		// What is read must not be a pipe that never ends.
		if (HostGetPathKind(Path) == EHostPathKind::File && FFileHelper::LoadFileToString(Text, *Path) && Text.Len() <= MaxSeedLength)
		{
			Writer.Add(MoveTemp(FRecordWords(ERecordKind::Seed).Word(FStringView(Seed.Place)).Text(Name).Text(Text)));
		}
	}
}

FString RecordSeeds::GetProjectName()
{
	FString Project = FPaths::ProjectDir();
	while (Project.Len() > 1 && Project.EndsWith(TEXT("/")))
	{
		Project.LeftChopInline(1);
	}
	return FPaths::GetCleanFilename(Project);
}

FString RecordSeeds::MakeProjectPath(const FString& Folder, const FString& Name)
{
	bool bIsName = !Name.IsEmpty() && Name.Len() <= MaxNameLength && !Name.Equals(TEXT(".")) && !Name.Equals(TEXT(".."));
	for (const TCHAR Letter : Name)
	{
		bIsName = bIsName && Letter != TEXT('/') && Letter != TEXT('\\') && Letter >= TEXT(' ');
	}
	return Folder / (bIsName ? Name : FString(TEXT("project")));
}

void RecordSeeds::Write(FRecordWriter& Writer, bool bHasUser)
{
	for (const FSeed& Seed : Seeds)
	{
		if ((Seed.bIsUsers && !bHasUser) || (Seed.Kind == ESeedKind::Private && Writer.Masks()))
		{
			continue;
		}
		if (Seed.Name)
		{
			WriteOne(Writer, Seed, Seed.Name);
			continue;
		}
		TArray<FString> Names;
		IFileManager::Get().FindFiles(Names, *(GetPlace(Seed.Place) / TEXT("*.ini")), true, false);
		Names.Sort();
		for (const FString& Name : Names)
		{
			if (IsIniName(Name))
			{
				WriteOne(Writer, Seed, Name);
			}
		}
	}
}

bool RecordSeeds::Restore(const FRecordLine& Line)
{
	const std::string Place = Line.Word(0);
	const FString Name = Line.Text(1);
	for (const FSeed& Seed : Seeds)
	{
		if (FString(Seed.Place).Equals(FString(Place.c_str())) && (Seed.Name ? Name.Equals(Seed.Name) : IsIniName(Name)))
		{
			return FFileHelper::SaveStringToFile(
				Line.Text(2), *GetSeedPath(Seed, Name), FFileHelper::EEncodingOptions::ForceUTF8WithoutBOM);
		}
	}
	return false;
}
