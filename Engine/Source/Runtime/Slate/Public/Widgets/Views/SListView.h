#pragma once

#include "Widgets/Views/ITableRow.h"
#include "Widgets/Views/STableViewBase.h"

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
	const void* ItemsSourceIdentity() const override { return ItemsSource; }
	int32 SelectedIndex() const override { return SelectedItem ? IndexOf(SelectedItem) : INDEX_NONE; }
	void SelectIndexFromUser(int32 Index, ESelectInfo::Type SelectInfo) override
	{
		if (Index == INDEX_NONE)
		{
			SelectedItem = ItemType();
			MirrorSelection();
			RaiseSelectionChanged(ItemType(), SelectInfo);
			return;
		}
		SetSelection((*ItemsSource)[Index], SelectInfo);
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
