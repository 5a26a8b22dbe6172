#pragma once

#include "Widgets/SWidget.h"

class SSpacer : public SWidget
{
public:
	SLATE_BEGIN_ARGS(SSpacer) {}
	SLATE_END_ARGS()
	void Construct(const FArguments&) {}

protected:
	FNativeWidget* CreateNativeWidget() override;
};
