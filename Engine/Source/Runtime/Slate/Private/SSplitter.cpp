#include "Widgets/Layout/SSplitter.h"

#include <algorithm>

void SSplitter::Construct(const FArguments& InArgs)
{
	Slots = InArgs.Slots;
	Orientation = InArgs._Orientation;
}

SSplitter::FSlot& SSplitter::AddSlot()
{
	Slots.Add(FSlot());
	return Slots.Last();
}

TArray<TSharedRef<SWidget>> SSplitter::GetChildren() const
{
	return WidgetsOfSlots(Slots);
}

