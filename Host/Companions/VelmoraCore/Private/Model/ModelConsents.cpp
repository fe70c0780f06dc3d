#include "Model/ModelConsents.h"

#include <algorithm>
#include <mutex>
#include <set>
#include <tuple>

namespace Velmora::ModelConsents
{
	namespace
	{
		/** Project, tool and subject. */
		using FConsent = std::tuple<std::string, std::string, std::string>;

		struct FConsents
		{
			std::mutex Mutex;
			std::set<FConsent> Given;
		};

		FConsents& GetConsents()
		{
			static FConsents Consents;
			return Consents;
		}
	}

	bool Has(const std::string& Project, const std::string& Tool, const std::string& Subject)
	{
		FConsents& Consents = GetConsents();
		const std::scoped_lock Lock(Consents.Mutex);
		return Consents.Given.count({ Project, Tool, Subject }) > 0;
	}

	void Add(const std::string& Project, const std::string& Tool, const std::string& Subject)
	{
		FConsents& Consents = GetConsents();
		const std::scoped_lock Lock(Consents.Mutex);
		Consents.Given.insert({ Project, Tool, Subject });
	}

	bool HasAnswered(const std::string& Origin)
	{
		FConsents& Consents = GetConsents();
		const std::scoped_lock Lock(Consents.Mutex);
		return std::any_of(Consents.Given.begin(), Consents.Given.end(),
			[&Origin](const FConsent& Consent) { return std::get<1>(Consent) == "connect" && std::get<2>(Consent) == Origin; });
	}
}
