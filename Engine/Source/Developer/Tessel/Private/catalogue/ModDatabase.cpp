#include "catalogue/ModDatabase.h"

#include "STesselUI.h"

#include "HAL/FileManager.h"
#include "json/JsonSerializer.h"

EModDatabaseRead ReadModDatabase(const FString& Path, TArray<TSharedPtr<FModSetup>>& OutMods, FString& OutSteamUsername, FString& OutError)
{
	TUniquePtr<FArchive> Reader(IFileManager::Get().CreateFileReader(*Path, 0));
	if (!Reader)
	{
		OutError = TEXT("can't be opened for reading");
		return EModDatabaseRead::Unopenable;
	}
	const TSharedRef<JsonReader> Json = MakeShared<JsonReader>(Reader.get());
	// Each record is made as its text is read, so that the file never stands whole in memory as a document.
	TArray<TSharedPtr<FModSetup>> Records;
	JsonSerializer::FArrayMemberStream Stream;
	Stream.Member = TEXT("Mods");
	Stream.OnMemberStart = [&] { Records.Empty(); };
	Stream.OnElement = [&](const TSharedPtr<FJsonValue>& Element) { Records.Add(MakeShared<FModSetup>(Element)); };
	TSharedPtr<FJsonObject> Root;
	const bool bParsed = JsonSerializer::Deserialize(Json, Root, Stream);
	Reader->Close();
	if (!bParsed)
	{
		OutError = Json->GetErrorMessage().IsEmpty() ? FString(TEXT("not a JSON document whose root is an object")) : Json->GetErrorMessage();
		return EModDatabaseRead::Unreadable;
	}
	OutSteamUsername = Root->GetStringField(TEXT("SteamUsername"));
	OutMods.Append(std::move(Records));
	return EModDatabaseRead::Read;
}

FModDatabaseLoad LoadModRecords(const FString& Path, TArray<TSharedPtr<FModSetup>>& Mods, FString& SteamUsername)
{
	// Emptied first, so that a file that can't be read leaves no records behind.
	Mods.Empty();
	FModDatabaseLoad Load;
	Load.Read = ReadModDatabase(Path, Mods, SteamUsername, Load.Error);
	// A file that is there but can't be opened (no permission to read) is as much the user's as one that
	// doesn't parse: the save replaces neither without a copy.
	Load.bKeepBeforeSave =
		Load.Read == EModDatabaseRead::Unreadable || (Load.Read == EModDatabaseRead::Unopenable && FPaths::FileExists(Path));
	return Load;
}

bool KeepUnreadableModDatabase(const FString& Path)
{
	if (!FPaths::FileExists(Path))
	{
		return true;
	}
	for (int32 Number = 1; Number < 1000; ++Number)
	{
		const FString Kept = Path + TEXT(".unreadable") + (Number == 1 ? FString() : FString::Printf(TEXT(".%d"), Number));
		if (!FPaths::FileExists(Kept) && !FPaths::DirectoryExists(Kept))
		{
			return IFileManager::Get().Copy(*Kept, *Path, false, false) == COPY_OK;
		}
	}
	return false;
}

bool SaveModRecords(const FString& Path, const FString& SteamUsername, const TArray<TSharedPtr<FModSetup>>& Mods, bool& bKeepBeforeSave)
{
	// With no records the file stays as it is, whatever it holds.
	if (Mods.Num() == 0)
	{
		return false;
	}

	// A file that didn't load is the user's work all the same: without a copy of it, it stays as it is.
	if (bKeepBeforeSave)
	{
		if (!KeepUnreadableModDatabase(Path))
		{
			return false;
		}
		bKeepBeforeSave = false;
	}

	TUniquePtr<FArchive> Writer(IFileManager::Get().CreateFileWriter(*Path, 0));
	if (!Writer)
	{
		return false;
	}
	// The root object {"SteamUsername", "Mods": [...]}, written a record at a time: the same text as the whole
	// document written at once, without ever holding it.
	JsonWriter Json(Writer.get(), 0);
	Json.WriteObjectStart();
	Json.WriteValue(TEXT("SteamUsername"), SteamUsername);
	Json.WriteArrayStart(TEXT("Mods"));
	for (const TSharedPtr<FModSetup>& Mod : Mods)
	{
		JsonSerializer::SerializeValue(Mod->ToJsonValue(), FString(), Json);
	}
	Json.WriteArrayEnd();
	Json.WriteObjectEnd();
	Json.Close();
	Writer->Close();
	return true;
}

void STesselTool::LoadModDatabase(const FString& Path)
{
	bModDatabaseUnreadable = LoadModRecords(Path, ModList, SteamUsername).bKeepBeforeSave;
}

FReply STesselTool::SaveModDatabase()
{
	SaveModRecords(GetModDatabasePath(), SteamUsername, ModList, bModDatabaseUnreadable);
	return FReply::Handled();
}

namespace
{
	// Tags are stored as one comma-joined text; empty items between commas are kept as they are.
	TArray<FString> SplitTags(const FString& Tags)
	{
		TArray<FString> Items;
		Tags.ParseIntoArray(Items, TEXT(","), false);
		return Items;
	}

	FString JoinTags(const TArray<FString>& Items)
	{
		return FString::Join(Items, TEXT(","));
	}
}

void STesselTool::AddTag(const FString& Tag)
{
	if (!SelectedMod)
	{
		return;
	}
	TArray<FString> Items = SplitTags(SelectedMod->Tags);
	Items.Add(Tag);
	SelectedMod->Tags = JoinTags(Items);
	SaveModDatabase();
}

void STesselTool::RemoveTag(const FString& Tag)
{
	if (!SelectedMod)
	{
		return;
	}
	TArray<FString> Items = SplitTags(SelectedMod->Tags);
	Items.RemoveAll([&Tag](const FString& Item) { return Item.Equals(Tag, ESearchCase::IgnoreCase); });
	SelectedMod->Tags = JoinTags(Items);
	SaveModDatabase();
}

FReply STesselTool::OnResetGuidClicked()
{
	if (SelectedMod)
	{
		SelectedMod->GUID = FGuid::NewGuid().ToString(EGuidFormats::Digits);
		SaveModDatabase();
	}
	return FReply::Handled();
}

FReply STesselTool::OnResetPublisherIdClicked()
{
	if (SelectedMod)
	{
		SelectedMod->ItemSeamId.Empty();
		SaveModDatabase();
	}
	return FReply::Handled();
}
