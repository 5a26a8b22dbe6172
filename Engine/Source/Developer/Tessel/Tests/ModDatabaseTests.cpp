#include "JsonTestUtils.h"
#include "STesselUI.h"
#include "cook/CookJob.h"
#include "TesselSession.h"
#include "TestKit.h"

#include "HAL/PlatformFile.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <csignal>
#include <iostream>
#include <random>
#ifndef _WIN32
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace
{
	std::string Utf16File(const std::u16string& Text)
	{
		const TArray<uint8> Bytes = ToUtf16Bytes(Text);
		return std::string(reinterpret_cast<const char*>(Bytes.GetData()), static_cast<size_t>(Bytes.Num()));
	}

	std::u16string ReadDatabase()
	{
		return FromUtf16Bytes(FTempDirectory::ReadBytes(KitPaths::ModDatabase()));
	}

	void WriteDatabase(const FTestKit& Kit, const std::u16string& Text)
	{
		Kit.WriteFile(TEXT("Orrery/Saved/Mods.db"), Utf16File(Text));
	}

	const std::u16string TwoRecordFile =
		u"{\r\n"
		u"\t\"SteamUsername\": \"author\",\r\n"
		u"\t\"Mods\": [\r\n"
		u"\t\t{\r\n"
		u"\t\t\t\"ModDir\": \"Islands\",\r\n"
		u"\t\t\t\"Maps\": \"Alpha,Beta\",\r\n"
		u"\t\t\t\"Title\": \"Island Pack\",\r\n"
		u"\t\t\t\"Description\": \"First line\\nSecond line\",\r\n"
		u"\t\t\t\"PreviewImage\": \"C:/Kit/preview.png\",\r\n"
		u"\t\t\t\"Visibility\": \"Public\",\r\n"
		u"\t\t\t\"ChangeNotes\": \"\",\r\n"
		u"\t\t\t\"ItemSeamId\": \"\",\r\n"
		u"\t\t\t\"GUID\": \"\",\r\n"
		u"\t\t\t\"Tags\": \"Map,Mod\"\r\n"
		u"\t\t},\r\n"
		u"\t\t{\r\n"
		u"\t\t\t\"ModDir\": \"\u00CEle \u03A3\",\r\n"
		u"\t\t\t\"Maps\": \"\",\r\n"
		u"\t\t\t\"Title\": \"Say \\\"hi\\\" \\\\ \\t tab\\r\\b\\f\",\r\n"
		u"\t\t\t\"Description\": \"\u65E5\u672C\",\r\n"
		u"\t\t\t\"PreviewImage\": \"\",\r\n"
		u"\t\t\t\"Visibility\": \"Friends Only\",\r\n"
		u"\t\t\t\"ChangeNotes\": \"v2/fixes\",\r\n"
		u"\t\t\t\"ItemSeamId\": \"2718281828\",\r\n"
		u"\t\t\t\"GUID\": \"0123456789ABCDEF0123456789ABCDEF\",\r\n"
		u"\t\t\t\"Tags\": \"\"\r\n"
		u"\t\t}\r\n"
		u"\t]\r\n"
		u"}";
}

TEST(ModDatabaseTests, SaveWritesTheExactLayout)
{
	FTestKit Kit;
	STesselTool Tool;
	Tool.SteamUsername = TEXT("author");
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
	Tool.SteamPassword = TEXT("hunter2-secret");

	EXPECT_TRUE(Tool.SaveModDatabase().IsEventHandled());
	const std::string Bytes = FTempDirectory::ReadBytes(KitPaths::ModDatabase());
	EXPECT_EQ(Bytes, Utf16File(TwoRecordFile));
	// Little-endian units, no byte order mark, no line end after the last brace.
	EXPECT_EQ(Bytes.substr(0, 4), std::string("{\0\r\0", 4));
	EXPECT_EQ(Bytes.substr(Bytes.size() - 2), std::string("}\0", 2));
	EXPECT_EQ(ReadDatabase().find(u"hunter2"), std::u16string::npos);
}

TEST(ModDatabaseTests, LoadGivesBackEveryFieldAndTheOrder)
{
	FTestKit Kit;
	WriteDatabase(Kit, TwoRecordFile);
	STesselTool Tool;
	Tool.LoadModDatabase(KitPaths::ModDatabase());
	EXPECT_EQ(Tool.SteamUsername, FString(TEXT("author")));
	ASSERT_EQ(Tool.ModList.Num(), 2);
	const FModSetup& Second = *Tool.ModList[1];
	EXPECT_EQ(Tool.ModList[0]->ModDir, FString(TEXT("Islands")));
	EXPECT_EQ(Tool.ModList[0]->Maps, FString(TEXT("Alpha,Beta")));
	EXPECT_EQ(Tool.ModList[0]->Description, FString(TEXT("First line\nSecond line")));
	EXPECT_EQ(Second.ModDir, FString(TEXT("Île Σ")));
	EXPECT_EQ(Second.Title, FString(u"Say \"hi\" \\ \t tab\r\b\f"));
	EXPECT_EQ(Second.Visibility, FString(TEXT("Friends Only")));
	EXPECT_EQ(Second.ChangeNotes, FString(TEXT("v2/fixes")));
	EXPECT_EQ(Second.ItemSeamId, FString(TEXT("2718281828")));
	EXPECT_EQ(Second.GUID, FString(TEXT("0123456789ABCDEF0123456789ABCDEF")));

	// Saving what was loaded reproduces the file byte for byte.
	Tool.SaveModDatabase();
	EXPECT_EQ(ReadDatabase(), TwoRecordFile);
}

TEST(ModDatabaseTests, OldAndPartialFilesLoad)
{
	FTestKit Kit;
	WriteDatabase(Kit, u"{\"Mods\":[{\"ModDir\":\"Old\",\"Maps\":\"M\",\"Title\":\"T\"},"
					   u"\"not an object\",{\"ModDir\":\"Typed\",\"Title\":42,\"Tags\":true,\"GUID\":[1]}],"
					   u"\"Extra\":{\"ignored\":1}}");
	STesselTool Tool;
	Tool.SteamUsername = TEXT("before");
	Tool.LoadModDatabase(KitPaths::ModDatabase());
	// A file that parses sets the user name, empty when it has none.
	EXPECT_TRUE(Tool.SteamUsername.IsEmpty());
	ASSERT_EQ(Tool.ModList.Num(), 3);
	const FModSetup& Old = *Tool.ModList[0];
	EXPECT_EQ(Old.Title, FString(TEXT("T")));
	EXPECT_TRUE(Old.Visibility.IsEmpty()); // no "Public" default from the file
	EXPECT_TRUE(Old.ItemSeamId.IsEmpty() && Old.GUID.IsEmpty() && Old.Tags.IsEmpty());
	EXPECT_TRUE(Tool.ModList[1]->ModDir.IsEmpty());
	EXPECT_EQ(Tool.ModList[2]->Title, FString(TEXT("42")));
	EXPECT_EQ(Tool.ModList[2]->Tags, FString(TEXT("true")));
	EXPECT_TRUE(Tool.ModList[2]->GUID.IsEmpty());
}

// Records are made as the file is read; what they are must still follow the whole document: the root's last
// "Mods" member counts, and only the root's.
TEST(ModDatabaseTests, OnlyTheRootsLastModsMemberGivesRecords)
{
	FTestKit Kit;
	const std::pair<std::u16string, std::vector<const char16_t*>> Cases[] = {
		{u"{\"Mods\":[{\"ModDir\":\"First\"}],\"Mods\":[{\"ModDir\":\"Second\"},{\"ModDir\":\"Third\"}]}", {u"Second", u"Third"}},
		{u"{\"Mods\":[{\"ModDir\":\"Gone\"}],\"Mods\":\"not a list\"}", {}},
		{u"{\"Extra\":{\"Mods\":[{\"ModDir\":\"Nested\"}]},\"Mods\":[{\"ModDir\":\"Root\",\"Mods\":[{\"ModDir\":\"Inner\"}]}]}", {u"Root"}},
		{u"{\"mods\":[{\"ModDir\":\"Lower\"}],\"Mods\":[[{\"ModDir\":\"InAList\"}],{\"ModDir\":\"Kept\"}]}", {u"", u"Kept"}},
	};
	for (const auto& [Text, Expected] : Cases)
	{
		WriteDatabase(Kit, Text);
		TArray<TSharedPtr<FModSetup>> Records;
		FString User;
		FString Error;
		ASSERT_EQ(ReadModDatabase(KitPaths::ModDatabase(), Records, User, Error), EModDatabaseRead::Read);
		ASSERT_EQ(Records.Num(), static_cast<int32>(Expected.size())) << FString(Text);
		for (size_t Index = 0; Index < Expected.size(); ++Index)
		{
			EXPECT_EQ(Records[static_cast<int32>(Index)]->ModDir, FString(Expected[Index])) << FString(Text);
		}
	}
}

TEST(ModDatabaseTests, UnreadableOrBrokenFilesGiveNoRecordsAndKeepTheUserName)
{
	FTestKit Kit;
	STesselTool Tool;
	Tool.SteamUsername = TEXT("keep me");
	Tool.ModList.Add(MakeShared<FModSetup>(TEXT("stale")));

	Tool.LoadModDatabase(KitPaths::ModDatabase()); // missing
	EXPECT_EQ(Tool.ModList.Num(), 0);
	EXPECT_EQ(Tool.SteamUsername, FString(TEXT("keep me")));

	FPlatformFileManager::Get().GetPlatformFile().CreateDirectoryTree(*KitPaths::ModDatabase());
	Tool.ModList.Add(MakeShared<FModSetup>(TEXT("stale")));
	Tool.LoadModDatabase(KitPaths::ModDatabase()); // a folder where the file should be
	EXPECT_EQ(Tool.ModList.Num(), 0);
	FPlatformFileManager::Get().GetPlatformFile().DeleteDirectory(*KitPaths::ModDatabase());

	for (const std::string& Broken :
		 {Utf16File(u"{\"SteamUsername\":\"other\",\"Mods\":[{\"ModDir\":\"A\"}"), std::string("{\"Mods\":[]} in UTF-8"),
		  Utf16File(u"[{\"SteamUsername\":\"other\"}]"), std::string("\xFF\xFE{\0}\0", 6), std::string("{\0", 2) + "x"})
	{
		Kit.WriteFile(TEXT("Orrery/Saved/Mods.db"), Broken);
		Tool.ModList.Add(MakeShared<FModSetup>(TEXT("stale")));
		Tool.LoadModDatabase(KitPaths::ModDatabase());
		EXPECT_EQ(Tool.ModList.Num(), 0);
		EXPECT_EQ(Tool.SteamUsername, FString(TEXT("keep me")));
	}
}

TEST(ModDatabaseTests, BrokenFileIsReplacedByFreshRecordsAtTheNextSave)
{
	FTestKit Kit;
	Kit.AddMod(TEXT("Fresh"), {TEXT("Map1.umap")});
	Kit.WriteFile(TEXT("Orrery/Saved/Mods.db"), "this is not json");
	TSharedRef<STesselTool> ToolWidget = SNew(STesselTool);
	STesselTool& Tool = *ToolWidget;
	ASSERT_EQ(Tool.ModList.Num(), 1);
	Tool.SaveModDatabase();
	const FParseResult Saved = ParseJson(ReadDatabase());
	ASSERT_TRUE(Saved.bOk) << Saved.Error;
	const TSharedPtr<FJsonObject> Record = Saved.Object->GetArrayField(TEXT("Mods"))[0]->AsObject();
	EXPECT_EQ(Record->GetStringField(TEXT("ModDir")), FString(TEXT("Fresh")));
	EXPECT_EQ(Record->GetStringField(TEXT("Maps")), FString(TEXT("Map1")));
	EXPECT_EQ(Record->GetStringField(TEXT("Visibility")), FString(TEXT("Public")));
}

TEST(ModDatabaseTests, AFileThatDidNotLoadIsKeptBesideItBeforeTheSaveReplacesIt)
{
	FTestKit Kit;
	Kit.AddMod(TEXT("Fresh"));
	const FString Kept = KitPaths::ModDatabase() + TEXT(".unreadable");
	const FString KeptSecond = KitPaths::ModDatabase() + TEXT(".unreadable.2");
	// Written by another editor as UTF-8 with a byte order mark: the titles in it are the user's.
	const std::string Foreign = "\xEF\xBB\xBF{\"Mods\":[{\"ModDir\":\"Fresh\",\"Title\":\"Months of work\"}]}";
	Kit.WriteFile(TEXT("Orrery/Saved/Mods.db"), Foreign);
	{
		TSharedRef<STesselTool> Tool = SNew(STesselTool);
		Tool->SaveModDatabase();
		Tool->SaveModDatabase();
		EXPECT_TRUE(ParseJson(ReadDatabase()).bOk);
		EXPECT_EQ(FTempDirectory::ReadBytes(Kept), Foreign);
		EXPECT_FALSE(FPaths::FileExists(KeptSecond)) << "the second save replaced a file that had loaded";
	}
	{
		// A file that loads is replaced without a copy.
		TSharedRef<STesselTool> Tool = SNew(STesselTool);
		Tool->SaveModDatabase();
		EXPECT_FALSE(FPaths::FileExists(KeptSecond));
	}
	// A later broken file is kept under the next free name; the first copy stays as it was.
	Kit.WriteFile(TEXT("Orrery/Saved/Mods.db"), "{\"Mods\": [");
	TSharedRef<STesselTool>(SNew(STesselTool))->SaveModDatabase();
	EXPECT_EQ(FTempDirectory::ReadBytes(Kept), Foreign);
	EXPECT_EQ(FTempDirectory::ReadBytes(KeptSecond), "{\"Mods\": [");
	EXPECT_TRUE(ParseJson(ReadDatabase()).bOk);

	// When no copy can be made, the broken file is not replaced.
	Kit.WriteFile(TEXT("Orrery/Saved/Mods.db"), "broken again");
	TSharedRef<STesselTool> Tool = SNew(STesselTool);
	for (int32 Number = 3; Number < 1000; ++Number)
	{
		FPlatformFileManager::Get().GetPlatformFile().CreateDirectoryTree(
			*FString::Printf(TEXT("%s.unreadable.%d"), *KitPaths::ModDatabase(), Number));
	}
	Tool->SaveModDatabase();
	EXPECT_EQ(FTempDirectory::ReadBytes(KitPaths::ModDatabase()), "broken again");
}

TEST(ModDatabaseTests, ASaveThatRunsOutOfRoomLeavesTheOldFile)
{
#ifdef _WIN32
	GTEST_SKIP() << "the full disk is a file size limit (setrlimit) in a fork, which Windows has not";
#else
	FTestKit Kit;
	for (int32 Number = 0; Number < 100; ++Number)
	{
		Kit.AddMod(FString::Printf(TEXT("Mod%d"), Number));
	}
	TSharedRef<STesselTool> Tool = SNew(STesselTool);
	Tool->SaveModDatabase();
	const std::string Before = FTempDirectory::ReadBytes(KitPaths::ModDatabase());
	ASSERT_GT(Before.size(), 4096u);
	for (const TSharedPtr<FModSetup>& Mod : Tool->ModList)
	{
		Mod->Description = FString(std::u16string(200, u'd'));
	}
	const pid_t Child = fork();
	ASSERT_GE(Child, 0);
	if (Child == 0)
	{
		// Room for the old file, not for the new one.
		signal(SIGXFSZ, SIG_IGN);
		const rlimit Limit{Before.size() + 100, Before.size() + 100};
		setrlimit(RLIMIT_FSIZE, &Limit);
		Tool->SaveModDatabase();
		_exit(0);
	}
	int Status = 0;
	ASSERT_EQ(waitpid(Child, &Status, 0), Child);
	ASSERT_TRUE(WIFEXITED(Status) && WEXITSTATUS(Status) == 0);
	EXPECT_EQ(FTempDirectory::ReadBytes(KitPaths::ModDatabase()), Before);
#endif
}

TEST(ModDatabaseTests, AFileThatCannotBeReadIsNotReplacedWithoutACopy)
{
#ifdef _WIN32
	GTEST_SKIP() << "a file its owner may write but not read is made with chmod, which Windows has not";
#else
	FTestKit Kit;
	Kit.AddMod(TEXT("Fresh"));
	const FString Path = KitPaths::ModDatabase();
	const std::string Theirs = "the user's records, which this user may write but not read";
	Kit.WriteFile(TEXT("Orrery/Saved/Mods.db"), Theirs);
	const pid_t Child = fork();
	ASSERT_GE(Child, 0);
	if (Child == 0)
	{
		// Root reads any file: the child becomes the file's owner without that power, as a mod author is.
		if (geteuid() == 0)
		{
			const uid_t Nobody = 65534;
			for (FString Folder = Path; Folder.Len() > Kit.Root().Len(); Folder = FPaths::GetPath(Folder))
			{
				if (chown(Folder.ToUtf8().c_str(), Nobody, Nobody) != 0)
				{
					_exit(3);
				}
			}
			if (chmod(Kit.Root().ToUtf8().c_str(), 0777) != 0 || setgid(Nobody) != 0 || setuid(Nobody) != 0)
			{
				_exit(3);
			}
		}
		if (chmod(Path.ToUtf8().c_str(), 0200) != 0)
		{
			_exit(3);
		}
		TSharedRef<STesselTool> Tool = SNew(STesselTool);
		Tool->SaveModDatabase();
		_exit(Tool->ModList.Num() == 1 ? 0 : 4);
	}
	int Status = 0;
	ASSERT_EQ(waitpid(Child, &Status, 0), Child);
	ASSERT_TRUE(WIFEXITED(Status) && WEXITSTATUS(Status) == 0) << "child status " << Status;
	chmod(Path.ToUtf8().c_str(), 0600);
	// Neither readable nor copyable: it stays as it was, and no copy claims to hold it.
	EXPECT_EQ(FTempDirectory::ReadBytes(Path), Theirs);
	EXPECT_FALSE(FPaths::FileExists(Path + TEXT(".unreadable")));
#endif
}

TEST(ModDatabaseTests, SavingNoRecordsLeavesTheFileAlone)
{
	FTestKit Kit;
	STesselTool Tool;
	Tool.SteamUsername = TEXT("someone");
	Tool.SaveModDatabase();
	EXPECT_FALSE(FPaths::FileExists(KitPaths::ModDatabase()));

	const std::string Existing = "arbitrary bytes \x01\x02 that are no database";
	Kit.WriteFile(TEXT("Orrery/Saved/Mods.db"), Existing);
	Tool.SaveModDatabase();
	EXPECT_EQ(FTempDirectory::ReadBytes(KitPaths::ModDatabase()), Existing);
}

TEST(ModDatabaseTests, MergeOfFoldersAndRecords)
{
	FTestKit Kit;
	Kit.AddMod(TEXT("KnownFolder"), {TEXT("NewMap.umap")});
	Kit.AddMod(TEXT("mymod"));
	Kit.AddMod(TEXT("BrandNew"), {TEXT("B.umap")});
	auto Record = [](const char16_t* ModDir, const char16_t* Title, const char16_t* Maps)
	{
		return std::u16string(u"{\"ModDir\":\"") + ModDir + u"\",\"Title\":\"" + Title + u"\",\"Maps\":\"" + Maps +
			   u"\",\"GUID\":\"G\"}";
	};
	WriteDatabase(Kit, u"{\"SteamUsername\":\"me\",\"Mods\":[" + Record(u"Vanished", u"Gone", u"") + u"," +
						   Record(u"KnownFolder", u"Kept", u"OldMap") + u"," + Record(u"MyMod", u"Cased", u"") + u"," +
						   Record(u"MYMOD", u"Twin", u"") + u"]}");

	TSharedRef<STesselTool> ToolWidget = SNew(STesselTool);
	STesselTool& Tool = *ToolWidget;
	// Folder and record: the record as loaded, maps not looked at again. Folder only: a new record at the end.
	// Record only: dropped from the list. Two records of one folder in a hand-edited file both stay.
	ASSERT_EQ(Tool.ModList.Num(), 4);
	EXPECT_EQ(Tool.ModList[0]->ModDir, FString(TEXT("KnownFolder")));
	EXPECT_EQ(Tool.ModList[0]->Title, FString(TEXT("Kept")));
	EXPECT_EQ(Tool.ModList[0]->Maps, FString(TEXT("OldMap")));
	EXPECT_EQ(Tool.ModList[1]->ModDir, FString(TEXT("MyMod")));
	EXPECT_EQ(Tool.ModList[2]->ModDir, FString(TEXT("MYMOD")));
	EXPECT_EQ(Tool.ModList[3]->ModDir, FString(TEXT("BrandNew")));
	EXPECT_EQ(Tool.ModList[3]->Maps, FString(TEXT("B")));
	EXPECT_TRUE(Tool.ModList[3]->GUID.IsEmpty());
	EXPECT_EQ(Tool.SelectedMod, Tool.ModList[0]);
	EXPECT_EQ(Tool.SteamUsername, FString(TEXT("me")));

	// Until a save the file still holds the vanished record; a restored folder gets its data back.
	Kit.AddMod(TEXT("Vanished"));
	Tool.OnRefreshClicked();
	ASSERT_EQ(Tool.ModList.Num(), 5);
	EXPECT_EQ(Tool.ModList[0]->Title, FString(TEXT("Gone")));

	// After a save without the folder, it comes back as a new record.
	FPlatformFileManager::Get().GetPlatformFile().DeleteDirectoryRecursively(*(Kit.ModsDir() / TEXT("Vanished")));
	Tool.OnRefreshClicked();
	Tool.SaveModDatabase();
	Kit.AddMod(TEXT("Vanished"));
	Tool.OnRefreshClicked();
	EXPECT_EQ(Tool.ModList.Last()->ModDir, FString(TEXT("Vanished")));
	EXPECT_TRUE(Tool.ModList.Last()->Title.IsEmpty());
}

TEST(ModDatabaseTests, RefreshDropsUnsavedEdits)
{
	FTestKit Kit;
	Kit.AddMod(TEXT("Solo"));
	TSharedRef<STesselTool> ToolWidget = SNew(STesselTool);
	STesselTool& Tool = *ToolWidget;
	Tool.SelectedMod->Title = TEXT("edited");
	Tool.SaveModDatabase();
	Tool.SelectedMod->Title = TEXT("unsaved");
	Tool.OnRefreshClicked();
	EXPECT_EQ(Tool.SelectedMod->Title, FString(TEXT("edited")));
}

TEST(ModDatabaseTests, TagsAreAddedAndRemovedAndSavedAtOnce)
{
	FTestKit Kit;
	Kit.AddMod(TEXT("Tagged"));
	TSharedRef<STesselTool> ToolWidget = SNew(STesselTool);
	STesselTool& Tool = *ToolWidget;
	FModSetup& Mod = *Tool.SelectedMod;

	auto SavedTags = [&]
	{
		const FParseResult Saved = ParseJson(ReadDatabase());
		return Saved.bOk ? Saved.Object->GetArrayField(TEXT("Mods"))[0]->AsObject()->GetStringField(TEXT("Tags"))
						 : FString(TEXT("<unreadable>"));
	};

	Tool.AddTag(TEXT("Map"));
	EXPECT_EQ(Mod.Tags, FString(TEXT("Map")));
	EXPECT_EQ(SavedTags(), FString(TEXT("Map")));
	Tool.AddTag(TEXT("Visuals/Sounds"));
	Tool.AddTag(TEXT("Map")); // no duplicate check
	EXPECT_EQ(Mod.Tags, FString(TEXT("Map,Visuals/Sounds,Map")));
	Tool.RemoveTag(TEXT("MAP")); // every match, letter case ignored
	EXPECT_EQ(Mod.Tags, FString(TEXT("Visuals/Sounds")));
	EXPECT_EQ(SavedTags(), FString(TEXT("Visuals/Sounds")));
	Tool.RemoveTag(TEXT("visuals/sounds"));
	EXPECT_EQ(Mod.Tags, FString());
	EXPECT_EQ(SavedTags(), FString());

	// An empty item between commas survives both operations.
	Mod.Tags = TEXT(",Mod");
	Tool.AddTag(TEXT("Weapons"));
	EXPECT_EQ(Mod.Tags, FString(TEXT(",Mod,Weapons")));
	Tool.RemoveTag(TEXT("Mod"));
	EXPECT_EQ(Mod.Tags, FString(TEXT(",Weapons")));
}

TEST(ModDatabaseTests, ResetsChangeOneFieldAndSaveEverything)
{
	FTestKit Kit;
	Kit.AddMod(TEXT("Published"));
	STesselTool Tool;
	Tool.OnResetGuidClicked(); // no selection: nothing happens
	EXPECT_FALSE(FPaths::FileExists(KitPaths::ModDatabase()));

	Tool.Construct(STesselTool::FArguments());
	Tool.SelectedMod->ItemSeamId = TEXT("12345");
	Tool.SelectedMod->Title = TEXT("unsaved title");
	EXPECT_TRUE(Tool.OnResetGuidClicked().IsEventHandled());
	const FString Guid = Tool.SelectedMod->GUID;
	EXPECT_EQ(Guid.Len(), 32);
	std::u16string Saved = ReadDatabase();
	EXPECT_NE(Saved.find(Guid.GetStd()), std::u16string::npos);
	EXPECT_NE(Saved.find(u"unsaved title"), std::u16string::npos);

	Tool.OnResetGuidClicked();
	EXPECT_NE(Tool.SelectedMod->GUID, Guid);

	EXPECT_TRUE(Tool.OnResetPublisherIdClicked().IsEventHandled());
	EXPECT_TRUE(Tool.SelectedMod->ItemSeamId.IsEmpty());
	Saved = ReadDatabase();
	EXPECT_EQ(Saved.find(u"12345"), std::u16string::npos);
}

TEST(ModDatabaseTests, KilledWhileSavingLeavesALoadableSavedState)
{
#ifdef _WIN32
	GTEST_SKIP() << "each saver is a fork ended by SIGKILL, which Windows has not";
#else
	FTestKit Kit;
	std::mt19937 Random(20261123);
	const int32 Rounds = 500;
	int32 CheckedRounds = 0;
	int32 KillsInsideASave = 0;
	for (int32 Round = 0; Round < Rounds; ++Round)
	{
		int Pipe[2];
		ASSERT_EQ(pipe(Pipe), 0);
		const pid_t Child = fork();
		ASSERT_GE(Child, 0);
		if (Child == 0)
		{
			close(Pipe[0]);
			// Each state is recognisable: the user name carries its number and every record repeats it. The
			// child says when each save begins ("b") and when it has ended ("e").
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
				if (write(Pipe[1], "b", 1) != 1)
				{
					_exit(1);
				}
				Tool.SaveModDatabase();
				if (write(Pipe[1], "e", 1) != 1)
				{
					_exit(1);
				}
			}
		}
		close(Pipe[1]);
		// Let one save of this round end, then kill at a random moment of the ones after it.
		std::string Said;
		char Byte = 0;
		while (Said.find('e') == std::string::npos && read(Pipe[0], &Byte, 1) == 1)
		{
			Said += Byte;
		}
		usleep(std::uniform_int_distribution<useconds_t>(0, 3000)(Random));
		kill(Child, SIGKILL);
		int Status = 0;
		ASSERT_EQ(waitpid(Child, &Status, 0), Child);
		ASSERT_TRUE(WIFSIGNALED(Status) && WTERMSIG(Status) == SIGKILL) << "round " << Round << ": " << Status;
		char Chunk[4096];
		ssize_t Got;
		while ((Got = read(Pipe[0], Chunk, sizeof(Chunk))) > 0)
		{
			Said.append(Chunk, static_cast<size_t>(Got));
		}
		close(Pipe[0]);
		const int32 Ended = static_cast<int32>(std::count(Said.begin(), Said.end(), 'e'));
		if (Ended == 0)
		{
			continue; // the child died before its first save ended; counted against the rounds below
		}
		KillsInsideASave += Said.back() == 'b' ? 1 : 0;

		// The file holds the last state whose save ended, or the one after it when the kill came between the
		// rename and the child's word.
		STesselTool Reader;
		Reader.SteamUsername = TEXT("unset");
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
		++CheckedRounds;
	}
	std::cout << "kills: " << Rounds << ", inside a save: " << KillsInsideASave << ", file checked: " << CheckedRounds
			  << std::endl;
	EXPECT_EQ(CheckedRounds, Rounds);
	EXPECT_GE(KillsInsideASave, Rounds / 2) << "the kills must land inside saves, not between them";
	// Temporaries of killed writers may stay beside the file; the file itself is always whole.
#endif
}
