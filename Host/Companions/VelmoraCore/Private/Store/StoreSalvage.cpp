#include "Store/StoreSalvage.h"

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Host/HostSystemErrors.h"

// Reads what can be read of a database that its library refuses. Every page is looked at by itself: a leaf of a table holds
// rows, a row holds columns, and checksums say which of them are ours and whole. Neither the tree of pages nor the schema
// has to be right.
// Numbers in the file decide about nothing but which bytes are looked at. Each is checked against the sizes at hand, chains
// of pages have a budget, since a damaged one may run in circles, and what fails is left out.

namespace Velmora
{
	namespace
	{
		// The file format is published: sqlite.org/fileformat2.html. Only leaves of tables matter here: rows stand in them alone, and
		// whether a row is one of ours its checksum says, so that neither the tree above the leaves nor the schema is needed.
		constexpr uint32 FileHeaderSize = 100;
		constexpr uint32 DefaultPageSize = 4096;
		constexpr unsigned char TableLeaf = 0x0d;
		constexpr uint32 LeafHeaderSize = 8;
		constexpr int64 LogHeaderSize = 32;
		constexpr int64 FrameHeaderSize = 24;

		/** The format has no more; one more and a count over all of them would begin anew. */
		constexpr int64 MaxPages = 0xfffffffe;

		/** No row of ours has more columns. */
		constexpr size_t MaxColumns = 6;

		uint32 ReadBig16(const unsigned char* Bytes)
		{
			return static_cast<uint32>(Bytes[0] << 8 | Bytes[1]);
		}

		uint32 ReadBig32(const unsigned char* Bytes)
		{
			return ReadBig16(Bytes) << 16 | ReadBig16(Bytes + 2);
		}

		bool IsPageSize(uint32 Size)
		{
			return Size >= 512 && Size <= 65536 && (Size & (Size - 1)) == 0;
		}

		bool ReadAt(const FFileDescriptor& File, int64 Offset, void* OutBytes, size_t Size)
		{
			char* Position = static_cast<char*>(OutBytes);
			while (Size > 0)
			{
				const ssize_t Count = HostRetryInterrupted([&] { return pread(File.Get(), Position, Size, Offset); });
				if (Count <= 0)
				{
					return false;
				}
				Position += Count;
				Offset += Count;
				Size -= static_cast<size_t>(Count);
			}
			return true;
		}

		/** Seven bits a byte, the most significant first; the ninth byte counts whole. False when the bytes end before it does. */
		bool ReadVarint(const unsigned char*& Position, const unsigned char* End, uint64& OutValue)
		{
			OutValue = 0;
			for (int Index = 0; Index < 9 && Position < End; ++Index)
			{
				const unsigned char Byte = *Position++;
				if (Index == 8)
				{
					OutValue = OutValue << 8 | Byte;
					return true;
				}
				OutValue = OutValue << 7 | (Byte & 0x7f);
				if (Byte < 0x80)
				{
					return true;
				}
			}
			return false;
		}

		/** The columns of a row. */
		class FRecord
		{
		public:
			explicit FRecord(std::string_view Payload)
			{
				const unsigned char* Begin = reinterpret_cast<const unsigned char*>(Payload.data());
				const unsigned char* Position = Begin;
				uint64 HeaderSize = 0;
				if (!ReadVarint(Position, Begin + Payload.size(), HeaderSize) || HeaderSize > Payload.size())
				{
					return;
				}
				const unsigned char* const HeaderEnd = Begin + HeaderSize;
				size_t Offset = HeaderSize;
				while (Position < HeaderEnd)
				{
					uint64 Type = 0;
					if (!ReadVarint(Position, HeaderEnd, Type))
					{
						return;
					}
					const size_t Size = SizeOf(Type);
					if (Size > Payload.size() - Offset || Columns.size() == MaxColumns)
					{
						return;
					}
					Columns.push_back({ Type, Payload.substr(Offset, Size) });
					Offset += Size;
				}
				bIsWhole = true;
			}

			bool HasColumns(size_t Count) const { return bIsWhole && Columns.size() == Count; }

			int64 GetInteger(size_t Column) const
			{
				const FColumn& Found = Columns[Column];
				// 9 is the number one without a byte, 8 the zero; 7 would be a fraction, which no column of ours has.
				if (Found.Type == 9)
				{
					return 1;
				}
				if (Found.Type == 0 || Found.Type > 6)
				{
					return 0;
				}
				// The sign of the first byte goes on to the left.
				uint64 Value = !Found.Bytes.empty() && static_cast<signed char>(Found.Bytes[0]) < 0 ? ~0ull : 0;
				for (const char Byte : Found.Bytes)
				{
					Value = Value << 8 | static_cast<unsigned char>(Byte);
				}
				return static_cast<int64>(Value);
			}

			std::string_view GetBytes(size_t Column) const
			{
				return Columns[Column].Type >= 12 ? Columns[Column].Bytes : std::string_view();
			}

		private:
			static size_t SizeOf(uint64 Type)
			{
				// From 12 on even numbers are bytes and odd ones text, both with their length in the number.
				constexpr size_t Sizes[] = { 0, 1, 2, 3, 4, 6, 8, 8, 0, 0, 0, 0 };
				return Type < std::size(Sizes) ? Sizes[Type] : static_cast<size_t>((Type - 12) / 2);
			}

			struct FColumn
			{
				uint64 Type = 0;
				std::string_view Bytes;
			};
			std::vector<FColumn> Columns;
			bool bIsWhole = false;
		};
	}

	FStoreSalvage::FStoreSalvage(const std::string& Path)
		// A pipe or a device in the store's place must not hold up the start, hence O_NONBLOCK.
		: File(FFileDescriptor::Open(Path, O_RDONLY | O_NONBLOCK))
		, Log(FFileDescriptor::Open(Path + "-wal", O_RDONLY | O_NONBLOCK))
	{
	}

	// 1. The head, or what our own files have in its place. 2. Pages that are newer in the log. 3. All pages, all cells: a message
	// is noted by its place, since texts may not fit into memory, and a conversation is kept.
	bool FStoreSalvage::Scan(const std::atomic<bool>& bStops)
	{
		struct stat Status;
		if (!File.IsOpen() || fstat(File.Get(), &Status) != 0 || !S_ISREG(Status.st_mode))
		{
			return false;
		}
		// 1. The head says how large a page is; 1 stands for 65,536, which two bytes cannot hold.
		unsigned char Header[FileHeaderSize] = {};
		ReadAt(File, 0, Header, static_cast<size_t>(std::min<int64>(Status.st_size, FileHeaderSize)));
		PageSize = ReadBig16(Header + 16) == 1 ? 65536 : ReadBig16(Header + 16);
		uint32 Reserved = Header[20];
		if (memcmp(Header, "SQLite format 3", 16) != 0 || !IsPageSize(PageSize) || Reserved > 32)
		{
			// The head is lost; the files that this system makes are like this.
			PageSize = DefaultPageSize;
			Reserved = 0;
		}
		UsableSize = PageSize - Reserved;
		PageCount = static_cast<uint32>(std::min<int64>((Status.st_size + PageSize - 1) / PageSize, MaxPages));
		// 2. What was committed to the log and not yet copied into the file counts before the file's own pages.
		ReadLogIndex();
		// 3. Long rows go on in chained pages. A damaged chain may be a circle or lead through the whole file for each row.
		ChainBudget = 4 * CountPages() + 1024;

		// 4. Each page that looks like a leaf is read, whoever points to it. The first row with a number wins.
		for (uint32 Page = 1; Page <= PageCount && !bStops; ++Page)
		{
			TakePage(Page);
		}
		std::vector<uint32> Beyond;
		for (const auto& [Page, Place] : LogOffsets)
		{
			if (Page > PageCount)
			{
				Beyond.push_back(Page);
			}
		}
		std::sort(Beyond.begin(), Beyond.end());
		for (size_t Index = 0; Index < Beyond.size() && !bStops; ++Index)
		{
			TakePage(Beyond[Index]);
		}
		return !bStops;
	}

	void FStoreSalvage::TakePage(uint32 Page)
	{
		FBytes Bytes;
		if (!ReadPage(Page, Bytes))
		{
			return;
		}
		FCell Cell;
		const uint32 CellCount = CountCells(Page, Bytes);
		for (uint32 Index = 0; Index < CellCount; ++Index)
		{
			StoreSchema::FConversationRow Row;
			FConversationMessage Message;
			if (!ReadCell(Page, Bytes, Index, Cell))
			{
				continue;
			}
			if (TakeMessage(Cell, Message))
			{
				Messages.emplace(Cell.RowId, FPlace{ Page, Index });
			}
			else if (TakeConversation(Cell, Row))
			{
				Rows.emplace(Row.Number, std::move(Row));
			}
		}
	}

	// 1. The head and its sum. 2. Frame by frame, as long as sums and salt go on; a frame counts when its transaction was
	// committed. What follows is from an earlier use of the file.
	void FStoreSalvage::ReadLogIndex()
	{
		// 1. The head of the log, with a sum of itself. Any doubt, and the log counts for nothing.
		unsigned char Header[LogHeaderSize];
		if (!Log.IsOpen() || !ReadAt(Log, 0, Header, sizeof(Header)) || (ReadBig32(Header) & ~1u) != 0x377f0682 ||
			ReadBig32(Header + 8) != PageSize)
		{
			return;
		}
		// The lowest bit of the mark tells the byte order of the words that are summed.
		const bool bIsBig = (ReadBig32(Header) & 1) != 0;
		uint32 First = 0;
		uint32 Second = 0;
		const auto Sum = [bIsBig, &First, &Second](const unsigned char* Bytes, size_t Size)
		{
			for (size_t Offset = 0; Offset < Size; Offset += 8)
			{
				uint32 Words[2];
				for (size_t Index = 0; Index < 2; ++Index)
				{
					const uint32 Word = ReadBig32(Bytes + Offset + 4 * Index);
					Words[Index] = bIsBig ? Word : __builtin_bswap32(Word);
				}
				First += Words[0] + Second;
				Second += Words[1] + First;
			}
		};
		Sum(Header, 24);
		if (First != ReadBig32(Header + 24) || Second != ReadBig32(Header + 28))
		{
			return;
		}
		// 2. Frames, each summed on from the one before: the first that does not add up ends what can be trusted.
		std::unordered_map<uint32, int64> Pending;
		FBytes Frame(static_cast<size_t>(FrameHeaderSize) + PageSize);
		for (int64 Offset = LogHeaderSize; ReadAt(Log, Offset, Frame.data(), Frame.size()); Offset += static_cast<int64>(Frame.size()))
		{
			Sum(Frame.data(), 8);
			Sum(Frame.data() + FrameHeaderSize, PageSize);
			// The two salts in the head tell frames of this log from older ones that it has not yet overwritten.
			if (memcmp(Frame.data() + 8, Header + 16, 8) != 0 || First != ReadBig32(Frame.data() + 16) ||
				Second != ReadBig32(Frame.data() + 20))
			{
				return;
			}
			const uint32 Page = ReadBig32(Frame.data());
			Pending[Page] = Offset + FrameHeaderSize;
			// Only the last frame of a transaction tells how many pages the file has then. How many is not believed: what is neither in
			// the file nor in the log cannot be read, and any number may stand there.
			if (ReadBig32(Frame.data() + 4) != 0)
			{
				for (const auto& [Number, Place] : Pending)
				{
					LogOffsets[Number] = Place;
				}
				Pending.clear();
			}
		}
	}

	bool FStoreSalvage::ReadPage(uint32 Page, FBytes& OutBytes) const
	{
		const auto Found = LogOffsets.find(Page);
		if (Page == 0 || (Page > PageCount && Found == LogOffsets.end()))
		{
			return false;
		}
		OutBytes.assign(PageSize, 0);
		if (Found != LogOffsets.end())
		{
			return ReadAt(Log, Found->second, OutBytes.data(), PageSize);
		}
		// Of a page that is cut off, what is there counts.
		const int64 Offset = static_cast<int64>(Page - 1) * PageSize;
		return HostRetryInterrupted([&] { return pread(File.Get(), OutBytes.data(), PageSize, Offset); }) > 0;
	}

	uint32 FStoreSalvage::CountCells(uint32 Page, const FBytes& Bytes) const
	{
		// A damaged count could go beyond the page; each cell takes two bytes of pointer and four of its own at the least.
		const unsigned char* Head = Bytes.data() + (Page == 1 ? FileHeaderSize : 0);
		return Head[0] == TableLeaf ? std::min(ReadBig16(Head + 3), (UsableSize - LeafHeaderSize) / 6) : 0;
	}

	// 1. Where the cell lies. 2. Its size and key. 3. How much of it is on the page itself, by the format's own formula. 4. The
	// rest, which hangs on in a chain of pages.
	bool FStoreSalvage::ReadCell(uint32 Page, const FBytes& Bytes, uint32 Cell, FCell& OutCell)
	{
		// 1. Where the cell begins, its size and its number.
		const uint32 Start = (Page == 1 ? FileHeaderSize : 0) + LeafHeaderSize + 2 * Cell;
		if (Start + 2 > UsableSize)
		{
			return false;
		}
		const uint32 Offset = ReadBig16(Bytes.data() + Start);
		const unsigned char* Position = Bytes.data() + std::min(Offset, UsableSize);
		const unsigned char* const End = Bytes.data() + UsableSize;
		uint64 Size = 0;
		uint64 RowId = 0;
		if (!ReadVarint(Position, End, Size) || !ReadVarint(Position, End, RowId) || Size > CountPages() * PageSize)
		{
			return false;
		}
		OutCell.RowId = static_cast<int64>(RowId);
		// 2. How much of it lies on the page itself: the published rule, which leaves whole pages for the rest.
		const uint64 MaxLocal = UsableSize - 35;
		uint64 Local = Size;
		if (Size > MaxLocal)
		{
			const uint64 MinLocal = (UsableSize - 12) * 32 / 255 - 23;
			Local = MinLocal + (Size - MinLocal) % (UsableSize - 4);
			Local = Local <= MaxLocal ? Local : MinLocal;
		}
		const bool bIsLong = Local < Size;
		if (Local + (bIsLong ? 4 : 0) > static_cast<uint64>(End - Position))
		{
			return false;
		}
		OutCell.Payload.assign(reinterpret_cast<const char*>(Position), Local);
		// 3. The rest, page by page.
		uint32 Next = bIsLong ? ReadBig32(Position + Local) : 0;
		FBytes Link;
		while (OutCell.Payload.size() < Size)
		{
			if (ChainBudget == 0 || !ReadPage(Next, Link))
			{
				return false;
			}
			--ChainBudget;
			const uint64 Part = std::min<uint64>(Size - OutCell.Payload.size(), UsableSize - 4);
			OutCell.Payload.append(reinterpret_cast<const char*>(Link.data()) + 4, Part);
			Next = ReadBig32(Link.data());
		}
		return true;
	}

	bool FStoreSalvage::TakeConversation(const FCell& Cell, StoreSchema::FConversationRow& OutRow) const
	{
		const FRecord Record(Cell.Payload);
		if (!Record.HasColumns(6))
		{
			return false;
		}
		OutRow.Number = Cell.RowId;
		OutRow.Id = Record.GetBytes(1);
		OutRow.Mode = Record.GetInteger(2);
		OutRow.Updated = Record.GetInteger(3);
		OutRow.Opening = Record.GetBytes(4);
		return StoreSchema::HashConversation(OutRow.Number, OutRow.Id, OutRow.Mode, OutRow.Updated, OutRow.Opening) ==
			static_cast<uint64>(Record.GetInteger(5));
	}

	bool FStoreSalvage::TakeMessage(const FCell& Cell, FConversationMessage& OutMessage) const
	{
		const FRecord Record(Cell.Payload);
		if (!Record.HasColumns(5))
		{
			return false;
		}
		const int64 Role = Record.GetInteger(1);
		const int64 Flags = Record.GetInteger(2);
		const std::string_view Content = Record.GetBytes(3);
		if (StoreSchema::HashMessage(Cell.RowId, Role, Flags, Content) != static_cast<uint64>(Record.GetInteger(4)))
		{
			return false;
		}
		OutMessage.Content = StoreSchema::ToText(Content);
		OutMessage.Role = StoreSchema::ToRole(Role);
		OutMessage.bHasToolCalls = (Flags & StoreSchema::HasToolCallsFlag) != 0;
		return true;
	}

	std::vector<int64> FStoreSalvage::GetNumbers() const
	{
		// A conversation whose row is lost has a number in its messages still, and one whose messages are lost has its opening.
		std::vector<int64> Numbers;
		for (const auto& [Number, Row] : Rows)
		{
			Numbers.push_back(Number);
		}
		for (const auto& [Key, Place] : Messages)
		{
			Numbers.push_back(StoreSchema::GetNumber(Key));
		}
		std::sort(Numbers.begin(), Numbers.end());
		Numbers.erase(std::unique(Numbers.begin(), Numbers.end()), Numbers.end());
		return Numbers;
	}

	// A message is read again from its page; without messages, those of the opening are better than none.
	void FStoreSalvage::Read(int64 Number, StoreSchema::FConversationRow& OutRow, TArray<FConversationMessage>& OutMessages)
	{
		OutRow = StoreSchema::FConversationRow();
		OutMessages.Empty();
		const auto Found = Rows.find(Number);
		if (Found != Rows.end())
		{
			OutRow = Found->second;
		}
		// Messages of one conversation mostly share pages, so the last page is kept. Each is checked again: the file may be in use.
		FBytes Bytes;
		FCell Cell;
		uint32 LastPage = 0;
		ChainBudget = 4 * CountPages() + 1024;
		const auto End = Messages.lower_bound(StoreSchema::MakeKey(Number + 1, 0));
		for (auto Position = Messages.lower_bound(StoreSchema::MakeKey(Number, 0)); Position != End; ++Position)
		{
			const FPlace& Place = Position->second;
			FConversationMessage Message;
			if (Place.Page != LastPage)
			{
				LastPage = ReadPage(Place.Page, Bytes) ? Place.Page : 0;
			}
			if (LastPage != 0 && ReadCell(LastPage, Bytes, Place.Cell, Cell) && Cell.RowId == Position->first && TakeMessage(Cell, Message))
			{
				OutMessages.Add(MoveTemp(Message));
			}
		}
		if (OutMessages.Num() == 0)
		{
			StoreSchema::ReadOpening(OutRow.Opening, OutMessages);
		}
	}
}
