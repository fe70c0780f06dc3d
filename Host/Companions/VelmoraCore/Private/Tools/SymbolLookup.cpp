#include "Tools/SymbolLookup.h"

#include <algorithm>

#include "Text/Utf8Text.h"

namespace Velmora
{
	namespace
	{
		using CodeIntel::EIndexKind;
		using CodeIntel::FCodeIndexControl;
		using CodeIntel::FIndexLookup;
		using CodeIntel::FIndexSymbol;

		/** Symbols asked of the index, and lines of an outline. */
		constexpr int MaxFoundSymbols = 50;
		constexpr size_t MaxOutlineSymbols = 400;

		/** Outlines are indented no deeper. */
		constexpr size_t MaxOutlineDepth = 8;

		/** A question right after the start waits so long for the index to be opened. */
		constexpr double OpeningSeconds = 3.0;

		/** How many scopes a symbol stands in, for the indent of an outline. */
		size_t CountScopes(std::string_view Scope)
		{
			if (Scope.empty())
			{
				return 0;
			}
			size_t Count = 1;
			for (size_t Index = 0; Index < Scope.size(); ++Index)
			{
				const bool bIsColons = Scope.substr(Index, 2) == "::";
				Count += bIsColons || Scope[Index] == '.' ? 1 : 0;
				Index += bIsColons ? 1 : 0;
			}
			return Count;
		}

		bool IsMarkdown(std::string_view Path)
		{
			const std::string Lower = Utf8Text::ToLower(Path);
			return Utf8Text::EndsWith(Lower, ".md") || Utf8Text::EndsWith(Lower, ".markdown");
		}

		/** Headings with number signs, those in fences left out. */
		std::vector<FIndexSymbol> FindHeadings(std::string_view Text)
		{
			std::vector<FIndexSymbol> Headings;
			int Line = 0;
			bool bIsFenced = false;
			for (const std::string_view Row : Utf8Text::SplitLines(Text))
			{
				++Line;
				if (Utf8Text::StartsWith(Utf8Text::Trim(Row), "```") || Utf8Text::StartsWith(Utf8Text::Trim(Row), "~~~"))
				{
					bIsFenced = !bIsFenced;
				}
				const size_t Level = std::min(Row.find_first_not_of('#'), Row.size());
				if (bIsFenced || Level == 0 || Level > 6 || Level == Row.size() || Row[Level] != ' ')
				{
					continue;
				}
				FIndexSymbol Heading;
				Heading.Kind = std::string(Row.substr(0, Level));
				Heading.Name = std::string(Utf8Text::Trim(Row.substr(Level)));
				Heading.Line = Line;
				// One scope for each level above.
				Heading.Scope = Level > 1 ? std::string(Level - 2, '.') + "." : std::string();
				Headings.push_back(std::move(Heading));
			}
			return Headings;
		}

		/** The index is of that project and can be asked. */
		bool CanAskIndex(const FIndexLookup& Lookup, const FProjectFiles& Files)
		{
			return Lookup.bIsReady && Lookup.Root == Files.GetRoot();
		}
	}

	FSymbolAnswer LookUpSymbol(const FProjectFiles& Files, std::string_view Name, const FProjectPath& Where)
	{
		FSymbolAnswer Answer;
		if (!FCodeIndexControl::WaitUntilOpened(OpeningSeconds))
		{
			return Answer;
		}
		Answer.Project = FCodeIndexControl::FindSymbol(Name, MaxFoundSymbols);
		Answer.bIsReady = CanAskIndex(Answer.Project, Files);
		if (!Answer.bIsReady)
		{
			Answer.Project = FIndexLookup();
			return Answer;
		}
		if (!Where.Relative.empty())
		{
			std::erase_if(Answer.Project.Symbols,
				[&Where](const FIndexSymbol& Symbol)
				{ return Symbol.Path != Where.Relative && !Utf8Text::StartsWith(Symbol.Path, Where.Relative + '/'); });
		}
		else if (!Answer.Project.bIsExact)
		{
			Answer.Engine = FCodeIndexControl::FindSymbol(Name, MaxFoundSymbols, EIndexKind::Engine);
		}
		return Answer;
	}

	std::string GetWholeSymbolName(const FIndexSymbol& Symbol)
	{
		constexpr std::string_view DottedEndings[] = { ".cs", ".py", ".ini", ".json", ".uplugin", ".uproject" };
		const std::string Lower = Utf8Text::ToLower(Symbol.Path);
		const bool bHasColons = std::none_of(std::begin(DottedEndings), std::end(DottedEndings),
			[&Lower](std::string_view Ending) { return Utf8Text::EndsWith(Lower, Ending); });
		return Symbol.Scope.empty() ? Symbol.Name : Symbol.Scope + (bHasColons ? "::" : ".") + Symbol.Name;
	}

	std::string FFileOutline::CountSymbols() const
	{
		return bIsMarkdown ? Utf8Text::Count(Symbols.size(), "heading", "headings") : Utf8Text::Count(Symbols.size(), "symbol", "symbols");
	}

	FFileOutline OutlineProjectFile(const FProjectFiles& Files, const FProjectPath& File)
	{
		FFileOutline Result;
		Result.bIsMarkdown = IsMarkdown(File.Relative);
		FCodeIndexControl::WaitUntilOpened(OpeningSeconds);
		FIndexLookup Found = FCodeIndexControl::Outline(File.Relative, static_cast<int>(MaxOutlineSymbols) + 1);
		if (CanAskIndex(Found, Files) && Found.bIsExact)
		{
			Result.Symbols = std::move(Found.Symbols);
		}
		else
		{
			// Files that the index does not hold, or not yet, are read now.
			const FProjectText Content = Files.Read(File.Absolute);
			Result.Problem = Content.Problem;
			if (Content.IsValid() && Result.bIsMarkdown)
			{
				Result.Symbols = FindHeadings(Content.Text);
			}
			else if (Content.IsValid())
			{
				FCodeIndexControl::OutlineFile(File.Absolute, Result.Symbols, Result.Problem);
			}
		}
		Result.bIsCut = Result.Symbols.size() > MaxOutlineSymbols;
		Result.Symbols.resize(std::min(Result.Symbols.size(), MaxOutlineSymbols));
		return Result;
	}

	std::string MakeOutlineText(const std::vector<FIndexSymbol>& Symbols)
	{
		const size_t Width = Symbols.empty() ? 1 : std::to_string(Symbols.back().Line).size();
		std::string Text;
		for (const FIndexSymbol& Symbol : Symbols)
		{
			const std::string Number = std::to_string(Symbol.Line);
			// A heading's scope is a dot for each level above it.
			const bool bIsHeading = Symbol.Scope.find_first_not_of('.') == std::string::npos;
			const size_t Depth = std::min(bIsHeading ? Symbol.Scope.size() : CountScopes(Symbol.Scope), MaxOutlineDepth);
			Text += std::string(Width - std::min(Width, Number.size()), ' ') + Number + std::string(2 + 2 * Depth, ' ') +
				Utf8Text::Sanitise(Symbol.Kind + ' ' + Symbol.Name) + '\n';
		}
		return Text;
	}
}
