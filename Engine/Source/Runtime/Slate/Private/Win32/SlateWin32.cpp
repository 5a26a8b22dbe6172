#include "SlateWin32.h"

#include "Framework/Application/SlateApplication.h"

#include <commctrl.h>
#include <objbase.h>
#include <wincodec.h>

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <vector>

namespace
{
	constexpr const wchar_t* PanelClass = L"TesselPanel";
	constexpr const wchar_t* TopLevelClass = L"TesselWindow";
	constexpr UINT RunPostedMessage = WM_APP + 1;

	struct FRoot
	{
		HWND Window = nullptr;
		TWeakPtr<SWidget> Content;
		FMargin Margin;
		bool bContentIsWindow = false;
	};

	struct FBackendState
	{
		HWND Parking = nullptr;
		std::vector<FRoot> Roots;
		std::vector<HWND> PendingDestroy;
		std::vector<std::function<void()>> Posted;
		HDC MeasureContext = nullptr;
		HFONT Fonts[2][3] = {};
		float Scale = 0.0f;
		// The layout pass now running (0: none); sizes measured in it are kept until it ends.
		uint64 Pass = 0;
		uint64 LastPass = 0;
	};

	FBackendState& State()
	{
		static FBackendState Instance;
		return Instance;
	}

	// Each window's node, found without asking the system: a window's properties live in Wine's server, and the
	// layout looks up every node many times a frame.
	std::unordered_map<HWND, FWin32Node*>& Nodes()
	{
		static std::unordered_map<HWND, FWin32Node*> Instance;
		return Instance;
	}

	void AttachNode(HWND Window)
	{
		Nodes()[Window] = new FWin32Node();
	}

	// Messages our panels get from the controls in them go on to the control's own node: a button's click, an
	// edit box's change, a label's colours.
	bool ForwardToChild(UINT Message, WPARAM WParam, LPARAM LParam, LRESULT& Result)
	{
		if (Message == WM_DRAWITEM && LParam)
		{
			const DRAWITEMSTRUCT& Item = *reinterpret_cast<const DRAWITEMSTRUCT*>(LParam);
			if (FWin32Node* Node = SlateWin32::NodeOf(Item.hwndItem); Node && Node->DrawItem)
			{
				Node->DrawItem(Item);
				Result = TRUE;
				return true;
			}
		}
		if (Message == WM_COMMAND && LParam)
		{
			if (FWin32Node* Node = SlateWin32::NodeOf(reinterpret_cast<HWND>(LParam)); Node && Node->OnCommand)
			{
				Node->OnCommand(HIWORD(WParam));
				Result = 0;
				return true;
			}
		}
		if (Message == WM_CTLCOLORSTATIC || Message == WM_CTLCOLORBTN)
		{
			HDC Context = reinterpret_cast<HDC>(WParam);
			FWin32Node* Node = SlateWin32::NodeOf(reinterpret_cast<HWND>(LParam));
			SetBkMode(Context, TRANSPARENT);
			if (Node && Node->TextColour != CLR_INVALID)
			{
				SetTextColor(Context, Node->TextColour);
			}
			Result = reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_BTNFACE));
			return true;
		}
		return false;
	}

	bool RunNode(HWND Window, UINT Message, WPARAM WParam, LPARAM LParam, LRESULT& Result)
	{
		FWin32Node* Node = SlateWin32::NodeOf(Window);
		if (Node && Node->OnMessage && Node->OnMessage(Message, WParam, LParam, Result))
		{
			return true;
		}
		if (Message == WM_PAINT && Node && Node->Paint)
		{
			PAINTSTRUCT Paint;
			HDC Context = BeginPaint(Window, &Paint);
			RECT Area;
			GetClientRect(Window, &Area);
			Node->Paint(Context, Area);
			EndPaint(Window, &Paint);
			Result = 0;
			return true;
		}
		return ForwardToChild(Message, WParam, LParam, Result);
	}

	void ForgetNode(HWND Window)
	{
		if (FWin32Node* Node = SlateWin32::NodeOf(Window))
		{
			*Node->Alive = false;
			Nodes().erase(Window);
			delete Node;
		}
	}

	LRESULT CALLBACK PanelProc(HWND Window, UINT Message, WPARAM WParam, LPARAM LParam)
	{
		LRESULT Result = 0;
		if (Message == WM_NCDESTROY)
		{
			ForgetNode(Window);
		}
		else if (RunNode(Window, Message, WParam, LParam, Result))
		{
			return Result;
		}
		return DefWindowProcW(Window, Message, WParam, LParam);
	}

	LRESULT CALLBACK TopLevelProc(HWND Window, UINT Message, WPARAM WParam, LPARAM LParam)
	{
		LRESULT Result = 0;
		switch (Message)
		{
		case WM_NCDESTROY:
			SlateWin32::RemoveRoot(Window);
			ForgetNode(Window);
			break;
		case WM_SIZE:
			RunNode(Window, Message, WParam, LParam, Result);
			SlateWin32::LayoutRoot(Window);
			return 0;
		default:
			if (RunNode(Window, Message, WParam, LParam, Result))
			{
				return Result;
			}
		}
		return DefWindowProcW(Window, Message, WParam, LParam);
	}

	// The system's controls get their node's handlers too, and leave their node behind with them.
	LRESULT CALLBACK ControlProc(HWND Window, UINT Message, WPARAM WParam, LPARAM LParam, UINT_PTR, DWORD_PTR)
	{
		LRESULT Result = 0;
		if (Message == WM_NCDESTROY)
		{
			RemoveWindowSubclass(Window, ControlProc, 1);
			ForgetNode(Window);
			return DefSubclassProc(Window, Message, WParam, LParam);
		}
		if (RunNode(Window, Message, WParam, LParam, Result))
		{
			return Result;
		}
		return DefSubclassProc(Window, Message, WParam, LParam);
	}

	void RegisterClasses()
	{
		WNDCLASSEXW Class{};
		Class.cbSize = sizeof(Class);
		Class.hInstance = GetModuleHandleW(nullptr);
		Class.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512)); // the arrow
		Class.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
		Class.lpfnWndProc = PanelProc;
		Class.lpszClassName = PanelClass;
		RegisterClassExW(&Class);
		Class.lpfnWndProc = TopLevelProc;
		Class.lpszClassName = TopLevelClass;
		Class.hIcon = LoadIconW(nullptr, MAKEINTRESOURCEW(32512));
		RegisterClassExW(&Class);
	}

	HWND Parking()
	{
		FBackendState& Backend = State();
		if (!Backend.Parking)
		{
			RegisterClasses();
			Backend.Parking = CreateWindowExW(0, PanelClass, L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
		}
		return Backend.Parking;
	}

	bool FaceExists(const wchar_t* Face)
	{
		LOGFONTW Wanted{};
		Wanted.lfCharSet = DEFAULT_CHARSET;
		wcsncpy(Wanted.lfFaceName, Face, LF_FACESIZE - 1);
		bool bFound = false;
		HDC Screen = GetDC(nullptr);
		EnumFontFamiliesExW(
			Screen, &Wanted, [](const LOGFONTW*, const TEXTMETRICW*, DWORD, LPARAM Found) -> int
			{
				*reinterpret_cast<bool*>(Found) = true;
				return 0;
			},
			reinterpret_cast<LPARAM>(&bFound), 0);
		ReleaseDC(nullptr, Screen);
		return bFound;
	}

	void Place(HWND Window, HWND Parent, int X, int Y, int Width, int Height, bool bShow)
	{
		FWin32Node* Node = SlateWin32::NodeOf(Window);
		if (GetParent(Window) != Parent)
		{
			SetParent(Window, Parent);
			// Last among its siblings: the layout parents children in their order, and Tab walks the windows in
			// that order (a new child would otherwise stand first).
			SetWindowPos(Window, HWND_BOTTOM, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
			if (Node)
			{
				Node->LastPlace = RECT{-1, -1, -1, -1};
			}
		}
		const RECT Wanted{X, Y, X + Width, Y + Height};
		if (Node && !EqualRect(&Node->LastPlace, &Wanted))
		{
			Node->LastPlace = Wanted;
			SetWindowPos(Window, nullptr, X, Y, Width, Height, SWP_NOZORDER | SWP_NOACTIVATE);
			InvalidateRect(Window, nullptr, TRUE);
		}
		if (Node)
		{
			if (Node->LastWidth != static_cast<float>(Width))
			{
				// Text that wraps at its width is measured anew.
				Node->MeasuredInPass = 0;
			}
			Node->LastWidth = static_cast<float>(Width);
			Node->bPlaced = true;
		}
		// Its own flag, not whether it shows: a window in a hidden parent keeps its flag and is left alone.
		if (((GetWindowLongW(Window, GWL_STYLE) & WS_VISIBLE) != 0) != bShow)
		{
			ShowWindow(Window, bShow ? SW_SHOWNA : SW_HIDE);
		}
	}

	// Places the children of Widget inside its window, and theirs in turn; windows of children that are no longer
	// in the tree (or collapsed) are hidden.
	void ArrangeTree(SWidget& Widget, HWND Window, float Scale)
	{
		RECT Client;
		GetClientRect(Window, &Client);
		TArray<FSlateArrangedChild> Children;
		Widget.ArrangeChildren(static_cast<float>(Client.right), static_cast<float>(Client.bottom), Scale, Children);
		std::vector<HWND> Placed;
		for (const FSlateArrangedChild& Child : Children)
		{
			HWND ChildWindow = SlateWin32::GetHwnd(*Child.Widget);
			if (!ChildWindow)
			{
				continue;
			}
			const int X = static_cast<int>(std::lround(Child.X));
			int Y = static_cast<int>(std::lround(Child.Y));
			const int Width = std::max(0, static_cast<int>(std::lround(Child.X + Child.Width)) - X);
			int Height = std::max(0, static_cast<int>(std::lround(Child.Y + Child.Height)) - Y);
			FWin32Node* Node = SlateWin32::NodeOf(ChildWindow);
			if (Node)
			{
				const int SlotLeft = static_cast<int>(std::lround(Child.SlotX));
				const int SlotTop = static_cast<int>(std::lround(Child.SlotY));
				Node->SlotPlace = RECT{SlotLeft, SlotTop, static_cast<int>(std::lround(Child.SlotX + Child.SlotWidth)),
									   static_cast<int>(std::lround(Child.SlotY + Child.SlotHeight))};
			}
			if (Node && Node->bFixedHeight)
			{
				const int Own = static_cast<int>(std::lround(Child.Widget->ComputeDesiredSize(Scale).Height));
				Y += std::max(0, (Height - Own) / 2);
				Height = std::min(Height, Own);
			}
			Place(ChildWindow, Window, X, Y, Width, Height, Child.Widget->GetVisibility() == EVisibility::Visible);
			Placed.push_back(ChildWindow);
			ArrangeTree(*Child.Widget, ChildWindow, Scale);
		}
		// Walking the window's children would ask the system for each; the layout knows what it placed before.
		FWin32Node* Own = SlateWin32::NodeOf(Window);
		if (!Own)
		{
			return;
		}
		for (HWND Each : Own->PlacedChildren)
		{
			FWin32Node* Node = SlateWin32::NodeOf(Each);
			if (Node && std::find(Placed.begin(), Placed.end(), Each) == Placed.end() && GetParent(Each) == Window &&
				(GetWindowLongW(Each, GWL_STYLE) & WS_VISIBLE) != 0)
			{
				ShowWindow(Each, SW_HIDE);
				Node->SlotPlace = RECT{0, 0, 0, 0};
			}
		}
		Own->PlacedChildren = std::move(Placed);
	}
}

HWND SlateWin32::GetHwnd(SWidget& Widget)
{
	return ToHwnd(Widget.GetNativeWidget());
}

HWND SlateWin32::FindHwnd(const SWidget& Widget)
{
	return ToHwnd(Widget.GetNativeWidgetIfMade());
}

FWin32Node* SlateWin32::NodeOf(HWND Window)
{
	if (!Window)
	{
		return nullptr;
	}
	const auto Found = Nodes().find(Window);
	return Found != Nodes().end() ? Found->second : nullptr;
}

HWND SlateWin32::MakeControl(const wchar_t* ClassName, const FString& Text, DWORD Style, DWORD ExStyle)
{
	HWND Window = CreateWindowExW(ExStyle, ClassName, Wide(Text).c_str(), WS_CHILD | WS_CLIPSIBLINGS | Style, 0, 0, 0, 0,
								  Parking(), nullptr, GetModuleHandleW(nullptr), nullptr);
	if (!Window)
	{
		return nullptr;
	}
	AttachNode(Window);
	if (wcscmp(ClassName, PanelClass) != 0)
	{
		SetWindowSubclass(Window, ControlProc, 1, 0);
	}
	SendMessageW(Window, WM_SETFONT, reinterpret_cast<WPARAM>(GetFont()), FALSE);
	return Window;
}

HWND SlateWin32::MakePanel(DWORD Style, DWORD ExStyle)
{
	return MakeControl(PanelClass, FString(), WS_CLIPCHILDREN | Style, WS_EX_CONTROLPARENT | ExStyle);
}

HWND SlateWin32::MakeTopLevel(const FString& Title, DWORD Style, HWND Owner)
{
	Parking();
	HWND Window = CreateWindowExW(WS_EX_CONTROLPARENT, TopLevelClass, Wide(Title).c_str(), Style | WS_CLIPCHILDREN, CW_USEDEFAULT,
								  CW_USEDEFAULT, 400, 300, Owner, nullptr, GetModuleHandleW(nullptr), nullptr);
	if (Window)
	{
		AttachNode(Window);
	}
	return Window;
}

float SlateWin32::GetScale()
{
	FBackendState& Backend = State();
	if (Backend.Scale <= 0.0f)
	{
		HDC Screen = GetDC(nullptr);
		Backend.Scale = std::max(1, GetDeviceCaps(Screen, LOGPIXELSY)) / 96.0f;
		ReleaseDC(nullptr, Screen);
	}
	return Backend.Scale;
}

HFONT SlateWin32::GetFont(bool bBold, float SizeFactor)
{
	const int Size = SizeFactor > 1.0f ? 1 : 0;
	HFONT& Font = State().Fonts[bBold ? 1 : 0][Size];
	if (!Font)
	{
		LOGFONTW Face{};
		NONCLIENTMETRICSW Metrics{};
		Metrics.cbSize = sizeof(Metrics);
		if (SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(Metrics), &Metrics, 0))
		{
			Face = Metrics.lfMessageFont;
		}
		if (FaceExists(L"Roboto"))
		{
			wcscpy(Face.lfFaceName, L"Roboto");
		}
		Face.lfHeight = -static_cast<LONG>(std::lround(9.0 * SizeFactor * 96.0 * GetScale() / 72.0));
		Face.lfWidth = 0;
		Face.lfWeight = bBold ? FW_BOLD : FW_NORMAL;
		Face.lfQuality = CLEARTYPE_QUALITY;
		Font = CreateFontIndirectW(&Face);
	}
	return Font;
}

FSlateLayoutSize SlateWin32::MeasureText(const FString& Text, HFONT Font, int Width)
{
	FBackendState& Backend = State();
	if (!Backend.MeasureContext)
	{
		Backend.MeasureContext = CreateCompatibleDC(nullptr);
	}
	HGDIOBJ Former = SelectObject(Backend.MeasureContext, Font);
	std::wstring Shown = Wide(Text);
	RECT Area{0, 0, Width > 0 ? Width : 0, 0};
	UINT Flags = DT_CALCRECT | DT_NOPREFIX | DT_EXPANDTABS;
	Flags |= Width > 0 ? DT_WORDBREAK | DT_EDITCONTROL : DT_SINGLELINE;
	if (Shown.empty())
	{
		Shown = L" ";
		DrawTextW(Backend.MeasureContext, Shown.c_str(), -1, &Area, Flags);
		Area.right = 0;
	}
	else
	{
		DrawTextW(Backend.MeasureContext, Shown.c_str(), static_cast<int>(Shown.size()), &Area, Flags);
	}
	SelectObject(Backend.MeasureContext, Former);
	return {static_cast<float>(Area.right - Area.left), static_cast<float>(Area.bottom - Area.top)};
}

int SlateWin32::AverageCharWidth(HFONT Font)
{
	FBackendState& Backend = State();
	if (!Backend.MeasureContext)
	{
		Backend.MeasureContext = CreateCompatibleDC(nullptr);
	}
	HGDIOBJ Former = SelectObject(Backend.MeasureContext, Font);
	TEXTMETRICW Metrics{};
	GetTextMetricsW(Backend.MeasureContext, &Metrics);
	SelectObject(Backend.MeasureContext, Former);
	return std::max<int>(1, Metrics.tmAveCharWidth);
}

std::wstring SlateWin32::Wide(const FString& Text)
{
	return std::wstring(WindowsApi::Wide(*Text), static_cast<size_t>(Text.Len()));
}

FString SlateWin32::FromWide(const std::wstring& Text)
{
	return FString(WindowsApi::Ours(Text.c_str()), static_cast<int32>(Text.size()));
}

FString SlateWin32::GetWindowTextOf(HWND Window)
{
	std::wstring Text(static_cast<size_t>(GetWindowTextLengthW(Window)) + 1, L'\0');
	Text.resize(static_cast<size_t>(GetWindowTextW(Window, Text.data(), static_cast<int>(Text.size()))));
	return FromWide(Text);
}

void SlateWin32::AddRoot(HWND Window, const TSharedRef<SWidget>& Content, const FMargin& Margin, bool bContentIsWindow)
{
	RemoveRoot(Window);
	State().Roots.push_back({Window, Content, Margin, bContentIsWindow});
}

void SlateWin32::RemoveRoot(HWND Window)
{
	std::vector<FRoot>& Roots = State().Roots;
	Roots.erase(std::remove_if(Roots.begin(), Roots.end(), [Window](const FRoot& Root) { return Root.Window == Window; }), Roots.end());
}

void SlateWin32::LayoutRoot(HWND Window)
{
	// A pass inside a pass (a window made while laying out) stays in the outer one.
	FBackendState& Backend = State();
	const bool bOuter = Backend.Pass == 0;
	if (bOuter)
	{
		Backend.Pass = ++Backend.LastPass;
	}
	struct FEndPass
	{
		bool bOuter;
		~FEndPass()
		{
			if (bOuter)
			{
				State().Pass = 0;
			}
		}
	} EndPass{bOuter};
	const float Scale = GetScale();
	// A copy: laying out may make windows, and a handler may add roots.
	const std::vector<FRoot> Roots = State().Roots;
	for (const FRoot& Root : Roots)
	{
		TSharedPtr<SWidget> Content = Root.Content.Pin();
		if (Root.Window != Window || !Content || !IsWindow(Window))
		{
			continue;
		}
		if (Root.bContentIsWindow)
		{
			ArrangeTree(*Content, Window, Scale);
			continue;
		}
		RECT Client;
		GetClientRect(Window, &Client);
		HWND ContentWindow = GetHwnd(*Content);
		const int Left = static_cast<int>(Root.Margin.Left * Scale);
		const int Top = static_cast<int>(Root.Margin.Top * Scale);
		Place(ContentWindow, Window, Left, Top, std::max(0, static_cast<int>(Client.right - Left - Root.Margin.Right * Scale)),
			  std::max(0, static_cast<int>(Client.bottom - Top - Root.Margin.Bottom * Scale)), true);
		ArrangeTree(*Content, ContentWindow, Scale);
	}
}

void SlateWin32::LayoutAll()
{
	std::vector<HWND> Windows;
	for (const FRoot& Root : State().Roots)
	{
		Windows.push_back(Root.Window);
	}
	for (HWND Window : Windows)
	{
		if (IsWindowVisible(Window))
		{
			LayoutRoot(Window);
		}
	}
}

SIZE SlateWin32::PreferredWindowSize(HWND Window)
{
	const float Scale = GetScale();
	for (const FRoot& Root : State().Roots)
	{
		TSharedPtr<SWidget> Content = Root.Content.Pin();
		if (Root.Window != Window || !Content)
		{
			continue;
		}
		const FSlateLayoutSize Desired = Content->ComputeDesiredSize(Scale);
		RECT Frame{0, 0, static_cast<LONG>(std::ceil(Desired.Width + (Root.Margin.Left + Root.Margin.Right) * Scale)),
				   static_cast<LONG>(std::ceil(Desired.Height + (Root.Margin.Top + Root.Margin.Bottom) * Scale))};
		AdjustWindowRectEx(&Frame, static_cast<DWORD>(GetWindowLongW(Window, GWL_STYLE)), GetMenu(Window) != nullptr,
						   static_cast<DWORD>(GetWindowLongW(Window, GWL_EXSTYLE)));
		return SIZE{Frame.right - Frame.left, Frame.bottom - Frame.top};
	}
	return SIZE{0, 0};
}

void SlateWin32::DestroySoon(HWND Window)
{
	if (Window && IsWindow(Window))
	{
		ShowWindow(Window, SW_HIDE);
		// Out of its parent at once, so that its parent's next layout does not find it.
		SetParent(Window, Parking());
		State().PendingDestroy.push_back(Window);
	}
}

void SlateWin32::DestroyPending()
{
	std::vector<HWND> Pending;
	Pending.swap(State().PendingDestroy);
	for (HWND Window : Pending)
	{
		if (IsWindow(Window))
		{
			DestroyWindow(Window);
		}
	}
}

void SlateWin32::Post(std::function<void()> Work)
{
	State().Posted.push_back(std::move(Work));
	PostMessageW(Parking(), RunPostedMessage, 0, 0);
}

void SlateWin32::PumpMessages()
{
	MSG Message;
	// Work posted while posted work runs waits for the next turn, after the next layout.
	bool bRanPosted = false;
	while (PeekMessageW(&Message, nullptr, 0, 0, PM_REMOVE))
	{
		if (Message.message == RunPostedMessage && Message.hwnd == State().Parking)
		{
			if (bRanPosted)
			{
				continue;
			}
			bRanPosted = true;
			std::vector<std::function<void()>> Work;
			Work.swap(State().Posted);
			for (std::function<void()>& Each : Work)
			{
				Each();
			}
			continue;
		}
		// Keys go through the dialog keys of the top-level window they are for: Tab walks the controls,
		// Return and Escape reach the window as its OK and Cancel.
		if (Message.message >= WM_KEYFIRST && Message.message <= WM_KEYLAST && Message.hwnd)
		{
			HWND Top = GetAncestor(Message.hwnd, GA_ROOT);
			wchar_t ClassName[32] = {};
			GetClassNameW(Top, ClassName, 32);
			if (wcscmp(ClassName, TopLevelClass) == 0 && IsDialogMessageW(Top, &Message))
			{
				continue;
			}
		}
		TranslateMessage(&Message);
		DispatchMessageW(&Message);
	}
	if (!State().Posted.empty())
	{
		PostMessageW(State().Parking, RunPostedMessage, 0, 0);
	}
}

bool SlateWin32::CapturePixels(HWND Window, int& OutWidth, int& OutHeight, std::vector<uint32>& OutPixels)
{
	RECT Client;
	GetClientRect(Window, &Client);
	POINT Origin{0, 0};
	ClientToScreen(Window, &Origin);
	OutWidth = Client.right;
	OutHeight = Client.bottom;
	OutPixels.clear();
	if (OutWidth <= 0 || OutHeight <= 0)
	{
		return false;
	}
	HDC Screen = GetDC(nullptr);
	HDC Memory = CreateCompatibleDC(Screen);
	BITMAPINFO Info{};
	Info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
	Info.bmiHeader.biWidth = OutWidth;
	Info.bmiHeader.biHeight = -OutHeight;
	Info.bmiHeader.biPlanes = 1;
	Info.bmiHeader.biBitCount = 32;
	Info.bmiHeader.biCompression = BI_RGB;
	void* Bits = nullptr;
	HBITMAP Bitmap = CreateDIBSection(Screen, &Info, DIB_RGB_COLORS, &Bits, nullptr, 0);
	bool bCopied = false;
	if (Bitmap)
	{
		HGDIOBJ Former = SelectObject(Memory, Bitmap);
		bCopied = BitBlt(Memory, 0, 0, OutWidth, OutHeight, Screen, Origin.x, Origin.y, SRCCOPY) != FALSE;
		SelectObject(Memory, Former);
		const uint32* Pixels = static_cast<const uint32*>(Bits);
		OutPixels.reserve(static_cast<size_t>(OutWidth) * OutHeight);
		for (size_t Index = 0; Index < static_cast<size_t>(OutWidth) * OutHeight; ++Index)
		{
			// The screen has no alpha: every pixel is opaque.
			OutPixels.push_back(Pixels[Index] | 0xFF000000u);
		}
		DeleteObject(Bitmap);
	}
	DeleteDC(Memory);
	ReleaseDC(nullptr, Screen);
	return bCopied;
}

bool SlateWin32::SavePng(const FString& Path, int Width, int Height, const uint32* Pixels)
{
	if (Width <= 0 || Height <= 0 || !Pixels)
	{
		return false;
	}
	bool bSaved = false;
	IWICImagingFactory* Factory = nullptr;
	IWICStream* Stream = nullptr;
	IWICBitmapEncoder* Encoder = nullptr;
	IWICBitmapFrameEncode* Frame = nullptr;
	WICPixelFormatGUID Format = GUID_WICPixelFormat32bppBGRA;
	const UINT Stride = static_cast<UINT>(Width) * 4;
	if (SUCCEEDED(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&Factory))) &&
		SUCCEEDED(Factory->CreateStream(&Stream)) && SUCCEEDED(Stream->InitializeFromFilename(Wide(Path).c_str(), GENERIC_WRITE)) &&
		SUCCEEDED(Factory->CreateEncoder(GUID_ContainerFormatPng, nullptr, &Encoder)) &&
		SUCCEEDED(Encoder->Initialize(Stream, WICBitmapEncoderNoCache)) && SUCCEEDED(Encoder->CreateNewFrame(&Frame, nullptr)) &&
		SUCCEEDED(Frame->Initialize(nullptr)) && SUCCEEDED(Frame->SetSize(static_cast<UINT>(Width), static_cast<UINT>(Height))) &&
		SUCCEEDED(Frame->SetPixelFormat(&Format)) && IsEqualGUID(Format, GUID_WICPixelFormat32bppBGRA) &&
		SUCCEEDED(Frame->WritePixels(static_cast<UINT>(Height), Stride, Stride * static_cast<UINT>(Height),
									 reinterpret_cast<BYTE*>(const_cast<uint32*>(Pixels)))) &&
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
	return bSaved;
}

// Widgets and their windows.
SWidget::SWidget() : Native(std::make_unique<FNativeWidgetGuard>())
{
	if (FSlateApplication::IsInitialized())
	{
		FSlateApplication::Get().RegisterWidget(this);
	}
}

SWidget::~SWidget()
{
	if (FSlateApplication::IsInitialized())
	{
		FSlateApplication::Get().UnregisterWidget(this);
	}
	if (HWND Window = SlateWin32::FindHwnd(*this))
	{
		if (FWin32Node* Node = SlateWin32::NodeOf(Window))
		{
			Node->Owner = nullptr;
		}
		// The window may be inside the very message that released this widget (a list whose selection handler
		// rebuilds the layout), so it goes only after the message has returned.
		SlateWin32::DestroySoon(Window);
	}
}

FNativeWidget* SWidget::GetNativeWidget()
{
	if (!GetNativeWidgetIfMade())
	{
		HWND Window = SlateWin32::ToHwnd(CreateNativeWidget());
		if (!Window)
		{
			return nullptr;
		}
		FWin32Node* Node = SlateWin32::NodeOf(Window);
		if (Node)
		{
			Node->Owner = this;
		}
		Native->Window = Window;
		Native->Alive = Node ? Node->Alive : nullptr;
		ApplyVisibilityAndEnabled();
	}
	return GetNativeWidgetIfMade();
}

FNativeWidget* SWidget::GetNativeWidgetIfMade() const
{
	return Native->Alive && *Native->Alive ? SlateWin32::ToNative(Native->Window) : nullptr;
}

void SWidget::SetNativeWidget(FNativeWidget* Widget)
{
	HWND Window = SlateWin32::ToHwnd(Widget);
	FWin32Node* Node = SlateWin32::NodeOf(Window);
	Native->Window = Window;
	Native->Alive = Node ? Node->Alive : nullptr;
	if (Node)
	{
		Node->Owner = this;
	}
}

void SWidget::SetTextKey(const FText& Text)
{
	TextKey = Text.GetKey();
}

void SWidget::ApplyVisibilityAndEnabled()
{
	HWND Window = SlateWin32::FindHwnd(*this);
	if (!Window)
	{
		return;
	}
	// Showing and hiding is the layout's: only a placed window may show.
	const bool bEnabled = IsEnabled();
	if ((IsWindowEnabled(Window) != FALSE) != bEnabled)
	{
		EnableWindow(Window, bEnabled);
	}
}

FSlateLayoutSize SWidget::MeasureNative(float Scale) const
{
	FWin32Node* Node = SlateWin32::NodeOf(SlateWin32::FindHwnd(*this));
	if (!Node || !Node->Measure)
	{
		return FSlateLayoutSize();
	}
	const uint64 Pass = State().Pass;
	if (Pass == 0)
	{
		return Node->Measure(Scale);
	}
	if (Node->MeasuredInPass != Pass)
	{
		Node->Measured = Node->Measure(Scale);
		Node->MeasuredInPass = Pass;
	}
	return Node->Measured;
}

// The application.
struct FSlateApplication::FNativeApplication
{
	bool bComInitialized = false;
};

FSlateApplication::FSlateApplication() : Native(std::make_unique<FNativeApplication>())
{
}

FSlateApplication::~FSlateApplication()
{
	if (Native->bComInitialized)
	{
		CoUninitialize();
	}
}

void FSlateApplication::StartNative(int&, char**)
{
	INITCOMMONCONTROLSEX Controls{sizeof(INITCOMMONCONTROLSEX), ICC_STANDARD_CLASSES | ICC_WIN95_CLASSES};
	InitCommonControlsEx(&Controls);
	// Pictures are decoded by the system's imaging components.
	Native->bComInitialized = SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
	// No window yet: a program that never shows a widget (TesselCmd) never needs a display.
}

void FSlateApplication::ProcessNativeEvents()
{
	SlateWin32::PumpMessages();
	FlushDeferredDeletes();
	SlateWin32::LayoutAll();
}

void FSlateApplication::FlushDeferredDeletes()
{
	SlateWin32::DestroyPending();
}
