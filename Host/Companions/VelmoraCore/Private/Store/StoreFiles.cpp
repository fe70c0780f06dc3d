#include "Store/StoreFiles.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "Text/Utf8Text.h"

namespace Velmora::StoreFiles
{
	namespace
	{
		constexpr const char* Companions[] = { "-wal", "-shm", "-journal" };
	}

	FFolderLock::FFolderLock(const std::string& Path, int32 PatienceMilliseconds)
	{
		const int Handle = open(Path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
		if (Handle < 0)
		{
			Error = errno;
			return;
		}
		const auto End = std::chrono::steady_clock::now() + std::chrono::milliseconds(PatienceMilliseconds);
		while (flock(Handle, LOCK_EX | LOCK_NB) != 0)
		{
			if (errno != EWOULDBLOCK || std::chrono::steady_clock::now() > End)
			{
				Error = errno == EWOULDBLOCK ? 0 : errno;
				close(Handle);
				return;
			}
			std::this_thread::sleep_for(std::chrono::milliseconds(1));
		}
		Folder = Handle;
	}

	FFolderLock::~FFolderLock()
	{
		if (Folder >= 0)
		{
			close(Folder);
		}
	}

	bool FFolderLock::Flush() const
	{
		return fsync(Folder) == 0;
	}

	void FlushFolder(const std::string& Path)
	{
		const int Handle = open(Path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
		if (Handle >= 0)
		{
			fsync(Handle);
			close(Handle);
		}
	}

	std::string GetFolder(const std::string& Path)
	{
		const size_t Slash = Path.rfind('/');
		return Slash == std::string::npos ? std::string(".") : Path.substr(0, Slash);
	}

	std::string GetName(const std::string& Path)
	{
		return Path.substr(Path.rfind('/') + 1);
	}

	bool CreateEmpty(const std::string& Path)
	{
		const int Handle = open(Path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
		return Handle >= 0 && close(Handle) == 0;
	}

	bool Rename(const std::string& From, const std::string& To)
	{
		if (rename(From.c_str(), To.c_str()) != 0)
		{
			return false;
		}
		RenameCompanions(From, To);
		return true;
	}

	void RenameCompanions(const std::string& From, const std::string& To)
	{
		for (const char* Companion : Companions)
		{
			std::string Target = To + Companion;
			while (access(Target.c_str(), F_OK) == 0)
			{
				Target += '_';
			}
			rename((From + Companion).c_str(), Target.c_str());
		}
	}

	void Remove(const std::string& Path)
	{
		unlink(Path.c_str());
		RemoveCompanions(Path);
	}

	void RemoveCompanions(const std::string& Path)
	{
		for (const char* Companion : Companions)
		{
			unlink((Path + Companion).c_str());
		}
	}

	std::string MakeAsideName(const std::string& Path, const char* Word)
	{
		const std::string Stem = Path + '.' + Word + '-' + Utf8Text::FromString(FDateTime::Now().ToString(TEXT("%Y%m%d-%H%M%S")));
		std::string Name = Stem;
		for (int Number = 2; access(Name.c_str(), F_OK) == 0; ++Number)
		{
			Name = Stem + '-' + std::to_string(Number);
		}
		return Name;
	}

	uint64 GetFileNumber(const std::string& Path)
	{
		struct stat Status;
		return stat(Path.c_str(), &Status) == 0 ? static_cast<uint64>(Status.st_ino) : 0;
	}
}
