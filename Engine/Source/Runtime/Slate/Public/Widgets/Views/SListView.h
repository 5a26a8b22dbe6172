#pragma once

#include "Widgets/SCompoundWidget.h"

#include <unordered_map>

class QListView;
class FTableModelQt;
class FTableListViewQt;

// A row of a list, as the row generator makes it.
class ITableRow
{
public:
	virtual ~ITableRow() = default;
	virtual TSharedRef<SWidget> AsWidget() = 0;
};

// The header of a list: one labelled column for each entry.
class SHeaderRow : public SWidget
{
public:
	struct FColumn
	{
		FString ColumnId;
		FText Label;
		FColumn& DefaultLabel(const FText& InLabel)
		{
			Label = InLabel;
			return *this;
		}
	};
	static FColumn Column(const FString& ColumnId)
	{
		FColumn Result;
		Result.ColumnId = ColumnId;
		return Result;
	}

	SLATE_BEGIN_ARGS(SHeaderRow) {}
	SLATE_SUPPORTS_SLOT(FColumn)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs) { Columns = InArgs.Slots; }
	const TArray<FColumn>& GetColumns() const { return Columns; }
	FString GetDisplayText() const override;
	TArray<TSharedRef<SWidget>> GetChildren() const override;

protected:
	QWidget* CreateQWidget() override;

private:
	TArray<FColumn> Columns;
	TArray<TSharedRef<SWidget>> Labels;
};

// The part of a list that does not depend on the item type: the Qt view over a virtual model. Rows are made
// by the row generator only when Qt asks for a row on screen, so that a list of a million items costs a
// million items and not a million widgets.
class STableViewBase : public SWidget
{
public:
	~STableViewBase() override;

	// The items array has changed; the list shows its new state at the next frame.
	void RequestListRefresh() { bRefreshPending = true; }
	void RefreshAttributes() override;
	TArray<TSharedRef<SWidget>> GetChildren() const override;

	// Rows the view holds now (after the last refresh was applied).
	int32 GetNumRowsShown() const { return RowsShown; }
	float GetItemHeight() const { return ItemHeight; }
	ESelectionMode::Type GetSelectionMode() const { return SelectionMode; }
	bool IsScrollbarAlwaysVisible() const { return bAlwaysShowScrollbar; }
	TSharedPtr<SHeaderRow> GetHeaderRow() const { return HeaderRow; }
	// The text of the row made for the item at Index, as the list draws it.
	FString GetRowText(int32 Index);
	// The first and last item indices on screen; -1 when nothing shows.
	void GetVisibleRange(int32& OutFirst, int32& OutLast) const;

	// A click on a row, as a user makes it.
	void ClickRow(int32 Index);

protected:
	virtual int32 NumItems() const = 0;
	virtual const void* ItemIdentity(int32 Index) const = 0;
	virtual TSharedRef<ITableRow> MakeRow(int32 Index) = 0;
	virtual int32 SelectedIndex() const = 0;
	virtual void SelectIndexFromUser(int32 Index) = 0;

	QWidget* CreateQWidget() override;
	void ApplyRefresh();
	void ScrollToIndex(int32 Index);
	void MirrorSelection();

	float ItemHeight = 16.0f;
	ESelectionMode::Type SelectionMode = ESelectionMode::Multi;
	bool bAlwaysShowScrollbar = false;
	TSharedPtr<SHeaderRow> HeaderRow;
	bool bRefreshPending = false;
	int32 RowsShown = 0;
	const void* FirstIdentity = nullptr;
	const void* LastIdentity = nullptr;
	int32 PendingScrollIndex = INDEX_NONE;
	std::unordered_map<int32, FString> RowTextCache;

	// Guarded: the Qt widgets may be deleted with their parent before this widget goes.
	QPointer<FTableModelQt> Model;
	QPointer<FTableListViewQt> View;

	friend class FTableModelQt;
	friend class FTableListViewQt;
};

template <typename ItemType>
class SListView : public STableViewBase
{
public:
	DECLARE_DELEGATE_RetVal_TwoParams(TSharedRef<ITableRow>, FOnGenerateRow, ItemType, const TSharedRef<STableViewBase>&);
	DECLARE_DELEGATE_TwoParams(FOnSelectionChanged, ItemType, ESelectInfo::Type);

	SLATE_BEGIN_ARGS(SListView)
		: _ListItemsSource(nullptr), _ItemHeight(16.0f), _SelectionMode(ESelectionMode::Multi), _AlwaysShowScrollbar(false)
	{
	}
	SLATE_ARGUMENT(const TArray<ItemType>*, ListItemsSource)
	SLATE_ARGUMENT(float, ItemHeight)
	SLATE_ARGUMENT(ESelectionMode::Type, SelectionMode)
	SLATE_ARGUMENT(bool, AlwaysShowScrollbar)
	SLATE_ARGUMENT(TSharedPtr<SHeaderRow>, HeaderRow)
	SLATE_EVENT(FOnGenerateRow, OnGenerateRow)
	SLATE_EVENT(FOnSelectionChanged, OnSelectionChanged)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs)
	{
		ItemsSource = InArgs._ListItemsSource;
		ItemHeight = InArgs._ItemHeight;
		SelectionMode = InArgs._SelectionMode;
		bAlwaysShowScrollbar = InArgs._AlwaysShowScrollbar;
		HeaderRow = InArgs._HeaderRow;
		OnGenerateRow = InArgs._OnGenerateRow;
		OnSelectionChanged = InArgs._OnSelectionChanged;
		bRefreshPending = true;
	}

	// Makes Item the only selected item. A selection made by code raises the selection event too.
	void SetSelection(ItemType Item, ESelectInfo::Type SelectInfo = ESelectInfo::Direct)
	{
		SelectedItem = Item;
		MirrorSelection();
		RaiseSelectionChanged(Item, SelectInfo);
	}
	void ClearSelection()
	{
		SelectedItem = ItemType();
		MirrorSelection();
		RaiseSelectionChanged(ItemType(), ESelectInfo::Direct);
	}
	TArray<ItemType> GetSelectedItems() const
	{
		return SelectedItem ? TArray<ItemType>{SelectedItem} : TArray<ItemType>{};
	}
	int32 GetNumItemsSelected() const { return SelectedItem ? 1 : 0; }
	bool IsItemSelected(const ItemType& Item) const { return SelectedItem && SelectedItem == Item; }

	void RequestScrollIntoView(const ItemType& Item)
	{
		const int32 Index = IndexOf(Item);
		if (Index != INDEX_NONE)
		{
			ScrollToIndex(Index);
		}
	}
	bool IsItemVisible(const ItemType& Item) const
	{
		int32 First;
		int32 Last;
		GetVisibleRange(First, Last);
		const int32 Index = IndexOf(Item);
		return Index != INDEX_NONE && Index >= First && Index <= Last;
	}

protected:
	int32 NumItems() const override { return ItemsSource ? ItemsSource->Num() : 0; }
	const void* ItemIdentity(int32 Index) const override { return (*ItemsSource)[Index].get(); }
	TSharedRef<ITableRow> MakeRow(int32 Index) override
	{
		check(OnGenerateRow.IsBound());
		return OnGenerateRow.Execute((*ItemsSource)[Index], StaticCastSharedRef<STableViewBase>(AsShared()));
	}
	int32 SelectedIndex() const override { return SelectedItem ? IndexOf(SelectedItem) : INDEX_NONE; }
	void SelectIndexFromUser(int32 Index) override
	{
		if (Index == INDEX_NONE)
		{
			SelectedItem = ItemType();
			MirrorSelection();
			RaiseSelectionChanged(ItemType(), ESelectInfo::OnMouseClick);
			return;
		}
		SetSelection((*ItemsSource)[Index], ESelectInfo::OnMouseClick);
	}

private:
	int32 IndexOf(const ItemType& Item) const
	{
		if (!ItemsSource)
		{
			return INDEX_NONE;
		}
		// From the end: lists grow at the end and the item asked for is most often a new one.
		for (int32 Index = ItemsSource->Num() - 1; Index >= 0; --Index)
		{
			if ((*ItemsSource)[Index] == Item)
			{
				return Index;
			}
		}
		return INDEX_NONE;
	}

	void RaiseSelectionChanged(ItemType Item, ESelectInfo::Type SelectInfo)
	{
		// The handler may replace the whole tree this list stands in; the list stays alive until it returns.
		TSharedRef<SWidget> KeepAlive = AsShared();
		OnSelectionChanged.ExecuteIfBound(Item, SelectInfo);
	}

	const TArray<ItemType>* ItemsSource = nullptr;
	FOnGenerateRow OnGenerateRow;
	FOnSelectionChanged OnSelectionChanged;
	ItemType SelectedItem{};
};

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
