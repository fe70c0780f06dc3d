#include "ConnectionList.h"

namespace
{
	using Velmora::FAgentConnection;
	using Velmora::FAgentConnections;

	/** From the last key to the file. */
	constexpr double WriteSeconds = 0.4;
}

FEditedConnections::FEditedConnections()
	: Writer([this] { Write(); }, WriteSeconds)
{
	Reload();
}

FEditedConnections::~FEditedConnections()
{
	Writer.Finish();
}

bool FEditedConnections::Reload()
{
	{
		const std::lock_guard<std::mutex> Lock(Mutex);
		if (Wanted.IsSet() || bIsWriting || !WriteProblem.IsEmpty())
		{
			return false;
		}
	}
	FString Problem;
	const TArray<FAgentConnection> Read = FAgentConnections::List(Problem);
	bool bIsSame = Problem.Equals(ReadProblem) && Read.Num() == Items.Num();
	for (int32 Index = 0; bIsSame && Index < Items.Num(); ++Index)
	{
		// What is half typed here counts more than what the file says.
		bIsSame = Items[Index]->Stored.IsSet() && Items[Index]->Stored->Name.Equals(Read[Index].Name);
	}
	const bool bHasUnstored =
		Items.ContainsByPredicate([](const TSharedRef<FEditedConnection>& Item) { return !Item->Complaint.IsEmpty(); });
	ReadProblem = Problem;
	if (bIsSame || bHasUnstored)
	{
		return false;
	}
	Default = FAgentConnections::GetDefault();
	Items.Reset();
	for (const FAgentConnection& Connection : Read)
	{
		const TSharedRef<FEditedConnection> Item = MakeShared<FEditedConnection>();
		Item->Now = Connection;
		Item->Stored = Connection;
		Items.Add(Item);
	}
	return true;
}

FString FEditedConnections::GetProblem() const
{
	const std::lock_guard<std::mutex> Lock(Mutex);
	return ReadProblem.IsEmpty() ? WriteProblem : ReadProblem;
}

TSharedRef<FEditedConnection> FEditedConnections::Add()
{
	const auto IsTaken = [this](const FString& Name)
	{ return Items.ContainsByPredicate([&Name](const TSharedRef<FEditedConnection>& Item) { return Item->Now.Name.Equals(Name); }); };
	const TSharedRef<FEditedConnection> Item = MakeShared<FEditedConnection>();
	Item->Now.Name = TEXT("New connection");
	for (int32 Number = 2; IsTaken(Item->Now.Name); ++Number)
	{
		Item->Now.Name = FString::Printf(TEXT("New connection %d"), Number);
	}
	Items.Add(Item);
	NoteChange(Item);
	return Item;
}

void FEditedConnections::Remove(const TSharedRef<FEditedConnection>& Item)
{
	if (IsDefault(*Item))
	{
		Default.Empty();
	}
	Items.RemoveAll([&Item](const TSharedRef<FEditedConnection>& Other) { return Other == Item; });
	Store();
}

void FEditedConnections::NoteChange(const TSharedRef<FEditedConnection>& Item)
{
	const auto IsOther = [&Item](const TSharedRef<FEditedConnection>& Other)
	{ return Other != Item && Other->Now.Name.Equals(Item->Now.Name); };
	const bool bWasDefault = IsDefault(*Item);
	Item->Complaint = Item->Now.Name.TrimStartAndEnd().IsEmpty() ? FString(TEXT("It needs a name."))
		: Items.ContainsByPredicate(IsOther)					 ? FString(TEXT("Another connection has this name."))
		: Item->Now.Url.IsEmpty()								 ? FString(TEXT("It needs an address, such as http://127.0.0.1:8080."))
																 : FAgentConnections::Check(Item->Now);
	if (!Item->Complaint.IsEmpty())
	{
		return;
	}
	Item->Stored = Item->Now;
	if (bWasDefault)
	{
		// It is the default under its new name as well.
		Default = Item->Now.Name;
	}
	Store();
}

bool FEditedConnections::IsDefault(const FEditedConnection& Item) const
{
	return Item.Stored.IsSet() && !Default.IsEmpty() && Item.Stored->Name.Equals(Default);
}

void FEditedConnections::SetDefault(const FEditedConnection* Item)
{
	Default = Item && Item->Stored.IsSet() ? Item->Stored->Name : FString();
	Store();
}

void FEditedConnections::Store()
{
	if (!ReadProblem.IsEmpty())
	{
		// A file that could not be read holds what this page does not know.
		return;
	}
	FWanted Next;
	for (const TSharedRef<FEditedConnection>& Item : Items)
	{
		if (Item->Stored.IsSet())
		{
			Next.Connections.Add(Item->Stored.GetValue());
		}
	}
	Next.Default = Default;
	{
		const std::lock_guard<std::mutex> Lock(Mutex);
		Wanted = MoveTemp(Next);
	}
	Writer.Request();
}

void FEditedConnections::Write()
{
	TOptional<FWanted> Taken;
	{
		const std::lock_guard<std::mutex> Lock(Mutex);
		// Taken out: a change that comes while this one is written is another one.
		Taken = MoveTemp(Wanted);
		Wanted.Reset();
		bIsWriting = Taken.IsSet();
	}
	if (!Taken.IsSet())
	{
		return;
	}
	FString Problem = FAgentConnections::Save(Taken->Connections);
	if (Problem.IsEmpty() && !FAgentConnections::GetDefault().Equals(Taken->Default))
	{
		Problem = FAgentConnections::SetDefault(Taken->Default);
	}
	const std::lock_guard<std::mutex> Lock(Mutex);
	WriteProblem = Problem;
	bIsWriting = false;
}
