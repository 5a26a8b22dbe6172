#pragma once

#include "Styling/SlateBrush.h"
#include "Widgets/SWidget.h"

class STextBlock : public SWidget
{
public:
	SLATE_BEGIN_ARGS(STextBlock) : _Justification(ETextJustify::Left), _AutoWrapText(false) {}
	SLATE_ATTRIBUTE(FText, Text)
	SLATE_ARGUMENT(ETextJustify::Type, Justification)
	SLATE_ARGUMENT(bool, AutoWrapText)
	SLATE_ARGUMENT(FString, TextStyleName)
	WidgetArgsType& TextStyle(const ISlateStyle* Style, const TCHAR* Name)
	{
		_TextStyleName = Name;
		return *this;
	}
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
	FText GetText() const { return Text.Get(); }
	void SetText(const TAttribute<FText>& InText);
	FString GetDisplayText() const override { return Text.Get().ToString(); }
	// Breaks long lines at the width it is given; a grid's cells wrap their labels so. Takes effect when the
	// native label is made.
	void SetAutoWrapText(bool bInAutoWrap) { bAutoWrap = bInAutoWrap; }
	void RefreshAttributes() override;

protected:
	FNativeWidget* CreateNativeWidget() override;

private:
	TAttribute<FText> Text;
	ETextJustify::Type Justification = ETextJustify::Left;
	bool bAutoWrap = false;
	FString TextStyleName;
	FString ShownText;
	bool bShownOnce = false;
	bool bShownWrapped = false;
};
