#include "TesselCommands.h"

#include "STesselUI.h"

FString TesselCommands::DescribeModCatalogue()
{
	STesselTool Tool;
	Tool.Construct();
	FString Text = FString::Printf(TEXT("Mods under %s: %d\n"), *STesselTool::GetModsContentDir(), Tool.ModList.Num());
	for (const TSharedPtr<FModSetup>& Mod : Tool.ModList)
	{
		Text += FString::Printf(TEXT("  %s  maps: %s\n"), *Mod->ModDir,
								Mod->Maps.IsEmpty() ? TEXT("(none)") : *Mod->Maps);
	}
	return Text;
}
