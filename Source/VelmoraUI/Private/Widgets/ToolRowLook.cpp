#include "Widgets/ToolRowLook.h"

#include "Style/VelmoraUIStyles.h"
#include "Styling/AppStyle.h"

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
