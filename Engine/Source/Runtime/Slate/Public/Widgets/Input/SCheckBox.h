#pragma once

#include "Widgets/SCompoundWidget.h"

DECLARE_DELEGATE_OneParam(FOnCheckStateChanged, ECheckBoxState);

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
	FNativeWidget* CreateNativeWidget() override;

private:
	TAttribute<ECheckBoxState> IsCheckedAttribute;
	ECheckBoxState OwnState = ECheckBoxState::Unchecked;
	FOnCheckStateChanged OnCheckStateChanged;
	bool bUpdatingNative = false;
};
