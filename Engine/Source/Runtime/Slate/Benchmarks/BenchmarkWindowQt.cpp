#include <QVBoxLayout>
#include <QWidget>

#include "BenchmarkWindow.h"
#include "SlateQtBackend.h"

#include <memory>

namespace
{
	std::unique_ptr<QWidget> Window;
}

void BenchmarkWindow::PreparePlatform()
{
	qputenv("QT_QPA_PLATFORM", "offscreen");
}

void BenchmarkWindow::Show(const TSharedRef<SWidget>& Root, int32 Width, int32 Height)
{
	Window = std::make_unique<QWidget>();
	QVBoxLayout* Layout = new QVBoxLayout(Window.get());
	Layout->addWidget(SlateQt::GetQWidget(*Root));
	Window->resize(Width, Height);
	Window->show();
}

void BenchmarkWindow::PrintSystemCosts()
{
}

void BenchmarkWindow::Close()
{
	Window.reset();
}
