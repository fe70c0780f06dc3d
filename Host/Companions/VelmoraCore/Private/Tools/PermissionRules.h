#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "Host/Outcome.h"

namespace Velmora
{
	/** One answer that holds for good: a tool and the beginning of what it acts on, compared to the letter. UTF-8. */
	struct FPermissionRule
	{
		bool bAllows = false;
		std::string Tool;

		/** Empty for everything that the tool acts on. */
		std::string Prefix;

		bool operator==(const FPermissionRule&) const = default;
	};

	enum class EPermission
	{
		Ask, // No rule speaks of it.
		Allowed,
		Denied // Beats every rule that allows.
	};

	/**
	 * What the user has allowed and refused for good in one project. Kept in a file in the user's own folder, never in the
	 * project, and read again each time, so that two programs agree. Any thread.
	 */
	class FPermissionRules
	{
	public:
		/**
		 * @param InPath          The file; neither it nor its folder need exist.
		 * @param InAllowedCalls  Beginnings of "tool subject" that are allowed for this run and stored nowhere.
		 */
		explicit FPermissionRules(std::string InPath, std::vector<std::string> InAllowedCalls = {});

		/** While the rules cannot be read nothing is allowed. */
		EPermission Judge(std::string_view Tool, std::string_view Subject) const;

		/** In the order in which they were made. A line that cannot be read is passed over, and allows nothing. */
		std::vector<FPermissionRule> List() const;

		// Empty, or a sentence that says why the file stays as it is.
		[[nodiscard]] std::string Add(const FPermissionRule& Rule);
		[[nodiscard]] std::string Remove(const FPermissionRule& Rule);

	private:
		/** What is not there holds no rules; what is there and cannot be read says why not. */
		TOutcome<std::vector<FPermissionRule>> Read() const;

		/** Lets Edit change them and writes them if it did, with other programs kept out. */
		std::string Change(const std::function<bool(std::vector<FPermissionRule>&)>& Edit);
		std::string Write(const std::vector<FPermissionRule>& Rules) const;

		const std::string Path;
		const std::vector<std::string> AllowedCalls;

		/** Held while the file is read and written. */
		mutable std::mutex Mutex;
	};
}
