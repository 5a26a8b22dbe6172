#pragma once

// The tool widget in a shown window under the offscreen platform, as the tab holds it, and a job that keeps
// the queue busy.

#include <QAbstractItemView>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWidget>

#include "SlateQtBackend.h"
#include "STesselUI.h"
#include "SlateTestMain.h"
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
			Window = std::make_unique<QWidget>();
			QVBoxLayout* Layout = new QVBoxLayout(Window.get());
			Layout->setContentsMargins(0, 0, 0, 0);
			Layout->addWidget(SlateQt::GetQWidget(*Tool));
			Window->resize(1000, 700);
			Window->show();
			TickFrames();
		}
		~FOpenTool() { Close(); }
		void Close()
		{
			Tool.Reset();
			Window.reset();
			TickFrames();
		}
		TSharedPtr<SWidget> Find(const TCHAR* Key) const { return FindWidgetByKey(Tool.ToSharedRef(), Key); }
		QPushButton* Button(const TCHAR* Key) const
		{
			TSharedPtr<SWidget> Widget = Find(Key);
			return Widget ? qobject_cast<QPushButton*>(SlateQt::GetQWidget(*Widget)) : nullptr;
		}
		int32 RowsOf(QWidget* ListContainer) const
		{
			QAbstractItemView* View = ListContainer ? ListContainer->findChild<QAbstractItemView*>() : nullptr;
			return View ? View->model()->rowCount() : -1;
		}

		TSharedPtr<STesselTool> Tool;
		std::unique_ptr<QWidget> Window;
	};

	struct FJobGuard
	{
		// A job whose child runs until it is cancelled.
		FJobGuard()
		{
			ActiveJobs.Add(MakeShared<FCookJob>(FModSetup(), TEXT(TESSEL_FAKE_CHILD), TEXT("hang"), FString(), FString(), FString(), 0u, true, false));
		}
		~FJobGuard()
		{
			for (const TSharedPtr<FCookJob>& Job : ActiveJobs)
			{
				Job->Process->Cancel(true);
			}
			ActiveJobs.Empty();
		}
	};
}

