#include "TesselCommands.h"

#include "TesselSession.h"

FString TesselCommands::DescribeModCatalogue()
{
	const FTesselSession Session;
	FString Text = FString::Printf(TEXT("Mods under %s: %d\n"), *KitPaths::ModsContentDir(), Session.GetMods().Num());
	for (const TSharedPtr<FModSetup>& Mod : Session.GetMods())
	{
		Text += FString::Printf(TEXT("  %s  maps: %s\n"), *Mod->ModDir, Mod->Maps.IsEmpty() ? TEXT("(none)") : *Mod->Maps);
	}
	return Text;
}

FString TesselCommands::DescribeModDatabaseProblem()
{
	const FString Path = KitPaths::ModDatabase();
	if (!FPaths::FileExists(Path))
	{
		return FString();
	}
	TArray<TSharedPtr<FModSetup>> Records;
	FString SteamUsername;
	FString Error;
	return ReadModDatabase(Path, Records, SteamUsername, Error) == EModDatabaseRead::Read ? FString() : Path + TEXT(": ") + Error;
}

bool TesselCommands::CookMod(const FString& ModDir, const std::function<void(const FString&)>& OnLine, FCookOutcome& OutOutcome)
{
	FTesselSession Session;
	const TSharedPtr<FModSetup> Mod = Session.FindMod(ModDir);
	if (!Mod)
	{
		return false;
	}
	OutOutcome = Session.Cook(*Mod, Mod->Maps.IsEmpty() ? ECookKind::GameMod : ECookKind::Map,
							  FCookOptions::FromEditorCommandLine(FCommandLine::Get()), OnLine);
	// The cook gives a new mod its GUID, and may give it a title; the tab's closing save would keep both.
	Session.Save();
	return true;
}
