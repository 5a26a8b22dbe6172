// Writes and reads back a mod database of many records with realistic text and prints the speed of the JSON
// writer and reader in MB/s of UTF-16 text. Usage: DatabaseBenchmark [records] [rounds]

#include "CoreMinimal.h"
#include "HAL/FileManager.h"
#include "HAL/PlatformFile.h"
#include "STesselUI.h"
#include "TesselSession.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <unistd.h>

namespace
{
	FString Words(std::mt19937& Random, int32 Count)
	{
		static const TCHAR* Vocabulary[] = {TEXT("island"), TEXT("lantern"), TEXT("Festival"), TEXT("crate"),
											TEXT("über"), TEXT("Sky"), TEXT("\"quoted\""), TEXT("path\\to"),
											TEXT("naïve"), TEXT("日本"), TEXT("tab\there"), TEXT("rebalanced"),
											TEXT("weapons"), TEXT("v2.1"), TEXT("outfits"), TEXT("the")};
		FString Text;
		for (int32 Index = 0; Index < Count; ++Index)
		{
			Text += Vocabulary[Random() % (sizeof(Vocabulary) / sizeof(Vocabulary[0]))];
			Text += (Random() % 12 == 0) ? TEXT("\n") : TEXT(" ");
		}
		return Text;
	}

	double Seconds(std::chrono::steady_clock::time_point Start)
	{
		return std::chrono::duration<double>(std::chrono::steady_clock::now() - Start).count();
	}
}

int main(int ArgC, char** ArgV)
{
	const int32 Records = ArgC > 1 ? std::atoi(ArgV[1]) : 10000;
	const int32 Rounds = ArgC > 2 ? std::atoi(ArgV[2]) : 5;

	char Pattern[] = "/tmp/tessel-bench-XXXXXX";
	const FString Kit = FString::FromUtf8(mkdtemp(Pattern));
	IFileManager::Get().MakeDirectory(*(Kit / TEXT("Orrery/Saved")), true);
	{
		TUniquePtr<FArchive> Project(IFileManager::Get().CreateFileWriter(*(Kit / TEXT("Orrery/Orrery.uproject"))));
		Project->Close();
	}
	FPaths::SetKitRoot(Kit);

	std::mt19937 Random(7);
	STesselTool Tool;
	Tool.SteamUsername = TEXT("benchmark_author");
	for (int32 Index = 0; Index < Records; ++Index)
	{
		TSharedPtr<FModSetup> Mod = MakeShared<FModSetup>(FString::Printf(TEXT("Mod %05d %s"), Index, *Words(Random, 2)));
		Mod->Maps = TEXT("Alpha,Beta,Gamma_Night");
		Mod->Title = Words(Random, 4);
		Mod->Description = Words(Random, 60);
		Mod->PreviewImage = FString::Printf(TEXT("C:/Users/author/Pictures/preview_%d.png"), Index);
		Mod->ChangeNotes = Words(Random, 20);
		Mod->ItemSeamId = FString::Printf(TEXT("%lld"), 2000000000LL + Index);
		Mod->GUID = FGuid::NewGuid().ToString();
		Mod->Tags = TEXT("Map,Mod,Visuals/Sounds");
		Tool.ModList.Add(Mod);
	}

	const FString Path = KitPaths::ModDatabase();
	double BestWrite = 1e9;
	double BestRead = 1e9;
	for (int32 Round = 0; Round < Rounds; ++Round)
	{
		auto Start = std::chrono::steady_clock::now();
		Tool.SaveModDatabase();
		BestWrite = std::min(BestWrite, Seconds(Start));

		STesselTool Reader;
		Start = std::chrono::steady_clock::now();
		Reader.LoadModDatabase(Path);
		BestRead = std::min(BestRead, Seconds(Start));
		if (Reader.ModList.Num() != Records)
		{
			std::fprintf(stderr, "read back %d records of %d\n", Reader.ModList.Num(), Records);
			return 1;
		}
	}
	const double Megabytes = static_cast<double>(IFileManager::Get().FileSize(*Path)) / (1024.0 * 1024.0);
	std::printf("records: %d, file: %.2f MB of UTF-16 text, best of %d rounds\n", Records, Megabytes, Rounds);
	std::printf("writer: %.3f s, %.1f MB/s\n", BestWrite, Megabytes / BestWrite);
	std::printf("reader: %.3f s, %.1f MB/s\n", BestRead, Megabytes / BestRead);

	FPlatformFileManager::Get().GetPlatformFile().DeleteDirectoryRecursively(*Kit);
	return 0;
}
