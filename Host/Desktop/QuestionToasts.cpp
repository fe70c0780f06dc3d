#include "QuestionToasts.h"

#include "Framework/Application/SlateApplication.h"
#include "Framework/Notifications/NotificationManager.h"
#include "Host/AgentQuestions.h"
#include "Host/HostWindow.h"

#define LOCTEXT_NAMESPACE "QuestionToasts"

namespace
{
	using Velmora::EAgentAnswer;
	using Velmora::FAgentQuestion;
	using Velmora::FAgentQuestions;

	/** Subjects beyond this are shown whole in the conversation only. */
	constexpr int32 MaxShownSubject = 120;

	/** In a window that is lower than this, units, the words must be few for the toast to stand above the prompt's buttons. */
	constexpr float LowWindow = 400.0f;
	constexpr int32 MaxSubjectInLowWindow = 36;

	/** Three answers need more room than other toasts have. */
	constexpr float QuestionToastWidth = 392.0f;

	TWeakPtr<SNotificationItem> QuestionToast;

	/** What the keys and the menu answer: no id while nothing is asked. */
	uint32 OpenQuestionId = 0;
	bool bOpenMayBeRemembered = false;

	/** The toast is seen for a moment longer, but its buttons would answer nothing any more. */
	void HideAnswers(const TWeakPtr<SNotificationItem>& Toast)
	{
		if (const TSharedPtr<SNotificationItem> Shown = Toast.Pin())
		{
			Shown->SetCompletionState(SNotificationItem::CS_None);
		}
	}

	void AnswerQuestion(uint32 Id, EAgentAnswer Answer)
	{
		// The answer may bring the next question, whose toast keeps its buttons.
		const TWeakPtr<SNotificationItem> Toast = QuestionToast;
		if (FAgentQuestions::Answer(Id, Answer))
		{
			HideAnswers(Toast);
		}
	}

	void CloseToast()
	{
		HideAnswers(QuestionToast);
		if (const TSharedPtr<SNotificationItem> Toast = QuestionToast.Pin())
		{
			Toast->Fadeout();
		}
		QuestionToast.Reset();
	}

	FNotificationButtonInfo MakeAnswer(uint32 Id, EAgentAnswer Answer, const FText& Text, const FText& ToolTip)
	{
		return FNotificationButtonInfo(Text, ToolTip, FSimpleDelegate::CreateLambda([Id, Answer]() { AnswerQuestion(Id, Answer); }));
	}

	FText MakeWords(const FAgentQuestion& Question)
	{
		// The subject of this one is a number that stands for the texts, and tells nobody anything.
		if (Question.Tool.Equals(TEXT("background")))
		{
			return LOCTEXT(
				"BackgroundQuestion", "The agent asks: may the model get what the project says about itself?\nThe conversation shows it.");
		}
		const IHostWindow& Window = FSlateApplication::Get().GetWindow();
		const bool bLow = static_cast<float>(Window.GetPixelSize().Y) < LowWindow * Window.GetScale();
		const int32 Most = bLow ? MaxSubjectInLowWindow : MaxShownSubject;
		const FString Subject = Question.Subject.Len() > Most ? Question.Subject.Left(Most) + TEXT("\u2026") : Question.Subject;
		return FText::Format(bLow ? LOCTEXT("ShortQuestion", "The agent asks: {0} {1}")
								  : LOCTEXT("Question", "The agent asks: {0} {1}\nThe conversation shows what it would do."),
			FText::FromString(Question.Tool), FText::FromString(Subject));
	}

	void ShowToast(const FAgentQuestion& Question)
	{
		FNotificationInfo Info(MakeWords(Question));
		// It stays until the question is answered, wherever that happens.
		Info.bFireAndForget = false;
		Info.bUseThrobber = false;
		Info.WidthOverride = QuestionToastWidth;
		Info.ButtonDetails.Add(MakeAnswer(Question.Id, EAgentAnswer::AllowOnce, LOCTEXT("AllowOnce", "Allow once"),
			LOCTEXT("AllowOnceTip", "Let the agent do this, this time (F8)")));
		// A question about this turn alone (how many rounds, how many tokens) can make no rule.
		if (Question.bMayBeRemembered)
		{
			Info.ButtonDetails.Add(MakeAnswer(Question.Id, EAgentAnswer::AllowAlways, LOCTEXT("AllowAlways", "Always in this project"),
				LOCTEXT("AllowAlwaysTip", "Let the agent do this, and do not ask again in this project (Shift+F8)")));
		}
		Info.ButtonDetails.Add(MakeAnswer(Question.Id, EAgentAnswer::Refuse, LOCTEXT("Refuse", "Refuse"),
			LOCTEXT("RefuseTip", "The agent goes on without it (Ctrl+F8)")));
		const TSharedPtr<SNotificationItem> Toast = FSlateNotificationManager::Get().AddNotification(Info);
		if (Toast.IsValid())
		{
			Toast->SetCompletionState(SNotificationItem::CS_Pending);
		}
		QuestionToast = Toast;
	}
}

void FQuestionToasts::Install()
{
	FAgentQuestions::SetListener(
		[](const FAgentQuestion* Question)
		{
			CloseToast();
			OpenQuestionId = Question ? Question->Id : 0;
			bOpenMayBeRemembered = Question && Question->bMayBeRemembered;
			if (Question)
			{
				ShowToast(*Question);
			}
		});
}

void FQuestionToasts::Uninstall()
{
	FAgentQuestions::SetListener(nullptr);
	OpenQuestionId = 0;
	CloseToast();
}

bool FQuestionToasts::CanAnswer(EAgentAnswer Answer)
{
	return OpenQuestionId != 0 && (Answer != EAgentAnswer::AllowAlways || bOpenMayBeRemembered);
}

void FQuestionToasts::Answer(EAgentAnswer Answer)
{
	if (CanAnswer(Answer))
	{
		AnswerQuestion(OpenQuestionId, Answer);
	}
}

#undef LOCTEXT_NAMESPACE
