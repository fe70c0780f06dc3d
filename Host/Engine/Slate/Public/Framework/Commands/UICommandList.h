#pragma once

#include "Containers/Map.h"
#include "Framework/Commands/UIAction.h"
#include "Framework/Commands/UICommandInfo.h"
#include "Input/Events.h"

/** Says what commands do. Game thread. */
class SLATE_API FUICommandList : public TSharedFromThis<FUICommandList>
{
public:
	void MapAction(const TSharedPtr<const FUICommandInfo> Command, const FUIAction& Action);
	void MapAction(const TSharedPtr<const FUICommandInfo> Command, FExecuteAction Execute)
	{
		MapAction(Command, FUIAction(MoveTemp(Execute)));
	}
	void MapAction(const TSharedPtr<const FUICommandInfo> Command, FExecuteAction Execute, FCanExecuteAction CanExecute)
	{
		MapAction(Command, FUIAction(MoveTemp(Execute), MoveTemp(CanExecute)));
	}
	void MapAction(
		const TSharedPtr<const FUICommandInfo> Command, FExecuteAction Execute, FCanExecuteAction CanExecute, FIsActionChecked IsChecked)
	{
		MapAction(Command, FUIAction(MoveTemp(Execute), MoveTemp(CanExecute), MoveTemp(IsChecked)));
	}
	/** Null when it is not mapped. */
	const FUIAction* GetActionForCommand(const TSharedPtr<const FUICommandInfo> Command) const;

	/** False also for a command that is not mapped. */
	bool CanExecuteAction(const TSharedRef<const FUICommandInfo> Command) const;
	/** Whether or not it may. @return False when there is nothing to execute. */
	bool ExecuteAction(const TSharedRef<const FUICommandInfo> Command) const;
	/** @return False when it may not or there is nothing to execute. */
	bool TryExecuteAction(const TSharedRef<const FUICommandInfo> Command);
	/** Executes the command whose default chord this is, if it may. */
	bool ProcessCommandBindings(const FKeyEvent& KeyEvent);

private:
	TMap<TSharedPtr<const FUICommandInfo>, FUIAction> Actions;
};
