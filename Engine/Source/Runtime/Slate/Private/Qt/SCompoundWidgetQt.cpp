#include <QVBoxLayout>
#include <QWidget>

#include "SlateQt.h"
#include "Widgets/SCompoundWidget.h"

using SlateQt::MakePlainWidget;

FNativeWidget* SCompoundWidget::CreateNativeWidget()
{
	QWidget* Widget = MakePlainWidget();
	QVBoxLayout* Layout = new QVBoxLayout(Widget);
	Layout->setContentsMargins(0, 0, 0, 0);
	Layout->setSpacing(0);
	SetNativeWidget(SlateQt::ToNative(Widget));
	ChildHolder = nullptr;
	AttachChild();
	return SlateQt::ToNative(Widget);
}

void SCompoundWidget::AttachChild()
{
	// The former child goes with its holder (the child widget itself deletes its own Qt widget later).
	AttachedChild = ChildSlot.Widget;
	QWidget* Widget = SlateQt::FindQWidget(*this);
	if (!Widget)
	{
		return;
	}
	if (QWidget* Holder = SlateQt::ToQt(ChildHolder))
	{
		Holder->hide();
		Holder->deleteLater();
		ChildHolder = nullptr;
	}
	if (AttachedChild)
	{
		QWidget* Holder = SlateQt::MakeSlotHolder(*AttachedChild, ChildSlot.SlotPadding, ChildSlot.HAlignment, ChildSlot.VAlignment);
		Widget->layout()->addWidget(Holder);
		ChildHolder = SlateQt::ToNative(Holder);
	}
}
