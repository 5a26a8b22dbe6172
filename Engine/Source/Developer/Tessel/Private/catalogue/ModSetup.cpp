#include "catalogue/ModSetup.h"

#include "Dom/JsonObject.h"
#include "catalogue/ModFields.h"

FModSetup::FModSetup(const TSharedPtr<FJsonValue>& JsonValue)
{
	const TSharedPtr<FJsonObject> Object = JsonValue ? JsonValue->AsObject() : nullptr;
	if (!Object)
	{
		return;
	}
	for (const FModField& Field : ModFields)
	{
		if (Field.bOptionalInFile)
		{
			Object->TryGetStringField(Field.Key, this->*Field.Member);
		}
		else
		{
			this->*Field.Member = Object->GetStringField(Field.Key);
		}
	}
}

TSharedPtr<FJsonValue> FModSetup::ToJsonValue() const
{
	TSharedPtr<FJsonObject> Object = MakeShared<FJsonObject>();
	for (const FModField& Field : ModFields)
	{
		Object->SetStringField(Field.Key, this->*Field.Member);
	}
	return MakeShared<FJsonValueObject>(Object);
}

const TArray<FString>& VisibilityLabels()
{
	static const TArray<FString> Labels{TEXT("Public"), TEXT("Friends Only"), TEXT("Hidden")};
	return Labels;
}

const TArray<FString>& TagLabels()
{
	static const TArray<FString> Labels{
		TEXT("Mod"),	 TEXT("Total Conversion"), TEXT("Map"),		   TEXT("Structures"),	   TEXT("Weapons"),
		TEXT("Outfits"), TEXT("Creatures"),		   TEXT("Game Modes"), TEXT("Visuals/Sounds"), TEXT("Rebalancing")};
	return Labels;
}
