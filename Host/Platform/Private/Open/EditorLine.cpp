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
	};

	constexpr std::string_view File = "F";
	constexpr FEditorRow Rows[] = {
		{ "vi", "+L", File },
		{ "vim", "+L", File },
		{ "gvim", "+L", File },
		{ "nvim", "+L", File },
		{ "nvim-qt", "+L", File },
		{ "emacs", "+L", File },
		{ "emacsclient", "+L", File },
		{ "nano", "+L", File },
		{ "micro", "+L", File },
		{ "kak", "+L", File },
		{ "joe", "+L", File },
		{ "ne", "+L", File },
		{ "mg", "+L", File },
		{ "gedit", "+L", File },
		{ "gnome-text-editor", "+L", File },
		{ "pluma", "+L", File },
		{ "xed", "+L", File },
		{ "mousepad", "--line=L", File },
		{ "geany", "--line=L", File },
		{ "kate", "--line=L", File },
		{ "kwrite", "--line=L", File },
		{ "qtcreator", "F:L", {} },
		{ "code", "--goto", "F:L" },
		{ "code-oss", "--goto", "F:L" },
		{ "code-insiders", "--goto", "F:L" },
		{ "codium", "--goto", "F:L" },
		{ "vscodium", "--goto", "F:L" },
		{ "subl", "F:L", {} },
		{ "sublime_text", "F:L", {} },
		{ "hx", "F:L", {} },
		{ "helix", "F:L", {} },
		{ "zed", "F:L", {} },
		{ "lapce", "F:L", {} },
		{ "scite", "-open:F", "-goto:L" },
		{ "kdevelop", "F:L", {} },
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
}

void EditorLine::Append(std::vector<std::string>& Command, const std::string& Path, int Line)
{
	const std::string_view Whole = Command.empty() ? std::string_view() : std::string_view(Command.front());
	const std::string_view Program = Whole.substr(Whole.rfind('/') == std::string_view::npos ? 0 : Whole.rfind('/') + 1);
	const auto* const Row =
		std::find_if(std::begin(Rows), std::end(Rows), [Program](const FEditorRow& Candidate) { return Candidate.Program == Program; });
	if (Line <= 0 || Row == std::end(Rows))
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
