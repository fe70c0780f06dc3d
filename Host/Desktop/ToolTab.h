#pragma once

#include "CoreMinimal.h"
#include "Fonts/SlateFontInfo.h"
#include "Widgets/SWidget.h"

/** What the program's own tool tabs are made of, so that they look alike. Game thread. */
namespace ToolTab
{
	/** At both sides of what a row of a list shows, units. */
	constexpr float RowSide = 8.0f;

	/** What stands above, what takes the room that is left, and what stands below; null for nothing. */
	TSharedRef<SWidget> MakeFrame(
		const TSharedRef<SWidget>& Top, const TSharedRef<SWidget>& Middle, const TSharedPtr<SWidget>& Bottom = nullptr);

	/** A list in its dark field. */
	TSharedRef<SWidget> MakeListFrame(const TSharedRef<SWidget>& List);

	/** Widgets side by side, the first one as wide as can be. */
	TSharedRef<SWidget> MakeBar(const TArray<TSharedRef<SWidget>>& Widgets);

	/** The room of a row's text, the bar at the side left out; never less than zero. @param Taken  By what stands beside it, units. */
	float GetTextWidth(const SWidget& List, float Taken = 0.0f);

	/** Of lines of a machine. */
	FSlateFontInfo GetMonoFont();
}
