#include "Misc/FileHelper.h"

#include "HAL/FileManager.h"
#include "Templates/UniquePtr.h"

namespace
{
	bool IsValidUtf8(const uint8* Bytes, int64 Count)
	{
		int64 Pos = 0;
		while (Pos < Count)
		{
			const uint8 Lead = Bytes[Pos];
			int Extra;
			if (Lead < 0x80)
			{
				++Pos;
				continue;
			}
			else if (Lead >= 0xC2 && Lead <= 0xDF)
			{
				Extra = 1;
			}
			else if (Lead >= 0xE0 && Lead <= 0xEF)
			{
				Extra = 2;
			}
			else if (Lead >= 0xF0 && Lead <= 0xF4)
			{
				Extra = 3;
			}
			else
			{
				return false;
			}
			if (Pos + Extra >= Count)
			{
				return false;
			}
			for (int Index = 1; Index <= Extra; ++Index)
			{
				if ((Bytes[Pos + Index] & 0xC0) != 0x80)
				{
					return false;
				}
			}
			Pos += 1 + Extra;
		}
		return true;
	}

	FString FromUtf16(const uint8* Bytes, int64 Count, bool bBigEndian)
	{
		std::u16string Units;
		Units.reserve(static_cast<size_t>(Count / 2));
		for (int64 Pos = 0; Pos + 1 < Count; Pos += 2)
		{
			const uint16 Low = bBigEndian ? Bytes[Pos + 1] : Bytes[Pos];
			const uint16 High = bBigEndian ? Bytes[Pos] : Bytes[Pos + 1];
			Units += static_cast<char16_t>(Low | (High << 8));
		}
		return FString(std::move(Units));
	}

	bool WriteBytes(const void* Data, int64 Count, const TCHAR* Filename, IFileManager* FileManager, uint32 WriteFlags)
	{
		IFileManager& Manager = FileManager ? *FileManager : IFileManager::Get();
		TUniquePtr<FArchive> Ar(Manager.CreateFileWriter(Filename, WriteFlags));
		if (!Ar)
		{
			return false;
		}
		Ar->Serialize(const_cast<void*>(Data), Count);
		return Ar->Close();
	}
}

FString FFileHelper::BytesToString(const uint8* Bytes, int64 Count)
{
	if (Count >= 2 && Bytes[0] == 0xFF && Bytes[1] == 0xFE)
	{
		return FromUtf16(Bytes + 2, Count - 2, false);
	}
	if (Count >= 2 && Bytes[0] == 0xFE && Bytes[1] == 0xFF)
	{
		return FromUtf16(Bytes + 2, Count - 2, true);
	}
	if (Count >= 3 && Bytes[0] == 0xEF && Bytes[1] == 0xBB && Bytes[2] == 0xBF)
	{
		return FString::FromUtf8(std::string_view(reinterpret_cast<const char*>(Bytes + 3), static_cast<size_t>(Count - 3)));
	}
	if (IsValidUtf8(Bytes, Count))
	{
		return FString::FromUtf8(std::string_view(reinterpret_cast<const char*>(Bytes), static_cast<size_t>(Count)));
	}
	// Not UTF-8: an 8-bit code page, one unit per byte.
	std::u16string Units(static_cast<size_t>(Count), u'\0');
	for (int64 Pos = 0; Pos < Count; ++Pos)
	{
		Units[static_cast<size_t>(Pos)] = Bytes[Pos];
	}
	return FString(std::move(Units));
}

bool FFileHelper::LoadFileToArray(TArray<uint8>& Result, const TCHAR* Filename, uint32 Flags)
{
	TUniquePtr<FArchive> Reader(IFileManager::Get().CreateFileReader(Filename, Flags));
	if (!Reader)
	{
		return false;
	}
	const int64 Size = Reader->TotalSize();
	Result.Reset();
	Result.SetNum(static_cast<int32>(Size));
	Reader->Serialize(Result.GetData(), Size);
	return Reader->Close();
}

bool FFileHelper::SaveArrayToFile(const TArray<uint8>& Array, const TCHAR* Filename, IFileManager* FileManager,
								  uint32 WriteFlags)
{
	return WriteBytes(Array.GetData(), Array.Num(), Filename, FileManager, WriteFlags);
}

bool FFileHelper::LoadFileToString(FString& Result, const TCHAR* Filename, uint32 Flags)
{
	TArray<uint8> Bytes;
	if (!LoadFileToArray(Bytes, Filename, Flags))
	{
		return false;
	}
	Result = BytesToString(Bytes.GetData(), Bytes.Num());
	return true;
}

bool FFileHelper::SaveStringToFile(const FString& String, const TCHAR* Filename, EEncodingOptions EncodingOptions,
								   IFileManager* FileManager, uint32 WriteFlags)
{
	bool bAnsi = EncodingOptions == EEncodingOptions::ForceAnsi;
	if (EncodingOptions == EEncodingOptions::AutoDetect)
	{
		bAnsi = true;
		for (TCHAR Unit : String)
		{
			if (Unit > 0x7F)
			{
				bAnsi = false;
				break;
			}
		}
		EncodingOptions = bAnsi ? EEncodingOptions::ForceAnsi : EEncodingOptions::ForceUnicode;
	}
	std::string Bytes;
	switch (EncodingOptions)
	{
	case EEncodingOptions::ForceAnsi:
		// Units that do not fit one byte become "?".
		Bytes.reserve(static_cast<size_t>(String.Len()));
		for (TCHAR Unit : String)
		{
			Bytes += Unit <= 0xFF ? static_cast<char>(Unit) : '?';
		}
		break;
	case EEncodingOptions::ForceUTF8:
		Bytes = "\xEF\xBB\xBF" + String.ToUtf8();
		break;
	case EEncodingOptions::ForceUTF8WithoutBOM:
		Bytes = String.ToUtf8();
		break;
	default:
		Bytes.reserve(2 + 2 * static_cast<size_t>(String.Len()));
		Bytes += "\xFF\xFE";
		for (TCHAR Unit : String)
		{
			Bytes += static_cast<char>(Unit & 0xFF);
			Bytes += static_cast<char>(Unit >> 8);
		}
		break;
	}
	return WriteBytes(Bytes.data(), static_cast<int64>(Bytes.size()), Filename, FileManager, WriteFlags);
}
