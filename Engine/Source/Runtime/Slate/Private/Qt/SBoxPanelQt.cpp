#include <QHBoxLayout>
#include <QVBoxLayout>
#include <QWidget>

#include "SlateQt.h"
#include "Widgets/SBoxPanel.h"

#include <algorithm>

using SlateQt::MakePlainWidget;

namespace
{
	// The panel's layout, once its widget is made.
	QBoxLayout* LayoutOf(const SWidget& Panel)
	{
		QWidget* Widget = SlateQt::FindQWidget(Panel);
		return Widget ? static_cast<QBoxLayout*>(Widget->layout()) : nullptr;
	}
}

void SBoxPanel::ClearChildren()
{
	Slots.Empty();
	AttachedSlots = 0;
	bTrailingStretch = false;
	if (QBoxLayout* Layout = LayoutOf(*this))
	{
		SlateQt::ClearLayout(Layout);
	}
}

FNativeWidget* SBoxPanel::CreateNativeWidget()
{
	QWidget* Widget = MakePlainWidget();
	QBoxLayout* Layout = Orientation == Orient_Vertical ? static_cast<QBoxLayout*>(new QVBoxLayout(Widget))
											: static_cast<QBoxLayout*>(new QHBoxLayout(Widget));
	Layout->setContentsMargins(0, 0, 0, 0);
	Layout->setSpacing(0);
	AttachedSlots = 0;
	bTrailingStretch = false;
	SetNativeWidget(SlateQt::ToNative(Widget));
	AttachPendingSlots();
	return SlateQt::ToNative(Widget);
}

void SBoxPanel::AttachPendingSlots()
{
	QBoxLayout* Layout = LayoutOf(*this);
	if (!Layout || AttachedSlots >= Slots.Num())
	{
		return;
	}
	for (; AttachedSlots < Slots.Num(); ++AttachedSlots)
	{
		FSlot& Slot = Slots[AttachedSlots];
		if (!Slot.Widget)
		{
			continue;
		}
		QWidget* Holder = SlateQt::MakeSlotHolder(*Slot.Widget, Slot.SlotPadding, Slot.HAlignment, Slot.VAlignment);
		// Fill slots share the room by their values; auto slots keep their natural size. New slots stand
		// before the closing stretch, if there is one.
		const int Stretch = Slot.bAuto ? 0 : std::max(1, static_cast<int>(Slot.Fill * 100.0f));
		Layout->insertWidget(bTrailingStretch ? Layout->count() - 1 : Layout->count(), Holder, Stretch);
	}
	// A row of natural-size slots keeps them at its start, as the toolkit lays them out.
	if (!bTrailingStretch && Orientation == Orient_Horizontal &&
		std::all_of(Slots.begin(), Slots.end(), [](const FSlot& S) { return S.bAuto; }))
	{
		Layout->addStretch(1);
		bTrailingStretch = true;
	}
}
