#include "Framework/MultiBox/MultiBoxBuilder.h"

#include "Framework/Commands/UICommandList.h"
#include "Host/SMenuBar.h"
#include "MenuItem.h"
#include "SMenu.h"

// Menus are collected as a list of items and built in the end. Extenders add their items in between, at the hooks where
// they were asked for; what they leave empty or double is tidied away before anything is made.

namespace
{

	/** Separators and sections as they are drawn: none at an end, none twice, no heading without entries. */
	TArray<TSharedRef<FMenuItem>> TidyMenuItems(const TArray<TSharedRef<FMenuItem>>& Items)
	{
		TArray<TSharedRef<FMenuItem>> Tidy;
		TSharedPtr<FMenuItem> Waiting;
		for (const TSharedRef<FMenuItem>& Item : Items)
		{
			if (Item->Kind == FMenuItem::EKind::Section || Item->Kind == FMenuItem::EKind::Separator)
			{
				// A line asked for right behind a heading would part it from its entries.
				const bool bHeadingWaits = Waiting && Waiting->Kind == FMenuItem::EKind::Section && !Waiting->Label.Get().IsEmpty();
				if (!bHeadingWaits || Item->Kind == FMenuItem::EKind::Section)
				{
					Waiting = Item;
				}
				continue;
			}
			if (Waiting)
			{
				if (Tidy.Num() > 0)
				{
					const TSharedRef<FMenuItem> Line = MakeShared<FMenuItem>();
					Line->Kind = FMenuItem::EKind::Separator;
					Tidy.Add(Line);
				}
				if (Waiting->Kind == FMenuItem::EKind::Section && !Waiting->Label.Get().IsEmpty())
				{
					Tidy.Add(Waiting.ToSharedRef());
				}
				Waiting.Reset();
			}
			Tidy.Add(Item);
		}
		return Tidy;
	}

} // namespace

FMultiBoxBuilder::FMultiBoxBuilder(const TSharedPtr<const FUICommandList>& InCommandList, const TSharedPtr<FExtender>& InExtender)
	: CommandLists({ InCommandList })
	, Extenders({ InExtender })
{
}

FMultiBoxBuilder::~FMultiBoxBuilder() = default;

void FMultiBoxBuilder::PushCommandList(const TSharedRef<const FUICommandList>& CommandList)
{
	CommandLists.Add(CommandList.ToSharedPtr());
}

void FMultiBoxBuilder::PopCommandList()
{
	check(CommandLists.Num() > 1);
	CommandLists.Pop();
}

TSharedPtr<const FUICommandList> FMultiBoxBuilder::GetTopCommandList() const
{
	return CommandLists.Last();
}

void FMultiBoxBuilder::PushExtender(const TSharedRef<FExtender>& InExtender)
{
	Extenders.Add(InExtender.ToSharedPtr());
}

void FMultiBoxBuilder::PopExtender()
{
	check(Extenders.Num() > 1);
	Extenders.Pop();
}

FMenuBuilder::FMenuBuilder(
	bool bInShouldCloseWindowAfterMenuSelection, TSharedPtr<const FUICommandList> InCommandList, TSharedPtr<FExtender> InExtender)
	: FMultiBoxBuilder(InCommandList, InExtender)
	, bCloseAfterSelection(bInShouldCloseWindowAfterMenuSelection)
{
}

FMenuBuilder::~FMenuBuilder() = default;

// An extension may add an item with the same hook again, which must not call it for ever.
void FMenuBuilder::ApplyHook(FName Hook, EExtensionHook::Position Position)
{
	const bool bActive = ActiveHooks.ContainsByPredicate(
		[Hook, Position](const FActiveHook& Active) { return Active.Hook == Hook && Active.Position == Position; });
	const TSharedPtr<FExtender> Extender = Extenders.Last();
	if (Hook.IsNone() || !Extender || bActive)
	{
		return;
	}
	ActiveHooks.Add({ Hook, Position });
	Extender->Apply(Hook, Position, *this);
	ActiveHooks.Pop();
}

void FMenuBuilder::AddItem(FMenuItem&& Item, FName Hook)
{
	ApplyHook(Hook, EExtensionHook::Before);
	Items.Add(MakeShared<FMenuItem>(MoveTemp(Item)));
	ApplyHook(Hook, EExtensionHook::After);
}

void FMenuBuilder::BeginSection(FName InExtensionHook, const TAttribute<FText>& InHeadingText)
{
	ApplyHook(InExtensionHook, EExtensionHook::Before);
	FMenuItem Section;
	Section.Kind = FMenuItem::EKind::Section;
	Section.Label = InHeadingText;
	Items.Add(MakeShared<FMenuItem>(MoveTemp(Section)));
	Sections.Add({ InExtensionHook, Items.Num() - 1 });
	ApplyHook(InExtensionHook, EExtensionHook::First);
}

void FMenuBuilder::EndSection()
{
	check(Sections.Num() > 0);
	const FOpenSection Section = Sections.Pop();
	bool bEmpty = true;
	for (int32 Index = Section.Index; Index < Items.Num(); ++Index)
	{
		bEmpty = bEmpty && !Items[Index]->IsRow() && Items[Index]->Kind != FMenuItem::EKind::Widget;
	}
	if (bEmpty)
	{
		// Or what follows would stand below its heading.
		Items[Section.Index]->Label = FText::GetEmpty();
	}
	ApplyHook(Section.Hook, EExtensionHook::After);
}

void FMenuBuilder::AddMenuEntry(const TSharedPtr<const FUICommandInfo> InCommand, FName InExtensionHook,
	const TAttribute<FText>& InLabelOverride, const TAttribute<FText>& InToolTipOverride, const FSlateIcon& InIconOverride)
{
	check(InCommand.IsValid());
	FMenuItem Item;
	Item.Label = InLabelOverride.IsSet() ? InLabelOverride : TAttribute<FText>(InCommand->GetLabel());
	Item.ToolTip = InToolTipOverride.IsSet() ? InToolTipOverride : TAttribute<FText>(InCommand->GetDescription());
	Item.Icon = InIconOverride.IsSet() ? InIconOverride : InCommand->GetIcon();
	Item.KeyText = InCommand->GetInputText();
	Item.Type = InCommand->GetUserInterfaceType();
	Item.bCloseAfterSelection = bCloseAfterSelection;
	if (const TSharedPtr<const FUICommandList> List = GetTopCommandList())
	{
		// The list is asked each time, so that a command mapped or unmapped later is told truly.
		const TSharedRef<const FUICommandInfo> Command = InCommand.ToSharedRef();
		Item.Action.ExecuteAction = FExecuteAction::CreateLambda([List, Command] { List->ExecuteAction(Command); });
		Item.Action.CanExecuteAction = FCanExecuteAction::CreateLambda([List, Command] { return List->CanExecuteAction(Command); });
		Item.Action.GetActionCheckState = FIsActionChecked::CreateLambda(
			[List, Command]
			{
				const FUIAction* Action = List->GetActionForCommand(Command.ToSharedPtr());
				return Action && Action->IsChecked();
			});
	}
	AddItem(MoveTemp(Item), InExtensionHook);
}

void FMenuBuilder::AddMenuEntry(const TAttribute<FText>& InLabel, const TAttribute<FText>& InToolTip, const FSlateIcon& InIcon,
	const FUIAction& InAction, FName InExtensionHook, EUserInterfaceActionType UserInterfaceActionType)
{
	FMenuItem Item;
	Item.Label = InLabel;
	Item.ToolTip = InToolTip;
	Item.Icon = InIcon;
	Item.Action = InAction;
	Item.Type = UserInterfaceActionType;
	Item.bCloseAfterSelection = bCloseAfterSelection;
	AddItem(MoveTemp(Item), InExtensionHook);
}

// Only described here: its entries are built each time it opens.
void FMenuBuilder::AddSubMenu(const TAttribute<FText>& InLabel, const TAttribute<FText>& InToolTip, const FNewMenuDelegate& InSubMenu,
	bool bInOpenSubMenuOnClick, const FSlateIcon& InIcon, bool bInShouldCloseWindowAfterMenuSelection, FName InExtensionHook)
{
	FMenuItem Item;
	Item.Kind = FMenuItem::EKind::SubMenu;
	Item.Label = InLabel;
	Item.ToolTip = InToolTip;
	Item.Icon = InIcon;
	Item.BuildSubMenu = InSubMenu;
	Item.CommandList = GetTopCommandList();
	Item.Extender = Extenders.Last();
	Item.bOpenOnClick = bInOpenSubMenuOnClick;
	Item.bCloseAfterSelection = bInShouldCloseWindowAfterMenuSelection;
	AddItem(MoveTemp(Item), InExtensionHook);
}

void FMenuBuilder::AddMenuSeparator(FName InExtensionHook)
{
	FMenuItem Item;
	Item.Kind = FMenuItem::EKind::Separator;
	AddItem(MoveTemp(Item), InExtensionHook);
}

void FMenuBuilder::AddWidget(TSharedRef<SWidget> InWidget, const FText& Label, bool bNoIndent)
{
	FMenuItem Item;
	Item.Kind = FMenuItem::EKind::Widget;
	Item.Label = Label;
	Item.Widget = InWidget;
	AddItem(MoveTemp(Item), NAME_None);
}

TSharedRef<SWidget> FMenuBuilder::MakeWidget()
{
	check(Sections.Num() == 0);
	const TArray<TSharedRef<FMenuItem>> Tidy = TidyMenuItems(Items);
	Items.Reset();
	return SNew(SMenu, Tidy);
}

FMenuBarBuilder::FMenuBarBuilder(TSharedPtr<const FUICommandList> InCommandList, TSharedPtr<FExtender> InExtender)
	: FMultiBoxBuilder(InCommandList, InExtender)
{
}

FMenuBarBuilder::~FMenuBarBuilder() = default;

void FMenuBarBuilder::AddPullDownMenu(
	const TAttribute<FText>& InMenuLabel, const TAttribute<FText>& InToolTip, const FNewMenuDelegate& InPullDownMenu, FName InExtensionHook)
{
	PullDowns.Add(
		MakeShared<FMenuBarPullDown>(FMenuBarPullDown{ InMenuLabel, InToolTip, InPullDownMenu, GetTopCommandList(), Extenders.Last() }));
}

TSharedRef<SWidget> FMenuBarBuilder::MakeWidget()
{
	return SNew(SMenuBar, PullDowns);
}
