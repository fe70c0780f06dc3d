#include "Widgets/ToolRowLook.h"

#include "Style/VelmoraUIStyles.h"
#include "Styling/AppStyle.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

namespace
{
	TSharedRef<SWidget> MakeToolMark(
		const TAttribute<const FSlateBrush*>& Icon, const TAttribute<FSlateColor>& Color, const TOptional<FVector2D>& Size)
	{
		// clang-format off
		return SNew(SImage)
			.Image(Icon)
			.ColorAndOpacity(Color)
			.DesiredSizeOverride(Size);
		// clang-format on
	}
}

FString FToolRowLook::MakeLabel(const FChatMessage& Message)
{
	if (Message.ToolActionVerb.IsEmpty())
	{
		return Message.ToolDisplayName;
	}
	if (Message.ToolDisplayParameter.IsEmpty())
	{
		return Message.ToolActionVerb + TEXT("...");
	}
	return Message.ToolActionVerb + TEXT(" ") + Message.ToolDisplayParameter;
}

FLinearColor FToolRowLook::ReadColor(const FString& ToolColor)
{
	return ToolColor.IsEmpty() ? FLinearColor::White : FVelmoraUIStyles::FromHexSRGB(*ToolColor);
}

const FSlateBrush* FToolRowLook::GetStatusBrush(EToolStatus Status)
{
	static const FName Progress("ToolExecution_Progress_16");
	static const FName Check("Symbols.Check");
	static const FName Cross("Symbols.X");
	switch (Status)
	{
	case EToolStatus::Running:
		return FVelmoraUIStyles::GetBrush(Progress);
	case EToolStatus::Success:
		return FAppStyle::GetBrush(Check);
	case EToolStatus::Failed:
		return FAppStyle::GetBrush(Cross);
	}
	return nullptr;
}

FSlateColor FToolRowLook::GetStatusColor(EToolStatus Status)
{
	switch (Status)
	{
	case EToolStatus::Running:
	case EToolStatus::Success:
		return FSlateColor(FVelmoraUIStyles::GetToolStatusSuccessColor());
	case EToolStatus::Failed:
		return FSlateColor(FVelmoraUIStyles::GetToolStatusFailedColor());
	}
	return FSlateColor(FLinearColor::White);
}

TSharedRef<SWidget> FToolRowLook::MakeRow(const FChatMessage& Message, const FToolRowShape& Shape)
{
	// clang-format off
	return SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Center)
		.Padding(0.0f, 0.0f, 8.0f, 0.0f)
		[
			MakeToolMark(FAppStyle::GetBrush("Icons.FilledCircle"), FSlateColor(ReadColor(Message.ToolColor)), FVector2D(8.0, 8.0))
		]
		+ SHorizontalBox::Slot()
		.FillWidth(1.0f)
		.VAlign(VAlign_Center)
		.Padding(Shape.LabelPadding)
		[
			SNew(STextBlock)
			.Text(FText::FromString(MakeLabel(Message)))
			.Font(FVelmoraUIStyles::GetToolMessageFont())
			.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetToolMessageTextColor()))
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Center)
		.Padding(Shape.StatusPadding)
		[
			MakeToolMark(Shape.StatusIcon, Shape.StatusColor, Shape.StatusSize)
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Center)
		[
			SNew(STextBlock)
			.Text(FText::FromString(Message.GetFormattedTimestamp()))
			.Font(FVelmoraUIStyles::GetTimestampFont())
			.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetTextColorSecondary()))
		];
	// clang-format on
}
