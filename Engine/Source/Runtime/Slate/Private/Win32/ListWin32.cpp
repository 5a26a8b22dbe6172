// The list: a window of our own that paints only the rows in view, straight from the list's items, with its
// header and its own scroll bar. Rows arriving cost nothing but a count; the scroll bar is set at most once a
// frame, because under some systems (Wine) each update of it costs milliseconds.

#include "SlateWin32.h"

#include "Widgets/Text/STextBlock.h"
#include "Widgets/Views/STableViewBase.h"

#include <commctrl.h>
#include <windowsx.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>

using namespace SlateWin32;

struct STableViewBase::FNativeParts
{
	HWND Window = nullptr;
	std::shared_ptr<bool> Alive;
	int32 Rows = 0;
	// The first row in view, and the row the keys move from.
	int32 TopRow = 0;
	int32 CurrentRow = INDEX_NONE;
	bool bScrollBarStale = true;
	bool bScrollBarPutOff = false;
	ULONGLONG ScrollBarSetAt = 0;
	// The tooltip that shows a row cut short whole, made at the first hover, and the row it shows.
	HWND ToolTip = nullptr;
	int32 ToolTipRow = INDEX_NONE;
	bool bHoverTracked = false;
	std::function<void(bool bAppendOnly)> Watch;
	// Rows pouring in repaint the list at most once per frame of the screen; the user's own actions at once.
	bool bPaintPending = false;
	std::chrono::steady_clock::time_point PaintedAt;
	// The picture the rows are drawn into before they reach the screen, kept while the list keeps its size.
	HBITMAP BackBuffer = nullptr;
	SIZE BackBufferSize{0, 0};
	LONG HeaderPlacedWidth = -1;

	~FNativeParts()
	{
		if (BackBuffer)
		{
			DeleteObject(BackBuffer);
		}
	}
	bool IsAlive() const { return Alive && *Alive; }
};

namespace
{
	int RowHeight(const STableViewBase& List) { return std::max(1, static_cast<int>(std::lround(List.GetItemHeight() * GetScale()))); }

	int HeaderHeight(const STableViewBase& List)
	{
		return List.GetHeaderRow() ? static_cast<int>(MeasureText(TEXT("Ag"), GetFont(true)).Height + 6 * GetScale()) : 0;
	}

	int RowsInView(const STableViewBase& List, HWND Window)
	{
		RECT Client;
		GetClientRect(Window, &Client);
		return std::max(0, static_cast<int>(Client.bottom - HeaderHeight(List)) / RowHeight(List));
	}

	// The lists that hear a handler rebuild the layout over the same items: the keys go on in the new one.
	std::vector<HWND>& Lists()
	{
		static std::vector<HWND> All;
		return All;
	}
}

// The list's side that the window calls; a class of its own so that it reaches the list's protected parts.
class FListWindowWin32
{
public:
	static STableViewBase* Owner(HWND Window)
	{
		FWin32Node* Node = NodeOf(Window);
		return Node ? static_cast<STableViewBase*>(Node->Owner) : nullptr;
	}

	static void ClampTop(STableViewBase& List, HWND Window)
	{
		STableViewBase::FNativeParts& Parts = *List.Parts;
		Parts.TopRow = std::clamp(Parts.TopRow, 0, std::max(0, Parts.Rows - RowsInView(List, Window)));
	}

	// A repaint now (the user's scrolling, keys and clicks), or with the next frame of the screen (rows arriving).
	static void Repaint(STableViewBase& List, HWND Window, bool bNow)
	{
		if (bNow)
		{
			List.Parts->bPaintPending = false;
			InvalidateRect(Window, nullptr, FALSE);
		}
		else
		{
			List.Parts->bPaintPending = true;
		}
	}

	// True when the list paints with this frame.
	static bool PaintIfDue(STableViewBase& List, HWND Window)
	{
		STableViewBase::FNativeParts& Parts = *List.Parts;
		if (Parts.bPaintPending && std::chrono::steady_clock::now() - Parts.PaintedAt >= std::chrono::milliseconds(16))
		{
			Repaint(List, Window, true);
			return true;
		}
		return false;
	}

	static void ScrollTo(STableViewBase& List, HWND Window, int32 Top, bool bNow = true)
	{
		List.Parts->TopRow = Top;
		ClampTop(List, Window);
		List.Parts->bScrollBarStale = true;
		Repaint(List, Window, bNow);
	}

	static void EnsureVisible(STableViewBase& List, HWND Window, int32 Row, bool bNow = true)
	{
		STableViewBase::FNativeParts& Parts = *List.Parts;
		const int32 InView = std::max(1, RowsInView(List, Window));
		if (Row < Parts.TopRow)
		{
			ScrollTo(List, Window, Row, bNow);
		}
		else if (Row >= Parts.TopRow + InView)
		{
			ScrollTo(List, Window, Row - InView + 1, bNow);
		}
	}

	// Rows pouring in move the scroll bar at most ten times a second, and not in the frame that paints the rows
	// unless the frame before painted too: under some systems (Wine) drawing the bar costs more than drawing the
	// rows. The user's own scrolling moves it at once.
	static void UpdateScrollBar(STableViewBase& List, HWND Window, bool bNow = true, bool bPainting = false)
	{
		STableViewBase::FNativeParts& Parts = *List.Parts;
		const ULONGLONG Now = GetTickCount64();
		if (!Parts.bScrollBarStale || (!bNow && Now - Parts.ScrollBarSetAt < 100))
		{
			return;
		}
		if (!bNow && bPainting && !Parts.bScrollBarPutOff)
		{
			Parts.bScrollBarPutOff = true;
			return;
		}
		Parts.bScrollBarPutOff = false;
		Parts.ScrollBarSetAt = Now;
		Parts.bScrollBarStale = false;
		ClampTop(List, Window);
		SCROLLINFO Info{sizeof(SCROLLINFO), SIF_RANGE | SIF_PAGE | SIF_POS | (List.IsScrollbarAlwaysVisible() ? SIF_DISABLENOSCROLL : 0u)};
		Info.nMin = 0;
		Info.nMax = std::max(0, Parts.Rows - 1);
		Info.nPage = static_cast<UINT>(RowsInView(List, Window));
		Info.nPos = Parts.TopRow;
		// Drawn again only when it looks different: a log growing at its end leaves the thumb where it was most of
		// the time, and drawing the bar costs milliseconds under Wine. A bar that is greyed out or hidden is set and
		// drawn in one go, since turning it on draws it anyway.
		SCROLLBARINFO Before{sizeof(SCROLLBARINFO)};
		SCROLLBARINFO After{sizeof(SCROLLBARINFO)};
		if (!GetScrollBarInfo(Window, OBJID_VSCROLL, &Before) || (Before.rgstate[0] & (STATE_SYSTEM_UNAVAILABLE | STATE_SYSTEM_INVISIBLE)))
		{
			SetScrollInfo(Window, SB_VERT, &Info, TRUE);
			return;
		}
		SetScrollInfo(Window, SB_VERT, &Info, FALSE);
		if (!GetScrollBarInfo(Window, OBJID_VSCROLL, &After) || Before.xyThumbTop != After.xyThumbTop ||
			Before.xyThumbBottom != After.xyThumbBottom || !EqualRect(&Before.rcScrollBar, &After.rcScrollBar) ||
			std::memcmp(Before.rgstate, After.rgstate, sizeof(Before.rgstate)) != 0)
		{
			SetScrollInfo(Window, SB_VERT, &Info, TRUE);
		}
	}

	static void Paint(STableViewBase& List, HWND Window, HDC Target, const RECT& Area)
	{
		// Drawn off screen and copied at once, so that rows arriving many times a second do not flicker.
		STableViewBase::FNativeParts& Parts = *List.Parts;
		Parts.PaintedAt = std::chrono::steady_clock::now();
		const SIZE Needed{std::max<LONG>(1, Area.right), std::max<LONG>(1, Area.bottom)};
		if (!Parts.BackBuffer || Parts.BackBufferSize.cx != Needed.cx || Parts.BackBufferSize.cy != Needed.cy)
		{
			if (Parts.BackBuffer)
			{
				DeleteObject(Parts.BackBuffer);
			}
			Parts.BackBuffer = CreateCompatibleBitmap(Target, Needed.cx, Needed.cy);
			Parts.BackBufferSize = Needed;
		}
		HDC Context = CreateCompatibleDC(Target);
		HGDIOBJ FormerBitmap = SelectObject(Context, Parts.BackBuffer);
		FillRect(Context, &Area, GetSysColorBrush(COLOR_WINDOW));
		SetBkMode(Context, TRANSPARENT);
		const float Scale = GetScale();
		const int Header = HeaderHeight(List);
		if (Header > 0)
		{
			// The band; the column labels are windows of their own over it (see PlaceHeaderLabels).
			RECT Band{0, 0, Area.right, Header};
			FillRect(Context, &Band, GetSysColorBrush(COLOR_BTNFACE));
			DrawEdge(Context, &Band, EDGE_RAISED, BF_BOTTOM);
		}
		HGDIOBJ Former = SelectObject(Context, GetFont());
		const int Height = RowHeight(List);
		const int32 Selected = List.SelectedIndex();
		const bool bFocused = GetFocus() == Window;
		for (int32 Row = List.Parts->TopRow; Row < List.Parts->Rows; ++Row)
		{
			const int Top = Header + (Row - List.Parts->TopRow) * Height;
			if (Top >= Area.bottom)
			{
				break;
			}
			RECT Cell{0, Top, Area.right, Top + Height};
			const bool bSelected = Row == Selected;
			if (bSelected)
			{
				FillRect(Context, &Cell, GetSysColorBrush(bFocused ? COLOR_HIGHLIGHT : COLOR_BTNFACE));
			}
			SetTextColor(Context, GetSysColor(bSelected && bFocused ? COLOR_HIGHLIGHTTEXT : COLOR_WINDOWTEXT));
			RECT Text = Cell;
			Text.left += static_cast<LONG>(3 * Scale);
			Text.right -= static_cast<LONG>(3 * Scale);
			// A line of a megabyte draws its start: what fits in the row.
			const FString RowText = List.GetRowText(Row);
			const std::wstring Shown = Wide(RowText.Len() > 4000 ? RowText.Left(4000) : RowText);
			DrawTextW(Context, Shown.c_str(), static_cast<int>(Shown.size()), &Text,
					  DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
			if (Row == List.Parts->CurrentRow && bFocused)
			{
				DrawFocusRect(Context, &Cell);
			}
		}
		SelectObject(Context, Former);
		BitBlt(Target, 0, 0, Area.right, Area.bottom, Context, 0, 0, SRCCOPY);
		SelectObject(Context, FormerBitmap);
		DeleteDC(Context);
	}

	// Hands the list the row the user chose. A handler that rebuilds the layout makes a new list over the same
	// items: the keys go on there, from that row.
	static void ChooseRow(STableViewBase& List, int32 Row, void (STableViewBase::*Choose)(int32))
	{
		TSharedRef<SWidget> KeepAlive = List.AsShared();
		const void* Source = List.ItemsSourceIdentity();
		List.Parts->CurrentRow = Row;
		(List.*Choose)(Row);
		if (List.Parts->IsAlive())
		{
			InvalidateRect(List.Parts->Window, nullptr, FALSE);
		}
		Post([Source, Row] { FocusListOver(Source, Row, 0); });
	}

	// The new list gets its window at the next layout: until it shows, the keys wait a few turns for it.
	static void FocusListOver(const void* Source, int32 Row, int32 Tries)
	{
		for (HWND Window : Lists())
		{
			STableViewBase* List = Owner(Window);
			if (List && List->ItemsSourceIdentity() == Source && IsWindowVisible(Window))
			{
				if (List->Parts->CurrentRow == INDEX_NONE && Row < List->Parts->Rows)
				{
					List->Parts->CurrentRow = Row;
				}
				SetFocus(Window);
				return;
			}
		}
		if (Tries < 10)
		{
			Post([Source, Row, Tries] { FocusListOver(Source, Row, Tries + 1); });
		}
	}

	// The header's labels are the header row's own widgets, in bold, each over its share of the band: a label is
	// a widget like any other, to be found and read.
	static void PlaceHeaderLabels(STableViewBase& List, HWND Window)
	{
		TSharedPtr<SHeaderRow> Header = List.GetHeaderRow();
		RECT Client;
		GetClientRect(Window, &Client);
		if (!Header || Client.right == List.Parts->HeaderPlacedWidth)
		{
			return;
		}
		List.Parts->HeaderPlacedWidth = Client.right;
		const TArray<TSharedRef<SWidget>> Labels = Header->GetChildren();
		const int Columns = std::max(1, Labels.Num());
		const int Band = HeaderHeight(List);
		const int Inset = static_cast<int>(4 * GetScale());
		for (int32 Column = 0; Column < Labels.Num(); ++Column)
		{
			HWND Label = GetHwnd(*Labels[Column]);
			if (!Label)
			{
				continue;
			}
			if (GetParent(Label) != Window)
			{
				SetParent(Label, Window);
				SendMessageW(Label, WM_SETFONT, reinterpret_cast<WPARAM>(GetFont(true)), FALSE);
				SetWindowLongW(Label, GWL_STYLE, GetWindowLongW(Label, GWL_STYLE) | SS_CENTERIMAGE | SS_ENDELLIPSIS);
			}
			const int Left = Column * Client.right / Columns + Inset;
			const int Right = (Column + 1) * Client.right / Columns;
			SetWindowPos(Label, HWND_TOP, Left, 0, std::max(0, Right - Left), std::max(0, Band - 2), SWP_NOACTIVATE | SWP_SHOWWINDOW);
		}
	}

	static int32 RowAt(const STableViewBase& List, int Y)
	{
		const int InRows = Y - HeaderHeight(List);
		const int32 Row = InRows >= 0 ? List.Parts->TopRow + InRows / RowHeight(List) : INDEX_NONE;
		return Row != INDEX_NONE && Row < List.Parts->Rows ? Row : INDEX_NONE;
	}

	static RECT RowArea(const STableViewBase& List, HWND Window, int32 Row)
	{
		RECT Client;
		GetClientRect(Window, &Client);
		const int Top = HeaderHeight(List) + (Row - List.Parts->TopRow) * RowHeight(List);
		return RECT{0, Top, Client.right, Top + RowHeight(List)};
	}

	// A row cut short with "..." shows its whole text when the mouse rests on it (a long folder name, a long line
	// of the log); a row that fits shows none. A tooltip is read, not scrolled: a line of a megabyte shows its start.
	static void ShowToolTip(STableViewBase& List, HWND Window, int32 Row)
	{
		STableViewBase::FNativeParts& Parts = *List.Parts;
		HideToolTip(List);
		if (Row == INDEX_NONE)
		{
			return;
		}
		FString Text = List.GetRowText(Row);
		const RECT Cell = RowArea(List, Window, Row);
		const int Room = Cell.right - Cell.left - static_cast<int>(6 * GetScale());
		constexpr int32 MostShown = 2000;
		if (Text.IsEmpty() || MeasureText(Text.Left(std::max(1, Room)), GetFont()).Width <= Room)
		{
			return;
		}
		if (Text.Len() > MostShown)
		{
			Text = Text.Left(MostShown) + TEXT("\u2026");
		}
		if (!Parts.ToolTip)
		{
			Parts.ToolTip = CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_NOPREFIX | TTS_ALWAYSTIP, 0, 0, 0, 0,
											Window, nullptr, GetModuleHandleW(nullptr), nullptr);
			TOOLINFOW Tool{sizeof(TOOLINFOW)};
			Tool.uFlags = TTF_TRACK | TTF_ABSOLUTE;
			Tool.hwnd = Window;
			Tool.uId = 1;
			Tool.lpszText = const_cast<wchar_t*>(L"");
			SendMessageW(Parts.ToolTip, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&Tool));
			SendMessageW(Parts.ToolTip, TTM_SETMAXTIPWIDTH, 0, static_cast<LPARAM>(600 * GetScale()));
			SendMessageW(Parts.ToolTip, WM_SETFONT, reinterpret_cast<WPARAM>(GetFont()), FALSE);
		}
		const std::wstring Shown = Wide(Text);
		TOOLINFOW Tool{sizeof(TOOLINFOW)};
		Tool.hwnd = Window;
		Tool.uId = 1;
		Tool.lpszText = const_cast<wchar_t*>(Shown.c_str());
		SendMessageW(Parts.ToolTip, TTM_UPDATETIPTEXTW, 0, reinterpret_cast<LPARAM>(&Tool));
		POINT At{Cell.left, Cell.bottom};
		ClientToScreen(Window, &At);
		SendMessageW(Parts.ToolTip, TTM_TRACKPOSITION, 0, MAKELPARAM(At.x, At.y));
		SendMessageW(Parts.ToolTip, TTM_TRACKACTIVATE, TRUE, reinterpret_cast<LPARAM>(&Tool));
		Parts.ToolTipRow = Row;
	}

	static void HideToolTip(STableViewBase& List)
	{
		STableViewBase::FNativeParts& Parts = *List.Parts;
		if (Parts.ToolTip && Parts.ToolTipRow != INDEX_NONE)
		{
			TOOLINFOW Tool{sizeof(TOOLINFOW)};
			Tool.hwnd = Parts.Window;
			Tool.uId = 1;
			SendMessageW(Parts.ToolTip, TTM_TRACKACTIVATE, FALSE, reinterpret_cast<LPARAM>(&Tool));
		}
		Parts.ToolTipRow = INDEX_NONE;
	}

	static int32 Rows(const STableViewBase& List) { return List.Parts->IsAlive() ? List.Parts->Rows : 0; }

	static RECT ShownRowArea(STableViewBase& List, int32 Row)
	{
		if (!List.Parts->IsAlive() || Row < 0 || Row >= List.Parts->Rows)
		{
			return RECT{0, 0, 0, 0};
		}
		EnsureVisible(List, List.Parts->Window, Row);
		UpdateScrollBar(List, List.Parts->Window);
		return RowArea(List, List.Parts->Window, Row);
	}

	static FString ToolTipText(HWND Window)
	{
		STableViewBase* List = Owner(Window);
		if (!List || !List->Parts->ToolTip || List->Parts->ToolTipRow == INDEX_NONE || !IsWindowVisible(List->Parts->ToolTip))
		{
			return FString();
		}
		std::wstring Text(4096, L'\0');
		TOOLINFOW Tool{sizeof(TOOLINFOW)};
		Tool.hwnd = Window;
		Tool.uId = 1;
		Tool.lpszText = Text.data();
		SendMessageW(List->Parts->ToolTip, TTM_GETTEXTW, Text.size(), reinterpret_cast<LPARAM>(&Tool));
		return FromWide(std::wstring(Text.c_str()));
	}

	static void SetWatch(const STableViewBase& List, std::function<void(bool)> Watch) { List.Parts->Watch = std::move(Watch); }

	static bool OnMessage(HWND Window, UINT Message, WPARAM WParam, LPARAM LParam, LRESULT& Result)
	{
		STableViewBase* List = Owner(Window);
		if (!List)
		{
			return false;
		}
		STableViewBase::FNativeParts& Parts = *List->Parts;
		switch (Message)
		{
		case WM_GETDLGCODE:
			Result = DLGC_WANTARROWS | DLGC_WANTCHARS;
			return true;
		case WM_SETFOCUS:
		case WM_KILLFOCUS:
			InvalidateRect(Window, nullptr, FALSE);
			return false;
		case WM_SIZE:
			PlaceHeaderLabels(*List, Window);
			Parts.bScrollBarStale = true;
			UpdateScrollBar(*List, Window);
			InvalidateRect(Window, nullptr, FALSE);
			return false;
		case WM_ERASEBKGND:
			Result = 1;
			return true;
		case WM_MOUSEMOVE:
			// The tooltip follows the row under the mouse: it goes when the mouse leaves its row, and the system
			// says when the mouse rests again.
			if (Parts.ToolTipRow != INDEX_NONE && RowAt(*List, GET_Y_LPARAM(LParam)) != Parts.ToolTipRow)
			{
				HideToolTip(*List);
			}
			if (!Parts.bHoverTracked)
			{
				TRACKMOUSEEVENT Track{sizeof(TRACKMOUSEEVENT), TME_HOVER | TME_LEAVE, Window, HOVER_DEFAULT};
				Parts.bHoverTracked = TrackMouseEvent(&Track) != FALSE;
			}
			return false;
		case WM_MOUSEHOVER:
			Parts.bHoverTracked = false;
			ShowToolTip(*List, Window, RowAt(*List, GET_Y_LPARAM(LParam)));
			Result = 0;
			return true;
		case WM_MOUSELEAVE:
			Parts.bHoverTracked = false;
			HideToolTip(*List);
			Result = 0;
			return true;
		case WM_LBUTTONDOWN:
		{
			// The click gives the list the keys, as a click on any list does.
			SetFocus(Window);
			HideToolTip(*List);
			const int32 Row = RowAt(*List, GET_Y_LPARAM(LParam));
			if (Row != INDEX_NONE)
			{
				ChooseRow(*List, Row, &STableViewBase::ClickRow);
			}
			Result = 0;
			return true;
		}
		case WM_MOUSEWHEEL:
			ScrollTo(*List, Window, Parts.TopRow - GET_WHEEL_DELTA_WPARAM(WParam) / WHEEL_DELTA * 3);
			UpdateScrollBar(*List, Window);
			Result = 0;
			return true;
		case WM_VSCROLL:
		{
			SCROLLINFO Info{sizeof(SCROLLINFO), SIF_ALL};
			GetScrollInfo(Window, SB_VERT, &Info);
			const int32 Page = std::max(1, RowsInView(*List, Window));
			int32 Top = Parts.TopRow;
			switch (LOWORD(WParam))
			{
			case SB_LINEUP: --Top; break;
			case SB_LINEDOWN: ++Top; break;
			case SB_PAGEUP: Top -= Page; break;
			case SB_PAGEDOWN: Top += Page; break;
			case SB_THUMBTRACK:
			case SB_THUMBPOSITION: Top = Info.nTrackPos; break;
			case SB_TOP: Top = 0; break;
			case SB_BOTTOM: Top = Parts.Rows; break;
			default: break;
			}
			ScrollTo(*List, Window, Top);
			UpdateScrollBar(*List, Window);
			Result = 0;
			return true;
		}
		case WM_KEYDOWN:
		{
			// A key that moves the current row selects that row through the list, so that its selection handler
			// hears of it as of a click.
			if (Parts.Rows == 0)
			{
				return false;
			}
			const int32 Page = std::max(1, RowsInView(*List, Window) - 1);
			const int32 From = Parts.CurrentRow != INDEX_NONE ? Parts.CurrentRow : List->SelectedIndex();
			int32 To = From;
			switch (WParam)
			{
			case VK_UP: To = From == INDEX_NONE ? 0 : From - 1; break;
			case VK_DOWN: To = From == INDEX_NONE ? 0 : From + 1; break;
			case VK_PRIOR: To = From - Page; break;
			case VK_NEXT: To = From == INDEX_NONE ? Page : From + Page; break;
			case VK_HOME: To = 0; break;
			case VK_END: To = Parts.Rows - 1; break;
			default: return false;
			}
			To = std::clamp(To, 0, Parts.Rows - 1);
			EnsureVisible(*List, Window, To);
			UpdateScrollBar(*List, Window);
			if (To != From)
			{
				ChooseRow(*List, To, &STableViewBase::NavigateToRow);
			}
			Result = 0;
			return true;
		}
		default:
			return false;
		}
	}
};

STableViewBase::STableViewBase() : Parts(std::make_unique<FNativeParts>())
{
}

STableViewBase::~STableViewBase()
{
	if (Parts->Window)
	{
		Lists().erase(std::remove(Lists().begin(), Lists().end(), Parts->Window), Lists().end());
	}
}

FNativeWidget* STableViewBase::CreateNativeWidget()
{
	HWND Window = MakePanel(WS_VSCROLL | WS_TABSTOP, WS_EX_CLIENTEDGE);
	FWin32Node* Node = NodeOf(Window);
	Node->OnMessage = [Window](UINT Message, WPARAM WParam, LPARAM LParam, LRESULT& Result)
	{ return FListWindowWin32::OnMessage(Window, Message, WParam, LParam, Result); };
	Node->Paint = [Window](HDC Context, const RECT& Area)
	{
		if (STableViewBase* List = FListWindowWin32::Owner(Window))
		{
			FListWindowWin32::Paint(*List, Window, Context, Area);
		}
		else
		{
			FillRect(Context, &Area, GetSysColorBrush(COLOR_WINDOW));
		}
	};
	Node->Measure = [Window](float Scale)
	{
		STableViewBase* List = FListWindowWin32::Owner(Window);
		return FSlateLayoutSize{100.0f * Scale, List ? static_cast<float>(HeaderHeight(*List) + 3 * RowHeight(*List)) : 0.0f};
	};
	Parts->Window = Window;
	Parts->Alive = Node->Alive;
	Parts->Rows = 0;
	Parts->TopRow = 0;
	Parts->CurrentRow = INDEX_NONE;
	Lists().push_back(Window);
	SetNativeWidget(ToNative(Window));
	RowsShown = 0;
	bRefreshPending = true;
	ApplyRefresh();
	return ToNative(Window);
}

void STableViewBase::RefreshAttributes()
{
	if (HasNativeWidget() && Parts->IsAlive())
	{
		ApplyRefresh();
		if (PendingScrollIndex != INDEX_NONE && PendingScrollIndex < RowsShown)
		{
			FListWindowWin32::EnsureVisible(*this, Parts->Window, PendingScrollIndex, false);
			PendingScrollIndex = INDEX_NONE;
		}
		const bool bPainting = FListWindowWin32::PaintIfDue(*this, Parts->Window);
		FListWindowWin32::PlaceHeaderLabels(*this, Parts->Window);
		// Once a frame at most, however many batches of rows arrived.
		FListWindowWin32::UpdateScrollBar(*this, Parts->Window, false, bPainting);
	}
	SWidget::RefreshAttributes();
}

void STableViewBase::GetVisibleRange(int32& OutFirst, int32& OutLast) const
{
	OutFirst = INDEX_NONE;
	OutLast = INDEX_NONE;
	if (!Parts->IsAlive() || Parts->Rows == 0)
	{
		return;
	}
	OutFirst = Parts->TopRow;
	OutLast = std::min(Parts->Rows, Parts->TopRow + std::max(1, RowsInView(*this, Parts->Window))) - 1;
}

void STableViewBase::MirrorSelection()
{
	if (!Parts->IsAlive())
	{
		return;
	}
	const int32 Index = SelectedIndex();
	// No current row either when nothing is selected, so that nothing looks selected.
	const int32 Current = Index == INDEX_NONE || Index >= RowsShown ? INDEX_NONE : Index;
	if (Current != Parts->CurrentRow)
	{
		Parts->CurrentRow = Current;
		FListWindowWin32::Repaint(*this, Parts->Window, true);
	}
}

void STableViewBase::ShowRows(int32 Count, bool bAppendOnly)
{
	if (!Parts->IsAlive())
	{
		return;
	}
	const int32 Before = Parts->Rows;
	// Rows made anew start from the top; rows only added keep the place.
	if (!bAppendOnly)
	{
		Parts->TopRow = 0;
	}
	Parts->Rows = Count;
	Parts->bScrollBarStale = true;
	if (Parts->Watch && (!bAppendOnly || Count != Before))
	{
		Parts->Watch(bAppendOnly);
	}
	// Only rows that arrive in view need painting, with the next frame of the screen; rows made anew at once.
	if (!bAppendOnly || Before < Parts->TopRow + RowsInView(*this, Parts->Window) + 1)
	{
		FListWindowWin32::Repaint(*this, Parts->Window, !bAppendOnly);
	}
	MirrorSelection();
}

int32 SlateWin32::GetListRows(const STableViewBase& List)
{
	return FListWindowWin32::Rows(List);
}

RECT SlateWin32::GetListRowArea(STableViewBase& List, int32 Row)
{
	return FListWindowWin32::ShownRowArea(List, Row);
}

FString SlateWin32::GetListToolTip(HWND Window)
{
	return FListWindowWin32::ToolTipText(Window);
}

void SlateWin32::WatchListRows(const STableViewBase& List, std::function<void(bool bAppendOnly)> Watch)
{
	FListWindowWin32::SetWatch(List, std::move(Watch));
}
