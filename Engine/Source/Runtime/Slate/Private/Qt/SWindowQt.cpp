#include <QWidget>

#include "SlateQt.h"
#include "Widgets/SWindow.h"

FNativeWidget* SWindow::CreateNativeWidget()
{
	QWidget* Widget = SlateQt::ToQt(SCompoundWidget::CreateNativeWidget());
	Widget->setWindowTitle(SlateQt::ToQString(Title.Get().ToString()));
	// An autosized window is sized to its content when it is shown.
	if (SizingRule != ESizingRule::Autosized)
	{
		Widget->resize(static_cast<int>(ClientSize.X), static_cast<int>(ClientSize.Y));
	}
	return SlateQt::ToNative(Widget);
}

void SWindow::RequestDestroyWindow()
{
	bDestroyRequested = true;
	if (QWidget* Widget = SlateQt::FindQWidget(*this))
	{
		Widget->close();
	}
}

void* SWindow::GetNativeWindowHandle()
{
	return reinterpret_cast<void*>(SlateQt::GetQWidget(*this)->winId());
}
