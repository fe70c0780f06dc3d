#include "FileCache/ProjectFileScan.h"

#include <string>

#include "Async/Async.h"
#include "Host/ProjectFolder.h"
#include "Host/ProjectWalk.h"
#include "Misc/Paths.h"

namespace Velmora
{
	namespace
	{
		struct FExtensionRow
		{
			const TCHAR* Extension; // Lower case, without the dot.
			EProjectFileType Type;
		};

		constexpr FExtensionRow ProjectFileExtensions[] = {
			{ TEXT("h"), EProjectFileType::Code },		{ TEXT("hpp"), EProjectFileType::Code },	{ TEXT("hh"), EProjectFileType::Code },
			{ TEXT("inl"), EProjectFileType::Code },	{ TEXT("c"), EProjectFileType::Code },		{ TEXT("cc"), EProjectFileType::Code },
			{ TEXT("cpp"), EProjectFileType::Code },	{ TEXT("cxx"), EProjectFileType::Code },	{ TEXT("cs"), EProjectFileType::Code },
			{ TEXT("py"), EProjectFileType::Code },		{ TEXT("js"), EProjectFileType::Code },		{ TEXT("ts"), EProjectFileType::Code },
			{ TEXT("lua"), EProjectFileType::Code },	{ TEXT("java"), EProjectFileType::Code },	{ TEXT("rs"), EProjectFileType::Code },
			{ TEXT("go"), EProjectFileType::Code },		{ TEXT("sh"), EProjectFileType::Code },		{ TEXT("bat"), EProjectFileType::Code },
			{ TEXT("usf"), EProjectFileType::Code },	{ TEXT("ush"), EProjectFileType::Code },	{ TEXT("hlsl"), EProjectFileType::Code },
			{ TEXT("cmake"), EProjectFileType::Code },
			{ TEXT("uasset"), EProjectFileType::Asset },	{ TEXT("umap"), EProjectFileType::Asset },	{ TEXT("png"), EProjectFileType::Asset },
			{ TEXT("jpg"), EProjectFileType::Asset },	{ TEXT("jpeg"), EProjectFileType::Asset },	{ TEXT("tga"), EProjectFileType::Asset },
			{ TEXT("svg"), EProjectFileType::Asset },	{ TEXT("fbx"), EProjectFileType::Asset },	{ TEXT("wav"), EProjectFileType::Asset },
			{ TEXT("ogg"), EProjectFileType::Asset },	{ TEXT("ttf"), EProjectFileType::Asset },
			{ TEXT("ini"), EProjectFileType::Config },	{ TEXT("json"), EProjectFileType::Config },	{ TEXT("xml"), EProjectFileType::Config },
			{ TEXT("yaml"), EProjectFileType::Config },	{ TEXT("yml"), EProjectFileType::Config },	{ TEXT("toml"), EProjectFileType::Config },
			{ TEXT("cfg"), EProjectFileType::Config },	{ TEXT("conf"), EProjectFileType::Config },	{ TEXT("uproject"), EProjectFileType::Config },
			{ TEXT("uplugin"), EProjectFileType::Config },
		};

		bool IsWellFormedUtf8(std::string_view Text)
		{
			for (size_t Index = 0; Index < Text.size();)
			{
				const unsigned char Lead = static_cast<unsigned char>(Text[Index]);
				const int Extra = Lead < 0x80 ? 0 : Lead >= 0xC2 && Lead < 0xE0 ? 1 : (Lead & 0xF0) == 0xE0 ? 2 : Lead >= 0xF0 && Lead < 0xF5 ? 3 : -1;
				if (Extra < 0 || Index + Extra >= Text.size())
				{
					return false;
				}
				for (int Step = 1; Step <= Extra; ++Step)
				{
					if ((static_cast<unsigned char>(Text[Index + Step]) & 0xC0) != 0x80)
					{
						return false;
					}
				}
				Index += Extra + 1;
			}
			return true;
		}

		TSharedRef<TArray<FProjectFileCacheEntry>> ScanProjectFolder()
		{
			TSharedRef<TArray<FProjectFileCacheEntry>> Found = MakeShared<TArray<FProjectFileCacheEntry>>();
			const FString Root = GetProjectFolder();
			if (Root.IsEmpty())
			{
				return Found;
			}
			WalkProject(TCHAR_TO_UTF8(*Root), [&Found](const FProjectWalkEntry& Entry)
			{
				// A name that is no text cannot be written into a prompt, nor opened from one.
				if (!IsWellFormedUtf8(Entry.AbsolutePath))
				{
					return EProjectWalkStep::SkipFolder;
				}
				FProjectFileCacheEntry Record;
				Record.Path = UTF8_TO_TCHAR(std::string(Entry.AbsolutePath).c_str());
				Record.bIsDirectory = Entry.bIsDirectory;
				Record.Type = Entry.bIsDirectory ? EProjectFileType::Other : ClassifyProjectFile(Record.Path);
				Found->Add(MoveTemp(Record));
				return EProjectWalkStep::Continue;
			});
			return Found;
		}
	}

	EProjectFileType ClassifyProjectFile(const FString& Path)
	{
		const FString Extension = FPaths::GetExtension(Path);
		for (const FExtensionRow& Row : ProjectFileExtensions)
		{
			if (Extension.Equals(Row.Extension, ESearchCase::IgnoreCase))
			{
				return Row.Type;
			}
		}
		return EProjectFileType::Other;
	}

	void FProjectFileScan::Request()
	{
		{
			const std::scoped_lock Lock(Mutex);
			bWasRequested = true;
			bIsWanted = true;
			if (bIsRunning)
			{
				return;
			}
			bIsRunning = true;
		}
		Async(EAsyncExecution::Thread, [Self = AsShared()] { Self->RunUntilSatisfied(); });
	}

	void FProjectFileScan::RequestOnce()
	{
		{
			const std::scoped_lock Lock(Mutex);
			if (bWasRequested)
			{
				return;
			}
		}
		Request();
	}

	TSharedRef<const TArray<FProjectFileCacheEntry>> FProjectFileScan::GetEntries() const
	{
		const std::scoped_lock Lock(Mutex);
		return Entries;
	}

	void FProjectFileScan::RunUntilSatisfied()
	{
		for (;;)
		{
			{
				const std::scoped_lock Lock(Mutex);
				if (!bIsWanted)
				{
					bIsRunning = false;
					return;
				}
				bIsWanted = false;
			}
			const TSharedRef<TArray<FProjectFileCacheEntry>> Found = ScanProjectFolder();
			const std::scoped_lock Lock(Mutex);
			Entries = Found;
			bHasCompleted = true;
		}
	}
}
