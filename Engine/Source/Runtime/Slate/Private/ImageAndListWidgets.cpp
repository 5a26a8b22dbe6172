#include <QAbstractListModel>
#include <QHeaderView>
#include <QLabel>
#include <QAbstractItemView>
#include <QTableView>
#include <QMouseEvent>
#include <QPainter>
#include <QPixmap>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

#include "Widgets/Images/SImageWidgets.h"
#include "Widgets/Views/SListView.h"


#include <cmath>

using SlateQt::ToQString;

// Image --------------------------------------------------------------------------------------------------------

namespace
{
	// Draws one brush: its picture at the brush's size, centred, in as many device pixels as the screen has (so
	// that the logo stays sharp at a scale of 2), or repeated over the whole area for a tiled brush.
	class FImageQt : public QWidget
	{
	public:
		QPixmap Picture;
		QSize ImageSize{16, 16};
		bool bTiled = false;

		QSize sizeHint() const override { return ImageSize; }
		QSize minimumSizeHint() const override { return bTiled ? QSize(0, 0) : ImageSize; }

	protected:
		void paintEvent(QPaintEvent*) override
		{
			if (Picture.isNull())
			{
				return;
			}
			QPainter Painter(this);
			Painter.setRenderHint(QPainter::SmoothPixmapTransform);
			if (bTiled)
			{
				Painter.drawTiledPixmap(rect(), Picture);
				return;
			}
			const qreal Ratio = devicePixelRatioF();
			const QSize Target = ImageSize.boundedTo(size());
			QPixmap Scaled = Picture.scaled(Target * Ratio, Qt::KeepAspectRatio, Qt::SmoothTransformation);
			Scaled.setDevicePixelRatio(Ratio);
			const QSizeF Drawn = Scaled.deviceIndependentSize();
			Painter.drawPixmap(QPointF((width() - Drawn.width()) / 2.0, (height() - Drawn.height()) / 2.0), Scaled);
		}
	};

	QPixmap LoadStylePicture(const FString& Name)
	{
		QPixmap Pixmap;
		Pixmap.load(ToQString(FString(TEXT(":/slate/")) + Name + TEXT(".png")));
		return Pixmap;
	}
}

QWidget* SImage::CreateQWidget()
{
	FImageQt* Widget = new FImageQt();
	QtWidget = Widget;
	bDrawnOnce = false;
	RefreshAttributes();
	return Widget;
}

void SImage::RefreshAttributes()
{
	FImageQt* Widget = static_cast<FImageQt*>(QtWidget.data());
	const FSlateBrush* Brush = Image.Get();
	const FString Resource = Brush ? Brush->ResourceName : FString();
	if (Widget && (!bDrawnOnce || Resource != DrawnResource))
	{
		// The file of a dynamic brush is read here, when it is first drawn. A file that is missing or holds no
		// picture is drawn as the checkerboard that stands for "no image".
		DrawnResource = Resource;
		bDrawnOnce = true;
		QPixmap Pixmap;
		if (Brush && Brush->bIsDynamic && !Resource.IsEmpty())
		{
			Pixmap.load(ToQString(Resource));
		}
		else if (Brush && !Resource.IsEmpty())
		{
			Pixmap = LoadStylePicture(Resource);
		}
		bHasPicture = !Pixmap.isNull();
		const QSize Size = Brush ? QSize(static_cast<int>(Brush->ImageSize.X), static_cast<int>(Brush->ImageSize.Y)) : QSize(16, 16);
		Widget->ImageSize = Size;
		Widget->bTiled = Brush && Brush->Tiling == ESlateBrushTileType::Both;
		if (!bHasPicture && Brush && Brush->bIsDynamic)
		{
			Widget->Picture = LoadStylePicture(TEXT("Checkerboard"));
			Widget->bTiled = true;
		}
		else if (!bHasPicture && Brush)
		{
			// Style brushes without an image file are drawn as their name's colour swatch.
			QPixmap Swatch(Size);
			Swatch.fill(QColor::fromHsv(static_cast<int>(GetTypeHash(Resource) % 360), 60, 200));
			Widget->Picture = Swatch;
		}
		else
		{
			Widget->Picture = Pixmap;
		}
		Widget->updateGeometry();
		Widget->update();
	}
	SWidget::RefreshAttributes();
}

// Throbber -----------------------------------------------------------------------------------------------------

namespace
{
	class FThrobberQt : public QWidget
	{
	public:
		explicit FThrobberQt(SCircularThrobber* InOwner) : Owner(InOwner)
		{
			const int Size = static_cast<int>(std::ceil(Owner->GetRadius() * 2.0f)) + 4;
			setFixedSize(Size, Size);
		}
		SCircularThrobber* Owner;

	protected:
		void paintEvent(QPaintEvent*) override
		{
			if (!Owner)
			{
				return;
			}
			QPainter Painter(this);
			Painter.setRenderHint(QPainter::Antialiasing);
			const int Pieces = std::max(1, Owner->GetNumPieces());
			const double Radius = Owner->GetRadius();
			const QPointF Center(width() / 2.0, height() / 2.0);
			for (int Piece = 0; Piece < Pieces; ++Piece)
			{
				const double Angle = 2.0 * M_PI * (Piece / static_cast<double>(Pieces) + Owner->GetPhase());
				const double Fade = std::fmod(Piece / static_cast<double>(Pieces) + 1.0 - Owner->GetPhase(), 1.0);
				Painter.setBrush(QColor(80, 140, 220, static_cast<int>(60 + 195 * Fade)));
				Painter.setPen(Qt::NoPen);
				const QPointF At = Center + QPointF(std::cos(Angle) * (Radius - 3), std::sin(Angle) * (Radius - 3));
				Painter.drawEllipse(At, 2.5, 2.5);
			}
		}
	};
}

SCircularThrobber::~SCircularThrobber()
{
	// The Qt widget lives on until the event loop deletes it; it must not paint from a gone owner.
	if (FThrobberQt* Widget = dynamic_cast<FThrobberQt*>(QtWidget.data()))
	{
		Widget->Owner = nullptr;
	}
}

void SCircularThrobber::Construct(const FArguments& InArgs)
{
	NumPieces = InArgs._NumPieces;
	Period = InArgs._Period;
	Radius = InArgs._Radius;
}

void SCircularThrobber::Tick(const FGeometry&, const double InCurrentTime, const float)
{
	Phase = Period > 0.0f ? std::fmod(InCurrentTime / Period, 1.0) : 0.0;
	if (QtWidget && QtWidget->isVisible())
	{
		QtWidget->update();
	}
}

QWidget* SCircularThrobber::CreateQWidget()
{
	return new FThrobberQt(this);
}

// Header row ---------------------------------------------------------------------------------------------------

FString SHeaderRow::GetDisplayText() const
{
	FString Text;
	for (const FColumn& Column : Columns)
	{
		Text += Text.IsEmpty() ? Column.Label.ToString() : FString(TEXT(" ")) + Column.Label.ToString();
	}
	return Text;
}

TArray<TSharedRef<SWidget>> SHeaderRow::GetChildren() const
{
	return Labels;
}

QWidget* SHeaderRow::CreateQWidget()
{
	QWidget* Row = new QWidget();
	QHBoxLayout* Layout = new QHBoxLayout(Row);
	Layout->setContentsMargins(4, 2, 4, 2);
	for (const FColumn& Column : Columns)
	{
		QLabel* Label = new QLabel(ToQString(Column.Label.ToString()));
		Label->setObjectName(ToQString(Column.Label.GetKey()));
		QFont Font = Label->font();
		Font.setBold(true);
		Label->setFont(Font);
		Layout->addWidget(Label, 1);
	}
	Row->setStyleSheet(QStringLiteral("background-color: palette(button);"));
	Row->setAttribute(Qt::WA_StyledBackground, true);
	return Row;
}

// List view ----------------------------------------------------------------------------------------------------

// The Qt model over a list's items: the row count is the array's length and a row's text is made when Qt
// asks for it. Rows arrive by insertion at the end when the array only grew, never by a reset.
class FTableModelQt : public QAbstractListModel
{
public:
	explicit FTableModelQt(STableViewBase* InOwner) : Owner(InOwner) {}
	STableViewBase* Owner;
	int Rows = 0;

	int rowCount(const QModelIndex& Parent) const override { return Parent.isValid() ? 0 : Rows; }
	QVariant data(const QModelIndex& Index, int Role) const override
	{
		if (Owner && Role == Qt::DisplayRole && Index.isValid() && Index.row() < Rows)
		{
			return ToQString(Owner->GetRowText(Index.row()));
		}
		return QVariant();
	}
	void SetRows(int NewRows, bool bAppendOnly)
	{
		if (bAppendOnly && NewRows > Rows)
		{
			beginInsertRows(QModelIndex(), Rows, NewRows - 1);
			Rows = NewRows;
			endInsertRows();
		}
		else if (!bAppendOnly || NewRows != Rows)
		{
			beginResetModel();
			Rows = NewRows;
			endResetModel();
		}
	}
};


// A one-column table rather than a list view: the table's row header keeps rows of one height as a single
// span, so that appending rows costs the same at a million rows as at ten. A list view lays out every row again.
class FTableListViewQt : public QTableView
{
public:
	explicit FTableListViewQt(STableViewBase* InOwner) : Owner(InOwner)
	{
		horizontalHeader()->hide();
		horizontalHeader()->setStretchLastSection(true);
		verticalHeader()->hide();
		verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
		setShowGrid(false);
		setSelectionBehavior(QAbstractItemView::SelectRows);
		setWordWrap(false);
		setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
	}
	STableViewBase* Owner;

	// Scrolling right after rows arrived needs the scroll range of the new row count now, not at Qt's next
	// layout pass.
	void ScrollToRow(int Row)
	{
		updateGeometries();
		scrollTo(model()->index(Row, 0), QAbstractItemView::EnsureVisible);
	}

protected:
	void mousePressEvent(QMouseEvent* Event) override
	{
		const QModelIndex Index = indexAt(Event->pos());
		if (Owner && Index.isValid())
		{
			TSharedRef<SWidget> KeepAlive = Owner->AsShared();
			Owner->ClickRow(Index.row());
			return;
		}
		QTableView::mousePressEvent(Event);
	}
};

STableViewBase::~STableViewBase()
{
	// The Qt view and model outlive this widget until the event loop deletes them; they must not call back.
	if (Model)
	{
		Model->Owner = nullptr;
	}
	if (View)
	{
		View->Owner = nullptr;
	}
}

QWidget* STableViewBase::CreateQWidget()
{
	QWidget* Container = new QWidget();
	QVBoxLayout* Layout = new QVBoxLayout(Container);
	Layout->setContentsMargins(0, 0, 0, 0);
	Layout->setSpacing(0);
	if (HeaderRow)
	{
		Layout->addWidget(HeaderRow->GetQWidget());
	}
	View = new FTableListViewQt(this);
	Model = new FTableModelQt(this);
	Model->setParent(View);
	View->setModel(Model);
	View->verticalHeader()->setMinimumSectionSize(1);
	View->verticalHeader()->setDefaultSectionSize(static_cast<int>(ItemHeight));
	View->setSelectionMode(SelectionMode == ESelectionMode::None ? QAbstractItemView::NoSelection
																  : QAbstractItemView::SingleSelection);
	View->setVerticalScrollBarPolicy(bAlwaysShowScrollbar ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAsNeeded);
	View->setEditTriggers(QAbstractItemView::NoEditTriggers);
	// Focus only by a click: a list that took the window's first focus would mark a current row, which looks
	// like a selection the list does not have.
	View->setFocusPolicy(Qt::ClickFocus);
	Layout->addWidget(View, 1);
	QtWidget = Container;
	RowsShown = 0;
	bRefreshPending = true;
	ApplyRefresh();
	return Container;
}

TArray<TSharedRef<SWidget>> STableViewBase::GetChildren() const
{
	return HeaderRow ? TArray<TSharedRef<SWidget>>{HeaderRow.ToSharedRef()} : TArray<TSharedRef<SWidget>>{};
}

FString STableViewBase::GetRowText(int32 Index)
{
	auto Found = RowTextCache.find(Index);
	if (Found != RowTextCache.end())
	{
		return Found->second;
	}
	// Only rows on screen are asked for; the cache is dropped whole when it grows past a few screens.
	if (RowTextCache.size() > 4096)
	{
		RowTextCache.clear();
	}
	const FString Text = MakeRow(Index)->AsWidget()->GetDisplayText();
	RowTextCache.emplace(Index, Text);
	return Text;
}

void STableViewBase::ApplyRefresh()
{
	if (!bRefreshPending)
	{
		return;
	}
	bRefreshPending = false;
	const int32 Count = NumItems();
	// The array only grew at its end when its first item and the item last shown at the end are unchanged.
	const bool bAppendOnly = RowsShown > 0 && Count >= RowsShown && ItemIdentity(0) == FirstIdentity &&
							 ItemIdentity(RowsShown - 1) == LastIdentity;
	if (!bAppendOnly)
	{
		RowTextCache.clear();
	}
	RowsShown = Count;
	FirstIdentity = Count > 0 ? ItemIdentity(0) : nullptr;
	LastIdentity = Count > 0 ? ItemIdentity(Count - 1) : nullptr;
	if (Model)
	{
		Model->SetRows(Count, bAppendOnly);
		MirrorSelection();
	}
}

void STableViewBase::RefreshAttributes()
{
	if (QtWidget)
	{
		ApplyRefresh();
		if (PendingScrollIndex != INDEX_NONE && View && PendingScrollIndex < RowsShown)
		{
			View->ScrollToRow(PendingScrollIndex);
			PendingScrollIndex = INDEX_NONE;
		}
	}
	SWidget::RefreshAttributes();
}

void STableViewBase::ScrollToIndex(int32 Index)
{
	PendingScrollIndex = Index;
}

void STableViewBase::GetVisibleRange(int32& OutFirst, int32& OutLast) const
{
	OutFirst = INDEX_NONE;
	OutLast = INDEX_NONE;
	if (!View || RowsShown == 0)
	{
		return;
	}
	const QRect Area = View->viewport()->rect();
	const QModelIndex Top = View->indexAt(Area.topLeft() + QPoint(1, 1));
	QModelIndex Bottom = View->indexAt(QPoint(1, Area.bottom() - 1));
	if (!Top.isValid())
	{
		return;
	}
	OutFirst = Top.row();
	OutLast = Bottom.isValid() ? Bottom.row() : RowsShown - 1;
}

void STableViewBase::ClickRow(int32 Index)
{
	if (!IsEnabled() || SelectionMode == ESelectionMode::None || Index < 0 || Index >= NumItems())
	{
		return;
	}
	// In the toggling mode a click on the selected row clears the selection.
	if (SelectionMode == ESelectionMode::SingleToggle && SelectedIndex() == Index)
	{
		SelectIndexFromUser(INDEX_NONE);
		return;
	}
	SelectIndexFromUser(Index);
}

void STableViewBase::MirrorSelection()
{
	if (!View || !Model)
	{
		return;
	}
	const int32 Index = SelectedIndex();
	if (Index == INDEX_NONE || Index >= RowsShown)
	{
		// No current row either, so that nothing looks selected.
		View->selectionModel()->clear();
	}
	else
	{
		View->setCurrentIndex(Model->index(Index));
	}
}
