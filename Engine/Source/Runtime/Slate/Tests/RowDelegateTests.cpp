// The list rows' direct painting must give the very pixels Qt's own delegate gives, and step aside for every row
// it can't paint the same way.
#include "RowDelegateQt.h"
#include "TableListViewQt.h"

#include <QImage>
#include <QStringListModel>

#include <QApplication>
#include <gtest/gtest.h>

int main(int ArgC, char** ArgV)
{
	::testing::InitGoogleTest(&ArgC, ArgV);
	qputenv("QT_QPA_PLATFORM", "offscreen");
	QApplication Application(ArgC, ArgV);
	return RUN_ALL_TESTS();
}

namespace
{
	struct FRenderedRows
	{
		QImage Picture;
		quint64 PlainRows = 0;
	};

	FRenderedRows Render(const QStringList& Lines, int FontPixels, int RowHeight, int Width, int SelectedRow, bool bOurDelegate)
	{
		QStringListModel Model(Lines);
		FTableListViewQt View(nullptr);
		if (FontPixels > 0)
		{
			QFont Font = View.font();
			Font.setPixelSize(FontPixels);
			View.setFont(Font);
		}
		View.setModel(&Model);
		View.verticalHeader()->setMinimumSectionSize(1);
		View.verticalHeader()->setDefaultSectionSize(RowHeight);
		View.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
		FRowDelegateQt* Ours = new FRowDelegateQt(&View);
		if (bOurDelegate)
		{
			View.setItemDelegate(Ours);
		}
		View.resize(Width, RowHeight * (static_cast<int>(Lines.size()) + 1));
		View.show();
		if (SelectedRow >= 0)
		{
			View.selectRow(SelectedRow);
		}
		FRenderedRows Rendered;
		Rendered.Picture = QImage(View.viewport()->size(), QImage::Format_ARGB32);
		Rendered.Picture.fill(Qt::transparent);
		View.viewport()->render(&Rendered.Picture);
		Rendered.PlainRows = Ours->PlainRowsPainted();
		return Rendered;
	}

	int DifferentPixels(const QImage& A, const QImage& B)
	{
		if (A.size() != B.size())
		{
			return -1;
		}
		int Different = 0;
		for (int Y = 0; Y < A.height(); ++Y)
		{
			for (int X = 0; X < A.width(); ++X)
			{
				Different += A.pixel(X, Y) != B.pixel(X, Y);
			}
		}
		return Different;
	}
}

TEST(RowDelegateTests, PlainRowsLookExactlyAsQtPaintsThemAndOtherRowsAreLeftToQt)
{
	const QStringList Lines = {
		QStringLiteral("LogCook: Display: Cooked 74 Remain 99997 Total 100000"),
		// Kerned pairs: the advances must be the kerned ones.
		QStringLiteral("AVATAR To Wa Yo LT P. F, V; \"q\" {b} [x] ~` 0189 !@#$%^&*()"),
		QStringLiteral("Warning: Ünïcødé and \u65e5\u672c go through Qt's own painting"),
		QStringLiteral("tab\there"),
		// Pairs that Qt joins into one glyph.
		QStringLiteral("offline files fluff"),
		QString(),
		QStringLiteral("a line long enough that it has to be elided at the right edge of a narrow list: ") +
			QString(200, QLatin1Char('x')),
		QStringLiteral("  leading blanks and the selected row below"),
		QStringLiteral("LogCook: Display: selected rows are Qt's"),
	};
	// The default font and sizes whose ascent and descent have other fractions; odd and even spare heights.
	for (const int FontPixels : {0, 11, 13, 14, 15, 16})
	{
		for (const int RowHeight : {18, 19, 24})
		{
			for (const int Width : {900, 640})
			{
				SCOPED_TRACE(testing::Message() << "font " << FontPixels << " px, rows " << RowHeight << " px high, list "
												<< Width << " px wide");
				const FRenderedRows Ours = Render(Lines, FontPixels, RowHeight, Width, 8, true);
				const FRenderedRows Qts = Render(Lines, FontPixels, RowHeight, Width, 8, false);
				// Rows 0, 1 and 7 are plain ASCII that fits; the others are non-ASCII, hold a tab, form
				// ligatures, are empty, need eliding or are selected.
				EXPECT_EQ(Ours.PlainRows, 3u);
				EXPECT_EQ(DifferentPixels(Ours.Picture, Qts.Picture), 0);
			}
		}
	}
}
