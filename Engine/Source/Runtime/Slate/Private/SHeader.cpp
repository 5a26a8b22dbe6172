#include <QFrame>
#include <QLayout>
#include <QWidget>

#include "SlateQt.h"
#include "Widgets/Layout/SHeader.h"

void SHeader::Construct(const FArguments& InArgs)
{
	if (InArgs._Content)
	{
		ChildSlot.HAlign(HAlign_Center)[InArgs._Content.ToSharedRef()];
	}
}

FNativeWidget* SHeader::CreateNativeWidget()
{
	QWidget* Widget = SlateQt::ToQt(SCompoundWidget::CreateNativeWidget());
	QFrame* Line = new QFrame(Widget);
	Line->setFrameShape(QFrame::HLine);
	Line->setFrameShadow(QFrame::Sunken);
	Widget->layout()->addWidget(Line);
	return SlateQt::ToNative(Widget);
}
