#pragma once

#include <QAbstractItemView>
#include <QHeaderView>
#include <QMouseEvent>
#include <QTableView>

#include "SteadyScrollBarQt.h"
#include "Widgets/Views/STableViewBase.h"

// A one-column table rather than a list view: the table's row header keeps rows of one height as a single
// span, so that appending rows costs the same at a million rows as at ten. A list view lays out every row again.
class FTableListViewQt : public QTableView
{
public:
	explicit FTableListViewQt(STableViewBase* InOwner) : Owner(InOwner)
	{
		horizontalHeader()->hide();
		horizontalHeader()->setStretchLastSection(true);
		verticalHeader()->hide();
		verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
		setShowGrid(false);
		setSelectionBehavior(QAbstractItemView::SelectRows);
		setWordWrap(false);
		setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
		setVerticalScrollBar(new FSteadyScrollBarQt(Qt::Vertical));
	}
	STableViewBase* Owner;

	// Scrolling right after rows arrived needs the scroll range of the new row count now, not at Qt's next
	// layout pass.
	void ScrollToRow(int Row)
	{
		const auto Scroll = [this, Row]()
		{
			updateGeometries();
			scrollTo(model()->index(Row, 0), QAbstractItemView::EnsureVisible);
		};
		if (FSteadyScrollBarQt* Bar = dynamic_cast<FSteadyScrollBarQt*>(verticalScrollBar()))
		{
			Bar->ChangeTogether(Scroll);
		}
		else
		{
			Scroll();
		}
	}

protected:
	void mousePressEvent(QMouseEvent* Event) override
	{
		const QModelIndex Index = indexAt(Event->pos());
		if (Owner && Index.isValid())
		{
			TSharedRef<SWidget> KeepAlive = Owner->AsShared();
			Owner->ClickRow(Index.row());
			return;
		}
		QTableView::mousePressEvent(Event);
	}
};
