#pragma once

#include "CoreMinimal.h"
#include "Templates/SharedPointer.h"

class FChatViewModel;
class SWidget;

/** The chat's tab as the frame's other parts reach it. Game thread. */
class FOpenChat
{
public:
	/**
	 * What the open tab shows; null without one. The tab gives it to others for reading: commands of the frame do what the user could
	 * do in the tab by hand, so they go the same way.
	 */
	static TSharedPtr<FChatViewModel> GetViewModel();

	/** Opens the tab or brings it to the front. Null when it cannot be opened. */
	static TSharedPtr<FChatViewModel> Show();

	/** Content of the open tab; null without one. */
	static TSharedPtr<SWidget> GetContent();

	/** The first shown widget with that tag in the tab; messages are passed over, so that a long conversation costs nothing. */
	static TSharedPtr<SWidget> FindByTag(FName Tag);

	/** As by the button's own key, so that all happens that a press makes happen. The keyboard comes back to where it was. */
	static void Press(const TSharedRef<SWidget>& Button);

	/** The tab stands in front. */
	static bool IsInFront();
};
