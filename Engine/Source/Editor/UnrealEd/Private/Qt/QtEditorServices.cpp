#include <QDesktopServices>
#include <QDialog>
#include <QDialogButtonBox>
#include <QEvent>
#include <QEventLoop>
#include <QFileDialog>
#include <QGuiApplication>
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
	return MakeShared<FQtEditorServices>();
}

void FQtEditorServices::OpenDialog(const FText& Title, const TSharedRef<SWidget>& Content)
{
	QDialog* Dialog = new QDialog(MainWindow ? SlateQt::GetQWidget(*MainWindow) : nullptr);
	Dialog->setAttribute(Qt::WA_DeleteOnClose);
	Dialog->setWindowTitle(SlateQt::ToQString(Title.ToString()));
	QVBoxLayout* Layout = new QVBoxLayout(Dialog);
	Layout->addWidget(SlateQt::MakeSlotHolder(*Content, FMargin(12), HAlign_Fill, VAlign_Fill));
	QDialogButtonBox* Buttons = new QDialogButtonBox(QDialogButtonBox::Ok, Dialog);
	QObject::connect(Buttons, &QDialogButtonBox::accepted, Dialog, &QDialog::accept);
	Layout->addWidget(Buttons);
	// The dialog keeps its content alive until it closes.
	TSharedPtr<SWidget> Keep = Content;
	QObject::connect(Dialog, &QObject::destroyed, [Keep]() mutable { Keep.Reset(); });
	Dialog->show();
}

void FQtEditorServices::RunModalWindow(const TSharedRef<SWindow>& Window)
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
	Widget->setWindowFlags(Flags);
	Widget->setWindowModality(Qt::ApplicationModal);
	const FVector2D ClientSize = Window->GetClientSize();
	switch (Window->GetSizingRule())
	{
	case ESizingRule::Autosized:
		// Sized to what the content asks for, and kept there: the user can't resize it.
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
	Widget->installEventFilter(&Watcher);
	Widget->show();
	if (!Window->IsDestroyRequested())
	{
		Loop.exec();
	}
	Widget->removeEventFilter(&Watcher);
	Widget->hide();
}

bool FQtEditorServices::OpenFileDialog(const void*, const FString& Title, const FString& DefaultPath,
									   const FString& DefaultFile, const FString& FileTypes, uint32,
									   TArray<FString>& OutFilenames)
{
	const QString Chosen = QFileDialog::getOpenFileName(MainWindow ? SlateQt::GetQWidget(*MainWindow) : nullptr,
														SlateQt::ToQString(Title),
														SlateQt::ToQString(DefaultPath / DefaultFile), ToQtFilter(FileTypes));
	if (Chosen.isEmpty())
	{
		return false;
	}
	OutFilenames.Add(SlateQt::FromQString(Chosen));
	return true;
}

bool FQtEditorServices::LaunchURL(const FString& URL)
{
	return QDesktopServices::openUrl(QUrl(SlateQt::ToQString(URL)));
}

