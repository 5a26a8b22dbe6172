#pragma once

#include "Widgets/SCompoundWidget.h"

// A top-level window with a title and one content widget.
class SWindow : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SWindow)
		: _ClientSize(FVector2D(400, 300)), _SupportsMaximize(true), _SupportsMinimize(true),
		  _SizingRule(ESizingRule::UserSized), _AutoCenter(EAutoCenter::PreferredWorkArea) {}
	SLATE_ATTRIBUTE(FText, Title)
	// The size of the content area; an autosized window takes its content's size instead.
	SLATE_ARGUMENT(FVector2D, ClientSize)
	SLATE_ARGUMENT(bool, SupportsMaximize)
	SLATE_ARGUMENT(bool, SupportsMinimize)
	SLATE_ARGUMENT(ESizingRule, SizingRule)
	SLATE_ARGUMENT(EAutoCenter, AutoCenter)
	SLATE_DEFAULT_SLOT(FArguments, Content)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
	void SetContent(const TSharedRef<SWidget>& InContent);
	TSharedPtr<SWidget> GetContent() const { return AttachedChild; }
	FText GetTitle() const { return Title.Get(); }
	FVector2D GetClientSize() const { return ClientSize; }
	ESizingRule GetSizingRule() const { return SizingRule; }
	EAutoCenter GetAutoCenter() const { return AutoCenter; }
	bool HasMaximizeBox() const { return bHasMaximizeBox; }
	bool HasMinimizeBox() const { return bHasMinimizeBox; }
	// Asks the window to go; a modal loop that shows it returns.
	void RequestDestroyWindow();
	bool IsDestroyRequested() const { return bDestroyRequested; }
	// The native window's handle, for dialogs that want a native parent.
	void* GetNativeWindowHandle();

protected:
	FNativeWidget* CreateNativeWidget() override;

private:
	TAttribute<FText> Title;
	FVector2D ClientSize;
	ESizingRule SizingRule = ESizingRule::UserSized;
	EAutoCenter AutoCenter = EAutoCenter::PreferredWorkArea;
	bool bHasMaximizeBox = true;
	bool bHasMinimizeBox = true;
	bool bDestroyRequested = false;
};
