#include "Desktop/ProgramDriver.h"

#include "Support/Base/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <map>
#include <random>
#include <sstream>

#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace
{
	size_t CountEntries(char** Entries)
	{
		size_t Count = 0;
		while (Entries[Count])
		{
			++Count;
		}
		return Count;
	}
}

FRun RunProgram(
	const std::vector<std::string>& Arguments, const std::string& Input, const std::string& Folder, const std::vector<std::string>& Extra)
{
	int In[2];
	int Out[2];
	int Err[2];
	EXPECT_EQ(pipe(In) + pipe(Out) + pipe(Err), 0);
	std::vector<std::string> Words = Arguments;
	Words.insert(Words.begin(), VELMORA_PROGRAM);
	std::vector<char*> Pointers;
	for (std::string& Word : Words)
	{
		Pointers.push_back(Word.data());
	}
	Pointers.push_back(nullptr);
	// Neither the user's display, nor the user's keyring, nor what the user keeps for the program has a say here, nor a connection made the
	// default.
	const FTempFolder Data;
	std::map<std::string, std::string> Entries;
	const auto Set = [&Entries](const std::string& Entry)
	{
		const size_t Sign = Entry.find('=');
		Entries.erase(Entry.substr(0, Sign));
		if (Sign != std::string::npos)
		{
			Entries[Entry.substr(0, Sign)] = Entry;
		}
	};
	std::for_each(environ, environ + CountEntries(environ), Set);
	for (const std::string& Entry :
		{ std::string("DISPLAY"), std::string("WAYLAND_DISPLAY"), std::string("XDG_RUNTIME_DIR"), std::string("DBUS_SESSION_BUS_ADDRESS"),
			"XDG_DATA_HOME=" + Data.AtBytes("data"), "XDG_CONFIG_HOME=" + Data.AtBytes("config") })
	{
		Set(Entry);
	}
	std::for_each(Extra.begin(), Extra.end(), Set);
	std::vector<char*> EnvironmentPointers;
	for (auto& [Name, Entry] : Entries)
	{
		EnvironmentPointers.push_back(Entry.data());
	}
	EnvironmentPointers.push_back(nullptr);
	posix_spawn_file_actions_t Actions;
	posix_spawn_file_actions_init(&Actions);
	posix_spawn_file_actions_adddup2(&Actions, In[0], 0);
	posix_spawn_file_actions_adddup2(&Actions, Out[1], 1);
	posix_spawn_file_actions_adddup2(&Actions, Err[1], 2);
	for (const int Handle : { In[0], In[1], Out[0], Out[1], Err[0], Err[1] })
	{
		posix_spawn_file_actions_addclose(&Actions, Handle);
	}
	if (!Folder.empty())
	{
		posix_spawn_file_actions_addchdir_np(&Actions, Folder.c_str());
	}
	pid_t Process = 0;
	EXPECT_EQ(posix_spawn(&Process, VELMORA_PROGRAM, &Actions, nullptr, Pointers.data(), EnvironmentPointers.data()), 0);
	posix_spawn_file_actions_destroy(&Actions);
	close(In[0]);
	close(Out[1]);
	close(Err[1]);
	EXPECT_EQ(write(In[1], Input.data(), Input.size()), static_cast<ssize_t>(Input.size()));
	close(In[1]);

	FRun Run;
	pollfd Polls[2] = { { Out[0], POLLIN, 0 }, { Err[0], POLLIN, 0 } };
	const auto Deadline = std::chrono::steady_clock::now() + std::chrono::minutes(2);
	while ((Polls[0].fd >= 0 || Polls[1].fd >= 0) && std::chrono::steady_clock::now() < Deadline)
	{
		poll(Polls, 2, 1000);
		for (int Index = 0; Index < 2; ++Index)
		{
			char Buffer[4096];
			if (Polls[Index].fd >= 0 && Polls[Index].revents != 0)
			{
				const ssize_t Count = read(Polls[Index].fd, Buffer, sizeof(Buffer));
				if (Count <= 0)
				{
					Polls[Index].fd = -1;
					continue;
				}
				(Index == 0 ? Run.Output : Run.Error).append(Buffer, static_cast<size_t>(Count));
			}
		}
	}
	if (std::chrono::steady_clock::now() >= Deadline)
	{
		kill(Process, SIGKILL);
	}
	int Status = 0;
	waitpid(Process, &Status, 0);
	close(Out[0]);
	close(Err[0]);
	Run.ExitCode = WIFEXITED(Status) ? WEXITSTATUS(Status) : 128 + WTERMSIG(Status);
	return Run;
}

FRandomProject::FRandomProject()
{
	std::random_device Device;
	std::mt19937 Generator(Device());
	for (int Index = 0; Index < 10; ++Index)
	{
		Symbol += static_cast<char>('a' + Generator() % 26);
	}
	Symbol[0] = static_cast<char>(Symbol[0] - 'a' + 'A');
	File = Symbol.substr(0, 4) + "File.cpp";
	Line = 2 + static_cast<int>(Generator() % 40);
	Folder = std::filesystem::temp_directory_path() / ("velmora-program-" + Symbol);
	OutFolder = Folder.string() + "-out";
	std::filesystem::create_directories(Folder / "Source");
	std::filesystem::create_directories(OutFolder);
	std::ofstream Stream(Folder / "Source" / File);
	for (int Number = 1; Number < Line; ++Number)
	{
		Stream << "// line " << Number << "\n";
	}
	Stream << "void " << Symbol << "()\n{\n}\n";
}

FRandomProject::~FRandomProject()
{
	std::error_code Ignored;
	std::filesystem::remove_all(Folder, Ignored);
	std::filesystem::remove_all(OutFolder, Ignored);
}

std::string FRandomProject::Write(const std::string& Name, const std::string& Text) const
{
	std::ofstream Stream(Path(Name), std::ios::binary);
	Stream << Text;
	return Path(Name);
}

std::string ReadFile(const std::filesystem::path& Path)
{
	std::ifstream Stream(Path, std::ios::binary);
	std::stringstream Buffer;
	Buffer << Stream.rdbuf();
	return Buffer.str();
}

bool Contains(const std::string& Text, const std::string& Part)
{
	return Text.find(Part) != std::string::npos;
}
