#include "Http/EventStreamReader.h"

#include <gtest/gtest.h>

#include <string>

using Velmora::FEventStreamReader;
using Velmora::FServerEvent;

namespace
{
	/** All events as text: [data], [type=data], a question mark for one that was cut off. */
	std::string ReadAll(std::string_view Bytes, size_t FirstLength, size_t MaxEventBytes = 1000)
	{
		std::string Dump;
		FEventStreamReader Reader(
			[&Dump](const FServerEvent& Event)
			{
				Dump += '[' + (Event.Type.empty() ? std::string() : std::string(Event.Type) + '=') + std::string(Event.Data) +
					(Event.bIsCutOff ? "?]" : "]");
				return Event.Data != "stop";
			},
			MaxEventBytes);
		Reader.Push(Bytes.substr(0, FirstLength));
		Reader.Push(Bytes.substr(std::min(FirstLength, Bytes.size())));
		const FEventStreamReader::EState State = Reader.End();
		return Dump +
			(State == FEventStreamReader::EState::Stopped			? " stopped"
					: State == FEventStreamReader::EState::TooLarge ? " too large"
																	: "");
	}
}

TEST(EventStream, EventsAreReadWhereverTheyAreCut)
{
	const std::tuple<const char*, std::string, const char*> Cases[] = {
		{ "line feeds", "data: a\n\ndata: b\n\n", "[a][b]" },
		{ "carriage returns", "data: a\r\rdata: b\r\r", "[a][b]" },
		{ "both", "data: a\r\n\r\ndata: b\r\n\r\n", "[a][b]" },
		{ "a mixture", "data: a\r\n\ndata: b\r\r\ndata: c\n\r\n", "[a][b][c]" },
		{ "a byte order mark counts once",
			"\xEF\xBB\xBF"
			"data: a\n\n\xEF\xBB\xBF"
			"data: b\n\n",
			"[a]" },
		{ "comments and unknown fields are passed over", ": ping\n\nid: 7\nretry: 1\nfoo: x\ndata: a\n:\n\n", "[a]" },
		{ "only one blank goes", "data:  a \n\n", "[ a ]" },
		{ "no blank is needed", "data:a\n\n", "[a]" },
		{ "several lines are one text", "data: a\ndata: b\ndata:\ndata: c\n\n", "[a\nb\n\nc]" },
		{ "empty data is an event", "data:\n\ndata\n\n", "[][]" },
		{ "no data is none", "event: a\n\ndata: b\n\n", "[b]" },
		{ "an event has a type", "event: error\ndata: a\n\ndata: b\n\n", "[error=a][b]" },
		{ "the last line may lack its end", "data: a\n\ndata: [DONE]", "[a][[DONE]?]" },
		{ "the last event may lack its blank line", "data: a\n", "[a?]" },
		{ "nothing behind the one that stops", "data: stop\n\ndata: a\n\n", "[stop] stopped" },
		{ "zero bytes are bytes", std::string("data: a\0b\n\n", 11),
			"[a"
			"\0"
			"b]" },
	};
	for (const auto& [Why, Input, Expected] : Cases)
	{
		const std::string Events = std::string(Why) == "zero bytes are bytes" ? std::string("[a\0b]", 5) : Expected;
		for (size_t Split = 0; Split <= Input.size(); ++Split)
		{
			EXPECT_EQ(ReadAll(Input, Split), Events) << Why << ", cut at " << Split;
		}
	}
}

TEST(EventStream, NothingGrowsBeyondItsBound)
{
	const std::string Long(2000, 'x');
	for (const size_t Split : { size_t(0), size_t(500), size_t(1999) })
	{
		EXPECT_EQ(ReadAll("data: a\n\ndata: " + Long + "\n\n", Split), "[a] too large") << "a line, cut at " << Split;
		EXPECT_EQ(ReadAll(':' + Long, Split), " too large") << "a comment without end, cut at " << Split;
	}
	const std::string TwoLines = "data: " + std::string(600, 'x') + "\n:" + std::string(600, 'y') + "\n\n";
	for (const size_t Split : { size_t(0), size_t(700), TwoLines.size() })
	{
		EXPECT_EQ(ReadAll(TwoLines, Split), " too large") << "a line and a comment of one event, cut at " << Split;
	}
	std::string Lines;
	for (int Line = 0; Line < 300; ++Line)
	{
		Lines += "data: abc\n";
	}
	EXPECT_EQ(ReadAll(Lines, 10), " too large") << "many lines";
	std::string Events;
	for (int Event = 0; Event < 300; ++Event)
	{
		Events += "data: abcdefgh\n\n";
	}
	EXPECT_EQ(ReadAll(Events, 10).size(), 300u * 10) << "many events are no large one";
}
