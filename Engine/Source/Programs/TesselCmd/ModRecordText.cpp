#include "ModRecordText.h"

#include "catalogue/ModFields.h"

#include <algorithm>

TArray<FString> DescribeModRecord(const FModSetup& Mod)
{
	TArray<FString> Lines;
	Lines.Add(Mod.ModDir);
	// The field table gives the fields, their order and their labels, as in Mods.db; the labels' column is as
	// wide as the longest.
	int32 Width = 0;
	for (const FModField& Field : ModFields)
	{
		Width = std::max(Width, FString(Field.Key).Len() + 1);
	}
	auto Pad = [Width](const FString& Label)
	{ return FString(TEXT("  ")) + Label + FString(std::u16string(static_cast<size_t>(Width - Label.Len() + 1), u' ')); };
	for (const FModField& Field : ModFields)
	{
		if (Field.Member == &FModSetup::ModDir)
		{
			continue;
		}
		TArray<FString> TextLines;
		(Mod.*Field.Member).ParseIntoArrayLines(TextLines, false);
		Lines.Add(Pad(FString(Field.Key) + TEXT(":")) + (TextLines.Num() > 0 ? TextLines[0] : FString()));
		for (int32 Index = 1; Index < TextLines.Num(); ++Index)
		{
			Lines.Add(Pad(FString()) + TextLines[Index]);
		}
	}
	return Lines;
}
