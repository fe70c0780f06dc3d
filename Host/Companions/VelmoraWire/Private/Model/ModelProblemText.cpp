#include <algorithm>
#include <iterator>

#include "Http/WebAddress.h"
#include "Model/ModelClient.h"
#include "Text/WireText.h"

namespace Velmora
{
	namespace
	{
		/** How a problem is told: {server} and {model} stand for their names. */
		struct FProblemRow
		{
			EModelFault Fault;
			std::string_view What;
			std::string_view ToDo;
		};

		// clang-format off
		constexpr FProblemRow ProblemRows[] = {
			{ EModelFault::None,
				"Something went wrong.",
				"" },
			{ EModelFault::Cancelled,
				"The request was stopped.",
				"" },
			{ EModelFault::BadAddress,
				"The connection to {server} cannot be used",
				"Correct its address, proxy, key or certificate file." },
			{ EModelFault::Unreachable,
				"The server at {server} cannot be reached",
				"Start it or correct the address, then send the message again." },
			{ EModelFault::NotTrusted,
				"The certificate of {server} is not trusted",
				"Give the connection the file of its certificate authority." },
			{ EModelFault::Refused,
				"The server at {server} refused the key",
				"Check the key of the connection and what it may be used for." },
			{ EModelFault::NotFound,
				"The server at {server} does not know the model \"{model}\" or the address",
				"Pick a model that it lists (--list-models) or correct the address." },
			{ EModelFault::Redirected,
				"The server at {server} sends on to another address, which is not followed because of the key",
				"Give the connection the address itself." },
			{ EModelFault::RateLimited,
				"The server at {server} takes no more requests for now",
				"Wait a while, then send the message again." },
			{ EModelFault::Overloaded,
				"The server at {server} has failed or is overloaded",
				"Send the message again in a while." },
			{ EModelFault::ContextFull,
				"The conversation is longer than the model can take",
				"Start a new conversation, attach less, or give the model a larger context." },
			{ EModelFault::NoTools,
				"The model \"{model}\" cannot use tools",
				"Pick another model; without tools it sees no file." },
			{ EModelFault::NoUsage,
				"The server at {server} does not tell its figures",
				"Send the message again." },
			{ EModelFault::BadRequest,
				"The server at {server} refused the request",
				"Check the model and the options of the connection." },
			{ EModelFault::NoModelServer,
				"What answers at {server} is no model server",
				"Correct the address; it often ends with /v1." },
			{ EModelFault::BadAnswer,
				"The server at {server} sent what cannot be read",
				"Send the message again; if it stays so, try another model or server." },
			{ EModelFault::Silent,
				"The server at {server} has been silent for too long",
				"Send the message again, or raise the limits of the connection." },
			{ EModelFault::CutShort,
				"The answer of {server} broke off",
				"Send the message again." },
			{ EModelFault::TooLarge,
				"The answer of {server} is larger than allowed",
				"Ask for less at a time." },
		};
		// clang-format on

		void Replace(std::string& Text, std::string_view Mark, std::string_view Value)
		{
			if (const size_t Found = Text.find(Mark); Found != std::string::npos)
			{
				Text.replace(Found, Mark.size(), Value);
			}
		}
	}

	std::string DescribeProblem(const FModelProblem& Problem, const FModelServer& Server, std::string_view Model)
	{
		const auto Found = std::find_if(
			std::begin(ProblemRows), std::end(ProblemRows), [&Problem](const FProblemRow& Row) { return Row.Fault == Problem.Fault; });
		const FProblemRow& Row = Found != std::end(ProblemRows) ? *Found : ProblemRows[0];
		FWebAddress Address;
		std::string Ignored;
		std::string Text(Row.What);
		Replace(Text, "{server}", FWebAddress::Parse(Server.BaseUrl, Address, Ignored) ? Address.GetOrigin() : "that address");
		Replace(Text, "{model}", WireText::CutUtf8(Model, 200));
		if (!Problem.Detail.empty())
		{
			Text += ": " + Problem.Detail;
		}
		if (!Row.ToDo.empty())
		{
			Text += Text.ends_with('.') ? " " : ". ";
			Text += Row.ToDo;
		}
		return Text;
	}
}
