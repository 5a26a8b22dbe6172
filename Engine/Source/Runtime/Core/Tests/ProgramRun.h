#pragma once

// Runs one of our programs as a real child, as a build server would: its own arguments, environment and working
// folder, with stdout and stderr kept apart.

#include "CoreMinimal.h"
#include "TempDirectory.h"

#include <cstdlib>
#include <map>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

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
		for (const char* Name : {"STEAM_USERNAME", "STEAM_PASSWORD", "TESSEL_STEAMCMD_MODE", "TESSEL_UPLOADER_EXIT",
								 "TESSEL_UPLOADER_ARGS_OUT", "TESSEL_COOK_MODE"})
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
