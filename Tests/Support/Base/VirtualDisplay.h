#pragma once

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

inline bool IsInstalled(const char* Program)
{
	return std::system((std::string("command -v ") + Program + " >/dev/null 2>&1").c_str()) == 0;
}

/** An X server of our own without a screen. */
class FVirtualDisplay
{
public:
	FVirtualDisplay()
	{
		int Ends[2] = { -1, -1 };
		if (pipe(Ends) != 0)
		{
			return;
		}
		const std::string Descriptor = std::to_string(Ends[1]);
		std::string Arguments[] = { "Xvfb", "-displayfd", Descriptor, "-screen", "0", "1600x1200x24", "-nolisten", "tcp", "-noreset" };
		std::vector<char*> Pointers;
		for (std::string& Argument : Arguments)
		{
			Pointers.push_back(Argument.data());
		}
		Pointers.push_back(nullptr);
		posix_spawn_file_actions_t Actions;
		posix_spawn_file_actions_init(&Actions);
		posix_spawn_file_actions_addopen(&Actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
		const int Failure = posix_spawnp(&Process, "Xvfb", &Actions, nullptr, Pointers.data(), environ);
		posix_spawn_file_actions_destroy(&Actions);
		close(Ends[1]);
		if (Failure != 0)
		{
			Process = 0;
		}
		char Character = 0;
		while (Process != 0 && read(Ends[0], &Character, 1) == 1 && Character != '\n')
		{
			Number += Character;
		}
		close(Ends[0]);
	}
	~FVirtualDisplay() { Stop(); }
	void Stop()
	{
		if (Process != 0)
		{
			kill(Process, SIGTERM);
			waitpid(Process, nullptr, 0);
			Process = 0;
		}
	}
	std::string GetName() const { return Number.empty() ? std::string() : ":" + Number; }

private:
	pid_t Process = 0;
	std::string Number;
};
