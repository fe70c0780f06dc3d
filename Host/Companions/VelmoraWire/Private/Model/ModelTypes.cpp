#include "Model/ModelTypes.h"

#include <algorithm>

namespace Velmora
{
	const FModelInfo* FindModel(const std::vector<FModelInfo>& Models, std::string_view Name)
	{
		const auto Find = [&Models](std::string_view Id)
		{
			const auto Found = std::find_if(Models.begin(), Models.end(), [Id](const FModelInfo& Info) { return Info.Id == Id; });
			return Found != Models.end() ? &*Found : nullptr;
		};
		const FModelInfo* const Named = Find(Name);
		return Named ? Named : Find(std::string(Name) + ":latest");
	}
}
