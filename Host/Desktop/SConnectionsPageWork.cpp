#include "Async/Async.h"
#include "Async/TaskGraphInterfaces.h"
#include "SConnectionsPage.h"
#include "Widgets/Input/SComboBox.h"

// What the page asks of servers and keyrings. All of it runs on other threads: either may take as long as it likes, or ask its user
// for a password first. An answer counts only for the connection that was shown when it was asked for.

#define LOCTEXT_NAMESPACE "ConnectionsPage"

namespace
{
	using Velmora::FAgentConnections;
	using Velmora::FConnectionReport;
}

void SConnectionsPage::SetModelOptions(const TArray<FString>& Models, const FString& Instead)
{
	bOffersModels = !Models.IsEmpty();
	ModelOptions.Empty();
	for (const FString& Model : Models)
	{
		ModelOptions.Add(MakeShared<FString>(Model));
	}
	if (ModelOptions.IsEmpty())
	{
		ModelOptions.Add(MakeShared<FString>(Instead));
	}
	if (ModelList)
	{
		ModelList->RefreshOptions();
		MarkModel();
	}
}

void SConnectionsPage::MarkModel()
{
	if (!ModelList || !Shown)
	{
		return;
	}
	const TSharedPtr<FString>* const Named = !bOffersModels ? nullptr
															: ModelOptions.FindByPredicate([this](const TSharedPtr<FString>& Option)
																  { return Option->Equals(Shown->Now.Model, ESearchCase::CaseSensitive); });
	ModelList->SetSelectedItem(Named ? *Named : nullptr);
}

void SConnectionsPage::ListModels()
{
	// The name may have been typed since.
	MarkModel();
	if (!Shown || bOffersModels)
	{
		return;
	}
	const TWeakPtr<SConnectionsPage> Weak = SharedThis(this);
	Async(EAsyncExecution::Thread,
		[Weak, Connection = Shown->Now, Number = ShownNumber]()
		{
			TArray<FString> Lines;
			FString Problem;
			FAgentConnections::ListModels(Connection, Lines, Problem);
			for (FString& Line : Lines)
			{
				// Behind two blanks stands what else is known of the model.
				const int32 Blanks = Line.Find(TEXT("  "));
				Line = Blanks == INDEX_NONE ? Line : Line.Left(Blanks);
			}
			AsyncTask(ENamedThreads::GameThread,
				[Weak, Lines, Problem, Number]()
				{
					const TSharedPtr<SConnectionsPage> Page = Weak.Pin();
					if (Page && Page->ShownNumber == Number)
					{
						Page->SetModelOptions(Lines, Problem.IsEmpty() ? FString(TEXT("The server lists no model.")) : Problem);
					}
				});
		});
}

void SConnectionsPage::LookUpKey()
{
	bWantsKey = false;
	bKnowsKey = false;
	if (!Shown)
	{
		return;
	}
	const TWeakPtr<SConnectionsPage> Weak = SharedThis(this);
	Async(EAsyncExecution::Thread,
		[Weak, Connection = Shown->Now, Number = ShownNumber]()
		{
			// A keyring may ask for its password first.
			const FString Source = FAgentConnections::DescribeKey(Connection);
			AsyncTask(ENamedThreads::GameThread,
				[Weak, Source, Number]()
				{
					const TSharedPtr<SConnectionsPage> Page = Weak.Pin();
					if (Page && Page->ShownNumber == Number)
					{
						Page->KeySource = Source;
						Page->bKnowsKey = true;
					}
				});
		});
}

void SConnectionsPage::StoreKey(const FString& Key)
{
	if (!Shown)
	{
		return;
	}
	Complaints.Remove(TEXT("Key"));
	const TWeakPtr<SConnectionsPage> Weak = SharedThis(this);
	Async(EAsyncExecution::Thread,
		[Weak, Key, Connection = Shown->Now, Number = ShownNumber]()
		{
			const FString Problem = FAgentConnections::StoreKey(Connection, Key);
			AsyncTask(ENamedThreads::GameThread,
				[Weak, Problem, Number]()
				{
					const TSharedPtr<SConnectionsPage> Page = Weak.Pin();
					if (Page && Page->ShownNumber == Number)
					{
						Page->Complaints.Add(TEXT("Key"), Problem);
						Page->LookUpKey();
					}
				});
		});
}

void SConnectionsPage::Test()
{
	if (!Shown)
	{
		return;
	}
	bIsTesting = true;
	TestText = LOCTEXT("Testing", "Asking the server\u2026");
	const TWeakPtr<SConnectionsPage> Weak = SharedThis(this);
	FAgentConnections::Test(Shown->Now,
		[Weak, Number = ShownNumber](const FConnectionReport& Report)
		{
			const TSharedPtr<SConnectionsPage> Page = Weak.Pin();
			if (Page && Page->ShownNumber == Number)
			{
				Page->bIsTesting = false;
				Page->TestText = FText::FromString(Report.Sentence);
				if (!Report.Models.IsEmpty())
				{
					Page->SetModelOptions(Report.Models, FString());
				}
			}
		});
}

#undef LOCTEXT_NAMESPACE
