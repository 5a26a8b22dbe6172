#pragma once

// Widget tests run under Qt's offscreen platform, with the application made once before any test.
#include <QtGlobal>

#include "Framework/Application/SlateApplication.h"
#include "Modules/ModuleManager.h"

#include <gtest/gtest.h>

#define TESSEL_WIDGET_TEST_MAIN()                                                                                      \
	int main(int ArgC, char** ArgV)                                                                                    \
	{                                                                                                                  \
		qputenv("QT_QPA_PLATFORM", "offscreen");                                                                       \
		::testing::InitGoogleTest(&ArgC, ArgV);                                                                        \
		FSlateApplication::Create(ArgC, ArgV);                                                                         \
		const int Result = RUN_ALL_TESTS();                                                                            \
		FModuleManager::Get().UnloadAllModules();                                                                      \
		FSlateApplication::Shutdown();                                                                                 \
		return Result;                                                                                                 \
	}

// Ticks the application a few frames, as the host's timer would.
inline void TickFrames(int Frames = 2)
{
	for (int Frame = 0; Frame < Frames; ++Frame)
	{
		FSlateApplication::Get().Tick(1.0f / 60.0f);
	}
}
