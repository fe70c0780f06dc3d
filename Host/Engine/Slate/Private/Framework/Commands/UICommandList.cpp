#include "Framework/Commands/UICommandList.h"

void FUICommandList::MapAction(const TSharedPtr<const FUICommandInfo> Command, const FUIAction& Action)
{
	check(Command.IsValid());
	Actions.Add(Command, Action);
}

const FUIAction* FUICommandList::GetActionForCommand(const TSharedPtr<const FUICommandInfo> Command) const
{
	return Actions.Find(Command);
}

bool FUICommandList::CanExecuteAction(const TSharedRef<const FUICommandInfo> Command) const
{
	const FUIAction* Found = Actions.Find(Command.ToSharedPtr());
	return Found && FUIAction(*Found).CanExecute();
}

bool FUICommandList::ExecuteAction(const TSharedRef<const FUICommandInfo> Command) const
{
	const FUIAction* Found = Actions.Find(Command.ToSharedPtr());
	return Found && FUIAction(*Found).Execute();
}

bool FUICommandList::TryExecuteAction(const TSharedRef<const FUICommandInfo> Command)
{
	return CanExecuteAction(Command) && ExecuteAction(Command);
}

bool FUICommandList::ProcessCommandBindings(const FKeyEvent& KeyEvent)
{
	for (const auto& Mapped : Actions)
	{
		const FInputChord& Chord = Mapped.Key->GetDefaultChord();
		const bool bMatches = Chord.IsValidChord() && Chord.Key == KeyEvent.GetKey() && Chord.bShift == KeyEvent.IsShiftDown() &&
			Chord.bCtrl == KeyEvent.IsControlDown() && Chord.bAlt == KeyEvent.IsAltDown() && Chord.bCmd == KeyEvent.IsCommandDown();
		if (bMatches)
		{
			const TSharedPtr<const FUICommandInfo> Command = Mapped.Key;
			return TryExecuteAction(Command.ToSharedRef());
		}
	}
	return false;
}
