#include "Tools/ProcessTree.h"

#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <map>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

#include "Host/FileDescriptor.h"

#include <fcntl.h>

namespace Velmora
{
	namespace
	{
		struct FProcess
		{
			pid_t Parent = 0;
			uint64_t ResidentBytes = 0;
		};

		/** "17 (name of) any) S 4 …": the name may hold anything, so what counts begins behind the last bracket. */
		bool ReadProcess(const char* Id, FProcess& Out)
		{
			const FFileDescriptor File = FFileDescriptor::Open(std::string("/proc/") + Id + "/stat", O_RDONLY);
			std::string Text;
			if (!File.IsOpen() || !File.Read(Text, 4096))
			{
				return false;
			}
			const size_t Bracket = Text.rfind(')');
			long long Parent = 0;
			long long Pages = 0;
			// State and parent follow the name; the resident pages are the 22nd field behind it.
			const int Found = Bracket == std::string::npos
				? 0
				: sscanf(Text.c_str() + Bracket + 1,
					  " %*c %lld %*d %*d %*d %*d %*u %*u %*u %*u %*u %*u %*u %*d %*d %*d %*d %*d %*d %*u %*u %lld", &Parent, &Pages);
			Out.Parent = static_cast<pid_t>(Parent);
			Out.ResidentBytes = static_cast<uint64_t>(Pages > 0 ? Pages : 0) * static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
			return Found == 2;
		}
	}

	FProcessTree FProcessTree::Measure(pid_t Root)
	{
		// 1. All processes of the machine: there is no list of one's grandchildren.
		std::map<pid_t, FProcess> All;
		std::multimap<pid_t, pid_t> Children;
		const std::unique_ptr<DIR, int (*)(DIR*)> Folder(opendir("/proc"), closedir);
		while (const dirent* const Entry = Folder ? readdir(Folder.get()) : nullptr)
		{
			FProcess Process;
			if (Entry->d_name[0] >= '1' && Entry->d_name[0] <= '9' && ReadProcess(Entry->d_name, Process))
			{
				const pid_t Id = static_cast<pid_t>(atoi(Entry->d_name));
				All[Id] = Process;
				Children.emplace(Process.Parent, Id);
			}
		}

		// 2. Those below the root; who loses its parent falls to the first process of the sandbox, which is one of them.
		FProcessTree Tree;
		std::vector<pid_t> Left = { Root };
		while (!Left.empty())
		{
			const pid_t Id = Left.back();
			Left.pop_back();
			if (const auto Found = All.find(Id); Found != All.end())
			{
				++Tree.Count;
				Tree.ResidentBytes += Found->second.ResidentBytes;
				All.erase(Found);
			}
			const auto [First, Last] = Children.equal_range(Id);
			for (auto Child = First; Child != Last; ++Child)
			{
				Left.push_back(Child->second);
			}
		}
		return Tree;
	}
}
