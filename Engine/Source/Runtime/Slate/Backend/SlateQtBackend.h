#pragma once

// Slate's Qt side, for the code that hosts Slate in Qt windows of its own: the editor's services and the host
// program. Everyone else (the tool, its tests) sees only Slate's public headers; only targets that link
// SlateQtBackend can include this.

#include "Layout/Margin.h"
#include "Types/SlateEnums.h"
#include "Widgets/SWidget.h"

// Qt declares members named like the engine's assertion macros; they must not see them.
#pragma push_macro("check")
#undef check
#include <QString>
#include <QWidget>
#pragma pop_macro("check")

namespace SlateQt
{
	// The Qt widget that draws Widget, made on first use.
	QWidget* GetQWidget(SWidget& Widget);
	// The Qt widget of Widget if it has been made and still exists, else null.
	QWidget* FindQWidget(const SWidget& Widget);
	// A Qt widget that holds Child with a slot's padding and alignment, as Slate's panels hold their children.
	QWidget* MakeSlotHolder(SWidget& Child, const FMargin& Padding, EHorizontalAlignment HAlign, EVerticalAlignment VAlign);
	QString ToQString(const FString& Text);
	FString FromQString(const QString& Text);
}
