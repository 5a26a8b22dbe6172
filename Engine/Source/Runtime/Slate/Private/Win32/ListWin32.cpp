// The list: a window of our own that paints only the rows in view, straight from the list's items, with its
// header and its own scroll bar. Rows arriving cost nothing but a count; the scroll bar is set at most once a
// frame, because under some systems (Wine) each update of it costs milliseconds.

#include "SlateWin32.h"

#include "Widgets/Text/STextBlock.h"
#include "Widgets/Views/STableViewBase.h"

#include <windowsx.h>

#include <algorithm>
#include <cmath>

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
	ULONGLONG ScrollBarSetAt = 0;

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

	static void ScrollTo(STableViewBase& List, HWND Window, int32 Top)
	{
		List.Parts->TopRow = Top;
		ClampTop(List, Window);
		List.Parts->bScrollBarStale = true;
		InvalidateRect(Window, nullptr, FALSE);
	}

	static void EnsureVisible(STableViewBase& List, HWND Window, int32 Row)
	{
		STableViewBase::FNativeParts& Parts = *List.Parts;
		const int32 InView = std::max(1, RowsInView(List, Window));
		if (Row < Parts.TopRow)
		{
			ScrollTo(List, Window, Row);
		}
		else if (Row >= Parts.TopRow + InView)
		{
			ScrollTo(List, Window, Row - InView + 1);
		}
	}

	// Rows pouring in move the scroll bar at most ten times a second; the user's own scrolling moves it at once.
	static void UpdateScrollBar(STableViewBase& List, HWND Window, bool bNow = true)
	{
		STableViewBase::FNativeParts& Parts = *List.Parts;
		const ULONGLONG Now = GetTickCount64();
		if (!Parts.bScrollBarStale || (!bNow && Now - Parts.ScrollBarSetAt < 100))
		{
			return;
		}
		Parts.ScrollBarSetAt = Now;
		Parts.bScrollBarStale = false;
		ClampTop(List, Window);
		SCROLLINFO Info{sizeof(SCROLLINFO), SIF_RANGE | SIF_PAGE | SIF_POS | (List.IsScrollbarAlwaysVisible() ? SIF_DISABLENOSCROLL : 0u)};
		Info.nMin = 0;
		Info.nMax = std::max(0, Parts.Rows - 1);
		Info.nPage = static_cast<UINT>(RowsInView(List, Window));
		Info.nPos = Parts.TopRow;
		SetScrollInfo(Window, SB_VERT, &Info, TRUE);
	}

	static void Paint(STableViewBase& List, HWND Window, HDC Target, const RECT& Area)
	{
		// Drawn off screen and copied at once, so that rows arriving many times a second do not flicker.
		HDC Context = CreateCompatibleDC(Target);
		HBITMAP Bitmap = CreateCompatibleBitmap(Target, std::max<LONG>(1, Area.right), std::max<LONG>(1, Area.bottom));
		HGDIOBJ FormerBitmap = SelectObject(Context, Bitmap);
		FillRect(Context, &Area, GetSysColorBrush(COLOR_WINDOW));
		SetBkMode(Context, TRANSPARENT);
		const float Scale = GetScale();
		const int Header = HeaderHeight(List);
		if (Header > 0)
		{
			RECT Band{0, 0, Area.right, Header};
			FillRect(Context, &Band, GetSysColorBrush(COLOR_BTNFACE));
			DrawEdge(Context, &Band, EDGE_RAISED, BF_BOTTOM);
			HGDIOBJ Former = SelectObject(Context, GetFont(true));
			SetTextColor(Context, GetSysColor(COLOR_BTNTEXT));
			const TArray<TSharedRef<SWidget>> Labels = List.GetHeaderRow()->GetChildren();
			const int Columns = std::max(1, Labels.Num());
			for (int32 Column = 0; Column < Labels.Num(); ++Column)
			{
				RECT Cell{static_cast<LONG>(Column * Area.right / Columns + 4 * Scale), 0, static_cast<LONG>((Column + 1) * Area.right / Columns), Header};
				const std::wstring Label = Wide(Labels[Column]->GetDisplayText());
				DrawTextW(Context, Label.c_str(), -1, &Cell, DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
			}
			SelectObject(Context, Former);
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
		DeleteObject(Bitmap);
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
			Parts.bScrollBarStale = true;
			UpdateScrollBar(*List, Window);
			InvalidateRect(Window, nullptr, FALSE);
			return false;
		case WM_ERASEBKGND:
			Result = 1;
			return true;
		case WM_LBUTTONDOWN:
		{
			// The click gives the list the keys, as a click on any list does.
			SetFocus(Window);
			const int Y = GET_Y_LPARAM(LParam) - HeaderHeight(*List);
			const int32 Row = Y >= 0 ? Parts.TopRow + Y / RowHeight(*List) : INDEX_NONE;
			if (Row != INDEX_NONE && Row < Parts.Rows)
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
			FListWindowWin32::EnsureVisible(*this, Parts->Window, PendingScrollIndex);
			PendingScrollIndex = INDEX_NONE;
		}
		// Once a frame at most, however many batches of rows arrived, and not more than ten times a second.
		FListWindowWin32::UpdateScrollBar(*this, Parts->Window, false);
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
	Parts->CurrentRow = Index == INDEX_NONE || Index >= RowsShown ? INDEX_NONE : Index;
	InvalidateRect(Parts->Window, nullptr, FALSE);
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
	// Only rows that arrive in view need painting.
	if (!bAppendOnly || Before < Parts->TopRow + RowsInView(*this, Parts->Window) + 1)
	{
		InvalidateRect(Parts->Window, nullptr, FALSE);
	}
	MirrorSelection();
}
