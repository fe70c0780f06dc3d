#include "ViewModels/ConversationExport.h"

#include "Dom/JsonObject.h"
#include "Dom/JsonValue.h"
#include "Misc/Paths.h"
#include "Serialization/JsonSerializer.h"
#include "Serialization/JsonWriter.h"
#include "ViewModels/ChatMessage.h"

#include <initializer_list>

namespace
{

	struct FExportSpeaker
	{
		const TCHAR* Name;
		const TCHAR* Pictograph;
		const TCHAR* StyleClass;
	};

	/** Null for messages that are not exported. */
	const FExportSpeaker* FindExportSpeaker(const TSharedPtr<FChatMessage>& Message)
	{
		static const FExportSpeaker User = { TEXT("You"), TEXT("👤"), TEXT("user") };
		static const FExportSpeaker Agent = { TEXT("Velmora"), TEXT("🤖"), TEXT("ai") };
		static const FExportSpeaker System = { TEXT("System"), TEXT("ℹ️"), TEXT("system") };
		if (!Message.IsValid())
		{
			return nullptr;
		}
		switch (Message->Type)
		{
		case EChatMessageType::User:
			return &User;
		case EChatMessageType::AI:
			return &Agent;
		case EChatMessageType::System:
			return &System;
		case EChatMessageType::Tool:
		case EChatMessageType::ToolSummary:
			break;
		}
		return nullptr;
	}

	/** Appended rather than formatted: a text may be long and may hold a NUL. */
	void AppendExportParts(FString& Out, std::initializer_list<FStringView> Parts)
	{
		for (const FStringView Part : Parts)
		{
			Out.Append(Part);
		}
	}

	const TCHAR* const ExportPageStart = TEXT("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n") TEXT("  <meta charset=\"UTF-8\">\n")
		TEXT("  <meta name=\"viewport\" content=\"width=device-width, initial-scale=1.0\">\n")
			TEXT("  <title>Conversation Export</title>\n") TEXT("  <style>\n") TEXT(
				"    body { font-family: 'Segoe UI', Tahoma, Geneva, Verdana, sans-serif; max-width: 900px; margin: 0 auto; padding: "
				"20px; background: #f5f5f5; }\n") TEXT("    .header { background: white; padding: 20px; border-radius: 8px; "
													   "margin-bottom: 20px; box-shadow: 0 2px 4px rgba(0,0,0,0.1); }\n")
				TEXT("    .message { background: white; padding: 15px; margin-bottom: 15px; border-radius: 8px; box-shadow: 0 2px 4px "
					 "rgba(0,0,0,0.1); }\n") TEXT("    .message.user { border-left: 4px solid #4CAF50; }\n")
					TEXT("    .message.ai { border-left: 4px solid #2196F3; }\n")
						TEXT("    .message.system { border-left: 4px solid #FF9800; }\n")
							TEXT("    .message.tool { border-left: 4px solid #9C27B0; }\n")
								TEXT("    .sender { font-weight: bold; margin-bottom: 10px; color: #333; }\n")
									TEXT("    .timestamp { font-size: 0.85em; color: #666; margin-bottom: 8px; }\n")
										TEXT("    .content { line-height: 1.6; white-space: pre-wrap; word-wrap: break-word; }\n")
											TEXT("    .tool-result { background: #f8f8f8; padding: 10px; border-radius: 4px; font-family: "
												 "monospace; font-size: 0.9em; }\n") TEXT("    h1 { margin: 0 0 10px 0; color: #333; }\n")
												TEXT("    .meta { color: #666; font-size: 0.9em; }\n") TEXT("  </style>\n</head>\n<body>\n")
													TEXT("  <div class=\"header\">\n") TEXT("    <h1>Conversation Export</h1>\n");

} // namespace

FString FConversationExport::Export(
	const TArray<TSharedPtr<FChatMessage>>& Messages, EConversationExportFormat Format, const FDateTime& ExportTime)
{
	switch (Format)
	{
	case EConversationExportFormat::Markdown:
		break;
	case EConversationExportFormat::PlainText:
		return ExportToPlainText(Messages, ExportTime);
	case EConversationExportFormat::HTML:
		return ExportToHTML(Messages, ExportTime);
	case EConversationExportFormat::JSON:
		return ExportToJSON(Messages, ExportTime);
	}
	return ExportToMarkdown(Messages, ExportTime);
}

FString FConversationExport::ExportToMarkdown(const TArray<TSharedPtr<FChatMessage>>& Messages, const FDateTime& ExportTime)
{
	FString Out = TEXT("# Conversation Export\n\n");
	Out += FString::Printf(TEXT("**Exported:** %s\n\n"), *ExportTime.ToString());
	// All messages count, also those that are not written: the number is that of the conversation.
	Out += FString::Printf(TEXT("**Total Messages:** %d\n\n"), Messages.Num());
	Out += TEXT("---\n\n");
	for (const TSharedPtr<FChatMessage>& Message : Messages)
	{
		if (const FExportSpeaker* Speaker = FindExportSpeaker(Message))
		{
			AppendExportParts(Out, { TEXT("*"), Message->GetFormattedTimestamp(), TEXT("*\n\n") });
			AppendExportParts(
				Out, { TEXT("**"), Speaker->Pictograph, TEXT(" "), Speaker->Name, TEXT(":**\n\n"), Message->Content, TEXT("\n\n") });
			Out += TEXT("---\n\n");
		}
	}
	return Out;
}

FString FConversationExport::ExportToPlainText(const TArray<TSharedPtr<FChatMessage>>& Messages, const FDateTime& ExportTime)
{
	FString Out = TEXT("CONVERSATION EXPORT\n==================\n\n");
	Out += FString::Printf(TEXT("Exported: %s\n"), *ExportTime.ToString());
	Out += FString::Printf(TEXT("Total Messages: %d\n\n"), Messages.Num());
	for (const TSharedPtr<FChatMessage>& Message : Messages)
	{
		if (const FExportSpeaker* Speaker = FindExportSpeaker(Message))
		{
			AppendExportParts(Out,
				{ TEXT("["), Message->GetFormattedTimestamp(), TEXT("] "), Speaker->Name, TEXT(":\n"), Message->Content, TEXT("\n\n") });
			Out += TEXT("----------------------------------------\n\n");
		}
	}
	return Out;
}

FString FConversationExport::ExportToHTML(const TArray<TSharedPtr<FChatMessage>>& Messages, const FDateTime& ExportTime)
{
	FString Out = ExportPageStart;
	Out += FString::Printf(TEXT("    <div class=\"meta\">Exported: %s</div>\n"), *ExportTime.ToString());
	Out += FString::Printf(TEXT("    <div class=\"meta\">Total Messages: %d</div>\n"), Messages.Num());
	Out += TEXT("  </div>\n\n");
	for (const TSharedPtr<FChatMessage>& Message : Messages)
	{
		if (const FExportSpeaker* Speaker = FindExportSpeaker(Message))
		{
			FString Content = Message->Content;
			// The escapes of a string literal and not those of the page: files of this format are written so.
			Content.ReplaceCharWithEscapedCharInline();
			AppendExportParts(Out, { TEXT("  <div class=\"message "), Speaker->StyleClass, TEXT("\">\n") });
			AppendExportParts(Out, { TEXT("    <div class=\"timestamp\">"), Message->GetFormattedTimestamp(), TEXT("</div>\n") });
			AppendExportParts(Out, { TEXT("    <div class=\"sender\">"), Speaker->Pictograph, TEXT(" "), Speaker->Name, TEXT("</div>\n") });
			AppendExportParts(Out, { TEXT("    <div class=\"content\">"), Content, TEXT("</div>\n") });
			Out += TEXT("  </div>\n\n");
		}
	}
	Out += TEXT("</body>\n</html>");
	return Out;
}

FString FConversationExport::ExportToJSON(const TArray<TSharedPtr<FChatMessage>>& Messages, const FDateTime& ExportTime)
{
	TArray<TSharedPtr<FJsonValue>> Written;
	for (const TSharedPtr<FChatMessage>& Message : Messages)
	{
		if (const FExportSpeaker* Speaker = FindExportSpeaker(Message))
		{
			const TSharedRef<FJsonObject> Entry = MakeShared<FJsonObject>();
			Entry->SetStringField(TEXT("sender"), Message->GetSenderName());
			Entry->SetStringField(TEXT("content"), Message->Content);
			Entry->SetStringField(TEXT("timestamp"), Message->GetFormattedTimestamp());
			Entry->SetStringField(TEXT("type"), Speaker->Name);
			Written.Add(MakeShared<FJsonValueObject>(Entry));
		}
	}
	const TSharedRef<FJsonObject> Root = MakeShared<FJsonObject>();
	// The order of the fields is the order in the file.
	Root->SetArrayField(TEXT("messages"), Written);
	Root->SetStringField(TEXT("exported_at"), ExportTime.ToString());
	Root->SetNumberField(TEXT("message_count"), Messages.Num());

	FString Out;
	const TSharedRef<TJsonWriter<>> Writer = TJsonWriterFactory<>::Create(&Out);
	FJsonSerializer::Serialize(Root, Writer, true);
	return Out;
}

EConversationExportFormat FConversationExport::GetFormatOfFile(const FString& FileName)
{
	struct FExtensionRow
	{
		const TCHAR* Extension;
		EConversationExportFormat Format;
	};
	static const FExtensionRow Rows[] = {
		{ TEXT("md"), EConversationExportFormat::Markdown },
		{ TEXT("txt"), EConversationExportFormat::PlainText },
		{ TEXT("html"), EConversationExportFormat::HTML },
		{ TEXT("htm"), EConversationExportFormat::HTML },
		{ TEXT("json"), EConversationExportFormat::JSON },
	};
	// What was typed decides; whatever is not known is Markdown, the format that a reader can do most with.
	const FString Extension = FPaths::GetExtension(FileName);
	for (const FExtensionRow& Row : Rows)
	{
		if (Extension.Equals(Row.Extension, ESearchCase::IgnoreCase))
		{
			return Row.Format;
		}
	}
	return EConversationExportFormat::Markdown;
}
