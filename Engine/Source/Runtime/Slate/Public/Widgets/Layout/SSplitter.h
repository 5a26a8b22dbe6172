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
	const TArray<FSlot>& GetSlots() const { return Slots; }
	EOrientation GetOrientation() const { return Orientation; }

protected:
	FNativeWidget* CreateNativeWidget() override;

private:
	TArray<FSlot> Slots;
	EOrientation Orientation = Orient_Horizontal;
};
