#pragma once

#include <algorithm>
#include <iterator>
#include <string_view>

#include "Request/AgentRequest.h"

/** The one vocabulary of the local agent: how requests begin, what they do, and the words around that say nothing. */
namespace Velmora
{
	enum class EVerb
	{
		Create,
		Write,
		Append,
		Add,
		Replace,
		Change,
		Substitute,
		Edit,
		Delete
	};

	struct FVerbRow
	{
		std::string_view Phrase;
		EVerb Verb;
	};
	// clang-format off
	inline constexpr FVerbRow Verbs[] = {
		{ "create", EVerb::Create }, { "make", EVerb::Create }, { "generate", EVerb::Create },
		{ "write", EVerb::Write }, { "overwrite", EVerb::Write }, { "save", EVerb::Write }, { "store", EVerb::Write },
		{ "put", EVerb::Write },
		{ "append", EVerb::Append }, { "add", EVerb::Add },
		{ "replace", EVerb::Replace }, { "swap", EVerb::Replace }, { "change", EVerb::Change }, { "substitute", EVerb::Substitute },
		{ "edit", EVerb::Edit },
		{ "delete", EVerb::Delete }, { "remove", EVerb::Delete }, { "erase", EVerb::Delete }, { "get rid of", EVerb::Delete },
	};
	// clang-format on

	// In each of these tables the longest phrase that fits is taken.

	// clang-format off
	inline constexpr std::string_view FileOpeners[] = {
		"a", "an", "the", "this", "that", "my", "our", "new", "empty", "blank", "existing", "text", "whole", "attached", "file", "files",
		"document", "called", "named", "by the name of", "with the name",
		"end of", "the end of", "bottom of", "the bottom of",
	};
	// clang-format on

	/** Openers after which any word is a file's name. */
	inline constexpr std::string_view NamingOpeners[] = { "file", "files", "document", "called", "named", "by the name of",
		"with the name" };

	// clang-format off
	inline constexpr std::string_view PointingPhrases[] = {
		"it", "this", "that", "them", "this file", "that file", "the file", "these files", "the files", "attached file",
		"the attached file", "the attached files", "attachment", "the attachment", "the attached document",
	};
	// clang-format on

	/** Words that are never a file's name where one is expected. */
	inline constexpr std::string_view SeparatorWords[] = { "with", "by", "to", "into", "in", "from", "as", "and", "or", "that", "which",
		"containing", "saying", "holding", "for", "of", "please", "now" };

	inline constexpr std::string_view BareFileNames[] = { "makefile", "license", "licence", "readme", "changelog", "dockerfile", "todo",
		"notice", "authors", "copying", "install", "version" };

	// clang-format off
	/** What may close a request to change files besides a courtesy. */
	inline constexpr std::string_view ChangeClosers[] = {
		"from the project", "from this project", "from disk", "from the disk", "in the project",
		"in this project", "too", "as well", "file",
	};
	// clang-format on

	// Requests to change files: what parts the content, the file and the passages.

	// clang-format off
	inline constexpr std::string_view ContentSeparators[] = {
		"with", "with the content", "with the contents", "with content", "with contents", "with the following",
		"with the following content", "with the following contents", "with the following text", "with the text", "with text",
		"with the line", "with the lines", "with the words", "with the word", "with this content", "with this text", "with this",
		"with the code", "with the following code",
		"containing", "that contains", "which contains", "that says", "which says", "saying", "that reads", "that holds", "holding",
		"contains", "and write", "and put", "as follows",
	};

	inline constexpr std::string_view ContentOpeners[] = {
		"the text", "text", "the line", "line", "the lines", "lines", "the word", "word", "the words", "words", "the passage",
		"the phrase", "the string", "the following", "the following text", "the following line", "the following lines", "the code",
		"this", "this text",
		"a line", "a line saying", "a line that says", "a new line",
	};
	// clang-format on

	inline constexpr std::string_view PlaceWords[] = { "to", "into", "in", "as", "at", "onto", "inside", "to a file", "into a file",
		"at the end of", "to the end of", "at the bottom of" };
	inline constexpr std::string_view InWords[] = { "in", "inside", "within", "from", "out of", "of" };
	inline constexpr std::string_view WholeContentPhrases[] = { "the content of", "the contents of", "content of", "contents of",
		"everything in", "the whole content of", "all the content of", "all of" };

	inline constexpr std::string_view ReplaceSeparators[] = { "by", "with", "->", "=>", "→" };
	inline constexpr std::string_view ChangeSeparators[] = { "to", "into", "by", "with", "->", "=>", "→" };
	inline constexpr std::string_view SubstituteSeparators[] = { "for" };

	struct FPhraseRow
	{
		std::string_view Phrase; // Lower case, words apart by one blank.
		ERequestKind Kind;
	};

	/** What begins a request of one kind: phrases as above, apart by '|'. */
	struct FPhraseGroup
	{
		ERequestKind Kind;
		std::string_view Phrases;
	};

	/** How a request may begin. The longest phrase that fits decides, so the order is free. */
	// clang-format off
	inline constexpr FPhraseGroup RequestPhrases[] = {
		{ ERequestKind::Help,
			"help|what can you do|what can i ask|what do you do|who are you" },
		{ ERequestKind::Greeting,
			"hello|hi|hey|good morning|good evening" },
		{ ERequestKind::Thanks,
			"thanks|thank you" },
		{ ERequestKind::FindText,
			"find|find all|search|search for|grep|grep for|look for|look up|locate|where|where is|where are|where's|wheres"
			"|where do we|where do you|where does|where can i find|find out where|who calls|who uses|what calls|what uses" },
		{ ERequestKind::FindSymbol,
			"find symbol|find the symbol|look up symbol|look up the symbol|definition of|find definition of"
			"|find the definition of|show definition of|show the definition of|show me the definition of"
			"|where is the definition of|go to definition of|go to the definition of|which file defines" },
		{ ERequestKind::Outline,
			"outline|outline of|show outline of|show the outline of|show me the outline of|show me an outline of"
			"|give me the outline of|give me an outline of|list symbols in|list the symbols in|symbols in"
			"|which symbols are in" },
		{ ERequestKind::WhichFiles,
			"which files mention|which files contain|which files use|which files include|which files reference"
			"|which files have|which file mentions|which file contains|what files mention|what files contain|what files use"
			"|files that mention|how many files mention|how many files contain|how many files use|how many files include"
			"|list files that mention|list files containing|list the files that mention|list all files that mention"
			"|show files that mention|show me the files that mention|show me all files that mention|find files that mention"
			"|find files containing" },
		{ ERequestKind::Explain,
			"what does|what is|what's|whats|what are|explain|describe|tell me about|how does|how do|explain how|explain what" },
		{ ERequestKind::Show,
			"show|show me|open|read|cat|print|display|view" },
		{ ERequestKind::List,
			"list|ls|dir|what is in|what's in|whats in|what is inside|what's inside|what files are in|which files are in"
			"|what files are there in|what does the folder|show files in|show the files in|show me the files in"
			"|show me what is in" },
		{ ERequestKind::Summarise,
			"summarise|summarize|sum up|summary of|give me a summary of|give me an overview of|give me an overview|overview"
			"|overview of" },
		{ ERequestKind::Count,
			"how many|how big is|how large is|how long is|count" },
		{ ERequestKind::ChangeFiles,
			"rename|fix|refactor|implement|move" },
	};
	// clang-format on

	/** Of the phrases that list: the questions that names of files alone do not answer when they are about all of the project. */
	inline constexpr std::string_view ContentQuestions[] = { "what is in", "what's in", "whats in", "what is inside", "what's inside" };

	/** Courtesies in front of a request. */
	// clang-format off
	inline constexpr std::string_view OpeningCourtesies[] = {
		"please", "pls", "kindly", "hello", "hi", "hey", "ok", "okay", "so", "now", "then", "and", "well", "velmora", "dear",
		"can you", "could you", "would you", "will you", "can i", "could i", "may i", "can we", "i want to", "i want you to",
		"i would like to", "i would like you to", "i'd like to", "i'd like you to", "i need to", "i need you to", "let's", "let us",
		"let me",
		"do you know", "can you tell me", "could you tell me", "tell me", "help me to", "help me", "try to", "just", "quickly",
		"go and",
	};

	/** What may close a request without adding to it. */
	inline constexpr std::string_view ClosingCourtesies[] = {
		"please", "pls", "thanks", "thank you", "for me", "now", "if you can", "if you would",
		"would you", "will you", "could you", "can you",
		"won't you", "right now", "again", "ok", "okay",
	};

	/** Words in front of a target that only say what sort of thing it is. */
	inline constexpr std::string_view TargetOpeners[] = {
		"the", "a", "an", "all", "any", "every", "each", "of", "me", "my", "our", "this", "that", "for", "in", "on", "to", "inside",
		"file", "files", "folder", "directory", "function", "functions", "class", "struct", "method", "symbol", "enum", "macro",
		"variable", "type", "namespace",
		"text", "word", "string", "phrase", "term", "name", "named", "called", "content of", "contents of", "source of", "code of",
		"source code of", "body of",
		"occurrence of", "occurrences of", "use of", "uses of", "usage of", "usages of", "reference to", "references to",
		"mention of", "mentions of",
		"definition of", "declaration of", "implementation of", "places where", "where", "lines with", "lines in", "lines of",
		"calls to", "calls of",
	};

	/** Words behind a target that only say what is done with it. */
	inline constexpr std::string_view TargetClosers[] = {
		"do", "does", "work", "works", "mean", "means", "about", "for", "handled", "defined", "declared", "implemented", "used",
		"called", "located", "found", "mentioned",
		"set", "initialised", "initialized", "created", "checked", "parsed", "read", "written", "stored", "is", "are", "being",
		"function", "class", "struct", "method", "file", "folder", "directory", "symbol", "anywhere", "everywhere", "here", "there",
		"at",
		"in the project", "in this project", "in my project", "in our project", "in the code", "in this code", "in the codebase",
		"in the sources", "in the source code", "in the repository", "of the project", "of this project",
	};

	/** What parts the target of a request from the place to look in. */
	inline constexpr std::string_view ScopeWords[] = { " in ", " inside ", " under ", " within " };

	/** What stands between the first line and the last one. */
	inline constexpr std::string_view RangeSeparators[] = { "-", " - ", "–", " to ", "..", " through ", " until ", " and " };

	/** Names for everything there is. */
	inline constexpr std::string_view WholeProjectNames[] = {
		"", ".", "./", "/", "project", "the project", "this project", "my project", "our project", "the code", "code", "codebase",
		"the codebase", "this codebase",
		"here", "it", "there", "repository", "the repository", "everything", "files", "all files", "root", "project folder",
		"project root",
		"are there", "files are there", "what", "all",
	};
	// clang-format on

	/** Words that point at something said before, or at an attached file. */
	inline constexpr std::string_view PointingWords[] = { "it", "this", "that", "them", "they", "these", "those", "this file", "file",
		"files", "attached file", "attached files", "attachment" };

	/** How a question may begin that no command answers. */
	// clang-format off
	inline constexpr std::string_view QuestionWords[] = {
		"how", "why", "what", "when", "which", "who", "where", "is", "are", "can", "could", "do", "does", "did", "should", "would", "will",
		"explain", "describe",
	};

	/** Words of a question that say nothing of what it is about. */
	inline constexpr std::string_view FillerWords[] = {
		"a", "about", "again", "all", "also", "am", "an", "and", "any", "are", "as", "at", "be", "because", "been", "best", "but", "by",
		"can", "could", "create", "describe", "did", "do", "does", "doing", "done", "explain", "few", "for", "from", "get", "give", "had",
		"has", "have", "help", "her", "here", "him", "his", "how", "if", "in", "into", "is", "it", "its", "just", "let", "like", "make",
		"makes", "making", "me", "more", "most", "much", "my", "need", "no", "not", "of", "on", "one", "only", "or", "other", "our", "out",
		"please", "possible", "really", "same", "set", "should", "show", "so", "some", "such", "tell", "than", "thanks", "that", "the",
		"their", "them", "then", "there", "these", "they", "thing", "things", "this", "those", "to", "too", "up", "us", "use", "used",
		"using", "very", "want", "was", "way", "we", "well", "were", "what", "when", "where", "which", "while", "who", "why", "will",
		"with", "work", "works", "would", "write", "you", "your", "i", "i'm", "it's", "what's", "don't", "doesn't", "isn't", "can't",
	};
	// clang-format on

	/** Words that say nothing of their own between and around the names of files. */
	inline constexpr std::string_view JoiningWords[] = { "a", "all", "and", "attached", "attachment", "attachments", "both", "each", "file",
		"files", "from", "it", "of", "or", "plus", "the", "them", "these", "this", "those", "to", "versus", "vs", "with" };

	/** The whole word, in lower case, stands in a table. */
	template <size_t Size>
	bool IsOneOf(std::string_view Word, const std::string_view (&Words)[Size])
	{
		return std::find(std::begin(Words), std::end(Words), Word) != std::end(Words);
	}
}
