#include "Model/Transcript.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "Text/Utf8Text.h"
#include "Text/WireText.h"

namespace Velmora::Transcript
{
	namespace
	{
		using FWriter = rapidjson::Writer<rapidjson::StringBuffer>;

		/** Of a result that is shortened this much stays. In bytes. */
		constexpr size_t KeptResultBytes = 400;

		constexpr std::string_view MissingResult = "There is no result: the turn was stopped before this call was done.";
		constexpr std::string_view LeftOutNote = "[The beginning of this conversation was left out, since it was too long.]";

		constexpr std::string_view TooLargeNote =
			"\n[The rest was left out: it is more than fits. Ask for less at a time: some lines, one folder, rarer words.]";

		void WriteMember(FWriter& Writer, std::string_view Name, std::string_view Text)
		{
			Writer.Key(Name.data(), static_cast<rapidjson::SizeType>(Name.size()));
			Writer.String(Text.data(), static_cast<rapidjson::SizeType>(Text.size()));
		}

		std::string GetText(const rapidjson::Value& Object, const char* Name)
		{
			const auto Member = Object.FindMember(Name);
			return Member != Object.MemberEnd() && Member->value.IsString()
				? std::string(Member->value.GetString(), Member->value.GetStringLength())
				: std::string();
		}

		/** What a message of the role Tool holds. */
		struct FTraffic
		{
			std::vector<FModelCall> Calls;
			std::string ResultId;
			std::string ResultText;
			bool bIsResult = false;
		};

		FTraffic ReadTraffic(const std::string& Json)
		{
			FTraffic Traffic;
			rapidjson::Document Parsed;
			Parsed.Parse<rapidjson::kParseIterativeFlag>(Json.data(), Json.size());
			if (Parsed.HasParseError() || !Parsed.IsObject())
			{
				return Traffic;
			}
			if (const auto Calls = Parsed.FindMember("calls"); Calls != Parsed.MemberEnd() && Calls->value.IsArray())
			{
				for (const rapidjson::Value& Call : Calls->value.GetArray())
				{
					if (Call.IsObject() && !GetText(Call, "id").empty())
					{
						Traffic.Calls.push_back({ GetText(Call, "id"), GetText(Call, "name"), GetText(Call, "arguments") });
					}
				}
			}
			if (const auto Result = Parsed.FindMember("result"); Result != Parsed.MemberEnd() && Result->value.IsObject())
			{
				Traffic.bIsResult = true;
				Traffic.ResultId = GetText(Result->value, "id");
				Traffic.ResultText = GetText(Result->value, "text");
			}
			return Traffic;
		}

		/** Puts messages in order, one round of calls and results at a time. */
		class FReader
		{
		public:
			void TakeUser(std::string&& Text)
			{
				// Said while calls were under way: it comes behind their results.
				Later.push_back({ EModelRole::User, std::move(Text), {}, {} });
				if (Calls.empty())
				{
					Flush();
				}
			}

			void TakeAssistant(std::string&& Text)
			{
				Flush();
				Append(Messages, { EModelRole::Assistant, std::move(Text), {}, {} });
			}

			void TakeCalls(std::vector<FModelCall>&& NewCalls)
			{
				Flush();
				if (NewCalls.empty())
				{
					return;
				}
				if (Messages.empty() || Messages.back().Role != EModelRole::Assistant || !Messages.back().Calls.empty())
				{
					Messages.push_back({ EModelRole::Assistant, {}, {}, {} });
				}
				Calls = NewCalls;
				Results.assign(Calls.size(), { EModelRole::Tool, std::string(MissingResult), {}, {} });
				bHasResult.assign(Calls.size(), false);
				Messages.back().Calls = std::move(NewCalls);
			}

			void TakeResult(const std::string& Id, std::string&& Text)
			{
				for (size_t Index = 0; Index < Calls.size(); ++Index)
				{
					if (Calls[Index].Id == Id && !bHasResult[Index])
					{
						Results[Index].Text = std::move(Text);
						bHasResult[Index] = true;
						return;
					}
				}
			}

			std::vector<FModelMessage> Finish()
			{
				Flush();
				std::erase_if(Messages,
					[](const FModelMessage& Message)
					{ return Message.Role == EModelRole::Assistant && Message.Text.empty() && Message.Calls.empty(); });
				return std::move(Messages);
			}

		private:
			void Flush()
			{
				for (size_t Index = 0; Index < Calls.size(); ++Index)
				{
					Results[Index].CallId = Calls[Index].Id;
					Messages.push_back(std::move(Results[Index]));
				}
				Calls.clear();
				for (FModelMessage& Message : Later)
				{
					Append(Messages, std::move(Message));
				}
				Later.clear();
			}

			std::vector<FModelMessage> Messages;
			std::vector<FModelCall> Calls;
			std::vector<FModelMessage> Results;
			std::vector<bool> bHasResult;
			std::vector<FModelMessage> Later;
		};

		/** Where the messages of the turn under way begin: these stay. */
		size_t FindLastUser(const std::vector<FModelMessage>& Messages)
		{
			size_t Index = Messages.size();
			while (Index > 0 && Messages[Index - 1].Role != EModelRole::User)
			{
				--Index;
			}
			return Index > 0 ? Index - 1 : 0;
		}

		/** Where the results begin that the model has not answered to yet; the end when it waits for none. */
		size_t FindNewestResults(const std::vector<FModelMessage>& Messages)
		{
			size_t Index = Messages.size();
			while (Index > 0 && Messages[Index - 1].Role != EModelRole::Assistant)
			{
				--Index;
			}
			return Index > 0 && !Messages[Index - 1].Calls.empty() ? Index : Messages.size();
		}
	}

	FString WriteCalls(const std::vector<FModelCall>& Calls)
	{
		rapidjson::StringBuffer Buffer;
		FWriter Writer(Buffer);
		Writer.StartObject();
		Writer.Key("calls");
		Writer.StartArray();
		for (const FModelCall& Call : Calls)
		{
			Writer.StartObject();
			WriteMember(Writer, "id", Call.Id);
			WriteMember(Writer, "name", Call.Name);
			WriteMember(Writer, "arguments", Call.Arguments);
			Writer.EndObject();
		}
		Writer.EndArray();
		Writer.EndObject();
		return Utf8Text::ToString(std::string_view(Buffer.GetString(), Buffer.GetSize()));
	}

	FString WriteResult(std::string_view CallId, std::string_view Text)
	{
		const std::string Sound = WireText::RepairUtf8(std::string(Text));
		rapidjson::StringBuffer Buffer;
		FWriter Writer(Buffer);
		Writer.StartObject();
		Writer.Key("result");
		Writer.StartObject();
		WriteMember(Writer, "id", CallId);
		WriteMember(Writer, "text", Sound);
		Writer.EndObject();
		Writer.EndObject();
		return Utf8Text::ToString(std::string_view(Buffer.GetString(), Buffer.GetSize()));
	}

	std::vector<FModelMessage> Read(const TArray<FConversationMessage>& Stored)
	{
		FReader Reader;
		for (const FConversationMessage& Message : Stored)
		{
			std::string Text = Utf8Text::FromString(Message.Content);
			if (Message.IsUserMessage())
			{
				Reader.TakeUser(std::move(Text));
			}
			else if (Message.IsAssistantMessage())
			{
				Reader.TakeAssistant(std::move(Text));
			}
			else
			{
				FTraffic Traffic = ReadTraffic(Text);
				if (Traffic.bIsResult)
				{
					Reader.TakeResult(Traffic.ResultId, std::move(Traffic.ResultText));
				}
				else
				{
					Reader.TakeCalls(std::move(Traffic.Calls));
				}
			}
		}
		return Reader.Finish();
	}

	void Append(std::vector<FModelMessage>& Messages, FModelMessage&& Message)
	{
		const bool bJoins = !Messages.empty() && Messages.back().Role == Message.Role && Message.Role != EModelRole::Tool &&
			Messages.back().Calls.empty() && Message.Calls.empty();
		if (!bJoins)
		{
			Messages.push_back(std::move(Message));
			return;
		}
		std::string& Text = Messages.back().Text;
		Text += (Text.empty() || Message.Text.empty() ? "" : "\n\n") + Message.Text;
	}

	size_t Measure(const std::vector<FModelMessage>& Messages)
	{
		size_t Bytes = 0;
		for (const FModelMessage& Message : Messages)
		{
			Bytes += Message.Text.size() + 40;
			for (const FModelCall& Call : Message.Calls)
			{
				Bytes += Call.Arguments.size() + Call.Name.size() + 80;
			}
		}
		return Bytes;
	}

	std::vector<FModelMessage> LeaveOut(std::vector<FModelMessage>& Messages, size_t First, size_t Count)
	{
		const auto Begin = Messages.begin() + static_cast<std::ptrdiff_t>(First);
		const auto Stop = Begin + static_cast<std::ptrdiff_t>(Count);
		std::vector<FModelMessage> Gone(std::make_move_iterator(Begin), std::make_move_iterator(Stop));
		Messages.erase(Begin, Stop);
		Messages[First].Text = std::string(LeftOutNote) + "\n\n" + Messages[First].Text;
		return Gone;
	}

	FShortening Shorten(std::vector<FModelMessage>& Messages, size_t MaxBytes)
	{
		FShortening Shortening;
		size_t Bytes = Measure(Messages);

		const auto CutResult = [&](FModelMessage& Message, size_t Kept, std::string_view Note)
		{
			if (Bytes > MaxBytes && Message.Role == EModelRole::Tool && Message.Text.size() > Kept + KeptResultBytes)
			{
				const size_t Before = Message.Text.size();
				Message.Text = std::string(WireText::CutUtf8(Message.Text, Kept)) + std::string(Note);
				Bytes -= Before - Message.Text.size();
				++Shortening.Results;
			}
		};

		// 1. Results of tools that the model has answered to, the oldest first: it can have them again.
		const size_t Newest = FindNewestResults(Messages);
		for (size_t Index = 0; Index < Newest; ++Index)
		{
			CutResult(Messages[Index], KeptResultBytes, "\n[The rest of this result was left out; call the tool again if it is needed.]");
		}

		// 2. The oldest messages, up to one of the user, so that what is left begins with one.
		const size_t First = !Messages.empty() && Messages.front().Role == EModelRole::System ? 1 : 0;
		const size_t Last = FindLastUser(Messages);
		const bool bIsTooLong = Bytes > MaxBytes;
		size_t End = First;
		for (size_t Index = First; bIsTooLong && Index < Last && (Bytes > MaxBytes || Messages[Index].Role != EModelRole::User); ++Index)
		{
			Bytes -= std::min(Bytes, Measure({ Messages[Index] }));
			End = Index + 1;
		}
		if (End > First)
		{
			Shortening.Messages = LeaveOut(Messages, First, End - First);
			Bytes += LeftOutNote.size() + 2;
		}

		// 3. What it has just asked for, as little as need be. To ask for the same again would bring the same.
		for (size_t Index = std::max(Newest, End) - (End - First); Index < Messages.size(); ++Index)
		{
			const size_t Excess = Bytes - std::min(Bytes, MaxBytes);
			const size_t Size = Messages[Index].Text.size();
			CutResult(Messages[Index], std::max(KeptResultBytes, Size - std::min(Size, Excess + TooLargeNote.size())), TooLargeNote);
		}
		return Shortening;
	}

	void PutSummary(std::vector<FModelMessage>& Messages, std::string_view Summary)
	{
		for (FModelMessage& Message : Messages)
		{
			if (Message.Role == EModelRole::User && Message.Text.starts_with(LeftOutNote))
			{
				Message.Text.replace(0, LeftOutNote.size(),
					"[The beginning of this conversation was left out, since it was too long. A summary of it:]\n" + std::string(Summary));
				return;
			}
		}
	}

	std::string WriteAsText(const std::vector<FModelMessage>& Messages, size_t MaxBytes)
	{
		std::string Text;
		for (const FModelMessage& Message : Messages)
		{
			const char* const Who = Message.Role == EModelRole::User ? "User: "
				: Message.Role == EModelRole::Tool					 ? "Result of a tool: "
																	 : "Assistant: ";
			Text += Who + Message.Text + '\n';
			for (const FModelCall& Call : Message.Calls)
			{
				Text += "Called " + Call.Name + ' ' + Call.Arguments + '\n';
			}
		}
		if (Text.size() <= MaxBytes)
		{
			return Text;
		}
		// What it began with and what was said last count for more than what lies between.
		const std::string_view Head = WireText::CutUtf8(Text, MaxBytes / 2);
		return WireText::RepairUtf8(std::string(Head) + "\n[…]\n" + Text.substr(Text.size() - MaxBytes / 2));
	}
}
