#pragma once

#include "Tools/ProjectSummary.h"
#include "Turn/TurnDesk.h"

namespace Velmora
{
	/** Shows, lists, counts and sums up what is in the project. */
	class FBrowseWork : private FTurnWork
	{
	public:
		using FTurnWork::FTurnWork;

		// False when the turn is over.
		bool RunShow();
		bool RunList();
		bool RunCount();
		bool RunSummarise();
		bool AnswerFile(const FProjectPath& File);
		bool AnswerFolder(const FProjectPath& Folder);

		/** Size, outline and beginning of a file. */
		bool AnswerDescription(const FProjectPath& File);

		/** Each of them, when there are several. */
		bool AnswerAttachments(const std::vector<FProjectPath>& Named);

	private:
		/** Adds the size, the outline and the beginning of a file to the answer. */
		bool DescribeFile(const FProjectPath& File, std::string& OutAnswer);
		bool AnswerPattern(const std::string& Pattern);
		bool RunListTool(const FProjectPath& Folder, std::vector<FListedEntry>& OutEntries, bool& bOutIsReadable);
		bool RunCountTool(const FProjectPath& Folder, FFolderCount& OutCount);
		FProjectPath FindCountedPlace() const;

		/** Where something was looked for and not found: a line. */
		std::string DescribeWhere() const;
		std::string MakeSummary(const FReadmeText& Readme, const FFolderCount& Count, const std::vector<FListedEntry>& Entries) const;
	};
}
