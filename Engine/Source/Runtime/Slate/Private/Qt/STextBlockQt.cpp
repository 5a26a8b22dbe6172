#include <QGraphicsDropShadowEffect>
#include <QLabel>

#include "SlateQt.h"
#include "Widgets/Text/STextBlock.h"

using SlateQt::ToQString;

FNativeWidget* STextBlock::CreateNativeWidget()
{
	QLabel* Label = new QLabel();
	Label->setTextFormat(Qt::PlainText);
	Label->setWordWrap(bAutoWrap);
	Label->setAlignment(Justification == ETextJustify::Center  ? Qt::AlignCenter
						: Justification == ETextJustify::Right ? Qt::AlignRight | Qt::AlignVCenter
															   : Qt::AlignLeft | Qt::AlignVCenter);
	if (TextStyleName == TEXT("EmbossedText"))
	{
		// Raised lettering: a larger bold face over a light edge one pixel below and to the right.
		QFont Font = Label->font();
		Font.setBold(true);
		Font.setPointSizeF(Font.pointSizeF() * 1.25);
		Label->setFont(Font);
		QGraphicsDropShadowEffect* Edge = new QGraphicsDropShadowEffect(Label);
		Edge->setOffset(1.0, 1.0);
		Edge->setBlurRadius(0.0);
		Edge->setColor(QColor(255, 255, 255, 200));
		Label->setGraphicsEffect(Edge);
	}
	SetNativeWidget(SlateQt::ToNative(Label));
	bShownOnce = false;
	RefreshAttributes();
	return SlateQt::ToNative(Label);
}

void STextBlock::RefreshAttributes()
{
	if (QLabel* Label = qobject_cast<QLabel*>(SlateQt::FindQWidget(*this)))
	{
		const FString Now = Text.Get().ToString();
		if (!bShownOnce || Now != ShownText || Label->wordWrap() != bShownWrapped)
		{
			ShownText = Now;
			bShownOnce = true;
			bShownWrapped = Label->wordWrap();
			QString Shown = ToQString(Now);
			if (Label->wordWrap())
			{
				// A wrapped line may also break after a path separator, so that a long path stays readable.
				Shown.replace(QLatin1Char('\\'), QStringLiteral("\\\u200B")).replace(QLatin1Char('/'), QStringLiteral("/\u200B"));
			}
			Label->setText(Shown);
		}
	}
	SWidget::RefreshAttributes();
}
