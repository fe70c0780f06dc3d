#include "Turn/LocalTurnRunner.h"

#include <algorithm>

#include "Turn/AnswerMarkdown.h"
#include "Request/AttachedNames.h"
#include "Text/Utf8Text.h"
#include "Host/HostFileNames.h"

namespace Velmora
{
	namespace
	{
		/** Beyond these the answer would be too long to be read. */
		constexpr size_t MaxDescribedAttachments = 10;
	}

	std::vector<std::string> FLocalTurn::GetAttachedNames() const
	{
		std::vector<std::string> Names;
		for (const FProjectPath& File : Attachments)
		{
			const std::string Name = Utf8Text::FromString(HostFileNameFromBytes(File.Relative));
			Names.push_back(Name.substr(Name.rfind('/') + 1));
		}
		return Names;
	}

	void FLocalTurn::ReadRequest(const std::string& Text)
	{
		Request = ParseAgentRequest(Text);
		if (Attachments.empty())
		{
			return;
		}
		const std::vector<std::string> Names = GetAttachedNames();
		if (Request.Kind == ERequestKind::ChangeFiles)
		{
			// A pick puts the bare name into the text, whatever it is made of.
			Request = ParseAgentRequest(QuoteAttachedNames(Text, Names));
			return;
		}
		// "notes.md append … to it": the file was picked first, and what to do with it was typed behind it.
		const std::string_view Rest = SkipAttachedNames(Text, Names);
		if (Rest.size() < Text.size() && !Rest.empty())
		{
			FAgentRequest Behind = ParseAgentRequest(QuoteAttachedNames(Rest, Names));
			if (Behind.Kind == ERequestKind::ChangeFiles && Behind.Change.Kind != EChangeRequest::Unclear)
			{
				Request = std::move(Behind);
			}
		}
	}

	std::vector<FProjectPath> FLocalTurn::FindNamedAttachments(const std::string& Text) const
	{
		std::vector<FProjectPath> Named;
		for (const size_t Index : FindNamesIn(Text, GetAttachedNames()))
		{
			Named.push_back(Attachments[Index]);
		}
		return Named;
	}

	bool FLocalTurn::AnswerAttachments(const std::vector<FProjectPath>& Named)
	{
		if (Named.size() == 1)
		{
			return AnswerDescription(Named.front());
		}
		if (!BeginStep("Reading the attached files"))
		{
			return false;
		}
		std::string Text;
		const size_t Count = std::min(Named.size(), MaxDescribedAttachments);
		for (size_t Index = 0; Index < Count; ++Index)
		{
			if (!DescribeFile(Named[Index], Text))
			{
				return false;
			}
		}
		if (Count < Named.size())
		{
			Text += Utf8Text::Count(Named.size() - Count, "more attached file was", "more attached files were") +
				" not read. Ask about fewer at a time.\n";
		}
		Answer(Text);
		return true;
	}
}
