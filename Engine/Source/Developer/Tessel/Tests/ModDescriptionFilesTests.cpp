#include "HAL/FileManager.h"
#include "ToolKit.h"
#include "packaging/ModArchiveForms.h"

#include <gtest/gtest.h>

namespace
{
	// The description files a cook leaves in the staged folder: mod.info with the maps, modmeta.info with Meta.
	void WriteInfoFiles(const FString& Dir, TArray<FString> Maps, TMap<FString, FString> Meta)
	{
		TUniquePtr<FArchive> Info(IFileManager::Get().CreateFileWriter(*(Dir / TEXT("mod.info"))));
		FString Leading = TEXT("leading text");
		ModArchiveForms::SerializeString(*Info, Leading);
		ModArchiveForms::SerializeStringArray(*Info, Maps);
		Info->Close();
		TUniquePtr<FArchive> MetaFile(IFileManager::Get().CreateFileWriter(*(Dir / TEXT("modmeta.info"))));
		ModArchiveForms::SerializeStringMap(*MetaFile, Meta);
		MetaFile->Close();
	}

	// Runs the test-run step of a job of the given cook kind for a record titled Title, with maps "A,B", as mod
	// number Id, and reads the "%d.mod" file it leaves.
	std::string RunTestStep(const FTestKit& Kit, const FString& Title, uint32 Kind, int64 Id, FString* OutName = nullptr)
	{
		ModId = Id;
		FModSetup Record(TEXT("Foo"));
		Record.Title = Title;
		Record.Maps = TEXT("A,B");
		const FString Target = Kit.Root() / TEXT("Test");
		FCookJob Job(Record, TEXT("/nonexistent"), FString(), Target / TEXT("Foo"), Target, Target, Kind, true, true);
		Job.FinishCookOutput();
		const FString Name = FString::Printf(TEXT("%d.mod"), ModId);
		ModId = 123456789;
		if (OutName)
		{
			*OutName = Name;
		}
		return FTempDirectory::ReadBytes(Target / Name);
	}
}

// The "%d.mod" file of a test run: the mod number, the title without its quotes, the maps and the metadata of
// the cook's description files, and the type: modmeta.info's "ModType" as a number, even one that is none, else
// 3 for a total conversion and 0 for other kinds. Without mod.info the record's maps go as one element, with no
// metadata. The file's name carries the number's low 32 bits as a signed number, its first field all 64.
TEST(ModDescriptionFilesTests, TheTestRunFileFollowsTheDescriptionFiles)
{
	FTestKit Kit;
	const FString Staged = Kit.Root() / TEXT("Test/Foo");
	TMap<FString, FString> Meta;
	Meta.Add(TEXT("GUID"), TEXT("ABC"));
	Meta.Add(TEXT("modtype"), TEXT("300"));
	WriteInfoFiles(Staged, {TEXT("Alpha"), TEXT("Beta")}, Meta);
	EXPECT_EQ(RunTestStep(Kit, TEXT("\"Quoted\""), 0, 123456789), ReadGolden("test-run-every-field.mod"));
	EXPECT_TRUE(FPaths::FileExists(Staged / TEXT("mod.info"))); // the cook's files are left as they were

	WriteInfoFiles(Staged, {}, {});
	FString Name;
	EXPECT_EQ(RunTestStep(Kit, TEXT("Île"), 0, 2147483648LL + 5, &Name), ReadGolden("test-run-wide-title-large-number.mod"));
	EXPECT_EQ(Name, FString(TEXT("-2147483643.mod")));

	// Behind the number (8), the title "T" (4+2), the empty string (4), one map "M" (4+4+2), magic and version (8).
	auto TypeOf = [&Kit](uint32 Kind)
	{ return static_cast<int32>(static_cast<uint8>(RunTestStep(Kit, TEXT("T"), Kind, 123456789).at(8 + 6 + 4 + 10 + 8))); };
	TMap<FString, FString> NotANumber;
	NotANumber.Add(TEXT("ModType"), TEXT("abc"));
	WriteInfoFiles(Staged, {TEXT("M")}, NotANumber);
	EXPECT_EQ(TypeOf(2), 0);
	IFileManager::Get().Delete(*(Staged / TEXT("modmeta.info")));
	EXPECT_EQ(TypeOf(2), 3);
	EXPECT_EQ(TypeOf(1), 0);
	IFileManager::Get().Delete(*(Staged / TEXT("mod.info")));
	EXPECT_EQ(RunTestStep(Kit, TEXT("T"), 2, 123456789), ReadGolden("test-run-without-description-files.mod"));
}

// A test run leaves the mod file beside the cooked folder in the game's mods, its packages as they are, and
// touches nothing else, the kit's output included.
TEST(ModDescriptionFilesTests, ATestRunLeavesTheModFileBesideItsFolderAndTouchesNothingElse)
{
	FToolKit Kit;
	Kit.InstallCookCommandlet();
	Kit.AddMod(TEXT("Islands"), {TEXT("Alpha.umap"), TEXT("Props/Crate.uasset"), TEXT("Readme.txt")});
	const FString TestDir = Kit.Root() / TEXT("GameMods");
	Kit.WriteFile(TEXT("GameMods/OtherMod/keep.uasset"), "other");
	Kit.OpenTool().TestOutputDir = TestDir;
	Kit.Tool->OnCookMapClicked();
	ASSERT_TRUE(Kit.RunToEnd());
	TArray<FString> Entries;
	IFileManager::Get().FindFiles(Entries, *(TestDir / TEXT("*")), true, true);
	Entries.Sort();
	EXPECT_EQ(Entries, (TArray<FString>{TEXT("123456789"), TEXT("123456789.mod"), TEXT("OtherMod")}));
	EXPECT_EQ(FTempDirectory::ReadBytes(TestDir / TEXT("123456789/Alpha.umap")), "placeholder"); // not compressed
	EXPECT_EQ(FTempDirectory::ReadBytes(TestDir / TEXT("OtherMod/keep.uasset")), "other");
	EXPECT_EQ(FTempDirectory::ReadBytes(TestDir / TEXT("123456789.mod")).substr(0, 8), std::string("\x15\xCD\x5B\x07\0\0\0\0", 8));
	EXPECT_FALSE(FPaths::DirectoryExists(Kit.Root() / TEXT("ModTools/Output/Islands")));
}
