#include "CommandOutput.h"
#include "Commands.h"
#include "KitSession.h"
#include "ModRecordText.h"
#include "json/JsonSerializer.h"

int RunList(const FGlobalOptions& Options)
{
	LocateKit(Options.Kit);
	const FTesselSession Session;
	RequireReadableDatabase(Session);
	const FCommandOutput Output(Options.bJson);

	if (Output.IsJson())
	{
		// The document {"kit", "database", "mods": [...]}, written a record at a time.
		FCommandOutput::PrintWritten(
			[&](JsonWriter& Writer)
			{
				Writer.WriteObjectStart();
				Writer.WriteValue(TEXT("kit"), FPaths::RootDir());
				Writer.WriteValue(TEXT("database"), KitPaths::ModDatabase());
				Writer.WriteArrayStart(TEXT("mods"));
				for (const TSharedPtr<FModSetup>& Mod : Session.GetMods())
				{
					JsonSerializer::SerializeValue(Mod->ToJsonValue(), FString(), Writer);
				}
				Writer.WriteArrayEnd();
				Writer.WriteObjectEnd();
			});
	}
	else
	{
		Output.Line(
			FString::Printf(TEXT("Kit %s, %d mods under %s"), *FPaths::RootDir(), Session.GetMods().Num(), *KitPaths::ModsContentDir()));
		for (const TSharedPtr<FModSetup>& Mod : Session.GetMods())
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
