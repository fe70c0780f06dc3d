#include "GenericPlatform/GenericPlatformMisc.h"

const TCHAR* LexToString(EAppReturnType::Type Value)
{
	switch (Value)
	{
	case EAppReturnType::No:
		return TEXT("No");
	case EAppReturnType::Yes:
		return TEXT("Yes");
	case EAppReturnType::YesAll:
		return TEXT("YesAll");
	case EAppReturnType::NoAll:
		return TEXT("NoAll");
	case EAppReturnType::Cancel:
		return TEXT("Cancel");
	case EAppReturnType::Ok:
		return TEXT("Ok");
	case EAppReturnType::Retry:
		return TEXT("Retry");
	case EAppReturnType::Continue:
		return TEXT("Continue");
	}
	return TEXT("");
}
