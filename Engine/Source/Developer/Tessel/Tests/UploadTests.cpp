#include "JsonTestUtils.h"
#include "TesselSession.h"
#include "ToolKit.h"

#include "HAL/PlatformFile.h"
#include "Misc/FileHelper.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Input/SEditableTextBox.h"

#include <gtest/gtest.h>
#ifdef _WIN32
#include "Windows/WindowsApi.h"
#endif

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace
{
	const std::string PngBytes = std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\x01\0\0\0\x01\x08\x02\0\0\0", 29);
	const FString StartAndEndLines = TEXT("************************** Upload Started **************************\n"
										  "************************** Upload Done **************************\n");

	// Sets a variable of the environment that children inherit; an empty value removes it.
	void SetEnvironment(const char* Name, const std::string& Value)
	{
#ifdef _WIN32
		// Wide, so that a path outside the ANSI code page arrives whole.
		_wputenv_s(WindowsApi::Wide(*FString::FromUtf8(Name)), WindowsApi::Wide(*FString::FromUtf8(Value)));
#else
		Value.empty() ? unsetenv(Name) : setenv(Name, Value.c_str(), 1);
#endif
	}

	// A kit with the mod "Islands" cooked and ready to upload, the template and SteamCMD in place (the uploader
	// too when asked, telling its arguments), and the tool open on it with the editor's windows answered from a
	// script.
	struct FUploadKit : FToolKit
	{
		explicit FUploadKit(bool bWithUploader = false)
		{
			AddPackagedMod(TEXT("Islands"));
			Preview = WriteFile(TEXT("Pictures/islands.png"), PngBytes);
			InstallWorkshopTemplate();
			InstallSteamCmd();
			if (bWithUploader)
			{
				InstallUploader();
				SetEnvironment("TESSEL_UPLOADER_ARGS_OUT", UploaderArgsPath().ToUtf8());
			}
			RestartTool();
			Mod->Title = TEXT("Island Pack");
			Mod->Description = TEXT("Two islands to sail between.");
			Mod->PreviewImage = Preview;
		}
		~FUploadKit()
		{
			SetEnvironment("TESSEL_UPLOADER_ARGS_OUT", "");
			Mod.Reset();
		}
		void RestartTool()
		{
			Mod.Reset();
			Mod = OpenTool().SelectedMod;
		}

		// Every dialog from now on: each box given a value is typed into (null leaves it as shown), then the
		// button with the key is pressed.
		void AnswerDialogs(const TCHAR* User, const TCHAR* Password, const TCHAR* ButtonKey)
		{
			Editor->OnModalWindow = [this, User, Password, ButtonKey](const TSharedRef<SWindow>& Window)
			{
				TArray<TSharedRef<SWidget>> Boxes = FindWidgetsByType(Window, TEXT("SEditableTextBox"));
				ASSERT_EQ(Boxes.Num(), 2);
				SEditableTextBox& UserBox = static_cast<SEditableTextBox&>(*Boxes[0]);
				SEditableTextBox& PasswordBox = static_cast<SEditableTextBox&>(*Boxes[1]);
				Shown.Add(UserBox.GetShownText() + TEXT("|") + PasswordBox.GetShownText());
				if (User)
				{
					UserBox.SetTextFromUser(User);
				}
				if (Password)
				{
					PasswordBox.SetTextFromUser(Password);
				}
				static_cast<SButton&>(*FindWidgetByKey(Window, ButtonKey)).Click();
			};
		}

		FString Path(const TCHAR* Relative) const { return Root() / Relative; }
		bool Exists(const TCHAR* Relative) const { return FPaths::FileExists(Path(Relative)); }
		std::string Bytes(const TCHAR* Relative) const { return FTempDirectory::ReadBytes(Path(Relative)); }
		std::string ItemFile() const { return Bytes(TEXT("ModTools/ModConfigs/Islands.vdf")); }
		std::string SteamCmdLog() const { return Bytes(TEXT("ModTools/SteamCMD/logs/workshop_log.txt")); }
		std::string PublishedItem(const FString& Id) const
		{
			return Bytes(*(TEXT("ModTools/SteamCMD/workshop/1296880/") + Id + TEXT(".vdf")));
		}
		// "" for SteamCMD's ordinary run.
		void SetSteamCmdMode(const char* Mode) const { WriteFile(TEXT("ModTools/SteamCMD/steamcmd.mode"), Mode); }
		void SetUploaderAnswer(const char* Answer) const { WriteFile(TEXT("ModTools/Uploader/uploader.exit"), Answer); }
		FString UploaderArgsPath() const { return Root() / TEXT("uploader-args.bin"); }
		// The arguments the stand-in uploader got, each ended by "|"; empty when it didn't run since the last call.
		std::string TakeUploaderArgs() const
		{
			std::string Args = FTempDirectory::ReadBytes(UploaderArgsPath());
			std::replace(Args.begin(), Args.end(), '\0', '|');
			FPlatformFileManager::Get().GetPlatformFile().DeleteFile(*UploaderArgsPath());
			return Args;
		}
		static bool Contains(const std::string& Haystack, const std::string& Needle) { return Haystack.find(Needle) != std::string::npos; }
		static std::string ItemLine(const char* Key, const char* Value) { return std::string("\t\"") + Key + "\"\t\t\"" + Value + "\"\n"; }

		TSharedPtr<FModSetup> Mod;
		FString Preview;
		// "user|password" as each dialog showed them when it opened.
		TArray<FString> Shown;
	};

	// The files at or below Path (a file or a folder) whose bytes hold Needle.
	std::vector<std::string> FilesHolding(const FString& Path, const std::string& Needle)
	{
		std::map<std::string, std::string> Files = FTempDirectory::ReadTree(Path);
		std::error_code Error;
		if (std::filesystem::is_regular_file(Path.ToUtf8(), Error))
		{
			Files[Path.ToUtf8()] = FTempDirectory::ReadBytes(Path);
		}
		std::vector<std::string> Found;
		for (const auto& [Name, Bytes] : Files)
		{
			if (FUploadKit::Contains(Bytes, Needle))
			{
				Found.push_back(Name);
			}
		}
		return Found;
	}
}

// A first upload through SteamCMD makes a new item; the next one updates it; after "Reset Publisher Id" the
// Workshop makes another. The user name survives a restart, the password doesn't, and it is on no disk.
TEST(UploadTests, SteamCmdRouteFromFirstUploadToResetAndRestart)
{
	const auto Started = std::filesystem::file_time_type::clock::now();
	const TCHAR* Password = TEXT("Tr0ub4dor&3-ship");
	FUploadKit Upload;
	Upload.AnswerDialogs(TEXT("mia"), Password, TEXT("Accept"));

	// No uploader in this kit: the dialog route. SteamCMD wrote the id into the item file, and the item arrived
	// as the record has it. This route doesn't save: the id waits for the next save.
	Upload.Tool->OnUploadClicked();
	EXPECT_EQ(Upload.Editor->ModalWindows.Num(), 1);
	EXPECT_EQ(Upload.Mod->ItemSeamId, FString(TEXT("2900000001")));
	EXPECT_EQ(Upload.Transcript(), StartAndEndLines);
	EXPECT_EQ(Upload.Bytes(TEXT("ModTools/Output/Islands/preview.jpg")), PngBytes);
	EXPECT_TRUE(FUploadKit::Contains(Upload.ItemFile(), FUploadKit::ItemLine("publishedfileid", "2900000001"))) << Upload.ItemFile();
	EXPECT_EQ(Upload.PublishedItem(TEXT("2900000001")), ReadGolden("published-item-first-upload.vdf"));
	EXPECT_FALSE(FPaths::FileExists(KitPaths::ModDatabase()));

	// The second dialog of the run shows both credentials; accepting them as they stand updates the item.
	// With SteamCMD leaving the file alone, it shows what the tool wrote: the pair from the record.
	Upload.SetSteamCmdMode("no-id");
	Upload.AnswerDialogs(nullptr, nullptr, TEXT("Accept"));
	Upload.Mod->ChangeNotes = TEXT("Adds a lighthouse.");
	Upload.Tool->OnUploadClicked();
	EXPECT_EQ(Upload.Shown.Last(), TEXT("mia|") + FString(Password));
	EXPECT_TRUE(FUploadKit::Contains(Upload.ItemFile(), "\t\"publishedfileid\" \"2900000001\"\n")) << Upload.ItemFile();
	EXPECT_EQ(Upload.Mod->ItemSeamId, FString(TEXT("2900000001")));
	EXPECT_TRUE(FUploadKit::Contains(Upload.SteamCmdLog(), "Updating workshop item 2900000001..."));
	EXPECT_TRUE(FUploadKit::Contains(Upload.PublishedItem(TEXT("2900000001")), FUploadKit::ItemLine("changenote", "Adds a lighthouse.")));

	// "Reset Publisher Id" saves at once, and the next item file has no pair: a new item.
	Upload.SetSteamCmdMode("");
	Upload.Tool->OnResetPublisherIdClicked();
	EXPECT_TRUE(ReadModDatabaseText().Contains(TEXT("\"ItemSeamId\": \"\",")));
	Upload.Tool->OnUploadClicked();
	EXPECT_EQ(Upload.Mod->ItemSeamId, FString(TEXT("2900000002")));
	EXPECT_TRUE(Upload.Exists(TEXT("ModTools/SteamCMD/workshop/1296880/2900000002.vdf")));

	// A restart after the save on close: the user name is back, the password box is empty.
	Upload.RestartTool();
	EXPECT_EQ(Upload.Mod->ItemSeamId, FString(TEXT("2900000002")));
	Upload.AnswerDialogs(nullptr, nullptr, TEXT("Decline"));
	Upload.Tool->OnUploadClicked();
	EXPECT_EQ(Upload.Shown.Last(), FString(TEXT("mia|")));
	Upload.Tool.Reset();

	// Neither the kit nor any temporary folder of the tests holds the password, in 8 or 16 bits.
	std::string Wide;
	for (const char Character : FString(Password).ToUtf8())
	{
		Wide += {Character, '\0'};
	}
	for (const std::string& Needle : {FString(Password).ToUtf8(), Wide})
	{
		EXPECT_EQ(FilesHolding(Upload.Root(), Needle), std::vector<std::string>());
		const char* TempRoot = std::getenv("TMPDIR") ? std::getenv("TMPDIR") : "/tmp";
		std::error_code Error;
		for (const auto& Entry : std::filesystem::directory_iterator(TempRoot, std::filesystem::directory_options::skip_permission_denied, Error))
		{
			if (Entry.last_write_time(Error) >= Started &&
				(Entry.is_regular_file(Error) || Entry.path().filename().string().rfind("tessel-", 0) == 0))
			{
				EXPECT_EQ(FilesHolding(FString::FromUtf8(Entry.path().string()), Needle), std::vector<std::string>());
			}
		}
	}
}

// SteamCMD's failures show only as an id that doesn't come: the two log lines stand in every case, and the
// item file and the preview stay for the next attempt.
TEST(UploadTests, SteamCmdFailuresLeaveTheIdAlone)
{
	FUploadKit Upload;
	// A password with a blank reaches SteamCMD as two arguments, the second taken for a Steam Guard code.
	Upload.AnswerDialogs(TEXT("mia"), TEXT("correct horse"), TEXT("Accept"));
	Upload.Tool->OnUploadClicked();
	EXPECT_TRUE(Upload.Mod->ItemSeamId.IsEmpty());
	EXPECT_TRUE(FUploadKit::Contains(Upload.SteamCmdLog(), "Logging in user 'mia' to Steam Public...\nFAILED (Invalid Password)\n"))
		<< Upload.SteamCmdLog();
	EXPECT_FALSE(FUploadKit::Contains(Upload.SteamCmdLog(), "horse"));
	EXPECT_EQ(Upload.Transcript(), StartAndEndLines);
	EXPECT_TRUE(Upload.Exists(TEXT("ModTools/ModConfigs/Islands.vdf")));
	EXPECT_TRUE(Upload.Exists(TEXT("ModTools/Output/Islands/preview.jpg")));

	Upload.AnswerDialogs(nullptr, TEXT("correcthorse"), TEXT("Accept"));
	Upload.Tool->OnUploadClicked();
	EXPECT_EQ(Upload.Mod->ItemSeamId, FString(TEXT("2900000001")));
	for (const char* Mode : {"wrong-password", "network", "steam-guard", "crash", "letters-id"})
	{
		Upload.SetSteamCmdMode(Mode);
		Upload.Tool->OnUploadClicked();
		EXPECT_EQ(Upload.Mod->ItemSeamId, FString(TEXT("2900000001"))) << Mode;
		EXPECT_EQ(Upload.Transcript(), StartAndEndLines) << Mode;
	}
	// The letters did reach the item file; the tool didn't take them.
	EXPECT_TRUE(FUploadKit::Contains(Upload.ItemFile(), FUploadKit::ItemLine("publishedfileid", "2900abc000001"))) << Upload.ItemFile();

	// With no SteamCMD at all the end line follows at once.
	Upload.SetSteamCmdMode("");
	FPlatformFileManager::Get().GetPlatformFile().DeleteFile(*Upload.Path(TEXT("ModTools/SteamCMD/steamcmd.exe")));
	Upload.Mod->ItemSeamId = TEXT("2900000001");
	Upload.Tool->OnUploadClicked();
	EXPECT_EQ(Upload.Mod->ItemSeamId, FString(TEXT("2900000001")));
	EXPECT_EQ(Upload.Transcript(), StartAndEndLines);
	EXPECT_TRUE(FUploadKit::Contains(Upload.ItemFile(), "\t\"publishedfileid\" \"2900000001\"\n"));
}

// Without a user name (asked first; a blank counts as one), without a password or without the template, an
// accepted dialog starts nothing: no file written, no program run, no log line; what was typed stays.
TEST(UploadTests, NothingStartsWithoutCredentialsOrTheTemplate)
{
	FUploadKit Upload;
	Upload.AnswerDialogs(TEXT(""), TEXT(""), TEXT("Accept"));
	Upload.Tool->OnUploadClicked();
	Upload.AnswerDialogs(TEXT(" "), nullptr, TEXT("Accept"));
	Upload.Tool->OnUploadClicked();
	FPlatformFileManager::Get().GetPlatformFile().DeleteFile(*Upload.Path(TEXT("ModTools/SteamVDF.template")));
	Upload.AnswerDialogs(TEXT("mia"), TEXT("pw"), TEXT("Accept"));
	Upload.Tool->OnUploadClicked();
	// Dialogs only: no log line.
	EXPECT_EQ(Upload.Transcript(), FString(TEXT("Upload Error | Steam username is required to upload a mod.\n"
												"Upload Error | Steam password is required to upload a mod.\n"
												"Upload Error | Steam workshop template is not found.\n")));
	EXPECT_FALSE(FPaths::DirectoryExists(Upload.Path(TEXT("ModTools/ModConfigs"))));
	EXPECT_FALSE(Upload.Exists(TEXT("ModTools/Output/Islands/preview.jpg")));
	EXPECT_FALSE(Upload.Exists(TEXT("ModTools/SteamCMD/logs/workshop_log.txt")));
	EXPECT_FALSE(FPaths::FileExists(KitPaths::ModDatabase()));
	EXPECT_TRUE(Upload.Mod->ItemSeamId.IsEmpty());
	EXPECT_EQ(Upload.Tool->SteamUsername + TEXT("|") + Upload.Tool->SteamPassword, FString(TEXT("mia|pw")));
}

// The uploader program is tried at every click. An exit code of 100 or more is the id, stored and saved at
// once; 99 or less and a crash lead on to the dialog. Its arguments arrive in 8 bits, "?" for what they can't
// hold; the line they make is below, byte for byte.
TEST(UploadTests, UploaderRouteAnswersAndArguments)
{
	FUploadKit Upload(true);
	Upload.AnswerDialogs(TEXT("mia"), TEXT("pw"), TEXT("Decline"));
	Upload.SetUploaderAnswer("142");
	Upload.Tool->OnUploadClicked();
	EXPECT_EQ(Upload.Editor->ModalWindows.Num(), 0);
	EXPECT_EQ(Upload.Mod->ItemSeamId, FString(TEXT("142")));
	EXPECT_TRUE(ReadModDatabaseText().Contains(TEXT("\"ItemSeamId\": \"142\",")));
	EXPECT_TRUE(Upload.Transcript().IsEmpty());

	Upload.SetUploaderAnswer("99");
	Upload.Mod->Title = TEXT("\u00CEle aux \u00C9pices \u2014 Voyage");
	Upload.Mod->Tags = TEXT("Map,Mod");
	Upload.Mod->ChangeNotes = TEXT("Say \"hi\"");
	Upload.Mod->Visibility = TEXT("Friends Only");
	Upload.Tool->OnUploadClicked();
	EXPECT_EQ(Upload.Editor->ModalWindows.Num(), 1);
	EXPECT_EQ(Upload.Mod->ItemSeamId, FString(TEXT("142")));
	EXPECT_EQ(Upload.TakeUploaderArgs(),
			  "-steamid|142|-preview|" + Upload.Preview.ToUtf8() +
				  "|-title|?le aux ?pices ? Voyage|-desc|Two islands to sail between.|-vis|Friends Only|-tags|Map,Mod|"
				  "-content|" +
				  Upload.Path(TEXT("ModTools/Output/Islands")).ToUtf8() + "|-changelog|Say \"hi\"|");

	Upload.SetUploaderAnswer("100");
	Upload.Tool->OnUploadClicked();
	EXPECT_EQ(Upload.Mod->ItemSeamId, FString(TEXT("100")));
	Upload.SetUploaderAnswer("crash");
	Upload.Tool->OnUploadClicked();
	EXPECT_EQ(Upload.Editor->ModalWindows.Num(), 2);
	EXPECT_EQ(Upload.Mod->ItemSeamId, FString(TEXT("100")));
}

// The line the uploader is started with, as Windows hands it over: quotes escaped, a new line kept, the empty
// fields left out.
TEST(UploadTests, TheComposedUploaderCommandLineByteForByte)
{
	FTestKit Kit;
	FPaths::SetKitRoot(TEXT("/Quillon Kit"));
	FModSetup Mod(TEXT("Islands"));
	Mod.Title = TEXT("A\"B");
	Mod.Description = TEXT("Sail \"far\"\nand back");
	Mod.PreviewImage = TEXT("/pics/i.png");
	EXPECT_EQ(ComposeUploaderCommandLine(Mod).ToUtf8(), ReadGolden("uploader-command-line-quotes-and-newline.txt"));
	FPaths::SetKitRoot(Kit.Root());
}

// Text typed into a mod's fields is data on both routes: no shell ever sees it.
TEST(UploadTests, NoFieldCanRunACommand)
{
	FUploadKit Upload(true);
	Upload.AnswerDialogs(TEXT("mia"), TEXT("pw"), TEXT("Accept"));
	const std::string Marker = (Upload.Root() / TEXT("pwned")).ToUtf8();
	for (const std::string& Attack : {"\"; touch " + Marker + "; \"", "$(touch " + Marker + ")", "`touch " + Marker + "`",
									  "\" & touch " + Marker + " & \"", "'; touch " + Marker + "; '"})
	{
		Upload.Mod->Title = Upload.Mod->Description = Upload.Mod->ChangeNotes = FString::FromUtf8(Attack);
		// The uploader answers 99, so each click takes both routes.
		Upload.Tool->OnUploadClicked();
		EXPECT_FALSE(FPaths::FileExists(FString::FromUtf8(Marker))) << Attack;
		if (Attack.find('"') == std::string::npos)
		{
			// Without a double quote the item file is valid, and the text reached the Workshop as typed.
			ASSERT_FALSE(Upload.Mod->ItemSeamId.IsEmpty()) << Attack;
			EXPECT_TRUE(FUploadKit::Contains(Upload.PublishedItem(Upload.Mod->ItemSeamId), FUploadKit::ItemLine("title", Attack.c_str())));
		}
	}
	EXPECT_EQ(Upload.Editor->ModalWindows.Num(), 5);
}

// The template's six tokens, filled in their order from a record, ignoring case; a text beyond 8 bits makes the
// whole item file UTF-16 with its byte order mark, so that no character turns into "?" on its way to the
// Workshop.
TEST(UploadTests, TheItemFileFilledFromTheTemplate)
{
	FTestKit Kit;
	Kit.InstallWorkshopTemplate();
	TSharedRef<STesselTool> Tool = SNew(STesselTool);
	FString Template;
	ASSERT_TRUE(FFileHelper::LoadFileToString(Template, *KitPaths::WorkshopTemplate()));
	FPaths::SetKitRoot(TEXT("/Quillon Kit"));
	FModSetup Mod(TEXT("MyMod\\"));
	Mod.Title = TEXT("Pack \"One\" %DESCRIPTION%");
	Mod.Description = TEXT("Line1\nC:\\x");
	Mod.Visibility = TEXT("friends ONLY");
	Mod.ItemSeamId = TEXT("77");
	// The number of the visibility as the window's drop-down counts it.
	auto Fill = [&Tool](const FString& Text, const FModSetup& Record)
	{ return FillWorkshopTemplate(Text, Record, GetVisibilityNumber(Tool->VisibilityOptions, Record.Visibility)); };
	EXPECT_EQ(Fill(Template, Mod).ToUtf8(), ReadGolden("item-file-quotes-and-newlines.vdf"));

	Mod.ItemSeamId.Empty();
	Mod.Title = TEXT("T");
	for (const auto& [Visibility, Expected] : {std::pair{TEXT("HIDDEN"), TEXT("T|2|")}, std::pair{TEXT("Public"), TEXT("T|0|")},
											   std::pair{TEXT("Secret"), TEXT("T|0|")}, std::pair{TEXT(""), TEXT("T|0|")}})
	{
		Mod.Visibility = Visibility;
		EXPECT_EQ(Fill(TEXT("%title%|%Visibility%|%additionalvdfargs%"), Mod), FString(Expected)) << FString(Visibility);
	}
	Mod.Description = TEXT("D");
	Mod.ChangeNotes = TEXT("N");
	EXPECT_EQ(Fill(TEXT("%contentfolder%|%Description%|%changenote%|%TiTlE%"), Mod),
			  FString(TEXT("\\\\Quillon Kit\\\\ModTools\\\\Output\\\\MyMod|D|N|T")));
	FPaths::SetKitRoot(Kit.Root());

	FModSetup Islands(TEXT("Islands"));
	Islands.Title = FString(u"\u65E5\u672C\u306E\u5CF6 \U0001F30A");
	ASSERT_TRUE(WriteWorkshopItemFile(Islands, 0));
	const std::string Bytes = FTempDirectory::ReadBytes(KitPaths::WorkshopItemFile(TEXT("Islands")));
	EXPECT_EQ(Bytes.substr(0, 2), std::string("\xFF\xFE"));
	const std::u16string Text = FromUtf16Bytes(Bytes.substr(std::min<size_t>(2, Bytes.size())));
	EXPECT_NE(Text.find(u"\"title\"\t\t\"\u65E5\u672C\u306E\u5CF6 \U0001F30A\""), std::u16string::npos);
	EXPECT_EQ(Text.find(u'?'), std::u16string::npos);
}

TEST(UploadTests, ThePublishedIdReadBackFromAnItemFile)
{
	struct FCase
	{
		const TCHAR* Text;
		const TCHAR* Id; // null: nothing read
	};
	for (const FCase& Case : {
			 FCase{TEXT("\"workshopitem\"\n{\n\t\"appid\"\t\t\"1296880\"\n\t\"publishedfileid\"\t\t\"1234\"\n}\n"), TEXT("1234")},
			 FCase{TEXT("\t\"publishedfileid\" \"55\"\r\n\t\"publishedfileid\" \"66\"\r\n"), TEXT("55")},
			 FCase{TEXT("\t\"PublishedFileID\"\t\"77\"\n"), TEXT("77")},
			 FCase{TEXT("\"publishedfileid\" \"123456789012345678901234567890\"\n"), TEXT("123456789012345678901234567890")},
			 FCase{TEXT("\t\"publishedfileid\"\t\t\"2900abc01\"\n\t\"publishedfileid\"\t\t\"88\"\n"), nullptr},
			 FCase{TEXT("\t\"title\"\t\t\"99\"\n"), nullptr},
		 })
	{
		FString Id = TEXT("old");
		EXPECT_EQ(ReadPublishedFileId(Case.Text, Id), Case.Id != nullptr) << FString(Case.Text);
		EXPECT_EQ(Id, FString(Case.Id ? Case.Id : TEXT("old"))) << FString(Case.Text);
	}
}
