#pragma once

#include <QFont>
#include <QRawFont>
#include <QStyledItemDelegate>

#include <array>
#include <memory>

class QStyle;

// Paints a list row. A row of plain, unselected ASCII that fits its cell is drawn straight from the font's
// glyphs, at the positions Qt's own shaping gives them: each pair of characters is laid out by Qt once, the first
// time it is met, and the row is the sum of its pairs' kerned advances; the baseline is where the style puts it.
// So the row looks exactly the same, and a frame skips the shaping, line breaking and elision check that are most
// of its cost when a log scrolls a screen of new lines into view. Any other row (selected, focused, elided,
// decorated, right to left, with a character outside ASCII or a pair Qt joins into a ligature) is painted by
// Qt's delegate.
class FRowDelegateQt : public QStyledItemDelegate
{
public:
	using QStyledItemDelegate::QStyledItemDelegate;

	void paint(QPainter* Painter, const QStyleOptionViewItem& Option, const QModelIndex& Index) const override;

	// How many rows took the direct way, so that a test can tell it was taken.
	quint64 PlainRowsPainted() const { return PlainRows; }

	static constexpr char16_t FirstPlain = 0x20;
	static constexpr char16_t LastPlain = 0x7e;
	static constexpr int PlainCount = LastPlain - FirstPlain + 1;

private:
	// What Qt's shaping does with the printable ASCII characters in one font.
	struct FFontShapes
	{
		static constexpr float Unknown = -1.0f;
		static constexpr float NotAPair = -2.0f;
		QFont Font;
		QRawFont RawFont;
		bool bUsable = false;
		std::array<quint32, PlainCount> Glyph{};
		std::array<qreal, PlainCount> Width{};
		// Learnt as pairs are met; about 36 KB a font.
		std::array<float, PlainCount * PlainCount> PairAdvance{};
		// The baseline for the last row height and style met.
		int BaselineRowHeight = -1;
		const QStyle* BaselineStyle = nullptr;
		qreal Baseline = -1.0;
	};

	bool PaintPlainRow(QPainter* Painter, QStyleOptionViewItem& Row) const;
	bool LearnFont(const QFont& Font) const;
	qreal PairAdvance(int First, int Second) const;
	// Where the style puts the baseline of a row's text, below the row's top; negative if it draws no text.
	// Needs the font learnt.
	qreal BaselineInRow(const QStyleOptionViewItem& Row, QStyle* Style) const;

	mutable std::unique_ptr<FFontShapes> Shapes;
	// Wide enough that an editor left open for months never wraps it.
	mutable quint64 PlainRows = 0;
};
