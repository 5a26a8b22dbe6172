#include <QWidget>

#include "SlateQt.h"
#include "Widgets/Layout/SSpacer.h"

using SlateQt::MakePlainWidget;

FNativeWidget* SSpacer::CreateNativeWidget()
{
	return SlateQt::ToNative(MakePlainWidget());
}
