#include "AccessNames.h"

#include "AgentChoice.h"
#include "Host/AccessRules.h"

namespace
{
	// Tags first, then classes. What has words of its own, or a tooltip, is not here.
	// clang-format off
	constexpr FAccessRule Rules[] = {
		// The chat.
		{ TEXT("ChatWindow"), EHostRole::Group, TEXT("Chat") },
		{ TEXT("MessageList"), EHostRole::List, TEXT("Messages") },
		{ TEXT("InputTextBox"), EHostRole::None, TEXT("Prompt") },
		{ TEXT("ModeComboBox"), EHostRole::None, TEXT("Mode") },
		{ TEXT("ConversationComboBox"), EHostRole::None, TEXT("Conversation") },
		{ TEXT("ContextChips"), EHostRole::Group, TEXT("Attached files") },
		{ TEXT("FileSearchDropdown"), EHostRole::Group, TEXT("Files to attach") },
		{ TEXT("StatusText"), EHostRole::Status },
		{ TEXT("EmptyState"), EHostRole::Group, TEXT("Welcome") },
		{ TEXT("ConversationPlan"), EHostRole::Group, TEXT("Plan") },
		{ TEXT("ChangedFilesList"), EHostRole::Group, TEXT("Changed files") },
		{ TEXT("CustomizeBehavior"), EHostRole::Group, TEXT("Behavior") },
		// The frame.
		{ TEXT("FrameStatus"), EHostRole::Status },
		{ TEXT("FindStrip"), EHostRole::Group, TEXT("Find") },
		{ TEXT("FindBox"), EHostRole::None, TEXT("Find in the conversation") },
		{ TEXT("FindCount"), EHostRole::Status },
		{ TEXT("FirstSteps"), EHostRole::Group, TEXT("First steps") },
		{ TEXT("CloseWindow"), EHostRole::None, TEXT("Close") },
		// Tabs.
		{ TEXT("ConversationSearch"), EHostRole::None, TEXT("Search all conversations") },
		{ TEXT("ConversationName"), EHostRole::None, TEXT("Name of the conversation") },
		{ TEXT("ConversationList"), EHostRole::None, TEXT("Conversations") },
		{ TEXT("ConversationsStatus"), EHostRole::Status },
		{ TEXT("LogList"), EHostRole::None, TEXT("Log") },
		{ TEXT("LogFilter"), EHostRole::None, TEXT("Show lines with") },
		{ TEXT("ConsoleInput"), EHostRole::None, TEXT("Console command") },
		{ TEXT("ActivityList"), EHostRole::None, TEXT("Requests and tools") },
		{ TEXT("ActivityFigures"), EHostRole::Status },
		{ TEXT("SettingsSearch"), EHostRole::None, TEXT("Search the settings") },
		{ TEXT("ConnectionModelList"), EHostRole::None, TEXT("Models that the server offers") },
		{ TEXT("TestResult"), EHostRole::Status },
		// The dialog for saving.
		{ TEXT("SaveFolderBox"), EHostRole::None, TEXT("Folder") },
		{ TEXT("SaveNewFolderBox"), EHostRole::None, TEXT("Name of the new folder") },
		{ TEXT("SaveNameBox"), EHostRole::None, TEXT("File name") },
		{ TEXT("SaveFilterBox"), EHostRole::None, TEXT("File type") },
		{ TEXT("SaveList"), EHostRole::None, TEXT("Files") },
		{ TEXT("SaveProblem"), EHostRole::Status },
		// What a conversation is made of.
		{ TEXT("SMessageRow"), EHostRole::ListItem, nullptr, true },
		{ TEXT("SToolExecutionContainer"), EHostRole::Group, TEXT("Tools") },
		{ TEXT("SMarkdownTextBlock"), EHostRole::None, nullptr, false, true, TEXT("Code") },
		{ TEXT("SLoadingIndicator"), EHostRole::Image, TEXT("Busy") },
	};
	// clang-format on
}

void FAccessNames::Install()
{
	FAccessRules::Set(Rules);
	FAccessRules::SetTitleSource([] { return FAgentChoice::MakeTitle(); });
}

void FAccessNames::Uninstall()
{
	FAccessRules::Set(TArrayView<const FAccessRule>());
	FAccessRules::SetTitleSource(nullptr);
}
