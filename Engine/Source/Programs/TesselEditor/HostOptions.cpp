#include "HostOptions.h"

#include "CoreMinimal.h"
#include "TesselCommands.h"

#include <cstdio>

namespace
{
	FString JoinArguments(int ArgC, char** ArgV)
	{
		FString CommandLine;
		for (int Index = 1; Index < ArgC; ++Index)
		{
			const FString Arg = FString::FromNative(ArgV[Index]);
			if (!CommandLine.IsEmpty())
			{
				CommandLine += TEXT(" ");
			}
			// Arguments with blanks keep their grouping in the single command line the engine passes around;
			// in "-Key=Value" only the value is quoted, so that the option is still found by its name.
			FString Key;
			FString Value;
			if (!Arg.Contains(TEXT(" ")))
			{
				CommandLine += Arg;
			}
			else if (Arg.StartsWith(TEXT("-")) && Arg.Split(TEXT("="), &Key, &Value))
			{
				CommandLine += Key + TEXT("=\"") + Value + TEXT("\"");
			}
			else
			{
				CommandLine += FString(TEXT("\"")) + Arg + TEXT("\"");
			}
		}
		return CommandLine;
	}

}

bool HostOptions::RunWithoutWindow(int ArgC, char** ArgV, int& OutExit)
{
	FCommandLine::Set(JoinArguments(ArgC, ArgV));
	const TCHAR* CommandLine = FCommandLine::Get();

	FString Kit;
	if (!FParse::Value(CommandLine, TEXT("-Kit="), Kit, false) || Kit.IsEmpty())
	{
		std::fprintf(stderr, "usage: TesselEditor -Kit=<kit folder> [-ListMods | -Cook=<mod folder> [-Screenshot=<file.png>] | -OpenTab | -Screenshot=<file.png>] [-Publish -PublishTitle=<t> -PublishDescription=<d> -PublishPreview=<png>] [-modasdlc] [-SetModID=<n>] [-ModTitle=<title>]\n");
		OutExit = 2;
		return true;
	}
	FPaths::SetKitRoot(FPaths::ConvertRelativePathToFull(Kit));
	if (FPaths::ProjectName().IsEmpty())
	{
		std::fprintf(stderr, "No project (a folder with <Name>.uproject) under %s\n", FPaths::RootDir().ToUtf8().c_str());
		OutExit = 1;
		return true;
	}
	// The engine's executables sit in Engine/Binaries/Win64; relative paths of the tool are taken from there.
	FPaths::SetBaseDir(FPaths::EngineDir() / TEXT("Binaries/Win64"));

	if (FParse::Param(CommandLine, TEXT("ListMods")))
	{
		std::fputs(TesselCommands::DescribeModCatalogue().ToUtf8().c_str(), stdout);
		// The folders are listed all the same; the records the file holds are not, and a script must hear it.
		const FString Problem = TesselCommands::DescribeModDatabaseProblem();
		if (!Problem.IsEmpty())
		{
			std::fprintf(stderr, "%s; its records are not listed\n", Problem.ToUtf8().c_str());
		}
		OutExit = Problem.IsEmpty() ? 0 : 1;
		return true;
	}

	FString CookModDir;
	const bool bCook = FParse::Value(CommandLine, TEXT("-Cook="), CookModDir, false);
	FString ScreenshotPath;
	const bool bScreenshot = FParse::Value(CommandLine, TEXT("-Screenshot="), ScreenshotPath, false);
	if (bCook && !bScreenshot)
	{
		FCookOutcome Outcome;
		if (!TesselCommands::CookMod(
				CookModDir, [](const FString& Line) { std::puts(Line.ToUtf8().c_str()); }, Outcome))
		{
			std::fprintf(stderr, "No mod folder named %s\n", CookModDir.ToUtf8().c_str());
			OutExit = 1;
			return true;
		}
		std::printf("Quillon Dev Kit: %s\n", Outcome.Verdict.ToUtf8().c_str());
		OutExit = Outcome.bSucceeded ? 0 : 1;
		return true;
	}
	return false;
}
