#include "Misc/Guid.h"

#include "PlatformMisc.h"

FGuid FGuid::NewGuid()
{
	uint32 Words[4] = {0, 0, 0, 0};
	PlatformMisc::RandomBytes(Words, sizeof(Words));
	FGuid Result(Words[0], Words[1], Words[2], Words[3]);
	if (!Result.IsValid())
	{
		Result.D = 1; // the all-zero value means "no GUID"
	}
	return Result;
}

FString FGuid::ToString(EGuidFormats Format) const
{
	if (Format == EGuidFormats::DigitsWithHyphens)
	{
		return FString::Printf(TEXT("%08X-%04X-%04X-%04X-%04X%08X"), A, B >> 16, B & 0xFFFF, C >> 16, C & 0xFFFF, D);
	}
	return FString::Printf(TEXT("%08X%08X%08X%08X"), A, B, C, D);
}

bool FGuid::Parse(const FString& Text, FGuid& OutGuid)
{
	const FString Digits = Text.Replace(TEXT("-"), TEXT(""));
	if (Digits.Len() != 32)
	{
		return false;
	}
	uint32 Words[4] = {0, 0, 0, 0};
	for (int32 Index = 0; Index < 32; ++Index)
	{
		const int32 Nibble = FChar::HexDigitValue(Digits[Index]);
		if (Nibble < 0)
		{
			return false;
		}
		Words[Index / 8] = (Words[Index / 8] << 4) | static_cast<uint32>(Nibble);
	}
	OutGuid = FGuid(Words[0], Words[1], Words[2], Words[3]);
	return true;
}
