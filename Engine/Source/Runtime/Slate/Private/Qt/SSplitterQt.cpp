#include <QSplitter>

#include "SlateQt.h"
#include "Widgets/Layout/SSplitter.h"

#include <algorithm>

FNativeWidget* SSplitter::CreateNativeWidget()
{
	QSplitter* Splitter = new QSplitter(Orientation == Orient_Horizontal ? Qt::Horizontal : Qt::Vertical);
	Splitter->setChildrenCollapsible(false);
	QList<int> Sizes;
	for (FSlot& Slot : Slots)
	{
		if (Slot.Widget)
		{
			Splitter->addWidget(SlateQt::MakeSlotHolder(*Slot.Widget, Slot.SlotPadding, Slot.HAlignment, Slot.VAlignment));
			Sizes.append(static_cast<int>(Slot.SizeValue * 1000.0f));
		}
	}
	Splitter->setSizes(Sizes);
	for (int Index = 0; Index < Sizes.size(); ++Index)
	{
		Splitter->setStretchFactor(Index, std::max(1, Sizes[Index] / 100));
	}
	return SlateQt::ToNative(Splitter);
}
