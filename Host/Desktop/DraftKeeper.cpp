#include "DraftKeeper.h"

#include "Framework/Application/SlateApplication.h"
#include "HAL/FileManager.h"
#include "Host/HostAtomicFile.h"
#include "Host/HostFileNames.h"
#include "Host/HostFolders.h"
#include "Host/HostServices.h"
#include "Host/HostTextWidget.h"
#include "Host/StoreLocation.h"
#include "Host/WidgetFinder.h"
#include "Misc/FileHelper.h"
#include "Misc/Paths.h"
#include "PromptBox.h"

namespace
{
	// Together, with the time that a save takes, less than a second.
	constexpr float DraftLookSeconds = 0.25f;
	constexpr double DraftWriteSeconds = 0.4;
	/** No prompt is nearly as long; a file that is one is something else. */
	constexpr int64 MaxDraftBytes = 256 * 1024 * 1024;

	uint64 CountFrames()
	{
		return FSlateApplication::IsInitialized() ? FSlateApplication::Get().GetFrameStats().FrameCount : 0;
	}

	/** Stands in front of each attached file, behind the text. No text holds it: Unicode keeps it for such uses. */
	constexpr TCHAR FileMark = 0xFFFF;

	/** UTF-16 with its mark, which keeps every text as it is. */
	std::string EncodeDraft(const FString& Text, const TArray<FString>& Files)
	{
		std::string Bytes = "\xFF\xFE";
		Bytes.reserve(static_cast<std::size_t>(Text.Len()) * 2 + 2);
		const auto Add = [&Bytes](const FString& Units)
		{
			for (const TCHAR Unit : Units)
			{
				Bytes.push_back(static_cast<char>(Unit & 0xFF));
				Bytes.push_back(static_cast<char>(Unit >> 8));
			}
		};
		Add(Text);
		for (const FString& File : Files)
		{
			Add(FString::Chr(FileMark) + File);
		}
		return Bytes;
	}

	void DecodeDraft(FString& InOutText, TArray<FString>& OutFiles)
	{
		int32 Mark = INDEX_NONE;
		while (InOutText.FindLastChar(FileMark, Mark))
		{
			OutFiles.Insert(InOutText.RightChop(Mark + 1), 0);
			InOutText.LeftInline(Mark);
		}
	}
}

FDraftKeeper::FDraftKeeper(const FString& InPath)
	: File(InPath)
	, Path(File.GetPath())
	, Writer([this]() { Write(); }, DraftWriteSeconds)
{
	Look();
	StartLooking();
}

FDraftKeeper::~FDraftKeeper()
{
	// The box may have changed since the last look.
	FTSTicker::RemoveTicker(Ticker);
	Look();
	Finish();
}

void FDraftKeeper::StartLooking()
{
	Ticker = FTSTicker::GetCoreTicker().AddTicker(TEXT("Draft"), DraftLookSeconds,
		[this](float)
		{
			const uint64 Frames = CountFrames();
			const bool bGoesOn = Frames != SeenFrames;
			SeenFrames = Frames;
			Look();
			if (!bGoesOn)
			{
				Ticker.Reset();
			}
			return bGoesOn;
		});
}

void FDraftKeeper::NoteTurn()
{
	// Without a frame no text has changed, and a program at rest must not wake up four times a second.
	if (!Ticker.IsValid() && CountFrames() != SeenFrames)
	{
		StartLooking();
	}
}

TSharedPtr<SHostTextWidget> FDraftKeeper::FindBox()
{
	TSharedPtr<SWidget> Found = Box.Pin();
	if (!Found)
	{
		Found = FWidgetFinder::FindByTag(TEXT("InputTextBox"));
		// By what it is and not by its type's name: the prompt may be a box of its own kind.
		if (!dynamic_cast<SHostTextWidget*>(Found.Get()))
		{
			return nullptr;
		}
		Box = Found;
		Restore(static_cast<SHostTextWidget&>(*Found));
	}
	return StaticCastSharedPtr<SHostTextWidget>(Found);
}

void FDraftKeeper::ReadStored(FString& OutText, TArray<FString>& OutFiles)
{
	{
		const std::lock_guard<std::mutex> Lock(Mutex);
		OutText = Text.ToString();
		OutFiles = Files;
	}
	if (OutText.IsEmpty() && OutFiles.IsEmpty() && HostGetPathKind(Path) == EHostPathKind::File &&
		IFileManager::Get().FileSize(*Path) <= MaxDraftBytes)
	{
		FFileHelper::LoadFileToString(OutText, *Path);
		DecodeDraft(OutText, OutFiles);
	}
}

void FDraftKeeper::Restore(SHostTextWidget& NewBox)
{
	FString Stored;
	TArray<FString> StoredFiles;
	ReadStored(Stored, StoredFiles);
	if ((Stored.IsEmpty() && StoredFiles.IsEmpty()) || !NewBox.GetText().IsEmpty())
	{
		return;
	}
	NewBox.SetText(FText::FromString(MoveTemp(Stored)));
	NewBox.GoTo(ETextLocation::EndOfDocument);
	FPromptBox::AttachFiles(StoredFiles);
	if (FSlateApplication::IsInitialized())
	{
		FSlateApplication::Get().NoteActivity();
	}
	const std::lock_guard<std::mutex> Lock(Mutex);
	Text = NewBox.GetText();
	Files = MoveTemp(StoredFiles);
}

void FDraftKeeper::Look()
{
	// The whole text is compared by identity and copied by reference: it may be megabytes long.
	const TSharedPtr<SHostTextWidget> Found = FindBox();
	if (!Found)
	{
		return;
	}
	// The box makes a text once for each change, so the same data mean the same text.
	FText Now = Found->GetText();
	TArray<FString> NowFiles = FPromptBox::GetFiles();
	{
		const std::lock_guard<std::mutex> Lock(Mutex);
		if (Now.IdenticalTo(Text) && NowFiles == Files)
		{
			return;
		}
		std::swap(Text, Now);
		std::swap(Files, NowFiles);
	}
	Writer.Request();
}

void FDraftKeeper::Write()
{
	FText Current;
	TArray<FString> CurrentFiles;
	{
		const std::lock_guard<std::mutex> Lock(Mutex);
		Current = Text;
		CurrentFiles = Files;
	}
	FString Reason;
	if (Current.IsEmpty() && CurrentFiles.IsEmpty())
	{
		if (!IFileManager::Get().Delete(*Path, false, false, true))
		{
			Reason = TEXT("it cannot be deleted");
		}
	}
	else if (const FOutcome Made = Velmora::MakePrivateFolder(FPaths::GetPath(Path)); !Made)
	{
		Reason = HostFileNameFromBytes(Made.GetWords());
	}
	else
	{
		const std::string Bytes = EncodeDraft(Current.ToString(), CurrentFiles);
		HostSaveFile(Path, Bytes.data(), static_cast<int64>(Bytes.size()), HostWritePrivate, Reason);
	}
	if (!Reason.IsEmpty() && !Reason.Equals(Failure))
	{
		FHostServices::ReportSaveFailure(Path, Reason);
	}
	Failure = MoveTemp(Reason);
}
