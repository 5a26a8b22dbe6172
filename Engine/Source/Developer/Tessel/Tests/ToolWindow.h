#pragma once

// The tool widget in a shown window on the offscreen display, as the tab holds it, and a job that keeps the
// queue busy.

#include "STesselUI.h"
#include "TesselSession.h"
#include "SlateTestMain.h"
#include "TestPaths.h"
#include "Testing/SlateTestDriver.h"
#include "cook/CookJob.h"

#include <memory>

namespace
{
	// The tool in a shown window, as the tab holds it.
	struct FOpenTool
	{
		FOpenTool()
		{
			Tool = SNew(STesselTool);
			Window = std::make_unique<FSlateTestWindow>(Tool.ToSharedRef(), 1000, 700, false);
		}
		~FOpenTool() { Close(); }
		void Close()
		{
			Tool.Reset();
			Window.reset();
			TickFrames();
		}
		TSharedPtr<SWidget> Find(const TCHAR* Key) const { return FindWidgetByKey(Tool.ToSharedRef(), Key); }
		// The button with this key; a failed test when there is none.
		SWidget& Button(const TCHAR* Key) const
		{
			TSharedPtr<SWidget> Widget = Find(Key);
			EXPECT_TRUE(Widget) << FString(Key).ToUtf8();
			EXPECT_TRUE(Widget && Widget->GetTypeName() == TEXT("SButton")) << FString(Key).ToUtf8();
			return Widget ? *Widget : *Tool;
		}
		bool Enabled(const TCHAR* Key) const { return Find(Key) && SlateTest::IsEnabledOnScreen(Button(Key)); }
		template <typename ListType>
		int32 RowsOf(const TSharedPtr<ListType>& List) const
		{
			return List ? SlateTest::GetListRowCount(*List) : -1;
		}

		TSharedPtr<STesselTool> Tool;
		std::unique_ptr<FSlateTestWindow> Window;
	};

	struct FJobGuard
	{
		// A job whose child runs until it is cancelled.
		FJobGuard()
		{
			ActiveJobs.Add(MakeShared<FCookJob>(FModSetup(), FString(TestPaths::FakeChild), TEXT("hang"), FString(), FString(), FString(), 0u, true, false));
		}
		~FJobGuard() { CancelAllJobs(); }
	};
}
