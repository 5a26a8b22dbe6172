#pragma once

#include "Widgets/SCompoundWidget.h"

// A child held to a fixed width or height where one is given.
class SBox : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SBox) : _WidthOverride(0.0f), _HeightOverride(0.0f), _HAlign(HAlign_Fill), _VAlign(VAlign_Fill) {}
	SLATE_ARGUMENT(float, WidthOverride)
	SLATE_ARGUMENT(float, HeightOverride)
	SLATE_ARGUMENT(EHorizontalAlignment, HAlign)
	SLATE_ARGUMENT(EVerticalAlignment, VAlign)
	SLATE_ARGUMENT(FMargin, Padding)
	SLATE_DEFAULT_SLOT(FArguments, Content)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
	float GetWidthOverride() const { return WidthOverride; }
	float GetHeightOverride() const { return HeightOverride; }
	FSlateLayoutSize ComputeDesiredSize(float Scale) const override;
	void ArrangeChildren(float Width, float Height, float Scale, TArray<FSlateArrangedChild>& Out) const override;

protected:
	FNativeWidget* CreateNativeWidget() override;

private:
	float WidthOverride = 0.0f;
	float HeightOverride = 0.0f;
};
