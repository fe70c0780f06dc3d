#include "Agent/AgentSession.h"

#include "HAL/PlatformTime.h"

#include "Text/Utf8Text.h"
#include "Tools/PermissionRules.h"

// Questions that a turn waits on. Continue, Pause and Cancel answer them, and so does whoever the program has set to listen.

namespace Velmora
{
	namespace
	{
		/** A message that was told is on screen after this: the front end gathers for a tenth of a second, and draws. */
		constexpr double ShowingSeconds = 0.15;

		/** Whoever continues sooner than this has not read the question: the click was meant for something else. */
		constexpr double ReadingSeconds = 0.7;

		// Without a word in bold: a line with one is not wrapped.
		const TCHAR* AnswerHelp = TEXT("Continue with an empty prompt allows it once. Continue with a text refuses it and passes the "
									   "text on, also with one that stands in the prompt already. Cancel refuses it and stops.");
	}

	void FAgentSession::AskQuestion(FTurnQuestion&& Asked)
	{
		const uint32 StartEpoch = Epoch;
		Question = FOpenQuestion{};
		Question->Asked = MoveTemp(Asked);
		Question->ShownAt = FPlatformTime::Seconds() + ShowingSeconds;
		const FString Text = Utf8Text::ToString(Question->Asked.Text);
		ShowQuestion(Text);
		if (Epoch != StartEpoch || !Question)
		{
			return;
		}
		StateBeforePause = State;
		SetState(EConversationState::Paused, TEXT("A question is open."));
		if (Epoch != StartEpoch || !Question)
		{
			return;
		}
		FAgentQuestion Announced;
		Announced.Tool = Utf8Text::ToString(Question->Asked.Tool);
		Announced.Subject = Utf8Text::ToString(Question->Asked.Subject);
		Announced.Text = Text;
		Announced.bMayBeRemembered = Question->Asked.bMayBeRemembered;
		Announced.Id = Question->Id = OpenQuestion(AsShared());
		AnnounceQuestion(Announced);
	}

	void FAgentSession::ShowQuestion(const FString& Text)
	{
		// Neither stored nor part of what a model is sent: it is the program that asks.
		Fire(Callbacks.MessageReceived, Text + TEXT("\n\n") + AnswerHelp, false);
	}

	void FAgentSession::ContinueAtQuestion(const FString& Prompt)
	{
		const double Now = FPlatformTime::Seconds();
		if (!Prompt.TrimStartAndEnd().IsEmpty())
		{
			const uint32 StartEpoch = Epoch;
			const FOutcome Recorded = RecordUserMessage(Prompt);
			AddToTransaction();
			CloseQuestion({ EDecision::Refused, Utf8Text::FromString(Prompt) }, TEXT("Refused by the user."));
			if (!Recorded && Epoch == StartEpoch)
			{
				TellStoreProblem(Recorded);
			}
			return;
		}
		// 1. A double click, or one that was meant for the pause before.
		if (Now < Question->ShownAt + ReadingSeconds || Now < LastContinue + ReadingSeconds)
		{
			LastContinue = Now;
			return;
		}
		// 2. The user was about to pause when the question came.
		LastContinue = Now;
		if (Question->bAskAgain)
		{
			Question->bAskAgain = false;
			Question->ShownAt = Now + ShowingSeconds;
			ShowQuestion(Utf8Text::ToString(Question->Asked.Text));
			return;
		}
		// 3. Read and meant.
		CloseQuestion({ EDecision::AllowedOnce, std::string() }, TEXT("Allowed by the user."));
	}

	bool FAgentSession::AnswerQuestion(EAgentAnswer Answer)
	{
		if (!Question || (Answer == EAgentAnswer::AllowAlways && !Question->Asked.bMayBeRemembered))
		{
			return false;
		}
		const uint32 StartEpoch = Epoch;
		std::string Problem;
		if (Answer == EAgentAnswer::AllowAlways)
		{
			Problem = GetRules()->Add({ true, Question->Asked.Tool, Question->Asked.Subject });
		}
		FDecision Decision;
		Decision.Kind = Answer == EAgentAnswer::Refuse ? EDecision::Refused
			: Answer == EAgentAnswer::AllowAlways	   ? EDecision::AllowedAlways
													   : EDecision::AllowedOnce;
		CloseQuestion(MoveTemp(Decision), Answer == EAgentAnswer::Refuse ? TEXT("Refused by the user.") : TEXT("Allowed by the user."));
		if (!Problem.empty() && Epoch == StartEpoch)
		{
			Fire(Callbacks.Error, Utf8Text::ToString(Problem));
		}
		return true;
	}

	void FAgentSession::CloseQuestion(FDecision&& Decision, const TCHAR* Reason)
	{
		const uint32 StartEpoch = Epoch;
		const TSharedPtr<FTurnControl> Asking = Turn;
		ForgetQuestion();
		if (Epoch != StartEpoch || Turn != Asking)
		{
			return;
		}
		Asking->Decide(MoveTemp(Decision));
		SetState(StateBeforePause, Reason);
		DeliverHeldReports();
	}

	void FAgentSession::ForgetQuestion()
	{
		if (Question)
		{
			const uint32 Id = Question->Id;
			Question.reset();
			WithdrawQuestion(Id);
		}
	}
}
