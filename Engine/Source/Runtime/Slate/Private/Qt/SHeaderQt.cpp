#include <QFrame>
#include <QLayout>
#include <QWidget>

#include "SlateQt.h"
#include "Widgets/Layout/SHeader.h"

FNativeWidget* SHeader::CreateNativeWidget()
{
	QWidget* Widget = SlateQt::ToQt(SCompoundWidget::CreateNativeWidget());
	QFrame* Line = new QFrame(Widget);
	Line->setFrameShape(QFrame::HLine);
	Line->setFrameShadow(QFrame::Sunken);
	Widget->layout()->addWidget(Line);
	return SlateQt::ToNative(Widget);
}
