#include "Widgets/Views/STableViewBase.h"

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
	ShowRows(Count, bAppendOnly);
}

void STableViewBase::ScrollToIndex(int32 Index)
{
	PendingScrollIndex = Index;
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
		SelectIndexFromUser(INDEX_NONE, ESelectInfo::OnMouseClick);
		return;
	}
	SelectIndexFromUser(Index, ESelectInfo::OnMouseClick);
}

void STableViewBase::NavigateToRow(int32 Index)
{
	if (!IsEnabled() || SelectionMode == ESelectionMode::None || Index < 0 || Index >= NumItems() || Index == SelectedIndex())
	{
		// The view shows the selection this list has, not the row the key would have chosen.
		MirrorSelection();
		return;
	}
	SelectIndexFromUser(Index, ESelectInfo::OnNavigation);
}

