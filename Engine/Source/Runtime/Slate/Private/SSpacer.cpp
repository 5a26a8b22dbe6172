#include <QWidget>

#include "SlateQt.h"
#include "Widgets/Layout/SSpacer.h"

using SlateQt::MakePlainWidget;

QWidget* SSpacer::CreateQWidget()
{
	return MakePlainWidget();
}
