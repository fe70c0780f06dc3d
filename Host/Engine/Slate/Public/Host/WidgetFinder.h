#pragma once

#include "CoreMinimal.h"
#include "Widgets/SWidget.h"

/**
 * Finds widgets the way a user names them: by tag, by a text on screen, by tooltip. Looks at all layers of the
 * application, the topmost first, and only at what is shown. Serves the program's options, scripts and tests.
 */
class SLATE_API FWidgetFinder
{
public:
	/** Shown widgets for which the test holds, in tree order of each layer. */
	static TArray<TSharedRef<SWidget>> FindAll(TFunctionRef<bool(SWidget&)> Test);
	/** The first shown widget with that tag; null when there is none. */
	static TSharedPtr<SWidget> FindByTag(FName Tag);
	static TArray<TSharedRef<SWidget>> FindByType(FName Type);
	/** Widgets whose own text is exactly this, letter case included. */
	static TArray<TSharedRef<SWidget>> FindByText(FStringView Text);
	/** Widgets whose tooltip begins with this line. */
	static TArray<TSharedRef<SWidget>> FindByToolTip(FStringView FirstLine);
	/** "#Tag", a whole text, or the first line of a tooltip. */
	static TArray<TSharedRef<SWidget>> FindByName(const FString& Name);
	/** Non-empty texts on screen in tree order. */
	static TArray<FString> GetVisibleTexts();
	/** One line a widget: type, tag, text, geometry; children indented. */
	static FString DumpTree();
	/** True when the widget and all above it are shown, and something of it lies in the window. */
	static bool IsShown(const SWidget& Widget);
	/** Enabled along the whole path. */
	static bool IsEnabledInTree(const SWidget& Widget);
};
