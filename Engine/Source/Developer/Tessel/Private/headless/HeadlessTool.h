#pragma once

#include "CoreMinimal.h"
#include "EditorServices.h"
#include "STesselUI.h"

#include <functional>

// The tool without a window, for the programs that run its operations from a command line: the very widget
// of the tab with its catalogue and handlers, the editor's dialogs kept as text, and the frame ticks driven
// here. The editor services are installed for the life of the object.
class FHeadlessTool
{
public:
	FHeadlessTool();
	// Runs the tool's closing save, as when its tab closes, only after SaveOnClose: a run that ends early, on a
	// usage error or bad input, writes nothing.
	~FHeadlessTool();

	STesselTool& Get() const { return *Tool; }
	const TArray<TSharedPtr<FModSetup>>& GetMods() const { return Tool->ModList; }
	// Selects the record of the mod folder named ModDir (letter case ignored); null when there is none.
	TSharedPtr<FModSetup> Select(const FString& ModDir);
	// Clicks the cook button of Kind for the selected record and ticks the tool about 60 times a second until
	// its job queue has run empty, handing each log line to OnLine as it arrives. Returns the text of the
	// dialog that ended the run, or empty when none opened. OnFrame, when set, is asked every frame whether to
	// go on; the first "no" clicks "Cancel", and the run goes on until the queue is empty.
	FString Cook(ECookKind Kind, const std::function<void(const FString&)>& OnLine, const std::function<bool()>& OnFrame = nullptr);
	// The text of the last dialog opened since the last call of ForgetDialogs, or empty.
	FString LastDialogText() const;
	void ForgetDialogs() { Services->Dialogs.Empty(); }
	// From now on the end of the run saves Mods.db as closing the tab would.
	void SaveOnClose() { bSaveOnClose = true; }
	// Ends the tool now, with its closing save when SaveOnClose was asked and bSave; the tool is gone after.
	void Close(bool bSave = true);

	const TSharedRef<FConsoleEditorServices> Services;

private:
	TSharedPtr<STesselTool> Tool;
	bool bSaveOnClose = false;
};
