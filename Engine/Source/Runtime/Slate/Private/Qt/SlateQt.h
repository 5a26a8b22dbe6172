#pragma once

// Slate's own Qt helpers. The handles of the public headers are Qt widgets underneath.
#include "SlateQtBackend.h"

#pragma push_macro("check")
#undef check
#include <QPointer>
#pragma pop_macro("check")

class QLayout;

namespace SlateQt
{
	inline QWidget* ToQt(FNativeWidget* Widget) { return static_cast<QWidget*>(static_cast<void*>(Widget)); }
	inline FNativeWidget* ToNative(QWidget* Widget) { return static_cast<FNativeWidget*>(static_cast<void*>(Widget)); }

	// Marks the widgets that hold a panel's children, so that the space a slot gives can be told apart.
	inline constexpr const char* SlotHolderProperty = "SlateSlotHolder";

	// A bare Qt widget that paints no background of its own, to hold children.
	QWidget* MakePlainWidget();
	// Takes every item out of the layout; the slot holders go once the current event has returned.
	void ClearLayout(QLayout* Layout);
}

// The guarded pointer behind SWidget's native widget.
struct FNativeWidgetGuard
{
	QPointer<QWidget> Widget;
};
