#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "Changes/ProjectAccess.h"

namespace Velmora
{
	/**
	 * Contents of files, each once under its hash, in a folder of a journal. Counts who needs one and removes it with
	 * the last. One thread at a time, but for GetBytes.
	 */
	class FKeptContents
	{
	public:
		/** A content larger than this is not kept. */
		static constexpr uint64_t MaxFileBytes = 64 * 1024 * 1024;

		/** Of the folder in a journal's folder. */
		static constexpr const char* FolderName = "contents";

		/** In that folder: a content that is being written. */
		static constexpr const char* TemporaryName = "new.tmp";

		/** @param JournalFolder  Is there, with FolderName in it. */
		explicit FKeptContents(const std::string& JournalFolder);

		/** Gives a clause that says why it could not be opened, or nothing. */
		std::string DescribeRefusal() const { return Access.DescribeRefusal(); }

		/** Gives a clause that says why not, or nothing. */
		std::string Keep(const std::string& Bytes, const std::string& Hash);
		bool Holds(const std::string& Hash) const { return Kept.count(Hash) != 0; }

		/** One that another process has kept here. False when it is not there. */
		bool Adopt(const std::string& Hash);

		/** What Keep was called for is needed no longer. An unknown hash is none of its business. */
		void Release(const std::string& Hash);

		/** Gives a clause that says why not, or nothing. Also of contents that another process has kept here. */
		std::string Read(const std::string& Hash, std::string& OutBytes) const;

		uint64_t GetBytes() const { return TotalBytes; }

		/** False: what is kept from now on need not outlive the machine. */
		void SetDurable(bool bInDurable);

	private:
		struct FKeptContent
		{
			uint64_t Size = 0;
			int Users = 0;
		};
		FProjectAccess Access;
		bool bIsDurable = true;
		std::map<std::string, FKeptContent> Kept;
		std::atomic<uint64_t> TotalBytes = 0;
	};
}
