#pragma once

#include <QObject>
#include <QTimer>

#include "CoreMinimal.h"
#include "Widgets/SWindow.h"

class FHostWindow;

// Drives the tool in its window as a mod author would, for the demo and its test:
//
// 1. a click on the mod's row and on "Cook Map" (or "Cook Game Mod" for a mod without maps), with the log
//    mirrored to standard output as it fills, and a picture of the window once the run's dialog has opened;
// 2. with a publication given: the title and description typed into the form, the preview picked through
//    "Browse...", a click on "Upload", the Steam login typed into its dialog and "Accept" pressed, then a click
//    on "View Item on Steam Workshop" to print the item's address, and a second picture.
//
// The application then quits with 0 when the cook was successful (and the item published, when asked), else 1.
class FWindowScript : public QObject
{
public:
	struct FPublication
	{
		FString Title;
		FString Description;
		FString PreviewImage;
		FString SteamUsername;
		FString SteamPassword;
	};

	FWindowScript(FHostWindow& InWindow, const FString& InModDir, const FString& InPicturePath);
	void SetPublication(const FPublication& InPublication);
	void Start();

	// What the host's services hand on while the script runs: dialogs, the modal login window, the file
	// dialog's answer and the address that "View Item" opens.
	void OnDialog(const FString& Title, const FString& Body);
	void OnModalWindow(const TSharedRef<SWindow>& Window);
	bool AnswerFileDialog(TArray<FString>& OutFiles) const;
	void OnLaunchUrl(const FString& Url);

private:
	void Step();
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

	FHostWindow& Window;
	FString ModDir;
	FString PicturePath;
	bool bPublish = false;
	FPublication Publication;
	QTimer Timer;
	EStage Stage = EStage::SelectMod;
	int32 LinesShown = 0;
	int32 Frames = 0;
	FString DialogTitle;
	FString DialogBody;
	FString ItemUrl;
};
