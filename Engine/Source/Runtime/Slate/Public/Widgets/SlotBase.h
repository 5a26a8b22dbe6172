#pragma once

#include "Widgets/SWidget.h"

// What every slot carries: its child, padding and alignment inside the space the panel gives it.
template <typename SlotType>
struct TSlotBase
{
	TSharedPtr<SWidget> Widget;
	FMargin SlotPadding;
	EHorizontalAlignment HAlignment = HAlign_Fill;
	EVerticalAlignment VAlignment = VAlign_Fill;

	SlotType& Me() { return static_cast<SlotType&>(*this); }
	SlotType& operator[](const TSharedRef<SWidget>& InWidget)
	{
		Widget = InWidget;
		return Me();
	}
	SlotType& Padding(const FMargin& InPadding)
	{
		SlotPadding = InPadding;
		return Me();
	}
	SlotType& Padding(float Uniform)
	{
		SlotPadding = FMargin(Uniform);
		return Me();
	}
	SlotType& Padding(float Horizontal, float Vertical)
	{
		SlotPadding = FMargin(Horizontal, Vertical);
		return Me();
	}
	SlotType& Padding(float Left, float Top, float Right, float Bottom)
	{
		SlotPadding = FMargin(Left, Top, Right, Bottom);
		return Me();
	}
	SlotType& HAlign(EHorizontalAlignment InAlignment)
	{
		HAlignment = InAlignment;
		return Me();
	}
	SlotType& VAlign(EVerticalAlignment InAlignment)
	{
		VAlignment = InAlignment;
		return Me();
	}
};

struct FSimpleSlot : TSlotBase<FSimpleSlot>
{
};

// The widgets of a panel's slots, in slot order, for walks of the widget tree.
template <typename SlotType>
TArray<TSharedRef<SWidget>> WidgetsOfSlots(const TArray<SlotType>& Slots)
{
	TArray<TSharedRef<SWidget>> Children;
	for (const SlotType& Slot : Slots)
	{
		if (Slot.Widget)
		{
			Children.Add(Slot.Widget.ToSharedRef());
		}
	}
	return Children;
}
