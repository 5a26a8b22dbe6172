#include "Widgets/Layout/SGridPanel.h"

void SGridPanel::Construct(const FArguments& InArgs)
{
	Slots = InArgs.Slots;
	ColumnFills = InArgs.ColumnFills;
}

SGridPanel::FSlot& SGridPanel::AddSlot(int32 Column, int32 Row)
{
	Slots.Add(Slot(Column, Row));
	return Slots.Last();
}

TArray<TSharedRef<SWidget>> SGridPanel::GetChildren() const
{
	return WidgetsOfSlots(Slots);
}

