#include "Model/ReplyBuilder.h"

#include <algorithm>
#include <unordered_set>
#include <utility>
#include <vector>

#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include "Text/WireText.h"

namespace Velmora
{
	namespace
	{
		constexpr std::string_view ThinkMark = "<think>";
		constexpr std::string_view ThinkEndMark = "</think>";
		constexpr std::string_view Whitespace = " \t\r\n";
		constexpr size_t MaxNameBytes = 256;
		constexpr size_t MaxDetailBytes = 1000;

		/** Blanks before the text in which the mark of thinking may still come. */
		constexpr size_t MaxOpeningBytes = 4096;

		/** A text of which a second copy would count. */
		constexpr size_t LargeBytes = 1024 * 1024;

		/** Whether nothing more can be a part of these arguments. */
		bool AreComplete(std::string_view Arguments)
		{
			rapidjson::MemoryStream Stream(Arguments.data(), Arguments.size());
			rapidjson::Reader Reader;
			rapidjson::BaseReaderHandler<> Nobody;
			return !Reader.Parse<rapidjson::kParseIterativeFlag>(Stream, Nobody).IsError();
		}

		/** Where the thinking ends of a model whose server has swallowed the mark of its beginning; npos when nothing looks so. */
		size_t FindLoneThinkEnd(std::string_view Text)
		{
			const size_t End = Text.find(ThinkEndMark);
			if (End == std::string_view::npos || Text.substr(0, End).find(ThinkMark) != std::string_view::npos)
			{
				return std::string_view::npos;
			}
			// On a line of its own and in no block of code: an answer may be about such marks.
			const size_t After = End + ThinkEndMark.size();
			const bool bIsLine =
				(End == 0 || Text[End - 1] == '\n') && (After == Text.size() || Text[After] == '\n' || Text[After] == '\r');
			bool bIsCode = false;
			for (size_t Fence = Text.find("```"); Fence < End; Fence = Text.find("```", Fence + 3))
			{
				bIsCode = !bIsCode;
			}
			return bIsLine && !bIsCode ? End : std::string_view::npos;
		}

		/** What a server says, as one line. */
		std::string MakeOneLine(std::string Text)
		{
			Text = WireText::RepairUtf8(std::string(WireText::CutUtf8(Text, MaxDetailBytes)));
			std::string Line;
			for (const char Byte : Text)
			{
				const bool bIsBlank = static_cast<unsigned char>(Byte) <= 0x20 || Byte == 0x7F;
				if (!bIsBlank)
				{
					Line += Byte;
				}
				else if (!Line.empty() && Line.back() != ' ')
				{
					Line += ' ';
				}
			}
			while (Line.ends_with(' '))
			{
				Line.pop_back();
			}
			return Line;
		}

		/** Each call gets an id of its own, since its result is found by it. */
		void FinishCalls(std::vector<FModelCall>& Calls, std::string_view Key)
		{
			std::unordered_set<std::string> Ids;
			int Number = 0;
			for (FModelCall& Call : Calls)
			{
				for (std::string* Text : { &Call.Id, &Call.Name, &Call.Arguments })
				{
					*Text = WireText::RepairUtf8(std::move(*Text));
					// Calls are stored and go to whatever server answers next.
					WireText::HideKey(*Text, Key);
				}
				while (Call.Id.empty() || !Ids.insert(Call.Id).second)
				{
					Call.Id = "call_" + std::to_string(++Number);
				}
				if (Call.Arguments.find_first_not_of(Whitespace) == std::string::npos || Call.Arguments == "null")
				{
					Call.Arguments = "{}";
				}
			}
		}

		void FinishTexts(FModelReply& Reply, std::string_view Key)
		{
			// 1. What only separated thinking from the answer goes.
			if (const size_t End = Reply.Thinking.empty() ? FindLoneThinkEnd(Reply.Text) : std::string::npos; End != std::string::npos)
			{
				Reply.Thinking = Reply.Text.substr(0, End);
				Reply.Text.erase(0, End + ThinkEndMark.size());
			}
			Reply.Text = WireText::RepairUtf8(std::move(Reply.Text));
			// It would end the text for whoever reads it as one that ends so.
			std::erase(Reply.Text, '\0');
			if (!Reply.Thinking.empty())
			{
				Reply.Text.erase(0, std::min(Reply.Text.find_first_not_of(Whitespace), Reply.Text.size()));
			}
			Reply.Thinking = WireText::RepairUtf8(std::move(Reply.Thinking));
			Reply.Model = WireText::RepairUtf8(std::move(Reply.Model));

			// 2. The key goes, from the problem before it is cut as well, since half a key is one that nobody would find.
			WireText::HideKey(Reply.Problem.Detail, Key);
			Reply.Problem.Detail = MakeOneLine(std::move(Reply.Problem.Detail));
			for (std::string* Text : { &Reply.Text, &Reply.Thinking, &Reply.Model, &Reply.Problem.Detail })
			{
				WireText::HideKey(*Text, Key);
			}
		}
	}

	FReplyBuilder::FReplyBuilder(FOnPiece InOnPiece, const FReplyLimits& InLimits)
		: OnPiece(std::move(InOnPiece))
		, Limits(InLimits)
	{
	}

	void FReplyBuilder::Tell(FReplyPiece::EKind Kind, std::string_view Bytes) const
	{
		if (OnPiece && !Bytes.empty())
		{
			OnPiece({ Kind, Bytes });
		}
	}

	void FReplyBuilder::AddText(std::string&& Bytes)
	{
		if (Opening == EOpening::Answers)
		{
			KeepText(std::move(Bytes));
			return;
		}
		if (Held.empty() && Bytes.size() > LargeBytes)
		{
			Held = std::move(Bytes);
		}
		else
		{
			Held += Bytes;
		}
		ReadOpening();
	}

	void FReplyBuilder::ReadOpening()
	{
		if (Opening == EOpening::Undecided)
		{
			const size_t Start = Held.find_first_not_of(Whitespace);
			if (Start == std::string::npos)
			{
				// Nothing but blanks for ever is an answer as well: it counts against what one may have.
				if (Held.size() > MaxOpeningBytes)
				{
					Opening = EOpening::Answers;
					KeepText(std::exchange(Held, std::string()));
				}
				return;
			}
			const std::string_view Rest = std::string_view(Held).substr(Start);
			if (Rest.size() < ThinkMark.size() && ThinkMark.starts_with(Rest))
			{
				return;
			}
			if (!Rest.starts_with(ThinkMark))
			{
				Opening = EOpening::Answers;
				KeepText(std::exchange(Held, std::string()));
				return;
			}
			Opening = EOpening::Thinks;
			Held.erase(0, Start + ThinkMark.size());
		}
		const size_t End = Held.find(ThinkEndMark);
		if (End == std::string::npos)
		{
			const size_t KeptLength = WireText::MeasurePartialMark(Held, ThinkEndMark);
			KeepThinking(std::string_view(Held).substr(0, Held.size() - KeptLength));
			Held.erase(0, Held.size() - KeptLength);
			return;
		}
		KeepThinking(std::string_view(Held).substr(0, End));
		Opening = EOpening::Answers;
		KeepText(std::exchange(Held, std::string()).substr(End + ThinkEndMark.size()));
	}

	void FReplyBuilder::KeepText(std::string&& Bytes)
	{
		const size_t Room = Limits.MaxTextBytes - Reply.Text.size();
		if (Bytes.size() > Room)
		{
			Bytes.resize(Room);
			Fail(EModelFault::TooLarge, std::string());
		}
		Tell(FReplyPiece::EKind::Text, Bytes);
		if (Reply.Text.empty() && Bytes.size() > LargeBytes)
		{
			// A whole answer in one piece is not kept twice.
			Reply.Text = std::move(Bytes);
			return;
		}
		Reply.Text += Bytes;
	}

	void FReplyBuilder::AddThinking(std::string_view Bytes)
	{
		KeepThinking(Bytes);
	}

	void FReplyBuilder::KeepThinking(std::string_view Bytes)
	{
		Reply.Thinking += Bytes.substr(0, Limits.MaxThinkingBytes - Reply.Thinking.size());
		Tell(FReplyPiece::EKind::Thinking, Bytes);
	}

	FReplyBuilder::FOpenCall* FReplyBuilder::FindCall(int Index, std::string_view Id, std::string_view Name, std::string_view Arguments)
	{
		// Without a number the id tells which call is meant; a name begins one, anything else goes on with the latest.
		if (Index < 0)
		{
			const auto Found =
				std::find_if(Calls.rbegin(), Calls.rend(), [Id](const FOpenCall& Open) { return !Id.empty() && Open.Call.Id == Id; });
			return Found != Calls.rend() ? &*Found : Name.empty() && !Calls.empty() ? &Calls.back() : nullptr;
		}
		const auto Found = std::find_if(Calls.rbegin(), Calls.rend(), [Index](const FOpenCall& Open) { return Open.Index == Index; });
		if (Found == Calls.rend())
		{
			return nullptr;
		}
		// Some servers give every call the number 0: a part with a name and another id begins a call of its own, and without ids one
		// whose arguments begin anew.
		const bool bHasIds = !Id.empty() && !Found->Call.Id.empty();
		const bool bBeginsAnother = !Name.empty() &&
			(bHasIds ? Found->Call.Id != Id : Id.empty() && Arguments.starts_with('{') && AreComplete(Found->Call.Arguments));
		return bBeginsAnother ? nullptr : &*Found;
	}

	void FReplyBuilder::AddCall(int Index, std::string_view Id, std::string_view Name, std::string_view Arguments)
	{
		FOpenCall* Open = FindCall(Index, Id, Name, Arguments);
		if (!Open && Calls.size() < Limits.MaxCalls)
		{
			Calls.push_back({ FModelCall(), Index });
			Open = &Calls.back();
		}
		if (!Open || (bDropsCall && Name.empty() && Index < 0))
		{
			Reply.DroppedCalls += !Name.empty();
			bDropsCall = true;
			return;
		}
		bDropsCall = false;
		if (Open->Call.Id.empty())
		{
			Open->Call.Id = Id.substr(0, MaxNameBytes);
		}
		if (!Name.empty() && Open->Call.Name != Name && Open->Call.Name.size() + Name.size() <= MaxNameBytes)
		{
			Open->Call.Name += Name;
			Tell(FReplyPiece::EKind::CallName, Name);
		}
		if (Open->Call.bIsTooLarge)
		{
			return;
		}
		if (ArgumentBytes + Arguments.size() > Limits.MaxArgumentBytes)
		{
			ArgumentBytes -= Open->Call.Arguments.size();
			std::string().swap(Open->Call.Arguments);
			Open->Call.bIsTooLarge = true;
			return;
		}
		ArgumentBytes += Arguments.size();
		Open->Call.Arguments += Arguments;
		Tell(FReplyPiece::EKind::CallArguments, Arguments);
	}

	void FReplyBuilder::SetModel(std::string_view Model)
	{
		if (Reply.Model.empty())
		{
			Reply.Model = WireText::CutUtf8(Model, MaxNameBytes);
		}
	}

	void FReplyBuilder::Fail(EModelFault Fault, std::string Detail)
	{
		FModelProblem Problem;
		Problem.Fault = Fault;
		Problem.Detail = std::move(Detail);
		Fail(std::move(Problem));
	}

	void FReplyBuilder::Fail(FModelProblem&& Problem)
	{
		if (!HasFailed())
		{
			Reply.Problem = std::move(Problem);
		}
	}

	bool FReplyBuilder::IsEmpty() const
	{
		return Reply.Text.empty() && Reply.Thinking.empty() && Calls.empty() && Held.empty();
	}

	FModelReply FReplyBuilder::Take(std::string_view Key)
	{
		// 1. What was held back is what it looks like after all.
		if (Opening == EOpening::Thinks)
		{
			KeepThinking(std::exchange(Held, std::string()));
		}
		else
		{
			KeepText(std::exchange(Held, std::string()));
		}

		// 2. The server's numbers are the order in which calls are meant, whichever came first.
		std::unordered_set<int> Numbers;
		if (std::all_of(Calls.begin(), Calls.end(),
				[&Numbers](const FOpenCall& Open) { return Open.Index >= 0 && Numbers.insert(Open.Index).second; }))
		{
			std::sort(Calls.begin(), Calls.end(), [](const FOpenCall& A, const FOpenCall& B) { return A.Index < B.Index; });
		}
		for (FOpenCall& Open : Calls)
		{
			Reply.Calls.push_back(std::move(Open.Call));
		}

		// 3. What came is made sound, and the key is taken out.
		FinishCalls(Reply.Calls, Key);
		FinishTexts(Reply, Key);
		return std::move(Reply);
	}
}
