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
	// Painting of our own classes.
	std::function<void(HDC Context, const RECT& Area)> Paint;
	// A label's text colour (a hyperlink's blue); CLR_INVALID keeps the system's.
	COLORREF TextColour = CLR_INVALID;
	// The width last given, for text that wraps at it.
	float LastWidth = 0.0f;
	RECT LastPlace{-1, -1, -1, -1};
	bool bPlaced = false;
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
}
