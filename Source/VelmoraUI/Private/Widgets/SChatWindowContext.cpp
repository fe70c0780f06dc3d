#include "Widgets/SChatWindow.h"

#include "Brushes/SlateRoundedBoxBrush.h"
#include "Framework/Application/SlateApplication.h"
#include "Misc/Paths.h"
#include "SourceCodeNavigation.h"
#include "Style/VelmoraUIStyles.h"
#include "Styling/AppStyle.h"
#include "Styling/CoreStyle.h"
#include "ViewModels/ChatViewModel.h"
#include "Widgets/AssetEditor.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Input/SMultiLineEditableTextBox.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/ProjectPath.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

#define LOCTEXT_NAMESPACE "VelmoraUI"

namespace
{

	/** Slate units between two chips. */
	constexpr float ChipGap = 4.0f;

	bool IsAssetExtension(const FString& Extension)
	{
		return Extension == TEXT("uasset") || Extension == TEXT("umap");
	}

	FString GetChipName(const FString& File)
	{
		// An asset is known by its name alone, as the editor shows it; of a file the extension tells half of what it is.
		const FString Extension = FPaths::GetExtension(File).ToLower();
		if (IsAssetExtension(Extension))
		{
			return FPaths::GetBaseFilename(File);
		}
		// A folder without a dot in its name stands whole, since its name alone says little.
		if (Extension.IsEmpty() && FPaths::DirectoryExists(GetFullProjectDir() / File))
		{
			return File;
		}
		return FPaths::GetCleanFilename(File);
	}

} // namespace

TSharedRef<SWidget> SChatWindow::BuildContextChipsArea()
{
	// clang-format off
	return SNew(SBorder)
		.Tag(FName("ContextChips"))
		.BorderImage(FAppStyle::GetBrush("NoBorder"))
		.Visibility(this, &SChatWindow::GetContextChipsVisibility)
		[
			SNew(SBorder)
			.BorderImage(FAppStyle::GetBrush("ToolPanel.GroupBorder"))
			.Padding(FMargin(8.0f, 4.0f, 8.0f, 4.0f))
			.Clipping(EWidgetClipping::ClipToBounds)
			[
				SNew(SVerticalBox)
				+ SVerticalBox::Slot()
				.AutoHeight()
				.Padding(TAttribute<FMargin>::CreateSP(this, &SChatWindow::GetContextChipsPadding))
				[
					SAssignNew(ContextChipsContainer, SHorizontalBox)
				]
			]
		];
	// clang-format on
}

TSharedRef<SWidget> SChatWindow::BuildContextChip(const FString& File, TSharedPtr<SButton>& OutRemoveButton)
{
	static const FSlateRoundedBoxBrush ChipBrush(
		FVelmoraUIStyles::GetInlineCodeBackgroundColor(), 6.0f, FVelmoraUIStyles::GetInlineCodeBorderColor(), 1.0f);
	// clang-format off
	return SNew(SBorder)
		.BorderImage(&ChipBrush)
		.Padding(FMargin(10.0f, 6.0f))
		[
			SNew(SHorizontalBox)
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.VAlign(VAlign_Center)
			.Padding(0.0f, 0.0f, 4.0f, 0.0f)
			[
				SNew(STextBlock)
				.Text(FText::FromString(GetChipName(File)))
				.Font(FVelmoraUIStyles::GetMonospaceFont())
				.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetStatusBusyColor()))
				.ToolTipText(FText::FromString(File))
			]
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.VAlign(VAlign_Center)
			[
				SAssignNew(OutRemoveButton, SButton)
				.ButtonStyle(FAppStyle::Get(), "NoBorder")
				.ContentPadding(FMargin(0.0f))
				.OnClicked_Lambda([WeakWindow = TWeakPtr<SChatWindow>(SharedThis(this)), File]()
				{
					if (const TSharedPtr<SChatWindow> Window = WeakWindow.Pin())
					{
						Window->OnRemoveContextFile(File);
					}
					return FReply::Handled();
				})
				[
					SNew(STextBlock)
					.Text(FText::FromString(TEXT("×")))
					.Font(FCoreStyle::GetDefaultFontStyle("Bold", 10))
					.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetTextColorSecondary().CopyWithNewOpacity(0.9f)))
				]
			]
		];
	// clang-format on
}

FMargin SChatWindow::GetContextChipsPadding() const
{
	const TSharedPtr<SWidget> Row = ContextChipsContainer->GetParentWidget();
	const double ViewWidth = Row.IsValid() ? Row->GetCachedGeometry().GetLocalSize().X : 0.0;
	FChildren* Chips = ContextChipsContainer->GetChildren();
	// A row of chips that is too long shows its beginning, and is moved only for the one that has the keyboard.
	double End = 0.0;
	for (int32 Index = 0; Index < Chips->Num(); ++Index)
	{
		const TSharedRef<SWidget> Chip = Chips->GetChildAt(Index);
		End += Chip->GetDesiredSize().X;
		// A chip under the pointer stays there, or a press on it would miss.
		if (Chip->HasFocusedDescendants() && !Chip->IsHovered() && End > ViewWidth)
		{
			return FMargin(static_cast<float>(ViewWidth - End), 0.0f, 0.0f, 0.0f);
		}
		End += ChipGap;
	}
	return FMargin(0.0f);
}

void SChatWindow::OnContextFilesChanged()
{
	// The chip whose button has the keyboard, and whether it was the mouse that gave it.
	int32 FocusedChip = INDEX_NONE;
	bool bByMouse = false;
	FChildren* Chips = ContextChipsContainer->GetChildren();
	for (int32 Index = 0; Index < Chips->Num(); ++Index)
	{
		if (Chips->GetChildAt(Index)->HasFocusedDescendants())
		{
			FocusedChip = Index;
			bByMouse = Chips->GetChildAt(Index)->IsHovered();
		}
	}

	// All anew: there are few of them, and what differs may stand anywhere.
	ContextChipsContainer->ClearChildren();
	TArray<TSharedPtr<SButton>> RemoveButtons;
	for (const FString& File : ViewModel->GetContextFiles())
	{
		// clang-format off
		ContextChipsContainer->AddSlot()
		.AutoWidth()
		.Padding(0.0f, 0.0f, ChipGap, 0.0f)
		[
			BuildContextChip(File, RemoveButtons.AddDefaulted_GetRef())
		];
		// clang-format on
	}

	StayAwake.Start();
	if (FocusedChip == INDEX_NONE)
	{
		return;
	}
	// Whoever removes by key may go on removing; whoever clicked goes on typing.
	if (bByMouse || RemoveButtons.IsEmpty())
	{
		FSlateApplication::Get().SetKeyboardFocus(InputTextBox, EFocusCause::SetDirectly);
	}
	else
	{
		FSlateApplication::Get().SetKeyboardFocus(RemoveButtons[FMath::Min(FocusedChip, RemoveButtons.Num() - 1)], EFocusCause::Navigation);
	}
}

void SChatWindow::OnRemoveContextFile(const FString& File)
{
	if (ViewModel.IsValid())
	{
		ViewModel->RemoveContextFile(File);
	}
}

FString SChatWindow::GetCurrentConversationId() const
{
	const TSharedPtr<Velmora::FConversationMetadata> Metadata = ViewModel.IsValid() ? ViewModel->GetCurrentConversationMetadata() : nullptr;
	return Metadata.IsValid() ? Metadata->Id : FString();
}

void SChatWindow::OnFileClicked(const FString& Path)
{
	// 1. What begins with a slash is the name of an asset already.
	if (Path.StartsWith(TEXT("/"), ESearchCase::IgnoreCase))
	{
		OpenAssetEditor(Path);
		return;
	}
	// 2. The file of an asset. Below the content folder its name follows from its path; both are absolute by then, as the folder of a
	// project need not be.
	if (IsAssetExtension(FPaths::GetExtension(Path).ToLower()))
	{
		FString ObjectPath = Path;
		const FString ContentDir = FPaths::ConvertRelativePathToFull(FPaths::ProjectContentDir());
		if (!FPaths::IsRelative(Path) && Path.StartsWith(ContentDir, ESearchCase::IgnoreCase))
		{
			ObjectPath = TEXT("/Game/") + FPaths::GetBaseFilename(Path.RightChop(ContentDir.Len()), false);
		}
		OpenAssetEditor(ObjectPath);
		return;
	}
	// 3. Any other file opens in the code editor, from the project on.
	FString FullPath = ToFullProjectPath(Path);
	FPaths::NormalizeFilename(FullPath);
	FSourceCodeNavigation::OpenSourceFile(FullPath, 0, 0);
}

#undef LOCTEXT_NAMESPACE
