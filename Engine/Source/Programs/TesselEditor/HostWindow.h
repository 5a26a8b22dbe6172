#pragma once

#include <QMainWindow>

#include "CoreMinimal.h"
#include "Widgets/Docking/SDockTab.h"

#include <map>

class QDockWidget;

// The editor's main window: a dock area and a Window menu with every registered tab. Like an editor that keeps
// its layout, it reopens the tabs that were open when it last closed (the tool's tab when there were none), and
// comes back at its last size and place with its docks as they were, always within the screen.
class FHostWindow : public QMainWindow
{
public:
	FHostWindow();

	// Opens the tab, or raises it when it is open already; null when no spawner has the id.
	TSharedPtr<SDockTab> OpenTab(const FString& TabId);
	void CloseAllTabs();
	// The tabs of the last run, or the tool's tab when there was none.
	void RestoreTabs();
	// The last run's size, place and dock sizes, fitted to the screen; before the window is shown.
	void RestoreGeometry();
	TSharedPtr<SDockTab> FindTab(const FString& TabId) const;

protected:
	void closeEvent(QCloseEvent* Event) override;

private:
	void CloseTab(const FString& TabId);
	void RememberTabs() const;
	// Within the screen's work area, before the window is shown.
	void FitToScreen();

	std::map<FString, QDockWidget*> Docks;
	std::map<FString, TSharedPtr<SDockTab>> Tabs;
	bool bClosing = false;
};
