#pragma once

#include "Widgets/SlotBase.h"

// Panes side by side (or stacked) with draggable borders; each slot's value is its share.
class SSplitter : public SWidget
{
public:
	struct FSlot : TSlotBase<FSlot>
	{
		float SizeValue = 1.0f;
		FSlot& Value(float InValue)
		{
			SizeValue = InValue;
			return *this;
		}
	};
	static FSlot Slot() { return FSlot(); }

	SLATE_BEGIN_ARGS(SSplitter) : _Orientation(Orient_Horizontal) {}
	SLATE_ARGUMENT(EOrientation, Orientation)
	SLATE_SUPPORTS_SLOT(FSlot)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
	FSlot& AddSlot();
	TArray<TSharedRef<SWidget>> GetChildren() const override;
	FSlateLayoutSize ComputeDesiredSize(float Scale) const override;
	void ArrangeChildren(float Width, float Height, float Scale, TArray<FSlateArrangedChild>& Out) const override;
	// The handle after slot Handle moved by Delta of Length, the splitter's length along its orientation: the two
	// slots beside it trade size, neither below a tenth of their sum.
	void MoveHandle(int32 Handle, float Delta, float Length);
	static constexpr float HandleThickness = 4.0f;
	const TArray<FSlot>& GetSlots() const { return Slots; }
	EOrientation GetOrientation() const { return Orientation; }

protected:
	FNativeWidget* CreateNativeWidget() override;

private:
	TArray<FSlot> Slots;
	EOrientation Orientation = Orient_Horizontal;
};
