#pragma once

#include "Styling/SlateBrush.h"
#include "Widgets/SWidget.h"

DECLARE_DELEGATE(FSimpleDelegate);

class SHyperlink : public SWidget
{
public:
	SLATE_BEGIN_ARGS(SHyperlink) {}
	SLATE_ATTRIBUTE(FText, Text)
	SLATE_EVENT(FSimpleDelegate, OnNavigate)
	SLATE_ARGUMENT(FString, StyleName)
	WidgetArgsType& Style(const ISlateStyle* InStyle, const TCHAR* Name)
	{
		_StyleName = Name;
		return *this;
	}
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
	void Navigate();
	FString GetDisplayText() const override { return Text.Get().ToString(); }

protected:
	FNativeWidget* CreateNativeWidget() override;

private:
	TAttribute<FText> Text;
	FSimpleDelegate OnNavigate;
};
