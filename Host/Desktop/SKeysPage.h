#pragma once

#include "Framework/Commands/InputChord.h"
#include "Widgets/SCompoundWidget.h"

class FUICommandInfo;
class SVerticalBox;

/** The page "Keys" of the settings: every command of the menus with its key, which can be changed. */
class SKeysPage : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SKeysPage) {}
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
	virtual ~SKeysPage() override;

	static FName GetPageName() { return FName(TEXT("Keys")); }
	/** Opens the settings at this page. */
	static void ShowPage();

	virtual FReply OnPreviewKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override;
	virtual void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) override;

private:
	void Rebuild();
	TSharedRef<SWidget> MakeValue(const FUICommandInfo& Command);
	TSharedRef<SWidget> MakeButton(const FString& Tag, const FText& Label, const FText& ToolTip, TFunction<void()> Action);
	void BeginCapture(FName Command);
	void EndCapture();
	/** Refuses in words what another command has already. */
	void Take(FName Command, const FInputChord& Chord);
	static FString FindClash(FName Command, const FInputChord& Chord);

	TSharedPtr<SVerticalBox> Rows;
	/** The command that waits for its key; none while nobody does. */
	FName Captured;
	FName ComplainedOf;
	FText Complaint;
	bool bWantsRebuild = false;
};

/** Keeps the page in the settings. */
class FKeysPage
{
public:
	/** Needs the module "Settings" and the frame's commands. */
	FKeysPage();
	~FKeysPage();
	FKeysPage(const FKeysPage&) = delete;
	FKeysPage& operator=(const FKeysPage&) = delete;

private:
	// The settings hold pages weakly.
	TSharedPtr<SWidget> Page;
};
