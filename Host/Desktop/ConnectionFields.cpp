#include "ConnectionFields.h"

#include "Host/HostNumbers.h"
#include "Misc/CString.h"

#define LOCTEXT_NAMESPACE "ConnectionFields"

namespace
{
	using Velmora::FAgentConnection;

	template <FString FAgentConnection::*Member>
	FString GetText(const FAgentConnection& Connection)
	{
		return Connection.*Member;
	}
	template <FString FAgentConnection::*Member>
	FString SetText(FAgentConnection& Connection, const FString& Text)
	{
		// Addresses and paths are pasted, with blanks around them more often than not.
		Connection.*Member = Text.TrimStartAndEnd();
		return FString();
	}

	/** Zero, which stands for "no limit" or "what the server says", is an empty box. */
	template <auto Member>
	FString GetNumber(const FAgentConnection& Connection)
	{
		const double Value = static_cast<double>(Connection.*Member);
		return Value == 0.0 ? FString() : HostNumberToText(Value, std::chars_format::fixed);
	}

	/** @param Least  The smallest number that means something; an empty box means zero where that is allowed. */
	template <auto Member, int64 Least, int64 Most>
	FString SetNumber(FAgentConnection& Connection, const FString& Text)
	{
		using FNumber = std::remove_reference_t<decltype(Connection.*Member)>;
		const FString Trimmed = Text.TrimStartAndEnd();
		const bool bIsWhole = std::is_integral_v<FNumber>;
		const double Value = Trimmed.IsEmpty() ? 0.0 : FCString::Atod(*Trimmed);
		const bool bIsNumber = Trimmed.IsEmpty() || (Trimmed.IsNumeric() && !(bIsWhole && Trimmed.Contains(TEXT("."))));
		if (!bIsNumber || Value < static_cast<double>(Least) || Value > static_cast<double>(Most))
		{
			return FString::Printf(TEXT("This wants a %s from %lld to %lld."), bIsWhole ? TEXT("whole number") : TEXT("number"),
				static_cast<long long>(Least), static_cast<long long>(Most));
		}
		Connection.*Member = static_cast<FNumber>(Value);
		return FString();
	}

	constexpr int64 ManyTokens = 1000000000;
}

const TArray<FConnectionFieldGroup>& GetConnectionFields()
{
	using C = FAgentConnection;
	// clang-format off
	static const TArray<FConnectionFieldGroup> Groups = {
		{ LOCTEXT("Server", "Server"), {
			{ TEXT("ConnectionUrl"), LOCTEXT("Url", "Base URL"), LOCTEXT("UrlHint", "http://127.0.0.1:8080/v1"),
				LOCTEXT("UrlTip", "Where the server is, with or without /v1"), &GetText<&C::Url>, &SetText<&C::Url> },
			{ TEXT("ConnectionKeyVariable"), LOCTEXT("KeyVariable", "Key Variable"), LOCTEXT("KeyVariableHint", "EXAMPLE_API_KEY"),
				LOCTEXT("KeyVariableTip", "The environment variable that holds the key; no child of this program gets it"),
				&GetText<&C::KeyVariable>, &SetText<&C::KeyVariable> },
			{ TEXT("ConnectionCaFile"), LOCTEXT("CaFile", "CA File"), LOCTEXT("CaFileHint", "the system's certificates"),
				LOCTEXT("CaFileTip", "A file with certificates to trust instead of the system's"),
				&GetText<&C::CaFile>, &SetText<&C::CaFile> },
			{ TEXT("ConnectionProxy"), LOCTEXT("Proxy", "Proxy"), LOCTEXT("ProxyHint", "what the environment says"),
				LOCTEXT("ProxyTip", "Never used for servers on this machine"), &GetText<&C::Proxy>, &SetText<&C::Proxy> } } },
		{ LOCTEXT("ModelGroup", "Model"), {
			{ TEXT("ConnectionContext"), LOCTEXT("Context", "Context Tokens"), LOCTEXT("ContextHint", "what the server says"),
				LOCTEXT("ContextTip", "How long a conversation may become before its oldest parts are shortened"),
				&GetNumber<&C::ContextTokens>, &SetNumber<&C::ContextTokens, 0, ManyTokens> },
			{ TEXT("ConnectionOptions"), LOCTEXT("Options", "Sampling Options"), LOCTEXT("OptionsHint", "{\"temperature\": 0.2}"),
				LOCTEXT("OptionsTip", "A JSON object whose members go into every request as they stand"),
				&GetText<&C::Options>, &SetText<&C::Options> } } },
		{ LOCTEXT("Limits", "Limits"), {
			{ TEXT("ConnectionRounds"), LOCTEXT("Rounds", "Rounds per Turn"), FText::GetEmpty(),
				LOCTEXT("RoundsTip", "After so many requests in one turn you are asked whether it may go on"),
				&GetNumber<&C::MaxRounds>, &SetNumber<&C::MaxRounds, 1, 1000> },
			{ TEXT("ConnectionTurnTokens"), LOCTEXT("TurnTokens", "Tokens per Turn"), LOCTEXT("NoLimit", "no limit"),
				LOCTEXT("AskTip", "Beyond it you are asked whether it may go on"),
				&GetNumber<&C::MaxTurnTokens>, &SetNumber<&C::MaxTurnTokens, 0, ManyTokens> },
			{ TEXT("ConnectionDayTokens"), LOCTEXT("DayTokens", "Tokens per Day"), LOCTEXT("NoLimit", "no limit"),
				LOCTEXT("AskTip", "Beyond it you are asked whether it may go on"),
				&GetNumber<&C::MaxDayTokens>, &SetNumber<&C::MaxDayTokens, 0, ManyTokens> },
			{ TEXT("ConnectionTurnCost"), LOCTEXT("TurnCost", "Cost per Turn"), LOCTEXT("NoLimit", "no limit"),
				LOCTEXT("AskTip", "Beyond it you are asked whether it may go on"),
				&GetNumber<&C::MaxTurnCost>, &SetNumber<&C::MaxTurnCost, 0, 1000000> },
			{ TEXT("ConnectionDayCost"), LOCTEXT("DayCost", "Cost per Day"), LOCTEXT("NoLimit", "no limit"),
				LOCTEXT("AskTip", "Beyond it you are asked whether it may go on"),
				&GetNumber<&C::MaxDayCost>, &SetNumber<&C::MaxDayCost, 0, 1000000> } } },
		{ LOCTEXT("Prices", "Prices for a Million Tokens"), {
			{ TEXT("ConnectionPromptPrice"), LOCTEXT("PromptPrice", "Prompt"), LOCTEXT("NotCounted", "not counted"),
				LOCTEXT("PriceTip", "In your currency; what a request costs is shown in Agent Activity"),
				&GetNumber<&C::PromptPrice>, &SetNumber<&C::PromptPrice, 0, 1000000> },
			{ TEXT("ConnectionCompletionPrice"), LOCTEXT("CompletionPrice", "Answer"), LOCTEXT("NotCounted", "not counted"),
				LOCTEXT("PriceTip", "In your currency; what a request costs is shown in Agent Activity"),
				&GetNumber<&C::CompletionPrice>, &SetNumber<&C::CompletionPrice, 0, 1000000> } } },
		{ LOCTEXT("Timeouts", "Seconds to Wait"), {
			{ TEXT("ConnectionConnectSeconds"), LOCTEXT("ConnectSeconds", "For the Connection"), FText::GetEmpty(), FText::GetEmpty(),
				&GetNumber<&C::ConnectSeconds>, &SetNumber<&C::ConnectSeconds, 1, 3600> },
			{ TEXT("ConnectionFirstByteSeconds"), LOCTEXT("FirstByteSeconds", "For the First Byte"), FText::GetEmpty(),
				LOCTEXT("FirstByteTip", "A server on this machine may have to load the model first"),
				&GetNumber<&C::FirstByteSeconds>, &SetNumber<&C::FirstByteSeconds, 1, 3600> },
			{ TEXT("ConnectionSilenceSeconds"), LOCTEXT("SilenceSeconds", "Within an Answer"), FText::GetEmpty(), FText::GetEmpty(),
				&GetNumber<&C::SilenceSeconds>, &SetNumber<&C::SilenceSeconds, 1, 3600> } } },
	};
	// clang-format on
	return Groups;
}

#undef LOCTEXT_NAMESPACE
