#include <QGridLayout>
#include <QLabel>
#include <QWidget>

#include <algorithm>
#include <cmath>
#include <map>

#include "SlateQt.h"
#include "Widgets/Layout/SGridPanel.h"

namespace
{
	// A grid that asks for the width at which every column holds its widest cell on one line at the column's
	// share of the width, so that a window sized to its content (a login dialog) cuts no label. Cells may still
	// wrap when the grid is given less, as in a narrow tab.
	class FGridWidgetQt : public QWidget
	{
	public:
		explicit FGridWidgetQt(const TArray<TPair<int32, float>>& InFills)
		{
			setAttribute(Qt::WA_StyledBackground, false);
			for (const TPair<int32, float>& Fill : InFills)
			{
				FillTotal += Fill.Value;
				Fills[Fill.Key] = Fill.Value;
			}
		}

		QSize sizeHint() const override
		{
			QSize Hint = QWidget::sizeHint();
			const QGridLayout* Grid = static_cast<const QGridLayout*>(layout());
			std::map<int, int> Widest;
			for (int Item = 0; Item < Grid->count(); ++Item)
			{
				QWidget* Holder = Grid->itemAt(Item)->widget();
				if (!Holder || Holder->isHidden())
				{
					continue;
				}
				int Row = 0;
				int Column = 0;
				int RowSpan = 0;
				int ColumnSpan = 0;
				Grid->getItemPosition(Item, &Row, &Column, &RowSpan, &ColumnSpan);
				int Width = Holder->sizeHint().width();
				// A wrapping label asks for less than its text; unwrapped it needs the whole line. A text of more than
				// about forty letters (a long hint, a path) is one meant to wrap, and asks for forty.
				if (const QLabel* Label = Holder->findChild<QLabel*>(QString(), Qt::FindDirectChildrenOnly); Label && Label->wordWrap())
				{
					const QMargins Around = Holder->layout()->contentsMargins();
					const QFontMetrics Metrics = Label->fontMetrics();
					const int Line = std::min(Metrics.horizontalAdvance(Label->text()), 40 * Metrics.averageCharWidth()) +
									 2 * Label->frameWidth() + 2 * Label->margin() + 1;
					Width = std::max(Width, Line + Around.left() + Around.right());
				}
				Widest[Column] = std::max(Widest[Column], Width);
			}
			int Needed = 0;
			int Fixed = 0;
			for (const auto& [Column, Width] : Widest)
			{
				const auto Fill = Fills.find(Column);
				if (Fill != Fills.end() && Fill->second > 0.0f && FillTotal > 0.0f)
				{
					Needed = std::max(Needed, static_cast<int>(std::ceil(Width * FillTotal / Fill->second)));
				}
				else
				{
					Fixed += Width;
				}
			}
			Hint.setWidth(std::max(Hint.width(), Needed + Fixed));
			return Hint;
		}

	private:
		std::map<int, float> Fills;
		float FillTotal = 0.0f;
	};
}

FNativeWidget* SGridPanel::CreateNativeWidget()
{
	QWidget* Widget = new FGridWidgetQt(ColumnFills);
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
