#include "RowDelegateQt.h"

#include <QApplication>
#include <QGlyphRun>
#include <QPaintEngine>
#include <QPainter>
#include <QStyle>
#include <QTextLayout>
#include <QVarLengthArray>
#include <QWidget>

namespace
{
	// A paint device that only notes where text is drawn: the style paints a sample row on it, so that plain rows
	// put their baseline exactly where the style's own centring (with its own roundings) puts it.
	class FBaselineEngine : public QPaintEngine
	{
	public:
		FBaselineEngine() : QPaintEngine(QPaintEngine::AllFeatures) {}
		bool begin(QPaintDevice*) override { return true; }
		bool end() override { return true; }
		void updateState(const QPaintEngineState&) override {}
		void drawPixmap(const QRectF&, const QPixmap&, const QRectF&) override {}
		void drawTextItem(const QPointF& Position, const QTextItem&) override
		{
			Baseline = Position.y();
			bFound = true;
		}
		Type type() const override { return QPaintEngine::User; }
		qreal Baseline = 0.0;
		bool bFound = false;
	};

	class FBaselineDevice : public QPaintDevice
	{
	public:
		explicit FBaselineDevice(const QPaintDevice* InLike) : Like(InLike) {}
		QPaintEngine* paintEngine() const override { return &Engine; }
		mutable FBaselineEngine Engine;

	protected:
		int metric(PaintDeviceMetric Metric) const override
		{
			switch (Metric)
			{
			case PdmWidth:
			case PdmHeight:
				return 4096;
			case PdmDpiX:
				return Like ? Like->logicalDpiX() : 96;
			case PdmDpiY:
				return Like ? Like->logicalDpiY() : 96;
			case PdmPhysicalDpiX:
				return Like ? Like->physicalDpiX() : 96;
			case PdmPhysicalDpiY:
				return Like ? Like->physicalDpiY() : 96;
			case PdmDevicePixelRatio:
				return 1;
			case PdmDevicePixelRatioScaled:
				return static_cast<int>(devicePixelRatioFScale());
			case PdmDepth:
				return 32;
			default:
				return QPaintDevice::metric(Metric);
			}
		}

	private:
		const QPaintDevice* Like;
	};

	bool IsPrintableAscii(const QString& Text)
	{
		for (const QChar Character : Text)
		{
			if (Character.unicode() < FRowDelegateQt::FirstPlain || Character.unicode() > FRowDelegateQt::LastPlain)
			{
				return false;
			}
		}
		return true;
	}
}

qreal FRowDelegateQt::BaselineInRow(const QStyleOptionViewItem& Row, QStyle* Style) const
{
	// Kept with the font's shapes, so a new font learns its baseline anew.
	if (Row.rect.height() == Shapes->BaselineRowHeight && Style == Shapes->BaselineStyle)
	{
		return Shapes->Baseline;
	}
	QStyleOptionViewItem Sample(Row);
	Sample.text = QStringLiteral("x");
	Sample.rect.moveTopLeft(QPoint(0, 0));
	FBaselineDevice Device(Row.widget);
	{
		QPainter Recorder(&Device);
		Recorder.setFont(Row.font);
		Style->drawControl(QStyle::CE_ItemViewItem, &Sample, &Recorder, Row.widget);
	}
	Shapes->BaselineRowHeight = Row.rect.height();
	Shapes->BaselineStyle = Style;
	Shapes->Baseline = Device.Engine.bFound ? Device.Engine.Baseline : -1.0;
	return Shapes->Baseline;
}

void FRowDelegateQt::paint(QPainter* Painter, const QStyleOptionViewItem& Option, const QModelIndex& Index) const
{
	QStyleOptionViewItem Row(Option);
	initStyleOption(&Row, Index);
	if (!PaintPlainRow(Painter, Row))
	{
		QStyledItemDelegate::paint(Painter, Option, Index);
	}
}

bool FRowDelegateQt::LearnFont(const QFont& Font) const
{
	if (Shapes && Shapes->Font == Font)
	{
		return Shapes->bUsable;
	}
	Shapes = std::make_unique<FFontShapes>();
	Shapes->Font = Font;
	Shapes->PairAdvance.fill(FFontShapes::Unknown);
	// Qt's own layout of the whole printable range gives the font every glyph comes from and the glyphs.
	QString Range;
	for (char16_t Character = FirstPlain; Character <= LastPlain; ++Character)
	{
		Range += QChar(Character);
	}
	QTextLayout Layout(Range, Font);
	Layout.beginLayout();
	Layout.createLine().setLineWidth(1.0e6);
	Layout.endLayout();
	const QList<QGlyphRun> Runs = Layout.glyphRuns();
	if (Runs.size() != 1 || Runs[0].glyphIndexes().size() != Range.size())
	{
		return false; // some character comes from another font, or a glyph stands for several
	}
	Shapes->RawFont = Runs[0].rawFont();
	const QList<quint32> Glyphs = Runs[0].glyphIndexes();
	for (int Index = 0; Index < PlainCount; ++Index)
	{
		Shapes->Glyph[Index] = Glyphs[Index];
		QTextLayout Single(QString(QChar(FirstPlain + Index)), Font);
		Single.beginLayout();
		QTextLine Line = Single.createLine();
		Line.setLineWidth(1.0e6);
		Shapes->Width[Index] = Line.naturalTextWidth();
		Single.endLayout();
	}
	Shapes->bUsable = true;
	return true;
}

qreal FRowDelegateQt::PairAdvance(int First, int Second) const
{
	float& Advance = Shapes->PairAdvance[First * PlainCount + Second];
	if (Advance == FFontShapes::Unknown)
	{
		// Where Qt puts the second glyph after the first: the first's advance with the pair's kerning, as Qt's
		// shaping rounds it. A pair that shapes into anything but the two glyphs (a ligature) is marked.
		const QChar Pair[2] = {QChar(FirstPlain + First), QChar(FirstPlain + Second)};
		QTextLayout Layout(QString(Pair, 2), Shapes->Font);
		Layout.beginLayout();
		Layout.createLine().setLineWidth(1.0e6);
		Layout.endLayout();
		const QList<QGlyphRun> Runs = Layout.glyphRuns();
		Advance = FFontShapes::NotAPair;
		if (Runs.size() == 1 && Runs[0].rawFont() == Shapes->RawFont && Runs[0].glyphIndexes().size() == 2 &&
			Runs[0].glyphIndexes()[0] == Shapes->Glyph[First] && Runs[0].glyphIndexes()[1] == Shapes->Glyph[Second])
		{
			Advance = static_cast<float>(Runs[0].positions()[1].x() - Runs[0].positions()[0].x());
		}
	}
	return Advance;
}

bool FRowDelegateQt::PaintPlainRow(QPainter* Painter, QStyleOptionViewItem& Row) const
{
	const QStyleOptionViewItem::ViewItemFeatures Plain = QStyleOptionViewItem::HasDisplay;
	const int Count = static_cast<int>(Row.text.size());
	if ((Row.features | Plain) != Plain || (Row.state & (QStyle::State_Selected | QStyle::State_HasFocus)) ||
		Row.direction != Qt::LeftToRight || Row.displayAlignment != (Qt::AlignLeft | Qt::AlignVCenter) ||
		Count == 0 || !IsPrintableAscii(Row.text) || !LearnFont(Row.font))
	{
		return false;
	}

	const QWidget* Widget = Row.widget;
	QStyle* Style = Widget ? Widget->style() : QApplication::style();
	const qreal BaselineBelowTop = BaselineInRow(Row, Style);
	if (BaselineBelowTop < 0.0)
	{
		return false;
	}
	const int Margin = Style->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, Widget) + 1;
	const QRect TextRect = Row.rect.adjusted(Margin, 0, -Margin, 0);
	const qreal Baseline = Row.rect.top() + BaselineBelowTop;

	QVarLengthArray<quint32, 256> Glyphs(Count);
	QVarLengthArray<QPointF, 256> Positions(Count);
	qreal Pen = 0.0;
	for (int Index = 0; Index < Count; ++Index)
	{
		const int Character = Row.text[Index].unicode() - FirstPlain;
		Glyphs[Index] = Shapes->Glyph[Character];
		Positions[Index] = QPointF(TextRect.left() + Pen, Baseline);
		if (Index + 1 < Count)
		{
			const qreal Advance = PairAdvance(Character, Row.text[Index + 1].unicode() - FirstPlain);
			if (Advance == FFontShapes::NotAPair)
			{
				return false;
			}
			Pen += Advance;
		}
		else
		{
			Pen += Shapes->Width[Character];
		}
	}
	if (Pen > TextRect.width())
	{
		// Too long for the cell: Qt elides it.
		return false;
	}

	Style->drawPrimitive(QStyle::PE_PanelItemViewItem, &Row, Painter, Widget);
	const QPalette::ColorGroup Group = !(Row.state & QStyle::State_Enabled) ? QPalette::Disabled
									   : (Row.state & QStyle::State_Active)  ? QPalette::Normal
																			 : QPalette::Inactive;
	QGlyphRun Run;
	Run.setRawFont(Shapes->RawFont);
	Run.setRawData(Glyphs.constData(), Positions.constData(), Count);
	Painter->save();
	// As the style does: a glyph taller than the row is cut at the row's edges, not drawn into the next row.
	Painter->setClipRect(Row.rect, Qt::IntersectClip);
	Painter->setPen(Row.palette.color(Group, QPalette::Text));
	Painter->drawGlyphRun(QPointF(0, 0), Run);
	Painter->restore();
	++PlainRows;
	return true;
}
