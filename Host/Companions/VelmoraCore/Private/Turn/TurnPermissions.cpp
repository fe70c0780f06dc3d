#include "Turn/TurnPermissions.h"

#include "Tools/PermissionRules.h"

namespace Velmora
{
	FPermissionAnswer AskUser(
		const FTurnInput& Input, FTurnControl& Control, const ITurnRunner::FReportSink& Sink, const FTurnQuestion& Question)
	{
		const EPermission Rule = Input.Rules ? Input.Rules->Judge(Question.Tool, Question.Subject) : EPermission::Ask;
		if (Rule == EPermission::Allowed)
		{
			return { { EDecision::AllowedAlways, {} }, {} };
		}
		if (Rule == EPermission::Denied)
		{
			return { { EDecision::Refused, {} }, "a rule of this project refuses it" };
		}
		if (!Input.bCanAsk)
		{
			return { { EDecision::Refused, {} }, "it needs your consent, and nobody is there to be asked (the option --allow gives it)" };
		}
		FTurnReport Report;
		Report.Kind = ETurnReportKind::Decision;
		Report.Question = Question;
		Sink(MoveTemp(Report));
		FDecision Decision = Control.WaitForDecision();
		const bool bIsRefused = Decision.Kind == EDecision::Refused;
		return { std::move(Decision), bIsRefused ? "you refused it" : "" };
	}
}
