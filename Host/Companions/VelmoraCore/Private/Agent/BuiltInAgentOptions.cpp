#include "Host/BuiltInAgentOptions.h"

namespace Velmora
{
	namespace
	{
		FBuiltInAgentOptions& CurrentAgentOptions()
		{
			static FBuiltInAgentOptions Options;
			return Options;
		}
	}

	const FBuiltInAgentOptions& GetBuiltInAgentOptions()
	{
		return CurrentAgentOptions();
	}

	void SetBuiltInAgentOptions(const FBuiltInAgentOptions& Options)
	{
		CurrentAgentOptions() = Options;
	}
}
