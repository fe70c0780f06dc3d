#include "Paint/Screenshot.h"

#include "Host/HostAtomicFile.h"
#include "Logging/LogMacros.h"

DEFINE_LOG_CATEGORY_STATIC(LogScreenshot, Log, All);

bool SaveSurfaceAsPng(cairo_surface_t* Surface, const FString& Path)
{
	TArray<uint8> Bytes;
	const auto Append = [](void* Closure, const unsigned char* Data, unsigned int Length) -> cairo_status_t
	{
		static_cast<TArray<uint8>*>(Closure)->Append(Data, static_cast<int32>(Length));
		return CAIRO_STATUS_SUCCESS;
	};
	FString Reason = TEXT("nothing was painted yet");
	if (Surface)
	{
		const cairo_status_t Status = cairo_surface_write_to_png_stream(Surface, Append, &Bytes);
		if (Status == CAIRO_STATUS_SUCCESS && HostSaveFile(Path, Bytes.GetData(), Bytes.Num(), 0, Reason))
		{
			return true;
		}
		if (Status != CAIRO_STATUS_SUCCESS)
		{
			Reason = UTF8_TO_TCHAR(cairo_status_to_string(Status));
		}
	}
	UE_LOG(LogScreenshot, Warning, TEXT("The picture %s cannot be saved: %s"), *Path, *Reason);
	return false;
}
