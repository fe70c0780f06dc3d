#include "ViewModels/ChatViewModel.h"

#include "Host/HostClock.h"
#include "Support/Base/TempFolder.h"
#include "Support/TestAgent.h"

#include <gtest/gtest.h>

using EFormat = EConversationExportFormat;

namespace
{

	/** A conversation at a fixed time, exported to files. */
	class FConversationExportTest : public testing::Test
	{
	protected:
		void SetUp() override
		{
			FHostClock::UseSimulatedTime(FDateTime(2026, 1, 31, 9, 5, 7));
			Agent = MakeShared<FTestAgent>();
			Agent->HoldConversation(TEXT("c1"));
			ViewModel = MakeShared<FChatViewModel>();
			ASSERT_TRUE(ViewModel->Initialize(Agent));
		}

		void TearDown() override { FHostClock::UseRealTime(); }

		void Say(EChatMessageType Type, const FString& Text)
		{
			ASSERT_TRUE(ViewModel->SendMessage(Text));
			ViewModel->GetMessages().Last()->Type = Type;
		}

		/** Everything that could go wrong: pictographs, line breaks, quotes, markup, rows that are not written. */
		void SayEverything()
		{
			Say(EChatMessageType::User, TEXT("Give it a dash 🚀\nwith a \"cooldown\""));
			Say(EChatMessageType::ToolSummary, TEXT("left out"));
			Say(EChatMessageType::Tool, TEXT("left out"));
			Say(EChatMessageType::AI, TEXT("Done: <b>it's</b> in C:\\Dash & more\r\n\tédité"));
			Say(EChatMessageType::System, TEXT("Conversation ended"));
			Agent->FireMessage(TEXT("left out: it waits for its batch"));
		}

		std::string Export(EFormat Format)
		{
			EXPECT_TRUE(ViewModel->ExportConversation(Folder.At(TEXT("file")), Format));
			return Folder.Read("file");
		}

		/** The bytes of a text as UTF-16, little endian, behind its mark. */
		static std::string ToUtf16(const FString& Text)
		{
			std::string Bytes = "\xff\xfe";
			for (const TCHAR Unit : FStringView(Text))
			{
				Bytes += static_cast<char>(Unit & 0xff);
				Bytes += static_cast<char>(Unit >> 8);
			}
			return Bytes;
		}

		FTempFolder Folder;
		TSharedPtr<FTestAgent> Agent;
		TSharedPtr<FChatViewModel> ViewModel;
	};

} // namespace

TEST_F(FConversationExportTest, Markdown)
{
	SayEverything();
	const FString Expected = TEXT("# Conversation Export\n\n**Exported:** 2026.01.31-09.05.07\n\n**Total Messages:** 5\n\n---\n\n")
		TEXT("*09:05:07*\n\n**👤 You:**\n\nGive it a dash 🚀\nwith a \"cooldown\"\n\n---\n\n")
			TEXT("*09:05:07*\n\n**🤖 Velmora:**\n\nDone: <b>it's</b> in C:\\Dash & more\r\n\tédité\n\n---\n\n")
				TEXT("*09:05:07*\n\n**ℹ️ System:**\n\nConversation ended\n\n---\n\n");
	EXPECT_EQ(Export(EFormat::Markdown), ToUtf16(Expected));
	EXPECT_EQ(Export(static_cast<EFormat>(9)), ToUtf16(Expected));
}

TEST_F(FConversationExportTest, PlainText)
{
	SayEverything();
	const FString Expected = TEXT("CONVERSATION EXPORT\n==================\n\nExported: 2026.01.31-09.05.07\nTotal Messages: 5\n\n")
		TEXT("[09:05:07] You:\nGive it a dash 🚀\nwith a \"cooldown\"\n\n----------------------------------------\n\n")
			TEXT("[09:05:07] Velmora:\nDone: <b>it's</b> in C:\\Dash & more\r\n\tédité\n\n----------------------------------------\n\n")
				TEXT("[09:05:07] System:\nConversation ended\n\n----------------------------------------\n\n");
	EXPECT_EQ(Export(EFormat::PlainText), ToUtf16(Expected));
}

TEST_F(FConversationExportTest, Html)
{
	SayEverything();
	const FString Expected = TEXT(R"(<!DOCTYPE html>
<html lang="en">
<head>
  <meta charset="UTF-8">
  <meta name="viewport" content="width=device-width, initial-scale=1.0">
  <title>Conversation Export</title>
  <style>
    body { font-family: 'Segoe UI', Tahoma, Geneva, Verdana, sans-serif; max-width: 900px; margin: 0 auto; padding: 20px; background: #f5f5f5; }
    .header { background: white; padding: 20px; border-radius: 8px; margin-bottom: 20px; box-shadow: 0 2px 4px rgba(0,0,0,0.1); }
    .message { background: white; padding: 15px; margin-bottom: 15px; border-radius: 8px; box-shadow: 0 2px 4px rgba(0,0,0,0.1); }
    .message.user { border-left: 4px solid #4CAF50; }
    .message.ai { border-left: 4px solid #2196F3; }
    .message.system { border-left: 4px solid #FF9800; }
    .message.tool { border-left: 4px solid #9C27B0; }
    .sender { font-weight: bold; margin-bottom: 10px; color: #333; }
    .timestamp { font-size: 0.85em; color: #666; margin-bottom: 8px; }
    .content { line-height: 1.6; white-space: pre-wrap; word-wrap: break-word; }
    .tool-result { background: #f8f8f8; padding: 10px; border-radius: 4px; font-family: monospace; font-size: 0.9em; }
    h1 { margin: 0 0 10px 0; color: #333; }
    .meta { color: #666; font-size: 0.9em; }
  </style>
</head>
<body>
  <div class="header">
    <h1>Conversation Export</h1>
    <div class="meta">Exported: 2026.01.31-09.05.07</div>
    <div class="meta">Total Messages: 5</div>
  </div>

  <div class="message user">
    <div class="timestamp">09:05:07</div>
    <div class="sender">👤 You</div>
    <div class="content">Give it a dash 🚀\nwith a \"cooldown\"</div>
  </div>

  <div class="message ai">
    <div class="timestamp">09:05:07</div>
    <div class="sender">🤖 Velmora</div>
    <div class="content">Done: <b>it\'s</b> in C:\\Dash & more\r\n\tédité</div>
  </div>

  <div class="message system">
    <div class="timestamp">09:05:07</div>
    <div class="sender">ℹ️ System</div>
    <div class="content">Conversation ended</div>
  </div>

</body>
</html>)");
	EXPECT_EQ(Export(EFormat::HTML), ToUtf16(Expected));
}

TEST_F(FConversationExportTest, Json)
{
	SayEverything();
	const FString Expected = TEXT("{\r\n\t\"messages\": [\r\n")
		TEXT("\t\t{\r\n\t\t\t\"sender\": \"You\",\r\n\t\t\t\"content\": \"Give it a dash 🚀\\nwith a \\\"cooldown\\\"\",\r\n")
			TEXT("\t\t\t\"timestamp\": \"09:05:07\",\r\n\t\t\t\"type\": \"You\"\r\n\t\t},\r\n")
				TEXT("\t\t{\r\n\t\t\t\"sender\": \"Velmora AI\",\r\n\t\t\t\"content\": \"Done: <b>it's</b> in C:\\\\Dash & "
					 "more\\r\\n\\tédité\",\r\n") TEXT("\t\t\t\"timestamp\": \"09:05:07\",\r\n\t\t\t\"type\": \"Velmora\"\r\n\t\t},\r\n")
					TEXT("\t\t{\r\n\t\t\t\"sender\": \"System\",\r\n\t\t\t\"content\": \"Conversation ended\",\r\n")
						TEXT("\t\t\t\"timestamp\": \"09:05:07\",\r\n\t\t\t\"type\": \"System\"\r\n\t\t}\r\n")
							TEXT("\t],\r\n\t\"exported_at\": \"2026.01.31-09.05.07\",\r\n\t\"message_count\": 5\r\n}");
	EXPECT_EQ(Export(EFormat::JSON), ToUtf16(Expected));
}

TEST_F(FConversationExportTest, AsciiIsOneByteACharacter)
{
	Say(EChatMessageType::User, TEXT("plain"));
	EXPECT_EQ(Export(EFormat::PlainText),
		"CONVERSATION EXPORT\n==================\n\nExported: 2026.01.31-09.05.07\nTotal Messages: 1\n\n"
		"[09:05:07] You:\nplain\n\n----------------------------------------\n\n");
	const std::string Json = Export(EFormat::JSON);
	EXPECT_TRUE(Json.starts_with("{\r\n\t\"messages\": [\r\n\t\t{"));
}

TEST_F(FConversationExportTest, BrokenTextIsWrittenAsItStands)
{
	Say(EChatMessageType::User, FString(FStringView(TEXT("a\0b"), 3)));
	FString Lone = TEXT("x");
	Lone.AppendChar(static_cast<TCHAR>(0xd83d));
	Say(EChatMessageType::AI, Lone);
	FString Expected =
		TEXT("CONVERSATION EXPORT\n==================\n\nExported: 2026.01.31-09.05.07\nTotal Messages: 2\n\n[09:05:07] You:\na");
	Expected.AppendChar(TCHAR(0));
	Expected += TEXT("b\n\n----------------------------------------\n\n[09:05:07] Velmora:\n");
	Expected += Lone + TEXT("\n\n----------------------------------------\n\n");
	EXPECT_EQ(Export(EFormat::PlainText), ToUtf16(Expected));
}

TEST_F(FConversationExportTest, TheContentsOfEveryFormatCanBeHadWithoutAFile)
{
	SayEverything();
	EXPECT_EQ(Export(EFormat::Markdown), ToUtf16(ViewModel->ExportToMarkdown()));
	EXPECT_EQ(Export(EFormat::PlainText), ToUtf16(ViewModel->ExportToPlainText()));
	EXPECT_EQ(Export(EFormat::HTML), ToUtf16(ViewModel->ExportToHTML()));
	EXPECT_EQ(Export(EFormat::JSON), ToUtf16(ViewModel->ExportToJSON()));
}

TEST_F(FConversationExportTest, NothingIsWrittenWithoutMessages)
{
	EXPECT_FALSE(ViewModel->ExportConversation(Folder.At(TEXT("file")), EFormat::Markdown));
	EXPECT_EQ(Folder.CountEntries(), 0);
}

TEST_F(FConversationExportTest, AFailedSaveAddsNoRow)
{
	Say(EChatMessageType::User, TEXT("a"));
	Folder.Write("file", "not a folder");
	EXPECT_FALSE(ViewModel->ExportConversation(Folder.At(TEXT("file/inside.md")), EFormat::Markdown));
	EXPECT_EQ(ViewModel->GetMessageCount(), 1);
	EXPECT_EQ(Folder.Read("file"), "not a folder");
}

TEST(ConversationExportFormat, TheTypedExtensionDecides)
{
	struct FCase
	{
		const TCHAR* File;
		EFormat Format;
	};
	const FCase Cases[] = {
		{ TEXT("/a/b.md"), EFormat::Markdown },
		{ TEXT("/a/b.txt"), EFormat::PlainText },
		{ TEXT("/a/b.html"), EFormat::HTML },
		{ TEXT("/a/b.HTM"), EFormat::HTML },
		{ TEXT("/a/b.Json"), EFormat::JSON },
		{ TEXT("/a/b.log"), EFormat::Markdown },
		{ TEXT("/a.json/b"), EFormat::Markdown },
		{ TEXT("b."), EFormat::Markdown },
		{ TEXT(""), EFormat::Markdown },
	};
	for (const FCase& Case : Cases)
	{
		EXPECT_EQ(FConversationExport::GetFormatOfFile(Case.File), Case.Format) << Utf8(Case.File);
	}
}
