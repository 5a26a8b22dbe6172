#pragma once

// Runs one of our programs as a real child, as a build server would: its own arguments, environment and working
// folder, with stdout and stderr kept apart.

#include "CoreMinimal.h"
#include "Misc/WindowsArguments.h"
#include "TempDirectory.h"

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
	static const std::vector<const char*> Names{"STEAM_USERNAME", "STEAM_PASSWORD", "TESSEL_STEAMCMD_MODE", "TESSEL_UPLOADER_EXIT",
												"TESSEL_UPLOADER_ARGS_OUT", "TESSEL_COOK_MODE"};
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

		STARTUPINFOW Startup{};
		Startup.cb = sizeof(Startup);
		Startup.dwFlags = STARTF_USESTDHANDLES;
		Startup.hStdInput = In;
		Startup.hStdOutput = Out;
		Startup.hStdError = Err;
		PROCESS_INFORMATION Started{};
		if (CreateProcessW(WindowsApi::Wide(*Path), reinterpret_cast<wchar_t*>(CommandLine.data()), nullptr, nullptr, TRUE,
						   CREATE_UNICODE_ENVIRONMENT | CREATE_NO_WINDOW, Environment.data(),
						   Folder.empty() ? nullptr : WindowsApi::Wide(Folder.c_str()), &Startup, &Started))
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
		execv(Program.c_str(), Argv.data());
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
