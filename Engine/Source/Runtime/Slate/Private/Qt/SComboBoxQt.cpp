#include <QHBoxLayout>
#include <QMenu>
#include <QPushButton>

#include "SlateQt.h"
#include "Widgets/Input/SComboBox.h"

using SlateQt::ToQString;

FNativeWidget* SComboBoxBase::CreateNativeWidget()
{
	QPushButton* Button = new QPushButton();
	QHBoxLayout* Layout = new QHBoxLayout(Button);
	Layout->setContentsMargins(6, 2, 18, 2);
	if (AttachedChild)
	{
		Layout->addWidget(SlateQt::MakeSlotHolder(*AttachedChild, FMargin(), HAlign_Left, VAlign_Center));
	}
	Button->setMinimumHeight(24);
	TWeakPtr<SWidget> Weak = weak_from_this();
	QObject::connect(Button, &QPushButton::clicked,
					 [Weak, Button]
					 {
						 TSharedPtr<SWidget> Self = Weak.Pin();
						 if (!Self)
						 {
							 return;
						 }
						 SComboBoxBase* Combo = static_cast<SComboBoxBase*>(Self.Get());
						 QMenu Menu;
						 for (int32 Index = 0; Index < Combo->NumOptions(); ++Index)
						 {
							 QAction* Action = Menu.addAction(ToQString(Combo->GetOptionText(Index)));
							 Action->setData(Index);
						 }
						 if (QAction* Chosen = Menu.exec(Button->mapToGlobal(QPoint(0, Button->height()))))
						 {
							 Combo->ChooseOption(Chosen->data().toInt());
						 }
					 });
	return SlateQt::ToNative(Button);
}
