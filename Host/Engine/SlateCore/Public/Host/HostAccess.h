#pragma once

#include "CoreMinimal.h"
#include "Misc/Optional.h"

/** What a widget is to somebody who does not see it. */
enum class EHostRole : uint8
{
	/** Nothing by itself: what is in it stands in its place. */
	None,
	Window,
	Dialog,
	Group,
	Label,
	/** Pieces of text that read as one. */
	Paragraph,
	Image,
	Link,
	Button,
	CheckBox,
	ComboBox,
	TextBox,
	List,
	ListItem,
	Tab,
	MenuBar,
	Menu,
	MenuItem,
	CheckMenuItem,
	ProgressBar,
	ScrollBar,
	ToolTip,
	/** A toast. */
	Notification,
	/** A line that says how things stand. */
	Status,
};

/** What holds of a widget now; bits that are joined. */
namespace EHostAccessState
{
	enum Type : uint32
	{
		None = 0,
		Enabled = 1u << 0,
		Focusable = 1u << 1,
		Focused = 1u << 2,
		Checkable = 1u << 3,
		Checked = 1u << 4,
		/** Neither on nor off. */
		Mixed = 1u << 5,
		Expandable = 1u << 6,
		Expanded = 1u << 7,
		Selectable = 1u << 8,
		Selected = 1u << 9,
		Pressed = 1u << 10,
		Editable = 1u << 11,
		ReadOnly = 1u << 12,
		MultiLine = 1u << 13,
		Modal = 1u << 14,
		Busy = 1u << 15,
		/** Its action opens a menu or a list. */
		HasPopup = 1u << 16,
		Horizontal = 1u << 17,
		Vertical = 1u << 18,
	};
}

/** A number that a widget shows, and between which others it lies. */
struct FHostAccessRange
{
	double Value = 0.0;
	double Minimum = 0.0;
	double Maximum = 1.0;
	/** SetAccessValue changes it. */
	bool bCanBeSet = false;
};

/** What a widget says of itself (SWidget::DescribeAccess). Focus and whether it is enabled are seen from outside. */
struct FHostAccess
{
	EHostRole Role = EHostRole::None;
	/** EHostAccessState. */
	uint32 States = 0;
	/** Empty for most: the name is found by what is in the widget or beside it (FAccessTree). */
	FText Name;
	/** The texts inside are the name and nothing more, such as a button's label. */
	bool bNamedByContents = false;
	/** What DoAccessAction does, as the protocol's users know it: "press", "toggle"; null when it does nothing. */
	const char* Action = nullptr;
	TOptional<FHostAccessRange> Range;
};
