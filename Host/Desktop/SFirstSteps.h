#pragma once

#include "CoreMinimal.h"
#include "Widgets/SCompoundWidget.h"

class STextBlock;

/**
 * The strip that greets at the first start: prompts to try, what the agent is, how a model is connected, where things are kept. It is
 * shown once, and goes when a prompt is sent; the menu Help shows it again.
 */
class SFirstSteps : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SFirstSteps) {}
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

	/** What is said of where things are kept. @param Folder  Empty when nothing is. */
	void TellFolder(const FString& Folder);
	/** Shows the strip unless the file says that it was shown, and says so there. */
	void ShowOnce(const FString& Path);
	void Open();
	void Close();
	bool IsOpen() const { return bIsOpen; }

	virtual void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) override;
	virtual FReply OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override;

private:
	TSharedRef<SWidget> MakePrompts();
	TSharedRef<SWidget> MakeButtons();

	TSharedPtr<STextBlock> Kept;
	bool bIsOpen = false;
	/** The agent was at work in the last frame. */
	bool bWasBusy = false;
};
