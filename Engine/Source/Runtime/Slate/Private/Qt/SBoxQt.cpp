#include <QWidget>

#include "SlateQt.h"
#include "Widgets/Layout/SBox.h"

FNativeWidget* SBox::CreateNativeWidget()
{
	QWidget* Widget = SlateQt::ToQt(SCompoundWidget::CreateNativeWidget());
	if (WidthOverride > 0.0f)
	{
		Widget->setFixedWidth(static_cast<int>(WidthOverride));
	}
	if (HeightOverride > 0.0f)
	{
		Widget->setFixedHeight(static_cast<int>(HeightOverride));
	}
	return SlateQt::ToNative(Widget);
}
