#include "Framework/Docking/TabManager.h"
#include "Logging/LogCategory.h"
#include "Modules/ModuleInterface.h"
#include "STesselUI.h"
#include "cook/CookJob.h"

#include <new>

#define LOCTEXT_NAMESPACE "Tessel"

namespace
{
	const TCHAR* const TesselToolsTabName = TEXT("TesselTools");
}

// Nothing writes to it; what the user reads stands in the tool's log list and in dialogs.
FLogCategory LogTessel(TEXT("LogTessel"), 5, 7);

TSharedRef<SDockTab> SpawnTesselTab(const FSpawnTabArgs& SpawnTabArgs)
{
	TSharedRef<SDockTab> Tab = SNew(SDockTab).TabRole(ETabRole::NomadTab);
	Tab->SetContent(SNew(STesselTool));
	return Tab;
}

class FTesselModule : public IModuleInterface
{
public:
	void StartupModule() override
	{
		const FText DisplayName = LOCTEXT("TesselToolsTabTitle", "Cook/Upload Mod to Steam...");
		FGlobalTabmanager::Get()
			->RegisterNomadTabSpawner(TesselToolsTabName, FOnSpawnTab::CreateLambda(&SpawnTesselTab))
			.SetDisplayName(DisplayName);
	}

	void ShutdownModule() override
	{
		CancelAllJobs();
		FGlobalTabmanager::Get()->UnregisterNomadTabSpawner(TesselToolsTabName);
	}

	bool SupportsDynamicReloading() override { return true; }
	bool SupportsAutomaticShutdown() override { return true; }
	bool IsGameModule() const override { return false; }
};

extern "C" __attribute__((visibility("default"))) IModuleInterface* InitializeModule()
{
	return new (std::nothrow) FTesselModule();
}

#undef LOCTEXT_NAMESPACE
