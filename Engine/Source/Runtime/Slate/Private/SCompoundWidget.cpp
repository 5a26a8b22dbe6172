#include <QVBoxLayout>
#include <QWidget>

#include "SlateQt.h"
#include "Widgets/SCompoundWidget.h"

using SlateQt::MakePlainWidget;

SCompoundWidget::FChildSlotHandle& SCompoundWidget::FChildSlotHandle::operator[](const TSharedRef<SWidget>& InWidget)
{
	Widget = InWidget;
	if (Owner)
	{
		Owner->AttachChild();
	}
	return *this;
}

TArray<TSharedRef<SWidget>> SCompoundWidget::GetChildren() const
{
	return AttachedChild ? TArray<TSharedRef<SWidget>>{AttachedChild.ToSharedRef()} : TArray<TSharedRef<SWidget>>{};
}

QWidget* SCompoundWidget::CreateQWidget()
{
	QWidget* Widget = MakePlainWidget();
	QVBoxLayout* Layout = new QVBoxLayout(Widget);
	Layout->setContentsMargins(0, 0, 0, 0);
	Layout->setSpacing(0);
	QtWidget = Widget;
	ChildHolder = nullptr;
	AttachChild();
	return Widget;
}

void SCompoundWidget::AttachChild()
{
	// The former child goes with its holder (the child widget itself deletes its own Qt widget later).
	AttachedChild = ChildSlot.Widget;
	QWidget* Widget = QtWidget.data();
	if (!Widget)
	{
		return;
	}
	if (ChildHolder)
	{
		ChildHolder->hide();
		ChildHolder->deleteLater();
		ChildHolder = nullptr;
	}
	if (AttachedChild)
	{
		ChildHolder = SlateQt::MakeSlotHolder(*AttachedChild, ChildSlot.SlotPadding, ChildSlot.HAlignment, ChildSlot.VAlignment);
		Widget->layout()->addWidget(ChildHolder);
	}
}
