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
