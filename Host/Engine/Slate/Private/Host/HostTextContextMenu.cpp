#include "Host/HostTextContextMenu.h"

#include "Framework/Application/SlateApplication.h"
#include "Styling/AppStyle.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

namespace
{
	/** A row that reacts to the pointer. */
	class STextMenuRow : public SCompoundWidget
	{
	public:
		SLATE_BEGIN_ARGS(STextMenuRow) {}
		SLATE_END_ARGS()

		void Construct(const FArguments& InArgs, const FTextMenuRow& InRow)
		{
			Row = InRow;
			SetEnabled(Row.bEnabled);
			const FSlateBrush* Icon = Row.Icon.IsNone() ? FAppStyle::GetNoBrush() : FAppStyle::GetBrush(Row.Icon);
			// clang-format off
			ChildSlot
			[
				SNew(SBox)
				.HeightOverride(26.0f)
				[
					SNew(SHorizontalBox)
					+ SHorizontalBox::Slot()
					.AutoWidth()
					.VAlign(VAlign_Center)
					.Padding(8.0f, 0.0f, 8.0f, 0.0f)
					[
						SNew(SImage)
						.Image(Icon)
						.DesiredSizeOverride(FVector2D(16.0, 16.0))
						.ColorAndOpacity(FSlateColor::UseForeground())
					]
					+ SHorizontalBox::Slot()
					.FillWidth(1.0f)
					.VAlign(VAlign_Center)
					[
						SNew(STextBlock)
						.Text(Row.Label)
						.ColorAndOpacity(FSlateColor::UseForeground())
					]
					+ SHorizontalBox::Slot()
					.AutoWidth()
					.VAlign(VAlign_Center)
					.Padding(24.0f, 0.0f, 8.0f, 0.0f)
					[
						SNew(STextBlock)
						.Text(Row.Keys)
						.ColorAndOpacity(FAppStyle::GetColor(Row.bEnabled ? TEXT("Colors.ForegroundSubdued") : TEXT("Colors.Disabled")))
					]
				]
			];
			// clang-format on
			SetForegroundColor(TAttribute<FSlateColor>::CreateSP(this, &STextMenuRow::GetForeground));
		}
		virtual FReply OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override
		{
			return FReply::Handled();
		}
		virtual FReply OnMouseButtonUp(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override
		{
			const TFunction<void()> Execute = Row.Execute;
			FSlateApplication::Get().DismissAllMenus();
			Execute();
			return FReply::Handled();
		}

	protected:
		virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
			FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override
		{
			if (IsHovered() && Row.bEnabled)
			{
				OutDrawElements.AddBrush(AllottedGeometry.GetLayoutBoundingRect(), GetStyle().HoveredBrush, FLinearColor::White,
					InWidgetStyle.GetColorAndOpacityTint());
			}
			return SCompoundWidget::OnPaint(Args, AllottedGeometry, MyCullingRect, OutDrawElements, LayerId, InWidgetStyle, bParentEnabled);
		}

	private:
		static const FTableRowStyle& GetStyle() { return FAppStyle::Get().GetWidgetStyle<FTableRowStyle>(TEXT("Menu.Row")); }
		FSlateColor GetForeground() const
		{
			return !Row.bEnabled ? GetStyle().DisabledTextColor : IsHovered() ? GetStyle().SelectedTextColor : GetStyle().TextColor;
		}
		FTextMenuRow Row;
	};
}

TSharedRef<SWidget> MakeTextMenu(const TArray<FTextMenuRow>& Rows)
{
	const TSharedRef<SVerticalBox> List = SNew(SVerticalBox);
	for (const FTextMenuRow& Row : Rows)
	{
		List->AddSlot().AutoHeight()[SNew(STextMenuRow, Row)];
	}
	// clang-format off
	return SNew(SBorder)
		.BorderImage(FAppStyle::GetBrush(TEXT("Menu.Background")))
		.Padding(FMargin(4.0f))
		[
			List
		];
	// clang-format on
}
