#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "CoreMinimal.h"

#include "Agent/ConversationTypes.h"
#include "Host/FileDescriptor.h"
#include "Store/StoreSchema.h"

namespace Velmora
{
	/**
	 * Reads conversations from the pages of a database that may be damaged anywhere, without the database library: it
	 * goes through all pages, the write-ahead log's over the file's, takes every page that holds rows for itself, and
	 * believes a row when its checksum fits. Lost pages that only lead to others cost nothing, a lost page of rows
	 * costs these rows. One thread.
	 *
	 * The layout of pages, rows and log: https://www.sqlite.org/fileformat2.html
	 */
	class FStoreSalvage
	{
	public:
		/** @param Path  The main file; the log is looked for beside it, with "-wal" behind the name. */
		explicit FStoreSalvage(const std::string& Path);

		/** Finds what there is. False when the file cannot be read or the stop was asked for. */
		bool Scan(const std::atomic<bool>& bStops);

		/** Numbers of the conversations of which anything was found, in order. */
		std::vector<int64> GetNumbers() const;

		/**
		 * Reads one of them. One whose own row is lost has no id, mode and time; one whose messages are lost keeps its
		 * opening.
		 */
		void Read(int64 Number, StoreSchema::FConversationRow& OutRow, TArray<FConversationMessage>& OutMessages);

	private:
		using FBytes = std::vector<unsigned char>;

		struct FPlace
		{
			uint32 Page = 0;
			uint32 Cell = 0;
		};

		struct FCell
		{
			int64 RowId = 0;
			std::string Payload;
		};

		void ReadLogIndex();

		/** At most: those of the file and those of the log. */
		uint64 CountPages() const { return uint64(PageCount) + LogOffsets.size(); }
		void TakePage(uint32 Page);
		bool ReadPage(uint32 Page, FBytes& OutBytes) const;
		uint32 CountCells(uint32 Page, const FBytes& Bytes) const;
		bool ReadCell(uint32 Page, const FBytes& Bytes, uint32 Cell, FCell& OutCell);
		bool TakeConversation(const FCell& Cell, StoreSchema::FConversationRow& OutRow) const;
		bool TakeMessage(const FCell& Cell, FConversationMessage& OutMessage) const;

		const FFileDescriptor File;
		const FFileDescriptor Log;
		uint32 PageSize = 0;
		uint32 UsableSize = 0;

		/** Of the file itself. */
		uint32 PageCount = 0;

		/** How many pages behind others may still be followed: a knot in a damaged chain must end somewhere. */
		uint64 ChainBudget = 0;

		/** Where the log holds the last committed state of a page. */
		std::unordered_map<uint32, int64> LogOffsets;
		std::map<int64, StoreSchema::FConversationRow> Rows;
		std::map<int64, FPlace> Messages;
	};
}
