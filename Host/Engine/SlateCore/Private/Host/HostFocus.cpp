#include "Host/HostFocus.h"

#include "Widgets/SWidget.h"

FHostFocus& FHostFocus::Get()
{
	static FHostFocus Instance;
	return Instance;
}
