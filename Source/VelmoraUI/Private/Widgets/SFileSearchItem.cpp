#include "Widgets/SFileSearchItem.h"

#include "Style/VelmoraUIStyles.h"
#include "Styling/AppStyle.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"
#include "Widgets/WidgetLook.h"

void SFileSearchItem::Construct(const FArguments& InArgs)
{
	FileEntry = InArgs._FileEntry;
	SearchQuery = InArgs._SearchQuery;
	bIsSelected = InArgs._IsSelected;
	bIsMatchLit = false;

	// clang-format off
	const TSharedRef<SHorizontalBox> Row = MakeMarkedRow(
		SNew(SImage)
		.Image(this, &SFileSearchItem::GetFileIcon)
		.ColorAndOpacity(FSlateColor::UseForeground()));
	Row->AddSlot()
	.FillWidth(1.0f)
	.VAlign(VAlign_Center)
	[
		SNew(STextBlock)
		.Text(FText::FromString(FileEntry.DisplayPath))
		.Font(FVelmoraUIStyles::GetBodyFont())
		.ColorAndOpacity(this, &SFileSearchItem::GetTextColor)
	];
	ChildSlot
	[
		SNew(SBorder)
		.BorderImage(FAppStyle::GetBrush("Menu.Background"))
		.BorderBackgroundColor(this, &SFileSearchItem::GetBackgroundColor)
		.Padding(FMargin(8.0f, 4.0f))
		[
			Row
		]
	];
	// clang-format on
}

void SFileSearchItem::SetIsSelected(bool bInIsSelected)
{
	bIsSelected = bInIsSelected;
}

TSharedRef<SWidget> SFileSearchItem::BuildHighlightedText() const
{
	return SNew(STextBlock)
		.Text(FText::FromString(FileEntry.DisplayPath))
		.Font(FVelmoraUIStyles::GetBodyFont())
		.ColorAndOpacity(GetTextColor());
}

const FSlateBrush* SFileSearchItem::GetFileIcon() const
{
	using Velmora::UI::EFileType;
	static const FName Folder("Icons.FolderClosed");
	static const FName Code("ClassIcon.C");
	static const FName Asset("ClassIcon.BlueprintCore");
	static const FName Config("Icons.Settings");
	static const FName Generic("Icons.GenericFile");
	if (FileEntry.bIsDirectory)
	{
		return FAppStyle::GetBrush(Folder);
	}
	switch (FileEntry.FileType)
	{
	case EFileType::Code:
		return FAppStyle::GetBrush(Code);
	case EFileType::Asset:
		return FAppStyle::GetBrush(Asset);
	case EFileType::Config:
		return FAppStyle::GetBrush(Config);
	case EFileType::Other:
		break;
	}
	return FAppStyle::GetBrush(Generic);
}

FSlateColor SFileSearchItem::GetBackgroundColor() const
{
	if (bIsSelected)
	{
		return FSlateColor(FVelmoraUIStyles::GetAccentColor() * 0.6f);
	}
	return FSlateColor(
		IsHovered() ? FVelmoraUIStyles::GetToolMessageBackgroundColor().CopyWithNewOpacity(0.5f) : FLinearColor::Transparent);
}

FSlateColor SFileSearchItem::GetTextColor() const
{
	return bIsSelected ? FSlateColor(FLinearColor::White) : FSlateColor::UseForeground();
}
