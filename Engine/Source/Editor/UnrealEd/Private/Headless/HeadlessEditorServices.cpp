#include "DefaultEditorServices.h"

// Without a widget backend that draws, dialogs are kept as text and modal windows close at once.
TSharedPtr<IEditorServices> MakeDefaultEditorServices()
{
	return MakeShared<FConsoleEditorServices>();
}
