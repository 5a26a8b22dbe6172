#include "STesselUI.h"
#include "TestKit.h"

#include "HAL/FileManager.h"
#include "Misc/Compression.h"
#include "Testing/EditorServicesDouble.h"
#include "TestPrograms.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <random>
#include <string>
#include <thread>
#ifndef _WIN32
#include <sys/stat.h>
#endif

namespace
{
	const FString Successful = TEXT("Job Successful!!");
	const FString PossibleErrors = TEXT("Job Finsihed (possible errors)!!");

	// Every file below Root, relative to it, sorted.
	std::vector<std::string> FilesUnder(const FString& Root)
	{
		std::vector<std::string> Files;
		std::error_code Error;
		const std::filesystem::path Base(Root.ToNative());
		for (const auto& Entry : std::filesystem::recursive_directory_iterator(Base, Error))
		{
			if (!Entry.is_directory())
			{
				Files.push_back(std::filesystem::relative(Entry.path(), Base).generic_string());
			}
		}
		std::sort(Files.begin(), Files.end());
		return Files;
	}

	// A kit with the stand-in commandlet in the given mode, a tool over it without a window, and a recording dialog
	// service.
	struct FRunFixture
	{
		explicit FRunFixture(const TCHAR* EditorCommandLine = TEXT(""), const char* Mode = "")
		{
			FCommandLine::Set(EditorCommandLine);
			ModId = 123456789;
			Kit.InstallCookCommandlet();
			Kit.AddMod(TEXT("Islands"), {TEXT("Alpha.umap"), TEXT("Beta.umap"), TEXT("Props/Crate.uasset")});
			Kit.WriteFile(TEXT("Orrery/Content/Mods/Islands/StandIn.mode"), Mode);
			Services = MakeShared<FEditorServicesDouble>();
			IEditorServices::Set(Services);
			Tool = SNew(STesselTool);
		}
		~FRunFixture()
		{
			Tool.Reset();
			CancelAllJobs();
			IEditorServices::Set(nullptr);
			FCommandLine::Set(FString());
		}
		void Tick(STesselTool* Target = nullptr) { (Target ? *Target : *Tool).Tick(FGeometry(), 0.0, 0.016f); }
		// Ticks until the condition holds; false after a generous time.
		template <typename ConditionType> bool TickUntil(ConditionType Condition, STesselTool* Target = nullptr)
		{
			const auto Deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
			while (!Condition())
			{
				if (std::chrono::steady_clock::now() > Deadline)
				{
					return false;
				}
				Tick(Target);
				std::this_thread::sleep_for(std::chrono::milliseconds(2));
			}
			return true;
		}
		bool RunToEnd()
		{
			return TickUntil([] { return ActiveJobs.Num() == 0; });
		}
		FString DialogText() const
		{
			return Services->Dialogs.IsValidIndex(0) ? Services->Dialogs[0].Content->GetDisplayText() : FString();
		}
		// The log, each line ended by a line feed.
		FString Log() const
		{
			FString Text;
			for (const TSharedPtr<FString>& Line : Tool->LogMessages)
			{
				Text += *Line + TEXT("\n");
			}
			return Text;
		}
		bool LogHas(const FString& Text) const { return Log().Contains(Text, ESearchCase::CaseSensitive); }
		FString Output() const { return Kit.Root() / TEXT("ModTools/Output/Islands"); }

		FTestKit Kit;
		TSharedPtr<FEditorServicesDouble> Services;
		TSharedPtr<STesselTool> Tool;
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
		TArray<FString> Expected;
		size_t Start = 0;
		for (size_t Break = Plain.find(u'\n'); Break != std::u16string::npos; Start = Break + 1, Break = Plain.find(u'\n', Start))
		{
			if (Break > Start)
			{
				Expected.Add(FString(Plain.substr(Start, Break - Start)));
			}
		}
		const FString Rest(Plain.substr(Start));

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

TEST(JobRunnerTests, TwoTargetsRunInOrderAndTheDialogFollowsTheLast)
{
	FRunFixture Fixture(TEXT("-modasdlc"));
	Fixture.Tool->OnCookGameModClicked();
	ASSERT_EQ(ActiveJobs.Num(), 2);
	const TSharedPtr<FCookJob> Second = ActiveJobs[1];
	const FString FirstTarget = ActiveJobs[0]->TargetDir;
	ASSERT_TRUE(Fixture.TickUntil([] { return ActiveJobs.Num() < 2; }));
	// The tick that removed the first launched the second.
	ASSERT_EQ(ActiveJobs.Num(), 1);
	EXPECT_EQ(ActiveJobs[0], Second);
	EXPECT_TRUE(Second->bStarted);
	EXPECT_EQ(Fixture.Services->Dialogs.Num(), 0);
	EXPECT_TRUE(FPaths::FileExists(FirstTarget / TEXT("Alpha.umap.z")));

	ASSERT_TRUE(Fixture.RunToEnd());
	ASSERT_EQ(Fixture.Services->Dialogs.Num(), 1);
	EXPECT_EQ(Fixture.Services->Dialogs[0].Title.ToString(), FString(TEXT("Quillon Dev Kit")));
	EXPECT_EQ(Fixture.DialogText(), Successful);
	// The request's own lines name the target too; this one only the server cook prints.
	EXPECT_TRUE(Fixture.LogHas(TEXT("Cook finished: 3 packages cooked for WindowsServer")));
	// The queue is empty: the next tick does nothing at all.
	Fixture.Tick();
	EXPECT_EQ(Fixture.Services->Dialogs.Num(), 1);
}

TEST(JobRunnerTests, ADefaultCookLeavesThePackagedTreeAndNoStaging)
{
	FRunFixture Fixture;
	Fixture.Tool->OnCookMapClicked();
	ASSERT_TRUE(Fixture.RunToEnd());
	EXPECT_EQ(Fixture.DialogText(), Successful);
	const FString Output = Fixture.Output();
	// The staging folder is gone, and the description files stand beside the target too.
	EXPECT_EQ(FilesUnder(Output),
			  (std::vector<std::string>{"WindowsNoEditor/Alpha.umap.z", "WindowsNoEditor/Alpha.umap.z.uncompressed_size",
										"WindowsNoEditor/Beta.umap.z", "WindowsNoEditor/Beta.umap.z.uncompressed_size",
										"WindowsNoEditor/Props/Crate.uasset.z", "WindowsNoEditor/Props/Crate.uasset.z.uncompressed_size",
										"WindowsNoEditor/mod.info", "WindowsNoEditor/modmeta.info", "mod.info", "modmeta.info"}));
	// "placeholder" is eleven bytes.
	EXPECT_EQ(FTempDirectory::ReadBytes(Output / TEXT("WindowsNoEditor/Beta.umap.z.uncompressed_size")), "11\r\n");
	for (const TCHAR* Name : {TEXT("mod.info"), TEXT("modmeta.info")})
	{
		EXPECT_EQ(FTempDirectory::ReadBytes(Output / Name), FTempDirectory::ReadBytes(Output / TEXT("WindowsNoEditor") / Name));
	}
	TUniquePtr<FArchive> Reader(IFileManager::Get().CreateFileReader(*(Output / TEXT("WindowsNoEditor/Props/Crate.uasset.z"))));
	ASSERT_TRUE(Reader);
	std::string Bytes(11, '\0');
	Reader->SerializeCompressed(Bytes.data(), 11, COMPRESS_ZLIB);
	EXPECT_FALSE(Reader->IsError());
	EXPECT_EQ(Bytes, "placeholder");
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
			const FString Exe = STesselTool::GetEditorExecutablePath();
			std::filesystem::remove(Exe.ToNative());
			if (std::string(Case.Mode) == "no program")
			{
				Fixture.Kit.WriteFile(TEXT("Engine/Binaries/Win64/UE4Editor.exe"), "MZ but nothing that runs here");
#ifndef _WIN32
				chmod(Exe.ToNative().c_str(), 0755);
#endif
			}
		}
		Fixture.Tool->OnCookMapClicked();
		ASSERT_EQ(ActiveJobs.Num(), 2);
		ASSERT_TRUE(Fixture.RunToEnd()) << Case.Mode;
		const FString Log = TEXT("\n") + Fixture.Log();
		EXPECT_EQ(Fixture.Services->Dialogs.Num(), 1) << Case.Mode;
		EXPECT_EQ(Fixture.DialogText(), Case.Verdict) << Case.Mode;
		for (const char16_t* Line : Case.Lines)
		{
			EXPECT_TRUE(Log.Contains(TEXT("\n") + FString(Line) + TEXT("\n"), ESearchCase::CaseSensitive)) << FString(Line) << Log;
		}
		EXPECT_FALSE(Log.Contains(TEXT("\n\n")) || Log.Contains(TEXT("\r"))) << Log;
		EXPECT_EQ(FPaths::FileExists(Fixture.Output() / TEXT("WindowsServer/Alpha.umap.z")), Case.bPackaged) << Case.Mode;
		EXPECT_EQ(FilesUnder(Fixture.Output()).empty(), !Case.bPackaged) << Case.Mode;
	}
}

// The verdict looks for "Success" anywhere in any line, in any letter case, and for nothing less.
TEST(JobRunnerTests, TheVerdictFindsSuccessInAnyLetterCaseAnywhereInTheLog)
{
	FRunFixture Fixture;
	const std::pair<std::vector<const TCHAR*>, FString> Logs[] = {
		{{TEXT("Cooking"), TEXT("BUILD SUCCESSFUL in 3s")}, Successful},
		{{TEXT("result: success")}, Successful},
		{{TEXT("unsuccessful, see above")}, Successful},
		{{TEXT("Succes - 1 error(s)"), TEXT("S u c c e s s")}, PossibleErrors},
		{{}, PossibleErrors},
	};
	for (const auto& [Lines, Verdict] : Logs)
	{
		Fixture.Tool->LogMessages.Empty();
		for (const TCHAR* Line : Lines)
		{
			Fixture.Tool->LogMessages.Add(MakeShared<FString>(Line));
		}
		Fixture.Services->Dialogs.Empty();
		Fixture.Tool->ShowResultDialog();
		ASSERT_EQ(Fixture.Services->Dialogs.Num(), 1);
		EXPECT_EQ(Fixture.DialogText(), Verdict) << Fixture.Log();
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
	const auto Deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
	while (!TestPrograms::IsGone(Grandchild) && std::chrono::steady_clock::now() < Deadline)
	{
		std::this_thread::sleep_for(std::chrono::milliseconds(10));
	}
	EXPECT_TRUE(TestPrograms::IsGone(Grandchild));
	Fixture.Tick();
	EXPECT_EQ(Fixture.Services->Dialogs.Num(), 0);
	// The second target's completion step never ran: its staging folder is still there.
	EXPECT_TRUE(FPaths::DirectoryExists(SecondStaging));
}

TEST(JobRunnerTests, ClearLogsDuringARunDropsWhatWasCleared)
{
	FRunFixture Fixture(TEXT("-modasdlc"), "no-success@WindowsServer");
	Fixture.Tool->OnCookMapClicked();
	ASSERT_TRUE(Fixture.TickUntil([] { return ActiveJobs.Num() == 1; }));
	EXPECT_TRUE(Fixture.LogHas(TEXT("Success - 0 error(s)")));
	Fixture.Tool->OnClearLogsClicked();
	EXPECT_EQ(Fixture.Tool->LogMessages.Num(), 0);
	ASSERT_TRUE(Fixture.RunToEnd());
	EXPECT_TRUE(Fixture.LogHas(TEXT("Failure - 1 error(s)")));
	EXPECT_FALSE(Fixture.LogHas(TEXT("Success - 0 error(s)")));
	EXPECT_EQ(Fixture.DialogText(), PossibleErrors);
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
	EXPECT_EQ(Fixture.Services->Dialogs.Num(), 1);
	EXPECT_GT(Reopened->LogMessages.Num(), 0);
	// Its log holds only what it took itself: no banner of the request.
	EXPECT_FALSE(Reopened->LogMessages[0]->Contains(TEXT("Cooking Started")));
}

TEST(JobRunnerTests, AFolderWhoseNameIsNotUtf8CooksUnderTheSameBytes)
{
#ifdef _WIN32
	GTEST_SKIP() << "Windows names are UTF-16 and reach us whole; a name of bytes that are no UTF-8 is POSIX's";
#else
	FRunFixture Fixture;
	// Latin-1 and two bytes that are never UTF-8.
	const std::string RawName = "Caf\xE9\xFF\xFE";
	Fixture.Kit.AddMod(FString::FromNative(RawName), {TEXT("Harbour.umap")});
	Fixture.Tool->OnRefreshClicked();
	const TSharedPtr<FModSetup>* Record =
		Fixture.Tool->ModList.FindByPredicate([&](const TSharedPtr<FModSetup>& Mod) { return Mod->ModDir.ToNative() == RawName; });
	ASSERT_TRUE(Record) << "the folder was not listed under its own bytes";
	EXPECT_EQ((*Record)->Maps, FString(TEXT("Harbour")));
	Fixture.Tool->SelectedMod = *Record;
	Fixture.Tool->OnCookMapClicked();
	ASSERT_TRUE(Fixture.RunToEnd());
	EXPECT_EQ(Fixture.DialogText(), Successful) << Fixture.Log();
	const std::vector<std::string> Packaged = FilesUnder(STesselTool::GetModOutputDir());
	EXPECT_NE(std::find(Packaged.begin(), Packaged.end(), RawName + "/WindowsNoEditor/Harbour.umap.z"), Packaged.end());
#endif
}
