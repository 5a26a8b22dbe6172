#include "Widgets/Input/SButton.h"

void SButton::Construct(const FArguments& InArgs)
{
	Text = InArgs._Text;
	OnClicked = InArgs._OnClicked;
	ContentHAlign = InArgs._HAlign;
	if (Text.IsSet() && !Text.IsBound())
	{
		SetTextKey(Text.Get());
	}
	if (InArgs._Content)
	{
		ChildSlot.HAlign(InArgs._HAlign).VAlign(InArgs._VAlign)[InArgs._Content.ToSharedRef()];
	}
}

FReply SButton::Click()
{
	if (!IsEnabled() || !OnClicked.IsBound())
	{
		return FReply::Unhandled();
	}
	TSharedRef<SWidget> KeepAlive = AsShared();
	return OnClicked.Execute();
}

FString SButton::GetDisplayText() const
{
	return Text.IsSet() ? Text.Get().ToString() : SCompoundWidget::GetDisplayText();
}

