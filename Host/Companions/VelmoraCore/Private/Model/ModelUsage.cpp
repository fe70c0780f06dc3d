#include "Model/ModelUsage.h"

#include <cstdlib>
#include <map>
#include <mutex>

#include "Changes/PrivateFile.h"
#include "CoreMinimal.h"
#include "Misc/DateTime.h"
#include "Text/Utf8Text.h"

namespace Velmora::ModelUsage
{
	namespace
	{
		constexpr const char* UsageFile = "usage";

		struct FUsage
		{
			std::mutex Mutex;
			std::string Day;
			std::map<std::string, FSpent> ByConnection;
		};

		FUsage& GetUsage()
		{
			static FUsage Usage;
			return Usage;
		}

		std::string GetToday()
		{
			return Utf8Text::FromString(FDateTime::Now().ToString(TEXT("%Y-%m-%d")));
		}

		/**
		 * "DAY<TAB>TOKENS<TAB>COST<TAB>CONNECTION", one a line. Another program of the user's may have written since. False when there is a
		 * file that cannot be read.
		 */
		bool Read(FUsage& Usage)
		{
			const std::string Today = GetToday();
			if (Usage.Day != Today)
			{
				Usage.Day = Today;
				Usage.ByConnection.clear();
			}
			std::string Text;
			std::string Problem;
			const bool bIsKnown = PrivateFile::Read(UsageFile, Text, Problem) || Problem.empty();
			for (const std::string_view Line : Utf8Text::SplitLines(Text))
			{
				const size_t First = Line.find('\t');
				const size_t Second = First == std::string_view::npos ? First : Line.find('\t', First + 1);
				const size_t Third = Second == std::string_view::npos ? Second : Line.find('\t', Second + 1);
				if (Third == std::string_view::npos || Line.substr(0, First) != Today)
				{
					continue;
				}
				// The larger figure: what this run could not write is not forgotten either.
				FSpent& Spent = Usage.ByConnection[std::string(Line.substr(Third + 1))];
				Spent.Tokens = std::max<int64_t>(Spent.Tokens, atoll(std::string(Line.substr(First + 1, Second - First - 1)).c_str()));
				Spent.Cost = std::max(
					Spent.Cost, static_cast<double>(atoll(std::string(Line.substr(Second + 1, Third - Second - 1)).c_str())) / 1.0e6);
			}
			return bIsKnown;
		}
	}

	FSpent GetToday(const std::string& Connection)
	{
		FUsage& Usage = GetUsage();
		const std::scoped_lock Lock(Usage.Mutex);
		Read(Usage);
		return Usage.ByConnection[Connection];
	}

	void Add(const std::string& Connection, const FSpent& Spent)
	{
		FUsage& Usage = GetUsage();
		const std::scoped_lock Lock(Usage.Mutex);
		const FFolderLock Turn = PrivateFile::TakeTurn();
		const bool bMayWrite = Read(Usage); // What others have spent must not be forgotten.
		FSpent& Sum = Usage.ByConnection[Connection];
		Sum.Tokens += Spent.Tokens;
		Sum.Cost += Spent.Cost;
		std::string Text;
		for (const auto& [Name, All] : Usage.ByConnection)
		{
			// Millionths, so that no locale's comma comes between.
			Text += Usage.Day + '\t' + std::to_string(All.Tokens) + '\t' + std::to_string(static_cast<int64_t>(All.Cost * 1.0e6)) + '\t' +
				Name + '\n';
		}
		if (bMayWrite)
		{
			(void)PrivateFile::Write(UsageFile, Text);
		}
	}
}
