#include <QVBoxLayout>
#include <QWidget>

#include "SlateQt.h"
#include "Widgets/SlotBase.h"

namespace
{
	Qt::Alignment ToQtAlignment(EHorizontalAlignment HAlign, EVerticalAlignment VAlign)
	{
		Qt::Alignment Result;
		switch (HAlign)
		{
		case HAlign_Left:
			Result |= Qt::AlignLeft;
			break;
		case HAlign_Center:
			Result |= Qt::AlignHCenter;
			break;
		case HAlign_Right:
			Result |= Qt::AlignRight;
			break;
		default:
			break;
		}
		switch (VAlign)
		{
		case VAlign_Top:
			Result |= Qt::AlignTop;
			break;
		case VAlign_Center:
			Result |= Qt::AlignVCenter;
			break;
		case VAlign_Bottom:
			Result |= Qt::AlignBottom;
			break;
		default:
			break;
		}
		return Result;
	}
}

QWidget* SlateQt::MakePlainWidget()
{
	QWidget* Widget = new QWidget();
	Widget->setAttribute(Qt::WA_StyledBackground, false);
	return Widget;
}

QString SlateQt::ToQString(const FString& Text)
{
	return QString::fromStdU16String(Text.GetStd());
}

FString SlateQt::FromQString(const QString& Text)
{
	return FString(Text.toStdU16String());
}

QWidget* SlateQt::MakeSlotHolder(SWidget& Child, const FMargin& Padding, EHorizontalAlignment HAlign, EVerticalAlignment VAlign)
{
	QWidget* Holder = MakePlainWidget();
	Holder->setProperty(SlotHolderProperty, true);
	QVBoxLayout* Layout = new QVBoxLayout(Holder);
	Layout->setContentsMargins(static_cast<int>(Padding.Left), static_cast<int>(Padding.Top),
							   static_cast<int>(Padding.Right), static_cast<int>(Padding.Bottom));
	Layout->setSpacing(0);
	QWidget* ChildWidget = GetQWidget(Child);
	Layout->addWidget(ChildWidget, 0, ToQtAlignment(HAlign, VAlign));
	Holder->setSizePolicy(ChildWidget->sizePolicy());
	Child.RefreshAttributes();
	return Holder;
}

void SlateQt::ClearLayout(QLayout* Layout)
{
	while (QLayoutItem* Item = Layout->takeAt(0))
	{
		if (QWidget* Holder = Item->widget())
		{
			Holder->hide();
			Holder->deleteLater();
		}
		delete Item;
	}
}
