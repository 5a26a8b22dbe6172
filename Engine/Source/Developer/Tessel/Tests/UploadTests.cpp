#include "JsonTestUtils.h"
#include "STesselUI.h"
#include "cook/CookJob.h"
#include "TesselSession.h"
#include "TestKit.h"

#include "HAL/PlatformFile.h"
#include "Misc/FileHelper.h"
#include "Testing/EditorServicesDouble.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Input/SEditableTextBox.h"
#include "Widgets/Layout/SGridPanel.h"
#include "Widgets/Text/STextBlock.h"

#include <gtest/gtest.h>
#ifdef _WIN32
#include "Windows/WindowsApi.h"
#endif

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace
{
	const std::string PngBytes = std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\x01\0\0\0\x01\x08\x02\0\0\0", 29);

	const FString StartLine = TEXT("************************** Upload Started **************************");
	const FString EndLine = TEXT("************************** Upload Done **************************");

	// How a test answers the login dialog.
	struct FDialogAnswer
	{
		enum EHow
		{
			Accept,
			Decline,
			CloseWindow,
		};
		std::optional<FString> User;
		std::optional<FString> Password;
		EHow How = Accept;
	};

	// What the two boxes showed when a dialog opened.
	struct FShownCredentials
	{
		FString User;
		FString Password;
	};

	// An environment variable set for the life of the object.
	struct FScopedEnvironment
	{
#ifdef _WIN32
		// The C runtime's own call changes the block that children inherit as well; an empty value removes. Wide,
		// so that a path outside the ANSI code page arrives whole.
		FScopedEnvironment(const char* InName, const std::string& Value) : Name(InName)
		{
			_wputenv_s(WindowsApi::Wide(*FString::FromUtf8(Name)), WindowsApi::Wide(*FString::FromUtf8(Value)));
		}
		~FScopedEnvironment() { _wputenv_s(WindowsApi::Wide(*FString::FromUtf8(Name)), L""); }
#else
		FScopedEnvironment(const char* InName, const std::string& Value) : Name(InName) { setenv(Name, Value.c_str(), 1); }
		~FScopedEnvironment() { unsetenv(Name); }
#endif
		const char* Name;
	};

	// A kit with the mod "Islands" cooked and ready to upload, the template and SteamCMD in place, and the
	// tool open on it with the editor's windows answered from a script.
	struct FUploadKit
	{
		FUploadKit()
		{
			IEditorServices::Set(Editor);
			Kit.AddPackagedMod(TEXT("Islands"));
			Preview = Kit.WriteFile(TEXT("Pictures/islands.png"), PngBytes);
			Kit.InstallWorkshopTemplate();
			Kit.InstallSteamCmd();
			OpenTool();
			Mod->Title = TEXT("Island Pack");
			Mod->Description = TEXT("Two islands to sail between.");
			Mod->PreviewImage = Preview;
		}
		~FUploadKit()
		{
			Tool.Reset();
			Mod.Reset();
			IEditorServices::Set(nullptr);
		}

		void OpenTool()
		{
			Tool = SNew(STesselTool);
			Mod = Tool->SelectedMod;
		}
		void RestartTool()
		{
			Mod.Reset();
			Tool.Reset();
			OpenTool();
		}

		// Every dialog from now on is answered the same way.
		void AnswerDialogs(const FDialogAnswer& Answer)
		{
			Editor->OnModalWindow = [this, Answer](const TSharedRef<SWindow>& Window)
			{
				TArray<TSharedRef<SWidget>> Boxes = FindWidgetsByType(Window, TEXT("SEditableTextBox"));
				ASSERT_EQ(Boxes.Num(), 2);
				SEditableTextBox& UserBox = static_cast<SEditableTextBox&>(Boxes[0].Get());
				SEditableTextBox& PasswordBox = static_cast<SEditableTextBox&>(Boxes[1].Get());
				Shown.Add({UserBox.GetShownText(), PasswordBox.GetShownText()});
				bUploaderHadRunWhenDialogOpened = FPaths::FileExists(UploaderArgsPath());
				if (Answer.User)
				{
					UserBox.SetTextFromUser(*Answer.User);
				}
				if (Answer.Password)
				{
					PasswordBox.SetTextFromUser(*Answer.Password);
				}
				switch (Answer.How)
				{
				case FDialogAnswer::Accept:
					static_cast<SButton&>(*FindWidgetByKey(Window, TEXT("Accept"))).Click();
					break;
				case FDialogAnswer::Decline:
					static_cast<SButton&>(*FindWidgetByKey(Window, TEXT("Decline"))).Click();
					break;
				case FDialogAnswer::CloseWindow:
					Window->RequestDestroyWindow();
					break;
				}
			};
		}

		FString Path(const TCHAR* Relative) const { return Kit.Root() / Relative; }
		bool Exists(const TCHAR* Relative) const { return FPaths::FileExists(Path(Relative)); }
		std::string Bytes(const TCHAR* Relative) const { return FTempDirectory::ReadBytes(Path(Relative)); }
		std::string ItemFile() const { return Bytes(TEXT("ModTools/ModConfigs/Islands.vdf")); }
		std::string SteamCmdLog() const { return Bytes(TEXT("ModTools/SteamCMD/logs/workshop_log.txt")); }
		void SetSteamCmdMode(const char* Mode) const
		{
			if (*Mode)
			{
				Kit.WriteFile(TEXT("ModTools/SteamCMD/steamcmd.mode"), Mode);
			}
			else
			{
				FPlatformFileManager::Get().GetPlatformFile().DeleteFile(*Path(TEXT("ModTools/SteamCMD/steamcmd.mode")));
			}
		}
		void SetUploaderAnswer(const char* Answer) const { Kit.WriteFile(TEXT("ModTools/Uploader/uploader.exit"), Answer); }
		FString UploaderArgsPath() const { return Kit.Root() / TEXT("uploader-args.bin"); }
		// The arguments the stand-in uploader got, in order; empty when it didn't run since the last call.
		std::vector<std::string> TakeUploaderArgs() const
		{
			const std::string Raw = FTempDirectory::ReadBytes(UploaderArgsPath());
			FPlatformFileManager::Get().GetPlatformFile().DeleteFile(*UploaderArgsPath());
			std::vector<std::string> Args;
			size_t Start = 0;
			for (size_t End = Raw.find('\0'); End != std::string::npos; End = Raw.find('\0', Start))
			{
				Args.push_back(Raw.substr(Start, End - Start));
				Start = End + 1;
			}
			return Args;
		}
		TArray<FString> Log() const
		{
			TArray<FString> Lines;
			for (const TSharedPtr<FString>& Line : Tool->LogMessages)
			{
				Lines.Add(*Line);
			}
			return Lines;
		}
		TArray<FString> DialogTexts() const
		{
			TArray<FString> Texts;
			for (const FEditorServicesDouble::FDialog& Dialog : Editor->Dialogs)
			{
				Texts.Add(Dialog.Title.ToString() + TEXT(" | ") + Dialog.Content->GetDisplayText());
			}
			return Texts;
		}

		FTestKit Kit;
		TSharedPtr<FEditorServicesDouble> Editor = MakeShared<FEditorServicesDouble>();
		TSharedPtr<STesselTool> Tool;
		TSharedPtr<FModSetup> Mod;
		FString Preview;
		TArray<FShownCredentials> Shown;
		bool bUploaderHadRunWhenDialogOpened = false;
	};

	bool Contains(const std::string& Haystack, const std::string& Needle)
	{
		return Haystack.find(Needle) != std::string::npos;
	}

	std::string Utf16Le(const std::string& Ascii)
	{
		std::string Bytes;
		for (const char Character : Ascii)
		{
			Bytes += Character;
			Bytes += '\0';
		}
		return Bytes;
	}

	// Every regular file below Folder whose bytes hold Needle.
	std::vector<std::string> FilesHolding(const std::filesystem::path& Folder, const std::string& Needle)
	{
		std::vector<std::string> Found;
		std::error_code Error;
		for (std::filesystem::recursive_directory_iterator It(Folder, std::filesystem::directory_options::skip_permission_denied, Error), End;
			 !Error && It != End; It.increment(Error))
		{
			if (It->is_regular_file(Error) && Contains(FTempDirectory::ReadBytes(FString::FromUtf8(It->path().string())), Needle))
			{
				Found.push_back(It->path().string());
			}
		}
		return Found;
	}

	std::string ValueAfter(const std::vector<std::string>& Args, const std::string& Switch)
	{
		for (size_t Index = 0; Index + 1 < Args.size(); ++Index)
		{
			if (Args[Index] == Switch)
			{
				return Args[Index + 1];
			}
		}
		return "(no " + Switch + ")";
	}

	std::string ItemTextLine(const char* Key, const char* Value)
	{
		return std::string("\t\"") + Key + "\"\t\t\"" + Value + "\"\n";
	}
}

// A first upload through SteamCMD makes a new item; the next one updates it; after "Reset Publisher Id" the
// Workshop makes another. The user name survives a restart, the password doesn't, and it is on no disk.
TEST(UploadTests, SteamCmdRouteFromFirstUploadToResetAndRestart)
{
	const auto Started = std::filesystem::file_time_type::clock::now();
	const std::string Password = "Tr0ub4dor&3-ship";
	FUploadKit Upload;
	Upload.AnswerDialogs({TEXT("mia"), FString::FromUtf8(Password), FDialogAnswer::Accept});

	// No uploader in this kit: the dialog route.
	Upload.Tool->OnUploadClicked();
	ASSERT_EQ(Upload.Editor->ModalWindows.Num(), 1);
	EXPECT_EQ(Upload.Mod->ItemSeamId, FString(TEXT("2900000001")));
	EXPECT_EQ(Upload.Log(), (TArray<FString>{StartLine, EndLine}));
	EXPECT_EQ(Upload.Editor->Dialogs.Num(), 0);
	EXPECT_EQ(Upload.Bytes(TEXT("ModTools/Output/Islands/preview.jpg")), PngBytes);
	// SteamCMD wrote the id into the item file, beside what the template gave.
	EXPECT_TRUE(Contains(Upload.ItemFile(), ItemTextLine("publishedfileid", "2900000001"))) << Upload.ItemFile();
	EXPECT_TRUE(Contains(Upload.ItemFile(), ItemTextLine("title", "Island Pack")));
	EXPECT_TRUE(Contains(Upload.ItemFile(), ItemTextLine("visibility", "0")));
	const std::string Published = Upload.Bytes(TEXT("ModTools/SteamCMD/workshop/1296880/2900000001.vdf"));
	EXPECT_TRUE(Contains(Published, ItemTextLine("title", "Island Pack"))) << Published;
	EXPECT_TRUE(Contains(Published, ItemTextLine("description", "Two islands to sail between.")));
	EXPECT_TRUE(Contains(Published, ItemTextLine("owner", "mia")));
	EXPECT_TRUE(Contains(Published, ItemTextLine("previewbytes", "29")));
	// This route doesn't save: the id waits for the next save.
	EXPECT_FALSE(FPaths::FileExists(KitPaths::ModDatabase()));

	// The second dialog of the run shows both credentials; accepting them as they stand updates the item.
	// With SteamCMD leaving the file alone, it shows what the tool wrote: the pair from the record.
	Upload.SetSteamCmdMode("no-id");
	Upload.AnswerDialogs({std::nullopt, std::nullopt, FDialogAnswer::Accept});
	Upload.Mod->ChangeNotes = TEXT("Adds a lighthouse.");
	Upload.Tool->OnUploadClicked();
	ASSERT_EQ(Upload.Shown.Num(), 2);
	EXPECT_EQ(Upload.Shown[1].User, FString(TEXT("mia")));
	EXPECT_EQ(Upload.Shown[1].Password, FString::FromUtf8(Password));
	EXPECT_TRUE(Contains(Upload.ItemFile(), "\t\"publishedfileid\" \"2900000001\"\n")) << Upload.ItemFile();
	EXPECT_EQ(Upload.Mod->ItemSeamId, FString(TEXT("2900000001")));
	EXPECT_TRUE(Contains(Upload.SteamCmdLog(), "Updating workshop item 2900000001..."));
	EXPECT_TRUE(Contains(Upload.Bytes(TEXT("ModTools/SteamCMD/workshop/1296880/2900000001.vdf")), ItemTextLine("changenote", "Adds a lighthouse.")));

	// "Reset Publisher Id" saves at once, and the next item file has no pair: a new item.
	Upload.SetSteamCmdMode("");
	Upload.Tool->OnResetPublisherIdClicked();
	EXPECT_TRUE(Contains(Upload.Bytes(TEXT("Orrery/Saved/Mods.db")), Utf16Le("\"ItemSeamId\": \"\",")));
	Upload.Tool->OnUploadClicked();
	EXPECT_EQ(Upload.Mod->ItemSeamId, FString(TEXT("2900000002")));
	EXPECT_TRUE(Upload.Exists(TEXT("ModTools/SteamCMD/workshop/1296880/2900000002.vdf")));

	// A restart after the save on close: the user name is back, the password box is empty.
	Upload.RestartTool();
	EXPECT_EQ(Upload.Tool->SteamUsername, FString(TEXT("mia")));
	EXPECT_TRUE(Upload.Tool->SteamPassword.IsEmpty());
	EXPECT_EQ(Upload.Mod->ItemSeamId, FString(TEXT("2900000002")));
	Upload.AnswerDialogs({std::nullopt, std::nullopt, FDialogAnswer::Decline});
	Upload.Tool->OnUploadClicked();
	ASSERT_EQ(Upload.Shown.Num(), 4);
	EXPECT_EQ(Upload.Shown[3].User, FString(TEXT("mia")));
	EXPECT_EQ(Upload.Shown[3].Password, FString());
	Upload.Tool.Reset();

	// Neither the kit nor any temporary folder of the tests holds the password, in 8 or 16 bits.
	for (const std::string& Needle : {Password, Utf16Le(Password)})
	{
		EXPECT_EQ(FilesHolding(Upload.Kit.Root().ToUtf8(), Needle), std::vector<std::string>());
		const char* TempRoot = std::getenv("TMPDIR") ? std::getenv("TMPDIR") : "/tmp";
		std::error_code Error;
		for (const auto& Entry : std::filesystem::directory_iterator(TempRoot, std::filesystem::directory_options::skip_permission_denied, Error))
		{
			if (Entry.last_write_time(Error) < Started)
			{
				continue;
			}
			if (Entry.is_regular_file(Error))
			{
				EXPECT_FALSE(Contains(FTempDirectory::ReadBytes(FString::FromUtf8(Entry.path().string())), Needle)) << Entry.path();
			}
			else if (Entry.path().filename().string().rfind("tessel-", 0) == 0)
			{
				EXPECT_EQ(FilesHolding(Entry.path(), Needle), std::vector<std::string>());
			}
		}
	}
}

// The uploader program is tried at every click. An exit code of 100 or more is the id, stored and saved at
// once; 99 or less, a failed start or a crash lead on to the dialog. Its arguments arrive as typed, without
// the empty fields, with "?" for what 7 bits can't hold.
TEST(UploadTests, UploaderRouteAnswersAndArguments)
{
	FUploadKit Upload;
	Upload.Kit.InstallUploader();
	FScopedEnvironment ArgsOut("TESSEL_UPLOADER_ARGS_OUT", Upload.UploaderArgsPath().ToUtf8());
	const std::string Root = Upload.Kit.Root().ToUtf8();
	const std::string Png = Upload.Preview.ToUtf8();
	Upload.AnswerDialogs({TEXT("mia"), TEXT("pw"), FDialogAnswer::Decline});

	Upload.SetUploaderAnswer("142");
	Upload.Mod->Title = TEXT("A\"B");
	Upload.Tool->OnUploadClicked();
	EXPECT_EQ(Upload.Editor->ModalWindows.Num(), 0);
	EXPECT_EQ(Upload.Mod->ItemSeamId, FString(TEXT("142")));
	EXPECT_TRUE(Contains(Upload.Bytes(TEXT("Orrery/Saved/Mods.db")), Utf16Le("\"ItemSeamId\": \"142\",")));
	EXPECT_EQ(Upload.TakeUploaderArgs(),
			  (std::vector<std::string>{"-preview", Png, "-title", "A\"B", "-desc", "Two islands to sail between.", "-vis", "Public",
										"-content", Root + "/ModTools/Output/Islands"}));
	EXPECT_TRUE(Upload.Log().IsEmpty());

	// 99 is "not published": the dialog follows, after the program has run. Now the id goes along.
	Upload.SetUploaderAnswer("99");
	Upload.Mod->Title = TEXT("\u00CEle aux \u00C9pices \u2014 Voyage");
	Upload.Mod->Tags = TEXT("Map,Mod");
	Upload.Mod->ChangeNotes = TEXT("Say \"hi\"");
	Upload.Mod->Visibility = TEXT("Friends Only");
	Upload.Tool->OnUploadClicked();
	EXPECT_EQ(Upload.Editor->ModalWindows.Num(), 1);
	EXPECT_TRUE(Upload.bUploaderHadRunWhenDialogOpened);
	EXPECT_EQ(Upload.Mod->ItemSeamId, FString(TEXT("142")));
	EXPECT_EQ(Upload.TakeUploaderArgs(),
			  (std::vector<std::string>{"-steamid", "142", "-preview", Png, "-title", "?le aux ?pices ? Voyage", "-desc",
										"Two islands to sail between.", "-vis", "Friends Only", "-tags", "Map,Mod", "-content",
										Root + "/ModTools/Output/Islands", "-changelog", "Say \"hi\""}));

	// The boundary: 100 is an id.
	Upload.SetUploaderAnswer("100");
	Upload.Tool->OnUploadClicked();
	EXPECT_EQ(Upload.Editor->ModalWindows.Num(), 1);
	EXPECT_EQ(Upload.Mod->ItemSeamId, FString(TEXT("100")));

	// A program that crashed has published nothing.
	Upload.SetUploaderAnswer("crash");
	Upload.Tool->OnUploadClicked();
	EXPECT_EQ(Upload.Editor->ModalWindows.Num(), 2);
	EXPECT_EQ(Upload.Mod->ItemSeamId, FString(TEXT("100")));
	EXPECT_EQ(Upload.TakeUploaderArgs().size(), 16u);
}

TEST(UploadTests, TheComposedUploaderCommandLineByteForByte)
{
	FTestKit Kit;
	FPaths::SetKitRoot(TEXT("/Quillon Kit"));
	FModSetup Mod(TEXT("Islands"));
	Mod.Title = TEXT("A\"B");
	Mod.Description = TEXT("Sail \"far\"\nand back");
	Mod.PreviewImage = TEXT("/pics/i.png");
	// Tags and ChangeNotes are empty, and so left out; the order of the rest stays.
	EXPECT_EQ(ComposeUploaderCommandLine(Mod),
			  FString(TEXT("/Quillon Kit/ModTools/Uploader/QuillonModUploader.exe -preview \"/pics/i.png\" -title \"A\\\"B\" "
						   "-desc \"Sail \\\"far\\\"\nand back\" -vis \"Public\" -content \"/Quillon Kit/ModTools/Output/Islands\" ")));

	Mod.ItemSeamId = TEXT("2900000001");
	Mod.Title = TEXT("Caf\u00E9 \u03A9");
	Mod.Description = TEXT("d");
	Mod.Visibility = TEXT("Hidden");
	Mod.Tags = TEXT("Map");
	Mod.ChangeNotes = TEXT("x");
	EXPECT_EQ(ToEightBitCommandLine(ComposeUploaderCommandLine(Mod)),
			  std::string("/Quillon Kit/ModTools/Uploader/QuillonModUploader.exe -steamid \"2900000001\" -preview \"/pics/i.png\" "
						  "-title \"Caf? ?\" -desc \"d\" -vis \"Hidden\" -tags \"Map\" -content \"/Quillon Kit/ModTools/Output/Islands\" "
						  "-changelog \"x\" "));
	FPaths::SetKitRoot(Kit.Root());
}

// Without the uploader every click runs the missing program first and then opens the dialog; declining or
// closing it leaves everything as it was, credentials included.
TEST(UploadTests, MissingUploaderAndADialogThatIsNotAccepted)
{
	FUploadKit Upload;
	Upload.AnswerDialogs({TEXT("mia"), TEXT("sekrit"), FDialogAnswer::Decline});
	Upload.Tool->OnUploadClicked();
	Upload.AnswerDialogs({std::nullopt, TEXT("sekrit2"), FDialogAnswer::CloseWindow});
	Upload.Tool->OnUploadClicked();

	EXPECT_EQ(Upload.Editor->ModalWindows.Num(), 2);
	EXPECT_FALSE(Upload.Tool->bSteamAuthConfirmed);
	EXPECT_EQ(Upload.Tool->SteamUsername, FString(TEXT("mia")));
	EXPECT_EQ(Upload.Tool->SteamPassword, FString(TEXT("sekrit2")));
	EXPECT_EQ(Upload.Editor->Dialogs.Num(), 0);
	EXPECT_TRUE(Upload.Log().IsEmpty());
	EXPECT_TRUE(Upload.Mod->ItemSeamId.IsEmpty());
	EXPECT_FALSE(Upload.Exists(TEXT("ModTools/ModConfigs/Islands.vdf")));
	EXPECT_FALSE(Upload.Exists(TEXT("ModTools/Output/Islands/preview.jpg")));
	EXPECT_FALSE(Upload.Exists(TEXT("ModTools/SteamCMD/logs/workshop_log.txt")));
	EXPECT_FALSE(FPaths::FileExists(KitPaths::ModDatabase()));
}

// The dialog as it is built, and the checks after "Accept": the user name first, a blank counts, and a
// missing template stops the upload before anything is written.
TEST(UploadTests, CredentialChecksAndTheMissingTemplate)
{
	FUploadKit Upload;
	Upload.AnswerDialogs({std::nullopt, std::nullopt, FDialogAnswer::Accept});
	Upload.Tool->OnUploadClicked();

	ASSERT_EQ(Upload.Editor->ModalWindows.Num(), 1);
	const TSharedRef<SWindow> Window = Upload.Editor->ModalWindows[0];
	EXPECT_EQ(&Window.Get(), Upload.Tool->SteamAuthWindow.Get());
	EXPECT_EQ(Window->GetTitle().ToString(), FString(TEXT("Steam Authentication")));
	EXPECT_EQ(Window->GetSizingRule(), ESizingRule::Autosized);
	EXPECT_EQ(Window->GetAutoCenter(), EAutoCenter::PreferredWorkArea);
	EXPECT_FALSE(Window->HasMinimizeBox());
	EXPECT_FALSE(Window->HasMaximizeBox());
	TArray<TSharedRef<SWidget>> Grids = FindWidgetsByType(Window, TEXT("SGridPanel"));
	ASSERT_EQ(Grids.Num(), 1);
	TArray<FString> Cells;
	for (const SGridPanel::FSlot& Slot : static_cast<SGridPanel&>(Grids[0].Get()).GetSlots())
	{
		Cells.Add(FString::Printf(TEXT("%d,%d %s %s"), Slot.Column, Slot.Row, *Slot.Widget->GetTypeName(), *Slot.Widget->GetTextKey()));
		EXPECT_EQ(Slot.SlotPadding, FMargin(5.0f));
	}
	EXPECT_EQ(Cells, (TArray<FString>{TEXT("0,0 STextBlock SteamUsername"), TEXT("1,0 SEditableTextBox "),
									  TEXT("0,1 STextBlock SteamPassword"), TEXT("1,1 SEditableTextBox ")}));
	TArray<TSharedRef<SWidget>> Boxes = FindWidgetsByType(Window, TEXT("SEditableTextBox"));
	ASSERT_EQ(Boxes.Num(), 2);
	EXPECT_FALSE(static_cast<SEditableTextBox&>(Boxes[0].Get()).IsPassword());
	EXPECT_TRUE(static_cast<SEditableTextBox&>(Boxes[1].Get()).IsPassword());
	TArray<FString> Labels;
	for (const TCHAR* Key : {TEXT("SteamUsername"), TEXT("SteamPassword"), TEXT("Accept"), TEXT("Decline")})
	{
		Labels.Add(FindWidgetByKey(Window, Key)->GetDisplayText());
	}
	EXPECT_EQ(Labels, (TArray<FString>{TEXT("UserName"), TEXT("Password"), TEXT("Accept"), TEXT("Decline")}));

	// Both boxes empty: only the user name is reported.
	EXPECT_EQ(Upload.DialogTexts(), (TArray<FString>{TEXT("Upload Error | Steam username is required to upload a mod.")}));

	// A user name of one blank passes its check; the password is then missing.
	Upload.AnswerDialogs({TEXT(" "), std::nullopt, FDialogAnswer::Accept});
	Upload.Tool->OnUploadClicked();
	EXPECT_EQ(Upload.DialogTexts().Last(), FString(TEXT("Upload Error | Steam password is required to upload a mod.")));
	EXPECT_FALSE(Upload.Exists(TEXT("ModTools/ModConfigs/Islands.vdf")));

	// With both given but no template: its own error, and nothing written or run.
	FPlatformFileManager::Get().GetPlatformFile().DeleteFile(*Upload.Path(TEXT("ModTools/SteamVDF.template")));
	Upload.AnswerDialogs({TEXT("mia"), TEXT("pw"), FDialogAnswer::Accept});
	Upload.Tool->OnUploadClicked();
	EXPECT_EQ(Upload.DialogTexts().Last(), FString(TEXT("Upload Error | Steam workshop template is not found.")));
	EXPECT_EQ(Upload.Editor->Dialogs.Num(), 3);
	EXPECT_FALSE(FPaths::DirectoryExists(Upload.Path(TEXT("ModTools/ModConfigs"))));
	EXPECT_FALSE(Upload.Exists(TEXT("ModTools/Output/Islands/preview.jpg")));
	EXPECT_FALSE(Upload.Exists(TEXT("ModTools/SteamCMD/logs/workshop_log.txt")));
	EXPECT_TRUE(Upload.Log().IsEmpty());
	EXPECT_EQ(Upload.Tool->SteamPassword, FString(TEXT("pw")));
}

// The template's six tokens, filled in their order from a record, ignoring case.
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
	EXPECT_EQ(Fill(Template, Mod), FString(TEXT("\"workshopitem\"\n"
												"{\n"
												"\t\"appid\"\t\t\"1296880\"\n"
												"\t\"publishedfileid\" \"77\"\n"
												"\t\"contentfolder\"\t\t\"\\\\Quillon Kit\\\\ModTools\\\\Output\\\\MyMod\"\n"
												"\t\"previewfile\"\t\t\"\\\\Quillon Kit\\\\ModTools\\\\Output\\\\MyMod\\\\preview.jpg\"\n"
												"\t\"visibility\"\t\t\"1\"\n"
												"\t\"title\"\t\t\"Pack \"One\" Line1\nC:\\x\"\n"
												"\t\"description\"\t\t\"Line1\nC:\\x\"\n"
												"\t\"changenote\"\t\t\"\"\n"
												"}\n")));

	Mod.ItemSeamId.Empty();
	Mod.Title = TEXT("T");
	for (const auto& [Visibility, Expected] : {std::pair{TEXT("HIDDEN"), TEXT("T|2|")}, std::pair{TEXT("Public"), TEXT("T|0|")},
											   std::pair{TEXT("Secret"), TEXT("T|0|")}, std::pair{TEXT(""), TEXT("T|0|")}})
	{
		Mod.Visibility = Visibility;
		EXPECT_EQ(Fill(TEXT("%title%|%Visibility%|%additionalvdfargs%"), Mod), FString(Expected)) << FString(Visibility);
	}
	// Every token in any letter case.
	Mod.Description = TEXT("D");
	Mod.ChangeNotes = TEXT("N");
	EXPECT_EQ(Fill(TEXT("%contentfolder%|%Description%|%changenote%|%TiTlE%"), Mod),
			  FString(TEXT("\\\\Quillon Kit\\\\ModTools\\\\Output\\\\MyMod|D|N|T")));
	FPaths::SetKitRoot(Kit.Root());

	// A text beyond 8 bits makes the whole item file UTF-16 with its byte order mark, so that no character
	// turns into "?" on its way to the Workshop.
	FModSetup Islands(TEXT("Islands"));
	Islands.Title = FString(u"\u65E5\u672C\u306E\u5CF6 \U0001F30A");
	ASSERT_TRUE(WriteWorkshopItemFile(Islands, 0));
	const std::string Bytes = FTempDirectory::ReadBytes(KitPaths::WorkshopItemFile(TEXT("Islands")));
	ASSERT_GE(Bytes.size(), 2u);
	EXPECT_EQ(Bytes.substr(0, 2), std::string("\xFF\xFE"));
	const std::u16string Text = FromUtf16Bytes(Bytes.substr(2));
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
		const bool bRead = ReadPublishedFileId(Case.Text, Id);
		EXPECT_EQ(bRead, Case.Id != nullptr) << FString(Case.Text);
		EXPECT_EQ(Id, FString(Case.Id ? Case.Id : TEXT("old"))) << FString(Case.Text);
	}
}

// SteamCMD's failures show only as an id that doesn't come: the two log lines stand in every case.
TEST(UploadTests, SteamCmdFailuresLeaveTheIdAlone)
{
	FUploadKit Upload;
	Upload.AnswerDialogs({TEXT("mia"), TEXT("correct horse"), FDialogAnswer::Accept});

	// A password with a blank reaches SteamCMD as two arguments, the second taken for a Steam Guard code.
	Upload.Tool->OnUploadClicked();
	EXPECT_TRUE(Upload.Mod->ItemSeamId.IsEmpty());
	EXPECT_TRUE(Contains(Upload.SteamCmdLog(), "Logging in user 'mia' to Steam Public...\nFAILED (Invalid Password)\n")) << Upload.SteamCmdLog();
	EXPECT_FALSE(Contains(Upload.SteamCmdLog(), "horse"));
	EXPECT_EQ(Upload.Log(), (TArray<FString>{StartLine, EndLine}));
	// The item file and the preview stay for the next attempt.
	EXPECT_TRUE(Upload.Exists(TEXT("ModTools/ModConfigs/Islands.vdf")));
	EXPECT_TRUE(Upload.Exists(TEXT("ModTools/Output/Islands/preview.jpg")));

	Upload.AnswerDialogs({std::nullopt, TEXT("correcthorse"), FDialogAnswer::Accept});
	Upload.Tool->OnUploadClicked();
	EXPECT_EQ(Upload.Mod->ItemSeamId, FString(TEXT("2900000001")));

	for (const char* Mode : {"wrong-password", "network", "steam-guard", "crash", "letters-id"})
	{
		Upload.SetSteamCmdMode(Mode);
		Upload.Tool->OnUploadClicked();
		EXPECT_EQ(Upload.Mod->ItemSeamId, FString(TEXT("2900000001"))) << Mode;
		EXPECT_EQ(Upload.Log(), (TArray<FString>{StartLine, EndLine})) << Mode;
	}
	// The letters did reach the item file; the tool didn't take them.
	EXPECT_TRUE(Contains(Upload.ItemFile(), ItemTextLine("publishedfileid", "2900abc000001"))) << Upload.ItemFile();

	// With no SteamCMD at all the end line follows at once.
	Upload.SetSteamCmdMode("");
	FPlatformFileManager::Get().GetPlatformFile().DeleteFile(*Upload.Path(TEXT("ModTools/SteamCMD/steamcmd.exe")));
	Upload.Mod->ItemSeamId = TEXT("2900000001");
	Upload.Tool->OnUploadClicked();
	EXPECT_EQ(Upload.Mod->ItemSeamId, FString(TEXT("2900000001")));
	EXPECT_EQ(Upload.Log(), (TArray<FString>{StartLine, EndLine}));
	EXPECT_TRUE(Contains(Upload.ItemFile(), "\t\"publishedfileid\" \"2900000001\"\n"));
}

// Text typed into a mod's fields is data on both routes: no shell ever sees it.
TEST(UploadTests, NoFieldCanRunACommand)
{
	FUploadKit Upload;
	Upload.Kit.InstallUploader();
	FScopedEnvironment ArgsOut("TESSEL_UPLOADER_ARGS_OUT", Upload.UploaderArgsPath().ToUtf8());
	Upload.AnswerDialogs({TEXT("mia"), TEXT("pw"), FDialogAnswer::Accept});
	const std::string Marker = (Upload.Kit.Root() / TEXT("pwned")).ToUtf8();

	for (const std::string& Attack : {"\"; touch " + Marker + "; \"", "$(touch " + Marker + ")", "`touch " + Marker + "`",
									  "\" & touch " + Marker + " & \"", "'; touch " + Marker + "; '"})
	{
		Upload.Mod->Title = FString::FromUtf8(Attack);
		Upload.Mod->Description = FString::FromUtf8(Attack);
		Upload.Mod->ChangeNotes = FString::FromUtf8(Attack);
		// The uploader answers 99, so each click takes both routes.
		Upload.Tool->OnUploadClicked();
		const std::vector<std::string> Args = Upload.TakeUploaderArgs();
		EXPECT_EQ(ValueAfter(Args, "-title"), Attack);
		EXPECT_EQ(ValueAfter(Args, "-desc"), Attack);
		EXPECT_EQ(ValueAfter(Args, "-changelog"), Attack);
		EXPECT_FALSE(FPaths::FileExists(FString::FromUtf8(Marker))) << Attack;
		if (Attack.find('"') == std::string::npos)
		{
			// Without a double quote the item file is valid, and the text reached the Workshop as typed.
			ASSERT_FALSE(Upload.Mod->ItemSeamId.IsEmpty()) << Attack;
			const std::string Published =
				Upload.Bytes(*(FString(TEXT("ModTools/SteamCMD/workshop/1296880/")) + Upload.Mod->ItemSeamId + TEXT(".vdf")));
			EXPECT_TRUE(Contains(Published, ItemTextLine("title", Attack.c_str()))) << Published;
		}
	}
	EXPECT_EQ(Upload.Editor->ModalWindows.Num(), 5);
}
