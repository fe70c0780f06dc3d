#pragma once

#include "Containers/UnrealString.h"
#include "CoreMinimal.h"
#include "Host/HostFileDialogs.h"
#include "Misc/Optional.h"

/** Tells that what a save dialog was asked for is there, with the file as a link. Game thread. */
class FSavedFileToast
{
public:
	/** Before each turn of the loop. Costs nothing while no dialog is open. */
	void NoteTurn();

private:
	/** Of the dialog that was open at the last turn: what stood in it, and what its file was before. */
	TOptional<FHostOpenSaveDialog> Asked;
	/** Seconds since 1970, when it was opened. */
	double OpenedAt = 0.0;
};
