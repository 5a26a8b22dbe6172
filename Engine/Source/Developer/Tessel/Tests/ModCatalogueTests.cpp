#include "STesselUI.h"
#include "cook/CookJob.h"
#include "TesselSession.h"
#include "TestKit.h"

#include "HAL/FileManager.h"
#include "HAL/PlatformFile.h"

#include <gtest/gtest.h>
#include <dirent.h>
#ifndef _WIN32
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace
{
	TSharedPtr<FModSetup> FindMod(const STesselTool& Tool, const FString& ModDir)
	{
		for (const TSharedPtr<FModSetup>& Mod : Tool.ModList)
		{
			if (Mod->ModDir == ModDir)
			{
				return Mod;
			}
		}
		return nullptr;
	}
}

TEST(ModRecordTests, NewRecordIsPublicWithAllElseEmpty)
{
	const FModSetup Record(TEXT("Islands"));
	EXPECT_EQ(Record.ModDir, FString(TEXT("Islands")));
	EXPECT_EQ(Record.Visibility, FString(TEXT("Public")));
	for (const FString* Field : {&Record.Maps, &Record.Title, &Record.Description, &Record.PreviewImage,
								 &Record.ChangeNotes, &Record.ItemSeamId, &Record.GUID, &Record.Tags})
	{
		EXPECT_TRUE(Field->IsEmpty());
	}
	const FModSetup Blank;
	EXPECT_TRUE(Blank.Visibility.IsEmpty());
	EXPECT_TRUE(Blank.ModDir.IsEmpty());
}

TEST(ModCatalogueTests, PathHelpersStandInTheKit)
{
	FTestKit Kit;
	EXPECT_EQ(KitPaths::ModToolsDir(), Kit.Root() / TEXT("ModTools"));
	EXPECT_EQ(KitPaths::ModOutputDir(), Kit.Root() / TEXT("ModTools/Output"));
	EXPECT_EQ(KitPaths::ModDatabase(), Kit.Root() / TEXT("Orrery/Saved/Mods.db"));
	EXPECT_EQ(KitPaths::ModsContentDir(), Kit.ModsDir());
}

TEST(ModCatalogueTests, EveryFolderIsAModWithTheMapsDirectlyInIt)
{
	FTestKit Kit;
	Kit.AddMod(TEXT("Islands"), {TEXT("Alpha.umap"), TEXT("notes.txt"), TEXT("Sub/Deep.umap")});
	Kit.AddMod(TEXT("Empty Mod"));
	Kit.AddMod(TEXT("Shouty"), {TEXT("A.UMAP"), TEXT("a.umap.umap"), TEXT("Mixed.UMap")});
	Kit.WriteFile(TEXT("Orrery/Content/Mods/stray.umap"), "not a mod");

	TSharedRef<STesselTool> ToolWidget = SNew(STesselTool);
	STesselTool& Tool = *ToolWidget;
	ASSERT_EQ(Tool.ModList.Num(), 3);
	EXPECT_EQ(Tool.SelectedMod, Tool.ModList[0]);

	EXPECT_EQ(FindMod(Tool, TEXT("Islands"))->Maps, FString(TEXT("Alpha")));
	EXPECT_TRUE(FindMod(Tool, TEXT("Empty Mod"))->Maps.IsEmpty());
	EXPECT_EQ(FindMod(Tool, TEXT("Empty Mod"))->Visibility, FString(TEXT("Public")));

	// Extension removed in any letter case and at every occurrence; commas between, none at the end.
	TArray<FString> Maps;
	const FString ShoutyMaps = FindMod(Tool, TEXT("Shouty"))->Maps;
	EXPECT_FALSE(ShoutyMaps.EndsWith(TEXT(",")));
	ShoutyMaps.ParseIntoArray(Maps, TEXT(","), false);
	Maps.Sort();
	EXPECT_EQ(Maps, (TArray<FString>{TEXT("A"), TEXT("Mixed"), TEXT("a")}));

	EXPECT_EQ(Tool.VisibilityOptions.Num(), 3);
	EXPECT_EQ(*Tool.VisibilityOptions[1], FString(TEXT("Friends Only")));
}

TEST(ModCatalogueTests, MapListFollowsTheListingOrder)
{
	FTestKit Kit;
	const FString Folder = Kit.AddMod(TEXT("Ordered"), {TEXT("m1.umap"), TEXT("m2.umap"), TEXT("m3.umap"), TEXT("notes.txt")});
	TSharedRef<STesselTool> ToolWidget = SNew(STesselTool);
	STesselTool& Tool = *ToolWidget;
	ASSERT_EQ(Tool.ModList.Num(), 1);
	const FString Maps = Tool.ModList[0]->Maps;

	// The three maps, each once, joined by commas, whatever order the folder gives them in.
	TArray<FString> Names;
	Maps.ParseIntoArray(Names, TEXT(","), false);
	TArray<FString> Sorted = Names;
	Sorted.Sort();
	EXPECT_EQ(Sorted, (TArray<FString>{TEXT("m1"), TEXT("m2"), TEXT("m3")})) << Maps;
	// The order is the folder's own, as the system lists it (an order nobody sorted).
	std::string Listed;
	if (DIR* Handle = opendir(Folder.ToNative().c_str()))
	{
		while (const dirent* Entry = readdir(Handle))
		{
			const std::string Name = Entry->d_name;
			if (Name.size() > 5 && Name.ends_with(".umap"))
			{
				Listed += (Listed.empty() ? "" : ",") + Name.substr(0, Name.size() - 5);
			}
		}
		closedir(Handle);
	}
	EXPECT_EQ(Maps.ToUtf8(), Listed);
}

TEST(ModCatalogueTests, NoModsFolderGivesAnEmptyListAndNoSelection)
{
	FTestKit Kit;
	TSharedRef<STesselTool> ToolWidget = SNew(STesselTool);
	STesselTool& Tool = *ToolWidget;
	EXPECT_EQ(Tool.ModList.Num(), 0);
	EXPECT_FALSE(Tool.SelectedMod.IsValid());

	// A file where the Mods folder should be is no folder of mods either.
	Kit.WriteFile(TEXT("Orrery/Content/Mods"), "a file");
	Tool.OnRefreshClicked();
	EXPECT_EQ(Tool.ModList.Num(), 0);
	EXPECT_FALSE(Tool.SelectedMod.IsValid());
}

TEST(ModCatalogueTests, UnreadableModsFolderGivesAnEmptyList)
{
#ifdef _WIN32
	GTEST_SKIP() << "a folder without read permission is POSIX's (chmod 0, tried as a user other than root)";
#else
	FTestKit Kit;
	Kit.AddMod(TEXT("Hidden"));
	chmod(Kit.Root().ToNative().c_str(), 0755);
	chmod(Kit.ModsDir().ToNative().c_str(), 0);
	// Root reads any folder, so the tool is built in a child that has given root up.
	const pid_t Child = fork();
	ASSERT_GE(Child, 0);
	if (Child == 0)
	{
		if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0))
		{
			_exit(20);
		}
		STesselTool Tool;
		Tool.RefreshModList(false);
		_exit(Tool.ModList.Num() == 0 && !Tool.SelectedMod ? 0 : 1);
	}
	int Status = 0;
	ASSERT_EQ(waitpid(Child, &Status, 0), Child);
	chmod(Kit.ModsDir().ToNative().c_str(), 0755);
	ASSERT_TRUE(WIFEXITED(Status)) << Status;
	EXPECT_EQ(WEXITSTATUS(Status), 0) << "the unreadable folder still gave records";

	// Readable again, the same folder gives its mod: the child's empty list came from the permissions.
	TSharedRef<STesselTool> ToolWidget = SNew(STesselTool);
	EXPECT_EQ(ToolWidget->ModList.Num(), 1);
#endif
}

TEST(ModCatalogueTests, OddCharactersInFolderNamesSurvive)
{
	FTestKit Kit;
#ifdef _WIN32
	// Windows forbids '"' in a name; the rest is just as odd.
	const FString Odd = TEXT("Île 'Quoted' , #1 — Σ");
#else
	const FString Odd = TEXT("Île \"Quoted\" , #1 — Σ");
#endif
	Kit.AddMod(Odd, {TEXT("Carte Île.umap")});
	TSharedRef<STesselTool> ToolWidget = SNew(STesselTool);
	STesselTool& Tool = *ToolWidget;
	ASSERT_EQ(Tool.ModList.Num(), 1);
	EXPECT_EQ(Tool.ModList[0]->ModDir, Odd);
	EXPECT_EQ(Tool.ModList[0]->Maps, FString(TEXT("Carte Île")));
}

TEST(ModCatalogueTests, RefreshSelectsTheFirstRecordAndDropsVanishedFolders)
{
	FTestKit Kit;
	Kit.AddMod(TEXT("One"));
	Kit.AddMod(TEXT("Two"));
	TSharedRef<STesselTool> ToolWidget = SNew(STesselTool);
	STesselTool& Tool = *ToolWidget;
	ASSERT_EQ(Tool.ModList.Num(), 2);
	const TSharedPtr<FModSetup> Before = Tool.SelectedMod;
	Tool.SelectedMod = Tool.ModList[1];

	FPlatformFileManager::Get().GetPlatformFile().DeleteDirectoryRecursively(*(Kit.ModsDir() / Before->ModDir));
	Tool.OnRefreshClicked();
	ASSERT_EQ(Tool.ModList.Num(), 1);
	EXPECT_NE(Tool.ModList[0]->ModDir, Before->ModDir);
	// The selection is always the first record of the new list, never one from before.
	EXPECT_EQ(Tool.SelectedMod, Tool.ModList[0]);
	EXPECT_NE(Tool.SelectedMod, Before);
}
