#include "Host/HostEditor.h"

#include "Editor.h"
#include "Logging/LogMacros.h"
#include "UObject/UObjectGlobals.h"

DEFINE_LOG_CATEGORY_STATIC(LogHostEditor, Log, All);

namespace
{
	constexpr int32 MaxRecords = 1000;

	struct FEditorState
	{
		TFunction<bool(UObject*)> OpenAsset;
		TFunction<bool(const FHostOpenedSource&)> OpenSource;
		TFunction<void(const FString&)> MissingSource;
		TArray<FString> OpenedAssets;
		TArray<FHostOpenedSource> OpenedSources;
	};

	FEditorState& GetEditorState()
	{
		static FEditorState State;
		return State;
	}

	template <typename T>
	void AddRecord(TArray<T>& Records, const T& Record)
	{
		if (Records.Num() >= MaxRecords)
		{
			Records.RemoveAt(0);
		}
		Records.Add(Record);
	}
}

void FHostEditor::StartUp()
{
	if (!GEditor)
	{
		GEditor = NewObject<UEditorEngine>();
	}
}

void FHostEditor::ShutDown()
{
	if (GEditor)
	{
		GEditor->MarkAsGarbage();
		GEditor = nullptr;
	}
	GetEditorState() = FEditorState();
}

void FHostEditor::SetOpenAssetHook(TFunction<bool(UObject*)> Hook)
{
	GetEditorState().OpenAsset = MoveTemp(Hook);
}

void FHostEditor::SetOpenSourceHook(TFunction<bool(const FHostOpenedSource&)> Hook)
{
	GetEditorState().OpenSource = MoveTemp(Hook);
}

void FHostEditor::SetMissingSourceHook(TFunction<void(const FString&)> Hook)
{
	GetEditorState().MissingSource = MoveTemp(Hook);
}

const TArray<FString>& FHostEditor::GetOpenedAssets()
{
	return GetEditorState().OpenedAssets;
}

const TArray<FHostOpenedSource>& FHostEditor::GetOpenedSources()
{
	return GetEditorState().OpenedSources;
}

void FHostEditor::ClearRecords()
{
	GetEditorState().OpenedAssets.Empty();
	GetEditorState().OpenedSources.Empty();
}

bool FHostEditor::OpenAsset(UObject* Asset)
{
	AddRecord(GetEditorState().OpenedAssets, Asset->GetPathName());
	if (const TFunction<bool(UObject*)> Hook = GetEditorState().OpenAsset)
	{
		return Hook(Asset);
	}
	UE_LOG(LogHostEditor, Display, TEXT("Would open the asset %s"), *Asset->GetPathName());
	return true;
}

bool FHostEditor::OpenSource(const FHostOpenedSource& Source)
{
	AddRecord(GetEditorState().OpenedSources, Source);
	if (const TFunction<bool(const FHostOpenedSource&)> Hook = GetEditorState().OpenSource)
	{
		return Hook(Source);
	}
	UE_LOG(LogHostEditor, Display, TEXT("Would open %s at line %d"), *Source.Path, Source.Line);
	return true;
}

void FHostEditor::TellMissingSource(const FString& Path)
{
	UE_LOG(LogHostEditor, Warning, TEXT("There is no source file %s"), *Path);
	if (const TFunction<void(const FString&)> Hook = GetEditorState().MissingSource)
	{
		Hook(Path);
	}
}
