#include "SlateTestMain.h"
#include "ToolWindow.h"

#include "HAL/PlatformFile.h"
#include "STesselUI.h"
#include "TestKit.h"
#include "TestPrograms.h"
#include "Widgets/Text/STextBlock.h"
#include "cook/CookJob.h"

#include "Framework/Docking/TabManager.h"
#include "Testing/EditorServicesDouble.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <memory>

TESSEL_WIDGET_TEST_MAIN()

using namespace SlateTest;

TEST(ToolWidgetTests, FirstOpenWithoutModsShowsTheNoModsViewWithBothLogButtonsDisabled)
{
	FTestKit Kit;
	FOpenTool Open;
	EXPECT_EQ(Open.Tool->ModList.Num(), 0);
	ASSERT_TRUE(Open.Find(TEXT("NoMods")));
	EXPECT_EQ(GetShownText(*Open.Find(TEXT("NoMods"))),
			  FString(TEXT("No Mods Available to Upload.\n Create a new map within a new subfolder of the 'Mods' folder, and then "
						   "click refresh to Cook & Upload to Steam.")));
	EXPECT_FALSE(Open.Find(TEXT("Title")));
	EXPECT_EQ(Open.RowsOf(Open.Tool->ModListView), 0);
	ASSERT_TRUE(Open.Find(TEXT("ClearLog")));
	EXPECT_FALSE(Open.Enabled(TEXT("ClearLog")));
	EXPECT_FALSE(Open.Enabled(TEXT("CancelJob")));
	EXPECT_TRUE(Open.Enabled(TEXT("RefreshMods")));
	EXPECT_TRUE(Open.Enabled(TEXT("SaveMods")));
	// The lists carry their header labels by key, drawn.
	ASSERT_TRUE(Open.Find(TEXT("Mods")));
	EXPECT_TRUE(IsShown(*Open.Find(TEXT("Mods"))));
	ASSERT_TRUE(Open.Find(TEXT("Log")));
	EXPECT_TRUE(IsShown(*Open.Find(TEXT("Log"))));
	EXPECT_EQ(GetShownText(*Open.Find(TEXT("Log"))), FString(TEXT("Status")));
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

	ClickListRow(*Tool.ModListView, 1);
	TickFrames();

	EXPECT_EQ(Tool.SelectedMod, Tool.ModList[1]);
	EXPECT_NE(Tool.ModListView, OldModList);
	EXPECT_NE(Tool.LogListView, OldLog);
	EXPECT_NE(Tool.DetailsScrollBox, OldDetails);
	EXPECT_NE(Tool.StatusThrobber, OldThrobber);
	EXPECT_EQ(Tool.ModListView->GetNumItemsSelected(), 0);
	EXPECT_EQ(Open.RowsOf(Tool.LogListView), 3);
	EXPECT_TRUE(Tool.DetailsScrollBox->GetDisplayText().Contains(Tool.ModList[1]->ModDir));
}

// The Mods list from the keyboard, after a click on a row as a person starts: Down and Up choose the next and the
// previous mod and the form follows, as after a click; the keys go on reaching the list after each time the tool
// rebuilt its layout for the new mod.
TEST(ToolWidgetTests, ArrowKeysInTheModsListChooseTheModAndTheFormFollows)
{
	FTestKit Kit;
	Kit.AddMod(TEXT("Alpha"));
	Kit.AddMod(TEXT("Beta"));
	Kit.AddMod(TEXT("Gamma"));
	FOpenTool Open;
	STesselTool& Tool = *Open.Tool;
	ASSERT_EQ(Tool.ModList.Num(), 3);
	Open.Window->Activate();
	ClickListRow(*Tool.ModListView, 0);
	TickFrames();
	ASSERT_EQ(Tool.SelectedMod, Tool.ModList[0]);
	for (const auto& [Key, Expected] : {std::pair{TEXT("Down"), 1}, {TEXT("Down"), 2}, {TEXT("Down"), 2}, {TEXT("Up"), 1}})
	{
		PressKeyInFocus(Key);
		TickFrames();
		EXPECT_EQ(Tool.SelectedMod, Tool.ModList[Expected]) << FString(Key).ToUtf8();
		EXPECT_TRUE(Tool.DetailsScrollBox->GetDisplayText().Contains(Tool.ModList[Expected]->ModDir));
	}
}

// A folder name too long for the Mods list shows whole when the mouse rests on it; one that fits shows none.
TEST(ToolWidgetTests, ACutRowShowsWholeInItsTooltip)
{
	FTestKit Kit;
	const FString Long = TEXT("An island chain with a rope bridge between every pair of islands and a lighthouse on each");
	Kit.AddMod(TEXT("Alpha"));
	Kit.AddMod(Long);
	FOpenTool Open;
	TickFrames();
	const int32 LongRow = Open.Tool->ModList.IndexOfByPredicate([&](const TSharedPtr<FModSetup>& Mod) { return Mod->ModDir == Long; });
	ASSERT_NE(LongRow, INDEX_NONE);
	EXPECT_EQ(HoverListRow(*Open.Tool->ModListView, LongRow), Long);
	EXPECT_TRUE(HoverListRow(*Open.Tool->ModListView, 1 - LongRow).IsEmpty());
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

	Click(Open.Button(TEXT("RefreshMods")));
	TickFrames();
	EXPECT_EQ(Tool.SelectedMod, Tool.ModList[0]);
	EXPECT_NE(Tool.ModListView, ListBefore); // the selection event rebuilt everything
	EXPECT_TRUE(Tool.DetailsScrollBox->GetDisplayText().Contains(Tool.ModList[0]->ModDir));

	FPlatformFileManager::Get().GetPlatformFile().DeleteDirectoryRecursively(*Kit.ModsDir());
	Click(Open.Button(TEXT("RefreshMods")));
	TickFrames();
	EXPECT_FALSE(Tool.SelectedMod);
	EXPECT_TRUE(Open.Find(TEXT("NoMods")));
	EXPECT_EQ(Open.RowsOf(Tool.ModListView), 0);
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
	EXPECT_TRUE(Open.Enabled(TEXT("ClearLog")));
	EXPECT_EQ(Open.RowsOf(Tool.LogListView), 1);
	Click(Open.Button(TEXT("ClearLog")));
	TickFrames();
	EXPECT_EQ(Tool.LogMessages.Num(), 0);
	EXPECT_EQ(Open.RowsOf(Tool.LogListView), 0);
	EXPECT_FALSE(Open.Enabled(TEXT("ClearLog")));
}

TEST(ToolWidgetTests, CancelAndTheThrobberFollowTheJobQueue)
{
	FTestKit Kit;
	FOpenTool Open;
	STesselTool& Tool = *Open.Tool;
	const SCircularThrobber& Throbber = *Tool.StatusThrobber;
	EXPECT_FALSE(IsShown(Throbber));
	// Hidden, its slot keeps the room it takes when shown.
	const FSlateTestRect Slot = GetSlotGeometry(Throbber);
	EXPECT_GE(Slot.Width, GetPreferredSize(Throbber).Width);
	EXPECT_GE(Slot.Height, GetPreferredSize(Throbber).Height);
	const FSlateTestRect Place = GetGeometry(Throbber);
	{
		FJobGuard Job;
		TickFrames();
		EXPECT_TRUE(Open.Enabled(TEXT("CancelJob")));
		EXPECT_TRUE(IsShown(Throbber));
		EXPECT_EQ(GetGeometry(Throbber), Place);
		EXPECT_EQ(GetSlotGeometry(Throbber), Slot);
		const double Phase = Tool.StatusThrobber->GetPhase();
		TickFrames(5);
		EXPECT_NE(Tool.StatusThrobber->GetPhase(), Phase);
	}
	TickFrames();
	EXPECT_FALSE(Open.Enabled(TEXT("CancelJob")));
	EXPECT_FALSE(IsShown(Throbber));
	EXPECT_EQ(GetGeometry(Throbber), Place);
	EXPECT_EQ(GetSlotGeometry(Throbber), Slot);
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
		EXPECT_FALSE(FPaths::FileExists(KitPaths::ModDatabase())); // no records: nothing written
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

TEST(TesselModuleTests, StartRegistersTheTabAndShutdownEndsEveryJobAtOnceWithoutADialog)
{
	FTestKit Kit;
	Kit.AddMod(TEXT("Islands"));
	TSharedRef<FEditorServicesDouble> Services = MakeShared<FEditorServicesDouble>();
	IEditorServices::Set(Services);
	FModuleManager::Get().SetModuleDirectory(FString(TestPaths::ModuleDir));
	ASSERT_NE(FModuleManager::Get().LoadModule(TEXT("Tessel")), nullptr);

	// The editor's Window menu lists the tab under its title, and opening it shows the tool.
	const TArray<FTabSpawnerEntry> Spawners = FGlobalTabmanager::Get()->GetNomadTabSpawners();
	const FTabSpawnerEntry* Entry = Spawners.FindByPredicate([](const FTabSpawnerEntry& Each) { return Each.GetTabId() == TEXT("TesselTools"); });
	ASSERT_NE(Entry, nullptr);
	EXPECT_EQ(Entry->GetDisplayName().ToString(), FString(TEXT("Cook/Upload Mod to Steam...")));
	TSharedPtr<SDockTab> Tab = FGlobalTabmanager::Get()->InvokeTab(TEXT("TesselTools"));
	ASSERT_TRUE(Tab && Tab->GetContent());
	EXPECT_TRUE(FindWidgetByKey(Tab->GetContent().ToSharedRef(), TEXT("RefreshMods")));
	EXPECT_TRUE(FindWidgetByKey(Tab->GetContent().ToSharedRef(), TEXT("Title")));

	// A running child that ignores the polite signal, and a job queued behind it.
	TSharedRef<FCookJob> Running = MakeShared<FCookJob>(FModSetup(), FString(TestPaths::FakeChild), TEXT("hang-ignore-term"), FString(),
														 FString(), FString(), 0u, false, false);
	TSharedRef<FCookJob> Queued = MakeShared<FCookJob>(FModSetup(), FString(TestPaths::FakeChild), TEXT("hang"), FString(), FString(),
														FString(), 0u, true, false);
	ActiveJobs.Add(Running);
	ActiveJobs.Add(Queued);
	Running->bStarted = true;
	ASSERT_TRUE(Running->Process->Launch());
	pid_t Child = 0;
	TArray<FString> Lines;
	const auto Deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
	while (Child == 0 && std::chrono::steady_clock::now() < Deadline)
	{
		std::this_thread::sleep_for(std::chrono::milliseconds(5));
		Running->TakeCompletedLines(Lines);
		for (const FString& Line : Lines)
		{
			if (Line.StartsWith(TEXT("ignoring ")))
			{
				Child = static_cast<pid_t>(std::atoi(Line.Mid(9).ToUtf8().c_str()));
			}
		}
	}
	ASSERT_GT(Child, 0);

	const auto Before = std::chrono::steady_clock::now();
	FModuleManager::Get().UnloadModule(TEXT("Tessel"));
	const double Seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - Before).count();
	EXPECT_EQ(ActiveJobs.Num(), 0);
	EXPECT_FALSE(FGlobalTabmanager::Get()->HasTabSpawner(TEXT("TesselTools")));
	// The child ignores the polite signal; a shutdown that offered it first would wait or leave the child for
	// seconds.
	EXPECT_LT(Seconds, 1.0);
	while (!TestPrograms::IsGone(Child) && std::chrono::steady_clock::now() < Before + std::chrono::seconds(1))
	{
		std::this_thread::sleep_for(std::chrono::milliseconds(5));
	}
	EXPECT_TRUE(TestPrograms::IsGone(Child));
	EXPECT_FALSE(Queued->bStarted);
	EXPECT_FALSE(Queued->Process->IsRunning());

	// The open tab keeps ticking; with the queue gone by shutdown there is nothing to report.
	TickFrames(5);
	EXPECT_EQ(Services->Dialogs.Num(), 0);
	Tab.Reset();
	TickFrames();
	IEditorServices::Set(nullptr);
}

TEST(ToolWidgetTests, ScreenshotOfTheToolOverTheDemoKit)
{
	FTempDirectory Copy;
	std::filesystem::copy(TestPaths::DemoKitDir, Copy.Get().ToUtf8(), std::filesystem::copy_options::recursive);
	FPaths::SetKitRoot(Copy.Get());
	FOpenTool Open;
	ASSERT_EQ(Open.Tool->ModList.Num(), 3);
	Open.Window->Resize(1100, 720);
	TickFrames(3);
	const FSlateScreenshot EmptyLog = TakeScreenshot(*Open.Tool->LogListView);
	Open.Tool->LogMessages.Add(MakeShared<FString>(TEXT("**************************Cooking Islands**************************")));
	Open.Tool->LogListView->RequestListRefresh();
	TickFrames(3);
	const FSlateScreenshot Shot = Open.Window->TakeScreenshot();
	ASSERT_FALSE(Shot.IsEmpty());
	EXPECT_EQ(Shot.Width, static_cast<int>(1100 * Open.Window->GetScale()));
	EXPECT_GT(CountColours(Shot), 8);
	EXPECT_TRUE(Shot.SaveToPng(FString(TestPaths::BuildDir) + FString::Printf(TEXT("/tessel-tool@%gx.png"), Open.Window->GetScale())));
	// The log's line is drawn, and the three mods' names: lettering brings shades that a bare list lacks.
	EXPECT_NE(TakeScreenshot(*Open.Tool->LogListView).Pixels, EmptyLog.Pixels) << "the log line is not drawn";
	EXPECT_GT(CountColours(TakeScreenshot(*Open.Tool->ModListView)), 4) << "the mods list shows no names";
}
