#pragma once

#include "Changes/ChangeJournal.h"
#include "Changes/ChangeTools.h"
#include "TemporaryProject.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <sys/stat.h>
#include <vector>

/** A project with a journal and tools on it. Nothing is flushed to the disk. */
class FChangeTest : public ::testing::Test
{
protected:
	void SetUp() override
	{
		UndoFolder = Project.Root.native() + "-undo";
		OpenJournal();
	}

	void TearDown() override
	{
		Journal.reset();
		std::error_code Error;
		std::filesystem::remove_all(UndoFolder, Error);
	}

	void OpenJournal(uint64_t MaxKeptBytes = Velmora::FChangeJournal::MaxKeptBytes)
	{
		Journal = std::make_unique<Velmora::FChangeJournal>(UndoFolder, MaxKeptBytes);
		Journal->SetDurable(false);
		Journal->OpenTransaction("T1", "C", 0);
	}

	Velmora::FChangeTools MakeTools(
		const std::string& Transaction = "T1", Velmora::EAccessMethod Method = Velmora::EAccessMethod::Automatic)
	{
		Velmora::FChangeTools Tools(Project.Root.native(), *Journal, Transaction, Method);
		Tools.SetDurable(false);
		return Tools;
	}

	Velmora::FUndoResult UndoRequest(const std::string& Transaction = "T1")
	{
		return Undo(Transaction, [](int) { return std::string(); });
	}

	Velmora::FUndoResult Undo(
		const std::string& Transaction, std::function<std::string(int MessageIndex)> Commit, const std::string& Conversation = "C")
	{
		Velmora::FUndoRequest Request;
		Request.TransactionId = Transaction;
		Request.ConversationId = Conversation;
		Request.Commit = std::move(Commit);
		Request.MarkMessages = [](int MessageIndex) { return std::vector<std::string>{ "mark" + std::to_string(MessageIndex) }; };
		return Journal->Undo(Request);
	}

	/** What a later start does; says which messages are to go. */
	std::vector<Velmora::FRecoveredUndo> RecoverAll(const std::string& MessageProblem = std::string())
	{
		return Velmora::FChangeJournal::RecoverDeadJournals(
			UndoFolder,
			[&](const Velmora::FLoggedUndo& Undo, std::string&)
			{
				FinishedMessages = Undo.ConversationId + ' ' + std::to_string(Undo.MessageIndex);
				for (const std::string& Mark : Undo.MessageMarks)
				{
					FinishedMessages += ' ' + Mark;
				}
				return MessageProblem;
			},
			false);
	}

	std::string ReadFile(const std::string& Path) const
	{
		std::ifstream File(Project.Root / Path, std::ios::binary);
		return std::string(std::istreambuf_iterator<char>(File), {});
	}

	void SetMode(const std::string& Path, mode_t Mode) const { ASSERT_EQ(chmod(Project.PathOf(Path).c_str(), Mode), 0); }

	/** Every name below a folder with what it is, its mode bits and its bytes, in order. */
	static std::vector<std::string> ListTree(const std::filesystem::path& Root)
	{
		std::vector<std::string> Lines;
		for (const std::filesystem::directory_entry& Entry : std::filesystem::recursive_directory_iterator(Root))
		{
			struct stat Status;
			EXPECT_EQ(lstat(Entry.path().c_str(), &Status), 0);
			std::string Line = Entry.path().native() + ' ' + std::to_string(Status.st_mode) + ' ';
			if (S_ISLNK(Status.st_mode))
			{
				Line += std::filesystem::read_symlink(Entry.path()).native();
			}
			else if (S_ISREG(Status.st_mode))
			{
				std::ifstream File(Entry.path(), std::ios::binary);
				Line.append(std::istreambuf_iterator<char>(File), {});
			}
			Lines.push_back(Line);
		}
		std::sort(Lines.begin(), Lines.end());
		return Lines;
	}
	std::vector<std::string> ListProject() const { return ListTree(Project.Root); }

	FTemporaryProject Project;
	std::string UndoFolder;
	std::string FinishedMessages;
	std::unique_ptr<Velmora::FChangeJournal> Journal;
};
