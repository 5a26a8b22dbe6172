#include "STesselUI.h"
#include "cook/CookJob.h"
#include "TesselSession.h"
#include "TestKit.h"

#include "HAL/PlatformFile.h"

#include <gtest/gtest.h>
#include <vector>

namespace
{
	// A tool with one selected record, and the editor's command line as given; the queue starts and ends empty.
	struct FCookFixture
	{
		explicit FCookFixture(const TCHAR* EditorCommandLine = TEXT(""), const TCHAR* Maps = TEXT("Foo_Map"))
		{
			FCommandLine::Set(EditorCommandLine);
			ModId = 123456789;
			Kit.AddMod(TEXT("Foo"), {TEXT("Foo_Map.umap")});
			Tool = SNew(STesselTool);
			Tool->SelectedMod->Maps = Maps;
			Tool->SelectedMod->GUID = TEXT("G");
		}
		~FCookFixture()
		{
			ActiveJobs.Empty();
			FCommandLine::Set(FString());
			ModId = 123456789;
		}
		FString CommandLineOf(int32 Target) const
		{
			// The log holds the banner, then one "Cook Job" line for each target.
			return Tool->LogMessages.IsValidIndex(Target + 1) ? *Tool->LogMessages[Target + 1] : FString();
		}
		FString Root() const { return Kit.Root(); }

		FTestKit Kit;
		TSharedPtr<STesselTool> Tool;
	};
}

TEST(CookRequestTests, TheTwoComposedCommandLinesByteForByte)
{
	{
		FCookFixture Fixture;
		Fixture.Tool->OnCookMapClicked();
		const FString R = Fixture.Root();
		EXPECT_EQ(Fixture.CommandLineOf(0),
				  FString(TEXT("Cook Job: Platform 'WindowsNoEditor' Command Line: \"Orrery/Orrery.uproject\" -run=Cook -Map=Foo_Map "
							   "-CookCultures=en -TargetPlatform=WindowsNoEditor -ModDir=Foo -ModGUID=G -pkgnfo=\"")) +
					  R + TEXT("/PackageInfo.bin\" -Output=\"") + R + TEXT("/ModTools/Output/Foo/WindowsNoEditor_STAGING\""));
		ASSERT_EQ(ActiveJobs.Num(), 1);
		EXPECT_EQ(*Fixture.Tool->LogMessages[0], FString(TEXT("************************** Cooking Started **************************")));
	}
	{
		FCookFixture Fixture;
		Fixture.Tool->TestOutputDir = TEXT("D");
		Fixture.Tool->OnCookMapClicked();
		EXPECT_EQ(Fixture.CommandLineOf(0),
				  FString(TEXT("Cook Job: Platform 'WindowsNoEditor' Command Line: \"Orrery/Orrery.uproject\" -run=Cook -Map=Foo_Map "
							   "-CookCultures=en -TargetPlatform=WindowsNoEditor -ModDir=123456789 -ModGUID=G -pkgnfo=\"")) +
					  Fixture.Root() + TEXT("/PackageInfo.bin\" -OriginalModDir=Foo -Output=\"D\""));
	}
}

TEST(CookRequestTests, KindsTargetsAndDirectories)
{
	// Each request's command lines as a mod author reads them in the log; R stands for the kit's folder.
	struct FCase
	{
		ECookKind Kind;
		bool bDlc;
		std::vector<const TCHAR*> Lines;
	};
	const TCHAR* const Head = TEXT("Command Line: \"Orrery/Orrery.uproject\" -run=Cook");
	const FCase Cases[] = {
		{ECookKind::Map, false,
		 {TEXT("'WindowsNoEditor' # -Map=Foo_Map -CookCultures=en -TargetPlatform=WindowsNoEditor -ModDir=Foo -ModGUID=G -pkgnfo=\"R/PackageInfo.bin\" -Output=\"R/ModTools/Output/Foo/WindowsNoEditor_STAGING\"")}},
		{ECookKind::GameMod, false,
		 {TEXT("'WindowsNoEditor' # -Map=Foo_Map -CookCultures=en -TargetPlatform=WindowsNoEditor -ModDir=Foo -GameMod -ModGUID=G -pkgnfo=\"R/PackageInfo.bin\" -Output=\"R/ModTools/Output/Foo/WindowsNoEditor_STAGING\"")}},
		{ECookKind::TotalConversion, false,
		 {TEXT("'WindowsNoEditor' # -Map=Foo_Map -CookCultures=en -TargetPlatform=WindowsNoEditor -TC_BASE=\"R/PackageInfo.bin\" -ModGUID=G -Output=\"R/ModTools/Output/Foo/WindowsNoEditor_STAGING\"")}},
		{ECookKind::IslandExtension, false,
		 {TEXT("'WindowsNoEditor' # -Map=/Game/Maps/SeamlessTest/Foo_Map -CookCultures=en -TargetPlatform=WindowsNoEditor -ModDir=Foo -IslandExtension -ModGUID=G -Output=\"R/ModTools/Output/Foo/WindowsNoEditor_STAGING\"")}},
		{ECookKind::Map, true,
		 {TEXT("'WindowsNoEditor' # -Map=Foo_Map -CookCultures=en -TargetPlatform=WindowsNoEditor -ModDir=Foo -ModGUID=G -pkgnfo=\"R/PackageInfo.bin\" -Output=\"R/ModTools/Output/Foo/WindowsNoEditor/123456789\""),
		  TEXT("'WindowsServer' # -Map=Foo_Map -CookCultures=en -TargetPlatform=WindowsServer -ModDir=Foo -ModGUID=G -pkgnfo=\"R/PackageInfo.bin\" -Output=\"R/ModTools/Output/Foo/WindowsServer/123456789\"")}},
		{ECookKind::GameMod, true,
		 {TEXT("'WindowsNoEditor' # -Map=Foo_Map -CookCultures=en -TargetPlatform=WindowsNoEditor -ModDir=Foo -GameMod -ModGUID=G -pkgnfo=\"R/PackageInfo.bin\" -Output=\"R/ModTools/Output/Foo/WindowsNoEditor/123456789\""),
		  TEXT("'WindowsServer' # -Map=Foo_Map -CookCultures=en -TargetPlatform=WindowsServer -ModDir=Foo -GameMod -ModGUID=G -pkgnfo=\"R/PackageInfo.bin\" -Output=\"R/ModTools/Output/Foo/WindowsServer/123456789\"")}},
		{ECookKind::TotalConversion, true,
		 {TEXT("'WindowsNoEditor' # -Map=Foo_Map -CookCultures=en -TargetPlatform=WindowsNoEditor -TC_BASE=\"R/PackageInfo.bin\" -ModGUID=G -modasdlc -BulkInfo=\"R/BulkDataInfo.bin\" -Output=\"R/ModTools/Output/Foo/WindowsNoEditor/123456789\""),
		  TEXT("'WindowsServer' # -Map=Foo_Map -CookCultures=en -TargetPlatform=WindowsServer -TC_BASE=\"R/PackageInfo.bin\" -ModGUID=G -modasdlc -BulkInfo=\"R/BulkDataInfo.bin\" -Output=\"R/ModTools/Output/Foo/WindowsServer/123456789\"")}},
		{ECookKind::IslandExtension, true,
		 {TEXT("'WindowsNoEditor' # -Map=/Game/Maps/SeamlessTest/Foo_Map -CookCultures=en -TargetPlatform=WindowsNoEditor -ModDir=Foo -IslandExtension -ModGUID=G -Output=\"R/ModTools/Output/Foo/WindowsNoEditor/123456789\""),
		  TEXT("'WindowsServer' # -Map=/Game/Maps/SeamlessTest/Foo_Map -CookCultures=en -TargetPlatform=WindowsServer -ModDir=Foo -IslandExtension -ModGUID=G -Output=\"R/ModTools/Output/Foo/WindowsServer/123456789\"")}},
	};
	for (const FCase& Case : Cases)
	{
		FCookFixture Fixture(Case.bDlc ? TEXT("-modasdlc") : TEXT(""));
		Fixture.Tool->StartCook(Case.Kind);
		const FString R = Fixture.Root();
		ASSERT_EQ(ActiveJobs.Num(), static_cast<int32>(Case.Lines.size()));
		for (int32 Index = 0; Index < ActiveJobs.Num(); ++Index)
		{
			const FString Expected = (FString(TEXT("Cook Job: Platform ")) + Case.Lines[Index])
										 .Replace(TEXT("#"), Head, ESearchCase::CaseSensitive)
										 .Replace(TEXT("\"R/"), *(TEXT("\"") + R + TEXT("/")), ESearchCase::CaseSensitive);
			EXPECT_EQ(Fixture.CommandLineOf(Index), Expected);

			const FCookJob& Job = *ActiveJobs[Index];
			const FString Target = Index == 0 ? TEXT("WindowsNoEditor") : TEXT("WindowsServer");
			EXPECT_EQ(Job.TargetDir, R + TEXT("/ModTools/Output/Foo/") + Target);
			EXPECT_EQ(Job.StagingDir, R + TEXT("/ModTools/Output/Foo/") + Target + (Case.bDlc ? TEXT("/123456789") : TEXT("_STAGING")));
			EXPECT_EQ(Job.StagedModDir, Case.Kind == ECookKind::TotalConversion ? Job.StagingDir : Job.StagingDir + TEXT("/Foo"));
			EXPECT_EQ(Job.CookKind, static_cast<uint32>(Case.Kind));
			EXPECT_EQ(Job.bLastTarget, Index == ActiveJobs.Num() - 1);
			EXPECT_FALSE(Job.bTestOutput);
			EXPECT_FALSE(Job.bStarted);
		}
	}
}

TEST(CookRequestTests, MapArguments)
{
	{
		FCookFixture Fixture(TEXT(""), TEXT("a,b c"));
		Fixture.Tool->OnCookMapClicked();
		EXPECT_TRUE(Fixture.CommandLineOf(0).Contains(TEXT("-run=Cook -Map=a+b -Map=c -CookCultures=en"), ESearchCase::CaseSensitive));
	}
	{
		FCookFixture Fixture(TEXT(""), TEXT(""));
		Fixture.Tool->OnCookGameModClicked();
		EXPECT_TRUE(Fixture.CommandLineOf(0).Contains(TEXT("-run=Cook  -CookCultures=en"), ESearchCase::CaseSensitive));
	}
	{
		FCookFixture Fixture(TEXT(""), TEXT("/game/maps/seamlesstest/Isle,Other  Third"));
		Fixture.Tool->OnCookMapExtensionClicked();
		EXPECT_TRUE(Fixture.CommandLineOf(0).Contains(
			TEXT("-Map=/game/maps/seamlesstest/Isle+Other -Map=/Game/Maps/SeamlessTest/Third -CookCultures"), ESearchCase::CaseSensitive))
			<< Fixture.CommandLineOf(0);
	}
}

TEST(CookRequestTests, TestRunsUseTheTestFolderAndTheModNumber)
{
	FCookFixture Fixture(TEXT("-SetModID=4294967297 -modasdlc"));
	Fixture.Tool->TestOutputDir = TEXT("C:\\Steam\\Mods\\");
	Fixture.Tool->OnCookGameModClicked();
	EXPECT_EQ(ModId, 4294967297LL);
	ASSERT_EQ(ActiveJobs.Num(), 2);
	const FCookJob& Job = *ActiveJobs[0];
	EXPECT_TRUE(Job.bTestOutput);
	EXPECT_EQ(Job.TargetDir, FString(TEXT("C:/Steam/Mods/WindowsNoEditor")));
	// "%d" of the number: its low 32 bits.
	EXPECT_EQ(Job.StagingDir, FString(TEXT("C:/Steam/Mods/WindowsNoEditor/1")));
	EXPECT_EQ(Job.StagedModDir, FString(TEXT("C:/Steam/Mods/WindowsNoEditor/1/1")));
	EXPECT_TRUE(Fixture.CommandLineOf(0).Contains(TEXT("-ModDir=1 -GameMod"), ESearchCase::CaseSensitive));
	EXPECT_TRUE(Fixture.CommandLineOf(0).Contains(TEXT("-OriginalModDir=Foo -Output="), ESearchCase::CaseSensitive));
}

TEST(CookRequestTests, OptionsTitleAndGuid)
{
	FCookFixture Fixture(TEXT("-ModTitle=Island,Pack"));
	Fixture.Tool->SelectedMod->GUID.Empty();
	Fixture.Tool->SelectedMod->Title = TEXT("edited by hand");
	Fixture.Tool->OnCookMapClicked();
	EXPECT_EQ(Fixture.Tool->SelectedMod->Title, FString(TEXT("Island")));
	const FString Guid = Fixture.Tool->SelectedMod->GUID;
	EXPECT_EQ(Guid.Len(), 32);
	EXPECT_EQ(ActiveJobs[0]->ModRecord.GUID, Guid);
	// The job's record is a copy: later edits don't reach it.
	Fixture.Tool->SelectedMod->Title = TEXT("changed later");
	EXPECT_EQ(ActiveJobs[0]->ModRecord.Title, FString(TEXT("Island")));

	// A second press while the first job waits: a new log, the same GUID, the jobs behind the first.
	Fixture.Tool->LogMessages.Add(MakeShared<FString>(TEXT("old line")));
	Fixture.Tool->OnCookGameModClicked();
	EXPECT_EQ(Fixture.Tool->SelectedMod->GUID, Guid);
	EXPECT_EQ(ActiveJobs.Num(), 2);
	EXPECT_EQ(Fixture.Tool->LogMessages.Num(), 2);
	EXPECT_EQ(ActiveJobs[1]->CookKind, static_cast<uint32>(ECookKind::GameMod));
}

TEST(CookRequestTests, NormalRunsDeleteTheOldTreeAndTestRunsDeleteNothing)
{
	FCookFixture Fixture;
	const FString Old = Fixture.Kit.WriteFile(TEXT("ModTools/Output/Foo/WindowsNoEditor/old.uasset.z"), "old");
	const FString InTest = Fixture.Kit.WriteFile(TEXT("TestDir/keep.txt"), "keep");
	Fixture.Tool->TestOutputDir = Fixture.Root() / TEXT("TestDir");
	Fixture.Tool->OnCookMapClicked();
	EXPECT_TRUE(FPaths::FileExists(Old));
	EXPECT_TRUE(FPaths::FileExists(InTest));
	Fixture.Tool->TestOutputDir.Empty();
	Fixture.Tool->OnCookMapClicked();
	EXPECT_FALSE(FPaths::DirectoryExists(Fixture.Root() / TEXT("ModTools/Output/Foo")));
	EXPECT_TRUE(FPaths::FileExists(InTest));
}

TEST(CookRequestTests, TotalConversionCopiesItsAdditionalDependencies)
{
	FCookFixture Fixture;
	Fixture.Kit.WriteFile(TEXT("Orrery/Content/Mods/Foo/AdditionalDependencies.txt"),
						  "/Game/Shared/Rock.uasset\r\n\r\n/Game/Missing/Gone.uasset\r\n/Game/Shared/Tree.umap");
	Fixture.Kit.WriteFile(TEXT("Orrery/Content/Shared/Rock.uasset"), "rock");
	Fixture.Kit.WriteFile(TEXT("Orrery/Content/Shared/Tree.umap"), "tree");
	Fixture.Tool->OnCookTotalConversionClicked();
	const FString Base = Fixture.Root() / TEXT("ModTools/Output/Foo");
	EXPECT_EQ(FTempDirectory::ReadBytes(Base / TEXT("AdditionalDependencies.txt")).substr(0, 24), "/Game/Shared/Rock.uasset");
	EXPECT_EQ(FTempDirectory::ReadBytes(Base / TEXT("Game/Shared/Rock.uasset")), "rock");
	EXPECT_EQ(FTempDirectory::ReadBytes(Base / TEXT("Game/Shared/Tree.umap")), "tree");
	EXPECT_FALSE(FPaths::FileExists(Base / TEXT("Game/Missing/Gone.uasset")));
}
