// A child process that misbehaves on request, for the tests of the process layer. The behaviour is the
// first argument and what follows it, or, when the environment variable TESSEL_FAKE_CHILD is set, the
// blank-separated words of that variable (then every argument belongs to the behaviour's input).
//
//   lines N              N lines "line <i>" (i from 1), as fast as writes of 64 KB allow
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
//
// On Windows "segv" is a real access violation (the program ends with 0xC0000005) and "abort" the C runtime's
// abort (exit code 3); "hang-ignore-term" is "hang" with its own word, since Windows sends no polite signal;
// "escape" is POSIX's alone.

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>
#ifdef _WIN32
#include <direct.h>
#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <windows.h>
#else
#include <spawn.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;
#endif

namespace
{
constexpr const char* ModeVariable = "TESSEL_FAKE_CHILD";

#ifdef _WIN32
#ifndef STDOUT_FILENO
constexpr int STDOUT_FILENO = 1;
constexpr int STDERR_FILENO = 2;
#endif

int write(int Descriptor, const char* Data, size_t Count)
{
	return _write(Descriptor, Data, static_cast<unsigned>(Count));
}

void usleep(unsigned Microseconds)
{
	Sleep(Microseconds / 1000);
}

void pause()
{
	Sleep(INFINITE);
}

std::string Utf8(const wchar_t* Wide)
{
	const int Bytes = WideCharToMultiByte(CP_UTF8, 0, Wide, -1, nullptr, 0, nullptr, nullptr);
	std::string Result(static_cast<size_t>(Bytes > 0 ? Bytes - 1 : 0), '\0');
	WideCharToMultiByte(CP_UTF8, 0, Wide, -1, Result.data(), Bytes, nullptr, nullptr);
	return Result;
}
#endif

void WriteAll(int Descriptor, const std::string& Bytes)
{
	size_t Done = 0;
	while (Done < Bytes.size())
	{
		const auto Count = write(Descriptor, Bytes.data() + Done, Bytes.size() - Done);
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
#ifdef _WIN32
	_putenv_s(ModeVariable, "");
	std::vector<std::string> Arguments(Words.begin() + 2, Words.end());
	Arguments.insert(Arguments.begin(), "TesselFakeChild");
	std::vector<const char*> Argv;
	for (const std::string& Argument : Arguments)
	{
		Argv.push_back(Argument.c_str());
	}
	Argv.push_back(nullptr);
	char Self[4096] = {};
	GetModuleFileNameA(nullptr, Self, sizeof(Self) - 1);
	const intptr_t Spawned = _spawnv(_P_NOWAIT, Self, Argv.data());
	if (Spawned == -1)
	{
		Usage("cannot start the grandchild");
	}
	const int Grandchild = static_cast<int>(GetProcessId(reinterpret_cast<HANDLE>(Spawned)));
#else
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
#endif
	WriteAll(STDOUT_FILENO, "child " + std::to_string(getpid()) + "\ngrandchild " + std::to_string(Grandchild) + "\n");
	if (Words[1] == "exit")
	{
		std::_Exit(0);
	}
	WaitForever();
}
#ifndef _WIN32
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
#endif
} // namespace

#ifdef _WIN32
// The wide entry point, so that arguments outside the ANSI code page arrive whole; they go on as UTF-8.
int wmain(int ArgumentCount, wchar_t** WideArguments)
{
	std::vector<std::string> Utf8Arguments;
	for (int Index = 0; Index < ArgumentCount; ++Index)
	{
		Utf8Arguments.push_back(Utf8(WideArguments[Index]));
	}
	std::vector<char*> Pointers;
	for (std::string& Argument : Utf8Arguments)
	{
		Pointers.push_back(Argument.data());
	}
	char** Arguments = Pointers.data();
	// A crash ends the program with its code at once: no crash dialog or debugger waits for someone to answer.
	SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
	// Bytes go out as written: no line break becomes CR LF on the way.
	_setmode(STDOUT_FILENO, _O_BINARY);
	_setmode(STDERR_FILENO, _O_BINARY);
#else
int main(int ArgumentCount, char** Arguments)
{
#endif
	std::vector<std::string> Words;
	std::vector<std::string> Inputs;
	if (const char* Mode = std::getenv(ModeVariable); Mode && *Mode)
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
		// Written in blocks of about 64 KB, as a buffered stdout would; built by hand, since the printf of
		// Windows' C runtime is slower than any reader.
		const int Count = ToInt(Words, 1);
		std::string Block;
		for (int Index = 1; Index <= Count; ++Index)
		{
			Block += "line " + std::to_string(Index) + "\n";
			if (Block.size() >= (1 << 16) - 32)
			{
				WriteAll(STDOUT_FILENO, Block);
				Block.clear();
			}
		}
		WriteAll(STDOUT_FILENO, Block);
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
#ifdef _WIN32
		if (!_getcwd(Path, sizeof(Path)))
#else
		if (!getcwd(Path, sizeof(Path)))
#endif
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
#ifdef _WIN32
		if (Words.size() > 1 && Words[1] == "segv")
		{
			// A real access violation: no handler of ours, so the system ends the program with its code.
			*static_cast<volatile int*>(nullptr) = 0;
		}
#endif
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
#ifndef _WIN32
		std::signal(SIGTERM, SIG_IGN);
#endif
		WriteAll(STDOUT_FILENO, "ignoring " + std::to_string(getpid()) + "\n");
		WaitForever();
	}
	if (Mode == "spawn-grandchild")
	{
		SpawnGrandchild(Words);
	}
#ifndef _WIN32
	if (Mode == "escape")
	{
		Escape();
	}
#endif
	Usage("unknown behaviour");
}
