#pragma once

#include "Framework/Commands/UICommandList.h"
#include "Host/SDockArea.h"
#include "OutputLog.h"
#include "SFindStrip.h"
#include "SFirstSteps.h"
#include "SourceFind.h"
#include "Widgets/SCompoundWidget.h"

class FMenuBuilder;
class FSpawnTabArgs;
class SBox;
class SHostTextWidget;
class SMenuBar;

/**
 * The program's frame: the menu bar, which modules extend through the module "LevelEditor", above the dock area, and the
 * tab of the log. There is one at a time.
 */
class SEditorFrame : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SEditorFrame) {}
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs, const TSharedRef<FOutputLog>& InLog);
	virtual ~SEditorFrame() override;

	static FName GetLogTabName() { return FName(TEXT("OutputLog")); }
	static FName GetActivityTabName() { return FName(TEXT("AgentActivity")); }
	static FName GetConversationsTabName() { return FName(TEXT("Conversations")); }
	const TSharedRef<SDockArea>& GetDockArea() const { return DockArea; }
	SFirstSteps& GetFirstSteps() { return *FirstSteps; }

	virtual void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) override;
	virtual FReply OnPreviewKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override;
	virtual FReply OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override;
	virtual FReply OnMouseWheel(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;

private:
	/** What the Edit menu does to the text that the user works in. */
	using FTextAction = void (SHostTextWidget::*)();

	void MapCommands();
	/** A key was changed. */
	void RemapCommands();
	TSharedRef<SWidget> MakeDockRoom();
	void MapTextCommand(const TSharedPtr<FUICommandInfo>& Command, FTextAction Action, bool (*CanDo)(const SHostTextWidget&));
	TSharedRef<SWidget> MakeMenuBar();
	void RegisterLogTab();
	void RegisterActivityTab();
	void RegisterConversationsTab();
	void RegisterSourceTab();
	FText GetTurnText() const;
	/** What the menus leave of their bar, units. */
	float GetTurnTextRoom() const;
	void BuildFileMenu(FMenuBuilder& Builder);
	void BuildEditMenu(FMenuBuilder& Builder);
	void BuildWindowMenu(FMenuBuilder& Builder);
	void BuildToolsMenu(FMenuBuilder& Builder);
	void BuildHelpMenu(FMenuBuilder& Builder);
	/** While a menu is open: the text that had the keyboard before. */
	TSharedPtr<SHostTextWidget> GetEditedText() const;
	static TSharedPtr<SHostTextWidget> GetFocusedText();

	TSharedRef<FOutputLog> Log = MakeShared<FOutputLog>();
	TSharedRef<SDockArea> DockArea = SNew(SDockArea);
	TSharedRef<FUICommandList> CommandList = MakeShared<FUICommandList>();
	TSharedRef<FConversationFind> Find = MakeShared<FConversationFind>();
	TSharedRef<FSourceFind> SourceFind = MakeShared<FSourceFind>();
	TSharedRef<SFindStrip> FindStrip = SNew(SFindStrip, Find, SourceFind);
	TSharedRef<SFirstSteps> FirstSteps = SNew(SFirstSteps);
	TSharedPtr<SMenuBar> MenuBar;
	TSharedPtr<SBox> MenuHolder;
	TWeakPtr<SHostTextWidget> TextBeforeMenu;
};
