#pragma once

#include "Styling/SlateBrush.h"
#include "Widgets/SCompoundWidget.h"

class QScrollArea;
class QSplitter;
class QGridLayout;
class QVBoxLayout;

// A child on a painted background.
class SBorder : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SBorder) : _BorderImage(nullptr), _Padding(FMargin(2.0f)), _HAlign(HAlign_Fill), _VAlign(VAlign_Fill) {}
	SLATE_ARGUMENT(const FSlateBrush*, BorderImage)
	SLATE_ARGUMENT(FMargin, Padding)
	SLATE_ARGUMENT(EHorizontalAlignment, HAlign)
	SLATE_ARGUMENT(EVerticalAlignment, VAlign)
	SLATE_DEFAULT_SLOT(FArguments, Content)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
	const FSlateBrush* GetBorderImage() const { return BorderImage; }

protected:
	QWidget* CreateQWidget() override;

private:
	const FSlateBrush* BorderImage = nullptr;
};

// A child held to a fixed width or height where one is given.
class SBox : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SBox) : _WidthOverride(0.0f), _HeightOverride(0.0f), _HAlign(HAlign_Fill), _VAlign(VAlign_Fill) {}
	SLATE_ARGUMENT(float, WidthOverride)
	SLATE_ARGUMENT(float, HeightOverride)
	SLATE_ARGUMENT(EHorizontalAlignment, HAlign)
	SLATE_ARGUMENT(EVerticalAlignment, VAlign)
	SLATE_ARGUMENT(FMargin, Padding)
	SLATE_DEFAULT_SLOT(FArguments, Content)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
	float GetWidthOverride() const { return WidthOverride; }
	float GetHeightOverride() const { return HeightOverride; }

protected:
	QWidget* CreateQWidget() override;

private:
	float WidthOverride = 0.0f;
	float HeightOverride = 0.0f;
};

class SSpacer : public SWidget
{
public:
	SLATE_BEGIN_ARGS(SSpacer) {}
	SLATE_END_ARGS()
	void Construct(const FArguments&) {}

protected:
	QWidget* CreateQWidget() override;
};

// A heading line with a child in it.
class SHeader : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SHeader) {}
	SLATE_DEFAULT_SLOT(FArguments, Content)
	SLATE_END_ARGS()
	void Construct(const FArguments& InArgs);

protected:
	QWidget* CreateQWidget() override;
};

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
	QWidget* CreateQWidget() override;

private:
	void AttachPendingSlots();
	TArray<FSlot> Slots;
	int32 AttachedSlots = 0;
	QVBoxLayout* Layout = nullptr;
};

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
	QWidget* CreateQWidget() override;

private:
	TArray<FSlot> Slots;
	EOrientation Orientation = Orient_Horizontal;
};

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
	const TArray<FSlot>& GetSlots() const { return Slots; }

protected:
	QWidget* CreateQWidget() override;

private:
	TArray<FSlot> Slots;
	TArray<TPair<int32, float>> ColumnFills;
};
