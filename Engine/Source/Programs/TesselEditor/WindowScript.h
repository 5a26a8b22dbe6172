#pragma once

#include <QObject>
#include <QTimer>

#include "CoreMinimal.h"

class FHostWindow;

// Drives the tool in its window as a person would, for the demo and its test: a click on the mod's row, a click
// on "Cook Map" (or "Cook Game Mod" for a mod without maps), the log mirrored to standard output as it fills,
// and, once the run has ended and its dialog has opened, a picture of the window. The application then quits
// with 0 when the dialog said the job was successful, else 1.
class FWindowScript : public QObject
{
public:
	FWindowScript(FHostWindow& InWindow, const FString& InModDir, const FString& InPicturePath);
	void Start();
	// What the last dialog of the run said; the host's services report it here.
	void OnDialog(const FString& Title, const FString& Body);

private:
	void Step();
	void Finish(int ExitCode, const char* Message);
	void MirrorLog();

	enum class EStage
	{
		SelectMod,
		PressCook,
		WaitForRun,
		Settle,
	};

	FHostWindow& Window;
	FString ModDir;
	FString PicturePath;
	QTimer Timer;
	EStage Stage = EStage::SelectMod;
	int32 LinesShown = 0;
	int32 Frames = 0;
	FString DialogTitle;
	FString DialogBody;
};
