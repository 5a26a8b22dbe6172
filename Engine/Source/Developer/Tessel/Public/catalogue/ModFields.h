#pragma once

#include "catalogue/ModSetup.h"

// The record's fields, described once, in their order in Mods.db (which is also the order of `TesselCmd list`
// and its JSON). Persistence, `TesselCmd set`, `list` and `check` read this table; a new field is a member in
// FModSetup and a line here.
struct FModField
{
	FString FModSetup::*Member;
	// Its key in Mods.db and in TesselCmd's JSON.
	const TCHAR* Key;
	// The names `TesselCmd set` takes for it, the first as the help shows it (letter case, "-" and "_" are
	// ignored); none for a field that only the tool sets.
	const TCHAR* SetNames[2];
	// A file written before the field existed lacks it, and the record keeps its empty start.
	bool bOptionalInFile;
	// The Workshop's limit in characters, checked before an upload; 0 for none.
	int32 MaxLength;
	// "Upload" needs it filled.
	bool bRequiredToUpload;
};

inline constexpr int32 MaxWorkshopTitleLength = 128;
inline constexpr int32 MaxWorkshopTextLength = 8000;

inline const FModField ModFields[] = {
	{&FModSetup::ModDir, TEXT("ModDir"), {}, false, 0, false},
	{&FModSetup::Maps, TEXT("Maps"), {}, false, 0, false},
	{&FModSetup::Title, TEXT("Title"), {TEXT("title")}, false, MaxWorkshopTitleLength, true},
	{&FModSetup::Description, TEXT("Description"), {TEXT("description")}, false, MaxWorkshopTextLength, true},
	{&FModSetup::PreviewImage, TEXT("PreviewImage"), {TEXT("preview"), TEXT("previewimage")}, false, 0, false},
	{&FModSetup::Visibility, TEXT("Visibility"), {TEXT("visibility")}, false, 0, false},
	{&FModSetup::ChangeNotes, TEXT("ChangeNotes"), {TEXT("change-notes"), TEXT("changenote")}, false, MaxWorkshopTextLength, false},
	{&FModSetup::ItemSeamId, TEXT("ItemSeamId"), {TEXT("published-id"), TEXT("publishedfileid")}, true, 0, false},
	{&FModSetup::GUID, TEXT("GUID"), {TEXT("guid")}, true, 0, false},
	{&FModSetup::Tags, TEXT("Tags"), {TEXT("tags")}, true, 0, false},
};

// The three visibilities in the order of the drop-down; a visibility's position is its number in the item file.
const TArray<FString>& VisibilityLabels();
// The ten Workshop tags in the order of their check boxes; a tag's stored value is its label.
const TArray<FString>& TagLabels();
