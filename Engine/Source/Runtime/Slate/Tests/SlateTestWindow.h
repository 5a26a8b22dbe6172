#pragma once

// A widget in a shown top-level window, as a tab would hold it, for tests that look at what Qt draws.

#include <QVBoxLayout>
#include <QWidget>

#include "SlateQtBackend.h"
#include "SlateTestMain.h"
#include "Widgets/SWidget.h"

#include <memory>

namespace
{
	// A shown top-level window around one widget, as a tab would hold it.
	struct FTestWindow
	{
		explicit FTestWindow(const TSharedRef<SWidget>& Content) : Root(Content)
		{
			Window = std::make_unique<QWidget>();
			QVBoxLayout* Layout = new QVBoxLayout(Window.get());
			Layout->addWidget(SlateQt::GetQWidget(*Content));
			Window->resize(600, 400);
			Window->show();
			TickFrames();
		}
		~FTestWindow() { Window.reset(); }
		TSharedRef<SWidget> Root;
		std::unique_ptr<QWidget> Window;
	};

	template <typename QtType>
	QtType* QtOf(const TSharedPtr<SWidget>& Widget)
	{
		return Widget ? qobject_cast<QtType*>(SlateQt::GetQWidget(*Widget)) : nullptr;
	}

}
