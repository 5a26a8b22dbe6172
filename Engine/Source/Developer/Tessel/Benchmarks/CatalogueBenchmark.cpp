// Refreshes a catalogue of many mod folders, each with its record in Mods.db, as "Refresh" does, and prints
// the time of each refresh and their median. Usage: CatalogueBenchmark [mods] [rounds]

#include "CoreMinimal.h"
#include "HAL/FileManager.h"
#include "HAL/PlatformFile.h"
#include "STesselUI.h"
#include "TesselSession.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>
#include <vector>

int main(int ArgC, char** ArgV)
{
	const int32 Mods = ArgC > 1 ? std::atoi(ArgV[1]) : 10000;
	const int32 Rounds = ArgC > 2 ? std::atoi(ArgV[2]) : 5;

	char Pattern[] = "/tmp/tessel-catalogue-bench-XXXXXX";
	const FString Kit = FString::FromUtf8(mkdtemp(Pattern));
	IPlatformFile& Platform = FPlatformFileManager::Get().GetPlatformFile();
	Platform.CreateDirectoryTree(*(Kit / TEXT("Orrery/Saved")));
	{
		TUniquePtr<FArchive> Project(IFileManager::Get().CreateFileWriter(*(Kit / TEXT("Orrery/Orrery.uproject"))));
		Project->Close();
	}
	FPaths::SetKitRoot(Kit);

	// Every folder has its record; the records are saved in the reverse order of the names, and spelled in
	// another letter case, so that no lucky order helps the merge.
	{
		STesselTool Writer;
		for (int32 Index = Mods - 1; Index >= 0; --Index)
		{
			const FString Folder = FString::Printf(TEXT("Mod %05d"), Index);
			Platform.CreateDirectoryTree(*(KitPaths::ModsContentDir() / Folder));
			TSharedPtr<FModSetup> Mod = MakeShared<FModSetup>(Folder.ToUpper());
			Mod->Maps = TEXT("Alpha,Beta");
			Mod->Title = FString::Printf(TEXT("Mod number %d"), Index);
			Mod->Description = TEXT("A mod of the benchmark catalogue, with a description of a few words.");
			Mod->GUID = TEXT("0123456789ABCDEF0123456789ABCDEF");
			Mod->Tags = TEXT("Map,Mod");
			Writer.ModList.Add(Mod);
		}
		Writer.SaveModDatabase();
		Writer.ModList.Empty();
	}

	STesselTool Tool;
	std::vector<double> Times;
	for (int32 Round = 0; Round < Rounds; ++Round)
	{
		const auto Start = std::chrono::steady_clock::now();
		Tool.RefreshModList(false);
		Times.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - Start).count());
		if (Tool.ModList.Num() != Mods)
		{
			std::fprintf(stderr, "the refresh gave %d mods of %d\n", Tool.ModList.Num(), Mods);
			return 1;
		}
		std::printf("refresh %d: %.1f ms\n", Round + 1, Times.back());
	}
	// The two reads a refresh makes, timed alone: the folder listing and the database.
	auto Milliseconds = [](auto Start) { return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - Start).count(); };
	auto Start = std::chrono::steady_clock::now();
	TArray<FString> Folders;
	IFileManager::Get().FindFiles(Folders, *(KitPaths::ModsContentDir() / TEXT("*")), false, true);
	const double ListingMs = Milliseconds(Start);
	Start = std::chrono::steady_clock::now();
	Tool.LoadModDatabase(KitPaths::ModDatabase());
	const double DatabaseMs = Milliseconds(Start);
	std::printf("of which: listing the folders %.1f ms, reading Mods.db (%.2f MB) %.1f ms\n", ListingMs,
				IFileManager::Get().FileSize(*KitPaths::ModDatabase()) / 1048576.0, DatabaseMs);

	std::vector<double> Sorted = Times;
	std::sort(Sorted.begin(), Sorted.end());
	std::printf("mods: %d folders with %d records, median refresh %.1f ms (spread %.1f to %.1f ms)\n", Mods, Mods,
				Sorted[Sorted.size() / 2], Sorted.front(), Sorted.back());

	Tool.ModList.Empty();
	Platform.DeleteDirectoryRecursively(*Kit);
	return 0;
}
