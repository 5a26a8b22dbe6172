#pragma once

#include <QAbstractItemView>
#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyle>
#include <QTableView>
#include <QTimer>
#include <QToolTip>

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
			// The click gives the list the keys, as a click on any list does.
			setFocus(Qt::MouseFocusReason);
			ChooseRow(Index.row(), &STableViewBase::ClickRow);
			return;
		}
		QTableView::mousePressEvent(Event);
	}

	// A key that moves the current row (an arrow, Page Up or Down, Home, End) selects that row through the list,
	// so that its selection handler hears of it as of a click.
	void keyPressEvent(QKeyEvent* Event) override
	{
		const QModelIndex Before = currentIndex();
		QTableView::keyPressEvent(Event);
		const QModelIndex After = currentIndex();
		if (Owner && After.isValid() && After != Before)
		{
			ChooseRow(After.row(), &STableViewBase::NavigateToRow);
		}
	}

	// A row cut short with "..." shows its whole text when the mouse rests on it (a long folder name, a long
	// line of the log); a row that fits shows none.
	bool viewportEvent(QEvent* Event) override
	{
		if (Event->type() != QEvent::ToolTip)
		{
			return QTableView::viewportEvent(Event);
		}
		const QHelpEvent* Help = static_cast<QHelpEvent*>(Event);
		const QModelIndex Index = indexAt(Help->pos());
		QString Text = Index.isValid() ? Index.data().toString() : QString();
		const QRect Cell = visualRect(Index);
		const int Margins = 2 * (style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, this) + 1);
		if (Text.isEmpty() || fontMetrics().horizontalAdvance(Text.left(Cell.width())) <= Cell.width() - Margins)
		{
			QToolTip::hideText();
			return true;
		}
		// A tooltip is read, not scrolled: a line of a megabyte shows its start.
		constexpr int MostShown = 2000;
		if (Text.size() > MostShown)
		{
			Text = Text.left(MostShown) + QChar(0x2026);
		}
		QToolTip::showText(Help->globalPos(), Text, viewport(), Cell);
		return true;
	}

private:
	// Hands the list the row the user chose. A handler that rebuilds the layout makes a new list over the same
	// items: the keys go on there, from that row.
	void ChooseRow(int Row, void (STableViewBase::*Choose)(int32))
	{
		TSharedRef<SWidget> KeepAlive = Owner->AsShared();
		const void* Source = Owner->ItemsSourceIdentity();
		(Owner->*Choose)(Row);
		QTimer::singleShot(0, [Source, Row] { FocusListOver(Source, Row); });
	}

	static void FocusListOver(const void* Source, int Row)
	{
		for (QWidget* Widget : QApplication::allWidgets())
		{
			FTableListViewQt* View = dynamic_cast<FTableListViewQt*>(Widget);
			if (View && View->Owner && View->Owner->ItemsSourceIdentity() == Source && View->isVisible())
			{
				if (!View->currentIndex().isValid() && Row < View->model()->rowCount())
				{
					View->selectionModel()->setCurrentIndex(View->model()->index(Row, 0), QItemSelectionModel::NoUpdate);
				}
				View->setFocus(Qt::OtherFocusReason);
				return;
			}
		}
	}
};
