#include <QHBoxLayout>
#include <QLabel>
#include <QWidget>

#include "SlateQt.h"
#include "Widgets/Views/SHeaderRow.h"

using SlateQt::ToQString;

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
	for (const FColumn& Column : Columns)
	{
		QLabel* Label = new QLabel(ToQString(Column.Label.ToString()));
		Label->setObjectName(ToQString(Column.Label.GetKey()));
		QFont Font = Label->font();
		Font.setBold(true);
		Label->setFont(Font);
		Layout->addWidget(Label, 1);
	}
	Row->setStyleSheet(QStringLiteral("background-color: palette(button);"));
	Row->setAttribute(Qt::WA_StyledBackground, true);
	return SlateQt::ToNative(Row);
}
