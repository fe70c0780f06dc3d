#include "Tools/ToolBox.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "Text/Utf8Text.h"

namespace Velmora
{
	/** The one table. A tool is a row here and a member that does the work. */
	struct FToolTable
	{
		// clang-format off
		static constexpr FToolRow Rows[] = {
			{ "list_directory", EToolKind::Read, "list", "Directory",
				"Lists the files and folders that stand directly in a folder of the project; ignored ones are left out.",
				R"({"type":"object","properties":{"path":{"type":"string",)"
				R"("description":"Folder below the project. Left out: the project folder."}}})",
				"", &FToolBox::ListFolderTool },
			{ "read_file", EToolKind::Read, "read", "File",
				"Reads a text file with line numbers, the whole of it or some lines.",
				R"({"type":"object","properties":{"path":{"type":"string"},"first_line":{"type":"integer",)"
				R"("description":"From 1."},"last_line":{"type":"integer","description":"Included."}},"required":["path"]})",
				"path", &FToolBox::ReadFileTool },
			{ "search_files", EToolKind::Search, "search", "File",
				"Finds lines that hold a text, letter case aside, in all text files or below one path, definitions first.",
				R"({"type":"object","properties":{"term":{"type":"string"},"path":{"type":"string",)"
				R"("description":"File or folder to look in."}},"required":["term"]})",
				"term", &FToolBox::SearchTool },
			{ "find_file", EToolKind::Search, "search", "File",
				"Finds files and folders by their name or a part of it.",
				R"({"type":"object","properties":{"name":{"type":"string"}},"required":["name"]})",
				"name", &FToolBox::FindFileTool },
			{ "find_symbol", EToolKind::Search, "search", "Symbol",
				"Finds where a class, function or other symbol is defined, by the code index.",
				R"({"type":"object","properties":{"name":{"type":"string",)"
				R"("description":"A scope may stand in front: FThing::Run."}},"required":["name"]})",
				"name", &FToolBox::FindSymbolTool },
			{ "outline", EToolKind::Read, "list", "Symbols",
				"Lists the symbols of a file with their lines; of Markdown the headings.",
				R"({"type":"object","properties":{"path":{"type":"string"}},"required":["path"]})",
				"path", &FToolBox::OutlineTool },
			{ "count_lines", EToolKind::Read, "get", "Directory",
				"Counts the files, folders and lines of text below a folder, by kind of file.",
				R"({"type":"object","properties":{"path":{"type":"string","description":"Left out: the whole project."}}})",
				"", &FToolBox::CountTool },
			{ "create_file", EToolKind::Create, "create", "File",
				"Makes a new text file; missing folders are made, a file that is there already is left alone.",
				R"({"type":"object","properties":{"path":{"type":"string"},"content":{"type":"string"}},"required":["path","content"]})",
				"path", &FToolBox::CreateFileTool },
			{ "write_file", EToolKind::Edit, "modify", "File",
				"Replaces the whole content of a text file, or makes it.",
				R"({"type":"object","properties":{"path":{"type":"string"},"content":{"type":"string"}},"required":["path","content"]})",
				"path content", &FToolBox::WriteFileTool },
			{ "edit_file", EToolKind::Edit, "modify", "File",
				"Replaces one passage of a text file, which must stand in it exactly once, blanks and line ends included.",
				R"({"type":"object","properties":{"path":{"type":"string"},"old":{"type":"string"},"new":{"type":"string"}},)"
				R"("required":["path","old","new"]})",
				"path old new", &FToolBox::EditFileTool },
			{ "append_to_file", EToolKind::Edit, "modify", "File",
				"Adds lines at the end of a text file, or makes it.",
				R"({"type":"object","properties":{"path":{"type":"string"},"text":{"type":"string"}},"required":["path","text"]})",
				"path text", &FToolBox::AppendTool },
			{ "delete_file", EToolKind::Delete, "delete", "File",
				"Deletes a file, or a link itself; folders are left alone.",
				R"({"type":"object","properties":{"path":{"type":"string"}},"required":["path"]})",
				"path", &FToolBox::DeleteFileTool },
			{ "move_file", EToolKind::Move, "modify", "File",
				"Moves or renames a file to a path where nothing stands yet.",
				R"({"type":"object","properties":{"path":{"type":"string"},"to":{"type":"string"}},"required":["path","to"]})",
				"path to", &FToolBox::MoveFileTool },
			{ "run_command", EToolKind::Command, "execute", "none",
				"Runs a shell command in a sandbox that sees the project, has no network and at most two minutes; the user is asked first.",
				R"({"type":"object","properties":{"command":{"type":"string","description":"For /bin/sh, in the project folder."}},)"
				R"("required":["command"]})",
				"command", &FToolBox::RunCommandTool },
			{ "update_plan", EToolKind::Plan, "modify", "none",
				"Shows the user the plan of the work: every step with its status, each time the whole of it.",
				// Servers that hold a model to the schema let it say what is required first: the goal has to be, or it comes too late.
				R"({"type":"object","properties":{"goal":{"type":"string"},"approach":{"type":"string"},"steps":{"type":"array",)"
				R"("items":{"type":"object","properties":{"text":{"type":"string"},"status":{"type":"string",)"
				R"("enum":["waiting","running","done","failed"]}},"required":["text"]}}},"required":["goal","steps"]})",
				"steps", &FToolBox::UpdatePlanTool },
		};
		// clang-format on
	};

	std::span<const FToolRow> FToolBox::GetRows()
	{
		return FToolTable::Rows;
	}

	const FToolRow* FToolBox::Find(std::string_view Name)
	{
		const auto Found = std::find_if(
			std::begin(FToolTable::Rows), std::end(FToolTable::Rows), [Name](const FToolRow& Row) { return Row.Name == Name; });
		return Found == std::end(FToolTable::Rows) ? nullptr : &*Found;
	}

	FToolBox::FToolBox(
		const FProjectFiles& InFiles, FChangeJournal* InJournal, std::string InTransactionId, std::function<bool()> InIsCancelled)
		: Files(InFiles)
		, Journal(InJournal)
		, TransactionId(std::move(InTransactionId))
		, IsCancelled(std::move(InIsCancelled))
	{
	}

	std::string FToolBox::GetSubject(const FToolArguments& Arguments)
	{
		for (const std::string_view Name : { "command", "path", "term", "name", "goal" })
		{
			if (Arguments.Has(Name))
			{
				return Arguments.GetText(Name);
			}
		}
		return std::string();
	}

	FToolResult FToolBox::Run(std::string_view Name, const FToolArguments& Arguments, bool bInIsPermitted)
	{
		FToolResult Result;
		const auto Refuse = [&Result](std::string Text)
		{
			Result.Sentence = Text;
			Result.Text = std::move(Text);
			return std::move(Result);
		};
		const FToolRow* const Row = Find(Name);
		if (!Row)
		{
			std::string Known;
			for (const FToolRow& Other : FToolTable::Rows)
			{
				Known += (Known.empty() ? "" : ", ") + std::string(Other.Name);
			}
			return Refuse("There is no tool " + Utf8Text::Shorten(Utf8Text::Sanitise(Name), 60) + "; there are " + Known);
		}
		for (std::string_view Left = Row->Required; !Left.empty();)
		{
			const std::string_view Needed = Left.substr(0, Left.find(' '));
			Left.remove_prefix(std::min(Left.size(), Needed.size() + 1));
			if (!Arguments.Has(Needed) && !Arguments.HasList(Needed))
			{
				return Refuse("The argument \"" + std::string(Needed) + "\" is missing");
			}
		}
		if (!IsReading(Row->Kind) && !Journal)
		{
			return Refuse("Nothing may be changed in Advisor mode");
		}
		bIsPermitted = bInIsPermitted;
		(this->*Row->Code)(Arguments, Result);
		if (Result.Text.size() > MaxResultBytes)
		{
			Result.Text.resize(MaxResultBytes);
			Result.Text = Utf8Text::Sanitise(Result.Text) + "\n[The rest is left out: the result is too long.]\n";
		}
		return Result;
	}

	bool FToolBox::FindPlace(const FToolArguments& Arguments, FProjectPath& OutPlace, FToolResult& OutResult) const
	{
		const std::string& Path = Arguments.GetText("path");
		if (Path.empty() || Path == ".")
		{
			OutPlace = { Files.GetRoot(), std::string(), true };
			return true;
		}
		if (Files.Resolve(Path, OutPlace))
		{
			return true;
		}
		OutResult.Sentence = Files.IsOutside(Path) ? "It lies outside the project" : "It cannot be found";
		OutResult.Text = OutResult.Sentence + ": " + Path + ". Paths are relative to the project folder.";
		return false;
	}
}
