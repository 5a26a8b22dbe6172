#include "Containers/UnrealString.h"

namespace
{
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
