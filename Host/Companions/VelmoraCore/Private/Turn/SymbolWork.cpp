#include "Turn/SymbolWork.h"

#include <algorithm>

#include "Text/Utf8Text.h"
#include "Tools/AnswerMarkdown.h"
#include "Tools/SymbolLookup.h"
#include "Turn/BrowseWork.h"
#include "Turn/SearchWork.h"

namespace Velmora
{
	namespace
	{
		using CodeIntel::FIndexSymbol;

		/** Other places told without being folded away. */
		constexpr size_t MaxOpenPlaces = 6;

		/** "function `FThing::Run`". */
		std::string DescribeSymbol(const FIndexSymbol& Symbol)
		{
			return AnswerMarkdown::PlainText(Symbol.Kind) + ' ' + AnswerMarkdown::InlineCode(GetWholeSymbolName(Symbol), 120);
		}

		/** The best of the engine's symbols, and the places of the next few. */
		std::string DescribeEngineSymbols(const std::string& Code, const CodeIntel::FIndexLookup& Engine)
		{
			const FIndexSymbol& Best = Engine.Symbols.front();
			std::string Text = Code + " is defined in the engine: " +
				AnswerMarkdown::FileName(Engine.Root + '/' + Best.Path + ':' + std::to_string(Best.Line), 200) + " (" +
				DescribeSymbol(Best) + ")\n";
			for (size_t Index = 1; Index < std::min(Engine.Symbols.size(), MaxOpenPlaces + 1); ++Index)
			{
				const FIndexSymbol& Other = Engine.Symbols[Index];
				Text += "- " + AnswerMarkdown::FileName(Other.Path + ':' + std::to_string(Other.Line), 160) + ' ' + DescribeSymbol(Other) +
					'\n';
			}
			return Text;
		}

		std::string SymbolItem(const FProjectFiles& Files, const FIndexSymbol& Symbol)
		{
			return "- " + AnswerMarkdown::FileLink({ Files.GetRoot() + '/' + Symbol.Path, Symbol.Path, false }, Symbol.Line) + ' ' +
				DescribeSymbol(Symbol) + '\n';
		}
	}

	bool FSymbolWork::RunFindSymbol()
	{
		if (Request.Target.empty())
		{
			return Say("Which symbol should I look up? For example: `where is FThing defined?`\n");
		}
		// A place that does not exist may be part of the name; then the whole project counts.
		FProjectPath Where;
		FindScope(Where);
		const std::string Name = Request.TargetInScope.empty() ? Request.Target : Request.TargetInScope;
		const std::string Code = AnswerMarkdown::InlineCode(Name);
		FSymbolAnswer Found;
		const bool bIsAlive = Desk.BeginStep("Looking up " + Name + " in the code index") &&
			Desk.RunTool("find_symbol", { { "name", Name } },
				[&]
				{
					Found = LookUpSymbol(Desk.Files, Name, Where);
					const size_t Count = Found.Project.bIsExact ? Found.Project.Symbols.size()
						: Found.Engine.bIsExact					? Found.Engine.Symbols.size()
																: 0;
					return FToolOutcome{ true,
						!Found.bIsReady	 ? std::string("The code index is not ready")
							: Count == 0 ? "No symbol of that name"
										 : Utf8Text::Count(Count, "symbol", "symbols") + (Found.Project.bIsExact ? "" : " in the engine") };
				});
		if (!bIsAlive)
		{
			return false;
		}
		if (Found.Project.bIsExact && !Found.Project.Symbols.empty())
		{
			return AnswerSymbols(Name, Found.Project.Symbols);
		}
		if (Found.Engine.bIsExact && !Found.Engine.Symbols.empty())
		{
			return Say(DescribeEngineSymbols(Code, Found.Engine));
		}
		// What the index does not know may still stand in the text: it is searched, and the answer says why.
		Desk.AttachmentNotes += Found.bIsReady ? "The code index has no symbol " + Code + ", so I searched the text instead.\n"
											   : std::string("The code index is not ready, so I searched the text instead.\n");
		if (!Found.Project.bIsExact && !Found.Project.Symbols.empty())
		{
			Desk.AttachmentNotes += "**Symbols whose names begin so**\n";
			for (size_t Index = 0; Index < std::min(Found.Project.Symbols.size(), MaxOpenPlaces); ++Index)
			{
				Desk.AttachmentNotes += SymbolItem(Desk.Files, Found.Project.Symbols[Index]);
			}
		}
		return FSearchWork(Desk, Request).RunFindText();
	}

	bool FSymbolWork::AnswerSymbols(const std::string& Name, const std::vector<CodeIntel::FIndexSymbol>& Symbols)
	{
		const FIndexSymbol& Best = Symbols.front();
		FSearchHit Hit;
		Hit.File = { Desk.Files.GetRoot() + '/' + Best.Path, Best.Path, false };
		Hit.Line = Best.Line;
		Hit.Kind = EHitKind::Definition;
		std::string Text = AnswerMarkdown::InlineCode(Name) + (Best.Kind == "prototype" ? " is declared in " : " is defined in ") +
			AnswerMarkdown::FileLink(Hit.File, Hit.Line) + " (" + DescribeSymbol(Best) + ")\n";
		if (!FSearchWork(Desk, Request).AppendSnippet(Hit, Text))
		{
			return false;
		}
		std::string Others;
		for (size_t Index = 1; Index < Symbols.size(); ++Index)
		{
			Others += SymbolItem(Desk.Files, Symbols[Index]);
		}
		if (Symbols.size() > 1)
		{
			const std::string Total = Utf8Text::Count(Symbols.size() - 1, "more symbol", "more symbols") + " of that name";
			Text += Symbols.size() - 1 > MaxOpenPlaces ? AnswerMarkdown::Collapsible(Total, Others) : "**" + Total + "**\n" + Others;
		}
		return Say(Text);
	}

	bool FSymbolWork::RunOutline()
	{
		const std::vector<FProjectPath> Named = Desk.FindNamedAttachments(Request.Target);
		if (Named.size() > 1)
		{
			return FBrowseWork(Desk, Request).AnswerAttachments(Named);
		}
		FProjectPath Place;
		if (Request.Target.empty() && !Desk.Attachments.empty())
		{
			Place = Desk.Attachments.front();
		}
		else if (Request.Target.empty())
		{
			return Say("Which file should I outline? For example: `outline README.md`\n");
		}
		else if (!Desk.FindPlace(Request.Target, Place))
		{
			return AskWhichFile();
		}
		if (Place.bIsFolder)
		{
			return FBrowseWork(Desk, Request).AnswerFolder(Place);
		}

		FFileOutline Outline;
		const bool bIsAlive = Desk.BeginStep("Outlining " + Place.Relative) &&
			Desk.RunTool("outline", { { "path", Place.Relative } },
				[&]
				{
					Outline = OutlineProjectFile(Desk.Files, Place);
					return FToolOutcome{ Outline.Problem.empty(),
						Outline.Problem.empty() ? Outline.CountSymbols() : "Not outlined: " + Outline.Problem };
				});
		if (!bIsAlive)
		{
			return false;
		}
		const std::string Link = AnswerMarkdown::FileLink(Place);
		if (!Outline.Problem.empty())
		{
			return Say(Link + " could not be outlined: " + AnswerMarkdown::PlainText(Outline.Problem) + ".\n");
		}
		if (Outline.Symbols.empty())
		{
			return Say(Link + (Outline.bIsMarkdown ? " has no headings.\n" : " has no symbols that I know of.\n"));
		}
		return Say("Outline of " + Link + (Outline.bIsCut ? ", the first " : ", ") + Outline.CountSymbols() + " with their lines:\n" +
			AnswerMarkdown::CodeBlock(MakeOutlineText(Outline.Symbols), ""));
	}

	bool FSymbolWork::AskWhichFile()
	{
		std::vector<FProjectPath> Named;
		if (!Desk.BeginStep("Looking for " + Request.Target) || !Desk.RunFindFileTool(Request.Target, Named))
		{
			return false;
		}
		if (Named.empty())
		{
			Desk.Fail("There is no file " + Request.Target + " in the project.");
		}
		std::string Text = Named.empty() ? "There is no file " + AnswerMarkdown::FileName(Request.Target) + " in the project.\n"
										 : "Which of these do you mean?\n";
		return Say(Text + AnswerMarkdown::FileList(Named));
	}
}
