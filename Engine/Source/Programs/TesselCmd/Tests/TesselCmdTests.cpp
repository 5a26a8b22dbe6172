// TesselCmd end to end: each command run as a child on a kit made in a temporary folder, through the stand-in
// programs, with its exit code, its stderr and its JSON result read as a build server would.

#include <gtest/gtest.h>

#include "CommandRun.h"
#include "HAL/FileManager.h"
#include "HAL/PlatformFile.h"
#include "JsonTestUtils.h"
#include "Misc/FileHelper.h"
#include "Serialization/Archive.h"
#include "TestKit.h"
#include "TesselSession.h"
#include "json/JsonSerializer.h"
#include "packaging/ModArchiveForms.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <random>
#include <sstream>
#include <thread>
#include <tuple>
#ifndef _WIN32
#include <poll.h>
#include <unistd.h>
#include <pty.h>
#endif

namespace
{
	// A real PNG header, enough for the preview check and for SteamCMD's size check.
	const std::string PngBytes = std::string("\x89PNG\r\n\x1a\n", 8) + std::string(200, 'p');

	std::string Utf8(const FString& Text)
	{
		return Text.ToUtf8();
	}

	TSharedPtr<FJsonObject> ParseJsonText(const std::string& Utf8Text)
	{
		const FParseResult Result = ParseJson(FString::FromUtf8(Utf8Text).GetStd());
		if (!Result.bOk)
		{
			ADD_FAILURE() << "not one JSON document:\n" << Utf8Text;
			return MakeShared<FJsonObject>();
		}
		return Result.Object;
	}

	std::u16string OneRecordDatabase(const std::u16string& ModDir, const std::u16string& Title, const std::u16string& Guid)
	{
		return u"{\"SteamUsername\": \"\", \"Mods\": [{\"ModDir\": \"" + ModDir + u"\", \"Maps\": \"Alpha\", \"Title\": \"" + Title +
			   u"\", \"Description\": \"\", \"PreviewImage\": \"\", \"Visibility\": \"Public\", \"ChangeNotes\": \"\", "
			   u"\"ItemSeamId\": \"\", \"GUID\": \"" +
			   Guid + u"\", \"Tags\": \"\"}]}";
	}

	std::string DatabaseBytes(const FTestKit& Kit)
	{
		return FTempDirectory::ReadBytes(Kit.Root() / TEXT("Orrery/Saved/Mods.db"));
	}

	// A kit with every program in its place and one mod, "Islands", with two maps and a packaged tree.
	struct FReadyKit
	{
		FReadyKit()
		{
			Kit.AddMod(TEXT("Islands"), {TEXT("Alpha.umap"), TEXT("Beta.umap")});
			Kit.InstallCookCommandlet();
			Kit.InstallSteamCmd();
			Kit.InstallUploader();
			Kit.InstallWorkshopTemplate();
			Preview = Kit.WriteFile(TEXT("Previews/Islands.png"), PngBytes);
		}
		FCommandRun Run(std::vector<std::string> Args, std::map<std::string, std::string> Environment = {}) const
		{
			Args.insert(Args.begin(), {"--kit", Utf8(Kit.Root())});
			return RunTesselCmd(std::move(Args), std::move(Environment));
		}
		// Fills the fields "Upload" needs and cooks, so that the mod can go up.
		void MakeUploadable() const
		{
			ASSERT_EQ(Run({"set", "Islands", "title=Island Pack", "description=Two islands", "preview=" + Utf8(Preview)}).ExitCode, 0);
			ASSERT_EQ(Run({"cook", "Islands"}).ExitCode, 0);
		}
		FTestKit Kit;
		FString Preview;
	};

	const std::string Password = "s3cret-Pa55";

	// No file under Folder holds Text.
	void ExpectNoFileHolds(const FString& Folder, const std::string& Text)
	{
		for (const auto& [Path, Bytes] : FTempDirectory::ReadTree(Folder))
		{
			EXPECT_EQ(Bytes.find(Text), std::string::npos) << Path;
		}
	}
}

TEST(TesselCmdTests, ListMergesFoldersAndRecordsAndWritesNothing)
{
	FTestKit Kit;
	Kit.AddMod(TEXT("Islands"), {TEXT("Alpha.umap")});
	Kit.AddMod(TEXT("Caves"), {TEXT("Deep.umap"), TEXT("Notes.txt")});
	// A record whose folder is gone, and one for Islands with a title.
	Kit.WriteModDatabase(
		ToUtf16Bytes(u"{\"SteamUsername\": \"author\", \"Mods\": [{\"ModDir\": \"Gone\"}, {\"ModDir\": \"Islands\", \"Title\": \"Island "
					 u"Pack\", \"Visibility\": \"Hidden\"}]}"));
	const std::string Before = DatabaseBytes(Kit);

	// Found from a folder inside the kit, as on a build server that runs in the checkout.
	const FCommandRun Run = RunTesselCmd(FCommandSetup{{"--json", "list"}, {}, Utf8(Kit.ModsDir())});
	ASSERT_EQ(Run.ExitCode, 0) << Run.Stderr;
	const TSharedPtr<FJsonObject> Root = ParseJsonText(Run.Stdout);
	EXPECT_EQ(Root->GetStringField(TEXT("kit")), Kit.Root());
	const TArray<TSharedPtr<FJsonValue>>& Mods = Root->GetArrayField(TEXT("mods"));
	ASSERT_EQ(Mods.Num(), 2);
	// The record first, as loaded (its maps as the file had them: none); then the new folder with its map.
	EXPECT_EQ(Mods[0]->AsObject()->GetStringField(TEXT("ModDir")), FString(TEXT("Islands")));
	EXPECT_EQ(Mods[0]->AsObject()->GetStringField(TEXT("Title")), FString(TEXT("Island Pack")));
	EXPECT_EQ(Mods[0]->AsObject()->GetStringField(TEXT("Visibility")), FString(TEXT("Hidden")));
	EXPECT_EQ(Mods[1]->AsObject()->GetStringField(TEXT("ModDir")), FString(TEXT("Caves")));
	EXPECT_EQ(Mods[1]->AsObject()->GetStringField(TEXT("Maps")), FString(TEXT("Deep")));
	EXPECT_EQ(Mods[1]->AsObject()->GetStringField(TEXT("Visibility")), FString(TEXT("Public")));
	EXPECT_EQ(DatabaseBytes(Kit), Before);

	// The text form names every field of every record.
	const FCommandRun Text = RunTesselCmd({"--kit", Utf8(Kit.Root()), "list"});
	ASSERT_EQ(Text.ExitCode, 0);
	for (const char* Expected : {"Islands\n", "  Title:        Island Pack\n", "Caves\n", "  Maps:         Deep\n", "  ItemSeamId:"})
	{
		EXPECT_NE(Text.Stdout.find(Expected), std::string::npos) << Expected;
	}
	EXPECT_EQ(DatabaseBytes(Kit), Before);
}

TEST(TesselCmdTests, SetSavesCleanedFieldsAndRefusesBadOnesWithoutWriting)
{
	FReadyKit Ready;
	// A file's last line break goes, as with $(cat file); only that one.
	const std::string Notes = Utf8(Ready.Kit.WriteFile(TEXT("notes.txt"), "Line one\nLine two \"quoted\"\n\n"));
	const FCommandRun Run = Ready.Run({"--json", "set", "islands", "title=Island Pack", "description=@" + Notes, "Change-Notes=@@first",
									   "visibility=friends only", "tags=map, Mod,map", "preview=" + Utf8(Ready.Preview)});
	ASSERT_EQ(Run.ExitCode, 0) << Run.Stderr;
	const TSharedPtr<FJsonObject> Mod = ParseJsonText(Run.Stdout)->GetObjectField(TEXT("mod"));
	EXPECT_EQ(Mod->GetStringField(TEXT("Title")), FString(TEXT("Island Pack")));
	EXPECT_EQ(Mod->GetStringField(TEXT("Description")), FString(TEXT("Line one\nLine two \"quoted\"\n")));
	EXPECT_EQ(Mod->GetStringField(TEXT("ChangeNotes")), FString(TEXT("@first")));
	EXPECT_EQ(Mod->GetStringField(TEXT("Visibility")), FString(TEXT("Friends Only")));
	EXPECT_EQ(Mod->GetStringField(TEXT("Tags")), FString(TEXT("Map,Mod")));
	EXPECT_EQ(Mod->GetStringField(TEXT("PreviewImage")), Ready.Preview);

	// The file holds the same, as the tool reads it.
	const FTesselSession Session;
	ASSERT_EQ(Session.GetMods().Num(), 1);
	EXPECT_EQ(Session.GetMods()[0]->Title, FString(TEXT("Island Pack")));
	EXPECT_EQ(Session.GetMods()[0]->Tags, FString(TEXT("Map,Mod")));

	// From a working folder outside the kit, a relative preview is the kit's; the id and GUID that a publish
	// elsewhere learned come back as given, the GUID as the cook writes it.
	const FString Elsewhere = Ready.Kit.Root() / TEXT("Orrery/Content");
	const FCommandRun Back =
		RunTesselCmd(FCommandSetup{{"--kit", Utf8(Ready.Kit.Root()), "--json", "set", "Islands", "preview=Previews/Islands.png",
									"published-id=18446744073709551615", "guid=0123456789abcdef0123456789ABCDEF"},
								   {},
								   Utf8(Elsewhere)});
	ASSERT_EQ(Back.ExitCode, 0) << Back.Stderr;
	const TSharedPtr<FJsonObject> Returned = ParseJsonText(Back.Stdout)->GetObjectField(TEXT("mod"));
	EXPECT_EQ(Returned->GetStringField(TEXT("PreviewImage")), Ready.Preview);
	EXPECT_EQ(Returned->GetStringField(TEXT("ItemSeamId")), FString(TEXT("18446744073709551615")));
	EXPECT_EQ(Returned->GetStringField(TEXT("GUID")), FString(TEXT("0123456789ABCDEF0123456789ABCDEF")));

	const std::string Saved = DatabaseBytes(Ready.Kit);
	struct FBadCase
	{
		std::vector<std::string> Args;
		const char* Expected;
	};
	const FBadCase BadCases[] = {
		{{"set", "Islands", "title=Kept out", "colour=red"}, "unknown field \"colour\""},
		{{"set", "Islands", "title=Kept out", "tags=Map,Boats"}, "tag \"Boats\" is not one of"},
		{{"set", "Islands", "visibility=Secret"}, "visibility \"Secret\" is not one of \"Public\", \"Friends Only\", \"Hidden\""},
		{{"set", "Islands", "preview=/no/such.png"}, "/no/such.png: no such preview image"},
		{{"set", "Islands", "preview=Previews/None.png"}, "Previews/None.png: no such preview image (nor "},
		{{"set", "Islands", "published-id=29e9"}, "published id \"29e9\" is not a Workshop id"},
		{{"set", "Islands", "published-id=18446744073709551616"}, "is not a Workshop id"},
		{{"set", "Islands", "published-id=042"}, "is not a Workshop id"},
		{{"set", "Islands", "guid=0123456789ABCDEF0123456789ABCDEG"}, "is not 32 hexadecimal digits"},
		{{"set", "Islands", "description=@/no/such.txt"}, "/no/such.txt: can't be read"},
		{{"set", "Islands", "title"}, "expected <field>=<value>"},
		{{"set", "Atlantis", "title=x"}, "Atlantis: no such mod in"},
	};
	for (const FBadCase& Case : BadCases)
	{
		const FCommandRun Bad = Ready.Run(Case.Args);
		EXPECT_EQ(Bad.ExitCode, 2) << Case.Expected;
		EXPECT_NE(Bad.Stderr.find(Case.Expected), std::string::npos) << Bad.Stderr;
		// One line, and nothing on stdout.
		EXPECT_EQ(std::count(Bad.Stderr.begin(), Bad.Stderr.end(), '\n'), 1) << Bad.Stderr;
		EXPECT_TRUE(Bad.Stdout.empty()) << Bad.Stdout;
		EXPECT_EQ(DatabaseBytes(Ready.Kit), Saved) << Case.Expected;
	}
}

TEST(TesselCmdTests, ABrokenDatabaseOrKitIsNamedAndNothingIsWritten)
{
	FReadyKit Ready;
	// UTF-8, as another editor may have saved it: the tool reads 16-bit units.
	Ready.Kit.WriteFile(TEXT("Orrery/Saved/Mods.db"), "{\"SteamUsername\": \"x\", \"Mods\": []}");
	const std::string Broken = DatabaseBytes(Ready.Kit);
	const std::string DatabasePath = Utf8(Ready.Kit.Root() / TEXT("Orrery/Saved/Mods.db"));
	for (const std::vector<std::string>& Args : std::vector<std::vector<std::string>>{
			 {"list"}, {"set", "Islands", "title=x"}, {"check", "Islands"}, {"cook", "Islands"}, {"publish", "Islands"}})
	{
		const FCommandRun Run = Ready.Run(Args);
		EXPECT_EQ(Run.ExitCode, 2) << Args[0];
		EXPECT_EQ(Run.Stderr.rfind("TesselCmd: " + DatabasePath + ": ", 0), 0u) << Run.Stderr;
		EXPECT_NE(Run.Stderr.find("Line: "), std::string::npos) << Run.Stderr;
		EXPECT_EQ(DatabaseBytes(Ready.Kit), Broken) << Args[0];
	}
	// Nothing was cooked or started either.
	EXPECT_FALSE(IFileManager::Get().DirectoryExists(*(Ready.Kit.Root() / TEXT("ModTools/Output"))));

	const FCommandRun Inspect = RunTesselCmd({"inspect", DatabasePath});
	EXPECT_EQ(Inspect.ExitCode, 2);
	EXPECT_NE(Inspect.Stderr.find(DatabasePath + ": Invalid Json Token. Line: 1 Ch: "), std::string::npos) << Inspect.Stderr;

	FTempDirectory NotAKit;
	const FCommandRun NoKit = RunTesselCmd({"--kit", Utf8(NotAKit.Get()), "list"});
	EXPECT_EQ(NoKit.ExitCode, 2);
	EXPECT_NE(NoKit.Stderr.find(Utf8(NotAKit.Get()) + ": not a kit"), std::string::npos) << NoKit.Stderr;
	const FCommandRun Nowhere = RunTesselCmd(FCommandSetup{{"list"}, {}, Utf8(NotAKit.Get())});
	EXPECT_EQ(Nowhere.ExitCode, 2);
	EXPECT_NE(Nowhere.Stderr.find("no kit at or above"), std::string::npos) << Nowhere.Stderr;
}

TEST(TesselCmdTests, CheckNamesEveryProblemWithWhatToDo)
{
	FReadyKit Ready;
	FCommandRun Fresh = Ready.Run({"--json", "check", "Islands"});
	EXPECT_EQ(Fresh.ExitCode, 1);
	TSharedPtr<FJsonObject> Root = ParseJsonText(Fresh.Stdout);
	EXPECT_FALSE(Root->GetBoolField(TEXT("ready")));
	auto ResultOf = [](const TSharedPtr<FJsonObject>& Document, const TCHAR* Name) -> TSharedPtr<FJsonObject>
	{
		for (const TSharedPtr<FJsonValue>& Check : Document->GetArrayField(TEXT("checks")))
		{
			if (Check->AsObject()->GetStringField(TEXT("name")) == Name)
			{
				return Check->AsObject();
			}
		}
		ADD_FAILURE() << "no check " << Utf8(Name);
		return MakeShared<FJsonObject>();
	};
	for (const TCHAR* Name : {TEXT("title"), TEXT("description"), TEXT("preview"), TEXT("packaged")})
	{
		EXPECT_EQ(ResultOf(Root, Name)->GetStringField(TEXT("result")), FString(TEXT("fail"))) << Utf8(Name);
		EXPECT_FALSE(ResultOf(Root, Name)->GetStringField(TEXT("advice")).IsEmpty()) << Utf8(Name);
	}
	EXPECT_EQ(ResultOf(Root, TEXT("steamcmd"))->GetStringField(TEXT("result")), FString(TEXT("ok")));

	Ready.MakeUploadable();
	const FCommandRun Ok = Ready.Run({"check", "Islands"});
	EXPECT_EQ(Ok.ExitCode, 0) << Ok.Stdout;
	EXPECT_NE(Ok.Stdout.find("Islands is ready to upload."), std::string::npos);
	EXPECT_EQ(Ok.Stdout.find("FAIL"), std::string::npos) << Ok.Stdout;

	// The Workshop's limits, a picture that is no picture, and a program gone from the kit.
	const std::string TooLong(129, 'T');
	const std::string NotAPicture = Utf8(Ready.Kit.WriteFile(TEXT("Previews/fake.png"), "GIF? no, just text....."));
	ASSERT_EQ(Ready.Run({"set", "Islands", "title=" + TooLong, "change-notes=" + std::string(8001, 'n'), "preview=" + NotAPicture}).ExitCode, 0);
	FPlatformFileManager::Get().GetPlatformFile().DeleteFile(*KitPaths::SteamCmd());
	const FCommandRun Limits = Ready.Run({"check", "Islands"});
	EXPECT_EQ(Limits.ExitCode, 1);
	for (const char* Expected : {"FAIL  title        129 characters, more than the Workshop's 128",
								 "FAIL  change-notes 8001 characters, more than the Workshop's 8000",
								 "not a PNG, JPEG or GIF picture: save the picture as PNG, JPEG or GIF",
								 "FAIL  steamcmd", "ok    description"})
	{
		EXPECT_NE(Limits.Stdout.find(Expected), std::string::npos) << Expected << "\n" << Limits.Stdout;
	}
	const std::string Big = Utf8(Ready.Kit.WriteFile(TEXT("Previews/big.png"), std::string("\x89PNG\r\n\x1a\n", 8) + std::string(1024 * 1024, 'p')));
	ASSERT_EQ(Ready.Run({"set", "Islands", "preview=" + Big}).ExitCode, 0);
	EXPECT_NE(Ready.Run({"check", "Islands"}).Stdout.find("1048584 bytes, more than the Workshop's 1 MB"), std::string::npos);
}

TEST(TesselCmdTests, TheCookMatchesOneFromTheEditorsCommandLineByteForByte)
{
	// Two kits with the same mod and the same GUID: one cooked by TesselCmd, one as the window's button cooks,
	// with the options read from the editor's command line.
	const std::u16string Database = OneRecordDatabase(u"Islands", u"Island Pack", u"0123456789ABCDEF0123456789ABCDEF");
	FString CommandLineOutput;
	std::map<std::string, std::string> FromCommandLine;
	{
		FReadyKit Ready;
		Ready.Kit.WriteModDatabase(ToUtf16Bytes(Database));
		const FCommandRun Run = Ready.Run({"cook", "Islands", "--modasdlc"});
		ASSERT_EQ(Run.ExitCode, 0) << Run.Stdout << Run.Stderr;
		// The log as it came, the two targets in order, and the dialog's text last.
		const size_t Client = Run.Stdout.find("Cook Job: Platform 'WindowsNoEditor' Command Line: \"Orrery/Orrery.uproject\" -run=Cook -Map=Alpha -CookCultures=en");
		const size_t Server = Run.Stdout.find("Cook Job: Platform 'WindowsServer'");
		ASSERT_NE(Client, std::string::npos) << Run.Stdout;
		ASSERT_NE(Server, std::string::npos);
		EXPECT_LT(Client, Server);
		EXPECT_NE(Run.Stdout.find("-ModGUID=0123456789ABCDEF0123456789ABCDEF"), std::string::npos);
		const std::string Last = "Quillon Dev Kit: Job Successful!!\n";
		EXPECT_EQ(Run.Stdout.substr(Run.Stdout.size() - Last.size()), Last);
		// No terminal, no progress line.
		EXPECT_EQ(Run.Stderr.find("Packaging"), std::string::npos);
		FromCommandLine = FTempDirectory::ReadTree(Ready.Kit.Root() / TEXT("ModTools/Output/Islands"));
	}
	std::map<std::string, std::string> FromWindow;
	{
		FReadyKit Ready;
		Ready.Kit.WriteModDatabase(ToUtf16Bytes(Database));
		FTesselSession Session;
		const FCookOutcome Outcome = Session.Cook(*Session.GetMods()[0], ECookKind::Map,
												  FCookOptions::FromEditorCommandLine(TEXT("-modasdlc")), [](const FString&) {});
		EXPECT_TRUE(Outcome.bSucceeded);
		FromWindow = FTempDirectory::ReadTree(Ready.Kit.Root() / TEXT("ModTools/Output/Islands"));
	}
	// Both targets, every package as ".z" beside its size file, and the description files beside them.
	for (const char* Expected : {"WindowsNoEditor/Alpha.umap.z", "WindowsNoEditor/Alpha.umap.z.uncompressed_size",
								 "WindowsServer/Beta.umap.z", "mod.info", "modmeta.info"})
	{
		EXPECT_EQ(FromCommandLine.count(Expected), 1u) << Expected;
	}
	EXPECT_EQ(FromCommandLine, FromWindow);
}

TEST(TesselCmdTests, CookOptionsReachTheCookAsTheEditorsCommandLine)
{
	FReadyKit Ready;
	Ready.Kit.AddMod(TEXT("Props"), {TEXT("Crate.uasset")});
	FTempDirectory TestOutput;
	const FCommandRun Test =
		Ready.Run({"--json", "cook", "Islands", "--test-output", Utf8(TestOutput.Get()), "--mod-id", "42", "--mod-title", "Isle)Two, at last"});
	ASSERT_EQ(Test.ExitCode, 0) << Test.Stderr;
	// With --json the log goes to stderr and stdout holds the result alone.
	EXPECT_NE(Test.Stderr.find("Quillon Dev Kit: Job Successful!!"), std::string::npos);
	const TSharedPtr<FJsonObject> Result = ParseJsonText(Test.Stdout)->GetArrayField(TEXT("results"))[0]->AsObject();
	EXPECT_TRUE(Result->GetBoolField(TEXT("success")));
	EXPECT_EQ(Result->GetStringField(TEXT("kind")), FString(TEXT("map")));
	EXPECT_EQ(Result->GetStringField(TEXT("output")), TestOutput.Get());

	// The test run's mod file carries the number and the whole title, blanks, comma and parenthesis kept.
	TUniquePtr<FArchive> Reader(IFileManager::Get().CreateFileReader(*(TestOutput / TEXT("42.mod"))));
	ASSERT_TRUE(Reader);
	int64 Number = 0;
	FString Title;
	*Reader << Number;
	ModArchiveForms::SerializeString(*Reader, Title);
	EXPECT_EQ(Number, 42);
	EXPECT_EQ(Title, FString(TEXT("Isle)Two, at last")));
	// A test run leaves the packaged tree alone.
	EXPECT_FALSE(IFileManager::Get().DirectoryExists(*(KitPaths::ModOutputDir() / TEXT("Islands"))));

	const FCommandRun NoMaps = Ready.Run({"cook", "Props", "--kind", "map"});
	EXPECT_EQ(NoMaps.ExitCode, 2);
	EXPECT_NE(NoMaps.Stderr.find("Props has no maps: cook it with --kind game-mod"), std::string::npos);
	EXPECT_EQ(Ready.Run({"cook", "Props", "--kind", "boat"}).ExitCode, 2);
	EXPECT_EQ(Ready.Run({"cook", "Islands", "--mod-title", "Say \"hi\""}).ExitCode, 2);
	// A number the editor can't hold as a signed 32-bit value is refused, not wrapped to another file's number.
	for (const char* Number : {"2147483648", "-2147483649", "4294967338"})
	{
		const FCommandRun Wide = Ready.Run({"cook", "Islands", "--mod-id", Number});
		EXPECT_EQ(Wide.ExitCode, 2) << Number;
		EXPECT_NE(Wide.Stderr.find("--mod-id"), std::string::npos) << Wide.Stderr;
	}
	EXPECT_EQ(Ready.Run({"cook"}).ExitCode, 2);
	EXPECT_EQ(Ready.Run({"cook", "Islands", "--all"}).ExitCode, 2);
	EXPECT_FALSE(IFileManager::Get().DirectoryExists(*KitPaths::ModOutputDir()));

	// A cook without "Success" fails the run; --all reports each mod and fails when one did.
	const FCommandRun Failed = Ready.Run({"cook", "Islands"}, {{"TESSEL_COOK_MODE", "no-success"}});
	EXPECT_EQ(Failed.ExitCode, 1);
	EXPECT_NE(Failed.Stdout.find("Quillon Dev Kit: Job Finsihed (possible errors)!!"), std::string::npos);
	Ready.Kit.WriteFile(TEXT("Orrery/Content/Mods/Props/StandIn.mode"), "crash");
	const FCommandRun All = Ready.Run({"--json", "cook", "--all"});
	EXPECT_EQ(All.ExitCode, 1);
	const TArray<TSharedPtr<FJsonValue>> Results = ParseJsonText(All.Stdout)->GetArrayField(TEXT("results"));
	ASSERT_EQ(Results.Num(), 2);
	for (const TSharedPtr<FJsonValue>& Item : Results)
	{
		const bool bProps = Item->AsObject()->GetStringField(TEXT("mod")) == TEXT("Props");
		EXPECT_EQ(Item->AsObject()->GetBoolField(TEXT("success")), !bProps);
		EXPECT_EQ(Item->AsObject()->GetStringField(TEXT("kind")), FString(bProps ? TEXT("game-mod") : TEXT("map")));
	}

	// Without the editor's executable nothing is started or deleted, and the missing file is named.
	FPlatformFileManager::Get().GetPlatformFile().DeleteFile(*KitPaths::EditorExecutable());
	const FCommandRun NoEditor = Ready.Run({"cook", "Islands"});
	EXPECT_EQ(NoEditor.ExitCode, 1);
	EXPECT_EQ(NoEditor.Stderr,
			  "TesselCmd: " + Utf8(KitPaths::EditorExecutable()) + ": missing: the kit's editor, which cooks, is not in its place\n");
	EXPECT_TRUE(IFileManager::Get().DirectoryExists(*(KitPaths::ModOutputDir() / TEXT("Islands"))));
}

TEST(TesselCmdTests, TheCookShowsThePackagingOnATerminal)
{
#ifdef _WIN32
	GTEST_SKIP() << "the terminal is a pseudo-terminal made by script(1), which Windows has not";
#else
	FReadyKit Ready;
	// "script" gives the child a terminal; its output is what the terminal showed.
	const std::string Command = std::string(TestPaths::TesselCmd) + " --kit " + Utf8(Ready.Kit.Root()) + " cook Islands";
	const std::string Shell = "script -qec '" + Command + "' /dev/null";
	FILE* Pipe = popen(Shell.c_str(), "r");
	ASSERT_TRUE(Pipe);
	std::string Shown;
	char Buffer[4096];
	for (size_t Count; (Count = fread(Buffer, 1, sizeof(Buffer), Pipe)) > 0;)
	{
		Shown.append(Buffer, Count);
	}
	ASSERT_EQ(pclose(Pipe), 0) << Shown;
	// Two maps and the two description files, counted up to the end.
	EXPECT_NE(Shown.find("\rPackaging WindowsNoEditor: 0 of 4 files"), std::string::npos) << Shown;
	EXPECT_NE(Shown.find("\rPackaging WindowsNoEditor: 4 of 4 files"), std::string::npos) << Shown;
	EXPECT_NE(Shown.find("Quillon Dev Kit: Job Successful!!"), std::string::npos);
#endif
}

TEST(TesselCmdTests, ADryRunWritesTheItemFileAndStartsNothing)
{
	FReadyKit Ready;
	Ready.MakeUploadable();
	const FString ArgsOut = Ready.Kit.Root() / TEXT("uploader-args");
	const FCommandRun Run = Ready.Run({"publish", "Islands", "--dry-run"},
									  {{"STEAM_USERNAME", "author"}, {"STEAM_PASSWORD", Password}, {"TESSEL_UPLOADER_ARGS_OUT", Utf8(ArgsOut)}});
	ASSERT_EQ(Run.ExitCode, 0) << Run.Stderr;
	EXPECT_FALSE(IFileManager::Get().FileExists(*ArgsOut));
	EXPECT_FALSE(IFileManager::Get().DirectoryExists(*(Ready.Kit.Root() / TEXT("ModTools/SteamCMD/logs"))));

	const FString ItemFile = KitPaths::WorkshopItemFile(TEXT("Islands"));
	FString ItemText;
	ASSERT_TRUE(FFileHelper::LoadFileToString(ItemText, *ItemFile));
	EXPECT_NE(Run.Stdout.find(Utf8(ItemText.TrimStartAndEnd())), std::string::npos) << Run.Stdout;
	EXPECT_EQ(FTempDirectory::ReadBytes(KitPaths::ModOutputDir() / TEXT("Islands/preview.jpg")), PngBytes);
	const std::string Uploader = Utf8(KitPaths::Uploader()) + " -preview \"" + Utf8(Ready.Preview) +
								 "\" -title \"Island Pack\" -desc \"Two islands\" -vis \"Public\" -content \"";
	EXPECT_NE(Run.Stdout.find(Uploader), std::string::npos) << Run.Stdout;
	EXPECT_NE(Run.Stdout.find(" +login author ******** +workshop_build_item \"" + Utf8(ItemFile) + "\" +quit"), std::string::npos)
		<< Run.Stdout;
	EXPECT_EQ(Run.Stdout.find(Password), std::string::npos);
	ExpectNoFileHolds(Ready.Kit.Root(), Password);
}

TEST(TesselCmdTests, CheckRefusesWhatWouldBreakTheCookTheItemFileOrTheIdReadBack)
{
	FReadyKit Ready;
	Ready.MakeUploadable();
	auto Finds = [&Ready](const std::string& Mod, const std::string& Expected)
	{
		const FCommandRun Run = Ready.Run({"check", Mod});
		EXPECT_EQ(Run.ExitCode, 1) << Expected;
		EXPECT_NE(Run.Stdout.find(Expected), std::string::npos) << Expected << "\n" << Run.Stdout;
	};
	ASSERT_EQ(Ready.Run({"set", "Islands", "title=Islands\\"}).ExitCode, 0);
	Finds("Islands", "FAIL  item-file    the title holds a backslash at its end");
	for (const auto& [Text, Breaker] : {std::pair<std::string, std::string>{"Say \"hi\"", "a double quote"},
										{"{ x }", "a brace"}, {"one\ntwo", "a line break"}})
	{
		ASSERT_EQ(Ready.Run({"set", "Islands", "title=Islands", "description=" + Text}).ExitCode, 0);
		Finds("Islands", "the description holds " + Breaker + ", which would break the Workshop item file");
	}
	ASSERT_EQ(Ready.Run({"set", "Islands", "description=plain", "change-notes=Now with \"PublishedFileId\" 7"}).ExitCode, 0);
	Finds("Islands", "the change-notes holds \"publishedfileid\", which the read-back would take for the item's id");

	// A folder name with a blank can't be cooked; the advice names the folder.
	Ready.Kit.AddMod(TEXT("Sky Lanterns"), {TEXT("Festival.umap")});
	Finds("Sky Lanterns", "FAIL  folder       \"Sky Lanterns\" has a blank, and the cook splits its folder name there");
	Finds("Sky Lanterns", "rename the folder " + Utf8(Ready.Kit.ModsDir()) + "/Sky Lanterns to a name without blanks");

	ASSERT_EQ(Ready.Run({"set", "Islands", "change-notes="}).ExitCode, 0);
	const FCommandRun Ok = Ready.Run({"check", "Islands"});
	EXPECT_EQ(Ok.ExitCode, 0) << Ok.Stdout;
	EXPECT_NE(Ok.Stdout.find("ok    kit-path"), std::string::npos) << Ok.Stdout;
#ifndef _WIN32
	// The same kit reached through a path with a blank: the uploader can't start there, SteamCMD still can.
	const std::filesystem::path Spaced = std::filesystem::path(Utf8(Ready.Kit.Root())) / "the kit";
	std::filesystem::create_directory_symlink(Utf8(Ready.Kit.Root()), Spaced);
	const FCommandRun Blank = RunTesselCmd({"--kit", Spaced.string(), "check", "Islands"});
	EXPECT_EQ(Blank.ExitCode, 0) << Blank.Stdout;
	EXPECT_NE(Blank.Stdout.find("warn  kit-path     " + Spaced.string() + " has a blank, so the kit's uploader can't start"),
			  std::string::npos)
		<< Blank.Stdout;
#endif
}

TEST(TesselCmdTests, ACachedSteamLoginPassesNoPassword)
{
	FReadyKit Ready;
	Ready.MakeUploadable();
	const std::map<std::string, std::string> UserOnly{{"STEAM_USERNAME", "author"}};
	// Never logged in on this machine: SteamCMD wants the password, which nobody can type into it.
	const FCommandRun Uncached = Ready.Run({"publish", "Islands", "--steam-cached-login"}, UserOnly);
	EXPECT_EQ(Uncached.ExitCode, 1) << Uncached.Stderr;
	EXPECT_NE(Uncached.Stdout.find("FAILED (Invalid Password)"), std::string::npos) << Uncached.Stdout;

	// Once logged in with the password (as a runner is set up, by hand), the user name is enough; a password
	// in the environment is not passed on.
	std::map<std::string, std::string> Login = UserOnly;
	Login["STEAM_PASSWORD"] = Password;
	ASSERT_EQ(Ready.Run({"publish", "Islands"}, Login).ExitCode, 0);
	const FCommandRun Cached = Ready.Run({"--json", "publish", "Islands", "--steam-cached-login"}, Login);
	ASSERT_EQ(Cached.ExitCode, 0) << Cached.Stderr;
	EXPECT_NE(Cached.Stderr.find("Logging in using cached credentials."), std::string::npos) << Cached.Stderr;
	EXPECT_EQ(Cached.Stderr.find("warning:"), std::string::npos) << Cached.Stderr;
	EXPECT_EQ(Cached.Stderr.find(Password), std::string::npos);
	EXPECT_EQ(ParseJsonText(Cached.Stdout)->GetArrayField(TEXT("results"))[0]->AsObject()->GetStringField(TEXT("publishedFileId")),
			  FString(TEXT("2900000001")));
	const FCommandRun Dry = Ready.Run({"publish", "Islands", "--dry-run", "--steam-cached-login"}, UserOnly);
	EXPECT_NE(Dry.Stdout.find("+login author  +workshop_build_item"), std::string::npos) << Dry.Stdout;
}

TEST(TesselCmdTests, AnUpdateThatComesBackAsAnotherItemFailsAndKeepsTheId)
{
	FReadyKit Ready;
	Ready.MakeUploadable();
	ASSERT_EQ(Ready.Run({"publish", "Islands"}, {{"TESSEL_UPLOADER_EXIT", "150"}}).ExitCode, 0);
	const FCommandRun Other = Ready.Run({"publish", "Islands"}, {{"TESSEL_UPLOADER_EXIT", "151"}});
	EXPECT_EQ(Other.ExitCode, 1);
	EXPECT_NE(Other.Stderr.find("the update of item 150 read back id 151; the known id stays"), std::string::npos) << Other.Stderr;
	const TSharedPtr<FJsonObject> Listed = ParseJsonText(Ready.Run({"--json", "list"}).Stdout);
	EXPECT_EQ(Listed->GetArrayField(TEXT("mods"))[0]->AsObject()->GetStringField(TEXT("ItemSeamId")), FString(TEXT("150")));
}

TEST(TesselCmdTests, TwoRunsAtOnceNeverBothSucceedWithAnEditLost)
{
	FReadyKit Ready;
	ASSERT_EQ(Ready.Run({"set", "Islands", "title=start"}).ExitCode, 0);
	// A temporary of a save whose run was killed goes at the next save; one of a run still going stays.
#ifdef _WIN32
	const std::string Living = std::to_string(GetCurrentProcessId());
#else
	const std::string Living = std::to_string(getpid());
#endif
	const FString Dead = Ready.Kit.WriteFile(TEXT("Orrery/Saved/.Mods.db.tmp4194302-0"), "half");
	const FString Alive = Ready.Kit.WriteFile(FString::FromUtf8("Orrery/Saved/.Mods.db.tmp" + Living + "-0"), "half");

#ifdef _WIN32
	constexpr int Rounds = 15;
#else
	constexpr int Rounds = 50;
#endif
	int BothSucceeded = 0;
	for (int Round = 0; Round < Rounds; ++Round)
	{
		const std::string Title = "title-" + std::to_string(Round);
		const std::string Description = "description-" + std::to_string(Round);
		FCommandRun First;
		FCommandRun Second;
		std::thread Other([&] { Second = Ready.Run({"set", "Islands", "description=" + Description}); });
		First = Ready.Run({"set", "Islands", "title=" + Title});
		Other.join();
		const TSharedPtr<FJsonObject> Saved =
			ParseJsonText(Ready.Run({"--json", "list"}).Stdout)->GetArrayField(TEXT("mods"))[0]->AsObject();
		// Whatever ran first, every run that says it saved has its edit in the file; one that lost says so.
		for (const auto& [Run, Field, Value] : {std::tuple{&First, TEXT("Title"), Title}, std::tuple{&Second, TEXT("Description"), Description}})
		{
			if (Run->ExitCode == 0)
			{
				EXPECT_EQ(Saved->GetStringField(Field), FString::FromUtf8(Value)) << "round " << Round;
			}
			else
			{
				EXPECT_EQ(Run->ExitCode, 1) << Run->Stderr;
				EXPECT_NE(Run->Stderr.find("changed since this run read it"), std::string::npos) << Run->Stderr;
			}
		}
		BothSucceeded += First.ExitCode == 0 && Second.ExitCode == 0;
	}
	std::printf("both runs saved in %d of %d rounds\n", BothSucceeded, Rounds);
	EXPECT_FALSE(FPaths::FileExists(Dead));
	EXPECT_TRUE(FPaths::FileExists(Alive));
}

TEST(TesselCmdTests, APackagedTreeThatIsNotWholeFailsTheCookAndTheCheck)
{
	FReadyKit Ready;
	// Pictures and sounds hardly compress: three of 300 KB each.
	std::mt19937 Random(7);
	for (const TCHAR* Name : {TEXT("Big1.uasset"), TEXT("Big2.uasset"), TEXT("Big3.uasset")})
	{
		std::string Bytes(300 * 1024, '\0');
		for (char& Byte : Bytes)
		{
			Byte = static_cast<char>(Random());
		}
		Ready.Kit.WriteFile(TEXT("Orrery/Content/Mods/Islands/") + FString(Name), Bytes);
	}
	Ready.MakeUploadable();
	const FString Output = Ready.Kit.Root() / TEXT("ModTools/Output/Islands/WindowsNoEditor");

	// A package cut short, and one whose size file disagrees: each named, with the cook to do.
	const FString Big = Output / TEXT("Big2.uasset.z");
	const std::string Whole = FTempDirectory::ReadBytes(Big);
	Ready.Kit.WriteFile(TEXT("ModTools/Output/Islands/WindowsNoEditor/Big2.uasset.z"), Whole.substr(0, Whole.size() / 2));
	FCommandRun Check = Ready.Run({"check", "Islands"});
	EXPECT_EQ(Check.ExitCode, 1);
	EXPECT_NE(Check.Stdout.find("FAIL  packaged     " + Utf8(Big) + ": "), std::string::npos) << Check.Stdout;
	Ready.Kit.WriteFile(TEXT("ModTools/Output/Islands/WindowsNoEditor/Big2.uasset.z"), Whole);
	Ready.Kit.WriteFile(TEXT("ModTools/Output/Islands/WindowsNoEditor/Big2.uasset.z.uncompressed_size"), "7\r\n");
	Check = Ready.Run({"check", "Islands"});
	EXPECT_EQ(Check.ExitCode, 1);
	EXPECT_NE(Check.Stdout.find("FAIL  packaged     " + Utf8(Big) + ": "), std::string::npos) << Check.Stdout;
	ASSERT_EQ(Ready.Run({"cook", "Islands"}).ExitCode, 0);
	ASSERT_EQ(Ready.Run({"check", "Islands"}).ExitCode, 0);

#ifdef _WIN32
	GTEST_SKIP() << "the full disk is a small tmpfs mounted over the output folder, which Windows has not";
#else
	// A disk with room for the cooked tree and not for all of its packages.
	const std::string Mount = Utf8(Ready.Kit.Root() / TEXT("ModTools/Output"));
	IFileManager::Get().DeleteDirectory(*FString::FromUtf8(Mount), false, true);
	IFileManager::Get().MakeDirectory(*FString::FromUtf8(Mount), true);
	if (std::system(("mount -t tmpfs -o size=1400k tmpfs '" + Mount + "' 2>/dev/null").c_str()) != 0)
	{
		GTEST_SKIP() << "no tmpfs can be mounted here (it takes root)";
	}
	struct FUnmount
	{
		std::string Path;
		~FUnmount() { std::system(("umount -l '" + Path + "'").c_str()); }
	} Unmount{Mount};
	const FCommandRun Full = Ready.Run({"cook", "Islands"});
	EXPECT_EQ(Full.ExitCode, 1) << Full.Stderr;
	EXPECT_NE(Full.Stderr.find("Islands: packaging stopped early: " + Utf8(Output) + ": "), std::string::npos) << Full.Stderr;
	EXPECT_NE(Full.Stderr.find("cooked files not written (is the disk full?): "), std::string::npos) << Full.Stderr;
	EXPECT_NE(Full.Stderr.find(".uasset"), std::string::npos) << Full.Stderr;
	Check = Ready.Run({"check", "Islands"});
	EXPECT_EQ(Check.ExitCode, 1);
	EXPECT_NE(Check.Stdout.find("FAIL  packaged"), std::string::npos) << Check.Stdout;
	const FCommandRun Publish = Ready.Run({"publish", "Islands"}, {{"TESSEL_UPLOADER_EXIT", "150"}});
	EXPECT_EQ(Publish.ExitCode, 1);
	EXPECT_NE(Publish.Stderr.find("Islands: not ready to upload"), std::string::npos) << Publish.Stderr;
#endif
}

namespace
{
#ifndef _WIN32
	// The processes still running (zombies aside) whose command line mentions Text, as "pid: command line".
	std::vector<std::string> ProcessesMentioning(const std::string& Text)
	{
		std::vector<std::string> Found;
		for (const auto& Entry : std::filesystem::directory_iterator("/proc"))
		{
			const std::string Pid = Entry.path().filename().string();
			if (Pid.find_first_not_of("0123456789") != std::string::npos)
			{
				continue;
			}
			std::string CommandLine = FTempDirectory::ReadBytes(FString::FromUtf8(Entry.path().string() + "/cmdline"));
			const std::string Stat = FTempDirectory::ReadBytes(FString::FromUtf8(Entry.path().string() + "/stat"));
			const size_t State = Stat.rfind(") ");
			if (CommandLine.find(Text) != std::string::npos && State != std::string::npos && Stat[State + 2] != 'Z')
			{
				std::replace(CommandLine.begin(), CommandLine.end(), '\0', ' ');
				Found.push_back(Pid + ": " + CommandLine);
			}
		}
		return Found;
	}

	// TesselCmd started in the background by a shell, sent Signal once Awaited shows in its output, and waited for.
	FCommandRun SignalDuring(const FReadyKit& Ready, const std::vector<std::string>& Args, const std::string& Awaited, const char* Signal,
							 std::map<std::string, std::string> Environment)
	{
		std::string Quoted;
		for (const std::string& Arg : Args)
		{
			Quoted += " '" + Arg + "'";
		}
		Environment["OUT"] = Utf8(Ready.Kit.Root() / TEXT("run-output.txt"));
		const std::string Script = "\"$0\" --kit \"$1\"" + Quoted + " >\"$OUT\" 2>&1 & pid=$!\n"
								   "for i in $(seq 400); do grep -q '" + Awaited + "' \"$OUT\" && break; sleep 0.025; done\n"
								   "kill -" + Signal + " $pid; wait $pid; code=$?; cat \"$OUT\"; exit $code\n";
		return RunProgram("/bin/sh", FCommandSetup{{"-c", Script, TesselCmdPath(), Utf8(Ready.Kit.Root())}, std::move(Environment), std::string()});
	}
#endif
}

TEST(TesselCmdTests, AStoppedRunEndsEveryProgramItStarted)
{
	FReadyKit Ready;
	Ready.MakeUploadable();
	// SteamCMD hangs while the content uploads, with the password on its command line: the time limit ends it.
	const std::map<std::string, std::string> Login{{"STEAM_USERNAME", "author"}, {"STEAM_PASSWORD", Password}, {"TESSEL_STEAMCMD_MODE", "hang"}};
	const FCommandRun Hung = Ready.Run({"publish", "Islands", "--timeout", "4"}, Login);
	EXPECT_EQ(Hung.ExitCode, 1) << Hung.Stderr;
	EXPECT_NE(Hung.Stderr.find("TesselCmd: timed out after 4 seconds (--timeout): the run's programs were ended"), std::string::npos)
		<< Hung.Stderr;
	EXPECT_EQ(Ready.Run({"cook", "Islands", "--timeout", "0"}).ExitCode, 2);
#ifndef _WIN32
	const std::string Kit = Utf8(Ready.Kit.Root());
	EXPECT_EQ(ProcessesMentioning(Kit), std::vector<std::string>{});
	const FCommandRun Interrupted = SignalDuring(Ready, {"publish", "Islands"}, "Uploading content", "INT", Login);
	EXPECT_EQ(Interrupted.ExitCode, 130) << Interrupted.Stdout;
	EXPECT_NE(Interrupted.Stdout.find("TesselCmd: stopped by SIGINT"), std::string::npos) << Interrupted.Stdout;
	EXPECT_EQ(ProcessesMentioning(Kit), std::vector<std::string>{});
#endif

	// A cook that hangs at its end with a grandchild holding its output: the same, for the cook's whole tree.
	// Meanwhile, with no terminal, a line every 10 seconds tells a CI service that the job lives.
	const FCommandRun TimedOut = Ready.Run({"cook", "Islands", "--timeout", "16"}, {{"TESSEL_COOK_MODE", "hang"}});
	EXPECT_EQ(TimedOut.ExitCode, 1) << TimedOut.Stderr;
	EXPECT_NE(TimedOut.Stderr.find("timed out after 16 seconds"), std::string::npos) << TimedOut.Stderr;
	EXPECT_NE(TimedOut.Stdout.find("waiting for the shader compiler"), std::string::npos) << TimedOut.Stdout;
	EXPECT_NE(TimedOut.Stdout.find("TesselCmd: still cooking Islands, 1"), std::string::npos) << TimedOut.Stdout;
#ifndef _WIN32
	EXPECT_EQ(ProcessesMentioning(Kit), std::vector<std::string>{});
	const FCommandRun Terminated = SignalDuring(Ready, {"cook", "Islands"}, "shader compiler", "TERM", {{"TESSEL_COOK_MODE", "hang"}});
	EXPECT_EQ(Terminated.ExitCode, 143) << Terminated.Stdout;
	EXPECT_NE(Terminated.Stdout.find("TesselCmd: stopped by SIGTERM: the run's programs were ended"), std::string::npos) << Terminated.Stdout;
	EXPECT_EQ(ProcessesMentioning(Kit), std::vector<std::string>{});
#endif
	// Whatever was stopped, Mods.db still reads, and a stopped cook left no tree to upload.
	EXPECT_EQ(Ready.Run({"list"}).ExitCode, 0);
	EXPECT_EQ(Ready.Run({"check", "Islands"}).ExitCode, 1);
}

TEST(TesselCmdTests, PublishTakesTheWindowsRoutesAndKeepsThePasswordSecret)
{
	FReadyKit Ready;
	const FCommandRun NotReady = Ready.Run({"publish", "Islands"}, {{"TESSEL_UPLOADER_EXIT", "150"}});
	EXPECT_EQ(NotReady.ExitCode, 1);
	EXPECT_NE(NotReady.Stderr.find("Islands: not ready to upload"), std::string::npos) << NotReady.Stderr;
	EXPECT_NE(NotReady.Stderr.find("Islands: packaged: " + Utf8(KitPaths::ModOutputDir()) + "/Islands/mod.info: missing"),
			  std::string::npos)
		<< NotReady.Stderr;
	Ready.MakeUploadable();

	// The uploader publishes: its exit code is the id, saved at once.
	const FCommandRun ByUploader = Ready.Run({"--json", "publish", "Islands"}, {{"TESSEL_UPLOADER_EXIT", "150"}});
	ASSERT_EQ(ByUploader.ExitCode, 0) << ByUploader.Stderr;
	TSharedPtr<FJsonObject> Result = ParseJsonText(ByUploader.Stdout)->GetArrayField(TEXT("results"))[0]->AsObject();
	EXPECT_EQ(Result->GetStringField(TEXT("route")), FString(TEXT("uploader")));
	EXPECT_EQ(Result->GetStringField(TEXT("publishedFileId")), FString(TEXT("150")));
	EXPECT_EQ(Result->GetStringField(TEXT("url")), FString(TEXT("https://steamcommunity.com/sharedfiles/filedetails/?id=150")));
	auto SavedId = [&Ready]
	{
		return ParseJsonText(Ready.Run({"--json", "list"}).Stdout)
			->GetArrayField(TEXT("mods"))[0]
			->AsObject()
			->GetStringField(TEXT("ItemSeamId"));
	};
	EXPECT_EQ(SavedId(), FString(TEXT("150")));

	// Without a login and without a terminal to ask on, SteamCMD is not started.
	const FCommandRun NoLogin = Ready.Run({"publish", "Islands"});
	EXPECT_EQ(NoLogin.ExitCode, 2);
	EXPECT_NE(NoLogin.Stderr.find("Steam username is required to upload a mod."), std::string::npos) << NoLogin.Stderr;

	// A wrong password: SteamCMD says so, and the run fails.
	const std::map<std::string, std::string> Login{{"STEAM_USERNAME", "author"}, {"STEAM_PASSWORD", Password}};
	std::map<std::string, std::string> Wrong = Login;
	Wrong["TESSEL_STEAMCMD_MODE"] = "wrong-password";
	const FCommandRun Refused = Ready.Run({"publish", "Islands"}, Wrong);
	EXPECT_EQ(Refused.ExitCode, 1);
	EXPECT_NE(Refused.Stdout.find("FAILED (Invalid Password)"), std::string::npos) << Refused.Stdout;
	EXPECT_NE(Refused.Stderr.find("Islands: SteamCMD did not publish the item"), std::string::npos) << Refused.Stderr;

	// The uploader declines (99), SteamCMD publishes a new item: the tool reads the id back.
	{
		// "Reset Publisher Id", then the window's save.
		FTesselSession Reset;
		Reset.GetMods()[0]->ItemSeamId.Empty();
		Reset.Save();
	}
	const FCommandRun BySteamCmd = Ready.Run({"--json", "publish", "Islands"}, Login);
	ASSERT_EQ(BySteamCmd.ExitCode, 0) << BySteamCmd.Stderr;
	Result = ParseJsonText(BySteamCmd.Stdout)->GetArrayField(TEXT("results"))[0]->AsObject();
	EXPECT_EQ(Result->GetStringField(TEXT("route")), FString(TEXT("steamcmd")));
	EXPECT_EQ(Result->GetStringField(TEXT("publishedFileId")), FString(TEXT("2900000001")));
	// SteamCMD's own words reach stderr and the result, never stdout's JSON.
	EXPECT_NE(Result->GetStringField(TEXT("steamCmdOutput")).Find(TEXT("Success.")), INDEX_NONE);
	EXPECT_NE(BySteamCmd.Stderr.find("Logging in user 'author'"), std::string::npos);
	EXPECT_EQ(SavedId(), FString(TEXT("2900000001")));

	for (const FCommandRun* Run : {&Refused, &BySteamCmd})
	{
		EXPECT_EQ(Run->Stdout.find(Password), std::string::npos);
		EXPECT_EQ(Run->Stderr.find(Password), std::string::npos);
	}
	ExpectNoFileHolds(Ready.Kit.Root(), Password);
}

TEST(TesselCmdTests, NoChildInheritsThePasswordAndAnIncompleteLoginWritesNothing)
{
	FReadyKit Ready;
	Ready.MakeUploadable();
	const FString Record = Ready.Kit.Root() / TEXT("children-environment.txt");
	const std::map<std::string, std::string> Login{
		{"STEAM_USERNAME", "author"}, {"STEAM_PASSWORD", Password}, {"TESSEL_STANDIN_ENVIRONMENT_OUT", Utf8(Record)}};
	ASSERT_EQ(Ready.Run({"cook", "Islands"}, Login).ExitCode, 0);
	// The uploader declines, so SteamCMD runs too: three children, none with the password.
	const FCommandRun Published = Ready.Run({"publish", "Islands"}, Login);
	ASSERT_EQ(Published.ExitCode, 0) << Published.Stderr;
	const std::string Seen = FTempDirectory::ReadBytes(Record);
	std::istringstream Lines(Seen);
	int32 Children = 0;
	for (std::string Line; std::getline(Lines, Line);)
	{
		Children += Line.rfind("[", 0) == 0;
	}
	EXPECT_GE(Children, 3) << Seen;
	EXPECT_NE(Seen.find("STEAM_USERNAME=author"), std::string::npos) << Seen;
	EXPECT_EQ(Seen.find("STEAM_PASSWORD"), std::string::npos) << Seen;
	EXPECT_NE(Published.Stderr.find("warning: SteamCMD takes the password on its command line"), std::string::npos)
		<< Published.Stderr;

	// A user name without a password: nothing starts and Mods.db stays as it was, byte for byte.
	const FString Database = KitPaths::ModDatabase();
	const std::string Before = FTempDirectory::ReadBytes(Database);
	ASSERT_NE(Before.find(std::string("a\0u\0t\0h\0o\0r\0", 12)), std::string::npos); // the file is UTF-16
	const FCommandRun Incomplete = Ready.Run({"publish", "Islands"}, {{"STEAM_USERNAME", "intruder"}});
	EXPECT_EQ(Incomplete.ExitCode, 2);
	EXPECT_NE(Incomplete.Stderr.find("Steam password is required to upload a mod."), std::string::npos) << Incomplete.Stderr;
	EXPECT_EQ(Incomplete.Stderr.find("warning:"), std::string::npos) << Incomplete.Stderr;
	EXPECT_EQ(FTempDirectory::ReadBytes(Database), Before);
	ExpectNoFileHolds(Ready.Kit.Root(), Password);
}

TEST(TesselCmdTests, InspectChecksPackagesTreesAndDescriptionFiles)
{
	FReadyKit Ready;
	Ready.MakeUploadable();
	const FString Target = KitPaths::ModOutputDir() / TEXT("Islands/WindowsNoEditor");
	const FString Alpha = Target / TEXT("Alpha.umap.z");
	const std::string Source = FTempDirectory::ReadBytes(Ready.Kit.ModsDir() / TEXT("Islands/Alpha.umap"));

	FTempDirectory Scratch;
	const FString Extracted = Scratch / TEXT("alpha.bin");
	const FCommandRun Good = RunTesselCmd({"--json", "inspect", Utf8(Alpha), "--extract", Utf8(Extracted)});
	ASSERT_EQ(Good.ExitCode, 0) << Good.Stderr;
	const TSharedPtr<FJsonObject> Report = ParseJsonText(Good.Stdout);
	EXPECT_EQ(Report->GetNumberField(TEXT("chunks")), 1.0);
	EXPECT_EQ(Report->GetNumberField(TEXT("uncompressedBytes")), static_cast<double>(Source.size()));
	EXPECT_EQ(Report->GetNumberField(TEXT("sizeFile")), static_cast<double>(Source.size()));
	EXPECT_EQ(FTempDirectory::ReadBytes(Extracted), Source);

	const FCommandRun Tree = RunTesselCmd({"--json", "inspect", Utf8(Target / TEXT(".."))});
	ASSERT_EQ(Tree.ExitCode, 0) << Tree.Stderr;
	const TSharedPtr<FJsonObject> Summary = ParseJsonText(Tree.Stdout);
	EXPECT_EQ(Summary->GetArrayField(TEXT("packages")).Num(), 2);
	EXPECT_TRUE(Summary->GetBoolField(TEXT("modInfo")));
	EXPECT_EQ(Summary->GetArrayField(TEXT("problems")).Num(), 0);

	// A chunk record that lies: named, exit 2, and nothing extracted.
	std::string Lying = FTempDirectory::ReadBytes(Alpha);
	Lying[40] = 5;
	const FString LyingPath = Scratch.WriteFile(TEXT("lying.umap.z"), Lying);
	const FString NotWritten = Scratch / TEXT("lying.bin");
	const FCommandRun Bad = RunTesselCmd({"inspect", Utf8(LyingPath), "--extract", Utf8(NotWritten)});
	EXPECT_EQ(Bad.ExitCode, 2);
	EXPECT_NE(Bad.Stderr.find(Utf8(LyingPath) + ": chunk record 2 says"), std::string::npos) << Bad.Stderr;
	EXPECT_FALSE(IFileManager::Get().FileExists(*NotWritten));
	EXPECT_FALSE(IFileManager::Get().FileExists(*(NotWritten + TEXT(".partial"))));

	// A size file that disagrees makes the tree fail, naming the file.
	FFileHelper::SaveStringToFile(TEXT("999\r\n"), *(Alpha + TEXT(".uncompressed_size")));
	const FCommandRun Mismatch = RunTesselCmd({"inspect", Utf8(Target)});
	EXPECT_EQ(Mismatch.ExitCode, 2);
	EXPECT_NE(Mismatch.Stderr.find(Utf8(Alpha) + ": decodes to " + std::to_string(Source.size()) + " bytes, but its size file says 999"),
			  std::string::npos)
		<< Mismatch.Stderr;

	// The test run's mod file, whole and cut short.
	FTempDirectory TestOutput;
	ASSERT_EQ(Ready.Run({"cook", "Islands", "--test-output", Utf8(TestOutput.Get()), "--mod-id", "7", "--mod-title", "Isle"}).ExitCode, 0);
	const FCommandRun Mod = RunTesselCmd({"--json", "inspect", Utf8(TestOutput / TEXT("7.mod"))});
	ASSERT_EQ(Mod.ExitCode, 0) << Mod.Stderr;
	const TSharedPtr<FJsonObject> ModFile = ParseJsonText(Mod.Stdout);
	EXPECT_EQ(ModFile->GetNumberField(TEXT("modNumber")), 7.0);
	EXPECT_EQ(ModFile->GetStringField(TEXT("title")), FString(TEXT("Isle")));
	EXPECT_EQ(ModFile->GetNumberField(TEXT("magic")), static_cast<double>(0xFF22FF33u));
	EXPECT_EQ(ModFile->GetArrayField(TEXT("maps")).Num(), 2);
	EXPECT_EQ(ModFile->GetObjectField(TEXT("metadata"))->GetStringField(TEXT("ModName")), FString(TEXT("Islands")));
	const std::string Whole = FTempDirectory::ReadBytes(TestOutput / TEXT("7.mod"));
	const FString Cut = Scratch.WriteFile(TEXT("7.mod"), Whole.substr(0, 14));
	const FCommandRun Truncated = RunTesselCmd({"inspect", Utf8(Cut)});
	EXPECT_EQ(Truncated.ExitCode, 2);
	EXPECT_NE(Truncated.Stderr.find("truncated or broken in the title, which begins at byte 8 of 14"), std::string::npos)
		<< Truncated.Stderr;

	const FCommandRun Info = RunTesselCmd({"inspect", Utf8(Target / TEXT("../mod.info"))});
	EXPECT_EQ(Info.ExitCode, 0);
	EXPECT_NE(Info.Stdout.find("  Maps:           Alpha, Beta"), std::string::npos) << Info.Stdout;

	const FCommandRun Unknown = RunTesselCmd({"inspect", Utf8(Ready.Preview)});
	EXPECT_EQ(Unknown.ExitCode, 2);
	EXPECT_NE(Unknown.Stderr.find("not a file inspect knows"), std::string::npos);
}

TEST(TesselCmdTests, HelpAndUsageErrors)
{
	const FCommandRun Help = RunTesselCmd({"cook", "--help"});
	EXPECT_EQ(Help.ExitCode, 0);
	for (const char* Expected : {"--modasdlc", "--mod-id", "--mod-title", "--test-output", "--kind", "--timeout", "Exit codes: 0 success, 1 the job failed or timed out, 2",
							  "128 + N stopped by signal N"})
	{
		EXPECT_NE(Help.Stdout.find(Expected), std::string::npos) << Expected;
	}
	EXPECT_EQ(RunTesselCmd(std::vector<std::string>{}).ExitCode, 2);
	EXPECT_EQ(RunTesselCmd({"bake"}).ExitCode, 2);
	// The password has no option of its own.
	EXPECT_EQ(RunTesselCmd({"publish", "Islands", "--password", "x"}).ExitCode, 2);
}

TEST(TesselCmdTests, APasswordAskedOnTheTerminalIsNotEchoed)
{
#ifdef _WIN32
	GTEST_SKIP() << "the terminal is a pseudo-terminal made by forkpty, which Windows has not";
#else
	FReadyKit Ready;
	Ready.MakeUploadable();
	// The child gets a terminal of its own; the test types the password once the prompt is up.
	int Terminal = -1;
	const pid_t Child = forkpty(&Terminal, nullptr, nullptr, nullptr);
	ASSERT_GE(Child, 0);
	if (Child == 0)
	{
		setenv("STEAM_USERNAME", "author", 1);
		unsetenv("STEAM_PASSWORD");
		const std::string Kit = Utf8(Ready.Kit.Root());
		execl(TestPaths::TesselCmd, TestPaths::TesselCmd, "--kit", Kit.c_str(), "publish", "Islands", static_cast<char*>(nullptr));
		_exit(127);
	}
	std::string Shown;
	bool bTyped = false;
	const auto Deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
	while (std::chrono::steady_clock::now() < Deadline)
	{
		pollfd Poll{Terminal, POLLIN, 0};
		if (poll(&Poll, 1, 100) <= 0)
		{
			continue;
		}
		char Buffer[1024];
		const ssize_t Count = read(Terminal, Buffer, sizeof(Buffer));
		if (Count <= 0)
		{
			break;
		}
		Shown.append(Buffer, static_cast<size_t>(Count));
		if (!bTyped && Shown.find("Steam password for author: ") != std::string::npos)
		{
			const std::string Typed = Password + "\n";
			ASSERT_EQ(write(Terminal, Typed.data(), Typed.size()), static_cast<ssize_t>(Typed.size()));
			bTyped = true;
		}
	}
	// A child still waiting at the deadline fails the test instead of hanging it.
	int Status = 0;
	if (waitpid(Child, &Status, WNOHANG) == 0)
	{
		kill(Child, SIGKILL);
		waitpid(Child, &Status, 0);
	}
	close(Terminal);
	EXPECT_TRUE(bTyped) << Shown;
	EXPECT_TRUE(WIFEXITED(Status) && WEXITSTATUS(Status) == 0) << Shown;
	EXPECT_NE(Shown.find("Islands: published through SteamCMD: id 2900000001"), std::string::npos) << Shown;
	EXPECT_EQ(Shown.find(Password), std::string::npos) << Shown;
	ExpectNoFileHolds(Ready.Kit.Root(), Password);
#endif
}
