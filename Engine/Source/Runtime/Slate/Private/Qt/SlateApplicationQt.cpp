#include <QApplication>
#include <QEvent>
#include <QFontDatabase>

#include "Framework/Application/SlateApplication.h"

#include <clocale>

struct FSlateApplication::FNativeApplication
{
	std::unique_ptr<QApplication> Application;
};

FSlateApplication::FSlateApplication() : Native(std::make_unique<FNativeApplication>())
{
}

FSlateApplication::~FSlateApplication() = default;

void FSlateApplication::StartNative(int& ArgC, char** ArgV)
{
	if (!QApplication::instance())
	{
		Native->Application = std::make_unique<QApplication>(ArgC, ArgV);
	}
	// Qt sets the C library's locale from the environment; the tool's text and numbers must not follow it.
	std::setlocale(LC_NUMERIC, "C");
	// The editor's own face and size, for which its forms are laid out: Roboto at 9 points. Without it on the
	// machine, the system's face stands in.
	if (QFontDatabase::families().contains(QStringLiteral("Roboto")))
	{
		QFont Font(QStringLiteral("Roboto"));
		Font.setPointSizeF(9.0);
		QApplication::setFont(Font);
	}
}

void FSlateApplication::ProcessNativeEvents()
{
	QCoreApplication::processEvents();
	FlushDeferredDeletes();
}

void FSlateApplication::FlushDeferredDeletes()
{
	QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}
