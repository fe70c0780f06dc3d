#include "Request/AgentRequest.h"
#include "Request/ChangeRequest.h"

#include <gtest/gtest.h>

using Velmora::EChangeRequest;
using Velmora::FChangeRequest;
using Velmora::ParseChangeRequest;

namespace
{
	struct FRequestCase
	{
		const char* Text;
		EChangeRequest Kind;
		const char* Files; // Apart by one blank.
		const char* Content;
		const char* Old = "";
	};

	std::string Join(const std::vector<std::string>& Parts)
	{
		std::string Out;
		for (const std::string& Part : Parts)
		{
			Out += (Out.empty() ? "" : " ") + Part;
		}
		return Out;
	}
}

TEST(ChangeRequests, AreUnderstoodInManySpellings)
{
	const FRequestCase Cases[] = {
		{ "create notes.md with \"hello world\"", EChangeRequest::Create, "notes.md", "hello world" },
		{ "Create notes.md with hello world", EChangeRequest::Create, "notes.md", "hello world\n" },
		{ "please create a new file called Docs/notes.md containing «a "
		  "b»",
			EChangeRequest::Create, "Docs/notes.md", "a b" },
		{ "could you make an empty file \"a b.txt\"?", EChangeRequest::Create, "a b.txt", "" },
		{ "create notes.md", EChangeRequest::Create, "notes.md", "" },
		{ "create Makefile with `all:`", EChangeRequest::Create, "Makefile", "all:" },
		{ "create a file named thing that says 'hi there'", EChangeRequest::Create, "thing", "hi there" },
		{ "create notes.md:\n```md\n# Title\n\n\ttext\n```", EChangeRequest::Create, "notes.md", "# Title\n\n\ttext\n" },
		{ "create notes.md with the following content:\nfirst\nsecond", EChangeRequest::Create, "notes.md", "first\nsecond\n" },
		{ "add a file x.h with \"#pragma once\"", EChangeRequest::Create, "x.h", "#pragma once" },
		{ "create it's.md with \"it's\"", EChangeRequest::Create, "it's.md", "it's" },
		{ "CREATE a.md WITH \"replace by in\"", EChangeRequest::Create, "a.md", "replace by in" },
		{ "create a.md with \"\"", EChangeRequest::Create, "a.md", "" },

		{ "write \"some text\" to notes.md", EChangeRequest::Write, "notes.md", "some text" },
		{ "write \"some text\" into the file notes.md.", EChangeRequest::Write, "notes.md", "some text" },
		{ "write to notes.md: some text", EChangeRequest::Write, "notes.md", "some text\n" },
		{ "write some text to notes.md please", EChangeRequest::Write, "notes.md", "some text\n" },
		{ "save the following to notes.md:\n```\nx\n```\n", EChangeRequest::Write, "notes.md", "x\n" },
		{ "overwrite notes.md with \"x\"", EChangeRequest::Write, "notes.md", "x" },
		{ "put \"x\" into it", EChangeRequest::Write, "", "x" },
		{ "replace the content of notes.md with \"x\"", EChangeRequest::Write, "notes.md", "x" },

		{ "append \"line\" to notes.md", EChangeRequest::Append, "notes.md", "line" },
		{ "add the line \"x\" at the end of notes.md", EChangeRequest::Append, "notes.md", "x" },
		{ "append to notes.md: one more", EChangeRequest::Append, "notes.md", "one more\n" },
		{ "add \"x\" to the end of the attached file", EChangeRequest::Append, "", "x" },

		{ "replace \"a\" by \"b\" in notes.md", EChangeRequest::Replace, "notes.md", "b", "a" },
		{ "replace \"a\" with \"b\" in notes.md, please", EChangeRequest::Replace, "notes.md", "b", "a" },
		{ "replace `a` by `b`", EChangeRequest::Replace, "", "b", "a" },
		{ "replace 'a' by 'b' in this file", EChangeRequest::Replace, "", "b", "a" },
		{ "replace foo by bar in Source/A.cpp", EChangeRequest::Replace, "Source/A.cpp", "bar", "foo" },
		{ "replace \"a\" in notes.md by \"b\"", EChangeRequest::Replace, "notes.md", "b", "a" },
		{ "replace foo in notes.md with bar", EChangeRequest::Replace, "notes.md", "bar", "foo" },
		{ "change \"a\" to \"b\" in notes.md", EChangeRequest::Replace, "notes.md", "b", "a" },
		{ "substitute \"b\" for \"a\" in notes.md", EChangeRequest::Replace, "notes.md", "b", "a" },
		{ "in notes.md replace \"a\" by \"b\"", EChangeRequest::Replace, "notes.md", "b", "a" },
		{ "edit notes.md: replace \"a\" by \"b\"", EChangeRequest::Replace, "notes.md", "b", "a" },
		{ "replace \"a\" by \"\" in notes.md", EChangeRequest::Replace, "notes.md", "", "a" },
		{ "remove \"a\" from notes.md", EChangeRequest::Replace, "notes.md", "", "a" },
		{ "replace\n```\none\ntwo\n```\nby\n```\nthree\n```\nin notes.md", EChangeRequest::Replace, "notes.md", "three\n", "one\ntwo\n" },
		{ "replace “x in y” by „z“ in a.md", EChangeRequest::Replace, "a.md", "z", "x in y" },

		{ "delete notes.md", EChangeRequest::Delete, "notes.md", "" },
		{ "Delete the file notes.md.", EChangeRequest::Delete, "notes.md", "" },
		{ "please remove Docs/notes.md from the project", EChangeRequest::Delete, "Docs/notes.md", "" },
		{ "delete a.md would you", EChangeRequest::Delete, "a.md", "" },
		{ "delete a.md, would you please?", EChangeRequest::Delete, "a.md", "" },
		{ "delete a.md if you can, thanks", EChangeRequest::Delete, "a.md", "" },
		{ "delete a.md, b.md and c.md", EChangeRequest::Delete, "a.md b.md c.md", "" },
		{ "delete \"my notes.txt\"", EChangeRequest::Delete, "my notes.txt", "" },
		{ "delete it", EChangeRequest::Delete, "", "" },
		{ "get rid of this file", EChangeRequest::Delete, "", "" },
	};
	for (const FRequestCase& Case : Cases)
	{
		SCOPED_TRACE(Case.Text);
		const FChangeRequest Request = ParseChangeRequest(Case.Text);
		EXPECT_EQ(static_cast<int>(Request.Kind), static_cast<int>(Case.Kind));
		EXPECT_EQ(Join(Request.Files), Case.Files);
		EXPECT_EQ(Request.Content, Case.Content);
		EXPECT_EQ(Request.Old, Case.Old);
		EXPECT_EQ(static_cast<int>(Velmora::ParseAgentRequest(Case.Text).Kind), static_cast<int>(Velmora::ERequestKind::ChangeFiles));
	}
}

TEST(ChangeRequests, WhatIsNotClearIsNoGuess)
{
	for (const char* Text : { "delete", "delete everything", "delete all files", "delete notes.md except the title",
			 "delete notes.md or other.md", "create", "create a class for snails", "make it faster", "write", "write a poem",
			 "write to notes.md", "write \"x\" to notes.md unless it is there", "replace", "replace \"a\"",
			 "replace \"a\" by \"b\" in notes.md and \"c\" by \"d\" in other.md", "replace all",
			 "add a comment to notes.md please or not \"x\"", "append \"x\"", "edit notes.md", "rename a.md to b.md", "fix the bug", "" })
	{
		EXPECT_EQ(static_cast<int>(ParseChangeRequest(Text).Kind), static_cast<int>(EChangeRequest::Unclear)) << Text;
	}
}

TEST(ChangeRequests, LongAndBrokenTextsEnd)
{
	const std::string Large(10 * 1024 * 1024, 'x');
	EXPECT_EQ(ParseChangeRequest("create notes.md with \"" + Large + "\"").Content.size(), Large.size());
	for (const char* Piece : { "\"", "'", "`", "«", "```\n", "“ ", "a 'b ", "replace a in ", "to in with ", "\xFF\xC0" })
	{
		std::string Text = "write ";
		while (Text.size() < 100000)
		{
			Text += Piece;
		}
		ParseChangeRequest(Text);
		ParseChangeRequest("replace " + Text);
	}
}
