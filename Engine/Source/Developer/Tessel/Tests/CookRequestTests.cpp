#include "ToolKit.h"

#include <gtest/gtest.h>

namespace
{
	// A tool with one selected record with the given maps, and the editor's command line as given.
	struct FCookFixture : FToolKit
	{
		explicit FCookFixture(const TCHAR* EditorCommandLine = TEXT(""), const TCHAR* Maps = TEXT("Foo_Map")) : FToolKit(EditorCommandLine)
		{
			AddMod(TEXT("Foo"), {TEXT("Foo_Map.umap")});
			OpenTool().SelectedMod->Maps = Maps;
			Tool->SelectedMod->GUID = TEXT("G");
		}
	};
}

// Each request as a mod author meets it: the log it starts (the banner, then each target's command line), the
// folders of each queued job and the mod number it leaves. The kit's folder stands as <kit>.
TEST(CookRequestTests, EveryKindModeAndFolderGivesItsCommandLinesAndJobs)
{
	struct FRequest
	{
		ECookKind Kind;
		const TCHAR* EditorCommandLine;
		const TCHAR* TestOutputDir;
		const TCHAR* Maps;
	};
	const FRequest Requests[] = {
		{ECookKind::Map, TEXT(""), TEXT(""), TEXT("Foo_Map")},
		{ECookKind::GameMod, TEXT(""), TEXT(""), TEXT("Foo_Map")},
		{ECookKind::TotalConversion, TEXT(""), TEXT(""), TEXT("Foo_Map")},
		{ECookKind::IslandExtension, TEXT(""), TEXT(""), TEXT("Foo_Map")},
		{ECookKind::Map, TEXT("-modasdlc"), TEXT(""), TEXT("Foo_Map")},
		{ECookKind::GameMod, TEXT("-modasdlc"), TEXT(""), TEXT("Foo_Map")},
		{ECookKind::TotalConversion, TEXT("-modasdlc"), TEXT(""), TEXT("Foo_Map")},
		{ECookKind::IslandExtension, TEXT("-modasdlc"), TEXT(""), TEXT("Foo_Map")},
		{ECookKind::Map, TEXT(""), TEXT("D"), TEXT("Foo_Map")},
		{ECookKind::GameMod, TEXT("-SetModID=4294967297 -modasdlc"), TEXT("C:\\Steam\\Mods\\"), TEXT("Foo_Map")},
		{ECookKind::Map, TEXT(""), TEXT(""), TEXT("a,b c")},
		{ECookKind::GameMod, TEXT(""), TEXT(""), TEXT("")},
		{ECookKind::IslandExtension, TEXT(""), TEXT(""), TEXT("/game/maps/seamlesstest/Isle,Other  Third")},
	};
	const TCHAR* const KindNames[] = {TEXT("Map"), TEXT("GameMod"), TEXT("TotalConversion"), TEXT("IslandExtension")};
	FString Text;
	for (const FRequest& Request : Requests)
	{
		FCookFixture Fixture(Request.EditorCommandLine, Request.Maps);
		Fixture.Tool->TestOutputDir = Request.TestOutputDir;
		Fixture.Tool->StartCook(Request.Kind);
		Text += FString::Printf(TEXT("== %s, editor '%s', test folder '%s', maps '%s': mod number %lld\n"),
								KindNames[static_cast<uint32>(Request.Kind)], Request.EditorCommandLine, Request.TestOutputDir,
								Request.Maps, ModId);
		for (const TSharedPtr<FString>& Line : Fixture.Tool->LogMessages)
		{
			Text += *Line + TEXT("\n");
		}
		for (const TSharedPtr<FCookJob>& Job : ActiveJobs)
		{
			Text += FString::Printf(TEXT("  target %s, staging %s, staged %s, kind %u%s%s%s\n"), *Job->TargetDir, *Job->StagingDir,
									*Job->StagedModDir, Job->CookKind, Job->bLastTarget ? TEXT(", last") : TEXT(""),
									Job->bTestOutput ? TEXT(", test run") : TEXT(""), Job->bStarted ? TEXT(", started") : TEXT(""));
		}
		Text = Text.Replace(*Fixture.Root(), TEXT("<kit>"), ESearchCase::CaseSensitive);
	}
	EXPECT_EQ(Text.ToUtf8(), ReadGolden("cook-requests.txt"));
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

// A test run deletes nothing; a normal run starts from an empty output tree, into which a total conversion's list
// of extra packages is copied with every package it names that exists.
TEST(CookRequestTests, NormalRunsStartFromAnEmptyTreeAndTestRunsDeleteNothing)
{
	FCookFixture Fixture;
	const FString Old = Fixture.WriteFile(TEXT("ModTools/Output/Foo/WindowsNoEditor/old.uasset.z"), "old");
	const FString InTest = Fixture.WriteFile(TEXT("TestDir/keep.txt"), "keep");
	Fixture.Tool->TestOutputDir = Fixture.Root() / TEXT("TestDir");
	Fixture.Tool->OnCookMapClicked();
	EXPECT_TRUE(FPaths::FileExists(Old));
	EXPECT_TRUE(FPaths::FileExists(InTest));

	Fixture.WriteFile(TEXT("Orrery/Content/Mods/Foo/AdditionalDependencies.txt"),
					  "/Game/Shared/Rock.uasset\r\n\r\n/Game/Missing/Gone.uasset\r\n/Game/Shared/Tree.umap");
	Fixture.WriteFile(TEXT("Orrery/Content/Shared/Rock.uasset"), "rock");
	Fixture.WriteFile(TEXT("Orrery/Content/Shared/Tree.umap"), "tree");
	Fixture.Tool->TestOutputDir.Empty();
	Fixture.Tool->OnCookTotalConversionClicked();
	const FString Base = Fixture.Root() / TEXT("ModTools/Output/Foo");
	EXPECT_FALSE(FPaths::FileExists(Old));
	EXPECT_TRUE(FPaths::FileExists(InTest));
	EXPECT_EQ(FTempDirectory::ReadBytes(Base / TEXT("AdditionalDependencies.txt")).substr(0, 24), "/Game/Shared/Rock.uasset");
	EXPECT_EQ(FTempDirectory::ReadBytes(Base / TEXT("Game/Shared/Rock.uasset")), "rock");
	EXPECT_EQ(FTempDirectory::ReadBytes(Base / TEXT("Game/Shared/Tree.umap")), "tree");
	EXPECT_FALSE(FPaths::FileExists(Base / TEXT("Game/Missing/Gone.uasset")));
}
