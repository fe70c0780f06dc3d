#include "Editor.h"

#include "EditorSubsystem.h"

UEditorEngine* GEditor = nullptr;

IMPLEMENT_HOST_CLASS(UEditorEngine, UObject, "UnrealEd")
IMPLEMENT_HOST_CLASS(UEditorSubsystem, UObject, "EditorSubsystem")

UObject* UEditorEngine::FindOrMakeSubsystem(UClass* Class) const
{
	check(Class && Class->IsChildOf(UEditorSubsystem::StaticClass()));
	UObject* Outer = const_cast<UEditorEngine*>(this);
	if (UObject* Existing = StaticFindObject(Class, Outer, Class->GetName()))
	{
		return Existing;
	}
	return StaticConstructObject(Class, Outer, Class->GetFName(), RF_Transient);
}
