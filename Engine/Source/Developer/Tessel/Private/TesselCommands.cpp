#include "TesselCommands.h"

#include "headless/HeadlessTool.h"

FString TesselCommands::DescribeModCatalogue()
{
	FHeadlessTool Tool;
	FString Text = FString::Printf(TEXT("Mods under %s: %d\n"), *STesselTool::GetModsContentDir(), Tool.GetMods().Num());
	for (const TSharedPtr<FModSetup>& Mod : Tool.GetMods())
	{
		Text += FString::Printf(TEXT("  %s  maps: %s\n"), *Mod->ModDir, Mod->Maps.IsEmpty() ? TEXT("(none)") : *Mod->Maps);
	}
	return Text;
}

FString TesselCommands::DescribeModDatabaseProblem()
{
	const FString Path = STesselTool::GetModDatabasePath();
	if (!FPaths::FileExists(Path))
	{
		return FString();
	}
	TArray<TSharedPtr<FModSetup>> Records;
	FString SteamUsername;
	FString Error;
	return STesselTool::ReadModDatabase(Path, Records, SteamUsername, Error) == STesselTool::EModDatabaseRead::Read
			   ? FString()
			   : Path + TEXT(": ") + Error;
}

FString TesselCommands::CookMod(const FString& ModDir, const std::function<void(const FString&)>& OnLine)
{
	FHeadlessTool Tool;
	const TSharedPtr<FModSetup> Mod = Tool.Select(ModDir);
	if (!Mod)
	{
		return FString();
	}
	Tool.SaveOnClose();
	return Tool.Cook(Mod->Maps.IsEmpty() ? ECookKind::GameMod : ECookKind::Map, OnLine);
}
