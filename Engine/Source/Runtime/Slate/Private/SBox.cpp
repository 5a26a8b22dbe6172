#include <QWidget>

#include "SlateQt.h"
#include "Widgets/Layout/SBox.h"

void SBox::Construct(const FArguments& InArgs)
{
	WidthOverride = InArgs._WidthOverride;
	HeightOverride = InArgs._HeightOverride;
	ChildSlot.Padding(InArgs._Padding).HAlign(InArgs._HAlign).VAlign(InArgs._VAlign);
	if (InArgs._Content)
	{
		ChildSlot[InArgs._Content.ToSharedRef()];
	}
}

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
