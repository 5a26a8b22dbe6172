#include <QHBoxLayout>
#include <QPushButton>

#include "SlateQt.h"
#include "Widgets/Input/SButton.h"

using SlateQt::ToQString;

void SButton::Construct(const FArguments& InArgs)
{
	Text = InArgs._Text;
	OnClicked = InArgs._OnClicked;
	ContentHAlign = InArgs._HAlign;
	if (Text.IsSet() && !Text.IsBound())
	{
		SetTextKey(Text.Get());
	}
	if (InArgs._Content)
	{
		ChildSlot.HAlign(InArgs._HAlign).VAlign(InArgs._VAlign)[InArgs._Content.ToSharedRef()];
	}
}

FReply SButton::Click()
{
	if (!IsEnabled() || !OnClicked.IsBound())
	{
		return FReply::Unhandled();
	}
	TSharedRef<SWidget> KeepAlive = AsShared();
	return OnClicked.Execute();
}

FString SButton::GetDisplayText() const
{
	return Text.IsSet() ? Text.Get().ToString() : SCompoundWidget::GetDisplayText();
}

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
