#include <QPushButton>

#include "SlateQt.h"
#include "Widgets/Input/SHyperlink.h"

using SlateQt::ToQString;

FNativeWidget* SHyperlink::CreateNativeWidget()
{
	QPushButton* Link = new QPushButton(ToQString(Text.Get().ToString()));
	Link->setFlat(true);
	Link->setCursor(Qt::PointingHandCursor);
	Link->setStyleSheet(QStringLiteral("QPushButton { color: palette(link); text-decoration: underline; border: none; }"));
	TWeakPtr<SWidget> Weak = weak_from_this();
	QObject::connect(Link, &QPushButton::clicked,
					 [Weak]
					 {
						 if (TSharedPtr<SWidget> Self = Weak.Pin())
						 {
							 static_cast<SHyperlink*>(Self.Get())->Navigate();
						 }
					 });
	return SlateQt::ToNative(Link);
}
