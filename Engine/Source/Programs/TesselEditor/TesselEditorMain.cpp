// The host that plays the editor for the tool: it points the engine's paths at a kit and runs the tool's job.

#include "CoreMinimal.h"
#include "TesselCommands.h"

#include <cstdio>

int main(int ArgC, char** ArgV)
{
	FString CommandLine;
	for (int Index = 1; Index < ArgC; ++Index)
	{
		const FString Arg = FString::FromUtf8(ArgV[Index]);
		if (!CommandLine.IsEmpty())
		{
			CommandLine += TEXT(" ");
		}
		// Arguments with blanks keep their grouping in the single command line the engine passes around.
		CommandLine += Arg.Contains(TEXT(" ")) ? FString(TEXT("\"")) + Arg + TEXT("\"") : Arg;
	}
	FCommandLine::Set(CommandLine);

	FString Kit;
	if (!FParse::Value(FCommandLine::Get(), TEXT("-Kit="), Kit, false) || Kit.IsEmpty())
	{
		std::fprintf(stderr, "usage: TesselEditor -Kit=<kit folder> [-ListMods]\n");
		return 2;
	}
	FPaths::SetKitRoot(FPaths::ConvertRelativePathToFull(Kit));
	if (FPaths::ProjectName().IsEmpty())
	{
		std::fprintf(stderr, "No project (a folder with <Name>.uproject) under %s\n", FPaths::RootDir().ToUtf8().c_str());
		return 1;
	}

	const FString Catalogue = TesselCommands::DescribeModCatalogue();
	std::fputs(Catalogue.ToUtf8().c_str(), stdout);
	return 0;
}
