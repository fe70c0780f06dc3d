#include "CodeIntel/IgnorePatterns.h"
#include "Host/HostFileNames.h"
#include "TemporaryProject.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace
{
	bool IsGitInstalled()
	{
		return std::system("git --version > /dev/null 2>&1") == 0;
	}

	/** What git itself leaves out of the paths. Its settings of user and machine are kept out of the answer. */
	std::set<std::string> AskGit(const std::filesystem::path& Root, const std::vector<std::string>& Paths)
	{
		const std::string List = Root.native() + ".paths";
		const std::string Answer = Root.native() + ".ignored";
		{
			std::ofstream Out(List, std::ios::binary);
			for (const std::string& Path : Paths)
			{
				Out << Path << '\0';
			}
		}
		const std::string Git =
			"cd '" + Root.native() + "' && GIT_CONFIG_GLOBAL=/dev/null GIT_CONFIG_SYSTEM=/dev/null XDG_CONFIG_HOME=/nonexistent git ";
		// "Nothing is ignored" is answered with exit code 1.
		const int Code = std::system((Git + "check-ignore --no-index -z --stdin < '" + List + "' > '" + Answer + "' 2> /dev/null").c_str());
		EXPECT_TRUE(WIFEXITED(Code) && WEXITSTATUS(Code) <= 1) << Code;
		std::set<std::string> Ignored;
		std::ifstream In(Answer, std::ios::binary);
		for (std::string Path; std::getline(In, Path, '\0');)
		{
			Ignored.insert(Path);
		}
		std::filesystem::remove(List);
		std::filesystem::remove(Answer);
		return Ignored;
	}

	/** A tree whose names are built from few letters, so that random patterns hit often. */
	class FMadeTree
	{
	public:
		explicit FMadeTree(const FTemporaryProject& InProject, uint32 Seed)
			: Project(InProject)
			, Random(Seed)
		{
			Fill("", 0);
			const std::string Init = "git init -q '" + Project.Root.native() + "' > /dev/null 2>&1";
			EXPECT_EQ(std::system(Init.c_str()), 0);
		}

		int Pick(int Count) { return static_cast<int>(Random() % static_cast<uint32>(Count)); }

		std::string MakeLine()
		{
			static constexpr const char* Pieces[] = { "a", "b", "c", "ab", "a.c", ".c", "*", "*", "?", "**", "/", "/", "/**/", "**/", "/**",
				"[ab]", "[!a]", "[^b]", "[a-c]", "[]a]", "[[:alpha:]]", "[[:foo:]]", "[a", "[a-]", "[\\]a]", "[b-a]", "\\a", "\\*", "\\",
				" ", "\\ ", "#", "!", "é", "\xFF", "[[:x]", "[[:]", "[[]", "\r", "\t", "[a-\\c]", "[--a]", "[!]a]", "***", "**\\/" };
			std::string Line = Pick(5) == 0 ? "!" : Pick(12) == 0 ? "#" : "";
			for (int Count = 1 + Pick(5); Count > 0; --Count)
			{
				Line += Pieces[Pick(Pick(3) == 0 ? static_cast<int>(std::size(Pieces)) : 15)];
			}
			return Line + (Pick(6) == 0 ? "/" : "") + (Pick(10) == 0 ? " " : "") + (Pick(12) == 0 ? "\r" : "");
		}

		/** New ignore files in some folders. */
		void WriteIgnoreFiles()
		{
			for (const std::string& Folder : Folders)
			{
				std::filesystem::remove(Project.Root / Folder / ".gitignore");
				if (Folder.empty() || Pick(3) == 0)
				{
					std::string Lines = Pick(8) == 0 ? "\xEF\xBB\xBF" : "";
					for (int Count = 1 + Pick(4); Count > 0; --Count)
					{
						Lines += MakeLine() + (Count > 1 || Pick(2) == 0 ? "\n" : "");
					}
					Project.Write(Folder + ".gitignore", Lines);
					Texts[Folder] = Lines;
				}
				else
				{
					Texts.erase(Folder);
				}
			}
		}

		std::vector<std::string> Paths;
		std::map<std::string, std::string> Texts;

	private:
		void Fill(const std::string& Folder, int Depth)
		{
			static constexpr const char* Names[] = { "a", "b", "c", "ab", "a.c", "b.c", "abc", "*", "[a", "a b", "a ", "#a", "!b", "é",
				"a\xFF", "\\a" };
			Folders.push_back(Folder);
			for (const char* Name : Names)
			{
				const int Kind = Pick(Depth < 3 ? 5 : 3);
				const std::string Path = Folder + Name;
				if (Kind >= 3)
				{
					std::filesystem::create_directories(Project.Root / Path);
					Paths.push_back(Path);
					if (Depth == 0 || Pick(2) == 0)
					{
						Fill(Path + "/", Depth + 1);
					}
				}
				else if (Kind > 0)
				{
					Project.Write(Path, "x");
					Paths.push_back(Path);
				}
			}
		}

		const FTemporaryProject& Project;
		std::mt19937 Random;
		std::vector<std::string> Folders;
	};
}

TEST(IgnoreRulesTests, AgreeWithGitOnRandomTreesAndPatterns)
{
	if (!IsGitInstalled())
	{
		GTEST_SKIP() << "git is not installed, so there is nothing to compare with";
	}
	const char* const Wanted = std::getenv("VELMORA_TEST_SEED");
	const uint32 Seed = Wanted ? static_cast<uint32>(std::atoi(Wanted)) : std::random_device{}();
	SCOPED_TRACE("VELMORA_TEST_SEED=" + std::to_string(Seed));
	FTemporaryProject Project;
	FMadeTree Tree(Project, Seed);
	size_t IgnoredCount = 0;
	for (int Round = 0; Round < 40; ++Round)
	{
		Tree.WriteIgnoreFiles();
		std::vector<std::string> Asked;
		for (const std::string& Path : Tree.Paths)
		{
			// A backslash is a separator to our own function.
			if (Path.find('\\') == std::string::npos && Tree.Pick(3) == 0)
			{
				Asked.push_back(Path);
			}
		}
		const std::set<std::string> Ignored = AskGit(Project.Root, Asked);
		IgnoredCount += Ignored.size();
		for (const std::string& Path : Asked)
		{
			const FString Name = HostFileNameFromBytes(Path);
			if (Velmora::CodeIntel::ShouldIgnorePath(Name, {}) != (Ignored.count(Path) != 0))
			{
				std::string Files;
				for (const auto& [Folder, Lines] : Tree.Texts)
				{
					if (Path.compare(0, Folder.size(), Folder) == 0)
					{
						Files += "in \"" + Folder + "\":\n" + Lines + "\n";
					}
				}
				FAIL() << "round " << Round << ", \"" << Path << "\" git: " << Ignored.count(Path) << "\n" << Files;
			}
		}
	}
	EXPECT_GT(IgnoredCount, 100u);
}

TEST(IgnoreRulesTests, ASetHoldsNoSlash)
{
	FTemporaryProject Project;
	Project.Write(".gitignore", "/a[!b]c\n/d[+-0]e\n");
	for (const char* const Path : { "a/c", "d/e", "abc" })
	{
		EXPECT_FALSE(Velmora::CodeIntel::ShouldIgnorePath(HostFileNameFromBytes(Path), {})) << Path;
	}
	for (const char* const Path : { "axc", "d.e" })
	{
		EXPECT_TRUE(Velmora::CodeIntel::ShouldIgnorePath(HostFileNameFromBytes(Path), {})) << Path;
	}
}

TEST(IgnoreRulesTests, NamedSetsHoldTheBytesThatTheyHoldForGit)
{
	if (!IsGitInstalled())
	{
		GTEST_SKIP() << "git is not installed, so there is nothing to compare with";
	}
	FTemporaryProject Project;
	ASSERT_EQ(std::system(("git init -q '" + Project.Root.native() + "' > /dev/null 2>&1").c_str()), 0);
	std::vector<std::string> Names;
	for (int Byte = 1; Byte < 256; ++Byte)
	{
		if (Byte != '/' && Byte != '\\')
		{
			Names.push_back(std::string("xx") + static_cast<char>(Byte));
		}
	}
	for (const char* Set : { "alnum", "alpha", "blank", "cntrl", "digit", "graph", "lower", "print", "punct", "space", "upper", "xdigit" })
	{
		SCOPED_TRACE(Set);
		Project.Write(".gitignore", std::string("xx[[:") + Set + ":]]\n");
		std::set<std::string> Ignored;
		for (const std::string& Name : Names)
		{
			if (Velmora::CodeIntel::ShouldIgnorePath(HostFileNameFromBytes(Name), {}))
			{
				Ignored.insert(Name);
			}
		}
		EXPECT_EQ(Ignored, AskGit(Project.Root, Names));
	}
}
