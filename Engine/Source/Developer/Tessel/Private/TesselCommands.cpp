#include "TesselCommands.h"

#include "STesselUI.h"

FString TesselCommands::DescribeModCatalogue()
{
	TSharedRef<STesselTool> ToolWidget = SNew(STesselTool);
	STesselTool& Tool = *ToolWidget;
	FString Text = FString::Printf(TEXT("Mods under %s: %d\n"), *STesselTool::GetModsContentDir(), Tool.ModList.Num());
	for (const TSharedPtr<FModSetup>& Mod : Tool.ModList)
	{
		Text += FString::Printf(TEXT("  %s  maps: %s\n"), *Mod->ModDir,
								Mod->Maps.IsEmpty() ? TEXT("(none)") : *Mod->Maps);
	}
	// Listing is no occasion to write the database: with no records the closing save leaves the file alone.
	Tool.ModList.Empty();
	return Text;
}
