#include "RecordedMix.h"

#include <iterator>

namespace
{
	const TCHAR* const Vocabulary[] = { TEXT("the"), TEXT("inventory"), TEXT("component"), TEXT("saves"), TEXT("its"), TEXT("slots"),
		TEXT("when"), TEXT("a"), TEXT("level"), TEXT("is"), TEXT("loaded"), TEXT("and"), TEXT("reads"), TEXT("them"), TEXT("back"),
		TEXT("from"), TEXT("an"), TEXT("older"), TEXT("version"), TEXT("without"), TEXT("losing"), TEXT("anything"), TEXT("that"),
		TEXT("player"), TEXT("has"), TEXT("picked"), TEXT("up"), TEXT("since"), TEXT("last"), TEXT("checkpoint"), TEXT("of"), TEXT("this"),
		TEXT("quest"), TEXT("character"), TEXT("moves"), TEXT("towards"), TEXT("nearest"), TEXT("door"), TEXT("before"), TEXT("behaviour"),
		TEXT("tree"), TEXT("picks"), TEXT("another"), TEXT("task"), TEXT("in"), TEXT("editor"), TEXT("widget"), TEXT("blueprint") };

	TSharedPtr<FChatMessage> MakeToolGroup(int32 Index)
	{
		const TSharedPtr<FChatMessage> Group = FChatMessage::CreateToolSummaryMessage();
		for (int32 Run = 0; Run < 5; ++Run)
		{
			const TSharedPtr<FChatMessage> Tool = FChatMessage::CreateToolMessage(TEXT("read_file"), TEXT("{}"), EToolStatus::Success);
			Tool->ToolColor = TEXT("#4A90D9");
			Tool->ToolDisplayName = TEXT("Read File");
			Tool->ToolActionVerb = TEXT("Read");
			Tool->ToolDisplayParameter = FString::Printf(TEXT("Source/Game/Inventory%d.cpp"), Index * 5 + Run);
			Group->ToolExecutions.Add(Tool);
		}
		Group->bIsComplete = true;
		return Group;
	}

	TSharedPtr<FChatMessage> MakeLongAnswer(int32 Index)
	{
		FString Text = FRecordedMix::MakeWords(200, Index);
		Text += TEXT("\n\n| Field | Type | Meaning |\n|-------|:----:|--------:|\n| Item | name | what lies in the slot |\n| Quantity | "
					 "number | how many of it |\n| Durability | number | how worn it is |\n");
		Text += TEXT("\n```cpp\nvoid UInventoryComponent::SaveTo(FArchive& Archive)\n{\n\tint32 Version = CurrentVersion;\n\tArchive << "
					 "Version;\n\tfor (FInventorySlot& Slot : Slots)\n\t{\n\t\tArchive << Slot.Item << Slot.Quantity;\n\t}\n}\n```\n");
		return FChatMessage::CreateAIMessage(Text, false);
	}
}

FString FRecordedMix::MakeWords(int32 Length, int32 Seed)
{
	FString Text;
	Text.Reserve(Length + 16);
	uint32 State = static_cast<uint32>(Seed) * 2654435761u + 12345u;
	int32 InSentence = 0;
	while (Text.Len() < Length)
	{
		State = State * 1664525u + 1013904223u;
		if (!Text.IsEmpty())
		{
			Text += InSentence == 0 ? TEXT(". ") : TEXT(" ");
		}
		Text += Vocabulary[(State >> 16) % std::size(Vocabulary)];
		InSentence = (InSentence + 1) % 14;
	}
	// A word that no other message has.
	Text += FString::Printf(TEXT(" no%d."), Seed);
	return Text;
}

TSharedPtr<FChatMessage> FRecordedMix::MakeAnswer(int32 Index)
{
	return FChatMessage::CreateAIMessage(MakeWords(600, Index), false);
}

TSharedPtr<FChatMessage> FRecordedMix::Make(int32 Index)
{
	const int32 Place = Index % 20;
	if (Place == 19)
	{
		return MakeLongAnswer(Index);
	}
	if (Place % 6 == 5)
	{
		return MakeToolGroup(Index);
	}
	// Sixteen places are left: every other one is an answer.
	const int32 Rank = Place - Place / 6;
	if (Rank % 2 == 1)
	{
		return MakeAnswer(Index);
	}
	return Rank % 4 == 2 ? FChatMessage::CreateSystemMessage(MakeWords(60, Index)) : FChatMessage::CreateUserMessage(MakeWords(80, Index));
}

TArray<TSharedPtr<FChatMessage>> FRecordedMix::MakeMany(int32 Count)
{
	TArray<TSharedPtr<FChatMessage>> Messages;
	for (int32 Index = 0; Index < Count; ++Index)
	{
		Messages.Add(Make(Index));
	}
	return Messages;
}

FString FRecordedMix::MakeMarkdown(int32 Length)
{
	FString Text;
	Text.Reserve(Length + 4096);
	for (int32 Section = 0; Text.Len() < Length; ++Section)
	{
		Text += FString::Printf(TEXT("## Step %d\n\n"), Section);
		Text += MakeWords(600, Section);
		Text += TEXT("\n\n- first: ");
		Text += MakeWords(80, Section + 1);
		Text += TEXT("\n- second: ");
		Text += MakeWords(80, Section + 2);
		Text += TEXT("\n\n```cpp\nArchive << Slot.Item << Slot.Quantity;\nreturn true;\n```\n\n");
		Text += MakeWords(600, Section + 3);
		Text += TEXT(" See `LogInventory` for **all** of it.\n\n");
	}
	return Text;
}
