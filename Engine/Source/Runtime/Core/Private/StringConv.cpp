#include "Containers/UnrealString.h"

#include "Utf8Sequence.h"

#include <cstring>

std::u16string StringConv::Utf8ToUtf16(std::string_view Utf8, bool bEscape)
{
	std::u16string Out;
	Out.reserve(Utf8.size());
	const auto* Bytes = reinterpret_cast<const unsigned char*>(Utf8.data());
	const size_t Size = Utf8.size();
	size_t Pos = 0;
	while (Pos < Size)
	{
		// Most text is ASCII: a run of it is found eight bytes at a time and widened in one loop.
		size_t Run = Pos;
		for (uint64 Word = 0; Run + 8 <= Size; Run += 8)
		{
			std::memcpy(&Word, Bytes + Run, 8);
			if ((Word & 0x8080808080808080ull) != 0)
			{
				break;
			}
		}
		while (Run < Size && Bytes[Run] < 0x80)
		{
			++Run;
		}
		if (Run > Pos)
		{
			const size_t Start = Out.size();
			Out.resize(Start + (Run - Pos));
			char16_t* Wide = Out.data() + Start;
			for (size_t Index = Pos; Index < Run; ++Index)
			{
				*Wide++ = static_cast<char16_t>(Bytes[Index]);
			}
			Pos = Run;
			continue;
		}
		const unsigned char Lead = Bytes[Pos];
		const int Extra = Utf8Sequence::ContinuationsAfter(Lead);
		if (Extra == 0)
		{
			Out += bEscape ? static_cast<char16_t>(0xDC00 + Lead) : u'\uFFFD';
			++Pos;
			continue;
		}
		char32_t CodePoint = Utf8Sequence::LeadBits(Lead, Extra);
		const char32_t Minimum = Utf8Sequence::SmallestCodePoint(Extra);
		int Taken = 0;
		while (Taken < Extra && Pos + 1 + Taken < Size && Utf8Sequence::IsContinuation(Bytes[Pos + 1 + Taken]))
		{
			CodePoint = (CodePoint << 6) | (Bytes[Pos + 1 + Taken] & 0x3F);
			++Taken;
		}
		if (Taken < Extra || CodePoint < Minimum || CodePoint > 0x10FFFF || (CodePoint >= 0xD800 && CodePoint <= 0xDFFF))
		{
			// A broken sequence costs one replacement character and resumes at the first byte that did not fit;
			// escaped, only its first byte is taken, and the bytes after it are looked at on their own.
			Out += bEscape ? static_cast<char16_t>(0xDC00 + Lead) : u'\uFFFD';
			Pos += bEscape ? 1 : 1 + Taken;
			continue;
		}
		Pos += 1 + Extra;
		if (CodePoint >= 0x10000)
		{
			CodePoint -= 0x10000;
			Out += static_cast<char16_t>(0xD800 + (CodePoint >> 10));
			Out += static_cast<char16_t>(0xDC00 + (CodePoint & 0x3FF));
		}
		else
		{
			Out += static_cast<char16_t>(CodePoint);
		}
	}
	return Out;
}

std::string StringConv::Utf16ToUtf8(std::u16string_view Utf16, bool bEscape)
{
	std::string Out;
	Out.reserve(Utf16.size());
	for (size_t Pos = 0; Pos < Utf16.size(); ++Pos)
	{
		char32_t CodePoint = Utf16[Pos];
		if (CodePoint >= 0xD800 && CodePoint <= 0xDBFF && Pos + 1 < Utf16.size() && Utf16[Pos + 1] >= 0xDC00 &&
			Utf16[Pos + 1] <= 0xDFFF)
		{
			CodePoint = 0x10000 + ((CodePoint - 0xD800) << 10) + (Utf16[Pos + 1] - 0xDC00);
			++Pos;
		}
		else if (bEscape && CodePoint >= 0xDC80 && CodePoint <= 0xDCFF)
		{
			Out += static_cast<char>(CodePoint - 0xDC00);
			continue;
		}
		else if (CodePoint >= 0xD800 && CodePoint <= 0xDFFF)
		{
			CodePoint = 0xFFFD;
		}
		if (CodePoint < 0x80)
		{
			Out += static_cast<char>(CodePoint);
		}
		else if (CodePoint < 0x800)
		{
			Out += static_cast<char>(0xC0 | (CodePoint >> 6));
			Out += static_cast<char>(0x80 | (CodePoint & 0x3F));
		}
		else if (CodePoint < 0x10000)
		{
			Out += static_cast<char>(0xE0 | (CodePoint >> 12));
			Out += static_cast<char>(0x80 | ((CodePoint >> 6) & 0x3F));
			Out += static_cast<char>(0x80 | (CodePoint & 0x3F));
		}
		else
		{
			Out += static_cast<char>(0xF0 | (CodePoint >> 18));
			Out += static_cast<char>(0x80 | ((CodePoint >> 12) & 0x3F));
			Out += static_cast<char>(0x80 | ((CodePoint >> 6) & 0x3F));
			Out += static_cast<char>(0x80 | (CodePoint & 0x3F));
		}
	}
	return Out;
}
