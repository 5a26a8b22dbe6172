#include "Widgets/Input/SMultiLineEditableTextBox.h"

void SMultiLineEditableTextBox::Construct(const FArguments& InArgs)
{
	Text = InArgs._Text;
	OnTextChanged = InArgs._OnTextChanged;
	bMultiLine = true;
	bAutoWrap = InArgs._AutoWrapText;
	Shown = Text.Get().ToString();
}
