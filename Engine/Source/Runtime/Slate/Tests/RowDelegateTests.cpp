// The list rows' direct painting must give the very pixels Qt's own delegate gives, and step aside for every row
// it can't paint the same way; the list's scroll bar, which skips repaints that would change nothing, must never
// leave an old picture on screen.
#include "RowDelegateQt.h"
#include "TableListViewQt.h"

#include <QImage>
#include <QScreen>
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

TEST(RowDelegateTests, ScrollBarOnScreenIsAlwaysWhatAFreshPaintGives)
{
	QStringListModel Model;
	FTableListViewQt View(nullptr);
	View.setModel(&Model);
	View.verticalHeader()->setMinimumSectionSize(1);
	View.verticalHeader()->setDefaultSectionSize(18);
	View.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
	View.resize(300, 200);
	View.show();
	QApplication::processEvents();
	const FSteadyScrollBarQt* Bar = static_cast<const FSteadyScrollBarQt*>(View.verticalScrollBar());

	// First a few rows at a time, so that the thumb shrinks and moves with every batch, then in batches so
	// large that it stays at its smallest at the end, and then a scroll back to the top.
	int Rows = 0;
	std::vector<int> Batches = {1, 5, 5, 10, 20, 50};
	Batches.insert(Batches.end(), 20, 1000);
	Batches.push_back(0);
	for (size_t BatchIndex = 0; BatchIndex < Batches.size(); ++BatchIndex)
	{
		SCOPED_TRACE(testing::Message() << "batch " << BatchIndex << ", " << Rows << " rows before it");
		const int Batch = Batches[BatchIndex];
		if (Batch > 0)
		{
			Model.insertRows(Rows, Batch);
			for (int Row = Rows; Row < Rows + Batch; ++Row)
			{
				Model.setData(Model.index(Row), QStringLiteral("LogCook: Display: line %1").arg(Row));
			}
			Rows += Batch;
		}
		View.ScrollToRow(Batch > 0 ? Rows - 1 : 0);
		QApplication::processEvents();
		const QImage OnScreen = View.screen()->grabWindow(View.winId()).toImage().convertToFormat(QImage::Format_RGB32);
		const QImage Fresh = View.grab().toImage().convertToFormat(QImage::Format_RGB32);
		ASSERT_EQ(DifferentPixels(OnScreen, Fresh), 0);
	}
	// The thumb stood still through most of the large batches.
	EXPECT_GE(Bar->RepaintsSkipped(), 15u);
}
