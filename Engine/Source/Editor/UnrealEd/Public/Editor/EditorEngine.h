#pragma once

#include "EditorServices.h"

class UEditorEngine
{
public:
	// Shows the window modally: returns only when the window is gone.
	void EditorAddModalWindow(TSharedRef<SWindow> InModalWindow) const
	{
		IEditorServices::Get().RunModalWindow(InModalWindow);
	}
};

extern UEditorEngine* GEditor;
