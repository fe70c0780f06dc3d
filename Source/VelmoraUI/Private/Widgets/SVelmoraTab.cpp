#include "Widgets/SVelmoraTab.h"

#include "Agent/Agent.h"
#include "Agent/AgentBuilder.h"
#include "Dom/JsonObject.h"
#include "ISettingsModule.h"
#include "Misc/FileHelper.h"
#include "Misc/Paths.h"
#include "Modules/ModuleManager.h"
#include "Serialization/JsonReader.h"
#include "Serialization/JsonSerializer.h"
#include "Serialization/JsonWriter.h"
#include "Style/VelmoraUIStyles.h"
#include "Styling/AppStyle.h"
#include "Styling/CoreStyle.h"
#include "ViewModels/ChatViewModel.h"
#include "Widgets/Docking/SDockTab.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SSplitter.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SChatWindow.h"
#include "Widgets/SConversationPlan.h"
#include "Widgets/SCustomizeBehavior.h"
#include "Widgets/SNullWidget.h"
#include "Widgets/SOverlay.h"
#include "Widgets/Text/STextBlock.h"
#include "Widgets/WidgetLook.h"

#define LOCTEXT_NAMESPACE "VelmoraUI"

namespace
{

	constexpr const TCHAR* ShowPlanKey = TEXT("ShowPlan");
	constexpr const TCHAR* ShowCustomizeBehaviorKey = TEXT("ShowCustomizeBehavior");

} // namespace

SVelmoraTab::~SVelmoraTab()
{
	if (Agent.IsValid())
	{
		// The chat still holds the agent when the fields are gone already; from here on its plans reach nobody.
		Agent->OnPlanUpdate([](const FString&, const FString&) {});
	}
}

void SVelmoraTab::Construct(const FArguments& InArgs, const TSharedRef<SDockTab>& InOwnerTab)
{
	OwnerTab = InOwnerTab;
	// Nothing here moves by itself; a plan that comes asks for a single frame.
	StayAwake.SetUp(*this, [] { return false; });
	TabStatePath = FPaths::ProjectSavedDir() / TEXT("Velmora") / TEXT("TabState.json");
	// The agent and the flags first, since the widgets ask for both while they are built.
	InitializeAgent();
	RestoreTabState();

	// clang-format off
	ChildSlot
	[
		SNew(SVerticalBox)
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			BuildToolbar()
		]
		+ SVerticalBox::Slot()
		.FillHeight(1.0f)
		[
			BuildMainLayout()
		]
	];
	// clang-format on

	// Last, since it needs the chat window and the plan panel.
	InitializeViewModel();
}

FName SVelmoraTab::GetTabName()
{
	return FName("VelmoraTab");
}

void SVelmoraTab::InitializeAgent()
{
	Agent = FAgentBuilder::CreateDefault();
}

void SVelmoraTab::InitializeViewModel()
{
	ViewModel = MakeShared<FChatViewModel>();
	if (!Agent.IsValid() || !ViewModel->Initialize(Agent))
	{
		return;
	}
	// The window before the plan: it sets up all that the conversation reports.
	ChatWindow->SetViewModel(ViewModel);
	Agent->OnPlanUpdate([this](const FString& First, const FString& PlanText) { OnPlanUpdate(First, PlanText); });
	// A plan that was made before this tab was opened is reported to nobody again.
	const FString PresentPlan = Agent->GetCurrentPlan();
	if (!PresentPlan.IsEmpty())
	{
		OnPlanUpdate(FString(), PresentPlan);
	}
}

void SVelmoraTab::RestoreTabState()
{
	// No file, or one that cannot be read, is the first start: the flags keep what they begin with.
	FString Text;
	if (!FFileHelper::LoadFileToString(Text, *TabStatePath))
	{
		return;
	}
	TSharedPtr<FJsonObject> State;
	const TSharedRef<TJsonReader<>> Reader = TJsonReaderFactory<>::Create(Text);
	if (!FJsonSerializer::Deserialize(Reader, State) || !State.IsValid())
	{
		return;
	}
	// A key that is missing, or is no bool, leaves its flag as it is.
	State->TryGetBoolField(ShowPlanKey, bShowPlan);
	State->TryGetBoolField(ShowCustomizeBehaviorKey, bShowCustomizeBehavior);
}

void SVelmoraTab::SaveTabState() const
{
	const TSharedRef<FJsonObject> State = MakeShared<FJsonObject>();
	State->SetBoolField(ShowPlanKey, bShowPlan);
	State->SetBoolField(ShowCustomizeBehaviorKey, bShowCustomizeBehavior);
	FString Text;
	const TSharedRef<TJsonWriter<>> Writer = TJsonWriterFactory<>::Create(&Text);
	if (FJsonSerializer::Serialize(State, Writer))
	{
		FFileHelper::SaveStringToFile(Text, *TabStatePath);
	}
}

TSharedRef<SWidget> SVelmoraTab::BuildToolbar()
{
	// clang-format off
	return SNew(SBorder)
		.BorderImage(FAppStyle::GetBrush("ToolPanel.GroupBorder"))
		.Padding(FMargin(4.0f, 2.0f))
		[
			SNew(SHorizontalBox)
			+ SHorizontalBox::Slot()
			.FillWidth(1.0f)
			[
				SNullWidget::NullWidget
			]
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.Padding(4.0f, 0.0f)
			[
				SNew(SButton)
				.ButtonStyle(FAppStyle::Get(), "SimpleButton")
				.ToolTipText(LOCTEXT("TogglePlan", "Toggle conversation plan sidebar"))
				.OnClicked(this, &SVelmoraTab::OnPlanClicked)
				[
					SNew(SImage)
					.Image(this, &SVelmoraTab::GetPlanButtonBrush)
					.ColorAndOpacity(this, &SVelmoraTab::GetPlanButtonTint)
				]
			]
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.Padding(4.0f, 0.0f)
			[
				SNew(SButton)
				.ButtonStyle(FAppStyle::Get(), "SimpleButton")
				.ToolTipText(LOCTEXT("ToggleCustomizeBehavior", "Toggle customize behavior sidebar"))
				.OnClicked(this, &SVelmoraTab::OnCustomizeBehaviorClicked)
				[
					SNew(SImage)
					.Image(this, &SVelmoraTab::GetCustomizeButtonBrush)
					.ColorAndOpacity(this, &SVelmoraTab::GetCustomizeButtonTint)
				]
			]
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.Padding(4.0f, 0.0f)
			[
				SAssignNew(SettingsButton, SButton)
				.ButtonStyle(FAppStyle::Get(), "SimpleButton")
				.ToolTipText(LOCTEXT("Settings", "Open Velmora settings"))
				.OnClicked(this, &SVelmoraTab::OnSettingsClicked)
				[
					SNew(SImage)
					.Image(FAppStyle::GetBrush("Icons.Settings"))
					.ColorAndOpacity(this, &SVelmoraTab::GetSettingsButtonTint)
				]
			]
		];
	// clang-format on
}

TSharedRef<SWidget> SVelmoraTab::BuildMainLayout()
{
	// clang-format off
	return SAssignNew(Splitter, SSplitter)
		+ SSplitter::Slot()
		.Value(0.7f)
		.MinSize(200.0f)
		[
			SNew(SBorder)
			.BorderImage(FAppStyle::GetBrush("ToolPanel.DarkGroupBorder"))
			[
				SAssignNew(ChatWindow, SChatWindow)
				.Tag(FName("ChatWindow"))
			]
		]
		+ SSplitter::Slot()
		.Value(0.3f)
		.MinSize(200.0f)
		[
			SNew(SBox)
			.Visibility(this, &SVelmoraTab::GetSidePanelVisibility)
			[
				BuildSidePanel()
			]
		];
	// clang-format on
}

TSharedRef<SWidget> SVelmoraTab::BuildSidePanel()
{
	// clang-format off
	return SNew(SVerticalBox)
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			SNew(SBorder)
			.BorderImage(FAppStyle::GetBrush("ToolPanel.GroupBorder"))
			.Padding(FMargin(16.0f, 8.0f))
			[
				SNew(STextBlock)
				.Text(this, &SVelmoraTab::GetSidePanelTitle)
				.Font(FCoreStyle::GetDefaultFontStyle("Bold", 14))
				.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetActionIconHighlightColor()))
			]
		]
		+ SVerticalBox::Slot()
		.FillHeight(1.0f)
		[
			SNew(SBorder)
			.BorderImage(FAppStyle::GetBrush("ToolPanel.DarkGroupBorder"))
			[
				// Should a file open both pages, the plan lies on top, as the title says.
				SNew(SOverlay)
				+ SOverlay::Slot()
				[
					SNew(SBox)
					.Visibility(this, &SVelmoraTab::GetCustomizeBehaviorVisibility)
					[
						SAssignNew(CustomizePanel, SCustomizeBehavior)
						.Tag(FName("CustomizeBehavior"))
					]
				]
				+ SOverlay::Slot()
				[
					SNew(SBox)
					.Visibility(this, &SVelmoraTab::GetPlanVisibility)
					[
						SAssignNew(PlanPanel, SConversationPlan)
						.Tag(FName("ConversationPlan"))
					]
				]
			]
		];
	// clang-format on
}

void SVelmoraTab::TogglePlanVisibility()
{
	// One page at a time: opening one closes the other, closing one leaves both closed.
	bShowPlan = !bShowPlan;
	bShowCustomizeBehavior = false;
	SaveTabState();
}

void SVelmoraTab::ToggleCustomizeBehaviorVisibility()
{
	bShowCustomizeBehavior = !bShowCustomizeBehavior;
	bShowPlan = false;
	SaveTabState();
}

void SVelmoraTab::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	SCompoundWidget::Tick(AllottedGeometry, InCurrentTime, InDeltaTime);
	StayAwake.Update();
}

void SVelmoraTab::OnPlanUpdate(const FString& First, const FString& PlanText)
{
	if (PlanPanel.IsValid())
	{
		PlanPanel->UpdatePlan(PlanText);
		// The plan comes from the agent, with no input that would bring a frame.
		StayAwake.Start();
	}
}

FReply SVelmoraTab::OnPlanClicked()
{
	TogglePlanVisibility();
	return FReply::Handled();
}

FReply SVelmoraTab::OnCustomizeBehaviorClicked()
{
	ToggleCustomizeBehaviorVisibility();
	return FReply::Handled();
}

FReply SVelmoraTab::OnSettingsClicked()
{
	if (ISettingsModule* Settings = FModuleManager::GetModulePtr<ISettingsModule>("Settings"))
	{
		Settings->ShowViewer("Project", "Plugins", "Velmora");
	}
	return FReply::Handled();
}

const FSlateBrush* SVelmoraTab::GetPlanButtonBrush() const
{
	static const FName Open("Toolbar_SidepanelOpen_32");
	static const FName Close("Toolbar_SidepanelClose_32");
	return FVelmoraUIStyles::GetBrush(bShowPlan ? Close : Open);
}

const FSlateBrush* SVelmoraTab::GetCustomizeButtonBrush() const
{
	static const FName Open("Toolbar_SidepanelCustomize_32");
	static const FName Close("Toolbar_SidepanelCustomizeClose_32");
	return FVelmoraUIStyles::GetBrush(bShowCustomizeBehavior ? Close : Open);
}

FSlateColor SVelmoraTab::GetPlanButtonTint() const
{
	return GetActionIconTint(bShowPlan);
}

FSlateColor SVelmoraTab::GetCustomizeButtonTint() const
{
	return GetActionIconTint(bShowCustomizeBehavior);
}

FSlateColor SVelmoraTab::GetSettingsButtonTint() const
{
	return GetActionIconTint(SettingsButton);
}

EVisibility SVelmoraTab::GetSidePanelVisibility() const
{
	return VisibleIf(bShowPlan || bShowCustomizeBehavior);
}

EVisibility SVelmoraTab::GetPlanVisibility() const
{
	return VisibleIf(bShowPlan);
}

EVisibility SVelmoraTab::GetCustomizeBehaviorVisibility() const
{
	return VisibleIf(bShowCustomizeBehavior);
}

FText SVelmoraTab::GetSidePanelTitle() const
{
	if (bShowPlan)
	{
		return LOCTEXT("PlanTab", "Conversation Plan");
	}
	return bShowCustomizeBehavior ? LOCTEXT("CustomizeTab", "Customize Behavior") : FText::GetEmpty();
}

#undef LOCTEXT_NAMESPACE
