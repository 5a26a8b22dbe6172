#pragma once

#include "CoreMinimal.h"

class FJsonValue;

// Everything the tool keeps about one mod between runs. Lists (Maps, Tags) are comma-joined text. Each field's
// key in Mods.db, its names for TesselCmd and its limits are in catalogue/ModFields.h.
struct FModSetup
{
	FString ModDir;
	FString Maps;
	FString Title;
	FString Description;
	FString PreviewImage;
	FString Visibility;
	FString ChangeNotes;
	FString ItemSeamId;
	FString GUID;
	FString Tags;

	// All fields empty, Visibility too: the copy a job holds.
	FModSetup() = default;

	// A record for a newly found mod folder.
	explicit FModSetup(const FString& InModDir) : ModDir(InModDir), Visibility(TEXT("Public")) {}

	// A record from one element of the database's "Mods" array. Keys the element lacks stay empty, Visibility
	// too; an element that is no object gives an empty record.
	explicit FModSetup(const TSharedPtr<FJsonValue>& JsonValue);

	// The record as a database element: an object with the ten fields in their order, all strings.
	TSharedPtr<FJsonValue> ToJsonValue() const;
};
