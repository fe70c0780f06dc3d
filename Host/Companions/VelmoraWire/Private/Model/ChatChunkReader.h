#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "Model/ReplyBuilder.h"

namespace Velmora
{
	/**
	 * Takes what matters out of one JSON object of the chat completions protocol: a chunk of a stream, a whole answer or
	 * a refusal. The places that are looked at stand in one table; everything else is passed over without being kept,
	 * so a value of any size or depth costs no memory. Buffers are used again from chunk to chunk.
	 */
	class FChatChunkReader : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, FChatChunkReader>
	{
	public:
		/** Where a value stands. */
		enum class ENode : uint8_t
		{
			Skip,
			Root,
			Choices,
			Choice,
			Delta,
			Parts,
			Part,
			Thoughts,
			Thought,
			Calls,
			Call,
			Function,
			LegacyFunction,
			Usage,
			PromptDetails,
			CompletionDetails,
			Error,
			ErrorMore,
			Arguments
		};

		enum class EField : uint8_t
		{
			None,
			Text,
			Thinking,
			ThinkingPart,
			Finish,
			ChoiceIndex,
			CallIndex,
			CallId,
			CallName,
			CallArguments,
			PromptTokens,
			CompletionTokens,
			CachedTokens,
			ReasoningTokens,
			ModelName,
			ErrorText,
			ErrorMore,
			ErrorType,
			ErrorCode,
			ErrorContext,
			RootMessage,
			RootKind,
			RootCode
		};

		/** What an object says of an error. */
		struct FErrorWords
		{
			bool bIsThere = false;
			std::string Text;

			/** What stands behind a text that says nothing: the words of the server's own server. */
			std::string More;
			std::string Type;
			std::string Code;

			/** Text beside the answer, which is an error only when the answer is one. */
			std::string RootMessage;
			int64_t ContextTokens = 0;
		};

		explicit FChatChunkReader(FReplyBuilder& InBuilder);

		/** False when the bytes are no JSON object. What came before the place that is broken has been handed on. */
		bool Read(std::string_view Json);

		/** Of the object that was read last. */
		const FErrorWords& GetError() const { return Error; }

		/** An answer, if an empty one, and not something else. Of all objects that were read. */
		bool HasChoices() const { return bHasChoices; }

		/** The word with which the server gave its answer up, or nothing. Of all objects that were read. */
		const std::string& GetAbortWord() const { return AbortWord; }

		// What the JSON reader calls.
		bool Default();
		bool Null();
		bool Bool(bool bValue);
		bool Int(int Value) { return Number(Value); }
		bool Uint(unsigned Value) { return Number(Value); }
		bool Int64(int64_t Value) { return Number(Value); }
		bool Uint64(uint64_t Value) { return ArgumentDepth > 0 ? ArgumentWriter.Uint64(Value) : Number(static_cast<int64_t>(Value)); }
		bool Double(double Value);
		bool String(const char* Bytes, rapidjson::SizeType Length, bool);
		bool Key(const char* Bytes, rapidjson::SizeType Length, bool);
		bool StartObject();
		bool EndObject(rapidjson::SizeType Count);
		bool StartArray();
		bool EndArray(rapidjson::SizeType Count);

	private:
		static constexpr int MaxDepth = 64;
		using FArgumentWriter = rapidjson::Writer<rapidjson::StringBuffer>;

		struct FCallPart
		{
			int Index = -1;
			std::string Id;
			std::string Name;
			std::string Arguments;
			void Clear();
		};

		bool Number(int64_t Value);
		bool Open(bool bIsArray);
		bool Close();
		void SetText(EField Field, std::string_view Value);
		void SetErrorText(EField Field, std::string_view Value);
		void SetNumber(EField Field, int64_t Value);
		void CommitCall();
		void HandCallsOn();
		void CommitChoice();
		EField TakeField();

		FReplyBuilder& Builder;
		rapidjson::Reader JsonReader;
		ENode Nodes[MaxDepth] = {};
		int Depth = 0;

		/** Below a value that is passed over, or too deep to be looked at. */
		int SkippedDepth = 0;
		EField Field = EField::None;
		ENode NextNode = ENode::Skip;

		// One choice, until its end tells whether it is the first.
		std::string Text;
		std::string Thinking;
		std::string Finish;
		int64_t ChoiceIndex = 0;
		int ChoiceCount = 0;
		FCallPart Call;

		/** Parts of calls of this choice; the first so many are in use, the others keep their memory. */
		std::vector<FCallPart> CallParts;
		size_t CallPartCount = 0;
		size_t CallPartBytes = 0;

		FModelUsage Usage;
		bool bHasUsage = false;
		FErrorWords Error;
		bool bHasChoices = false;
		std::string AbortWord;

		/** Arguments that came as an object, written as the text that they should have been. */
		rapidjson::StringBuffer ArgumentText;
		FArgumentWriter ArgumentWriter;
		int ArgumentDepth = 0;
	};
}
