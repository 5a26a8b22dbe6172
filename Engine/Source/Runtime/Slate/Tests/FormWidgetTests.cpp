// What a form asks of the widget layer: grid columns that keep their shares, text that keeps the user's cursor
// while its getter is polled, values shown but not edited, raised lettering, and images that fall back to the
// checkerboard and fill the area a tiled brush is given.

#include "SlateTestWindow.h"
#include "TempDirectory.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Input/SEditableText.h"
#include "Widgets/Input/SEditableTextBox.h"
#include "Widgets/Input/SMultiLineEditableTextBox.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SGridPanel.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

#include <set>

#define LOCTEXT_NAMESPACE "FormWidgetTests"

using namespace SlateTest;

TEST(FormWidgetTests, GridColumnsKeepTheirSharesWhateverTheCellsHold)
{
	const FString LongLabel = TEXT("A label far longer than its column: C:\\Steam\\steamapps\\common\\MERROW\\Orrery\\Content\\Mods");
	TSharedPtr<STextBlock> Label;
	TSharedPtr<SEditableTextBox> Box;
	TSharedRef<SGridPanel> Grid = SNew(SGridPanel).FillColumn(0, 0.3f).FillColumn(1, 0.7f)
		+ SGridPanel::Slot(0, 0)[SAssignNew(Label, STextBlock).Text(FText::FromString(LongLabel))]
		+ SGridPanel::Slot(1, 0)[SAssignNew(Box, SEditableTextBox).Text(FText::FromString(FString(std::u16string(300, u'x'))))]
		+ SGridPanel::Slot(1, 1)[SNew(SBox).WidthOverride(170.0f)[SNew(SButton).Text(LOCTEXT("Wide", "A fixed-width button"))]]
		// A word with no place to break it: it is cut at its column's edge rather than widening the column.
		+ SGridPanel::Slot(0, 2)[SNew(STextBlock).Text(FText::FromString(FString(std::u16string(200, u'w'))))];
	FTestWindow Window(Grid);
	Window.Resize(800, 400);
	TickFrames(3);

	const FSlateTestRect LabelCell = GetSlotGeometry(*Label);
	const FSlateTestRect BoxCell = GetSlotGeometry(*Box);
	const double Whole = GetGeometry(*Grid).Width;
	EXPECT_NEAR(LabelCell.Width / Whole, 0.3, 0.02);
	EXPECT_NEAR(BoxCell.Width / Whole, 0.7, 0.02);
	// The long label wraps in its column, also inside a path, and all of it is still there to read.
	EXPECT_TRUE(WrapsText(*Label));
	EXPECT_GT(GetGeometry(*Label).Height, GetTextLook(*Label).LineHeight * 2);
	EXPECT_EQ(GetShownText(*Label), LongLabel);
	EXPECT_EQ(Label->GetDisplayText(), LongLabel);
	// What can't shrink keeps its least width: the grid is never narrower than the button's box.
	EXPECT_GE(GetMinimumSize(*Grid).Width, 170);
}

TEST(FormWidgetTests, ABoundBoxKeepsTheCursorAndUndoWhileItsGetterIsPolled)
{
	FString Value = TEXT("Island");
	TSharedRef<SEditableTextBox> Box = SNew(SEditableTextBox)
		.Text(TAttribute<FText>::CreateLambda([&Value] { return FText::FromString(Value); }))
		.OnTextChanged_Lambda([&Value](const FText& Text) { Value = Text.ToString(); });
	FTestWindow Window(Box);
	EXPECT_FALSE(IsReadOnly(*Box));
	Focus(*Box);
	SetCursorPosition(*Box, 3);
	TypeText(*Box, TEXT("-"));
	TickFrames(5);
	EXPECT_EQ(Value, FString(TEXT("Isl-and")));
	EXPECT_EQ(GetCursorPosition(*Box), 4);
	PressKey(*Box, TEXT("Ctrl+Z"));
	TickFrames();
	EXPECT_EQ(Value, FString(TEXT("Island")));

	// A value changed elsewhere shows at the next frame, with the cursor where it was as far as the text reaches.
	SetCursorPosition(*Box, 2);
	Value = TEXT("Island Pack");
	TickFrames();
	EXPECT_EQ(GetShownText(*Box), FString(TEXT("Island Pack")));
	EXPECT_EQ(GetCursorPosition(*Box), 2);
	SetCursorPosition(*Box, 9);
	Value = TEXT("Isle");
	TickFrames();
	EXPECT_EQ(GetCursorPosition(*Box), 4);

	// The same in a box of many lines.
	FString Notes = TEXT("first line\nsecond");
	TSharedRef<SMultiLineEditableTextBox> Multi = SNew(SMultiLineEditableTextBox)
		.AutoWrapText(true)
		.Text(TAttribute<FText>::CreateLambda([&Notes] { return FText::FromString(Notes); }))
		.OnTextChanged_Lambda([&Notes](const FText& Text) { Notes = Text.ToString(); });
	FTestWindow MultiWindow(Multi);
	SetCursorPosition(*Multi, 5);
	Notes = TEXT("first line\nsecond, changed");
	TickFrames();
	EXPECT_EQ(GetShownText(*Multi), FString(TEXT("first line\nsecond, changed")));
	EXPECT_EQ(GetCursorPosition(*Multi), 5);
}

TEST(FormWidgetTests, AValueWithoutAChangeHandlerIsShownNotEdited)
{
	TSharedPtr<SEditableText> Line;
	TSharedRef<SHorizontalBox> Row = SNew(SHorizontalBox)
		+ SHorizontalBox::Slot().AutoWidth()[SAssignNew(Line, SEditableText).Text(FText::FromString(TEXT("A mod folder with a long name")))];
	FTestWindow Window(Row);
	EXPECT_EQ(GetShownText(*Line), FString(TEXT("A mod folder with a long name")));
	EXPECT_TRUE(IsReadOnly(*Line));
	EXPECT_FALSE(HasFrame(*Line));
	// As wide as what it shows, so that the name is never cut.
	EXPECT_GE(GetGeometry(*Line).Width, GetTextLook(*Line).ShownTextWidth);
}

TEST(FormWidgetTests, EmbossedTextIsRaisedAndPlainTextIsNot)
{
	TSharedPtr<STextBlock> Raised;
	TSharedPtr<STextBlock> Plain;
	TSharedRef<SVerticalBox> Column = SNew(SVerticalBox)
		+ SVerticalBox::Slot()[SAssignNew(Raised, STextBlock).Text(LOCTEXT("Banner", "Banner")).TextStyle(&FCoreStyle::Get(), TEXT("EmbossedText"))]
		+ SVerticalBox::Slot()[SAssignNew(Plain, STextBlock).Text(LOCTEXT("Body", "Body"))];
	FTestWindow Window(Column);
	const FSlateTextLook RaisedLook = GetTextLook(*Raised);
	const FSlateTextLook PlainLook = GetTextLook(*Plain);
	EXPECT_TRUE(RaisedLook.bBold);
	EXPECT_GT(RaisedLook.PointSize, PlainLook.PointSize);
	EXPECT_TRUE(RaisedLook.bRaised);
	EXPECT_FALSE(PlainLook.bRaised);
}

TEST(FormWidgetTests, AnImageWithoutAPictureIsTheCheckerboardFillingItsBox)
{
	FTempDirectory Dir;
	const FString NotAPicture = Dir.WriteFile(TEXT("broken.png"), "no picture here");
	FSlateDynamicImageBrush Broken(NotAPicture, FVector2D(128, 128));
	const FSlateBrush* Brush = &Broken;
	TSharedPtr<SImage> Image;
	TSharedRef<SBox> Box = SNew(SBox).WidthOverride(128.0f).HeightOverride(128.0f)
		[SAssignNew(Image, SImage).Image(TAttribute<const FSlateBrush*>::CreateLambda([&Brush] { return Brush; }))];
	FTestWindow Window(SNew(SHorizontalBox) + SHorizontalBox::Slot().AutoWidth()[Box]);
	TickFrames();
	EXPECT_FALSE(Image->HasPicture());
	// Drawn over the whole box in the checkerboard's two greys, not left empty.
	const FSlateScreenshot Shot = TakeScreenshot(*Image);
	ASSERT_EQ(Shot.Width, 128);
	ASSERT_EQ(Shot.Height, 128);
	std::set<uint32> Colours;
	for (int Y = 0; Y < 128; Y += 4)
	{
		for (int X = 0; X < 128; X += 4)
		{
			Colours.insert(Shot.GetPixel(X, Y));
		}
	}
	EXPECT_GE(Colours.size(), 2u);
	EXPECT_LE(Colours.size(), 6u);

	// A readable file replaces it at the next frame, drawn at the brush's size.
	const FString Picture = Dir / TEXT("red.png");
	ASSERT_TRUE(WriteSolidPng(Picture, 32, 32, 0xFFFF0000));
	FSlateDynamicImageBrush Good(Picture, FVector2D(128, 128));
	Brush = &Good;
	TickFrames();
	EXPECT_TRUE(Image->HasPicture());
	EXPECT_EQ(TakeScreenshot(*Image).GetPixel(64, 64), 0xFFFF0000u);
}
