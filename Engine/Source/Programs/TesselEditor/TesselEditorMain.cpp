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
#include "ScriptedEditorServices.h"
#include "TesselCommands.h"
#include "WindowScript.h"

#include <cstdio>
#include <memory>

int main(int ArgC, char** ArgV)
{
	int Exit = 0;
	if (HostOptions::RunWithoutWindow(ArgC, ArgV, Exit))
	{
		return Exit;
	}
	const TCHAR* CommandLine = FCommandLine::Get();
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
		TSharedPtr<FScriptedEditorServices> Services = MakeShared<FScriptedEditorServices>();
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

		std::unique_ptr<FWindowScript> Script = FWindowScript::FromCommandLine({
			[&Window]() -> TSharedPtr<SWidget>
			{
				TSharedPtr<SDockTab> Tab = Window.FindTab(TEXT("TesselTools"));
				return Tab ? Tab->GetContent() : nullptr;
			},
			[&Window](const FString& Path) { return Window.grab().save(SlateQt::ToQString(Path)); },
			[](int ExitCode) { QApplication::exit(ExitCode); }});
		QTimer ScriptFrame;
		if (Script)
		{
			Services->Script = Script.get();
			QObject::connect(&ScriptFrame, &QTimer::timeout, [&Script] { Script->Step(); });
			ScriptFrame.start(16);
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
		ScriptFrame.stop();
		Services->Script = nullptr;
		Window.CloseAllTabs();
		IEditorServices::Set(nullptr);
	}
	FModuleManager::Get().UnloadAllModules();
	FSlateApplication::FlushDeferredDeletes();
	FSlateApplication::Shutdown();
	return Result;
}
