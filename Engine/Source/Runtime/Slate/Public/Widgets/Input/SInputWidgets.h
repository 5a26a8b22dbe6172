#pragma once

#include "Styling/SlateBrush.h"
#include "Widgets/SCompoundWidget.h"

DECLARE_DELEGATE_RetVal(FReply, FOnClicked);
DECLARE_DELEGATE_OneParam(FOnCheckStateChanged, ECheckBoxState);
DECLARE_DELEGATE(FSimpleDelegate);
DECLARE_DELEGATE_OneParam(FOnTextChanged, const FText&);

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
	QWidget* CreateQWidget() override;

private:
	TAttribute<FText> Text;
	FOnClicked OnClicked;
	EHorizontalAlignment ContentHAlign = HAlign_Fill;
	FString ShownText;
};

class SCheckBox : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SCheckBox) : _IsChecked(ECheckBoxState::Unchecked) {}
	SLATE_ATTRIBUTE(ECheckBoxState, IsChecked)
	SLATE_EVENT(FOnCheckStateChanged, OnCheckStateChanged)
	SLATE_DEFAULT_SLOT(FArguments, Content)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
	// A user's click: an unbound box flips its own state, then the handler hears the new state.
	void ToggleCheckedState();
	ECheckBoxState GetCheckedState() const;
	bool IsChecked() const { return GetCheckedState() == ECheckBoxState::Checked; }
	void RefreshAttributes() override;

protected:
	QWidget* CreateQWidget() override;

private:
	TAttribute<ECheckBoxState> IsCheckedAttribute;
	ECheckBoxState OwnState = ECheckBoxState::Unchecked;
	FOnCheckStateChanged OnCheckStateChanged;
	bool bUpdatingQt = false;
};

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
	QWidget* CreateQWidget() override;

private:
	TAttribute<FText> Text;
	FSimpleDelegate OnNavigate;
};

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
	QWidget* CreateLineEdit(bool bFrame);
	QWidget* CreatePlainTextEdit();
	void ShowText(const FString& NewText);

	TAttribute<FText> Text;
	FOnTextChanged OnTextChanged;
	bool bIsPassword = false;
	bool bMultiLine = false;
	bool bAutoWrap = false;
	bool bUpdatingQt = false;
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
	QWidget* CreateQWidget() override { return CreateLineEdit(false); }
};

// The same as SEditableText, with a frame around the text.
class SEditableTextBox : public SEditableText
{
protected:
	QWidget* CreateQWidget() override { return CreateLineEdit(true); }
};

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
	QWidget* CreateQWidget() override { return CreatePlainTextEdit(); }
};
