#include <QAbstractItemView>
#include <QHeaderView>
#include <QVBoxLayout>
#include <QWidget>

#include "RowDelegateQt.h"
#include "SlateQt.h"
#include "TableListViewQt.h"
#include "TableModelQt.h"
#include "Widgets/Views/STableViewBase.h"

struct STableViewBase::FNativeParts
{
	QPointer<FTableModelQt> Model;
	QPointer<FTableListViewQt> View;
};

STableViewBase::STableViewBase() : Parts(std::make_unique<FNativeParts>())
{
}

STableViewBase::~STableViewBase()
{
	// The Qt view and model outlive this widget until the event loop deletes them; they must not call back.
	if (Parts->Model)
	{
		Parts->Model->Owner = nullptr;
	}
	if (Parts->View)
	{
		Parts->View->Owner = nullptr;
	}
}

FNativeWidget* STableViewBase::CreateNativeWidget()
{
	QWidget* Container = new QWidget();
	QVBoxLayout* Layout = new QVBoxLayout(Container);
	Layout->setContentsMargins(0, 0, 0, 0);
	Layout->setSpacing(0);
	if (HeaderRow)
	{
		Layout->addWidget(SlateQt::GetQWidget(*HeaderRow));
	}
	Parts->View = new FTableListViewQt(this);
	Parts->Model = new FTableModelQt(this);
	Parts->Model->setParent(Parts->View);
	Parts->View->setModel(Parts->Model);
	Parts->View->setItemDelegate(new FRowDelegateQt(Parts->View));
	Parts->View->verticalHeader()->setMinimumSectionSize(1);
	Parts->View->verticalHeader()->setDefaultSectionSize(static_cast<int>(ItemHeight));
	Parts->View->setSelectionMode(SelectionMode == ESelectionMode::None ? QAbstractItemView::NoSelection
																  : QAbstractItemView::SingleSelection);
	Parts->View->setVerticalScrollBarPolicy(bAlwaysShowScrollbar ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAsNeeded);
	Parts->View->setEditTriggers(QAbstractItemView::NoEditTriggers);
	// Focus only by a click: a list that took the window's first focus would mark a current row, which looks
	// like a selection the list does not have.
	Parts->View->setFocusPolicy(Qt::ClickFocus);
	Layout->addWidget(Parts->View, 1);
	// Focus given to the list goes to its rows.
	Container->setFocusProxy(Parts->View);
	SetNativeWidget(SlateQt::ToNative(Container));
	RowsShown = 0;
	bRefreshPending = true;
	ApplyRefresh();
	return SlateQt::ToNative(Container);
}

void STableViewBase::RefreshAttributes()
{
	if (HasNativeWidget())
	{
		ApplyRefresh();
		if (PendingScrollIndex != INDEX_NONE && Parts->View && PendingScrollIndex < RowsShown)
		{
			Parts->View->ScrollToRow(PendingScrollIndex);
			PendingScrollIndex = INDEX_NONE;
		}
	}
	SWidget::RefreshAttributes();
}

void STableViewBase::GetVisibleRange(int32& OutFirst, int32& OutLast) const
{
	OutFirst = INDEX_NONE;
	OutLast = INDEX_NONE;
	if (!Parts->View || RowsShown == 0)
	{
		return;
	}
	const QRect Area = Parts->View->viewport()->rect();
	const QModelIndex Top = Parts->View->indexAt(Area.topLeft() + QPoint(1, 1));
	QModelIndex Bottom = Parts->View->indexAt(QPoint(1, Area.bottom() - 1));
	if (!Top.isValid())
	{
		return;
	}
	OutFirst = Top.row();
	OutLast = Bottom.isValid() ? Bottom.row() : RowsShown - 1;
}

void STableViewBase::MirrorSelection()
{
	if (!Parts->View || !Parts->Model)
	{
		return;
	}
	const int32 Index = SelectedIndex();
	if (Index == INDEX_NONE || Index >= RowsShown)
	{
		// No current row either, so that nothing looks selected.
		Parts->View->selectionModel()->clear();
	}
	else
	{
		Parts->View->setCurrentIndex(Parts->Model->index(Index));
	}
}

void STableViewBase::ShowRows(int32 Count, bool bAppendOnly)
{
	if (Parts->Model)
	{
		Parts->Model->SetRows(Count, bAppendOnly);
		MirrorSelection();
	}
}
