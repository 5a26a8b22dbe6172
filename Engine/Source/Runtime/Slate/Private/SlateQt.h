#pragma once

class QWidget;

namespace SlateQt
{
	// A bare Qt widget that paints no background of its own, to hold children.
	QWidget* MakePlainWidget();
}
