#pragma once

#include "Agent/AgentBuilder.h"
#include "Agent/AgentStateObserver.h"
#include "Host/BuiltInAgentOptions.h"
#include "Host/HostTasks.h"
#include "TemporaryProject.h"

#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

inline const char* StateName(Velmora::EConversationState State)
{
	constexpr const char* Names[] = { "NotStarted", "Initializing", "Ready", "Thinking", "ExecutingTools", "AwaitingInput", "Paused",
		"Completed", "Cancelled", "Error" };
	return Names[static_cast<int>(State)];
}

/** The real agent on a project of its own, with everything it reports written down in order. */
class FAgentTest : public ::testing::Test
{
protected:
	void SetUp() override { CreateAgent(); }

	void TearDown() override
	{
		Agent.Reset();
		Velmora::SetBuiltInAgentOptions(Velmora::FBuiltInAgentOptions());
		FHostTasks::WaitForBackground(10.0);
		FHostTasks::RunGameThreadTasks();
	}

	void CreateAgent()
	{
		Agent = FAgentBuilder::CreateDefault();
		ASSERT_TRUE(Agent.IsValid());
		Agent->ClearAllHistories();
		Listen();
	}

	void Listen()
	{
		Agent->OnStateChanged([this](Velmora::EConversationState Old, Velmora::EConversationState New, const FString&)
			{ Add(std::string("state ") + StateName(Old) + " to " + StateName(New)); });
		Agent->OnProcessMessage([this](const FString& Progress) { Add("progress " + Utf8(Progress)); });
		Agent->OnToolExecutionStarted(
			[this](const FString& Id, const FString& Name, const FString& Parameters, const FString& Metadata)
			{
				ToolIds.push_back(Utf8(Id));
				Add("start " + Utf8(Name) + ' ' + Utf8(Parameters) + ' ' + Utf8(Metadata));
			});
		Agent->OnToolExecutionCompleted(
			[this](const FString& Id, const FString& Name, bool bSuccess, const FString& Result)
			{
				EndedToolIds.push_back(Utf8(Id));
				Add("end " + Utf8(Name) + (bSuccess ? " ok: " : " failed: ") + Utf8(Result));
			});
		Agent->OnMessageReceived(
			[this](const FString& Message, bool)
			{
				LastAnswer = Utf8(Message);
				Add("answer");
			});
		Agent->OnError([this](const FString& Error) { Add("error " + Utf8(Error)); });
		Agent->OnConversationCompleted([this](bool, const FString&) { Add("conversation completed"); });
		Agent->OnConversationLoaded([this](const FString& Id) { Add("loaded " + Utf8(Id)); });
	}

	void Add(const std::string& Event)
	{
		EXPECT_TRUE(IsInGameThread()) << Event;
		Events.push_back(Event);
		if (AfterEvent)
		{
			AfterEvent();
		}
	}

	/** Runs what the worker has handed over until the condition holds; false when it does not within ten seconds. */
	bool PumpUntil(const std::function<bool()>& Condition)
	{
		const auto End = std::chrono::steady_clock::now() + std::chrono::seconds(10);
		while (!Condition())
		{
			if (std::chrono::steady_clock::now() > End)
			{
				return false;
			}
			if (FHostTasks::RunGameThreadTasks() == 0)
			{
				std::this_thread::sleep_for(std::chrono::microseconds(200));
			}
		}
		return true;
	}

	/** Lets every worker come to its end and everything be told that it has handed over. */
	void PumpUntilQuiet()
	{
		ASSERT_TRUE(FHostTasks::WaitForBackground(10.0));
		while (FHostTasks::RunGameThreadTasks() > 0)
		{
		}
	}

	/** For a worker that waits in a pause: nothing new for a while counts as quiet. */
	void PumpForAWhile()
	{
		for (int Round = 0; Round < 20; ++Round)
		{
			std::this_thread::sleep_for(std::chrono::milliseconds(1));
			FHostTasks::RunGameThreadTasks();
		}
	}

	bool HasTurnEnded() const
	{
		const Velmora::EConversationState State = Agent->GetState();
		return State == Velmora::EConversationState::AwaitingInput || State == Velmora::EConversationState::Error ||
			State == Velmora::EConversationState::Cancelled;
	}

	/** Sends a message and gives the whole answer. */
	std::string Ask(const std::string& Question, const std::vector<std::string>& Attached = {})
	{
		TArray<FString> ContextFiles;
		for (const std::string& File : Attached)
		{
			ContextFiles.Add(Text(File));
		}
		Events.clear();
		LastAnswer.clear();
		if (!Agent->SendMessage(Text(Question), ContextFiles))
		{
			return "(refused)";
		}
		return PumpUntil([this] { return HasTurnEnded(); }) ? LastAnswer : "(no end)";
	}

	/** Events that begin with a word, without it. */
	std::vector<std::string> EventsOf(const std::string& Kind) const
	{
		std::vector<std::string> Found;
		for (const std::string& Event : Events)
		{
			if (Event.rfind(Kind + ' ', 0) == 0)
			{
				Found.push_back(Event.substr(Kind.size() + 1));
			}
		}
		return Found;
	}

	static bool Holds(const std::string& Whole, const std::string& Part) { return Whole.find(Part) != std::string::npos; }

	FTemporaryProject Project;
	TSharedPtr<Velmora::FAgent> Agent;
	std::vector<std::string> Events;
	std::vector<std::string> ToolIds;
	std::vector<std::string> EndedToolIds;
	std::string LastAnswer;
	std::function<void()> AfterEvent;
};
