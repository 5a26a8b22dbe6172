#include <QHBoxLayout>
#include <QPushButton>

#include "SlateQt.h"
#include "Widgets/Input/SButton.h"

using SlateQt::ToQString;

FNativeWidget* SButton::CreateNativeWidget()
{
	QPushButton* Button = new QPushButton();
	if (AttachedChild)
	{
		QHBoxLayout* Layout = new QHBoxLayout(Button);
		Layout->setContentsMargins(4, 2, 4, 2);
		Layout->addWidget(SlateQt::MakeSlotHolder(*AttachedChild, FMargin(), ChildSlot.HAlignment, ChildSlot.VAlignment));
	}
	TWeakPtr<SWidget> Weak = weak_from_this();
	QObject::connect(Button, &QPushButton::clicked,
					 [Weak]
					 {
						 if (TSharedPtr<SWidget> Self = Weak.Pin())
						 {
							 static_cast<SButton*>(Self.Get())->Click();
						 }
					 });
	SetNativeWidget(SlateQt::ToNative(Button));
	RefreshAttributes();
	return SlateQt::ToNative(Button);
}

void SButton::RefreshAttributes()
{
	if (QPushButton* Button = qobject_cast<QPushButton*>(SlateQt::FindQWidget(*this)); Button && Text.IsSet())
	{
		const FString Now = Text.Get().ToString();
		if (Now != ShownText || Button->text().isEmpty())
		{
			ShownText = Now;
			Button->setText(ToQString(Now));
		}
	}
	SWidget::RefreshAttributes();
}
