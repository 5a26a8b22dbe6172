#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QTimer>

#include "SlateQtBackend.h"
#include "SlateTestMain.h"

#include "Dialogs/Dialogs.h"
#include "DesktopPlatformModule.h"
#include "Editor/EditorEngine.h"
#include "Interfaces/IMainFrameModule.h"
#include "Modules/ModuleManager.h"
#include "Testing/EditorServicesDouble.h"
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
