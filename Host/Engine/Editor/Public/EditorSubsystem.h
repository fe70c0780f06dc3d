#pragma once

#include "UObject/Class.h"

/** Base of what UEditorEngine::GetEditorSubsystem hands out. */
class EDITOR_API UEditorSubsystem : public UObject
{
	GENERATED_BODY()
};
