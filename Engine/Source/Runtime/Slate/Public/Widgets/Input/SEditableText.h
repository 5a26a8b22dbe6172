#pragma once

#include "Widgets/SWidget.h"

DECLARE_DELEGATE_OneParam(FOnTextChanged, const FText&);

// Text editing on one line, with or without a box around it. A bound text follows its getter; the change
// handler hears every change a user makes, not those the getter makes.
class SEditableTextBase : public SWidget
{
public:
	FText GetText() const { return Text.Get(); }
	// What typing does: the widget shows the new text and the handler hears it.
	void SetTextFromUser(const FString& NewText);
	FString GetShownText() const;
	FString GetDisplayText() const override { return GetShownText(); }
	void RefreshAttributes() override;
	bool IsPassword() const { return bIsPassword; }

protected:
	FNativeWidget* CreateLineEdit(bool bFrame);
	FNativeWidget* CreatePlainTextEdit();
	void ShowText(const FString& NewText);
	// What the native box holds after the user's typing: kept and handed to the handler. Text the code set
	// (while bUpdatingNative) is no typing.
	void TakeTypedText(const FString& NewText);

	TAttribute<FText> Text;
	FOnTextChanged OnTextChanged;
	bool bIsPassword = false;
	bool bMultiLine = false;
	bool bAutoWrap = false;
	bool bUpdatingNative = false;
	FString Shown;
};

class SEditableText : public SEditableTextBase
{
public:
	SLATE_BEGIN_ARGS(SEditableText) : _IsPassword(false) {}
	SLATE_ATTRIBUTE(FText, Text)
	SLATE_EVENT(FOnTextChanged, OnTextChanged)
	SLATE_ARGUMENT(bool, IsPassword)
	SLATE_END_ARGS()
	void Construct(const FArguments& InArgs);

protected:
	FNativeWidget* CreateNativeWidget() override { return CreateLineEdit(false); }
};
