#pragma once

#include "Widgets/SCompoundWidget.h"

// A heading line with a child in it.
class SHeader : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SHeader) {}
	SLATE_DEFAULT_SLOT(FArguments, Content)
	SLATE_END_ARGS()
	void Construct(const FArguments& InArgs);

protected:
	FNativeWidget* CreateNativeWidget() override;
};
