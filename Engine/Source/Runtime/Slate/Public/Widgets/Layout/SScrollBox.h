#pragma once

#include "Widgets/SlotBase.h"

// A column of children that scrolls; children can be replaced at run time.
class SScrollBox : public SWidget
{
public:
	struct FSlot : TSlotBase<FSlot>
	{
	};
	static FSlot Slot() { return FSlot(); }

	SLATE_BEGIN_ARGS(SScrollBox) {}
	SLATE_SUPPORTS_SLOT(FSlot)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
	FSlot& AddSlot();
	void ClearChildren();
	int32 NumSlots() const { return Slots.Num(); }
	TArray<TSharedRef<SWidget>> GetChildren() const override;
	void RefreshAttributes() override;

protected:
	FNativeWidget* CreateNativeWidget() override;

private:
	void AttachPendingSlots();
	TArray<FSlot> Slots;
	int32 AttachedSlots = 0;
};
