#include "DefaultEditorServices.h"
#include "EditorServices.h"
#include "DesktopPlatformModule.h"
#include "Dialogs/Dialogs.h"
#include "Editor/EditorEngine.h"
#include "Interfaces/IMainFrameModule.h"
#include "Modules/ModuleManager.h"

namespace
{
	TSharedPtr<IEditorServices>& Installed()
	{
		static TSharedPtr<IEditorServices> Services;
		return Services;
	}

	struct FEditorModulesRegistration
	{
		FEditorModulesRegistration()
		{
			FModuleManager::Get().RegisterStaticModule(TEXT("DesktopPlatform"), [] { return new FDesktopPlatformModule(); });
			FModuleManager::Get().RegisterStaticModule(TEXT("MainFrame"), [] { return new IMainFrameModule(); });
		}
	} EditorModulesRegistration;
}

UEditorEngine* GEditor = []
{
	static UEditorEngine Engine;
	return &Engine;
}();

IEditorServices& IEditorServices::Get()
{
	if (!Installed())
	{
		Installed() = MakeDefaultEditorServices();
	}
	return *Installed();
}

void IEditorServices::Set(const TSharedPtr<IEditorServices>& Services)
{
	Installed() = Services;
}

IDesktopPlatform* FDesktopPlatformModule::Get()
{
	static IDesktopPlatform Platform;
	return &Platform;
}

void FConsoleEditorServices::OpenDialog(const FText& Title, const TSharedRef<SWidget>& Content)
{
	Dialogs.Add(FDialogText{Title.ToString(), Content->GetDisplayText()});
}

void FConsoleEditorServices::RunModalWindow(const TSharedRef<SWindow>& Window)
{
	Window->RequestDestroyWindow();
}

bool FConsoleEditorServices::OpenFileDialog(const void*, const FString&, const FString&, const FString&, const FString&,
											uint32, TArray<FString>&)
{
	return false;
}
