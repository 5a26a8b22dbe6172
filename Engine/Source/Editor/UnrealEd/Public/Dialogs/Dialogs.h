#pragma once

#include "EditorServices.h"

class SGenericDialogWidget
{
public:
	struct FArguments
	{
	};
	// Shows a dialog titled InDialogTitle around DisplayContent; nothing is returned.
	static void OpenDialog(const FText& InDialogTitle, const TSharedRef<SWidget>& DisplayContent,
						   const FArguments& InArgs = FArguments(), bool bAsModalDialog = false)
	{
		IEditorServices::Get().OpenDialog(InDialogTitle, DisplayContent);
	}
};
