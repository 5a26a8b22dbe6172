#include "Widgets/Layout/SBorder.h"

void SBorder::Construct(const FArguments& InArgs)
{
	BorderImage = InArgs._BorderImage;
	ChildSlot.Padding(InArgs._Padding).HAlign(InArgs._HAlign).VAlign(InArgs._VAlign);
	if (InArgs._Content)
	{
		ChildSlot[InArgs._Content.ToSharedRef()];
	}
}

