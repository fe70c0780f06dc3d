#pragma once

#include <filesystem>
#include <string>
#include <vector>

/**
 * A project folder below the system's folder for temporary files, with many empty files named as those of real projects are:
 * folders four to six deep, names of two to four words. The same names in every run. Gone with this object.
 */
class FMadeProject
{
public:
	explicit FMadeProject(int FileCount);
	~FMadeProject();
	FMadeProject(const FMadeProject&) = delete;
	FMadeProject& operator=(const FMadeProject&) = delete;

	const std::filesystem::path& GetRoot() const { return Root; }

private:
	std::filesystem::path Root;
};
