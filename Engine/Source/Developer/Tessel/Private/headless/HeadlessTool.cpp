#include "headless/HeadlessTool.h"

#include "cook/CookJob.h"

#include <chrono>
#include <thread>

FHeadlessTool::FHeadlessTool() : Services(MakeShared<FConsoleEditorServices>())
{
	IEditorServices::Set(Services);
	Tool = SNew(STesselTool);
}

FHeadlessTool::~FHeadlessTool()
{
	Close();
	IEditorServices::Set(nullptr);
}

void FHeadlessTool::Close(bool bSave)
{
	if (!Tool)
	{
		return;
	}
	if (!bSaveOnClose || !bSave)
	{
		// With no records the tool's closing save leaves the file as it is.
		Tool->ModList.Empty();
	}
	Tool.Reset();
}

TSharedPtr<FModSetup> FHeadlessTool::Select(const FString& ModDir)
{
	const TSharedPtr<FModSetup>* Found = Tool->ModList.FindByPredicate(
		[&ModDir](const TSharedPtr<FModSetup>& Mod) { return Mod->ModDir.Equals(ModDir, ESearchCase::IgnoreCase); });
	if (!Found)
	{
		return nullptr;
	}
	Tool->SelectedMod = *Found;
	return *Found;
}

FString FHeadlessTool::Cook(ECookKind Kind, const std::function<void(const FString&)>& OnLine, const std::function<bool()>& OnFrame)
{
	ForgetDialogs();
	switch (Kind)
	{
	case ECookKind::Map:
		Tool->OnCookMapClicked();
		break;
	case ECookKind::GameMod:
		Tool->OnCookGameModClicked();
		break;
	case ECookKind::TotalConversion:
		Tool->OnCookTotalConversionClicked();
		break;
	case ECookKind::IslandExtension:
		Tool->OnCookMapExtensionClicked();
		break;
	}
	int32 Shown = 0;
	auto ShowNewLines = [&]
	{
		for (; Shown < Tool->LogMessages.Num(); ++Shown)
		{
			OnLine(*Tool->LogMessages[Shown]);
		}
	};
	ShowNewLines();
	bool bCancelled = false;
	while (ActiveJobs.Num() > 0)
	{
		if (OnFrame && !bCancelled && !OnFrame())
		{
			bCancelled = true;
			Tool->OnCancelClicked();
		}
		Tool->Tick(FGeometry(), 0.0, 1.0f / 60.0f);
		ShowNewLines();
		// A frame's pause, as in the window; the child's output waits in its pipe meanwhile.
		std::this_thread::sleep_for(std::chrono::milliseconds(16));
	}
	return LastDialogText();
}

FString FHeadlessTool::LastDialogText() const
{
	return Services->Dialogs.Num() > 0 ? Services->Dialogs.Last().Text : FString();
}
