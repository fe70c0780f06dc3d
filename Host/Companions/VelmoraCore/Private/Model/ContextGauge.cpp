#include "Model/ContextGauge.h"

#include <algorithm>

#include "Model/Transcript.h"

namespace Velmora
{
	namespace
	{
		/** As text and code go, at least. */
		constexpr double UsualBytesPerToken = 3.0;

		/** What a server counts may be wrong, but no more than so. */
		constexpr double MinBytesPerToken = 0.5;
		constexpr double MaxBytesPerToken = 6.0;

		/** The rest is the answer's. */
		constexpr double RequestShare = 0.8;

		/** Without a figure of the server's: more than models take that do not say so. */
		constexpr size_t UnknownContextBytes = 3200 * 1024;

		/** Servers stop some tokens early. */
		constexpr double FullShare = 0.97;

		size_t MeasureTools(const std::vector<FModelTool>& Tools)
		{
			size_t Bytes = 0;
			for (const FModelTool& Tool : Tools)
			{
				Bytes += Tool.Name.size() + Tool.Description.size() + Tool.Parameters.size() + 80;
			}
			return Bytes;
		}

		double DivideTokens(const FModelRequest& Request, int64_t Tokens)
		{
			const size_t Bytes = Transcript::Measure(Request.Messages) + MeasureTools(Request.Tools);
			return std::clamp(static_cast<double>(Bytes) / static_cast<double>(Tokens), MinBytesPerToken, MaxBytesPerToken);
		}
	}

	FContextGauge::FContextGauge(int64_t InContextTokens)
		: ContextTokens(InContextTokens)
		, BytesPerToken(UsualBytesPerToken)
	{
	}

	void FContextGauge::Learn(const FModelRequest& Request, const FModelUsage& Usage)
	{
		if (Usage.PromptTokens > 0)
		{
			BytesPerToken = DivideTokens(Request, Usage.PromptTokens);
		}
	}

	void FContextGauge::LearnRefusal(const FModelRequest& Request)
	{
		if (ContextTokens > 0)
		{
			BytesPerToken = std::min(BytesPerToken, DivideTokens(Request, ContextTokens));
		}
	}

	int64_t FContextGauge::Estimate(size_t Bytes) const
	{
		return static_cast<int64_t>(static_cast<double>(Bytes) / BytesPerToken);
	}

	size_t FContextGauge::GetRoom(const std::vector<FModelTool>& Tools) const
	{
		if (ContextTokens <= 0)
		{
			return UnknownContextBytes;
		}
		const size_t Room = static_cast<size_t>(static_cast<double>(ContextTokens) * BytesPerToken * RequestShare);
		const size_t ToolBytes = MeasureTools(Tools);
		// A model too small for the tools is still told the last message.
		return std::max(Room - std::min(Room, ToolBytes), Room / 4);
	}

	bool FContextGauge::IsFull(const FModelUsage& Usage) const
	{
		return ContextTokens > 0 && Usage.PromptTokens > 0 && Usage.CompletionTokens >= 0 &&
			static_cast<double>(Usage.PromptTokens + Usage.CompletionTokens) >= static_cast<double>(ContextTokens) * FullShare;
	}
}
