#include "Widgets/SToolExecutionContainer.h"

#include "Style/VelmoraUIStyles.h"
#include "Styling/AppStyle.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SNullWidget.h"
#include "Widgets/Text/STextBlock.h"
#include "Widgets/ToolRowLook.h"
#include "Widgets/WidgetLook.h"

#define LOCTEXT_NAMESPACE "VelmoraUI"

void SToolExecutionContainer::Construct(const FArguments& InArgs)
{
	ToolMessages = InArgs._ToolExecutions;
	IsExpanded = InArgs._IsExpanded;
	OnToggleExpanded = InArgs._OnToggleExpanded;

	// clang-format off
	ChildSlot
	[
		SNew(SVerticalBox)
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			SNew(SButton)
			.Tag(FName("ToolExecutionsHeader"))
			.ButtonStyle(FAppStyle::Get(), "SimpleButton")
			.OnClicked(this, &SToolExecutionContainer::OnHeaderClicked)
			.ContentPadding(FMargin(8.0f, 6.0f))
			[
				BuildHeader()
			]
		]
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			SNew(SBox)
			.Visibility(this, &SToolExecutionContainer::GetBodyVisibility)
			[
				SAssignNew(ToolListBox, SVerticalBox)
			]
		]
	];
	// clang-format on

	for (const TSharedPtr<FChatMessage>& Message : ToolMessages)
	{
		AddToolRow(Message);
	}
}

void SToolExecutionContainer::UpdateToolList(const TArray<TSharedPtr<FChatMessage>>& NewToolExecutions)
{
	const int32 OldCount = ToolMessages.Num();
	ToolMessages = NewToolExecutions;
	if (!ToolListBox.IsValid())
	{
		return;
	}
	for (int32 Index = OldCount; Index < ToolMessages.Num(); ++Index)
	{
		AddToolRow(ToolMessages[Index]);
	}
}

void SToolExecutionContainer::AddToolRow(const TSharedPtr<FChatMessage>& Message)
{
	if (!Message.IsValid())
	{
		return;
	}
	// clang-format off
	ToolListBox->AddSlot()
	.AutoHeight()
	.Padding(8.0f, 4.0f, 8.0f, 8.0f)
	[
		BuildToolRow(Message)
	];
	// clang-format on
}

TSharedRef<SWidget> SToolExecutionContainer::BuildHeader()
{
	// clang-format off
	const TSharedRef<SHorizontalBox> Row = MakeMarkedRow(
		SNew(SImage)
		.Image(this, &SToolExecutionContainer::GetChevronBrush)
		.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetTextColorSecondary())));
	Row->AddSlot()
	.AutoWidth()
	.VAlign(VAlign_Center)
	[
		SNew(STextBlock)
		.Text(this, &SToolExecutionContainer::GetToolExecutionsText)
		.Font(FAppStyle::GetFontStyle("NormalFontBold"))
		.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetTextColorPrimary()))
	];
	// clang-format on
	return Row;
}

TSharedRef<SWidget> SToolExecutionContainer::BuildToolRow(TSharedPtr<FChatMessage> Message)
{
	if (!Message.IsValid())
	{
		return SNullWidget::NullWidget;
	}
	// The row holds the message, which the container may have forgotten by the time the mark is asked for.
	FToolRowShape Shape;
	Shape.StatusPadding = FMargin(8.0f, 0.0f);
	Shape.StatusIcon =
		TAttribute<const FSlateBrush*>::CreateLambda([Message] { return FToolRowLook::GetStatusBrush(Message->ToolStatus); });
	Shape.StatusColor = TAttribute<FSlateColor>::CreateLambda([Message] { return FToolRowLook::GetStatusColor(Message->ToolStatus); });
	return FToolRowLook::MakeRow(*Message, Shape);
}

EVisibility SToolExecutionContainer::GetBodyVisibility() const
{
	return VisibleIf(IsExpanded.Get());
}

const FSlateBrush* SToolExecutionContainer::GetChevronBrush() const
{
	static const FName Expanded("TreeArrow_Expanded");
	static const FName Collapsed("TreeArrow_Collapsed");
	return FAppStyle::GetBrush(IsExpanded.Get() ? Expanded : Collapsed);
}

FText SToolExecutionContainer::GetToolExecutionsText() const
{
	if (ToolMessages.Num() > 0)
	{
		return FText::Format(LOCTEXT("ToolExecutionsHeaderWithCount", "Tool Executions ({0})"), ToolMessages.Num());
	}
	return LOCTEXT("ToolExecutionsHeader", "Tool Executions");
}

FReply SToolExecutionContainer::OnHeaderClicked()
{
	OnToggleExpanded.ExecuteIfBound();
	return FReply::Handled();
}

#undef LOCTEXT_NAMESPACE
