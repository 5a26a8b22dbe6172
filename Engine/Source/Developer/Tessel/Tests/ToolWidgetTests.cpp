#include "SlateTestMain.h"
#include "ToolWindow.h"

#include "Framework/Docking/TabManager.h"
#include "HAL/PlatformFile.h"
#include "STesselUI.h"
#include "TestKit.h"
#include "TestPrograms.h"
#include "Testing/EditorServicesDouble.h"
#include "cook/CookJob.h"

#include <chrono>
#include <cstdlib>
#include <memory>

TESSEL_WIDGET_TEST_MAIN()

using namespace SlateTest;

// With no mods the form is a line that says how to make one, until a refresh finds some. The Mods list shows
// folder names, not titles, whole in a tooltip when cut. A click on a row brings the mod's form, with the log
// kept and no row left marked; a click that clears the row changes nothing; Down and Up choose the next and the
// previous mod, and keep reaching the list after each rebuild; a refresh chooses the first mod again, and shows
// the line once the folder is gone.
TEST(ToolWidgetTests, TheModsListFromNoModsThroughMouseKeysAndRefresh)
{
	FTestKit Kit;
	FOpenTool Open;
	STesselTool& Tool = *Open.Tool;
	ASSERT_TRUE(Open.Find(TEXT("NoMods")));
	EXPECT_EQ(GetShownText(*Open.Find(TEXT("NoMods"))),
			  FString(TEXT("No Mods Available to Upload.\n Create a new map within a new subfolder of the 'Mods' folder, and then "
						   "click refresh to Cook & Upload to Steam.")));
	EXPECT_FALSE(Open.Find(TEXT("Title")));
	EXPECT_EQ(GetListRowCount(*Tool.ModListView), 0);
	EXPECT_EQ(Open.DisabledButtons(), FString(TEXT("ClearLog CancelJob")));
	// The lists carry their header labels by key, drawn.
	ASSERT_TRUE(Open.Find(TEXT("Mods")) && Open.Find(TEXT("Log")));
	EXPECT_TRUE(IsShown(*Open.Find(TEXT("Mods"))));
	EXPECT_EQ(GetShownText(*Open.Find(TEXT("Log"))), FString(TEXT("Status")));

	const FString Long = TEXT("An island chain with a rope bridge between every pair of islands and a lighthouse on each");
	for (const FString& Name : {FString(TEXT("Alpha")), FString(TEXT("Beta")), Long})
	{
		Kit.AddMod(Name);
	}
	Click(Open.Button(TEXT("RefreshMods")));
	TickFrames();
	ASSERT_EQ(Tool.ModList.Num(), 3);
	EXPECT_EQ(Tool.SelectedMod, Tool.ModList[0]);
	Tool.ModList[1]->Title = TEXT("A title that is not the folder");
	Tool.LogMessages.Add(MakeShared<FString>(TEXT("a line")));
	Tool.LogListView->RequestListRefresh();
	TickFrames();
	EXPECT_EQ(Tool.ModListView->GetRowText(1), Tool.ModList[1]->ModDir);
	const int32 LongRow = Tool.ModList.IndexOfByPredicate([&](const TSharedPtr<FModSetup>& Mod) { return Mod->ModDir == Long; });
	EXPECT_EQ(HoverListRow(*Tool.ModListView, LongRow), Long);
	EXPECT_TRUE(HoverListRow(*Tool.ModListView, LongRow == 0 ? 1 : 0).IsEmpty());

	Open.Window->Activate();
	ClickListRow(*Tool.ModListView, 1);
	TickFrames();
	ASSERT_EQ(Tool.SelectedMod, Tool.ModList[1]);
	EXPECT_TRUE(Tool.DetailsScrollBox->GetDisplayText().Contains(Tool.ModList[1]->ModDir));
	EXPECT_EQ(Tool.ModListView->GetNumItemsSelected(), 0);
	EXPECT_EQ(GetListRowCount(*Tool.LogListView), 1);
	Tool.OnModSelectionChanged(nullptr, ESelectInfo::OnMouseClick);
	EXPECT_EQ(Tool.SelectedMod, Tool.ModList[1]);
	for (const auto& [Key, Expected] : {std::pair{TEXT("Down"), 2}, {TEXT("Down"), 2}, {TEXT("Up"), 1}})
	{
		PressKeyInFocus(Key);
		TickFrames();
		EXPECT_EQ(Tool.SelectedMod, Tool.ModList[Expected]) << FString(Key).ToUtf8();
		EXPECT_TRUE(Tool.DetailsScrollBox->GetDisplayText().Contains(Tool.ModList[Expected]->ModDir));
	}

	Click(Open.Button(TEXT("RefreshMods")));
	TickFrames();
	EXPECT_EQ(Tool.SelectedMod, Tool.ModList[0]);
	FPlatformFileManager::Get().GetPlatformFile().DeleteDirectoryRecursively(*Kit.ModsDir());
	Click(Open.Button(TEXT("RefreshMods")));
	TickFrames();
	EXPECT_FALSE(Tool.SelectedMod);
	EXPECT_TRUE(Open.Find(TEXT("NoMods")));
	EXPECT_EQ(GetListRowCount(*Tool.ModListView), 0);
}

// "Clear" opens with the first line and empties the log; "Cancel" and the throbber follow the job queue, the
// throbber keeping its place while it is hidden.
TEST(ToolWidgetTests, TheLogSideFollowsItsLinesAndTheJobQueue)
{
	FTestKit Kit;
	FOpenTool Open;
	STesselTool& Tool = *Open.Tool;
	Tool.LogMessages.Add(MakeShared<FString>(TEXT("first line")));
	Tool.LogListView->RequestListRefresh();
	TickFrames();
	EXPECT_EQ(Open.DisabledButtons(), FString(TEXT("CancelJob")));
	Click(Open.Button(TEXT("ClearLog")));
	TickFrames();
	EXPECT_EQ(Tool.LogMessages.Num(), 0);
	EXPECT_EQ(GetListRowCount(*Tool.LogListView), 0);
	EXPECT_EQ(Open.DisabledButtons(), FString(TEXT("ClearLog CancelJob")));

	const SCircularThrobber& Throbber = *Tool.StatusThrobber;
	EXPECT_FALSE(IsShown(Throbber));
	const FSlateTestRect Place = GetGeometry(Throbber);
	{
		FJobGuard Job;
		TickFrames();
		EXPECT_FALSE(Open.DisabledButtons().Contains(TEXT("CancelJob")));
		EXPECT_TRUE(IsShown(Throbber));
		EXPECT_EQ(GetGeometry(Throbber), Place);
	}
	TickFrames();
	EXPECT_TRUE(Open.DisabledButtons().Contains(TEXT("CancelJob")));
	EXPECT_FALSE(IsShown(Throbber));
	EXPECT_EQ(GetGeometry(Throbber), Place);
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
	TArray<FString> Lines;
	const FString* Ignoring = nullptr;
	ASSERT_TRUE(TestPrograms::WaitUntil([&] { return Ignoring != nullptr; },
										[&]
										{
											Running->TakeCompletedLines(Lines);
											Ignoring = Lines.FindByPredicate([](const FString& Line)
																			 { return Line.StartsWith(TEXT("ignoring ")); });
										},
										30));
	const pid_t Child = static_cast<pid_t>(std::atoi(Ignoring->Mid(9).ToUtf8().c_str()));

	// A shutdown that offered the polite signal first would wait for the child, or leave it, for seconds.
	const auto Before = std::chrono::steady_clock::now();
	FModuleManager::Get().UnloadModule(TEXT("Tessel"));
	const double Unloading = std::chrono::duration<double>(std::chrono::steady_clock::now() - Before).count();
	EXPECT_LT(Unloading, 1.0);
	EXPECT_EQ(ActiveJobs.Num(), 0);
	EXPECT_FALSE(FGlobalTabmanager::Get()->HasTabSpawner(TEXT("TesselTools")));
	EXPECT_TRUE(TestPrograms::WaitUntil([&] { return TestPrograms::IsGone(Child); }, [] {}, 1.0 - Unloading));
	EXPECT_FALSE(Queued->bStarted);
	EXPECT_FALSE(Queued->Process->IsRunning());

	// The open tab keeps ticking; with the queue gone by shutdown there is nothing to report.
	TickFrames(5);
	EXPECT_EQ(Services->Dialogs.Num(), 0);
	Tab.Reset();
	TickFrames();
	IEditorServices::Set(nullptr);
}
