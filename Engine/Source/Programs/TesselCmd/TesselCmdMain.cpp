// TesselCmd: the tool's operations from a command line, for build servers where nobody clicks. Each command
// runs the very handlers of the tool's window on a kit, with no display.

// CLI11 comes before the engine's headers, whose assertion macro "check" would otherwise rewrite its
// validator calls; this file asserts nothing and lets the macro go.
#include <CLI/CLI.hpp>

#include "CommandOutput.h"
#include "Commands.h"
#include "catalogue/ModFields.h"
#include "Stopping.h"
#include "Terminal.h"

#include <cstdio>

#undef check

namespace
{
	// Arguments are the system's bytes: a folder name that isn't UTF-8 still names that folder.
	FString ToFString(const std::string& Bytes)
	{
		return FString::FromNative(Bytes);
	}
}

int main(int ArgC, char** ArgV)
{
	WatchForStop();
	// Before anything can start a child: the cook, the uploader and SteamCMD have no use for the password.
	const FString SteamPassword = TakeFromEnvironment("STEAM_PASSWORD");

	CLI::App App{"Lists, edits, checks, cooks, publishes and inspects the mods of a kit, without a window.\n"
				 "Exit codes: 0 success, 1 the job failed or timed out, 2 a usage error or bad input, 128 + N stopped by "
				 "signal N (130 Ctrl-C, 143 SIGTERM).",
				 "TesselCmd"};
	App.require_subcommand(1, 1);
	// The common options may also follow the command's name.
	App.fallthrough();

	std::string Kit;
	bool bJson = false;
	App.add_option("--kit", Kit, "The kit's folder (default: the nearest kit at or above the working folder)");
	App.add_flag("--json", bJson, "Print the result as one JSON document on stdout (log lines go to stderr)");

	CLI::App* List = App.add_subcommand("list", "The catalogue as the tool merges mod folders and Mods.db, with every field");

	CLI::App* Set = App.add_subcommand("set", "Edit a mod's publication fields and save Mods.db");
	std::string SetMod;
	std::vector<std::string> Assignments;
	Set->add_option("mod", SetMod, "The mod's folder name")->required();
	// The fields as the record's field table names them.
	std::string FieldNames;
	for (const FModField& Field : ModFields)
	{
		if (Field.SetNames[0])
		{
			FieldNames += (FieldNames.empty() ? "" : ", ") + FString(Field.SetNames[0]).ToUtf8();
		}
	}
	Set->add_option("assignments", Assignments,
					"<field>=<value>, a field of " + FieldNames +
						"; visibility is Public, \"Friends Only\" or Hidden, tags a comma list of the ten; <field>=@<file> reads "
						"the value from a file")
		->required();

	CLI::App* Check = App.add_subcommand("check", "Every check an upload meets, each with what to do about it");
	std::string CheckMod;
	Check->add_option("mod", CheckMod, "The mod's folder name")->required();

	CLI::App* Cook = App.add_subcommand("cook", "Cook and package a mod as the window's cook buttons do");
	std::string CookMod;
	std::string Kind;
	std::string ModTitle;
	int64 ModIdValue = 0;
	FCookCommandOptions CookOptions;
	std::string TestOutput;
	Cook->add_option("mod", CookMod, "The mod's folder name");
	Cook->add_flag("--all", CookOptions.bAll, "Cook every mod of the catalogue, one after another");
	CLI::Option* KindOption = Cook->add_option("--kind", Kind, "The button: map (default with maps), game-mod (default without), "
															   "total-conversion or map-extension")
								  ->check(CLI::IsMember({"map", "game-mod", "total-conversion", "map-extension"}));
	Cook->add_flag("--modasdlc", CookOptions.bModAsDlc, "Cook the server target too (the editor's -modasdlc)");
	// The editor reads the number as a signed 32-bit value: a larger one would wrap to another file's number.
	CLI::Option* ModIdOption = Cook->add_option("--mod-id", ModIdValue, "The number of a test run's mod file (the editor's -SetModID=)")
								   ->check(CLI::Range(int64(INT32_MIN), int64(INT32_MAX)));
	CLI::Option* ModTitleOption = Cook->add_option("--mod-title", ModTitle, "Sets the title at the cook (the editor's -ModTitle=)");
	Cook->add_option("--test-output", TestOutput, "Make a test run into this folder instead of the packaged tree");

	CLI::App* Publish = App.add_subcommand("publish", "Upload a mod as \"Upload\" does: the uploader, else SteamCMD with "
													  "STEAM_USERNAME and STEAM_PASSWORD or a prompt");
	std::string PublishMod;
	FPublishOptions PublishOptions;
	Publish->add_option("mod", PublishMod, "The mod's folder name");
	Publish->add_flag("--all", PublishOptions.bAll, "Publish every mod of the catalogue, one after another");
	Publish->add_flag("--dry-run", PublishOptions.bDryRun,
					  "Write the item file and the preview copy, print them and the command lines, start nothing");
	Publish->add_flag("--steam-cached-login", PublishOptions.bSteamCachedLogin,
					  "Log SteamCMD in with the user name alone, on the credentials it cached when that user last logged in "
					  "on this machine; no password is asked for or passed");
	double TimeoutSeconds = 0.0;
	for (CLI::App* Command : {Cook, Publish})
	{
		Command->add_option("--timeout", TimeoutSeconds, "Stop after this many seconds, ending every program the run started (exit 1)")
			->check(CLI::PositiveNumber);
	}

	CLI::App* Inspect = App.add_subcommand("inspect", "Check and show a \".z\" file, a packaged folder, a \"%d.mod\" file, "
													  "mod.info, modmeta.info or Mods.db");
	std::string InspectPath;
	std::string Extract;
	Inspect->add_option("path", InspectPath, "The file or folder")->required();
	Inspect->add_option("--extract", Extract, "With a \".z\" file: write its decoded bytes to this file");

	for (CLI::App* Command : App.get_subcommands({}))
	{
		Command->footer("Every command also takes --kit <folder> and --json.\n"
						"Exit codes: 0 success, 1 the job failed or timed out, 2 a usage error or bad input, 128 + N stopped "
						"by signal N (130 Ctrl-C, 143 SIGTERM).");
	}

	try
	{
		App.parse(ArgC, ArgV);
	}
	catch (const CLI::ParseError& Error)
	{
		// Help is a success; every other parse error is a usage error.
		const int Code = App.exit(Error);
		return Code == 0 ? 0 : static_cast<int>(EExitCode::BadInput);
	}

	const FGlobalOptions Options{ToFString(Kit), bJson};
	SetStopDeadline(TimeoutSeconds);
	// A run that was stopped says so last and exits as the stop asks, whatever the command made of it.
	auto Finish = [](int Code)
	{
		if (!StopRequested())
		{
			return Code;
		}
		PrintLine(stderr, TEXT("TesselCmd: ") + DescribeStop());
		return StopExitCode();
	};
	try
	{
		if (List->parsed())
		{
			return Finish(RunList(Options));
		}
		if (Set->parsed())
		{
			TArray<FString> Pairs;
			for (const std::string& Assignment : Assignments)
			{
				Pairs.Add(ToFString(Assignment));
			}
			return Finish(RunSet(Options, ToFString(SetMod), Pairs));
		}
		if (Check->parsed())
		{
			return Finish(RunCheck(Options, ToFString(CheckMod)));
		}
		if (Cook->parsed())
		{
			CookOptions.Mod = ToFString(CookMod);
			if (KindOption->count() > 0)
			{
				CookOptions.Kind = ToFString(Kind);
			}
			if (ModIdOption->count() > 0)
			{
				CookOptions.ModIdValue = ModIdValue;
			}
			if (ModTitleOption->count() > 0)
			{
				CookOptions.ModTitle = ToFString(ModTitle);
			}
			CookOptions.TestOutput = ToFString(TestOutput);
			return Finish(RunCook(Options, CookOptions));
		}
		if (Publish->parsed())
		{
			PublishOptions.Mod = ToFString(PublishMod);
			PublishOptions.SteamPassword = SteamPassword;
			return Finish(RunPublish(Options, PublishOptions));
		}
		return Finish(RunInspect(Options, FInspectOptions{ToFString(InspectPath), ToFString(Extract)}));
	}
	catch (const FCommandError& Error)
	{
		PrintLine(stderr, TEXT("TesselCmd: ") + Error.Message);
		return Finish(static_cast<int>(Error.Code));
	}
}
