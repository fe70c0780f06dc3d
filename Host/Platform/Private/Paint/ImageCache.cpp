#include "Paint/PaintCaches.h"

#include "Host/HostFileNames.h"
#include "Logging/LogMacros.h"

#include <cairo.h>

#include <cstring>

// Images at the size in which they are shown, scaled once. A file that cannot be read is remembered as such and not
// tried in each frame.

DEFINE_LOG_CATEGORY_STATIC(LogImages, Log, All);

size_t FImageCache::FKeyHash::operator()(const FKey& Key) const
{
	return (static_cast<size_t>(GetTypeHash(Key.Path)) * 31 + static_cast<size_t>(Key.Width)) * 8191 + static_cast<size_t>(Key.Height);
}

const FPixelImage* FImageCache::Find(FName Path, int32 Width, int32 Height)
{
	const FKey Key{ Path, Width, Height };
	const auto Found = ByKey.find(Key);
	if (Found != ByKey.end())
	{
		Entries.splice(Entries.begin(), Entries, Found->second);
		return Found->second->bMissing ? nullptr : &Found->second->Image;
	}

	FEntry& Entry = Entries.emplace_front();
	Entry.Key = Key;
	Entry.Image.Width = Width;
	Entry.Image.Height = Height;
	FString Reason;
	if (!Load(Path.ToString(), Entry.Image, Reason))
	{
		bool bTold = false;
		for (const FEntry& Other : Entries)
		{
			bTold = bTold || (&Other != &Entry && Other.bMissing && Other.Key.Path == Path);
		}
		if (!bTold)
		{
			UE_LOG(LogImages, Warning, TEXT("The picture %s cannot be shown: %s"), *Path.ToString(), *Reason);
		}
		Entry.bMissing = true;
		Entry.Image.Data.Empty();
	}
	ByKey.emplace(Key, Entries.begin());
	Bytes += static_cast<int64>(Entry.Image.Data.Num()) * 4;
	while ((Bytes > MaxBytes || Entries.size() > 1024) && Entries.size() > 1)
	{
		Bytes -= static_cast<int64>(Entries.back().Image.Data.Num()) * 4;
		ByKey.erase(Entries.back().Key);
		Entries.pop_back();
	}
	return Entry.bMissing ? nullptr : &Entry.Image;
}

bool FImageCache::Load(const FString& Path, FPixelImage& Image, FString& OutReason)
{
	if (static_cast<int64>(Image.Width) * Image.Height > MaxPixels)
	{
		OutReason = TEXT("it would be too large on screen");
		return false;
	}
	cairo_surface_t* Source = cairo_image_surface_create_from_png(HostFileNameToBytes(Path).c_str());
	const cairo_status_t Status = cairo_surface_status(Source);
	const int32 SourceWidth = cairo_image_surface_get_width(Source);
	const int32 SourceHeight = cairo_image_surface_get_height(Source);
	if (Status != CAIRO_STATUS_SUCCESS || SourceWidth <= 0 || SourceHeight <= 0)
	{
		OutReason = UTF8_TO_TCHAR(cairo_status_to_string(Status));
		cairo_surface_destroy(Source);
		return false;
	}

	cairo_surface_t* Scaled = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, Image.Width, Image.Height);
	cairo_t* Context = cairo_create(Scaled);
	cairo_scale(Context, static_cast<double>(Image.Width) / SourceWidth, static_cast<double>(Image.Height) / SourceHeight);
	cairo_set_source_surface(Context, Source, 0, 0);
	// The best filter is for making smaller; it would take seconds to stretch a picture over a screen, and show no difference.
	const bool bSmaller = Image.Width < SourceWidth || Image.Height < SourceHeight;
	cairo_pattern_set_filter(cairo_get_source(Context), bSmaller ? CAIRO_FILTER_BEST : CAIRO_FILTER_GOOD);
	// Without it the edges of a picture that fills its rectangle would fade.
	cairo_pattern_set_extend(cairo_get_source(Context), CAIRO_EXTEND_PAD);
	cairo_set_operator(Context, CAIRO_OPERATOR_SOURCE);
	cairo_paint(Context);
	const bool bPainted = cairo_status(Context) == CAIRO_STATUS_SUCCESS;
	cairo_destroy(Context);
	cairo_surface_destroy(Source);
	if (!bPainted)
	{
		OutReason = TEXT("there is not enough memory");
		cairo_surface_destroy(Scaled);
		return false;
	}
	cairo_surface_flush(Scaled);
	const int32 Stride = cairo_image_surface_get_stride(Scaled);
	const unsigned char* const Data = cairo_image_surface_get_data(Scaled);
	Image.Data.SetNumUninitialized(Image.Width * Image.Height);
	for (int32 Y = 0; Y < Image.Height; ++Y)
	{
		std::memcpy(Image.Data.GetData() + static_cast<int64>(Y) * Image.Width, Data + static_cast<int64>(Y) * Stride,
			static_cast<size_t>(Image.Width) * 4);
	}
	cairo_surface_destroy(Scaled);
	return true;
}
