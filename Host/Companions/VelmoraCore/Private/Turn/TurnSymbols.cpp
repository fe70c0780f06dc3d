#include "Turn/LocalTurnRunner.h"

#include <algorithm>

#include "Turn/AnswerMarkdown.h"
#include "Text/Utf8Text.h"
#include "Host/CodeIndexControl.h"

namespace Velmora
{
	namespace
	{
		using CodeIntel::EIndexKind;
		using CodeIntel::FCodeIndexControl;
		using CodeIntel::FIndexLookup;
		using CodeIntel::FIndexSymbol;

		/** Symbols asked of the index, and lines of an outline shown. */
		constexpr int MaxFoundSymbols = 50;
		constexpr int MaxOutlineSymbols = 400;

		/** A question right after the start waits so long for the index to be opened. */
		constexpr double OpeningSeconds = 3.0;

		/** Other places told without being folded away. */
		constexpr size_t MaxOpenPlaces = 6;

		/** "function `FThing::Run`". */
		std::string DescribeSymbol(const FIndexSymbol& Symbol)
		{
			constexpr std::string_view DottedEndings[] = { ".cs", ".py", ".ini", ".json", ".uplugin", ".uproject" };
			const std::string Lower = Utf8Text::ToLower(Symbol.Path);
			const bool bHasColons = std::none_of(std::begin(DottedEndings), std::end(DottedEndings),
				[&Lower](std::string_view Ending) { return Utf8Text::EndsWith(Lower, Ending); });
			const std::string Whole = Symbol.Scope.empty() ? Symbol.Name : Symbol.Scope + (bHasColons ? "::" : ".") + Symbol.Name;
			return AnswerMarkdown::PlainText(Symbol.Kind) + ' ' + AnswerMarkdown::InlineCode(Whole, 120);
		}

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

		/** One line for each symbol: where, how deep, what. */
		std::string MakeOutlineText(const std::vector<FIndexSymbol>& Symbols)
		{
			const size_t Width = Symbols.empty() ? 1 : std::to_string(Symbols.back().Line).size();
			std::string Text;
			for (const FIndexSymbol& Symbol : Symbols)
			{
				const std::string Number = std::to_string(Symbol.Line);
				const size_t Depth = std::min<size_t>(
					Symbol.Scope.find_first_not_of('.') == std::string::npos ? Symbol.Scope.size() : CountScopes(Symbol.Scope), 8);
				Text += std::string(Width - std::min(Width, Number.size()), ' ') + Number + std::string(2 + 2 * Depth, ' ') +
					Utf8Text::Sanitise(Symbol.Kind + ' ' + Symbol.Name) + '\n';
			}
			return Text;
		}

		/** The index is of that project and can be asked. */
		bool CanAskIndex(const FIndexLookup& Lookup, const FProjectFiles& Files)
		{
			return Lookup.bIsReady && Lookup.Root == Files.GetRoot();
		}
	}

	bool FLocalTurn::RunFindSymbol()
	{
		if (Request.Target.empty())
		{
			Answer("Which symbol should I look up? For example: `where is FThing defined?`\n");
			return true;
		}
		FProjectPath Where = GetProjectPath();
		const bool bHasScope = !Request.TargetInScope.empty() && FindPlace(Request.Scope, Where);
		const std::string Name = Request.TargetInScope.empty() ? Request.Target : Request.TargetInScope;
		const std::string Code = AnswerMarkdown::InlineCode(Name);
		if (!FCodeIndexControl::WaitUntilOpened(OpeningSeconds))
		{
			AttachmentNotes += "The code index is not ready, so I searched the text instead.\n";
			return RunFindText();
		}

		FIndexLookup Found;
		FIndexLookup Engine;
		const bool bIsAlive = BeginStep("Looking up " + Name + " in the code index") &&
			RunTool("find_symbol", { { "name", Name } },
				[&]
				{
					Found = FCodeIndexControl::FindSymbol(Name, MaxFoundSymbols);
					if (!CanAskIndex(Found, Files))
					{
						Found = FIndexLookup();
						return FToolOutcome{ true, "The code index is not ready" };
					}
					if (bHasScope)
					{
						const auto IsElsewhere = [&Where](const FIndexSymbol& Symbol)
						{ return Symbol.Path != Where.Relative && !Utf8Text::StartsWith(Symbol.Path, Where.Relative + '/'); };
						if (!Where.Relative.empty())
						{
							Found.Symbols.erase(
								std::remove_if(Found.Symbols.begin(), Found.Symbols.end(), IsElsewhere), Found.Symbols.end());
						}
					}
					else if (!Found.bIsExact)
					{
						Engine = FCodeIndexControl::FindSymbol(Name, MaxFoundSymbols, EIndexKind::Engine);
					}
					const size_t Count = Found.bIsExact ? Found.Symbols.size() : Engine.bIsExact ? Engine.Symbols.size() : 0;
					return FToolOutcome{ true,
						Count == 0 ? "No symbol of that name"
								   : Utf8Text::Count(Count, "symbol", "symbols") + (Found.bIsExact ? "" : " in the engine") };
				});
		if (!bIsAlive)
		{
			return false;
		}
		if (Found.bIsExact && !Found.Symbols.empty())
		{
			return AnswerSymbols(Name, Found.Symbols);
		}
		if (Engine.bIsExact && !Engine.Symbols.empty())
		{
			const FIndexSymbol& Best = Engine.Symbols.front();
			std::string Text = Code + " is defined in the engine: " +
				AnswerMarkdown::InlineCode(Engine.Root + '/' + Best.Path + ':' + std::to_string(Best.Line), 200) + " (" +
				DescribeSymbol(Best) + ")\n";
			for (size_t Index = 1; Index < std::min(Engine.Symbols.size(), MaxOpenPlaces + 1); ++Index)
			{
				Text += "- " +
					AnswerMarkdown::InlineCode(Engine.Symbols[Index].Path + ':' + std::to_string(Engine.Symbols[Index].Line), 160) + ' ' +
					DescribeSymbol(Engine.Symbols[Index]) + '\n';
			}
			Answer(Text);
			return true;
		}
		AttachmentNotes += Found.bIsReady ? "The code index has no symbol " + Code + ", so I searched the text instead.\n"
										  : std::string("The code index is not ready, so I searched the text instead.\n");
		if (!Found.bIsExact && !Found.Symbols.empty())
		{
			std::string Names;
			for (size_t Index = 0; Index < std::min(Found.Symbols.size(), MaxOpenPlaces); ++Index)
			{
				Names += "- " +
					AnswerMarkdown::FileLink({ Files.GetRoot() + '/' + Found.Symbols[Index].Path, Found.Symbols[Index].Path, false },
						Found.Symbols[Index].Line) +
					' ' + DescribeSymbol(Found.Symbols[Index]) + '\n';
			}
			AttachmentNotes += "**Symbols whose names begin so**\n" + Names;
		}
		return RunFindText();
	}

	bool FLocalTurn::AnswerSymbols(const std::string& Name, const std::vector<CodeIntel::FIndexSymbol>& Symbols)
	{
		const FIndexSymbol& Best = Symbols.front();
		FSearchHit Hit;
		Hit.File = { Files.GetRoot() + '/' + Best.Path, Best.Path, false };
		Hit.Line = Best.Line;
		Hit.Kind = EHitKind::Definition;
		std::string Text = AnswerMarkdown::InlineCode(Name) + (Best.Kind == "prototype" ? " is declared in " : " is defined in ") +
			AnswerMarkdown::FileLink(Hit.File, Hit.Line) + " (" + DescribeSymbol(Best) + ")\n";
		if (!AppendSnippet(Hit, Text))
		{
			return false;
		}
		std::string Others;
		for (size_t Index = 1; Index < Symbols.size(); ++Index)
		{
			Others += "- " +
				AnswerMarkdown::FileLink({ Files.GetRoot() + '/' + Symbols[Index].Path, Symbols[Index].Path, false }, Symbols[Index].Line) +
				' ' + DescribeSymbol(Symbols[Index]) + '\n';
		}
		if (Symbols.size() > 1)
		{
			const std::string Total = Utf8Text::Count(Symbols.size() - 1, "more symbol", "more symbols") + " of that name";
			Text += Symbols.size() - 1 > MaxOpenPlaces ? AnswerMarkdown::Collapsible(Total, Others) : "**" + Total + "**\n" + Others;
		}
		Answer(Text);
		return true;
	}

	bool FLocalTurn::RunOutline()
	{
		const std::vector<FProjectPath> Named = FindNamedAttachments(Request.Target);
		if (Named.size() > 1)
		{
			return AnswerAttachments(Named);
		}
		FProjectPath Place;
		const bool bIsAttached = Request.Target.empty() && !Attachments.empty();
		if (bIsAttached)
		{
			Place = Attachments.front();
		}
		else if (Request.Target.empty())
		{
			Answer("Which file should I outline? For example: `outline README.md`\n");
			return true;
		}
		else if (!FindPlace(Request.Target, Place))
		{
			std::vector<FProjectPath> Named;
			if (!BeginStep("Looking for " + Request.Target) || !RunFindFileTool(Request.Target, Named))
			{
				return false;
			}
			bHasFailed |= Named.empty();
			std::string Text = Named.empty() ? "There is no file " + AnswerMarkdown::InlineCode(Request.Target) + " in the project.\n"
											 : "Which of these do you mean?\n";
			for (const FProjectPath& Path : Named)
			{
				Text += "- " + AnswerMarkdown::FileLink(Path) + '\n';
			}
			Answer(Text);
			return true;
		}
		if (Place.bIsFolder)
		{
			return AnswerFolder(Place);
		}

		FIndexLookup Outline;
		std::string Problem;
		const bool bIsMarkdown = IsMarkdown(Place.Relative);
		const bool bIsAlive = BeginStep("Outlining " + Place.Relative) &&
			RunTool("outline", { { "path", Place.Relative } },
				[&]
				{
					FCodeIndexControl::WaitUntilOpened(OpeningSeconds);
					Outline = FCodeIndexControl::Outline(Place.Relative, MaxOutlineSymbols + 1);
					if (!CanAskIndex(Outline, Files) || !Outline.bIsExact)
					{
						// Files that the index does not hold, or not yet, are read now.
						Outline.Symbols.clear();
						const FProjectText Content = Files.Read(Place.Absolute);
						Problem = Content.Problem;
						if (Content.IsValid() && bIsMarkdown)
						{
							Outline.Symbols = FindHeadings(Content.Text);
						}
						else if (Content.IsValid())
						{
							FCodeIndexControl::OutlineFile(Place.Absolute, Outline.Symbols, Problem);
						}
					}
					FToolOutcome Outcome;
					Outcome.bSuccess = Problem.empty();
					Outcome.Sentence = !Problem.empty() ? "Not outlined: " + Problem
						: bIsMarkdown					? Utf8Text::Count(Outline.Symbols.size(), "heading", "headings")
														: Utf8Text::Count(Outline.Symbols.size(), "symbol", "symbols");
					return Outcome;
				});
		if (!bIsAlive)
		{
			return false;
		}
		const std::string Link = AnswerMarkdown::FileLink(Place);
		if (!Problem.empty())
		{
			Answer(Link + " could not be outlined: " + AnswerMarkdown::PlainText(Problem) + ".\n");
			return true;
		}
		if (Outline.Symbols.empty())
		{
			Answer(Link + (bIsMarkdown ? " has no headings.\n" : " has no symbols that I know of.\n"));
			return true;
		}
		const bool bIsCut = Outline.Symbols.size() > MaxOutlineSymbols;
		if (bIsCut)
		{
			Outline.Symbols.resize(MaxOutlineSymbols);
		}
		const std::string Count = bIsMarkdown ? Utf8Text::Count(Outline.Symbols.size(), "heading", "headings")
											  : Utf8Text::Count(Outline.Symbols.size(), "symbol", "symbols");
		Answer("Outline of " + Link + (bIsCut ? ", the first " : ", ") + Count + " with their lines:\n" +
			AnswerMarkdown::CodeBlock(MakeOutlineText(Outline.Symbols), ""));
		return true;
	}
}
