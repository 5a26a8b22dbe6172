#pragma once

#include "CoreMinimal.h"
#include "KitPaths.h"
#include "Serialization/Archive.h"
#include "TempDirectory.h"
#include "json/JsonSerializer.h"

#include <string>

// JSON text as the database stores it: 16-bit little-endian units, no byte order mark.
inline std::string ToUtf16Bytes(const std::u16string& Text)
{
	std::string Bytes;
	for (char16_t Unit : Text)
	{
		Bytes += static_cast<char>(Unit & 0xFF);
		Bytes += static_cast<char>(Unit >> 8);
	}
	return Bytes;
}

inline std::u16string FromUtf16Bytes(const std::string& Bytes)
{
	std::u16string Text;
	for (size_t Index = 0; Index + 1 < Bytes.size(); Index += 2)
	{
		Text += static_cast<char16_t>(static_cast<uint8>(Bytes[Index]) | (static_cast<uint8>(Bytes[Index + 1]) << 8));
	}
	return Text;
}

// The kit's Mods.db as text, as the file holds it now.
inline FString ReadModDatabaseText()
{
	return FString(FromUtf16Bytes(FTempDirectory::ReadBytes(KitPaths::ModDatabase())));
}

struct FParseResult
{
	bool bOk = false;
	TSharedPtr<FJsonObject> Object;
	FString Error;
};

// Any bytes, an odd count too.
inline FParseResult ParseJsonBytes(const std::string& Bytes)
{
	TArray<uint8> Data(reinterpret_cast<const uint8*>(Bytes.data()), static_cast<int32>(Bytes.size()));
	FMemoryArchive Archive(Data, true);
	TSharedRef<JsonReader> Reader = MakeShared<JsonReader>(&Archive);
	FParseResult Result;
	Result.bOk = JsonSerializer::Deserialize(Reader, Result.Object);
	Result.Error = Reader->GetErrorMessage();
	return Result;
}

inline FParseResult ParseJson(const std::u16string& Text)
{
	return ParseJsonBytes(ToUtf16Bytes(Text));
}

inline std::u16string WriteJson(const TSharedPtr<FJsonObject>& Object)
{
	TArray<uint8> Bytes;
	FMemoryArchive Archive(Bytes, false);
	JsonSerializer::Serialize(Object.ToSharedRef(), MakeShared<JsonWriter>(&Archive, 0));
	return FromUtf16Bytes(std::string(reinterpret_cast<const char*>(Bytes.GetData()), static_cast<size_t>(Bytes.Num())));
}
