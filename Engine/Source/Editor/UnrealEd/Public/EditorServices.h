#pragma once

#include "Widgets/SWindow.h"

// The editor's services that the tool calls: dialogs, modal windows, the open-file dialog, the main frame
// window and the web browser. The host installs the Qt implementation; tests install a double that records
// every call and answers from a script, so that no test ever waits on a window.
class IEditorServices
{
public:
	virtual ~IEditorServices() = default;

	// Shows a dialog with a title and a body; returns at once.
	virtual void OpenDialog(const FText& Title, const TSharedRef<SWidget>& Content) = 0;
	// Shows the window and returns only when it is gone.
	virtual void RunModalWindow(const TSharedRef<SWindow>& Window) = 0;
	// The platform's open-file dialog; true with at least one file when the user chose.
	virtual bool OpenFileDialog(const void* ParentWindowHandle, const FString& Title, const FString& DefaultPath,
								const FString& DefaultFile, const FString& FileTypes, uint32 Flags,
								TArray<FString>& OutFilenames) = 0;
	// The editor's main window, when there is one.
	virtual TSharedPtr<SWindow> GetParentWindow() = 0;
	virtual bool LaunchURL(const FString& URL) = 0;

	static IEditorServices& Get();
	// Replaces the services; null goes back to the Qt implementation.
	static void Set(const TSharedPtr<IEditorServices>& Services);
};

// Windows and dialogs drawn by the widget layer's backend: Qt's on Linux, the system's own windows on Windows.
// Each build implements it once, beside its backend.
class FDesktopEditorServices : public IEditorServices
{
public:
	void OpenDialog(const FText& Title, const TSharedRef<SWidget>& Content) override;
	void RunModalWindow(const TSharedRef<SWindow>& Window) override;
	bool OpenFileDialog(const void* ParentWindowHandle, const FString& Title, const FString& DefaultPath,
						const FString& DefaultFile, const FString& FileTypes, uint32 Flags,
						TArray<FString>& OutFilenames) override;
	TSharedPtr<SWindow> GetParentWindow() override { return MainWindow; }
	bool LaunchURL(const FString& URL) override;

	TSharedPtr<SWindow> MainWindow;
};

// The services for a run without windows (the command-line programs): each dialog is kept as text for the
// caller to print, a modal window is closed at once as if declined, no file is chosen and no page is opened.
class FConsoleEditorServices : public IEditorServices
{
public:
	struct FDialogText
	{
		FString Title;
		FString Text;
	};

	void OpenDialog(const FText& Title, const TSharedRef<SWidget>& Content) override;
	void RunModalWindow(const TSharedRef<SWindow>& Window) override;
	bool OpenFileDialog(const void* ParentWindowHandle, const FString& Title, const FString& DefaultPath,
						const FString& DefaultFile, const FString& FileTypes, uint32 Flags,
						TArray<FString>& OutFilenames) override;
	TSharedPtr<SWindow> GetParentWindow() override { return nullptr; }
	bool LaunchURL(const FString& URL) override { return false; }

	// Every dialog opened so far, oldest first.
	TArray<FDialogText> Dialogs;
};
