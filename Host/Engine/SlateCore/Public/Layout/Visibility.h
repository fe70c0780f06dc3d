#pragma once

#include "CoreMinimal.h"

/** Whether a widget is laid out, painted and hit. */
struct SLATECORE_API EVisibility
{
	static const EVisibility Visible;
	/** Takes no room. */
	static const EVisibility Collapsed;
	/** Takes room, is not painted. */
	static const EVisibility Hidden;
	/** Painted; neither it nor its children are hit. */
	static const EVisibility HitTestInvisible;
	/** Painted; only its children are hit. */
	static const EVisibility SelfHitTestInvisible;
	static const EVisibility All;

	constexpr EVisibility()
		: Value(VIS_Visible)
	{
	}
	bool operator==(const EVisibility& Other) const { return Value == Other.Value; }
	bool operator!=(const EVisibility& Other) const { return Value != Other.Value; }
	bool IsVisible() const { return (Value & VISPRIVATE_Visible) != 0; }
	bool IsCollapsed() const { return (Value & VISPRIVATE_Collapsed) != 0; }
	bool IsHitTestVisible() const { return (Value & VISPRIVATE_SelfHit) != 0; }
	bool AreChildrenHitTestVisible() const { return (Value & VISPRIVATE_ChildrenHit) != 0; }
	FString ToString() const;

private:
	enum Private : uint8
	{
		VISPRIVATE_Visible = 1,
		VISPRIVATE_Collapsed = 2,
		VISPRIVATE_Hidden = 4,
		VISPRIVATE_SelfHit = 8,
		VISPRIVATE_ChildrenHit = 16,
		VIS_Visible = VISPRIVATE_Visible | VISPRIVATE_SelfHit | VISPRIVATE_ChildrenHit,
		VIS_Collapsed = VISPRIVATE_Collapsed,
		VIS_Hidden = VISPRIVATE_Hidden,
		VIS_HitTestInvisible = VISPRIVATE_Visible,
		VIS_SelfHitTestInvisible = VISPRIVATE_Visible | VISPRIVATE_ChildrenHit,
	};
	constexpr EVisibility(Private InValue)
		: Value(InValue)
	{
	}
	Private Value;
};
