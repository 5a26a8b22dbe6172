#include <QFrame>
#include <QLayout>
#include <QWidget>

#include "Widgets/Layout/SHeader.h"

void SHeader::Construct(const FArguments& InArgs)
{
	if (InArgs._Content)
	{
		ChildSlot.HAlign(HAlign_Center)[InArgs._Content.ToSharedRef()];
	}
}

QWidget* SHeader::CreateQWidget()
{
	QWidget* Widget = SCompoundWidget::CreateQWidget();
	QFrame* Line = new QFrame(Widget);
	Line->setFrameShape(QFrame::HLine);
	Line->setFrameShadow(QFrame::Sunken);
	Widget->layout()->addWidget(Line);
	return Widget;
}
