// What a form asks of the widget layer: grid columns that keep their shares, text that keeps the user's cursor
// while its getter is polled, values shown but not edited, raised lettering, and images that fall back to the
// checkerboard and fill the area a tiled brush is given.

#include <QGraphicsDropShadowEffect>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSet>
#include <QTest>

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

#define LOCTEXT_NAMESPACE "FormWidgetTests"

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
	Window.Window->resize(800, 400);
	TickFrames(3);

	QWidget* LabelCell = SlateQt::GetQWidget(*Label)->parentWidget();
	QWidget* BoxCell = SlateQt::GetQWidget(*Box)->parentWidget();
	const double Whole = SlateQt::GetQWidget(*Grid)->width();
	EXPECT_NEAR(LabelCell->width() / Whole, 0.3, 0.02);
	EXPECT_NEAR(BoxCell->width() / Whole, 0.7, 0.02);
	// The long label wraps in its column, also inside a path, and all of it is still there to read.
	QLabel* Drawn = qobject_cast<QLabel*>(SlateQt::GetQWidget(*Label));
	ASSERT_NE(Drawn, nullptr);
	EXPECT_TRUE(Drawn->wordWrap());
	EXPECT_GT(Drawn->height(), Drawn->fontMetrics().height() * 2);
	EXPECT_EQ(Drawn->text().remove(QChar(0x200B)), QString::fromStdU16String(LongLabel.GetStd()));
	EXPECT_EQ(Label->GetDisplayText(), LongLabel);
	// What can't shrink keeps its least width: the grid is never narrower than the button's box.
	EXPECT_GE(SlateQt::GetQWidget(*Grid)->minimumSizeHint().width(), 170);
}

TEST(FormWidgetTests, ABoundBoxKeepsTheCursorAndUndoWhileItsGetterIsPolled)
{
	FString Value = TEXT("Island");
	TSharedRef<SEditableTextBox> Box = SNew(SEditableTextBox)
		.Text(TAttribute<FText>::CreateLambda([&Value] { return FText::FromString(Value); }))
		.OnTextChanged_Lambda([&Value](const FText& Text) { Value = Text.ToString(); });
	FTestWindow Window(Box);
	QLineEdit* Line = QtOf<QLineEdit>(Box);
	ASSERT_NE(Line, nullptr);
	EXPECT_FALSE(Line->isReadOnly());
	Line->setFocus();
	Line->setCursorPosition(3);
	QTest::keyClicks(Line, "-");
	TickFrames(5);
	EXPECT_EQ(Value, FString(TEXT("Isl-and")));
	EXPECT_EQ(Line->cursorPosition(), 4);
	QTest::keyClick(Line, Qt::Key_Z, Qt::ControlModifier);
	TickFrames();
	EXPECT_EQ(Value, FString(TEXT("Island")));

	// A value changed elsewhere shows at the next frame, with the cursor where it was as far as the text reaches.
	Line->setCursorPosition(2);
	Value = TEXT("Island Pack");
	TickFrames();
	EXPECT_EQ(Line->text(), QString("Island Pack"));
	EXPECT_EQ(Line->cursorPosition(), 2);
	Line->setCursorPosition(9);
	Value = TEXT("Isle");
	TickFrames();
	EXPECT_EQ(Line->cursorPosition(), 4);

	// The same in a box of many lines.
	FString Notes = TEXT("first line\nsecond");
	TSharedRef<SMultiLineEditableTextBox> Multi = SNew(SMultiLineEditableTextBox)
		.AutoWrapText(true)
		.Text(TAttribute<FText>::CreateLambda([&Notes] { return FText::FromString(Notes); }))
		.OnTextChanged_Lambda([&Notes](const FText& Text) { Notes = Text.ToString(); });
	FTestWindow MultiWindow(Multi);
	QPlainTextEdit* Edit = QtOf<QPlainTextEdit>(Multi);
	ASSERT_NE(Edit, nullptr);
	QTextCursor Cursor = Edit->textCursor();
	Cursor.setPosition(5);
	Edit->setTextCursor(Cursor);
	Notes = TEXT("first line\nsecond, changed");
	TickFrames();
	EXPECT_EQ(Edit->toPlainText(), QString("first line\nsecond, changed"));
	EXPECT_EQ(Edit->textCursor().position(), 5);
}

TEST(FormWidgetTests, AValueWithoutAChangeHandlerIsShownNotEdited)
{
	TSharedRef<SHorizontalBox> Row = SNew(SHorizontalBox)
		+ SHorizontalBox::Slot().AutoWidth()[SNew(SEditableText).Text(FText::FromString(TEXT("A mod folder with a long name")))];
	FTestWindow Window(Row);
	QLineEdit* Line = Window.Window->findChild<QLineEdit*>();
	ASSERT_NE(Line, nullptr);
	EXPECT_TRUE(Line->isReadOnly());
	EXPECT_FALSE(Line->hasFrame());
	// As wide as what it shows, so that the name is never cut.
	EXPECT_GE(Line->width(), Line->fontMetrics().horizontalAdvance(Line->text()));
}

TEST(FormWidgetTests, EmbossedTextIsRaisedAndPlainTextIsNot)
{
	TSharedPtr<STextBlock> Raised;
	TSharedPtr<STextBlock> Plain;
	TSharedRef<SVerticalBox> Column = SNew(SVerticalBox)
		+ SVerticalBox::Slot()[SAssignNew(Raised, STextBlock).Text(LOCTEXT("Banner", "Banner")).TextStyle(&FCoreStyle::Get(), TEXT("EmbossedText"))]
		+ SVerticalBox::Slot()[SAssignNew(Plain, STextBlock).Text(LOCTEXT("Body", "Body"))];
	FTestWindow Window(Column);
	QLabel* RaisedLabel = QtOf<QLabel>(Raised);
	QLabel* PlainLabel = QtOf<QLabel>(Plain);
	ASSERT_TRUE(RaisedLabel && PlainLabel);
	EXPECT_TRUE(RaisedLabel->font().bold());
	EXPECT_GT(RaisedLabel->font().pointSizeF(), PlainLabel->font().pointSizeF());
	EXPECT_NE(qobject_cast<QGraphicsDropShadowEffect*>(RaisedLabel->graphicsEffect()), nullptr);
	EXPECT_EQ(PlainLabel->graphicsEffect(), nullptr);
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
	const QImage Shot = SlateQt::GetQWidget(*Image)->grab().toImage();
	ASSERT_EQ(Shot.size(), QSize(128, 128));
	QSet<QRgb> Colours;
	for (int Y = 0; Y < 128; Y += 4)
	{
		for (int X = 0; X < 128; X += 4)
		{
			Colours.insert(Shot.pixel(X, Y));
		}
	}
	EXPECT_GE(Colours.size(), 2);
	EXPECT_LE(Colours.size(), 6);

	// A readable file replaces it at the next frame, drawn at the brush's size.
	QImage Red(32, 32, QImage::Format_RGB32);
	Red.fill(Qt::red);
	const FString Picture = Dir / TEXT("red.png");
	ASSERT_TRUE(Red.save(QString::fromStdU16String(Picture.GetStd())));
	FSlateDynamicImageBrush Good(Picture, FVector2D(128, 128));
	Brush = &Good;
	TickFrames();
	EXPECT_TRUE(Image->HasPicture());
	EXPECT_EQ(SlateQt::GetQWidget(*Image)->grab().toImage().pixelColor(64, 64), QColor(Qt::red));
}
