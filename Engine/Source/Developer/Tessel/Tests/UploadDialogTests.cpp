#include "SlateTestMain.h"
#include "ToolWindow.h"

#include "EditorServices.h"
#include "STesselUI.h"
#include "TestKit.h"

#include <cstdlib>

using namespace SlateTest;

// The Steam login as a person meets it, on the editor's real windows, at scale 1 and 2: a modal window sized to
// its content and centred, without minimise or maximise, its labels whole, the password masked. Escape and the
// window's close button decline, writing nothing, and what was typed stays for the next dialog, which shows it
// again; there Return accepts and publishes, and the log shows two lines.
TEST(UploadDialogTests, ReturnAcceptsAndEscapeDeclinesWithLabelsWhole)
{
	FTestKit Kit;
	IEditorServices::Set(nullptr);
	Kit.AddPackagedMod(TEXT("Islands"));
	Kit.InstallWorkshopTemplate();
	Kit.InstallSteamCmd();
	FOpenTool Open;
	STesselTool& Tool = *Open.Tool;
	Tool.SelectedMod->Title = TEXT("Island Pack");
	Tool.SelectedMod->Description = TEXT("Two islands.");
	Tool.SelectedMod->PreviewImage = Kit.WriteFile(TEXT("islands.png"), "\x89PNG\r\n\x1a\n");
	auto Dialog = [&Tool] { return Tool.SteamAuthWindow->GetContent().ToSharedRef(); };
	// The user name's box (0) or the password's (1).
	auto Box = [&Dialog](int32 Index) -> SWidget& { return *FindWidgetsByType(Dialog(), TEXT("SEditableTextBox"))[Index]; };
	auto ExpectNothingDone = [&]
	{
		EXPECT_FALSE(Tool.bSteamAuthConfirmed);
		EXPECT_FALSE(FPaths::FileExists(Kit.Root() / TEXT("ModTools/ModConfigs/Islands.vdf")));
		EXPECT_EQ(GetListRowCount(*Tool.LogListView), 0);
	};

	FSlateTestWindowState Window;
	std::string Widgets;
	bool bUserMasked = true;
	bool bPasswordMasked = false;
	RunSoon(
		[&]
		{
			Window = GetWindowState(*Tool.SteamAuthWindow);
			Widgets = DescribeWidgets(Dialog());
			bUserMasked = IsMasked(Box(0));
			bPasswordMasked = IsMasked(Box(1));
			TypeText(Box(0), TEXT("mia"));
			TypeText(Box(1), TEXT("hunter2"));
			PressKey(Box(0), TEXT("Escape"));
		});
	Tool.OnUploadClicked();
	EXPECT_EQ(Widgets, ReadGolden("login-dialog.txt"));
	EXPECT_EQ(Window.Title, FString(TEXT("Steam Authentication")));
	EXPECT_TRUE(Window.bShown && Window.bModal && Window.bHasCloseButton);
	EXPECT_FALSE(Window.bHasMinimizeButton || Window.bHasMaximizeButton);
	// Sized to its content, not to the default client size, and not resizable.
	const FSlateTestSize Size{Window.Geometry.Width, Window.Geometry.Height};
	EXPECT_NE(Size, (FSlateTestSize{400, 300}));
	EXPECT_EQ(Size, Window.PreferredSize);
	EXPECT_EQ(Window.MinimumSize, Size);
	EXPECT_EQ(Window.MaximumSize, Size);
	// Centred on the screen, as a centre of pixels is reckoned: the middle pixel of an even extent is the one
	// before the half. On a high-density screen Windows centres to the device pixel, which these whole pixels
	// round by up to one.
	const FSlateTestRect Screen = GetScreenWorkArea();
	const int32 Rounding = GetScreenScale() > 1.0f ? 1 : 0;
	EXPECT_LE(std::abs(Window.Geometry.X + (Window.Geometry.Width - 1) / 2 - (Screen.X + (Screen.Width - 1) / 2)), Rounding);
	EXPECT_LE(std::abs(Window.Geometry.Y + (Window.Geometry.Height - 1) / 2 - (Screen.Y + (Screen.Height - 1) / 2)), Rounding);
	EXPECT_FALSE(bUserMasked);
	EXPECT_TRUE(bPasswordMasked);
	EXPECT_FALSE(GetWindowState(*Tool.SteamAuthWindow).bShown);
	ExpectNothingDone();

	TArray<FString> Shown;
	bool bClosed = false;
	RunSoon(
		[&]
		{
			Shown = {GetShownText(Box(0)), GetShownText(Box(1))};
			bClosed = PressCloseButton(*Tool.SteamAuthWindow);
		});
	Tool.OnUploadClicked();
	EXPECT_TRUE(bClosed);
	EXPECT_EQ(Shown, (TArray<FString>{TEXT("mia"), TEXT("hunter2")}));
	ExpectNothingDone();

	TArray<FString> CutLabels;
	int32 Colours = 0;
	bool bPictureSaved = false;
	RunSoon(
		[&]
		{
			// A picture to look at, of a drawn dialog.
			const FSlateScreenshot Shot = TakeWindowScreenshot(Box(1));
			Colours = CountColours(Shot);
			bPictureSaved = Shot.SaveToPng(FString(TestPaths::BuildDir) + FString::Printf(TEXT("/tessel-login@%gx.png"), GetScreenScale()));
			CutLabels = FindCutTexts(Dialog());
			PressKey(Box(1), TEXT("Return"));
		});
	Tool.OnUploadClicked();
	TickFrames();
	EXPECT_TRUE(CutLabels.IsEmpty()) << FString::Join(CutLabels, TEXT(", ")).ToUtf8();
	EXPECT_GT(Colours, 8);
	EXPECT_TRUE(bPictureSaved);
	EXPECT_FALSE(GetWindowState(*Tool.SteamAuthWindow).bShown);
	EXPECT_EQ(Tool.SteamUsername + TEXT("|") + Tool.SteamPassword, FString(TEXT("mia|hunter2")));
	EXPECT_EQ(Tool.SelectedMod->ItemSeamId, FString(TEXT("2900000001")));
	EXPECT_EQ(GetListRowCount(*Tool.LogListView), 2);
}
