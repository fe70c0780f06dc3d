#pragma once

#include "CoreMinimal.h"
#include "Framework/Commands/InputChord.h"
#include "Templates/SharedPointer.h"
#include "Textures/SlateIcon.h"

enum class EUserInterfaceActionType : uint8
{
	None,
	Button,
	ToggleButton,
	RadioButton,
	Check,
	CollapsedButton,
};

class FBindingContext;

/** One command: its name, its words, its default key. What it does is the business of a command list. */
class SLATE_API FUICommandInfo
{
public:
	/** Makes a command and lists it in its context. */
	static void MakeCommandInfo(const TSharedRef<FBindingContext>& Context, TSharedPtr<FUICommandInfo>& OutCommand, FName Name,
		const FText& Label, const FText& Description, const FSlateIcon& Icon, EUserInterfaceActionType Type,
		const FInputChord& DefaultChord);

	FName GetCommandName() const { return Name; }
	const FText& GetLabel() const { return Label; }
	const FText& GetDescription() const { return Description; }
	const FSlateIcon& GetIcon() const { return Icon; }
	EUserInterfaceActionType GetUserInterfaceType() const { return Type; }
	const FInputChord& GetDefaultChord() const { return DefaultChord; }
	FName GetBindingContext() const { return ContextName; }
	FText GetInputText() const { return DefaultChord.GetInputText(); }

private:
	FName Name;
	FName ContextName;
	FText Label;
	FText Description;
	FSlateIcon Icon;
	EUserInterfaceActionType Type = EUserInterfaceActionType::None;
	FInputChord DefaultChord;
};

/** A named group of commands. */
class SLATE_API FBindingContext : public TSharedFromThis<FBindingContext>
{
public:
	FBindingContext(FName InName, const FText& InDescription, FName InParent, FName InStyleSet)
		: Name(InName)
		, Description(InDescription)
		, Parent(InParent)
		, StyleSet(InStyleSet)
	{
	}

	FName GetContextName() const { return Name; }
	const FText& GetContextDesc() const { return Description; }
	FName GetStyleSetName() const { return StyleSet; }
	/** In the order in which they were made. */
	const TArray<TSharedRef<FUICommandInfo>>& GetCommands() const { return Commands; }

private:
	friend class FUICommandInfo;

	const FName Name;
	const FText Description;
	const FName Parent;
	const FName StyleSet;
	TArray<TSharedRef<FUICommandInfo>> Commands;
};

/** Of the macro UI_COMMAND alone. */
SLATE_API void MakeUICommand_InternalUseOnly(FBindingContext* Context, TSharedPtr<FUICommandInfo>& OutCommand, const TCHAR* Namespace,
	const TCHAR* Key, const TCHAR* ToolTipKey, const TCHAR* Name, const TCHAR* Label, const TCHAR* Description,
	EUserInterfaceActionType Type, const FInputChord& DefaultChord);

/** Stands in RegisterCommands; the keys of the texts are the member's name, and that with "_ToolTip" behind it. */
#define UI_COMMAND(CommandId, FriendlyName, InDescription, CommandType, InDefaultChord) \
	MakeUICommand_InternalUseOnly(this->GetContext(), CommandId, TEXT("" LOCTEXT_NAMESPACE), TEXT(#CommandId), \
		TEXT(#CommandId "_ToolTip"), TEXT(#CommandId), TEXT(FriendlyName), TEXT(InDescription), CommandType, InDefaultChord)
