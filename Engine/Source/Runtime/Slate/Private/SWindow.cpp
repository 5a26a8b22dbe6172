#include "Widgets/SWindow.h"

void SWindow::Construct(const FArguments& InArgs)
{
	Title = InArgs._Title;
	ClientSize = InArgs._ClientSize;
	SizingRule = InArgs._SizingRule;
	AutoCenter = InArgs._AutoCenter;
	bHasMaximizeBox = InArgs._SupportsMaximize;
	bHasMinimizeBox = InArgs._SupportsMinimize;
	if (!Title.IsBound())
	{
		SetTextKey(Title.Get());
	}
	if (InArgs._Content)
	{
		ChildSlot.Padding(8)[InArgs._Content.ToSharedRef()];
	}
}

void SWindow::SetContent(const TSharedRef<SWidget>& InContent)
{
	ChildSlot.Padding(8)[InContent];
}

