#include "QuitQuestion.h"

#include "Host/HostClose.h"
#include "Host/Platform.h"
#include "Misc/MessageDialog.h"
#include "OpenChat.h"
#include "ViewModels/ChatViewModel.h"

#define LOCTEXT_NAMESPACE "QuitQuestion"

namespace
{
	bool IsTurnUnderWay()
	{
		const TSharedPtr<const FChatViewModel> ViewModel = FOpenChat::GetViewModel();
		return ViewModel && (ViewModel->IsBusy() || ViewModel->GetState() == Velmora::EConversationState::Paused);
	}

	bool MayEnd()
	{
		static bool bIsAsking = false;
		if (FHostPlatform::IsToldToEnd() || !IsTurnUnderWay())
		{
			return true;
		}
		if (bIsAsking)
		{
			return false;
		}
		bIsAsking = true;
		const EAppReturnType::Type Answer = FMessageDialog::Open(EAppMsgCategory::Warning, EAppMsgType::YesNo, EAppReturnType::No,
			LOCTEXT("Question",
				"The agent is at work. End the program all the same?\n\nWhat it has done stays; what it still wanted to do is not done."),
			LOCTEXT("Title", "Exit"));
		bIsAsking = false;
		return Answer == EAppReturnType::Yes;
	}
}

void FQuitQuestion::Install()
{
	FHostClose::SetHandler([] { return MayEnd(); });
}

void FQuitQuestion::Uninstall()
{
	FHostClose::SetHandler(nullptr);
}

#undef LOCTEXT_NAMESPACE
