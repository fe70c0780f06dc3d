#include "ViewModels/ChatViewModel.h"

#include "Host/HostClock.h"
#include "Support/Base/SavedText.h"
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

TEST_F(FConversationExportTest, EveryFormatIsAsSavedInUnitsOfSixteenBits)
{
	SayEverything();
	const std::tuple<EFormat, const char*, FString> Cases[] = {
		{ EFormat::Markdown, "conversation.md", ViewModel->ExportToMarkdown() },
		{ EFormat::PlainText, "conversation.txt", ViewModel->ExportToPlainText() },
		{ EFormat::HTML, "conversation.html", ViewModel->ExportToHTML() },
		{ EFormat::JSON, "conversation.json", ViewModel->ExportToJSON() },
	};
	for (const auto& [Format, File, Text] : Cases)
	{
		ExpectSavedText(std::string("ViewModels/Exports/") + File, Utf8(Text));
		EXPECT_EQ(Export(Format), ToUtf16(Text)) << File;
	}
	EXPECT_EQ(Export(static_cast<EFormat>(9)), ToUtf16(ViewModel->ExportToMarkdown()));
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
	const std::pair<const TCHAR*, EFormat> Cases[] = {
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
	for (const auto& [File, Format] : Cases)
	{
		EXPECT_EQ(FConversationExport::GetFormatOfFile(File), Format) << Utf8(File);
	}
}
