#include "Widgets/Layout/SBox.h"

void SBox::Construct(const FArguments& InArgs)
{
	WidthOverride = InArgs._WidthOverride;
	HeightOverride = InArgs._HeightOverride;
	ChildSlot.Padding(InArgs._Padding).HAlign(InArgs._HAlign).VAlign(InArgs._VAlign);
	if (InArgs._Content)
	{
		ChildSlot[InArgs._Content.ToSharedRef()];
	}
}

