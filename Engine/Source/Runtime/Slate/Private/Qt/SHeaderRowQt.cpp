#include <QHBoxLayout>
#include <QLabel>
#include <QWidget>

#include "SlateQt.h"
#include "Widgets/Text/STextBlock.h"
#include "Widgets/Views/SHeaderRow.h"

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
