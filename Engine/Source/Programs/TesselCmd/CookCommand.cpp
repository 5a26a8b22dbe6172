#include "CommandOutput.h"
#include "Commands.h"
#include "HAL/FileManager.h"
#include "HAL/PlatformFile.h"
#include "KitSession.h"
#include "Stopping.h"
#include "Terminal.h"

#include <chrono>
#include <cstdio>
#include <utility>

namespace
{
	struct FKindName
	{
		const TCHAR* Name;
		ECookKind Kind;
	};
	// The cook buttons by the names the command takes: "Cook Map", "Cook Game Mod", "Cook Total Conversion" and
	// "Cook Map Extension".
	const FKindName KindNames[] = {
		{TEXT("map"), ECookKind::Map},
		{TEXT("game-mod"), ECookKind::GameMod},
		{TEXT("total-conversion"), ECookKind::TotalConversion},
		{TEXT("map-extension"), ECookKind::IslandExtension},
	};

	const TCHAR* KindName(ECookKind Kind)
	{
		for (const FKindName& Entry : KindNames)
		{
			if (Entry.Kind == Kind)
			{
				return Entry.Name;
			}
		}
		return TEXT("");
	}

	ECookKind ParseKind(const FString& Name)
	{
		for (const FKindName& Entry : KindNames)
		{
			if (Name.Equals(Entry.Name, ESearchCase::IgnoreCase))
			{
				return Entry.Kind;
			}
		}
		throw FCommandError{EExitCode::BadInput,
							FString::Printf(TEXT("unknown kind \"%s\": map, game-mod, total-conversion or map-extension"), *Name)};
	}

	// The options as the window's cook takes them from the editor's command line, with its limits: a title holding
	// a double quote can't pass there.
	FCookOptions ToCookOptions(const FCookCommandOptions& Cook)
	{
		FCookOptions Options;
		Options.Modes = FCookModes::FromModAsDlc(Cook.bModAsDlc);
		Options.ModId = Cook.ModIdValue;
		if (Cook.ModTitle && Cook.ModTitle->Contains(TEXT("\""), ESearchCase::CaseSensitive))
		{
			throw FCommandError{
				EExitCode::BadInput,
				FString::Printf(TEXT("--mod-title \"%s\": a double quote can't pass the editor's command line"), **Cook.ModTitle)};
		}
		Options.ModTitle = Cook.ModTitle;
		return Options;
	}

	FString FormatBytes(int64 Bytes)
	{
		if (Bytes < 10 * 1024)
		{
			return FString::Printf(TEXT("%lld bytes"), Bytes);
		}
		if (Bytes < 10 * 1024 * 1024)
		{
			return FString::Printf(TEXT("%.1f KB"), Bytes / 1024.0);
		}
		return FString::Printf(TEXT("%.1f MB"), Bytes / 1048576.0);
	}

	// Watches every packaging walk: it shows its progress on one line of the terminal, rewritten in place, and
	// keeps what each walk was to package, since the tool's own walk stops silently at a file it can't write
	// (a full disk) and deletes the cooked tree after.
	class FPackagingWatch
	{
	public:
		struct FTarget
		{
			FString TargetDir;
			TArray<FString> StagedFiles;
		};

		FPackagingWatch() : bTerminal(IsTerminal(stderr)) {}

		// Ends the progress line before other text is printed.
		void Interrupt()
		{
			if (bOpen)
			{
				std::fputc('\n', stderr);
				bOpen = false;
			}
		}

		// The walks since the last call.
		TArray<FTarget> TakeTargets() { return std::exchange(Targets, {}); }

		void Watch(const FPackagingProgress& Progress)
		{
			if (Targets.Num() == 0 || Targets.Last().TargetDir != Progress.TargetDir || Progress.FilesDone == 0)
			{
				Targets.Add(FTarget());
				FTarget& Target = Targets.Last();
				Target.TargetDir = Progress.TargetDir;
				FPlatformFileManager::Get().GetPlatformFile().IterateDirectoryRecursively(
					*Progress.StagedDir,
					[&](const TCHAR* Path, bool bIsDirectory)
					{
						if (!bIsDirectory)
						{
							Target.StagedFiles.Add(FString(Path).Mid(Progress.StagedDir.Len() + 1));
						}
						return true;
					});
			}
			if (bTerminal)
			{
				Show(Progress);
			}
		}

	private:
		void Show(const FPackagingProgress& Progress)
		{
			if (Progress.FilesTotal == 0)
			{
				return;
			}
			const FString Line = FString::Printf(TEXT("\rPackaging %s: %d of %d files, %s of %s"),
												 *FPaths::GetCleanFilename(Progress.TargetDir), Progress.FilesDone, Progress.FilesTotal,
												 *FormatBytes(Progress.BytesDone), *FormatBytes(Progress.BytesTotal));
			std::fputs(Line.ToUtf8().c_str(), stderr);
			std::fputs("\x1b[K", stderr);
			std::fflush(stderr);
			bOpen = true;
			if (Progress.FilesDone == Progress.FilesTotal)
			{
				Interrupt();
			}
		}

		const bool bTerminal;
		bool bOpen = false;
		TArray<FTarget> Targets;
	};

	// The cooked files the walk left out: neither the file nor its ".z" with its size file is in the target. The
	// walk stops at a file it can't open, and passes over one it can't finish writing; neither is reported.
	TArray<FString> Unwritten(const FPackagingWatch::FTarget& Target)
	{
		TArray<FString> Missing;
		for (const FString& File : Target.StagedFiles)
		{
			const FString Packaged = Target.TargetDir / File;
			if (!FPaths::FileExists(Packaged) &&
				!(FPaths::FileExists(Packaged + TEXT(".z")) && FPaths::FileExists(Packaged + TEXT(".z.uncompressed_size"))))
			{
				Missing.Add(File);
			}
		}
		return Missing;
	}

	struct FCookResult
	{
		FString Mod;
		ECookKind Kind = ECookKind::Map;
		FString Dialog;
		bool bSuccess = false;
		// False when the mod was left out before any job was queued.
		bool bRan = false;
		// What the packaging left unwritten, or empty.
		FString Unwritten;
		FString Output;
	};

	// The kind asked for, else the button the mod's maps suggest.
	ECookKind KindFor(const FModSetup& Mod, std::optional<ECookKind> Asked)
	{
		return Asked ? *Asked : (Mod.Maps.IsEmpty() ? ECookKind::GameMod : ECookKind::Map);
	}

	// Why the mod can't be cooked as Kind, or empty: "Cook Map" is disabled for a mod without maps.
	FString WhyNotCookable(const FModSetup& Mod, ECookKind Kind)
	{
		return Kind == ECookKind::Map && Mod.Maps.IsEmpty()
				   ? FString::Printf(TEXT("%s has no maps: cook it with --kind game-mod"), *Mod.ModDir)
				   : FString();
	}

	FCookResult CookOne(FTesselSession& Session, const TSharedPtr<FModSetup>& Mod, std::optional<ECookKind> Kind, FCookOptions Options,
						const FString& TestOutput, const FCommandOutput& Output, FPackagingWatch& Progress)
	{
		FCookResult Result;
		Result.Mod = Mod->ModDir;
		Result.Kind = KindFor(*Mod, Kind);
		Result.Output = TestOutput.IsEmpty() ? KitPaths::ModOutputDir() / Mod->ModDir : ToFullPath(TestOutput);
		Result.Dialog = WhyNotCookable(*Mod, Result.Kind);
		if (!Result.Dialog.IsEmpty())
		{
			return Result;
		}
		Options.TestOutputDir = TestOutput.IsEmpty() ? FString() : Result.Output;
		Result.bRan = true;
		// Without a terminal to watch, a line at least every 10 seconds: CI services end jobs that fall silent.
		using FClock = std::chrono::steady_clock;
		const FClock::time_point Started = FClock::now();
		FClock::time_point LastSaid = Started;
		const bool bHeartbeat = !IsTerminal(stderr);
		const FCookOutcome Outcome = Session.Cook(
			*Mod, Result.Kind, Options,
			[&](const FString& Line)
			{
				Progress.Interrupt();
				Output.Progress(Line);
				LastSaid = FClock::now();
			},
			[&]
			{
				if (bHeartbeat && FClock::now() - LastSaid >= std::chrono::seconds(10))
				{
					LastSaid = FClock::now();
					Output.Progress(FString::Printf(TEXT("TesselCmd: still cooking %s, %lld s so far"), *Mod->ModDir,
													static_cast<long long>(std::chrono::duration_cast<std::chrono::seconds>(LastSaid - Started).count())));
				}
				return !StopRequested();
			},
			[&Progress](const FPackagingProgress& Walk) { Progress.Watch(Walk); });
		Result.Dialog = Outcome.Verdict;
		Progress.Interrupt();
		// The run's own verdict: some log line said "Success".
		Result.bSuccess = Outcome.bSucceeded;
		// ... and the packaging's: every cooked file of every target written.
		for (const FPackagingWatch::FTarget& Target : Progress.TakeTargets())
		{
			const TArray<FString> Missing = Unwritten(Target);
			if (Missing.Num() > 0)
			{
				Result.bSuccess = false;
				Result.Unwritten += FString::Printf(TEXT("%s: %d of %d cooked files not written (is the disk full?): %s. "),
													*Target.TargetDir, Missing.Num(), Target.StagedFiles.Num(),
													*FString::Join(Missing, TEXT(", ")));
			}
		}
		if (!Result.Unwritten.IsEmpty())
		{
			// Without mod.info the tree counts as not packaged: "check" and "publish" refuse it until a cook is whole.
			IFileManager::Get().Delete(*(Result.Output / TEXT("mod.info")), false, true, true);
			Result.Unwritten += TEXT("The tree is not packaged; make room and cook again.");
		}
		return Result;
	}
}

int RunCook(const FGlobalOptions& Options, const FCookCommandOptions& Cook)
{
	if (Cook.bAll == !Cook.Mod.IsEmpty())
	{
		throw FCommandError{EExitCode::BadInput, TEXT("cook: name one mod or give --all")};
	}
	const std::optional<ECookKind> Kind = Cook.Kind ? std::optional<ECookKind>(ParseKind(*Cook.Kind)) : std::nullopt;
	// Refused before anything is read or written.
	const FCookOptions CookOptions = ToCookOptions(Cook);
	LocateKit(Options.Kit);
	const FDatabaseGuard Guard;

	// The window would queue a job that can't start; here the missing program is named before anything is
	// deleted or written.
	const FString Editor = KitPaths::EditorExecutable();
	if (!IFileManager::Get().FileExists(*Editor))
	{
		throw FCommandError{EExitCode::JobFailed, FString::Printf(TEXT("%s: missing: the kit's editor, which cooks, is not in its place"), *Editor)};
	}

	FTesselSession Session;
	RequireReadableDatabase(Session);
	TArray<TSharedPtr<FModSetup>> Mods;
	if (Cook.bAll)
	{
		Mods = Session.GetMods();
	}
	else
	{
		const TSharedPtr<FModSetup> Mod = SelectMod(Session, Cook.Mod);
		const FString Refusal = WhyNotCookable(*Mod, KindFor(*Mod, Kind));
		if (!Refusal.IsEmpty())
		{
			throw FCommandError{EExitCode::BadInput, Refusal};
		}
		Mods.Add(Mod);
	}

	const FCommandOutput Output(Options.bJson);
	FPackagingWatch Progress;
	TArray<FCookResult> Results;
	for (const TSharedPtr<FModSetup>& Mod : Mods)
	{
		if (Cook.bAll)
		{
			Output.Progress(FString::Printf(TEXT("=== %s"), *Mod->ModDir));
		}
		if (StopRequested())
		{
			break;
		}
		Results.Add(CookOne(Session, Mod, Kind, CookOptions, Cook.TestOutput, Output, Progress));
		const FCookResult& Result = Results.Last();
		Output.Progress(Result.bRan ? FString::Printf(TEXT("Quillon Dev Kit: %s"), *Result.Dialog)
									: FString::Printf(TEXT("Left out: %s"), *Result.Dialog));
		if (!Result.Unwritten.IsEmpty())
		{
			FCommandOutput::Note(FString::Printf(TEXT("%s: packaging stopped early: %s"), *Result.Mod, *Result.Unwritten));
		}
	}

	// A cook gives a new mod its GUID and may take a title, which the window's closing save keeps. It changes
	// nothing else: when Mods.db changed meanwhile, the save would only undo that change.
	const bool bAnyRan = Results.ContainsByPredicate([](const FCookResult& Result) { return Result.bRan; });
	Guard.Save(
		[&](bool bChanged)
		{
			if (bAnyRan && !bChanged)
			{
				Session.Save();
			}
		});

	const bool bAllSucceeded = !Results.ContainsByPredicate([](const FCookResult& Result) { return !Result.bSuccess; });
	if (Output.IsJson())
	{
		TArray<TSharedPtr<FJsonValue>> Items;
		for (const FCookResult& Result : Results)
		{
			TSharedPtr<FJsonObject> Item = MakeShared<FJsonObject>();
			Item->SetStringField(TEXT("mod"), Result.Mod);
			Item->SetStringField(TEXT("kind"), KindName(Result.Kind));
			Item->SetBoolField(TEXT("success"), Result.bSuccess);
			Item->SetStringField(TEXT("dialog"), Result.Dialog);
			Item->SetStringField(TEXT("output"), Result.Output);
			Item->SetStringField(TEXT("unwritten"), Result.Unwritten);
			Items.Add(JsonObject(Item));
		}
		TSharedRef<FJsonObject> Document = MakeShared<FJsonObject>();
		Document->SetArrayField(TEXT("results"), Items);
		FCommandOutput::Print(Document);
	}
	else if (Cook.bAll)
	{
		Output.Line(TEXT(""));
		for (const FCookResult& Result : Results)
		{
			Output.Line(FString::Printf(TEXT("%s  %s (%s)"), Result.bSuccess ? TEXT("ok  ") : TEXT("FAIL"), *Result.Mod,
										KindName(Result.Kind)));
		}
	}
	return static_cast<int>(bAllSucceeded ? EExitCode::Success : EExitCode::JobFailed);
}
