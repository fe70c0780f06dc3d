#include "ViewModels/ChatViewModel.h"

#include "Misc/FileHelper.h"

bool FChatViewModel::ExportConversation(const FString& FilePath, EConversationExportFormat Format) const
{
	if (Messages.Num() == 0)
	{
		return false;
	}
	const FString Text = FConversationExport::Export(Messages, Format, FDateTime::Now());
	// One byte per character as long as all are ASCII, else UTF-16.
	return FFileHelper::SaveStringToFile(Text, *FilePath, FFileHelper::EEncodingOptions::AutoDetect);
}

FString FChatViewModel::ExportToMarkdown() const
{
	return FConversationExport::ExportToMarkdown(Messages, FDateTime::Now());
}

FString FChatViewModel::ExportToPlainText() const
{
	return FConversationExport::ExportToPlainText(Messages, FDateTime::Now());
}

FString FChatViewModel::ExportToHTML() const
{
	return FConversationExport::ExportToHTML(Messages, FDateTime::Now());
}

FString FChatViewModel::ExportToJSON() const
{
	return FConversationExport::ExportToJSON(Messages, FDateTime::Now());
}
