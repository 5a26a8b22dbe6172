#pragma once

// Runs one of our programs as a real child, as a build server would: its own arguments, environment and working
// folder, with stdout and stderr kept apart.

#include "CoreMinimal.h"
#include "Misc/WindowsArguments.h"
#include "TempDirectory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>
#ifdef _WIN32
#include "Windows/WindowsApi.h"
#else
#include <sys/wait.h>
#include <unistd.h>
#endif

struct FCommandRun
{
	int ExitCode = -1;
	std::string Stdout;
	std::string Stderr;
};

struct FCommandSetup
{
	std::vector<std::string> Args;
	// Set in the child on top of ours; the Steam login and the stand-ins' modes are cleared first, so that
	// nothing from the machine leaks into a test.
	std::map<std::string, std::string> Environment;
	// Empty: ours.
	std::string WorkingDirectory;
};

// What a test must never take from the machine it runs on.
inline const std::vector<const char*>& ClearedVariables()
{
	static const std::vector<const char*> Names{"STEAM_USERNAME",		"STEAM_PASSWORD",			"TESSEL_STEAMCMD_MODE",
												"TESSEL_UPLOADER_EXIT", "TESSEL_UPLOADER_ARGS_OUT", "TESSEL_COOK_MODE"};
	return Names;
}

#ifdef _WIN32
inline FCommandRun RunProgram(const std::string& Program, const FCommandSetup& Setup)
{
	FTempDirectory Capture;
	const FString OutPath = Capture / TEXT("stdout");
	const FString ErrPath = Capture / TEXT("stderr");
	FCommandRun Run;
	{
		SECURITY_ATTRIBUTES Inherit{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
		const auto Open = [&](const wchar_t* Path, DWORD Access, DWORD Disposition)
		{ return CreateFileW(Path, Access, FILE_SHARE_READ | FILE_SHARE_WRITE, &Inherit, Disposition, FILE_ATTRIBUTE_NORMAL, nullptr); };
		const HANDLE Out = Open(WindowsApi::Wide(*OutPath), GENERIC_WRITE, CREATE_ALWAYS);
		const HANDLE Err = Open(WindowsApi::Wide(*ErrPath), GENERIC_WRITE, CREATE_ALWAYS);
		const HANDLE In = Open(L"NUL", GENERIC_READ, OPEN_EXISTING);
		if (Out == INVALID_HANDLE_VALUE || Err == INVALID_HANDLE_VALUE || In == INVALID_HANDLE_VALUE)
		{
			ADD_FAILURE() << "the child's output files or NUL could not be opened";
			for (const HANDLE Handle : {Out, Err, In})
			{
				if (Handle != INVALID_HANDLE_VALUE)
				{
					CloseHandle(Handle);
				}
			}
			return Run;
		}

		// Ours, without the cleared names, with the setup's on top; Windows compares names without case.
		std::vector<std::u16string> Entries;
		if (wchar_t* Block = GetEnvironmentStringsW())
		{
			for (const wchar_t* Entry = Block; *Entry; Entry += wcslen(Entry) + 1)
			{
				Entries.emplace_back(WindowsApi::Ours(Entry));
			}
			FreeEnvironmentStringsW(Block);
		}
		const auto DropName = [&Entries](const std::string& Name)
		{
			const FString Prefix = FString::FromUtf8(Name) + TEXT("=");
			std::erase_if(Entries, [&](const std::u16string& Entry) { return FString(Entry).StartsWith(Prefix, ESearchCase::IgnoreCase); });
		};
		for (const char* Name : ClearedVariables())
		{
			DropName(Name);
		}
		for (const auto& [Name, Value] : Setup.Environment)
		{
			DropName(Name);
			Entries.push_back(FString::FromUtf8(Name + "=" + Value).GetStd());
		}
		// Windows wants the block sorted by name, without regard to case.
		const auto Name = [](const std::u16string& Entry) { return FString(Entry.substr(0, Entry.find(u'=', 1))).ToUpper().GetStd(); };
		std::stable_sort(Entries.begin(), Entries.end(),
						 [&Name](const std::u16string& A, const std::u16string& B) { return Name(A) < Name(B); });
		std::u16string Environment;
		for (const std::u16string& Entry : Entries)
		{
			Environment += Entry;
			Environment += u'\0';
		}
		Environment += u'\0';

		const FString Path = FString::FromUtf8(Program);
		std::u16string CommandLine = FWindowsArguments::Quote(Path).GetStd();
		for (const std::string& Arg : Setup.Args)
		{
			CommandLine += u' ';
			CommandLine += FWindowsArguments::Quote(FString::FromUtf8(Arg)).GetStd();
		}
		const std::u16string Folder = FString::FromUtf8(Setup.WorkingDirectory).GetStd();

		// Only these three reach the child, whatever else of ours is inheritable at the moment.
		HANDLE Passed[] = {In, Out, Err};
		SIZE_T ListSize = 0;
		InitializeProcThreadAttributeList(nullptr, 1, 0, &ListSize);
		std::vector<char> ListMemory(ListSize);
		const auto List = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(ListMemory.data());
		const bool bListMade =
			InitializeProcThreadAttributeList(List, 1, 0, &ListSize) &&
			UpdateProcThreadAttribute(List, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, Passed, sizeof(Passed), nullptr, nullptr);
		STARTUPINFOEXW Startup{};
		Startup.StartupInfo.cb = sizeof(Startup);
		Startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
		Startup.StartupInfo.hStdInput = In;
		Startup.StartupInfo.hStdOutput = Out;
		Startup.StartupInfo.hStdError = Err;
		Startup.lpAttributeList = List;
		PROCESS_INFORMATION Started{};
		if (bListMade && CreateProcessW(WindowsApi::Wide(*Path), reinterpret_cast<wchar_t*>(CommandLine.data()), nullptr, nullptr, TRUE,
										CREATE_UNICODE_ENVIRONMENT | CREATE_NO_WINDOW | EXTENDED_STARTUPINFO_PRESENT, Environment.data(),
										Folder.empty() ? nullptr : WindowsApi::Wide(Folder.c_str()), &Startup.StartupInfo, &Started))
		{
			WaitForSingleObject(Started.hProcess, INFINITE);
			DWORD Code = 0;
			GetExitCodeProcess(Started.hProcess, &Code);
			// A crash shows as its exception code, which as a signed number is negative, as a signal is on POSIX.
			Run.ExitCode = static_cast<int>(Code);
			CloseHandle(Started.hThread);
			CloseHandle(Started.hProcess);
		}
		else
		{
			Run.ExitCode = 127;
		}
		if (bListMade)
		{
			DeleteProcThreadAttributeList(List);
		}
		CloseHandle(Out);
		CloseHandle(Err);
		CloseHandle(In);
	}
	Run.Stdout = FTempDirectory::ReadBytes(OutPath);
	Run.Stderr = FTempDirectory::ReadBytes(ErrPath);
	return Run;
}
#else
inline FCommandRun RunProgram(const std::string& Program, const FCommandSetup& Setup)
{
	FTempDirectory Capture;
	const std::string OutPath = (Capture / TEXT("stdout")).ToUtf8();
	const std::string ErrPath = (Capture / TEXT("stderr")).ToUtf8();
	// A relative program is ours, as on Windows: the child changes folder before it starts it.
	std::string Path = Program;
	if (!Path.empty() && Path[0] != '/')
	{
		if (char* Here = getcwd(nullptr, 0))
		{
			Path = std::string(Here) + "/" + Path;
			free(Here);
		}
	}
	const pid_t Child = fork();
	if (Child == 0)
	{
		if (!freopen(OutPath.c_str(), "w", stdout) || !freopen(ErrPath.c_str(), "w", stderr) || !freopen("/dev/null", "r", stdin))
		{
			_exit(126);
		}
		for (const char* Name : ClearedVariables())
		{
			unsetenv(Name);
		}
		for (const auto& [Name, Value] : Setup.Environment)
		{
			setenv(Name.c_str(), Value.c_str(), 1);
		}
		if (!Setup.WorkingDirectory.empty() && chdir(Setup.WorkingDirectory.c_str()) != 0)
		{
			_exit(126);
		}
		std::vector<char*> Argv{const_cast<char*>(Program.c_str())};
		for (const std::string& Arg : Setup.Args)
		{
			Argv.push_back(const_cast<char*>(Arg.c_str()));
		}
		Argv.push_back(nullptr);
		execv(Path.c_str(), Argv.data());
		_exit(127);
	}
	int Status = 0;
	waitpid(Child, &Status, 0);
	FCommandRun Run;
	// A signal shows as its negative number, so that a crash never passes for an exit code.
	Run.ExitCode = WIFEXITED(Status) ? WEXITSTATUS(Status) : -WTERMSIG(Status);
	Run.Stdout = FTempDirectory::ReadBytes(Capture / TEXT("stdout"));
	Run.Stderr = FTempDirectory::ReadBytes(Capture / TEXT("stderr"));
	return Run;
}
#endif
