#pragma once

// The tool widget in a shown window on the offscreen display, as the tab holds it, a job that keeps the queue
// busy, and a window's widgets written out as text for a golden. Only for the window tests, which link
// SlateTesting and see the module's private headers.

#include "STesselUI.h"
#include "TesselSession.h"
#include "SlateTestMain.h"
#include "TestPaths.h"
#include "Testing/SlateTestDriver.h"
#include "Widgets/Layout/SGridPanel.h"
#include "cook/CookJob.h"

#include <functional>
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
		// Clicks the row of the mod in the folder ModDir and lets the form follow; a failed test when another is
		// selected after.
		void SelectMod(const TCHAR* ModDir) const
		{
			Tool->ModListView->ClickRow(
				Tool->ModList.IndexOfByPredicate([ModDir](const TSharedPtr<FModSetup>& Mod) { return Mod->ModDir == ModDir; }));
			TickFrames();
			EXPECT_TRUE(Tool->SelectedMod && Tool->SelectedMod->ModDir == ModDir) << FString(ModDir).ToUtf8();
		}
		// The button with this key; a failed test when there is none.
		SWidget& Button(const TCHAR* Key) const
		{
			TSharedPtr<SWidget> Widget = Find(Key);
			EXPECT_TRUE(Widget && Widget->GetTypeName() == TEXT("SButton")) << FString(Key).ToUtf8();
			return Widget ? *Widget : *Tool;
		}
		// The keys of the tool's buttons that are greyed out, in the order of the tree.
		FString DisabledButtons() const
		{
			TArray<FString> Keys;
			for (const TSharedRef<SWidget>& Button : FindWidgetsByType(Tool.ToSharedRef(), TEXT("SButton")))
			{
				if (!SlateTest::IsEnabledOnScreen(*Button))
				{
					Keys.Add(Button->GetTextKey());
				}
			}
			return FString::Join(Keys, TEXT(" "));
		}

		TSharedPtr<STesselTool> Tool;
		std::unique_ptr<FSlateTestWindow> Window;
	};

	struct FJobGuard
	{
		// A job whose child runs until it is cancelled.
		FJobGuard()
		{
			ActiveJobs.Add(MakeShared<FCookJob>(FModSetup(), FString(TestPaths::FakeChild), TEXT("hang"), FString(), FString(), FString(),
												0u, true, false));
		}
		~FJobGuard() { CancelAllJobs(); }
	};

	// What stands under Root, in the order of the tree: one line for each cell of a grid (its column and row) and
	// for each widget with a text key, with its type, its key and its text as shown (and a button in a box of
	// fixed width with that width). Widgets inside a cell are indented.
	inline std::string DescribeWidgets(const TSharedRef<SWidget>& Root)
	{
		FString Out;
		std::function<void(const TSharedRef<SWidget>&, const FString&, const FString&, bool)> Walk =
			[&](const TSharedRef<SWidget>& Widget, const FString& Cell, const FString& Indent, bool bInBox)
		{
			if (!Cell.IsEmpty() || !Widget->GetTextKey().IsEmpty())
			{
				Out += (Cell.IsEmpty() ? Indent : Cell) + Widget->GetTypeName();
				if (!Widget->GetTextKey().IsEmpty())
				{
					Out += TEXT(" ") + Widget->GetTextKey() + TEXT(" \"") + SlateTest::GetShownText(*Widget) + TEXT("\"");
				}
				Out += bInBox ? FString::Printf(TEXT(" width %d\n"), SlateTest::GetGeometry(*Widget).Width) : FString(TEXT("\n"));
			}
			if (Widget->GetTypeName() == TEXT("SGridPanel"))
			{
				for (const SGridPanel::FSlot& Slot : static_cast<const SGridPanel&>(*Widget).GetSlots())
				{
					Walk(Slot.Widget.ToSharedRef(), FString::Printf(TEXT("%d,%d "), Slot.Column, Slot.Row), TEXT("  "), false);
				}
				return;
			}
			for (const TSharedRef<SWidget>& Child : Widget->GetChildren())
			{
				Walk(Child, FString(), Indent, Widget->GetTypeName() == TEXT("SBox"));
			}
		};
		Walk(Root, FString(), FString(), false);
		return Out.ToUtf8();
	}
}
