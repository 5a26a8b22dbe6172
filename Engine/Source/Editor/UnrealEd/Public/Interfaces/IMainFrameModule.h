#pragma once

#include "EditorServices.h"
#include "Modules/ModuleInterface.h"

// The module "MainFrame": the editor's main window.
class IMainFrameModule : public IModuleInterface
{
public:
	TSharedPtr<SWindow> GetParentWindow() const { return IEditorServices::Get().GetParentWindow(); }
};
