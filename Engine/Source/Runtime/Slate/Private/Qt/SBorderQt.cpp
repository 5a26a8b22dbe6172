#include <QWidget>

#include "SlateQt.h"
#include "Widgets/Layout/SBorder.h"

FNativeWidget* SBorder::CreateNativeWidget()
{
	QWidget* Widget = SlateQt::ToQt(SCompoundWidget::CreateNativeWidget());
	Widget->setAttribute(Qt::WA_StyledBackground, true);
	Widget->setProperty("slateBrush", BorderImage ? SlateQt::ToQString(BorderImage->ResourceName) : QString());
	// The selector keeps the frame to the border itself; a plain rule would frame every child as well.
	Widget->setProperty("slateBorder", true);
	Widget->setStyleSheet(QStringLiteral("*[slateBorder=\"true\"] { background-color: palette(window); border: 1px solid palette(mid); }"));
	return SlateQt::ToNative(Widget);
}
