#pragma once

// Widget tests run on the offscreen display, with the application made once before any test.
#include "Modules/ModuleManager.h"
#include "Testing/SlateTestDriver.h"

#include <gtest/gtest.h>

#define TESSEL_WIDGET_TEST_MAIN()                                                                                      \
	int main(int ArgC, char** ArgV)                                                                                    \
	{                                                                                                                  \
		::testing::InitGoogleTest(&ArgC, ArgV);                                                                        \
		SlateTest::StartApplication(ArgC, ArgV);                                                                       \
		const int Result = RUN_ALL_TESTS();                                                                            \
		FModuleManager::Get().UnloadAllModules();                                                                      \
		SlateTest::StopApplication();                                                                                  \
		return Result;                                                                                                 \
	}

using SlateTest::TickFrames;
