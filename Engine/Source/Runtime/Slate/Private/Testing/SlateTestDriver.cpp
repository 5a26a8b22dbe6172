// The parts of the test driver built on its other parts, the same for every backend.

#include "Testing/SlateTestDriver.h"

#include <unordered_set>

int32 SlateTest::CountColours(const FSlateScreenshot& Shot)
{
	std::unordered_set<uint32> Colours(Shot.Pixels.begin(), Shot.Pixels.end());
	return static_cast<int32>(Colours.size());
}

TArray<FString> SlateTest::FindCutTexts(const TSharedRef<SWidget>& Root, int32* Checked)
{
	TArray<FString> Cut;
	for (const TCHAR* Type : {TEXT("STextBlock"), TEXT("SButton"), TEXT("SCheckBox")})
	{
		for (const TSharedRef<SWidget>& Widget : FindWidgetsByType(Root, Type))
		{
			if (!IsShown(*Widget) || GetShownText(*Widget).IsEmpty())
			{
				continue;
			}
			const FSlateTextLook Look = GetTextLook(*Widget);
			if (Look.TextHeight > GetGeometry(*Widget).Height || (!WrapsText(*Widget) && Look.ShownTextWidth > Look.TextRoomWidth))
			{
				Cut.Add(GetShownText(*Widget));
			}
			if (Checked)
			{
				++*Checked;
			}
		}
	}
	return Cut;
}
