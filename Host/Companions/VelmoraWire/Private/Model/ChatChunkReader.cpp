#include "Model/ChatChunkReader.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <utility>

// Reads one chunk of a model's answer, as events and without a document: an answer comes in thousands of chunks of a few
// bytes. Where something stands decides what it is, so the tables below give each object a name (a node) and each value in
// it a meaning (a field); what they do not name is passed over.
// Servers differ in what they call things and where they put them. Each dialect is a row of a table and no branch.

namespace Velmora
{
	namespace
	{
		// Chunks are read as they stream by, without a tree of values: what counts is told by where it stands, and the three tables below
		// say what stands where. Everything else is skipped, whatever it is.
		using ENode = FChatChunkReader::ENode;
		using EField = FChatChunkReader::EField;

		/** Which object or array lies below which name of which other. */
		struct FNodeRow
		{
			ENode Parent;
			std::string_view Key;
			ENode Child;
		};

		// clang-format off
		constexpr FNodeRow NodeRows[] = {
			{ ENode::Root,      "choices",                   ENode::Choices },
			{ ENode::Root,      "usage",                     ENode::Usage },
			{ ENode::Root,      "error",                     ENode::Error },
			{ ENode::Choice,    "delta",                     ENode::Delta },
			{ ENode::Choice,    "message",                   ENode::Delta },
			{ ENode::Choice,    "error",                     ENode::Error },
			{ ENode::Delta,     "content",                   ENode::Parts },
			{ ENode::Part,      "thinking",                  ENode::Thoughts },
			{ ENode::Delta,     "tool_calls",                ENode::Calls },
			{ ENode::Delta,     "function_call",             ENode::LegacyFunction },
			{ ENode::Call,      "function",                  ENode::Function },
			{ ENode::Function,  "arguments",                 ENode::Arguments },
			{ ENode::Error,     "metadata",                  ENode::ErrorMore },
			{ ENode::Usage,     "prompt_tokens_details",     ENode::PromptDetails },
			{ ENode::Usage,     "completion_tokens_details", ENode::CompletionDetails },
		};

		/** What the elements of an array are. */
		constexpr std::pair<ENode, ENode> ElementRows[] = {
			{ ENode::Choices,  ENode::Choice },
			{ ENode::Parts,    ENode::Part },
			{ ENode::Thoughts, ENode::Thought },
			{ ENode::Calls,    ENode::Call },
		};

		struct FFieldRow
		{
			ENode Node;
			std::string_view Key;
			EField Field;
		};

		constexpr FFieldRow FieldRows[] = {
			{ ENode::Delta,             "content",           EField::Text },
			{ ENode::Delta,             "refusal",           EField::Text },
			{ ENode::Delta,             "reasoning_content", EField::Thinking },
			{ ENode::Delta,             "reasoning",         EField::Thinking },
			{ ENode::Delta,             "thinking",          EField::Thinking },
			{ ENode::Part,              "text",              EField::Text },
			{ ENode::Thought,           "text",              EField::ThinkingPart },
			{ ENode::Choice,            "finish_reason",     EField::Finish },
			{ ENode::Choice,            "index",             EField::ChoiceIndex },
			{ ENode::Choice,            "text",              EField::Text },
			{ ENode::Call,              "index",             EField::CallIndex },
			{ ENode::Call,              "id",                EField::CallId },
			{ ENode::Function,          "name",              EField::CallName },
			{ ENode::Function,          "arguments",         EField::CallArguments },
			{ ENode::LegacyFunction,    "name",              EField::CallName },
			{ ENode::LegacyFunction,    "arguments",         EField::CallArguments },
			{ ENode::Usage,             "prompt_tokens",     EField::PromptTokens },
			{ ENode::Usage,             "completion_tokens", EField::CompletionTokens },
			{ ENode::Usage,             "prompt_cache_hit_tokens", EField::CachedTokens },
			{ ENode::PromptDetails,     "cached_tokens",     EField::CachedTokens },
			{ ENode::CompletionDetails, "reasoning_tokens",  EField::ReasoningTokens },
			{ ENode::Root,              "model",             EField::ModelName },
			{ ENode::Root,              "error",             EField::ErrorText },
			{ ENode::Root,              "message",           EField::RootMessage },
			{ ENode::Root,              "detail",            EField::RootMessage },
			{ ENode::Root,              "msg",               EField::RootMessage },
			{ ENode::Root,              "object",            EField::RootKind },
			{ ENode::Root,              "code",              EField::RootCode },
			{ ENode::Error,             "message",           EField::ErrorText },
			{ ENode::Error,             "type",              EField::ErrorType },
			{ ENode::Error,             "code",              EField::ErrorCode },
			{ ENode::Error,             "n_ctx",             EField::ErrorContext },
			{ ENode::ErrorMore,         "raw",               EField::ErrorMore },
		};

		constexpr std::pair<std::string_view, EModelFinish> FinishRows[] = {
			{ "stop",           EModelFinish::Stop },
			{ "eos",            EModelFinish::Stop },
			{ "end_turn",       EModelFinish::Stop },
			{ "tool_calls",     EModelFinish::Calls },
			{ "function_call",  EModelFinish::Calls },
			{ "tool_use",       EModelFinish::Calls },
			{ "length",         EModelFinish::Length },
			{ "max_tokens",     EModelFinish::Length },
			{ "max_output_tokens", EModelFinish::Length },
			{ "model_length",   EModelFinish::Length },
			{ "content_filter", EModelFinish::Filtered },
			{ "safety",         EModelFinish::Filtered },
			{ "recitation",     EModelFinish::Filtered },
			{ "prohibited_content", EModelFinish::Filtered },
		};

		// Of calls in one choice, while it is not known which it is.
		constexpr size_t MaxHeldParts = 64;
		constexpr size_t MaxHeldBytes = 64 * 1024;

		/** Of one answer. */
		constexpr int64_t MaxTokens = 1000000000000;

		/** Reasons that are none: what came is not the answer. */
		constexpr std::string_view AbortWords[] = { "error", "abort", "aborted", "cancelled", "insufficient_system_resource" };
		// clang-format on

		/** The number of an escape such as \\u00e4; negative when none stands there. */
		int ReadEscape(std::string_view Json, size_t Start)
		{
			int Unit = 0;
			const std::string_view Digits = Start + 6 <= Json.size() ? Json.substr(Start + 2, 4) : std::string_view();
			const auto [End, Problem] = std::from_chars(Digits.data(), Digits.data() + Digits.size(), Unit, 16);
			return Digits.size() == 4 && Json[Start] == '\\' && Json[Start + 1] == 'u' && End == Digits.data() + 4 ? Unit : -1;
		}

		/**
		 * Half characters become the one that stands for what is lost: servers whose texts count in halves cut there, and no JSON reader
		 * takes the rest. Empty when there is none.
		 */
		std::string RepairHalves(std::string_view Json)
		{
			std::string Repaired;
			if (Json.find("\\ud") == std::string_view::npos && Json.find("\\uD") == std::string_view::npos)
			{
				return Repaired;
			}
			const auto IsFirst = [](int Unit) { return Unit >= 0xD800 && Unit < 0xDC00; };
			const auto IsSecond = [](int Unit) { return Unit >= 0xDC00 && Unit < 0xE000; };
			for (size_t Place = Json.find('\\'); Place != std::string_view::npos; Place = Json.find('\\', Place))
			{
				const int Unit = ReadEscape(Json, Place);
				const bool bIsWhole = IsFirst(Unit) && IsSecond(ReadEscape(Json, Place + 6));
				if (!bIsWhole && (IsFirst(Unit) || IsSecond(Unit)))
				{
					Repaired = Repaired.empty() ? std::string(Json) : std::move(Repaired);
					Repaired.replace(Place, 6, "\\ufffd");
				}
				Place += bIsWhole ? 12 : Unit >= 0 ? 6 : 2;
			}
			return Repaired;
		}
	}

	void FChatChunkReader::FCallPart::Clear()
	{
		Index = -1;
		Id.clear();
		Name.clear();
		Arguments.clear();
	}

	FChatChunkReader::FChatChunkReader(FReplyBuilder& InBuilder)
		: Builder(InBuilder)
		, ArgumentWriter(ArgumentText)
	{
	}

	// 1. Nothing is left of the chunk before, for it may have ended in the middle. 2. The events. 3. Figures are given on once
	// for each chunk, since they replace each other.
	bool FChatChunkReader::Read(std::string_view Json)
	{
		Depth = SkippedDepth = ArgumentDepth = 0;
		Field = EField::None;
		NextNode = ENode::Root;
		Call.Clear();
		Text.clear();
		Thinking.clear();
		Finish.clear();
		ChoiceCount = 0;
		CallPartCount = 0;
		CallPartBytes = 0;
		Error = FErrorWords();
		bHasUsage = false;
		const std::string Repaired = RepairHalves(Json);
		Json = Repaired.empty() ? Json : std::string_view(Repaired);
		rapidjson::MemoryStream Stream(Json.data(), Json.size());
		// Iterative, since the depth is the server's; numbers such as NaN come from servers whose language has them.
		constexpr unsigned Flags = rapidjson::kParseIterativeFlag | rapidjson::kParseNanAndInfFlag;
		const bool bIsRead = JsonReader.Parse<Flags>(Stream, *this);
		if (bHasUsage)
		{
			Builder.SetUsage(Usage);
		}
		return bIsRead;
	}

	FChatChunkReader::EField FChatChunkReader::TakeField()
	{
		NextNode = ENode::Skip;
		return std::exchange(Field, EField::None);
	}

	bool FChatChunkReader::Default()
	{
		TakeField();
		// A text or a number alone is no chunk, and none that could be used.
		return Depth + SkippedDepth + ArgumentDepth > 0;
	}

	bool FChatChunkReader::Null()
	{
		return ArgumentDepth > 0 ? ArgumentWriter.Null() : Default();
	}

	bool FChatChunkReader::Bool(bool bValue)
	{
		return ArgumentDepth > 0 ? ArgumentWriter.Bool(bValue) : Default();
	}

	bool FChatChunkReader::Double(double Value)
	{
		if (ArgumentDepth > 0)
		{
			// Infinite and "not a number" have no place in JSON, so the tool sees that nothing was given.
			return Value - Value == 0.0 ? ArgumentWriter.Double(Value) : ArgumentWriter.Null();
		}
		return Default();
	}

	bool FChatChunkReader::Number(int64_t Value)
	{
		if (ArgumentDepth > 0)
		{
			return ArgumentWriter.Int64(Value);
		}
		if (const EField Target = TakeField(); Target != EField::None)
		{
			SetNumber(Target, Value);
		}
		return Default();
	}

	bool FChatChunkReader::String(const char* Bytes, rapidjson::SizeType Length, bool)
	{
		if (ArgumentDepth > 0)
		{
			return ArgumentWriter.String(Bytes, Length);
		}
		const EField Target = TakeField();
		if (Target == EField::None && Depth > 0 && SkippedDepth == 0 && Nodes[Depth - 1] == ENode::Parts)
		{
			// A part may be a plain text.
			SetText(EField::Text, std::string_view(Bytes, Length));
		}
		else if (Target != EField::None)
		{
			SetText(Target, std::string_view(Bytes, Length));
		}
		return Default();
	}

	bool FChatChunkReader::Key(const char* Bytes, rapidjson::SizeType Length, bool)
	{
		if (ArgumentDepth > 0)
		{
			return ArgumentWriter.Key(Bytes, Length);
		}
		TakeField();
		if (SkippedDepth > 0 || Depth == 0)
		{
			return true;
		}
		const std::string_view Name(Bytes, Length);
		const ENode Parent = Nodes[Depth - 1];
		const auto FieldRow = std::find_if(
			std::begin(FieldRows), std::end(FieldRows), [&](const FFieldRow& Row) { return Row.Node == Parent && Row.Key == Name; });
		Field = FieldRow != std::end(FieldRows) ? FieldRow->Field : EField::None;
		const auto NodeRow = std::find_if(
			std::begin(NodeRows), std::end(NodeRows), [&](const FNodeRow& Row) { return Row.Parent == Parent && Row.Key == Name; });
		NextNode = NodeRow != std::end(NodeRows) ? NodeRow->Child : ENode::Skip;
		return true;
	}

	// 1. Arguments that are an object instead of a text are written out as the text that they should have been. 2. What follows
	// from the name or, in an array, from the array. 3. Everything unknown is counted and skipped.
	bool FChatChunkReader::Open(bool bIsArray)
	{
		if (ArgumentDepth > 0)
		{
			// A depth that no tool's arguments have; the writer keeps count of it.
			return ++ArgumentDepth <= MaxDepth && (bIsArray ? ArgumentWriter.StartArray() : ArgumentWriter.StartObject());
		}
		ENode Node = NextNode;
		// An element of an array has no name: what it is depends on the array.
		if (SkippedDepth == 0 && Depth > 0 && Field == EField::None && Node == ENode::Skip)
		{
			const auto Row = std::find_if(
				std::begin(ElementRows), std::end(ElementRows), [this](const auto& Pair) { return Pair.first == Nodes[Depth - 1]; });
			Node = Row != std::end(ElementRows) ? Row->second : ENode::Skip;
		}
		TakeField();
		if (Depth == 0 && SkippedDepth == 0 && bIsArray)
		{
			return false;
		}
		// Arguments are a text by the standard; servers that send them as an object mean the same, so they are written as text again.
		if (SkippedDepth == 0 && Node == ENode::Arguments)
		{
			ArgumentText.Clear();
			ArgumentWriter.Reset(ArgumentText);
			ArgumentDepth = 1;
			return bIsArray ? ArgumentWriter.StartArray() : ArgumentWriter.StartObject();
		}
		if (SkippedDepth > 0 || Node == ENode::Skip || Depth == MaxDepth)
		{
			// The reader below keeps a few bytes for each level: an object of a million levels is no chunk.
			return ++SkippedDepth <= 1000;
		}
		Error.bIsThere |= Node == ENode::Error;
		bHasChoices |= Node == ENode::Choices;
		// Where it has no number, its place is one.
		ChoiceIndex = Node == ENode::Choice ? ChoiceCount++ : ChoiceIndex;
		Nodes[Depth++] = Node;
		return true;
	}

	// A call and a choice are complete with their closing bracket: their parts may come in any order.
	bool FChatChunkReader::Close()
	{
		if (SkippedDepth > 0)
		{
			--SkippedDepth;
			return true;
		}
		const ENode Node = Nodes[--Depth];
		if (Node == ENode::Call || Node == ENode::LegacyFunction)
		{
			CommitCall();
		}
		else if (Node == ENode::Choice)
		{
			CommitChoice();
		}
		TakeField();
		return true;
	}

	bool FChatChunkReader::StartObject()
	{
		return Open(false);
	}

	bool FChatChunkReader::StartArray()
	{
		return Open(true);
	}

	bool FChatChunkReader::EndObject(rapidjson::SizeType)
	{
		if (ArgumentDepth > 0)
		{
			const bool bIsWritten = ArgumentWriter.EndObject();
			if (--ArgumentDepth == 0)
			{
				Call.Arguments.assign(ArgumentText.GetString(), ArgumentText.GetSize());
			}
			return bIsWritten;
		}
		return Close();
	}

	bool FChatChunkReader::EndArray(rapidjson::SizeType)
	{
		if (ArgumentDepth > 0)
		{
			const bool bIsWritten = ArgumentWriter.EndArray();
			if (--ArgumentDepth == 0)
			{
				Call.Arguments.assign(ArgumentText.GetString(), ArgumentText.GetSize());
			}
			return bIsWritten;
		}
		return Close();
	}

	void FChatChunkReader::SetText(EField Target, std::string_view Value)
	{
		switch (Target)
		{
		case EField::Text:
			// What is more than an answer may be is not copied before it is refused.
			if (Value.size() > FReplyLimits().MaxTextBytes)
			{
				Builder.Fail(EModelFault::TooLarge, std::string());
				return;
			}
			Text += Value;
			return;
		case EField::Thinking:
			// Some servers send the same thought under two names, or nothing under one of them.
			Thinking = Value.empty() ? Thinking : std::string(Value);
			return;
		case EField::ThinkingPart:
			Thinking += Value;
			return;
		case EField::Finish:
			Finish = Value;
			return;
		case EField::CallId:
			Call.Id = Value;
			return;
		case EField::CallName:
			Call.Name = Value;
			return;
		case EField::CallArguments:
			Call.Arguments = Value;
			return;
		case EField::ModelName:
			Builder.SetModel(Value);
			return;
		default:
			SetErrorText(Target, Value);
			return;
		}
	}

	void FChatChunkReader::SetErrorText(EField Target, std::string_view Value)
	{
		switch (Target)
		{
		case EField::ErrorText:
			Error.bIsThere = true;
			Error.Text = Value;
			return;
		case EField::ErrorMore:
			Error.More = Value;
			return;
		case EField::ErrorType:
			Error.Type = Value;
			return;
		case EField::ErrorCode:
			Error.Code = Value;
			return;
		case EField::RootMessage:
			Error.RootMessage = Value;
			return;
		case EField::RootKind:
			Error.bIsThere |= Value == "error";
			return;
		default:
			return;
		}
	}

	void FChatChunkReader::SetNumber(EField Target, int64_t Value)
	{
		const auto SetUsage = [this, Value](int64_t& Figure)
		{
			// What is no figure is as good as none, and no sum may overflow.
			Figure = Value >= 0 && Value <= MaxTokens ? Value : -1;
			bHasUsage = true;
		};
		switch (Target)
		{
		case EField::ChoiceIndex:
			ChoiceIndex = Value;
			return;
		case EField::CallIndex:
			Call.Index = Value >= 0 && Value < 1000000 ? static_cast<int>(Value) : -1;
			return;
		case EField::PromptTokens:
			SetUsage(Usage.PromptTokens);
			return;
		case EField::CompletionTokens:
			SetUsage(Usage.CompletionTokens);
			return;
		case EField::CachedTokens:
			SetUsage(Usage.CachedTokens);
			return;
		case EField::ReasoningTokens:
			SetUsage(Usage.ReasoningTokens);
			return;
		case EField::ErrorCode:
			Error.Code = std::to_string(Value);
			return;
		case EField::RootCode:
			// Of an error that is all of the object; an answer has no code.
			Error.Code = Error.Code.empty() ? std::to_string(Value) : Error.Code;
			return;
		case EField::ErrorContext:
			Error.ContextTokens = Value;
			return;
		default:
			return;
		}
	}

	void FChatChunkReader::CommitCall()
	{
		if (CallPartCount == CallParts.size())
		{
			CallParts.emplace_back();
		}
		std::swap(CallParts[CallPartCount++], Call);
		CallPartBytes += CallParts[CallPartCount - 1].Arguments.size();
		Call.Clear();
		if (CallPartCount >= MaxHeldParts || CallPartBytes > MaxHeldBytes)
		{
			HandCallsOn();
		}
	}

	void FChatChunkReader::HandCallsOn()
	{
		for (size_t Index = 0; Index < CallPartCount && ChoiceIndex == 0; ++Index)
		{
			const FCallPart& Part = CallParts[Index];
			Builder.AddCall(Part.Index, Part.Id, Part.Name, Part.Arguments);
		}
		if (CallPartBytes > MaxHeldBytes)
		{
			std::vector<FCallPart>().swap(CallParts);
		}
		CallPartCount = 0;
		CallPartBytes = 0;
	}

	// One answer is asked for; a server that gives more is listened to for its first.
	void FChatChunkReader::CommitChoice()
	{
		// Other choices are other answers to the same question, and nobody asked for them.
		if (ChoiceIndex == 0)
		{
			// Thinking goes first: in a chunk that has both, it came first.
			if (!Thinking.empty())
			{
				Builder.AddThinking(Thinking);
			}
			if (!Text.empty())
			{
				Builder.AddText(std::move(Text));
			}
			if (!Finish.empty())
			{
				// Some write them in capitals. An unknown word is still an end.
				std::transform(Finish.begin(), Finish.end(), Finish.begin(),
					[](char Byte) { return Byte >= 'A' && Byte <= 'Z' ? static_cast<char>(Byte - 'A' + 'a') : Byte; });
				if (std::find(std::begin(AbortWords), std::end(AbortWords), Finish) != std::end(AbortWords))
				{
					AbortWord = Finish;
				}
				else
				{
					const auto Row = std::find_if(
						std::begin(FinishRows), std::end(FinishRows), [this](const auto& Pair) { return Pair.first == Finish; });
					Builder.SetFinish(Row != std::end(FinishRows) ? Row->second : EModelFinish::Stop);
				}
			}
		}
		Text.clear();
		Thinking.clear();
		Finish.clear();
		HandCallsOn();
	}
}
