#include <QFrame>
#include <QScrollArea>
#include <QVBoxLayout>
#include <QWidget>

#include "SlateQt.h"
#include "Widgets/Layout/SScrollBox.h"

using SlateQt::MakePlainWidget;

namespace
{
	// The column inside the scroll area, once its widget is made.
	QVBoxLayout* LayoutOf(const SWidget& ScrollBox)
	{
		QScrollArea* Area = static_cast<QScrollArea*>(SlateQt::FindQWidget(ScrollBox));
		return Area && Area->widget() ? static_cast<QVBoxLayout*>(Area->widget()->layout()) : nullptr;
	}
}

void SScrollBox::ClearChildren()
{
	Slots.Empty();
	AttachedSlots = 0;
	if (QVBoxLayout* Layout = LayoutOf(*this))
	{
		SlateQt::ClearLayout(Layout);
		Layout->addStretch(1);
	}
}

FNativeWidget* SScrollBox::CreateNativeWidget()
{
	QScrollArea* Area = new QScrollArea();
	Area->setWidgetResizable(true);
	Area->setFrameShape(QFrame::NoFrame);
	QWidget* Inner = MakePlainWidget();
	QVBoxLayout* Layout = new QVBoxLayout(Inner);
	Layout->setContentsMargins(0, 0, 0, 0);
	Layout->setSpacing(0);
	Layout->addStretch(1);
	Area->setWidget(Inner);
	AttachedSlots = 0;
	SetNativeWidget(SlateQt::ToNative(Area));
	AttachPendingSlots();
	return SlateQt::ToNative(Area);
}

void SScrollBox::AttachPendingSlots()
{
	QVBoxLayout* Layout = LayoutOf(*this);
	if (!Layout)
	{
		return;
	}
	for (; AttachedSlots < Slots.Num(); ++AttachedSlots)
	{
		FSlot& Slot = Slots[AttachedSlots];
		if (Slot.Widget)
		{
			// Before the closing stretch, so that children stand at the top.
			Layout->insertWidget(Layout->count() - 1,
								 SlateQt::MakeSlotHolder(*Slot.Widget, Slot.SlotPadding, Slot.HAlignment, Slot.VAlignment));
		}
	}
}
