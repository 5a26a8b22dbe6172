#include "CommandOutput.h"
#include "Commands.h"
#include "KitSession.h"
#include "UploadChecks.h"

int RunCheck(const FGlobalOptions& Options, const FString& ModName)
{
	LocateKit(Options.Kit);
	const FTesselSession Session;
	RequireReadableDatabase(Session);
	const TSharedPtr<FModSetup> Mod = SelectMod(Session, ModName);
	const TArray<FUploadCheck> Checks = RunUploadChecks(*Mod);
	const bool bReady = !Checks.ContainsByPredicate([](const FUploadCheck& Check) { return !Check.bPassed && Check.bBlocksCheck; });

	const FCommandOutput Output(Options.bJson);
	if (Output.IsJson())
	{
		TSharedRef<FJsonObject> Document = MakeShared<FJsonObject>();
		Document->SetStringField(TEXT("mod"), Mod->ModDir);
		Document->SetBoolField(TEXT("ready"), bReady);
		Document->SetArrayField(TEXT("checks"), DescribeChecks(Checks));
		FCommandOutput::Print(Document);
	}
	else
	{
		PrintChecks(Output, Checks);
		Output.Line(bReady ? FString::Printf(TEXT("%s is ready to upload."), *Mod->ModDir)
						   : FString::Printf(TEXT("%s is not ready to upload."), *Mod->ModDir));
	}
	return static_cast<int>(bReady ? EExitCode::Success : EExitCode::JobFailed);
}
