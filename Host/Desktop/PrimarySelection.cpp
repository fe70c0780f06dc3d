#include "PrimarySelection.h"

#include "Framework/Application/SlateApplication.h"
#include "Host/HostTextWidget.h"
#include "Host/Platform.h"

void FPrimarySelection::NoteTurn()
{
	FSlateApplication& Application = FSlateApplication::Get();
	// A selection under way is none yet.
	if (Application.GetFrameStats().FrameCount == SeenFrames || Application.GetMouseCaptor())
	{
		return;
	}
	SeenFrames = Application.GetFrameStats().FrameCount;
	const TSharedPtr<SWidget> Focused = Application.GetKeyboardFocusedWidget();
	const SHostTextWidget* const Text = dynamic_cast<const SHostTextWidget*>(Focused.Get());
	const bool bIsSelected = Text && Text->AnyTextSelected();
	const FTextLocation Cursor = bIsSelected ? Text->GetCursorLocation() : FTextLocation();
	// The text itself may be long; its caret moves whenever the selection does.
	const bool bIsAnother = bIsSelected && (!bWasSelected || !SeenText.HasSameObject(Focused.Get()) || !(Cursor == SeenCursor));
	SeenText = Focused;
	SeenCursor = Cursor;
	bWasSelected = bIsSelected;
	if (bIsAnother)
	{
		FHostPlatform::SetPrimarySelection(Text->GetSelectedText().ToString());
	}
}
