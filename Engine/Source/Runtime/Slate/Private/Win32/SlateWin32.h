#pragma once

// Slate's Win32 side. Every widget is a native window: the system's own control where one fits (buttons, check
// boxes, edit boxes, labels), a window of our own classes otherwise (panels, images, the list). The windows place
// nothing themselves: each frame the widget layer's shared layout places every window of a shown top-level
// window, and shows or hides it.

#include "Widgets/SWidget.h"
#include "Windows/WindowsApi.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

class STableViewBase;

// What the backend keeps beside each native window: its widget (cleared when the widget goes first), how it is
// measured, and the handlers of what its window hears. Owned by the window; gone with it.
struct FWin32Node
{
	SWidget* Owner = nullptr;
	std::shared_ptr<bool> Alive = std::make_shared<bool>(true);
	std::function<FSlateLayoutSize(float Scale)> Measure;
	// A notification the window sent its parent (a click, a text change), by its code.
	std::function<void(UINT Code)> OnCommand;
	// Any message to the window itself; true when handled, with Result set.
	std::function<bool(UINT Message, WPARAM WParam, LPARAM LParam, LRESULT& Result)> OnMessage;
	// Painting of our own classes, and of a control the system lets its owner draw.
	std::function<void(HDC Context, const RECT& Area)> Paint;
	std::function<void(const DRAWITEMSTRUCT& Item)> DrawItem;
	// A label's text colour (a hyperlink's blue); CLR_INVALID keeps the system's.
	COLORREF TextColour = CLR_INVALID;
	// The width last given, for text that wraps at it.
	float LastWidth = 0.0f;
	// What Measure gave in the layout pass now running: a pass asks each widget many times (every panel above it
	// asks again), and measuring text costs a call into the system each time.
	uint64 MeasuredInPass = 0;
	FSlateLayoutSize Measured;
	RECT LastPlace{-1, -1, -1, -1};
	// The area its panel gave it (a grid cell, a box's slot), in its parent's client pixels: a control of one
	// height stands centred in it. Empty while it is given none.
	RECT SlotPlace{0, 0, 0, 0};
	// The children the last layout placed in this window: one that the next layout does not place is hidden.
	std::vector<HWND> PlacedChildren;
	bool bPlaced = false;
	// Lettering drawn over a lighter copy of itself, so that it stands out from the surface.
	bool bRaised = false;
	// Controls of one height (a line of text, a button, a check box) keep it in a taller slot, centred in it, as
	// the system draws them only so.
	bool bFixedHeight = false;
	// A scroll bar's range and page as last set: setting them again costs, and each frame asks.
	int ScrollRange = -1;
	int ScrollPage = -1;
};

// The guarded window behind SWidget's native widget: a window its parent already destroyed is simply gone.
struct FNativeWidgetGuard
{
	HWND Window = nullptr;
	std::shared_ptr<bool> Alive;
};

namespace SlateWin32
{
	// A push button's frame, which the button draws itself: one line of pixels at any scale, so that a label has
	// the button's width but for it (a 100-point button holds "Reset Publisher Id" in the editor's face, whose
	// letters the system places on whole pixels).
	constexpr int ButtonFrame = 1;

	inline HWND ToHwnd(FNativeWidget* Widget) { return static_cast<HWND>(static_cast<void*>(Widget)); }
	inline FNativeWidget* ToNative(HWND Window) { return static_cast<FNativeWidget*>(static_cast<void*>(Window)); }
	HWND GetHwnd(SWidget& Widget);
	HWND FindHwnd(const SWidget& Widget);
	FWin32Node* NodeOf(HWND Window);

	// A system control (its class name and styles) or a window of our panel class, parked until the layout
	// gives it its parent, with a node of its own.
	HWND MakeControl(const wchar_t* ClassName, const FString& Text, DWORD Style, DWORD ExStyle = 0);
	HWND MakePanel(DWORD Style = 0, DWORD ExStyle = 0);
	// A top-level window of ours; its content is placed by the layout on every frame.
	HWND MakeTopLevel(const FString& Title, DWORD Style, HWND Owner);

	// Device pixels per widget pixel: the screen's DPI over 96.
	float GetScale();
	// The editor's face (Roboto at 9 points, or the system's message face without it), plain, bold or larger.
	HFONT GetFont(bool bBold = false, float SizeFactor = 1.0f);
	// The size of a text in a font, on one line or wrapped at Width.
	FSlateLayoutSize MeasureText(const FString& Text, HFONT Font, int Width = -1);
	int AverageCharWidth(HFONT Font);

	std::wstring Wide(const FString& Text);
	FString FromWide(const std::wstring& Text);
	FString GetWindowTextOf(HWND Window);

	// Top-level windows whose content the layout places: a Slate window places its own child; any other content
	// fills the window inside Margin.
	void AddRoot(HWND Window, const TSharedRef<SWidget>& Content, const FMargin& Margin, bool bContentIsWindow);
	void RemoveRoot(HWND Window);
	// Lays out every shown root now (each frame does it too).
	void LayoutAll();
	void LayoutRoot(HWND Window);
	// The size a root's content asks for, with the window's frame: for windows sized to their content.
	SIZE PreferredWindowSize(HWND Window);

	// Native windows of widgets released inside an event are destroyed once the event has returned.
	void DestroySoon(HWND Window);
	void DestroyPending();

	// Runs the messages waiting now, with dialog keys (Tab, Return, Escape) for our top-level windows.
	void PumpMessages();
	// Runs Work once the message loop turns again.
	void Post(std::function<void()> Work);

	// The window's client area as the screen shows it, as 0xAARRGGBB. A window's drawing of itself into a bitmap
	// comes out blank on some systems (Wine), so the picture is copied from the screen.
	bool CapturePixels(HWND Window, int& OutWidth, int& OutHeight, std::vector<uint32>& OutPixels);
	bool SavePng(const FString& Path, int Width, int Height, const uint32* Pixels);

	// What a list shows: its rows, where a row stands in the list's window (scrolled into view first), the text
	// of the tooltip the mouse resting there gets (empty when the row's text is whole), and a watch on its rows
	// (told true when rows were only added at the end, false when they were made anew).
	int32 GetListRows(const STableViewBase& List);
	RECT GetListRowArea(STableViewBase& List, int32 Row);
	FString GetListToolTip(HWND ToolTip);
	void WatchListRows(const STableViewBase& List, std::function<void(bool bAppendOnly)> Watch);
}
