#include "ConnectionChoice.h"

#include "ConversationPrinter.h"
#include "DesktopOptions.h"
#include "Host/AgentConnections.h"

namespace
{
	/** With --server: named for nothing else, so that no key goes where it was not meant to go. */
	const TCHAR* ServerKeyVariable = TEXT("VELMORA_SERVER_KEY");

	/** Who answers in spite of a default. No connection that is named so can be reached by --connection. */
	const TCHAR* BuiltInName = TEXT("built-in");

	/** The connection that the options name, or the default; false with a sentence, or with none when they name none. */
	bool FindChosen(const FDesktopOptions& Options, Velmora::FAgentConnection& OutConnection, FString& OutProblem)
	{
		if (!Options.Server.IsEmpty())
		{
			// Stored nowhere: the address is all there is to call it by.
			OutConnection.Name = Options.Server;
			OutConnection.Url = Options.Server;
			OutConnection.KeyVariable = ServerKeyVariable;
		}
		else if (const FString Name = Options.Connection.IsEmpty() ? Velmora::FAgentConnections::GetDefault() : Options.Connection;
				 !Name.IsEmpty() && !Name.Equals(BuiltInName))
		{
			const TArray<Velmora::FAgentConnection> Known = Velmora::FAgentConnections::List(OutProblem);
			const Velmora::FAgentConnection* const Found =
				Known.FindByPredicate([&Name](const Velmora::FAgentConnection& Item) { return Item.Name.Equals(Name); });
			if (!Found)
			{
				OutProblem = OutProblem.IsEmpty()
					? FString::Printf(TEXT("There is no connection \"%s\". --list-connections shows those there are."), *Name)
					: OutProblem;
				return false;
			}
			OutConnection = *Found;
		}
		else
		{
			return false;
		}
		if (!Options.Model.IsEmpty())
		{
			OutConnection.Model = Options.Model;
		}
		OutProblem = Velmora::FAgentConnections::Check(OutConnection);
		return OutProblem.IsEmpty();
	}
}

FString ConnectionChoice::Select(const FDesktopOptions& Options)
{
	Velmora::FAgentConnection Connection;
	FString Problem;
	if (FindChosen(Options, Connection, Problem))
	{
		Velmora::FAgentConnections::Select(Connection);
	}
	if (!Problem.IsEmpty() && Options.Connection.IsEmpty() && Options.Server.IsEmpty())
	{
		// Nobody asked for it in this run, so it keeps nobody from working.
		PrintToStandardError(
			TEXT("velmora: The default connection cannot be used, so the built-in agent answers. ") + Problem + TEXT("\n"));
		return FString();
	}
	return Problem;
}

int32 ConnectionChoice::List(const FDesktopOptions& Options)
{
	FString Problem;
	TArray<FString> Lines;
	if (Options.bListModels)
	{
		Velmora::FAgentConnection Connection;
		if (FindChosen(Options, Connection, Problem))
		{
			Velmora::FAgentConnections::ListModels(Connection, Lines, Problem);
		}
	}
	else
	{
		for (const Velmora::FAgentConnection& Connection : Velmora::FAgentConnections::List(Problem))
		{
			Lines.Add(
				Connection.Name + TEXT("  ") + Connection.Url + (Connection.Model.IsEmpty() ? FString() : TEXT("  ") + Connection.Model));
		}
	}
	// What could be listed is printed, whatever went wrong after it.
	for (const FString& Line : Lines)
	{
		PrintToStandardOutput(Line + TEXT("\n"));
	}
	if (!Problem.IsEmpty())
	{
		PrintToStandardError(TEXT("velmora: ") + Problem + TEXT("\n"));
		return 1;
	}
	if (Options.bListConnections && Lines.Num() == 0)
	{
		// Not on standard output: a script that counts lines finds none.
		PrintToStandardError(TEXT("velmora: No connection is set up. The page Connections of the settings adds one.\n"));
	}
	return 0;
}
