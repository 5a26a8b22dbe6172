#include "Widgets/Input/SComboBox.h"

void SComboBoxBase::ChooseOption(int32 Index)
{
	if (IsEnabled() && Index >= 0 && Index < NumOptions())
	{
		OnChosen(Index);
	}
}

