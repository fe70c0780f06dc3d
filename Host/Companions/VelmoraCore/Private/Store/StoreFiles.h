#pragma once

#include <string>

#include "CoreMinimal.h"

/** The files of a store: the database, and what the database library keeps beside it. Any thread. */
namespace Velmora::StoreFiles
{
	/** Makes the programs that create or replace a store in one folder take turns, for the life of this object. */
	class FFolderLock
	{
	public:
		/** Tries for that long. */
		FFolderLock(const std::string& Folder, int32 PatienceMilliseconds);
		~FFolderLock();
		FFolderLock(const FFolderLock&) = delete;
		FFolderLock& operator=(const FFolderLock&) = delete;

		bool IsHeld() const { return Folder >= 0; }

		/** Number of the system's error when it is not held; 0 when another program holds it. */
		int GetError() const { return Error; }

		/** Makes renamings and new files in the folder last. */
		bool Flush() const;

	private:
		int Folder = -1;
		int Error = 0;
	};

	/** Makes new entries of a folder last; what cannot be flushed is left to the system. */
	void FlushFolder(const std::string& Path);

	std::string GetFolder(const std::string& Path);
	std::string GetName(const std::string& Path);

	/** An empty file for the user alone. Sets errno on failure, also when there is one. */
	bool CreateEmpty(const std::string& Path);

	/** Gives a database and its companions another name; a companion that does not exist is passed over. Sets errno on failure. */
	bool Rename(const std::string& From, const std::string& To);

	/** The companions alone. */
	void RenameCompanions(const std::string& From, const std::string& To);

	/** Removes a database and its companions, if they exist. */
	void Remove(const std::string& Path);
	void RemoveCompanions(const std::string& Path);

	/** A name beside Path that no file bears, with a word and the time in it. */
	std::string MakeAsideName(const std::string& Path, const char* Word);

	/** Identity of a file; 0 when there is none. */
	uint64 GetFileNumber(const std::string& Path);
}
