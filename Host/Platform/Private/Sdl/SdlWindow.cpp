#include "Sdl/SdlWindow.h"

#include "Host/HostFileNames.h"
#include "Logging/LogMacros.h"
#include "Paint/Screenshot.h"
#include "Sdl/SdlClipboard.h"
#include "Sdl/SdlPlace.h"
#include "Sdl/X11Support.h"

#include <algorithm>
#include <cmath>
#include <cstring>

// The window on X11 or Wayland. The program paints into the window's own picture in memory and hands over the rectangles
// that changed. SDL may replace that picture at any time (another size, another monitor), so it is asked for before each
// painting, and a new one is painted whole. Where its pixels have another form or cannot be written to, a picture of our
// own lies between.

DEFINE_LOG_CATEGORY_STATIC(LogSdlWindow, Log, All);

namespace
{
	/** SDL answers on machines without a display too, with drivers that show nothing. */
	// 1. Settings, which SDL reads at the start alone. 2. A driver that shows something. 3. How pictures reach the
	// screen.
	bool StartVideo(FString& OutError)
	{
		SDL_SetMainReady();
		// Without this list a console would be switched to graphics when there is no display.
		SDL_SetHint(SDL_HINT_VIDEODRIVER, "x11,wayland");
		SDL_SetHint(SDL_HINT_APP_NAME, "Velmora");
		// The name that desktops group windows by; this version of SDL reads it from the environment alone.
		SDL_setenv("SDL_VIDEO_X11_WMCLASS", "velmora", 0);
		SDL_setenv("SDL_VIDEO_WAYLAND_WMCLASS", "velmora", 0);
		SDL_SetHint(SDL_HINT_VIDEO_ALLOW_SCREENSAVER, "1");
		SDL_SetHint(SDL_HINT_VIDEO_X11_NET_WM_BYPASS_COMPOSITOR, "0");
		SDL_SetHint(SDL_HINT_MOUSE_FOCUS_CLICKTHROUGH, "1");
		SDL_SetHint(SDL_HINT_IME_SUPPORT_EXTENDED_TEXT, "1");
		if (SDL_InitSubSystem(SDL_INIT_VIDEO) != 0)
		{
			OutError = FString::Printf(TEXT("There is no display to open a window on: %s."), UTF8_TO_TCHAR(SDL_GetError()));
			return false;
		}
		const char* const Driver = SDL_GetCurrentVideoDriver();
		if (!Driver || (std::strcmp(Driver, "x11") != 0 && std::strcmp(Driver, "wayland") != 0))
		{
			OutError = TEXT("There is no display to open a window on: neither X11 nor Wayland answers.");
			SDL_QuitSubSystem(SDL_INIT_VIDEO);
			return false;
		}
		if (std::strcmp(Driver, "x11") == 0)
		{
			// Straight through shared memory; by way of a texture every presentation costs milliseconds. Wayland has only the latter.
			SDL_SetHint(SDL_HINT_FRAMEBUFFER_ACCELERATION, "0");
		}
		return true;
	}

	SDL_SystemCursor GetSystemCursor(EMouseCursor::Type Cursor)
	{
		switch (Cursor)
		{
		case EMouseCursor::TextEditBeam:
			return SDL_SYSTEM_CURSOR_IBEAM;
		case EMouseCursor::ResizeLeftRight:
			return SDL_SYSTEM_CURSOR_SIZEWE;
		case EMouseCursor::ResizeUpDown:
			return SDL_SYSTEM_CURSOR_SIZENS;
		case EMouseCursor::ResizeSouthEast:
			return SDL_SYSTEM_CURSOR_SIZENWSE;
		case EMouseCursor::ResizeSouthWest:
			return SDL_SYSTEM_CURSOR_SIZENESW;
		case EMouseCursor::CardinalCross:
			return SDL_SYSTEM_CURSOR_SIZEALL;
		case EMouseCursor::Crosshairs:
			return SDL_SYSTEM_CURSOR_CROSSHAIR;
		case EMouseCursor::Hand:
		case EMouseCursor::GrabHand:
		case EMouseCursor::GrabHandClosed:
			return SDL_SYSTEM_CURSOR_HAND;
		case EMouseCursor::SlashedCircle:
			return SDL_SYSTEM_CURSOR_NO;
		case EMouseCursor::None:
		case EMouseCursor::Default:
			break;
		}
		return SDL_SYSTEM_CURSOR_ARROW;
	}
}

TSharedPtr<FSdlWindow> FSdlWindow::Create(const FHostWindowOptions& Options, FString& OutError)
{
	if (!StartVideo(OutError))
	{
		return nullptr;
	}
	const FIntPoint Size = Options.bFitsMonitor ? SdlPlace::FitSize(Options.PixelSize) : Options.PixelSize;
	SDL_Rect Place = { SDL_WINDOWPOS_UNDEFINED, SDL_WINDOWPOS_UNDEFINED, Size.X, Size.Y };
	bool bMaximised = false;
	const bool bWasKept = !Options.PlacePath.IsEmpty() && SdlPlace::Load(Options.PlacePath, Place, bMaximised);
	SDL_Window* const Handle = SDL_CreateWindow(TCHAR_TO_UTF8(*Options.Title), Place.x, Place.y, Place.w, Place.h,
		SDL_WINDOW_RESIZABLE | SDL_WINDOW_SHOWN | (bMaximised ? static_cast<Uint32>(SDL_WINDOW_MAXIMIZED) : 0u));
	if (!Handle)
	{
		OutError = FString::Printf(TEXT("The window could not be opened: %s."), UTF8_TO_TCHAR(SDL_GetError()));
		SDL_QuitSubSystem(SDL_INIT_VIDEO);
		return nullptr;
	}
	if (Options.MinPixelSize.X > 0 && Options.MinPixelSize.Y > 0)
	{
		SDL_SetWindowMinimumSize(Handle, Options.MinPixelSize.X, Options.MinPixelSize.Y);
	}
	if (Options.bFitsMonitor && !bWasKept)
	{
		SdlPlace::FitFrame(Handle);
	}
	TSharedPtr<FSdlWindow> Result(new FSdlWindow(Handle, Options.Scale));
	Result->PlacePath = Options.PlacePath;
	if (!Options.IconPath.IsEmpty())
	{
		Result->SetIcon(Options.IconPath);
	}
	if (!Result->EnsurePicture())
	{
		OutError = FString::Printf(TEXT("The window has no picture to paint into: %s."), UTF8_TO_TCHAR(SDL_GetError()));
		return nullptr;
	}
	return Result;
}

FSdlWindow::FSdlWindow(SDL_Window* InWindow, float InScale)
	: Window(InWindow)
	, Scale(InScale)
{
	WakeEvent = SDL_RegisterEvents(1);
	SDL_StopTextInput();
	X11Support::WatchDisplay(Window);
	FSdlClipboard::SetWindow(Window);
}

// In this order: the painter first, since its surface lies in the window's pixels.
FSdlWindow::~FSdlWindow()
{
	if (!PlacePath.IsEmpty())
	{
		SdlPlace::Save(PlacePath, Window);
	}
	FSdlClipboard::SetWindow(nullptr);
	Painter.SetTarget(nullptr, 0, 0, 0);
	for (SDL_Cursor* Cursor : Cursors)
	{
		SDL_FreeCursor(Cursor);
	}
	SDL_FreeSurface(OwnSurface);
	SDL_DestroyWindow(Window);
	SDL_QuitSubSystem(SDL_INIT_VIDEO);
}

void FSdlWindow::SetIcon(const FString& Path)
{
	cairo_surface_t* Picture = cairo_image_surface_create_from_png(HostFileNameToBytes(Path).c_str());
	if (cairo_surface_status(Picture) == CAIRO_STATUS_SUCCESS && cairo_image_surface_get_format(Picture) == CAIRO_FORMAT_ARGB32)
	{
		SDL_Surface* Icon =
			SDL_CreateRGBSurfaceWithFormatFrom(cairo_image_surface_get_data(Picture), cairo_image_surface_get_width(Picture),
				cairo_image_surface_get_height(Picture), 32, cairo_image_surface_get_stride(Picture), SDL_PIXELFORMAT_ARGB8888);
		if (Icon)
		{
			SDL_SetWindowIcon(Window, Icon);
			SDL_FreeSurface(Icon);
		}
	}
	else
	{
		UE_LOG(LogSdlWindow, Warning, TEXT("The window's icon %s cannot be read."), *Path);
	}
	cairo_surface_destroy(Picture);
}

FIntPoint FSdlWindow::GetPixelSize() const
{
	int Width = 1;
	int Height = 1;
	SDL_GetWindowSize(Window, &Width, &Height);
	return FIntPoint(std::max(Width, 1), std::max(Height, 1));
}

FIntPoint FSdlWindow::GetScreenPosition() const
{
	int X = 0;
	int Y = 0;
	SDL_GetWindowPosition(Window, &X, &Y);
	return FIntPoint(X, Y);
}

bool FSdlWindow::IsVisible() const
{
	const uint32 Flags = SDL_GetWindowFlags(Window);
	return (Flags & SDL_WINDOW_SHOWN) != 0 && (Flags & (SDL_WINDOW_MINIMIZED | SDL_WINDOW_HIDDEN)) == 0;
}

void FSdlWindow::SetTitle(const FString& Title)
{
	SDL_SetWindowTitle(Window, TCHAR_TO_UTF8(*Title));
}

void FSdlWindow::SetCursor(EMouseCursor::Type Cursor)
{
	if (Cursor == CurrentCursor)
	{
		return;
	}
	CurrentCursor = Cursor;
	SDL_ShowCursor(Cursor == EMouseCursor::None ? SDL_DISABLE : SDL_ENABLE);
	if (Cursor == EMouseCursor::None)
	{
		return;
	}
	const SDL_SystemCursor System = GetSystemCursor(Cursor);
	Cursors.resize(SDL_NUM_SYSTEM_CURSORS, nullptr);
	SDL_Cursor*& Entry = Cursors[static_cast<size_t>(System)];
	if (!Entry)
	{
		Entry = SDL_CreateSystemCursor(System);
	}
	SDL_SetCursor(Entry);
}

// The rectangle tells an input method where to show its list of candidates.
void FSdlWindow::SetTextInput(bool bActive, const FSlateRect& Caret)
{
	if (bActive != bTextInput)
	{
		bTextInput = bActive;
		if (bActive)
		{
			SDL_StartTextInput();
		}
		else
		{
			// What is held back belongs to the field that goes; it comes out with the next events.
			SDL_StopTextInput();
			bTextInputClosed = true;
		}
	}
	if (!bActive)
	{
		return;
	}
	const FPixelRect Area = FPixelRect::Cover(Caret);
	const SDL_Rect Rect = { Area.Left, Area.Top, std::max(1, Area.Width()), std::max(1, Area.Height()) };
	if (!SDL_RectEquals(&Rect, &TextInputRect))
	{
		TextInputRect = Rect;
		SDL_SetTextInputRect(&TextInputRect);
	}
}

// False while there is no picture; the frame is lost then, and the next one is painted whole.
bool FSdlWindow::EnsurePicture()
{
	SDL_Surface* const Current = SDL_GetWindowSurface(Window);
	if (!Current)
	{
		if (Surface)
		{
			UE_LOG(LogSdlWindow, Warning, TEXT("The window has no picture to paint into: %s"), UTF8_TO_TCHAR(SDL_GetError()));
		}
		Surface = nullptr;
		Painter.SetTarget(nullptr, 0, 0, 0);
		return false;
	}
	if (Current == Surface && Current->pixels == SurfacePixels && !bPictureLost)
	{
		return true;
	}
	bPictureLost = true;
	Surface = Current;
	SurfacePixels = Current->pixels;
	SDL_FreeSurface(OwnSurface);
	OwnSurface = nullptr;
	const uint32 Format = Current->format->format;
	if ((Format == SDL_PIXELFORMAT_RGB888 || Format == SDL_PIXELFORMAT_ARGB8888) && !SDL_MUSTLOCK(Current))
	{
		OwnPixels = std::vector<uint32>();
		Painter.SetTarget(static_cast<unsigned char*>(Current->pixels), Current->w, Current->h, Current->pitch);
	}
	else
	{
		OwnPixels.assign(static_cast<size_t>(Current->w) * static_cast<size_t>(Current->h), 0xFF000000u);
		OwnSurface =
			SDL_CreateRGBSurfaceWithFormatFrom(OwnPixels.data(), Current->w, Current->h, 32, Current->w * 4, SDL_PIXELFORMAT_RGB888);
		Painter.SetTarget(reinterpret_cast<unsigned char*>(OwnPixels.data()), Current->w, Current->h, Current->w * 4);
	}
	return Painter.HasTarget();
}

void FSdlWindow::PaintAndPresent(const FSlateWindowElementList& Elements, const FSlateRect& Damage)
{
	if (!EnsurePicture())
	{
		return;
	}
	const FPixelRect Whole{ 0, 0, Surface->w, Surface->h };
	// A new picture holds nothing yet, whatever the caller believes.
	const FPixelRect Area = bPictureLost ? Whole : FPixelRect::Cover(Damage).Intersect(Whole);
	if (Area.IsEmpty())
	{
		return;
	}
	bPictureLost = false;
	Painter.Paint(Elements, Area);
	SDL_Rect Rect = { Area.Left, Area.Top, Area.Width(), Area.Height() };
	if (OwnSurface)
	{
		SDL_Rect Target = Rect;
		SDL_BlitSurface(OwnSurface, &Rect, Surface, &Target);
	}
	if (SDL_UpdateWindowSurfaceRects(Window, &Rect, 1) != 0)
	{
		// The window changed its size in between; the event for it is on its way.
		bPictureLost = true;
	}
}

// Any thread. One event is enough for any number of calls, until it has been taken.
void FSdlWindow::Wake()
{
	if (bWakePending.exchange(true))
	{
		return;
	}
	SDL_Event Event = {};
	Event.type = WakeEvent;
	if (SDL_PushEvent(&Event) != 1)
	{
		bWakePending = false; // The queue is full, so nobody sleeps.
	}
}

bool FSdlWindow::SaveScreenshot(const FString& Path) const
{
	return SaveSurfaceAsPng(Painter.GetSurface(), Path);
}

void FSdlWindow::Resize(const FIntPoint& PixelSize)
{
	SDL_SetWindowSize(Window, std::clamp(PixelSize.X, 1, 16384), std::clamp(PixelSize.Y, 1, 16384));
}

FColor FSdlWindow::GetPixel(int32 X, int32 Y) const
{
	cairo_surface_t* const Picture = Painter.GetSurface();
	if (!Picture || X < 0 || Y < 0 || X >= cairo_image_surface_get_width(Picture) || Y >= cairo_image_surface_get_height(Picture))
	{
		return FColor(0, 0, 0, 0);
	}
	const unsigned char* const Row =
		cairo_image_surface_get_data(Picture) + static_cast<int64>(Y) * cairo_image_surface_get_stride(Picture);
	uint32 Pixel = 0;
	std::memcpy(&Pixel, Row + static_cast<int64>(X) * 4, sizeof(Pixel));
	return FColor(static_cast<uint8>(Pixel >> 16), static_cast<uint8>(Pixel >> 8), static_cast<uint8>(Pixel), 255);
}
