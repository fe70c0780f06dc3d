#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Host/FileDescriptor.h"

namespace Velmora
{
	/** What stands under a name. */
	enum class EEntryKind : uint8_t
	{
		Absent,
		File,
		Folder,
		Link,
		Other // Pipe, device, socket.
	};

	/** What a file has besides its bytes and mode. */
	struct FFileTraits
	{
		uint32_t Owner = 0;
		uint32_t Group = 0;

		/** Extended attributes in order, the access list among them. Not those of the system's security, which go with the content. */
		std::vector<std::pair<std::string, std::string>> Attributes;

		bool operator==(const FFileTraits&) const = default;
	};

	/** By this an entry is taken to be untouched since it was looked at. Not by its number, which some file systems give anew. */
	struct FEntryStamp
	{
		EEntryKind Kind = EEntryKind::Absent;
		uint64_t Size = 0;

		/** In nanoseconds. */
		int64_t ModifiedAt = 0;

		bool operator==(const FEntryStamp&) const = default;
	};

	struct FEntryInfo
	{
		EEntryKind Kind = EEntryKind::Absent;

		/** Which file it is, and how many names it has. */
		uint64_t Device = 0;
		uint64_t Number = 0;
		uint64_t NameCount = 0;

		/** Known after Read. */
		FFileTraits Traits;

		/** Permission bits with set-id and sticky bits. */
		uint32_t Mode = 0;
		uint64_t Size = 0;

		/** In nanoseconds. */
		int64_t ModifiedAt = 0;

		/** What a link points to, as stored. */
		std::string LinkTarget;

		FEntryStamp GetStamp() const { return { Kind, Size, ModifiedAt }; }
	};

	/** Which folder it is, whatever its name: also one that came to stand under the same number later is another one. */
	struct FFolderIdentity
	{
		uint64_t Device = 0;
		uint64_t Number = 0;

		/** In nanoseconds; zero where the file system does not say. */
		int64_t BornAt = 0;

		auto operator<=>(const FFolderIdentity&) const = default;
	};

	/** How FProjectAccess keeps a path below its folder. */
	enum class EAccessMethod
	{
		/** The system resolves it in one step below the folder; links that stay inside are followed. Where the system refuses that, the
		   walk. */
		Automatic,

		/** Folder by folder; no link is followed. */
		Walk
	};

	/**
	 * Everything that the agent does to the project's files goes through an open handle of the project folder, so that
	 * nothing outside is touched, also when a folder is replaced by a link at the same moment. Paths are bytes below
	 * the folder as Normalise gives them. Any thread, also several at once.
	 *
	 * Operations answer with an empty text, or with a clause that says why not ("it cannot be found").
	 */
	class FProjectAccess
	{
	public:
		/** Programs that change a project take turns by a lock of its folder. Beyond this time one goes on without. */
		static constexpr int32_t TurnMilliseconds = 1000;

		explicit FProjectAccess(const std::string& Root, EAccessMethod InMethod = EAccessMethod::Automatic);

		/** The folder could be opened. */
		bool IsOpen() const { return RootFolder.IsOpen(); }

		/** Why not: a clause. Empty when it is open. */
		std::string DescribeRefusal() const;

		const FFolderIdentity& GetIdentity() const { return Identity; }

		/**
		 * Makes a path relative: takes away a leading project folder, empty parts and ".". Refuses "..", absolute paths
		 * that lead elsewhere, NULs and the folder itself.
		 */
		std::string Normalise(std::string_view Path, std::string& OutRelative) const;

		/**
		 * The same file by the folders that it really lies in, links among them followed: two names of one file become one.
		 * What cannot be followed stays; the operations on it say why.
		 */
		std::string ResolveFolders(const std::string& Path) const;

		/** What stands there itself, links not followed. A name that is not there, nor its folder, is Absent. */
		std::string Look(const std::string& Path, FEntryInfo& OutInfo) const;

		/** Regular files only; never waits for the other end of a pipe. */
		std::string Read(const std::string& Path, uint64_t MaxBytes, std::string& OutBytes, FEntryInfo& OutInfo) const;

		/** Empty when the user may write to what stands there, and its write bit is set at all. */
		std::string RefuseWriting(const std::string& Path) const;

		struct FWriteOptions
		{
			/** Name of the file that is written beside and then takes the name. Nothing is left of it. */
			std::string TemporaryName;
			uint32_t Mode = 0644;

			/** What the file shall have, null for what a new one gets. In OutLost, if there is one: what it could not get, "its owner". */
			const FFileTraits* Traits = nullptr;
			std::string* OutLost = nullptr;

			/** Bits that the user's mask takes away do not come through; for new files. */
			bool bObeysMask = false;

			/** False: whatever has come to stand there meanwhile stays, and the writing fails. */
			bool bMayReplace = true;

			/** The same for what stood there when it was looked at and is another now; null for whatever it is. */
			const FEntryStamp* Replaced = nullptr;
		};

		/** Whole or not at all, and on the disk when it returns. */
		std::string Write(const std::string& Path, std::string_view Bytes, const FWriteOptions& Options) const;

		// The two halves of Write, for many files at once: the first leaves the new file under its temporary name, the
		// second puts it in place. Neither waits for the disk, but the first gets it going.
		std::string WriteBeside(const std::string& Path, std::string_view Bytes, const FWriteOptions& Options) const;
		std::string PutInPlace(const std::string& Path, const FWriteOptions& Options) const;

		/** Waits until a file is on the disk, or the names in the folder that a path lies in. */
		std::string FlushFile(const std::string& Path) const;
		void FlushFolderOf(const std::string& Path) const;

		/** The same for all there is at once: quicker than many of the above, though it waits for what others have written too. */
		void FlushAll() const;

		std::string MakeLink(const std::string& Path, const std::string& Target, const FWriteOptions& Options) const;

		/** The other names that a file has in the project. False when it has more, or they cannot be found. Takes its time. */
		bool ListOtherNames(const std::string& Path, const FEntryInfo& Info, std::vector<std::string>& OutNames) const;

		/** Makes another name stand for the file of a path, whatever stood there. */
		std::string LinkTo(const std::string& Path, const std::string& OtherName, const std::string& TemporaryName) const;

		/** A file or link. With a stamp only if it is still what it says. */
		std::string Remove(const std::string& Path, const FEntryStamp* Removed = nullptr) const;

		/** Makes the folders above a path that are missing; the outer ones first in OutMade, also on failure. */
		std::string MakeParents(const std::string& Path, std::vector<std::string>& OutMade) const;

		/** Folders above a path that are missing, the outer ones first. */
		std::vector<std::string> ListMissingParents(const std::string& Path) const;

		/** Removes a folder if it is empty. */
		std::string RemoveFolder(const std::string& Path) const;

		/** False: changes are not flushed to the disk, for runs in which only the names and bytes count. */
		void SetDurable(bool bInDurable) { bIsDurable = bInDurable; }

	private:
		enum class EFlush
		{
			None,
			Begin,
			Wait
		};

		FFileDescriptor OpenBeneath(const std::string& Path, int Flags) const;
		FFileDescriptor OpenByWalk(const std::string& Path, int Flags) const;
		FFileDescriptor OpenParent(const std::string& Path, std::string& OutName) const;
		std::string WriteBeside(const FFileDescriptor& Folder, const std::string& Name, std::string_view Bytes,
			const FWriteOptions& Options, EFlush Flushing) const;
		std::string PutInPlace(const FFileDescriptor& Folder, const std::string& Name, const FWriteOptions& Options) const;
		void Flush(const FFileDescriptor& Folder) const;

		std::string Root;

		/** Root with links resolved. */
		std::string RealRoot;
		FFileDescriptor RootFolder;
		FFolderIdentity Identity;

		/** Of the system, zero when the folder is open. */
		int OpenError = 0;
		EAccessMethod Method;
		bool bIsDurable = true;
	};
}
