#pragma once

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

private:
	UObject* FindOrMakeSubsystem(UClass* Class) const;
};

/** Null until the program has started its editor (FHostEditor::StartUp): callers test it. */
extern EDITOR_API UEditorEngine* GEditor;
