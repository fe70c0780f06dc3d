#pragma once

#include <string>

/** What the user has agreed to in this run of the program, so that it is asked once. Any thread. */
namespace Velmora::ModelConsents
{
	bool Has(const std::string& Project, const std::string& Tool, const std::string& Subject);
	void Add(const std::string& Project, const std::string& Tool, const std::string& Subject);

	/** Whether something may go to that server, from whatever project. */
	bool HasAnswered(const std::string& Origin);
}
