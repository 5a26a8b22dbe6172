#include "JsonTestUtils.h"
#include "STesselUI.h"
#include "TesselSession.h"
#include "TestKit.h"
#include "TestPrograms.h"

#include "HAL/FileManager.h"
#include "HAL/PlatformFile.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <iostream>
#include <random>
#ifndef _WIN32
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace
{
	// The records as "ModDir|Maps|Title|Visibility|GUID|Tags", each in quotes.
	FString Records(const STesselTool& Tool)
	{
		FString Text;
		for (const TSharedPtr<FModSetup>& Mod : Tool.ModList)
		{
			Text += FString::Printf(TEXT(" '%s|%s|%s|%s|%s|%s'"), *Mod->ModDir, *Mod->Maps, *Mod->Title, *Mod->Visibility, *Mod->GUID,
									*Mod->Tags);
		}
		return Text;
	}

	// A field of the first saved record, as the file holds it now.
	FString SavedField(const TCHAR* Key)
	{
		const FParseResult Saved = ParseJson(ReadModDatabaseText().GetStd());
		return Saved.bOk ? Saved.Object->GetArrayField(TEXT("Mods"))[0]->AsObject()->GetStringField(Key) : FString(TEXT("<unreadable>"));
	}
}

// Every field in its place, escapes and letters beyond ASCII, no password; what was saved loads back and saves
// again to the same bytes.
TEST(ModDatabaseTests, SaveWritesTheExactLayout)
{
	FTestKit Kit;
	const std::string Golden = ReadGolden("mods-db-two-records.json");
	ASSERT_EQ(Golden.substr(0, 4), std::string("{\0\r\0", 4)) << "little-endian units, no byte order mark";
	STesselTool Tool;
	Tool.SteamUsername = TEXT("author");
	Tool.SteamPassword = TEXT("hunter2-secret");
	TSharedPtr<FModSetup> First = MakeShared<FModSetup>(TEXT("Islands"));
	First->Maps = TEXT("Alpha,Beta");
	First->Title = TEXT("Island Pack");
	First->Description = TEXT("First line\nSecond line");
	First->PreviewImage = TEXT("C:/Kit/preview.png");
	First->Tags = TEXT("Map,Mod");
	TSharedPtr<FModSetup> Second = MakeShared<FModSetup>(TEXT("Île Σ"));
	Second->Title = FString(u"Say \"hi\" \\ \t tab\r\b\f");
	Second->Description = FString(u"\u65E5\u672C");
	Second->Visibility = TEXT("Friends Only");
	Second->ChangeNotes = TEXT("v2/fixes");
	Second->ItemSeamId = TEXT("2718281828");
	Second->GUID = TEXT("0123456789ABCDEF0123456789ABCDEF");
	Tool.ModList = {First, Second};
	EXPECT_TRUE(Tool.SaveModDatabase().IsEventHandled());
	EXPECT_EQ(FTempDirectory::ReadBytes(KitPaths::ModDatabase()), Golden);

	STesselTool Loaded;
	Loaded.LoadModDatabase(KitPaths::ModDatabase());
	ASSERT_EQ(Loaded.ModList.Num(), 2);
	EXPECT_EQ(Loaded.ModList[1]->Title, Second->Title);
	IFileManager::Get().Delete(*KitPaths::ModDatabase());
	Loaded.SaveModDatabase();
	EXPECT_EQ(FTempDirectory::ReadBytes(KitPaths::ModDatabase()), Golden);
}

// A file that parses gives its records and its user name, empty when it has none; records are made as the file is
// read, yet only the root's last "Mods" member counts. A file that is missing or doesn't parse gives no records and
// leaves the user name as it was. Each document of the golden file is followed by what it gives.
TEST(ModDatabaseTests, EachFileGivesItsRecordsAndUserNameOrNothing)
{
	FTestKit Kit;
	STesselTool Tool;
	const auto Load = [&Tool]
	{
		Tool.SteamUsername = TEXT("before");
		Tool.ModList = {MakeShared<FModSetup>(TEXT("stale"))};
		Tool.LoadModDatabase(KitPaths::ModDatabase());
		return FString::Printf(TEXT("user '%s', records"), *Tool.SteamUsername) + Records(Tool);
	};
	const std::string Golden = ReadGolden("mods-db-loads.txt");
	TArray<FString> Lines;
	FString::FromUtf8(Golden.c_str()).ParseIntoArray(Lines, TEXT("\n"), true);
	FString Results;
	for (int32 Index = 0; Index + 1 < Lines.Num(); Index += 2)
	{
		Kit.WriteModDatabase(ToUtf16Bytes(Lines[Index].GetStd()));
		Results += Lines[Index] + TEXT("\n") + Load() + TEXT("\n");
	}
	EXPECT_EQ(Results.ToUtf8(), Golden);

	const FString Unread = TEXT("user 'before', records");
	EXPECT_EQ(Load(), Unread) << "no file";
	FPlatformFileManager::Get().GetPlatformFile().CreateDirectoryTree(*KitPaths::ModDatabase());
	EXPECT_EQ(Load(), Unread) << "a folder in its place";
	FPlatformFileManager::Get().GetPlatformFile().DeleteDirectory(*KitPaths::ModDatabase());
	for (const std::string& Bytes : {std::string("{\"Mods\":[]} in UTF-8"), std::string("\xFF\xFE{\0}\0", 6), std::string("{\0x", 3)})
	{
		Kit.WriteModDatabase(Bytes);
		EXPECT_EQ(Load(), Unread) << Bytes;
	}
}

TEST(ModDatabaseTests, AFileThatDidNotLoadIsKeptBesideItBeforeTheSaveReplacesIt)
{
	FTestKit Kit;
	Kit.AddMod(TEXT("Fresh"));
	const FString Kept = KitPaths::ModDatabase() + TEXT(".unreadable");
	const FString KeptSecond = Kept + TEXT(".2");
	// Written by another editor as UTF-8 with a byte order mark: the titles in it are the user's.
	const std::string Foreign = "\xEF\xBB\xBF{\"Mods\":[{\"ModDir\":\"Fresh\",\"Title\":\"Months of work\"}]}";
	Kit.WriteModDatabase(Foreign);
	{
		TSharedRef<STesselTool> Tool = SNew(STesselTool);
		Tool->SaveModDatabase();
		Tool->SaveModDatabase();
		EXPECT_EQ(SavedField(TEXT("ModDir")), FString(TEXT("Fresh")));
		EXPECT_EQ(SavedField(TEXT("Visibility")), FString(TEXT("Public"))) << "the fresh record, not the foreign one";
		EXPECT_EQ(FTempDirectory::ReadBytes(Kept), Foreign);
		EXPECT_FALSE(FPaths::FileExists(KeptSecond)) << "the second save replaced a file that had loaded";
	}
	// A file that loads is replaced without a copy.
	TSharedRef<STesselTool>(SNew(STesselTool))->SaveModDatabase();
	EXPECT_FALSE(FPaths::FileExists(KeptSecond));
	// A later broken file is kept under the next free name; the first copy stays as it was.
	Kit.WriteModDatabase("{\"Mods\": [");
	TSharedRef<STesselTool>(SNew(STesselTool))->SaveModDatabase();
	EXPECT_EQ(FTempDirectory::ReadBytes(Kept), Foreign);
	EXPECT_EQ(FTempDirectory::ReadBytes(KeptSecond), "{\"Mods\": [");
	EXPECT_EQ(SavedField(TEXT("ModDir")), FString(TEXT("Fresh")));

	// When no copy can be made, the broken file is not replaced.
	Kit.WriteModDatabase("broken again");
	TSharedRef<STesselTool> Tool = SNew(STesselTool);
	for (int32 Number = 3; Number < 1000; ++Number)
	{
		FPlatformFileManager::Get().GetPlatformFile().CreateDirectoryTree(*FString::Printf(TEXT("%s.%d"), *Kept, Number));
	}
	Tool->SaveModDatabase();
	EXPECT_EQ(FTempDirectory::ReadBytes(KitPaths::ModDatabase()), "broken again");

#ifndef _WIN32
	// A file its owner may write but not read is neither readable nor copyable: it stays as it was, and no copy
	// claims to hold it.
	const FString Path = KitPaths::ModDatabase();
	IFileManager::Get().Delete(*KeptSecond);
	const std::string Theirs = "the user's records, which this user may write but not read";
	Kit.WriteModDatabase(Theirs);
	if (geteuid() == 0)
	{
		// The child gives up root's power to read any file: the file and its folders become its own.
		for (FString Folder = Path; Folder.Len() > Kit.Root().Len(); Folder = FPaths::GetPath(Folder))
		{
			ASSERT_EQ(chown(Folder.ToUtf8().c_str(), 65534, 65534), 0);
		}
		ASSERT_EQ(chmod(Kit.Root().ToUtf8().c_str(), 0777), 0);
	}
	ASSERT_EQ(chmod(Path.ToUtf8().c_str(), 0200), 0);
	EXPECT_EQ(TestPrograms::RunWithoutRoot(
				  []
				  {
					  TSharedRef<STesselTool> Saver = SNew(STesselTool);
					  Saver->SaveModDatabase();
					  return Saver->ModList.Num() == 1 ? 0 : 4;
				  }),
			  0);
	chmod(Path.ToUtf8().c_str(), 0600);
	EXPECT_EQ(FTempDirectory::ReadBytes(Path), Theirs);
	EXPECT_FALSE(FPaths::FileExists(KeptSecond));
#endif
}

TEST(ModDatabaseTests, MergeOfFoldersAndRecords)
{
	FTestKit Kit;
	Kit.AddMod(TEXT("KnownFolder"), {TEXT("NewMap.umap")});
	Kit.AddMod(TEXT("mymod"));
	Kit.AddMod(TEXT("BrandNew"), {TEXT("B.umap")});
	Kit.WriteModDatabase(ToUtf16Bytes(u"{\"SteamUsername\":\"me\",\"Mods\":[{\"ModDir\":\"Vanished\",\"Title\":\"Gone\"},"
									  u"{\"ModDir\":\"KnownFolder\",\"Title\":\"Kept\",\"Maps\":\"OldMap\",\"GUID\":\"G\"},"
									  u"{\"ModDir\":\"MyMod\"},{\"ModDir\":\"MYMOD\"}]}"));
	TSharedRef<STesselTool> ToolWidget = SNew(STesselTool);
	STesselTool& Tool = *ToolWidget;
	// Folder and record: the record as loaded, maps not looked at again. Folder only: a new record at the end.
	// Record only: dropped from the list. Two records of one folder in a hand-edited file both stay.
	EXPECT_EQ(Records(Tool), FString(TEXT(" 'KnownFolder|OldMap|Kept||G|' 'MyMod|||||' 'MYMOD|||||' 'BrandNew|B||Public||'")));
	EXPECT_EQ(Tool.SelectedMod, Tool.ModList[0]);
	EXPECT_EQ(Tool.SteamUsername, FString(TEXT("me")));

	// A refresh reads the file again: unsaved edits go, the selection is the first record again, and until a save
	// the file still holds the vanished record, so a restored folder gets its data back.
	Tool.ModList[1]->Title = TEXT("unsaved");
	Tool.SelectedMod = Tool.ModList[1];
	Kit.AddMod(TEXT("Vanished"));
	Tool.OnRefreshClicked();
	EXPECT_EQ(Records(Tool),
			  FString(TEXT(" 'Vanished||Gone|||' 'KnownFolder|OldMap|Kept||G|' 'MyMod|||||' 'MYMOD|||||' 'BrandNew|B||Public||'")));
	EXPECT_EQ(Tool.SelectedMod, Tool.ModList[0]);

	// After a save without the folder, it comes back as a new record.
	FPlatformFileManager::Get().GetPlatformFile().DeleteDirectoryRecursively(*(Kit.ModsDir() / TEXT("Vanished")));
	Tool.OnRefreshClicked();
	Tool.SaveModDatabase();
	Kit.AddMod(TEXT("Vanished"));
	Tool.OnRefreshClicked();
	EXPECT_EQ(Records(Tool),
			  FString(TEXT(" 'KnownFolder|OldMap|Kept||G|' 'MyMod|||||' 'MYMOD|||||' 'BrandNew|B||Public||' 'Vanished|||Public||'")));
}

// Each button changes one field of the selected record and saves every record at once, unsaved edits too. Tags
// are matched ignoring letter case and removed at every match, added without a duplicate check; an empty item
// between commas survives both.
TEST(ModDatabaseTests, ButtonsChangeOneFieldAndSaveEverythingAtOnce)
{
	FTestKit Kit;
	Kit.AddMod(TEXT("Published"));
	TSharedRef<STesselTool> Tool = SNew(STesselTool);
	Tool->SelectedMod->ItemSeamId = TEXT("12345");
	Tool->SelectedMod->Title = TEXT("unsaved title");
	EXPECT_TRUE(Tool->OnResetGuidClicked().IsEventHandled());
	const FString Guid = Tool->SelectedMod->GUID;
	EXPECT_EQ(Guid.Len(), 32);
	EXPECT_EQ(SavedField(TEXT("GUID")), Guid);
	EXPECT_EQ(SavedField(TEXT("Title")), FString(TEXT("unsaved title")));
	EXPECT_EQ(SavedField(TEXT("ItemSeamId")), FString(TEXT("12345")));
	Tool->OnResetGuidClicked();
	EXPECT_NE(Tool->SelectedMod->GUID, Guid);
	EXPECT_TRUE(Tool->OnResetPublisherIdClicked().IsEventHandled());
	EXPECT_TRUE(Tool->SelectedMod->ItemSeamId.IsEmpty());
	EXPECT_EQ(SavedField(TEXT("ItemSeamId")), FString());

	const std::tuple<bool, const TCHAR*, const TCHAR*> TagSteps[] = {
		{true, TEXT("Map"), TEXT("Map")},
		{true, TEXT("Visuals/Sounds"), TEXT("Map,Visuals/Sounds")},
		{true, TEXT("Map"), TEXT("Map,Visuals/Sounds,Map")},
		{false, TEXT("MAP"), TEXT("Visuals/Sounds")},
		{false, TEXT("visuals/sounds"), TEXT("")},
		{true, TEXT(",Mod"), TEXT(",Mod")},
		{true, TEXT("Weapons"), TEXT(",Mod,Weapons")},
		{false, TEXT("Mod"), TEXT(",Weapons")},
	};
	for (const auto& [bAdd, Tag, Expected] : TagSteps)
	{
		bAdd ? Tool->AddTag(Tag) : Tool->RemoveTag(Tag);
		EXPECT_EQ(Tool->SelectedMod->Tags, FString(Expected)) << FString(Tag);
		EXPECT_EQ(SavedField(TEXT("Tags")), FString(Expected)) << FString(Tag);
	}
}

TEST(ModDatabaseTests, KilledWhileSavingLeavesALoadableSavedState)
{
#ifdef _WIN32
	GTEST_SKIP() << "each saver is a fork ended by SIGKILL, which Windows has not";
#else
	FTestKit Kit;
	std::mt19937 Random(20261123);
	const int32 Rounds = 500;
	int32 KillsInsideASave = 0;
	for (int32 Round = 0; Round < Rounds; ++Round)
	{
		// Each state is recognisable: the user name carries its number and every record repeats it. The child says
		// when each save begins ("b") and when it has ended ("e"); it is killed at a random moment after its first
		// save of the round has ended.
		const TestPrograms::FKilledChild Run = TestPrograms::KillAfter(
			[Round]
			{
				STesselTool Tool;
				for (int32 Record = 0; Record < 200; ++Record)
				{
					Tool.ModList.Add(MakeShared<FModSetup>(FString::Printf(TEXT("Mod%d"), Record)));
				}
				for (int32 State = 0;; ++State)
				{
					Tool.SteamUsername = FString::Printf(TEXT("state-%d-%d"), Round, State);
					for (const TSharedPtr<FModSetup>& Mod : Tool.ModList)
					{
						Mod->Title = Tool.SteamUsername;
					}
					if (write(STDOUT_FILENO, "b", 1) != 1 || !Tool.SaveModDatabase().IsEventHandled() || write(STDOUT_FILENO, "e", 1) != 1)
					{
						_exit(1);
					}
				}
			},
			"e", std::chrono::microseconds(std::uniform_int_distribution<int>(0, 3000)(Random)));
		ASSERT_TRUE(Run.bKilled) << "round " << Round << ": " << Run.Said;
		const std::string& Said = Run.Said;
		const int32 Ended = static_cast<int32>(std::count(Said.begin(), Said.end(), 'e'));
		ASSERT_GT(Ended, 0) << "round " << Round << ": the child died before its first save ended";
		KillsInsideASave += Said.back() == 'b' ? 1 : 0;

		// The file holds the last state whose save ended, or the one after it when the kill came between the
		// rename and the child's word. Temporaries of killed writers may stay beside it.
		STesselTool Reader;
		Reader.LoadModDatabase(KitPaths::ModDatabase());
		const FString LastEnded = FString::Printf(TEXT("state-%d-%d"), Round, Ended - 1);
		const FString NextStarted = FString::Printf(TEXT("state-%d-%d"), Round, Ended);
		ASSERT_TRUE(Reader.SteamUsername == LastEnded || (Said.back() == 'b' && Reader.SteamUsername == NextStarted))
			<< "round " << Round << ": " << Reader.SteamUsername << " after " << Ended << " saves";
		ASSERT_EQ(Reader.ModList.Num(), 200);
		for (const TSharedPtr<FModSetup>& Mod : Reader.ModList)
		{
			ASSERT_EQ(Mod->Title, Reader.SteamUsername);
		}
	}
	std::cout << "kills: " << Rounds << ", inside a save: " << KillsInsideASave << std::endl;
	EXPECT_GE(KillsInsideASave, Rounds / 2) << "the kills must land inside saves, not between them";
#endif
}
