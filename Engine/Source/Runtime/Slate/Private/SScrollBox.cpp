#include <QFrame>
#include <QScrollArea>
#include <QVBoxLayout>
#include <QWidget>

#include "SlateQt.h"
#include "Widgets/Layout/SScrollBox.h"

using SlateQt::MakePlainWidget;

void SScrollBox::Construct(const FArguments& InArgs)
{
	Slots = InArgs.Slots;
}

SScrollBox::FSlot& SScrollBox::AddSlot()
{
	Slots.Add(FSlot());
	return Slots.Last();
}

void SScrollBox::ClearChildren()
{
	Slots.Empty();
	AttachedSlots = 0;
	if (Layout)
	{
		SlateQt::ClearLayout(Layout);
		Layout->addStretch(1);
	}
}

TArray<TSharedRef<SWidget>> SScrollBox::GetChildren() const
{
	return WidgetsOfSlots(Slots);
}

QWidget* SScrollBox::CreateQWidget()
{
	QScrollArea* Area = new QScrollArea();
	Area->setWidgetResizable(true);
	Area->setFrameShape(QFrame::NoFrame);
	QWidget* Inner = MakePlainWidget();
	Layout = new QVBoxLayout(Inner);
	Layout->setContentsMargins(0, 0, 0, 0);
	Layout->setSpacing(0);
	Layout->addStretch(1);
	Area->setWidget(Inner);
	AttachedSlots = 0;
	QtWidget = Area;
	AttachPendingSlots();
	return Area;
}

void SScrollBox::AttachPendingSlots()
{
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

void SScrollBox::RefreshAttributes()
{
	AttachPendingSlots();
	SWidget::RefreshAttributes();
}
