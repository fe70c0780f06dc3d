#pragma once

#include "CoreMinimal.h"

#include <cairo.h>

/** Writes a surface as a PNG file, whole or not at all. Logs why when it fails. */
bool SaveSurfaceAsPng(cairo_surface_t* Surface, const FString& Path);
