#include "Layout/Visibility.h"

const EVisibility EVisibility::Visible(EVisibility::VIS_Visible);
const EVisibility EVisibility::Collapsed(EVisibility::VIS_Collapsed);
const EVisibility EVisibility::Hidden(EVisibility::VIS_Hidden);
const EVisibility EVisibility::HitTestInvisible(EVisibility::VIS_HitTestInvisible);
const EVisibility EVisibility::SelfHitTestInvisible(EVisibility::VIS_SelfHitTestInvisible);
const EVisibility EVisibility::All(
	static_cast<EVisibility::Private>(EVisibility::VIS_Visible | EVisibility::VIS_Hidden | EVisibility::VIS_Collapsed));

FString EVisibility::ToString() const
{
	if (*this == Visible)
	{
		return TEXT("Visible");
	}
	if (*this == Collapsed)
	{
		return TEXT("Collapsed");
	}
	if (*this == Hidden)
	{
		return TEXT("Hidden");
	}
	return *this == HitTestInvisible ? TEXT("HitTestInvisible") : TEXT("SelfHitTestInvisible");
}
