#include "Model/ChatCompletions.h"

#include <gtest/gtest.h>

#include <rapidjson/document.h>

#include <algorithm>
#include <cctype>
#include <set>
#include <string>

using namespace Velmora;

namespace
{
	std::string Write(const FModelRequest& Request)
	{
		FModelServer Server;
		Server.BaseUrl = "http://127.0.0.1";
		return FChatCompletions().MakeRequest(Server, Request).Body;
	}

	/** Two calls whose ids are of this server's making; their results say which they are of. */
	void AddRound(FModelRequest& Request, const std::string& First, const std::string& Second)
	{
		const std::string Number = std::to_string(Request.Messages.size());
		Request.Messages.push_back({ EModelRole::Assistant, "", { { First, "a" + Number, "{}" }, { Second, "b" + Number, "{}" } }, "" });
		Request.Messages.push_back({ EModelRole::Tool, "a" + Number, {}, First });
		Request.Messages.push_back({ EModelRole::Tool, "b" + Number, {}, Second });
	}
}

TEST(CallIds, SuitEveryServerAndAreStable)
{
	FModelRequest Request;
	Request.Messages = { { EModelRole::User, "go", {}, "" } };
	std::string Before;
	for (int Round = 0; Round < 3000; ++Round)
	{
		const std::string Number = std::to_string(Round);
		switch (Round % 5)
		{
		case 0: // One that makes none, so that they are the same in each round.
			AddRound(Request, "call_1", "call_2");
			break;
		case 1:
			AddRound(Request, "toolu_01" + Number + std::string(400, 'x'), "toolu_02" + Number + std::string(400, 'x'));
			break;
		case 2:
			AddRound(Request, "functions.read:" + Number, "\xFF\xFE" + Number);
			break;
		case 3: // Of the form that suits already, and the very text again.
			AddRound(Request, "aBc" + std::to_string(100000 + Round), "aaaaaaaaa");
			break;
		default: // What a store may hold that somebody has edited.
			AddRound(Request, "", "same");
			Request.Messages.back().CallId = "same";
			break;
		}
		if (Round == 2998)
		{
			Before = Write(Request);
		}
	}
	const std::string Body = Write(Request);
	EXPECT_EQ(Body, Write(Request));
	const size_t End = Before.find("],\"stream\"");
	EXPECT_EQ(Body.compare(0, End, Before, 0, End), 0) << "what was sent before is sent again to the byte";

	rapidjson::Document Parsed;
	Parsed.Parse(Body.c_str());
	ASSERT_FALSE(Parsed.HasParseError());
	std::set<std::string> Seen;
	const auto& Messages = Parsed["messages"];
	for (rapidjson::SizeType Index = 1; Index < Messages.Size(); Index += 3)
	{
		for (rapidjson::SizeType Call = 0; Call < 2; ++Call)
		{
			const auto& Written = Messages[Index]["tool_calls"][Call];
			const std::string Id = Written["id"].GetString();
			ASSERT_EQ(Id.size(), 9u) << Id;
			ASSERT_TRUE(std::all_of(Id.begin(), Id.end(), [](char Byte) { return std::isalnum(static_cast<unsigned char>(Byte)); })) << Id;
			ASSERT_TRUE(Seen.insert(Id).second) << Id << " stands there twice";
			const auto& Result = Messages[Index + 1 + Call];
			ASSERT_EQ(Id, Result["tool_call_id"].GetString());
			ASSERT_STREQ(Written["function"]["name"].GetString(), Result["content"].GetString());
		}
	}
	EXPECT_EQ(Seen.size(), 6000u);
	EXPECT_TRUE(Seen.contains("aBc100003")) << "what suits is left as it is";
	EXPECT_TRUE(Seen.contains("aaaaaaaaa"));

	// Twice the same in one message: whoever comes first is answered first.
	Request.Messages.clear();
	AddRound(Request, "c", "c");
	Parsed.Parse(Write(Request).c_str());
	const auto& Calls = Parsed["messages"][0]["tool_calls"];
	EXPECT_STREQ(Calls[0]["id"].GetString(), Parsed["messages"][1]["tool_call_id"].GetString());
	EXPECT_STREQ(Calls[1]["id"].GetString(), Parsed["messages"][2]["tool_call_id"].GetString());
	EXPECT_STRNE(Calls[0]["id"].GetString(), Calls[1]["id"].GetString());

	// A server that gives the very id which another call has been given here.
	Request.Messages.clear();
	AddRound(Request, "call_1", "aaaaaaaaa");
	Parsed.Parse(Write(Request).c_str());
	const std::string Made = Parsed["messages"][0]["tool_calls"][0]["id"].GetString();
	AddRound(Request, Made, "bbbbbbbbb");
	Parsed.Parse(Write(Request).c_str());
	EXPECT_STREQ(Parsed["messages"][0]["tool_calls"][0]["id"].GetString(), Made.c_str());
	const std::string Other = Parsed["messages"][3]["tool_calls"][0]["id"].GetString();
	EXPECT_NE(Other, Made);
	EXPECT_EQ(Other, Parsed["messages"][4]["tool_call_id"].GetString());
}
