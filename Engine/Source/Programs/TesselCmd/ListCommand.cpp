#include "CommandOutput.h"
#include "Commands.h"
#include "KitSession.h"
#include "ModRecordText.h"

int RunList(const FGlobalOptions& Options)
{
	LocateKit(Options.Kit);
	RequireReadableDatabase();
	FHeadlessTool Tool;
	const FCommandOutput Output(Options.bJson);

	if (Output.IsJson())
	{
		TSharedRef<FJsonObject> Document = MakeShared<FJsonObject>();
		Document->SetStringField(TEXT("kit"), FPaths::RootDir());
		Document->SetStringField(TEXT("database"), STesselTool::GetModDatabasePath());
		TArray<TSharedPtr<FJsonValue>> Mods;
		for (const TSharedPtr<FModSetup>& Mod : Tool.GetMods())
		{
			Mods.Add(Mod->ToJsonValue());
		}
		Document->SetArrayField(TEXT("mods"), Mods);
		FCommandOutput::Print(Document);
	}
	else
	{
		Output.Line(FString::Printf(TEXT("Kit %s, %d mods under %s"), *FPaths::RootDir(), Tool.GetMods().Num(),
									*STesselTool::GetModsContentDir()));
		for (const TSharedPtr<FModSetup>& Mod : Tool.GetMods())
		{
			Output.Line(FString());
			for (const FString& Line : DescribeModRecord(*Mod))
			{
				Output.Line(Line);
			}
		}
	}
	return static_cast<int>(EExitCode::Success);
}
