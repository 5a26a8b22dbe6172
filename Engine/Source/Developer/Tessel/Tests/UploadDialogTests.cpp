#include "SlateTestMain.h"
#include "ToolWindow.h"

#include "EditorServices.h"
#include "STesselUI.h"
#include "cook/CookJob.h"
#include "TestKit.h"
#include "Widgets/Input/SEditableTextBox.h"

#include <memory>

using namespace SlateTest;

namespace
{
	// The tool shown in a window on a kit whose mod "Islands" is ready to upload, with the editor's real
	// windows and SteamCMD in place; no uploader, so every click opens the login dialog.
	struct FShownUploadKit
	{
		FShownUploadKit()
		{
			IEditorServices::Set(nullptr);
			Kit.AddPackagedMod(TEXT("Islands"));
			Kit.InstallWorkshopTemplate();
			Kit.InstallSteamCmd();
			Open = std::make_unique<FOpenTool>();
			Tool = Open->Tool;
			Tool->SelectedMod->Title = TEXT("Island Pack");
			Tool->SelectedMod->Description = TEXT("Two islands.");
			Tool->SelectedMod->PreviewImage = Kit.WriteFile(TEXT("islands.png"), "\x89PNG\r\n\x1a\n");
		}
		~FShownUploadKit()
		{
			Tool.Reset();
			Open.reset();
		}

		SWindow& DialogWindow() const { return *Tool->SteamAuthWindow; }
		TSharedPtr<SWidget> Box(int32 Index) const
		{
			TArray<TSharedRef<SWidget>> Boxes = FindWidgetsByType(Tool->SteamAuthWindow.ToSharedRef(), TEXT("SEditableTextBox"));
			return Boxes.IsValidIndex(Index) ? TSharedPtr<SWidget>(Boxes[Index]) : nullptr;
		}
		TSharedPtr<SWidget> Find(const TCHAR* Key) const { return FindWidgetByKey(Tool->SteamAuthWindow.ToSharedRef(), Key); }
		TSharedPtr<SWidget> Button(const TCHAR* Key) const
		{
			TSharedPtr<SWidget> Found = Find(Key);
			return Found && Found->GetTypeName() == TEXT("SButton") ? Found : nullptr;
		}
		int32 LogRows() const { return GetListRowCount(*Tool->LogListView); }
		bool ItemFileExists() const { return FPaths::FileExists(Kit.Root() / TEXT("ModTools/ModConfigs/Islands.vdf")); }

		FTestKit Kit;
		std::unique_ptr<FOpenTool> Open;
		TSharedPtr<STesselTool> Tool;
	};
}

// The dialog as a user meets it: modal, sized to its content and centred, without minimise or maximise, the
// password masked. Typing and "Accept" publish the mod, and the log list shows the two lines.
TEST(UploadDialogTests, TypingAndAcceptInTheRealDialogPublishes)
{
	FShownUploadKit Upload;
	struct
	{
		bool bRan = false;
		FSlateTestWindowState Window;
		double LabelShare = -1.0;
		double BoxShare = -1.0;
		bool bUserMasked = true;
		bool bPasswordMasked = false;
	} Seen;
	RunSoon([&]
			{
				Seen.bRan = true;
				Seen.Window = GetWindowState(Upload.DialogWindow());
				// The labels take three tenths of the grid's width and the boxes the rest.
				TArray<TSharedRef<SWidget>> Grids = FindWidgetsByType(Upload.Tool->SteamAuthWindow.ToSharedRef(), TEXT("SGridPanel"));
				ASSERT_EQ(Grids.Num(), 1);
				ASSERT_TRUE(Upload.Find(TEXT("SteamUsername")));
				ASSERT_TRUE(Upload.Box(0));
				ASSERT_TRUE(Upload.Box(1));
				const double Whole = GetGeometry(*Grids[0]).Width;
				Seen.LabelShare = GetSlotGeometry(*Upload.Find(TEXT("SteamUsername"))).Width / Whole;
				Seen.BoxShare = GetSlotGeometry(*Upload.Box(0)).Width / Whole;
				Seen.bUserMasked = IsMasked(*Upload.Box(0));
				Seen.bPasswordMasked = IsMasked(*Upload.Box(1));
				TypeText(*Upload.Box(0), TEXT("mia"));
				TypeText(*Upload.Box(1), TEXT("hunter2"));
				ASSERT_TRUE(Upload.Button(TEXT("Accept")));
				Click(*Upload.Button(TEXT("Accept")));
			});
	Upload.Tool->OnUploadClicked();
	TickFrames();

	ASSERT_TRUE(Seen.bRan);
	EXPECT_TRUE(Seen.Window.bShown);
	EXPECT_TRUE(Seen.Window.bModal);
	EXPECT_FALSE(Seen.Window.bHasMinimizeButton);
	EXPECT_FALSE(Seen.Window.bHasMaximizeButton);
	EXPECT_TRUE(Seen.Window.bHasCloseButton);
	// Sized to its content, not to the default client size, and not resizable.
	const FSlateTestSize Size{Seen.Window.Geometry.Width, Seen.Window.Geometry.Height};
	EXPECT_NE(Size, (FSlateTestSize{400, 300}));
	EXPECT_EQ(Size, Seen.Window.PreferredSize);
	EXPECT_EQ(Seen.Window.MinimumSize, Size);
	EXPECT_EQ(Seen.Window.MaximumSize, Size);
	// Centred on the screen, as a centre of pixels is reckoned: the middle pixel of an even extent is the one
	// before the half.
	const FSlateTestRect Screen = GetScreenWorkArea();
	EXPECT_EQ(Seen.Window.Geometry.X + (Seen.Window.Geometry.Width - 1) / 2, Screen.X + (Screen.Width - 1) / 2);
	EXPECT_EQ(Seen.Window.Geometry.Y + (Seen.Window.Geometry.Height - 1) / 2, Screen.Y + (Screen.Height - 1) / 2);
	EXPECT_NEAR(Seen.LabelShare, 0.3, 0.02);
	EXPECT_NEAR(Seen.BoxShare, 0.7, 0.02);
	EXPECT_FALSE(Seen.bUserMasked);
	EXPECT_TRUE(Seen.bPasswordMasked);

	EXPECT_FALSE(GetWindowState(Upload.DialogWindow()).bShown);
	EXPECT_EQ(Upload.Tool->SteamUsername, FString(TEXT("mia")));
	EXPECT_EQ(Upload.Tool->SteamPassword, FString(TEXT("hunter2")));
	EXPECT_EQ(Upload.Tool->SelectedMod->ItemSeamId, FString(TEXT("2900000001")));
	EXPECT_EQ(Upload.LogRows(), 2);
}

// The window's own close button is a decline: nothing is written or run, and what was typed stays for the
// next dialog, which shows it again (the password behind its mask).
TEST(UploadDialogTests, TheCloseButtonDeclinesAndKeepsWhatWasTyped)
{
	FShownUploadKit Upload;
	bool bClosed = false;
	RunSoon([&]
			{
				ASSERT_TRUE(Upload.Box(1));
				TypeText(*Upload.Box(0), TEXT("mia"));
				TypeText(*Upload.Box(1), TEXT("hunter2"));
				bClosed = PressCloseButton(Upload.DialogWindow());
			});
	Upload.Tool->OnUploadClicked();
	EXPECT_TRUE(bClosed);
	EXPECT_FALSE(Upload.Tool->bSteamAuthConfirmed);
	EXPECT_FALSE(Upload.ItemFileExists());
	EXPECT_EQ(Upload.LogRows(), 0);
	EXPECT_TRUE(Upload.Tool->SelectedMod->ItemSeamId.IsEmpty());

	FString ShownUser;
	FString ShownPassword;
	RunSoon([&]
			{
				ASSERT_TRUE(Upload.Box(1));
				ShownUser = GetShownText(*Upload.Box(0));
				ShownPassword = GetShownText(*Upload.Box(1));
				ASSERT_TRUE(Upload.Button(TEXT("Decline")));
				Click(*Upload.Button(TEXT("Decline")));
			});
	Upload.Tool->OnUploadClicked();
	EXPECT_EQ(ShownUser, FString(TEXT("mia")));
	EXPECT_EQ(ShownPassword, FString(TEXT("hunter2")));
	EXPECT_FALSE(Upload.ItemFileExists());
}

// The keys of the login as a person uses them: its labels are whole, Return in the password box accepts and
// publishes, and Escape declines, leaving nothing written. Run at scale 1 and 2.
TEST(UploadDialogTests, ReturnAcceptsAndEscapeDeclinesWithLabelsWhole)
{
	FShownUploadKit Upload;
	bool bEscaped = false;
	RunSoon([&]
			{
				ASSERT_TRUE(Upload.Box(1));
				TypeText(*Upload.Box(0), TEXT("mia"));
				PressKey(*Upload.Box(0), TEXT("Escape"));
				bEscaped = !GetWindowState(Upload.DialogWindow()).bShown;
			});
	Upload.Tool->OnUploadClicked();
	EXPECT_TRUE(bEscaped);
	EXPECT_FALSE(Upload.Tool->bSteamAuthConfirmed);
	EXPECT_FALSE(Upload.ItemFileExists());
	EXPECT_EQ(Upload.LogRows(), 0);

	TArray<FString> CutLabels;
	int32 Colours = 0;
	bool bPictureSaved = false;
	RunSoon([&]
			{
				ASSERT_TRUE(Upload.Box(1));
				// A picture to look at, of a drawn dialog.
				const FSlateScreenshot Shot = TakeWindowScreenshot(*Upload.Box(1));
				Colours = CountColours(Shot);
				bPictureSaved = Shot.SaveToPng(FString(TestPaths::BuildDir) + FString::Printf(TEXT("/tessel-login@%gx.png"), GetScreenScale()));
				for (const TCHAR* Key : {TEXT("SteamUsername"), TEXT("SteamPassword"), TEXT("Accept"), TEXT("Decline")})
				{
					ASSERT_TRUE(Upload.Find(Key)) << FString(Key).ToUtf8();
					const FSlateTextLook Look = GetTextLook(*Upload.Find(Key));
					if (Look.ShownTextWidth > Look.TextRoomWidth)
					{
						CutLabels.Add(GetShownText(*Upload.Find(Key)));
					}
				}
				TypeText(*Upload.Box(1), TEXT("hunter2"));
				PressKey(*Upload.Box(1), TEXT("Return"));
			});
	Upload.Tool->OnUploadClicked();
	TickFrames();
	EXPECT_TRUE(CutLabels.IsEmpty()) << FString::Join(CutLabels, TEXT(", ")).ToUtf8();
	EXPECT_GT(Colours, 8);
	EXPECT_TRUE(bPictureSaved);
	EXPECT_FALSE(GetWindowState(Upload.DialogWindow()).bShown);
	EXPECT_EQ(Upload.Tool->SteamUsername, FString(TEXT("mia")));
	EXPECT_EQ(Upload.Tool->SelectedMod->ItemSeamId, FString(TEXT("2900000001")));
	EXPECT_EQ(Upload.LogRows(), 2);
}
