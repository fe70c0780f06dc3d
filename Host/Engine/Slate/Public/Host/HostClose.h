#pragma once

#include "CoreMinimal.h"
#include "Templates/Function.h"

/** What is asked when the user closes the program's window, or picks the entry that ends it. Game thread. */
class SLATE_API FHostClose
{
public:
	/** False keeps the program running. It may open dialogs, and may be asked again meanwhile. Null ends the asking. */
	static void SetHandler(TFunction<bool()> Handler);
	/** True without a handler. */
	static bool MayClose();
};
