#pragma once

#include "catalogue/ModSetup.h"

#include <optional>
#include <string>

// The two routes to the Workshop without the window: the kit's uploader, whose exit code is the published id, and
// SteamCMD, which builds the item from an item file and writes the id back into it.

// The uploader's whole command line for a record: unquoted program path, then the switches with values.
FString ComposeUploaderCommandLine(const FModSetup& Mod);
// The command line as the program is given it: one byte a character, "?" for each above 0x7F.
std::string ToEightBitCommandLine(const FString& CommandLine);
// The program and its arguments of that line, split as Windows splits a command line; false for an empty line.
bool SplitUploaderCommandLine(const std::string& EightBitLine, FString& OutProgram, FString& OutParameters);
// An exit code above 99 is the id the uploader published under.
inline bool IsPublishedIdExitCode(int32 ExitCode)
{
	return ExitCode > 99;
}

// Position of the visibility text among Options, ignoring case; 0 for any other text.
int32 GetVisibilityNumber(const TArray<TSharedPtr<FString>>& Options, const FString& Visibility);
// The template's text with the six tokens replaced from the record, in their order, each on the result of the one
// before.
FString FillWorkshopTemplate(const FString& Template, const FModSetup& Mod, int32 VisibilityNumber);
// Fills the template into the mod's item file and copies the preview beside the content; false when the template
// can't be read.
bool WriteWorkshopItemFile(const FModSetup& Mod, int32 VisibilityNumber);

// SteamCMD's arguments: the login, the build of the item file, and the end.
FString ComposeSteamCmdParameters(const FString& Username, const FString& Password, const FString& ItemFilePath);
// The id on the first line that names "publishedfileid": its first numeric piece between double quotes.
bool ReadPublishedFileId(const FString& ItemFileText, FString& OutId);
// The id SteamCMD wrote back into the item file, if the file is there and names one.
bool ReadBackPublishedFileId(const FString& ItemFilePath, FString& OutId);

// The address of an item's page on the Workshop.
FString GetWorkshopItemUrl(const FString& PublishedId);

// Why the route through SteamCMD did not start, in the words of the window's error dialog.
enum class ESteamUploadRefusal : uint8
{
	NoUsername,
	NoPassword,
	NoTemplate,
};
FText DescribeSteamUploadRefusal(ESteamUploadRefusal Refusal);
// What a login lacks before SteamCMD may start: a user name, and a password unless SteamCMD logs in on the
// credentials it cached; unset when it lacks nothing.
std::optional<ESteamUploadRefusal> CheckSteamLogin(const FString& Username, const FString& Password, bool bCachedLogin);
