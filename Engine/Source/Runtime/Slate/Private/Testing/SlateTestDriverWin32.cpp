// The test driver on the Win32 backend. Input goes to the controls as the system hands it to them (a button's
// click, a key through the window's dialog keys, characters to an edit box), and frames are ticked by the test:
// steadier than real input with fixed waits. Sizes and places are in widget pixels, as on the other backend: the
// device pixels of a high-density screen divided by its scale. Pictures are in device pixels.

#include "SlateWin32.h"
#include "Testing/SlateTestDriver.h"

#include "Framework/Application/SlateApplication.h"
#include "Widgets/SWindow.h"
#include "Widgets/Views/STableViewBase.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cwctype>

using namespace SlateWin32;

namespace
{
	// The widget's window, placed: a window made just now stands where the layout puts it at once.
	HWND Drawn(const SWidget& Widget)
	{
		HWND Window = GetHwnd(const_cast<SWidget&>(Widget));
		check(Window);
		FWin32Node* Node = NodeOf(Window);
		if (Node && !Node->bPlaced)
		{
			LayoutAll();
		}
		return Window;
	}

	std::wstring ClassOf(HWND Window)
	{
		wchar_t Name[64] = {};
		GetClassNameW(Window, Name, 64);
		std::wstring Result(Name);
		std::transform(Result.begin(), Result.end(), Result.begin(), [](wchar_t Each) { return static_cast<wchar_t>(std::towlower(Each)); });
		return Result;
	}

	LONG StyleOf(HWND Window) { return GetWindowLongW(Window, GWL_STYLE); }

	int32 Logical(double Device) { return static_cast<int32>(std::lround(Device / GetScale())); }

	// A rectangle in device pixels to widget pixels; its right and bottom edges are converted as edges, so that
	// neighbours that touch still touch.
	FSlateTestRect ToLogical(const RECT& Area)
	{
		FSlateTestRect Result;
		Result.X = Logical(Area.left);
		Result.Y = Logical(Area.top);
		Result.Width = Logical(Area.right) - Result.X;
		Result.Height = Logical(Area.bottom) - Result.Y;
		return Result;
	}

	HWND TopOf(HWND Window) { return GetAncestor(Window, GA_ROOT); }

	// Where Window stands in the client area of its top-level window.
	RECT InTop(HWND Window)
	{
		HWND Top = TopOf(Window);
		RECT Area;
		if (Top == Window)
		{
			GetClientRect(Window, &Area);
			return Area;
		}
		GetWindowRect(Window, &Area);
		MapWindowPoints(nullptr, Top, reinterpret_cast<POINT*>(&Area), 2);
		return Area;
	}

	HFONT FontOf(HWND Window)
	{
		HFONT Font = reinterpret_cast<HFONT>(SendMessageW(Window, WM_GETFONT, 0, 0));
		return Font ? Font : GetFont();
	}

	std::wstring WideText(HWND Window)
	{
		std::wstring Text(static_cast<size_t>(GetWindowTextLengthW(Window)) + 1, L'\0');
		Text.resize(static_cast<size_t>(GetWindowTextW(Window, Text.data(), static_cast<int>(Text.size()))));
		return Text;
	}

	bool IsMultiLineEdit(HWND Window) { return ClassOf(Window) == L"edit" && (StyleOf(Window) & ES_MULTILINE) != 0; }

	// The text as the user reads it: a multi-line box's CR LF as LF, and no zero-width break hints.
	FString TextOf(HWND Window)
	{
		const std::wstring Class = ClassOf(Window);
		if (Class != L"edit" && Class != L"static" && Class != L"button")
		{
			return FString();
		}
		std::wstring Text = WideText(Window);
		std::wstring Result;
		for (size_t Index = 0; Index < Text.size(); ++Index)
		{
			if (Text[Index] == 0x200B || (Text[Index] == L'\r' && Index + 1 < Text.size() && Text[Index + 1] == L'\n'))
			{
				continue;
			}
			Result += Text[Index];
		}
		return FromWide(Result);
	}

	void Pump(int32 Turns = 1)
	{
		for (int32 Turn = 0; Turn < Turns; ++Turn)
		{
			PumpMessages();
			FSlateApplication::FlushDeferredDeletes();
			LayoutAll();
		}
	}

	// The screen shows what a window drew a moment after it drew it (under Wine, once the drawing reached the X
	// server): everything is painted now, then the queue turns a few times.
	void PaintNow(HWND Window)
	{
		HWND Top = TopOf(Window);
		SetWindowPos(Top, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
		RedrawWindow(Top, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW | RDW_FRAME);
		GdiFlush();
		for (int Turn = 0; Turn < 5; ++Turn)
		{
			Pump();
			Sleep(20);
		}
	}

	FSlateScreenshot Capture(HWND Window)
	{
		PaintNow(Window);
		FSlateScreenshot Shot;
		if (!CapturePixels(Window, Shot.Width, Shot.Height, Shot.Pixels))
		{
			return FSlateScreenshot();
		}
		return Shot;
	}

	// A key by the name the keyboard's legend gives it ("Return", "Ctrl+Z", "Down"), as a virtual key and the
	// modifiers held with it.
	struct FKey
	{
		UINT Code = 0;
		bool bControl = false;
		bool bShift = false;
		bool bAlt = false;
	};

	FKey ParseKey(const FString& Name)
	{
		FKey Key;
		FString Rest = Name;
		FString Modifier;
		FString After;
		while (Rest.Split(TEXT("+"), &Modifier, &After) && !After.IsEmpty())
		{
			Key.bControl |= Modifier == TEXT("Ctrl");
			Key.bShift |= Modifier == TEXT("Shift");
			Key.bAlt |= Modifier == TEXT("Alt");
			Rest = After;
		}
		static const struct
		{
			const TCHAR* Name;
			UINT Code;
		} Named[] = {{TEXT("Return"), VK_RETURN}, {TEXT("Enter"), VK_RETURN}, {TEXT("Escape"), VK_ESCAPE}, {TEXT("Esc"), VK_ESCAPE},
					 {TEXT("Tab"), VK_TAB},		  {TEXT("Backspace"), VK_BACK}, {TEXT("Del"), VK_DELETE},	  {TEXT("Delete"), VK_DELETE},
					 {TEXT("Left"), VK_LEFT},	  {TEXT("Right"), VK_RIGHT},	{TEXT("Up"), VK_UP},		  {TEXT("Down"), VK_DOWN},
					 {TEXT("Home"), VK_HOME},	  {TEXT("End"), VK_END},		{TEXT("PgUp"), VK_PRIOR},	  {TEXT("PgDown"), VK_NEXT},
					 {TEXT("Space"), VK_SPACE},	  {TEXT("Ins"), VK_INSERT}};
		for (const auto& Each : Named)
		{
			if (Rest == Each.Name)
			{
				Key.Code = Each.Code;
				return Key;
			}
		}
		if (Rest.Len() == 1 && std::iswalnum(static_cast<wint_t>(Rest[0])))
		{
			Key.Code = static_cast<UINT>(std::towupper(static_cast<wint_t>(Rest[0])));
		}
		else if (Rest.Len() >= 2 && Rest[0] == TEXT('F'))
		{
			Key.Code = VK_F1 + static_cast<UINT>(std::atoi(Rest.Mid(1).ToUtf8().c_str())) - 1;
		}
		return Key;
	}

	// The key goes through the message loop as the keyboard's keys do, so that the window's dialog keys (Tab,
	// Return, Escape) and the translation into characters see it; the modifiers are down while it is handled.
	void SendKey(HWND Target, const FString& Name)
	{
		const FKey Key = ParseKey(Name);
		check(Key.Code != 0);
		BYTE Before[256] = {};
		GetKeyboardState(Before);
		BYTE Held[256];
		std::copy(std::begin(Before), std::end(Before), std::begin(Held));
		auto Hold = [&Held](UINT Code, bool bDown) { Held[Code] = bDown ? 0x80 : 0; };
		Hold(VK_CONTROL, Key.bControl);
		Hold(VK_LCONTROL, Key.bControl);
		Hold(VK_SHIFT, Key.bShift);
		Hold(VK_LSHIFT, Key.bShift);
		Hold(VK_MENU, Key.bAlt);
		Hold(VK_LMENU, Key.bAlt);
		Hold(Key.Code, true);
		SetKeyboardState(Held);
		const UINT Scan = MapVirtualKeyW(Key.Code, MAPVK_VK_TO_VSC);
		PostMessageW(Target, Key.bAlt ? WM_SYSKEYDOWN : WM_KEYDOWN, Key.Code, 1 | (Scan << 16));
		Pump(2);
		Held[Key.Code] = 0;
		SetKeyboardState(Held);
		PostMessageW(Target, Key.bAlt ? WM_SYSKEYUP : WM_KEYUP, Key.Code, 1 | (Scan << 16) | (1u << 30) | (1u << 31));
		Pump();
		SetKeyboardState(Before);
	}

	// A left click at a point of the window's client area, as the mouse makes it.
	void ClickAt(HWND Window, int X, int Y)
	{
		const LPARAM At = MAKELPARAM(X, Y);
		SendMessageW(Window, WM_MOUSEMOVE, 0, At);
		SendMessageW(Window, WM_LBUTTONDOWN, MK_LBUTTON, At);
		if (IsWindow(Window))
		{
			SendMessageW(Window, WM_LBUTTONUP, 0, At);
		}
	}

	bool IsEnabledAll(HWND Window)
	{
		for (HWND Each = Window; Each; Each = GetParent(Each))
		{
			if (!IsWindowEnabled(Each))
			{
				return false;
			}
			if (Each == TopOf(Window))
			{
				break;
			}
		}
		return true;
	}

	// A multi-line box keeps CR LF where the widgets keep LF: positions differ by the line breaks before them.
	int32 BoxToWidgetPosition(HWND Edit, int32 Position)
	{
		if (!IsMultiLineEdit(Edit))
		{
			return Position;
		}
		const std::wstring Text = WideText(Edit);
		const int32 Breaks = static_cast<int32>(std::count(Text.begin(), Text.begin() + std::min<size_t>(Position, Text.size()), L'\r'));
		return Position - Breaks;
	}

	int32 WidgetToBoxPosition(HWND Edit, int32 Position)
	{
		if (!IsMultiLineEdit(Edit))
		{
			return Position;
		}
		const std::wstring Text = WideText(Edit);
		int32 Box = 0;
		for (int32 Seen = 0; Box < static_cast<int32>(Text.size()) && Seen < Position; ++Box)
		{
			if (Text[Box] != L'\r')
			{
				++Seen;
			}
		}
		return Box;
	}
}

bool FSlateScreenshot::SaveToPng(const FString& Path) const
{
	return !IsEmpty() && SavePng(Path, Width, Height, Pixels.data());
}

void SlateTest::StartApplication(int& ArgC, char** ArgV)
{
	FSlateApplication::Create(ArgC, ArgV);
	// The scale is the system's (its DPI setting), not the program's: a run meant for another scale would test
	// the wrong thing.
	if (const char* Wanted = std::getenv("SLATE_TEST_SCALE"); Wanted && *Wanted && std::fabs(std::atof(Wanted) - GetScale()) > 0.01)
	{
		std::fprintf(stderr, "SLATE_TEST_SCALE is %s but the system's DPI gives a scale of %g; set the DPI instead\n", Wanted, GetScale());
		std::exit(2);
	}
}

void SlateTest::StopApplication()
{
	FSlateApplication::FlushDeferredDeletes();
	FSlateApplication::Shutdown();
}

void SlateTest::TickFrames(int32 Frames)
{
	for (int32 Frame = 0; Frame < Frames; ++Frame)
	{
		FSlateApplication::Get().Tick(1.0f / 60.0f);
	}
}

void SlateTest::RunSoon(std::function<void()> Work)
{
	Post(std::move(Work));
}

FSlateTestRect SlateTest::GetGeometry(const SWidget& Widget)
{
	return ToLogical(InTop(Drawn(Widget)));
}

FSlateTestRect SlateTest::GetSlotGeometry(const SWidget& Widget)
{
	HWND Window = Drawn(Widget);
	FWin32Node* Node = NodeOf(Window);
	HWND Parent = GetParent(Window);
	if (!Node || !Parent || TopOf(Window) == Window)
	{
		return GetGeometry(Widget);
	}
	RECT Slot = Node->SlotPlace;
	MapWindowPoints(Parent, TopOf(Window), reinterpret_cast<POINT*>(&Slot), 2);
	return ToLogical(Slot);
}

FSlateTestSize SlateTest::GetPreferredSize(const SWidget& Widget)
{
	Drawn(Widget);
	const FSlateLayoutSize Size = Widget.ComputeDesiredSize(GetScale());
	return {Logical(std::ceil(Size.Width)), Logical(std::ceil(Size.Height))};
}

FSlateTestSize SlateTest::GetMinimumSize(const SWidget& Widget)
{
	// The shared layout gives no widget less than it asks for where it has the room: its least size is the one it
	// asks for.
	return GetPreferredSize(Widget);
}

bool SlateTest::IsShown(const SWidget& Widget)
{
	return IsWindowVisible(Drawn(Widget)) != FALSE;
}

bool SlateTest::IsEnabledOnScreen(const SWidget& Widget)
{
	return IsEnabledAll(Drawn(Widget));
}

bool SlateTest::IsScrollBarShown(const SWidget& ScrollBox, EOrientation Orientation)
{
	HWND Window = Drawn(ScrollBox);
	return (StyleOf(Window) & (Orientation == Orient_Horizontal ? WS_HSCROLL : WS_VSCROLL)) != 0 && IsWindowVisible(Window);
}

FString SlateTest::GetShownText(const SWidget& Widget)
{
	return TextOf(Drawn(Widget));
}

FSlateTextLook SlateTest::GetTextLook(const SWidget& Widget)
{
	HWND Window = Drawn(Widget);
	FWin32Node* Node = NodeOf(Window);
	const HFONT Font = FontOf(Window);
	LOGFONTW Face{};
	GetObjectW(Font, sizeof(Face), &Face);
	FSlateTextLook Look;
	Look.PointSize = static_cast<float>(std::abs(Face.lfHeight) * 72.0 / (96.0 * GetScale()));
	Look.bBold = Face.lfWeight >= FW_SEMIBOLD;
	Look.bRaised = Node && Node->bRaised;
	Look.LineHeight = Logical(MeasureText(TEXT("Ag"), Font).Height);
	Look.ShownTextWidth = Logical(std::ceil(MeasureText(TextOf(Window), Font).Width));
	RECT Client;
	GetClientRect(Window, &Client);
	LONG Room = Client.right;
	const std::wstring Class = ClassOf(Window);
	const LONG ButtonType = StyleOf(Window) & BS_TYPEMASK;
	if (Class == L"button" && ButtonType == BS_OWNERDRAW)
	{
		// Inside the line the button draws round its face.
		Room -= 2 * ButtonFrame;
	}
	else if (Class == L"button" && (ButtonType == BS_PUSHBUTTON || ButtonType == BS_DEFPUSHBUTTON))
	{
		// Inside the raised edge and the focus rectangle within it.
		Room -= 2 * (GetSystemMetrics(SM_CXEDGE) + static_cast<LONG>(std::lround(GetScale())));
	}
	else if (Class == L"button")
	{
		Room -= GetSystemMetrics(SM_CXMENUCHECK) + static_cast<LONG>(4 * GetScale());
	}
	else if (Class == L"edit")
	{
		RECT Format{};
		SendMessageW(Window, EM_GETRECT, 0, reinterpret_cast<LPARAM>(&Format));
		Room = Format.right - Format.left;
	}
	Look.TextRoomWidth = Logical(std::max<LONG>(0, Room));
	Look.TextHeight = Look.LineHeight;
	if (Class == L"static" && WrapsText(Widget) && Client.right > 0)
	{
		Look.TextHeight = Logical(MeasureText(TextOf(Window), Font, Client.right).Height);
	}
	return Look;
}

bool SlateTest::WrapsText(const SWidget& Widget)
{
	HWND Window = Drawn(Widget);
	const std::wstring Class = ClassOf(Window);
	if (Class == L"static")
	{
		const LONG Type = StyleOf(Window) & SS_TYPEMASK;
		return Type == SS_LEFT || Type == SS_CENTER || Type == SS_RIGHT;
	}
	return IsMultiLineEdit(Window) && (StyleOf(Window) & ES_AUTOHSCROLL) == 0;
}

bool SlateTest::IsChecked(const SWidget& Widget)
{
	HWND Window = Drawn(Widget);
	return ClassOf(Window) == L"button" && SendMessageW(Window, BM_GETCHECK, 0, 0) == BST_CHECKED;
}

bool SlateTest::IsReadOnly(const SWidget& Widget)
{
	HWND Window = Drawn(Widget);
	return ClassOf(Window) != L"edit" || (StyleOf(Window) & ES_READONLY) != 0;
}

bool SlateTest::HasFrame(const SWidget& Widget)
{
	HWND Window = Drawn(Widget);
	return ClassOf(Window) == L"edit" && (GetWindowLongW(Window, GWL_EXSTYLE) & WS_EX_CLIENTEDGE) != 0;
}

bool SlateTest::IsMasked(const SWidget& Widget)
{
	HWND Window = Drawn(Widget);
	return ClassOf(Window) == L"edit" && (StyleOf(Window) & ES_PASSWORD) != 0;
}

int32 SlateTest::GetCursorPosition(const SWidget& TextBox)
{
	HWND Edit = Drawn(TextBox);
	check(ClassOf(Edit) == L"edit");
	DWORD Start = 0;
	DWORD End = 0;
	SendMessageW(Edit, EM_GETSEL, reinterpret_cast<WPARAM>(&Start), reinterpret_cast<LPARAM>(&End));
	return BoxToWidgetPosition(Edit, static_cast<int32>(End));
}

void SlateTest::SetCursorPosition(SWidget& TextBox, int32 Position)
{
	HWND Edit = Drawn(TextBox);
	check(ClassOf(Edit) == L"edit");
	const int32 At = WidgetToBoxPosition(Edit, Position);
	SendMessageW(Edit, EM_SETSEL, At, At);
}

void SlateTest::Click(SWidget& Widget)
{
	HWND Window = Drawn(Widget);
	// The system gives a greyed-out window no clicks.
	if (!IsEnabledAll(Window) || !IsWindowVisible(Window))
	{
		return;
	}
	if (ClassOf(Window) == L"button")
	{
		// What the button reports of a press and release on it, check boxes included.
		SendMessageW(Window, BM_CLICK, 0, 0);
		return;
	}
	RECT Client;
	GetClientRect(Window, &Client);
	ClickAt(Window, Client.right / 2, Client.bottom / 2);
}

void SlateTest::Focus(SWidget& Widget)
{
	HWND Window = Drawn(Widget);
	HWND Top = TopOf(Window);
	SetForegroundWindow(Top);
	SetActiveWindow(Top);
	SetFocus(Window);
	Pump(2);
}

bool SlateTest::HasFocus(const SWidget& Widget)
{
	HWND Window = Drawn(Widget);
	HWND Focused = GetFocus();
	return Focused && (Focused == Window || IsChild(Window, Focused));
}

void SlateTest::TypeText(SWidget& Widget, const FString& Text)
{
	HWND Window = Drawn(Widget);
	for (const wchar_t Each : Wide(Text))
	{
		SendMessageW(Window, WM_CHAR, Each == L'\n' ? L'\r' : Each, 1);
	}
}

void SlateTest::PressKey(SWidget& Widget, const FString& Key)
{
	SendKey(Drawn(Widget), Key);
}

void SlateTest::PressKeyInFocus(const FString& Key)
{
	HWND Focused = GetFocus();
	check(Focused);
	SendKey(Focused, Key);
}

int32 SlateTest::GetListRowCount(const STableViewBase& List)
{
	Drawn(List);
	return GetListRows(List);
}

FString SlateTest::GetListRowText(const STableViewBase& List, int32 Row)
{
	Drawn(List);
	return const_cast<STableViewBase&>(List).GetRowText(Row);
}

void SlateTest::ClickListRow(STableViewBase& List, int32 Row)
{
	HWND Window = Drawn(List);
	const RECT Area = GetListRowArea(List, Row);
	check(Area.bottom > Area.top);
	ClickAt(Window, (Area.left + Area.right) / 2, (Area.top + Area.bottom) / 2);
}

FString SlateTest::HoverListRow(STableViewBase& List, int32 Row)
{
	HWND Window = Drawn(List);
	// The mouse leaves first, so that a tooltip shown before goes.
	SendMessageW(Window, WM_MOUSELEAVE, 0, 0);
	const RECT Area = GetListRowArea(List, Row);
	check(Area.bottom > Area.top);
	const LPARAM At = MAKELPARAM((Area.left + Area.right) / 2, (Area.top + Area.bottom) / 2);
	SendMessageW(Window, WM_MOUSEMOVE, 0, At);
	// What the system sends once the mouse has rested there.
	SendMessageW(Window, WM_MOUSEHOVER, 0, At);
	return GetListToolTip(Window);
}

FSlateTestWindowState SlateTest::GetWindowState(SWindow& Window)
{
	HWND Native = Drawn(Window);
	const LONG Style = StyleOf(Native);
	FSlateTestWindowState State;
	State.bShown = IsWindowVisible(Native) != FALSE;
	// Modal: the windows it belongs to wait for it.
	HWND Owner = GetWindow(Native, GW_OWNER);
	State.bModal = Owner && !IsWindowEnabled(Owner) && IsWindowEnabled(Native);
	State.bHasMinimizeButton = (Style & WS_MINIMIZEBOX) != 0;
	State.bHasMaximizeButton = (Style & WS_MAXIMIZEBOX) != 0;
	State.bHasCloseButton = (Style & WS_SYSMENU) != 0;
	State.Title = FromWide(WideText(Native));
	RECT Client;
	GetClientRect(Native, &Client);
	MapWindowPoints(Native, nullptr, reinterpret_cast<POINT*>(&Client), 2);
	State.Geometry = ToLogical(Client);
	const FSlateTestSize Size{State.Geometry.Width, State.Geometry.Height};
	// A window without a sizing frame keeps its size.
	const bool bSizable = (Style & WS_THICKFRAME) != 0;
	State.MinimumSize = bSizable ? FSlateTestSize{0, 0} : Size;
	State.MaximumSize = bSizable ? FSlateTestSize{16777215, 16777215} : Size;
	const SIZE Preferred = PreferredWindowSize(Native);
	RECT Frame{0, 0, 0, 0};
	AdjustWindowRectEx(&Frame, static_cast<DWORD>(Style), GetMenu(Native) != nullptr, static_cast<DWORD>(GetWindowLongW(Native, GWL_EXSTYLE)));
	State.PreferredSize = {Logical(Preferred.cx - (Frame.right - Frame.left)), Logical(Preferred.cy - (Frame.bottom - Frame.top))};
	return State;
}

bool SlateTest::PressCloseButton(SWindow& Window)
{
	HWND Native = Drawn(Window);
	// What the title bar's button sends.
	SendMessageW(Native, WM_SYSCOMMAND, SC_CLOSE, 0);
	Pump();
	return !IsWindow(Native) || !IsWindowVisible(Native);
}

FSlateTestRect SlateTest::GetScreenWorkArea()
{
	RECT Area{};
	SystemParametersInfoW(SPI_GETWORKAREA, 0, &Area, 0);
	return ToLogical(Area);
}

FSlateScreenshot SlateTest::TakeScreenshot(const SWidget& Widget)
{
	return Capture(Drawn(Widget));
}

FSlateScreenshot SlateTest::TakeWindowScreenshot(const SWidget& Widget)
{
	return Capture(TopOf(Drawn(Widget)));
}

float SlateTest::GetScreenScale()
{
	return GetScale();
}

bool SlateTest::WriteSolidPng(const FString& Path, int32 Width, int32 Height, uint32 Colour)
{
	const std::vector<uint32> Pixels(static_cast<size_t>(std::max(0, Width)) * std::max(0, Height), Colour);
	return SavePng(Path, Width, Height, Pixels.data());
}

struct FSlateListWatch::FState
{
	TWeakPtr<SWidget> List;
	std::shared_ptr<int32> Inserted = std::make_shared<int32>(0);
	std::shared_ptr<int32> Resets = std::make_shared<int32>(0);
};

FSlateListWatch::FSlateListWatch(const STableViewBase& List) : State(std::make_unique<FState>())
{
	State->List = const_cast<STableViewBase&>(List).AsShared();
	Drawn(List);
	WatchListRows(List,
				  [Inserted = State->Inserted, Resets = State->Resets](bool bAppendOnly)
				  {
					  ++*(bAppendOnly ? Inserted : Resets);
				  });
}

FSlateListWatch::~FSlateListWatch()
{
	if (TSharedPtr<SWidget> List = State->List.Pin())
	{
		WatchListRows(static_cast<const STableViewBase&>(*List), nullptr);
	}
}

int32 FSlateListWatch::GetRowsInserted() const
{
	return *State->Inserted;
}

int32 FSlateListWatch::GetResets() const
{
	return *State->Resets;
}

struct FSlateTestWindow::FState
{
	HWND Window = nullptr;
};

FSlateTestWindow::FSlateTestWindow(const TSharedRef<SWidget>& InContent, int32 Width, int32 Height, bool bMargins)
	: Content(InContent), State(std::make_unique<FState>())
{
	State->Window = MakeTopLevel(TEXT("Tessel test"), WS_OVERLAPPEDWINDOW, nullptr);
	check(State->Window);
	// The margins a window's layout keeps on the other backend.
	AddRoot(State->Window, Content, bMargins ? FMargin(9) : FMargin(0), false);
	Resize(Width, Height);
	SetWindowPos(State->Window, HWND_TOP, 0, 0, 0, 0, SWP_NOSIZE);
	ShowWindow(State->Window, SW_SHOW);
	SetForegroundWindow(State->Window);
	LayoutRoot(State->Window);
	SlateTest::TickFrames();
}

FSlateTestWindow::~FSlateTestWindow()
{
	RemoveRoot(State->Window);
	if (IsWindow(State->Window))
	{
		DestroyWindow(State->Window);
	}
	Pump();
}

void FSlateTestWindow::Resize(int32 Width, int32 Height)
{
	const float Scale = GetScale();
	RECT Frame{0, 0, static_cast<LONG>(std::lround(Width * Scale)), static_cast<LONG>(std::lround(Height * Scale))};
	AdjustWindowRectEx(&Frame, static_cast<DWORD>(StyleOf(State->Window)), FALSE, static_cast<DWORD>(GetWindowLongW(State->Window, GWL_EXSTYLE)));
	SetWindowPos(State->Window, nullptr, 0, 0, Frame.right - Frame.left, Frame.bottom - Frame.top, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
	LayoutRoot(State->Window);
}

void FSlateTestWindow::Activate()
{
	SetForegroundWindow(State->Window);
	SetActiveWindow(State->Window);
	Pump();
}

FSlateScreenshot FSlateTestWindow::TakeScreenshot() const
{
	return Capture(State->Window);
}

float FSlateTestWindow::GetScale() const
{
	return SlateWin32::GetScale();
}
