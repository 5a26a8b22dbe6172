#include "DefaultEditorServices.h"
#include "EditorServices.h"
#include "SlateWin32.h"

#include "Framework/Application/SlateApplication.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

#include <commdlg.h>
#include <shellapi.h>

#include <algorithm>
#include <vector>

using namespace SlateWin32;

namespace
{
	// The window that dialogs stand over: the editor's main frame, or, where the host named none, the window
	// that is active now. An owned window stays above its owner and can't sink behind it.
	HWND DialogParent(const TSharedPtr<SWindow>& MainWindow)
	{
		if (MainWindow && MainWindow->HasNativeWidget())
		{
			return static_cast<HWND>(MainWindow->GetNativeWindowHandle());
		}
		HWND Active = GetActiveWindow();
		return Active && IsWindowVisible(Active) ? Active : nullptr;
	}

	// The visible, enabled buttons of a window, in the order the layout shows them.
	void CollectButtons(HWND Window, std::vector<HWND>& Out)
	{
		for (HWND Child = GetWindow(Window, GW_CHILD); Child; Child = GetWindow(Child, GW_HWNDNEXT))
		{
			wchar_t ClassName[16] = {};
			GetClassNameW(Child, ClassName, 16);
			const LONG Style = GetWindowLongW(Child, GWL_STYLE);
			if (!IsWindowVisible(Child))
			{
				continue;
			}
			const LONG Type = Style & BS_TYPEMASK;
			if (_wcsicmp(ClassName, L"Button") == 0 && (Type <= BS_DEFPUSHBUTTON || Type == BS_OWNERDRAW) && IsWindowEnabled(Child))
			{
				Out.push_back(Child);
			}
			CollectButtons(Child, Out);
		}
		std::stable_sort(Out.begin(), Out.end(),
						 [](HWND A, HWND B)
						 {
							 RECT First;
							 RECT Second;
							 GetWindowRect(A, &First);
							 GetWindowRect(B, &Second);
							 return First.top != Second.top ? First.top < Second.top : First.left < Second.left;
						 });
	}

	void Press(HWND Button)
	{
		if (FWin32Node* Node = NodeOf(Button); Node && Node->OnCommand)
		{
			Node->OnCommand(BN_CLICKED);
		}
	}

	// The keys of a dialog: Return presses the focused button, or the first (the one that accepts); Escape the
	// last (the one that declines), or closes a window with one button. They reach the window as OK and Cancel.
	void GiveDialogKeys(HWND Window)
	{
		FWin32Node* Node = NodeOf(Window);
		auto Former = Node->OnMessage;
		Node->OnMessage = [Window, Former](UINT Message, WPARAM WParam, LPARAM LParam, LRESULT& Result)
		{
			if (Message == WM_COMMAND && LParam == 0 && (LOWORD(WParam) == IDOK || LOWORD(WParam) == IDCANCEL))
			{
				std::vector<HWND> Buttons;
				CollectButtons(Window, Buttons);
				const HWND Focused = GetFocus();
				if (LOWORD(WParam) == IDCANCEL)
				{
					if (Buttons.size() > 1)
					{
						Press(Buttons.back());
					}
					else
					{
						PostMessageW(Window, WM_CLOSE, 0, 0);
					}
				}
				else if (std::find(Buttons.begin(), Buttons.end(), Focused) != Buttons.end())
				{
					Press(Focused);
				}
				else if (!Buttons.empty())
				{
					Press(Buttons.front());
				}
				Result = 0;
				return true;
			}
			return Former && Former(Message, WParam, LParam, Result);
		};
	}

	// Centres a window's content on the work area of the screen its owner is on, as on Linux; the frame stays on
	// the screen.
	void Centre(HWND Window, HWND Owner)
	{
		MONITORINFO Monitor{sizeof(MONITORINFO)};
		GetMonitorInfoW(MonitorFromWindow(Owner ? Owner : Window, MONITOR_DEFAULTTOPRIMARY), &Monitor);
		RECT Place;
		GetWindowRect(Window, &Place);
		RECT Client;
		GetClientRect(Window, &Client);
		POINT ClientAt{0, 0};
		ClientToScreen(Window, &ClientAt);
		const RECT& Work = Monitor.rcWork;
		const LONG Left = Work.left + (Work.right - Work.left - Client.right) / 2 - (ClientAt.x - Place.left);
		const LONG Top = Work.top + (Work.bottom - Work.top - Client.bottom) / 2 - (ClientAt.y - Place.top);
		SetWindowPos(Window, nullptr, std::max(Work.left, Left), std::max(Work.top, Top), 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
	}

	void SizeToContent(HWND Window, int LeastWidth)
	{
		LayoutRoot(Window);
		SIZE Wanted = PreferredWindowSize(Window);
		// Text that wraps asks for its height at the width it was given: once more, now that it has one.
		SetWindowPos(Window, nullptr, 0, 0, std::max<LONG>(Wanted.cx, LeastWidth), Wanted.cy, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
		LayoutRoot(Window);
		Wanted = PreferredWindowSize(Window);
		SetWindowPos(Window, nullptr, 0, 0, std::max<LONG>(Wanted.cx, LeastWidth), Wanted.cy, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
	}
}

TSharedPtr<IEditorServices> MakeDefaultEditorServices()
{
	return MakeShared<FDesktopEditorServices>();
}

void FDesktopEditorServices::OpenDialog(const FText& Title, const TSharedRef<SWidget>& Content)
{
	// Modal to the main window, so that a result is read before the next job starts; the call still returns at
	// once. A title and a close button only: a report is neither minimised nor maximised.
	HWND Owner = DialogParent(MainWindow);
	HWND Window = MakeTopLevel(Title.ToString(), WS_CAPTION | WS_SYSMENU, Owner);
	if (!Window)
	{
		return;
	}
	TSharedRef<SWidget> Body = SNew(SVerticalBox)
		+ SVerticalBox::Slot().FillHeight(1.0f).Padding(12)[Content]
		+ SVerticalBox::Slot().AutoHeight().HAlign(HAlign_Right).Padding(8)
		[
			SNew(SBox).WidthOverride(80)
			[
				SNew(SButton).Text(FText::FromString(TEXT("OK"))).OnClicked_Lambda([Window]()
				{
					PostMessageW(Window, WM_CLOSE, 0, 0);
					return FReply::Handled();
				})
			]
		];
	AddRoot(Window, Body, FMargin(), false);
	GiveDialogKeys(Window);
	// The dialog keeps its content alive until it closes; closing gives the owner its input back.
	FWin32Node* Node = NodeOf(Window);
	auto Keys = Node->OnMessage;
	TSharedPtr<SWidget> Keep = Body;
	Node->OnMessage = [Window, Owner, Keys, Keep](UINT Message, WPARAM WParam, LPARAM LParam, LRESULT& Result) mutable
	{
		if (Message == WM_CLOSE)
		{
			if (Owner)
			{
				EnableWindow(Owner, TRUE);
			}
			ShowWindow(Window, SW_HIDE);
			RemoveRoot(Window);
			DestroySoon(Window);
			Post([Release = std::move(Keep)]() mutable { Release.Reset(); });
			Result = 0;
			return true;
		}
		return Keys && Keys(Message, WParam, LParam, Result);
	};
	// Wide enough for its title in the frame's larger lettering, beside the frame's icon and buttons.
	const FSlateLayoutSize TitleSize = MeasureText(Title.ToString(), GetFont(true));
	SizeToContent(Window, static_cast<int>(TitleSize.Width * 3 / 2 + 10 * TitleSize.Height));
	Centre(Window, Owner);
	if (Owner)
	{
		EnableWindow(Owner, FALSE);
	}
	ShowWindow(Window, SW_SHOW);
	LayoutRoot(Window);
}

void FDesktopEditorServices::RunModalWindow(const TSharedRef<SWindow>& Window)
{
	HWND Owner = DialogParent(MainWindow);
	HWND Native = GetHwnd(*Window);
	if (!Native)
	{
		return;
	}
	// Over the main window, which it belongs to; an owner keeps it above that window.
	SetWindowLongPtrW(Native, GWLP_HWNDPARENT, reinterpret_cast<LONG_PTR>(Owner));
	GiveDialogKeys(Native);
	const float Scale = GetScale();
	switch (Window->GetSizingRule())
	{
	case ESizingRule::Autosized:
		// Sized to what the content asks for (a grid asks for room for its widest cells), and kept there.
		SizeToContent(Native, 0);
		break;
	case ESizingRule::FixedSize:
	{
		RECT Frame{0, 0, static_cast<LONG>(Window->GetClientSize().X * Scale), static_cast<LONG>(Window->GetClientSize().Y * Scale)};
		AdjustWindowRectEx(&Frame, static_cast<DWORD>(GetWindowLongW(Native, GWL_STYLE)), FALSE, WS_EX_CONTROLPARENT);
		SetWindowPos(Native, nullptr, 0, 0, Frame.right - Frame.left, Frame.bottom - Frame.top, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
		break;
	}
	case ESizingRule::UserSized:
		break;
	}
	if (Window->GetAutoCenter() != EAutoCenter::None)
	{
		Centre(Native, Window->GetAutoCenter() == EAutoCenter::PreferredWorkArea ? Owner : nullptr);
	}
	// Every other window of the program waits while this one is open.
	std::vector<HWND> Disabled;
	std::pair<HWND, std::vector<HWND>*> Others(Native, &Disabled);
	EnumThreadWindows(
		GetCurrentThreadId(),
		[](HWND Each, LPARAM List) -> BOOL
		{
			auto& Windows = *reinterpret_cast<std::pair<HWND, std::vector<HWND>*>*>(List);
			if (Each != Windows.first && IsWindowVisible(Each) && IsWindowEnabled(Each))
			{
				Windows.second->push_back(Each);
			}
			return TRUE;
		},
		reinterpret_cast<LPARAM>(&Others));
	for (HWND Each : Disabled)
	{
		EnableWindow(Each, FALSE);
	}
	ShowWindow(Native, SW_SHOW);
	SetForegroundWindow(Native);
	LayoutRoot(Native);
	// The loop turns until the window is closed (its close button or the code's request) or destroyed.
	while (!Window->IsDestroyRequested() && IsWindow(Native) && IsWindowVisible(Native))
	{
		MsgWaitForMultipleObjects(0, nullptr, FALSE, 16, QS_ALLINPUT);
		PumpMessages();
		LayoutAll();
	}
	for (HWND Each : Disabled)
	{
		if (IsWindow(Each))
		{
			EnableWindow(Each, TRUE);
		}
	}
	if (IsWindow(Native))
	{
		ShowWindow(Native, SW_HIDE);
	}
	if (Owner && IsWindow(Owner))
	{
		SetForegroundWindow(Owner);
	}
}

bool FDesktopEditorServices::OpenFileDialog(const void*, const FString& Title, const FString& DefaultPath, const FString& DefaultFile,
										  const FString& FileTypes, uint32, TArray<FString>& OutFilenames)
{
	// "Png Image (.png)|*.png" becomes the system's pairs of a name and its patterns, each ended by a zero.
	TArray<FString> Pieces;
	FileTypes.ParseIntoArray(Pieces, TEXT("|"), true);
	std::wstring Filter;
	for (int32 Index = 0; Index + 1 < Pieces.Num(); Index += 2)
	{
		Filter += Wide(Pieces[Index]) + L'\0' + Wide(Pieces[Index + 1]) + L'\0';
	}
	Filter += L'\0';
	std::wstring File = Wide(DefaultFile);
	File.resize(std::max<size_t>(File.size() + 1, 32768), L'\0');
	std::wstring Folder = Wide(DefaultPath.Replace(TEXT("/"), TEXT("\\")));
	const std::wstring Caption = Wide(Title);
	OPENFILENAMEW Dialog{};
	Dialog.lStructSize = sizeof(Dialog);
	Dialog.hwndOwner = DialogParent(MainWindow);
	Dialog.lpstrFilter = Pieces.Num() >= 2 ? Filter.c_str() : nullptr;
	Dialog.lpstrFile = File.data();
	Dialog.nMaxFile = static_cast<DWORD>(File.size());
	Dialog.lpstrInitialDir = Folder.empty() ? nullptr : Folder.c_str();
	Dialog.lpstrTitle = Caption.c_str();
	Dialog.Flags = OFN_FILEMUSTEXIST | OFN_PATHMUSTEXIST | OFN_NOCHANGEDIR | OFN_EXPLORER;
	if (!GetOpenFileNameW(&Dialog))
	{
		return false;
	}
	OutFilenames.Add(FromWide(std::wstring(File.c_str())));
	return true;
}

bool FDesktopEditorServices::LaunchURL(const FString& URL)
{
	return reinterpret_cast<INT_PTR>(ShellExecuteW(nullptr, L"open", Wide(URL).c_str(), nullptr, nullptr, SW_SHOWNORMAL)) > 32;
}
