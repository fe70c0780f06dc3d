#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

// The program itself, as a user starts it: its exit code, what it prints, the files that it writes.
namespace
{
	namespace fs = std::filesystem;

	struct FRun
	{
		int ExitCode = -1;
		std::string Output;
		std::string Error;
	};

	/** Reads both streams to their ends. A program that takes longer than two minutes is stopped. */
	FRun RunProgram(const std::vector<std::string>& Arguments, const std::string& Input = "", const std::string& Folder = "", const std::vector<std::string>& Extra = {})
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
		std::vector<std::string> Environment;
		for (char** Entry = environ; *Entry; ++Entry)
		{
			const std::string Text = *Entry;
			if (Text.rfind("DISPLAY=", 0) != 0 && Text.rfind("WAYLAND_DISPLAY=", 0) != 0)
			{
				Environment.push_back(Text);
			}
		}
		Environment.insert(Environment.end(), Extra.begin(), Extra.end());
		std::vector<char*> EnvironmentPointers;
		for (std::string& Entry : Environment)
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

	/** A project of random names, so that no answer can have been written beforehand. */
	class FRandomProject
	{
	public:
		FRandomProject()
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
			Folder = fs::temp_directory_path() / ("velmora-program-" + Symbol);
			fs::create_directories(Folder / "Source");
			std::ofstream Stream(Folder / "Source" / File);
			for (int Number = 1; Number < Line; ++Number)
			{
				Stream << "// line " << Number << "\n";
			}
			Stream << "void " << Symbol << "()\n{\n}\n";
		}
		~FRandomProject()
		{
			std::error_code Ignored;
			fs::remove_all(Folder, Ignored);
		}
		std::string Symbol;
		std::string File;
		int Line = 0;
		fs::path Folder;
	};

	std::string ReadFile(const fs::path& Path)
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
}

TEST(Program, HelpVersionAndWrongOptions)
{
	struct FCase
	{
		std::vector<std::string> Arguments;
		int ExitCode;
		const char* Output;
		const char* Error;
	};
	const FCase Cases[] = {
		{ { "--help" }, 0, "--screenshot FILE", "" },
		{ { "--version" }, 0, "velmora ", "" },
		{ { "--nonsense" }, 2, "", "Unknown option \"--nonsense\"" },
		{ { "--prompt" }, 2, "", "--prompt needs a value" },
		{ { "--prompt", "" }, 2, "", "--prompt wants a text" },
		{ { "--size", "12" }, 2, "", "1280x800" },
		{ { "--size", "0x5" }, 2, "", "1280x800" },
		{ { "--scale=nan" }, 2, "", "0.5 to 4" },
		{ { "--headless", "--project", "/does/not/exist", "--prompt", "help" }, 1, "", "\"/does/not/exist\" does not exist" },
	};
	for (const FCase& Case : Cases)
	{
		SCOPED_TRACE(Case.Arguments[0]);
		const FRun Run = RunProgram(Case.Arguments);
		EXPECT_EQ(Run.ExitCode, Case.ExitCode);
		EXPECT_TRUE(Contains(Run.Output, Case.Output)) << Run.Output;
		EXPECT_TRUE(Contains(Run.Error, Case.Error)) << Run.Error;
	}
}

TEST(Program, AnswersAPromptAboutTheRealProject)
{
	const FRandomProject Project;
	const fs::path Dump = Project.Folder / "out" / "dump.json";
	const fs::path Picture = Project.Folder / "answer.png";
	const FRun Run = RunProgram({ "--headless", "--project", Project.Folder.string(), "--prompt", "find " + Project.Symbol, "--dump", Dump.string(), "--screenshot", Picture.string() });
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_TRUE(Contains(Run.Output, Project.File)) << Run.Output;
	EXPECT_TRUE(Contains(Run.Output, std::to_string(Project.Line))) << Run.Output;
	EXPECT_TRUE(Contains(Run.Error, "Searching " + Project.Symbol + " ... ok")) << Run.Error;
	EXPECT_EQ(ReadFile(Picture).substr(0, 8), "\x89PNG\r\n\x1a\n");
	const std::string Json = ReadFile(Dump);
	for (const char* Part : { "\"state\": \"AwaitingInput\"", "\"statusText\": \"Ready\"", "\"type\": \"ToolSummary\"", "\"status\": \"Success\"", "\"tag\": \"SendButton\"", "\"promptText\": \"\"", "\"worstFrameMs\"" })
	{
		EXPECT_TRUE(Contains(Json, Part)) << Part << "\n" << Json;
	}
}

TEST(Program, SaysThatNothingWasFound)
{
	const FRandomProject Project;
	const FRun Run = RunProgram({ "--headless", "--project", Project.Folder.string(), "--prompt", "find zz" + Project.Symbol });
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_FALSE(Contains(Run.Output, Project.File)) << Run.Output;
	EXPECT_TRUE(Contains(Run.Output, "zz" + Project.Symbol)) << Run.Output;
}

TEST(Program, ReadsPromptsLineByLineWithoutADisplay)
{
	const FRandomProject Project;
	// Relative to the folder that it was started in; the last line has no end.
	const FRun Run = RunProgram({ "--project", "." }, "find " + Project.Symbol + "\r\n\nlist Source", Project.Folder.string());
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_TRUE(Contains(Run.Error, "There is no display")) << Run.Error;
	const size_t First = Run.Output.find(Project.File);
	ASSERT_NE(First, std::string::npos) << Run.Output;
	EXPECT_NE(Run.Output.find(Project.File, Run.Output.find("Source", First + Project.File.size())), std::string::npos) << Run.Output;
}

TEST(Program, TellsWhenAFileCannotBeWritten)
{
	const FRun Run = RunProgram({ "--headless", "--project", ".", "--screenshot", "/proc/no/picture.png", "--dump", "/proc/no/dump.json" });
	EXPECT_EQ(Run.ExitCode, 1);
	EXPECT_TRUE(Contains(Run.Error, "The picture could not be written to \"/proc/no/picture.png\"")) << Run.Error;
	EXPECT_TRUE(Contains(Run.Error, "The dump could not be written to \"/proc/no/dump.json\"")) << Run.Error;
}

TEST(Program, PaintsAtSeveralSizesAndScales)
{
	const FRandomProject Project;
	for (const char* Size : { "1x1", "700x500", "2560x1600" })
	{
		const fs::path Picture = Project.Folder / (std::string(Size) + ".png");
		const FRun Run = RunProgram({ "--headless", "--project", Project.Folder.string(), "--size", Size, "--scale", "2", "--screenshot", Picture.string() });
		EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
		EXPECT_EQ(ReadFile(Picture).substr(1, 3), "PNG") << Size;
	}
}
