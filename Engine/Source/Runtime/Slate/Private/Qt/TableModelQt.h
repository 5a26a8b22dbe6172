#pragma once

#include <QAbstractListModel>

#include "SlateQt.h"
#include "Widgets/Views/STableViewBase.h"

// The Qt model over a list's items: the row count is the array's length and a row's text is made when Qt
// asks for it. Rows arrive by insertion at the end when the array only grew, never by a reset.
class FTableModelQt : public QAbstractListModel
{
public:
	explicit FTableModelQt(STableViewBase* InOwner) : Owner(InOwner) {}
	STableViewBase* Owner;
	int Rows = 0;

	int rowCount(const QModelIndex& Parent) const override { return Parent.isValid() ? 0 : Rows; }
	QVariant data(const QModelIndex& Index, int Role) const override
	{
		if (Owner && Role == Qt::DisplayRole && Index.isValid() && Index.row() < Rows)
		{
			return SlateQt::ToQString(Owner->GetRowText(Index.row()));
		}
		return QVariant();
	}
	void SetRows(int NewRows, bool bAppendOnly)
	{
		if (bAppendOnly && NewRows > Rows)
		{
			beginInsertRows(QModelIndex(), Rows, NewRows - 1);
			Rows = NewRows;
			endInsertRows();
		}
		else if (!bAppendOnly || NewRows != Rows)
		{
			beginResetModel();
			Rows = NewRows;
			endResetModel();
		}
	}
};
