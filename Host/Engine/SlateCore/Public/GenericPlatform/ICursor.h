#pragma once

/** Shapes of the mouse pointer. */
namespace EMouseCursor
{
	enum Type
	{
		None,
		Default,
		TextEditBeam,
		ResizeLeftRight,
		ResizeUpDown,
		ResizeSouthEast,
		ResizeSouthWest,
		CardinalCross,
		Crosshairs,
		Hand,
		GrabHand,
		GrabHandClosed,
		SlashedCircle,
	};
}
