#pragma once

#include "CoreMinimal.h"

#include <optional>

// What every command takes: the kit (empty: the nearest above the working folder) and the output form.
struct FGlobalOptions
{
	FString Kit;
	bool bJson = false;
};

struct FCookCommandOptions
{
	FString Mod;
	bool bAll = false;
	// "map", "game-mod", "total-conversion" or "map-extension"; unset, the kind the mod's maps suggest.
	std::optional<FString> Kind;
	bool bModAsDlc = false;
	std::optional<int64> ModIdValue;
	std::optional<FString> ModTitle;
	FString TestOutput;
};

struct FPublishOptions
{
	FString Mod;
	bool bAll = false;
	bool bDryRun = false;
	// SteamCMD logs in with the user name alone, on the credentials it cached at an earlier login.
	bool bSteamCachedLogin = false;
	// STEAM_PASSWORD as the run started; taken out of the environment then, so that no child inherits it.
	FString SteamPassword;
};

struct FInspectOptions
{
	FString Path;
	FString Extract;
};

// Each command returns its exit code (see EExitCode) or throws FCommandError.
int RunList(const FGlobalOptions& Options);
int RunSet(const FGlobalOptions& Options, const FString& Mod, const TArray<FString>& Assignments);
int RunCheck(const FGlobalOptions& Options, const FString& Mod);
int RunCook(const FGlobalOptions& Options, const FCookCommandOptions& Cook);
int RunPublish(const FGlobalOptions& Options, const FPublishOptions& Publish);
int RunInspect(const FGlobalOptions& Options, const FInspectOptions& Inspect);
