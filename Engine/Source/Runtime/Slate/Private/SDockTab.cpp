#include "Widgets/Docking/SDockTab.h"

void SDockTab::Construct(const FArguments& InArgs)
{
	TabRole = InArgs._TabRole;
	Label = InArgs._Label;
	if (InArgs._Content)
	{
		ChildSlot[InArgs._Content.ToSharedRef()];
	}
}

void SDockTab::SetContent(const TSharedRef<SWidget>& InContent)
{
	ChildSlot[InContent];
}
