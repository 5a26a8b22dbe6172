// The layout the widget layer computes itself, checked where nothing is measured natively: fixed-size boxes
// stand in for leaves, so that every figure below follows from the arithmetic alone.

#include "Framework/Application/SlateApplication.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SGridPanel.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/Layout/SSplitter.h"
#include "Widgets/SBoxPanel.h"

#include <gtest/gtest.h>

namespace
{
	TSharedRef<SBox> Leaf(float Width, float Height)
	{
		return SNew(SBox).WidthOverride(Width).HeightOverride(Height);
	}

	FSlateArrangedChild PlaceOf(const SWidget& Panel, const TSharedRef<SBox>& Child, float Width, float Height, float Scale = 1.0f)
	{
		TArray<FSlateArrangedChild> Placed;
		Panel.ArrangeChildren(Width, Height, Scale, Placed);
		const FSlateArrangedChild* Found = Placed.FindByPredicate([&](const FSlateArrangedChild& Each) { return Each.Widget == &Child.Get(); });
		return Found ? *Found : FSlateArrangedChild{};
	}

	void ExpectPlace(const FSlateArrangedChild& Placed, float X, float Y, float Width, float Height)
	{
		EXPECT_FLOAT_EQ(Placed.X, X);
		EXPECT_FLOAT_EQ(Placed.Y, Y);
		EXPECT_FLOAT_EQ(Placed.Width, Width);
		EXPECT_FLOAT_EQ(Placed.Height, Height);
	}
}

TEST(LayoutTests, BoxesGiveAutoSlotsTheirSizeAndShareTheRestByFill)
{
	TSharedRef<SBox> Top = Leaf(50, 20);
	TSharedRef<SBox> One = Leaf(10, 10);
	TSharedRef<SBox> Three = Leaf(10, 10);
	TSharedRef<SBox> Gone = Leaf(99, 99);
	Gone->SetVisibility(EVisibility::Collapsed);
	TSharedRef<SVerticalBox> Column = SNew(SVerticalBox)
		+ SVerticalBox::Slot().AutoHeight().Padding(4, 2)[Top]
		+ SVerticalBox::Slot().AutoHeight()[Gone]
		+ SVerticalBox::Slot().FillHeight(1.0f).HAlign(HAlign_Center)[One]
		+ SVerticalBox::Slot().FillHeight(3.0f).VAlign(VAlign_Bottom).HAlign(HAlign_Right)[Three];

	// The collapsed slot asks for nothing; the padded one for its child and both paddings.
	const FSlateLayoutSize Desired = Column->ComputeDesiredSize(1.0f);
	EXPECT_FLOAT_EQ(Desired.Width, 58.0f);
	EXPECT_FLOAT_EQ(Desired.Height, 44.0f);

	// 200 high: the auto slot takes 24, the fill slots 44 and 132 of the 176 left.
	ExpectPlace(PlaceOf(*Column, Top, 100, 200), 4, 2, 92, 20);
	ExpectPlace(PlaceOf(*Column, One, 100, 200), 45, 24, 10, 44);
	ExpectPlace(PlaceOf(*Column, Three, 100, 200), 90, 190, 10, 10);
	EXPECT_EQ(PlaceOf(*Column, Gone, 100, 200).Widget, nullptr);

	// At a scale of 2 the padding and the fixed sizes double.
	ExpectPlace(PlaceOf(*Column, Top, 200, 400, 2.0f), 8, 4, 184, 40);

	// Less room than the auto slots ask for leaves the fill slots nothing, not less than nothing.
	EXPECT_FLOAT_EQ(PlaceOf(*Column, One, 100, 10).Height, 0.0f);
}

TEST(LayoutTests, GridColumnsShareTheWidthByFillAndRowsTakeTheirTallestCell)
{
	TSharedRef<SBox> Label = Leaf(80, 16);
	TSharedRef<SBox> Value = Leaf(30, 24);
	TSharedRef<SBox> Second = Leaf(120, 10);
	TSharedRef<SBox> Key = Leaf(20, 10);
	TSharedRef<SGridPanel> Grid = SNew(SGridPanel).FillColumn(0, 1.0f).FillColumn(1, 3.0f)
		+ SGridPanel::Slot(0, 0)[Label]
		+ SGridPanel::Slot(1, 0)[Value]
		+ SGridPanel::Slot(1, 1).Padding(2)[Second]
		+ SGridPanel::Slot(2, 1)[Key];

	// Column 0 holds 80 at a quarter of the fill width, column 1 124 at three quarters: the grid asks for
	// 320 plus the fixed column's 20; rows are 24 and 14 high.
	const FSlateLayoutSize Desired = Grid->ComputeDesiredSize(1.0f);
	EXPECT_FLOAT_EQ(Desired.Width, 340.0f);
	EXPECT_FLOAT_EQ(Desired.Height, 38.0f);

	ExpectPlace(PlaceOf(*Grid, Label, 420, 100), 0, 0, 100, 24);
	ExpectPlace(PlaceOf(*Grid, Value, 420, 100), 100, 0, 300, 24);
	ExpectPlace(PlaceOf(*Grid, Second, 420, 100), 102, 26, 296, 10);
	ExpectPlace(PlaceOf(*Grid, Key, 420, 100), 400, 24, 20, 14);
	// Narrower than asked: the fill columns give way, the fixed one keeps its width.
	ExpectPlace(PlaceOf(*Grid, Key, 120, 100), 100, 24, 20, 14);
}

TEST(LayoutTests, ScrollBoxAndSplitterPlaceTheirChildren)
{
	TSharedRef<SBox> First = Leaf(40, 30);
	TSharedRef<SBox> Second = Leaf(60, 50);
	TSharedRef<SScrollBox> Scroll = SNew(SScrollBox) + SScrollBox::Slot()[First] + SScrollBox::Slot().Padding(0, 5, 0, 0)[Second];
	EXPECT_FLOAT_EQ(Scroll->ComputeDesiredSize(1.0f).Height, 85.0f);
	Scroll->SetScrollOffset(1000.0f, 60.0f, 1.0f);
	EXPECT_FLOAT_EQ(Scroll->GetScrollOffset(), 25.0f); // no further than the content's end
	ExpectPlace(PlaceOf(*Scroll, Second, 100, 60), 0, 10, 100, 50);
	Scroll->SetScrollOffset(-5.0f, 60.0f, 1.0f);
	ExpectPlace(PlaceOf(*Scroll, First, 100, 60), 0, 0, 100, 30);

	TSharedRef<SBox> Left = Leaf(10, 10);
	TSharedRef<SBox> Right = Leaf(10, 10);
	TSharedRef<SSplitter> Split = SNew(SSplitter) + SSplitter::Slot().Value(0.25f)[Left] + SSplitter::Slot().Value(0.75f)[Right];
	ExpectPlace(PlaceOf(*Split, Left, 404, 50), 0, 0, 100, 50);
	ExpectPlace(PlaceOf(*Split, Right, 404, 50), 104, 0, 300, 50);
	// Dragging the handle 100 to the right moves a quarter of the whole; never past a tenth of the pair.
	Split->MoveHandle(0, 100.0f, 400.0f);
	EXPECT_FLOAT_EQ(PlaceOf(*Split, Left, 404, 50).Width, 200.0f);
	Split->MoveHandle(0, 10000.0f, 400.0f);
	EXPECT_FLOAT_EQ(PlaceOf(*Split, Left, 404, 50).Width, 360.0f);
	Split->MoveHandle(5, 10.0f, 400.0f); // no such handle: nothing moves
	EXPECT_FLOAT_EQ(PlaceOf(*Split, Left, 404, 50).Width, 360.0f);
}

TEST(LayoutTests, ABoxHoldsItsContentToItsSizeWhateverRoomItIsGiven)
{
	// A 128 by 128 preview in a box that a row stretches to 300 high: the picture stays 128 square, centred.
	TSharedRef<SBox> Picture = Leaf(40, 40);
	TSharedRef<SBox> Holder = SNew(SBox).WidthOverride(128).HeightOverride(128)[Picture];
	ExpectPlace(PlaceOf(*Holder, Picture, 128, 300), 0, 86, 128, 128);
	ExpectPlace(PlaceOf(*Holder, Picture, 256, 600, 2.0f), 0, 172, 256, 256);
	// Less room than the override: the content gets what there is. One side held, the other free.
	ExpectPlace(PlaceOf(*Holder, Picture, 100, 50), 0, 0, 100, 50);
	TSharedRef<SBox> Wide = SNew(SBox).WidthOverride(100)[Picture];
	ExpectPlace(PlaceOf(*Wide, Picture, 300, 70), 100, 0, 100, 70);
}
