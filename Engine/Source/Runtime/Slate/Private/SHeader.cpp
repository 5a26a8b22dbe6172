#include "Widgets/Layout/SHeader.h"

void SHeader::Construct(const FArguments& InArgs)
{
	if (InArgs._Content)
	{
		ChildSlot.HAlign(HAlign_Center)[InArgs._Content.ToSharedRef()];
	}
}

