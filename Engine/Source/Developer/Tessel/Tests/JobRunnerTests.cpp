#include "KitPaths.h"
#include "ToolKit.h"
#include "cook/CookQueue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>
#ifndef _WIN32
#include <sys/stat.h>
#endif

namespace
{
	const FString Successful = TEXT("Job Successful!!");
	const FString PossibleErrors = TEXT("Job Finsihed (possible errors)!!");

	// Every file below Root, relative to it, one a line, sorted.
	std::string FilesUnder(const FString& Root)
	{
		std::string Lines;
		for (const auto& Entry : FTempDirectory::ReadTree(Root))
		{
			Lines += Entry.first + "\n";
		}
		return Lines;
	}

	// A kit with the stand-in commandlet in the given mode and a tool over it without a window. Where names are
	// bytes (POSIX) the mod's folder name is no UTF-8, so that every cook shows the bytes reach the commandlet and
	// the output folder as they are.
	struct FRunFixture : FToolKit
	{
		explicit FRunFixture(const TCHAR* EditorCommandLine = TEXT(""), const char* Mode = "") : FToolKit(EditorCommandLine)
		{
			InstallCookCommandlet();
			AddMod(ModName, {TEXT("Alpha.umap"), TEXT("Beta.umap"), TEXT("Props/Crate.uasset")});
			WriteFile(TEXT("Orrery/Content/Mods/") + ModName + TEXT("/StandIn.mode"), Mode);
			OpenTool();
		}
		FString DialogText() const { return Editor->Dialogs.IsValidIndex(0) ? Editor->Dialogs[0].Content->GetDisplayText() : FString(); }
		bool LogHas(const FString& Text) const { return Log().Contains(Text, ESearchCase::CaseSensitive); }
		FString Output() const { return Root() / TEXT("ModTools/Output") / ModName; }

#ifdef _WIN32
		const FString ModName = TEXT("Islands");
#else
		const FString ModName = FString::FromNative("Isl\xE9nds\xFF\xFE");
#endif
	};
}

// Output cut into pieces of any length: every "\r" dropped, a line at each "\n", blank lines gone, the rest
// waiting until the child ends and then handed on as the last line. Tabs, other low control units and units from
// the top of the range stand at every offset of the four-unit groups the search looks at.
TEST(LinePipelineTests, CutsAnyTextInAnyPiecesLikeRemovingReturnsAndSplittingAtBreaks)
{
	const char16_t Alphabet[] = {u'a', u'\n', u'\r', u'\t', u'\x0B', u'\x0C', u'\x0E', u'\x8000', u'\xFFFD', u'\xFF0A', u' '};
	std::mt19937 Random(7);
	for (int Round = 0; Round < 200; ++Round)
	{
		std::u16string Text;
		for (size_t Length = Random() % 90; Text.size() < Length;)
		{
			Text += Alphabet[Random() % (Random() % 3 == 0 ? std::size(Alphabet) : 3)];
		}
		std::u16string Plain = Text;
		std::erase(Plain, u'\r');
		const size_t LastBreak = Plain.rfind(u'\n');
		TArray<FString> Expected;
		FString(LastBreak == std::u16string::npos ? u"" : Plain.substr(0, LastBreak)).ParseIntoArray(Expected, TEXT("\n"), true);
		const FString Rest(LastBreak == std::u16string::npos ? Plain : Plain.substr(LastBreak + 1));

		FMonitoredJob Job(TEXT("/nonexistent"), FString());
		const size_t Piece = 1 + Round % 9;
		for (size_t At = 0; At < Text.size(); At += Piece)
		{
			Job.OnProcessOutput(FString(Text.substr(At, Piece)));
		}
		TArray<FString> Lines;
		Job.TakeCompletedLines(Lines);
		EXPECT_EQ(Lines, Expected) << "round " << Round;
		EXPECT_EQ(Job.PendingOutput, Rest) << "round " << Round;
		Job.SplitPendingOutput(true);
		Lines.Reset();
		Job.TakeCompletedLines(Lines);
		EXPECT_EQ(Lines, Rest.IsEmpty() ? TArray<FString>() : TArray<FString>{Rest}) << "round " << Round;
		EXPECT_TRUE(Job.PendingOutput.IsEmpty());
	}
}

TEST(LinePipelineTests, ALineWithoutEndIsHandedOnInPartsOfBoundedLength)
{
	FMonitoredJob Job(TEXT("/nonexistent"), FString());
	const int32 Max = FMonitoredJob::MaxLineLength;
	// Two and a half lines' worth in pieces that don't line up with the bound, then an end and a short line.
	const FString Piece(std::u16string(static_cast<size_t>(Max / 3 + 7), u'x'));
	int32 Sent = 0;
	for (; Sent + Piece.Len() <= Max * 5 / 2; Sent += Piece.Len())
	{
		Job.OnProcessOutput(Piece);
		EXPECT_LT(Job.PendingOutput.Len(), Max);
	}
	Job.OnProcessOutput(TEXT("\r\nend\n") + FString(std::u16string(static_cast<size_t>(Max), u'y')) + TEXT("\n"));
	TArray<FString> Lines;
	Job.TakeCompletedLines(Lines);
	ASSERT_EQ(Lines.Num(), 5);
	EXPECT_EQ(Lines[0].Len(), Max);
	EXPECT_EQ(Lines[1].Len(), Max);
	EXPECT_EQ(Lines[2].Len(), Sent - 2 * Max);
	EXPECT_EQ(Lines[3], FString(TEXT("end")));
	EXPECT_EQ(Lines[4].Len(), Max) << "a line of exactly the bound stays one line";
	EXPECT_TRUE(Job.PendingOutput.IsEmpty());

	// A character of two units at the bound moves whole to the next part.
	Job.OnProcessOutput(FString(std::u16string(static_cast<size_t>(Max - 1), u'z')) + FString(u"\U0001F600!\n"));
	Lines.Reset();
	Job.TakeCompletedLines(Lines);
	ASSERT_EQ(Lines.Num(), 2);
	EXPECT_EQ(Lines[0].Len(), Max - 1);
	EXPECT_EQ(Lines[1], FString(u"\U0001F600!"));
}

// The monitor thread cuts lines while this thread takes them.
TEST(LinePipelineTests, AFloodingChildLosesNoLine)
{
	FMonitoredJob Job(FString(TestPaths::FakeChild), TEXT("lines 200000"));
	Job.bStarted = true;
	ASSERT_TRUE(Job.Process->Launch());
	int64 Count = 0;
	TArray<FString> Lines;
	while (Job.Process->IsRunning())
	{
		Job.TakeCompletedLines(Lines);
		Count += Lines.Num();
		Lines.Reset();
	}
	Job.SplitPendingOutput(true);
	Job.TakeCompletedLines(Lines);
	Count += Lines.Num();
	EXPECT_EQ(Count, 200000);
}

// A request of two targets from start to dialog: the tick that ends the first job starts the second; a log cleared
// between them leaves the verdict to what came after; the dialog follows the last. Each target is packaged without
// its staging folder, and the last one's description files stand beside them.
TEST(JobRunnerTests, TwoTargetsRunInOrderAndTheDialogFollowsTheLast)
{
	FRunFixture Fixture(TEXT("-modasdlc"), "no-success@WindowsServer");
	Fixture.Tool->OnCookGameModClicked();
	ASSERT_EQ(ActiveJobs.Num(), 2);
	const TSharedPtr<FCookJob> Second = ActiveJobs[1];
	ASSERT_TRUE(Fixture.TickUntil([] { return ActiveJobs.Num() < 2; }));
	ASSERT_EQ(ActiveJobs.Num(), 1);
	EXPECT_EQ(ActiveJobs[0], Second);
	EXPECT_TRUE(Second->bStarted);
	EXPECT_EQ(Fixture.Editor->Dialogs.Num(), 0);
	EXPECT_TRUE(Fixture.LogHas(TEXT("Success - 0 error(s)")));
	Fixture.Tool->OnClearLogsClicked();
	EXPECT_EQ(Fixture.Tool->LogMessages.Num(), 0);

	ASSERT_TRUE(Fixture.RunToEnd());
	ASSERT_EQ(Fixture.Editor->Dialogs.Num(), 1);
	EXPECT_EQ(Fixture.Editor->Dialogs[0].Title.ToString(), FString(TEXT("Quillon Dev Kit")));
	EXPECT_EQ(Fixture.DialogText(), PossibleErrors);
	EXPECT_FALSE(Fixture.LogHas(TEXT("Success - 0 error(s)")));
	EXPECT_TRUE(Fixture.LogHas(TEXT("Cook finished: 3 packages cooked for WindowsServer")));
	// The queue is empty: the next tick does nothing at all.
	Fixture.Tick();
	EXPECT_EQ(Fixture.Editor->Dialogs.Num(), 1);
	EXPECT_EQ(FilesUnder(Fixture.Output()), ReadGolden("packaged-tree-two-targets.txt"));
	for (const TCHAR* Name : {TEXT("mod.info"), TEXT("modmeta.info")})
	{
		EXPECT_EQ(FTempDirectory::ReadBytes(Fixture.Output() / Name),
				  FTempDirectory::ReadBytes(Fixture.Output() / TEXT("WindowsServer") / Name));
	}
}

// However the commandlet ends, or fails to start, every job of the request ends and one dialog gives the verdict.
// Its lines reach the log whole, without carriage returns or blank entries, bytes that are no UTF-8 as U+FFFD.
TEST(JobRunnerTests, EveryWayACookEndsEndsEveryJobWithOneDialog)
{
	struct FCase
	{
		const char* Mode; // the stand-in's, or what stands where the editor should
		FString Verdict;
		std::vector<const char16_t*> Lines;
		bool bPackaged;
	};
	const FCase Cases[] = {
		// The commandlet said it succeeded, and the tool believes its words; there is just nothing to package.
		{"write-nothing", Successful, {u"LogCook: Display: Cook finished: 0 packages cooked for WindowsServer"}, false},
		{"no-success", PossibleErrors, {u"Failure - 1 error(s), 0 warning(s)"}, true},
		{"crash", PossibleErrors, {u"LogCook: Display: about to fail hard"}, false},
		{"partial", Successful, {u"LogCook: Display: half a line", u"secondline with a bare return"}, true},
		{"invalid-utf8", Successful, {u"LogCook: Warning: bad bytes \uFFFD\uFFFD and a NUL \uFFFD here"}, true},
		{"no editor", PossibleErrors, {}, false},
		{"no program", PossibleErrors, {}, false},
	};
	for (const FCase& Case : Cases)
	{
		FRunFixture Fixture(TEXT("-modasdlc"), Case.Mode);
		if (std::string(Case.Mode).starts_with("no "))
		{
			const FString Exe = KitPaths::EditorExecutable();
			std::filesystem::remove(Exe.ToNative());
			if (std::string(Case.Mode) == "no program")
			{
				Fixture.WriteFile(TEXT("Engine/Binaries/Win64/UE4Editor.exe"), "MZ but nothing that runs here");
#ifndef _WIN32
				chmod(Exe.ToNative().c_str(), 0755);
#endif
			}
		}
		Fixture.Tool->OnCookMapClicked();
		ASSERT_EQ(ActiveJobs.Num(), 2);
		ASSERT_TRUE(Fixture.RunToEnd()) << Case.Mode;
		const FString Log = TEXT("\n") + Fixture.Log();
		EXPECT_EQ(Fixture.Editor->Dialogs.Num(), 1) << Case.Mode;
		EXPECT_EQ(Fixture.DialogText(), Case.Verdict) << Case.Mode;
		for (const char16_t* Line : Case.Lines)
		{
			EXPECT_TRUE(Log.Contains(TEXT("\n") + FString(Line) + TEXT("\n"), ESearchCase::CaseSensitive)) << FString(Line) << Log;
		}
		EXPECT_FALSE(Log.Contains(TEXT("\n\n")) || Log.Contains(TEXT("\r"))) << Log;
		EXPECT_EQ(FilesUnder(Fixture.Output()).empty(), !Case.bPackaged) << Case.Mode;
	}
}

// The verdict looks for "Success" anywhere in any line, in any letter case, and for nothing less.
TEST(JobRunnerTests, TheVerdictFindsSuccessInAnyLetterCaseAnywhereInTheLog)
{
	const std::pair<std::vector<const TCHAR*>, FString> Logs[] = {
		{{TEXT("Cooking"), TEXT("BUILD SUCCESSFUL in 3s")}, Successful},
		{{TEXT("result: success")}, Successful},
		{{TEXT("unsuccessful, see above")}, Successful},
		{{TEXT("Succes - 1 error(s)"), TEXT("S u c c e s s")}, PossibleErrors},
		{{}, PossibleErrors},
	};
	for (const auto& [Lines, Verdict] : Logs)
	{
		const bool bSuccess = std::any_of(Lines.begin(), Lines.end(), [](const TCHAR* Line) { return SaysSuccess(Line); });
		EXPECT_EQ(DescribeCookVerdict(bSuccess).ToString(), Verdict) << (Lines.empty() ? "(no lines)" : FString(Lines[0]).ToUtf8());
	}
}

TEST(JobRunnerTests, CancelDuringTheSecondTargetEndsTheWholeTreeWithoutDialog)
{
	FRunFixture Fixture(TEXT("-modasdlc"), "hang@WindowsServer");
	Fixture.Tool->OnCookMapClicked();
	const FString FirstTarget = ActiveJobs[0]->TargetDir;
	const FString SecondStaging = ActiveJobs[1]->StagingDir;
	ASSERT_TRUE(Fixture.TickUntil([&] { return Fixture.LogHas(TEXT("(pid ")); }));
	// The first target's completion step has run.
	EXPECT_TRUE(FPaths::FileExists(FirstTarget / TEXT("Alpha.umap.z")));
	const FString Log = Fixture.Log();
	const int32 Grandchild = std::atoi(Log.Mid(Log.Find(TEXT("(pid ")) + 5).ToUtf8().c_str());
	ASSERT_GT(Grandchild, 0);
	EXPECT_FALSE(TestPrograms::IsGone(Grandchild));

	EXPECT_TRUE(Fixture.Tool->CanCancel());
	Fixture.Tool->OnCancelClicked();
	EXPECT_EQ(ActiveJobs.Num(), 0);
	EXPECT_FALSE(Fixture.Tool->CanCancel());
	EXPECT_TRUE(Fixture.TickUntil([&] { return TestPrograms::IsGone(Grandchild); }));
	EXPECT_EQ(Fixture.Editor->Dialogs.Num(), 0);
	// The second target's completion step never ran: its staging folder is still there.
	EXPECT_TRUE(FPaths::DirectoryExists(SecondStaging));
}

// The tab closes while a job runs: the job runs on, and the next tool takes its lines and gives the dialog.
TEST(JobRunnerTests, ANewToolTakesOverTheQueueOfAClosedOne)
{
	FRunFixture Fixture(TEXT(""), "flood:20000");
	Fixture.Tool->OnCookMapClicked();
	Fixture.Tick();
	ASSERT_EQ(ActiveJobs.Num(), 1);
	EXPECT_TRUE(ActiveJobs[0]->bStarted);
	Fixture.Tool.Reset();

	TSharedRef<STesselTool> Reopened = SNew(STesselTool);
	EXPECT_EQ(Reopened->LogMessages.Num(), 0);
	EXPECT_TRUE(Reopened->CanCancel());
	ASSERT_TRUE(Fixture.TickUntil([] { return ActiveJobs.Num() == 0; }, &Reopened.Get()));
	EXPECT_EQ(Fixture.Editor->Dialogs.Num(), 1);
	ASSERT_GT(Reopened->LogMessages.Num(), 0);
	// Its log holds only what it took itself: no banner of the request.
	EXPECT_FALSE(Reopened->LogMessages[0]->Contains(TEXT("Cooking Started")));
	// One target: packaged beside no staging folder, the description files copied up.
	EXPECT_EQ(FilesUnder(Fixture.Output()), ReadGolden("packaged-tree-one-target.txt"));
}
