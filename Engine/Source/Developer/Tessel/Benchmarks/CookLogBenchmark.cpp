// Runs the stand-in commandlet printing a million lines of about 100 characters through a real cook job and
// ticks the tool until the job has ended. Prints the lines per second that reach the log, the memory per line,
// and the child's own run time next to its run time when it writes to /dev/null.
// Usage: CookLogBenchmark [lines]

#include "HAL/FileManager.h"
#include "HAL/PlatformFile.h"
#include "HAL/PlatformProcess.h"
#include "STesselUI.h"
#include "cook/CookJob.h"
#include "Testing/EditorServicesDouble.h"
#include "TestPaths.h"

#include "HAL/PlatformMemory.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
	double SecondsSince(std::chrono::steady_clock::time_point Start)
	{
		return std::chrono::duration<double>(std::chrono::steady_clock::now() - Start).count();
	}
}

int main(int ArgC, char** ArgV)
{
	const long Lines = ArgC > 1 ? std::atol(ArgV[1]) : 1000000;

	char Pattern[] = "/tmp/tessel-cook-bench-XXXXXX";
	const FString Kit = FString::FromUtf8(mkdtemp(Pattern));
	IPlatformFile& Platform = FPlatformFileManager::Get().GetPlatformFile();
	const FString Exe = Kit / TEXT("Engine/Binaries/Win64/UE4Editor.exe");
	Platform.CreateDirectoryTree(*FPaths::GetPath(Exe));
	Platform.CopyFile(*Exe, *FString(TestPaths::CookCommandlet));
	chmod(Exe.ToUtf8().c_str(), 0755);
	{
		TUniquePtr<FArchive> Project(IFileManager::Get().CreateFileWriter(*(Kit / TEXT("Orrery/Orrery.uproject"))));
		Project->Close();
		TUniquePtr<FArchive> Map(IFileManager::Get().CreateFileWriter(*(Kit / TEXT("Orrery/Content/Mods/Bench/Bench.umap"))));
		Map->Close();
		const std::string Mode = "flood:" + std::to_string(Lines);
		TUniquePtr<FArchive> ModeFile(IFileManager::Get().CreateFileWriter(*(Kit / TEXT("Orrery/Content/Mods/Bench/StandIn.mode"))));
		ModeFile->Serialize(const_cast<char*>(Mode.data()), static_cast<int64>(Mode.size()));
		ModeFile->Close();
	}
	FPaths::SetKitRoot(Kit);
	IEditorServices::Set(MakeShared<FEditorServicesDouble>());

	// The child alone, writing to /dev/null.
	const FString Parameters = FString::Printf(
		TEXT("\"Orrery/Orrery.uproject\" -run=Cook -Map=Bench -CookCultures=en -TargetPlatform=WindowsNoEditor -ModDir=Bench "
			 "-ModGUID=0123456789ABCDEF0123456789ABCDEF -pkgnfo=\"%s\" -Output=\"%s\""),
		*(Kit / TEXT("PackageInfo.bin")), *(Kit / TEXT("NullRun")));
	const int DevNull = open("/dev/null", O_WRONLY | O_CLOEXEC);
	auto Start = std::chrono::steady_clock::now();
	FProcHandle Alone = FPlatformProcess::CreateProc(*Exe, *Parameters, false, true, true, nullptr, 0, nullptr, DevNull);
	FPlatformProcess::WaitForProc(Alone);
	const double AloneSeconds = SecondsSince(Start);
	FPlatformProcess::CloseProc(Alone);
	close(DevNull);

	// The same child as a cook job of the tool.
	TSharedRef<STesselTool> Tool = SNew(STesselTool);
	const int64 MemoryBefore = FPlatformMemory::GetResidentKilobytes();
	Tool->OnCookMapClicked();
	const int32 LinesBefore = Tool->LogMessages.Num();
	double ChildSeconds = 0.0;
	double LastLineSeconds = 0.0;
	Start = std::chrono::steady_clock::now();
	int64 Ticks = 0;
	while (ActiveJobs.Num() > 0)
	{
		const TSharedPtr<FCookJob> Job = ActiveJobs[0];
		Tool->Tick(FGeometry(), 0.0, 1.0f / 60.0f);
		++Ticks;
		if (Job->bStarted && !Job->Process->IsRunning() && ChildSeconds == 0.0)
		{
			ChildSeconds = Job->Process->GetDuration();
		}
		if (ActiveJobs.Num() == 0 || !ActiveJobs[0]->Process->IsRunning())
		{
			LastLineSeconds = SecondsSince(Start);
		}
		// The editor ticks about 60 times a second; a busy loop here would only measure the lock.
		usleep(1000000 / 60);
	}
	const double TotalSeconds = SecondsSince(Start);
	const int64 LogLines = Tool->LogMessages.Num() - LinesBefore;
	const int64 MemoryAfter = FPlatformMemory::GetResidentKilobytes();

	std::printf("lines in the log: %lld (child printed %ld and its closing lines)\n", static_cast<long long>(LogLines), Lines);
	std::printf("ticks: %lld, job wall time %.2f s, %.0f lines/s reaching the log\n", static_cast<long long>(Ticks), TotalSeconds,
				LogLines / std::max(LastLineSeconds, 1e-9));
	std::printf("memory: %.1f bytes per line (resident growth %lld KB)\n", (MemoryAfter - MemoryBefore) * 1024.0 / std::max<int64>(LogLines, 1),
				static_cast<long long>(MemoryAfter - MemoryBefore));
	std::printf("child run time: %.2f s as a job, %.2f s writing to /dev/null (ratio %.2f)\n", ChildSeconds, AloneSeconds,
				ChildSeconds / std::max(AloneSeconds, 1e-9));

	Tool->ModList.Empty();
	IEditorServices::Set(nullptr);
	Platform.DeleteDirectoryRecursively(*Kit);
	return LogLines >= Lines ? 0 : 1;
}
