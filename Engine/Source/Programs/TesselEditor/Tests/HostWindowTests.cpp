// The host window keeps its layout like an editor: the tool's tab opens on the very first start, and later
// starts reopen the tabs that were open when the window last closed, and only those.

#include <QApplication>
#include <QDockWidget>
#include <QSettings>

#include "HostWindow.h"
#include "Framework/Docking/TabManager.h"
#include "SlateTestMain.h"
#include "TempDirectory.h"
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
		Window.show();
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
	// A window closed with no tab open opens none: the empty layout is a layout too.
	RunWindow([](FHostWindow& Window) { EXPECT_FALSE(Window.FindTab(TEXT("TesselTools")) || Window.FindTab(TEXT("OtherTool"))); });
}
