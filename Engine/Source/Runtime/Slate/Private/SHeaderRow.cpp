#include <QHBoxLayout>
#include <QLabel>
#include <QWidget>

#include "SlateQt.h"
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

FNativeWidget* SHeaderRow::CreateNativeWidget()
{
	QWidget* Row = new QWidget();
	QHBoxLayout* Layout = new QHBoxLayout(Row);
	Layout->setContentsMargins(4, 2, 4, 2);
	for (const TSharedRef<SWidget>& Text : Labels)
	{
		QWidget* Label = SlateQt::GetQWidget(*Text);
		QFont Font = Label->font();
		Font.setBold(true);
		Label->setFont(Font);
		Layout->addWidget(Label, 1);
	}
	Row->setStyleSheet(QStringLiteral("background-color: palette(button);"));
	Row->setAttribute(Qt::WA_StyledBackground, true);
	return SlateQt::ToNative(Row);
}
