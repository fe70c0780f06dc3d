#include "Open/EditorCommand.h"

#include <cstdlib>
#include <utility>

bool FEditorCommand::Split(std::string_view Command, std::vector<std::string>& OutWords)
{
	OutWords.clear();
	std::string Word;
	bool bInWord = false;
	char Quote = 0;
	for (size_t Index = 0; Index < Command.size(); ++Index)
	{
		const char Unit = Command[Index];
		const bool bEscapes = Unit == '\\' && Quote != '\'' && Index + 1 < Command.size();
		// Within double quotes a backslash stands for itself, but before what would end or begin something.
		if (bEscapes && (Quote == 0 || Command[Index + 1] == '"' || Command[Index + 1] == '\\'))
		{
			Word.push_back(Command[++Index]);
			bInWord = true;
		}
		else if (Quote != 0)
		{
			if (Unit == Quote)
			{
				Quote = 0;
			}
			else
			{
				Word.push_back(Unit);
			}
		}
		else if (Unit == '"' || Unit == '\'')
		{
			Quote = Unit;
			bInWord = true;
		}
		else if (Unit == ' ' || Unit == '\t' || Unit == '\n')
		{
			if (bInWord)
			{
				OutWords.push_back(std::exchange(Word, std::string()));
			}
			bInWord = false;
		}
		else
		{
			Word.push_back(Unit);
			bInWord = true;
		}
	}
	if (bInWord)
	{
		OutWords.push_back(std::move(Word));
	}
	return Quote == 0;
}

FEditorCommand FEditorCommand::ReadEnvironment()
{
	FEditorCommand Command;
	for (const char* Name : { "VISUAL", "EDITOR" })
	{
		const char* const Value = std::getenv(Name);
		Command.bReadable = !Value || Split(Value, Command.Words);
		if (!Command.Words.empty() || !Command.bReadable)
		{
			Command.Variable = Name;
			break;
		}
	}
	return Command;
}
