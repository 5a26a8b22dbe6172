#pragma once

#include "Widgets/SWidget.h"
#include "Widgets/Views/ITableRow.h"
#include "Widgets/Views/SHeaderRow.h"

#include <unordered_map>

// The part of a list that does not depend on the item type: a native view over a virtual model. Rows are made
// by the row generator only when the view asks for a row on screen, so that a list of a million items costs a
// million items and not a million widgets.
class STableViewBase : public SWidget
{
	// The Win32 list window draws and scrolls the rows itself.
	friend class FListWindowWin32;

public:
	STableViewBase();
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
	// The row that a key moved to (an arrow, Page Up or Down, Home, End): selected as a click selects it, and
	// never cleared by it.
	void NavigateToRow(int32 Index);
	// The array the items come from: a list made anew over the same array is the same list to the user.
	virtual const void* ItemsSourceIdentity() const = 0;

protected:
	virtual int32 NumItems() const = 0;
	virtual const void* ItemIdentity(int32 Index) const = 0;
	virtual TSharedRef<ITableRow> MakeRow(int32 Index) = 0;
	virtual int32 SelectedIndex() const = 0;
	virtual void SelectIndexFromUser(int32 Index, ESelectInfo::Type SelectInfo) = 0;

	FNativeWidget* CreateNativeWidget() override;
	void ApplyRefresh();
	// Hands the backend the new number of rows; bAppendOnly when rows were only added at the end.
	void ShowRows(int32 Count, bool bAppendOnly);
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

	// The native view and its model, guarded: they may be deleted with their parent before this widget goes.
	struct FNativeParts;
	std::unique_ptr<FNativeParts> Parts;
};
