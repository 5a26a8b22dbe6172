#include "ModRecordText.h"

#include "Dom/JsonObject.h"
#include "Dom/JsonValue.h"

TArray<FString> DescribeModRecord(const FModSetup& Mod)
{
	TArray<FString> Lines;
	Lines.Add(Mod.ModDir);
	// The record's own form gives the fields and their order, so that this stays in step with Mods.db.
	const TSharedPtr<FJsonObject> Fields = Mod.ToJsonValue()->AsObject();
	for (const auto& Field : Fields->Values)
	{
		if (Field.Key == TEXT("ModDir"))
		{
			continue;
		}
		TArray<FString> TextLines;
		Field.Value->AsString().ParseIntoArrayLines(TextLines, false);
		const FString Label = FString::Printf(TEXT("  %-13s "), *(Field.Key + TEXT(":")));
		Lines.Add(Label + (TextLines.Num() > 0 ? TextLines[0] : FString()));
		for (int32 Index = 1; Index < TextLines.Num(); ++Index)
		{
			Lines.Add(FString::Printf(TEXT("  %-13s "), TEXT("")) + TextLines[Index]);
		}
	}
	return Lines;
}
