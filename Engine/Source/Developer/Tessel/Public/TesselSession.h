#pragma once

#include "CoreMinimal.h"
#include "KitPaths.h"
#include "catalogue/ModDatabase.h"
#include "catalogue/ModFields.h"
#include "cook/CookOptions.h"
#include "upload/WorkshopUpload.h"

#include <functional>
#include <optional>

// What came of a cook request.
struct FCookOutcome
{
	// The window's verdict: some line of the log says "Success", in any letter case.
	bool bSucceeded = false;
	// The words of the dialog the window ends the run with.
	FString Verdict;
	// The lines the window's log shows, from "Cooking Started" on.
	TArray<FString> Log;
};

// What one route to the Workshop did.
struct FUploadOutcome
{
	// Why the route through SteamCMD stopped before starting anything; unset when it went on.
	std::optional<ESteamUploadRefusal> Refusal;
	// The program was started; ExitCode is then its exit code, or minus the signal that ended it.
	bool bStarted = false;
	int32 ExitCode = -1;
	// Everything the program wrote, its standard output and error as they came.
	FString Output;
	// The id the route learned (the uploader's exit code, or the one SteamCMD wrote back), also in the record;
	// empty when it learned none.
	FString PublishedId;
};

// How SteamCMD logs in: with the password, or with the user name alone on credentials it cached at an earlier
// login on this machine.
struct FSteamLogin
{
	FString Username;
	FString Password;
	bool bCachedLogin = false;
};

// The tool without its window, for programs that run its operations from a command line: the kit's catalogue
// and the work of the tab's buttons, each returning what came of it instead of opening a dialog. What each
// writes (Mods.db, the cooked and packaged trees, the item file) is byte for byte what the window writes.
// The engine's paths must point at the kit; cooks run on the process-wide job queue, one session at a time.
class FTesselSession
{
public:
	// Reads Mods.db and merges the mod folders, as the tab does when it opens. Nothing is saved unless Save is
	// called.
	FTesselSession();

	const TArray<TSharedPtr<FModSetup>>& GetMods() const { return Mods; }
	// The record of the mod folder named ModDir (letter case ignored); null when there is none.
	TSharedPtr<FModSetup> FindMod(const FString& ModDir) const;
	// How Mods.db read at the last load: a file that is there but didn't read has left no records.
	const FModDatabaseLoad& GetDatabaseLoad() const { return Load; }
	// Saved in Mods.db beside the records.
	FString SteamUsername;

	// "Save All": every record and SteamUsername; with no records the file stays as it is, and a file that
	// didn't load is kept aside first.
	void Save();
	// Reads the records and the user name again from Mods.db, without merging the folders: for a caller that
	// must build on what another save wrote meanwhile.
	void ReloadRecords();

	// Cooks Mod as the button of Kind does with these options, turning the job queue about 60 times a second
	// until it has run empty. Each log line goes to OnLine as it arrives. OnFrame, when set, is asked every
	// frame whether to go on; the first "no" ends every job, and the run ends when the queue is empty.
	// OnPackaging, when set, sees each packaging walk's progress.
	FCookOutcome Cook(FModSetup& Mod, ECookKind Kind, const FCookOptions& Options, const std::function<void(const FString&)>& OnLine,
					  const std::function<bool()>& OnFrame = nullptr,
					  const std::function<void(const FPackagingProgress&)>& OnPackaging = nullptr);

	// The kit's uploader on Mod, as "Upload" tries it first; its output goes to OnOutput as it comes. When its
	// exit code is a published id, the id is in the record and Mods.db is saved at once, as the window does.
	FUploadOutcome UploadWithUploader(FModSetup& Mod, const std::function<void(const FString&)>& OnOutput);
	// Fills the item template into Mod's item file and copies the preview beside the content, as "Upload" does
	// before SteamCMD; false when the template can't be read.
	bool WriteItemFile(const FModSetup& Mod) const;
	// The route through SteamCMD after the login dialog: the login's two checks, the item file, SteamCMD, and
	// the id read back into the record, which the next save takes (nothing is saved here, as in the window).
	FUploadOutcome UploadWithSteamCmd(FModSetup& Mod, const FSteamLogin& Login, const std::function<void(const FString&)>& OnOutput);

private:
	TArray<TSharedPtr<FModSetup>> Mods;
	FModDatabaseLoad Load;
};
