#include "ToolTab.h"

#include "Styling/AppStyle.h"
#include "Styling/CoreStyle.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/SBoxPanel.h"

namespace
{
	constexpr float PartGap = 8.0f;
	constexpr float ScrollBarRoom = 12.0f;
}

TSharedRef<SWidget> ToolTab::MakeFrame(const TSharedRef<SWidget>& Top, const TSharedRef<SWidget>& Middle, const TSharedPtr<SWidget>& Bottom)
{
	const TSharedRef<SVerticalBox> Parts = SNew(SVerticalBox);
	Parts->AddSlot().AutoHeight().Padding(0.0f, 0.0f, 0.0f, PartGap)[Top];
	Parts->AddSlot().FillHeight(1.0f)[Middle];
	if (Bottom)
	{
		Parts->AddSlot().AutoHeight().Padding(0.0f, PartGap, 0.0f, 0.0f)[Bottom.ToSharedRef()];
	}
	return SNew(SBorder).BorderImage(FAppStyle::GetBrush("ToolPanel.GroupBorder")).Padding(8.0f)[Parts];
}

TSharedRef<SWidget> ToolTab::MakeListFrame(const TSharedRef<SWidget>& List)
{
	List->SetClipping(EWidgetClipping::ClipToBounds);
	return SNew(SBorder).BorderImage(FAppStyle::GetBrush("ToolPanel.DarkGroupBorder")).Padding(FMargin(0.0f, 4.0f))[List];
}

TSharedRef<SWidget> ToolTab::MakeBar(const TArray<TSharedRef<SWidget>>& Widgets)
{
	const TSharedRef<SHorizontalBox> Bar = SNew(SHorizontalBox);
	for (const TSharedRef<SWidget>& Widget : Widgets)
	{
		if (Bar->NumSlots() == 0)
		{
			Bar->AddSlot().FillWidth(1.0f).VAlign(VAlign_Center)[Widget];
		}
		else
		{
			Bar->AddSlot().AutoWidth().VAlign(VAlign_Center).Padding(PartGap, 0.0f, 0.0f, 0.0f)[Widget];
		}
	}
	return Bar;
}

float ToolTab::GetTextWidth(const SWidget& List, float Taken)
{
	return FMath::Max(static_cast<float>(List.GetCachedGeometry().GetLocalSize().X) - 2.0f * RowSide - ScrollBarRoom - Taken, 0.0f);
}

FSlateFontInfo ToolTab::GetMonoFont()
{
	return FCoreStyle::GetDefaultFontStyle("Mono", 9.0f);
}
