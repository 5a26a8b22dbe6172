#include <QApplication>
#include <QDesktopServices>
#include <QDialog>
#include <QDialogButtonBox>
#include <QEvent>
#include <QEventLoop>
#include <QFileDialog>
#include <QKeyEvent>
#include <QMainWindow>
#include <QPushButton>
#include <QScreen>
#include <QUrl>
#include <QVBoxLayout>
#include <QWidget>

#include "DefaultEditorServices.h"
#include "EditorServices.h"
#include "Dialogs/Dialogs.h"
#include "Editor/EditorEngine.h"
#include "Interfaces/IMainFrameModule.h"
#include "SlateQtBackend.h"

namespace
{
	// Ends a modal loop when its window closes.
	class FCloseWatcher : public QObject
	{
	public:
		FCloseWatcher(QEventLoop& InLoop) : Loop(InLoop) {}
		bool eventFilter(QObject* Watched, QEvent* Event) override
		{
			if (Event->type() == QEvent::Close || Event->type() == QEvent::Hide)
			{
				Loop.quit();
			}
			return false;
		}
		QEventLoop& Loop;
	};

	// The keys of a dialog in a modal window: Return presses its first button (the one that accepts), or the
	// button that has the focus, and Escape its last (the one that declines), or closes a window with one button.
	// A multi-line text box keeps its Return; a line of text passes its Return and Escape on to here.
	class FDialogKeys : public QObject
	{
	public:
		bool eventFilter(QObject* Watched, QEvent* Event) override
		{
			if (Event->type() != QEvent::KeyPress)
			{
				return false;
			}
			QWidget* Window = qobject_cast<QWidget*>(Watched);
			const int Key = static_cast<QKeyEvent*>(Event)->key();
			if (!Window || (Key != Qt::Key_Return && Key != Qt::Key_Enter && Key != Qt::Key_Escape))
			{
				return false;
			}
			QList<QPushButton*> Buttons;
			for (QPushButton* Button : Window->findChildren<QPushButton*>())
			{
				if (Button->isVisible() && Button->isEnabled())
				{
					Buttons << Button;
				}
			}
			if (Key == Qt::Key_Escape)
			{
				if (Buttons.size() > 1)
				{
					Buttons.last()->click();
				}
				else
				{
					Window->close();
				}
				return true;
			}
			if (QPushButton* Focused = qobject_cast<QPushButton*>(QApplication::focusWidget()); Focused && Buttons.contains(Focused))
			{
				Focused->click();
				return true;
			}
			if (!Buttons.isEmpty())
			{
				Buttons.first()->click();
				return true;
			}
			return false;
		}
	};

	// The window that dialogs stand over: the editor's main frame, or, where the host named none, the
	// application's main window. A dialog with a parent stays above it and can't sink behind it.
	QWidget* DialogParent(const TSharedPtr<SWindow>& MainWindow)
	{
		if (MainWindow)
		{
			return SlateQt::GetQWidget(*MainWindow)->window();
		}
		for (QWidget* Widget : QApplication::topLevelWidgets())
		{
			if (qobject_cast<QMainWindow*>(Widget) && Widget->isVisible())
			{
				return Widget;
			}
		}
		return nullptr;
	}

	// Turns "Png Image (.png)|*.png" into Qt's "Png Image (.png) (*.png)".
	QString ToQtFilter(const FString& FileTypes)
	{
		TArray<FString> Pieces;
		FileTypes.ParseIntoArray(Pieces, TEXT("|"), true);
		QStringList Filters;
		for (int32 Index = 0; Index + 1 < Pieces.Num(); Index += 2)
		{
			Filters << SlateQt::ToQString(Pieces[Index] + TEXT(" (") + Pieces[Index + 1].Replace(TEXT(";"), TEXT(" ")) + TEXT(")"));
		}
		return Filters.join(QStringLiteral(";;"));
	}
}

TSharedPtr<IEditorServices> MakeDefaultEditorServices()
{
	return MakeShared<FDesktopEditorServices>();
}

void FDesktopEditorServices::OpenDialog(const FText& Title, const TSharedRef<SWidget>& Content)
{
	// Modal to the main window, so that a result is read before the next job starts; the call still returns at once.
	// A title and a close button only: a report is neither minimised nor maximised.
	QDialog* Dialog = new QDialog(DialogParent(MainWindow), Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
	Dialog->setAttribute(Qt::WA_DeleteOnClose);
	Dialog->setWindowModality(Qt::WindowModal);
	Dialog->setWindowTitle(SlateQt::ToQString(Title.ToString()));
	// A window manager cuts a title wider than its title bar: the dialog is wide enough for its title in the
	// manager's larger, bolder lettering, beside the frame's icon and buttons.
	Dialog->setMinimumWidth(Dialog->fontMetrics().horizontalAdvance(Dialog->windowTitle()) * 3 / 2 + 10 * Dialog->fontMetrics().height());
	QVBoxLayout* Layout = new QVBoxLayout(Dialog);
	Layout->addWidget(SlateQt::MakeSlotHolder(*Content, FMargin(12), HAlign_Fill, VAlign_Fill));
	QDialogButtonBox* Buttons = new QDialogButtonBox(QDialogButtonBox::Ok, Dialog);
	QObject::connect(Buttons, &QDialogButtonBox::accepted, Dialog, &QDialog::accept);
	// Return and Escape both take the one answer a report has.
	Buttons->button(QDialogButtonBox::Ok)->setDefault(true);
	Layout->addWidget(Buttons);
	// The dialog keeps its content alive until it closes.
	TSharedPtr<SWidget> Keep = Content;
	QObject::connect(Dialog, &QObject::destroyed, [Keep]() mutable { Keep.Reset(); });
	Dialog->show();
}

void FDesktopEditorServices::RunModalWindow(const TSharedRef<SWindow>& Window)
{
	QWidget* Widget = SlateQt::GetQWidget(*Window);
	// A title and a close button always; the close button ends the loop like RequestDestroyWindow does.
	Qt::WindowFlags Flags = Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint;
	if (Window->HasMinimizeBox())
	{
		Flags |= Qt::WindowMinimizeButtonHint;
	}
	if (Window->HasMaximizeBox())
	{
		Flags |= Qt::WindowMaximizeButtonHint;
	}
	// Over the main window, which it belongs to; a parent keeps it above that window.
	Widget->setParent(DialogParent(MainWindow), Flags);
	Widget->setWindowModality(Qt::ApplicationModal);
	const FVector2D ClientSize = Window->GetClientSize();
	switch (Window->GetSizingRule())
	{
	case ESizingRule::Autosized:
		// Sized to what the content asks for (a grid asks for room for its widest cells), and kept there.
		Widget->adjustSize();
		Widget->setFixedSize(Widget->sizeHint().isValid() ? Widget->sizeHint() : Widget->size());
		break;
	case ESizingRule::FixedSize:
		Widget->setFixedSize(static_cast<int>(ClientSize.X), static_cast<int>(ClientSize.Y));
		break;
	case ESizingRule::UserSized:
		break;
	}
	if (Window->GetAutoCenter() != EAutoCenter::None)
	{
		// The preferred work area is that of the screen the editor's main window is on.
		QScreen* Screen = nullptr;
		if (Window->GetAutoCenter() == EAutoCenter::PreferredWorkArea && MainWindow && SlateQt::FindQWidget(*MainWindow))
		{
			Screen = SlateQt::GetQWidget(*MainWindow)->screen();
		}
		if (!Screen)
		{
			Screen = QGuiApplication::primaryScreen();
		}
		if (Screen)
		{
			// The client area is centred; the frame's size is known only once the window is shown.
			QRect Placed(QPoint(0, 0), Widget->size());
			Placed.moveCenter(Screen->availableGeometry().center());
			Widget->setGeometry(Placed);
		}
	}
	QEventLoop Loop;
	FCloseWatcher Watcher(Loop);
	FDialogKeys Keys;
	Widget->installEventFilter(&Watcher);
	Widget->installEventFilter(&Keys);
	Widget->show();
	Widget->activateWindow();
	if (!Window->IsDestroyRequested())
	{
		Loop.exec();
	}
	Widget->removeEventFilter(&Keys);
	Widget->removeEventFilter(&Watcher);
	Widget->hide();
}

bool FDesktopEditorServices::OpenFileDialog(const void*, const FString& Title, const FString& DefaultPath,
									   const FString& DefaultFile, const FString& FileTypes, uint32,
									   TArray<FString>& OutFilenames)
{
	const QString Chosen = QFileDialog::getOpenFileName(DialogParent(MainWindow),
														SlateQt::ToQString(Title),
														SlateQt::ToQString(DefaultPath / DefaultFile), ToQtFilter(FileTypes));
	if (Chosen.isEmpty())
	{
		return false;
	}
	OutFilenames.Add(SlateQt::FromQString(Chosen));
	return true;
}

bool FDesktopEditorServices::LaunchURL(const FString& URL)
{
	return QDesktopServices::openUrl(QUrl(SlateQt::ToQString(URL)));
}

