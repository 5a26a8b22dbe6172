// The host on Windows: it points the engine's paths at a kit, loads the Tessel module, offers its tab in a
// Window menu, shows the tab in its main window and drives the frame at about 60 Hz, with the system's own
// windows drawing the widgets.

#include "CoreMinimal.h"
#include "EditorServices.h"
#include "Framework/Application/SlateApplication.h"
#include "Framework/Docking/TabManager.h"
#include "HAL/PlatformProcess.h"
#include "HostOptions.h"
#include "Modules/ModuleManager.h"
#include "ScriptedEditorServices.h"
#include "SlateWin32.h"
#include "WindowScript.h"

#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <set>
#include <vector>

using namespace SlateWin32;

namespace
{
	constexpr UINT FirstTabCommand = 100;

	struct FHost
	{
		HWND Window = nullptr;
		TSharedPtr<SDockTab> Tab;
		FString TabId;
		std::vector<FString> TabIds;
		bool bQuit = false;
	};

	FHost& Host()
	{
		static FHost Instance;
		return Instance;
	}

	void CloseTab()
	{
		FHost& State = Host();
		if (State.Tab)
		{
			RemoveRoot(State.Window);
			State.Tab.Reset();
		}
	}

	// Opens the tab in the main window, in place of the one shown; the same tab stays as it is.
	bool OpenTab(const FString& TabId)
	{
		FHost& State = Host();
		if (State.Tab && State.TabId == TabId)
		{
			return true;
		}
		TSharedPtr<SDockTab> Tab = FGlobalTabmanager::Get()->InvokeTab(TabId);
		if (!Tab)
		{
			return false;
		}
		CloseTab();
		State.Tab = Tab;
		State.TabId = TabId;
		AddRoot(State.Window, Tab.ToSharedRef(), FMargin(4), false);
		LayoutRoot(State.Window);
		return true;
	}

	// The Window menu lists every registered tab under its title.
	void BuildMenu()
	{
		FHost& State = Host();
		HMENU Bar = CreateMenu();
		HMENU Tabs = CreatePopupMenu();
		State.TabIds.clear();
		for (const FTabSpawnerEntry& Entry : FGlobalTabmanager::Get()->GetNomadTabSpawners())
		{
			State.TabIds.push_back(Entry.GetTabId());
			AppendMenuW(Tabs, MF_STRING, FirstTabCommand + State.TabIds.size() - 1, Wide(Entry.GetDisplayName().ToString()).c_str());
		}
		AppendMenuW(Bar, MF_POPUP, reinterpret_cast<UINT_PTR>(Tabs), L"&Window");
		SetMenu(State.Window, Bar);
	}

	// The window's client area as the screen shows it, and how many colours it holds.
	bool SaveScreenshot(HWND Window, const FString& Path, int& OutColours)
	{
		int Width = 0;
		int Height = 0;
		std::vector<uint32> Pixels;
		if (!CapturePixels(Window, Width, Height, Pixels))
		{
			return false;
		}
		std::set<uint32> Colours;
		for (size_t Index = 0; Index < Pixels.size() && Colours.size() < 100000; ++Index)
		{
			Colours.insert(Pixels[Index]);
		}
		OutColours = static_cast<int>(Colours.size());
		return SavePng(Path, Width, Height, Pixels.data());
	}

	// The layout a user leaves is kept where the Linux host's settings go on Windows: the window's place and size
	// and the open tab, in the user's part of the registry.
	constexpr const wchar_t* LayoutKey = L"Software\\Tessel\\TesselEditor";

	void SaveLayout()
	{
		FHost& State = Host();
		HKEY Key = nullptr;
		if (RegCreateKeyExW(HKEY_CURRENT_USER, LayoutKey, 0, nullptr, 0, KEY_SET_VALUE, nullptr, &Key, nullptr) != ERROR_SUCCESS)
		{
			return;
		}
		WINDOWPLACEMENT Placement{sizeof(WINDOWPLACEMENT)};
		if (GetWindowPlacement(State.Window, &Placement))
		{
			RegSetValueExW(Key, L"Placement", 0, REG_BINARY, reinterpret_cast<const BYTE*>(&Placement), sizeof(Placement));
		}
		const std::wstring Tab = Wide(State.TabId);
		RegSetValueExW(Key, L"OpenTab", 0, REG_SZ, reinterpret_cast<const BYTE*>(Tab.c_str()), static_cast<DWORD>((Tab.size() + 1) * sizeof(wchar_t)));
		RegCloseKey(Key);
	}

	// The place kept, fitted to the work area of the screen it is on now: a screen may have become smaller, or
	// the scale larger, since. A kept place that can't be read is no place.
	bool RestorePlacement(HWND Window)
	{
		WINDOWPLACEMENT Placement{};
		DWORD Size = sizeof(Placement);
		if (RegGetValueW(HKEY_CURRENT_USER, LayoutKey, L"Placement", RRF_RT_REG_BINARY, nullptr, &Placement, &Size) != ERROR_SUCCESS ||
			Size != sizeof(Placement) || Placement.length != sizeof(Placement))
		{
			return false;
		}
		RECT& Place = Placement.rcNormalPosition;
		MONITORINFO Monitor{sizeof(MONITORINFO)};
		GetMonitorInfoW(MonitorFromRect(&Place, MONITOR_DEFAULTTOPRIMARY), &Monitor);
		const RECT& Work = Monitor.rcWork;
		const LONG Width = std::clamp<LONG>(Place.right - Place.left, 200, Work.right - Work.left);
		const LONG Height = std::clamp<LONG>(Place.bottom - Place.top, 150, Work.bottom - Work.top);
		Place.left = std::clamp<LONG>(Place.left, Work.left, Work.right - Width);
		Place.top = std::clamp<LONG>(Place.top, Work.top, Work.bottom - Height);
		Place.right = Place.left + Width;
		Place.bottom = Place.top + Height;
		Placement.showCmd = Placement.showCmd == SW_SHOWMAXIMIZED ? SW_SHOWMAXIMIZED : SW_SHOWNORMAL;
		Placement.flags = 0;
		return SetWindowPlacement(Window, &Placement) != FALSE;
	}

	FString KeptTab()
	{
		wchar_t Tab[256] = {};
		DWORD Size = sizeof(Tab);
		if (RegGetValueW(HKEY_CURRENT_USER, LayoutKey, L"OpenTab", RRF_RT_REG_SZ, nullptr, Tab, &Size) != ERROR_SUCCESS)
		{
			return FString();
		}
		return FromWide(Tab);
	}

	HWND MakeMainWindow()
	{
		HWND Window = MakeTopLevel(TEXT("Tessel Editor"), WS_OVERLAPPEDWINDOW, nullptr);
		FWin32Node* Node = NodeOf(Window);
		Node->OnMessage = [](UINT Message, WPARAM WParam, LPARAM LParam, LRESULT& Result)
		{
			FHost& State = Host();
			if (Message == WM_COMMAND && LParam == 0 && LOWORD(WParam) >= FirstTabCommand &&
				LOWORD(WParam) < FirstTabCommand + State.TabIds.size())
			{
				OpenTab(State.TabIds[LOWORD(WParam) - FirstTabCommand]);
				Result = 0;
				return true;
			}
			if (Message == WM_CLOSE)
			{
				// Closed by its user: the layout is kept for the next start.
				SaveLayout();
				State.bQuit = true;
				Result = 0;
				return true;
			}
			return false;
		};
		// The first size fits the form and the log, within the screen's work area.
		RECT Work;
		SystemParametersInfoW(SPI_GETWORKAREA, 0, &Work, 0);
		const float Scale = GetScale();
		const int Width = std::min<int>(static_cast<int>(1100 * Scale), Work.right - Work.left);
		const int Height = std::min<int>(static_cast<int>(800 * Scale), Work.bottom - Work.top);
		SetWindowPos(Window, nullptr, Work.left + (Work.right - Work.left - Width) / 2, Work.top + (Work.bottom - Work.top - Height) / 2, Width,
					 Height, SWP_NOZORDER | SWP_NOACTIVATE);
		return Window;
	}
}

int main(int ArgC, char** ArgV)
{
	// Lines end with LF as on Linux, so that a script reads the same bytes from either host.
	_setmode(_fileno(stdout), _O_BINARY);
	_setmode(_fileno(stderr), _O_BINARY);
	int Exit = 0;
	if (HostOptions::RunWithoutWindow(ArgC, ArgV, Exit))
	{
		return Exit;
	}
	const TCHAR* CommandLine = FCommandLine::Get();
	FString ScreenshotPath;
	const bool bScreenshot = FParse::Value(CommandLine, TEXT("-Screenshot="), ScreenshotPath, false);

	FSlateApplication::Create(ArgC, ArgV);
	// The module sits beside the program, as the folder is copied.
	FModuleManager::Get().SetModuleDirectory(FPaths::GetPath(FPlatformProcess::ExecutablePath()));
	if (!FModuleManager::Get().LoadModule(TEXT("Tessel")))
	{
		std::fprintf(stderr, "The Tessel module could not be loaded from %s\n", FPaths::GetPath(FPlatformProcess::ExecutablePath()).ToUtf8().c_str());
		return 1;
	}
	{
		TSharedPtr<FScriptedEditorServices> Services = MakeShared<FScriptedEditorServices>();
		IEditorServices::Set(Services);
		FHost& State = Host();
		State.Window = MakeMainWindow();
		BuildMenu();
		// -Screenshot and -OpenTab open the tool's tab; so does a start with no tab to come back to. A scripted
		// cook keeps the first size, so that its pictures are alike whatever a user left.
		FString ScriptedMod;
		const bool bScripted = bScreenshot && FParse::Value(CommandLine, TEXT("-Cook="), ScriptedMod, false);
		const FString Kept = bScreenshot || FParse::Param(CommandLine, TEXT("OpenTab")) ? FString() : KeptTab();
		if (Kept.IsEmpty() || !OpenTab(Kept))
		{
			OpenTab(TEXT("TesselTools"));
		}
		if (!bScripted)
		{
			RestorePlacement(State.Window);
		}
		ShowWindow(State.Window, SW_SHOW);
		UpdateWindow(State.Window);

		std::unique_ptr<FWindowScript> Script = FWindowScript::FromCommandLine({
			[]() -> TSharedPtr<SWidget> { return Host().Tab ? Host().Tab->GetContent() : nullptr; },
			[](const FString& Path)
			{
				RedrawWindow(Host().Window, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
				int Colours = 0;
				// A window with nothing drawn in it holds one or two colours.
				return SaveScreenshot(Host().Window, Path, Colours) && Colours > 16;
			},
			[&Exit](int ExitCode)
			{
				Exit = ExitCode;
				Host().bQuit = true;
			}});
		Services->Script = Script.get();

		int Frames = 0;
		while (!State.bQuit)
		{
			MsgWaitForMultipleObjects(0, nullptr, FALSE, 16, QS_ALLINPUT);
			FSlateApplication::Get().Tick(1.0f / 60.0f);
			if (Script)
			{
				Script->Step();
				continue;
			}
			// A few frames so that bound values and lazily loaded images are drawn, then the picture.
			if (bScreenshot && ++Frames == 30)
			{
				RedrawWindow(State.Window, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
				int Colours = 0;
				const bool bSaved = SaveScreenshot(State.Window, ScreenshotPath, Colours);
				// A window with nothing drawn in it holds one or two colours.
				const bool bDrawn = Colours > 16;
				std::printf("%s %s (%d colours)\n", bSaved ? "Screenshot saved to" : "Could not save", ScreenshotPath.ToUtf8().c_str(), Colours);
				Exit = bSaved && bDrawn ? 0 : 1;
				State.bQuit = true;
			}
		}
		Services->Script = nullptr;
		CloseTab();
		DestroyWindow(State.Window);
		IEditorServices::Set(nullptr);
	}
	FModuleManager::Get().UnloadAllModules();
	FSlateApplication::FlushDeferredDeletes();
	FSlateApplication::Shutdown();
	return Exit;
}
