#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Model/ModelTypes.h"

namespace Velmora
{
	/**
	 * How much text a request may have, so that its answer has room. Tokens are the model's own; how many bytes one has is taken from
	 * what the server has counted of earlier requests, and is a careful guess before that. On the turn's worker.
	 */
	class FContextGauge
	{
	public:
		explicit FContextGauge(int64_t InContextTokens);

		/** Of the model; 0 when nobody says. */
		void SetContext(int64_t Tokens) { ContextTokens = Tokens; }
		int64_t GetContext() const { return ContextTokens; }

		/** What the server has counted of a request; what it did not count teaches nothing. */
		void Learn(const FModelRequest& Request, const FModelUsage& Usage);

		/** A request was more than the model takes. */
		void LearnRefusal(const FModelRequest& Request);

		int64_t Estimate(size_t Bytes) const;

		/** What the messages of a request may have, in bytes as Transcript::Measure counts them. The tools go with each request. */
		size_t GetRoom(const std::vector<FModelTool>& Tools) const;

		/** An answer that was cut had no room left in the model, whatever limit of its own it has. */
		bool IsFull(const FModelUsage& Usage) const;

	private:
		int64_t ContextTokens = 0;
		double BytesPerToken;
	};
}
