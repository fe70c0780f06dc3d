#pragma once

#include <string>
#include <vector>

#include "Host/Outcome.h"

/** The files of a store: the database, and what the database library keeps beside it. Any thread. */
namespace Velmora::StoreFiles
{
	/** Makes new entries of a folder last; what cannot be flushed is left to the system. */
	void FlushFolder(const std::string& Path);

	std::string GetFolder(const std::string& Path);
	std::string GetName(const std::string& Path);

	/** An empty file for the user alone, whatever the mask. Exists when there is one. */
	FOutcome CreateEmpty(const std::string& Path);

	/** Takes everybody else's rights to a database, its companions and its folder away, if they have any. */
	void MakePrivate(const std::string& Path);

	/** Gives a file another name, in one step. */
	FOutcome Move(const std::string& From, const std::string& To);

	/** Gives a database and its companions another name; a companion that does not exist is passed over. */
	FOutcome Rename(const std::string& From, const std::string& To);

	/** The companions alone. */
	void RenameCompanions(const std::string& From, const std::string& To);

	/** Removes a database and its companions, if they exist. */
	void Remove(const std::string& Path);
	void RemoveCompanions(const std::string& Path);

	/** A name beside Path that no file bears, with a word and the time in it. */
	std::string MakeAsideName(const std::string& Path, const char* Word);

	/** The store that a version keeps beside one of a later version: NAME.v1.db beside NAME.db. */
	std::string MakeSideName(const std::string& Path, int64 Version);

	/** Those that versions up to one have kept beside a store. */
	std::vector<std::string> ListSideStores(const std::string& Path, int64 LastVersion);

	/** Identity of a file; 0 when there is none. */
	uint64 GetFileNumber(const std::string& Path);
}
