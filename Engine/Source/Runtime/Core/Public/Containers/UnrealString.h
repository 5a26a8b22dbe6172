#pragma once

#include "Containers/Array.h"
#include "CoreTypes.h"
#include "Misc/Char.h"
#include "Misc/StringConv.h"
#include "Misc/StringFormat.h"

#include <string>
#include <string_view>
#include <type_traits>

namespace ESearchCase
{
	enum Type
	{
		CaseSensitive,
		IgnoreCase,
	};
}

namespace ESearchDir
{
	enum Type
	{
		FromStart,
		FromEnd,
	};
}

// The engine's string: a sequence of 16-bit units. Comparison with == is exact; the operations that search
// take ESearchCase and fold each unit through FChar::ToLower when asked to ignore case.
class CORE_API FString
{
public:
	FString() = default;
	FString(const TCHAR* Text) : Data(Text ? Text : u"") {}
	FString(const TCHAR* Text, int32 Count) : Data(Text, static_cast<size_t>(Count > 0 ? Count : 0)) {}
	FString(std::u16string Text) : Data(std::move(Text)) {}
	FString(std::u16string_view Text) : Data(Text) {}
	// 8-bit text is taken as UTF-8, with invalid bytes replaced.
	FString(const char* Utf8Text);
	explicit FString(const std::string& Utf8Text);

	static FString FromUtf8(std::string_view Utf8Text);
	std::string ToUtf8() const;
	// The operating system's bytes (file names, arguments, the environment): UTF-8, where each byte that
	// isn't part of valid UTF-8 comes in as one of U+DC80 to U+DCFF and goes back out as that same byte, so
	// that any name comes back to exactly the bytes it had.
	static FString FromNative(std::string_view Bytes);
	std::string ToNative() const;

	const TCHAR* operator*() const { return Data.c_str(); }
	int32 Len() const { return static_cast<int32>(Data.size()); }
	bool IsEmpty() const { return Data.empty(); }
	void Empty() { Data.clear(); }
	void Reset() { Data.clear(); }
	void Reserve(int32 Count) { Data.reserve(static_cast<size_t>(Count)); }
	const std::u16string& GetStd() const { return Data; }
	std::u16string& GetStd() { return Data; }

	TCHAR& operator[](int32 Index)
	{
		check(Index >= 0 && Index < Len());
		return Data[static_cast<size_t>(Index)];
	}
	const TCHAR& operator[](int32 Index) const
	{
		check(Index >= 0 && Index < Len());
		return Data[static_cast<size_t>(Index)];
	}

	FString& operator+=(const FString& Other)
	{
		Data += Other.Data;
		return *this;
	}
	FString& operator+=(const TCHAR* Other)
	{
		if (Other)
		{
			Data += Other;
		}
		return *this;
	}
	FString& operator+=(TCHAR Character)
	{
		Data += Character;
		return *this;
	}
	FString& AppendChar(TCHAR Character)
	{
		Data += Character;
		return *this;
	}
	FString& AppendChars(const TCHAR* Text, int32 Count)
	{
		Data.append(Text, static_cast<size_t>(Count));
		return *this;
	}

	friend FString operator+(const FString& A, const FString& B) { return FString(A.Data + B.Data); }
	friend FString operator+(const FString& A, const TCHAR* B) { return A + FString(B); }
	friend FString operator+(const TCHAR* A, const FString& B) { return FString(A) + B; }

	// Joins two path pieces with exactly one "/" between them.
	friend FString operator/(const FString& A, const FString& B);
	friend FString operator/(const FString& A, const TCHAR* B) { return A / FString(B); }
	friend FString operator/(const TCHAR* A, const FString& B) { return FString(A) / B; }
	FString& operator/=(const FString& Other) { return *this = *this / Other; }

	bool operator==(const FString& Other) const { return Data == Other.Data; }
	bool operator!=(const FString& Other) const { return Data != Other.Data; }
	bool operator==(const TCHAR* Other) const { return Data == (Other ? Other : u""); }
	bool operator!=(const TCHAR* Other) const { return !(*this == Other); }
	bool operator<(const FString& Other) const { return Data < Other.Data; }

	bool Equals(const FString& Other, ESearchCase::Type SearchCase = ESearchCase::CaseSensitive) const;
	int32 Compare(const FString& Other, ESearchCase::Type SearchCase = ESearchCase::CaseSensitive) const;

	int32 Find(const FString& SubStr, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase,
			   ESearchDir::Type SearchDir = ESearchDir::FromStart, int32 StartPosition = INDEX_NONE) const;
	bool Contains(const FString& SubStr, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase) const
	{
		return Find(SubStr, SearchCase) != INDEX_NONE;
	}
	bool FindChar(TCHAR Character, int32& OutIndex) const;
	bool FindLastChar(TCHAR Character, int32& OutIndex) const;

	bool StartsWith(const FString& Prefix, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase) const;
	bool EndsWith(const FString& Suffix, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase) const;
	bool RemoveFromStart(const FString& Prefix, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase);
	bool RemoveFromEnd(const FString& Suffix, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase);

	FString Mid(int32 Start, int32 Count = MAX_int32) const;
	FString Left(int32 Count) const { return Mid(0, Count); }
	FString LeftChop(int32 Count) const { return Mid(0, Len() - Count); }
	FString Right(int32 Count) const { return Mid(Len() - (Count < Len() ? Count : Len())); }
	FString RightChop(int32 Count) const { return Mid(Count); }

	FString Replace(const FString& From, const FString& To, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase) const;
	int32 ReplaceInline(const FString& From, const FString& To, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase);

	FString ToLower() const;
	FString ToUpper() const;
	FString TrimStartAndEnd() const;
	FString TrimStart() const;
	FString TrimEnd() const;
	// Takes one double quote off the start and one off the end, each only if it is there.
	FString TrimQuotes(bool* bQuotesRemoved = nullptr) const;
	// Puts a backslash before each double quote that has none yet.
	FString ReplaceQuotesWithEscapedQuotes() const;

	// Splits at every occurrence of Delim; with bCullEmpty, empty pieces are dropped. Returns the count.
	int32 ParseIntoArray(TArray<FString>& OutArray, const TCHAR* Delim, bool bCullEmpty = true) const;
	// Splits at "\r\n", "\r" and "\n"; empty lines are dropped with bCullEmpty.
	int32 ParseIntoArrayLines(TArray<FString>& OutArray, bool bCullEmpty = true) const;
	bool Split(const FString& InS, FString* LeftS, FString* RightS, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase,
			   ESearchDir::Type SearchDir = ESearchDir::FromStart) const;

	// True for an optional sign, digits and at most one decimal point; an empty string is not numeric.
	bool IsNumeric() const;

	static FString FromInt(int32 Value);
	static FString Chr(TCHAR Character) { return FString(std::u16string(1, Character)); }
	static FString Join(const TArray<FString>& Items, const TCHAR* Separator);

	// Formats in the C style with the conversions d i u x X c s f g e p and %%, with flags, width,
	// precision and the l, ll, h, z length modifiers. An integer given to %d or %u is taken at its low
	// 32 bits, as the engine does; %lld takes all 64. %s takes a TCHAR pointer or an FString.
	template <typename... ArgTypes>
	static FString Printf(const TCHAR* Fmt, ArgTypes&&... Args)
	{
		if constexpr (sizeof...(ArgTypes) == 0)
		{
			return StringFormat::Format(Fmt, nullptr, 0);
		}
		else
		{
			const StringFormat::FArg Packed[] = {StringFormat::FArg(Args)...};
			return StringFormat::Format(Fmt, Packed, static_cast<int32>(sizeof...(ArgTypes)));
		}
	}

	auto begin() { return Data.begin(); }
	auto end() { return Data.end(); }
	auto begin() const { return Data.begin(); }
	auto end() const { return Data.end(); }

private:
	std::u16string Data;
};

// Hash consistent with ==: exact units.
CORE_API uint32 GetTypeHash(const FString& Value);

// gtest and other diagnostics print strings as UTF-8.
#include <ostream>
inline std::ostream& operator<<(std::ostream& Stream, const FString& Value)
{
	return Stream << Value.ToUtf8();
}
