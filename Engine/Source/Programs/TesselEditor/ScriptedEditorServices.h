#pragma once

// The host's editor services: the system's windows and dialogs, with what a scripted run needs handed to its
// script instead (each dialog's text, the login window, the file dialog's answer, the address a link opens).

#include "EditorServices.h"
#include "WindowScript.h"

class FScriptedEditorServices : public FDesktopEditorServices
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
