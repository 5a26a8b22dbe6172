// The details panel as a mod author meets it: every row of the form by its key, the guards while a real cook
// runs, tags that reach the disk at once, typing with real key events, and the columns that hold their shares.

#include <QCheckBox>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>

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
#include <thread>
#include <unistd.h>

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
			QPushButton* Button = Open->Button(Key);
			EXPECT_NE(Button, nullptr) << FString(Key).ToUtf8();
			return Button && Button->isEnabled();
		}
		FString DatabaseOnDisk() const { return FString(FromUtf16Bytes(FTempDirectory::ReadBytes(STesselTool::GetModDatabasePath()))); }
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

	QCheckBox* TagBox(FPanelFixture& Fixture, int32 Index)
	{
		TArray<TSharedRef<SWidget>> Cell = Fixture.CellRightOf(TEXT("ModTags"), Index);
		return Cell.Num() == 2 ? qobject_cast<QCheckBox*>(SlateQt::GetQWidget(*Cell[1])) : nullptr;
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
		QPushButton* Push = Open.Button(Button.Key);
		ASSERT_NE(Push, nullptr);
		EXPECT_EQ(Push->text(), QString::fromStdU16String(FString(Button.Label).GetStd()));
		EXPECT_EQ(Push->width(), Button.Width);
	}
	EXPECT_EQ(Open.Button(TEXT("SelectPreviewImage"))->text(), QString("Browse..."));
	// The hyperlink has its key; with no published id it is hidden but keeps its place.
	TSharedPtr<SWidget> Link = Open.Find(TEXT("ViewItem"));
	ASSERT_TRUE(Link);
	EXPECT_EQ(Link->GetDisplayText(), FString(TEXT("View Item on Steam Workshop")));
	EXPECT_TRUE(SlateQt::GetQWidget(*Link)->isHidden());
	EXPECT_TRUE(SlateQt::GetQWidget(*Link)->sizePolicy().retainSizeWhenHidden());
	// The preview stands in a square of 128 points.
	TSharedPtr<SWidget> Image = FindWidgetsByType(Open.Tool.ToSharedRef(), TEXT("SImage")).Last();
	EXPECT_EQ(SlateQt::GetQWidget(*Image)->parentWidget()->parentWidget()->size(), QSize(128, 128));
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

	// "Upload" waits for all three fields and for the packaged description file, asked afresh at each frame.
	Tool.SelectedMod->Title = TEXT("Island Pack");
	Tool.SelectedMod->Description = TEXT("Two islands");
	TickFrames();
	EXPECT_FALSE(Fixture.Enabled(TEXT("UploadMod")));
	Tool.SelectedMod->PreviewImage = Fixture.Kit.WriteFile(TEXT("preview.png"), "not even a picture");
	TickFrames();
	EXPECT_FALSE(Fixture.Enabled(TEXT("UploadMod")));
	const FString ModInfo = Fixture.Kit.WriteFile(TEXT("ModTools/Output/Islands/mod.info"), "x");
	TickFrames();
	EXPECT_TRUE(Fixture.Enabled(TEXT("UploadMod")));
	unlink(ModInfo.ToUtf8().c_str());
	TickFrames();
	EXPECT_FALSE(Fixture.Enabled(TEXT("UploadMod")));

	// A real cook, pressed with the mouse: the log fills, the throbber turns, and only the three guarded
	// buttons wait. The cook goes on until the test lets it end.
	Fixture.Kit.WriteFile(TEXT("Orrery/Content/Mods/Islands/StandIn.mode"), "wait-for-go");
	QTest::mouseClick(Open.Button(TEXT("CookMapMod")), Qt::LeftButton);
	ASSERT_EQ(ActiveJobs.Num(), 1);
	TickFrames();
	EXPECT_TRUE(SlateQt::GetQWidget(*Tool.StatusThrobber)->isVisible());
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
	EXPECT_FALSE(SlateQt::GetQWidget(*Tool.StatusThrobber)->isVisible());
	EXPECT_TRUE(Tool.LogMessages.ContainsByPredicate([](const TSharedPtr<FString>& Line) { return Line->StartsWith(TEXT("Success")); }));
	EXPECT_GT(Tool.LogListView->GetNumRowsShown(), 5);
	ASSERT_EQ(Fixture.Services->Dialogs.Num(), 1);
	EXPECT_EQ(Fixture.Services->Dialogs[0].Content->GetDisplayText(), FString(TEXT("Job Successful!!")));
	// The cook packaged the mod, so "Upload" opens.
	EXPECT_TRUE(Fixture.Enabled(TEXT("UploadMod")));
	EXPECT_TRUE(Fixture.Enabled(TEXT("CookMapMod")));

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

	ASSERT_NE(TagBox(Fixture, 2), nullptr);
	EXPECT_TRUE(TagBox(Fixture, 2)->isChecked());  // "Map", stored as "map"
	EXPECT_TRUE(TagBox(Fixture, 4)->isChecked());  // "Weapons"
	EXPECT_FALSE(TagBox(Fixture, 0)->isChecked()); // "Mod"

	QTest::mouseClick(TagBox(Fixture, 0), Qt::LeftButton);
	EXPECT_TRUE(TagBox(Fixture, 0)->isChecked());
	EXPECT_EQ(Fixture.Tool().SelectedMod->Tags, FString(TEXT("map,Weapons,Mod")));
	EXPECT_TRUE(Fixture.DatabaseOnDisk().Contains(TEXT("\"Tags\": \"map,Weapons,Mod\"")));
	// The save took every other edit along.
	EXPECT_TRUE(Fixture.DatabaseOnDisk().Contains(TEXT("\"Title\": \"unsaved title\"")));

	// Unchecking the box of a tag stored in other letter case removes it.
	QTest::mouseClick(TagBox(Fixture, 2), Qt::LeftButton);
	EXPECT_FALSE(TagBox(Fixture, 2)->isChecked());
	EXPECT_TRUE(Fixture.DatabaseOnDisk().Contains(TEXT("\"Tags\": \"Weapons,Mod\"")));
	// Any set of tags may be on at once.
	for (int32 Index : {5, 6, 9})
	{
		QTest::mouseClick(TagBox(Fixture, Index), Qt::LeftButton);
	}
	EXPECT_EQ(Fixture.Tool().SelectedMod->Tags, FString(TEXT("Weapons,Mod,Outfits,Creatures,Rebalancing")));
}

TEST(DetailsPanelTests, TypingIntoTitleMovesTheCursorAndTheRecordButNotTheDisk)
{
	FPanelFixture Fixture;
	FOpenTool& Open = Fixture.Show();
	Open.Tool->SaveModDatabase();
	const FString Before = Fixture.DatabaseOnDisk();

	QLineEdit* Title = qobject_cast<QLineEdit*>(SlateQt::GetQWidget(*Fixture.Right<SWidget>(TEXT("ModTitle"))));
	ASSERT_NE(Title, nullptr);
	Open.Window->activateWindow();
	Title->setFocus();
	QTest::keyClicks(Title, "Isle");
	TickFrames(3); // the getter is asked every frame while the box is edited
	QTest::keyClick(Title, Qt::Key_Left);
	QTest::keyClicks(Title, "s");
	TickFrames(3);
	EXPECT_EQ(Fixture.Tool().SelectedMod->Title, FString(TEXT("Islse")));
	EXPECT_EQ(Title->text(), QString("Islse"));
	EXPECT_EQ(Title->cursorPosition(), 4);
	// Undo still works after frames of polling: the box's history was never reset.
	QTest::keyClick(Title, Qt::Key_Z, Qt::ControlModifier);
	TickFrames();
	EXPECT_EQ(Fixture.Tool().SelectedMod->Title, FString(TEXT("Isle")));
	EXPECT_EQ(Fixture.DatabaseOnDisk(), Before);

	// A change made elsewhere shows in the box at the next frame.
	Fixture.Tool().SelectedMod->Title = TEXT("Island Pack");
	TickFrames();
	EXPECT_EQ(Title->text(), QString("Island Pack"));

	// The folder's name is shown, not edited.
	QLineEdit* ModDir = Fixture.Open->Window->findChild<QLineEdit*>();
	ASSERT_NE(ModDir, nullptr);
	EXPECT_EQ(ModDir->text(), QString("Islands"));
	EXPECT_TRUE(ModDir->isReadOnly());

	// Closing the tool saves what was typed.
	Fixture.Open.reset();
	EXPECT_TRUE(Fixture.DatabaseOnDisk().Contains(TEXT("\"Title\": \"Island Pack\"")));
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
	QImage Picture(32, 32, QImage::Format_RGB32);
	Picture.fill(Qt::red);
	// A relative answer of the dialog is taken from the engine's base folder, where its executables stand.
	const FString PicturePath = Fixture.Kit.Root() / TEXT("Engine/Binaries/Win64/shot.png");
	ASSERT_TRUE(Picture.save(QString::fromStdU16String(PicturePath.GetStd())));
	Fixture.Services->bFileDialogResult = true;
	Fixture.Services->FileDialogAnswer = {TEXT("shot.png"), TEXT("ignored.png")};
	QTest::mouseClick(Open.Button(TEXT("SelectPreviewImage")), Qt::LeftButton);

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
	QTest::mouseClick(Open.Button(TEXT("SelectPreviewImage")), Qt::LeftButton);
	EXPECT_EQ(Fixture.Tool().SelectedMod->PreviewImage, PicturePath);
	Fixture.Services->bFileDialogResult = true;
	Fixture.Services->FileDialogAnswer = {Fixture.Kit.WriteFile(TEXT("broken.png"), "no picture here")};
	QTest::mouseClick(Open.Button(TEXT("SelectPreviewImage")), Qt::LeftButton);
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
	EXPECT_TRUE(SlateQt::GetQWidget(*Link)->isVisible());
	EXPECT_TRUE(Fixture.Enabled(TEXT("ResetPub")));
	const QRect Where = SlateQt::GetQWidget(*Link)->geometry();

	QTest::mouseClick(qobject_cast<QPushButton*>(SlateQt::GetQWidget(*Link)), Qt::LeftButton);
	ASSERT_EQ(Fixture.Services->LaunchedUrls.Num(), 1);
	EXPECT_EQ(Fixture.Services->LaunchedUrls[0], FString(TEXT("https://steamcommunity.com/sharedfiles/filedetails/?id=2900000123")));

	QTest::mouseClick(Open.Button(TEXT("ResetPub")), Qt::LeftButton);
	TickFrames();
	EXPECT_EQ(Fixture.Tool().SelectedMod->ItemSeamId, FString());
	EXPECT_TRUE(Fixture.DatabaseOnDisk().Contains(TEXT("\"ItemSeamId\": \"\"")));
	EXPECT_FALSE(SlateQt::GetQWidget(*Link)->isVisible());
	EXPECT_FALSE(Fixture.Enabled(TEXT("ResetPub")));
	// Hidden, not collapsed: the row does not close up.
	EXPECT_EQ(SlateQt::GetQWidget(*Link)->geometry(), Where);
}

TEST(DetailsPanelTests, VisibilityOutsideTheOptionsIsShownAsItStandsUntilAChoice)
{
	FPanelFixture Fixture;
	FOpenTool& Open = Fixture.Show();
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
	EXPECT_TRUE(Open.Window->findChild<QLabel*>()); // the label is drawn, not only kept
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
	Open.Window->resize(1200, 760);
	TickFrames(4);
	QCoreApplication::processEvents();

	QScrollArea* Scroll = qobject_cast<QScrollArea*>(SlateQt::GetQWidget(*Tool.DetailsScrollBox));
	ASSERT_NE(Scroll, nullptr);
	EXPECT_FALSE(Scroll->horizontalScrollBar()->isVisible());
	// Labels take three tenths of the grid and the widgets the rest, within a few points of rounding.
	for (const TCHAR* Key : {TEXT("ModTitle"), TEXT("ModDescription"), TEXT("ModMaps"), TEXT("ModTestCookDir")})
	{
		SCOPED_TRACE(FString(Key).ToUtf8());
		QWidget* Label = SlateQt::GetQWidget(*Open.Find(Key))->parentWidget();
		QWidget* Value = SlateQt::GetQWidget(*Fixture.CellRightOf(Key)[0])->parentWidget();
		const double Whole = Label->parentWidget()->width();
		EXPECT_NEAR(Label->width() / Whole, 0.3, 0.02);
		EXPECT_NEAR(Value->width() / Whole, 0.7, 0.02);
		EXPECT_LE(Value->geometry().right(), Label->parentWidget()->width());
	}
	// The description wraps inside its box.
	QPlainTextEdit* Description = qobject_cast<QPlainTextEdit*>(SlateQt::GetQWidget(*Fixture.CellRightOf(TEXT("ModDescription"))[0]));
	ASSERT_NE(Description, nullptr);
	EXPECT_EQ(Description->lineWrapMode(), QPlainTextEdit::WidgetWidth);
	EXPECT_EQ(Description->toPlainText().size(), 8000);
}

// Pictures of the demo kit's "Islands" form for a person to look at; the scale comes from the environment
// (QT_SCALE_FACTOR), and CTest runs this once at 1 and once at 2.
TEST(DetailsPanelTests, ScreenshotOfTheIslandsForm)
{
	FTempDirectory Copy;
	std::filesystem::copy(TESSEL_DEMO_KIT_DIR, Copy.Get().ToUtf8(), std::filesystem::copy_options::recursive);
	FPaths::SetKitRoot(Copy.Get());
	FOpenTool Open;
	const int32 Islands = Open.Tool->ModList.IndexOfByPredicate([](const TSharedPtr<FModSetup>& Mod) { return Mod->ModDir == TEXT("Islands"); });
	ASSERT_NE(Islands, INDEX_NONE);
	Open.Tool->ModListView->ClickRow(Islands);
	Open.Tool->SelectedMod->Title = TEXT("Island Pack");
	Open.Tool->SelectedMod->Description = TEXT("Two islands joined by a rope bridge, and a crate of props.");
	Open.Tool->SelectedMod->ItemSeamId = TEXT("2900000123");
	Open.Window->resize(1200, 760);
	TickFrames(4);
	const QImage Shot = Open.Window->grab().toImage();
	ASSERT_FALSE(Shot.isNull());
	const qreal Scale = Open.Window->devicePixelRatioF();
	EXPECT_EQ(Shot.width(), static_cast<int>(1200 * Scale));
	const QString Path = QString::fromUtf8(TESSEL_SCREENSHOT_DIR) + QString("/tessel-islands-form@%1x.png").arg(Scale);
	EXPECT_TRUE(Shot.save(Path));
}
