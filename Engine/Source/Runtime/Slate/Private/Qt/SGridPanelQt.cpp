#include <QGridLayout>
#include <QLabel>
#include <QWidget>

#include "SlateQt.h"
#include "Widgets/Layout/SGridPanel.h"

using SlateQt::MakePlainWidget;

FNativeWidget* SGridPanel::CreateNativeWidget()
{
	QWidget* Widget = MakePlainWidget();
	QGridLayout* Grid = new QGridLayout(Widget);
	Grid->setContentsMargins(0, 0, 0, 0);
	Grid->setSpacing(0);
	for (const TPair<int32, float>& Fill : ColumnFills)
	{
		Grid->setColumnStretch(Fill.Key, static_cast<int>(Fill.Value * 100.0f));
	}
	for (FSlot& Slot : Slots)
	{
		if (!Slot.Widget)
		{
			continue;
		}
		// Several widgets may share one cell; each takes its own alignment in it.
		QWidget* Holder = SlateQt::MakeSlotHolder(*Slot.Widget, Slot.SlotPadding, Slot.HAlignment, Slot.VAlignment);
		// The columns share the width by their fill values whatever the cells hold: a long text wraps in its
		// column instead of pushing the other one aside. Only what can't shrink (a row of fixed-width buttons)
		// keeps its least width.
		QWidget* Child = SlateQt::GetQWidget(*Slot.Widget);
		if (QLabel* Label = qobject_cast<QLabel*>(Child))
		{
			Label->setWordWrap(true);
			Label->setMinimumWidth(0);
		}
		else if (!Child->inherits("QLineEdit") && !Child->inherits("QAbstractScrollArea"))
		{
			Holder->setMinimumWidth(Holder->minimumSizeHint().width());
		}
		QSizePolicy Policy = Holder->sizePolicy();
		Policy.setHorizontalPolicy(QSizePolicy::Ignored);
		Holder->setSizePolicy(Policy);
		Grid->addWidget(Holder, Slot.Row, Slot.Column);
	}
	return SlateQt::ToNative(Widget);
}
