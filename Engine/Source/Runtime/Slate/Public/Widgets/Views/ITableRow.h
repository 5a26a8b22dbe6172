#pragma once

#include "Widgets/SWidget.h"

// A row of a list, as the row generator makes it.
class ITableRow
{
public:
	virtual ~ITableRow() = default;
	virtual TSharedRef<SWidget> AsWidget() = 0;
};
