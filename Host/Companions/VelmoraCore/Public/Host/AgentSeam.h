#pragma once

#include <memory>

#include "CoreMinimal.h"
#include "Misc/Optional.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"

#include "Agent/Agent.h"
#include "Host/AgentActivity.h"
#include "Host/AgentMessages.h"
#include "Host/AgentQuestions.h"

namespace Velmora
{
	/**
	 * Stands between the library and those who ask it: to write down what it answers, or to answer in its place. Each operation is
	 * given the usual way to the answer and need not take it. Game thread, where nothing else is said.
	 */
	class VELMORACORE_API IAgentSeam
	{
	public:
		virtual ~IAgentSeam() = default;

		/** FAgentBuilder::CreateDefault. */
		virtual TSharedPtr<FAgent> MakeAgent(TFunctionRef<TSharedPtr<FAgent>()> MakeUsual) = 0;

		/** FConversationHistoryManager::GetConversationSummaries. Any thread. */
		virtual TArray<FConversationMetadata> ReadSummaries(TFunctionRef<TArray<FConversationMetadata>()> ReadUsual) = 0;

		/** The listener of FAgentQuestions is about to be told this. */
		virtual void OnQuestion(const FAgentQuestion* Question) = 0;

		/** FAgentQuestions::Answer. */
		virtual bool AnswerQuestion(uint32 Id, EAgentAnswer Answer, TFunctionRef<bool()> AnswerUsual) = 0;

		/** FAgentMessages::GetLast and TakeBackLast. */
		virtual TOptional<FLastMessage> GetLastMessage(TFunctionRef<TOptional<FLastMessage>()> GetUsual) = 0;
		virtual FString TakeBackLastMessage(TFunctionRef<FString()> TakeBackUsual) = 0;

		/** False where FAgentConnections asks no server, whatever somebody presses. Any thread. */
		virtual bool MayConnect() const { return true; }

		/** FAgentActivity::GetTurnStatus. */
		virtual FAgentTurnStatus GetTurnStatus(TFunctionRef<FAgentTurnStatus()> GetUsual) = 0;
	};

	class VELMORACORE_API FAgentSeam
	{
	public:
		/** Null for none. Before the first agent is made and after the last is gone. */
		static void Set(std::shared_ptr<IAgentSeam> Seam);

		/** Null without one. Any thread. */
		static std::shared_ptr<IAgentSeam> Get();

		/** Tells the listener of FAgentQuestions, as if an agent asked; null when nothing is asked any more. */
		static void TellQuestion(const FAgentQuestion* Question);
	};
}
