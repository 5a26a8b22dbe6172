#include "packaging/ModArchiveForms.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace
{
	// Bytes taken from the archive at a time, so that a lying length costs no more memory than the bytes that
	// are really there.
	constexpr int64 ReadPiece = 64 * 1024;

	// False when the archive knows it holds fewer than Bytes more bytes.
	bool HasBytes(FArchive& Ar, int64 Bytes)
	{
		const int64 Position = Ar.Tell();
		const int64 Total = Ar.TotalSize();
		return Position == INDEX_NONE || Total == INDEX_NONE || Bytes <= Total - Position;
	}

	bool ReadBytes(FArchive& Ar, std::vector<uint8>& Out, int64 Count)
	{
		Out.clear();
		if (!HasBytes(Ar, Count))
		{
			return false;
		}
		while (static_cast<int64>(Out.size()) < Count && !Ar.IsError())
		{
			const int64 Take = std::min<int64>(ReadPiece, Count - static_cast<int64>(Out.size()));
			const size_t Start = Out.size();
			Out.resize(Start + static_cast<size_t>(Take));
			Ar.Serialize(Out.data() + Start, Take);
		}
		return !Ar.IsError();
	}

	void LoadString(FArchive& Ar, FString& Value)
	{
		Value.Empty();
		int32 SaveNum = 0;
		Ar << SaveNum;
		if (Ar.IsError() || SaveNum == 0)
		{
			return;
		}
		// The most negative length has no positive twin; it can only come from a broken file.
		if (SaveNum == std::numeric_limits<int32>::min())
		{
			Ar.SetError();
			return;
		}
		const bool bWide = SaveNum < 0;
		const int64 Units = bWide ? -static_cast<int64>(SaveNum) : SaveNum;
		std::vector<uint8> Bytes;
		if (!ReadBytes(Ar, Bytes, Units * (bWide ? 2 : 1)))
		{
			Ar.SetError();
			return;
		}
		// The last unit is the terminating zero.
		std::u16string Text;
		Text.reserve(static_cast<size_t>(Units - 1));
		for (int64 Index = 0; Index + 1 < Units; ++Index)
		{
			Text.push_back(bWide ? static_cast<char16_t>(Bytes[2 * Index] | (Bytes[2 * Index + 1] << 8))
								 : static_cast<char16_t>(Bytes[Index]));
		}
		Value = FString(std::move(Text));
	}

	void SaveString(FArchive& Ar, const FString& Value)
	{
		if (Value.IsEmpty())
		{
			int32 Zero = 0;
			Ar << Zero;
			return;
		}
		if (Value.Len() >= MAX_int32)
		{
			Ar.SetError();
			return;
		}
		const bool bNarrow = std::all_of(Value.begin(), Value.end(), [](TCHAR Unit) { return Unit <= 0x7F; });
		const int32 Units = Value.Len() + 1;
		int32 SaveNum = bNarrow ? Units : -Units;
		Ar << SaveNum;
		std::vector<uint8> Bytes;
		Bytes.reserve(static_cast<size_t>(Units) * (bNarrow ? 1 : 2));
		for (const TCHAR Unit : Value)
		{
			Bytes.push_back(static_cast<uint8>(Unit));
			if (!bNarrow)
			{
				Bytes.push_back(static_cast<uint8>(Unit >> 8));
			}
		}
		Bytes.insert(Bytes.end(), bNarrow ? 1 : 2, 0);
		Ar.Serialize(Bytes.data(), static_cast<int64>(Bytes.size()));
	}

	// A count read from the file; negative counts are broken files.
	bool LoadCount(FArchive& Ar, int32& Count)
	{
		Count = 0;
		Ar << Count;
		if (Ar.IsError() || Count < 0)
		{
			Ar.SetError();
			Count = 0;
			return false;
		}
		return true;
	}
}

namespace ModArchiveForms
{
	void SerializeString(FArchive& Ar, FString& Value)
	{
		if (Ar.IsLoading())
		{
			LoadString(Ar, Value);
		}
		else
		{
			SaveString(Ar, Value);
		}
	}

	void SerializeStringArray(FArchive& Ar, TArray<FString>& Value)
	{
		if (Ar.IsLoading())
		{
			Value.Empty();
			int32 Count = 0;
			// No room is made ahead from the count: every element must really be in the file.
			for (LoadCount(Ar, Count); Count > 0 && !Ar.IsError(); --Count)
			{
				FString Element;
				LoadString(Ar, Element);
				if (!Ar.IsError())
				{
					Value.Add(std::move(Element));
				}
			}
			return;
		}
		int32 Count = Value.Num();
		Ar << Count;
		for (const FString& Element : Value)
		{
			SaveString(Ar, Element);
		}
	}

	void SerializeStringMap(FArchive& Ar, TMap<FString, FString>& Value)
	{
		if (Ar.IsLoading())
		{
			Value.Empty();
			int32 Count = 0;
			for (LoadCount(Ar, Count); Count > 0 && !Ar.IsError(); --Count)
			{
				FString Key;
				FString Pair;
				LoadString(Ar, Key);
				LoadString(Ar, Pair);
				if (!Ar.IsError())
				{
					Value.Add(Key, Pair);
				}
			}
			return;
		}
		int32 Count = Value.Num();
		Ar << Count;
		for (const auto& Pair : Value)
		{
			SaveString(Ar, Pair.Key);
			SaveString(Ar, Pair.Value);
		}
	}
}
