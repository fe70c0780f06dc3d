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

	struct FPhraseRow
	{
		std::string_view Phrase; // Lower case, words apart by one blank.
		ERequestKind Kind;
	};

	/** How a request may begin. The longest phrase that fits decides, so the order is free. */
	inline constexpr FPhraseRow RequestPhrases[] = {
		{ "help", ERequestKind::Help },
		{ "what can you do", ERequestKind::Help },
		{ "what can i ask", ERequestKind::Help },
		{ "what do you do", ERequestKind::Help },
		{ "who are you", ERequestKind::Help },
		{ "hello", ERequestKind::Greeting },
		{ "hi", ERequestKind::Greeting },
		{ "hey", ERequestKind::Greeting },
		{ "good morning", ERequestKind::Greeting },
		{ "good evening", ERequestKind::Greeting },
		{ "thanks", ERequestKind::Thanks },
		{ "thank you", ERequestKind::Thanks },

		{ "find", ERequestKind::FindText },
		{ "find all", ERequestKind::FindText },
		{ "search", ERequestKind::FindText },
		{ "search for", ERequestKind::FindText },
		{ "grep", ERequestKind::FindText },
		{ "grep for", ERequestKind::FindText },
		{ "look for", ERequestKind::FindText },
		{ "look up", ERequestKind::FindText },
		{ "locate", ERequestKind::FindText },
		{ "where", ERequestKind::FindText },
		{ "where is", ERequestKind::FindText },
		{ "where are", ERequestKind::FindText },
		{ "where's", ERequestKind::FindText },
		{ "wheres", ERequestKind::FindText },
		{ "where do we", ERequestKind::FindText },
		{ "where do you", ERequestKind::FindText },
		{ "where does", ERequestKind::FindText },
		{ "where can i find", ERequestKind::FindText },
		{ "find out where", ERequestKind::FindText },
		{ "who calls", ERequestKind::FindText },
		{ "who uses", ERequestKind::FindText },
		{ "what calls", ERequestKind::FindText },
		{ "what uses", ERequestKind::FindText },

		{ "find symbol", ERequestKind::FindSymbol },
		{ "find the symbol", ERequestKind::FindSymbol },
		{ "look up symbol", ERequestKind::FindSymbol },
		{ "look up the symbol", ERequestKind::FindSymbol },
		{ "definition of", ERequestKind::FindSymbol },
		{ "find definition of", ERequestKind::FindSymbol },
		{ "find the definition of", ERequestKind::FindSymbol },
		{ "show definition of", ERequestKind::FindSymbol },
		{ "show the definition of", ERequestKind::FindSymbol },
		{ "show me the definition of", ERequestKind::FindSymbol },
		{ "where is the definition of", ERequestKind::FindSymbol },
		{ "go to definition of", ERequestKind::FindSymbol },
		{ "go to the definition of", ERequestKind::FindSymbol },
		{ "which file defines", ERequestKind::FindSymbol },

		{ "outline", ERequestKind::Outline },
		{ "outline of", ERequestKind::Outline },
		{ "show outline of", ERequestKind::Outline },
		{ "show the outline of", ERequestKind::Outline },
		{ "show me the outline of", ERequestKind::Outline },
		{ "show me an outline of", ERequestKind::Outline },
		{ "give me the outline of", ERequestKind::Outline },
		{ "give me an outline of", ERequestKind::Outline },
		{ "list symbols in", ERequestKind::Outline },
		{ "list the symbols in", ERequestKind::Outline },
		{ "symbols in", ERequestKind::Outline },
		{ "which symbols are in", ERequestKind::Outline },

		{ "which files mention", ERequestKind::WhichFiles },
		{ "which files contain", ERequestKind::WhichFiles },
		{ "which files use", ERequestKind::WhichFiles },
		{ "which files include", ERequestKind::WhichFiles },
		{ "which files reference", ERequestKind::WhichFiles },
		{ "which files have", ERequestKind::WhichFiles },
		{ "which file mentions", ERequestKind::WhichFiles },
		{ "which file contains", ERequestKind::WhichFiles },
		{ "what files mention", ERequestKind::WhichFiles },
		{ "what files contain", ERequestKind::WhichFiles },
		{ "what files use", ERequestKind::WhichFiles },
		{ "files that mention", ERequestKind::WhichFiles },
		{ "how many files mention", ERequestKind::WhichFiles },
		{ "how many files contain", ERequestKind::WhichFiles },
		{ "how many files use", ERequestKind::WhichFiles },
		{ "how many files include", ERequestKind::WhichFiles },
		{ "list files that mention", ERequestKind::WhichFiles },
		{ "list files containing", ERequestKind::WhichFiles },
		{ "list the files that mention", ERequestKind::WhichFiles },
		{ "list all files that mention", ERequestKind::WhichFiles },
		{ "show files that mention", ERequestKind::WhichFiles },
		{ "show me the files that mention", ERequestKind::WhichFiles },
		{ "show me all files that mention", ERequestKind::WhichFiles },
		{ "find files that mention", ERequestKind::WhichFiles },
		{ "find files containing", ERequestKind::WhichFiles },

		{ "what does", ERequestKind::Explain },
		{ "what is", ERequestKind::Explain },
		{ "what's", ERequestKind::Explain },
		{ "whats", ERequestKind::Explain },
		{ "what are", ERequestKind::Explain },
		{ "explain", ERequestKind::Explain },
		{ "describe", ERequestKind::Explain },
		{ "tell me about", ERequestKind::Explain },
		{ "how does", ERequestKind::Explain },
		{ "how do", ERequestKind::Explain },
		{ "explain how", ERequestKind::Explain },
		{ "explain what", ERequestKind::Explain },

		{ "show", ERequestKind::Show },
		{ "show me", ERequestKind::Show },
		{ "open", ERequestKind::Show },
		{ "read", ERequestKind::Show },
		{ "cat", ERequestKind::Show },
		{ "print", ERequestKind::Show },
		{ "display", ERequestKind::Show },
		{ "view", ERequestKind::Show },

		{ "list", ERequestKind::List },
		{ "ls", ERequestKind::List },
		{ "dir", ERequestKind::List },
		{ "what is in", ERequestKind::List },
		{ "what's in", ERequestKind::List },
		{ "whats in", ERequestKind::List },
		{ "what is inside", ERequestKind::List },
		{ "what's inside", ERequestKind::List },
		{ "what files are in", ERequestKind::List },
		{ "which files are in", ERequestKind::List },
		{ "what files are there in", ERequestKind::List },
		{ "what does the folder", ERequestKind::List },
		{ "show files in", ERequestKind::List },
		{ "show the files in", ERequestKind::List },
		{ "show me the files in", ERequestKind::List },
		{ "show me what is in", ERequestKind::List },

		{ "summarise", ERequestKind::Summarise },
		{ "summarize", ERequestKind::Summarise },
		{ "sum up", ERequestKind::Summarise },
		{ "summary of", ERequestKind::Summarise },
		{ "give me a summary of", ERequestKind::Summarise },
		{ "give me an overview of", ERequestKind::Summarise },
		{ "give me an overview", ERequestKind::Summarise },
		{ "overview", ERequestKind::Summarise },
		{ "overview of", ERequestKind::Summarise },

		{ "how many", ERequestKind::Count },
		{ "how big is", ERequestKind::Count },
		{ "how large is", ERequestKind::Count },
		{ "how long is", ERequestKind::Count },
		{ "count", ERequestKind::Count },

		{ "rename", ERequestKind::ChangeFiles },
		{ "fix", ERequestKind::ChangeFiles },
		{ "refactor", ERequestKind::ChangeFiles },
		{ "implement", ERequestKind::ChangeFiles },
		{ "move", ERequestKind::ChangeFiles },
	};

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

	/** The whole word, in lower case, stands in a table. */
	template <size_t Size>
	bool IsOneOf(std::string_view Word, const std::string_view (&Words)[Size])
	{
		return std::find(std::begin(Words), std::end(Words), Word) != std::end(Words);
	}
}
