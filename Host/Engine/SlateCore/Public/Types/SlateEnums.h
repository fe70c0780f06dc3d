#pragma once

#include "CoreMinimal.h"

enum EHorizontalAlignment
{
	HAlign_Fill,
	HAlign_Left,
	HAlign_Center,
	HAlign_Right,
};

enum EVerticalAlignment
{
	VAlign_Fill,
	VAlign_Top,
	VAlign_Center,
	VAlign_Bottom,
};

enum EOrientation
{
	Orient_Horizontal,
	Orient_Vertical,
};

enum EMenuPlacement
{
	MenuPlacement_BelowAnchor,
	MenuPlacement_CenteredBelowAnchor,
	MenuPlacement_BelowRightAnchor,
	MenuPlacement_ComboBox,
	MenuPlacement_ComboBoxRight,
	MenuPlacement_MenuRight,
	MenuPlacement_AboveAnchor,
	MenuPlacement_CenteredAboveAnchor,
	MenuPlacement_AboveRightAnchor,
	MenuPlacement_MenuLeft,
	MenuPlacement_Center,
	MenuPlacement_RightLeftCenter,
	MenuPlacement_MatchBottomLeft,
};

/** Why a text box committed its text. */
namespace ETextCommit
{
	enum Type
	{
		Default,
		OnEnter,
		OnUserMovedFocus,
		OnCleared,
	};
}

/** How a selection came about. */
namespace ESelectInfo
{
	enum Type
	{
		OnKeyPress,
		OnNavigation,
		OnMouseClick,
		Direct,
	};
}

enum class ECheckBoxState : uint8
{
	Unchecked,
	Checked,
	Undetermined,
};

namespace ETextJustify
{
	enum Type
	{
		Left,
		Center,
		Right,
	};
}

namespace ESelectionMode
{
	enum Type
	{
		None,
		Single,
		SingleToggle,
		Multi,
	};
}

/** Keys that a text box can ask for in front of Enter. */
enum class EModifierKey : uint8
{
	None,
	Control,
	Alt,
	Shift,
	Command,
};
