#pragma once

#include "EditorServices.h"

#include <functional>

// Records the calls the tool makes and answers them from a script.
class FEditorServicesDouble : public IEditorServices
{
public:
	struct FDialog
	{
		FText Title;
		TSharedRef<SWidget> Content;
	};
	struct FFileDialogCall
	{
		FString Title;
		FString DefaultPath;
		FString DefaultFile;
		FString FileTypes;
		uint32 Flags = 0;
	};

	TArray<FDialog> Dialogs;
	TArray<TSharedRef<SWindow>> ModalWindows;
	TArray<FFileDialogCall> FileDialogs;
	TArray<FString> LaunchedUrls;

	// What a modal window does while it is up: the test fills it in and presses its buttons. Without a script
	// the window is simply closed.
	std::function<void(const TSharedRef<SWindow>&)> OnModalWindow;
	// What the open-file dialog answers.
	bool bFileDialogResult = false;
	TArray<FString> FileDialogAnswer;
	TSharedPtr<SWindow> ParentWindow;

	void OpenDialog(const FText& Title, const TSharedRef<SWidget>& Content) override
	{
		Dialogs.Add(FDialog{Title, Content});
	}
	void RunModalWindow(const TSharedRef<SWindow>& Window) override
	{
		ModalWindows.Add(Window);
		if (OnModalWindow)
		{
			OnModalWindow(Window);
		}
		else
		{
			Window->RequestDestroyWindow();
		}
	}
	bool OpenFileDialog(const void*, const FString& Title, const FString& DefaultPath, const FString& DefaultFile,
						const FString& FileTypes, uint32 Flags, TArray<FString>& OutFilenames) override
	{
		FileDialogs.Add(FFileDialogCall{Title, DefaultPath, DefaultFile, FileTypes, Flags});
		if (bFileDialogResult)
		{
			OutFilenames = FileDialogAnswer;
		}
		return bFileDialogResult;
	}
	TSharedPtr<SWindow> GetParentWindow() override { return ParentWindow; }
	bool LaunchURL(const FString& URL) override
	{
		LaunchedUrls.Add(URL);
		return true;
	}
};
