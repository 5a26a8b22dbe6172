#include "HostWindow.h"

#include <QAction>
#include <QCloseEvent>
#include <QDockWidget>
#include <QGuiApplication>
#include <QMenuBar>
#include <QScreen>
#include <QSettings>

#include "Framework/Docking/TabManager.h"
#include "SlateQtBackend.h"

#include <algorithm>

namespace
{
	// Where the host keeps its layout between runs: the user's configuration folder.
	QSettings LayoutSettings()
	{
		return QSettings(QStringLiteral("Tessel"), QStringLiteral("TesselEditor"));
	}
	const QString OpenTabsKey = QStringLiteral("Layout/OpenTabs");
	const QString GeometryKey = QStringLiteral("Layout/Geometry");
	const QString DocksKey = QStringLiteral("Layout/Docks");
}

FHostWindow::FHostWindow()
{
	setWindowTitle(QStringLiteral("Tessel Editor"));
	resize(1200, 760);
	setDockNestingEnabled(true);
	QMenu* WindowMenu = menuBar()->addMenu(QStringLiteral("&Window"));
	for (const FTabSpawnerEntry& Entry : FGlobalTabmanager::Get()->GetNomadTabSpawners())
	{
		const FString TabId = Entry.GetTabId();
		QAction* Action = WindowMenu->addAction(SlateQt::ToQString(Entry.GetDisplayName().ToString()));
		connect(Action, &QAction::triggered, [this, TabId] { OpenTab(TabId); });
	}
	WindowMenu->addSeparator();
	connect(WindowMenu->addAction(QStringLiteral("&Quit")), &QAction::triggered, this, &QWidget::close);
}

TSharedPtr<SDockTab> FHostWindow::OpenTab(const FString& TabId)
{
	if (Docks.count(TabId))
	{
		Docks[TabId]->raise();
		return Tabs[TabId];
	}
	TSharedPtr<SDockTab> Tab = FGlobalTabmanager::Get()->InvokeTab(TabId);
	if (!Tab)
	{
		return nullptr;
	}
	QDockWidget* Dock = new QDockWidget(SlateQt::ToQString(Tab->GetTabLabel().ToString()), this);
	Dock->setObjectName(SlateQt::ToQString(TabId));
	Dock->setAttribute(Qt::WA_DeleteOnClose);
	Dock->setWidget(SlateQt::GetQWidget(*Tab));
	addDockWidget(Qt::LeftDockWidgetArea, Dock);
	Tabs[TabId] = Tab;
	Docks[TabId] = Dock;
	// Closing the tab releases it, and with it the tool widget.
	connect(Dock, &QObject::destroyed, [this, TabId] { CloseTab(TabId); });
	RememberTabs();
	return Tab;
}

TSharedPtr<SDockTab> FHostWindow::FindTab(const FString& TabId) const
{
	const auto Found = Tabs.find(TabId);
	return Found == Tabs.end() ? nullptr : Found->second;
}

void FHostWindow::CloseTab(const FString& TabId)
{
	Docks.erase(TabId);
	Tabs.erase(TabId);
	if (!bClosing)
	{
		RememberTabs();
	}
}

void FHostWindow::CloseAllTabs()
{
	bClosing = true;
	while (!Docks.empty())
	{
		QDockWidget* Dock = Docks.begin()->second;
		const FString TabId = Docks.begin()->first;
		Dock->setWidget(nullptr);
		CloseTab(TabId);
		delete Dock;
	}
}

void FHostWindow::RestoreTabs()
{
	QSettings Settings = LayoutSettings();
	for (const QString& TabId : Settings.value(OpenTabsKey).toStringList())
	{
		OpenTab(SlateQt::FromQString(TabId));
	}
	// An editor with no tab is an empty grey window: the tool's tab comes back instead.
	if (Docks.empty())
	{
		OpenTab(TEXT("TesselTools"));
	}
}

void FHostWindow::RestoreGeometry()
{
	QSettings Settings = LayoutSettings();
	restoreGeometry(Settings.value(GeometryKey).toByteArray());
	restoreState(Settings.value(DocksKey).toByteArray());
	FitToScreen();
}

void FHostWindow::FitToScreen()
{
	QScreen* Screen = QGuiApplication::screenAt(geometry().center());
	if (!Screen)
	{
		Screen = QGuiApplication::primaryScreen();
	}
	if (!Screen || isMaximized() || isFullScreen())
	{
		return;
	}
	// Before the window is shown its frame's size is not known: the window manager's usual frame is allowed for.
	const QRect Area = Screen->availableGeometry();
	const QSize Frame(16, 48);
	const QSize Fitted = size().boundedTo(Area.size() - Frame);
	resize(Fitted);
	move(std::clamp(x(), Area.left(), std::max(Area.left(), Area.right() - Fitted.width() - Frame.width())),
		 std::clamp(y(), Area.top(), std::max(Area.top(), Area.bottom() - Fitted.height() - Frame.height())));
}

void FHostWindow::RememberTabs() const
{
	QStringList Open;
	for (const auto& [TabId, Dock] : Docks)
	{
		Open << SlateQt::ToQString(TabId);
	}
	QSettings Settings = LayoutSettings();
	Settings.setValue(OpenTabsKey, Open);
}

void FHostWindow::closeEvent(QCloseEvent* Event)
{
	// The layout is kept as the user left it, before the tabs go with the window.
	RememberTabs();
	QSettings Settings = LayoutSettings();
	Settings.setValue(GeometryKey, saveGeometry());
	Settings.setValue(DocksKey, saveState());
	bClosing = true;
	QMainWindow::closeEvent(Event);
}
