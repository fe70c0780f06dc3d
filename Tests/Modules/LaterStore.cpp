// A program whose store is of a version that is one higher: LaterStore PATH COMMAND [ARGUMENT...].

#include "Host/HostTasks.h"
#include "Store/ConversationStore.h"
#include "Store/StoreNotices.h"

#include <cstdio>
#include <string_view>

using namespace Velmora;

namespace
{
	int Report(const FOutcome& Outcome)
	{
		std::printf("%s\n", Outcome ? "done" : Outcome.GetWords().c_str());
		return Outcome ? 0 : 1;
	}

	FConversationMessage MakeMessage(const char* Text)
	{
		FConversationMessage Message;
		Message.Content = UTF8_TO_TCHAR(Text);
		return Message;
	}
}

int main(int Count, char** Arguments)
{
	if (Count < 3)
	{
		return 2;
	}
	const std::string_view Command = Arguments[2];
	const TSharedRef<FConversationStore> Store = MakeShared<FConversationStore>(Arguments[1]);
	int Code = 2;
	if (Command == "put" && Count > 3) // ID TEXT...
	{
		FConversationMetadata Conversation;
		Conversation.Id = UTF8_TO_TCHAR(Arguments[3]);
		for (int Index = 4; Index < Count; ++Index)
		{
			Conversation.Messages.Add(MakeMessage(Arguments[Index]));
		}
		Code = Report(Store->Append(Conversation, 0));
	}
	else if (Command == "add" && Count == 5) // ID TEXT
	{
		Code = Report(Store->AppendMessage(UTF8_TO_TCHAR(Arguments[3]), MakeMessage(Arguments[4])));
	}
	else if (Command == "check") // What a start does.
	{
		Store->Check();
		for (const std::vector<std::string>& Notices : { StoreNotices::Take(), StoreNotices::TakeNews() })
		{
			for (const std::string& Notice : Notices)
			{
				std::printf("%s\n", Notice.c_str());
			}
		}
		Code = 0;
	}
	FHostTasks::WaitForBackground(30.0);
	return Code;
}
