// The layout the widget layer computes itself from desired sizes: boxes, grids, padding, alignment, fill and
// auto sizes. Backends whose native widgets place nothing (Win32) take their children's places from here, so
// that every such backend places them the same way.

#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SGridPanel.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/Layout/SSplitter.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SCompoundWidget.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace
{
	FSlateLayoutSize Padded(const FSlateLayoutSize& Size, const FMargin& Padding, float Scale)
	{
		return {Size.Width + (Padding.Left + Padding.Right) * Scale, Size.Height + (Padding.Top + Padding.Bottom) * Scale};
	}

	// One length along an axis: the child's own when aligned, the whole room when filling.
	void AlignAlong(float Start, float Room, float Desired, int Alignment, float& OutStart, float& OutLength)
	{
		// 0 fill, 1 start, 2 centre, 3 end, as both alignment enums order them.
		if (Alignment == 0 || Desired >= Room)
		{
			OutStart = Start;
			OutLength = std::max(0.0f, Room);
			return;
		}
		OutLength = Desired;
		OutStart = Alignment == 1 ? Start : Alignment == 2 ? Start + std::floor((Room - Desired) / 2.0f) : Start + Room - Desired;
	}

	int HorizontalIndex(EHorizontalAlignment Alignment)
	{
		return Alignment == HAlign_Fill ? 0 : Alignment == HAlign_Left ? 1 : Alignment == HAlign_Center ? 2 : 3;
	}
	int VerticalIndex(EVerticalAlignment Alignment)
	{
		return Alignment == VAlign_Fill ? 0 : Alignment == VAlign_Top ? 1 : Alignment == VAlign_Center ? 2 : 3;
	}

	// Places a child in the area a slot gives it, inside the slot's padding, by the slot's alignment.
	template <typename SlotType>
	FSlateArrangedChild PlaceInSlot(const SlotType& Slot, float X, float Y, float Width, float Height, float Scale)
	{
		const FMargin& Pad = Slot.SlotPadding;
		const FSlateLayoutSize Desired = Slot.Widget->ComputeDesiredSize(Scale);
		FSlateArrangedChild Placed;
		Placed.Widget = Slot.Widget.Get();
		Placed.SlotX = X;
		Placed.SlotY = Y;
		Placed.SlotWidth = std::max(0.0f, Width);
		Placed.SlotHeight = std::max(0.0f, Height);
		AlignAlong(X + Pad.Left * Scale, Width - (Pad.Left + Pad.Right) * Scale, Desired.Width, HorizontalIndex(Slot.HAlignment),
				   Placed.X, Placed.Width);
		AlignAlong(Y + Pad.Top * Scale, Height - (Pad.Top + Pad.Bottom) * Scale, Desired.Height, VerticalIndex(Slot.VAlignment),
				   Placed.Y, Placed.Height);
		return Placed;
	}

	template <typename SlotType>
	bool Takes(const SlotType& Slot)
	{
		return Slot.Widget && !Slot.Widget->IsCollapsed();
	}
}

FSlateLayoutSize SWidget::ComputeDesiredSize(float Scale) const
{
	return IsCollapsed() ? FSlateLayoutSize() : MeasureNative(Scale);
}

FSlateLayoutSize SCompoundWidget::ComputeDesiredSize(float Scale) const
{
	if (IsCollapsed())
	{
		return {};
	}
	FSlateLayoutSize Size = MeasureNative(Scale);
	if (AttachedChild && !AttachedChild->IsCollapsed())
	{
		const FSlateLayoutSize Child = Padded(AttachedChild->ComputeDesiredSize(Scale), ChildSlot.SlotPadding, Scale);
		Size.Width = std::max(Size.Width, Child.Width);
		Size.Height = std::max(Size.Height, Child.Height);
	}
	return Size;
}

void SCompoundWidget::ArrangeChildren(float Width, float Height, float Scale, TArray<FSlateArrangedChild>& Out) const
{
	if (AttachedChild && !AttachedChild->IsCollapsed())
	{
		FChildSlotHandle Slot = ChildSlot;
		Slot.Widget = AttachedChild;
		Out.Add(PlaceInSlot(Slot, 0.0f, 0.0f, Width, Height, Scale));
	}
}

FSlateLayoutSize SBox::ComputeDesiredSize(float Scale) const
{
	FSlateLayoutSize Size = SCompoundWidget::ComputeDesiredSize(Scale);
	if (!IsCollapsed())
	{
		Size.Width = WidthOverride > 0.0f ? WidthOverride * Scale : Size.Width;
		Size.Height = HeightOverride > 0.0f ? HeightOverride * Scale : Size.Height;
	}
	return Size;
}

// The content is held to the width or height given, centred in any more room the box's own slot gives it.
void SBox::ArrangeChildren(float Width, float Height, float Scale, TArray<FSlateArrangedChild>& Out) const
{
	const float HeldWidth = WidthOverride > 0.0f ? std::min(Width, WidthOverride * Scale) : Width;
	const float HeldHeight = HeightOverride > 0.0f ? std::min(Height, HeightOverride * Scale) : Height;
	const float Left = std::floor((Width - HeldWidth) / 2.0f);
	const float Top = std::floor((Height - HeldHeight) / 2.0f);
	const int32 First = Out.Num();
	SCompoundWidget::ArrangeChildren(HeldWidth, HeldHeight, Scale, Out);
	for (int32 Index = First; Index < Out.Num(); ++Index)
	{
		Out[Index].X += Left;
		Out[Index].Y += Top;
		Out[Index].SlotX += Left;
		Out[Index].SlotY += Top;
	}
}

// Every slot asks for its desired size along the box; fill slots share whatever is left by their fill values.
FSlateLayoutSize SBoxPanel::ComputeDesiredSize(float Scale) const
{
	FSlateLayoutSize Size;
	if (IsCollapsed())
	{
		return Size;
	}
	const bool bVertical = Orientation == Orient_Vertical;
	for (const FSlot& Slot : Slots)
	{
		if (!Takes(Slot))
		{
			continue;
		}
		const FSlateLayoutSize Child = Padded(Slot.Widget->ComputeDesiredSize(Scale), Slot.SlotPadding, Scale);
		Size.Width = bVertical ? std::max(Size.Width, Child.Width) : Size.Width + Child.Width;
		Size.Height = bVertical ? Size.Height + Child.Height : std::max(Size.Height, Child.Height);
	}
	return Size;
}

void SBoxPanel::ArrangeChildren(float Width, float Height, float Scale, TArray<FSlateArrangedChild>& Out) const
{
	const bool bVertical = Orientation == Orient_Vertical;
	const float Length = bVertical ? Height : Width;
	float Fixed = 0.0f;
	float FillTotal = 0.0f;
	TArray<float> Lengths;
	for (const FSlot& Slot : Slots)
	{
		float Own = 0.0f;
		if (Takes(Slot))
		{
			const FSlateLayoutSize Child = Padded(Slot.Widget->ComputeDesiredSize(Scale), Slot.SlotPadding, Scale);
			if (Slot.bAuto)
			{
				Own = bVertical ? Child.Height : Child.Width;
				Fixed += Own;
			}
			else
			{
				FillTotal += Slot.Fill;
			}
		}
		Lengths.Add(Own);
	}
	const float Left = std::max(0.0f, Length - Fixed);
	float At = 0.0f;
	for (int32 Index = 0; Index < Slots.Num(); ++Index)
	{
		const FSlot& Slot = Slots[Index];
		if (!Takes(Slot))
		{
			continue;
		}
		const float Own = Slot.bAuto ? Lengths[Index] : (FillTotal > 0.0f ? std::floor(Left * Slot.Fill / FillTotal) : 0.0f);
		Out.Add(bVertical ? PlaceInSlot(Slot, 0.0f, At, Width, Own, Scale) : PlaceInSlot(Slot, At, 0.0f, Own, Height, Scale));
		At += Own;
	}
}

namespace
{
	struct FGridMeasure
	{
		std::map<int32, float> ColumnWidths;
		std::map<int32, float> RowHeights;
	};

	template <typename SlotType>
	FGridMeasure MeasureGrid(const TArray<SlotType>& Slots, float Scale)
	{
		FGridMeasure Measure;
		for (const SlotType& Slot : Slots)
		{
			if (!Takes(Slot))
			{
				continue;
			}
			const FSlateLayoutSize Child = Padded(Slot.Widget->ComputeDesiredSize(Scale), Slot.SlotPadding, Scale);
			Measure.ColumnWidths[Slot.Column] = std::max(Measure.ColumnWidths[Slot.Column], Child.Width);
			Measure.RowHeights[Slot.Row] = std::max(Measure.RowHeights[Slot.Row], Child.Height);
		}
		return Measure;
	}
}

// The grid asks for the width at which every column holds its widest cell at the column's share of the width,
// and for the sum of its rows' tallest cells.
FSlateLayoutSize SGridPanel::ComputeDesiredSize(float Scale) const
{
	if (IsCollapsed())
	{
		return {};
	}
	const FGridMeasure Measure = MeasureGrid(Slots, Scale);
	float FillTotal = 0.0f;
	for (const TPair<int32, float>& Fill : ColumnFills)
	{
		FillTotal += Fill.Value;
	}
	float Needed = 0.0f;
	float Fixed = 0.0f;
	for (const auto& [ColumnIndex, Width] : Measure.ColumnWidths)
	{
		const int32 Column = ColumnIndex;
		const TPair<int32, float>* Fill = ColumnFills.FindByPredicate([Column](const TPair<int32, float>& Each) { return Each.Key == Column; });
		if (Fill && Fill->Value > 0.0f && FillTotal > 0.0f)
		{
			Needed = std::max(Needed, std::ceil(Width * FillTotal / Fill->Value));
		}
		else
		{
			Fixed += Width;
		}
	}
	FSlateLayoutSize Size{Needed + Fixed, 0.0f};
	for (const auto& [Row, Height] : Measure.RowHeights)
	{
		Size.Height += Height;
	}
	return Size;
}

// Columns without a fill value keep their widest cell; the others share the rest by their fill values, whatever
// their cells hold, so that a long text wraps in its column instead of pushing the other one aside.
void SGridPanel::ArrangeChildren(float Width, float Height, float Scale, TArray<FSlateArrangedChild>& Out) const
{
	const FGridMeasure Measure = MeasureGrid(Slots, Scale);
	int32 Columns = 0;
	int32 Rows = 0;
	for (const FSlot& Slot : Slots)
	{
		Columns = std::max(Columns, Slot.Column + 1);
		Rows = std::max(Rows, Slot.Row + 1);
	}
	float FillTotal = 0.0f;
	float Fixed = 0.0f;
	TArray<float> Fills;
	for (int32 Column = 0; Column < Columns; ++Column)
	{
		const TPair<int32, float>* Fill = ColumnFills.FindByPredicate([Column](const TPair<int32, float>& Each) { return Each.Key == Column; });
		Fills.Add(Fill ? Fill->Value : 0.0f);
		FillTotal += Fills.Last();
		const auto Widest = Measure.ColumnWidths.find(Column);
		Fixed += !Fill && Widest != Measure.ColumnWidths.end() ? Widest->second : 0.0f;
	}
	TArray<float> ColumnStart;
	TArray<float> ColumnWidth;
	float At = 0.0f;
	for (int32 Column = 0; Column < Columns; ++Column)
	{
		const auto Widest = Measure.ColumnWidths.find(Column);
		const float Own = FillTotal > 0.0f && Fills[Column] > 0.0f ? std::floor(std::max(0.0f, Width - Fixed) * Fills[Column] / FillTotal)
						  : Widest != Measure.ColumnWidths.end() ? Widest->second
																 : 0.0f;
		ColumnStart.Add(At);
		ColumnWidth.Add(Own);
		At += Own;
	}
	TArray<float> RowStart;
	At = 0.0f;
	for (int32 Row = 0; Row < Rows; ++Row)
	{
		RowStart.Add(At);
		const auto Tallest = Measure.RowHeights.find(Row);
		At += Tallest != Measure.RowHeights.end() ? Tallest->second : 0.0f;
	}
	for (const FSlot& Slot : Slots)
	{
		if (Takes(Slot))
		{
			const auto Tallest = Measure.RowHeights.find(Slot.Row);
			Out.Add(PlaceInSlot(Slot, ColumnStart[Slot.Column], RowStart[Slot.Row], ColumnWidth[Slot.Column], Tallest->second, Scale));
		}
	}
}

FSlateLayoutSize SScrollBox::ComputeDesiredSize(float Scale) const
{
	FSlateLayoutSize Size;
	if (IsCollapsed())
	{
		return Size;
	}
	for (const FSlot& Slot : Slots)
	{
		if (Takes(Slot))
		{
			const FSlateLayoutSize Child = Padded(Slot.Widget->ComputeDesiredSize(Scale), Slot.SlotPadding, Scale);
			Size.Width = std::max(Size.Width, Child.Width);
			Size.Height += Child.Height;
		}
	}
	return Size;
}

// The children stand one under the other at their own heights, moved up by the scroll offset.
void SScrollBox::ArrangeChildren(float Width, float Height, float Scale, TArray<FSlateArrangedChild>& Out) const
{
	float At = -ScrollOffset;
	for (const FSlot& Slot : Slots)
	{
		if (Takes(Slot))
		{
			const float Own = Padded(Slot.Widget->ComputeDesiredSize(Scale), Slot.SlotPadding, Scale).Height;
			Out.Add(PlaceInSlot(Slot, 0.0f, At, Width, Own, Scale));
			At += Own;
		}
	}
}

void SScrollBox::SetScrollOffset(float Offset, float ViewHeight, float Scale)
{
	const float Most = std::max(0.0f, ComputeDesiredSize(Scale).Height - ViewHeight);
	ScrollOffset = std::clamp(Offset, 0.0f, Most);
}

FSlateLayoutSize SSplitter::ComputeDesiredSize(float Scale) const
{
	FSlateLayoutSize Size;
	if (IsCollapsed())
	{
		return Size;
	}
	const bool bHorizontal = Orientation == Orient_Horizontal;
	for (const FSlot& Slot : Slots)
	{
		if (Takes(Slot))
		{
			const FSlateLayoutSize Child = Padded(Slot.Widget->ComputeDesiredSize(Scale), Slot.SlotPadding, Scale);
			Size.Width = bHorizontal ? Size.Width + Child.Width + HandleThickness * Scale : std::max(Size.Width, Child.Width);
			Size.Height = bHorizontal ? std::max(Size.Height, Child.Height) : Size.Height + Child.Height + HandleThickness * Scale;
		}
	}
	return Size;
}

// The slots share the length by their values, with a handle between each two.
void SSplitter::ArrangeChildren(float Width, float Height, float Scale, TArray<FSlateArrangedChild>& Out) const
{
	const bool bHorizontal = Orientation == Orient_Horizontal;
	float Total = 0.0f;
	int32 Shown = 0;
	for (const FSlot& Slot : Slots)
	{
		if (Takes(Slot))
		{
			Total += Slot.SizeValue;
			++Shown;
		}
	}
	const float Length = std::max(0.0f, (bHorizontal ? Width : Height) - HandleThickness * Scale * std::max(0, Shown - 1));
	float At = 0.0f;
	for (const FSlot& Slot : Slots)
	{
		if (!Takes(Slot))
		{
			continue;
		}
		const float Own = Total > 0.0f ? std::floor(Length * Slot.SizeValue / Total) : 0.0f;
		Out.Add(bHorizontal ? PlaceInSlot(Slot, At, 0.0f, Own, Height, Scale) : PlaceInSlot(Slot, 0.0f, At, Width, Own, Scale));
		At += Own + HandleThickness * Scale;
	}
}

void SSplitter::MoveHandle(int32 Handle, float Delta, float Length)
{
	if (Handle < 0 || Handle + 1 >= Slots.Num() || Length <= 0.0f)
	{
		return;
	}
	float Total = 0.0f;
	for (const FSlot& Slot : Slots)
	{
		Total += Slot.SizeValue;
	}
	FSlot& Before = Slots[Handle];
	FSlot& After = Slots[Handle + 1];
	const float Pair = Before.SizeValue + After.SizeValue;
	const float Moved = Delta * Total / Length;
	Before.SizeValue = std::clamp(Before.SizeValue + Moved, Pair * 0.1f, Pair * 0.9f);
	After.SizeValue = Pair - Before.SizeValue;
}
