#include "Widgets/SCompoundWidget.h"

SCompoundWidget::FChildSlotHandle& SCompoundWidget::FChildSlotHandle::operator[](const TSharedRef<SWidget>& InWidget)
{
	Widget = InWidget;
	if (Owner)
	{
		Owner->AttachChild();
	}
	return *this;
}

TArray<TSharedRef<SWidget>> SCompoundWidget::GetChildren() const
{
	return AttachedChild ? TArray<TSharedRef<SWidget>>{AttachedChild.ToSharedRef()} : TArray<TSharedRef<SWidget>>{};
}

