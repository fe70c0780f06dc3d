#include "Framework/Commands/UICommandInfo.h"

#include "Containers/Map.h"
#include "Framework/Commands/Commands.h"

namespace
{
	TMap<FString, TSharedPtr<void>>& GetCommandSets()
	{
		static TMap<FString, TSharedPtr<void>> Sets;
		return Sets;
	}
}

TSharedPtr<void> FHostCommandSets::Find(const char* ClassName)
{
	const TSharedPtr<void>* Found = GetCommandSets().Find(FString(ClassName));
	return Found ? *Found : nullptr;
}

void FHostCommandSets::Set(const char* ClassName, TSharedPtr<void> Commands)
{
	if (Commands.IsValid())
	{
		GetCommandSets().Add(FString(ClassName), Commands);
	}
	else
	{
		GetCommandSets().Remove(FString(ClassName));
	}
}

void FUICommandInfo::MakeCommandInfo(const TSharedRef<FBindingContext>& Context, TSharedPtr<FUICommandInfo>& OutCommand, FName Name,
	const FText& Label, const FText& Description, const FSlateIcon& Icon, EUserInterfaceActionType Type, const FInputChord& DefaultChord)
{
	const TSharedRef<FUICommandInfo> Command = MakeShared<FUICommandInfo>();
	Command->Name = Name;
	Command->ContextName = Context->GetContextName();
	Command->Label = Label;
	Command->Description = Description;
	Command->Icon = Icon;
	Command->Type = Type;
	Command->DefaultChord = DefaultChord;
	Context->Commands.Add(Command);
	OutCommand = Command;
}

void MakeUICommand_InternalUseOnly(FBindingContext* Context, TSharedPtr<FUICommandInfo>& OutCommand, const TCHAR* Namespace,
	const TCHAR* Key, const TCHAR* ToolTipKey, const TCHAR* Name, const TCHAR* Label, const TCHAR* Description,
	EUserInterfaceActionType Type, const FInputChord& DefaultChord)
{
	FUICommandInfo::MakeCommandInfo(Context->AsShared(), OutCommand, FName(Name), FText::AsLocalizable_Advanced(Namespace, Key, Label),
		FText::AsLocalizable_Advanced(Namespace, ToolTipKey, Description), FSlateIcon(), Type, DefaultChord);
}
