#include "Host/ProjectWalk.h"
#include "Text/Utf8Text.h"
#include "Tools/AnswerMarkdown.h"
#include "Tools/CommandSandbox.h"
#include "Tools/ProjectCopy.h"
#include "Tools/ToolBox.h"

// The tool that runs commands: behind walls, on a copy, with its differences in the journal.

namespace Velmora
{
	namespace
	{
		constexpr size_t MaxCommandBytes = 16 * 1024;
		constexpr size_t MaxListedChanges = 40;

		/** What cannot be seen in a question is not asked for. */
		bool IsPlainCommand(const std::string& Command)
		{
			return !Command.empty() && Command.size() <= MaxCommandBytes && Utf8Text::Sanitise(Command) == Command;
		}

		std::string DescribeEnd(const FCommandEnd& End, const FCommandLimits& Limits)
		{
			switch (End.Why)
			{
			case FCommandEnd::EWhy::Exited:
				return End.ExitCode == 0 ? "Done" : "Ended with exit code " + std::to_string(End.ExitCode);
			case FCommandEnd::EWhy::Cancelled:
				return "Stopped";
			case FCommandEnd::EWhy::NotStarted:
				return "The command could not be started";
			case FCommandEnd::EWhy::TooLong:
				return "Stopped after " + std::to_string(static_cast<int>(Limits.MaxSeconds)) + " s";
			case FCommandEnd::EWhy::TooMuchMemory:
				return "Stopped, since it took more memory than it may";
			case FCommandEnd::EWhy::TooManyProcesses:
				return "Stopped, since it started more processes than it may";
			case FCommandEnd::EWhy::TooMuchOutput:
				return "Stopped, since it said more than anybody reads";
			}
			return std::string();
		}

		std::string ListChanges(const FCopyChanges& Changes)
		{
			std::string Text;
			for (size_t Index = 0; Index < std::min(Changes.Applied.size(), MaxListedChanges); ++Index)
			{
				Text += "Changed: " + Utf8Text::Sanitise(Changes.Applied[Index]) + '\n';
			}
			if (Changes.Applied.size() > MaxListedChanges)
			{
				Text += "And " + std::to_string(Changes.Applied.size() - MaxListedChanges) + " more files.\n";
			}
			for (const std::string& Note : Changes.Notes)
			{
				Text += Utf8Text::Sanitise(Note) + '\n';
			}
			return Text;
		}
	}

	void FToolBox::RunCommandTool(const FToolArguments& Arguments, FToolResult& OutResult)
	{
		const auto Refuse = [&OutResult](const std::string& Why)
		{
			OutResult.Sentence = Why;
			OutResult.Text = Why + ".\n";
		};
		// 1. What cannot be run at all.
		const std::string Command(Utf8Text::Trim(Arguments.GetText("command")));
		if (!FCommandSandbox::WhyUnavailable().empty() || !IsPlainCommand(Command))
		{
			Refuse(!FCommandSandbox::WhyUnavailable().empty() ? FCommandSandbox::WhyUnavailable()
															  : "Not run: a command is a line of text, of at most 16 KiB");
			return;
		}

		// 2. The question. A yes holds for what it said: a project that has grown too large since is asked for again.
		const FProjectPlan Plan = FProjectPlan::Make(Files.GetRoot());
		if (!bIsPermitted || (Plan.bIsTooLarge && AskedInPlace != Command))
		{
			AskedInPlace = Plan.bIsTooLarge ? Command : std::string();
			OutResult.Question = FToolQuestion{ Command,
				Plan.bIsTooLarge ? "May this command be run in the project? **Undo will not cover what it does**: the project is too large "
								   "for a copy. It has no network and cannot write outside the project."
								 : "May this command be run? It works on a copy of the project, has no network and cannot write anywhere "
								   "else; what it changes can be undone.",
				AnswerMarkdown::CodeBlock(Command, "bash") };
			Refuse("Not run: it needs the user's consent");
			return;
		}

		// 3. The command itself.
		RunPermitted(Command, Plan, OutResult);
	}

	void FToolBox::RunPermitted(const std::string& Command, const FProjectPlan& Plan, FToolResult& OutResult)
	{
		// 1. On the copy, if there is one.
		FSandboxedCommand Sandboxed;
		Sandboxed.Line = Command;
		Sandboxed.ProjectFolder = Sandboxed.WritableFolder = Files.GetRoot();
		Sandboxed.ReadOnly = Plan.Steering;
		FProjectCopy Copy(Files.GetRoot(), Plan);
		if (Plan.bIsTooLarge)
		{
			Sandboxed.HiddenFiles = Plan.Secrets;
			Sandboxed.HiddenFolders = Plan.OwnFolders;
		}
		else if (const std::string Problem = Copy.Make(IsCancelled); !Problem.empty())
		{
			OutResult.Sentence = "Not run: " + Problem;
			OutResult.Text = OutResult.Sentence + ".\n";
			return;
		}
		else
		{
			Sandboxed.WritableFolder = Copy.GetFolder();
		}
		const FCommandEnd End = FCommandSandbox::Run(Sandboxed, IsCancelled);

		// 2. What it has done. Half of what a command that was stopped meant to do is worth nothing.
		FCopyChanges Changes;
		const bool bHasExited = End.Why == FCommandEnd::EWhy::Exited;
		if (Plan.bIsTooLarge)
		{
			Changes.Notes.push_back("It worked on the project itself, so what it changed cannot be undone.");
		}
		else if (!bHasExited)
		{
			Changes.Notes.push_back("Nothing of what it wrote was taken over.");
		}
		else if (!IsCancelled())
		{
			Changes = Copy.Apply(*Journal, TransactionId);
		}
		if (!Changes.Applied.empty() || Plan.bIsTooLarge)
		{
			NoteProjectChange();
		}
		OutResult.bSuccess = bHasExited && End.ExitCode == 0;
		OutResult.Sentence = DescribeEnd(End, Sandboxed.Limits);
		if (!Changes.Applied.empty())
		{
			OutResult.Sentence += ", " + Utf8Text::Count(Changes.Applied.size(), "file", "files") + " changed";
		}
		OutResult.Text = OutResult.Sentence + ".\n" + ListChanges(Changes) +
			(End.Output.empty() ? "It said nothing.\n" : "Output:\n" + Utf8Text::Sanitise(End.Output));
	}
}
