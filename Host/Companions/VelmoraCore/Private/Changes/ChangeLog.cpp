#include "Changes/ChangeLog.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Changes/ContentHash.h"
#include "Host/HostSystemErrors.h"

namespace Velmora
{
	namespace
	{
		constexpr const char* KindNames[] = { "absent", "file", "folder", "link", "other" };
		constexpr size_t MarkLength = 16;

		/** For a field of the log: no tab, no line feed. */
		std::string EscapeField(std::string_view Text)
		{
			std::string Out;
			for (const char Byte : Text)
			{
				if (Byte == '%' || static_cast<unsigned char>(Byte) < 0x20)
				{
					Out += '%';
					Out += "0123456789abcdef"[static_cast<unsigned char>(Byte) >> 4];
					Out += "0123456789abcdef"[Byte & 15];
				}
				else
				{
					Out += Byte;
				}
			}
			return Out;
		}

		std::string UnescapeField(std::string_view Text)
		{
			std::string Out;
			for (size_t Index = 0; Index < Text.size(); ++Index)
			{
				if (Text[Index] == '%' && Index + 2 < Text.size())
				{
					Out += static_cast<char>(std::strtol(std::string(Text.substr(Index + 1, 2)).c_str(), nullptr, 16));
					Index += 2;
				}
				else
				{
					Out += Text[Index];
				}
			}
			return Out;
		}

		/** Writes the fields of a line one by one. */
		class FLine
		{
		public:
			explicit FLine(const char* Kind)
				: Text(Kind)
			{
			}
			FLine& Add(std::string_view Field)
			{
				Text += '\t' + EscapeField(Field);
				return *this;
			}
			FLine& Add(uint64_t Number) { return Add(std::to_string(Number)); }
			FLine& Add(const std::vector<std::string>& Fields)
			{
				Add(Fields.size());
				for (const std::string& Field : Fields)
				{
					Add(Field);
				}
				return *this;
			}
			FLine& Add(const FEntryState& State)
			{
				Add(KindNames[static_cast<size_t>(State.Kind)]).Add(State.Mode).Add(State.Hash).Add(State.LinkTarget);
				Add(State.Traits.Owner).Add(State.Traits.Group).Add(State.Traits.Attributes.size());
				for (const auto& [Name, Value] : State.Traits.Attributes)
				{
					Add(Name).Add(Value);
				}
				return *this;
			}
			std::string Take() { return std::move(Text) + '\n'; }

		private:
			std::string Text;
		};

		/** Reads them again. What is missing is empty, and the line does not count. */
		class FFields
		{
		public:
			explicit FFields(std::string_view Line)
				: Rest(Line)
			{
			}
			std::string Take()
			{
				bIsWhole = bIsWhole && !bIsAtEnd;
				const size_t End = std::min(Rest.find('\t'), Rest.size());
				std::string Field = UnescapeField(Rest.substr(0, End));
				bIsAtEnd = End == Rest.size();
				Rest.remove_prefix(bIsAtEnd ? End : End + 1);
				return Field;
			}
			uint64_t TakeNumber() { return std::strtoull(Take().c_str(), nullptr, 10); }
			std::vector<std::string> TakeList()
			{
				std::vector<std::string> List;
				for (uint64_t Count = TakeNumber(); Count > 0 && bIsWhole; --Count)
				{
					List.push_back(Take());
				}
				return List;
			}
			FEntryState TakeState()
			{
				FEntryState State;
				const std::string Kind = Take();
				const auto Known = std::find(std::begin(KindNames), std::end(KindNames), Kind);
				bIsWhole = bIsWhole && Known != std::end(KindNames);
				State.Kind = bIsWhole ? static_cast<EEntryKind>(Known - std::begin(KindNames)) : EEntryKind::Absent;
				State.Mode = static_cast<uint32_t>(TakeNumber());
				State.Hash = Take();
				State.LinkTarget = Take();
				State.Traits.Owner = static_cast<uint32_t>(TakeNumber());
				State.Traits.Group = static_cast<uint32_t>(TakeNumber());
				for (uint64_t Count = TakeNumber(); Count > 0 && bIsWhole; --Count)
				{
					std::string Name = Take();
					State.Traits.Attributes.emplace_back(std::move(Name), Take());
				}
				return State;
			}
			bool IsWhole() const { return bIsWhole; }

		private:
			std::string_view Rest;
			bool bIsAtEnd = false;
			bool bIsWhole = true;
		};

		FChangeTransaction& FindOrAdd(FLoggedHistory& History, const std::string& TransactionId)
		{
			auto Known = std::find_if(History.Transactions.begin(), History.Transactions.end(),
				[&TransactionId](const FChangeTransaction& Transaction) { return Transaction.Id == TransactionId; });
			if (Known == History.Transactions.end())
			{
				Known = History.Transactions.emplace(Known);
				Known->Id = TransactionId;
			}
			return *Known;
		}

		void TakeMessage(FFields& Fields, FLoggedHistory& History)
		{
			FChangeTransaction Told;
			Told.Id = Fields.Take();
			Told.ConversationId = Fields.Take();
			Told.MessageIndex = static_cast<int>(Fields.TakeNumber());
			Told.MessageMark = Fields.Take();
			for (const std::string& Later : Fields.TakeList())
			{
				Told.LaterMessages.push_back(std::atoi(Later.c_str()));
			}
			if (Fields.IsWhole())
			{
				FChangeTransaction& Known = FindOrAdd(History, Told.Id);
				Told.Records = std::move(Known.Records);
				Told.bIsLogged = true;
				Known = std::move(Told);
			}
		}

		/** Nothing when the line was cut. */
		std::optional<FLoggedUndo> TakeUndo(FFields& Fields)
		{
			FLoggedUndo Undo;
			Undo.ConversationId = Fields.Take();
			Undo.MessageIndex = static_cast<int>(Fields.TakeNumber());
			Undo.MessageMarks = Fields.TakeList();
			Undo.TransactionIds = Fields.TakeList();
			Undo.Notices = Fields.TakeList();
			return Fields.IsWhole() ? std::make_optional(std::move(Undo)) : std::nullopt;
		}

		/** Undone for good. Half-written files of theirs may still stand in the project. */
		void TakeUndone(const std::vector<std::string>& Ids, FLoggedHistory& History)
		{
			for (FChangeTransaction& Transaction : History.Transactions)
			{
				if (std::count(Ids.begin(), Ids.end(), Transaction.Id) != 0)
				{
					std::move(Transaction.Records.begin(), Transaction.Records.end(), std::back_inserter(History.FailedRecords));
				}
			}
			std::erase_if(History.Transactions,
				[&Ids](const FChangeTransaction& Transaction) { return std::count(Ids.begin(), Ids.end(), Transaction.Id) != 0; });
		}

		void TakeChange(FFields& Fields, FLoggedHistory& History, FChangeTransaction*& OutLast)
		{
			FChangeRecord Record;
			Record.Root = Fields.Take();
			Record.RootIdentity.Device = Fields.TakeNumber();
			Record.RootIdentity.Number = Fields.TakeNumber();
			Record.RootIdentity.BornAt = static_cast<int64_t>(Fields.TakeNumber());
			Record.Path = Fields.Take();
			Record.TemporaryName = Fields.Take();
			const std::string TransactionId = Fields.Take();
			Record.Before = Fields.TakeState();
			Record.After = Fields.TakeState();
			Record.MadeFolders = Fields.TakeList();
			Record.OtherNames = Fields.TakeList();
			OutLast = nullptr;
			if (!Fields.IsWhole() || Record.TemporaryName.find('/') != std::string::npos)
			{
				return;
			}
			OutLast = &FindOrAdd(History, TransactionId);
			OutLast->Records.push_back(std::move(Record));
		}
	}

	std::string HashMessageText(std::string_view Text)
	{
		return HashContent(Text).substr(0, MarkLength);
	}

	bool FChangeLog::Create(const std::string& Folder)
	{
		File = FFileDescriptor::Open(Folder + '/' + FileName, O_WRONLY | O_CREAT | O_EXCL | O_APPEND, 0600);
		return File.IsOpen();
	}

	bool FChangeLog::OpenAgain(const std::string& Folder)
	{
		File = FFileDescriptor::Open(Folder + '/' + FileName, O_WRONLY | O_APPEND | O_NOFOLLOW);
		return File.IsOpen();
	}

	std::string FChangeLog::Append(const std::string& Line)
	{
		struct stat Before = {};
		fstat(File.Get(), &Before);
		if (!File.Write(Line) || (bIsDurable && !File.Flush()))
		{
			const std::string Reason = HostDescribeSystemError(errno);
			// Half a line would spoil the next one.
			[[maybe_unused]] const int Ignored = HostRetryInterrupted([&] { return ftruncate(File.Get(), Before.st_size); });
			return Reason;
		}
		return std::string();
	}

	std::string FChangeLog::CutTo(off_t Size)
	{
		const bool bIsCut = HostRetryInterrupted([&] { return ftruncate(File.Get(), Size); }) == 0 && (!bIsDurable || File.Flush());
		return bIsCut ? std::string() : "the list of changes cannot be written: " + HostDescribeSystemError(errno);
	}

	std::string FChangeLog::ListMessages(const std::vector<std::shared_ptr<FChangeTransaction>>& Transactions)
	{
		std::string Lines;
		for (const std::shared_ptr<FChangeTransaction>& Transaction : Transactions)
		{
			std::vector<std::string> Later;
			for (const int Index : Transaction->LaterMessages)
			{
				Later.push_back(std::to_string(Index));
			}
			FLine Line("message");
			Line.Add(Transaction->Id).Add(Transaction->ConversationId).Add(static_cast<uint64_t>(Transaction->MessageIndex));
			Lines += Line.Add(Transaction->MessageMark).Add(Later).Take();
		}
		return Lines;
	}

	std::string FChangeLog::AppendMessages(const std::string& MessageLines)
	{
		return MessageLines.empty() ? std::string() : Append(MessageLines);
	}

	std::string FChangeLog::AppendChanges(
		const std::vector<FChangeRecord>& Records, const std::string& TransactionId, const std::string& MessageLines)
	{
		std::string Lines = MessageLines;
		// Those stay when the change fails.
		LastStart = lseek(File.Get(), 0, SEEK_END) + static_cast<off_t>(Lines.size());
		for (const FChangeRecord& Record : Records)
		{
			FLine Line("change");
			Line.Add(Record.Root).Add(Record.RootIdentity.Device).Add(Record.RootIdentity.Number);
			Line.Add(static_cast<uint64_t>(Record.RootIdentity.BornAt)).Add(Record.Path).Add(Record.TemporaryName).Add(TransactionId);
			Line.Add(Record.Before).Add(Record.After).Add(Record.MadeFolders).Add(Record.OtherNames);
			Lines += Line.Take();
		}
		const std::string Reason = Append(Lines);
		return Reason.empty() ? Reason : "it cannot be written down for undo: " + Reason;
	}

	std::string FChangeLog::AppendFailure(size_t Count)
	{
		// On a full disk there is room for less, but not for more.
		const std::string Problem = Append(FLine("failed").Add(Count).Take());
		return Problem.empty() ? Problem : CutTo(LastStart);
	}

	std::string FChangeLog::AppendUndo(const FLoggedUndo& Undo)
	{
		LastStart = lseek(File.Get(), 0, SEEK_END);
		FLine Line("undo");
		Line.Add(Undo.ConversationId).Add(static_cast<uint64_t>(Undo.MessageIndex)).Add(Undo.MessageMarks);
		return Append(Line.Add(Undo.TransactionIds).Add(Undo.Notices).Take());
	}

	std::string FChangeLog::AppendNotices(const std::vector<std::string>& Notices)
	{
		return Append(FLine("notices").Add(Notices).Take());
	}

	std::string FChangeLog::AppendTry()
	{
		return Append("tried\n");
	}

	std::string FChangeLog::AppendEndOfUndo(const std::vector<std::string>& UndoneIds)
	{
		const std::string Problem = Append(UndoneIds.empty() ? "ended\n" : FLine("undone").Add(UndoneIds).Take());
		return Problem.empty() ? Problem : CutTo(LastStart);
	}

	std::string FChangeLog::AppendForgotten(const std::vector<std::string>& TransactionIds)
	{
		return Append(FLine("undone").Add(TransactionIds).Take());
	}

	FLoggedHistory FChangeLog::Read(const std::string& Folder)
	{
		FLoggedHistory History;
		std::ifstream Log(Folder + '/' + FileName, std::ios::binary);
		FChangeTransaction* LastChanged = nullptr;
		for (std::string Line; std::getline(Log, Line) && !Log.eof();)
		{
			FFields Fields(Line);
			const std::string Kind = Fields.Take();
			if (Kind == "change")
			{
				// Nothing is changed while an undo is under way: that one was over.
				History.OpenUndo.reset();
				TakeChange(Fields, History, LastChanged);
			}
			else if (Kind == "failed" && LastChanged)
			{
				for (uint64_t Count = Fields.TakeNumber(); Count > 0 && !LastChanged->Records.empty(); --Count)
				{
					History.FailedRecords.push_back(std::move(LastChanged->Records.back()));
					LastChanged->Records.pop_back();
				}
				LastChanged = nullptr;
			}
			else if (Kind == "undo")
			{
				History.OpenUndo = TakeUndo(Fields);
			}
			else if (Kind == "notices" && History.OpenUndo)
			{
				for (std::string& Notice : Fields.TakeList())
				{
					History.OpenUndo->Notices.push_back(std::move(Notice));
				}
			}
			else if (Kind == "tried" && History.OpenUndo)
			{
				++History.OpenUndo->Tries;
			}
			else if (Kind == "ended" || Kind == "undone")
			{
				History.OpenUndo.reset();
				LastChanged = nullptr;
				TakeUndone(Kind == "undone" ? Fields.TakeList() : std::vector<std::string>(), History);
			}
			else if (Kind == "message")
			{
				LastChanged = nullptr;
				TakeMessage(Fields, History);
			}
		}
		return History;
	}
}
