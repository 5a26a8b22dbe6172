#pragma once

#include "Widgets/SCompoundWidget.h"

DECLARE_DELEGATE_RetVal(FReply, FOnClicked);

class SButton : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SButton) : _HAlign(HAlign_Fill), _VAlign(VAlign_Fill) {}
	SLATE_ATTRIBUTE(FText, Text)
	SLATE_EVENT(FOnClicked, OnClicked)
	SLATE_ARGUMENT(EHorizontalAlignment, HAlign)
	SLATE_ARGUMENT(EVerticalAlignment, VAlign)
	SLATE_DEFAULT_SLOT(FArguments, Content)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
	// What a user's click does: nothing while the button is disabled, else the handler runs.
	FReply Click();
	FString GetDisplayText() const override;
	EHorizontalAlignment GetContentHAlign() const { return ContentHAlign; }
	void RefreshAttributes() override;

protected:
	FNativeWidget* CreateNativeWidget() override;

private:
	TAttribute<FText> Text;
	FOnClicked OnClicked;
	EHorizontalAlignment ContentHAlign = HAlign_Fill;
	FString ShownText;
};
