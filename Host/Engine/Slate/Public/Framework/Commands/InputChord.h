#pragma once

#include "CoreMinimal.h"
#include "InputCoreTypes.h"

/** A key with modifiers. The empty chord is bound to nothing. */
struct SLATE_API FInputChord
{
	FInputChord() = default;
	explicit FInputChord(const FKey& InKey, bool bInShift = false, bool bInCtrl = false, bool bInAlt = false, bool bInCmd = false)
		: Key(InKey)
		, bShift(bInShift)
		, bCtrl(bInCtrl)
		, bAlt(bInAlt)
		, bCmd(bInCmd)
	{
	}

	bool IsValidChord() const { return Key.IsValid() && !Key.IsModifierKey(); }
	/** For menus, "Ctrl+Shift+R"; empty for the empty chord. */
	FText GetInputText() const;
	bool operator==(const FInputChord& Other) const
	{
		return Key == Other.Key && bShift == Other.bShift && bCtrl == Other.bCtrl && bAlt == Other.bAlt && bCmd == Other.bCmd;
	}

	FKey Key;
	bool bShift = false;
	bool bCtrl = false;
	bool bAlt = false;
	bool bCmd = false;
};
