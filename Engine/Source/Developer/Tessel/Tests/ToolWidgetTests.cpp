#include <QImage>
#include <QLabel>
#include <QAbstractItemView>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

#include "SlateTestMain.h"
#include "ToolWindow.h"

#include "HAL/PlatformFile.h"
#include "STesselUI.h"
#include "TestKit.h"
#include "Widgets/Text/STextBlock.h"
#include "cook/CookJob.h"

#include <filesystem>
#include <memory>

TESSEL_WIDGET_TEST_MAIN()

TEST(ToolWidgetTests, FirstOpenWithoutModsShowsTheNoModsViewWithBothLogButtonsDisabled)
{
	FTestKit Kit;
	FOpenTool Open;
	EXPECT_EQ(Open.Tool->ModList.Num(), 0);
	ASSERT_TRUE(Open.Find(TEXT("NoMods")));
	EXPECT_FALSE(Open.Find(TEXT("Title")));
	EXPECT_EQ(Open.RowsOf(Open.Tool->ModListView->GetQWidget()), 0);
	ASSERT_NE(Open.Button(TEXT("ClearLog")), nullptr);
	EXPECT_FALSE(Open.Button(TEXT("ClearLog"))->isEnabled());
	EXPECT_FALSE(Open.Button(TEXT("CancelJob"))->isEnabled());
	EXPECT_TRUE(Open.Button(TEXT("RefreshMods"))->isEnabled());
	EXPECT_TRUE(Open.Button(TEXT("SaveMods"))->isEnabled());
	// The lists carry their header labels by key.
	EXPECT_NE(Open.Window->findChild<QLabel*>("Mods"), nullptr);
	EXPECT_EQ(Open.Window->findChild<QLabel*>("Log")->text(), QString("Status"));
	EXPECT_EQ(Open.Tool->VisibilityOptions.Num(), 3);
}

TEST(ToolWidgetTests, ClickingARowSelectsItAndRebuildsTheWholeTree)
{
	FTestKit Kit;
	Kit.AddMod(TEXT("Alpha"));
	Kit.AddMod(TEXT("Beta"));
	FOpenTool Open;
	STesselTool& Tool = *Open.Tool;
	ASSERT_EQ(Tool.ModList.Num(), 2);
	Tool.ModList[1]->Title = TEXT("A title that is not the folder");
	for (int32 Line = 0; Line < 3; ++Line)
	{
		Tool.LogMessages.Add(MakeShared<FString>(FString::Printf(TEXT("line %d"), Line)));
	}
	Tool.LogListView->RequestListRefresh();
	TickFrames();

	const TSharedPtr<SWidget> OldModList = Tool.ModListView;
	const TSharedPtr<SWidget> OldLog = Tool.LogListView;
	const TSharedPtr<SWidget> OldDetails = Tool.DetailsScrollBox;
	const TSharedPtr<SWidget> OldThrobber = Tool.StatusThrobber;
	// The list shows folder names, not titles.
	EXPECT_EQ(Tool.ModListView->GetRowText(1), Tool.ModList[1]->ModDir);

	QAbstractItemView* View = Tool.ModListView->GetQWidget()->findChild<QAbstractItemView*>();
	QTest::mouseClick(View->viewport(), Qt::LeftButton, {}, View->visualRect(View->model()->index(1, 0)).center());
	TickFrames();

	EXPECT_EQ(Tool.SelectedMod, Tool.ModList[1]);
	EXPECT_NE(Tool.ModListView, OldModList);
	EXPECT_NE(Tool.LogListView, OldLog);
	EXPECT_NE(Tool.DetailsScrollBox, OldDetails);
	EXPECT_NE(Tool.StatusThrobber, OldThrobber);
	EXPECT_EQ(Tool.ModListView->GetNumItemsSelected(), 0);
	EXPECT_EQ(Open.RowsOf(Tool.LogListView->GetQWidget()), 3);
	EXPECT_TRUE(Tool.DetailsScrollBox->GetDisplayText().Contains(Tool.ModList[1]->ModDir));
}

TEST(ToolWidgetTests, AClickThatClearsTheSelectionChangesNothing)
{
	FTestKit Kit;
	Kit.AddMod(TEXT("Only"));
	FOpenTool Open;
	STesselTool& Tool = *Open.Tool;
	const TSharedPtr<FModSetup> Selected = Tool.SelectedMod;
	const TSharedPtr<SWidget> List = Tool.ModListView;
	Tool.OnModSelectionChanged(nullptr, ESelectInfo::OnMouseClick);
	EXPECT_EQ(Tool.SelectedMod, Selected);
	EXPECT_EQ(Tool.ModListView, List);

	// On the log list, which rebuilds nothing, a second click on a row clears it.
	Tool.LogMessages.Add(MakeShared<FString>(TEXT("a line")));
	Tool.LogListView->RequestListRefresh();
	TickFrames();
	Tool.LogListView->ClickRow(0);
	EXPECT_EQ(Tool.LogListView->GetNumItemsSelected(), 1);
	Tool.LogListView->ClickRow(0);
	EXPECT_EQ(Tool.LogListView->GetNumItemsSelected(), 0);
}

TEST(ToolWidgetTests, RefreshWithAndWithoutMods)
{
	FTestKit Kit;
	Kit.AddMod(TEXT("First"));
	Kit.AddMod(TEXT("Second"));
	FOpenTool Open;
	STesselTool& Tool = *Open.Tool;
	Tool.OnModSelectionChanged(Tool.ModList[1], ESelectInfo::OnMouseClick);
	TickFrames();
	const TSharedPtr<SWidget> ListBefore = Tool.ModListView;

	Open.Button(TEXT("RefreshMods"))->click();
	TickFrames();
	EXPECT_EQ(Tool.SelectedMod, Tool.ModList[0]);
	EXPECT_NE(Tool.ModListView, ListBefore); // the selection event rebuilt everything
	EXPECT_TRUE(Tool.DetailsScrollBox->GetDisplayText().Contains(Tool.ModList[0]->ModDir));

	FPlatformFileManager::Get().GetPlatformFile().DeleteDirectoryRecursively(*Kit.ModsDir());
	Open.Button(TEXT("RefreshMods"))->click();
	TickFrames();
	EXPECT_FALSE(Tool.SelectedMod);
	EXPECT_TRUE(Open.Find(TEXT("NoMods")));
	EXPECT_EQ(Open.RowsOf(Tool.ModListView->GetQWidget()), 0);
}

TEST(ToolWidgetTests, ClearLogsIsEnabledByTheFirstLineAndEmptiesTheLog)
{
	FTestKit Kit;
	FOpenTool Open;
	STesselTool& Tool = *Open.Tool;
	EXPECT_FALSE(Tool.CanClearLogs());
	Tool.LogMessages.Add(MakeShared<FString>(TEXT("first line")));
	Tool.LogListView->RequestListRefresh();
	TickFrames();
	EXPECT_TRUE(Open.Button(TEXT("ClearLog"))->isEnabled());
	EXPECT_EQ(Open.RowsOf(Tool.LogListView->GetQWidget()), 1);
	Open.Button(TEXT("ClearLog"))->click();
	TickFrames();
	EXPECT_EQ(Tool.LogMessages.Num(), 0);
	EXPECT_EQ(Open.RowsOf(Tool.LogListView->GetQWidget()), 0);
	EXPECT_FALSE(Open.Button(TEXT("ClearLog"))->isEnabled());
}

TEST(ToolWidgetTests, CancelAndTheThrobberFollowTheJobQueue)
{
	FTestKit Kit;
	FOpenTool Open;
	STesselTool& Tool = *Open.Tool;
	QWidget* Throbber = Tool.StatusThrobber->GetQWidget();
	EXPECT_FALSE(Throbber->isVisible());
	EXPECT_TRUE(Throbber->sizePolicy().retainSizeWhenHidden());
	const QPoint Place = Throbber->mapTo(Open.Window.get(), QPoint(0, 0));
	{
		FJobGuard Job;
		TickFrames();
		EXPECT_TRUE(Open.Button(TEXT("CancelJob"))->isEnabled());
		EXPECT_TRUE(Throbber->isVisible());
		EXPECT_EQ(Throbber->mapTo(Open.Window.get(), QPoint(0, 0)), Place);
		const double Phase = Tool.StatusThrobber->GetPhase();
		TickFrames(5);
		EXPECT_NE(Tool.StatusThrobber->GetPhase(), Phase);
	}
	TickFrames();
	EXPECT_FALSE(Open.Button(TEXT("CancelJob"))->isEnabled());
	EXPECT_FALSE(Throbber->isVisible());
	EXPECT_EQ(Throbber->mapTo(Open.Window.get(), QPoint(0, 0)), Place);
	EXPECT_EQ(Tool.StatusThrobber->GetRadius(), 10.0f);
}

TEST(ToolWidgetTests, ClosingSavesTheRecordsAndDeletesSteamAppId)
{
	FTestKit Kit;
	const FString AppId = FPaths::ConvertRelativePathToFull(TEXT("steam_appid.txt"));
	{
		FOpenTool Open;
		Kit.WriteFile(TEXT("Engine/Binaries/Win64/steam_appid.txt"), "480");
		ASSERT_TRUE(FPaths::FileExists(AppId));
		Open.Close();
		EXPECT_FALSE(FPaths::FileExists(AppId));
		EXPECT_FALSE(FPaths::FileExists(STesselTool::GetModDatabasePath())); // no records: nothing written
	}
	Kit.AddMod(TEXT("Edited"));
	{
		FOpenTool Open;
		Open.Tool->SelectedMod->Title = TEXT("typed but never saved");
		Open.Close(); // no steam_appid.txt this time: deleting nothing is fine
	}
	FOpenTool Reopened;
	ASSERT_TRUE(Reopened.Tool->SelectedMod);
	EXPECT_EQ(Reopened.Tool->SelectedMod->Title, FString(TEXT("typed but never saved")));
}

TEST(ToolWidgetTests, ScreenshotOfTheToolOverTheDemoKit)
{
	FTempDirectory Copy;
	std::filesystem::copy(TESSEL_DEMO_KIT_DIR, Copy.Get().ToUtf8(), std::filesystem::copy_options::recursive);
	FPaths::SetKitRoot(Copy.Get());
	FOpenTool Open;
	ASSERT_EQ(Open.Tool->ModList.Num(), 3);
	Open.Tool->LogMessages.Add(MakeShared<FString>(TEXT("**************************Cooking Islands**************************")));
	Open.Tool->LogListView->RequestListRefresh();
	Open.Window->resize(1100, 720);
	TickFrames(3);
	const QImage Shot = Open.Window->grab().toImage();
	ASSERT_FALSE(Shot.isNull());
	EXPECT_EQ(Shot.width(), 1100);
	const QString Path = QString::fromUtf8(TESSEL_SCREENSHOT_DIR) + "/tessel-tool.png";
	EXPECT_TRUE(Shot.save(Path));
}
