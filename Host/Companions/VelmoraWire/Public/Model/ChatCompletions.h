#pragma once

#include "CoreMinimal.h"
#include "Model/ModelDialect.h"

namespace Velmora
{
	/** POST /chat/completions with an answer in server-sent events, as most servers speak it, with what they make of it. */
	class VELMORAWIRE_API FChatCompletions : public IModelDialect
	{
	public:
		virtual FHttpRequest MakeRequest(const FModelServer& Server, const FModelRequest& Request) const override;
		virtual std::unique_ptr<IReplyReader> MakeReader(FReplyBuilder& Builder) const override;
		virtual FHttpRequest MakeListRequest(const FModelServer& Server) const override;
		virtual bool ReadList(std::string_view Body, std::vector<FModelInfo>& OutModels) const override;
		virtual std::vector<FHttpRequest> MakeSizeRequests(const FModelServer& Server, std::string_view Model) const override;
		virtual int64_t ReadSize(std::string_view Body, std::string_view Model) const override;

		/** The base address as users give it, with or without "/v1" or the whole path of the call. Pure. */
		static std::string MakeBaseUrl(std::string_view Address);
	};
}
