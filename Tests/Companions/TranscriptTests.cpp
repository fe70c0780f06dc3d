#include "Model/Transcript.h"
#include "TemporaryProject.h"

#include <gtest/gtest.h>

#include <vector>

using namespace Velmora;

namespace
{
	FConversationMessage Say(EConversationRole Role, const FString& Content, bool bHasToolCalls = false)
	{
		return { Content, Role, bHasToolCalls };
	}

	FConversationMessage User(const char* Words)
	{
		return Say(EConversationRole::User, Text(Words));
	}

	FConversationMessage Agent(const char* Words, bool bHasToolCalls = false)
	{
		return Say(EConversationRole::Assistant, Text(Words), bHasToolCalls);
	}

	FConversationMessage Calls(std::vector<std::string> Ids)
	{
		std::vector<FModelCall> List;
		for (const std::string& Id : Ids)
		{
			List.push_back({ Id, "read_file", "{}" });
		}
		return Say(EConversationRole::Tool, Transcript::WriteCalls(List));
	}

	FConversationMessage Result(const char* Id, const char* Words)
	{
		return Say(EConversationRole::Tool, Transcript::WriteResult(Id, Words));
	}

	/** "u text", "a text [c1 c2]", "t c1=text", apart by bars. */
	std::string Dump(const std::vector<FModelMessage>& Messages)
	{
		std::string Text;
		for (const FModelMessage& Message : Messages)
		{
			Text += Text.empty() ? "" : " | ";
			Text += std::string(1, "suat"[static_cast<int>(Message.Role)]) + ' ' + (Message.CallId.empty() ? "" : Message.CallId + '=') +
				(Message.Text.starts_with("There is no result") ? "none" : Message.Text);
			for (const FModelCall& Call : Message.Calls)
			{
				Text += " [" + Call.Id + ']';
			}
		}
		return Text;
	}

	/** What a server insists on: each call has its results right behind it, each result its call, nobody speaks twice. */
	bool IsValid(const std::vector<FModelMessage>& Messages)
	{
		std::vector<std::string> Waiting;
		for (size_t Index = 0; Index < Messages.size(); ++Index)
		{
			const FModelMessage& Message = Messages[Index];
			if (Message.Role == EModelRole::Tool)
			{
				if (Waiting.empty() || Waiting.front() != Message.CallId)
				{
					return false;
				}
				Waiting.erase(Waiting.begin());
				continue;
			}
			if (!Waiting.empty() || (Index > 0 && Messages[Index - 1].Role == Message.Role && Message.Role == EModelRole::User))
			{
				return false;
			}
			for (const FModelCall& Call : Message.Calls)
			{
				Waiting.push_back(Call.Id);
			}
		}
		return Waiting.empty();
	}
}

TEST(Transcript, EveryCharacterComesThroughWhereverItStands)
{
	const std::pair<FString, const char*> Cases[] = {
		{ Text("\x7F"), "\x7F" },
		{ Text("ä"), "ä" },
		{ Text("€"), "€" },
		{ Text("😀"), "😀" },
		{ FString(1, u"\xD83D"), "\uFFFD" },
		{ FString(1, u"\xDE00"), "\uFFFD" },
	};
	for (const auto& [Character, Expected] : Cases)
	{
		for (size_t Place = 0; Place < 34; ++Place)
		{
			const std::string Before(Place, 'x');
			const FString Content = Text(Before.c_str()) + Character + TEXT(" and what comes after");
			EXPECT_EQ(
				Dump(Transcript::Read({ Say(EConversationRole::User, Content) })), "u " + Before + Expected + " and what comes after");
		}
	}
}

TEST(Transcript, OnlyWordsAreJoined)
{
	const FModelMessage Last = { EModelRole::Assistant, "a", { { "1", "read_file", "{}" } }, {} };
	const std::tuple<const char*, FModelMessage, const char*> Cases[] = {
		{ "calls wait for their results", { EModelRole::Assistant, "b", {}, {} }, "a a [1] | a b" },
		{ "another speaks", { EModelRole::User, "b", {}, {} }, "a a [1] | u b" },
	};
	for (const auto& [Why, Added, Expected] : Cases)
	{
		std::vector<FModelMessage> Messages = { Last };
		Transcript::Append(Messages, FModelMessage(Added));
		EXPECT_EQ(Dump(Messages), Expected) << Why;
	}
	std::vector<FModelMessage> Words = { { EModelRole::Assistant, "a", {}, {} } };
	Transcript::Append(Words, FModelMessage(Last));
	EXPECT_EQ(Dump(Words), "a a | a a [1]");
}

TEST(Transcript, WhateverIsStoredBecomesARequestInOrder)
{
	const std::tuple<const char*, std::vector<FConversationMessage>, const char*> Cases[] = {
		{ "a plain conversation", { User("a"), Agent("b"), User("c") }, "u a | a b | u c" },
		{ "a round", { User("a"), Agent("b", true), Calls({ "1", "2" }), Result("1", "x"), Result("2", "y"), Agent("c") },
			"u a | a b [1] [2] | t 1=x | t 2=y | a c" },
		{ "results in another order", { User("a"), Agent("", true), Calls({ "1", "2" }), Result("2", "y"), Result("1", "x") },
			"u a | a  [1] [2] | t 1=x | t 2=y" },
		{ "stopped before the calls were stored", { User("a"), Agent("b", true), User("c") }, "u a | a b | u c" },
		{ "stopped before anything was said", { User("a"), Agent("", true), User("c") }, "u a | u c" },
		{ "stopped before a result", { User("a"), Agent("b", true), Calls({ "1", "2" }), Result("1", "x"), User("c") },
			"u a | a b [1] [2] | t 1=x | t 2=none | u c" },
		{ "the user spoke while calls were under way",
			{ User("a"), Agent("b", true), Calls({ "1" }), User("no"), Result("1", "refused"), Agent("c") },
			"u a | a b [1] | t 1=refused | u no | a c" },
		{ "a result of nobody's", { User("a"), Result("9", "x"), Agent("b") }, "u a | a b" },
		{ "a result twice", { Agent("b", true), Calls({ "1" }), Result("1", "x"), Result("1", "y") }, "a b [1] | t 1=x" },
		{ "calls without what was said", { User("a"), Calls({ "1" }), Result("1", "x") }, "u a | a  [1] | t 1=x" },
		{ "what is no traffic",
			{ User("a"), Say(EConversationRole::Tool, TEXT("{\"session\":1}")), Say(EConversationRole::Tool, TEXT("[[")) }, "u a" },
		{ "the user twice, after a stop", { User("a"), User("b"), Agent("c") }, "u a\n\nb | a c" },
	};
	for (const auto& [Why, Kept, Expected] : Cases)
	{
		TArray<FConversationMessage> Stored;
		for (const FConversationMessage& Message : Kept)
		{
			Stored.Add(Message);
		}
		std::string Messages = Dump(Transcript::Read(Stored));
		if (std::string(Why) == "stopped before anything was said")
		{
			// An empty message between two of the user leaves these two; both are said.
			EXPECT_TRUE(Messages == "u a | u c" || Messages == "u a\n\nc") << Messages;
			continue;
		}
		EXPECT_EQ(Messages, Expected) << Why;
	}
}

TEST(Transcript, AStopAfterEveryMessageLeavesAValidRequest)
{
	const std::vector<FConversationMessage> Whole = { User("a"), Agent("", true), Calls({ "1", "2" }), Result("1", "x"), Result("2", "y"),
		Agent("b", true), Calls({ "1" }), Result("1", "z"), Agent("c"), User("d"), Agent("", true), Calls({ "3" }), Result("3", "w") };
	for (size_t Length = 0; Length <= Whole.size(); ++Length)
	{
		TArray<FConversationMessage> Stored;
		for (size_t Index = 0; Index < Length; ++Index)
		{
			Stored.Add(Whole[Index]);
		}
		std::vector<FModelMessage> Messages = Transcript::Read(Stored);
		EXPECT_TRUE(IsValid(Messages)) << Length << ": " << Dump(Messages);
		Transcript::Append(Messages, { EModelRole::User, "next", {}, {} });
		EXPECT_TRUE(IsValid(Messages)) << Length << ": " << Dump(Messages);
		for (size_t Bytes = 0; Bytes < 900; Bytes += 50)
		{
			std::vector<FModelMessage> Short = Messages;
			Transcript::Shorten(Short, Bytes);
			EXPECT_TRUE(IsValid(Short)) << Length << " in " << Bytes << ": " << Dump(Short);
			ASSERT_FALSE(Short.empty());
			EXPECT_EQ(Short.back().Role, EModelRole::User);
		}
	}
}

TEST(Transcript, WhatIsTooLongLosesResultsFirst)
{
	std::vector<FModelMessage> Messages = {
		{ EModelRole::System, "s", {}, {} },
		{ EModelRole::User, "a", {}, {} },
		{ EModelRole::Assistant, "", { { "1", "read_file", "{}" } }, {} },
		{ EModelRole::Tool, std::string(10000, 'x'), {}, "1" },
		{ EModelRole::Assistant, std::string(5000, 'b'), {}, {} },
		{ EModelRole::User, "c", {}, {} },
	};
	std::vector<FModelMessage> Kept = Messages;
	EXPECT_FALSE(Transcript::Shorten(Kept, 100000).IsAny());
	std::vector<FModelMessage> Results = Messages;
	Transcript::FShortening Shortening = Transcript::Shorten(Results, 8000);
	EXPECT_EQ(Shortening.Results, 1);
	EXPECT_TRUE(Shortening.Messages.empty());
	EXPECT_LT(Transcript::Measure(Results), 8000u);
	EXPECT_EQ(Results.size(), Messages.size());
	Shortening = Transcript::Shorten(Messages, 1000);
	EXPECT_EQ(Shortening.Messages.size(), 4u);
	ASSERT_EQ(Messages.size(), 2u);
	EXPECT_EQ(Messages[0].Text, "s");
	EXPECT_TRUE(Messages[1].Text.ends_with("]\n\nc")) << Messages[1].Text;
}

TEST(Transcript, WhatTheModelHasJustAskedForIsCutLastAndLeast)
{
	std::vector<FModelMessage> Messages = {
		{ EModelRole::User, std::string(3000, 'a'), {}, {} },
		{ EModelRole::Assistant, std::string(3000, 'b'), {}, {} },
		{ EModelRole::User, "c", {}, {} },
		{ EModelRole::Assistant, "", { { "1", "read_file", "{}" } }, {} },
		{ EModelRole::Tool, std::string(4000, 'x'), {}, "1" },
		{ EModelRole::Assistant, "", { { "2", "read_file", "{}" } }, {} },
		{ EModelRole::Tool, std::string(9000, 'y'), {}, "2" },
	};
	std::vector<FModelMessage> Roomy = Messages;
	EXPECT_EQ(Transcript::Shorten(Roomy, 12000).Messages.size(), 2u);
	EXPECT_EQ(Roomy.back().Text, Messages.back().Text);

	const Transcript::FShortening Shortening = Transcript::Shorten(Messages, 6000);
	EXPECT_EQ(Shortening.Results, 2);
	EXPECT_EQ(Shortening.Messages.size(), 2u);
	EXPECT_LE(Transcript::Measure(Messages), 6000u);
	EXPECT_GT(Transcript::Measure(Messages), 5700u);
	EXPECT_TRUE(Messages.back().Text.ends_with("Ask for less at a time: some lines, one folder, rarer words.]")) << Messages.back().Text;
}
