#include "CommandOutput.h"
#include "Commands.h"
#include "KitSession.h"
#include "Stopping.h"
#include "Misc/FileHelper.h"
#include "TesselSession.h"
#include "Terminal.h"
#include "UploadChecks.h"

#include <cstdio>
#include <cstdlib>
#include <functional>

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
		// The upload ran and may have learned an id, which the closing save must keep.
		bool bSaves = false;
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
	FSteamLogin GatherCredentials(const FString& KnownUsername, const FString& PasswordFromEnvironment, bool bCachedLogin)
	{
		FSteamLogin Login;
		Login.bCachedLogin = bCachedLogin;
		Login.Username = FromEnvironment("STEAM_USERNAME");
		if (Login.Username.IsEmpty())
		{
			Login.Username = KnownUsername;
		}
		if (Login.Username.IsEmpty())
		{
			PromptOnTerminal(TEXT("Steam user name: "), false, Login.Username);
		}
		// A cached login needs no password, and gets none: not even one from the environment.
		Login.Password = bCachedLogin ? FString() : PasswordFromEnvironment;
		if (Login.Password.IsEmpty() && !Login.Username.IsEmpty() && !bCachedLogin)
		{
			PromptOnTerminal(FString::Printf(TEXT("Steam password for %s: "), *Login.Username), true, Login.Password);
		}
		return Login;
	}

	bool SteamCmdSaidSuccess(const FString& Output)
	{
		TArray<FString> Lines;
		Output.ParseIntoArrayLines(Lines);
		return Lines.ContainsByPredicate([](const FString& Line) { return Line.TrimStartAndEnd().StartsWith(TEXT("Success")); });
	}

	// A program's output as it comes: on standard output for people, on standard error beside a JSON document.
	std::function<void(const FString&)> EchoTo(bool bJson)
	{
		return [bJson](const FString& Text)
		{
			std::FILE* To = bJson ? stderr : stdout;
			std::fputs(Text.ToUtf8().c_str(), To);
			std::fflush(To);
		};
	}

	void DryRun(const FTesselSession& Session, const FModSetup& Mod, bool bCachedLogin, FPublishResult& Result)
	{
		Result.Route = TEXT("dry-run");
		if (!Session.WriteItemFile(Mod))
		{
			Result.Code = EExitCode::JobFailed;
			Result.Message = DescribeSteamUploadRefusal(ESteamUploadRefusal::NoTemplate).ToString();
			return;
		}
		const FString ItemFile = KitPaths::WorkshopItemFile(Mod.ModDir);
		FFileHelper::LoadFileToString(Result.ItemFileText, *ItemFile);
		Result.UploaderCommandLine = FString::FromUtf8(ToEightBitCommandLine(ComposeUploaderCommandLine(Mod)));
		FString Username = FromEnvironment("STEAM_USERNAME");
		if (Username.IsEmpty())
		{
			Username = Session.SteamUsername.IsEmpty() ? FString(TEXT("<user>")) : Session.SteamUsername;
		}
		// The password is never shown, whatever its source.
		Result.SteamCmdCommandLine =
			KitPaths::SteamCmd() + TEXT(" ") + ComposeSteamCmdParameters(Username, bCachedLogin ? TEXT("") : TEXT("********"), ItemFile);
		Result.Message = FString::Printf(TEXT("dry run: wrote %s and the preview copy; started nothing"), *ItemFile);
	}

	// Returns whether Mods.db must be saved at the end: the upload ran and may have learned an id.
	bool Upload(FTesselSession& Session, const TSharedPtr<FModSetup>& Mod, const FPublishOptions& Publish, bool bJson,
				FPublishResult& Result)
	{
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
		const FUploadOutcome Uploaded = Session.UploadWithUploader(*Mod, EchoTo(bJson));
		Result.UploaderOutput = Uploaded.Output;
		if (!Uploaded.PublishedId.IsEmpty())
		{
			Result.Route = TEXT("uploader");
			if (KeepsItsId())
			{
				Result.PublishedId = Mod->ItemSeamId;
				Result.Url = GetWorkshopItemUrl(Mod->ItemSeamId);
				Result.Message = FString::Printf(TEXT("published through the uploader: id %s"), *Result.PublishedId);
			}
			return true;
		}
		if (StopRequested())
		{
			Result.Code = EExitCode::JobFailed;
			Result.Message = TEXT("stopped before SteamCMD was started");
			return false;
		}
		Result.Route = TEXT("steamcmd");
		const FSteamLogin Login = GatherCredentials(Session.SteamUsername, Publish.SteamPassword, Publish.bSteamCachedLogin);
		if (!Login.Username.IsEmpty() && !Login.Password.IsEmpty())
		{
			FCommandOutput::Note(TEXT("warning: SteamCMD takes the password on its command line, where other users of this "
									  "machine can read it while the upload runs"));
		}
		const FUploadOutcome Sent = Session.UploadWithSteamCmd(*Mod, Login, EchoTo(bJson));
		Result.SteamCmdOutput = Sent.Output;
		if (Sent.Refusal == ESteamUploadRefusal::NoUsername || Sent.Refusal == ESteamUploadRefusal::NoPassword)
		{
			// An incomplete login changes nothing: the user name stays as it was, unsaved.
			Result.Code = EExitCode::BadInput;
			Result.Message = DescribeSteamUploadRefusal(*Sent.Refusal).ToString() +
							 TEXT(" Set STEAM_USERNAME and STEAM_PASSWORD, or run on a terminal to be asked.");
			return false;
		}
		Session.SteamUsername = Login.Username;
		if (Sent.Refusal)
		{
			Result.Code = EExitCode::JobFailed;
			Result.Message =
				FString::Printf(TEXT("%s: %s"), *KitPaths::WorkshopTemplate(), *DescribeSteamUploadRefusal(*Sent.Refusal).ToString());
			return false;
		}
		// The tool learns nothing from SteamCMD but the id it writes back; its own words say whether it worked.
		if (!Sent.bStarted)
		{
			Result.Code = EExitCode::JobFailed;
			Result.Message = FString::Printf(TEXT("%s: SteamCMD could not be started"), *KitPaths::SteamCmd());
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
											 *KitPaths::WorkshopItemFile(Mod->ModDir));
		}
		else if (KeepsItsId())
		{
			Result.PublishedId = Mod->ItemSeamId;
			Result.Url = GetWorkshopItemUrl(Mod->ItemSeamId);
			Result.Message = FString::Printf(TEXT("published through SteamCMD: id %s"), *Result.PublishedId);
		}
		// The id it read back and the user name go to Mods.db, as the window's next save takes them.
		return true;
	}

	FPublishResult PublishOne(FTesselSession& Session, const TSharedPtr<FModSetup>& Mod, const FPublishOptions& Publish, bool bJson)
	{
		FPublishResult Result;
		Result.Mod = Mod->ModDir;
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
			DryRun(Session, *Mod, Publish.bSteamCachedLogin, Result);
		}
		else
		{
			Result.bSaves = Upload(Session, Mod, Publish, bJson, Result);
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
			Output.Line(FString::Printf(TEXT("Item file %s:"), *KitPaths::WorkshopItemFile(Result.Mod)));
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
	FTesselSession Session;
	RequireReadableDatabase(Session);
	const TArray<TSharedPtr<FModSetup>> Mods =
		Publish.bAll ? Session.GetMods() : TArray<TSharedPtr<FModSetup>>{SelectMod(Session, Publish.Mod)};

	const FCommandOutput Output(Options.bJson);
	TArray<FPublishResult> Results;
	int Code = static_cast<int>(EExitCode::Success);
	for (const TSharedPtr<FModSetup>& Mod : Mods)
	{
		if (StopRequested())
		{
			break;
		}
		Results.Add(PublishOne(Session, Mod, Publish, Options.bJson));
		if (!Output.IsJson())
		{
			PrintResult(Output, Results.Last());
		}
		Code = std::max(Code, static_cast<int>(Results.Last().Code));
	}
	Guard.Save(
		[&](bool bChanged)
		{
			if (!Results.ContainsByPredicate([](const FPublishResult& Result) { return Result.bSaves; }))
			{
				return;
			}
			// Saved meanwhile by the window (which takes no lock) or by the uploader's route itself: those records,
			// with what this run learned put back into them.
			if (bChanged)
			{
				const FString Username = Session.SteamUsername;
				Session.ReloadRecords();
				for (const FPublishResult& Result : Results)
				{
					for (const TSharedPtr<FModSetup>& Record : Session.GetMods())
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
					Session.SteamUsername = Username;
				}
			}
			Session.Save();
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
