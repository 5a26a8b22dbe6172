#include "Widgets/Text/STextBlock.h"

void STextBlock::Construct(const FArguments& InArgs)
{
	Justification = InArgs._Justification;
	TextStyleName = InArgs._TextStyleName;
	bAutoWrap = InArgs._AutoWrapText;
	SetText(InArgs._Text);
}

void STextBlock::SetText(const TAttribute<FText>& InText)
{
	Text = InText;
	if (!Text.IsBound())
	{
		SetTextKey(Text.Get());
	}
	bShownOnce = false;
}

