#pragma once

#include "Agent/Agent.h"
#include "CoreMinimal.h"
#include "Support/Base/Printers.h"

#include <string>
#include <vector>

/**
 * An agent that does what the test says when the test says so. Answers come from its public fields, calls are written
 * down, and nothing is reported until a Fire… operation is called.
 */
class FTestAgent : public Velmora::FAgent
{
public:
	using EState = Velmora::EConversationState;
	using EMode = Velmora::EConversationMode;

	// What it answers.

	EState State = EState::Ready;
	/** The current conversation; null is none. */
	TSharedPtr<Velmora::FConversationMetadata> Metadata;
	/** What GetConversationHistories gives and LoadConversation finds. */
	TArray<Velmora::FConversationMetadata> Histories;
	FString Title = TEXT("Test conversation");
	FString TransactionId;
	FString Plan;
	/** The id of the next conversation; empty makes StartConversation fail. */
	FString NextConversationId = TEXT("conversation-1");
	bool bAcceptsMessages = true;
	bool bUndoes = true;
	bool bCanUndo = true;
	/** False leaves it to the test to fire OnConversationLoaded. */
	bool bReportsLoadsAtOnce = true;
	/** Called inside of SendMessage, before it returns. */
	TFunction<void()> DuringSend;

	/** Calls in their order, such as "SendMessage 'text' [a.cpp, b.cpp]". */
	std::vector<std::string> Calls;

	/** Makes a conversation current as if it had always been. */
	TSharedPtr<Velmora::FConversationMetadata> HoldConversation(const FString& Id, EMode Mode = EMode::General)
	{
		Metadata = MakeShared<Velmora::FConversationMetadata>();
		Metadata->Id = Id;
		Metadata->Mode = Mode;
		Metadata->LastUpdated = FDateTime::Now();
		return Metadata;
	}

	static Velmora::FConversationMessage MakeStored(Velmora::EConversationRole Role, const FString& Content, bool bHasToolCalls = false)
	{
		Velmora::FConversationMessage Message;
		Message.Role = Role;
		Message.Content = Content;
		Message.bHasToolCalls = bHasToolCalls;
		return Message;
	}

	// What it reports.

	void FireMessage(const FString& Text, bool bHasToolCalls = false) const { Call(MessageReceived, Text, bHasToolCalls); }
	void FireToolStarted(
		const FString& Id, const FString& Name, const FString& Parameters = TEXT("{}"), const FString& ToolMetadata = TEXT("{}")) const
	{
		Call(ToolStarted, Id, Name, Parameters, ToolMetadata);
	}
	void FireToolCompleted(const FString& Id, const FString& Name, bool bSuccess = true, const FString& Result = TEXT("ok")) const
	{
		Call(ToolCompleted, Id, Name, bSuccess, Result);
	}
	/** Takes the state on and reports it. */
	void FireState(EState NewState, const FString& Reason = FString())
	{
		const EState OldState = State;
		State = NewState;
		Call(StateChanged, OldState, NewState, Reason);
	}
	void FireError(const FString& Error) const { Call(ErrorReported, Error); }
	void FireConversationCompleted(bool bSuccess, const FString& Summary = FString()) const
	{
		Call(ConversationCompleted, bSuccess, Summary);
	}
	void FireConversationLoaded(const FString& Id) const { Call(ConversationLoaded, Id); }
	void FireProcessMessage(const FString& Text) const { Call(ProcessMessage, Text); }
	void FirePlanUpdate(const FString& PlanText)
	{
		Plan = PlanText;
		Call(PlanUpdate, FString(), PlanText);
	}

	// Velmora::FAgent.

	FString StartConversation(EMode Mode) override
	{
		Record("StartConversation " + std::to_string(static_cast<int>(Mode)));
		if (!NextConversationId.IsEmpty())
		{
			HoldConversation(NextConversationId, Mode);
			State = EState::Ready;
		}
		return NextConversationId;
	}

	bool SendMessage(const FString& Text, const TArray<FString>& ContextFiles) override
	{
		std::string Files;
		for (const FString& File : ContextFiles)
		{
			Files += (Files.empty() ? "" : ", ") + Utf8(File);
		}
		Record("SendMessage '" + Utf8(Text) + "' [" + Files + "]");
		if (DuringSend)
		{
			DuringSend();
		}
		if (bAcceptsMessages && Metadata.IsValid())
		{
			Metadata->Messages.Add(MakeStored(Velmora::EConversationRole::User, Text));
		}
		return bAcceptsMessages;
	}

	void PauseConversation() override
	{
		Record("PauseConversation");
		State = EState::Paused;
	}

	void ResumeConversation(const FString& Prompt) override
	{
		Record("ResumeConversation '" + Utf8(Prompt) + "'");
		State = EState::Thinking;
	}

	void CancelConversation() override
	{
		Record("CancelConversation");
		State = EState::Cancelled;
	}

	void EndConversation() override
	{
		Record("EndConversation");
		Metadata.Reset();
		State = EState::NotStarted;
	}

	bool LoadConversation(const FString& Id) override
	{
		Record("LoadConversation '" + Utf8(Id) + "'");
		const Velmora::FConversationMetadata* Stored =
			Histories.FindByPredicate([&Id](const Velmora::FConversationMetadata& History) { return History.Id == Id; });
		if (!Stored)
		{
			return false;
		}
		Metadata = MakeShared<Velmora::FConversationMetadata>(*Stored);
		if (bReportsLoadsAtOnce)
		{
			FireConversationLoaded(Id);
		}
		return true;
	}

	bool DeleteConversationHistory(const FString& Id) override
	{
		Record("DeleteConversationHistory '" + Utf8(Id) + "'");
		return Histories.RemoveAll([&Id](const Velmora::FConversationMetadata& History) { return History.Id == Id; }) > 0;
	}

	void ClearAllHistories() override
	{
		Record("ClearAllHistories");
		Histories.Empty();
	}

	bool UndoToTransaction(const FString& Id) override
	{
		Record("UndoToTransaction '" + Utf8(Id) + "'");
		return bUndoes;
	}

	EState GetState() const override { return State; }
	bool HasActiveConversation() const override { return Metadata.IsValid(); }
	TSharedPtr<Velmora::FConversationMetadata> GetCurrentConversationMetadata() const override { return Metadata; }
	FString GetCurrentConversationTitle() const override { return Title; }
	TArray<Velmora::FConversationMetadata> GetConversationHistories() const override { return Histories; }
	bool CanUndo() const override { return bCanUndo; }
	FString GetCurrentTransactionId() const override { return TransactionId; }
	FString GetCurrentPlan() const override { return Plan; }

	void OnMessageReceived(TFunction<void(const FString&, bool)> Callback) override { MessageReceived = MoveTemp(Callback); }
	void OnToolExecutionStarted(TFunction<void(const FString&, const FString&, const FString&, const FString&)> Callback) override
	{
		ToolStarted = MoveTemp(Callback);
	}
	void OnToolExecutionCompleted(TFunction<void(const FString&, const FString&, bool, const FString&)> Callback) override
	{
		ToolCompleted = MoveTemp(Callback);
	}
	void OnStateChanged(TFunction<void(EState, EState, const FString&)> Callback) override { StateChanged = MoveTemp(Callback); }
	void OnError(TFunction<void(const FString&)> Callback) override { ErrorReported = MoveTemp(Callback); }
	void OnConversationCompleted(TFunction<void(bool, const FString&)> Callback) override { ConversationCompleted = MoveTemp(Callback); }
	void OnConversationLoaded(TFunction<void(const FString&)> Callback) override { ConversationLoaded = MoveTemp(Callback); }
	void OnProcessMessage(TFunction<void(const FString&)> Callback) override { ProcessMessage = MoveTemp(Callback); }
	void OnPlanUpdate(TFunction<void(const FString&, const FString&)> Callback) override { PlanUpdate = MoveTemp(Callback); }

private:
	void Record(std::string Line) { Calls.push_back(std::move(Line)); }

	/** Nobody listens before the callbacks are set up. */
	template <typename FunctionType, typename... ArgTypes>
	static void Call(const FunctionType& Function, const ArgTypes&... Args)
	{
		if (Function)
		{
			Function(Args...);
		}
	}

	TFunction<void(const FString&, bool)> MessageReceived;
	TFunction<void(const FString&, const FString&, const FString&, const FString&)> ToolStarted;
	TFunction<void(const FString&, const FString&, bool, const FString&)> ToolCompleted;
	TFunction<void(EState, EState, const FString&)> StateChanged;
	TFunction<void(const FString&)> ErrorReported;
	TFunction<void(bool, const FString&)> ConversationCompleted;
	TFunction<void(const FString&)> ConversationLoaded;
	TFunction<void(const FString&)> ProcessMessage;
	TFunction<void(const FString&, const FString&)> PlanUpdate;
};
