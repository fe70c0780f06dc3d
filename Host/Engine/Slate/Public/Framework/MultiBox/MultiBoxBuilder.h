#pragma once

#include "Framework/Commands/UIAction.h"
#include "Framework/Commands/UICommandInfo.h"
#include "Framework/MultiBox/MultiBoxExtender.h"
#include "Misc/Attribute.h"
#include "Textures/SlateIcon.h"
#include "Widgets/SWidget.h"

class FUICommandList;
struct FMenuBarPullDown;
struct FMenuItem;

DECLARE_DELEGATE_OneParam(FNewMenuDelegate, FMenuBuilder&)

	/** What builders of menus have in common: where commands find what they do, and who may add to the menu. Game thread. */
	class SLATE_API FMultiBoxBuilder
{
public:
	FMultiBoxBuilder(const TSharedPtr<const FUICommandList>& InCommandList, const TSharedPtr<FExtender>& InExtender);
	virtual ~FMultiBoxBuilder();

	/** Commands added from now on are looked up there. */
	void PushCommandList(const TSharedRef<const FUICommandList>& CommandList);
	void PopCommandList();
	/** Null when there is none. */
	TSharedPtr<const FUICommandList> GetTopCommandList() const;
	/** Sections and entries added from now on can be extended by it. */
	void PushExtender(const TSharedRef<FExtender>& InExtender);
	void PopExtender();

protected:
	TArray<TSharedPtr<const FUICommandList>> CommandLists;
	TArray<TSharedPtr<FExtender>> Extenders;
};

/** Builds one menu: sections with headings, entries, sub-menus, separators. */
class SLATE_API FMenuBuilder : public FMultiBoxBuilder
{
public:
	/** @param bInShouldCloseWindowAfterMenuSelection  False keeps the menus open when an entry was picked. */
	FMenuBuilder(bool bInShouldCloseWindowAfterMenuSelection, TSharedPtr<const FUICommandList> InCommandList,
		TSharedPtr<FExtender> InExtender = nullptr);
	virtual ~FMenuBuilder() override;

	/** A section without entries is left out, its heading too; what extends its hook is not. */
	void BeginSection(FName InExtensionHook, const TAttribute<FText>& InHeadingText = TAttribute<FText>());
	void EndSection();
	/** A command that no list maps stands there greyed. Label, tooltip and icon are the command's unless given. */
	void AddMenuEntry(const TSharedPtr<const FUICommandInfo> InCommand, FName InExtensionHook = NAME_None,
		const TAttribute<FText>& InLabelOverride = TAttribute<FText>(), const TAttribute<FText>& InToolTipOverride = TAttribute<FText>(),
		const FSlateIcon& InIconOverride = FSlateIcon());
	void AddMenuEntry(const TAttribute<FText>& InLabel, const TAttribute<FText>& InToolTip, const FSlateIcon& InIcon,
		const FUIAction& InAction, FName InExtensionHook = NAME_None,
		EUserInterfaceActionType UserInterfaceActionType = EUserInterfaceActionType::Button);
	/** The delegate is called each time the sub-menu opens. @param bInOpenSubMenuOnClick  Not yet when the pointer rests on it. */
	void AddSubMenu(const TAttribute<FText>& InLabel, const TAttribute<FText>& InToolTip, const FNewMenuDelegate& InSubMenu,
		bool bInOpenSubMenuOnClick = false, const FSlateIcon& InIcon = FSlateIcon(), bool bInShouldCloseWindowAfterMenuSelection = true,
		FName InExtensionHook = NAME_None);
	/** None is drawn at an end of the menu or beside another one. */
	void AddMenuSeparator(FName InExtensionHook = NAME_None);
	void AddWidget(TSharedRef<SWidget> InWidget, const FText& Label, bool bNoIndent = false);
	/** Once; the builder is empty afterwards. */
	TSharedRef<SWidget> MakeWidget();

private:
	/** Where extensions add, unless that is what is going on there already. */
	void ApplyHook(FName Hook, EExtensionHook::Position Position);
	void AddItem(FMenuItem&& Item, FName Hook);

	struct FOpenSection
	{
		FName Hook;
		/** Of its heading among the items. */
		int32 Index;
	};
	struct FActiveHook
	{
		FName Hook;
		EExtensionHook::Position Position;
	};

	TArray<TSharedRef<FMenuItem>> Items;
	TArray<FOpenSection> Sections;
	TArray<FActiveHook> ActiveHooks;
	bool bCloseAfterSelection;
};

/** Builds the bar of an application's menus. */
class SLATE_API FMenuBarBuilder : public FMultiBoxBuilder
{
public:
	explicit FMenuBarBuilder(TSharedPtr<const FUICommandList> InCommandList, TSharedPtr<FExtender> InExtender = nullptr);
	virtual ~FMenuBarBuilder() override;

	/** The delegate is called each time the menu opens. */
	void AddPullDownMenu(const TAttribute<FText>& InMenuLabel, const TAttribute<FText>& InToolTip, const FNewMenuDelegate& InPullDownMenu,
		FName InExtensionHook = NAME_None);
	/** An SMenuBar. */
	TSharedRef<SWidget> MakeWidget();

private:
	TArray<TSharedRef<FMenuBarPullDown>> PullDowns;
};
