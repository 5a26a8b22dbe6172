#include <QCheckBox>

#include "SlateQt.h"
#include "Widgets/Input/SCheckBox.h"

FNativeWidget* SCheckBox::CreateNativeWidget()
{
	QCheckBox* Box = new QCheckBox();
	TWeakPtr<SWidget> Weak = weak_from_this();
	QObject::connect(Box, &QCheckBox::clicked,
					 [Weak]
					 {
						 if (TSharedPtr<SWidget> Self = Weak.Pin())
						 {
							 SCheckBox* CheckBox = static_cast<SCheckBox*>(Self.Get());
							 if (!CheckBox->bUpdatingNative)
							 {
								 CheckBox->ToggleCheckedState();
							 }
						 }
					 });
	SetNativeWidget(SlateQt::ToNative(Box));
	RefreshAttributes();
	return SlateQt::ToNative(Box);
}

void SCheckBox::RefreshAttributes()
{
	if (QCheckBox* Box = qobject_cast<QCheckBox*>(SlateQt::FindQWidget(*this)))
	{
		const bool bChecked = GetCheckedState() == ECheckBoxState::Checked;
		if (Box->isChecked() != bChecked)
		{
			bUpdatingNative = true;
			Box->setChecked(bChecked);
			bUpdatingNative = false;
		}
	}
	SWidget::RefreshAttributes();
}
