#include <QAbstractItemView>
#include <QHeaderView>
#include <QVBoxLayout>
#include <QWidget>

#include "TableListViewQt.h"
#include "TableModelQt.h"
#include "Widgets/Views/STableViewBase.h"

STableViewBase::~STableViewBase()
{
	// The Qt view and model outlive this widget until the event loop deletes them; they must not call back.
	if (Model)
	{
		Model->Owner = nullptr;
	}
	if (View)
	{
		View->Owner = nullptr;
	}
}

QWidget* STableViewBase::CreateQWidget()
{
	QWidget* Container = new QWidget();
	QVBoxLayout* Layout = new QVBoxLayout(Container);
	Layout->setContentsMargins(0, 0, 0, 0);
	Layout->setSpacing(0);
	if (HeaderRow)
	{
		Layout->addWidget(HeaderRow->GetQWidget());
	}
	View = new FTableListViewQt(this);
	Model = new FTableModelQt(this);
	Model->setParent(View);
	View->setModel(Model);
	View->verticalHeader()->setMinimumSectionSize(1);
	View->verticalHeader()->setDefaultSectionSize(static_cast<int>(ItemHeight));
	View->setSelectionMode(SelectionMode == ESelectionMode::None ? QAbstractItemView::NoSelection
																  : QAbstractItemView::SingleSelection);
	View->setVerticalScrollBarPolicy(bAlwaysShowScrollbar ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAsNeeded);
	View->setEditTriggers(QAbstractItemView::NoEditTriggers);
	// Focus only by a click: a list that took the window's first focus would mark a current row, which looks
	// like a selection the list does not have.
	View->setFocusPolicy(Qt::ClickFocus);
	Layout->addWidget(View, 1);
	QtWidget = Container;
	RowsShown = 0;
	bRefreshPending = true;
	ApplyRefresh();
	return Container;
}

TArray<TSharedRef<SWidget>> STableViewBase::GetChildren() const
{
	return HeaderRow ? TArray<TSharedRef<SWidget>>{HeaderRow.ToSharedRef()} : TArray<TSharedRef<SWidget>>{};
}

FString STableViewBase::GetRowText(int32 Index)
{
	auto Found = RowTextCache.find(Index);
	if (Found != RowTextCache.end())
	{
		return Found->second;
	}
	// Only rows on screen are asked for; the cache is dropped whole when it grows past a few screens.
	if (RowTextCache.size() > 4096)
	{
		RowTextCache.clear();
	}
	const FString Text = MakeRow(Index)->AsWidget()->GetDisplayText();
	RowTextCache.emplace(Index, Text);
	return Text;
}

void STableViewBase::ApplyRefresh()
{
	if (!bRefreshPending)
	{
		return;
	}
	bRefreshPending = false;
	const int32 Count = NumItems();
	// The array only grew at its end when its first item and the item last shown at the end are unchanged.
	const bool bAppendOnly = RowsShown > 0 && Count >= RowsShown && ItemIdentity(0) == FirstIdentity &&
							 ItemIdentity(RowsShown - 1) == LastIdentity;
	if (!bAppendOnly)
	{
		RowTextCache.clear();
	}
	RowsShown = Count;
	FirstIdentity = Count > 0 ? ItemIdentity(0) : nullptr;
	LastIdentity = Count > 0 ? ItemIdentity(Count - 1) : nullptr;
	if (Model)
	{
		Model->SetRows(Count, bAppendOnly);
		MirrorSelection();
	}
}

void STableViewBase::RefreshAttributes()
{
	if (QtWidget)
	{
		ApplyRefresh();
		if (PendingScrollIndex != INDEX_NONE && View && PendingScrollIndex < RowsShown)
		{
			View->ScrollToRow(PendingScrollIndex);
			PendingScrollIndex = INDEX_NONE;
		}
	}
	SWidget::RefreshAttributes();
}

void STableViewBase::ScrollToIndex(int32 Index)
{
	PendingScrollIndex = Index;
}

void STableViewBase::GetVisibleRange(int32& OutFirst, int32& OutLast) const
{
	OutFirst = INDEX_NONE;
	OutLast = INDEX_NONE;
	if (!View || RowsShown == 0)
	{
		return;
	}
	const QRect Area = View->viewport()->rect();
	const QModelIndex Top = View->indexAt(Area.topLeft() + QPoint(1, 1));
	QModelIndex Bottom = View->indexAt(QPoint(1, Area.bottom() - 1));
	if (!Top.isValid())
	{
		return;
	}
	OutFirst = Top.row();
	OutLast = Bottom.isValid() ? Bottom.row() : RowsShown - 1;
}

void STableViewBase::ClickRow(int32 Index)
{
	if (!IsEnabled() || SelectionMode == ESelectionMode::None || Index < 0 || Index >= NumItems())
	{
		return;
	}
	// In the toggling mode a click on the selected row clears the selection.
	if (SelectionMode == ESelectionMode::SingleToggle && SelectedIndex() == Index)
	{
		SelectIndexFromUser(INDEX_NONE);
		return;
	}
	SelectIndexFromUser(Index);
}

void STableViewBase::MirrorSelection()
{
	if (!View || !Model)
	{
		return;
	}
	const int32 Index = SelectedIndex();
	if (Index == INDEX_NONE || Index >= RowsShown)
	{
		// No current row either, so that nothing looks selected.
		View->selectionModel()->clear();
	}
	else
	{
		View->setCurrentIndex(Model->index(Index));
	}
}
