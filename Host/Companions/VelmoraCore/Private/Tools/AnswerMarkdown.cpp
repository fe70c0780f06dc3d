#include "Tools/AnswerMarkdown.h"

#include <algorithm>

#include "Text/Utf8Text.h"

namespace Velmora::AnswerMarkdown
{
	namespace
	{
		/** A fence is searched for its end over 50,000 characters; a block stays well below. */
		constexpr size_t MaxBlockBytes = 24000;
		constexpr size_t MaxBlockLineCharacters = 240;

		/** Stands for a backquote that would end its code: U+02CB. */
		constexpr std::string_view LooksLikeBackquote = "\xCB\x8B";

		struct FLanguageRow
		{
			std::string_view Ending; // Of the lower-case file name.
			std::string_view Tag;
		};
		// clang-format off
		constexpr FLanguageRow Languages[] = {
			{ ".cpp", "cpp" }, { ".cc", "cpp" }, { ".cxx", "cpp" }, { ".c", "cpp" }, { ".h", "cpp" }, { ".hpp", "cpp" }, { ".inl", "cpp" },
			{ ".cs", "csharp" }, { ".py", "python" }, { ".js", "javascript" }, { ".ts", "typescript" }, { ".json", "json" },
			{ ".uproject", "json" }, { ".uplugin", "json" },
			{ ".xml", "xml" }, { ".html", "html" }, { ".css", "css" }, { ".ini", "ini" }, { ".sh", "bash" }, { ".bat", "batch" },
			{ ".md", "markdown" },
			{ ".lua", "lua" }, { ".rs", "rust" }, { ".go", "go" }, { ".java", "java" }, { ".yml", "yaml" }, { ".yaml", "yaml" },
			{ ".toml", "toml" },
			{ ".cmake", "cmake" }, { "cmakelists.txt", "cmake" }, { ".sql", "sql" }, { ".usf", "hlsl" }, { ".ush", "hlsl" },
			{ ".hlsl", "hlsl" },
		};
		// clang-format on

		void ReplaceEach(std::string& Text, std::string_view From, std::string_view To)
		{
			for (size_t At = Text.find(From); At != std::string::npos; At = Text.find(From, At + To.size()))
			{
				Text.replace(At, From.size(), To);
			}
		}

		std::string OneLine(std::string_view Text)
		{
			std::string Out = Utf8Text::Sanitise(Text);
			std::replace(Out.begin(), Out.end(), '\n', ' ');
			std::replace(Out.begin(), Out.end(), '\t', ' ');
			return std::string(Utf8Text::Trim(Out));
		}

		/** A backquote at that place would end the code that it stands in. */
		bool EndsCode(std::string_view Text, size_t At)
		{
			const char Before = At > 0 ? Text[At - 1] : '\0';
			const char After = At + 1 < Text.size() ? Text[At + 1] : '\0';
			// Of letters beyond ASCII not everyone thinks the same.
			return Before != ' ' && (static_cast<unsigned char>(After) >= 0x80 || !Utf8Text::IsWordByte(After));
		}

		/** With the backquotes in it code stays one piece. */
		bool FitsCode(std::string_view Text)
		{
			if (Text.substr(0, 2) == "``")
			{
				return false;
			}
			for (size_t At = Text.find('`'); At != std::string_view::npos; At = Text.find('`', At + 1))
			{
				if (EndsCode(Text, At))
				{
					return false;
				}
			}
			return true;
		}
	}

	namespace
	{
		/** In bold nothing but two asterisks has a meaning, or one at either end. */
		bool FitsBold(std::string_view Text)
		{
			return !Text.empty() && Text.find("**") == std::string_view::npos && Text.front() != '*' && Text.back() != '*';
		}

		/**
		 * Lines as code. The front end's code ends at the first three backquotes, however many opened it, so a text with fences of its
		 * own is shown in pieces: each fence in bold between the code before and after it, which has the colours of its own language.
		 */
		class FFencedLines
		{
		public:
			explicit FFencedLines(std::string_view InLanguage)
				: Language(InLanguage)
				, OuterLanguage(InLanguage)
			{
			}

			void Add(std::string_view Line)
			{
				const size_t Length = std::min(Line.find_first_not_of('`'), Line.size());
				const std::string_view Words = Utf8Text::Trim(Line.substr(Length));
				const std::string_view Whole = Utf8Text::Trim(Line);
				if (Length < FenceLength || Words.find("```") != std::string_view::npos || !FitsBold(Whole))
				{
					AddCode(Line);
					return;
				}
				EndCode();
				Out += "**" + std::string(Whole) + "**\n";
				if (OpenLength == 0)
				{
					OpenLength = Length;
					Language = IsTag(Words) ? std::string(Words) : std::string();
				}
				else if (Length >= OpenLength && Words.empty())
				{
					OpenLength = 0;
					Language = OuterLanguage;
				}
			}

			std::string Finish()
			{
				EndCode();
				return Out.empty() ? "```" + Language + "\n```\n" : std::move(Out);
			}

			/** Backquotes that stood in a line, and no fence. */
			bool HasOthers() const { return bHasOthers; }

		private:
			static constexpr size_t FenceLength = 3;

			static bool IsTag(std::string_view Words)
			{
				return std::all_of(Words.begin(), Words.end(),
					[](char Letter) { return Utf8Text::IsWordByte(Letter) || Letter == '+' || Letter == '#' || Letter == '-'; });
			}

			void AddCode(std::string_view Line)
			{
				if (!bIsInCode)
				{
					Out += "```" + Language + '\n';
					bIsInCode = true;
				}
				std::string Shown(Line);
				bHasOthers = bHasOthers || Shown.find("```") != std::string::npos;
				ReplaceEach(Shown, "```", "'''");
				Out += Shown + '\n';
			}

			void EndCode()
			{
				Out += bIsInCode ? "```\n" : "";
				bIsInCode = false;
			}

			std::string Out;
			std::string Language;
			const std::string OuterLanguage;
			/** Backquotes of the fence of the text that is open; 0 for none. */
			size_t OpenLength = 0;
			bool bIsInCode = false;
			bool bHasOthers = false;
		};
	}

	std::string InlineCode(std::string_view Text, size_t MaxCharacters)
	{
		std::string Out = Utf8Text::Shorten(OneLine(Text), MaxCharacters);
		if (!FitsCode(Out))
		{
			ReplaceEach(Out, "`", LooksLikeBackquote);
		}
		return '`' + (Out.empty() ? std::string("(empty)") : Out) + '`';
	}

	std::string FileName(std::string_view Path, size_t MaxCharacters)
	{
		const std::string Name = Utf8Text::Shorten(OneLine(Path), MaxCharacters);
		return !FitsCode(Name) && FitsBold(Name) ? "**" + Name + "**" : InlineCode(Name, MaxCharacters);
	}

	std::string FileLink(const FProjectPath& Path, int Line)
	{
		const std::string Name = Path.Relative.empty() ? std::string("the project folder") : OneLine(Path.Relative);
		const std::string Suffix = Line > 0 ? ':' + std::to_string(Line) : std::string();
		const bool bFits = Path.Absolute.find_first_of("()\n\r") == std::string::npos && Path.Absolute.find('\0') == std::string::npos &&
			Utf8Text::Sanitise(Path.Absolute) == Path.Absolute;
		if (Path.bIsFolder || !bFits || Name.find_first_of("[]") != std::string::npos)
		{
			return FileName(Name + Suffix, 160);
		}
		// The front end opens "file://" as a file and hands everything else on; so the line gets to who knows the user's editor.
		const std::string Target = Line > 0 ? "file:" + Path.Absolute + "#L" + std::to_string(Line) : "file://" + Path.Absolute;
		return '[' + Name + Suffix + "](" + Target + ')';
	}

	std::string FileList(const std::vector<FProjectPath>& Paths, size_t MaxItems)
	{
		std::string Out;
		for (size_t Index = 0; Index < std::min(Paths.size(), MaxItems); ++Index)
		{
			Out += "- " + FileLink(Paths[Index]) + '\n';
		}
		return Paths.size() <= MaxItems
			? Out
			: Out + Utf8Text::Count(Paths.size() - MaxItems, "more file is", "more files are") + " not listed.\n";
	}

	std::string PlainText(std::string_view Text)
	{
		std::string Out = OneLine(Text);
		std::replace(Out.begin(), Out.end(), '[', '(');
		std::replace(Out.begin(), Out.end(), ']', ')');
		for (const char Delimiter : { '*', '`', '~' })
		{
			Out.erase(std::remove(Out.begin(), Out.end(), Delimiter), Out.end());
		}
		// At the start of a line these open a block or get lost.
		const size_t First = Out.find_first_not_of("#>-+_=| ");
		Out.erase(0, std::min(First, Out.size()));
		ReplaceEach(Out, " _", " ");
		return Out;
	}

	std::string TableCell(std::string_view Text)
	{
		std::string Out = PlainText(Text);
		std::replace(Out.begin(), Out.end(), '|', '/');
		return Out.empty() ? std::string("none") : Out;
	}

	std::string CodeBlock(std::string_view Text, std::string_view Language)
	{
		const std::string Clean = Utf8Text::Sanitise(Text);
		FFencedLines Shown(Language);
		size_t Size = 0;
		size_t CutLines = 0;
		size_t LeftOut = 0;
		for (const std::string_view Line : Utf8Text::SplitLines(Clean))
		{
			if (LeftOut > 0 || Size > MaxBlockBytes)
			{
				++LeftOut;
				continue;
			}
			const std::string Short = Utf8Text::Shorten(Line, MaxBlockLineCharacters);
			CutLines += Short.size() != Line.size() ? 1 : 0;
			Size += Short.size() + 1;
			Shown.Add(Short);
		}
		std::string Out = Shown.Finish();
		if (CutLines > 0)
		{
			Out += Utf8Text::Count(CutLines, "line is", "lines are") + " longer than shown here.\n";
		}
		if (LeftOut > 0)
		{
			Out += Utf8Text::Count(LeftOut, "more line follows", "more lines follow") + ".\n";
		}
		if (Shown.HasOthers())
		{
			Out += "Three backticks within a line are shown as three apostrophes.\n";
		}
		return Out;
	}

	std::string CodeLines(const std::vector<std::string_view>& Lines, int First, int Last, std::string_view Path)
	{
		std::string Body;
		for (int Line = First; Line <= Last; ++Line)
		{
			Body += std::string(Lines[static_cast<size_t>(Line - 1)]) + '\n';
		}
		return CodeBlock(Body, LanguageOf(Path));
	}

	std::string Difference(std::string_view Old, std::string_view New)
	{
		std::string Body;
		for (const auto& [Text, Mark] : { std::pair(Old, "- "), std::pair(New, "+ ") })
		{
			for (const std::string_view Line : Utf8Text::SplitLines(Text))
			{
				Body += Mark + std::string(Line) + '\n';
			}
		}
		return CodeBlock(Body, "diff");
	}

	std::string LanguageOf(std::string_view Path)
	{
		const std::string Lower = Utf8Text::ToLower(Path);
		for (const FLanguageRow& Row : Languages)
		{
			if (Utf8Text::EndsWith(Lower, Row.Ending))
			{
				return std::string(Row.Tag);
			}
		}
		return std::string();
	}

	std::string Collapsible(std::string_view Summary, std::string_view Body)
	{
		std::string Safe(Body);
		ReplaceEach(Safe, "</details>", "<details>");
		std::string Title(Summary);
		ReplaceEach(Title, "</summary>", "");
		return "<details><summary>" + Title + "</summary>\n" + Safe + (Utf8Text::EndsWith(Safe, "\n") ? "" : "\n") + "</details>\n";
	}
}
