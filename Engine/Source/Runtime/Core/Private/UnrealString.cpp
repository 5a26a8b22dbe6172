#include "Containers/UnrealString.h"

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwctype>
#include <locale.h>

namespace
{
	// towlower's answer depends on the C library's locale; one fixed UTF-8 locale makes folding the same for
	// every user. C.UTF-8 is built into the C library, so it is always there.
	locale_t FoldingLocale()
	{
		static locale_t Locale = []
		{
			locale_t Made = newlocale(LC_CTYPE_MASK, "C.UTF-8", static_cast<locale_t>(0));
			if (!Made)
			{
				Made = newlocale(LC_CTYPE_MASK, "en_US.UTF-8", static_cast<locale_t>(0));
			}
			return Made;
		}();
		return Locale;
	}

	inline TCHAR AsciiLower(TCHAR Unit)
	{
		return (Unit >= u'A' && Unit <= u'Z') ? static_cast<TCHAR>(Unit + 32) : Unit;
	}

	inline bool UnitsEqual(TCHAR A, TCHAR B, ESearchCase::Type SearchCase)
	{
		if (A == B)
		{
			return true;
		}
		if (SearchCase != ESearchCase::IgnoreCase)
		{
			return false;
		}
		// Most text is ASCII: fold it here and ask the locale only for the rest.
		if (A < 0x80 && B < 0x80)
		{
			return AsciiLower(A) == AsciiLower(B);
		}
		return FChar::ToLower(A) == FChar::ToLower(B);
	}

	bool MatchesAt(const std::u16string& Haystack, size_t At, const std::u16string& Needle, ESearchCase::Type SearchCase)
	{
		if (At + Needle.size() > Haystack.size())
		{
			return false;
		}
		for (size_t Index = 0; Index < Needle.size(); ++Index)
		{
			if (!UnitsEqual(Haystack[At + Index], Needle[Index], SearchCase))
			{
				return false;
			}
		}
		return true;
	}
}

TCHAR FChar::ToLower(TCHAR Character)
{
	if (Character < 0x80)
	{
		return (Character >= u'A' && Character <= u'Z') ? static_cast<TCHAR>(Character + 32) : Character;
	}
	locale_t Locale = FoldingLocale();
	if (!Locale || (Character >= 0xD800 && Character <= 0xDFFF))
	{
		return Character;
	}
	const wint_t Folded = towlower_l(static_cast<wint_t>(Character), Locale);
	return Folded <= 0xFFFF ? static_cast<TCHAR>(Folded) : Character;
}

TCHAR FChar::ToUpper(TCHAR Character)
{
	if (Character < 0x80)
	{
		return (Character >= u'a' && Character <= u'z') ? static_cast<TCHAR>(Character - 32) : Character;
	}
	locale_t Locale = FoldingLocale();
	if (!Locale || (Character >= 0xD800 && Character <= 0xDFFF))
	{
		return Character;
	}
	const wint_t Folded = towupper_l(static_cast<wint_t>(Character), Locale);
	return Folded <= 0xFFFF ? static_cast<TCHAR>(Folded) : Character;
}

bool FChar::IsWhitespace(TCHAR Character)
{
	return Character == u' ' || Character == u'\t' || Character == u'\r' || Character == u'\n' || Character == u'\v' ||
		   Character == u'\f' || Character == 0x00A0 || Character == 0x3000;
}

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
		int Extra = 0;
		char32_t CodePoint = 0;
		char32_t Minimum = 0;
		if (Lead >= 0xC2 && Lead <= 0xDF)
		{
			Extra = 1;
			CodePoint = Lead & 0x1F;
			Minimum = 0x80;
		}
		else if (Lead >= 0xE0 && Lead <= 0xEF)
		{
			Extra = 2;
			CodePoint = Lead & 0x0F;
			Minimum = 0x800;
		}
		else if (Lead >= 0xF0 && Lead <= 0xF4)
		{
			Extra = 3;
			CodePoint = Lead & 0x07;
			Minimum = 0x10000;
		}
		else
		{
			Out += bEscape ? static_cast<char16_t>(0xDC00 + Lead) : u'\uFFFD';
			++Pos;
			continue;
		}
		int Taken = 0;
		while (Taken < Extra && Pos + 1 + Taken < Size && (Bytes[Pos + 1 + Taken] & 0xC0) == 0x80)
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

FString::FString(const char* Utf8Text) : Data(StringConv::Utf8ToUtf16(Utf8Text ? Utf8Text : "")) {}

FString::FString(const std::string& Utf8Text) : Data(StringConv::Utf8ToUtf16(Utf8Text)) {}

FString FString::FromUtf8(std::string_view Utf8Text)
{
	return FString(StringConv::Utf8ToUtf16(Utf8Text));
}

std::string FString::ToUtf8() const
{
	return StringConv::Utf16ToUtf8(Data);
}

FString FString::FromNative(std::string_view Bytes)
{
	return FString(StringConv::Utf8ToUtf16(Bytes, true));
}

std::string FString::ToNative() const
{
	return StringConv::Utf16ToUtf8(Data, true);
}

FString operator/(const FString& A, const FString& B)
{
	FString Result = A;
	const bool bEndsWithSlash = !A.IsEmpty() && (A.Data.back() == u'/' || A.Data.back() == u'\\');
	if (!A.IsEmpty() && !bEndsWithSlash)
	{
		Result.Data += u'/';
	}
	size_t Skip = 0;
	if (!A.IsEmpty() || bEndsWithSlash)
	{
		while (Skip < B.Data.size() && (B.Data[Skip] == u'/' || B.Data[Skip] == u'\\') && !Result.IsEmpty())
		{
			++Skip;
		}
	}
	Result.Data.append(B.Data, Skip, std::u16string::npos);
	return Result;
}

bool FString::Equals(const FString& Other, ESearchCase::Type SearchCase) const
{
	return Data.size() == Other.Data.size() && MatchesAt(Data, 0, Other.Data, SearchCase);
}

int32 FString::Compare(const FString& Other, ESearchCase::Type SearchCase) const
{
	const size_t Common = Data.size() < Other.Data.size() ? Data.size() : Other.Data.size();
	for (size_t Index = 0; Index < Common; ++Index)
	{
		TCHAR A = Data[Index];
		TCHAR B = Other.Data[Index];
		if (SearchCase == ESearchCase::IgnoreCase)
		{
			A = FChar::ToLower(A);
			B = FChar::ToLower(B);
		}
		if (A != B)
		{
			return A < B ? -1 : 1;
		}
	}
	if (Data.size() == Other.Data.size())
	{
		return 0;
	}
	return Data.size() < Other.Data.size() ? -1 : 1;
}

int32 FString::Find(const FString& SubStr, ESearchCase::Type SearchCase, ESearchDir::Type SearchDir,
					int32 StartPosition) const
{
	const int32 Length = Len();
	const int32 SubLength = SubStr.Len();
	if (SearchCase == ESearchCase::CaseSensitive && SearchDir == ESearchDir::FromStart)
	{
		// Exact searches are the library's: they scan whole memory blocks at a time.
		const size_t From = StartPosition == INDEX_NONE || StartPosition < 0 ? 0 : static_cast<size_t>(StartPosition);
		const size_t Found = From > Data.size() ? std::u16string::npos : Data.find(SubStr.Data, From);
		return Found == std::u16string::npos ? INDEX_NONE : static_cast<int32>(Found);
	}
	if (SearchDir == ESearchDir::FromStart)
	{
		const int32 From = StartPosition == INDEX_NONE ? 0 : (StartPosition < 0 ? 0 : StartPosition);
		const TCHAR First = SubLength > 0 ? SubStr.Data[0] : 0;
		// A needle that begins with an ASCII letter or sign can only begin where the text holds that unit in
		// either case, or a unit beyond ASCII (some fold to ASCII): most positions are passed over with two
		// comparisons instead of a fold.
		const TCHAR FirstLower = FChar::ToLower(First);
		const bool bAsciiFirst = SubLength > 0 && FirstLower < 0x80;
		const TCHAR FirstUpper = (FirstLower >= u'a' && FirstLower <= u'z') ? static_cast<TCHAR>(FirstLower - 32) : FirstLower;
		for (int32 At = From; At + SubLength <= Length; ++At)
		{
			const TCHAR Unit = Data[static_cast<size_t>(At)];
			if (bAsciiFirst && Unit < 0x80 && Unit != FirstLower && Unit != FirstUpper)
			{
				continue;
			}
			// A cheap look at the first unit before the whole comparison.
			if (SubLength > 0 && !UnitsEqual(Unit, First, SearchCase))
			{
				continue;
			}
			if (MatchesAt(Data, static_cast<size_t>(At), SubStr.Data, SearchCase))
			{
				return At;
			}
		}
		return INDEX_NONE;
	}
	int32 At = Length - SubLength;
	if (StartPosition != INDEX_NONE && StartPosition - SubLength < At)
	{
		At = StartPosition - SubLength;
	}
	for (; At >= 0; --At)
	{
		if (MatchesAt(Data, static_cast<size_t>(At), SubStr.Data, SearchCase))
		{
			return At;
		}
	}
	return INDEX_NONE;
}

bool FString::FindChar(TCHAR Character, int32& OutIndex) const
{
	const size_t Found = Data.find(Character);
	OutIndex = Found == std::u16string::npos ? INDEX_NONE : static_cast<int32>(Found);
	return OutIndex != INDEX_NONE;
}

bool FString::FindLastChar(TCHAR Character, int32& OutIndex) const
{
	const size_t Found = Data.rfind(Character);
	OutIndex = Found == std::u16string::npos ? INDEX_NONE : static_cast<int32>(Found);
	return OutIndex != INDEX_NONE;
}

bool FString::StartsWith(const FString& Prefix, ESearchCase::Type SearchCase) const
{
	return !Prefix.IsEmpty() && MatchesAt(Data, 0, Prefix.Data, SearchCase);
}

bool FString::EndsWith(const FString& Suffix, ESearchCase::Type SearchCase) const
{
	return !Suffix.IsEmpty() && Suffix.Data.size() <= Data.size() &&
		   MatchesAt(Data, Data.size() - Suffix.Data.size(), Suffix.Data, SearchCase);
}

bool FString::RemoveFromStart(const FString& Prefix, ESearchCase::Type SearchCase)
{
	if (!StartsWith(Prefix, SearchCase))
	{
		return false;
	}
	Data.erase(0, Prefix.Data.size());
	return true;
}

bool FString::RemoveFromEnd(const FString& Suffix, ESearchCase::Type SearchCase)
{
	if (!EndsWith(Suffix, SearchCase))
	{
		return false;
	}
	Data.erase(Data.size() - Suffix.Data.size());
	return true;
}

FString FString::Mid(int32 Start, int32 Count) const
{
	const int64 Length = Len();
	int64 From = Start < 0 ? 0 : Start;
	if (From > Length)
	{
		From = Length;
	}
	int64 End = static_cast<int64>(Start) + (Count < 0 ? 0 : Count);
	if (End > Length)
	{
		End = Length;
	}
	if (End <= From)
	{
		return FString();
	}
	return FString(Data.substr(static_cast<size_t>(From), static_cast<size_t>(End - From)));
}

FString FString::Replace(const FString& From, const FString& To, ESearchCase::Type SearchCase) const
{
	FString Result = *this;
	Result.ReplaceInline(From, To, SearchCase);
	return Result;
}

int32 FString::ReplaceInline(const FString& From, const FString& To, ESearchCase::Type SearchCase)
{
	if (From.IsEmpty() || IsEmpty())
	{
		return 0;
	}
	if (SearchCase == ESearchCase::CaseSensitive)
	{
		// Copies the runs between matches whole, and nothing at all when there is no match.
		size_t Found = Data.find(From.Data);
		if (Found == std::u16string::npos)
		{
			return 0;
		}
		std::u16string Out;
		Out.reserve(Data.size());
		size_t Start = 0;
		int32 Count = 0;
		while (Found != std::u16string::npos)
		{
			Out.append(Data, Start, Found - Start);
			Out += To.Data;
			Start = Found + From.Data.size();
			++Count;
			Found = Data.find(From.Data, Start);
		}
		Out.append(Data, Start, std::u16string::npos);
		Data = std::move(Out);
		return Count;
	}
	std::u16string Out;
	Out.reserve(Data.size());
	int32 Count = 0;
	size_t Pos = 0;
	while (Pos < Data.size())
	{
		if (MatchesAt(Data, Pos, From.Data, SearchCase))
		{
			Out += To.Data;
			Pos += From.Data.size();
			++Count;
		}
		else
		{
			Out += Data[Pos++];
		}
	}
	Data = std::move(Out);
	return Count;
}

FString FString::ToLower() const
{
	FString Result = *this;
	for (TCHAR& Unit : Result.Data)
	{
		Unit = FChar::ToLower(Unit);
	}
	return Result;
}

FString FString::ToUpper() const
{
	FString Result = *this;
	for (TCHAR& Unit : Result.Data)
	{
		Unit = FChar::ToUpper(Unit);
	}
	return Result;
}

FString FString::TrimStart() const
{
	size_t From = 0;
	while (From < Data.size() && FChar::IsWhitespace(Data[From]))
	{
		++From;
	}
	return FString(Data.substr(From));
}

FString FString::TrimEnd() const
{
	size_t End = Data.size();
	while (End > 0 && FChar::IsWhitespace(Data[End - 1]))
	{
		--End;
	}
	return FString(Data.substr(0, End));
}

FString FString::TrimStartAndEnd() const
{
	return TrimStart().TrimEnd();
}

FString FString::TrimQuotes(bool* bQuotesRemoved) const
{
	size_t From = 0;
	size_t End = Data.size();
	bool bRemoved = false;
	if (End > 0 && Data[0] == u'"')
	{
		From = 1;
		bRemoved = true;
	}
	if (End > From && Data[End - 1] == u'"')
	{
		--End;
		bRemoved = true;
	}
	if (bQuotesRemoved)
	{
		*bQuotesRemoved = bRemoved;
	}
	return FString(Data.substr(From, End - From));
}

FString FString::ReplaceQuotesWithEscapedQuotes() const
{
	// Every double quote gets its backslash, also one that has backslashes before it already: the uploader's
	// command line relies on each quote of a value being escaped.
	std::u16string Out;
	Out.reserve(Data.size());
	for (const char16_t Unit : Data)
	{
		if (Unit == u'"')
		{
			Out += u'\\';
		}
		Out += Unit;
	}
	return FString(std::move(Out));
}

int32 FString::ParseIntoArray(TArray<FString>& OutArray, const TCHAR* Delim, bool bCullEmpty) const
{
	OutArray.Reset();
	const std::u16string Delimiter = Delim ? Delim : u"";
	if (Delimiter.empty() || Data.empty())
	{
		if (!Data.empty())
		{
			OutArray.Add(*this);
		}
		return OutArray.Num();
	}
	size_t Start = 0;
	while (true)
	{
		const size_t Found = Data.find(Delimiter, Start);
		const size_t End = Found == std::u16string::npos ? Data.size() : Found;
		if (!bCullEmpty || End > Start)
		{
			OutArray.Add(FString(Data.substr(Start, End - Start)));
		}
		if (Found == std::u16string::npos)
		{
			break;
		}
		Start = Found + Delimiter.size();
	}
	return OutArray.Num();
}

int32 FString::ParseIntoArrayLines(TArray<FString>& OutArray, bool bCullEmpty) const
{
	OutArray.Reset();
	const size_t Size = Data.size();
	size_t Start = 0;
	for (size_t Pos = 0; Pos < Size; ++Pos)
	{
		if (Data[Pos] != u'\r' && Data[Pos] != u'\n')
		{
			continue;
		}
		if (!bCullEmpty || Pos > Start)
		{
			OutArray.Add(FString(Data.substr(Start, Pos - Start)));
		}
		if (Data[Pos] == u'\r' && Pos + 1 < Size && Data[Pos + 1] == u'\n')
		{
			++Pos;
		}
		Start = Pos + 1;
	}
	// Text after the last line break is a line of its own; a final break adds no empty line.
	if (Start < Size)
	{
		OutArray.Add(FString(Data.substr(Start)));
	}
	return OutArray.Num();
}

bool FString::Split(const FString& InS, FString* LeftS, FString* RightS, ESearchCase::Type SearchCase,
					ESearchDir::Type SearchDir) const
{
	const int32 At = Find(InS, SearchCase, SearchDir);
	if (At == INDEX_NONE)
	{
		return false;
	}
	if (LeftS)
	{
		*LeftS = Left(At);
	}
	if (RightS)
	{
		*RightS = Mid(At + InS.Len());
	}
	return true;
}

bool FString::IsNumeric() const
{
	if (Data.empty())
	{
		return false;
	}
	size_t Pos = 0;
	if (Data[0] == u'-' || Data[0] == u'+')
	{
		Pos = 1;
	}
	bool bSeenDot = false;
	bool bSeenDigit = false;
	for (; Pos < Data.size(); ++Pos)
	{
		if (Data[Pos] == u'.')
		{
			if (bSeenDot)
			{
				return false;
			}
			bSeenDot = true;
		}
		else if (FChar::IsDigit(Data[Pos]))
		{
			bSeenDigit = true;
		}
		else
		{
			return false;
		}
	}
	return bSeenDigit;
}

FString FString::FromInt(int32 Value)
{
	return FString(std::to_string(Value));
}

FString FString::Join(const TArray<FString>& Items, const TCHAR* Separator)
{
	FString Result;
	for (int32 Index = 0; Index < Items.Num(); ++Index)
	{
		if (Index > 0)
		{
			Result += Separator;
		}
		Result += Items[Index];
	}
	return Result;
}

uint32 GetTypeHash(const FString& Value)
{
	// FNV-1a over the units.
	uint32 Hash = 2166136261u;
	for (TCHAR Unit : Value.GetStd())
	{
		Hash = (Hash ^ static_cast<uint32>(Unit)) * 16777619u;
	}
	return Hash;
}

FString StringFormat::Format(const TCHAR* Fmt, const FArg* Args, int32 NumArgs)
{
	std::u16string Out;
	if (!Fmt)
	{
		return FString();
	}
	int32 NextArg = 0;
	auto TakeArg = [&]() -> const FArg*
	{
		checkf(NextArg < NumArgs, "FString::Printf was given fewer arguments than its format asks for");
		return &Args[NextArg++];
	};

	for (const TCHAR* Pos = Fmt; *Pos; ++Pos)
	{
		if (*Pos != u'%')
		{
			Out += *Pos;
			continue;
		}
		++Pos;
		if (*Pos == u'%')
		{
			Out += u'%';
			continue;
		}
		// Gather the conversion in 8-bit form so that the C library does the number formatting.
		std::string Directive = "%";
		while (*Pos == u'-' || *Pos == u'+' || *Pos == u' ' || *Pos == u'#' || *Pos == u'0')
		{
			Directive += static_cast<char>(*Pos++);
		}
		int Width = -1;
		if (*Pos == u'*')
		{
			Width = static_cast<int>(TakeArg()->Int);
			Directive += std::to_string(Width);
			++Pos;
		}
		while (FChar::IsDigit(*Pos))
		{
			Directive += static_cast<char>(*Pos++);
		}
		if (*Pos == u'.')
		{
			Directive += static_cast<char>(*Pos++);
			if (*Pos == u'*')
			{
				Directive += std::to_string(TakeArg()->Int);
				++Pos;
			}
			while (FChar::IsDigit(*Pos))
			{
				Directive += static_cast<char>(*Pos++);
			}
		}
		int LongCount = 0;
		while (*Pos == u'l' || *Pos == u'h' || *Pos == u'z' || *Pos == u'I' || *Pos == u'j')
		{
			if (*Pos == u'l')
			{
				++LongCount;
			}
			if (*Pos == u'z' || *Pos == u'j')
			{
				LongCount = 2;
			}
			if (*Pos == u'I' && Pos[1] == u'6' && Pos[2] == u'4')
			{
				LongCount = 2;
				Pos += 2;
			}
			++Pos;
		}
		const TCHAR Conversion = *Pos;
		if (Conversion == 0)
		{
			break;
		}
		char Buffer[512];
		switch (Conversion)
		{
		case u'd':
		case u'i':
		case u'u':
		case u'x':
		case u'X':
		case u'o':
		{
			const FArg* Arg = TakeArg();
			checkf(Arg->Kind == FArg::Signed || Arg->Kind == FArg::Unsigned || Arg->Kind == FArg::Pointer,
				   "FString::Printf: an integer conversion was given no integer");
			const bool bSigned = Conversion == u'd' || Conversion == u'i';
			if (LongCount >= 2 || (LongCount == 1 && sizeof(long) == 8))
			{
				Directive += "ll";
				Directive += static_cast<char>(Conversion);
				if (bSigned)
				{
					std::snprintf(Buffer, sizeof(Buffer), Directive.c_str(), static_cast<long long>(Arg->Int));
				}
				else
				{
					std::snprintf(Buffer, sizeof(Buffer), Directive.c_str(), static_cast<unsigned long long>(Arg->Int));
				}
			}
			else
			{
				// Without a length modifier the engine reads a 32-bit value: a wider number shows its low half.
				Directive += static_cast<char>(Conversion);
				const uint32 Low = static_cast<uint32>(static_cast<uint64>(Arg->Int) & 0xFFFFFFFFu);
				if (bSigned)
				{
					std::snprintf(Buffer, sizeof(Buffer), Directive.c_str(), static_cast<int>(static_cast<int32>(Low)));
				}
				else
				{
					std::snprintf(Buffer, sizeof(Buffer), Directive.c_str(), static_cast<unsigned>(Low));
				}
			}
			Out += StringConv::Utf8ToUtf16(Buffer);
			break;
		}
		case u'f':
		case u'F':
		case u'g':
		case u'G':
		case u'e':
		case u'E':
		{
			const FArg* Arg = TakeArg();
			const double Value = Arg->Kind == FArg::Float ? Arg->Real : static_cast<double>(Arg->Int);
			Directive += static_cast<char>(Conversion);
			// Numbers in files must not follow the user's locale: the decimal point is always ".".
			static const locale_t CLocale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(0));
			const locale_t Previous = uselocale(CLocale);
			std::snprintf(Buffer, sizeof(Buffer), Directive.c_str(), Value);
			uselocale(Previous);
			Out += StringConv::Utf8ToUtf16(Buffer);
			break;
		}
		case u'c':
		{
			const FArg* Arg = TakeArg();
			Out += static_cast<TCHAR>(Arg->Int);
			break;
		}
		case u's':
		{
			const FArg* Arg = TakeArg();
			checkf(Arg->Kind == FArg::Text, "FString::Printf: %s was given no text");
			const std::u16string_view Text = Arg->String ? std::u16string_view(Arg->String) : std::u16string_view(u"(null)");
			// Width and left-justification apply to text as well; precision cuts it.
			size_t Precision = std::u16string_view::npos;
			int PadWidth = 0;
			bool bLeft = false;
			{
				size_t DirectivePos = 1;
				while (DirectivePos < Directive.size() && (Directive[DirectivePos] == '-' || Directive[DirectivePos] == '+' || Directive[DirectivePos] == ' ' ||
												  Directive[DirectivePos] == '#' || Directive[DirectivePos] == '0'))
				{
					bLeft = bLeft || Directive[DirectivePos] == '-';
					++DirectivePos;
				}
				PadWidth = std::atoi(Directive.c_str() + DirectivePos);
				const size_t Dot = Directive.find('.');
				if (Dot != std::string::npos)
				{
					Precision = static_cast<size_t>(std::atoi(Directive.c_str() + Dot + 1));
				}
			}
			const std::u16string_view Shown = Text.substr(0, Precision);
			const size_t Pad = PadWidth > 0 && static_cast<size_t>(PadWidth) > Shown.size() ? PadWidth - Shown.size() : 0;
			if (!bLeft)
			{
				Out.append(Pad, u' ');
			}
			Out += Shown;
			if (bLeft)
			{
				Out.append(Pad, u' ');
			}
			break;
		}
		case u'p':
		{
			const FArg* Arg = TakeArg();
			std::snprintf(Buffer, sizeof(Buffer), "0x%llx", static_cast<unsigned long long>(Arg->Int));
			Out += StringConv::Utf8ToUtf16(Buffer);
			break;
		}
		default:
			// An unknown conversion is copied as it stands.
			Out += u'%';
			Out += Conversion;
			break;
		}
	}
	return FString(std::move(Out));
}
