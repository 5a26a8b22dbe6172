#include "STesselUI.h"
#include "cook/CookJob.h"
#include "KitPaths.h"
#include "cook/CookQueue.h"
#include "TestKit.h"

#include "HAL/FileManager.h"
#include "HAL/PlatformFile.h"
#include "Misc/Compression.h"
#include "Testing/EditorServicesDouble.h"
#include "TestPrograms.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#ifndef _WIN32
#include <sys/stat.h>
#endif
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <thread>

namespace
{
	// A kit with the stand-in commandlet, a tool over it without a window, and a recording dialog service.
	struct FRunFixture
	{
		explicit FRunFixture(const TCHAR* EditorCommandLine = TEXT(""))
		{
			FCommandLine::Set(EditorCommandLine);
			ModId = 123456789;
			Kit.InstallCookCommandlet();
			Kit.AddMod(TEXT("Islands"), {TEXT("Alpha.umap"), TEXT("Beta.umap"), TEXT("Props/Crate.uasset")});
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
		void Tick(STesselTool& Target)
		{
			Target.Tick(FGeometry(), 0.0, 0.016f);
		}
		// Ticks until the queue is empty or the condition holds; fails the test after a generous time.
		template <typename ConditionType>
		bool TickUntil(ConditionType Condition, STesselTool* Target = nullptr)
		{
			const auto Deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
			while (!Condition())
			{
				if (std::chrono::steady_clock::now() > Deadline)
				{
					return false;
				}
				Tick(Target ? *Target : *Tool);
				std::this_thread::sleep_for(std::chrono::milliseconds(2));
			}
			return true;
		}
		bool RunToEnd()
		{
			return TickUntil([] { return ActiveJobs.Num() == 0; });
		}
		FString DialogText(int32 Index = 0) const
		{
			return Services->Dialogs.IsValidIndex(Index) ? Services->Dialogs[Index].Content->GetDisplayText() : FString();
		}
		bool LogHas(const TCHAR* Text) const
		{
			return Tool->LogMessages.ContainsByPredicate([Text](const TSharedPtr<FString>& Line) { return Line->Contains(Text); });
		}

		FTestKit Kit;
		TSharedPtr<FEditorServicesDouble> Services;
		TSharedPtr<STesselTool> Tool;
	};
}

TEST(LinePipelineTests, PiecesBecomeLines)
{
	FMonitoredJob Job(TEXT("/nonexistent"), FString());
	Job.OnProcessOutput(TEXT("ab"));
	Job.OnProcessOutput(TEXT("c\r\nd\n"));
	TArray<FString> Lines;
	Job.TakeCompletedLines(Lines);
	EXPECT_EQ(Lines, (TArray<FString>{TEXT("abc"), TEXT("d")}));
	EXPECT_TRUE(Job.PendingOutput.IsEmpty());

	Job.OnProcessOutput(TEXT("\n\n\r\nblank lines vanish\nthe last line has no end"));
	Job.OnProcessOutput(TEXT("\r"));
	Lines.Reset();
	Job.TakeCompletedLines(Lines);
	EXPECT_EQ(Lines, (TArray<FString>{TEXT("blank lines vanish")}));
	EXPECT_EQ(Job.PendingOutput, FString(TEXT("the last line has no end")));
	Job.SplitPendingOutput(true);
	Lines.Reset();
	Job.TakeCompletedLines(Lines);
	EXPECT_EQ(Lines, (TArray<FString>{TEXT("the last line has no end")}));
	EXPECT_TRUE(Job.PendingOutput.IsEmpty());
	Job.TakeCompletedLines(Lines);
	EXPECT_EQ(Lines.Num(), 1);
}

TEST(LinePipelineTests, CutsAnyTextInAnyPiecesLikeRemovingReturnsAndSplittingAtBreaks)
{
	// Tabs and other low control units, units from the top of the range and breaks at every offset of the
	// four-unit groups the search looks at; cut into pieces of every small length.
	const char16_t Alphabet[] = {u'a', u'\n', u'\r', u'\t', u'\x0B', u'\x0C', u'\x0E', u'\x8000', u'\xFFFD', u'\xFF0A', u' '};
	std::mt19937 Random(7);
	for (int Round = 0; Round < 200; ++Round)
	{
		std::u16string Text;
		const size_t Length = Random() % 90;
		for (size_t Index = 0; Index < Length; ++Index)
		{
			Text += Alphabet[Random() % (Random() % 3 == 0 ? std::size(Alphabet) : 3)];
		}
		std::u16string Plain;
		for (const char16_t Unit : Text)
		{
			if (Unit != u'\r')
			{
				Plain += Unit;
			}
		}
		TArray<FString> Expected;
		size_t Start = 0;
		for (size_t Break = Plain.find(u'\n'); Break != std::u16string::npos; Break = Plain.find(u'\n', Start))
		{
			if (Break > Start)
			{
				Expected.Add(FString(Plain.substr(Start, Break - Start)));
			}
			Start = Break + 1;
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
	EXPECT_EQ(Fixture.DialogText(), FString(TEXT("Job Successful!!")));
	// The request's own lines name the target too; this one only the server cook prints.
	EXPECT_TRUE(Fixture.LogHas(TEXT("Cook finished: 3 packages cooked for WindowsServer")));
	// The queue is empty: the next tick does nothing at all.
	Fixture.Tick(*Fixture.Tool);
	EXPECT_EQ(Fixture.Services->Dialogs.Num(), 1);
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
	const TSharedPtr<FModSetup>* Record = Fixture.Tool->ModList.FindByPredicate(
		[&](const TSharedPtr<FModSetup>& Mod) { return Mod->ModDir.ToNative() == RawName; });
	ASSERT_TRUE(Record) << "the folder was not listed under its own bytes";
	EXPECT_EQ((*Record)->Maps, FString(TEXT("Harbour")));
	Fixture.Tool->SelectedMod = *Record;
	Fixture.Tool->OnCookMapClicked();
	ASSERT_TRUE(Fixture.RunToEnd());
	FString Log;
	for (const TSharedPtr<FString>& Line : Fixture.Tool->LogMessages)
	{
		Log += *Line + TEXT("\n");
	}
	EXPECT_EQ(Fixture.DialogText(), FString(TEXT("Job Successful!!"))) << Log;

	std::vector<std::string> Packaged;
	std::error_code Error;
	for (const auto& Entry : std::filesystem::recursive_directory_iterator(KitPaths::ModOutputDir().ToNative(), Error))
	{
		if (Entry.path().filename() == "Harbour.umap.z")
		{
			Packaged.push_back(Entry.path().string());
		}
	}
	ASSERT_EQ(Packaged.size(), 1u);
	EXPECT_NE(Packaged[0].find("/" + RawName + "/"), std::string::npos) << Packaged[0];
#endif
}

namespace
{
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
}

TEST(JobRunnerTests, ADefaultCookLeavesThePackagedTreeAndNoStaging)
{
	FRunFixture Fixture;
	Fixture.Tool->OnCookMapClicked();
	ASSERT_TRUE(Fixture.RunToEnd());
	EXPECT_EQ(Fixture.DialogText(), FString(TEXT("Job Successful!!")));
	const FString Output = Fixture.Kit.Root() / TEXT("ModTools/Output/Islands");
	EXPECT_EQ(FilesUnder(Output), (std::vector<std::string>{
									  "WindowsNoEditor/Alpha.umap.z",
									  "WindowsNoEditor/Alpha.umap.z.uncompressed_size",
									  "WindowsNoEditor/Beta.umap.z",
									  "WindowsNoEditor/Beta.umap.z.uncompressed_size",
									  "WindowsNoEditor/Props/Crate.uasset.z",
									  "WindowsNoEditor/Props/Crate.uasset.z.uncompressed_size",
									  "WindowsNoEditor/mod.info",
									  "WindowsNoEditor/modmeta.info",
									  "mod.info",
									  "modmeta.info",
								  }))
		<< "the staging folder is gone, and the description files stand beside the target too";
	// "placeholder" is eleven bytes.
	EXPECT_EQ(FTempDirectory::ReadBytes(Output / TEXT("WindowsNoEditor/Beta.umap.z.uncompressed_size")), "11\r\n");
	EXPECT_EQ(FTempDirectory::ReadBytes(Output / TEXT("mod.info")), FTempDirectory::ReadBytes(Output / TEXT("WindowsNoEditor/mod.info")));
	EXPECT_EQ(FTempDirectory::ReadBytes(Output / TEXT("modmeta.info")),
			  FTempDirectory::ReadBytes(Output / TEXT("WindowsNoEditor/modmeta.info")));
	TUniquePtr<FArchive> Reader(IFileManager::Get().CreateFileReader(*(Output / TEXT("WindowsNoEditor/Props/Crate.uasset.z"))));
	ASSERT_TRUE(Reader);
	std::string Bytes(11, '\0');
	Reader->SerializeCompressed(Bytes.data(), 11, COMPRESS_ZLIB);
	EXPECT_FALSE(Reader->IsError());
	EXPECT_EQ(Bytes, "placeholder");
}

TEST(JobRunnerTests, ACookThatWritesNothingEndsWithNothingPackaged)
{
	FRunFixture Fixture;
	Fixture.Kit.WriteFile(TEXT("Orrery/Content/Mods/Islands/StandIn.mode"), "write-nothing");
	Fixture.Tool->OnCookMapClicked();
	ASSERT_TRUE(Fixture.RunToEnd());
	// The commandlet said it succeeded, and the tool believes its words; there is just nothing to package.
	EXPECT_EQ(Fixture.DialogText(), FString(TEXT("Job Successful!!")));
	EXPECT_EQ(FilesUnder(Fixture.Kit.Root() / TEXT("ModTools/Output/Islands")), std::vector<std::string>{});
	EXPECT_FALSE(FPaths::DirectoryExists(Fixture.Kit.Root() / TEXT("ModTools/Output/Islands/WindowsNoEditor_STAGING")));
}

TEST(JobRunnerTests, ACommandletThatCannotStartEndsEveryJobWithTheDialog)
{
	// No program at all, and a file that is no program.
	for (const bool bPresent : {false, true})
	{
		FRunFixture Fixture(TEXT("-modasdlc"));
		const FString Exe = Fixture.Kit.Root() / TEXT("Engine/Binaries/Win64/UE4Editor.exe");
		std::filesystem::remove(Exe.ToNative());
		if (bPresent)
		{
			Fixture.Kit.WriteFile(TEXT("Engine/Binaries/Win64/UE4Editor.exe"), "MZ but nothing that runs here");
#ifndef _WIN32
			chmod(Exe.ToNative().c_str(), 0755);
#endif
		}
		Fixture.Tool->OnCookMapClicked();
		ASSERT_EQ(ActiveJobs.Num(), 2);
		ASSERT_TRUE(Fixture.RunToEnd()) << "a job whose child never started must still end";
		ASSERT_EQ(Fixture.Services->Dialogs.Num(), 1);
		EXPECT_EQ(Fixture.DialogText(), FString(TEXT("Job Finsihed (possible errors)!!")));
		EXPECT_EQ(FilesUnder(Fixture.Kit.Root() / TEXT("ModTools/Output/Islands")), std::vector<std::string>{});
	}
}

TEST(JobRunnerTests, WithoutASuccessLineTheDialogSaysSo)
{
	FRunFixture Fixture;
	Fixture.Kit.WriteFile(TEXT("Orrery/Content/Mods/Islands/StandIn.mode"), "no-success");
	Fixture.Tool->OnCookMapClicked();
	ASSERT_TRUE(Fixture.RunToEnd());
	EXPECT_EQ(Fixture.DialogText(), FString(TEXT("Job Finsihed (possible errors)!!")));
	EXPECT_TRUE(Fixture.LogHas(TEXT("Failure - 1 error(s)")));
}

// The verdict looks for "Success" anywhere in any line, in any letter case, and for nothing less.
TEST(JobRunnerTests, TheVerdictFindsSuccessInAnyLetterCaseAnywhereInTheLog)
{
	FRunFixture Fixture;
	const std::pair<std::vector<const TCHAR*>, const TCHAR*> Logs[] = {
		{{TEXT("Cooking"), TEXT("BUILD SUCCESSFUL in 3s")}, TEXT("Job Successful!!")},
		{{TEXT("result: success")}, TEXT("Job Successful!!")},
		{{TEXT("unsuccessful, see above")}, TEXT("Job Successful!!")},
		{{TEXT("Succes - 1 error(s)"), TEXT("S u c c e s s")}, TEXT("Job Finsihed (possible errors)!!")},
		{{}, TEXT("Job Finsihed (possible errors)!!")},
	};
	for (const auto& [Lines, Verdict] : Logs)
	{
		const bool bSuccess = std::any_of(Lines.begin(), Lines.end(), [](const TCHAR* Line) { return SaysSuccess(Line); });
		EXPECT_EQ(DescribeCookVerdict(bSuccess).ToString(), FString(Verdict))
			<< (Lines.empty() ? "(no lines)" : FString(Lines[0]).ToUtf8());
	}
}

TEST(JobRunnerTests, ACrashingChildEndsItsJob)
{
	FRunFixture Fixture;
	Fixture.Kit.WriteFile(TEXT("Orrery/Content/Mods/Islands/StandIn.mode"), "crash");
	Fixture.Tool->OnCookMapClicked();
	ASSERT_TRUE(Fixture.RunToEnd());
	EXPECT_TRUE(Fixture.LogHas(TEXT("about to fail hard")));
	EXPECT_EQ(Fixture.DialogText(), FString(TEXT("Job Finsihed (possible errors)!!")));
}

TEST(JobRunnerTests, CancelDuringTheSecondTargetEndsTheWholeTreeWithoutDialog)
{
	FRunFixture Fixture(TEXT("-modasdlc"));
	Fixture.Kit.WriteFile(TEXT("Orrery/Content/Mods/Islands/StandIn.mode"), "hang@WindowsServer");
	Fixture.Tool->OnCookMapClicked();
	const FString FirstTarget = ActiveJobs[0]->TargetDir;
	const FString SecondStaging = ActiveJobs[1]->StagingDir;
	FString GrandchildLine;
	ASSERT_TRUE(Fixture.TickUntil([&]
								  {
									  for (const TSharedPtr<FString>& Line : Fixture.Tool->LogMessages)
									  {
										  if (Line->Contains(TEXT("(pid ")))
										  {
											  GrandchildLine = *Line;
										  }
									  }
									  return !GrandchildLine.IsEmpty();
								  }));
	// The first target's completion step has run.
	EXPECT_TRUE(FPaths::FileExists(FirstTarget / TEXT("Alpha.umap.z")));
	const int32 At = GrandchildLine.Find(TEXT("(pid "));
	const int32 Grandchild = std::atoi(GrandchildLine.Mid(At + 5).ToUtf8().c_str());
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
	Fixture.Tick(*Fixture.Tool);
	EXPECT_EQ(Fixture.Services->Dialogs.Num(), 0);
	// The second target's completion step never ran: its staging folder is still there.
	EXPECT_TRUE(FPaths::DirectoryExists(SecondStaging));
}

TEST(JobRunnerTests, ClearLogsDuringARunDropsWhatWasCleared)
{
	FRunFixture Fixture(TEXT("-modasdlc"));
	Fixture.Kit.WriteFile(TEXT("Orrery/Content/Mods/Islands/StandIn.mode"), "no-success@WindowsServer");
	Fixture.Tool->OnCookMapClicked();
	ASSERT_TRUE(Fixture.TickUntil([] { return ActiveJobs.Num() == 1; }));
	EXPECT_TRUE(Fixture.LogHas(TEXT("Success - 0 error(s)")));
	Fixture.Tool->OnClearLogsClicked();
	EXPECT_EQ(Fixture.Tool->LogMessages.Num(), 0);
	ASSERT_TRUE(Fixture.RunToEnd());
	EXPECT_TRUE(Fixture.LogHas(TEXT("Failure - 1 error(s)")));
	EXPECT_FALSE(Fixture.LogHas(TEXT("Success - 0 error(s)")));
	EXPECT_EQ(Fixture.DialogText(), FString(TEXT("Job Finsihed (possible errors)!!")));
}

TEST(JobRunnerTests, ANewToolTakesOverTheQueueOfAClosedOne)
{
	FRunFixture Fixture;
	Fixture.Kit.WriteFile(TEXT("Orrery/Content/Mods/Islands/StandIn.mode"), "flood:20000");
	Fixture.Tool->OnCookMapClicked();
	Fixture.Tick(*Fixture.Tool);
	ASSERT_EQ(ActiveJobs.Num(), 1);
	EXPECT_TRUE(ActiveJobs[0]->bStarted);
	Fixture.Tool.Reset(); // the tab closes; the job runs on

	TSharedRef<STesselTool> Reopened = SNew(STesselTool);
	EXPECT_EQ(Reopened->LogMessages.Num(), 0);
	EXPECT_TRUE(Reopened->CanCancel());
	ASSERT_TRUE(Fixture.TickUntil([] { return ActiveJobs.Num() == 0; }, &Reopened.Get()));
	EXPECT_EQ(Fixture.Services->Dialogs.Num(), 1);
	EXPECT_GT(Reopened->LogMessages.Num(), 0);
	// Its log holds only what it took itself: no banner of the request.
	EXPECT_FALSE(Reopened->LogMessages[0]->Contains(TEXT("Cooking Started")));
}

TEST(JobRunnerTests, PartialLinesCarriageReturnsAndInvalidBytesReachTheLogIntact)
{
	{
		FRunFixture Fixture(TEXT("-modasdlc"));
		Fixture.Kit.WriteFile(TEXT("Orrery/Content/Mods/Islands/StandIn.mode"), "partial@WindowsNoEditor");
		Fixture.Tool->OnCookMapClicked();
		ASSERT_TRUE(Fixture.TickUntil([] { return ActiveJobs.Num() == 1; }));
		EXPECT_TRUE(Fixture.LogHas(TEXT("LogCook: Display: half a line")));
		// Carriage returns are removed, not turned into line breaks; blank lines leave no entry.
		EXPECT_TRUE(Fixture.LogHas(TEXT("secondline with a bare return")));
		EXPECT_FALSE(Fixture.Tool->LogMessages.ContainsByPredicate([](const TSharedPtr<FString>& Line) { return Line->IsEmpty(); }));
		ASSERT_TRUE(Fixture.RunToEnd());
	}

	FRunFixture Second;
	Second.Kit.WriteFile(TEXT("Orrery/Content/Mods/Islands/StandIn.mode"), "invalid-utf8");
	Second.Tool->OnCookMapClicked();
	ASSERT_TRUE(Second.RunToEnd());
	const TSharedPtr<FString>* Bad = Second.Tool->LogMessages.FindByPredicate(
		[](const TSharedPtr<FString>& Line) { return Line->Contains(TEXT("bad bytes")); });
	ASSERT_NE(Bad, nullptr);
	EXPECT_EQ(**Bad, FString(u"LogCook: Warning: bad bytes \uFFFD\uFFFD and a NUL \uFFFD here"));
	EXPECT_EQ(Second.DialogText(), FString(TEXT("Job Successful!!")));
}
