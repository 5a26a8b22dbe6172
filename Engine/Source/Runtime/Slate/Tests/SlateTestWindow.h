#pragma once

// A widget in a shown top-level window, as a tab would hold it, for tests that look at what is drawn.

#include "SlateTestMain.h"
#include "Testing/SlateTestDriver.h"
#include "Widgets/SWidget.h"

using FTestWindow = FSlateTestWindow;
