#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Velmora
{
	/** The arguments of one call by name: texts as bytes, numbers and booleans as their text, lists of objects as such. */
	class FToolArguments
	{
	public:
		/**
		 * Reads the JSON object of a model's call. Nulls count as left out; a list of texts is a list of objects whose one
		 * argument is called "text".
		 *
		 * @param Json        UTF-8. Empty stands for no arguments.
		 * @param OutProblem  A clause on failure.
		 */
		static bool Parse(std::string_view Json, FToolArguments& Out, std::string& OutProblem);

		FToolArguments& Set(std::string_view Name, std::string Value);
		FToolArguments& Add(std::string_view Name, FToolArguments Item);

		bool Has(std::string_view Name) const { return Texts.find(Name) != Texts.end(); }
		bool HasList(std::string_view Name) const { return Lists.find(Name) != Lists.end(); }

		/** Empty when it was left out. */
		const std::string& GetText(std::string_view Name) const;

		/** The default when it was left out. False when it is no whole number from 0 on. */
		bool GetNumber(std::string_view Name, int Default, int& Out) const;
		const std::vector<FToolArguments>& GetList(std::string_view Name) const;

		/** Names of everything that was given, in order. */
		std::vector<std::string> GetNames() const;

	private:
		std::map<std::string, std::string, std::less<>> Texts;
		std::map<std::string, std::vector<FToolArguments>, std::less<>> Lists;
	};
}
