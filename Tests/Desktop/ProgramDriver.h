#pragma once

#include <filesystem>
#include <string>
#include <vector>

// The program itself, as a user starts it: its exit code, what it prints, the files that it writes.

struct FRun
{
	int ExitCode = -1;
	std::string Output;
	std::string Error;
};

/**
 * Reads both streams to their ends. A program that takes longer than two minutes is stopped. It sees no display, unless
 * Extra, more entries of the environment, names one. A name without "=" takes its entry away.
 */
FRun RunProgram(const std::vector<std::string>& Arguments, const std::string& Input = "", const std::string& Folder = "",
	const std::vector<std::string>& Extra = {});

/** A project of random names, so that no answer can have been written beforehand. */
class FRandomProject
{
public:
	FRandomProject();
	~FRandomProject();

	/** Writes a file beside the project, where the agent does not find it; returns its whole path. */
	std::string Write(const std::string& Name, const std::string& Text) const;
	/** Of a file beside the project. */
	std::string Path(const std::string& Name) const { return (OutFolder / Name).string(); }

	std::string Symbol;
	std::string File;
	int Line = 0;
	std::filesystem::path Folder;
	std::filesystem::path OutFolder;
};

std::string ReadFile(const std::filesystem::path& Path);
bool Contains(const std::string& Text, const std::string& Part);
