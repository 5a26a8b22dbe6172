#pragma once

#include "CoreMinimal.h"
#include "Widgets/SWindow.h"

#include <functional>
#include <memory>

// Drives the tool in its window as a mod author would, for the demo and its test:
//
// 1. a click on the mod's row and on "Cook Map" (or "Cook Game Mod" for a mod without maps), with the log
//    mirrored to standard output as it fills, and a picture of the window once the run's dialog has opened;
// 2. with a publication given: the title and description typed into the form, the preview picked through
//    "Browse...", a click on "Upload", the Steam login typed into its dialog and "Accept" pressed, then a click
//    on "View Item on Steam Workshop" to print the item's address, and a second picture.
//
// The application then quits with 0 when the cook was successful (and the item published, when asked), else 1.
// The host calls Step once a frame and lends what only it has: the tool's tab, a picture of its window, the end.
class FWindowScript
{
public:
	struct FHost
	{
		std::function<TSharedPtr<SWidget>()> FindTool;
		std::function<bool(const FString& Path)> SavePicture;
		std::function<void(int ExitCode)> Quit;
	};

	struct FPublication
	{
		FString Title;
		FString Description;
		FString PreviewImage;
		FString SteamUsername;
		FString SteamPassword;
	};

	FWindowScript(FHost InHost, const FString& InModDir, const FString& InPicturePath);
	// The script the command line asks for (-Cook= with -Screenshot=, and -Publish with its -Publish... values
	// and the login from STEAM_USERNAME and STEAM_PASSWORD), or none.
	static std::unique_ptr<FWindowScript> FromCommandLine(FHost InHost);
	void SetPublication(const FPublication& InPublication);
	// One step a frame until the script has quit.
	void Step();

	// What the host's services hand on while the script runs: dialogs, the modal login window, the file
	// dialog's answer and the address that "View Item" opens.
	void OnDialog(const FString& Title, const FString& Body);
	void OnModalWindow(const TSharedRef<SWindow>& Window);
	bool AnswerFileDialog(TArray<FString>& OutFiles) const;
	void OnLaunchUrl(const FString& Url);

private:
	void Finish(int ExitCode, const char* Message);
	void MirrorLog();
	bool SavePicture(const FString& Path);

	enum class EStage
	{
		SelectMod,
		PressCook,
		WaitForRun,
		SettleAfterCook,
		FillForm,
		PressUpload,
		SettleAfterUpload,
	};

	FHost Host;
	bool bFinished = false;
	FString ModDir;
	FString PicturePath;
	bool bPublish = false;
	FPublication Publication;
	EStage Stage = EStage::SelectMod;
	int32 LinesShown = 0;
	int32 Frames = 0;
	FString DialogTitle;
	FString DialogBody;
	FString ItemUrl;
};
