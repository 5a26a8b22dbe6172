#include "Widgets/Input/SCheckBox.h"

void SCheckBox::Construct(const FArguments& InArgs)
{
	IsCheckedAttribute = InArgs._IsChecked;
	OwnState = IsCheckedAttribute.Get();
	OnCheckStateChanged = InArgs._OnCheckStateChanged;
	if (InArgs._Content)
	{
		ChildSlot[InArgs._Content.ToSharedRef()];
	}
}

ECheckBoxState SCheckBox::GetCheckedState() const
{
	return IsCheckedAttribute.IsBound() ? IsCheckedAttribute.Get() : OwnState;
}

void SCheckBox::ToggleCheckedState()
{
	if (!IsEnabled())
	{
		return;
	}
	const ECheckBoxState NewState =
		GetCheckedState() == ECheckBoxState::Checked ? ECheckBoxState::Unchecked : ECheckBoxState::Checked;
	if (!IsCheckedAttribute.IsBound())
	{
		OwnState = NewState;
	}
	TSharedRef<SWidget> KeepAlive = AsShared();
	OnCheckStateChanged.ExecuteIfBound(NewState);
	RefreshAttributes();
}

