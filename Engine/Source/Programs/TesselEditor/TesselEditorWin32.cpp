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
#include "SlateWin32.h"

#include <wincodec.h>

#include <cstdio>
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

	// The window's client area as the screen shows it. A window's own drawing into a bitmap comes out blank on
	// some systems (Wine), so the picture is taken from the screen.
	bool SaveScreenshot(HWND Window, const FString& Path, int& OutColours)
	{
		RECT Client;
		GetClientRect(Window, &Client);
		POINT Origin{0, 0};
		ClientToScreen(Window, &Origin);
		const int Width = Client.right;
		const int Height = Client.bottom;
		if (Width <= 0 || Height <= 0)
		{
			return false;
		}
		HDC Screen = GetDC(nullptr);
		HDC Memory = CreateCompatibleDC(Screen);
		BITMAPINFO Info{};
		Info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
		Info.bmiHeader.biWidth = Width;
		Info.bmiHeader.biHeight = -Height;
		Info.bmiHeader.biPlanes = 1;
		Info.bmiHeader.biBitCount = 32;
		Info.bmiHeader.biCompression = BI_RGB;
		void* Bits = nullptr;
		HBITMAP Bitmap = CreateDIBSection(Screen, &Info, DIB_RGB_COLORS, &Bits, nullptr, 0);
		HGDIOBJ Former = SelectObject(Memory, Bitmap);
		BitBlt(Memory, 0, 0, Width, Height, Screen, Origin.x, Origin.y, SRCCOPY);
		SelectObject(Memory, Former);
		DeleteDC(Memory);
		ReleaseDC(nullptr, Screen);
		uint32* Pixels = static_cast<uint32*>(Bits);
		std::set<uint32> Colours;
		for (int Index = 0; Index < Width * Height && Colours.size() < 100000; ++Index)
		{
			Pixels[Index] |= 0xFF000000u;
			Colours.insert(Pixels[Index]);
		}
		OutColours = static_cast<int>(Colours.size());

		bool bSaved = false;
		IWICImagingFactory* Factory = nullptr;
		IWICStream* Stream = nullptr;
		IWICBitmapEncoder* Encoder = nullptr;
		IWICBitmapFrameEncode* Frame = nullptr;
		WICPixelFormatGUID Format = GUID_WICPixelFormat32bppBGRA;
		if (SUCCEEDED(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&Factory))) &&
			SUCCEEDED(Factory->CreateStream(&Stream)) && SUCCEEDED(Stream->InitializeFromFilename(Wide(Path).c_str(), GENERIC_WRITE)) &&
			SUCCEEDED(Factory->CreateEncoder(GUID_ContainerFormatPng, nullptr, &Encoder)) &&
			SUCCEEDED(Encoder->Initialize(Stream, WICBitmapEncoderNoCache)) && SUCCEEDED(Encoder->CreateNewFrame(&Frame, nullptr)) &&
			SUCCEEDED(Frame->Initialize(nullptr)) && SUCCEEDED(Frame->SetSize(static_cast<UINT>(Width), static_cast<UINT>(Height))) &&
			SUCCEEDED(Frame->SetPixelFormat(&Format)) &&
			SUCCEEDED(Frame->WritePixels(static_cast<UINT>(Height), static_cast<UINT>(Width * 4), static_cast<UINT>(Width * Height * 4),
										 static_cast<BYTE*>(Bits))) &&
			SUCCEEDED(Frame->Commit()) && SUCCEEDED(Encoder->Commit()))
		{
			bSaved = true;
		}
		for (IUnknown* Each : {static_cast<IUnknown*>(Frame), static_cast<IUnknown*>(Encoder), static_cast<IUnknown*>(Stream),
							   static_cast<IUnknown*>(Factory)})
		{
			if (Each)
			{
				Each->Release();
			}
		}
		DeleteObject(Bitmap);
		return bSaved;
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
	int Exit = 0;
	if (HostOptions::RunWithoutWindow(ArgC, ArgV, Exit))
	{
		return Exit;
	}
	const TCHAR* CommandLine = FCommandLine::Get();
	FString ScreenshotPath;
	const bool bScreenshot = FParse::Value(CommandLine, TEXT("-Screenshot="), ScreenshotPath, false);
	FString CookModDir;
	if (FParse::Param(CommandLine, TEXT("Publish")) || FParse::Value(CommandLine, TEXT("-Cook="), CookModDir, false))
	{
		std::fprintf(stderr, "A cook or a publication through the window is not scripted on Windows yet; use TesselCmd.\n");
		return 2;
	}

	FSlateApplication::Create(ArgC, ArgV);
	// The module sits beside the program, as the folder is copied.
	FModuleManager::Get().SetModuleDirectory(FPaths::GetPath(FPlatformProcess::ExecutablePath()));
	if (!FModuleManager::Get().LoadModule(TEXT("Tessel")))
	{
		std::fprintf(stderr, "The Tessel module could not be loaded from %s\n", FPaths::GetPath(FPlatformProcess::ExecutablePath()).ToUtf8().c_str());
		return 1;
	}
	{
		TSharedPtr<FDesktopEditorServices> Services = MakeShared<FDesktopEditorServices>();
		IEditorServices::Set(Services);
		FHost& State = Host();
		State.Window = MakeMainWindow();
		BuildMenu();
		// The scripted run and -OpenTab open the tool's tab; so does a start with no tab to come back to.
		OpenTab(TEXT("TesselTools"));
		ShowWindow(State.Window, SW_SHOW);
		UpdateWindow(State.Window);

		int Frames = 0;
		while (!State.bQuit)
		{
			MsgWaitForMultipleObjects(0, nullptr, FALSE, 16, QS_ALLINPUT);
			FSlateApplication::Get().Tick(1.0f / 60.0f);
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
		CloseTab();
		DestroyWindow(State.Window);
		IEditorServices::Set(nullptr);
	}
	FModuleManager::Get().UnloadAllModules();
	FSlateApplication::FlushDeferredDeletes();
	FSlateApplication::Shutdown();
	return Exit;
}
