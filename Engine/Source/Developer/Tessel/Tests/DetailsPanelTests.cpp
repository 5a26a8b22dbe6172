// The details panel as a mod author meets it: every row of the form by its key, the guards while a real cook
// runs, tags that reach the disk at once, typing with real key events, and the columns that hold their shares.

#include "JsonTestUtils.h"
#include "TestKit.h"
#include "Testing/EditorServicesDouble.h"
#include "ToolWindow.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Input/SCheckBox.h"
#include "Widgets/Input/SComboBox.h"
#include "Widgets/Input/SEditableText.h"
#include "Widgets/Input/SEditableTextBox.h"
#include "Widgets/Input/SHyperlink.h"
#include "Widgets/Input/SMultiLineEditableTextBox.h"
#include "Widgets/Layout/SGridPanel.h"
#include "Widgets/Text/STextBlock.h"

#include <chrono>
#include <filesystem>
#include <thread>
#include <unistd.h>

using namespace SlateTest;

namespace
{
	// A kit with three mods, the stand-in cook commandlet, and the recording editor services, so that no dialog
	// ever waits for a person.
	struct FPanelFixture
	{
		FPanelFixture()
		{
			Kit.AddMod(TEXT("Islands"), {TEXT("Alpha.umap"), TEXT("Beta.umap")});
			Kit.InstallCookCommandlet();
			Services = MakeShared<FEditorServicesDouble>();
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

		// The grid of the group that holds the label with LabelKey in its first column.
		TSharedPtr<SGridPanel> GridOf(const TCHAR* LabelKey)
		{
			for (const TSharedRef<SWidget>& Widget : FindWidgetsByType(Open->Tool.ToSharedRef(), TEXT("SGridPanel")))
			{
				TSharedRef<SGridPanel> Grid = StaticCastSharedRef<SGridPanel>(Widget);
				for (const SGridPanel::FSlot& Slot : Grid->GetSlots())
				{
					if (Slot.Column == 0 && Slot.Widget->GetTextKey() == LabelKey)
					{
						return Grid;
					}
				}
			}
			ADD_FAILURE() << "no label with the key " << FString(LabelKey).ToUtf8();
			return nullptr;
		}
		// The widgets that stand in the given grid cell of the group that holds the label with LabelKey.
		TArray<TSharedRef<SWidget>> CellRightOf(const TCHAR* LabelKey, int32 RowOffset = 0)
		{
			for (const TSharedRef<SWidget>& Widget : FindWidgetsByType(Open->Tool.ToSharedRef(), TEXT("SGridPanel")))
			{
				const SGridPanel& Grid = static_cast<const SGridPanel&>(*Widget);
				for (const SGridPanel::FSlot& Slot : Grid.GetSlots())
				{
					if (Slot.Column == 0 && Slot.Widget->GetTextKey() == LabelKey)
					{
						TArray<TSharedRef<SWidget>> Cell;
						for (const SGridPanel::FSlot& Other : Grid.GetSlots())
						{
							if (Other.Column == 1 && Other.Row == Slot.Row + RowOffset)
							{
								Cell.Add(Other.Widget.ToSharedRef());
							}
						}
						return Cell;
					}
				}
			}
			ADD_FAILURE() << "no label with the key " << FString(LabelKey).ToUtf8();
			return {};
		}
		template <typename WidgetType>
		TSharedPtr<WidgetType> Right(const TCHAR* LabelKey)
		{
			TArray<TSharedRef<SWidget>> Cell = CellRightOf(LabelKey);
			return Cell.Num() == 1 ? TSharedPtr<WidgetType>(StaticCastSharedRef<WidgetType>(Cell[0])) : TSharedPtr<WidgetType>();
		}
		bool Enabled(const TCHAR* Key)
		{
			EXPECT_TRUE(Open->Find(Key)) << FString(Key).ToUtf8();
			return Open->Enabled(Key);
		}
		FString DatabaseOnDisk() const { return FString(FromUtf16Bytes(FTempDirectory::ReadBytes(KitPaths::ModDatabase()))); }
		void RunUntilTheQueueIsEmpty()
		{
			const auto Deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
			while (ActiveJobs.Num() > 0 && std::chrono::steady_clock::now() < Deadline)
			{
				TickFrames(1);
				std::this_thread::sleep_for(std::chrono::milliseconds(5));
			}
			ASSERT_EQ(ActiveJobs.Num(), 0) << "the cook did not end within a minute";
		}

		FTestKit Kit;
		TSharedPtr<FEditorServicesDouble> Services;
		std::unique_ptr<FOpenTool> Open;
	};

	TSharedPtr<SWidget> TagBox(FPanelFixture& Fixture, int32 Index)
	{
		TArray<TSharedRef<SWidget>> Cell = Fixture.CellRightOf(TEXT("ModTags"), Index);
		return Cell.Num() == 2 && Cell[1]->GetTypeName() == TEXT("SCheckBox") ? TSharedPtr<SWidget>(Cell[1]) : nullptr;
	}
}

TEST(DetailsPanelTests, EveryRowOfTheFormStandsUnderItsKeyWithItsWidget)
{
	FPanelFixture Fixture;
	FOpenTool& Open = Fixture.Show();
	ASSERT_TRUE(Fixture.Tool().SelectedMod);

	// Banner and groups.
	EXPECT_EQ(Open.Find(TEXT("Title"))->GetDisplayText(), FString(TEXT("Quillon Dev Kit")));
	EXPECT_EQ(Open.Find(TEXT("CookingLabel"))->GetDisplayText(), FString(TEXT("Cooking")));
	EXPECT_EQ(Open.Find(TEXT("UploadingLabel"))->GetDisplayText(), FString(TEXT("Uploading")));

	// Labels as the author reads them, and the kind of widget beside each.
	const struct
	{
		const TCHAR* Key;
		const TCHAR* Label;
		const TCHAR* Widget;
	} Rows[] = {
		{TEXT("ModDir"), TEXT("Mod Directory"), TEXT("SHorizontalBox")},
		{TEXT("ModMaps"), TEXT("Maps"), TEXT("SEditableTextBox")},
		{TEXT("ModTestCookDir"), TEXT("Test Mod Output Directory (EX:C:\\Steam\\steamapps\\common\\MERROW\\Orrery\\Content\\Mods)"), TEXT("SEditableTextBox")},
		{TEXT("PreviewImage"), TEXT("Preview Image"), TEXT("SVerticalBox")},
		{TEXT("ModTitle"), TEXT("Title"), TEXT("SEditableTextBox")},
		{TEXT("ModDescription"), TEXT("Description"), TEXT("SMultiLineEditableTextBox")},
		{TEXT("ModVisibilty"), TEXT("Visibility"), TEXT("SComboBox")},
		{TEXT("ModChangeNotes"), TEXT("Change Notes"), TEXT("SMultiLineEditableTextBox")},
	};
	for (const auto& Row : Rows)
	{
		SCOPED_TRACE(FString(Row.Key).ToUtf8());
		ASSERT_TRUE(Open.Find(Row.Key));
		EXPECT_EQ(Open.Find(Row.Key)->GetDisplayText(), FString(Row.Label));
		TArray<TSharedRef<SWidget>> Cell = Fixture.CellRightOf(Row.Key);
		ASSERT_EQ(Cell.Num(), 1);
		EXPECT_EQ(Cell[0]->GetTypeName(), FString(Row.Widget));
	}

	// The ten tags, one label and one check box to a row, all labels under one key.
	const TCHAR* const Tags[] = {TEXT("Mod"),	  TEXT("Total Conversion"), TEXT("Map"),		  TEXT("Structures"), TEXT("Weapons"),
								 TEXT("Outfits"), TEXT("Creatures"),		TEXT("Game Modes"), TEXT("Visuals/Sounds"), TEXT("Rebalancing")};
	EXPECT_EQ(Open.Find(TEXT("ModTags"))->GetDisplayText(), FString(TEXT("Tags:")));
	for (int32 Index = 0; Index < 10; ++Index)
	{
		TArray<TSharedRef<SWidget>> Cell = Fixture.CellRightOf(TEXT("ModTags"), Index);
		ASSERT_EQ(Cell.Num(), 2) << Index;
		EXPECT_EQ(Cell[0]->GetTextKey(), FString(TEXT("TagMod")));
		EXPECT_EQ(Cell[0]->GetDisplayText(), FString(Tags[Index]));
		EXPECT_EQ(Cell[1]->GetTypeName(), FString(TEXT("SCheckBox")));
	}

	// Buttons by key, with the widths of their boxes.
	const struct
	{
		const TCHAR* Key;
		const TCHAR* Label;
		int Width;
	} Buttons[] = {{TEXT("CookMapMod"), TEXT("Cook Map"), 100},		  {TEXT("CookMod"), TEXT("Cook Game Mod"), 100},
				   {TEXT("CookIslandExtension"), TEXT("Cook Map Extension"), 170}, {TEXT("UploadMod"), TEXT("Upload"), 100},
				   {TEXT("ResetPub"), TEXT("Reset Publisher Id"), 100}, {TEXT("ResetGUID"), TEXT("Reset Mod Guid"), 100}};
	for (const auto& Button : Buttons)
	{
		SCOPED_TRACE(FString(Button.Key).ToUtf8());
		ASSERT_TRUE(Open.Find(Button.Key));
		EXPECT_EQ(GetShownText(Open.Button(Button.Key)), FString(Button.Label));
		EXPECT_EQ(GetGeometry(Open.Button(Button.Key)).Width, Button.Width);
	}
	ASSERT_TRUE(Open.Find(TEXT("SelectPreviewImage")));
	EXPECT_EQ(GetShownText(Open.Button(TEXT("SelectPreviewImage"))), FString(TEXT("Browse...")));
	// The hyperlink has its key; with no published id it is hidden but keeps its place.
	TSharedPtr<SWidget> Link = Open.Find(TEXT("ViewItem"));
	ASSERT_TRUE(Link);
	EXPECT_EQ(Link->GetDisplayText(), FString(TEXT("View Item on Steam Workshop")));
	EXPECT_FALSE(IsShown(*Link));
	EXPECT_GE(GetSlotGeometry(*Link).Width, GetPreferredSize(*Link).Width);
	EXPECT_GE(GetSlotGeometry(*Link).Height, GetPreferredSize(*Link).Height);
	EXPECT_GT(GetPreferredSize(*Link).Height, 0);
	// The banner draws the kit's logo from the editor's style, at its size of 40 points.
	TArray<TSharedRef<SWidget>> Images = FindWidgetsByType(Open.Tool.ToSharedRef(), TEXT("SImage"));
	const TSharedRef<SWidget>* Logo = Images.FindByPredicate([](const TSharedRef<SWidget>& Each)
		{ return StaticCastSharedRef<SImage>(Each)->GetImage()->GetResourceName() == TEXT("Merrow.MerrowLogo"); });
	ASSERT_NE(Logo, nullptr);
	EXPECT_TRUE(StaticCastSharedRef<SImage>(*Logo)->HasPicture());
	EXPECT_EQ(GetPreferredSize(**Logo), (FSlateTestSize{40, 40}));
	// The preview stands in a square of 128 points.
	TSharedRef<SWidget> Image = FindWidgetsByType(Open.Tool.ToSharedRef(), TEXT("SImage")).Last();
	TSharedPtr<SWidget> PreviewBox;
	for (const TSharedRef<SWidget>& Box : FindWidgetsByType(Open.Tool.ToSharedRef(), TEXT("SBox")))
	{
		PreviewBox = Box->GetChildren().Contains(Image) ? TSharedPtr<SWidget>(Box) : PreviewBox;
	}
	ASSERT_TRUE(PreviewBox);
	EXPECT_EQ(GetGeometry(*PreviewBox).Width, 128);
	EXPECT_EQ(GetGeometry(*PreviewBox).Height, 128);
}

TEST(DetailsPanelTests, GuardsFollowTheRecordTheFileSystemAndARealCook)
{
	FPanelFixture Fixture;
	Fixture.Kit.AddMod(TEXT("NoMaps"));
	FOpenTool& Open = Fixture.Show();
	STesselTool& Tool = Fixture.Tool();
	auto RowOf = [&Tool](const TCHAR* ModDir)
	{ return Tool.ModList.IndexOfByPredicate([ModDir](const TSharedPtr<FModSetup>& Mod) { return Mod->ModDir == ModDir; }); };
	Tool.ModListView->ClickRow(RowOf(TEXT("Islands")));
	TickFrames();
	ASSERT_EQ(Tool.SelectedMod->ModDir, FString(TEXT("Islands")));

	// A mod with maps can be cooked as a map; nothing is published and nothing packaged yet.
	EXPECT_TRUE(Fixture.Enabled(TEXT("CookMapMod")));
	EXPECT_FALSE(Fixture.Enabled(TEXT("ResetPub")));
	EXPECT_FALSE(Fixture.Enabled(TEXT("UploadMod")));

	// "Upload" waits for all three fields and for the packaged description file, asked afresh at each frame:
	// with any one of the four missing it stays disabled.
	Tool.SelectedMod->Title = TEXT("Island Pack");
	Tool.SelectedMod->Description = TEXT("Two islands");
	Tool.SelectedMod->PreviewImage = Fixture.Kit.WriteFile(TEXT("preview.png"), "not even a picture");
	const FString ModInfo = Fixture.Kit.WriteFile(TEXT("ModTools/Output/Islands/mod.info"), "x");
	TickFrames();
	EXPECT_TRUE(Fixture.Enabled(TEXT("UploadMod")));
	for (FString FModSetup::*Field : {&FModSetup::Title, &FModSetup::Description, &FModSetup::PreviewImage})
	{
		const FString Kept = Tool.SelectedMod.Get()->*Field;
		(Tool.SelectedMod.Get()->*Field).Empty();
		TickFrames();
		EXPECT_FALSE(Fixture.Enabled(TEXT("UploadMod"))) << Kept.ToUtf8();
		Tool.SelectedMod.Get()->*Field = Kept;
	}
	unlink(ModInfo.ToUtf8().c_str());
	TickFrames();
	EXPECT_FALSE(Fixture.Enabled(TEXT("UploadMod")));

	// A published mod may forget its id, but not while a job runs.
	Tool.SelectedMod->ItemSeamId = TEXT("2900000001");
	TickFrames();
	EXPECT_TRUE(Fixture.Enabled(TEXT("ResetPub")));

	// A real cook, pressed with the mouse: the log fills, the throbber turns, and only the three guarded
	// buttons wait. The cook goes on until the test lets it end.
	Fixture.Kit.WriteFile(TEXT("Orrery/Content/Mods/Islands/StandIn.mode"), "wait-for-go");
	Click(Open.Button(TEXT("CookMapMod")));
	ASSERT_EQ(ActiveJobs.Num(), 1);
	TickFrames();
	EXPECT_TRUE(IsShown(*Tool.StatusThrobber));
	EXPECT_FALSE(Fixture.Enabled(TEXT("CookMapMod")));
	EXPECT_FALSE(Fixture.Enabled(TEXT("UploadMod")));
	EXPECT_FALSE(Fixture.Enabled(TEXT("ResetPub")));
	for (const TCHAR* Key : {TEXT("CookMod"), TEXT("CookIslandExtension"), TEXT("ResetGUID"), TEXT("SelectPreviewImage"), TEXT("CancelJob")})
	{
		EXPECT_TRUE(Fixture.Enabled(Key)) << FString(Key).ToUtf8();
	}
	Fixture.Kit.WriteFile(TEXT("Orrery/Content/Mods/Islands/StandIn.go"), "");
	Fixture.RunUntilTheQueueIsEmpty();
	TickFrames();
	EXPECT_FALSE(IsShown(*Tool.StatusThrobber));
	EXPECT_TRUE(Tool.LogMessages.ContainsByPredicate([](const TSharedPtr<FString>& Line) { return Line->StartsWith(TEXT("Success")); }));
	EXPECT_GT(Tool.LogListView->GetNumRowsShown(), 5);
	ASSERT_EQ(Fixture.Services->Dialogs.Num(), 1);
	EXPECT_EQ(Fixture.Services->Dialogs[0].Content->GetDisplayText(), FString(TEXT("Job Successful!!")));
	// The cook packaged the mod, so "Upload" opens.
	EXPECT_TRUE(Fixture.Enabled(TEXT("UploadMod")));
	EXPECT_TRUE(Fixture.Enabled(TEXT("CookMapMod")));
	EXPECT_TRUE(Fixture.Enabled(TEXT("ResetPub")));

	// A mod without maps: "Cook Map" refuses, "Cook Game Mod" does not.
	Tool.ModListView->ClickRow(RowOf(TEXT("NoMaps")));
	TickFrames();
	ASSERT_EQ(Tool.SelectedMod->ModDir, FString(TEXT("NoMaps")));
	EXPECT_FALSE(Fixture.Enabled(TEXT("CookMapMod")));
	EXPECT_TRUE(Fixture.Enabled(TEXT("CookMod")));
}

TEST(DetailsPanelTests, TagsInAnyLetterCaseShowCheckedAndEveryClickReachesTheDiskAtOnce)
{
	FPanelFixture Fixture;
	Fixture.Show();
	Fixture.Tool().SelectedMod->Tags = TEXT("map,Weapons");
	Fixture.Tool().SelectedMod->Title = TEXT("unsaved title");
	Fixture.Tool().BuildLayout(); // boxes take their state from Tags when the form is built
	TickFrames();

	for (int32 Index = 0; Index < 10; ++Index)
	{
		ASSERT_TRUE(TagBox(Fixture, Index)) << Index;
	}
	EXPECT_TRUE(IsChecked(*TagBox(Fixture, 2)));  // "Map", stored as "map"
	EXPECT_TRUE(IsChecked(*TagBox(Fixture, 4)));  // "Weapons"
	EXPECT_FALSE(IsChecked(*TagBox(Fixture, 0))); // "Mod"

	Click(*TagBox(Fixture, 0));
	EXPECT_TRUE(IsChecked(*TagBox(Fixture, 0)));
	EXPECT_EQ(Fixture.Tool().SelectedMod->Tags, FString(TEXT("map,Weapons,Mod")));
	EXPECT_TRUE(Fixture.DatabaseOnDisk().Contains(TEXT("\"Tags\": \"map,Weapons,Mod\"")));
	// The save took every other edit along.
	EXPECT_TRUE(Fixture.DatabaseOnDisk().Contains(TEXT("\"Title\": \"unsaved title\"")));

	// Unchecking the box of a tag stored in other letter case removes it.
	Click(*TagBox(Fixture, 2));
	EXPECT_FALSE(IsChecked(*TagBox(Fixture, 2)));
	EXPECT_TRUE(Fixture.DatabaseOnDisk().Contains(TEXT("\"Tags\": \"Weapons,Mod\"")));
	// Any set of tags may be on at once.
	for (int32 Index : {5, 6, 9})
	{
		Click(*TagBox(Fixture, Index));
	}
	EXPECT_EQ(Fixture.Tool().SelectedMod->Tags, FString(TEXT("Weapons,Mod,Outfits,Creatures,Rebalancing")));
}

TEST(DetailsPanelTests, TypingIntoTitleMovesTheCursorAndTheRecordButNotTheDisk)
{
	FPanelFixture Fixture;
	FOpenTool& Open = Fixture.Show();
	Open.Tool->SaveModDatabase();
	const FString Before = Fixture.DatabaseOnDisk();

	TSharedPtr<SWidget> TitleBox = Fixture.Right<SWidget>(TEXT("ModTitle"));
	ASSERT_TRUE(TitleBox);
	ASSERT_EQ(TitleBox->GetTypeName(), FString(TEXT("SEditableTextBox")));
	SWidget& Title = *TitleBox;
	Open.Window->Activate();
	Focus(Title);
	TypeText(Title, TEXT("Isle"));
	TickFrames(3); // the getter is asked every frame while the box is edited
	PressKey(Title, TEXT("Left"));
	TypeText(Title, TEXT("s"));
	TickFrames(3);
	EXPECT_EQ(Fixture.Tool().SelectedMod->Title, FString(TEXT("Islse")));
	EXPECT_EQ(GetShownText(Title), FString(TEXT("Islse")));
	EXPECT_EQ(GetCursorPosition(Title), 4);
	// Undo still works after frames of polling: the box's history was never reset.
	PressKey(Title, TEXT("Ctrl+Z"));
	TickFrames();
	EXPECT_EQ(Fixture.Tool().SelectedMod->Title, FString(TEXT("Isle")));
	EXPECT_EQ(Fixture.DatabaseOnDisk(), Before);

	// A change made elsewhere shows in the box at the next frame.
	Fixture.Tool().SelectedMod->Title = TEXT("Island Pack");
	TickFrames();
	EXPECT_EQ(GetShownText(Title), FString(TEXT("Island Pack")));

	// The folder's name is shown, not edited.
	TArray<TSharedRef<SWidget>> DirCell = Fixture.CellRightOf(TEXT("ModDir"));
	ASSERT_EQ(DirCell.Num(), 1);
	TArray<TSharedRef<SWidget>> ModDirs = FindWidgetsByType(DirCell[0], TEXT("SEditableText"));
	ASSERT_EQ(ModDirs.Num(), 1);
	EXPECT_EQ(GetShownText(*ModDirs[0]), FString(TEXT("Islands")));
	EXPECT_TRUE(IsReadOnly(*ModDirs[0]));
	EXPECT_TRUE(IsShown(*ModDirs[0]));

	// Closing the tool saves what was typed.
	Fixture.Open.reset();
	EXPECT_TRUE(Fixture.DatabaseOnDisk().Contains(TEXT("\"Title\": \"Island Pack\"")));
}

// Tab walks the upload's boxes in the order they stand, also out of the multi-line ones, which keep no tab
// character; Shift+Tab walks back.
TEST(DetailsPanelTests, TabWalksTheBoxesInTheirOrderAndTypesNoTab)
{
	FPanelFixture Fixture;
	FOpenTool& Open = Fixture.Show();
	TSharedPtr<SWidget> Title = Fixture.Right<SWidget>(TEXT("ModTitle"));
	TSharedPtr<SWidget> Description = Fixture.Right<SWidget>(TEXT("ModDescription"));
	TSharedPtr<SWidget> Notes = Fixture.Right<SWidget>(TEXT("ModChangeNotes"));
	ASSERT_TRUE(Title && Description && Notes);
	Open.Window->Activate();
	Focus(*Title);
	PressKeyInFocus(TEXT("Tab"));
	EXPECT_TRUE(HasFocus(*Description));
	PressKeyInFocus(TEXT("Tab"));
	EXPECT_FALSE(HasFocus(*Description));
	EXPECT_FALSE(GetShownText(*Description).Contains(TEXT("\t")));
	Focus(*Notes);
	PressKeyInFocus(TEXT("Tab"));
	EXPECT_FALSE(HasFocus(*Notes));
	EXPECT_FALSE(GetShownText(*Notes).Contains(TEXT("\t")));
	Focus(*Description);
	PressKeyInFocus(TEXT("Shift+Tab"));
	EXPECT_TRUE(HasFocus(*Title));
	EXPECT_FALSE(Fixture.Tool().SelectedMod->Description.Contains(TEXT("\t")));
}

TEST(DetailsPanelTests, TestOutputBoxEmptiesOnRebuildWhileTheTextStaysForTheNextCook)
{
	FPanelFixture Fixture;
	Fixture.Kit.AddMod(TEXT("Second"));
	Fixture.Show();
	TSharedPtr<SEditableTextBase> Box = Fixture.Right<SEditableTextBase>(TEXT("ModTestCookDir"));
	ASSERT_TRUE(Box);
	Box->SetTextFromUser(TEXT("D:/Game/Mods"));
	EXPECT_EQ(Fixture.Tool().TestOutputDir, FString(TEXT("D:/Game/Mods")));

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
	EXPECT_EQ(Call.Title, FString(TEXT("Select Preview Image")));
	EXPECT_EQ(Call.DefaultPath, Fixture.Kit.Root());
	EXPECT_EQ(Call.DefaultFile, FString());
	EXPECT_EQ(Call.FileTypes, FString(TEXT("Png Image (.png)|*.png")));
	EXPECT_EQ(Call.Flags, 0u);
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

TEST(DetailsPanelTests, TheWorkshopLinkLeadsToTheItemAndKeepsItsPlaceAfterAReset)
{
	FPanelFixture Fixture;
	FOpenTool& Open = Fixture.Show();
	Fixture.Tool().SelectedMod->ItemSeamId = TEXT("2900000123");
	TickFrames();
	TSharedPtr<SHyperlink> Link = StaticCastSharedPtr<SHyperlink>(Open.Find(TEXT("ViewItem")));
	ASSERT_TRUE(Link);
	EXPECT_TRUE(IsShown(*Link));
	EXPECT_TRUE(Fixture.Enabled(TEXT("ResetPub")));
	// Where the link stands in the form, which may scroll as buttons take the focus.
	ASSERT_GT(Fixture.Tool().DetailsScrollBox->GetChildren().Num(), 0);
	const TSharedRef<SWidget> Form = Fixture.Tool().DetailsScrollBox->GetChildren()[0];
	auto InForm = [&Form](FSlateTestRect Rect)
	{
		const FSlateTestRect Origin = GetGeometry(*Form);
		Rect.X -= Origin.X;
		Rect.Y -= Origin.Y;
		return Rect;
	};
	const FSlateTestRect Where = InForm(GetGeometry(*Link));
	const FSlateTestRect Room = InForm(GetSlotGeometry(*Link));

	Click(*Link);
	ASSERT_EQ(Fixture.Services->LaunchedUrls.Num(), 1);
	EXPECT_EQ(Fixture.Services->LaunchedUrls[0], FString(TEXT("https://steamcommunity.com/sharedfiles/filedetails/?id=2900000123")));

	Click(Open.Button(TEXT("ResetPub")));
	TickFrames();
	EXPECT_EQ(Fixture.Tool().SelectedMod->ItemSeamId, FString());
	EXPECT_TRUE(Fixture.DatabaseOnDisk().Contains(TEXT("\"ItemSeamId\": \"\"")));
	EXPECT_FALSE(IsShown(*Link));
	EXPECT_FALSE(Fixture.Enabled(TEXT("ResetPub")));
	// Hidden, not collapsed: the row does not close up.
	EXPECT_EQ(InForm(GetGeometry(*Link)), Where);
	EXPECT_EQ(InForm(GetSlotGeometry(*Link)), Room);
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
	EXPECT_EQ(Combo->GetDisplayText(), FString(TEXT("Hidden")));
	// The label is drawn, not only kept.
	TArray<TSharedRef<SWidget>> Labels = FindWidgetsByType(Combo.ToSharedRef(), TEXT("STextBlock"));
	ASSERT_EQ(Labels.Num(), 1);
	EXPECT_TRUE(IsShown(*Labels[0]));
	EXPECT_EQ(GetShownText(*Labels[0]), FString(TEXT("Hidden")));
}

TEST(DetailsPanelTests, LongValuesNeitherMoveTheColumnsNorAddAHorizontalScrollBar)
{
	FPanelFixture Fixture;
	FOpenTool& Open = Fixture.Show();
	STesselTool& Tool = Fixture.Tool();
	Tool.SelectedMod->Title = FString(std::u16string(300, u'T'));
	Tool.SelectedMod->Description = FString(std::u16string(8000, u'd'));
	Tool.SelectedMod->Maps = FString(TEXT("C:/")) + FString(std::u16string(300, u'p'));
	Tool.BuildLayout();
	Open.Window->Resize(1200, 760);
	TickFrames(4);
	TickFrames(1);

	EXPECT_FALSE(IsScrollBarShown(*Tool.DetailsScrollBox, Orient_Horizontal));
	// Labels take three tenths of the grid and the widgets the rest, within a few points of rounding.
	for (const TCHAR* Key : {TEXT("ModTitle"), TEXT("ModDescription"), TEXT("ModMaps"), TEXT("ModTestCookDir")})
	{
		SCOPED_TRACE(FString(Key).ToUtf8());
		TSharedPtr<SGridPanel> Grid = Fixture.GridOf(Key);
		ASSERT_TRUE(Grid);
		const FSlateTestRect Whole = GetGeometry(*Grid);
		const FSlateTestRect Label = GetSlotGeometry(*Open.Find(Key));
		const FSlateTestRect Value = GetSlotGeometry(*Fixture.CellRightOf(Key)[0]);
		EXPECT_NEAR(Label.Width / static_cast<double>(Whole.Width), 0.3, 0.02);
		EXPECT_NEAR(Value.Width / static_cast<double>(Whole.Width), 0.7, 0.02);
		EXPECT_LE(Value.Right(), Whole.Right());
	}
	// The description wraps inside its box.
	TArray<TSharedRef<SWidget>> DescriptionCell = Fixture.CellRightOf(TEXT("ModDescription"));
	ASSERT_EQ(DescriptionCell.Num(), 1);
	EXPECT_TRUE(WrapsText(*DescriptionCell[0]));
	EXPECT_EQ(GetShownText(*DescriptionCell[0]).Len(), 8000);
}

// The demo kit's "Islands" form as a person reads it: every label, button and check box shows its whole text
// in the room its widget gives it (a wrapping label excepted), and a picture is saved to look at. The scale
// comes from the environment (SLATE_TEST_SCALE), and CTest runs this once at 1 and once at 2.
TEST(DetailsPanelTests, TheIslandsFormShowsEveryTextWhole)
{
	FTempDirectory Copy;
	std::filesystem::copy(TestPaths::DemoKitDir, Copy.Get().ToUtf8(), std::filesystem::copy_options::recursive);
	FPaths::SetKitRoot(Copy.Get());
	FOpenTool Open;
	const int32 Islands = Open.Tool->ModList.IndexOfByPredicate([](const TSharedPtr<FModSetup>& Mod) { return Mod->ModDir == TEXT("Islands"); });
	ASSERT_NE(Islands, INDEX_NONE);
	Open.Tool->ModListView->ClickRow(Islands);
	Open.Tool->SelectedMod->Title = TEXT("Island Pack");
	Open.Tool->SelectedMod->Description = TEXT("Two islands joined by a rope bridge, and a crate of props.");
	Open.Tool->SelectedMod->ItemSeamId = TEXT("2900000123");
	Open.Tool->SelectedMod->PreviewImage = Copy.Get() / TEXT("Previews/Islands.png");
	Open.Tool->RefreshPreviewBrush();
	Open.Window->Resize(1200, 760);
	// As the user sees it once the new preview and size have spread through the form.
	TickUntilSettled(*Open.Tool);
	int32 Checked = 0;
	for (const TCHAR* Type : {TEXT("STextBlock"), TEXT("SButton"), TEXT("SCheckBox")})
	{
		for (const TSharedRef<SWidget>& Widget : FindWidgetsByType(Open.Tool.ToSharedRef(), Type))
		{
			if (!IsShown(*Widget) || GetShownText(*Widget).IsEmpty())
			{
				continue;
			}
			// A wrapping label's lines all stand in its height; any other text stands whole on its one line.
			const FSlateTextLook Look = GetTextLook(*Widget);
			EXPECT_LE(Look.TextHeight, GetGeometry(*Widget).Height) << GetShownText(*Widget).ToUtf8() << " has lines cut off";
			if (WrapsText(*Widget))
			{
				continue;
			}
			EXPECT_LE(Look.ShownTextWidth, Look.TextRoomWidth) << GetShownText(*Widget).ToUtf8() << " is cut";
			++Checked;
		}
	}
	// The form's buttons and one-line labels, and the log side's buttons: not a check that looked at nothing.
	EXPECT_GE(Checked, 15);
	const FSlateScreenshot Shot = Open.Window->TakeScreenshot();
	ASSERT_FALSE(Shot.IsEmpty());
	const float Scale = Open.Window->GetScale();
	EXPECT_EQ(Shot.Width, static_cast<int>(1200 * Scale));
	const FString Path = FString(TestPaths::BuildDir) + FString::Printf(TEXT("/tessel-islands-form@%gx.png"), Scale);
	EXPECT_TRUE(Shot.SaveToPng(Path));

	// What the picture must show: the preview drawn in its 128-pixel square (a painted picture has many colours,
	// an empty square one or two), and the banner's logo beside the kit's name.
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
	ASSERT_TRUE(Open.Find(TEXT("Title")));
	EXPECT_GT(CountColours(TakeScreenshot(*Open.Find(TEXT("Title")))), 4) << "the title box shows no lettering";
}
