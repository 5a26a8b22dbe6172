#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractScrollArea>
#include <QApplication>
#include <QCheckBox>
#include <QGraphicsDropShadowEffect>
#include <QGuiApplication>
#include <QImage>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QStyle>
#include <QStyleOptionButton>
#include <QTest>
#include <QTimer>
#include <QToolTip>
#include <QVBoxLayout>

#include "SlateQt.h"
#include "Testing/SlateTestDriver.h"

#include "Framework/Application/SlateApplication.h"
#include "Widgets/SWindow.h"
#include "Widgets/Views/STableViewBase.h"

#include <cstdlib>

using SlateQt::FromQString;
using SlateQt::ToQString;

namespace
{
	QWidget* Drawn(const SWidget& Widget)
	{
		// Looking at a widget draws it, as showing it would.
		QWidget* Found = SlateQt::GetQWidget(const_cast<SWidget&>(Widget));
		check(Found);
		return Found;
	}

	FSlateTestRect InWindow(QWidget* Widget)
	{
		const QPoint At = Widget->isWindow() ? QPoint(0, 0) : Widget->mapTo(Widget->window(), QPoint(0, 0));
		return {At.x(), At.y(), Widget->width(), Widget->height()};
	}

	FSlateTestSize SizeOf(const QSize& Size) { return {Size.width(), Size.height()}; }

	FSlateScreenshot ToScreenshot(const QImage& Source)
	{
		const QImage Image = Source.convertToFormat(QImage::Format_ARGB32);
		FSlateScreenshot Shot;
		Shot.Width = Image.width();
		Shot.Height = Image.height();
		Shot.Pixels.reserve(static_cast<size_t>(Shot.Width) * Shot.Height);
		for (int Y = 0; Y < Image.height(); ++Y)
		{
			const QRgb* Line = reinterpret_cast<const QRgb*>(Image.constScanLine(Y));
			Shot.Pixels.insert(Shot.Pixels.end(), Line, Line + Image.width());
		}
		return Shot;
	}

	// A list's view: the item view inside the widget that draws the list.
	QAbstractItemView* ViewOf(const STableViewBase& List)
	{
		QAbstractItemView* View = Drawn(List)->findChild<QAbstractItemView*>();
		check(View);
		return View;
	}

	// The text of a label, a text box or a button; empty for any other widget.
	QString TextOf(QWidget* Widget)
	{
		if (QLabel* Label = qobject_cast<QLabel*>(Widget))
		{
			// The zero-width spaces are break hints inside paths, not text.
			return Label->text().remove(QChar(0x200B));
		}
		if (QLineEdit* Line = qobject_cast<QLineEdit*>(Widget))
		{
			return Line->text();
		}
		if (QPlainTextEdit* Edit = qobject_cast<QPlainTextEdit*>(Widget))
		{
			return Edit->toPlainText();
		}
		if (QAbstractButton* Button = qobject_cast<QAbstractButton*>(Widget))
		{
			return Button->text();
		}
		return QString();
	}
}

bool FSlateScreenshot::SaveToPng(const FString& Path) const
{
	if (IsEmpty())
	{
		return false;
	}
	QImage Image(reinterpret_cast<const uchar*>(Pixels.data()), Width, Height, Width * 4, QImage::Format_ARGB32);
	return Image.save(ToQString(Path), "PNG");
}

void SlateTest::StartApplication(int& ArgC, char** ArgV)
{
	const char* Platform = std::getenv("SLATE_TEST_PLATFORM");
	qputenv("QT_QPA_PLATFORM", Platform && *Platform ? Platform : "offscreen");
	if (const char* Scale = std::getenv("SLATE_TEST_SCALE"); Scale && *Scale)
	{
		qputenv("QT_SCALE_FACTOR", Scale);
	}
	FSlateApplication::Create(ArgC, ArgV);
}

void SlateTest::StopApplication()
{
	FSlateApplication::Shutdown();
}

void SlateTest::TickFrames(int32 Frames)
{
	for (int32 Frame = 0; Frame < Frames; ++Frame)
	{
		FSlateApplication::Get().Tick(1.0f / 60.0f);
		// Between two frames the host's running event loop passes a layout request up through every level; one
		// pass of the events here takes it one level. Each round hands on the requests the round before made.
		for (int32 Round = 0; Round < 32; ++Round)
		{
			QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
		}
	}
}

void SlateTest::RunSoon(std::function<void()> Work)
{
	QTimer::singleShot(0, std::move(Work));
}

FSlateTestRect SlateTest::GetGeometry(const SWidget& Widget)
{
	return InWindow(Drawn(Widget));
}

FSlateTestRect SlateTest::GetSlotGeometry(const SWidget& Widget)
{
	QWidget* Own = Drawn(Widget);
	QWidget* Parent = Own->parentWidget();
	return InWindow(Parent && Parent->property(SlateQt::SlotHolderProperty).toBool() ? Parent : Own);
}

FSlateTestSize SlateTest::GetPreferredSize(const SWidget& Widget)
{
	return SizeOf(Drawn(Widget)->sizeHint());
}

FSlateTestSize SlateTest::GetMinimumSize(const SWidget& Widget)
{
	return SizeOf(Drawn(Widget)->minimumSizeHint());
}

bool SlateTest::IsShown(const SWidget& Widget)
{
	return Drawn(Widget)->isVisible();
}

bool SlateTest::IsEnabledOnScreen(const SWidget& Widget)
{
	return Drawn(Widget)->isEnabled();
}

bool SlateTest::IsScrollBarShown(const SWidget& ScrollBox, EOrientation Orientation)
{
	QAbstractScrollArea* Area = qobject_cast<QAbstractScrollArea*>(Drawn(ScrollBox));
	check(Area);
	QScrollBar* Bar = Orientation == Orient_Horizontal ? Area->horizontalScrollBar() : Area->verticalScrollBar();
	return Bar->isVisible();
}

FString SlateTest::GetShownText(const SWidget& Widget)
{
	return FromQString(TextOf(Drawn(Widget)));
}

FSlateTextLook SlateTest::GetTextLook(const SWidget& Widget)
{
	QWidget* Own = Drawn(Widget);
	FSlateTextLook Look;
	Look.PointSize = static_cast<float>(Own->font().pointSizeF());
	Look.bBold = Own->font().bold();
	Look.bRaised = qobject_cast<QGraphicsDropShadowEffect*>(Own->graphicsEffect()) != nullptr;
	Look.LineHeight = Own->fontMetrics().height();
	Look.ShownTextWidth = Own->fontMetrics().horizontalAdvance(TextOf(Own));
	Look.TextRoomWidth = Own->contentsRect().width();
	if (QPushButton* Button = qobject_cast<QPushButton*>(Own))
	{
		QStyleOptionButton Option;
		Option.initFrom(Button);
		Option.text = Button->text();
		Look.TextRoomWidth = Button->style()->subElementRect(QStyle::SE_PushButtonContents, &Option, Button).width();
	}
	else if (QCheckBox* Box = qobject_cast<QCheckBox*>(Own))
	{
		QStyleOptionButton Option;
		Option.initFrom(Box);
		Option.text = Box->text();
		Look.TextRoomWidth = Box->style()->subElementRect(QStyle::SE_CheckBoxContents, &Option, Box).width();
	}
	else if (QLabel* Label = qobject_cast<QLabel*>(Own))
	{
		Look.TextRoomWidth = Label->contentsRect().width() - 2 * Label->margin();
	}
	Look.TextHeight = Look.LineHeight;
	if (QLabel* Label = qobject_cast<QLabel*>(Own); Label && Label->wordWrap())
	{
		// The label's own measure of its lines at the width it has.
		Look.TextHeight = Label->heightForWidth(Label->width());
	}
	return Look;
}

bool SlateTest::WrapsText(const SWidget& Widget)
{
	QWidget* Own = Drawn(Widget);
	if (QLabel* Label = qobject_cast<QLabel*>(Own))
	{
		return Label->wordWrap();
	}
	if (QPlainTextEdit* Edit = qobject_cast<QPlainTextEdit*>(Own))
	{
		return Edit->lineWrapMode() == QPlainTextEdit::WidgetWidth;
	}
	return false;
}

bool SlateTest::IsChecked(const SWidget& Widget)
{
	QAbstractButton* Button = qobject_cast<QAbstractButton*>(Drawn(Widget));
	return Button && Button->isChecked();
}

bool SlateTest::IsReadOnly(const SWidget& Widget)
{
	QWidget* Own = Drawn(Widget);
	if (QLineEdit* Line = qobject_cast<QLineEdit*>(Own))
	{
		return Line->isReadOnly();
	}
	if (QPlainTextEdit* Edit = qobject_cast<QPlainTextEdit*>(Own))
	{
		return Edit->isReadOnly();
	}
	return true;
}

bool SlateTest::HasFrame(const SWidget& Widget)
{
	QLineEdit* Line = qobject_cast<QLineEdit*>(Drawn(Widget));
	return Line && Line->hasFrame();
}

bool SlateTest::IsMasked(const SWidget& Widget)
{
	QLineEdit* Line = qobject_cast<QLineEdit*>(Drawn(Widget));
	return Line && Line->echoMode() == QLineEdit::Password;
}

int32 SlateTest::GetCursorPosition(const SWidget& TextBox)
{
	QWidget* Own = Drawn(TextBox);
	if (QLineEdit* Line = qobject_cast<QLineEdit*>(Own))
	{
		return Line->cursorPosition();
	}
	QPlainTextEdit* Edit = qobject_cast<QPlainTextEdit*>(Own);
	check(Edit);
	return Edit->textCursor().position();
}

void SlateTest::SetCursorPosition(SWidget& TextBox, int32 Position)
{
	QWidget* Own = Drawn(TextBox);
	if (QLineEdit* Line = qobject_cast<QLineEdit*>(Own))
	{
		Line->setCursorPosition(Position);
		return;
	}
	QPlainTextEdit* Edit = qobject_cast<QPlainTextEdit*>(Own);
	check(Edit);
	QTextCursor Cursor = Edit->textCursor();
	Cursor.setPosition(Position);
	Edit->setTextCursor(Cursor);
}

void SlateTest::Click(SWidget& Widget)
{
	QWidget* Own = Drawn(Widget);
	// A check box takes clicks on its box and label only, which may be far from the middle of a wide slot.
	if (QCheckBox* Box = qobject_cast<QCheckBox*>(Own))
	{
		QStyleOptionButton Option;
		Option.initFrom(Box);
		const QRect Indicator = Box->style()->subElementRect(QStyle::SE_CheckBoxIndicator, &Option, Box);
		QTest::mouseClick(Box, Qt::LeftButton, {}, Indicator.center());
		return;
	}
	QTest::mouseClick(Own, Qt::LeftButton);
}

void SlateTest::Focus(SWidget& Widget)
{
	QWidget* Own = Drawn(Widget);
	Own->window()->activateWindow();
	// A window just shown becomes the active one a moment later; keys go to the active window only.
	QTest::qWaitForWindowActive(Own->window(), 2000);
	Own->setFocus();
}

bool SlateTest::HasFocus(const SWidget& Widget)
{
	QWidget* Own = Drawn(Widget);
	QWidget* Focused = QApplication::focusWidget();
	return Focused && (Focused == Own || Own->isAncestorOf(Focused));
}

void SlateTest::TypeText(SWidget& Widget, const FString& Text)
{
	QTest::keyClicks(Drawn(Widget), ToQString(Text));
}

namespace
{
	void PressKeyOn(QWidget* Target, const FString& Key)
	{
		const QKeySequence Sequence = QKeySequence::fromString(ToQString(Key));
		check(Sequence.count() == 1);
		const QKeyCombination Combination = Sequence[0];
		QTest::keyClick(Target, Combination.key(), Combination.keyboardModifiers());
	}
}

void SlateTest::PressKey(SWidget& Widget, const FString& Key)
{
	PressKeyOn(Drawn(Widget), Key);
}

void SlateTest::PressKeyInFocus(const FString& Key)
{
	QWidget* Focused = QApplication::focusWidget();
	check(Focused);
	PressKeyOn(Focused, Key);
}

int32 SlateTest::GetListRowCount(const STableViewBase& List)
{
	return ViewOf(List)->model()->rowCount();
}

FString SlateTest::GetListRowText(const STableViewBase& List, int32 Row)
{
	QAbstractItemModel* Model = ViewOf(List)->model();
	return FromQString(Model->data(Model->index(Row, 0)).toString());
}

FString SlateTest::HoverListRow(STableViewBase& List, int32 Row)
{
	QAbstractItemView* View = ViewOf(List);
	// A tooltip shown before fades out a moment after it is told to go.
	QToolTip::hideText();
	for (int32 Wait = 0; Wait < 100 && QToolTip::isVisible(); ++Wait)
	{
		QTest::qWait(10);
	}
	const QRect Cell = View->visualRect(View->model()->index(Row, 0));
	QHelpEvent Hover(QEvent::ToolTip, Cell.center(), View->viewport()->mapToGlobal(Cell.center()));
	QApplication::sendEvent(View->viewport(), &Hover);
	return QToolTip::isVisible() ? FromQString(QToolTip::text()) : FString();
}

void SlateTest::ClickListRow(STableViewBase& List, int32 Row)
{
	QAbstractItemView* View = ViewOf(List);
	const QRect Area = View->visualRect(View->model()->index(Row, 0));
	check(Area.isValid());
	QTest::mouseClick(View->viewport(), Qt::LeftButton, {}, Area.center());
}

FSlateTestWindowState SlateTest::GetWindowState(SWindow& Window)
{
	QWidget* Own = Drawn(Window);
	FSlateTestWindowState State;
	State.bShown = Own->isVisible();
	State.bModal = Own->windowModality() == Qt::ApplicationModal;
	const Qt::WindowFlags Flags = Own->windowFlags();
	State.bHasMinimizeButton = Flags.testFlag(Qt::WindowMinimizeButtonHint);
	State.bHasMaximizeButton = Flags.testFlag(Qt::WindowMaximizeButtonHint);
	State.bHasCloseButton = Flags.testFlag(Qt::WindowCloseButtonHint);
	State.Title = FromQString(Own->windowTitle());
	const QRect Geometry = Own->geometry();
	State.Geometry = {Geometry.x(), Geometry.y(), Geometry.width(), Geometry.height()};
	State.MinimumSize = SizeOf(Own->minimumSize());
	State.MaximumSize = SizeOf(Own->maximumSize());
	State.PreferredSize = SizeOf(Own->sizeHint());
	return State;
}

bool SlateTest::PressCloseButton(SWindow& Window)
{
	// What the title bar's button asks of the window.
	return Drawn(Window)->close();
}

FSlateTestRect SlateTest::GetScreenWorkArea()
{
	const QRect Area = QGuiApplication::primaryScreen()->availableGeometry();
	return {Area.x(), Area.y(), Area.width(), Area.height()};
}

FSlateScreenshot SlateTest::TakeScreenshot(const SWidget& Widget)
{
	return ToScreenshot(Drawn(Widget)->grab().toImage());
}

FSlateScreenshot SlateTest::TakeWindowScreenshot(const SWidget& Widget)
{
	return ToScreenshot(Drawn(Widget)->window()->grab().toImage());
}

float SlateTest::GetScreenScale()
{
	return QGuiApplication::primaryScreen() ? static_cast<float>(QGuiApplication::primaryScreen()->devicePixelRatio()) : 1.0f;
}

bool SlateTest::WriteSolidPng(const FString& Path, int32 Width, int32 Height, uint32 Colour)
{
	QImage Picture(Width, Height, QImage::Format_ARGB32);
	Picture.fill(QColor::fromRgba(Colour));
	return Picture.save(ToQString(Path), "PNG");
}

struct FSlateListWatch::FState
{
	int32 Inserted = 0;
	int32 Resets = 0;
	QMetaObject::Connection OnInsert;
	QMetaObject::Connection OnReset;
};

FSlateListWatch::FSlateListWatch(const STableViewBase& List) : State(std::make_unique<FState>())
{
	QAbstractItemModel* Model = ViewOf(List)->model();
	FState* Counts = State.get();
	State->OnInsert = QObject::connect(Model, &QAbstractItemModel::rowsInserted, [Counts] { ++Counts->Inserted; });
	State->OnReset = QObject::connect(Model, &QAbstractItemModel::modelReset, [Counts] { ++Counts->Resets; });
}

FSlateListWatch::~FSlateListWatch()
{
	QObject::disconnect(State->OnInsert);
	QObject::disconnect(State->OnReset);
}

int32 FSlateListWatch::GetRowsInserted() const
{
	return State->Inserted;
}

int32 FSlateListWatch::GetResets() const
{
	return State->Resets;
}

struct FSlateTestWindow::FState
{
	std::unique_ptr<QWidget> Window;
};

FSlateTestWindow::FSlateTestWindow(const TSharedRef<SWidget>& InContent, int32 Width, int32 Height, bool bMargins)
	: Content(InContent), State(std::make_unique<FState>())
{
	State->Window = std::make_unique<QWidget>();
	QVBoxLayout* Layout = new QVBoxLayout(State->Window.get());
	if (!bMargins)
	{
		Layout->setContentsMargins(0, 0, 0, 0);
	}
	Layout->addWidget(SlateQt::GetQWidget(*Content));
	State->Window->resize(Width, Height);
	State->Window->show();
	SlateTest::TickFrames();
}

FSlateTestWindow::~FSlateTestWindow()
{
	State->Window.reset();
}

void FSlateTestWindow::Resize(int32 Width, int32 Height)
{
	// On a real display the window manager answers a moment later, and an answer to an earlier request (the
	// placement of a window just shown) can put the old size back: the size counts once it has held for a
	// few turns of the event loop.
	const QSize Wanted(Width, Height);
	State->Window->resize(Wanted);
	int HeldTurns = 0;
	for (int Turn = 0; Turn < 100 && HeldTurns < 3; ++Turn)
	{
		QTest::qWait(20);
		if (State->Window->size() == Wanted)
		{
			++HeldTurns;
		}
		else
		{
			HeldTurns = 0;
			State->Window->resize(Wanted);
		}
	}
}

void FSlateTestWindow::Activate()
{
	State->Window->activateWindow();
}

FSlateScreenshot FSlateTestWindow::TakeScreenshot() const
{
	return ToScreenshot(State->Window->grab().toImage());
}

float FSlateTestWindow::GetScale() const
{
	return static_cast<float>(State->Window->devicePixelRatioF());
}
