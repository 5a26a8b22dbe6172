#pragma once

#include "Widgets/SlotBase.h"

// A widget made of one child in its child slot, which it may replace at any time.
class SCompoundWidget : public SWidget
{
public:
	struct FChildSlotHandle : TSlotBase<FChildSlotHandle>
	{
		SCompoundWidget* Owner = nullptr;
		FChildSlotHandle& operator[](const TSharedRef<SWidget>& InWidget);
	};

	TArray<TSharedRef<SWidget>> GetChildren() const override;
	FSlateLayoutSize ComputeDesiredSize(float Scale) const override;
	void ArrangeChildren(float Width, float Height, float Scale, TArray<FSlateArrangedChild>& Out) const override;

protected:
	FNativeWidget* CreateNativeWidget() override;
	// Puts the child into the native widget, replacing the former one.
	void AttachChild();

	FChildSlotHandle ChildSlot{{}, this};
	TSharedPtr<SWidget> AttachedChild;
	FNativeWidget* ChildHolder = nullptr;
};
