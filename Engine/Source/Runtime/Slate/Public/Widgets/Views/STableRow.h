#pragma once

#include "Widgets/SCompoundWidget.h"
#include "Widgets/Views/ITableRow.h"
#include "Widgets/Views/STableViewBase.h"

// A row of a list around one content widget.
template <typename ItemType>
class STableRow : public SCompoundWidget, public ITableRow
{
public:
	SLATE_BEGIN_ARGS(STableRow) {}
	SLATE_DEFAULT_SLOT(FArguments, Content)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs, const TSharedRef<STableViewBase>& InOwnerTable)
	{
		OwnerTable = InOwnerTable;
		if (InArgs._Content)
		{
			ChildSlot[InArgs._Content.ToSharedRef()];
		}
	}
	TSharedRef<SWidget> AsWidget() override { return AsShared(); }

private:
	TWeakPtr<STableViewBase> OwnerTable;
};
