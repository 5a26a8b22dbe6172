#include <QAbstractItemView>
#include <QGridLayout>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QTimer>
#include <QVBoxLayout>

#include "SlateTestMain.h"
#include "ToolWindow.h"

#include "EditorServices.h"
#include "STesselUI.h"
#include "TestKit.h"
#include "Widgets/Input/SEditableTextBox.h"

#include <memory>

namespace
{
	// The tool shown in a window on a kit whose mod "Islands" is ready to upload, with the editor's real
	// (Qt) windows and SteamCMD in place; no uploader, so every click opens the login dialog.
	struct FShownUploadKit
	{
		FShownUploadKit()
		{
			IEditorServices::Set(nullptr);
			Kit.AddPackagedMod(TEXT("Islands"));
			Kit.InstallWorkshopTemplate();
			Kit.InstallSteamCmd();
			Open = std::make_unique<FOpenTool>();
			Tool = Open->Tool;
			Tool->SelectedMod->Title = TEXT("Island Pack");
			Tool->SelectedMod->Description = TEXT("Two islands.");
			Tool->SelectedMod->PreviewImage = Kit.WriteFile(TEXT("islands.png"), "\x89PNG\r\n\x1a\n");
		}
		~FShownUploadKit()
		{
			Tool.Reset();
			Open.reset();
		}

		QWidget* DialogWindow() const { return SlateQt::GetQWidget(*Tool->SteamAuthWindow); }
		QLineEdit* Box(int32 Index) const
		{
			TArray<TSharedRef<SWidget>> Boxes = FindWidgetsByType(Tool->SteamAuthWindow.ToSharedRef(), TEXT("SEditableTextBox"));
			return Boxes.IsValidIndex(Index) ? qobject_cast<QLineEdit*>(SlateQt::GetQWidget(*Boxes[Index])) : nullptr;
		}
		QPushButton* Button(const TCHAR* Key) const
		{
			TSharedPtr<SWidget> Found = FindWidgetByKey(Tool->SteamAuthWindow.ToSharedRef(), Key);
			return Found ? qobject_cast<QPushButton*>(SlateQt::GetQWidget(*Found)) : nullptr;
		}
		int32 LogRows() const
		{
			QAbstractItemView* View = SlateQt::GetQWidget(*Tool->LogListView)->findChild<QAbstractItemView*>();
			return View ? View->model()->rowCount() : -1;
		}
		bool ItemFileExists() const { return FPaths::FileExists(Kit.Root() / TEXT("ModTools/ModConfigs/Islands.vdf")); }

		FTestKit Kit;
		std::unique_ptr<FOpenTool> Open;
		TSharedPtr<STesselTool> Tool;
	};
}

// The dialog as a user meets it: modal, sized to its content and centred, without minimise or maximise, the
// password masked. Typing and "Accept" publish the mod, and the log list shows the two lines.
TEST(UploadDialogTests, TypingAndAcceptInTheRealDialogPublishes)
{
	FShownUploadKit Upload;
	struct
	{
		bool bRan = false;
		bool bVisible = false;
		Qt::WindowModality Modality = Qt::NonModal;
		Qt::WindowFlags Flags;
		QSize Size;
		QSize MinimumSize;
		QSize MaximumSize;
		QSize SizeHint;
		QPoint Centre;
		int ColumnStretch0 = -1;
		int ColumnStretch1 = -1;
		QLineEdit::EchoMode UserEcho = QLineEdit::Password;
		QLineEdit::EchoMode PasswordEcho = QLineEdit::Normal;
	} Seen;
	QTimer::singleShot(0, [&]
					   {
						   QWidget* Window = Upload.DialogWindow();
						   Seen.bRan = true;
						   Seen.bVisible = Window->isVisible();
						   Seen.Modality = Window->windowModality();
						   Seen.Flags = Window->windowFlags();
						   Seen.Size = Window->size();
						   Seen.MinimumSize = Window->minimumSize();
						   Seen.MaximumSize = Window->maximumSize();
						   Seen.SizeHint = Window->sizeHint();
						   Seen.Centre = Window->geometry().center();
						   if (QGridLayout* Grid = Window->findChild<QGridLayout*>())
						   {
							   Seen.ColumnStretch0 = Grid->columnStretch(0);
							   Seen.ColumnStretch1 = Grid->columnStretch(1);
						   }
						   ASSERT_NE(Upload.Box(0), nullptr);
						   ASSERT_NE(Upload.Box(1), nullptr);
						   Seen.UserEcho = Upload.Box(0)->echoMode();
						   Seen.PasswordEcho = Upload.Box(1)->echoMode();
						   QTest::keyClicks(Upload.Box(0), "mia");
						   QTest::keyClicks(Upload.Box(1), "hunter2");
						   ASSERT_NE(Upload.Button(TEXT("Accept")), nullptr);
						   QTest::mouseClick(Upload.Button(TEXT("Accept")), Qt::LeftButton);
					   });
	Upload.Tool->OnUploadClicked();
	TickFrames();

	ASSERT_TRUE(Seen.bRan);
	EXPECT_TRUE(Seen.bVisible);
	EXPECT_EQ(Seen.Modality, Qt::ApplicationModal);
	EXPECT_FALSE(Seen.Flags.testFlag(Qt::WindowMinimizeButtonHint));
	EXPECT_FALSE(Seen.Flags.testFlag(Qt::WindowMaximizeButtonHint));
	EXPECT_TRUE(Seen.Flags.testFlag(Qt::WindowCloseButtonHint));
	// Sized to its content, not to the default client size, and not resizable.
	EXPECT_NE(Seen.Size, QSize(400, 300));
	EXPECT_EQ(Seen.Size, Seen.SizeHint);
	EXPECT_EQ(Seen.MinimumSize, Seen.Size);
	EXPECT_EQ(Seen.MaximumSize, Seen.Size);
	const QPoint ScreenCentre = QGuiApplication::primaryScreen()->availableGeometry().center();
	EXPECT_EQ(Seen.Centre.x(), ScreenCentre.x());
	EXPECT_EQ(Seen.Centre.y(), ScreenCentre.y());
	EXPECT_EQ(Seen.ColumnStretch0, 30);
	EXPECT_EQ(Seen.ColumnStretch1, 70);
	EXPECT_EQ(Seen.UserEcho, QLineEdit::Normal);
	EXPECT_EQ(Seen.PasswordEcho, QLineEdit::Password);

	EXPECT_FALSE(Upload.DialogWindow()->isVisible());
	EXPECT_EQ(Upload.Tool->SteamUsername, FString(TEXT("mia")));
	EXPECT_EQ(Upload.Tool->SteamPassword, FString(TEXT("hunter2")));
	EXPECT_EQ(Upload.Tool->SelectedMod->ItemSeamId, FString(TEXT("2900000001")));
	EXPECT_EQ(Upload.LogRows(), 2);
}

// The window's own close button is a decline: nothing is written or run, and what was typed stays for the
// next dialog, which shows it again (the password behind its mask).
TEST(UploadDialogTests, TheCloseButtonDeclinesAndKeepsWhatWasTyped)
{
	FShownUploadKit Upload;
	bool bClosed = false;
	QTimer::singleShot(0, [&]
					   {
						   ASSERT_NE(Upload.Box(1), nullptr);
						   QTest::keyClicks(Upload.Box(0), "mia");
						   QTest::keyClicks(Upload.Box(1), "hunter2");
						   // What the title bar's close button does.
						   bClosed = Upload.DialogWindow()->close();
					   });
	Upload.Tool->OnUploadClicked();
	EXPECT_TRUE(bClosed);
	EXPECT_FALSE(Upload.Tool->bSteamAuthConfirmed);
	EXPECT_FALSE(Upload.ItemFileExists());
	EXPECT_EQ(Upload.LogRows(), 0);
	EXPECT_TRUE(Upload.Tool->SelectedMod->ItemSeamId.IsEmpty());

	QString ShownUser;
	QString ShownPassword;
	QTimer::singleShot(0, [&]
					   {
						   ASSERT_NE(Upload.Box(1), nullptr);
						   ShownUser = Upload.Box(0)->text();
						   ShownPassword = Upload.Box(1)->text();
						   QTest::mouseClick(Upload.Button(TEXT("Decline")), Qt::LeftButton);
					   });
	Upload.Tool->OnUploadClicked();
	EXPECT_EQ(ShownUser, QString("mia"));
	EXPECT_EQ(ShownPassword, QString("hunter2"));
	EXPECT_FALSE(Upload.ItemFileExists());
}
