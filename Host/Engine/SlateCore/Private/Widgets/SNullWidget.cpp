#include "Widgets/SNullWidget.h"

#include "Widgets/SLeafWidget.h"

namespace
{
	class SEmptyWidget : public SLeafWidget
	{
	public:
		SEmptyWidget()
		{
			SetCanTick(false);
			SetType(FName(TEXT("SNullWidget")));
		}

	protected:
		virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
			FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override
		{
			return LayerId;
		}
		virtual FVector2D ComputeDesiredSize(float LayoutScaleMultiplier) const override { return FVector2D(0, 0); }
	};
}

const TSharedRef<SWidget>& SNullWidget::GetNullWidget()
{
	static const TSharedRef<SWidget> Instance = MakeShared<SEmptyWidget>();
	return Instance;
}

const TSharedRef<SWidget>& SNullWidget::NullWidget = SNullWidget::GetNullWidget();

FChildren* SLeafWidget::GetChildren()
{
	return &FNoChildren::Get();
}

void SLeafWidget::OnArrangeChildren(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const {}
