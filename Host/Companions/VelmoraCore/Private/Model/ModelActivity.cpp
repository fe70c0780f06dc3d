#include "Model/ModelActivity.h"

#include <utility>

#include "Text/Utf8Text.h"
#include "Text/WireText.h"

namespace Velmora
{
	namespace
	{
		std::string DescribeEnd(const FModelReply& Reply, const FModelServer& Server, const std::string& Model)
		{
			if (Reply.Problem)
			{
				return Reply.Problem.Fault == EModelFault::Cancelled ? std::string("Stopped.")
																	 : DescribeProblem(Reply.Problem, Server, Model);
			}
			switch (Reply.Finish)
			{
			case EModelFinish::Calls:
				return "Ended with " + Utf8Text::Count(Reply.Calls.size(), "call", "calls") + '.';
			case EModelFinish::Length:
				return "Cut: no room was left.";
			case EModelFinish::Filtered:
				return "Cut: the server held the rest back.";
			case EModelFinish::Stop:
			case EModelFinish::Missing:
				break;
			}
			return Reply.Calls.empty() ? "Ended." : "Ended with " + Utf8Text::Count(Reply.Calls.size(), "call", "calls") + '.';
		}
	}

	FModelActivity::FModelActivity(const FModelConnection& InConnection)
		: Connection(InConnection)
		, Turn(FActivityFeed::Get().BeginTurn(
			  InConnection.Model.empty() ? InConnection.Name : InConnection.Name + ", " + InConnection.Model))
		, ContextTokens(InConnection.ContextTokens)
	{
	}

	FModelActivity::~FModelActivity()
	{
		FActivityFeed::Get().EndTurn(Turn);
	}

	FModelReply FModelActivity::Ask(FModelClient& Client, const FModelRequest& Request)
	{
		FActivityFeed& Feed = FActivityFeed::Get();
		uint32 Id = 0;
		int64 Pieces = 0;
		FModelReply Reply = Client.Ask(
			Request,
			[&](const FReplyPiece& Piece)
			{
				const bool bIsCall = Piece.Kind == FReplyPiece::EKind::CallName || Piece.Kind == FReplyPiece::EKind::CallArguments;
				++Pieces;
				// The text of calls stands in rows of their own; here it only counts.
				Feed.AddPiece(Id, Piece.Kind == FReplyPiece::EKind::Thinking, bIsCall ? std::string_view() : Piece.Bytes);
			},
			[&](std::string_view Body)
			{
				FAgentActivityEntry Entry;
				Entry.Kind = EAgentActivityKind::Request;
				Entry.Title = Utf8Text::ToString(Connection.Name + ", " + Request.Model);
				// The key is in no body, unless the user has written it into a message.
				std::string Shown(Body.substr(0, FAgentActivity::MaxInputLength + 1));
				WireText::HideKey(Shown, Connection.Server.Key);
				Entry.Input = Utf8Text::ToString(Shown);
				Entry.SentBytes = static_cast<int64>(Body.size());
				Entry.ContextTokens = ContextTokens;
				Id = Feed.Open(MoveTemp(Entry));
			});
		if (Reply.Usage.CompletionTokens >= 0)
		{
			Feed.CountTokens(Pieces, Reply.Usage.CompletionTokens);
		}
		Feed.Close(Id,
			[Usage = Reply.Usage, FirstByteSeconds = Reply.FirstByteSeconds, Seconds = Reply.Seconds,
				ReceivedBytes = static_cast<int64>(Reply.ReceivedBytes), bSuccess = !Reply.Problem,
				Cost = Reply.Usage.PromptTokens >= 0 && Reply.Usage.CompletionTokens >= 0
					? Connection.Budget.GetCost(Reply.Usage.PromptTokens, Reply.Usage.CompletionTokens)
					: -1.0,
				Outcome = Utf8Text::ToString(DescribeEnd(Reply, Connection.Server, Request.Model))](FAgentActivityEntry& Entry)
			{
				Entry.PromptTokens = Usage.PromptTokens;
				Entry.CompletionTokens = Usage.CompletionTokens;
				Entry.CachedTokens = Usage.CachedTokens;
				Entry.ReasoningTokens = Usage.ReasoningTokens;
				Entry.FirstByteSeconds = FirstByteSeconds;
				Entry.Seconds = Seconds;
				Entry.ReceivedBytes = ReceivedBytes;
				Entry.Cost = Cost;
				Entry.bSuccess = bSuccess;
				Entry.Outcome = Outcome;
			});
		return Reply;
	}

	FModelActivity::FRow FModelActivity::OpenCall(const FModelCall& Call)
	{
		FAgentActivityEntry Entry;
		Entry.Kind = EAgentActivityKind::Tool;
		Entry.Title = Utf8Text::ToString(Call.Name);
		Entry.Input = Utf8Text::ToString(std::string_view(Call.Arguments).substr(0, FAgentActivity::MaxInputLength + 1));
		return FRow(MoveTemp(Entry));
	}

	FModelActivity::FRow FModelActivity::OpenWait(std::string_view Why)
	{
		FAgentActivityEntry Entry;
		Entry.Kind = EAgentActivityKind::Wait;
		Entry.Title = Utf8Text::ToString(Why);
		return FRow(MoveTemp(Entry));
	}

	FModelActivity::FRow::FRow(FAgentActivityEntry&& Entry)
		: bHasResult(Entry.Kind == EAgentActivityKind::Tool)
		, Id(FActivityFeed::Get().Open(MoveTemp(Entry)))
	{
	}

	void FModelActivity::FRow::SetResult(std::string_view Text)
	{
		Result = Utf8Text::ToString(Text);
		bIsDone = true;
	}

	FModelActivity::FRow::~FRow()
	{
		FActivityFeed::Get().Close(Id,
			[Result = MoveTemp(Result), bHasResult = bHasResult, bIsDone = bIsDone](FAgentActivityEntry& Entry)
			{
				Entry.bSuccess = bIsDone || !bHasResult;
				Entry.Text = Result;
				Entry.Outcome = Entry.bSuccess ? FString() : FString(TEXT("Stopped."));
			});
	}
}
