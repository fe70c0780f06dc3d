#include "Host/AgentQuestions.h"

#include "Agent/AgentSession.h"
#include "Host/AgentSeam.h"

namespace Velmora
{
	namespace
	{
		struct FQuestionState
		{
			TFunction<void(const FAgentQuestion*)> Listener;
			TWeakPtr<FAgentSession> Session;
			uint32 OpenId = 0;
			uint32 LastId = 0;
		};

		FQuestionState& GetQuestionState()
		{
			static FQuestionState State;
			return State;
		}

		/** On a copy, since a listener may set another one. */
		void TellListener(const FAgentQuestion* Question)
		{
			if (const TFunction<void(const FAgentQuestion*)> Listener = GetQuestionState().Listener)
			{
				Listener(Question);
			}
		}
	}

	void FAgentQuestions::SetListener(TFunction<void(const FAgentQuestion*)> Listener)
	{
		GetQuestionState().Listener = MoveTemp(Listener);
	}

	bool FAgentQuestions::Answer(uint32 Id, EAgentAnswer Answer)
	{
		const auto AnswerUsual = [Id, Answer]
		{
			const TSharedPtr<FAgentSession> Session = GetQuestionState().Session.Pin();
			if (Id == 0 || GetQuestionState().OpenId != Id || !Session.IsValid())
			{
				return false;
			}
			return Session->AnswerQuestion(Answer);
		};
		const std::shared_ptr<IAgentSeam> Seam = FAgentSeam::Get();
		return Seam ? Seam->AnswerQuestion(Id, Answer, AnswerUsual) : AnswerUsual();
	}

	void FAgentSeam::TellQuestion(const FAgentQuestion* Question)
	{
		TellListener(Question);
	}

	uint32 OpenQuestion(const TSharedRef<FAgentSession>& Session)
	{
		FQuestionState& State = GetQuestionState();
		State.Session = Session;
		State.OpenId = ++State.LastId;
		return State.OpenId;
	}

	void AnnounceQuestion(const FAgentQuestion& Question)
	{
		if (const std::shared_ptr<IAgentSeam> Seam = FAgentSeam::Get())
		{
			Seam->OnQuestion(&Question);
		}
		TellListener(&Question);
	}

	void WithdrawQuestion(uint32 Id)
	{
		if (GetQuestionState().OpenId == Id)
		{
			GetQuestionState().OpenId = 0;
			if (const std::shared_ptr<IAgentSeam> Seam = FAgentSeam::Get())
			{
				Seam->OnQuestion(nullptr);
			}
			TellListener(nullptr);
		}
	}
}
