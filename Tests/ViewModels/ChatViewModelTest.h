#pragma once

#include "Host/UpdateGateControl.h"
#include "Support/TestAgent.h"
#include "UpdateGate.h"
#include "ViewModels/ChatViewModel.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

/** "AI: text" per message; under a group one line per tool run with its header, status and sentence. */
inline std::string DumpMessages(const TArray<TSharedPtr<FChatMessage>>& Messages)
{
	std::string Result;
	for (const TSharedPtr<FChatMessage>& Message : Messages)
	{
		if (Message->Type != EChatMessageType::ToolSummary)
		{
			Result += Utf8(Message->GetSenderName()) + ": " + Utf8(Message->Content) + "\n";
			continue;
		}
		Result += std::string("Tools") + (Message->bIsComplete ? ", complete" : "") + (Message->bIsExpanded ? "" : ", closed") + "\n";
		for (const TSharedPtr<FChatMessage>& Row : Message->ToolExecutions)
		{
			const char* Status = Row->ToolStatus == EToolStatus::Running ? "running"
				: Row->ToolStatus == EToolStatus::Success				 ? "success"
																		 : "failed";
			Result +=
				"  " + Utf8(Row->ToolActionVerb) + " " + Utf8(Row->ToolDisplayParameter) + " [" + Status + "] " + Utf8(Row->Content) + "\n";
		}
	}
	return Result;
}

class FChatViewModelTest : public testing::Test
{
protected:
	void SetUp() override
	{
		Velmora::FUpdateGateControl::SetState(Velmora::EUpdateGateState::Ready, FString(), FString());
		Agent = MakeShared<FTestAgent>();
		Agent->HoldConversation(TEXT("c1"));
		ViewModel = MakeShared<FChatViewModel>();
		// The clock of the batches is one for all view models: a frame with nothing waiting sets it back.
		ViewModel->Tick(0.0f);
		ViewModel->OnMessagesChanged().AddLambda([this] { ++MessagesChangedCount; });
		ViewModel->OnStateChanged().AddLambda([this](Velmora::EConversationState State) { States.push_back(State); });
		ViewModel->OnError().AddLambda([this](const FString& Error) { Errors += Utf8(Error) + "\n"; });
		ViewModel->OnContextFilesChanged().AddLambda([this] { ++ContextFilesChangedCount; });
	}

	void TearDown() override { Velmora::FUpdateGateControl::SetState(Velmora::EUpdateGateState::Ready, FString(), FString()); }

	void Connect()
	{
		ASSERT_TRUE(ViewModel->Initialize(Agent));
		MessagesChangedCount = 0;
	}

	std::string Shown() const { return DumpMessages(ViewModel->GetMessages()); }
	std::string LastCall() const { return Agent->Calls.empty() ? std::string() : Agent->Calls.back(); }

	TSharedPtr<FTestAgent> Agent;
	TSharedPtr<FChatViewModel> ViewModel;
	int32 MessagesChangedCount = 0;
	int32 ContextFilesChangedCount = 0;
	std::vector<Velmora::EConversationState> States;
	std::string Errors;
};
