#pragma once

#include "EditorServices.h"

// The services in place until the host installs its own: the backend's windows, or text where nothing is drawn.
TSharedPtr<IEditorServices> MakeDefaultEditorServices();
