#pragma once

#include "Styling/SlateBrush.h"
#include "Widgets/SCompoundWidget.h"

// A child on a painted background.
class SBorder : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SBorder) : _BorderImage(nullptr), _Padding(FMargin(2.0f)), _HAlign(HAlign_Fill), _VAlign(VAlign_Fill) {}
	SLATE_ARGUMENT(const FSlateBrush*, BorderImage)
	SLATE_ARGUMENT(FMargin, Padding)
	SLATE_ARGUMENT(EHorizontalAlignment, HAlign)
	SLATE_ARGUMENT(EVerticalAlignment, VAlign)
	SLATE_DEFAULT_SLOT(FArguments, Content)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
	const FSlateBrush* GetBorderImage() const { return BorderImage; }

protected:
	FNativeWidget* CreateNativeWidget() override;

private:
	const FSlateBrush* BorderImage = nullptr;
};
