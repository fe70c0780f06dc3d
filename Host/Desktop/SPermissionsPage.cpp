#include "SPermissionsPage.h"

#include "SettingRows.h"
#include "Styling/AppStyle.h"
#include "Styling/CoreStyle.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

#define LOCTEXT_NAMESPACE "PermissionsPage"

namespace
{
	using Velmora::FAgentPermission;
	using Velmora::FAgentPermissions;

	/** A toast, or another program on the project, may write a rule while the page is shown. */
	constexpr double LookAgainSeconds = 1.0;

	FText DescribeSubject(const FAgentPermission& Rule)
	{
		return Rule.Prefix.IsEmpty() ? LOCTEXT("Everything", "whatever it is about")
									 : FText::Format(LOCTEXT("BeginsWith", "{0}\u2026"), FText::FromString(Rule.Prefix));
	}

	/** The tool, and below it the beginning of what it may act on. */
	TSharedRef<SWidget> MakeRuleText(const FAgentPermission& Rule)
	{
		// clang-format off
		return SNew(SVerticalBox)
			+ SVerticalBox::Slot()
			.AutoHeight()
			[
				SNew(STextBlock)
				.Text(FText::FromString(Rule.Tool))
			]
			+ SVerticalBox::Slot()
			.AutoHeight()
			[
				SNew(STextBlock)
				.Text(DescribeSubject(Rule))
				.Font(FCoreStyle::GetDefaultFontStyle("Mono", 9.0f))
				.ColorAndOpacity(FSlateColor(FAppStyle::GetColor("Colors.ForegroundSubdued")))
				.AutoWrapText(true)
			];
		// clang-format on
	}
}

void SPermissionsPage::Construct(const FArguments& InArgs)
{
	// clang-format off
	ChildSlot
	[
		SNew(SScrollBox)
		+ SScrollBox::Slot()
		[
			SAssignNew(Rows, SVerticalBox)
		]
	];
	// clang-format on
	Rules = FAgentPermissions::List();
	Rebuild();
}

void SPermissionsPage::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	SCompoundWidget::Tick(AllottedGeometry, InCurrentTime, InDeltaTime);
	if (InCurrentTime - LastLook >= LookAgainSeconds)
	{
		LastLook = InCurrentTime;
		Refresh();
	}
}

void SPermissionsPage::Refresh()
{
	TArray<FAgentPermission> Read = FAgentPermissions::List();
	if (!(Read == Rules))
	{
		Rules = MoveTemp(Read);
		Rebuild();
	}
}

void SPermissionsPage::Rebuild()
{
	Rows->ClearChildren();
	Rows->AddSlot().AutoHeight()[SettingRows::MakeGroupHeading(LOCTEXT("Rules", "Rules"))];
	bool bOdd = false;
	for (const FAgentPermission& Rule : Rules)
	{
		Rows->AddSlot().AutoHeight()[MakeRuleRow(Rule, bOdd)];
		bOdd = !bOdd;
	}
	const FText Note = Rules.IsEmpty()
		? LOCTEXT("NoRules", "There are none: the agent asks each time. \"Always in this project\" in answer to a question makes one.")
		: LOCTEXT("DenyBeatsAllow",
			  "A rule that refuses beats every rule that allows. They hold for this project, and are kept outside of it.");
	// clang-format off
	Rows->AddSlot()
	.AutoHeight()
	.Padding(16.0f, 8.0f)
	[
		SettingRows::MakeNote(Note)
	];
	Rows->AddSlot()
	.AutoHeight()
	.Padding(16.0f, 0.0f, 16.0f, 8.0f)
	[
		SNew(STextBlock)
		.Text_Lambda([this]() { return Problem; })
		.ColorAndOpacity(FSlateColor(FAppStyle::GetColor("Colors.Error")))
		.AutoWrapText(true)
		.Visibility_Lambda([this]() { return Problem.IsEmpty() ? EVisibility::Collapsed : EVisibility::Visible; })
	];
	// clang-format on
}

TSharedRef<SWidget> SPermissionsPage::MakeRuleRow(const FAgentPermission& Rule, bool bOdd)
{
	const auto OnRemove = [this, Rule]()
	{
		Remove(Rule);
		return FReply::Handled();
	};
	const FText ToolTip =
		FText::Format(LOCTEXT("RemoveTip", "Ask again about {0} {1}"), FText::FromString(Rule.Tool), DescribeSubject(Rule));
	// clang-format off
	return SNew(SBorder)
		.BorderImage(FAppStyle::GetBrush("WhiteBrush"))
		.BorderBackgroundColor(FSlateColor(FLinearColor(FColor::FromHex(bOdd ? TEXT("FFFFFF06") : TEXT("FFFFFF00")))))
		.Padding(FMargin(16.0f, 6.0f))
		[
			SNew(SHorizontalBox)
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.VAlign(VAlign_Center)
			[
				SNew(SBox)
				.WidthOverride(88.0f)
				[
					SettingRows::MakeState(Rule.bAllows ? SettingRows::GetReadyColor() : SettingRows::GetFailedColor(),
						Rule.bAllows ? LOCTEXT("Allow", "Allow") : LOCTEXT("Refuse", "Refuse"))
				]
			]
			+ SHorizontalBox::Slot()
			.FillWidth(1.0f)
			.VAlign(VAlign_Center)
			.Padding(0.0f, 0.0f, 8.0f, 0.0f)
			[
				MakeRuleText(Rule)
			]
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.VAlign(VAlign_Center)
			[
				SNew(SButton)
				.Text(LOCTEXT("Remove", "Remove"))
				.ToolTipText(ToolTip)
				.OnClicked_Lambda(OnRemove)
			]
		];
	// clang-format on
}

void SPermissionsPage::Remove(const FAgentPermission& Rule)
{
	Problem = FText::FromString(FAgentPermissions::Remove(Rule));
	Rules = FAgentPermissions::List();
	Rebuild();
}

#undef LOCTEXT_NAMESPACE
