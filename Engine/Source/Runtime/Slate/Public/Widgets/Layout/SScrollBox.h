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
	FSlateLayoutSize ComputeDesiredSize(float Scale) const override;
	void ArrangeChildren(float Width, float Height, float Scale, TArray<FSlateArrangedChild>& Out) const override;
	// How far the content is scrolled up, in the backend's pixels, and how far it can be.
	float GetScrollOffset() const { return ScrollOffset; }
	void SetScrollOffset(float Offset, float ViewHeight, float Scale);
	void RefreshAttributes() override;

protected:
	FNativeWidget* CreateNativeWidget() override;

private:
	void AttachPendingSlots();
	TArray<FSlot> Slots;
	int32 AttachedSlots = 0;
	float ScrollOffset = 0.0f;
};
