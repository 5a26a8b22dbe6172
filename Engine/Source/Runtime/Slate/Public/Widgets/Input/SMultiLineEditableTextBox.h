#pragma once

#include "Widgets/Input/SEditableText.h"

class SMultiLineEditableTextBox : public SEditableTextBase
{
public:
	SLATE_BEGIN_ARGS(SMultiLineEditableTextBox) : _AutoWrapText(false) {}
	SLATE_ATTRIBUTE(FText, Text)
	SLATE_EVENT(FOnTextChanged, OnTextChanged)
	SLATE_ARGUMENT(bool, AutoWrapText)
	SLATE_END_ARGS()
	void Construct(const FArguments& InArgs);
	bool IsAutoWrap() const { return bAutoWrap; }

protected:
	FNativeWidget* CreateNativeWidget() override { return CreatePlainTextEdit(); }
};
