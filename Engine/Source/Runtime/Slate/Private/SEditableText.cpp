#include "Widgets/Input/SEditableText.h"

#include <algorithm>

void SEditableText::Construct(const FArguments& InArgs)
{
	Text = InArgs._Text;
	OnTextChanged = InArgs._OnTextChanged;
	bIsPassword = InArgs._IsPassword;
	Shown = Text.Get().ToString();
}

void SEditableTextBase::SetTextFromUser(const FString& NewText)
{
	if (!IsEnabled())
	{
		return;
	}
	ShowText(NewText);
	TSharedRef<SWidget> KeepAlive = AsShared();
	OnTextChanged.ExecuteIfBound(FText::FromString(NewText));
}

void SEditableTextBase::TakeTypedText(const FString& NewText)
{
	if (bUpdatingNative)
	{
		return;
	}
	Shown = NewText;
	TSharedRef<SWidget> KeepAlive = AsShared();
	OnTextChanged.ExecuteIfBound(FText::FromString(Shown));
}

FString SEditableTextBase::GetShownText() const
{
	return Shown;
}

void SEditableTextBase::RefreshAttributes()
{
	// A bound text follows its getter; a box without a binding keeps what the user typed.
	if (Text.IsBound())
	{
		const FString Now = Text.Get().ToString();
		if (Now != Shown)
		{
			ShowText(Now);
		}
	}
	SWidget::RefreshAttributes();
}
