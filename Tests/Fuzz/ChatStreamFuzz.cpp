#include "Fuzz/FuzzInput.h"
#include "Http/EventStreamReader.h"
#include "Model/ChatCompletions.h"
#include "Model/ReplyBuilder.h"
#include "Text/WireText.h"
#include "Tools/ToolArguments.h"

#include <algorithm>
#include <string>

using namespace Velmora;

namespace
{
	/** All that an answer says, on its way through the event stream, the dialect and the arguments of its calls. */
	std::string Read(std::string_view Bytes, size_t PieceSize)
	{
		FReplyLimits Limits;
		Limits.MaxTextBytes = 512;
		Limits.MaxThinkingBytes = 512;
		Limits.MaxArgumentBytes = 512;
		Limits.MaxCalls = 4;
		FReplyBuilder Builder(nullptr, Limits);
		const std::unique_ptr<IReplyReader> Reader = FChatCompletions().MakeReader(Builder);
		FEventStreamReader Events([&Reader](const FServerEvent& Event) { return Reader->OnEvent(Event); }, 1024);
		for (; !Bytes.empty(); Bytes.remove_prefix(std::min(PieceSize, Bytes.size())))
		{
			if (Events.Push(Bytes.substr(0, PieceSize)) != FEventStreamReader::EState::Open)
			{
				break;
			}
		}
		Events.End();
		const bool bHasEnded = Builder.HasEnded();
		const FModelReply Reply = Builder.Take("sesame-open-99");

		FUZZ_CHECK(WireText::IsUtf8(Reply.Text) && WireText::IsUtf8(Reply.Thinking));
		FUZZ_CHECK(Reply.Text.size() <= Limits.MaxTextBytes * 3 && Reply.Calls.size() <= Limits.MaxCalls);
		FUZZ_CHECK(Reply.Text.find("sesame-open-99") == std::string::npos);
		std::string All = Reply.Text + '\n' + Reply.Thinking + '\n' + Reply.Model + '\n' + Reply.Problem.Detail + '\n' +
			std::to_string(static_cast<int>(Reply.Problem.Fault)) + std::to_string(static_cast<int>(Reply.Finish)) +
			std::to_string(Reply.Usage.PromptTokens) + std::to_string(Reply.DroppedCalls) + (bHasEnded ? "ended" : "open");
		for (const FModelCall& Call : Reply.Calls)
		{
			FUZZ_CHECK(!Call.Id.empty() && WireText::IsUtf8(Call.Arguments));
			FToolArguments Arguments;
			std::string Problem;
			FUZZ_CHECK(FToolArguments::Parse(Call.Arguments, Arguments, Problem) == Problem.empty());
			All += '\n' + Call.Name + '\n' + Call.Arguments + (Call.bIsTooLarge ? "+" : "");
			for (const std::string& Name : Arguments.GetNames())
			{
				All += Name + '=' + Arguments.GetText(Name) + std::to_string(Arguments.GetList(Name).size());
			}
		}
		return All;
	}
}

// An answer means the same in one piece and in pieces of any size, is bounded, and is text.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
	CheckPieces(FFuzzInput(Data, Size), Read);
	return 0;
}
