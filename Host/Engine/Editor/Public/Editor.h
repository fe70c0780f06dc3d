#pragma once

#include "TimerManager.h"
#include "UObject/Object.h"
#include "UObject/UObjectGlobals.h"

/** The editor as an object: the door to its subsystems. Game thread. */
class EDITOR_API UEditorEngine : public UObject
{
	GENERATED_BODY()

public:
	/** Made at the first call; one per class. */
	template <typename T>
	T* GetEditorSubsystem() const
	{
		return static_cast<T*>(FindOrMakeSubsystem(T::StaticClass()));
	}

	/** Timers that run whether or not a game does. */
	TSharedRef<FTimerManager> GetTimerManager() const { return TimerManager; }

private:
	UObject* FindOrMakeSubsystem(UClass* Class) const;

	TSharedRef<FTimerManager> TimerManager = MakeShared<FTimerManager>();
};

/** Null until the program has started its editor (FHostEditor::StartUp): callers test it. */
extern EDITOR_API UEditorEngine* GEditor;
