#include "TesselSession.h"

#include "Misc/MonitoredProcess.h"
#include "cook/CookJob.h"
#include "cook/CookQueue.h"

#include <chrono>
#include <thread>

namespace
{
	// Runs a program to its end, handing its output on as it comes.
	FUploadOutcome RunToEnd(const FString& Program, const FString& Parameters, const std::function<void(const FString&)>& OnOutput)
	{
		FUploadOutcome Outcome;
		FMonitoredProcess Process(Program, Parameters, true);
		// Only the monitor thread writes Output, and this thread reads it once IsRunning is false, which it turns
		// only after the last call has returned.
		Process.OnOutput().BindLambda(
			[&](FString Text)
			{
				Outcome.Output += Text;
				if (OnOutput)
				{
					OnOutput(Text);
				}
			});
		Outcome.bStarted = Process.Launch();
		while (Process.IsRunning())
		{
			std::this_thread::sleep_for(std::chrono::milliseconds(10));
		}
		Outcome.ExitCode = Process.GetReturnCode();
		return Outcome;
	}
}

FTesselSession::FTesselSession()
{
	Load = LoadModRecords(KitPaths::ModDatabase(), Mods, SteamUsername);
	MergeModFolders(KitPaths::ModsContentDir(), Mods);
}

TSharedPtr<FModSetup> FTesselSession::FindMod(const FString& ModDir) const
{
	const TSharedPtr<FModSetup>* Found =
		Mods.FindByPredicate([&ModDir](const TSharedPtr<FModSetup>& Mod) { return Mod->ModDir.Equals(ModDir, ESearchCase::IgnoreCase); });
	return Found ? *Found : nullptr;
}

void FTesselSession::Save()
{
	SaveModRecords(KitPaths::ModDatabase(), SteamUsername, Mods, Load.bKeepBeforeSave);
}

void FTesselSession::ReloadRecords()
{
	Load = LoadModRecords(KitPaths::ModDatabase(), Mods, SteamUsername);
}

FCookOutcome FTesselSession::Cook(FModSetup& Mod, ECookKind Kind, const FCookOptions& Options,
								  const std::function<void(const FString&)>& OnLine, const std::function<bool()>& OnFrame,
								  const std::function<void(const FPackagingProgress&)>& OnPackaging)
{
	FCookOutcome Outcome;
	auto Take = [&](FString&& Line)
	{
		if (SaysSuccess(Line))
		{
			Outcome.bSucceeded = true;
		}
		OnLine(Line);
		Outcome.Log.Add(MoveTemp(Line));
	};
	OnPackagingProgress = OnPackaging;
	QueueCook(Mod, Kind, Options, Take);
	TArray<FString> Scratch;
	bool bCancelled = false;
	while (ActiveJobs.Num() > 0)
	{
		if (OnFrame && !bCancelled && !OnFrame())
		{
			bCancelled = true;
			CancelAllJobs();
		}
		PumpCookJobs(Take, Scratch);
		// A frame's pause, as in the window; the child's output waits in its pipe meanwhile.
		std::this_thread::sleep_for(std::chrono::milliseconds(16));
	}
	OnPackagingProgress = nullptr;
	Outcome.Verdict = DescribeCookVerdict(Outcome.bSucceeded).ToString();
	return Outcome;
}

FUploadOutcome FTesselSession::UploadWithUploader(FModSetup& Mod, const std::function<void(const FString&)>& OnOutput)
{
	FString Program;
	FString Parameters;
	if (!SplitUploaderCommandLine(ToEightBitCommandLine(ComposeUploaderCommandLine(Mod)), Program, Parameters))
	{
		return FUploadOutcome();
	}
	FUploadOutcome Outcome = RunToEnd(Program, Parameters, OnOutput);
	if (IsPublishedIdExitCode(Outcome.ExitCode))
	{
		Outcome.PublishedId = FString::FromInt(Outcome.ExitCode);
		Mod.ItemSeamId = Outcome.PublishedId;
		Save();
	}
	return Outcome;
}

bool FTesselSession::WriteItemFile(const FModSetup& Mod) const
{
	static const TArray<TSharedPtr<FString>> Options = []
	{
		TArray<TSharedPtr<FString>> Labels;
		for (const FString& Label : VisibilityLabels())
		{
			Labels.Add(MakeShared<FString>(Label));
		}
		return Labels;
	}();
	return WriteWorkshopItemFile(Mod, GetVisibilityNumber(Options, Mod.Visibility));
}

FUploadOutcome FTesselSession::UploadWithSteamCmd(FModSetup& Mod, const FSteamLogin& Login,
												  const std::function<void(const FString&)>& OnOutput)
{
	FUploadOutcome Outcome;
	Outcome.Refusal = CheckSteamLogin(Login.Username, Login.Password, Login.bCachedLogin);
	if (!Outcome.Refusal && !WriteItemFile(Mod))
	{
		Outcome.Refusal = ESteamUploadRefusal::NoTemplate;
	}
	if (Outcome.Refusal)
	{
		return Outcome;
	}
	const FString ItemFilePath = KitPaths::WorkshopItemFile(Mod.ModDir);
	// The password goes to the process and nowhere else; a cached login has none.
	Outcome = RunToEnd(KitPaths::SteamCmd(),
					   ComposeSteamCmdParameters(Login.Username, Login.bCachedLogin ? FString() : Login.Password, ItemFilePath), OnOutput);
	if (Outcome.bStarted && ReadBackPublishedFileId(ItemFilePath, Outcome.PublishedId))
	{
		Mod.ItemSeamId = Outcome.PublishedId;
	}
	return Outcome;
}
