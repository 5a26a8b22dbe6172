#include "STesselUI.h"
#include "cook/CookJob.h"
#include "TesselSession.h"
#include "TestKit.h"

#include "HAL/FileManager.h"
#include "HAL/PlatformFile.h"
#include "Testing/EditorServicesDouble.h"
#include "packaging/ModArchiveForms.h"

#include <gtest/gtest.h>
#include <chrono>
#include <thread>

namespace
{
	void WriteInfoFiles(const FString& Dir, TArray<FString> Maps, TMap<FString, FString> Meta, bool bWithMeta = true)
	{
		TUniquePtr<FArchive> Info(IFileManager::Get().CreateFileWriter(*(Dir / TEXT("mod.info"))));
		FString Leading = TEXT("leading text");
		ModArchiveForms::SerializeString(*Info, Leading);
		ModArchiveForms::SerializeStringArray(*Info, Maps);
		Info->Close();
		if (bWithMeta)
		{
			TUniquePtr<FArchive> MetaFile(IFileManager::Get().CreateFileWriter(*(Dir / TEXT("modmeta.info"))));
			ModArchiveForms::SerializeStringMap(*MetaFile, Meta);
			MetaFile->Close();
		}
	}

	// Runs the test-run step of a job for a record titled Title and reads the "%d.mod" file it leaves.
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
		if (OutName)
		{
			*OutName = Name;
		}
		const std::string Bytes = FTempDirectory::ReadBytes(Target / Name);
		ModId = 123456789;
		return Bytes;
	}

	std::string Le32(int32 Value)
	{
		std::string Out(4, '\0');
		for (int Index = 0; Index < 4; ++Index)
		{
			Out[Index] = static_cast<char>((static_cast<uint32>(Value) >> (8 * Index)) & 0xFF);
		}
		return Out;
	}

	std::string Str8(const std::string& Text)
	{
		return Le32(static_cast<int32>(Text.size() + 1)) + Text + std::string(1, '\0');
	}
}

TEST(ModDescriptionFilesTests, TestRunFileWithEveryField)
{
	FTestKit Kit;
	const FString Staged = Kit.Root() / TEXT("Test/Foo");
	TMap<FString, FString> Meta;
	Meta.Add(TEXT("GUID"), TEXT("ABC"));
	Meta.Add(TEXT("modtype"), TEXT("300"));
	WriteInfoFiles(Staged, {TEXT("Alpha"), TEXT("Beta")}, Meta);

	const std::string Bytes = RunTestStep(Kit, TEXT("\"Quoted\""), 0, 123456789);
	const std::string Expected = std::string("\x15\xCD\x5B\x07\0\0\0\0", 8) + Str8("Quoted") + Le32(0) + Le32(2) + Str8("Alpha") +
								 Str8("Beta") + std::string("\x33\xFF\x22\xFF", 4) + Le32(2) + std::string(1, '\x2C') + Le32(2) +
								 Str8("GUID") + Str8("ABC") + Str8("modtype") + Str8("300");
	EXPECT_EQ(Bytes, Expected);
	// The cook's files are left as they were.
	EXPECT_TRUE(FPaths::FileExists(Staged / TEXT("mod.info")));
}

TEST(ModDescriptionFilesTests, ModTypeDefaultsAndOverrides)
{
	FTestKit Kit;
	const FString Staged = Kit.Root() / TEXT("Test/Foo");
	auto TypeByte = [](const std::string& Bytes)
	{
		// Behind the 8-byte number, the empty-quote title "T" (4+2), the empty string (4), one map "M" (4+4+2),
		// magic and version (8).
		return static_cast<uint8>(Bytes.at(8 + 6 + 4 + 10 + 8));
	};
	TMap<FString, FString> NotANumber;
	NotANumber.Add(TEXT("ModType"), TEXT("abc"));
	WriteInfoFiles(Staged, {TEXT("M")}, NotANumber);
	EXPECT_EQ(TypeByte(RunTestStep(Kit, TEXT("T"), 2, 123456789)), 0); // overrides the default of 3

	WriteInfoFiles(Staged, {TEXT("M")}, {}, false);
	IFileManager::Get().Delete(*(Staged / TEXT("modmeta.info")));
	EXPECT_EQ(TypeByte(RunTestStep(Kit, TEXT("T"), 2, 123456789)), 3);
	EXPECT_EQ(TypeByte(RunTestStep(Kit, TEXT("T"), 1, 123456789)), 0);

	// Without mod.info: the record's maps as one element, an empty map, the default type.
	IFileManager::Get().Delete(*(Staged / TEXT("mod.info")));
	const std::string Bytes = RunTestStep(Kit, TEXT("T"), 2, 123456789);
	EXPECT_EQ(Bytes.substr(18), Le32(1) + Str8("A,B") + std::string("\x33\xFF\x22\xFF", 4) + Le32(2) + std::string(1, '\x03') + Le32(0));
}

TEST(ModDescriptionFilesTests, WideTitlesAndLargeModNumbers)
{
	FTestKit Kit;
	WriteInfoFiles(Kit.Root() / TEXT("Test/Foo"), {}, {});
	FString Name;
	const std::string Bytes = RunTestStep(Kit, TEXT("Île"), 0, 2147483648LL + 5, &Name);
	// The name carries the low 32 bits as a signed number; the file's first field all 64.
	EXPECT_EQ(Name, FString(TEXT("-2147483643.mod")));
	EXPECT_EQ(Bytes.substr(0, 8), std::string("\x05\0\0\x80\0\0\0\0", 8));
	EXPECT_EQ(Bytes.substr(8, 12), Le32(-4) + std::string("\xCE\0l\0e\0\0\0", 8));
}

TEST(ModDescriptionFilesTests, NormalRunOfTwoTargetsLeavesAnUploadableTree)
{
	FTestKit Kit;
	Kit.InstallCookCommandlet();
	Kit.AddMod(TEXT("Islands"), {TEXT("Alpha.umap"), TEXT("Props/Crate.uasset"), TEXT("Readme.txt")});
	TSharedPtr<FEditorServicesDouble> Services = MakeShared<FEditorServicesDouble>();
	IEditorServices::Set(Services);
	FCommandLine::Set(TEXT("-modasdlc"));
	{
		TSharedRef<STesselTool> Tool = SNew(STesselTool);
		Tool->OnCookMapClicked();
		const auto Deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
		while (ActiveJobs.Num() > 0 && std::chrono::steady_clock::now() < Deadline)
		{
			Tool->Tick(FGeometry(), 0.0, 0.016f);
			std::this_thread::sleep_for(std::chrono::milliseconds(2));
		}
	}
	FCommandLine::Set(FString());
	IEditorServices::Set(nullptr);
	ASSERT_EQ(ActiveJobs.Num(), 0);

	const FString Base = Kit.Root() / TEXT("ModTools/Output/Islands");
	for (const TCHAR* Target : {TEXT("WindowsNoEditor"), TEXT("WindowsServer")})
	{
		const FString Dir = Base / Target;
		EXPECT_TRUE(FPaths::FileExists(Dir / TEXT("Alpha.umap.z"))) << FString(Target);
		EXPECT_EQ(FTempDirectory::ReadBytes(Dir / TEXT("Props/Crate.uasset.z.uncompressed_size")), "11\r\n");
		EXPECT_EQ(FTempDirectory::ReadBytes(Dir / TEXT("Readme.txt")), "placeholder");
		EXPECT_TRUE(FPaths::FileExists(Dir / TEXT("mod.info")));
		EXPECT_FALSE(FPaths::DirectoryExists(Dir / TEXT("123456789"))); // the staging folder is gone
	}
	// mod.info at Base, from the last target: what makes the mod uploadable.
	EXPECT_EQ(FTempDirectory::ReadBytes(Base / TEXT("mod.info")), FTempDirectory::ReadBytes(Base / TEXT("WindowsServer/mod.info")));
	EXPECT_NE(FTempDirectory::ReadBytes(Base / TEXT("mod.info")), FTempDirectory::ReadBytes(Base / TEXT("WindowsNoEditor/mod.info")));
	EXPECT_TRUE(FPaths::FileExists(Base / TEXT("modmeta.info")));
	ASSERT_EQ(Services->Dialogs.Num(), 1);
}

TEST(ModDescriptionFilesTests, TestRunLeavesTheModFileBesideTheCookedFolderAndNothingElse)
{
	FTestKit Kit;
	Kit.InstallCookCommandlet();
	Kit.AddMod(TEXT("Islands"), {TEXT("Alpha.umap")});
	const FString TestDir = Kit.Root() / TEXT("GameMods");
	Kit.WriteFile(TEXT("GameMods/OtherMod/keep.uasset"), "other");
	TSharedPtr<FEditorServicesDouble> Services = MakeShared<FEditorServicesDouble>();
	IEditorServices::Set(Services);
	{
		TSharedRef<STesselTool> Tool = SNew(STesselTool);
		Tool->TestOutputDir = TestDir;
		Tool->OnCookMapClicked();
		const auto Deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
		while (ActiveJobs.Num() > 0 && std::chrono::steady_clock::now() < Deadline)
		{
			Tool->Tick(FGeometry(), 0.0, 0.016f);
			std::this_thread::sleep_for(std::chrono::milliseconds(2));
		}
		Tool->ModList.Empty(); // nothing to save on close
	}
	IEditorServices::Set(nullptr);

	TArray<FString> Entries;
	IFileManager::Get().FindFiles(Entries, *(TestDir / TEXT("*")), true, true);
	Entries.Sort();
	EXPECT_EQ(Entries, (TArray<FString>{TEXT("123456789"), TEXT("123456789.mod"), TEXT("OtherMod")}));
	EXPECT_EQ(FTempDirectory::ReadBytes(TestDir / TEXT("123456789/Alpha.umap")), "placeholder"); // not compressed
	EXPECT_EQ(FTempDirectory::ReadBytes(TestDir / TEXT("OtherMod/keep.uasset")), "other");
	EXPECT_FALSE(FPaths::DirectoryExists(Kit.Root() / TEXT("ModTools/Output/Islands")));
	const std::string ModFile = FTempDirectory::ReadBytes(TestDir / TEXT("123456789.mod"));
	EXPECT_EQ(ModFile.substr(0, 8), std::string("\x15\xCD\x5B\x07\0\0\0\0", 8));
}
