#include "TesselCommands.h"

#include "EditorServices.h"
#include "STesselUI.h"

#include <chrono>
#include <thread>

namespace
{
	// The editor's services for a run without windows: dialogs are kept for the caller to print, modal
	// windows are declined, and no file is chosen.
	class FConsoleEditorServices : public IEditorServices
	{
	public:
		void OpenDialog(const FText& Title, const TSharedRef<SWidget>& Content) override
		{
			LastDialog = Content->GetDisplayText();
		}
		void RunModalWindow(const TSharedRef<SWindow>& Window) override { Window->RequestDestroyWindow(); }
		bool OpenFileDialog(const void*, const FString&, const FString&, const FString&, const FString&, uint32,
							TArray<FString>&) override
		{
			return false;
		}
		TSharedPtr<SWindow> GetParentWindow() override { return nullptr; }
		bool LaunchURL(const FString& URL) override { return false; }

		FString LastDialog;
	};
}

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

FString TesselCommands::CookMod(const FString& ModDir, const std::function<void(const FString&)>& OnLine)
{
	// Dialogs are collected rather than shown: the caller prints the result.
	TSharedPtr<FConsoleEditorServices> Services = MakeShared<FConsoleEditorServices>();
	IEditorServices::Set(Services);
	FString Result;
	{
		TSharedRef<STesselTool> Tool = SNew(STesselTool);
		const TSharedPtr<FModSetup>* Found =
			Tool->ModList.FindByPredicate([&ModDir](const TSharedPtr<FModSetup>& Mod) { return Mod->ModDir.Equals(ModDir, ESearchCase::IgnoreCase); });
		if (Found)
		{
			Tool->SelectedMod = *Found;
			if (Tool->SelectedMod->Maps.IsEmpty())
			{
				Tool->OnCookGameModClicked();
			}
			else
			{
				Tool->OnCookMapClicked();
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
			while (ActiveJobs.Num() > 0)
			{
				Tool->Tick(FGeometry(), 0.0, 1.0f / 60.0f);
				ShowNewLines();
				std::this_thread::sleep_for(std::chrono::milliseconds(16));
			}
			Result = Services->LastDialog;
		}
	}
	IEditorServices::Set(nullptr);
	return Result;
}
