#pragma once

#include "CoreMinimal.h"
#include "catalogue/ModSetup.h"

// One thing an upload meets, checked before it is tried.
struct FUploadCheck
{
	// A short stable name: "title", "description", "change-notes", "item-file", "folder", "preview",
	// "visibility", "packaged", "editor", "template", "steamcmd", "uploader", "kit-path".
	FString Name;
	bool bPassed = false;
	// What was found.
	FString Finding;
	// What to do about it; empty when the check passed.
	FString Advice;
	// A failed check of this kind stops "publish"; the others only warn (a missing uploader, say, leaves the
	// route through SteamCMD).
	bool bBlocksPublish = true;
	// A failed check of this kind makes "check" fail; the editor is needed by a cook, not by an upload.
	bool bBlocksCheck = true;
};

// The Workshop's limit for a preview; those of the texts are in the record's field table.
constexpr int64 MaxWorkshopPreviewBytes = 1024 * 1024;

// Every check for the record, in the order a user would fix them: the fields "Upload" needs, the Workshop's
// limits, the packaged tree, then the kit's programs and template.
TArray<FUploadCheck> RunUploadChecks(const FModSetup& Mod);

// "PNG", "JPEG" or "GIF" from the first bytes of the file, or empty.
FString DetectImageFormat(const FString& Path);

class FCommandOutput;
class FJsonValue;
// The checks as lines for people ("ok", "FAIL" or "warn", the name, the finding and the advice) and as JSON.
void PrintChecks(const FCommandOutput& Output, const TArray<FUploadCheck>& Checks);
TArray<TSharedPtr<FJsonValue>> DescribeChecks(const TArray<FUploadCheck>& Checks);
