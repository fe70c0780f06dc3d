#include "Widgets/IconButton.h"

#include "Style/VelmoraUIStyles.h"
#include "Styling/AppStyle.h"
#include "Widgets/Images/SImage.h"

TSharedRef<SButton> MakeIconButton(const FIconButton& Look)
{
	// clang-format off
	return SNew(SButton)
		.Tag(Look.Tag)
		.ButtonStyle(FAppStyle::Get(), Look.Style)
		.ContentPadding(Look.ContentPadding)
		.OnClicked(Look.OnClicked)
		.IsEnabled(Look.IsEnabled)
		.Visibility(Look.Visibility)
		.ToolTipText(Look.ToolTip)
		[
			SNew(SImage)
			.Image(FVelmoraUIStyles::GetBrush(Look.Icon))
			.ColorAndOpacity(Look.Tint)
			.DesiredSizeOverride(FVector2D(Look.IconSize, Look.IconSize))
		];
	// clang-format on
}
