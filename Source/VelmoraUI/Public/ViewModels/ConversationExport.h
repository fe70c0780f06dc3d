#pragma once

#include "CoreMinimal.h"
#include "Misc/DateTime.h"
#include "Templates/SharedPointer.h"

class FChatMessage;

/** File formats of an exported conversation. */
enum class EConversationExportFormat : uint8
{
	Markdown = 0,
	PlainText = 1,
	HTML = 2,
	JSON = 3,
};

/**
 * Writers of exported conversations. What user, agent and system said is written, in order; tool runs are left out,
 * although their groups count in the number of messages at the top.
 */
struct VELMORAUI_API FConversationExport
{
	/** The contents of a file in any format; one that is not known is written as Markdown. */
	static FString Export(const TArray<TSharedPtr<FChatMessage>>& Messages, EConversationExportFormat Format, const FDateTime& ExportTime);

	static FString ExportToMarkdown(const TArray<TSharedPtr<FChatMessage>>& Messages, const FDateTime& ExportTime);
	static FString ExportToPlainText(const TArray<TSharedPtr<FChatMessage>>& Messages, const FDateTime& ExportTime);
	/** Texts are escaped as in a string of C, not as HTML: markup in them stays markup, and a line break is shown as \n. */
	static FString ExportToHTML(const TArray<TSharedPtr<FChatMessage>>& Messages, const FDateTime& ExportTime);
	static FString ExportToJSON(const TArray<TSharedPtr<FChatMessage>>& Messages, const FDateTime& ExportTime);

	/** By the extension in any letter case; one that says nothing means Markdown. */
	static EConversationExportFormat GetFormatOfFile(const FString& FileName);
};
