#pragma once

#include "Framework/MultiBox/MultiBoxBuilder.h"

/** One thing in a menu. */
struct FMenuItem
{
	enum class EKind : uint8
	{
		Entry,
		SubMenu,
		Separator,
		/** Begins a section; its label is the heading and may be empty. */
		Section,
		Widget,
	};

	EKind Kind = EKind::Entry;
	TAttribute<FText> Label;
	TAttribute<FText> ToolTip;
	/** Keys of the command. */
	FText KeyText;
	FSlateIcon Icon;
	FUIAction Action;
	EUserInterfaceActionType Type = EUserInterfaceActionType::Button;
	FNewMenuDelegate BuildSubMenu;
	/** For the commands of a sub-menu, and who may add to it. */
	TSharedPtr<const FUICommandList> CommandList;
	TSharedPtr<FExtender> Extender;
	TSharedPtr<SWidget> Widget;
	bool bOpenOnClick = false;
	bool bCloseAfterSelection = true;

	/** Something that can be picked. */
	bool IsRow() const { return Kind == EKind::Entry || Kind == EKind::SubMenu; }
	bool IsEnabled() const { return Kind == EKind::SubMenu || (Action.IsBound() && Action.CanExecute()); }
	bool IsChecked() const
	{
		const bool bCheckable = Type == EUserInterfaceActionType::ToggleButton || Type == EUserInterfaceActionType::RadioButton ||
			Type == EUserInterfaceActionType::Check;
		return bCheckable && Action.IsChecked();
	}
};

/** One menu of a bar. */
struct FMenuBarPullDown
{
	TAttribute<FText> Label;
	TAttribute<FText> ToolTip;
	FNewMenuDelegate Build;
	TSharedPtr<const FUICommandList> CommandList;
	TSharedPtr<FExtender> Extender;
};
