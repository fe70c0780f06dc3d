#include "Open/EditorLine.h"

#include <algorithm>
#include <string_view>

namespace
{
	/** L stands for the line and F for the file; each word is an argument. */
	struct FEditorRow
	{
		std::string_view Program;
		std::string_view First;
		std::string_view Second;
		/** It has a window of its own, and needs no terminal. */
		bool bHasWindow;
	};

	constexpr std::string_view File = "F";
	constexpr FEditorRow Rows[] = {
		{ "vi", "+L", File, false },
		{ "vim", "+L", File, false },
		{ "gvim", "+L", File, true },
		{ "nvim", "+L", File, false },
		{ "nvim-qt", "+L", File, true },
		{ "emacs", "+L", File, true },
		{ "emacsclient", "+L", File, false },
		{ "nano", "+L", File, false },
		{ "micro", "+L", File, false },
		{ "kak", "+L", File, false },
		{ "joe", "+L", File, false },
		{ "ne", "+L", File, false },
		{ "mg", "+L", File, false },
		{ "gedit", "+L", File, true },
		{ "gnome-text-editor", "+L", File, true },
		{ "pluma", "+L", File, true },
		{ "xed", "+L", File, true },
		{ "mousepad", "--line=L", File, true },
		{ "geany", "--line=L", File, true },
		{ "kate", "--line=L", File, true },
		{ "kwrite", "--line=L", File, true },
		{ "qtcreator", "F:L", {}, true },
		{ "code", "--goto", "F:L", true },
		{ "code-oss", "--goto", "F:L", true },
		{ "code-insiders", "--goto", "F:L", true },
		{ "codium", "--goto", "F:L", true },
		{ "vscodium", "--goto", "F:L", true },
		{ "subl", "F:L", {}, true },
		{ "sublime_text", "F:L", {}, true },
		{ "hx", "F:L", {}, false },
		{ "helix", "F:L", {}, false },
		{ "zed", "F:L", {}, true },
		{ "lapce", "F:L", {}, true },
		{ "scite", "-open:F", "-goto:L", true },
		{ "kdevelop", "F:L", {}, true },
	};

	std::string FillIn(std::string_view Form, const std::string& Path, int Line)
	{
		std::string Word;
		for (const char Sign : Form)
		{
			Word += Sign == 'L' ? std::to_string(Line) : Sign == 'F' ? Path : std::string(1, Sign);
		}
		return Word;
	}

	const FEditorRow* FindRow(const std::vector<std::string>& Command)
	{
		const std::string_view Whole = Command.empty() ? std::string_view() : std::string_view(Command.front());
		const std::string_view Program = Whole.substr(Whole.rfind('/') == std::string_view::npos ? 0 : Whole.rfind('/') + 1);
		const auto* const Row =
			std::find_if(std::begin(Rows), std::end(Rows), [Program](const FEditorRow& Candidate) { return Candidate.Program == Program; });
		return Row == std::end(Rows) ? nullptr : Row;
	}
}

void EditorLine::Append(std::vector<std::string>& Command, const std::string& Path, int Line)
{
	const FEditorRow* const Row = FindRow(Command);
	if (Line <= 0 || !Row)
	{
		Command.push_back(Path);
		return;
	}
	for (const std::string_view Form : { Row->First, Row->Second })
	{
		if (!Form.empty())
		{
			Command.push_back(FillIn(Form, Path, Line));
		}
	}
}

bool EditorLine::HasWindow(const std::vector<std::string>& Command)
{
	// Some of them can be told to stay in the terminal.
	constexpr std::string_view TerminalOptions[] = { "-nw", "--no-window-system", "-t", "-tty", "--tty" };
	const FEditorRow* const Row = FindRow(Command);
	return Row && Row->bHasWindow &&
		std::none_of(Command.begin() + 1, Command.end(),
			[&TerminalOptions](const std::string& Word)
			{ return std::find(std::begin(TerminalOptions), std::end(TerminalOptions), Word) != std::end(TerminalOptions); });
}
