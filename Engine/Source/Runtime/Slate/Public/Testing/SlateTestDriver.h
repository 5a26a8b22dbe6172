#pragma once

// What a user sees of the widgets and what a user does to them, for tests: geometry in pixels, what is shown
// and enabled, text as drawn, clicks, typing, keys, list rows, window state and screenshots. Tests run under
// an offscreen display, so that nothing shows on a desktop and nothing waits for one.

#include "CoreMinimal.h"
#include "Types/SlateEnums.h"
#include "Widgets/SWidget.h"

#include <functional>
#include <memory>
#include <vector>

class STableViewBase;
class SWindow;

// An area in pixels; for a widget, where it stands in its window and how large it is.
struct FSlateTestRect
{
	int32 X = 0;
	int32 Y = 0;
	int32 Width = 0;
	int32 Height = 0;

	int32 Right() const { return X + Width; }
	int32 Bottom() const { return Y + Height; }
	bool operator==(const FSlateTestRect& Other) const = default;
};

struct FSlateTestSize
{
	int32 Width = 0;
	int32 Height = 0;
	bool operator==(const FSlateTestSize& Other) const = default;
};

// A picture of what is drawn, in device pixels, as 0xAARRGGBB.
struct FSlateScreenshot
{
	int32 Width = 0;
	int32 Height = 0;
	std::vector<uint32> Pixels;

	bool IsEmpty() const { return Pixels.empty(); }
	uint32 GetPixel(int32 X, int32 Y) const { return Pixels[static_cast<size_t>(Y) * Width + X]; }
	bool SaveToPng(const FString& Path) const;
};

// How a text is lettered.
struct FSlateTextLook
{
	float PointSize = 0.0f;
	bool bBold = false;
	// Drawn over an edge of its own that makes it stand out from the surface.
	bool bRaised = false;
	int32 LineHeight = 0;
	// How wide the shown text is on one line.
	int32 ShownTextWidth = 0;
	// How wide the room is that the widget gives its text (inside a button's frame and margins, beside a check
	// box's box). Lettering wider than this is cut or squeezed, unless the widget wraps it.
	int32 TextRoomWidth = 0;
	// How tall the text stands: its lines broken at the room's width when the widget wraps, else one line. A
	// widget lower than this cuts lines off.
	int32 TextHeight = 0;
};

// A top-level window as a user meets it.
struct FSlateTestWindowState
{
	bool bShown = false;
	bool bModal = false;
	bool bHasMinimizeButton = false;
	bool bHasMaximizeButton = false;
	bool bHasCloseButton = false;
	FString Title;
	// On the screen.
	FSlateTestRect Geometry;
	FSlateTestSize MinimumSize;
	FSlateTestSize MaximumSize;
	// The size its content asks for.
	FSlateTestSize PreferredSize;
};

namespace SlateTest
{
	// Makes the application on the offscreen display, or on the platform SLATE_TEST_PLATFORM names ("xcb" for
	// the X display in DISPLAY). A scale for high-density screens comes from the environment variable
	// SLATE_TEST_SCALE (e.g. "2").
	void StartApplication(int& ArgC, char** ArgV);
	void StopApplication();
	// Ticks the application some frames, as the host's timer would.
	void TickFrames(int32 Frames = 2);
	// Runs Work from the event loop as soon as it turns again, e.g. inside the loop of a modal window.
	void RunSoon(std::function<void()> Work);

	// Where Widget stands in its window and its size, as drawn.
	FSlateTestRect GetGeometry(const SWidget& Widget);
	// The area its panel gives Widget (a grid cell, a box's slot): a hidden widget keeps it, a collapsed one
	// gives it up.
	FSlateTestRect GetSlotGeometry(const SWidget& Widget);
	// The size the widget asks for, and the least size its content asks for.
	FSlateTestSize GetPreferredSize(const SWidget& Widget);
	FSlateTestSize GetMinimumSize(const SWidget& Widget);
	// Drawn on screen now: the widget and everything around it are visible.
	bool IsShown(const SWidget& Widget);
	// Takes input (not greyed out) as drawn.
	bool IsEnabledOnScreen(const SWidget& Widget);
	// A scroll bar of a scroll box in the given direction is shown.
	bool IsScrollBarShown(const SWidget& ScrollBox, EOrientation Orientation);

	// Text as the user reads it: a label's, a button's, a text box's.
	FString GetShownText(const SWidget& Widget);
	FSlateTextLook GetTextLook(const SWidget& Widget);
	// A label or a text box that breaks long lines at its width.
	bool WrapsText(const SWidget& Widget);
	// The texts of the shown labels, buttons and check boxes under Root that don't stand whole in the room their
	// widget gives them: wider than it on one line (unless the widget wraps) or taller than the widget. Checked,
	// when given, counts the widgets looked at, so that a test can tell it looked at something.
	TArray<FString> FindCutTexts(const TSharedRef<SWidget>& Root, int32* Checked = nullptr);
	bool IsChecked(const SWidget& Widget);
	// A text box whose text cannot be edited, one drawn without a frame, one that masks what it holds.
	bool IsReadOnly(const SWidget& Widget);
	bool HasFrame(const SWidget& Widget);
	bool IsMasked(const SWidget& Widget);
	int32 GetCursorPosition(const SWidget& TextBox);
	void SetCursorPosition(SWidget& TextBox, int32 Position);

	// A left click where a user aims it (the middle of a button, a check box's box), as the mouse makes it.
	void Click(SWidget& Widget);
	// Gives the widget the keyboard focus, with its window made the active one.
	void Focus(SWidget& Widget);
	// The widget (or the part of it that takes keys) has the keyboard focus.
	bool HasFocus(const SWidget& Widget);
	// Typing, key by key, into the widget.
	void TypeText(SWidget& Widget, const FString& Text);
	// One key press, such as "Left", "Return" or "Ctrl+Z".
	void PressKey(SWidget& Widget, const FString& Key);
	// One key press to whatever has the keyboard focus now, as the keyboard sends it.
	void PressKeyInFocus(const FString& Key);

	// The rows a list holds as drawn, the text of one, and a left click on it as the mouse makes it.
	int32 GetListRowCount(const STableViewBase& List);
	FString GetListRowText(const STableViewBase& List, int32 Row);
	void ClickListRow(STableViewBase& List, int32 Row);
	// The mouse resting on a row: the tooltip that shows, empty when none does.
	FString HoverListRow(STableViewBase& List, int32 Row);

	// What a top-level window shows, and its own close button pressed; true when the window closed.
	FSlateTestWindowState GetWindowState(SWindow& Window);
	bool PressCloseButton(SWindow& Window);
	// The part of the primary screen that windows may take.
	FSlateTestRect GetScreenWorkArea();

	// A picture of the widget as drawn.
	FSlateScreenshot TakeScreenshot(const SWidget& Widget);
	// A picture of the whole window the widget stands in (a dialog with its buttons), without the frame.
	FSlateScreenshot TakeWindowScreenshot(const SWidget& Widget);
	// Device pixels to a widget's pixel on the primary screen: 1, or 2 on a high-density screen.
	float GetScreenScale();
	// How many colours a picture holds: a drawn window has many, a blank one one or two.
	int32 CountColours(const FSlateScreenshot& Shot);
	// Writes a picture of one colour (0xAARRGGBB) as a PNG file, for images under test.
	bool WriteSolidPng(const FString& Path, int32 Width, int32 Height, uint32 Colour);
}

// Counts how a list's rows change as drawn: rows added at the end, or all rows made anew.
class FSlateListWatch
{
public:
	explicit FSlateListWatch(const STableViewBase& List);
	~FSlateListWatch();
	int32 GetRowsInserted() const;
	int32 GetResets() const;

private:
	struct FState;
	std::unique_ptr<FState> State;
};

// A widget in a shown top-level window, as a tab holds it.
class FSlateTestWindow
{
public:
	// With bMargins the content stands inside the usual margins of a window; without, it fills the window.
	explicit FSlateTestWindow(const TSharedRef<SWidget>& Content, int32 Width = 600, int32 Height = 400, bool bMargins = true);
	~FSlateTestWindow();
	FSlateTestWindow(const FSlateTestWindow&) = delete;
	FSlateTestWindow& operator=(const FSlateTestWindow&) = delete;

	void Resize(int32 Width, int32 Height);
	// Brings the window to the front and makes it the one that takes keys.
	void Activate();
	FSlateScreenshot TakeScreenshot() const;
	// Device pixels per pixel (2 on a high-density screen).
	float GetScale() const;
	const TSharedRef<SWidget>& GetContent() const { return Content; }

private:
	TSharedRef<SWidget> Content;
	struct FState;
	std::unique_ptr<FState> State;
};
