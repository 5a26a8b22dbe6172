#pragma once

#include "Widgets/Input/SEditableText.h"

// The same as SEditableText, with a frame around the text.
class SEditableTextBox : public SEditableText
{
protected:
	FNativeWidget* CreateNativeWidget() override { return CreateLineEdit(true); }
};
