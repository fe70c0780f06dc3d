#include "Layout/Children.h"

#include "Widgets/SNullWidget.h"
#include "Widgets/SWidget.h"

FChildren::~FChildren() = default;

TSharedRef<SWidget> FNoChildren::GetChildAt(int32 Index) const
{
	checkf(false, TEXT("A widget without children was asked for one"));
	return SNullWidget::GetNullWidget();
}

SWidget& FNoChildren::GetChildRefAt(int32 Index) const
{
	checkf(false, TEXT("A widget without children was asked for one"));
	return *SNullWidget::GetNullWidget();
}

FNoChildren& FNoChildren::Get()
{
	static FNoChildren Instance;
	return Instance;
}
