#include <QApplication>
#include <QEvent>

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
