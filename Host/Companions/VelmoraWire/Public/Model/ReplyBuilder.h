#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "CoreMinimal.h"
#include "Model/ModelTypes.h"

namespace Velmora
{
	/** In bytes, where nothing else is said. */
	struct FReplyLimits
	{
		size_t MaxTextBytes = 16 * 1024 * 1024;

		/** What is beyond is passed on and not kept. */
		size_t MaxThinkingBytes = 4 * 1024 * 1024;

		/** Of all calls of the answer together. */
		size_t MaxArgumentBytes = 4 * 1024 * 1024;
		size_t MaxCalls = 64;
	};

	/** A piece of an answer as it comes. Bytes: a character may be cut in two. */
	struct FReplyPiece
	{
		enum class EKind
		{
			Text,
			Thinking,
			CallName,
			CallArguments
		};
		EKind Kind = EKind::Text;
		std::string_view Bytes;
	};

	/**
	 * Puts an answer together from its pieces: text, thinking (also between <think> and </think> at the beginning of
	 * the text), calls that come in parts and in any order. Memory is bounded. One thread at a time.
	 */
	class VELMORAWIRE_API FReplyBuilder
	{
	public:
		using FOnPiece = std::function<void(const FReplyPiece&)>;

		explicit FReplyBuilder(FOnPiece InOnPiece = nullptr, const FReplyLimits& InLimits = FReplyLimits());

		/** Takes a large text over instead of copying it. */
		void AddText(std::string&& Bytes);
		void AddThinking(std::string_view Bytes);

		/**
		 * A part of a call; each of its texts may be empty.
		 *
		 * @param Index  The server's number of the call, negative when it gives none: then id or name tell where a call begins.
		 */
		void AddCall(int Index, std::string_view Id, std::string_view Name, std::string_view Arguments);

		void SetFinish(EModelFinish Finish) { Reply.Finish = Finish; }
		void SetUsage(const FModelUsage& Usage) { Reply.Usage = Usage; }
		void SetModel(std::string_view Model);

		/** The first problem counts. */
		void Fail(EModelFault Fault, std::string Detail);
		void Fail(FModelProblem&& Problem);
		bool HasFailed() const { return static_cast<bool>(Reply.Problem); }

		/** The server has given a reason for the end of the answer. */
		bool HasFinish() const { return Reply.Finish != EModelFinish::Missing; }

		/** The server has said that this was all. */
		void SetEnded() { bHasEnded = true; }
		bool HasEnded() const { return bHasEnded; }

		/** Neither text nor thinking nor a call has come. */
		bool IsEmpty() const;

		/**
		 * The whole answer: broken characters are replaced, every call has an id of its own, empty arguments are an empty object.
		 *
		 * @param Key  Taken out wherever it stands.
		 */
		FModelReply Take(std::string_view Key);

	private:
		struct FOpenCall
		{
			FModelCall Call;
			int Index = -1;
		};

		/** Whether the text begins with thinking. */
		enum class EOpening
		{
			Undecided,
			Thinks,
			Answers
		};

		void KeepText(std::string&& Bytes);
		void KeepThinking(std::string_view Bytes);
		void ReadOpening();

		/** The call that a part belongs to, null when it begins one. */
		FOpenCall* FindCall(int Index, std::string_view Id, std::string_view Name, std::string_view Arguments);
		void Tell(FReplyPiece::EKind Kind, std::string_view Bytes) const;

		const FOnPiece OnPiece;
		const FReplyLimits Limits;
		FModelReply Reply;
		std::vector<FOpenCall> Calls;
		size_t ArgumentBytes = 0;
		EOpening Opening = EOpening::Undecided;

		/** Text that may be the beginning of a mark. */
		std::string Held;
		bool bHasEnded = false;

		/** The parts that come now belong to a call that is left out. */
		bool bDropsCall = false;
	};
}
