#include "catalogue/ModSetup.h"

#include "Dom/JsonObject.h"

FModSetup::FModSetup(const TSharedPtr<FJsonValue>& JsonValue)
{
	const TSharedPtr<FJsonObject> Object = JsonValue ? JsonValue->AsObject() : nullptr;
	if (!Object)
	{
		return;
	}
	ModDir = Object->GetStringField(TEXT("ModDir"));
	Maps = Object->GetStringField(TEXT("Maps"));
	Title = Object->GetStringField(TEXT("Title"));
	Description = Object->GetStringField(TEXT("Description"));
	PreviewImage = Object->GetStringField(TEXT("PreviewImage"));
	Visibility = Object->GetStringField(TEXT("Visibility"));
	ChangeNotes = Object->GetStringField(TEXT("ChangeNotes"));
	// Older databases lack these three; the fields then keep their empty start.
	Object->TryGetStringField(TEXT("ItemSeamId"), ItemSeamId);
	Object->TryGetStringField(TEXT("GUID"), GUID);
	Object->TryGetStringField(TEXT("Tags"), Tags);
}

TSharedPtr<FJsonValue> FModSetup::ToJsonValue() const
{
	TSharedPtr<FJsonObject> Object = MakeShared<FJsonObject>();
	Object->SetStringField(TEXT("ModDir"), ModDir);
	Object->SetStringField(TEXT("Maps"), Maps);
	Object->SetStringField(TEXT("Title"), Title);
	Object->SetStringField(TEXT("Description"), Description);
	Object->SetStringField(TEXT("PreviewImage"), PreviewImage);
	Object->SetStringField(TEXT("Visibility"), Visibility);
	Object->SetStringField(TEXT("ChangeNotes"), ChangeNotes);
	Object->SetStringField(TEXT("ItemSeamId"), ItemSeamId);
	Object->SetStringField(TEXT("GUID"), GUID);
	Object->SetStringField(TEXT("Tags"), Tags);
	return MakeShared<FJsonValueObject>(Object);
}
