#include "Widgets/SBoxPanel.h"

#include <algorithm>

SBoxPanel::FSlot& SBoxPanel::AddSlot()
{
	Slots.Add(FSlot());
	return Slots.Last();
}

TArray<TSharedRef<SWidget>> SBoxPanel::GetChildren() const
{
	return WidgetsOfSlots(Slots);
}

void SBoxPanel::RefreshAttributes()
{
	AttachPendingSlots();
	SWidget::RefreshAttributes();
}
