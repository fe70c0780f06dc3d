#include "SettingRows.h"

#include "Host/SFoldingRow.h"
#include "Styling/AppStyle.h"
#include "Styling/CoreStyle.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SSpacer.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

namespace
{
	constexpr float RowSidePadding = 16.0f;
	constexpr float DiscSize = 8.0f;

	FSlateColor FromHexText(const TCHAR* Hex)
	{
		return FSlateColor(FLinearColor(FColor::FromHex(Hex)));
	}

	/** A field takes the room that there is, as far as its values are that long. */
	TSharedRef<SWidget> BoundWidth(const TSharedRef<SWidget>& Value)
	{
		// clang-format off
		return SNew(SHorizontalBox)
			+ SHorizontalBox::Slot()
			.FillWidth(1.0f)
			.MaxWidth(SettingRows::MaxValueWidth)
			[
				Value
			]
			+ SHorizontalBox::Slot()
			.FillWidth(0.001f)
			[
				SNew(SSpacer)
			];
		// clang-format on
	}
}

TSharedRef<SWidget> SettingRows::MakeGroupHeading(const FText& Text)
{
	// clang-format off
	return SNew(SBorder)
		.BorderImage(FAppStyle::GetBrush("ToolPanel.DarkGroupBorder"))
		.Padding(FMargin(RowSidePadding, 5.0f))
		[
			SNew(STextBlock)
			.Text(Text)
			.TextStyle(FAppStyle::Get(), TEXT("NormalText.Important"))
		];
	// clang-format on
}

TSharedRef<SWidget> SettingRows::MakeRow(
	const FText& Label, const FText& ToolTip, const TSharedRef<SWidget>& Value, bool bOdd, const TAttribute<FText>& Complaint)
{
	const auto GetComplaintVisibility = [Complaint]()
	{ return Complaint.Get(FText::GetEmpty()).IsEmpty() ? EVisibility::Collapsed : EVisibility::Visible; };
	// clang-format off
	return SNew(SBorder)
		.BorderImage(FAppStyle::GetBrush("WhiteBrush"))
		.BorderBackgroundColor(FromHexText(bOdd ? TEXT("FFFFFF06") : TEXT("FFFFFF00")))
		.Padding(FMargin(RowSidePadding, 6.0f))
		.ToolTipText(ToolTip)
		[
			SNew(SFoldingRow)
			+ SFoldingRow::Slot()
			.VAlign(VAlign_Center)
			[
				SNew(STextBlock)
				.Text(Label)
				.AutoWrapText(true)
				.Visibility(Label.IsEmpty() ? EVisibility::Collapsed : EVisibility::Visible)
			]
			+ SFoldingRow::Slot()
			.VAlign(VAlign_Center)
			[
				SNew(SVerticalBox)
				+ SVerticalBox::Slot()
				.AutoHeight()
				[
					BoundWidth(Value)
				]
				+ SVerticalBox::Slot()
				.AutoHeight()
				.Padding(0.0f, 4.0f, 0.0f, 0.0f)
				[
					SNew(STextBlock)
					.Text(Complaint)
					.TextStyle(FAppStyle::Get(), TEXT("SmallText"))
					.ColorAndOpacity(FSlateColor(FAppStyle::GetColor("Colors.Error")))
					.AutoWrapText(true)
					.Visibility_Lambda(GetComplaintVisibility)
				]
			]
		];
	// clang-format on
}

TSharedRef<SWidget> SettingRows::MakeState(const TAttribute<FSlateColor>& Color, const TAttribute<FText>& Word)
{
	// clang-format off
	return SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Center)
		.Padding(0.0f, 0.0f, 8.0f, 0.0f)
		[
			SNew(SImage)
			.Image(FAppStyle::GetBrush("Icons.FilledCircle"))
			.DesiredSizeOverride(FVector2D(DiscSize, DiscSize))
			.ColorAndOpacity(Color)
		]
		+ SHorizontalBox::Slot()
		.FillWidth(1.0f)
		.VAlign(VAlign_Center)
		[
			SNew(STextBlock)
			.Text(Word)
			.AutoWrapText(true)
		];
	// clang-format on
}

TSharedRef<SWidget> SettingRows::MakeButton(
	const char* Tag, const TAttribute<FText>& Text, const FText& ToolTip, TFunction<void()> OnClicked, const TAttribute<bool>& IsEnabled)
{
	const auto OnButton = [OnClicked = MoveTemp(OnClicked)]()
	{
		OnClicked();
		return FReply::Handled();
	};
	// clang-format off
	return SNew(SButton)
		.Tag(FName(Tag))
		.Text(Text)
		.ToolTipText(ToolTip)
		.IsEnabled(IsEnabled)
		.OnClicked_Lambda(OnButton);
	// clang-format on
}

TSharedRef<SWidget> SettingRows::MakeNote(const TAttribute<FText>& Text)
{
	// clang-format off
	return SNew(STextBlock)
		.Text(Text)
		.AutoWrapText(true)
		.ColorAndOpacity(FSlateColor(FAppStyle::GetColor("Colors.ForegroundSubdued")));
	// clang-format on
}

FSlateColor SettingRows::GetReadyColor()
{
	return FromHexText(TEXT("10B981"));
}

FSlateColor SettingRows::GetNeedsColor()
{
	return FSlateColor(FAppStyle::GetColor("Colors.Warning"));
}

FSlateColor SettingRows::GetFailedColor()
{
	return FSlateColor(FAppStyle::GetColor("Colors.Error"));
}

FSlateColor SettingRows::GetOffColor()
{
	return FromHexText(TEXT("6B7280"));
}
