#pragma once

// The backend's side of a benchmark: a top-level window for the widgets under test, and what the system's own
// parts cost, so that the figures say what is ours.

#include "Widgets/SWidget.h"

namespace BenchmarkWindow
{
	// Before the application is made: no desktop is needed (an offscreen display where the backend has one).
	void PreparePlatform();
	void Show(const TSharedRef<SWidget>& Root, int32 Width, int32 Height);
	void PrintSystemCosts();
	void Close();
}
