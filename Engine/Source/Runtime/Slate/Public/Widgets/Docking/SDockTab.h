#pragma once

#include "Widgets/SCompoundWidget.h"

// A tab of the editor's dock area with one content widget.
class SDockTab : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SDockTab) : _TabRole(ETabRole::PanelTab) {}
	SLATE_ARGUMENT(ETabRole::Type, TabRole)
	SLATE_ATTRIBUTE(FText, Label)
	SLATE_DEFAULT_SLOT(FArguments, Content)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
	void SetContent(const TSharedRef<SWidget>& InContent);
	TSharedPtr<SWidget> GetContent() const { return AttachedChild; }
	ETabRole::Type GetTabRole() const { return TabRole; }
	FText GetTabLabel() const { return Label.Get(); }
	void SetLabel(const FText& InLabel) { Label = InLabel; }

private:
	ETabRole::Type TabRole = ETabRole::PanelTab;
	TAttribute<FText> Label;
};
