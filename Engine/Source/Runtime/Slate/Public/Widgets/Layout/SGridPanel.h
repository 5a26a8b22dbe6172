#pragma once

#include "Widgets/SlotBase.h"

// Children in cells of a grid; columns share the width by their fill values.
class SGridPanel : public SWidget
{
public:
	struct FSlot : TSlotBase<FSlot>
	{
		int32 Column = 0;
		int32 Row = 0;
	};
	static FSlot Slot(int32 Column, int32 Row)
	{
		FSlot Result;
		Result.Column = Column;
		Result.Row = Row;
		return Result;
	}

	SLATE_BEGIN_ARGS(SGridPanel) {}
	TArray<TPair<int32, float>> ColumnFills;
	WidgetArgsType& FillColumn(int32 Column, float Fill)
	{
		ColumnFills.Add({Column, Fill});
		return *this;
	}
	SLATE_SUPPORTS_SLOT(FSlot)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
	FSlot& AddSlot(int32 Column, int32 Row);
	TArray<TSharedRef<SWidget>> GetChildren() const override;
	FSlateLayoutSize ComputeDesiredSize(float Scale) const override;
	void ArrangeChildren(float Width, float Height, float Scale, TArray<FSlateArrangedChild>& Out) const override;
	const TArray<FSlot>& GetSlots() const { return Slots; }

protected:
	FNativeWidget* CreateNativeWidget() override;

private:
	TArray<FSlot> Slots;
	TArray<TPair<int32, float>> ColumnFills;
};
