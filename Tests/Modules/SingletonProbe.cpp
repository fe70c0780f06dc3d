#include "Modules/SingletonList.h"

// Built as a plug-in is, with hidden visibility, so that whatever a header would make twice is made twice here.
__attribute__((visibility("default"))) FSingletonList ListSingletonsOfLibrary();

FSingletonList ListSingletonsOfLibrary()
{
	return ListSingletons();
}
