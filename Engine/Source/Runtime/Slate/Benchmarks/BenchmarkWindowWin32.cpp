#include "BenchmarkWindow.h"

#include "SlateWin32.h"
#include "Widgets/SWindow.h"

#include <chrono>
#include <cstdio>

namespace
{
	TSharedPtr<SWindow> Window;
}

void BenchmarkWindow::PreparePlatform()
{
}

void BenchmarkWindow::Show(const TSharedRef<SWidget>& Root, int32 Width, int32 Height)
{
	Window = SNew(SWindow).ClientSize(FVector2D(Width, Height))[Root];
	ShowWindow(static_cast<HWND>(Window->GetNativeWindowHandle()), SW_SHOWNOACTIVATE);
}

// A bare scroll bar update, as the list would make it per batch if it did not keep to one a frame.
void BenchmarkWindow::PrintSystemCosts()
{
	HWND Bar = CreateWindowExW(0, L"STATIC", L"", WS_OVERLAPPED | WS_VSCROLL, 0, 0, 200, 200, nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
	ShowWindow(Bar, SW_SHOWNOACTIVATE);
	constexpr int Updates = 50;
	const auto Start = std::chrono::steady_clock::now();
	for (int Update = 0; Update < Updates; ++Update)
	{
		SCROLLINFO Info{sizeof(SCROLLINFO), SIF_RANGE | SIF_PAGE | SIF_POS, 0, 1000 * (Update + 1), 20, 1000 * Update};
		SetScrollInfo(Bar, SB_VERT, &Info, TRUE);
	}
	const double Each = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - Start).count() / Updates;
	DestroyWindow(Bar);
	std::printf("the system's own: one scroll bar update %.2f ms\n", Each);
}

void BenchmarkWindow::Close()
{
	if (Window && Window->HasNativeWidget())
	{
		DestroyWindow(static_cast<HWND>(Window->GetNativeWindowHandle()));
	}
	Window.Reset();
}
