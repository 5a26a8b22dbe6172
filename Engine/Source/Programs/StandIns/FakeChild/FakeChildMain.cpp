// A child process that misbehaves on request, for the tests of the process layer. The behaviour is the
// first argument and what follows it, or, when the environment variable TESSEL_FAKE_CHILD is set, the
// blank-separated words of that variable (then every argument belongs to the behaviour's input).
//
//   lines N              N lines "line <i>" (i from 1), as fast as buffered stdout allows
//   mixed N              N pairs of "out <i>" on stdout and "err <i>" on stderr, unbuffered, in turn
//   bytes HEX...         each HEX word's bytes in one write, with a pause between writes
//   echo-args ARG...     each argument followed by a line break
//   pwd                  the working directory and a line break
//   exit N               exits with status N
//   crash abort|segv     prints "crashing", then dies by SIGABRT or SIGSEGV
//   hang                 prints "hanging <pid>", then waits for a signal forever
//   hang-ignore-term     ignores SIGTERM, prints "ignoring <pid>", then waits forever
//   spawn-grandchild hang|exit MODE...
//                        starts this program with MODE... as a grandchild, prints "child <pid>" and
//                        "grandchild <pid>" lines, then hangs or exits with status 0
//   escape               starts two hanging descendants that leave its process group by setsid: one its own
//                        child ("stray <pid>"), one whose parent exits at once ("orphan <pid>"); then prints
//                        "child <pid>" and hangs

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <spawn.h>
#include <string>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace
{
constexpr const char* ModeVariable = "TESSEL_FAKE_CHILD";

void WriteAll(int Descriptor, const std::string& Bytes)
{
	size_t Done = 0;
	while (Done < Bytes.size())
	{
		const ssize_t Count = write(Descriptor, Bytes.data() + Done, Bytes.size() - Done);
		if (Count < 0)
		{
			if (errno == EINTR)
			{
				continue;
			}
			std::_Exit(3);
		}
		Done += static_cast<size_t>(Count);
	}
}

[[noreturn]] void WaitForever()
{
	while (true)
	{
		pause();
	}
}

[[noreturn]] void Usage(const char* Message)
{
	WriteAll(STDERR_FILENO, std::string("fake child: ") + Message + "\n");
	std::exit(2);
}

int HexDigit(char Character)
{
	if (Character >= '0' && Character <= '9')
	{
		return Character - '0';
	}
	if (Character >= 'a' && Character <= 'f')
	{
		return Character - 'a' + 10;
	}
	if (Character >= 'A' && Character <= 'F')
	{
		return Character - 'A' + 10;
	}
	Usage("bad hex digit");
}

std::string FromHex(const std::string& Hex)
{
	if (Hex.size() % 2 != 0)
	{
		Usage("odd hex length");
	}
	std::string Bytes;
	for (size_t Index = 0; Index < Hex.size(); Index += 2)
	{
		Bytes += static_cast<char>(HexDigit(Hex[Index]) * 16 + HexDigit(Hex[Index + 1]));
	}
	return Bytes;
}

int ToInt(const std::vector<std::string>& Words, size_t Index)
{
	if (Index >= Words.size())
	{
		Usage("missing number");
	}
	return std::atoi(Words[Index].c_str());
}

[[noreturn]] void SpawnGrandchild(const std::vector<std::string>& Words)
{
	if (Words.size() < 3)
	{
		Usage("spawn-grandchild needs hang|exit and a mode");
	}
	// The grandchild takes its mode from its arguments alone.
	unsetenv(ModeVariable);
	std::vector<std::string> Arguments(Words.begin() + 2, Words.end());
	Arguments.insert(Arguments.begin(), "TesselFakeChild");
	std::vector<char*> Argv;
	for (std::string& Argument : Arguments)
	{
		Argv.push_back(Argument.data());
	}
	Argv.push_back(nullptr);
	char Self[4096] = {};
	if (readlink("/proc/self/exe", Self, sizeof(Self) - 1) <= 0)
	{
		Usage("cannot find this program");
	}
	pid_t Grandchild = 0;
	if (posix_spawn(&Grandchild, Self, nullptr, nullptr, Argv.data(), environ) != 0)
	{
		Usage("cannot start the grandchild");
	}
	WriteAll(STDOUT_FILENO, "child " + std::to_string(getpid()) + "\ngrandchild " + std::to_string(Grandchild) + "\n");
	if (Words[1] == "exit")
	{
		std::_Exit(0);
	}
	WaitForever();
}
// Forks a descendant that starts a session of its own, says Label and its pid, and hangs; with bOrphan a
// middle process that exits at once stands between it and us.
void StartEscapee(const char* Label, bool bOrphan)
{
	const pid_t Middle = fork();
	if (Middle < 0)
	{
		Usage("cannot fork");
	}
	if (Middle > 0)
	{
		if (bOrphan)
		{
			while (waitpid(Middle, nullptr, 0) < 0 && errno == EINTR)
			{
			}
		}
		return;
	}
	setsid();
	if (bOrphan && fork() != 0)
	{
		std::_Exit(0);
	}
	WriteAll(STDOUT_FILENO, std::string(Label) + " " + std::to_string(getpid()) + "\n");
	WaitForever();
}

[[noreturn]] void Escape()
{
	StartEscapee("stray", false);
	StartEscapee("orphan", true);
	WriteAll(STDOUT_FILENO, "child " + std::to_string(getpid()) + "\n");
	WaitForever();
}
} // namespace

int main(int ArgumentCount, char** Arguments)
{
	std::vector<std::string> Words;
	std::vector<std::string> Inputs;
	if (const char* Mode = std::getenv(ModeVariable))
	{
		std::string Word;
		for (const char* Cursor = Mode;; ++Cursor)
		{
			if (*Cursor == ' ' || *Cursor == '\0')
			{
				if (!Word.empty())
				{
					Words.push_back(Word);
				}
				Word.clear();
				if (*Cursor == '\0')
				{
					break;
				}
			}
			else
			{
				Word += *Cursor;
			}
		}
		Inputs.assign(Arguments + 1, Arguments + ArgumentCount);
	}
	else
	{
		Words.assign(Arguments + 1, Arguments + ArgumentCount);
		if (!Words.empty())
		{
			Inputs.assign(Words.begin() + 1, Words.end());
		}
	}
	if (Words.empty())
	{
		Usage("no behaviour given");
	}

	const std::string& Mode = Words[0];
	if (Mode == "lines")
	{
		const int Count = ToInt(Words, 1);
		static char Buffer[1 << 16];
		std::setvbuf(stdout, Buffer, _IOFBF, sizeof(Buffer));
		for (int Index = 1; Index <= Count; ++Index)
		{
			std::printf("line %d\n", Index);
		}
		std::fflush(stdout);
		return 0;
	}
	if (Mode == "mixed")
	{
		const int Count = ToInt(Words, 1);
		for (int Index = 1; Index <= Count; ++Index)
		{
			WriteAll(STDOUT_FILENO, "out " + std::to_string(Index) + "\n");
			WriteAll(STDERR_FILENO, "err " + std::to_string(Index) + "\n");
		}
		return 0;
	}
	if (Mode == "bytes")
	{
		for (size_t Index = 1; Index < Words.size(); ++Index)
		{
			if (Index > 1)
			{
				// Gives the reader time to take each piece on its own.
				usleep(30'000);
			}
			WriteAll(STDOUT_FILENO, FromHex(Words[Index]));
		}
		return 0;
	}
	if (Mode == "echo-args")
	{
		std::string Text;
		for (const std::string& Input : Inputs)
		{
			Text += Input + "\n";
		}
		WriteAll(STDOUT_FILENO, Text);
		return 0;
	}
	if (Mode == "pwd")
	{
		char Path[4096];
		if (!getcwd(Path, sizeof(Path)))
		{
			return 3;
		}
		WriteAll(STDOUT_FILENO, std::string(Path) + "\n");
		return 0;
	}
	if (Mode == "exit")
	{
		return ToInt(Words, 1);
	}
	if (Mode == "crash")
	{
		WriteAll(STDOUT_FILENO, "crashing\n");
		if (Words.size() > 1 && Words[1] == "segv")
		{
			std::signal(SIGSEGV, SIG_DFL);
			std::raise(SIGSEGV);
		}
		std::abort();
	}
	if (Mode == "hang")
	{
		WriteAll(STDOUT_FILENO, "hanging " + std::to_string(getpid()) + "\n");
		WaitForever();
	}
	if (Mode == "hang-ignore-term")
	{
		std::signal(SIGTERM, SIG_IGN);
		WriteAll(STDOUT_FILENO, "ignoring " + std::to_string(getpid()) + "\n");
		WaitForever();
	}
	if (Mode == "spawn-grandchild")
	{
		SpawnGrandchild(Words);
	}
	if (Mode == "escape")
	{
		Escape();
	}
	Usage("unknown behaviour");
}
