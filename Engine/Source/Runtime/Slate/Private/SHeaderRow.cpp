#include "Widgets/Text/STextBlock.h"
#include "Widgets/Views/SHeaderRow.h"

void SHeaderRow::Construct(const FArguments& InArgs)
{
	Columns = InArgs.Slots;
	// The column labels are widgets of the tree, so that they are found by their keys like any other text.
	for (const FColumn& Column : Columns)
	{
		Labels.Add(SNew(STextBlock).Text(Column.Label));
	}
}

FString SHeaderRow::GetDisplayText() const
{
	FString Text;
	for (const FColumn& Column : Columns)
	{
		Text += Text.IsEmpty() ? Column.Label.ToString() : FString(TEXT(" ")) + Column.Label.ToString();
	}
	return Text;
}

TArray<TSharedRef<SWidget>> SHeaderRow::GetChildren() const
{
	return Labels;
}

