#include "RecordFile.h"
#include "RecordMask.h"
#include "Support/Base/Printers.h"
#include "Support/Base/SmallDisk.h"
#include "Support/Base/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <sys/stat.h>

// The file of a recording: what is written comes back, what is broken is refused, and what was cut off is left out.

namespace
{
	/** The shortest recording that there can be. */
	const std::string Head = "velmora-record 1\nbegin\n";

	std::string Complain(const std::string& Content)
	{
		FRecordReader Reader;
		return Utf8(Reader.Parse(Content, TEXT("x.rec")));
	}
}

TEST(RecordFile, EveryTextComesBack)
{
	const TCHAR Odd[] = { 'a', 0xD800, 'b', 0xDC01, 0x0001, 0x007F, 0x00E9, 0xFFFF, 0 };
	const FString Texts[] = { FString(), TEXT(" "), TEXT("\"quoted\" \\n and \\u0041"), TEXT("two\nlines\r\n\tand a tab"),
		TEXT("caf\u00e9 \u4f60\u597d"), FString(Odd) };
	for (const FString& Text : Texts)
	{
		FRecordWords Words(ERecordKind::Toast);
		const std::string Written = Words.Text(Text).GetLine();
		ASSERT_EQ(Written.back(), '\n');
		FRecordLine Line;
		ASSERT_TRUE(FRecordLine::Parse(std::string_view(Written).substr(0, Written.size() - 1), Line)) << Written;
		EXPECT_TRUE(Line.Text(0).Equals(Text, ESearchCase::CaseSensitive)) << Written;
		// Any program that carries texts carries it.
		EXPECT_EQ(Written.find_first_not_of("\n ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789\\\""), std::string::npos)
			<< Written;
	}
}

TEST(RecordFile, NumbersComeBackExactly)
{
	for (const double Number : { 0.0, 1.0 / 3.0, 0.1 + 0.2, 1e-300, -1e300, 16666.0 / 1e6 })
	{
		FRecordLine Line;
		std::string Written = FRecordWords(ERecordKind::Turn).Real(Number).GetLine();
		Written.pop_back();
		ASSERT_TRUE(FRecordLine::Parse(Written, Line)) << Written;
		EXPECT_EQ(Line.Real(0), Number) << Written;
	}
}

TEST(RecordFile, BrokenLinesAreNone)
{
	const char* const Lines[] = { "", " ", "t", "t ", "t x", "t 1 ", "t 1 2", "t  1", "t nan", "t inf", "T 1", "tt 1", "down 1 A 0",
		"down 2 A 0 0", "down 1 \"A\" 0 0", "down 1 A 0.5 0", "toast", "toast a", "toast \"a", "toast \"a\"b", "toast \"a\" \"b\"",
		"toast \"\\\"", "toast \"\\x\"", "toast \"\\u12\"", "toast \"\\u12g4\"", "toast \"\x01\"", "toast \"\xC3\xA9\"", "begin 1",
		"size 1 2 3", "gate 99999999999999999999 \"\" \"\"" };
	for (const char* const Text : Lines)
	{
		FRecordLine Line;
		EXPECT_FALSE(FRecordLine::Parse(Text, Line)) << Text;
	}
	// Any number of texts at the end, none of them something else.
	FRecordLine Line;
	EXPECT_TRUE(FRecordLine::Parse("call 1 send \"a\" \"b c\" \"\"", Line));
	EXPECT_EQ(Line.Num(), 5);
	EXPECT_EQ(Utf8(Line.Text(3)), "b c");
	EXPECT_FALSE(FRecordLine::Parse("call 1 send \"a\" 2", Line));
}

TEST(RecordFile, BrokenFilesAreRefusedInWords)
{
	const std::pair<std::string, const char*> Cases[] = {
		{ "", "\"x.rec\" is no recording." },
		{ "click #SendButton\n", "\"x.rec\" is no recording." },
		{ "velmora-record 2\nbegin\n", "The recording \"x.rec\" was made by another version of the program, which writes them otherwise." },
		{ "velmora-record 1\n", "The recording \"x.rec\" ends before it has begun." },
		{ "velmora-record 1\nversion \"2\"\nbeg", "The recording \"x.rec\" ends before it has begun." },
		{ Head + "t 0\nhello\nt 1\n", "Line 4 of the recording \"x.rec\" cannot be read." },
		{ Head + "t 0\n\nt 1\n", "Line 4 of the recording \"x.rec\" cannot be read." },
		{ "velmora-record 1\nt 0\nbegin\n", "Line 2 of the recording \"x.rec\" stands in the wrong place." },
		{ Head + "project \"p\"\n", "Line 3 of the recording \"x.rec\" stands in the wrong place." },
		{ Head, "" },
		{ Head + "note \"x\"\nt 0.5\nend\n", "" },
	};
	for (const auto& [Content, Complaint] : Cases)
	{
		EXPECT_EQ(Complain(Content), Complaint) << Content;
	}
}

TEST(RecordFile, ACutFileIsReadToItsCut)
{
	const std::string Whole = Head + "t 0.25\ntext 1 \"hello \\\"you\\\"\"\nt 0.5\ntoast \"\\u4f60\\\\\"\nt 0.75\nend\n";
	for (std::size_t Length = Head.size(); Length <= Whole.size(); ++Length)
	{
		FRecordReader Reader;
		const std::string Cut = Whole.substr(0, Length);
		ASSERT_EQ(Utf8(Reader.Parse(Cut, TEXT("x.rec"))), "") << Length;
		// Line by line the same as the whole one, and each that is whole.
		std::ptrdiff_t Count = 1;
		while (Reader.Peek())
		{
			(void)Reader.Take();
			++Count;
		}
		EXPECT_EQ(Count, std::count(Cut.begin(), Cut.end(), '\n')) << Length;
		EXPECT_FALSE(Reader.HasTurn());
	}
}

TEST(RecordFile, ATurnIsSeenBeforeItIsTaken)
{
	FRecordReader Reader;
	ASSERT_EQ(Utf8(Reader.Parse(Head + "t 0.25\ntoast \"t 1\"\nframe\nt 0.5\nsummaries 0\n", TEXT("x.rec"))), "");
	EXPECT_EQ(Reader.Take().GetKind(), ERecordKind::Begin);
	EXPECT_TRUE(Reader.HasTurn());
	EXPECT_EQ(Reader.Take().Real(0), 0.25);
	EXPECT_TRUE(Reader.PreviewTurn().bHasFrame);
	EXPECT_EQ(Reader.PreviewTurn().SummaryLists, 0);
	for (int32 Line = 0; Line < 3; ++Line)
	{
		(void)Reader.Take();
	}
	EXPECT_FALSE(Reader.HasTurn());
	EXPECT_FALSE(Reader.PreviewTurn().bHasFrame);
	EXPECT_EQ(Reader.PreviewTurn().SummaryLists, 1);
}

TEST(RecordFile, AWriterKeepsToItsSizeAndToItsUser)
{
	const FTempFolder Folder;
	Folder.Write("x.rec", "something older, which others may read\n");
	chmod(Folder.AtBytes("x.rec").c_str(), 0644);
	FRecordWriter Writer(false, 60);
	ASSERT_EQ(Utf8(Writer.Open(Folder.At(TEXT("x.rec")))), "");
	Writer.Add(FRecordWords(ERecordKind::Begin));
	EXPECT_EQ(Folder.Read("x.rec"), Head) << "each line is there at once";
	for (int32 Turn = 0; Turn < 100; ++Turn)
	{
		Writer.Add(MoveTemp(FRecordWords(ERecordKind::Turn).Real(Turn)));
	}
	EXPECT_FALSE(Writer.IsOpen());
	const std::string Content = Folder.Read("x.rec");
	EXPECT_LT(Content.size(), 200u);
	EXPECT_NE(Content.find("note \"The recording has reached its largest size and ends here.\"\n"), std::string::npos);
	EXPECT_EQ(Utf8(Writer.GetProblem()), "The recording has reached its largest size and ends here.");
	EXPECT_EQ(Complain(Content), "");
	struct stat Info = {};
	ASSERT_EQ(stat(Folder.AtBytes("x.rec").c_str(), &Info), 0);
	EXPECT_EQ(Info.st_mode & 0777, 0600u);

	FRecordWriter Nowhere(false);
	EXPECT_NE(Utf8(Nowhere.Open(Folder.At(TEXT("none/x.rec")))).find("cannot be written"), std::string::npos);
}

TEST(RecordFile, AFullDiskEndsTheRecordingInWords)
{
	const FTempFolder Folder;
	FRecordWriter Writer(false);
	ASSERT_EQ(Utf8(Writer.Open(Folder.At(TEXT("x.rec")))), "");
	{
		const FSmallDisk Disk(40);
		Writer.Add(FRecordWords(ERecordKind::Begin));
		EXPECT_EQ(Utf8(Writer.GetProblem()), "");
		Writer.Add(MoveTemp(FRecordWords(ERecordKind::Note).Text(TEXT("more than the disk has room for"))));
	}
	EXPECT_FALSE(Writer.IsOpen());
	EXPECT_EQ(Utf8(Writer.GetProblem()), "The recording ends early, since it could not be written: the file would become too large.");
	Writer.Finish();
	EXPECT_EQ(Complain(Folder.Read("x.rec")), "") << "What is there can be shown.";
}

TEST(RecordMask, LeavesShapesAndNoWords)
{
	EXPECT_EQ(Utf8(FRecordMask::MaskText(TEXT("Find `TryParse42`, caf\u00e9!\n| a | b |"))), "Xxxx `XxxXxxxx00`, xxxx!\n| x | x |");
	EXPECT_EQ(FRecordMask::MaskText(TEXT("\U0001F600.")).Len(), 3) << "places in the text stay";
	EXPECT_EQ(Utf8(FRecordMask::MaskProgress(TEXT("Executing step 3: secret"))), "Executing step 0: xxxxxx");
	EXPECT_EQ(Utf8(FRecordMask::MaskProgress(TEXT("Reading secret"))), "Xxxxxxx xxxxxx");
}

TEST(RecordMask, KeepsTheNamesOfParameters)
{
	const FString Json =
		TEXT("{\"path\": \"src/Secret.cpp\", \"lines\" : [10, 2.5e3], \"ok\": true, \"more\": {\"q\": \"a\\\"b\\u0041\\n\"}}");
	EXPECT_EQ(Utf8(FRecordMask::MaskJson(Json)),
		"{\"path\": \"xxx/Xxxxxx.xxx\", \"lines\" : [11, 1.1e1], \"ok\": true, \"more\": {\"q\": \"x\\\"xx\\n\"}}");
	EXPECT_EQ(Utf8(FRecordMask::MaskJson(TEXT("no format: secret"))), "xx xxxxxx: xxxxxx");
	// Cut short, it ends where it ends.
	for (int32 Length = 0; Length < Json.Len(); ++Length)
	{
		EXPECT_LE(FRecordMask::MaskJson(Json.Left(Length)).Len(), Length) << Length;
	}
}

TEST(RecordMask, KeysThatTypeSayNothing)
{
	const FModifierKeysState None;
	const FModifierKeysState Shift(true, false, false, false, false, false);
	const FModifierKeysState Control(false, false, true, false, false, false);
	EXPECT_EQ(FRecordMask::MaskKey(EKeys::P, None), EKeys::X);
	EXPECT_EQ(FRecordMask::MaskKey(EKeys::P, Shift), EKeys::X);
	EXPECT_EQ(FRecordMask::MaskKey(EKeys::Seven, None), EKeys::X);
	EXPECT_EQ(FRecordMask::MaskKey(EKeys::P, Control), EKeys::P);
	EXPECT_EQ(FRecordMask::MaskKey(EKeys::Enter, None), EKeys::Enter);
	EXPECT_EQ(FRecordMask::MaskKey(EKeys::F8, None), EKeys::F8);
}
