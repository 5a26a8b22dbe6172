// The parts of the test driver that look only at pictures, the same for every backend.

#include "Testing/SlateTestDriver.h"

#include <unordered_set>

int32 SlateTest::CountColours(const FSlateScreenshot& Shot)
{
	std::unordered_set<uint32> Colours(Shot.Pixels.begin(), Shot.Pixels.end());
	return static_cast<int32>(Colours.size());
}
