#include "CoreTypes.h"

// A library that is no module, although one that it needs is.
extern "C" __attribute__((visibility("default"))) int32 CoreTestLibraryAnswer();
extern "C" __attribute__((visibility("default"))) int32 CoreTestLibraryAnswer()
{
	return 42;
}
