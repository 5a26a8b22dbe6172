#include "STesselUI.h"
#include "TesselSession.h"
#include "TestKit.h"
#include "TestPrograms.h"

#include <gtest/gtest.h>
#include <dirent.h>
#include <filesystem>
#ifndef _WIN32
#include <sys/stat.h>
#endif

// Every folder is a mod, whatever its name, found as public. Its maps are the ".umap" files directly in it, the
// extension removed in any letter case and at every occurrence, joined by commas in the order the folder lists
// them (an order nobody sorted).
TEST(ModCatalogueTests, EveryFolderIsAModWithTheMapsDirectlyInIt)
{
	FTestKit Kit;
#ifdef _WIN32
	const FString Odd = TEXT("Île 'Quoted' , #1 — Σ"); // Windows forbids '"' in a name
#else
	const FString Odd = TEXT("Île \"Quoted\" , #1 — Σ");
#endif
	Kit.AddMod(Odd, {TEXT("Carte Île.umap")});
	Kit.AddMod(TEXT("Empty Mod"));
	Kit.AddMod(TEXT("Shouty"), {TEXT("A.UMAP"), TEXT("a.umap.umap"), TEXT("Mixed.UMap"), TEXT("notes.txt"), TEXT("Sub/Deep.umap")});
	const FString Ordered = Kit.AddMod(TEXT("Ordered"), {TEXT("m1.umap"), TEXT("m2.umap"), TEXT("m3.umap"), TEXT("m4.umap")});
	Kit.WriteFile(TEXT("Orrery/Content/Mods/stray.umap"), "not a mod");
	TSharedRef<STesselTool> Tool = SNew(STesselTool);
	ASSERT_EQ(Tool->ModList.Num(), 4);
	EXPECT_EQ(Tool->SelectedMod, Tool->ModList[0]);
	TMap<FString, FString> Maps;
	for (const TSharedPtr<FModSetup>& Mod : Tool->ModList)
	{
		EXPECT_EQ(Mod->Visibility, FString(TEXT("Public")));
		Maps.Add(Mod->ModDir, Mod->Maps);
	}
	EXPECT_EQ(Maps.FindRef(Odd), FString(TEXT("Carte Île")));
	EXPECT_EQ(Maps.FindRef(TEXT("Empty Mod")), FString());
	TArray<FString> Shouty;
	Maps.FindRef(TEXT("Shouty")).ParseIntoArray(Shouty, TEXT(","), false);
	Shouty.Sort();
	EXPECT_EQ(Shouty, (TArray<FString>{TEXT("A"), TEXT("Mixed"), TEXT("a")})) << Maps.FindRef(TEXT("Shouty"));

	std::string Listed;
	DIR* Handle = opendir(Ordered.ToNative().c_str());
	ASSERT_TRUE(Handle);
	while (const dirent* Entry = readdir(Handle))
	{
		const std::string Name = Entry->d_name;
		Listed += Name.size() > 5 ? (Listed.empty() ? "" : ",") + Name.substr(0, Name.size() - 5) : "";
	}
	closedir(Handle);
	EXPECT_EQ(Maps.FindRef(TEXT("Ordered")).ToUtf8(), Listed);
}

// Without a readable folder of mods there are no records and no selection, and nothing the buttons do writes
// Mods.db: with no records the file stays as it is, whatever it holds.
TEST(ModCatalogueTests, NoReadableModsFolderGivesAnEmptyListAndNoSelection)
{
	FTestKit Kit;
	const std::string Existing = "arbitrary bytes \x01\x02 that are no database";
	Kit.WriteFile(TEXT("Orrery/Saved/Mods.db"), Existing);
	TSharedRef<STesselTool> Tool = SNew(STesselTool);
	EXPECT_EQ(Tool->ModList.Num(), 0);
	EXPECT_FALSE(Tool->SelectedMod.IsValid());
	Tool->SaveModDatabase();
	Tool->OnResetGuidClicked();
	Tool->OnResetPublisherIdClicked();
	Tool->AddTag(TEXT("Map"));
	Tool->RemoveTag(TEXT("Map"));
	EXPECT_EQ(FTempDirectory::ReadBytes(KitPaths::ModDatabase()), Existing);
	// A file where the Mods folder should be is no folder of mods either.
	Kit.WriteFile(TEXT("Orrery/Content/Mods"), "a file");
	Tool->OnRefreshClicked();
	EXPECT_EQ(Tool->ModList.Num(), 0);
	EXPECT_FALSE(Tool->SelectedMod.IsValid());
#ifndef _WIN32
	// A folder without read permission; root reads any folder, so the tool is built in a child that gave it up.
	std::filesystem::remove(Kit.ModsDir().ToNative());
	Kit.AddMod(TEXT("Hidden"));
	chmod(Kit.Root().ToNative().c_str(), 0755);
	chmod(Kit.ModsDir().ToNative().c_str(), 0);
	const int Result = TestPrograms::RunWithoutRoot(
		[]
		{
			STesselTool Unreadable;
			Unreadable.RefreshModList(false);
			return Unreadable.ModList.Num() == 0 && !Unreadable.SelectedMod ? 0 : 1;
		});
	chmod(Kit.ModsDir().ToNative().c_str(), 0755);
	EXPECT_EQ(Result, 0) << "the unreadable folder still gave records";
	// Readable again, the same folder gives its mod: the child's empty list came from the permissions.
	Tool->OnRefreshClicked();
	EXPECT_EQ(Tool->ModList.Num(), 1);
#endif
}
