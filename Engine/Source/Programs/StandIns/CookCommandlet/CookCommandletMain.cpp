// Stands in for the editor executable run with "-run=Cook": it checks its command line as the real
// commandlet's contract has it, copies the mod's content into the output folder as the cooked tree, writes
// "mod.info" and "modmeta.info", and prints a cook's log ending in a success line.
//
// Misbehaviour for tests, chosen by the environment variable TESSEL_COOK_MODE or by a file "StandIn.mode" in
// the mod's content folder holding the mode: crash, hang (with a grandchild that hangs too), flood:N (N lines
// as fast as possible, then the normal end), partial (pieces without line ends and bare carriage returns),
// invalid-utf8, no-success, write-nothing, wait-for-go (ends only once a file "StandIn.go" stands beside the
// mode file, so that a test sees the cook running for as long as it needs). "mode@WindowsServer" limits the mode to that target platform.

#include "CoreMinimal.h"
#include "HAL/FileManager.h"
#include "HAL/PlatformFile.h"
#include "Misc/FileHelper.h"
#include "Misc/WindowsArguments.h"
#include "ModDescriptionWriter.h"
#include "StandInMain.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>
#ifndef _WIN32
#include <unistd.h>
#endif

namespace
{
#ifdef _WIN32
	// The word that makes this program the hanging grandchild on Windows.
	constexpr const char* HangAsGrandchild = "--hang-as-grandchild";
#endif

	void SleepMilliseconds(int Milliseconds)
	{
		std::this_thread::sleep_for(std::chrono::milliseconds(Milliseconds));
	}

	// A grandchild that hangs as well, so that only ending the whole tree ends both; its id, or -1.
	int32 StartHangingGrandchild()
	{
#ifdef _WIN32
		// Windows has no fork: the grandchild is this program once more, told to hang.
		const FString Self = FPlatformProcess::ExecutablePath();
		const FString Line = FWindowsArguments::Quote(Self) + TEXT(" ") + FString::FromUtf8(HangAsGrandchild);
		std::wstring CommandLine(WindowsApi::Wide(*Line));
		// It holds our output as a forked grandchild does, as a real cook's shader workers hold it.
		STARTUPINFOW Startup{};
		Startup.cb = sizeof(Startup);
		Startup.dwFlags = STARTF_USESTDHANDLES;
		Startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
		Startup.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
		Startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
		PROCESS_INFORMATION Started{};
		if (!CreateProcessW(WindowsApi::Wide(*Self), CommandLine.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr, nullptr, &Startup, &Started))
		{
			return -1;
		}
		CloseHandle(Started.hThread);
		CloseHandle(Started.hProcess);
		return static_cast<int32>(Started.dwProcessId);
#else
		const pid_t Grandchild = fork();
		if (Grandchild == 0)
		{
			StandIn::HangForever();
		}
		return static_cast<int32>(Grandchild);
#endif
	}

	struct FCookArguments
	{
		FString Project;
		TArray<FString> Maps;
		FString TargetPlatform;
		FString ModDir;
		FString OriginalModDir;
		FString ModGuid;
		FString Output;
		FString PackageInfo;
		FString TcBase;
		FString BulkInfo;
		bool bGameMod = false;
		bool bIslandExtension = false;
		bool bModAsDlc = false;
		bool bCultures = false;
	};

	int Fail(const std::string& Message)
	{
		std::fprintf(stdout, "LogInit: Error: %s\n", Message.c_str());
		std::fflush(stdout);
		return 2;
	}

	bool TakeValue(const std::string& Arg, const char* Prefix, FString& Out)
	{
		const size_t Length = std::strlen(Prefix);
		if (Arg.compare(0, Length, Prefix) != 0)
		{
			return false;
		}
		Out = FString::FromNative(Arg.substr(Length));
		return true;
	}

	FString KitRoot()
	{
		const FString Exe = FPlatformProcess::ExecutablePath();
		// <root>/Engine/Binaries/Win64/UE4Editor.exe
		return FPaths::GetPath(FPaths::GetPath(FPaths::GetPath(FPaths::GetPath(Exe))));
	}

	void Print(const FString& Line)
	{
		std::fputs(Line.ToUtf8().c_str(), stdout);
		std::fputc('\n', stdout);
	}
}

// The arguments arrive as UTF-8 on every system: a kit's path may hold any letter.
static int CookMain(int ArgC, char** ArgV)
{
#ifdef _WIN32
	if (ArgC == 2 && std::string(ArgV[1]) == HangAsGrandchild)
	{
		StandIn::HangForever();
	}
#endif
	FCookArguments Args;
	if (ArgC < 3 || std::string(ArgV[2]) != "-run=Cook")
	{
		return Fail("expected the project and -run=Cook");
	}
	Args.Project = FString::FromNative(ArgV[1]);
	for (int Index = 3; Index < ArgC; ++Index)
	{
		const std::string Arg = ArgV[Index];
		FString Value;
		if (TakeValue(Arg, "-Map=", Value))
		{
			if (Value.IsEmpty())
			{
				return Fail("empty -Map=");
			}
			TArray<FString> Names;
			Value.ParseIntoArray(Names, TEXT("+"), true);
			Args.Maps.Append(Names);
		}
		else if (Arg == "-CookCultures=en")
		{
			Args.bCultures = true;
		}
		else if (TakeValue(Arg, "-TargetPlatform=", Args.TargetPlatform) || TakeValue(Arg, "-ModDir=", Args.ModDir) ||
				 TakeValue(Arg, "-OriginalModDir=", Args.OriginalModDir) || TakeValue(Arg, "-ModGUID=", Args.ModGuid) ||
				 TakeValue(Arg, "-Output=", Args.Output) || TakeValue(Arg, "-pkgnfo=", Args.PackageInfo) ||
				 TakeValue(Arg, "-TC_BASE=", Args.TcBase) || TakeValue(Arg, "-BulkInfo=", Args.BulkInfo))
		{
		}
		else if (Arg == "-GameMod")
		{
			Args.bGameMod = true;
		}
		else if (Arg == "-IslandExtension")
		{
			Args.bIslandExtension = true;
		}
		else if (Arg == "-modasdlc")
		{
			Args.bModAsDlc = true;
		}
		else
		{
			return Fail("unknown argument '" + Arg + "'");
		}
	}

	const bool bTotalConversion = !Args.TcBase.IsEmpty();
	const uint32 Kind = bTotalConversion ? 2 : Args.bIslandExtension ? 3 : Args.bGameMod ? 1 : 0;
	if (!Args.bCultures || Args.Output.IsEmpty() || Args.ModGuid.IsEmpty() ||
		(Args.TargetPlatform != TEXT("WindowsNoEditor") && Args.TargetPlatform != TEXT("WindowsServer")))
	{
		return Fail("missing or malformed -CookCultures=en, -TargetPlatform=, -ModGUID= or -Output=");
	}
	if (!bTotalConversion && Args.ModDir.IsEmpty())
	{
		return Fail("-ModDir= is required unless -TC_BASE= is given");
	}
	if (Args.bModAsDlc != !Args.BulkInfo.IsEmpty() || (Args.bModAsDlc && !bTotalConversion))
	{
		return Fail("-modasdlc and -BulkInfo= come together, with -TC_BASE=");
	}
	if ((Kind == 0 || Kind == 1) && Args.PackageInfo.IsEmpty())
	{
		return Fail("-pkgnfo= is required for maps and game mods");
	}

	const FString Root = KitRoot();
	if (!FPaths::FileExists(Root / Args.Project))
	{
		return Fail("no project at " + (Root / Args.Project).ToUtf8());
	}
	const FString Content = FPaths::GetPath(Root / Args.Project) / TEXT("Content");
	const FString ModName = Args.OriginalModDir.IsEmpty() ? Args.ModDir : Args.OriginalModDir;
	const FString Source = bTotalConversion ? Content : Content / TEXT("Mods") / ModName;
	const FString Cooked = bTotalConversion ? Args.Output : Args.Output / Args.ModDir;

	FString Mode = FString::FromUtf8(std::getenv("TESSEL_COOK_MODE") ? std::getenv("TESSEL_COOK_MODE") : "");
	FString ModeFile;
	if (FFileHelper::LoadFileToString(ModeFile, *(Source / TEXT("StandIn.mode"))))
	{
		Mode = ModeFile.TrimStartAndEnd();
	}
	// "mode@Platform" misbehaves for that target platform only.
	FString ModeName;
	FString ModePlatform;
	if (Mode.Split(TEXT("@"), &ModeName, &ModePlatform))
	{
		Mode = ModePlatform == Args.TargetPlatform ? ModeName : FString();
	}

	Print(TEXT("LogInit: Display: Running engine for game: Orrery"));
	Print(TEXT("LogInit: Display: Project file: ") + Args.Project);
	Print(FString::Printf(TEXT("LogCook: Display: Cook target platform %s for mod %s (kind %u, GUID %s)"), *Args.TargetPlatform,
						  *ModName, Kind, *Args.ModGuid));
	Print(TEXT("LogCook: Display: Cooking for maps: ") + (Args.Maps.Num() > 0 ? FString::Join(Args.Maps, TEXT(", ")) : FString(TEXT("(none)"))));
	Print(TEXT("LogAssetRegistry: Display: Asset registry cache read in 0.02 seconds"));
	Print(TEXT("LogCook: Display: Output: ") + Cooked);
	std::fflush(stdout);

	if (Mode == TEXT("crash"))
	{
		Print(TEXT("LogCook: Display: about to fail hard"));
		std::fflush(stdout);
		StandIn::Crash();
	}
	if (Mode.StartsWith(TEXT("flood:")))
	{
		const long Count = std::atol(Mode.Mid(6).ToUtf8().c_str());
		static char Buffer[1 << 16];
		std::setvbuf(stdout, Buffer, _IOFBF, sizeof(Buffer));
		for (long Line = 0; Line < Count; ++Line)
		{
			std::printf("LogCook: Display: Cooked packages %ld Packages Remain %ld Total %ld /Game/Mods/%s/Generated_%08ld\n", Line,
						Count - Line, Count, ModName.ToUtf8().c_str(), Line);
		}
	}
	if (Mode == TEXT("partial"))
	{
		std::fputs("LogCook: Display: half a li", stdout);
		std::fflush(stdout);
		SleepMilliseconds(20);
		std::fputs("ne\r\nsecond\rline with a bare return\r\n\n\r\n", stdout);
		std::fflush(stdout);
		SleepMilliseconds(20);
	}
	if (Mode == TEXT("invalid-utf8"))
	{
		static const char Bad[] = "LogCook: Warning: bad bytes \xFF\xFE and a NUL \0 here\n";
		std::fwrite(Bad, 1, sizeof(Bad) - 1, stdout);
	}

	// The cooked tree: the mod's content as the game loads it.
	int32 Packages = 0;
	if (Mode != TEXT("write-nothing"))
	{
		IPlatformFile& Platform = FPlatformFileManager::Get().GetPlatformFile();
		Platform.CreateDirectoryTree(*Cooked);
		TArray<FString> Files;
		Platform.IterateDirectoryRecursively(*Source,
											 [&](const TCHAR* Path, bool bIsDirectory)
											 {
												 if (!bIsDirectory && !FString(Path).EndsWith(TEXT("StandIn.mode")))
												 {
													 Files.Add(FString(Path).Mid(Source.Len()));
												 }
												 return true;
											 });
		Files.Sort();
		const FString PackageRoot = bTotalConversion ? FString(TEXT("/Game")) : FString(TEXT("/Game/Mods/")) + ModName;
		for (const FString& Relative : Files)
		{
			Platform.CopyFile(*(Cooked + Relative), *(Source + Relative));
			++Packages;
			// Packages by their long names, as the engine logs them: the content root is /Game.
			Print(FString::Printf(TEXT("LogCook: Display: Cooking %s"), *(PackageRoot + FPaths::GetBaseFilename(Relative, false))));
			Print(FString::Printf(TEXT("LogSavePackage: Display: Saved %s (%lld bytes)"), *(Cooked + Relative),
								  Platform.FileSize(*(Cooked + Relative))));
			Print(FString::Printf(TEXT("LogCook: Display: Cooked packages %d Packages Remain %d Total %d"), Packages,
								  Files.Num() - Packages, Files.Num()));
		}

		Print(TEXT("LogCook: Display: Writing mod.info and modmeta.info"));
		FModDescriptionWriter Info;
		Info.String(FString::Printf(TEXT("%s %s"), *ModName, *Args.TargetPlatform));
		Info.StringArray(Args.Maps);
		Info.SaveTo(Cooked / TEXT("mod.info"));

		// The mod type by kind: ordinary maps 0, game mods 1, map extensions 2, total conversions 3.
		static const TCHAR* const TypeByKind[] = {TEXT("0"), TEXT("1"), TEXT("3"), TEXT("2")};
		FModDescriptionWriter Meta;
		Meta.StringMap({{TEXT("ModType"), TypeByKind[Kind]},
						{TEXT("GUID"), Args.ModGuid},
						{TEXT("ModName"), ModName},
						{TEXT("TargetPlatform"), Args.TargetPlatform}});
		Meta.SaveTo(Cooked / TEXT("modmeta.info"));
	}

	if (Mode == TEXT("wait-for-go"))
	{
		Print(TEXT("LogCook: Display: waiting for StandIn.go"));
		std::fflush(stdout);
		// Bounded, so that a test that forgets the file can't leave a child behind for ever.
		for (int32 Wait = 0; Wait < 60000 && !FPaths::FileExists(Source / TEXT("StandIn.go")); ++Wait)
		{
			SleepMilliseconds(1);
		}
	}

	// A hang comes after the files are written, as a cook that stalls at its end.
	if (Mode == TEXT("hang"))
	{
		const int32 Grandchild = StartHangingGrandchild();
		Print(FString::Printf(TEXT("LogCook: Display: waiting for the shader compiler (pid %d)"), Grandchild));
		std::fflush(stdout);
		StandIn::HangForever();
	}
	Print(FString::Printf(TEXT("LogCook: Display: Cook finished: %d packages cooked for %s"), Packages, *Args.TargetPlatform));
	Print(TEXT("LogCook: Display: Done!"));
	if (Mode != TEXT("no-success"))
	{
		Print(TEXT("Success - 0 error(s), 0 warning(s)"));
	}
	else
	{
		Print(TEXT("Failure - 1 error(s), 0 warning(s)"));
	}
	std::fflush(stdout);
	return Mode == TEXT("no-success") ? 1 : 0;
}

TESSEL_STAND_IN_MAIN(CookMain)
