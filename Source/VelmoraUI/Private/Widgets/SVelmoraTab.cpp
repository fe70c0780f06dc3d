#include "Widgets/SVelmoraTab.h"

#include "Agent/Agent.h"
#include "Agent/AgentBuilder.h"
#include "Styling/AppStyle.h"
#include "ViewModels/ChatViewModel.h"
#include "Widgets/Docking/SDockTab.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/SChatWindow.h"

void SVelmoraTab::Construct(const FArguments& InArgs, const TSharedRef<SDockTab>& InOwnerTab)
{
	OwnerTab = InOwnerTab;
	InitializeAgent();

	// clang-format off
	ChildSlot
	[
		SNew(SBorder)
		.BorderImage(FAppStyle::GetBrush("ToolPanel.DarkGroupBorder"))
		[
			SAssignNew(ChatWindow, SChatWindow)
			.Tag(FName("ChatWindow"))
		]
	];
	// clang-format on

	// Last, since it needs the chat window.
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
	if (Agent.IsValid() && ViewModel->Initialize(Agent))
	{
		ChatWindow->SetViewModel(ViewModel);
	}
}
