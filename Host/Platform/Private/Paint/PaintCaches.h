#pragma once

#include "Paint/PixelCanvas.h"
#include "UObject/NameTypes.h"

#include <list>
#include <unordered_map>

/** Pictures from PNG files, scaled to the size at which they are drawn. Bounded by bytes; the longest unused go first. */
class FImageCache
{
public:
	/** Null when the file cannot be read as a PNG, which is logged once per file. Valid until the next call. */
	const FPixelImage* Find(FName Path, int32 Width, int32 Height);

	static constexpr int64 MaxBytes = 32 * 1024 * 1024;
	/** A picture larger than this is shown as missing rather than let it fill the memory. */
	static constexpr int64 MaxPixels = 64 * 1024 * 1024;

	int64 GetBytes() const { return Bytes; }
	int32 GetCount() const { return static_cast<int32>(Entries.size()); }

private:
	struct FKey
	{
		FName Path;
		int32 Width = 0;
		int32 Height = 0;
		bool operator==(const FKey& Other) const { return Path == Other.Path && Width == Other.Width && Height == Other.Height; }
	};
	struct FKeyHash
	{
		size_t operator()(const FKey& Key) const;
	};
	struct FEntry
	{
		FKey Key;
		FPixelImage Image;
		bool bMissing = false;
	};
	static bool Load(const FString& Path, FPixelImage& Image, FString& OutReason);

	/** The latest first. */
	std::list<FEntry> Entries;
	std::unordered_map<FKey, std::list<FEntry>::iterator, FKeyHash> ByKey;
	int64 Bytes = 0;
};

/** Masks of soft shadows as nine-slices, by shape and not by colour. Bounded. */
class FShadowCache
{
public:
	/**
	 * The mask of a rounded rectangle blurred by Blur pixels, with Blur pixels of margin on every side. A rectangle large
	 * enough for its middle to be solid shares the mask of the smallest such one. Valid until the next call.
	 */
	const FPixelMask& Find(int32 Width, int32 Height, float Radius, int32 Blur);

	static constexpr size_t MaxMasks = 32;
	size_t GetCount() const { return Entries.size(); }

private:
	struct FEntry
	{
		int32 Width = 0;
		int32 Height = 0;
		int32 Blur = 0;
		float Radius = 0.0f;
		FPixelMask Mask;
	};
	std::list<FEntry> Entries;
};
