#include "Widgets/Layout/SScrollBox.h"

void SScrollBox::Construct(const FArguments& InArgs)
{
	Slots = InArgs.Slots;
}

SScrollBox::FSlot& SScrollBox::AddSlot()
{
	Slots.Add(FSlot());
	return Slots.Last();
}

TArray<TSharedRef<SWidget>> SScrollBox::GetChildren() const
{
	return WidgetsOfSlots(Slots);
}

void SScrollBox::RefreshAttributes()
{
	AttachPendingSlots();
	SWidget::RefreshAttributes();
}
