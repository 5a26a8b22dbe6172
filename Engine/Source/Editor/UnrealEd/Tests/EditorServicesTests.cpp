#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QMainWindow>
#include <QTimer>

#include "SlateQtBackend.h"
#include "SlateTestMain.h"

#include "Dialogs/Dialogs.h"
#include "DesktopPlatformModule.h"
#include "Editor/EditorEngine.h"
#include "Interfaces/IMainFrameModule.h"
#include "Modules/ModuleManager.h"
#include "Testing/EditorServicesDouble.h"
#include "Testing/SlateTestDriver.h"
#include "TestPaths.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Input/SEditableTextBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

#define LOCTEXT_NAMESPACE "EditorServicesTests"

TESSEL_WIDGET_TEST_MAIN()

TEST(EditorServicesTests, ModalWindowReturnsOnlyWhenTheWindowIsGone)
{
	IEditorServices::Set(nullptr); // the Qt implementation
	TSharedRef<SWindow> Window = SNew(SWindow).Title(LOCTEXT("Auth", "Steam Authentication"))[SNew(STextBlock).Text(LOCTEXT("Body", "body"))];
	bool bClosedByTimer = false;
	QTimer::singleShot(50, [&]
					   {
						   bClosedByTimer = true;
						   Window->RequestDestroyWindow();
					   });
	GEditor->EditorAddModalWindow(Window);
	EXPECT_TRUE(bClosedByTimer);
	EXPECT_TRUE(Window->IsDestroyRequested());
	EXPECT_EQ(SlateQt::GetQWidget(*Window)->windowTitle(), QString("Steam Authentication"));
	EXPECT_EQ(SlateQt::GetQWidget(*Window)->objectName(), QString("Auth"));
}

TEST(EditorServicesTests, GenericDialogShowsTitleAndBodyAndReturnsAtOnce)
{
	IEditorServices::Set(nullptr);
	SGenericDialogWidget::OpenDialog(LOCTEXT("Succesfull", "Quillon Dev Kit"), SNew(STextBlock).Text(LOCTEXT("SuccessMsg", "Job Successful!!")));
	QDialog* Shown = nullptr;
	for (QWidget* Widget : QApplication::topLevelWidgets())
	{
		if (QDialog* Dialog = qobject_cast<QDialog*>(Widget); Dialog && Dialog->isVisible())
		{
			Shown = Dialog;
		}
	}
	ASSERT_NE(Shown, nullptr);
	EXPECT_EQ(Shown->windowTitle(), QString("Quillon Dev Kit"));
	ASSERT_NE(Shown->findChild<QLabel*>("SuccessMsg"), nullptr);
	EXPECT_EQ(Shown->findChild<QLabel*>("SuccessMsg")->text(), QString("Job Successful!!"));
	Shown->close();
	TickFrames();
}

// Over an editor's main window, a result dialog and a modal window belong to it: they stay above it, a result
// must be read before the window takes input again, and the result's text is whole.
TEST(EditorServicesTests, DialogsStandOverTheMainWindow)
{
	IEditorServices::Set(nullptr);
	QMainWindow Main;
	Main.resize(800, 600);
	Main.show();
	TickFrames();

	TSharedRef<STextBlock> Body = SNew(STextBlock).Text(LOCTEXT("SuccessMsg", "Job Successful!!"));
	SGenericDialogWidget::OpenDialog(LOCTEXT("Succesfull", "Quillon Dev Kit"), Body);
	TickFrames();
	QDialog* Result = Main.findChild<QDialog*>();
	ASSERT_NE(Result, nullptr);
	EXPECT_TRUE(Result->isVisible());
	EXPECT_EQ(Result->parentWidget(), &Main);
	EXPECT_NE(Result->windowModality(), Qt::NonModal);
	const FSlateTextLook Look = SlateTest::GetTextLook(*Body);
	EXPECT_LE(Look.ShownTextWidth, Look.TextRoomWidth);
	// A picture to look at, of a drawn dialog.
	const FSlateScreenshot Shot = SlateTest::TakeWindowScreenshot(*Body);
	EXPECT_GT(SlateTest::CountColours(Shot), 8);
	EXPECT_TRUE(Shot.SaveToPng(FString(TestPaths::BuildDir) + FString::Printf(TEXT("/tessel-result-dialog@%gx.png"), SlateTest::GetScreenScale())));
	Result->close();
	TickFrames();

	TSharedRef<SWindow> Window = SNew(SWindow).SizingRule(ESizingRule::Autosized)[SNew(STextBlock).Text(LOCTEXT("Body", "body"))];
	QWidget* ParentWhileUp = nullptr;
	QTimer::singleShot(0, [&]
					   {
						   ParentWhileUp = SlateQt::GetQWidget(*Window)->parentWidget();
						   Window->RequestDestroyWindow();
					   });
	GEditor->EditorAddModalWindow(Window);
	EXPECT_EQ(ParentWhileUp, &Main);
}

// The keys of a modal window with an answer row: Return presses the first button, or the one with the focus,
// and Escape the last; a line of text passes both on.
TEST(EditorServicesTests, ReturnAndEscapeAnswerAModalWindow)
{
	IEditorServices::Set(nullptr);
	FString Pressed;
	for (const auto& [Key, bFocusLast] : {std::pair{TEXT("Return"), false}, {TEXT("Escape"), false}, {TEXT("Return"), true}})
	{
		TSharedPtr<SEditableTextBox> Box;
		TSharedPtr<SButton> Last;
		TSharedRef<SWindow> Window = SNew(SWindow).SizingRule(ESizingRule::Autosized);
		// The buttons live in the window: they hold it by a plain pointer, not a reference that would keep it.
		SWindow* Own = &Window.Get();
		const auto Answer = [&Pressed, Own](const TCHAR* What)
		{
			return FOnClicked::CreateLambda([&Pressed, Own, What]
											{
												Pressed += What;
												Own->RequestDestroyWindow();
												return FReply::Handled();
											});
		};
		Window->SetContent(SNew(SHorizontalBox)
						   + SHorizontalBox::Slot().AutoWidth()[SAssignNew(Box, SEditableTextBox)]
						   + SHorizontalBox::Slot().AutoWidth()[SNew(SButton).Text(LOCTEXT("Yes", "Yes")).OnClicked(Answer(TEXT("yes ")))]
						   + SHorizontalBox::Slot().AutoWidth()[SAssignNew(Last, SButton).Text(LOCTEXT("No", "No")).OnClicked(Answer(TEXT("no ")))]);
		QTimer::singleShot(0, [&, Key = Key, bFocusLast = bFocusLast]
						   {
							   SlateTest::Focus(bFocusLast ? static_cast<SWidget&>(*Last) : static_cast<SWidget&>(*Box));
							   SlateTest::PressKeyInFocus(Key);
							   if (!Window->IsDestroyRequested())
							   {
								   Window->RequestDestroyWindow();
							   }
						   });
		GEditor->EditorAddModalWindow(Window);
	}
	EXPECT_EQ(Pressed, FString(TEXT("yes no no ")));
}

TEST(EditorServicesTests, TheDoubleRecordsCallsAndAnswersFromItsScript)
{
	TSharedPtr<FEditorServicesDouble> Double = MakeShared<FEditorServicesDouble>();
	IEditorServices::Set(Double);

	// The named modules reach the services through the module manager, as the tool asks for them.
	ASSERT_TRUE(FModuleManager::Get().LoadModule(TEXT("DesktopPlatform")));
	EXPECT_TRUE(FModuleManager::Get().IsModuleLoaded(TEXT("DesktopPlatform")));
	IDesktopPlatform* Platform = FDesktopPlatformModule::Get();
	TArray<FString> Files;
	EXPECT_FALSE(Platform->OpenFileDialog(nullptr, TEXT("Select Preview Image"), TEXT("/kit"), TEXT(""), TEXT("Png Image (.png)|*.png"), 0, Files));
	EXPECT_EQ(Files.Num(), 0);
	Double->bFileDialogResult = true;
	Double->FileDialogAnswer = {TEXT("pictures/a.png")};
	EXPECT_TRUE(Platform->OpenFileDialog(nullptr, TEXT("Select Preview Image"), TEXT("/kit"), TEXT(""), TEXT("Png Image (.png)|*.png"), 0, Files));
	EXPECT_EQ(Files, (TArray<FString>{TEXT("pictures/a.png")}));
	ASSERT_EQ(Double->FileDialogs.Num(), 2);
	EXPECT_EQ(Double->FileDialogs[0].FileTypes, FString(TEXT("Png Image (.png)|*.png")));

	IMainFrameModule& MainFrame = FModuleManager::LoadModuleChecked<IMainFrameModule>(TEXT("MainFrame"));
	EXPECT_FALSE(MainFrame.GetParentWindow());
	Double->ParentWindow = SNew(SWindow);
	EXPECT_EQ(MainFrame.GetParentWindow(), Double->ParentWindow);

	FString Typed;
	Double->OnModalWindow = [&](const TSharedRef<SWindow>& Window)
	{
		Typed = Window->GetContent()->GetDisplayText();
		Window->RequestDestroyWindow();
	};
	TSharedRef<SWindow> Window = SNew(SWindow)[SNew(STextBlock).Text(LOCTEXT("Inside", "inside"))];
	GEditor->EditorAddModalWindow(Window);
	EXPECT_EQ(Typed, FString(TEXT("inside")));
	EXPECT_TRUE(Window->IsDestroyRequested());

	SGenericDialogWidget::OpenDialog(LOCTEXT("T", "Title"), SNew(STextBlock).Text(LOCTEXT("B", "Body")));
	ASSERT_EQ(Double->Dialogs.Num(), 1);
	EXPECT_EQ(Double->Dialogs[0].Title.ToString(), FString(TEXT("Title")));
	IEditorServices::Set(nullptr);
}

#undef LOCTEXT_NAMESPACE
