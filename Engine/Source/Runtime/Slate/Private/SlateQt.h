#pragma once

// ToQString, FromQString, MakeSlotHolder and ClearLayout are declared with the slots.
#include "Widgets/SlotBase.h"

namespace SlateQt
{
	// A bare Qt widget that paints no background of its own, to hold children.
	QWidget* MakePlainWidget();
}
