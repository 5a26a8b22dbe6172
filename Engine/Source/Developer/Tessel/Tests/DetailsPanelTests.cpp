// The details panel as a mod author meets it: every row of the form by its key, the guards while a real cook
// runs, tags that reach the disk at once, typing with real key events, and the columns that hold their shares.

#include "JsonTestUtils.h"
#include "TestKit.h"
#include "TestPrograms.h"
#include "Testing/EditorServicesDouble.h"
#include "ToolWindow.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Input/SComboBox.h"
#include "Widgets/Input/SEditableTextBox.h"

#include <filesystem>
#include <unistd.h>

using namespace SlateTest;

namespace
{
	// A kit with the mod "Islands" and its two maps, the stand-in cook commandlet, and the recording editor
	// services, so that no dialog ever waits for a person.
	struct FPanelFixture
	{
		FPanelFixture()
		{
			Kit.AddMod(TEXT("Islands"), {TEXT("Alpha.umap"), TEXT("Beta.umap")});
			Kit.InstallCookCommandlet();
			IEditorServices::Set(Services);
		}
		~FPanelFixture()
		{
			Open.reset();
			IEditorServices::Set(nullptr);
		}
		FOpenTool& Show()
		{
			Open = std::make_unique<FOpenTool>();
			return *Open;
		}
		STesselTool& Tool() { return *Open->Tool; }

		// The widget in the cell right of the label with LabelKey; null, and a failed test, when there is none.
		template <typename WidgetType = SWidget> TSharedPtr<WidgetType> Right(const TCHAR* LabelKey)
		{
			for (const TSharedRef<SWidget>& Grid : FindWidgetsByType(Open->Tool.ToSharedRef(), TEXT("SGridPanel")))
			{
				const TArray<SGridPanel::FSlot>& Slots = static_cast<const SGridPanel&>(*Grid).GetSlots();
				for (int32 Index = 0; Index + 1 < Slots.Num(); ++Index)
				{
					if (Slots[Index].Widget->GetTextKey() == LabelKey && Slots[Index + 1].Row == Slots[Index].Row)
					{
						return StaticCastSharedPtr<WidgetType>(Slots[Index + 1].Widget);
					}
				}
			}
			ADD_FAILURE() << "no widget right of the label " << FString(LabelKey).ToUtf8();
			return nullptr;
		}
		// The check box of each tag, in the order of the tags.
		TArray<TSharedRef<SWidget>> TagBoxes() { return FindWidgetsByType(Open->Tool.ToSharedRef(), TEXT("SCheckBox")); }

		FTestKit Kit;
		TSharedPtr<FEditorServicesDouble> Services = MakeShared<FEditorServicesDouble>();
		std::unique_ptr<FOpenTool> Open;
	};
}

TEST(DetailsPanelTests, EveryRowOfTheFormStandsUnderItsKeyWithItsWidget)
{
	FPanelFixture Fixture;
	FOpenTool& Open = Fixture.Show();
	ASSERT_TRUE(Fixture.Tool().SelectedMod);
	EXPECT_EQ(DescribeWidgets(Fixture.Tool().DetailsScrollBox.ToSharedRef()), ReadGolden("details-form-rows.txt"));

	// The banner draws the kit's logo from the editor's style, at its size of 40 points.
	TArray<TSharedRef<SWidget>> Images = FindWidgetsByType(Open.Tool.ToSharedRef(), TEXT("SImage"));
	const TSharedRef<SWidget>* Logo = Images.FindByPredicate([](const TSharedRef<SWidget>& Each)
		{ return StaticCastSharedRef<SImage>(Each)->GetImage()->GetResourceName() == TEXT("Merrow.MerrowLogo"); });
	ASSERT_NE(Logo, nullptr);
	EXPECT_TRUE(StaticCastSharedRef<SImage>(*Logo)->HasPicture());
	EXPECT_EQ(GetPreferredSize(**Logo), (FSlateTestSize{40, 40}));
}

// The guards are asked afresh at each frame: "Upload" waits for the three fields and the packaged description
// file, "Reset Publisher Id" for a published id, "Cook Map" for maps, and the three for the end of a real cook;
// then the published id's link and its reset.
TEST(DetailsPanelTests, GuardsFollowTheRecordTheFileSystemAndARealCook)
{
	FPanelFixture Fixture;
	Fixture.Kit.AddMod(TEXT("NoMaps"));
	FOpenTool& Open = Fixture.Show();
	STesselTool& Tool = Fixture.Tool();
	Open.SelectMod(TEXT("Islands"));
	EXPECT_EQ(Open.DisabledButtons(), FString(TEXT("UploadMod ResetPub ClearLog CancelJob")));
	Tool.SelectedMod->Title = TEXT("Island Pack");
	Tool.SelectedMod->Description = TEXT("Two islands");
	Tool.SelectedMod->PreviewImage = Fixture.Kit.WriteFile(TEXT("preview.png"), "not even a picture");
	const FString ModInfo = Fixture.Kit.WriteFile(TEXT("ModTools/Output/Islands/mod.info"), "x");
	TickFrames();
	EXPECT_EQ(Open.DisabledButtons(), FString(TEXT("ResetPub ClearLog CancelJob")));
	for (FString FModSetup::*Field : {&FModSetup::Title, &FModSetup::Description, &FModSetup::PreviewImage})
	{
		const FString Kept = Tool.SelectedMod.Get()->*Field;
		(Tool.SelectedMod.Get()->*Field).Empty();
		TickFrames();
		EXPECT_EQ(Open.DisabledButtons(), FString(TEXT("UploadMod ResetPub ClearLog CancelJob"))) << Kept.ToUtf8();
		Tool.SelectedMod.Get()->*Field = Kept;
	}
	unlink(ModInfo.ToUtf8().c_str());
	Tool.SelectedMod->ItemSeamId = TEXT("2900000001");
	TickFrames();
	EXPECT_EQ(Open.DisabledButtons(), FString(TEXT("UploadMod ClearLog CancelJob")));

	// A real cook, pressed with the mouse, goes on until the test lets it end; the log fills meanwhile.
	Fixture.Kit.WriteFile(TEXT("Orrery/Content/Mods/Islands/StandIn.mode"), "wait-for-go");
	Click(Open.Button(TEXT("CookMapMod")));
	ASSERT_EQ(ActiveJobs.Num(), 1);
	TickFrames();
	EXPECT_EQ(Open.DisabledButtons(), FString(TEXT("CookMapMod UploadMod ResetPub")));
	Fixture.Kit.WriteFile(TEXT("Orrery/Content/Mods/Islands/StandIn.go"), "");
	ASSERT_TRUE(TestPrograms::WaitUntil([] { return ActiveJobs.Num() == 0; }, [] { TickFrames(1); }));
	TickFrames();
	EXPECT_TRUE(Tool.LogMessages.ContainsByPredicate([](const TSharedPtr<FString>& Line) { return Line->StartsWith(TEXT("Success")); }));
	EXPECT_GT(Tool.LogListView->GetNumRowsShown(), 5);
	ASSERT_EQ(Fixture.Services->Dialogs.Num(), 1);
	EXPECT_EQ(Fixture.Services->Dialogs[0].Content->GetDisplayText(), FString(TEXT("Job Successful!!")));
	// The cook packaged the mod, so "Upload" opens.
	EXPECT_EQ(Open.DisabledButtons(), FString(TEXT("CancelJob")));

	// The published mod's link leads to its item. "Reset Publisher Id" forgets the id and saves at once; the link
	// is hidden, not collapsed, so that the row does not close up (measured in the form, which may scroll).
	TSharedPtr<SWidget> Link = Open.Find(TEXT("ViewItem"));
	ASSERT_TRUE(Link && IsShown(*Link));
	const TSharedRef<SWidget> Form = Tool.DetailsScrollBox->GetChildren()[0];
	auto InForm = [&Form](FSlateTestRect Rect)
	{
		Rect.X -= GetGeometry(*Form).X;
		Rect.Y -= GetGeometry(*Form).Y;
		return Rect;
	};
	const FSlateTestRect Where = InForm(GetGeometry(*Link));
	const FSlateTestRect Room = InForm(GetSlotGeometry(*Link));
	Click(*Link);
	EXPECT_EQ(Fixture.Services->LaunchedUrls, (TArray<FString>{TEXT("https://steamcommunity.com/sharedfiles/filedetails/?id=2900000001")}));
	Click(Open.Button(TEXT("ResetPub")));
	TickFrames();
	EXPECT_EQ(Tool.SelectedMod->ItemSeamId, FString());
	EXPECT_TRUE(ReadModDatabaseText().Contains(TEXT("\"ItemSeamId\": \"\"")));
	EXPECT_EQ(Open.DisabledButtons(), FString(TEXT("ResetPub CancelJob")));
	EXPECT_FALSE(IsShown(*Link));
	EXPECT_EQ(InForm(GetGeometry(*Link)), Where);
	EXPECT_EQ(InForm(GetSlotGeometry(*Link)), Room);
	Open.SelectMod(TEXT("NoMaps"));
	EXPECT_EQ(Open.DisabledButtons(), FString(TEXT("CookMapMod UploadMod ResetPub CancelJob")));
}

TEST(DetailsPanelTests, TagsInAnyLetterCaseShowCheckedAndEveryClickReachesTheDiskAtOnce)
{
	FPanelFixture Fixture;
	Fixture.Show();
	Fixture.Tool().SelectedMod->Tags = TEXT("map,Weapons");
	Fixture.Tool().BuildLayout(); // boxes take their state from Tags when the form is built
	TickFrames();
	auto Checked = [&Fixture]
	{
		FString Marks;
		for (const TSharedRef<SWidget>& Box : Fixture.TagBoxes())
		{
			Marks += IsChecked(*Box) ? TEXT("x") : TEXT(".");
		}
		return Marks;
	};
	EXPECT_EQ(Checked(), FString(TEXT("..x.x.....")));

	Click(*Fixture.TagBoxes()[0]);
	EXPECT_EQ(Checked(), FString(TEXT("x.x.x.....")));
	EXPECT_EQ(Fixture.Tool().SelectedMod->Tags, FString(TEXT("map,Weapons,Mod")));
	EXPECT_TRUE(ReadModDatabaseText().Contains(TEXT("\"Tags\": \"map,Weapons,Mod\"")));

	// Unchecking the box of a tag stored in other letter case removes it; any set of tags may be on at once.
	Click(*Fixture.TagBoxes()[2]);
	for (int32 Index : {5, 6, 9})
	{
		Click(*Fixture.TagBoxes()[Index]);
	}
	EXPECT_EQ(Checked(), FString(TEXT("x...xxx..x")));
	EXPECT_EQ(Fixture.Tool().SelectedMod->Tags, FString(TEXT("Weapons,Mod,Outfits,Creatures,Rebalancing")));
}

// Typing with real key events reaches the record at once and the disk not, and a change made elsewhere shows at
// the next frame; Tab walks the upload's boxes, also out of the multi-line ones, which keep no tab character,
// and Shift+Tab walks back. The folder's name is shown, not edited.
TEST(DetailsPanelTests, TypingIntoTitleMovesTheRecordButNotTheDiskAndTabWalksTheBoxes)
{
	FPanelFixture Fixture;
	FOpenTool& Open = Fixture.Show();
	Open.Tool->SaveModDatabase();
	const FString Before = ReadModDatabaseText();
	TSharedPtr<SWidget> TitleBox = Fixture.Right(TEXT("ModTitle"));
	TSharedPtr<SWidget> DescriptionBox = Fixture.Right(TEXT("ModDescription"));
	TSharedPtr<SWidget> NotesBox = Fixture.Right(TEXT("ModChangeNotes"));
	TSharedPtr<SWidget> ModDir = Fixture.Right(TEXT("ModDir"));
	ASSERT_TRUE(TitleBox && DescriptionBox && NotesBox && ModDir);
	SWidget& Title = *TitleBox;
	SWidget& Description = *DescriptionBox;
	SWidget& Notes = *NotesBox;
	Open.Window->Activate();
	Focus(Title);
	TypeText(Title, TEXT("Isle"));
	TickFrames(3);
	EXPECT_EQ(Fixture.Tool().SelectedMod->Title, FString(TEXT("Isle")));
	EXPECT_EQ(ReadModDatabaseText(), Before);
	Fixture.Tool().SelectedMod->Title = TEXT("Island Pack");
	TickFrames();
	EXPECT_EQ(GetShownText(Title), FString(TEXT("Island Pack")));

	PressKeyInFocus(TEXT("Tab"));
	EXPECT_TRUE(HasFocus(Description));
	PressKeyInFocus(TEXT("Tab"));
	EXPECT_FALSE(HasFocus(Description));
	Focus(Notes);
	PressKeyInFocus(TEXT("Tab"));
	EXPECT_FALSE(HasFocus(Notes));
	Focus(Description);
	PressKeyInFocus(TEXT("Shift+Tab"));
	EXPECT_TRUE(HasFocus(Title));
	EXPECT_FALSE(GetShownText(Description).Contains(TEXT("\t")) || GetShownText(Notes).Contains(TEXT("\t")));
	EXPECT_FALSE(Fixture.Tool().SelectedMod->Description.Contains(TEXT("\t")));

	TArray<TSharedRef<SWidget>> ModDirs = FindWidgetsByType(ModDir.ToSharedRef(), TEXT("SEditableText"));
	ASSERT_EQ(ModDirs.Num(), 1);
	EXPECT_EQ(GetShownText(*ModDirs[0]), FString(TEXT("Islands")));
	EXPECT_TRUE(IsReadOnly(*ModDirs[0]) && IsShown(*ModDirs[0]));
}

// The test output folder is kept by the tool, not by the form: a rebuilt form shows an empty box while the
// next cook still goes to the folder typed before.
TEST(DetailsPanelTests, TestOutputBoxEmptiesOnRebuildWhileTheTextStaysForTheNextCook)
{
	FPanelFixture Fixture;
	Fixture.Kit.AddMod(TEXT("Second"));
	Fixture.Show();
	TSharedPtr<SEditableTextBase> Box = Fixture.Right<SEditableTextBase>(TEXT("ModTestCookDir"));
	ASSERT_TRUE(Box);
	Box->SetTextFromUser(TEXT("D:/Game/Mods"));
	Fixture.Tool().ModListView->ClickRow(1);
	TickFrames();
	TSharedPtr<SEditableTextBase> Rebuilt = Fixture.Right<SEditableTextBase>(TEXT("ModTestCookDir"));
	ASSERT_TRUE(Rebuilt);
	EXPECT_NE(Rebuilt, Box);
	EXPECT_EQ(Rebuilt->GetShownText(), FString());
	EXPECT_EQ(Fixture.Tool().TestOutputDir, FString(TEXT("D:/Game/Mods")));
}

TEST(DetailsPanelTests, BrowseStoresTheFullPathAndThePreviewShowsThePicture)
{
	FPanelFixture Fixture;
	FOpenTool& Open = Fixture.Show();
	// A relative answer of the dialog is taken from the engine's base folder, where its executables stand.
	const FString PicturePath = Fixture.Kit.Root() / TEXT("Engine/Binaries/Win64/shot.png");
	ASSERT_TRUE(WriteSolidPng(PicturePath, 32, 32, 0xFFFF0000));
	Fixture.Services->bFileDialogResult = true;
	Fixture.Services->FileDialogAnswer = {TEXT("shot.png"), TEXT("ignored.png")};
	Click(Open.Button(TEXT("SelectPreviewImage")));
	ASSERT_EQ(Fixture.Services->FileDialogs.Num(), 1);
	const auto& Call = Fixture.Services->FileDialogs[0];
	EXPECT_EQ(Call.Title + TEXT("|") + Call.DefaultPath + TEXT("|") + Call.DefaultFile + TEXT("|") + Call.FileTypes,
			  TEXT("Select Preview Image|") + Fixture.Kit.Root() + TEXT("||Png Image (.png)|*.png"));
	EXPECT_EQ(Fixture.Tool().SelectedMod->PreviewImage, PicturePath);
	TickFrames();
	TSharedPtr<SImage> Preview = StaticCastSharedRef<SImage>(FindWidgetsByType(Open.Tool.ToSharedRef(), TEXT("SImage")).Last());
	EXPECT_TRUE(Preview->HasPicture());
	EXPECT_EQ(Preview->GetImage()->GetResourceName(), PicturePath);

	// A cancelled dialog changes nothing; a path to no picture is kept and drawn as the checkerboard.
	Fixture.Services->bFileDialogResult = false;
	Click(Open.Button(TEXT("SelectPreviewImage")));
	EXPECT_EQ(Fixture.Tool().SelectedMod->PreviewImage, PicturePath);
	Fixture.Services->bFileDialogResult = true;
	Fixture.Services->FileDialogAnswer = {Fixture.Kit.WriteFile(TEXT("broken.png"), "no picture here")};
	Click(Open.Button(TEXT("SelectPreviewImage")));
	TickFrames();
	EXPECT_EQ(Fixture.Tool().SelectedMod->PreviewImage, Fixture.Kit.Root() / TEXT("broken.png")); // already full
	EXPECT_FALSE(Preview->HasPicture());
}

TEST(DetailsPanelTests, VisibilityOutsideTheOptionsIsShownAsItStandsUntilAChoice)
{
	FPanelFixture Fixture;
	Fixture.Show();
	Fixture.Tool().SelectedMod->Visibility = TEXT("Unlisted");
	TickFrames();
	TSharedPtr<SComboBoxBase> Combo = Fixture.Right<SComboBoxBase>(TEXT("ModVisibilty"));
	ASSERT_TRUE(Combo);
	EXPECT_EQ(Combo->GetDisplayText(), FString(TEXT("Unlisted")));
	ASSERT_EQ(Combo->NumOptions(), 3);
	EXPECT_EQ(Combo->GetOptionText(1), FString(TEXT("Friends Only")));
	Combo->ChooseOption(2);
	TickFrames();
	EXPECT_EQ(Fixture.Tool().SelectedMod->Visibility, FString(TEXT("Hidden")));
	// The label is drawn, not only kept.
	TArray<TSharedRef<SWidget>> Labels = FindWidgetsByType(Combo.ToSharedRef(), TEXT("STextBlock"));
	ASSERT_EQ(Labels.Num(), 1);
	EXPECT_TRUE(IsShown(*Labels[0]));
	EXPECT_EQ(GetShownText(*Labels[0]), FString(TEXT("Hidden")));
}

// The demo kit as a person sees it: the log's line and the mods' names are drawn; in the "Islands" form every
// label, button and check box shows its whole text in the room its widget gives it, a wrapping label all its lines;
// the preview is painted and the banner lettered; long values add no horizontal scroll bar, and the description
// wraps. Pictures of both are saved to look at. The scale comes from the environment (SLATE_TEST_SCALE), and
// CTest runs this once at 1 and once at 2.
TEST(DetailsPanelTests, TheIslandsFormShowsEveryTextWhole)
{
	// The demo kit, its mods put aside until the tool has drawn its empty lists.
	FTempDirectory Copy;
	std::filesystem::copy(TestPaths::DemoKitDir, Copy.Get().ToUtf8(), std::filesystem::copy_options::recursive);
	const std::string ModsDir = (Copy / TEXT("Orrery/Content/Mods")).ToUtf8();
	std::filesystem::rename(ModsDir, ModsDir + ".aside");
	FPaths::SetKitRoot(Copy.Get());
	FOpenTool Open;
	STesselTool& Tool = *Open.Tool;
	const float Scale = Open.Window->GetScale();
	Open.Window->Resize(1100, 720);
	TickFrames(3);
	// The lists before there is anything in them: lettering brings shades that a bare list lacks.
	const FSlateScreenshot EmptyMods = TakeScreenshot(*Tool.ModListView);
	const FSlateScreenshot EmptyLog = TakeScreenshot(*Tool.LogListView);
	std::filesystem::rename(ModsDir + ".aside", ModsDir);
	Click(Open.Button(TEXT("RefreshMods")));
	ASSERT_EQ(Tool.ModList.Num(), 3);
	Tool.LogMessages.Add(MakeShared<FString>(TEXT("**************************Cooking Islands**************************")));
	Tool.LogListView->RequestListRefresh();
	TickFrames(3);
	const FSlateScreenshot Whole = Open.Window->TakeScreenshot();
	EXPECT_EQ(Whole.Width, static_cast<int>(1100 * Scale));
	EXPECT_GT(CountColours(Whole), 8);
	EXPECT_TRUE(Whole.SaveToPng(FString(TestPaths::BuildDir) + FString::Printf(TEXT("/tessel-tool@%gx.png"), Scale)));
	EXPECT_NE(TakeScreenshot(*Tool.LogListView).Pixels, EmptyLog.Pixels) << "the log line is not drawn";
	const FSlateScreenshot Mods = TakeScreenshot(*Tool.ModListView);
	EXPECT_EQ((FSlateTestSize{Mods.Width, Mods.Height}), (FSlateTestSize{EmptyMods.Width, EmptyMods.Height}));
	EXPECT_NE(Mods.Pixels, EmptyMods.Pixels) << "the mods list shows no names";

	Open.SelectMod(TEXT("Islands"));
	ASSERT_FALSE(HasFailure());
	Tool.SelectedMod->Title = TEXT("Island Pack");
	Tool.SelectedMod->Description = TEXT("Two islands joined by a rope bridge, and a crate of props.");
	Tool.SelectedMod->ItemSeamId = TEXT("2900000123");
	Tool.SelectedMod->PreviewImage = Copy.Get() / TEXT("Previews/Islands.png");
	Tool.RefreshPreviewBrush();
	Open.Window->Resize(1200, 760);
	TickFrames(4);
	int32 Checked = 0;
	const TArray<FString> Cut = FindCutTexts(Open.Tool.ToSharedRef(), &Checked);
	EXPECT_TRUE(Cut.IsEmpty()) << "cut: " << FString::Join(Cut, TEXT(" | ")).ToUtf8();
	// The form's buttons and one-line labels, and the log side's buttons: not a check that looked at nothing.
	EXPECT_GE(Checked, 15);
	const FSlateScreenshot Form = Open.Window->TakeScreenshot();
	EXPECT_EQ(Form.Width, static_cast<int>(1200 * Scale));
	EXPECT_TRUE(Form.SaveToPng(FString(TestPaths::BuildDir) + FString::Printf(TEXT("/tessel-islands-form@%gx.png"), Scale)));
	// The preview drawn in its 128-pixel square: a painted picture has many colours, an empty square one or two.
	int32 Previews = 0;
	for (const TSharedRef<SWidget>& Image : FindWidgetsByType(Open.Tool.ToSharedRef(), TEXT("SImage")))
	{
		if (GetGeometry(*Image).Width == 128 && GetGeometry(*Image).Height == 128)
		{
			++Previews;
			EXPECT_GT(CountColours(TakeScreenshot(*Image)), 50);
		}
	}
	EXPECT_EQ(Previews, 1);
	ASSERT_TRUE(Open.Find(TEXT("Title")) && IsShown(*Open.Find(TEXT("Title"))));
	EXPECT_GT(CountColours(TakeScreenshot(*Open.Find(TEXT("Title")))), 4) << "the title box shows no lettering";

	Tool.SelectedMod->Title = FString(std::u16string(300, u'T'));
	Tool.SelectedMod->Description = FString(std::u16string(8000, u'd'));
	Tool.SelectedMod->Maps = FString(TEXT("C:/")) + FString(std::u16string(300, u'p'));
	Tool.BuildLayout();
	TickFrames(5);
	EXPECT_FALSE(IsScrollBarShown(*Tool.DetailsScrollBox, Orient_Horizontal));
	const TSharedRef<SWidget> Description = FindWidgetsByType(Open.Tool.ToSharedRef(), TEXT("SMultiLineEditableTextBox"))[0];
	EXPECT_TRUE(WrapsText(*Description));
	EXPECT_EQ(GetShownText(*Description).Len(), 8000);
}
