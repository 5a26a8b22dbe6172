// The host that plays the editor for the tool: it points the engine's paths at a kit, loads the Tessel module,
// offers its tab in a Window menu, docks the tab when it opens and drives the frame at about 60 Hz.

#include <QApplication>
#include <QTimer>

#include "SlateQtBackend.h"
#include "CoreMinimal.h"
#include "EditorServices.h"
#include "Framework/Application/SlateApplication.h"
#include "Framework/Docking/TabManager.h"
#include "Modules/ModuleManager.h"
#include "HostOptions.h"
#include "HostWindow.h"
#include "TesselCommands.h"
#include "WindowScript.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>

namespace
{
	// The host's services: Qt's windows and dialogs, with each dialog's text also handed to the scripted run.
	class FHostEditorServices : public FDesktopEditorServices
	{
	public:
		void OpenDialog(const FText& Title, const TSharedRef<SWidget>& Content) override
		{
			if (Script)
			{
				Script->OnDialog(Title.ToString(), Content->GetDisplayText());
			}
			FDesktopEditorServices::OpenDialog(Title, Content);
		}
		void RunModalWindow(const TSharedRef<SWindow>& Window) override
		{
			if (Script)
			{
				Script->OnModalWindow(Window);
			}
			FDesktopEditorServices::RunModalWindow(Window);
		}
		bool OpenFileDialog(const void* Parent, const FString& Title, const FString& DefaultPath, const FString& DefaultFile,
							const FString& FileTypes, uint32 Flags, TArray<FString>& OutFilenames) override
		{
			return Script ? Script->AnswerFileDialog(OutFilenames)
						  : FDesktopEditorServices::OpenFileDialog(Parent, Title, DefaultPath, DefaultFile, FileTypes, Flags, OutFilenames);
		}
		bool LaunchURL(const FString& URL) override
		{
			// A scripted run names the page instead of opening a browser.
			if (Script)
			{
				Script->OnLaunchUrl(URL);
				return true;
			}
			return FDesktopEditorServices::LaunchURL(URL);
		}
		FWindowScript* Script = nullptr;
	};
}

int main(int ArgC, char** ArgV)
{
	int Exit = 0;
	if (HostOptions::RunWithoutWindow(ArgC, ArgV, Exit))
	{
		return Exit;
	}
	const TCHAR* CommandLine = FCommandLine::Get();
	FString CookModDir;
	const bool bCook = FParse::Value(CommandLine, TEXT("-Cook="), CookModDir, false);
	FString ScreenshotPath;
	const bool bScreenshot = FParse::Value(CommandLine, TEXT("-Screenshot="), ScreenshotPath, false);

	FSlateApplication::Create(ArgC, ArgV);
	FModuleManager::Get().SetModuleDirectory(FString(TESSEL_MODULE_DIR));
	if (!FModuleManager::Get().LoadModule(TEXT("Tessel")))
	{
		std::fprintf(stderr, "The Tessel module could not be loaded from %s\n", TESSEL_MODULE_DIR);
		return 1;
	}

	int Result = 0;
	{
		FHostWindow Window;
		TSharedPtr<FHostEditorServices> Services = MakeShared<FHostEditorServices>();
		IEditorServices::Set(Services);

		QTimer Frame;
		QObject::connect(&Frame, &QTimer::timeout, [] { FSlateApplication::Get().Tick(1.0f / 60.0f, false); });
		Frame.start(16);

		// -OpenTab and the scripted runs open the tool's tab whatever the last layout was.
		if (FParse::Param(CommandLine, TEXT("OpenTab")) || bScreenshot)
		{
			Window.OpenTab(TEXT("TesselTools"));
		}
		else
		{
			Window.RestoreTabs();
		}
		Window.RestoreGeometry();
		Window.show();

		std::unique_ptr<FWindowScript> Script;
		if (bScreenshot && bCook)
		{
			Script = std::make_unique<FWindowScript>(Window, CookModDir, ScreenshotPath);
			if (FParse::Param(CommandLine, TEXT("Publish")))
			{
				// The login comes from the environment, never from the command line, where others could read it.
				FWindowScript::FPublication Publication;
				FParse::Value(CommandLine, TEXT("-PublishTitle="), Publication.Title, false);
				FParse::Value(CommandLine, TEXT("-PublishDescription="), Publication.Description, false);
				FParse::Value(CommandLine, TEXT("-PublishPreview="), Publication.PreviewImage, false);
				Publication.PreviewImage = FPaths::ConvertRelativePathToFull(FString::FromNative(std::filesystem::current_path().string()), Publication.PreviewImage);
				Publication.SteamUsername = FString::FromUtf8(std::getenv("STEAM_USERNAME") ? std::getenv("STEAM_USERNAME") : "");
				Publication.SteamPassword = FString::FromUtf8(std::getenv("STEAM_PASSWORD") ? std::getenv("STEAM_PASSWORD") : "");
				Script->SetPublication(Publication);
			}
			Services->Script = Script.get();
			Script->Start();
		}
		else if (bScreenshot)
		{
			// A few frames so that bound values and lazily loaded images are drawn, then the picture.
			QTimer::singleShot(500, [&Window, ScreenshotPath]
							   {
								   const bool bSaved = Window.grab().save(SlateQt::ToQString(ScreenshotPath));
								   std::printf("%s %s\n", bSaved ? "Screenshot saved to" : "Could not save", ScreenshotPath.ToUtf8().c_str());
								   QApplication::exit(bSaved ? 0 : 1);
							   });
		}
		Result = QApplication::exec();
		Frame.stop();
		Services->Script = nullptr;
		Window.CloseAllTabs();
		IEditorServices::Set(nullptr);
	}
	FModuleManager::Get().UnloadAllModules();
	FSlateApplication::FlushDeferredDeletes();
	FSlateApplication::Shutdown();
	return Result;
}
