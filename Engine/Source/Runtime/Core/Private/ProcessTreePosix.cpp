// Ending a child's whole process tree, found through /proc, however its members regrouped.

#include "ProcessPosix.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <dirent.h>
#include <string>
#include <sys/types.h>
#include <unistd.h>
#include <mutex>
#include <set>
#include <vector>

namespace
{
struct FProcessLink
{
	pid_t Parent;
	pid_t Process;
	bool bZombie;
};

// Every process's parent as /proc tells it, sorted by parent.
std::vector<FProcessLink> ListProcessLinks()
{
	std::vector<FProcessLink> Links;
	DIR* Proc = opendir("/proc");
	if (!Proc)
	{
		return Links;
	}
	while (const dirent* Entry = readdir(Proc))
	{
		char* End = nullptr;
		const long Process = std::strtol(Entry->d_name, &End, 10);
		if (Process <= 0 || *End != '\0')
		{
			continue;
		}
		const std::string StatPath = std::string("/proc/") + Entry->d_name + "/stat";
		const int Fd = open(StatPath.c_str(), O_RDONLY | O_CLOEXEC);
		if (Fd < 0)
		{
			continue;
		}
		char Buffer[512];
		const ssize_t Got = read(Fd, Buffer, sizeof(Buffer) - 1);
		close(Fd);
		if (Got <= 0)
		{
			continue;
		}
		Buffer[Got] = '\0';
		// "pid (name) state parent ...": the name may hold anything, so the fields start after its last ")".
		const char* Close = std::strrchr(Buffer, ')');
		char State = 0;
		int Parent = 0;
		if (Close && std::sscanf(Close + 1, " %c %d", &State, &Parent) == 2)
		{
			Links.push_back({static_cast<pid_t>(Parent), static_cast<pid_t>(Process), State == 'Z' || State == 'X'});
		}
	}
	closedir(Proc);
	std::sort(Links.begin(), Links.end(), [](const FProcessLink& A, const FProcessLink& B) { return A.Parent < B.Parent; });
	return Links;
}

// The processes below Root that still run; the dead ones only lead on to their children.
std::vector<pid_t> LiveDescendants(pid_t Root)
{
	const std::vector<FProcessLink> Links = ListProcessLinks();
	std::vector<pid_t> Live;
	std::vector<pid_t> Frontier{Root};
	while (!Frontier.empty() && Live.size() < Links.size())
	{
		const pid_t Parent = Frontier.back();
		Frontier.pop_back();
		auto At = std::lower_bound(Links.begin(), Links.end(), Parent,
								   [](const FProcessLink& Link, pid_t Value) { return Link.Parent < Value; });
		for (; At != Links.end() && At->Parent == Parent; ++At)
		{
			Frontier.push_back(At->Process);
			if (!At->bZombie)
			{
				Live.push_back(At->Process);
			}
		}
	}
	return Live;
}
} // namespace

void ProcessPosix::KillProcessTree(pid_t Root)
{
	// The root's group stops first, so that it starts nothing new while its tree is looked for. The root
	// dies last: while it lives it adopts the orphans of the tree, so that the next look still finds them.
	kill(-Root, SIGSTOP);
	for (int Look = 0; Look < 200; ++Look)
	{
		const std::vector<pid_t> Live = LiveDescendants(Root);
		if (Live.empty())
		{
			break;
		}
		for (const pid_t Process : Live)
		{
			kill(Process, SIGKILL);
		}
		// The killed ones take a moment to end and hand their children up to the root.
		usleep(Look < 20 ? 100 : 1000);
	}
	kill(-Root, SIGKILL);
	kill(Root, SIGKILL);
}

namespace
{
std::mutex ChildrenLock;
std::set<pid_t>& Children()
{
	static std::set<pid_t> Living;
	return Living;
}
}

namespace
{
bool bEndingEveryChild = false;
}

void ProcessPosix::NoteChild(pid_t Child)
{
	const std::lock_guard<std::mutex> Lock(ChildrenLock);
	Children().insert(Child);
	// A child started while, or after, every child was ended goes the same way.
	if (bEndingEveryChild)
	{
		KillProcessTree(Child);
	}
}

pid_t ProcessPosix::CollectChild(pid_t Child, int& OutStatus, bool bBlock)
{
	siginfo_t Info = {};
	int Waited = 0;
	do
	{
		Waited = waitid(P_PID, static_cast<id_t>(Child), &Info, WEXITED | WNOWAIT | (bBlock ? 0 : WNOHANG));
	} while (Waited < 0 && errno == EINTR);
	if (Waited < 0)
	{
		return -1;
	}
	if (Info.si_pid == 0)
	{
		return 0;
	}
	const std::lock_guard<std::mutex> Lock(ChildrenLock);
	pid_t Collected = 0;
	do
	{
		Collected = waitpid(Child, &OutStatus, WNOHANG);
	} while (Collected < 0 && errno == EINTR);
	if (Collected == Child)
	{
		Children().erase(Child);
	}
	return Collected;
}

void ProcessPosix::KillEveryChildTree()
{
	const std::lock_guard<std::mutex> Lock(ChildrenLock);
	bEndingEveryChild = true;
	for (const pid_t Child : Children())
	{
		KillProcessTree(Child);
	}
}
