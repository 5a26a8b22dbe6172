#include "CommandOutput.h"
#include "Commands.h"
#include "KitSession.h"
#include "Stopping.h"
#include "Misc/FileHelper.h"
#include "Terminal.h"
#include "UploadChecks.h"

#include <cstdlib>

namespace
{
	struct FPublishResult
	{
		FString Mod;
		// "uploader" or "steamcmd" for an upload that was tried, "dry-run", or empty when none was.
		FString Route;
		EExitCode Code = EExitCode::Success;
		FString Message;
		FString PublishedId;
		// The record's id once the upload was tried: what the closing save must hold.
		FString IdAfterUpload;
		FString Url;
		TArray<FUploadCheck> FailedChecks;
		FString ItemFileText;
		FString UploaderCommandLine;
		FString SteamCmdCommandLine;
		FString UploaderOutput;
		FString SteamCmdOutput;
	};

	FString FromEnvironment(const char* Name)
	{
		const char* Value = std::getenv(Name);
		return Value ? FString::FromUtf8(Value) : FString();
	}

	// The login comes from the environment or the terminal, never from our own arguments, where any user of
	// the machine could read it. The user name may also be the one the tool saved last time.
	void GatherCredentials(STesselTool& Tool, const FString& PasswordFromEnvironment, bool bCachedLogin)
	{
		FString Username = FromEnvironment("STEAM_USERNAME");
		if (Username.IsEmpty())
		{
			Username = Tool.SteamUsername;
		}
		if (Username.IsEmpty())
		{
			PromptOnTerminal(TEXT("Steam user name: "), false, Username);
		}
		// A cached login needs no password, and gets none: not even one from the environment.
		FString Password = bCachedLogin ? FString() : PasswordFromEnvironment;
		if (Password.IsEmpty() && !Username.IsEmpty() && !bCachedLogin)
		{
			PromptOnTerminal(FString::Printf(TEXT("Steam password for %s: "), *Username), true, Password);
		}
		Tool.SteamUsername = Username;
		Tool.SteamPassword = Password;
	}

	bool SteamCmdSaidSuccess(const FString& Output)
	{
		TArray<FString> Lines;
		Output.ParseIntoArrayLines(Lines);
		return Lines.ContainsByPredicate([](const FString& Line) { return Line.TrimStartAndEnd().StartsWith(TEXT("Success")); });
	}

	void DryRun(FHeadlessTool& Tool, const FModSetup& Mod, bool bCachedLogin, FPublishResult& Result)
	{
		Result.Route = TEXT("dry-run");
		STesselTool& Tessel = Tool.Get();
		if (!Tessel.MakeWorkshopItemFile())
		{
			Result.Code = EExitCode::JobFailed;
			Result.Message = Tool.LastDialogText();
			return;
		}
		const FString ItemFile = STesselTool::GetWorkshopItemFilePath(Mod.ModDir);
		FFileHelper::LoadFileToString(Result.ItemFileText, *ItemFile);
		Result.UploaderCommandLine = FString::FromUtf8(STesselTool::ToEightBitCommandLine(STesselTool::ComposeUploaderCommandLine(Mod)));
		FString Username = FromEnvironment("STEAM_USERNAME");
		if (Username.IsEmpty())
		{
			Username = Tessel.SteamUsername.IsEmpty() ? FString(TEXT("<user>")) : Tessel.SteamUsername;
		}
		// The password is never shown, whatever its source.
		Result.SteamCmdCommandLine = STesselTool::GetSteamCmdPath() + TEXT(" ") +
									 STesselTool::ComposeSteamCmdParameters(Username, bCachedLogin ? TEXT("") : TEXT("********"), ItemFile);
		Result.Message = FString::Printf(TEXT("dry run: wrote %s and the preview copy; started nothing"), *ItemFile);
	}

	void Upload(FHeadlessTool& Tool, const TSharedPtr<FModSetup>& Mod, const FPublishOptions& Publish, bool bJson,
				FPublishResult& Result)
	{
		STesselTool& Tessel = Tool.Get();
		// An update must come back as the same item: another id read back (a stray "publishedfileid", an item
		// file of another mod) is a failure, and the known id stays.
		const FString KnownId = Mod->ItemSeamId;
		auto KeepsItsId = [&]
		{
			if (KnownId.IsEmpty() || Mod->ItemSeamId == KnownId)
			{
				return true;
			}
			Result.Code = EExitCode::JobFailed;
			Result.Message = FString::Printf(TEXT("the update of item %s read back id %s; the known id stays, and the upload "
												  "needs a look on the Workshop"),
											 *KnownId, *Mod->ItemSeamId);
			Mod->ItemSeamId = KnownId;
			return false;
		};
		// "Upload" tries the kit's uploader first.
		bool bPublished = false;
		{
			FStdoutTap Tap(bJson);
			bPublished = Tessel.RunUploaderRoute();
			Result.UploaderOutput = Tap.Finish();
		}
		if (bPublished)
		{
			Tool.SaveOnClose();
			Result.Route = TEXT("uploader");
			if (!KeepsItsId())
			{
				return;
			}
			Result.PublishedId = Mod->ItemSeamId;
			Result.Url = Tessel.GetWorkshopItemUrl();
			Result.Message = FString::Printf(TEXT("published through the uploader: id %s"), *Result.PublishedId);
			return;
		}
		if (StopRequested())
		{
			Result.Code = EExitCode::JobFailed;
			Result.Message = TEXT("stopped before SteamCMD was started");
			return;
		}
		Result.Route = TEXT("steamcmd");
		// A login that turns out incomplete changes nothing: the user name stays as it was, unsaved.
		const FString KnownUsername = Tessel.SteamUsername;
		GatherCredentials(Tessel, Publish.SteamPassword, Publish.bSteamCachedLogin);
		Tessel.bSteamCachedLogin = Publish.bSteamCachedLogin;
		if (!Tessel.SteamUsername.IsEmpty() && !Tessel.SteamPassword.IsEmpty())
		{
			FCommandOutput::Note(TEXT("warning: SteamCMD takes the password on its command line, where other users of this "
									  "machine can read it while the upload runs"));
		}
		STesselTool::ESteamUploadResult Outcome;
		{
			FStdoutTap Tap(bJson);
			Outcome = Tessel.UploadWithSteamCredentials();
			Result.SteamCmdOutput = Tap.Finish();
		}
		Tessel.SteamPassword.Empty();
		switch (Outcome)
		{
		case STesselTool::ESteamUploadResult::NoUsername:
		case STesselTool::ESteamUploadResult::NoPassword:
			Tessel.SteamUsername = KnownUsername;
			Result.Code = EExitCode::BadInput;
			Result.Message = Tool.LastDialogText() + TEXT(" Set STEAM_USERNAME and STEAM_PASSWORD, or run on a terminal to be asked.");
			return;
		case STesselTool::ESteamUploadResult::NoTemplate:
			Result.Code = EExitCode::JobFailed;
			Result.Message = FString::Printf(TEXT("%s: %s"), *STesselTool::GetWorkshopTemplatePath(), *Tool.LastDialogText());
			return;
		case STesselTool::ESteamUploadResult::SteamCmdRan:
			// The id it read back and the user name go to Mods.db, as the window's next save takes them.
			Tool.SaveOnClose();
			break;
		}
		// The tool learns nothing from SteamCMD but the id it writes back; its own words say whether it worked.
		if (Result.SteamCmdOutput.IsEmpty())
		{
			Result.Code = EExitCode::JobFailed;
			Result.Message = FString::Printf(TEXT("%s: SteamCMD could not be started"), *STesselTool::GetSteamCmdPath());
		}
		else if (!SteamCmdSaidSuccess(Result.SteamCmdOutput))
		{
			Result.Code = EExitCode::JobFailed;
			Result.Message = TEXT("SteamCMD did not publish the item (see its output)");
		}
		else if (Mod->ItemSeamId.IsEmpty())
		{
			Result.Code = EExitCode::JobFailed;
			Result.Message = FString::Printf(TEXT("%s: SteamCMD said success but left no numeric published id"),
											 *STesselTool::GetWorkshopItemFilePath(Mod->ModDir));
		}
		else if (KeepsItsId())
		{
			Result.PublishedId = Mod->ItemSeamId;
			Result.Url = Tessel.GetWorkshopItemUrl();
			Result.Message = FString::Printf(TEXT("published through SteamCMD: id %s"), *Result.PublishedId);
		}
	}

	FPublishResult PublishOne(FHeadlessTool& Tool, const TSharedPtr<FModSetup>& Mod, const FPublishOptions& Publish, bool bJson)
	{
		FPublishResult Result;
		Result.Mod = Mod->ModDir;
		Tool.Select(Mod->ModDir);
		Tool.ForgetDialogs();
		for (const FUploadCheck& Check : RunUploadChecks(*Mod))
		{
			if (!Check.bPassed && Check.bBlocksPublish)
			{
				Result.FailedChecks.Add(Check);
			}
		}
		if (Result.FailedChecks.Num() > 0)
		{
			Result.Code = EExitCode::JobFailed;
			Result.Message = FString::Printf(TEXT("not ready to upload (see TesselCmd check \"%s\")"), *Mod->ModDir);
			return Result;
		}
		if (Publish.bDryRun)
		{
			DryRun(Tool, *Mod, Publish.bSteamCachedLogin, Result);
		}
		else
		{
			Upload(Tool, Mod, Publish, bJson, Result);
			Result.IdAfterUpload = Mod->ItemSeamId;
		}
		return Result;
	}

	TSharedPtr<FJsonObject> DescribeResult(const FPublishResult& Result)
	{
		TSharedPtr<FJsonObject> Item = MakeShared<FJsonObject>();
		Item->SetStringField(TEXT("mod"), Result.Mod);
		Item->SetStringField(TEXT("route"), Result.Route);
		Item->SetBoolField(TEXT("success"), Result.Code == EExitCode::Success);
		Item->SetStringField(TEXT("message"), Result.Message);
		Item->SetStringField(TEXT("publishedFileId"), Result.PublishedId);
		Item->SetStringField(TEXT("url"), Result.Url);
		if (Result.FailedChecks.Num() > 0)
		{
			Item->SetArrayField(TEXT("checks"), DescribeChecks(Result.FailedChecks));
		}
		if (Result.Route == TEXT("dry-run"))
		{
			Item->SetStringField(TEXT("itemFile"), Result.ItemFileText);
			Item->SetStringField(TEXT("uploaderCommandLine"), Result.UploaderCommandLine);
			Item->SetStringField(TEXT("steamCmdCommandLine"), Result.SteamCmdCommandLine);
		}
		if (!Result.UploaderOutput.IsEmpty())
		{
			Item->SetStringField(TEXT("uploaderOutput"), Result.UploaderOutput);
		}
		if (Result.Route == TEXT("steamcmd"))
		{
			Item->SetStringField(TEXT("steamCmdOutput"), Result.SteamCmdOutput);
		}
		return Item;
	}

	void PrintResult(const FCommandOutput& Output, const FPublishResult& Result)
	{
		if (Result.FailedChecks.Num() > 0)
		{
			FCommandOutput::Note(FString::Printf(TEXT("%s: %s"), *Result.Mod, *Result.Message));
			for (const FUploadCheck& Check : Result.FailedChecks)
			{
				FCommandOutput::Note(FString::Printf(TEXT("%s: %s: %s: %s"), *Result.Mod, *Check.Name, *Check.Finding, *Check.Advice));
			}
			return;
		}
		if (Result.Route == TEXT("dry-run") && Result.Code == EExitCode::Success)
		{
			Output.Line(FString::Printf(TEXT("Item file %s:"), *STesselTool::GetWorkshopItemFilePath(Result.Mod)));
			Output.Line(Result.ItemFileText.TrimStartAndEnd());
			Output.Line(TEXT("Uploader command line:"));
			Output.Line(Result.UploaderCommandLine);
			Output.Line(TEXT("SteamCMD command line:"));
			Output.Line(Result.SteamCmdCommandLine);
		}
		if (Result.Code == EExitCode::Success)
		{
			Output.Line(FString::Printf(TEXT("%s: %s"), *Result.Mod, *Result.Message));
			if (!Result.Url.IsEmpty())
			{
				Output.Line(Result.Url);
			}
		}
		else
		{
			FCommandOutput::Note(FString::Printf(TEXT("%s: %s"), *Result.Mod, *Result.Message));
		}
	}
}

int RunPublish(const FGlobalOptions& Options, const FPublishOptions& Publish)
{
	if (Publish.bAll == !Publish.Mod.IsEmpty())
	{
		throw FCommandError{EExitCode::BadInput, TEXT("publish: name one mod or give --all")};
	}
	LocateKit(Options.Kit);
	// Held for the whole run: the uploader's route saves the id it learns at once, over whatever is there.
	const FDatabaseGuard Guard(true);
	FHeadlessTool Tool;
	RequireReadableDatabase(Tool);
	const TArray<TSharedPtr<FModSetup>> Mods = Publish.bAll ? Tool.GetMods() : TArray<TSharedPtr<FModSetup>>{SelectMod(Tool, Publish.Mod)};

	const FCommandOutput Output(Options.bJson);
	TArray<FPublishResult> Results;
	int Code = static_cast<int>(EExitCode::Success);
	for (const TSharedPtr<FModSetup>& Mod : Mods)
	{
		if (StopRequested())
		{
			break;
		}
		Results.Add(PublishOne(Tool, Mod, Publish, Options.bJson));
		if (!Output.IsJson())
		{
			PrintResult(Output, Results.Last());
		}
		Code = std::max(Code, static_cast<int>(Results.Last().Code));
	}
	Guard.Save(
		[&](bool bChanged)
		{
			// Saved meanwhile by the window (which takes no lock) or by the uploader's route itself: those records,
			// with what this run learned put back into them.
			if (bChanged)
			{
				STesselTool& Tessel = Tool.Get();
				const FString Username = Tessel.SteamUsername;
				Tessel.LoadModDatabase(STesselTool::GetModDatabasePath());
				for (const FPublishResult& Result : Results)
				{
					for (const TSharedPtr<FModSetup>& Record : Tessel.ModList)
					{
						if ((Result.Route == TEXT("uploader") || Result.Route == TEXT("steamcmd")) &&
							Record->ModDir.Equals(Result.Mod, ESearchCase::IgnoreCase))
						{
							Record->ItemSeamId = Result.IdAfterUpload;
						}
					}
				}
				if (!Username.IsEmpty())
				{
					Tessel.SteamUsername = Username;
				}
			}
			Tool.Close();
		});
	if (Output.IsJson())
	{
		TArray<TSharedPtr<FJsonValue>> Items;
		for (const FPublishResult& Result : Results)
		{
			Items.Add(JsonObject(DescribeResult(Result)));
		}
		TSharedRef<FJsonObject> Document = MakeShared<FJsonObject>();
		Document->SetArrayField(TEXT("results"), Items);
		FCommandOutput::Print(Document);
	}
	return Code;
}
