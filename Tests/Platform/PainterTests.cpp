#include "Host/HostLog.h"
#include "Paint/CairoPainter.h"
#include "Platform/TextFixture.h"
#include "Support/Base/TempFolder.h"

#include <functional>
#include <vector>

namespace
{
	constexpr FColor PaintWhite(255, 255, 255, 255);
	constexpr FColor PaintRed(255, 0, 0, 255);
	constexpr FColor PaintBlue(0, 0, 255, 255);
	constexpr FColor PaintNone(0, 0, 0, 0);

	/** Writes a picture of two by two white pixels: solid, half, clear, solid. */
	void WriteIcon(const std::string& Path)
	{
		cairo_surface_t* Surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 2, 2);
		uint32* const First = reinterpret_cast<uint32*>(cairo_image_surface_get_data(Surface));
		uint32* const Second = First + cairo_image_surface_get_stride(Surface) / 4;
		First[0] = 0xFFFFFFFFu;
		First[1] = 0x80808080u;
		Second[0] = 0;
		Second[1] = 0xFFFFFFFFu;
		cairo_surface_mark_dirty(Surface);
		cairo_surface_write_to_png(Surface, Path.c_str());
		cairo_surface_destroy(Surface);
	}
}

class Painter : public FTextTest
{
protected:
	static constexpr int32 Side = 40;
	Painter()
		: Elements(FVector2D(Side, Side), 1.0f)
		, Pixels(Side * Side, 0xFF00FF00u)
	{
		Target.SetTarget(reinterpret_cast<unsigned char*>(Pixels.data()), Side, Side, Side * 4);
	}
	void Paint() { Target.Paint(Elements, FPixelRect{ 0, 0, Side, Side }); }
	/** RRGGBB of a pixel. */
	uint32 At(int32 X, int32 Y) const { return Pixels[static_cast<size_t>(Y * Side + X)] & 0xFFFFFFu; }
	int32 Count(const std::function<bool(uint32)>& Matches) const
	{
		int32 Found = 0;
		for (const uint32 Pixel : Pixels)
		{
			Found += Matches(Pixel & 0xFFFFFFu) ? 1 : 0;
		}
		return Found;
	}

	FSlateWindowElementList Elements;
	std::vector<uint32> Pixels;
	FCairoPainter Target;
};

TEST_F(Painter, BoxesEndOnPixels)
{
	Elements.AddBox(FSlateRect(4.4f, 5.5f, 10.4f, 9.6f), PaintRed);
	Paint();
	EXPECT_EQ(At(3, 7), 0x000000u);
	EXPECT_EQ(At(4, 7), 0xFF0000u);
	EXPECT_EQ(At(9, 7), 0xFF0000u);
	EXPECT_EQ(At(10, 7), 0x000000u);
	EXPECT_EQ(At(6, 5), 0x000000u);
	EXPECT_EQ(At(6, 6), 0xFF0000u);
	EXPECT_EQ(At(6, 9), 0xFF0000u);
	EXPECT_EQ(At(6, 10), 0x000000u);
	EXPECT_EQ(Count([](uint32 Pixel) { return Pixel != 0 && Pixel != 0xFF0000u; }), 0) << "no blended edge";
}

TEST_F(Painter, ThinBoxesStayVisible)
{
	Elements.AddBox(FSlateRect(5.1f, 5.0f, 5.7f, 9.0f), PaintRed);
	Elements.AddBox(FSlateRect(20.5f, 5.0f, 21.0f, 9.0f), PaintRed);
	Paint();
	EXPECT_EQ(Count([](uint32 Pixel) { return Pixel == 0xFF0000u; }), 8);
}

TEST_F(Painter, AlphaBlendsExactly)
{
	Elements.AddBox(FSlateRect(0, 0, Side, Side), FColor(0x15, 0x17, 0x1C, 255));
	Elements.AddBox(FSlateRect(0, 0, Side, Side), FColor(255, 255, 255, 0x14));
	Paint();
	EXPECT_EQ(At(20, 20), 0x27292Eu);
}

TEST_F(Painter, EachCornerHasItsRadius)
{
	Elements.AddRoundedBox(FSlateRect(0, 0, 40, 40), FVector4f(0, 6, 12, 20), PaintWhite, PaintNone, 0);
	Paint();
	EXPECT_EQ(At(0, 0), 0xFFFFFFu) << "square";
	EXPECT_EQ(At(39, 0), 0u);
	EXPECT_EQ(At(36, 3), 0xFFFFFFu) << "inside a radius of 6";
	EXPECT_EQ(At(38, 38), 0u);
	EXPECT_EQ(At(35, 35), 0xFFFFFFu) << "inside a radius of 12";
	EXPECT_EQ(At(3, 36), 0u) << "outside a radius of 20";
	EXPECT_EQ(At(7, 32), 0xFFFFFFu);
}

TEST_F(Painter, ARoundedShapeIsSymmetricAndCoversItsCircle)
{
	Elements.AddRoundedBox(FSlateRect(8, 8, 32, 32), FVector4f(99, 99, 99, 99), PaintWhite, PaintNone, 0);
	Paint();
	double Area = 0;
	for (int32 Y = 0; Y < Side; ++Y)
	{
		for (int32 X = 0; X < Side; ++X)
		{
			EXPECT_EQ(At(X, Y), At(Side - 1 - X, Y));
			EXPECT_EQ(At(X, Y), At(X, Side - 1 - Y));
			EXPECT_EQ(At(X, Y), At(Y, X));
			Area += (At(X, Y) & 255) / 255.0;
		}
	}
	EXPECT_NEAR(Area, 3.14159 * 12 * 12, 3.0);
}

TEST_F(Painter, TheOutlineLiesInsideTheEdge)
{
	Elements.AddRoundedBox(FSlateRect(10, 10, 30, 30), FVector4f(4, 4, 4, 4), PaintBlue, PaintRed, 1);
	Paint();
	EXPECT_EQ(At(9, 20), 0u);
	EXPECT_EQ(At(10, 20), 0xFF0000u);
	EXPECT_EQ(At(11, 20), 0x0000FFu);
	EXPECT_EQ(At(29, 20), 0xFF0000u);
	EXPECT_EQ(At(30, 20), 0u);
	EXPECT_EQ(At(20, 10), 0xFF0000u);
	EXPECT_EQ(At(20, 29), 0xFF0000u);
	EXPECT_EQ(At(20, 28), 0x0000FFu);
	EXPECT_EQ(At(10, 10), 0u) << "the corner is cut";
}

TEST_F(Painter, TheEdgeIsSmoothedOnce)
{
	// A box of one colour with an outline of the same colour is that box: no seam between the two, no double edge.
	Elements.AddRoundedBox(FSlateRect(2, 2, 38, 38), FVector4f(8, 8, 8, 8), PaintWhite, PaintNone, 0);
	Paint();
	const std::vector<uint32> Plain = Pixels;
	Elements.Reset(FVector2D(Side, Side), 1.0f);
	Elements.AddRoundedBox(FSlateRect(2, 2, 38, 38), FVector4f(8, 8, 8, 8), PaintWhite, PaintWhite, 2);
	Paint();
	for (size_t Index = 0; Index < Plain.size(); ++Index)
	{
		EXPECT_NEAR(static_cast<int32>(Plain[Index] & 255), static_cast<int32>(Pixels[Index] & 255), 1) << Index;
	}
	// Without a fill the inside shows what is below, up to the line.
	Elements.Reset(FVector2D(Side, Side), 1.0f);
	Elements.AddRoundedBox(FSlateRect(2, 2, 38, 38), FVector4f(8, 8, 8, 8), PaintNone, PaintWhite, 1);
	Paint();
	EXPECT_EQ(At(2, 20), 0xFFFFFFu);
	EXPECT_EQ(At(3, 20), 0u);
	EXPECT_EQ(At(20, 20), 0u);
}

TEST_F(Painter, DamageAndClipsAreKept)
{
	Elements.PushClip(FSlateRect(5, 5, 15, 15));
	Elements.AddBox(FSlateRect(0, 0, 40, 40), PaintRed);
	Elements.AddRoundedBox(FSlateRect(0, 0, 40, 40), FVector4f(12, 12, 12, 12), PaintRed, PaintRed, 2);
	Elements.AddChequer(FSlateRect(0, 0, 40, 40));
	Elements.AddShadow(FSlateRect(0, 0, 20, 20), 4, 8, 2, PaintRed);
	Elements.PopClip();
	Target.Paint(Elements, FPixelRect{ 10, 0, 40, 40 });
	for (int32 Y = 0; Y < Side; ++Y)
	{
		for (int32 X = 0; X < Side; ++X)
		{
			const bool bDamaged = X >= 10;
			const bool bClipped = X < 5 || X >= 15 || Y < 5 || Y >= 15;
			if (!bDamaged)
			{
				ASSERT_EQ(At(X, Y), 0x00FF00u) << X << "," << Y << " was not to be touched";
			}
			else
			{
				ASSERT_EQ(At(X, Y) == 0u, bClipped) << X << "," << Y;
			}
		}
	}
}

TEST_F(Painter, PartsOfAPictureEqualTheWhole)
{
	const TSharedRef<FTextParagraph> Text = Make(TEXT("Hy\u05D0\U0001F600"), Body());
	Elements.AddBox(FSlateRect(0, 0, 40, 40), FColor(0x15, 0x17, 0x1C, 255));
	Elements.AddShadow(FSlateRect(8, 8, 30, 30), 6, 8, 4, FColor(0, 0, 0, 140));
	Elements.AddRoundedBox(
		FSlateRect(8, 8, 30, 30), FVector4f(6, 3, 9, 0), FColor(0x1C, 0x1F, 0x27, 255), FColor(0x34, 0x39, 0x46, 255), 1);
	Elements.AddGlyphs(2, 25, Text->GetRuns(0)[0].Glyphs, FColor(0xCB, 0xCB, 0xCB, 255));
	Paint();
	const std::vector<uint32> Whole = Pixels;
	std::fill(Pixels.begin(), Pixels.end(), 0u);
	for (int32 Y = 0; Y < Side; Y += 7)
	{
		for (int32 X = 0; X < Side; X += 11)
		{
			Target.Paint(Elements, FPixelRect{ X, Y, X + 11, Y + 7 });
		}
	}
	EXPECT_EQ(Whole, Pixels);
}

TEST_F(Painter, IconsTakeTheirTint)
{
	const FTempFolder Folder;
	WriteIcon(Folder.AtBytes("icon.png"));
	const FName Path(*Folder.At(TEXT("icon.png")));
	Elements.AddImage(FSlateRect(0, 0, 2, 2), Path, FColor(0x7C, 0xB9, 0xFF, 255), true);
	Elements.AddImage(FSlateRect(4, 0, 6, 2), Path, FColor(0x7C, 0xB9, 0xFF, 128), true);
	Elements.AddImage(FSlateRect(8, 0, 10, 2), Path, FColor(0x7C, 0xB9, 0xFF, 128), false);
	Elements.AddImage(FSlateRect(20, 20, 40, 40), Path, PaintWhite, true);
	Paint();
	EXPECT_EQ(At(0, 0), 0x7CB9FFu);
	EXPECT_EQ(At(1, 0), 0x3E5D80u) << "half covered";
	EXPECT_EQ(At(0, 1), 0u);
	EXPECT_EQ(At(4, 0), 0x3E5D80u) << "half opaque";
	EXPECT_EQ(At(8, 0), 0x808080u) << "untinted, but half opaque";
	EXPECT_EQ(At(22, 22), 0xFFFFFFu) << "stretched";
	EXPECT_EQ(At(38, 38), 0xFFFFFFu);
}

TEST_F(Painter, AMissingPictureIsAChequerAndIsLoggedOnce)
{
	const int32 Before = FHostLog::GetWarningCount(TEXT("LogImages"));
	for (int32 Time = 0; Time < 3; ++Time)
	{
		Elements.AddImage(FSlateRect(0, 0, 16.0f + static_cast<float>(Time), 16), FName(TEXT("/nowhere/at/all.png")), PaintWhite, true);
		Paint();
	}
	EXPECT_EQ(At(0, 0), 0xFF0000u);
	EXPECT_EQ(At(8, 0), 0x800000u);
	EXPECT_EQ(FHostLog::GetWarningCount(TEXT("LogImages")), Before + 1);
}

TEST_F(Painter, CachesAreBounded)
{
	const FTempFolder Folder;
	WriteIcon(Folder.AtBytes("icon.png"));
	const FName Path(*Folder.At(TEXT("icon.png")));
	FImageCache Images;
	for (int32 Size = 1; Size < 600; ++Size)
	{
		ASSERT_NE(Images.Find(Path, Size, 256), nullptr);
		ASSERT_LE(Images.GetBytes(), FImageCache::MaxBytes);
	}
	EXPECT_NE(Images.Find(Path, 4000, 3000), nullptr) << "larger than the whole cache, alone in it";
	EXPECT_EQ(Images.GetCount(), 1);
	EXPECT_EQ(Images.Find(Path, 100000, 100000), nullptr);
	FShadowCache Shadows;
	for (int32 Size = 1; Size < 100; ++Size)
	{
		Shadows.Find(Size, Size, 4.0f, 24);
		ASSERT_LE(Shadows.GetCount(), FShadowCache::MaxMasks);
	}
}

TEST_F(Painter, ShadowsAreSoftAndShareTheirMask)
{
	Elements.AddBox(FSlateRect(0, 0, 40, 40), PaintWhite);
	Elements.AddShadow(FSlateRect(12, 12, 28, 28), 2, 8, 0, FColor(0, 0, 0, 255));
	Paint();
	EXPECT_GT(At(12, 20) & 255, At(20, 20) & 255);
	EXPECT_GT(At(6, 20) & 255, At(12, 20) & 255);
	EXPECT_EQ(At(3, 20), 0xFFFFFFu) << "beyond the blur";
	EXPECT_EQ(At(7, 20), At(32, 20));
	EXPECT_EQ(At(20, 7), At(20, 32));

	FShadowCache Shadows;
	const FPixelMask* const Mask = &Shadows.Find(300, 200, 6.0f, 12);
	EXPECT_EQ(&Shadows.Find(500, 700, 6.0f, 12), Mask);
	EXPECT_EQ(Shadows.GetCount(), 1u);
	// Stretched or made to measure, the picture is the same.
	std::vector<uint32> Stretched(100 * 100, 0xFFFFFFFFu);
	std::vector<uint32> Exact = Stretched;
	const FPixelRect All{ 0, 0, 100, 100 };
	FPixelCanvas(Stretched.data(), 100, 100, 100)
		.DrawNineSlice(Shadows.Find(60, 60, 4.0f, 10), FPixelRect{ 10, 10, 90, 90 }, All, FColor(0, 0, 0, 255));
	FPixelMask Full = Shadows.Find(29, 29, 4.0f, 10);
	FPixelCanvas(Exact.data(), 100, 100, 100).DrawNineSlice(Full, FPixelRect{ 10, 10, 90, 90 }, All, FColor(0, 0, 0, 255));
	EXPECT_EQ(Stretched, Exact);
}

TEST_F(Painter, GlyphsStandOnTheirBaseline)
{
	const TSharedRef<FTextParagraph> Text = Make(TEXT("H"));
	Elements.AddGlyphs(10, 30, Text->GetRuns(0)[0].Glyphs, PaintRed);
	Paint();
	EXPECT_GT(Count([](uint32 Pixel) { return (Pixel >> 16) > 128; }), 20) << "there is ink";
	EXPECT_EQ(Count([](uint32 Pixel) { return (Pixel & 0xFFFF) != 0; }), 0) << "of the one colour";
	for (int32 X = 0; X < Side; ++X)
	{
		EXPECT_EQ(At(X, 30), 0u) << "nothing below the baseline";
	}
	EXPECT_GT(Count([](uint32 Pixel) { return (Pixel >> 16) > 200; }), 10) << "stems are sharp";
}

TEST_F(Painter, EmojiKeepTheirColoursAndTakeAlpha)
{
	const TSharedRef<FTextParagraph> Text = Make(TEXT("\U0001F600"), Body());
	const TSharedPtr<const FGlyphRun> Run = Text->GetRuns(0)[0].Glyphs;
	Elements.AddGlyphs(10, 25, Run, FColor(0, 0, 255, 255));
	Paint();
	const auto IsYellow = [](uint32 Pixel) { return (Pixel >> 16) > 180 && ((Pixel >> 8) & 255) > 120 && (Pixel & 255) < 120; };
	EXPECT_GT(Count(IsYellow), 40);
	EXPECT_LT(Count([](uint32 Pixel) { return Pixel != 0; }), 26 * 26) << "as large as the text around it";
	Elements.Reset(FVector2D(Side, Side), 1.0f);
	Elements.AddGlyphs(10, 25, Run, FColor(0, 0, 255, 64));
	Paint();
	EXPECT_EQ(Count([](uint32 Pixel) { return (Pixel >> 16) > 80; }), 0) << "a quarter of it";
	EXPECT_GT(Count([](uint32 Pixel) { return (Pixel >> 16) > 40; }), 40);
}

TEST_F(Painter, AMissingGlyphIsABox)
{
	const TSharedRef<FTextParagraph> Text = Make(TEXT("\U0001FB7F"), Body());
	Elements.AddGlyphs(10, 25, Text->GetRuns(0)[0].Glyphs, PaintRed);
	Paint();
	EXPECT_GT(Count([](uint32 Pixel) { return Pixel == 0xFF0000u; }), 12);
}

TEST_F(Painter, BrokenRectanglesAreHarmless)
{
	const float Odd = std::numeric_limits<float>::infinity();
	const float Nan = std::numeric_limits<float>::quiet_NaN();
	for (const FSlateRect& Rect :
		{ FSlateRect(-Odd, -Odd, Odd, Odd), FSlateRect(Nan, 0, Nan, 10), FSlateRect(10, 10, 5, 5), FSlateRect(-1e9f, 0, 1e9f, 1) })
	{
		Elements.AddBox(Rect, PaintRed);
		Elements.AddRoundedBox(Rect, FVector4f(4, Odd, Nan, -3), PaintRed, PaintRed, Odd);
		Elements.AddShadow(Rect, Odd, Odd, Odd, PaintRed);
		Elements.AddChequer(Rect);
	}
	Paint();
	EXPECT_EQ(Pixels.size(), static_cast<size_t>(Side * Side));
}
