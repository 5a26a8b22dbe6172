#pragma once

#include "Widgets/SlotBase.h"

// Children in a row or a column. A slot either takes its natural size (auto) or a share of what is left (fill).
class SBoxPanel : public SWidget
{
public:
	struct FSlot : TSlotBase<FSlot>
	{
		float Fill = 1.0f;
		bool bAuto = false;
		FSlot& FillHeight(float Value)
		{
			Fill = Value;
			bAuto = false;
			return *this;
		}
		FSlot& FillWidth(float Value) { return FillHeight(Value); }
		FSlot& AutoHeight()
		{
			bAuto = true;
			return *this;
		}
		FSlot& AutoWidth() { return AutoHeight(); }
		FSlot& MaxWidth(float) { return *this; }
	};

	static FSlot Slot() { return FSlot(); }
	FSlot& AddSlot();
	void ClearChildren();
	int32 NumSlots() const { return Slots.Num(); }
	TArray<TSharedRef<SWidget>> GetChildren() const override;
	FSlateLayoutSize ComputeDesiredSize(float Scale) const override;
	void ArrangeChildren(float Width, float Height, float Scale, TArray<FSlateArrangedChild>& Out) const override;
	void RefreshAttributes() override;

protected:
	explicit SBoxPanel(EOrientation InOrientation) : Orientation(InOrientation) {}
	FNativeWidget* CreateNativeWidget() override;
	void AttachPendingSlots();

	EOrientation Orientation;
	TArray<FSlot> Slots;
	int32 AttachedSlots = 0;
	bool bTrailingStretch = false;
};

class SVerticalBox : public SBoxPanel
{
public:
	SLATE_BEGIN_ARGS(SVerticalBox) {}
	SLATE_SUPPORTS_SLOT(FSlot)
	SLATE_END_ARGS()

	SVerticalBox() : SBoxPanel(Orient_Vertical) {}
	void Construct(const FArguments& InArgs) { Slots = InArgs.Slots; }
};

class SHorizontalBox : public SBoxPanel
{
public:
	SLATE_BEGIN_ARGS(SHorizontalBox) {}
	SLATE_SUPPORTS_SLOT(FSlot)
	SLATE_END_ARGS()

	SHorizontalBox() : SBoxPanel(Orient_Horizontal) {}
	void Construct(const FArguments& InArgs) { Slots = InArgs.Slots; }
};
