#include "AtkWords.h"

#include "Containers/StringConv.h"

namespace
{
	struct FRoleRow
	{
		EHostRole Host;
		AtkRole Atk;
	};

	constexpr FRoleRow RoleRows[] = {
		{ EHostRole::Window, ATK_ROLE_FRAME },
		{ EHostRole::Dialog, ATK_ROLE_DIALOG },
		{ EHostRole::Group, ATK_ROLE_PANEL },
		{ EHostRole::Label, ATK_ROLE_LABEL },
		{ EHostRole::Paragraph, ATK_ROLE_PARAGRAPH },
		{ EHostRole::Image, ATK_ROLE_IMAGE },
		{ EHostRole::Link, ATK_ROLE_LINK },
		{ EHostRole::Button, ATK_ROLE_PUSH_BUTTON },
		{ EHostRole::CheckBox, ATK_ROLE_CHECK_BOX },
		{ EHostRole::ComboBox, ATK_ROLE_COMBO_BOX },
		{ EHostRole::TextBox, ATK_ROLE_ENTRY },
		{ EHostRole::List, ATK_ROLE_LIST },
		{ EHostRole::ListItem, ATK_ROLE_LIST_ITEM },
		{ EHostRole::Tab, ATK_ROLE_PAGE_TAB },
		{ EHostRole::MenuBar, ATK_ROLE_MENU_BAR },
		{ EHostRole::Menu, ATK_ROLE_MENU },
		{ EHostRole::MenuItem, ATK_ROLE_MENU_ITEM },
		{ EHostRole::CheckMenuItem, ATK_ROLE_CHECK_MENU_ITEM },
		{ EHostRole::ProgressBar, ATK_ROLE_PROGRESS_BAR },
		{ EHostRole::ScrollBar, ATK_ROLE_SCROLL_BAR },
		{ EHostRole::ToolTip, ATK_ROLE_TOOL_TIP },
		{ EHostRole::Notification, ATK_ROLE_NOTIFICATION },
		{ EHostRole::Status, ATK_ROLE_STATUSBAR },
	};

	struct FStateRow
	{
		uint32 Host;
		AtkStateType Atk;
	};

	constexpr FStateRow StateRows[] = {
		{ EHostAccessState::Enabled, ATK_STATE_ENABLED },
		{ EHostAccessState::Enabled, ATK_STATE_SENSITIVE },
		{ EHostAccessState::Focusable, ATK_STATE_FOCUSABLE },
		{ EHostAccessState::Focused, ATK_STATE_FOCUSED },
		{ EHostAccessState::Checkable, ATK_STATE_CHECKABLE },
		{ EHostAccessState::Checked, ATK_STATE_CHECKED },
		{ EHostAccessState::Mixed, ATK_STATE_INDETERMINATE },
		{ EHostAccessState::Expandable, ATK_STATE_EXPANDABLE },
		{ EHostAccessState::Expanded, ATK_STATE_EXPANDED },
		{ EHostAccessState::Selectable, ATK_STATE_SELECTABLE },
		{ EHostAccessState::Selected, ATK_STATE_SELECTED },
		{ EHostAccessState::Pressed, ATK_STATE_PRESSED },
		{ EHostAccessState::Editable, ATK_STATE_EDITABLE },
		{ EHostAccessState::ReadOnly, ATK_STATE_READ_ONLY },
		{ EHostAccessState::MultiLine, ATK_STATE_MULTI_LINE },
		{ EHostAccessState::Modal, ATK_STATE_MODAL },
		{ EHostAccessState::Busy, ATK_STATE_BUSY },
		{ EHostAccessState::HasPopup, ATK_STATE_HAS_POPUP },
		{ EHostAccessState::Horizontal, ATK_STATE_HORIZONTAL },
		{ EHostAccessState::Vertical, ATK_STATE_VERTICAL },
	};

	bool IsHigh(TCHAR Unit)
	{
		return Unit >= 0xD800 && Unit < 0xDC00;
	}

	bool IsLow(TCHAR Unit)
	{
		return Unit >= 0xDC00 && Unit < 0xE000;
	}

	/** Units of the character at a place; a lone surrogate is one of its own, as it is in UTF-8. */
	int32 GetWidth(const FString& Text, int32 Index)
	{
		return IsHigh(Text[Index]) && Index + 1 < Text.Len() && IsLow(Text[Index + 1]) ? 2 : 1;
	}
}

AtkRole AtkWords::GetRole(const FAccessNode& Node)
{
	if (Node.Role == EHostRole::TextBox && (Node.States & EHostAccessState::MultiLine) != 0)
	{
		return ATK_ROLE_TEXT;
	}
	if (Node.Role == EHostRole::MenuItem && (Node.States & EHostAccessState::HasPopup) != 0)
	{
		return ATK_ROLE_MENU;
	}
	for (const FRoleRow& Row : RoleRows)
	{
		if (Row.Host == Node.Role)
		{
			return Row.Atk;
		}
	}
	return ATK_ROLE_UNKNOWN;
}

void AtkWords::ForEachState(uint32 Bits, TFunctionRef<void(AtkStateType State, uint32 Bit)> Visit)
{
	for (const FStateRow& Row : StateRows)
	{
		if ((Bits & Row.Host) != 0)
		{
			Visit(Row.Atk, Row.Host);
		}
	}
}

void AtkWords::AddStates(const FAccessNode& Node, AtkStateSet* Out)
{
	atk_state_set_add_state(Out, ATK_STATE_VISIBLE);
	atk_state_set_add_state(Out, ATK_STATE_SHOWING);
	ForEachState(Node.States, [Out](AtkStateType State, uint32 Bit) { atk_state_set_add_state(Out, State); });
	if (Node.Role == EHostRole::TextBox && (Node.States & EHostAccessState::MultiLine) == 0)
	{
		atk_state_set_add_state(Out, ATK_STATE_SINGLE_LINE);
	}
	if (Node.Role == EHostRole::Window)
	{
		// What has the keyboard in it; the focus itself is with something inside.
		atk_state_set_remove_state(Out, ATK_STATE_FOCUSED);
		if ((Node.States & EHostAccessState::Focused) != 0)
		{
			atk_state_set_add_state(Out, ATK_STATE_ACTIVE);
		}
	}
}

int32 AtkWords::ToCharacters(const FString& Text, int32 Units)
{
	int32 Characters = 0;
	const int32 End = FMath::Min(Units, Text.Len());
	for (int32 Index = 0; Index < End; Index += GetWidth(Text, Index))
	{
		++Characters;
	}
	return Characters;
}

int32 AtkWords::ToUnits(const FString& Text, int32 Characters)
{
	int32 Index = 0;
	for (int32 Left = Characters; Left > 0 && Index < Text.Len(); --Left)
	{
		Index += GetWidth(Text, Index);
	}
	return Index;
}

std::string AtkWords::ToUtf8(const FString& Text)
{
	std::string Result;
	FTCHARToUTF8::Append(Result, FStringView(Text));
	return Result;
}
