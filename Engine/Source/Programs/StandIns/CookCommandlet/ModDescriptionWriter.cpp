#include "ModDescriptionWriter.h"

#include "HAL/FileManager.h"
#include "Serialization/Archive.h"

void FModDescriptionWriter::Int32(int32 Value)
{
	const uint32 Bits = static_cast<uint32>(Value);
	for (int32 Shift = 0; Shift < 32; Shift += 8)
	{
		Bytes += static_cast<char>((Bits >> Shift) & 0xFF);
	}
}

void FModDescriptionWriter::String(const FString& Value)
{
	if (Value.IsEmpty())
	{
		Int32(0);
		return;
	}
	const int32 Units = Value.Len() + 1;
	bool bAscii = true;
	for (const TCHAR Unit : Value.GetStd())
	{
		bAscii = bAscii && Unit < 0x80;
	}
	Int32(bAscii ? Units : -Units);
	for (const TCHAR Unit : Value.GetStd())
	{
		Bytes += static_cast<char>(Unit & 0xFF);
		if (!bAscii)
		{
			Bytes += static_cast<char>(Unit >> 8);
		}
	}
	Bytes.append(bAscii ? 1 : 2, '\0');
}

void FModDescriptionWriter::StringArray(const TArray<FString>& Values)
{
	Int32(Values.Num());
	for (const FString& Value : Values)
	{
		String(Value);
	}
}

void FModDescriptionWriter::StringMap(const std::vector<std::pair<FString, FString>>& Pairs)
{
	Int32(static_cast<int32>(Pairs.size()));
	for (const auto& [Key, Value] : Pairs)
	{
		String(Key);
		String(Value);
	}
}

bool FModDescriptionWriter::SaveTo(const FString& Path) const
{
	TUniquePtr<FArchive> File(IFileManager::Get().CreateFileWriter(*Path));
	if (!File)
	{
		return false;
	}
	File->Serialize(const_cast<char*>(Bytes.data()), static_cast<int64>(Bytes.size()));
	return File->Close();
}
