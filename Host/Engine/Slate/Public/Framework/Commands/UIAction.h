#pragma once

#include "Delegates/Delegate.h"

DECLARE_DELEGATE(FExecuteAction);
DECLARE_DELEGATE_RetVal(bool, FCanExecuteAction);
DECLARE_DELEGATE_RetVal(bool, FIsActionChecked);
DECLARE_DELEGATE_RetVal(bool, FIsActionButtonVisible);

/** What a command or a menu entry does, and when it may. */
struct FUIAction
{
	FUIAction() = default;
	FUIAction(
		FExecuteAction InExecute, FCanExecuteAction InCanExecute = FCanExecuteAction(), FIsActionChecked InIsChecked = FIsActionChecked())
		: ExecuteAction(MoveTemp(InExecute))
		, CanExecuteAction(MoveTemp(InCanExecute))
		, GetActionCheckState(MoveTemp(InIsChecked))
	{
	}

	/** Without a rule it always may. */
	bool CanExecute() const { return !CanExecuteAction.IsBound() || CanExecuteAction.Execute(); }
	bool IsBound() const { return ExecuteAction.IsBound(); }
	bool IsChecked() const { return GetActionCheckState.IsBound() && GetActionCheckState.Execute(); }

	/** @return False when there is nothing to execute. */
	bool Execute() const
	{
		const FExecuteAction Action = ExecuteAction;
		return Action.ExecuteIfBound();
	}

	FExecuteAction ExecuteAction;
	FCanExecuteAction CanExecuteAction;
	FIsActionChecked GetActionCheckState;
};
