#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Changes/ChangeTools.h"
#include "Tools/AgentPlan.h"
#include "Tools/ProjectFiles.h"
#include "Tools/ToolArguments.h"

namespace Velmora
{
	class FToolBox;
	struct FProjectPlan;

	/** What a tool does to the project; permissions and modes go by it. */
	enum class EToolKind : uint8_t
	{
		Read,
		Search,
		Create,
		Edit,
		Delete,
		Move,
		Command,
		Plan // Changes nothing but the plan that is shown.
	};

	/** Why a call may not go ahead before the user has agreed. */
	struct FToolQuestion
	{
		/** What the tool acts on, for rules: a path below the project. */
		std::string Subject;

		/** A whole sentence for the user. */
		std::string Reason;

		/** Markdown: what would be written, empty where there is nothing to show. */
		std::string Details;
	};

	/** What a call came to. UTF-8, but for names of files. */
	struct FToolResult
	{
		bool bSuccess = false;

		/** One sentence for the row of the tool, without a full stop. */
		std::string Sentence;

		/** For a model: lines with their numbers, bounded, with a note of what was left out. On failure what to do better. */
		std::string Text;

		/** Set when nothing has been done since the user is to be asked first. */
		std::optional<FToolQuestion> Question;

		/** Of a tool that changes a file. */
		FChangeOutcome Change;

		/** Of update_plan. */
		FAgentPlan Plan;
	};

	/** One tool: its name, what a model is told of it, and its code. */
	struct FToolRow
	{
		std::string_view Name;
		EToolKind Kind;

		/** How the chat shows it: the words of the front end for the operation and for what it acts on. */
		std::string_view Operation;
		std::string_view DataType;

		/** One sentence. */
		std::string_view Description;

		/** A JSON schema of type "object". */
		std::string_view Parameters;

		/** Arguments without which a call is refused, apart by one blank. */
		std::string_view Required;
		void (FToolBox::*Code)(const FToolArguments& Arguments, FToolResult& OutResult);
	};

	/**
	 * What can be done to a project: one table for every agent. A call can hold anything; what cannot be done is a result that
	 * says why. One thread at a time.
	 */
	class FToolBox
	{
	public:
		/** Bytes of a result's text for a model. */
		static constexpr size_t MaxResultBytes = 64 * 1024;

		static std::span<const FToolRow> GetRows();
		static const FToolRow* Find(std::string_view Name);

		/** Whether a tool leaves the disk as it is, so that it is offered where nothing may be changed. */
		static bool IsReading(EToolKind Kind) { return Kind == EToolKind::Read || Kind == EToolKind::Search || Kind == EToolKind::Plan; }

		/**
		 * @param InFiles      Outlives the box.
		 * @param InJournal    Where changes are written down; null where nothing may be changed.
		 * @param InIsCancelled  Asked between two files, and right before a change.
		 */
		FToolBox(const FProjectFiles& InFiles, FChangeJournal* InJournal, std::string InTransactionId, std::function<bool()> InIsCancelled);

		/**
		 * Runs a tool. A call that needs the user's consent does nothing and gives the question; ask, and call again.
		 *
		 * @param bIsPermitted  The user has agreed to this very call.
		 */
		FToolResult Run(std::string_view Name, const FToolArguments& Arguments, bool bIsPermitted = false);

		/** What such a call acts on: a path for most, what is looked for otherwise. Empty for none. */
		static std::string GetSubject(const FToolArguments& Arguments);

	private:
		friend struct FToolTable;

		void ListFolderTool(const FToolArguments& Arguments, FToolResult& OutResult);
		void ReadFileTool(const FToolArguments& Arguments, FToolResult& OutResult);
		void SearchTool(const FToolArguments& Arguments, FToolResult& OutResult);
		void FindFileTool(const FToolArguments& Arguments, FToolResult& OutResult);
		void FindSymbolTool(const FToolArguments& Arguments, FToolResult& OutResult);
		void OutlineTool(const FToolArguments& Arguments, FToolResult& OutResult);
		void CountTool(const FToolArguments& Arguments, FToolResult& OutResult);
		void CreateFileTool(const FToolArguments& Arguments, FToolResult& OutResult);
		void WriteFileTool(const FToolArguments& Arguments, FToolResult& OutResult);
		void EditFileTool(const FToolArguments& Arguments, FToolResult& OutResult);
		void AppendTool(const FToolArguments& Arguments, FToolResult& OutResult);
		void DeleteFileTool(const FToolArguments& Arguments, FToolResult& OutResult);
		void MoveFileTool(const FToolArguments& Arguments, FToolResult& OutResult);
		void RunCommandTool(const FToolArguments& Arguments, FToolResult& OutResult);
		void RunPermitted(const std::string& Command, const FProjectPlan& Plan, FToolResult& OutResult);
		void UpdatePlanTool(const FToolArguments& Arguments, FToolResult& OutResult);

		/** What is left out of the project, or may hold secrets by its name, is read with the user's consent only. */
		bool MayRead(const FProjectPath& Place, FToolResult& OutResult) const;

		/** The folder or file that an argument names, the project when it was left out. False with a result that says so. */
		bool FindPlace(const FToolArguments& Arguments, FProjectPath& OutPlace, FToolResult& OutResult) const;

		/** Makes a change, or leaves the question in the result that it raises. */
		void Change(FToolResult& OutResult, const std::function<FChangeOutcome(FChangeTools& Tools)>& Make);

		/** Why a change that tells something of a file needs the user's consent. The question is in the result then. */
		std::string FindReadConcern(const std::string& Path, FToolResult& OutResult) const;

		/** Why a change needs the user's consent: a sentence, or nothing. */
		std::string FindConcern(
			const std::string& Path, const FEntryInfo& Info, const std::string& OldBytes, const FNewContent& Content) const;

		const FProjectFiles& Files;
		FChangeJournal* const Journal;
		const std::string TransactionId;
		const std::function<bool()> IsCancelled;
		bool bIsPermitted = false;

		/** The command that was asked for with the words that undo will not cover it. */
		std::string AskedInPlace;
	};
}
