#include "Model/ModelTurn.h"

#include <algorithm>

#include "Http/WebAddress.h"
#include "Model/ModelConsents.h"
#include "Model/ModelPrompt.h"
#include "Model/ModelSizes.h"
#include "Model/Transcript.h"
#include "Text/Checksum.h"
#include "Text/Utf8Text.h"
#include "Text/WireText.h"
#include "Tools/AnswerMarkdown.h"
#include "Tools/CommandSandbox.h"

namespace Velmora
{
	namespace
	{
		constexpr int MaxTries = 4;

		/** A server that asks to wait longer than this is told to the user instead. */
		constexpr double MaxWaitSeconds = 60.0;

		/** Of what was left out. */
		constexpr size_t MaxSummaryCharacters = 4000;

		/** Of a long line one such piece after the other is shown, since a block of code shows only the beginning of one. */
		constexpr size_t PieceBytes = 160;

		std::string BreakLines(std::string_view Text)
		{
			std::string Broken;
			size_t Length = 0;
			for (const char Byte : Text)
			{
				Broken += Byte == ' ' && Length >= PieceBytes ? '\n' : Byte;
				Length = Broken.back() == '\n' ? 0 : Length + 1;
			}
			return Broken;
		}
	}

	FModelTurn::FModelTurn(
		const FModelConnection& InConnection, const FTurnInput& InInput, FTurnControl& InControl, const ITurnRunner::FReportSink& InSink)
		: Connection(InConnection)
		, Input(InInput)
		, Control(InControl)
		, Sink(InSink)
		, Files(InInput.ProjectFolder)
		, Tools(Files, InInput.IsAdvisor() ? nullptr : InInput.Journal.get(), InInput.TransactionId,
			  [&InControl] { return InControl.IsCancelled(); })
		, Client(Dialect, InConnection.Server)
		, Activity(InConnection)
		, Spending(InConnection)
		, Gauge(InConnection.ContextTokens)
	{
		Control.SetCancelHook([this] { Client.Cancel(); });
	}

	FModelTurn::~FModelTurn()
	{
		Control.SetCancelHook(nullptr);
	}

	void FModelTurn::Tell(ETurnReportKind Kind, std::string_view Text)
	{
		FTurnReport Report;
		Report.Kind = Kind;
		Report.Text = Utf8Text::ToString(Text);
		Sink(std::move(Report));
	}

	void FModelTurn::TellAnswer(const std::string& Text, bool bHasToolCalls)
	{
		FTurnReport Report;
		Report.Kind = ETurnReportKind::Answer;
		Report.Text = Utf8Text::ToString(Text);
		Report.bHasToolCalls = bHasToolCalls;
		Sink(std::move(Report));
	}

	void FModelTurn::Fail(const std::string& Text)
	{
		Tell(ETurnReportKind::Failed, Text);
	}

	std::string FModelTurn::Describe(const FModelProblem& Problem) const
	{
		return DescribeProblem(Problem, Connection.Server, Request.Model.empty() ? Connection.Model : Request.Model);
	}

	void FModelTurn::Run()
	{
		if (!Files.IsAvailable())
		{
			Fail("The project folder cannot be opened. Check that it still exists, then send the message again.");
			return;
		}
		if (!AskToConnect() || !PickModel() || !MakeMessages())
		{
			return;
		}
		for (int Round = 1;; ++Round)
		{
			FModelReply Reply;
			if (!AskForMoreRounds(Round) || !AskForBudget({}) || !Control.WaitUntilRunning() || !AskModel(Reply))
			{
				return;
			}
			if (Reply.Calls.empty())
			{
				TellAnswer(Reply.Text, false);
				break;
			}
			// Stored before anything is done, so that whatever happens to the turn the calls are known.
			TellAnswer(Reply.Text, true);
			FTurnReport Traffic;
			Traffic.Kind = ETurnReportKind::ToolTraffic;
			Traffic.Text = Transcript::WriteCalls(Reply.Calls);
			Sink(std::move(Traffic));
			BeginRound(Round, Reply);
			if (!RunCalls(Reply))
			{
				return;
			}
		}
		if (Control.WaitUntilRunning())
		{
			Tell(ETurnReportKind::Finished, FailedChanges.empty() ? std::string_view() : FailedChanges.begin()->second);
		}
	}

	bool FModelTurn::AskOnce(const FTurnQuestion& Question, FPermissionAnswer& OutAnswer)
	{
		if (ModelConsents::Has(Input.ProjectFolder, Question.Tool, Question.Subject))
		{
			OutAnswer.Decision.Kind = EDecision::AllowedOnce;
			return true;
		}
		OutAnswer = AskUser(Input, Control, Sink, Question);
		if (OutAnswer.Decision.IsAllowed())
		{
			ModelConsents::Add(Input.ProjectFolder, Question.Tool, Question.Subject);
		}
		return OutAnswer.Decision.Kind != EDecision::Stopped;
	}

	bool FModelTurn::AskToConnect()
	{
		FWebAddress Address;
		std::string Problem;
		if (!FWebAddress::Parse(Connection.Server.BaseUrl, Address, Problem))
		{
			Fail(Problem);
			return false;
		}
		if (Address.IsLoopback())
		{
			return true;
		}
		FTurnQuestion Question;
		Question.Tool = "connect";
		Question.Subject = Address.GetOrigin();
		Question.Text = "May this project be sent to **" + Address.GetOrigin() +
			"**? What leaves this machine: your messages, the files that you attach, whatever the model reads with its tools, the "
			"texts about the project and AGENTS.md.";
		if (!Address.IsEncrypted())
		{
			Question.Text += " **The connection is not encrypted**: everybody on the way can read it, the key included.";
		}
		FPermissionAnswer Answer;
		if (!AskOnce(Question, Answer))
		{
			return false;
		}
		if (!Answer.Decision.IsAllowed())
		{
			Fail("Nothing was sent to " + Address.GetOrigin() + ": " + Answer.Why + ".");
			return false;
		}
		return true;
	}

	bool FModelTurn::PickModel()
	{
		Request.Model = Connection.Model;
		Request.Options = Connection.Options;
		if (!Request.Model.empty())
		{
			SetContext(ModelSizes::Find(Client, Connection, Request.Model));
			return !Control.IsCancelled();
		}
		std::vector<FModelInfo> Models;
		const FModelProblem Problem = Client.ListModels(Models);
		if (Control.IsCancelled())
		{
			return false;
		}
		if (Problem || Models.empty())
		{
			Fail(Problem ? Describe(Problem) : "The server lists no model. Load one there, or name one in the connection.");
			return false;
		}
		Request.Model = Models.front().Id;
		SetContext(ModelSizes::FindWith(Client, Connection, Request.Model, Models));
		return !Control.IsCancelled();
	}

	bool FModelTurn::AskForBackground(const std::string& Background, bool& bOutIsAllowed)
	{
		// Some of it may have come with the project rather than from this user. A yes is for these texts and no others.
		FTurnQuestion Question;
		Question.Tool = "background";
		Question.Subject = "the texts with the checksum " + MakeChecksum(Background);
		Question.Text = "May the model be told this about the project? It comes from the project's settings and its AGENTS.md, so somebody "
						"else may have written it.\n\n" +
			AnswerMarkdown::CodeBlock(BreakLines(Background), {});
		FPermissionAnswer Answer;
		if (!AskOnce(Question, Answer))
		{
			return false;
		}
		bOutIsAllowed = Answer.Decision.IsAllowed();
		if (!bOutIsAllowed && !Input.bCanAsk)
		{
			// Whoever was asked knows; here nobody would see why the answer follows none of these texts.
			Tell(ETurnReportKind::Step, "\"background\", the texts on behavior and AGENTS.md, was left out: " + Answer.Why + ".");
		}
		return true;
	}

	bool FModelTurn::MakeMessages()
	{
		for (const FToolRow& Row : FToolBox::GetRows())
		{
			const bool bIsOffered = Input.IsAdvisor() ? FToolBox::IsReading(Row.Kind)
													  : Row.Kind != EToolKind::Command || FCommandSandbox::WhyUnavailable().empty();
			if (bIsOffered)
			{
				Request.Tools.push_back({ std::string(Row.Name), std::string(Row.Description), std::string(Row.Parameters) });
			}
		}
		Background = ModelPrompt::MakeBackground(Input, Files);
		bool bHasBackground = false;
		if (!Background.empty() && !AskForBackground(Background, bHasBackground))
		{
			return false;
		}
		Background.resize(bHasBackground ? Background.size() : 0);
		std::vector<FModelMessage>& Messages = Request.Messages;
		Messages.push_back({ EModelRole::System, ModelPrompt::MakeInstructions(Input, true), {}, {} });
		if (bHasBackground)
		{
			Messages.push_back({ EModelRole::User, Background, {}, {} });
		}
		for (FModelMessage& Message : Transcript::Read(Input.Transcript))
		{
			Transcript::Append(Messages, std::move(Message));
		}
		const std::string Prompt = ModelPrompt::MakeAttachments(Input, Files, Tools) + Input.Prompt;
		Transcript::Append(Messages, { EModelRole::User, Prompt, {}, {} });
		return true;
	}

	void FModelTurn::SetContext(int64_t Tokens)
	{
		Gauge.SetContext(Tokens);
		Activity.SetContextTokens(Tokens);
	}

	void FModelTurn::KeepRoom()
	{
		const size_t Room = Gauge.GetRoom(Request.Tools);
		if (Transcript::Measure(Request.Messages) > Room)
		{
			(void)TakeKnownSummary();
		}
		if (Transcript::Measure(Request.Messages) > Room)
		{
			// More than need be, so that not each round leaves out some more: servers keep what they have read of a beginning.
			(void)ShortenTo(Room * 3 / 4);
		}
	}

	bool FModelTurn::TakeKnownSummary()
	{
		if (Shelf)
		{
			return false;
		}
		Shelf.emplace(Request.Messages, 1);
		const std::optional<FSummaryShelf::FSummary> Known = Shelf->Find();
		if (!Known)
		{
			return false;
		}
		const std::vector<FModelMessage> Dropped = Transcript::LeaveOut(Request.Messages, 1, Known->Count);
		Transcript::PutSummary(Request.Messages, Known->Text);
		if (!Background.empty() && Dropped.front().Text.starts_with(Background))
		{
			PutBackground();
		}
		SummedUp = Known->Count;
		bHasToldOfShortening = true;
		return true;
	}

	void FModelTurn::PutBackground()
	{
		// It stood in the oldest message of all, and is no part of what was said.
		FModelMessage& First = Request.Messages[1];
		First.Text = Background + "\n\n" + First.Text;
	}

	bool FModelTurn::ShortenTo(size_t MaxBytes)
	{
		const bool bIsShorter = TakeKnownSummary();
		Transcript::FShortening Left = Transcript::Shorten(Request.Messages, MaxBytes - std::min(MaxBytes / 2, Background.size()));
		if (!Left.IsAny())
		{
			return bIsShorter;
		}
		const bool bHasLostBackground = !Left.Messages.empty() && !Background.empty() && Left.Messages.front().Text.starts_with(Background);
		if (bHasLostBackground)
		{
			Left.Messages.front().Text.erase(0, Background.size());
		}
		SummedUp += Left.Messages.size();
		if (!Left.Messages.empty() && !bHasSummarised)
		{
			bHasSummarised = true;
			Summarise(Left.Messages, MaxBytes);
		}
		if (bHasLostBackground)
		{
			PutBackground();
		}
		if (!std::exchange(bHasToldOfShortening, true))
		{
			Tell(ETurnReportKind::Step,
				"The conversation is longer than the model can take: its oldest parts are left out. All of it is kept.");
		}
		return true;
	}

	void FModelTurn::Summarise(const std::vector<FModelMessage>& Dropped, size_t MaxBytes)
	{
		FModelRequest Asked;
		Asked.Model = Request.Model;
		Asked.Options = Request.Options;
		Asked.bAsksForUsage = Request.bAsksForUsage;
		Asked.Messages = { { EModelRole::User,
			"Sum up this beginning of a conversation about a software project for the one who has to go on with it: what was asked for, "
			"what was found out, decided and done, with the names of files. At most 300 words, no introduction.\n\n" +
				Transcript::WriteAsText(Dropped, MaxBytes / 2),
			{}, {} } };
		const FModelReply Reply = Activity.Ask(Client, Asked);
		Spending.Add(Reply, Gauge.Estimate(Transcript::Measure(Asked.Messages) + Reply.Text.size()));
		// Without a summary the note stays, which says that something is missing.
		if (!Reply.Problem && !Reply.Text.empty())
		{
			const FSummaryShelf::FSummary Summary{ SummedUp, Utf8Text::Shorten(Reply.Text, MaxSummaryCharacters) };
			Transcript::PutSummary(Request.Messages, Summary.Text);
			Shelf->Keep(Summary);
		}
	}

	bool FModelTurn::AskForBudget(const std::string& Said)
	{
		const std::string Reached = Spending.FindReached();
		if (Reached.empty())
		{
			return true;
		}
		FTurnQuestion Question;
		Question.Tool = "tokens";
		Question.Subject = Connection.Name;
		Question.Text =
			Reached + " That is the limit which the connection **" + Connection.Name + "** has. May it go on, for as much again?";
		Question.bMayBeRemembered = false;
		const FPermissionAnswer Answer = AskUser(Input, Control, Sink, Question);
		if (Answer.Decision.Kind != EDecision::Stopped && !Answer.Decision.IsAllowed())
		{
			if (!Said.empty())
			{
				TellAnswer(Said, false);
			}
			Fail(Reached + " The turn was ended at this limit: " + Answer.Why + ". What was done is kept.");
		}
		Spending.Extend();
		return Answer.Decision.IsAllowed();
	}

	bool FModelTurn::AskForMoreRounds(int Round)
	{
		if ((Round - 1) % Connection.MaxRounds != 0 || Round == 1)
		{
			return true;
		}
		FTurnQuestion Question;
		Question.Tool = "rounds";
		Question.Subject = std::to_string(Connection.MaxRounds);
		Question.Text = "The model has been asked " + std::to_string(Round - 1) + " times in this turn. May it go on?";
		Question.bMayBeRemembered = false;
		const FPermissionAnswer Answer = AskUser(Input, Control, Sink, Question);
		if (Answer.Decision.Kind != EDecision::Stopped && !Answer.Decision.IsAllowed())
		{
			Fail("The turn was ended after " + std::to_string(Round - 1) + " rounds: " + Answer.Why + ". What was done is kept.");
		}
		return Answer.Decision.IsAllowed();
	}

	bool FModelTurn::AskModel(FModelReply& OutReply)
	{
		for (int Try = 1;;)
		{
			KeepRoom();
			if (Control.IsCancelled())
			{
				return false;
			}
			OutReply = Activity.Ask(Client, Request);
			Spending.Add(OutReply, Gauge.Estimate(Transcript::Measure(Request.Messages) + OutReply.Text.size()));
			Gauge.Learn(Request, OutReply.Usage);
			if (Control.IsCancelled())
			{
				return false;
			}
			switch (Mend(OutReply, Try))
			{
			case ENext::Again:
				// Each try may cost as much as the first.
				if (!AskForBudget(OutReply.Text))
				{
					return false;
				}
				continue;
			case ENext::Give:
				return true;
			case ENext::Over:
				return false;
			}
		}
	}

	FModelTurn::ENext FModelTurn::Mend(FModelReply& Reply, int& Try)
	{
		// 1. An answer in order.
		const FModelProblem& Problem = Reply.Problem;
		const bool bHasNothing = Reply.Text.empty() && Reply.Calls.empty();
		const bool bIsCut = Reply.Finish == EModelFinish::Length || Reply.Finish == EModelFinish::Filtered;
		if (!Problem && !bIsCut && !bHasNothing)
		{
			return ENext::Give;
		}

		// 2. What another request can do without.
		if (MendRequest(Reply, Try))
		{
			return ENext::Again;
		}

		// 3. What passes.
		const bool bPasses = Problem.Fault == EModelFault::RateLimited || Problem.Fault == EModelFault::Overloaded;
		const double Wait = Problem.RetryAfterSeconds >= 0.0 ? Problem.RetryAfterSeconds : static_cast<double>(1 << (Try - 1));
		if (bPasses && bHasNothing && Try < MaxTries && Wait <= MaxWaitSeconds)
		{
			++Try;
			return WaitForServer(Problem.Fault, Wait, Try) ? ENext::Again : ENext::Over;
		}

		// 4. What was said is kept; calls of half an answer are never run.
		if (!Reply.Text.empty())
		{
			TellAnswer(Reply.Text, false);
		}
		Fail(DescribeEnd(Reply));
		return ENext::Over;
	}

	bool FModelTurn::MendRequest(const FModelReply& Reply, int& Try)
	{
		const FModelProblem& Problem = Reply.Problem;
		const bool bHasNothing = Reply.Text.empty() && Reply.Calls.empty();
		if (Problem.Fault == EModelFault::NoUsage && Request.bAsksForUsage)
		{
			Request.bAsksForUsage = false;
			return true;
		}
		if (Problem.Fault == EModelFault::NoTools && !Request.Tools.empty() && bHasNothing)
		{
			Request.Tools.clear();
			Request.Messages.front().Text = ModelPrompt::MakeInstructions(Input, false);
			Tell(ETurnReportKind::Step, "This model cannot use tools: it answers without looking at the project.");
			return true;
		}
		if (Problem.Fault == EModelFault::ContextFull && bHasNothing && MakeRoom(Problem))
		{
			return true;
		}
		if (IsFull(Reply) && Try < MaxTries && MakeRoom(Problem))
		{
			// What it had begun it says again, with room to the end.
			++Try;
			return true;
		}
		return false;
	}

	bool FModelTurn::IsFull(const FModelReply& Reply) const
	{
		return !Reply.Problem && Reply.Finish == EModelFinish::Length && Gauge.IsFull(Reply.Usage);
	}

	bool FModelTurn::WaitForServer(EModelFault Fault, double Seconds, int Try)
	{
		const std::string Why =
			std::string(Fault == EModelFault::RateLimited ? "The server takes no more requests for now" : "The server is overloaded") +
			"; trying again in " + std::to_string(static_cast<int>(Seconds)) + " s (try " + std::to_string(Try) + " of " +
			std::to_string(MaxTries) + ").";
		Tell(ETurnReportKind::Step, Why);
		const FModelActivity::FRow Row = Activity.OpenWait(Why);
		return Control.Sleep(Seconds) && Control.WaitUntilRunning();
	}

	std::string FModelTurn::DescribeEnd(const FModelReply& Reply) const
	{
		if (Reply.Problem)
		{
			return Describe(Reply.Problem);
		}
		if (IsFull(Reply))
		{
			return "The answer was cut: the model can take no more. Start a new conversation, attach less, or give the model a larger "
				   "context.";
		}
		return Reply.Finish == EModelFinish::Length
			? "The answer was cut: no room was left for it. Ask for less at a time, or raise the limit of the model."
			: Reply.Finish == EModelFinish::Filtered ? "The server held the rest of the answer back. Ask in other words."
													 : "The model gave an empty answer. Send the message again, or pick another model.";
	}

	bool FModelTurn::MakeRoom(const FModelProblem& Problem)
	{
		// At least a quarter less each time, so that the same refusal cannot come for ever.
		const size_t Now = Transcript::Measure(Request.Messages);
		if (Problem.ContextTokens > 0)
		{
			ModelSizes::Set(Connection, Request.Model, Problem.ContextTokens);
			SetContext(Problem.ContextTokens);
		}
		Gauge.LearnRefusal(Request);
		const size_t Room = Gauge.GetContext() > 0 ? Gauge.GetRoom(Request.Tools) : Now;
		return ShortenTo(std::min(Room, Now * 3 / 4)) && !Control.IsCancelled() && Transcript::Measure(Request.Messages) <= Now * 9 / 10;
	}
}
