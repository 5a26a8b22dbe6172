#pragma once

#include "Widgets/SCompoundWidget.h"

// A top-level window with a title and one content widget.
class SWindow : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SWindow) : _ClientSize(FVector2D(400, 300)), _SupportsMaximize(false), _SupportsMinimize(false) {}
	SLATE_ATTRIBUTE(FText, Title)
	SLATE_ARGUMENT(FVector2D, ClientSize)
	SLATE_ARGUMENT(bool, SupportsMaximize)
	SLATE_ARGUMENT(bool, SupportsMinimize)
	SLATE_DEFAULT_SLOT(FArguments, Content)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
	void SetContent(const TSharedRef<SWidget>& InContent);
	TSharedPtr<SWidget> GetContent() const { return AttachedChild; }
	FText GetTitle() const { return Title.Get(); }
	FVector2D GetClientSize() const { return ClientSize; }
	// Asks the window to go; a modal loop that shows it returns.
	void RequestDestroyWindow();
	bool IsDestroyRequested() const { return bDestroyRequested; }
	// The Qt window's handle, for dialogs that want a native parent.
	void* GetNativeWindowHandle();

protected:
	QWidget* CreateQWidget() override;

private:
	TAttribute<FText> Title;
	FVector2D ClientSize;
	bool bDestroyRequested = false;
};
