// TesselCmd on a large catalogue: a kit of many mod folders, each with its record in a Mods.db of tens of
// megabytes, and "set" and "list --json" run on it as children. Prints each run's wall time and the child's
// peak memory (its largest resident set). Usage: TesselCmdBenchmark [mods] [Mods.db megabytes] [rounds]

#include "CoreMinimal.h"
#include "HAL/FileManager.h"
#include "HAL/PlatformFile.h"
#include "TesselSession.h"
#include "TempDirectory.h"
#include "TestPaths.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace
{
	struct FChildRun
	{
		int ExitCode = -1;
		double Seconds = 0;
		double PeakMegabytes = 0;
	};

	// Runs TesselCmd with Args, its stdout thrown away (a "list" prints the whole catalogue).
	FChildRun RunTesselCmd(const std::vector<std::string>& Args)
	{
		std::vector<char*> Argv{const_cast<char*>(TestPaths::TesselCmd)};
		for (const std::string& Arg : Args)
		{
			Argv.push_back(const_cast<char*>(Arg.c_str()));
		}
		Argv.push_back(nullptr);
		const auto Start = std::chrono::steady_clock::now();
		const pid_t Child = fork();
		if (Child == 0)
		{
			const int Null = open("/dev/null", O_WRONLY);
			dup2(Null, STDOUT_FILENO);
			execv(Argv[0], Argv.data());
			_exit(127);
		}
		int Status = 0;
		struct rusage Usage = {};
		wait4(Child, &Status, 0, &Usage);
		FChildRun Run;
		Run.Seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - Start).count();
		Run.ExitCode = WIFEXITED(Status) ? WEXITSTATUS(Status) : 128 + WTERMSIG(Status);
		Run.PeakMegabytes = Usage.ru_maxrss / 1024.0;
		return Run;
	}
}

int main(int ArgC, char** ArgV)
{
	const int32 Mods = ArgC > 1 ? std::atoi(ArgV[1]) : 75000;
	const double Megabytes = ArgC > 2 ? std::atof(ArgV[2]) : 50.0;
	const int32 Rounds = ArgC > 3 ? std::atoi(ArgV[3]) : 3;

	const FTempDirectory Kit;
	Kit.WriteFile(TEXT("Orrery/Orrery.uproject"), "");
	IPlatformFile& Platform = FPlatformFileManager::Get().GetPlatformFile();
	Platform.CreateDirectoryTree(*(Kit / TEXT("Orrery/Saved")));
	FPaths::SetKitRoot(Kit.Get());

	// Mods.db is UTF-16: each record's description is long enough for the file to reach the size asked for.
	const int32 RecordChars = static_cast<int32>(Megabytes * 1048576.0 / 2.0 / std::max(Mods, 1));
	const int32 DescriptionChars = std::max(RecordChars - 334, 10);
	{
		TArray<TSharedPtr<FModSetup>> Records;
		FString Description;
		for (int32 Index = 0; Index < DescriptionChars; ++Index)
		{
			Description += TCHAR(u'a' + Index % 26);
		}
		for (int32 Index = 0; Index < Mods; ++Index)
		{
			const FString Folder = FString::Printf(TEXT("Mod%06d"), Index);
			Platform.CreateDirectoryTree(*(KitPaths::ModsContentDir() / Folder));
			TSharedPtr<FModSetup> Mod = MakeShared<FModSetup>(Folder);
			Mod->Maps = TEXT("Alpha,Beta");
			Mod->Title = FString::Printf(TEXT("Mod number %d"), Index);
			Mod->Description = Description;
			Mod->PreviewImage = FString::Printf(TEXT("C:/Kits/Orrery/Previews/Mod%06d.png"), Index);
			Mod->ItemSeamId = FString::Printf(TEXT("%d"), 2900000001 + Index);
			Mod->GUID = TEXT("0123456789ABCDEF0123456789ABCDEF");
			Mod->Tags = TEXT("Map,Mod");
			Records.Add(Mod);
		}
		bool bKeepFirst = false;
		SaveModRecords(KitPaths::ModDatabase(), FString(), Records, bKeepFirst);
	}
	const FString Database = KitPaths::ModDatabase();
	std::printf("kit: %d mod folders, Mods.db %.1f MB\n", Mods, IFileManager::Get().FileSize(*Database) / 1048576.0);

	const std::string KitArg = Kit.Get().ToUtf8();
	const std::string Last = FString::Printf(TEXT("Mod%06d"), Mods - 1).ToUtf8();
	struct FCase
	{
		const char* Name;
		std::vector<std::string> Args;
	};
	const FCase Cases[] = {
		{"set", {"--kit", KitArg, "set", Last, "title=Renamed"}},
		{"list --json", {"--kit", KitArg, "--json", "list"}},
	};
	int Failed = 0;
	for (const FCase& Case : Cases)
	{
		std::vector<double> Seconds;
		double Peak = 0;
		for (int32 Round = 0; Round < Rounds; ++Round)
		{
			const FChildRun Run = RunTesselCmd(Case.Args);
			if (Run.ExitCode != 0)
			{
				std::fprintf(stderr, "%s: exit code %d\n", Case.Name, Run.ExitCode);
				++Failed;
				break;
			}
			Seconds.push_back(Run.Seconds);
			Peak = std::max(Peak, Run.PeakMegabytes);
			std::printf("%s %d: %.2f s, peak %.0f MB\n", Case.Name, Round + 1, Run.Seconds, Run.PeakMegabytes);
		}
		if (!Seconds.empty())
		{
			std::sort(Seconds.begin(), Seconds.end());
			std::printf("%s: median %.2f s (spread %.2f to %.2f s), peak memory %.0f MB\n", Case.Name, Seconds[Seconds.size() / 2],
						Seconds.front(), Seconds.back(), Peak);
		}
	}

	return Failed == 0 ? 0 : 1;
}
