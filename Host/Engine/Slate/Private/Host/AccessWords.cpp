#include "Host/AccessTree.h"

// Roles and states in words, for tests, dumps and scripts.

namespace
{
	struct FRoleRow
	{
		EHostRole Role;
		const TCHAR* Word;
	};

	// Scripts know roles by these words: they are never changed.
	constexpr FRoleRow RoleRows[] = {
		{ EHostRole::None, TEXT("none") },
		{ EHostRole::Window, TEXT("window") },
		{ EHostRole::Dialog, TEXT("dialog") },
		{ EHostRole::Group, TEXT("group") },
		{ EHostRole::Label, TEXT("label") },
		{ EHostRole::Paragraph, TEXT("paragraph") },
		{ EHostRole::Image, TEXT("image") },
		{ EHostRole::Link, TEXT("link") },
		{ EHostRole::Button, TEXT("button") },
		{ EHostRole::CheckBox, TEXT("check box") },
		{ EHostRole::ComboBox, TEXT("combo box") },
		{ EHostRole::TextBox, TEXT("text box") },
		{ EHostRole::List, TEXT("list") },
		{ EHostRole::ListItem, TEXT("list item") },
		{ EHostRole::Tab, TEXT("tab") },
		{ EHostRole::MenuBar, TEXT("menu bar") },
		{ EHostRole::Menu, TEXT("menu") },
		{ EHostRole::MenuItem, TEXT("menu item") },
		{ EHostRole::CheckMenuItem, TEXT("check menu item") },
		{ EHostRole::ProgressBar, TEXT("progress bar") },
		{ EHostRole::ScrollBar, TEXT("scroll bar") },
		{ EHostRole::ToolTip, TEXT("tool tip") },
		{ EHostRole::Notification, TEXT("notification") },
		{ EHostRole::Status, TEXT("status") },
	};

	struct FStateRow
	{
		EHostAccessState::Type State;
		const TCHAR* Word;
	};

	constexpr FStateRow StateRows[] = {
		{ EHostAccessState::Focused, TEXT("focused") },
		{ EHostAccessState::Checked, TEXT("checked") },
		{ EHostAccessState::Mixed, TEXT("mixed") },
		{ EHostAccessState::Expanded, TEXT("expanded") },
		{ EHostAccessState::Selected, TEXT("selected") },
		{ EHostAccessState::Pressed, TEXT("pressed") },
		{ EHostAccessState::ReadOnly, TEXT("read only") },
		{ EHostAccessState::MultiLine, TEXT("multi-line") },
		{ EHostAccessState::Modal, TEXT("modal") },
		{ EHostAccessState::Busy, TEXT("busy") },
		{ EHostAccessState::HasPopup, TEXT("has popup") },
	};

	void DescribeNode(const FAccessTree& Tree, const FAccessNode& Node, int32 Depth, FString& Out)
	{
		Out += FString::ChrN(Depth, TEXT('\t')) + FAccessTree::GetRoleWord(Node.Role);
		Out += TEXT(" \"") + Node.Name.ReplaceCharWithEscapedChar() + TEXT("\"");
		const FString States = FAccessTree::GetStateWords(Node.States);
		Out += States.IsEmpty() ? FString() : TEXT(" (") + States + TEXT(")");
		if (Node.bHasText && !Node.Text.ToString().Equals(Node.Name))
		{
			Out += TEXT(" = \"") + Node.Text.ToString().ReplaceCharWithEscapedChar() + TEXT("\"");
		}
		Out += TEXT("\n");
		for (const uint32 Child : Node.Children)
		{
			DescribeNode(Tree, *Tree.Find(Child), Depth + 1, Out);
		}
	}
}

const TCHAR* FAccessTree::GetRoleWord(EHostRole Role)
{
	for (const FRoleRow& Row : RoleRows)
	{
		if (Row.Role == Role)
		{
			return Row.Word;
		}
	}
	return TEXT("unknown");
}

FString FAccessTree::GetStateWords(uint32 States)
{
	FString Words = (States & EHostAccessState::Enabled) != 0 ? FString() : FString(TEXT("disabled"));
	for (const FStateRow& Row : StateRows)
	{
		if ((States & Row.State) != 0)
		{
			Words += (Words.IsEmpty() ? TEXT("") : TEXT(", ")) + FString(Row.Word);
		}
	}
	return Words;
}

FString FAccessTree::Describe() const
{
	FString Out;
	DescribeNode(*this, GetRoot(), 0, Out);
	return Out;
}
