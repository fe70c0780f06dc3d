#pragma once

#include "AgentGate.h"
#include "ReplayTape.h"

#include <memory>

/** An agent that does what one of a recording did: calls lead to what they led to then, answers are those of then. Game thread. */
class FReplayAgent : public FAgentGate
{
public:
	FReplayAgent(const std::shared_ptr<FReplayTape>& InTape, int32 InNumber);
	virtual ~FReplayAgent() override;

	/** Calls back what a line says. */
	void Fire(const FRecordLine& Line);

	virtual TSharedPtr<Velmora::FConversationMetadata> GetCurrentConversationMetadata() const override;
	virtual TArray<Velmora::FConversationMetadata> GetConversationHistories() const override;

private:
	virtual FString Perform(const FAgentCall& Call, TFunctionRef<FString(Velmora::FAgent&)> Do) override;
	virtual const FAgentAnswers& Look(ERecordKind Kind) const override;

	const std::shared_ptr<FReplayTape> Tape;
	const int32 Number;
};
