// The host window keeps its layout like an editor: the tool's tab opens on the very first start, later starts
// reopen the tabs that were open when the window last closed (the tool's tab when none was), and the window
// comes back at its size and place with its docks as they were, always within the screen.

#include <QApplication>
#include <QDockWidget>
#include <QSettings>
#include <QTest>

#include "HostWindow.h"
#include "Framework/Docking/TabManager.h"
#include "SlateTestMain.h"
#include "TempDirectory.h"
#include "Testing/SlateTestDriver.h"
#include "Widgets/Text/STextBlock.h"

TESSEL_WIDGET_TEST_MAIN()

namespace
{
	// Two tabs to choose from, and the host's settings in a folder of the test's own.
	struct FHostFixture
	{
		FHostFixture()
		{
			QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QString::fromStdU16String(Settings.Get().GetStd()));
			for (const TCHAR* TabId : {TEXT("TesselTools"), TEXT("OtherTool")})
			{
				const FString Id = TabId;
				FGlobalTabmanager::Get()
					->RegisterNomadTabSpawner(Id, FOnSpawnTab::CreateLambda([Id](const FSpawnTabArgs&)
																			 { return SNew(SDockTab).TabRole(ETabRole::NomadTab)[SNew(STextBlock).Text(FText::FromString(Id))]; }))
					.SetDisplayName(FText::FromString(Id));
			}
		}
		~FHostFixture()
		{
			FGlobalTabmanager::Get()->UnregisterNomadTabSpawner(TEXT("TesselTools"));
			FGlobalTabmanager::Get()->UnregisterNomadTabSpawner(TEXT("OtherTool"));
		}
		FTempDirectory Settings;
	};

	// What the event loop does after a dock closed: the dock, which deletes itself on close, goes.
	void RunPendingDeletes()
	{
		QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
		QApplication::processEvents();
	}

	// Opens a window, lets Setup act on it, and closes it as the user does.
	void RunWindow(const std::function<void(FHostWindow&)>& Setup)
	{
		FHostWindow Window;
		Window.RestoreTabs();
		Window.RestoreGeometry();
		Window.show();
		// On a display with a window manager, the manager places the window first.
		EXPECT_TRUE(QTest::qWaitForWindowExposed(&Window));
		Setup(Window);
		Window.close();
		Window.CloseAllTabs();
		QApplication::processEvents();
	}
}

TEST(HostWindowTests, FirstStartOpensTheToolThenTheLastLayoutComesBack)
{
	FHostFixture Fixture;
	RunWindow(
		[](FHostWindow& Window)
		{
			EXPECT_TRUE(Window.FindTab(TEXT("TesselTools"))); // the very first start
			EXPECT_FALSE(Window.FindTab(TEXT("OtherTool")));
			EXPECT_TRUE(Window.OpenTab(TEXT("OtherTool")));
		});
	RunWindow(
		[](FHostWindow& Window)
		{
			EXPECT_TRUE(Window.FindTab(TEXT("TesselTools")));
			EXPECT_TRUE(Window.FindTab(TEXT("OtherTool")));
			// The user closes the tool's tab with its dock's close button.
			QDockWidget* Dock = Window.findChild<QDockWidget*>(QStringLiteral("TesselTools"));
			ASSERT_NE(Dock, nullptr);
			Dock->close();
			RunPendingDeletes();
			EXPECT_FALSE(Window.FindTab(TEXT("TesselTools")));
		});
	RunWindow(
		[](FHostWindow& Window)
		{
			EXPECT_FALSE(Window.FindTab(TEXT("TesselTools"))); // closed last time, so not reopened
			EXPECT_TRUE(Window.FindTab(TEXT("OtherTool")));
			Window.findChild<QDockWidget*>(QStringLiteral("OtherTool"))->close();
			RunPendingDeletes();
		});
	// A window closed with no tab open comes back with the tool's tab, not as an empty grey window.
	RunWindow(
		[](FHostWindow& Window)
		{
			EXPECT_TRUE(Window.FindTab(TEXT("TesselTools")));
			EXPECT_FALSE(Window.FindTab(TEXT("OtherTool")));
		});
}

// Run at scale 1 and 2: the first window fits the screen; the size, the place and the docks' heights the user
// left come back at the next start.
TEST(HostWindowTests, SizePlaceAndDocksComeBackWithinTheScreen)
{
	FHostFixture Fixture;
	const FSlateTestRect Work = SlateTest::GetScreenWorkArea();
	const QRect Screen(Work.X, Work.Y, Work.Width, Work.Height);
	const QRect Left(Screen.x() + Screen.width() / 10, Screen.y() + Screen.height() / 8, Screen.width() * 3 / 5, Screen.height() * 3 / 4);
	int ToolHeight = 0;
	RunWindow(
		[&](FHostWindow& Window)
		{
			EXPECT_TRUE(Screen.contains(Window.frameGeometry())) << Window.frameGeometry().width() << "x" << Window.frameGeometry().height();
			ASSERT_TRUE(Window.OpenTab(TEXT("OtherTool")));
			Window.setGeometry(Left);
			// A window manager places the window a moment later.
			QTRY_VERIFY_WITH_TIMEOUT(Window.geometry() == Left, 2000);
			QDockWidget* Tool = Window.findChild<QDockWidget*>(QStringLiteral("TesselTools"));
			QDockWidget* Other = Window.findChild<QDockWidget*>(QStringLiteral("OtherTool"));
			ASSERT_TRUE(Tool && Other);
			Window.resizeDocks({Tool, Other}, {Left.height() / 4, Left.height()}, Qt::Vertical);
			QApplication::processEvents();
			ToolHeight = Tool->height();
		});
	ASSERT_GT(ToolHeight, 0);
	RunWindow(
		[&](FHostWindow& Window)
		{
			const QRect Now = Window.geometry();
			const std::string Seen = std::to_string(Now.x()) + "," + std::to_string(Now.y()) + " " + std::to_string(Now.width()) + "x" +
									 std::to_string(Now.height());
			EXPECT_EQ(Now.size(), Left.size()) << Seen;
			// The place comes back to within the frame's width: a platform may put the frame or the content at the
			// saved point (the offscreen one does the one, X with a window manager the other).
			const QMargins Frame(Now.left() - Window.frameGeometry().left(), Now.top() - Window.frameGeometry().top(), 0, 0);
			EXPECT_LE(std::abs(Now.left() - Left.left()), std::max(Frame.left(), 2)) << Seen;
			EXPECT_LE(std::abs(Now.top() - Left.top()), std::max(Frame.top(), 2)) << Seen;
			QDockWidget* Tool = Window.findChild<QDockWidget*>(QStringLiteral("TesselTools"));
			ASSERT_TRUE(Tool);
			EXPECT_NEAR(Tool->height(), ToolHeight, 2);
		});
}
