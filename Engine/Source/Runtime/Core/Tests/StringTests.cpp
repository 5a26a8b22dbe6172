#include "CoreMinimal.h"

#include "Misc/CString.h"

#include <gtest/gtest.h>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <cwctype>
#include <limits>
#ifndef _WIN32
#include <locale.h>
#endif
#include <random>

namespace
{
	// Compares exactly, whatever the string type's own == does.
	void ExpectUnits(const FString& Actual, const std::u16string& Expected)
	{
		EXPECT_EQ(Actual.GetStd(), Expected) << Actual;
	}
}

TEST(StringTests, PathOperatorPutsExactlyOneSlash)
{
	ExpectUnits(FString(TEXT("a")) / TEXT("b"), u"a/b");
	ExpectUnits(FString(TEXT("a/")) / TEXT("b"), u"a/b");
	ExpectUnits(FString(TEXT("a/")) / TEXT("/b"), u"a/b");
	ExpectUnits(FString(TEXT("a")) / TEXT("/b"), u"a/b");
	ExpectUnits(FString() / TEXT("b"), u"b");
	ExpectUnits(FString(TEXT("/")) / TEXT("b"), u"/b");
	ExpectUnits(FString(TEXT("a")) / FString(), u"a/");
}

TEST(StringTests, PrintfConversions)
{
	ExpectUnits(FString::Printf(TEXT("%d|%u|%s|%lld"), -5, 7u, TEXT("x"), -9000000000LL), u"-5|7|x|-9000000000");
	ExpectUnits(FString::Printf(TEXT("%s and %s"), FString(TEXT("one")), TEXT("two")), u"one and two");
	ExpectUnits(FString::Printf(TEXT("%.17g"), 0.1), u"0.10000000000000001");
	ExpectUnits(FString::Printf(TEXT("%.17g"), 3.0), u"3");
	ExpectUnits(FString::Printf(TEXT("%08X|%x|%%|%c"), 0xABCu, 255, TCHAR(u'Ω')), u"00000ABC|ff|%|Ω");
	ExpectUnits(FString::Printf(TEXT("[%5s][%-3s]"), TEXT("ab"), TEXT("c")), u"[   ab][c  ]");
	ExpectUnits(FString::Printf(TEXT("no conversions")), u"no conversions");
}

// Real numbers print the same on every system; these texts are the C library's in the "C" locale.
TEST(StringTests, RealNumbersPrintTheSameTextOnEverySystem)
{
	const double Inf = std::numeric_limits<double>::infinity();
	ExpectUnits(FString::Printf(TEXT("%f|%.0f|%.1f|%.3f"), 2.5, 2.5, 0.05, -1234.56789), u"2.500000|2|0.1|-1234.568");
	ExpectUnits(FString::Printf(TEXT("%e|%.2E|%.0e"), 123456.0, -0.000123, 5e-300), u"1.234560e+05|-1.23E-04|5e-300");
	ExpectUnits(FString::Printf(TEXT("%g|%g|%g|%.3g|%.0g|%G"), 100000.0, 1000000.0, 0.0001, 3.14159, 0.5, 1e-5),
				u"100000|1e+06|0.0001|3.14|0.5|1E-05");
	ExpectUnits(FString::Printf(TEXT("[%8.2f][%-8.2f][%08.2f][%+.1f][% .1f]"), 3.14159, 3.14159, -3.14159, 2.0, 2.0),
				u"[    3.14][3.14    ][-0003.14][+2.0][ 2.0]");
	ExpectUnits(FString::Printf(TEXT("%f|%F|%06f|%g"), Inf, -Inf, Inf, -0.0), u"inf|-INF|   inf|-0");
	ExpectUnits(FString::Printf(TEXT("%.17g|%.17g"), 1e300 * 10, 2.2250738585072014e-308), u"1.0000000000000001e+301|2.2250738585072014e-308");
	// "#" keeps the point and the zeros; a negative precision from "*" counts as none.
	ExpectUnits(FString::Printf(TEXT("%#.0f|%#g|%#.3g|%#.0e"), 2.5, 1.0, 0.0001, 3.0), u"2.|1.00000|0.000100|3.e+00");
	ExpectUnits(FString::Printf(TEXT("%.*f|%.*f"), -3, 1.5, 2, 1.5), u"1.500000|1.50");
}

#ifndef _WIN32
// Where the C library is glibc it is the reference: every directive gives its text for thousands of doubles.
TEST(StringTests, RealNumbersPrintAsTheCLibraryDoesForRandomValues)
{
	std::mt19937_64 Random(20261123);
	const char* Directives[] = {"%f", "%.0f", "%.3f", "%12.4f", "%-12.1f|", "%012.2f", "%+f", "% f", "%e", "%.0e", "%+.10E",
								"%g", "%.0g", "%.1g", "%.17g", "%G", "%15.6g", "%-9g|", "%#.0f", "%#.0e", "%#g", "%#.3G",
								"%#.0g"};
	for (int Round = 0; Round < 4000; ++Round)
	{
		uint64 Bits = Random();
		double Value = 0.0;
		if (Round % 3 == 0)
		{
			// Values of every magnitude and kind, denormals, infinities and NaNs among them.
			std::memcpy(&Value, &Bits, sizeof(Value));
		}
		else
		{
			// Values of everyday size, where rounding of the shown digits matters most.
			Value = std::ldexp(static_cast<double>(Bits >> 11), -static_cast<int>(Bits % 80));
			Value = (Bits & 1) ? -Value : Value;
		}
		for (const char* Directive : Directives)
		{
			char Expected[2048];
			std::snprintf(Expected, sizeof(Expected), Directive, Value);
			const FString Wide = FString::FromUtf8(Directive);
			EXPECT_EQ(FString::Printf(*Wide, Value).ToUtf8(), std::string(Expected)) << Directive << " of " << Value;
		}
		if (HasFailure())
		{
			break;
		}
	}
}
#endif

TEST(StringTests, DecimalNumbersReadTheSameOnEverySystem)
{
	EXPECT_EQ(FCString::Atod(TEXT("  +1.5x")), 1.5);
	EXPECT_EQ(FCString::Atod(TEXT("-.25")), -0.25);
	EXPECT_EQ(FCString::Atod(TEXT("5.")), 5.0);
	EXPECT_EQ(FCString::Atod(TEXT("0.1")), 0.1);
	EXPECT_EQ(FCString::Atod(TEXT("2.2250738585072011e-308")), 2.2250738585072011e-308);
	EXPECT_EQ(FCString::Atod(TEXT("4.9e-324")), 4.9e-324);
	// An exponent without digits is not part of the number.
	EXPECT_EQ(FCString::Atod(TEXT("7e")), 7.0);
	EXPECT_EQ(FCString::Atod(TEXT("7e+x")), 7.0);
	EXPECT_EQ(FCString::Atod(TEXT("1,5")), 1.0);
	EXPECT_EQ(FCString::Atod(TEXT("abc")), 0.0);
	EXPECT_EQ(FCString::Atod(TEXT("-")), 0.0);
	EXPECT_EQ(FCString::Atod(nullptr), 0.0);
	// Out of range: infinity when too large, zero (with its sign) when too small, however it is written.
	EXPECT_EQ(FCString::Atod(TEXT("1e400")), std::numeric_limits<double>::infinity());
	EXPECT_EQ(FCString::Atod(TEXT("-123456789e301")), -std::numeric_limits<double>::infinity());
	EXPECT_EQ(FCString::Atod(TEXT("0.000000001e-320")), 0.0);
	EXPECT_TRUE(std::signbit(FCString::Atod(TEXT("-1e-999"))));
	EXPECT_EQ(FCString::Atod(TEXT("0.0000000000000000000000000000000000000001e330")), 1e290);
	EXPECT_EQ(FCString::Atod(TEXT("0e99999999999")), 0.0);
	// A float is read straight, rounded once: float's largest value stays finite, beyond it is infinite.
	EXPECT_EQ(FCString::Atof(TEXT("3.4028235e38")), std::numeric_limits<float>::max());
	EXPECT_EQ(FCString::Atof(TEXT("3.5e38")), std::numeric_limits<float>::infinity());
	EXPECT_EQ(FCString::Atof(TEXT(" 0.1")), 0.1f);
	EXPECT_EQ(FCString::Atof(TEXT("1e-50")), 0.0f);
}

#ifndef _WIN32
// glibc's strtod in the "C" locale is the reference for random decimal texts.
TEST(StringTests, DecimalNumbersReadAsTheCLibraryDoesForRandomTexts)
{
	std::mt19937 Random(1123);
	const char Alphabet[] = "0123456789.eE+- x";
	for (int Round = 0; Round < 20000; ++Round)
	{
		std::string Text;
		const int Length = 1 + static_cast<int>(Random() % 24);
		for (int Index = 0; Index < Length; ++Index)
		{
			// Mostly digits, so that many texts are numbers.
			Text += Random() % 3 ? static_cast<char>('0' + Random() % 10) : Alphabet[Random() % (sizeof(Alphabet) - 1)];
		}
		const double Expected = std::strtod(Text.c_str(), nullptr);
		const double Actual = FCString::Atod(*FString::FromUtf8(Text));
		if (Text.find_first_of("xX") != std::string::npos || Text.find("nan") != std::string::npos)
		{
			continue; // hex and named forms are the C library's alone
		}
		ASSERT_EQ(std::memcmp(&Expected, &Actual, sizeof(double)), 0) << Text << ": " << Expected << " vs " << Actual;
	}
}
#endif

TEST(StringTests, PrintfPercentDOfWideNumberShowsLowHalfAsSigned)
{
	const int64 Big = 4294967296LL + 5; // 2^32 + 5
	ExpectUnits(FString::Printf(TEXT("%d"), Big), u"5");
	ExpectUnits(FString::Printf(TEXT("%d"), int64(2147483648LL)), u"-2147483648");
	ExpectUnits(FString::Printf(TEXT("%d"), int64(123456789)), u"123456789");
	ExpectUnits(FString::Printf(TEXT("%u"), int64(-1)), u"4294967295");
	ExpectUnits(FString::Printf(TEXT("%lld"), int64(2147483648LL)), u"2147483648");
}

// A log keeps a million formatted lines: each must hold no more room than a string made for exactly its text,
// and one very long line must not change what the lines after it hold.
TEST(StringTests, PrintfResultsHoldNoSpareCapacity)
{
	const auto ExactCapacity = [](const FString& Text) { return std::u16string(Text.GetStd().data(), Text.GetStd().size()).capacity(); };
	const FString Line = FString::Printf(TEXT("LogCook: Display: Cooked packages %d Packages Remain %i Total %u for %s"),
										 -2147483647 - 1, 42, 4294967295u, TEXT("/Game/Mods/Islands/Map_000001"));
	ExpectUnits(Line, u"LogCook: Display: Cooked packages -2147483648 Packages Remain 42 Total 4294967295 for /Game/Mods/Islands/Map_000001");
	EXPECT_EQ(Line.GetStd().capacity(), ExactCapacity(Line));

	const std::u16string Long(100000, u'x');
	const FString LongLine = FString::Printf(TEXT("[%s]"), Long.c_str());
	EXPECT_EQ(LongLine.Len(), 100002);
	EXPECT_EQ(LongLine.GetStd().capacity(), ExactCapacity(LongLine));
	const FString After = FString::Printf(TEXT("%d%%%c of %s"), 7, TCHAR(u'Ω'), TEXT("the rest of the log"));
	ExpectUnits(After, u"7%Ω of the rest of the log");
	EXPECT_EQ(After.GetStd().capacity(), ExactCapacity(After));
}

TEST(StringTests, CaseInsensitiveSearchFoldsNonAsciiUnits)
{
	const FString Text(TEXT("Ünïcode MAP.UMAP"));
	EXPECT_EQ(Text.Find(TEXT("üNÏ")), 0);
	EXPECT_EQ(Text.Find(TEXT(".umap")), 11);
	EXPECT_EQ(Text.Find(TEXT(".umap"), ESearchCase::CaseSensitive), INDEX_NONE);
	EXPECT_EQ(Text.Find(TEXT("zzz")), INDEX_NONE);
	EXPECT_EQ(Text.Find(TEXT("MAP"), ESearchCase::IgnoreCase, ESearchDir::FromEnd), 13);
	EXPECT_TRUE(FString(TEXT("ÄRGER")).Equals(TEXT("ärger"), ESearchCase::IgnoreCase));
	EXPECT_FALSE(FString(TEXT("ÄRGER")).Equals(TEXT("ärger")));
	EXPECT_FALSE(FString(TEXT("ab")) == FString(TEXT("AB")));
	EXPECT_EQ(FChar::ToLower(u'Σ'), u'σ');
	EXPECT_EQ(FChar::ToLower(u'Ж'), u'ж');
}

// The folding table must give, unit for unit, what the C library's C.UTF-8 locale gave before it, so that no
// name matches differently than it did. Hand-picked units pin the mappings a mod author meets most.
TEST(StringTests, CaseTableFoldsEveryUnitAsTheUtf8LocaleDoes)
{
#ifdef _WIN32
	GTEST_SKIP() << "the reference is glibc's C.UTF-8 locale; the table itself is the same code on Windows";
#else
	EXPECT_EQ(FChar::ToUpper(u'ß'), u'ß'); // no single-unit capital
	EXPECT_EQ(FChar::ToLower(u'İ'), u'i');
	EXPECT_EQ(FChar::ToUpper(u'ÿ'), u'Ÿ');
	EXPECT_EQ(FChar::ToLower(u'Ω'), u'ω');
	EXPECT_EQ(FChar::ToUpper(u'ǆ'), u'Ǆ');
	EXPECT_EQ(FChar::ToLower(u'Ａ'), u'ａ');
	EXPECT_EQ(FChar::ToLower(static_cast<TCHAR>(0xD801)), 0xD801); // half of a pair stays as it is

	locale_t Locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", static_cast<locale_t>(0));
	if (!Locale)
	{
		GTEST_SKIP() << "no C.UTF-8 locale to compare with";
	}
	int32 Differences = 0;
	for (uint32 Unit = 0; Unit <= 0xFFFF; ++Unit)
	{
		const TCHAR Character = static_cast<TCHAR>(Unit);
		const bool bSurrogate = Unit >= 0xD800 && Unit <= 0xDFFF;
		const wint_t Lower = towlower_l(Unit, Locale);
		const wint_t Upper = towupper_l(Unit, Locale);
		const TCHAR ExpectedLower = (bSurrogate || Lower > 0xFFFF) ? Character : static_cast<TCHAR>(Lower);
		const TCHAR ExpectedUpper = (bSurrogate || Upper > 0xFFFF) ? Character : static_cast<TCHAR>(Upper);
		if (FChar::ToLower(Character) != ExpectedLower || FChar::ToUpper(Character) != ExpectedUpper)
		{
			if (++Differences <= 5)
			{
				ADD_FAILURE() << "unit " << std::hex << Unit << ": lower " << uint32(FChar::ToLower(Character)) << " vs "
							  << uint32(ExpectedLower) << ", upper " << uint32(FChar::ToUpper(Character)) << " vs " << uint32(ExpectedUpper);
			}
		}
	}
	freelocale(Locale);
	EXPECT_EQ(Differences, 0);
#endif
}

TEST(StringTests, ReplaceIsCaseInsensitiveAndReplacesEveryOccurrence)
{
	ExpectUnits(FString(TEXT("a.umap.UMAP")).Replace(TEXT(".umap"), TEXT("")), u"a");
	ExpectUnits(FString(TEXT("xAx")).Replace(TEXT("a"), TEXT("aa")), u"xaax");
	ExpectUnits(FString(TEXT("abc")).Replace(TEXT(""), TEXT("z")), u"abc");
	ExpectUnits(FString(TEXT("aaa")).Replace(TEXT("aa"), TEXT("b")), u"ba");
}

TEST(StringTests, StartsEndsMidAndRemoveFromEnd)
{
	const FString Path(TEXT("C:/Kit/Saved/Mods.db"));
	EXPECT_TRUE(Path.StartsWith(TEXT("c:/kit")));
	EXPECT_FALSE(Path.StartsWith(TEXT("")));
	EXPECT_TRUE(Path.EndsWith(TEXT("MODS.DB")));
	EXPECT_FALSE(Path.EndsWith(TEXT("x/C:/Kit/Saved/Mods.db")));
	ExpectUnits(Path.Mid(7), u"Saved/Mods.db");
	ExpectUnits(Path.Mid(7, 5), u"Saved");
	ExpectUnits(Path.Mid(7, 0x7FFFFFFF), u"Saved/Mods.db");
	ExpectUnits(Path.Mid(100), u"");
	ExpectUnits(Path.Mid(-3, 5), u"C:");

	FString Dir(TEXT("Output/"));
	EXPECT_TRUE(Dir.RemoveFromEnd(TEXT("/")));
	ExpectUnits(Dir, u"Output");
	EXPECT_FALSE(Dir.RemoveFromEnd(TEXT("/")));
	FString Tags(TEXT("Map,Mod,"));
	Tags.RemoveFromEnd(TEXT(","));
	ExpectUnits(Tags, u"Map,Mod");
}

TEST(StringTests, ParseIntoArrayKeepsOrDropsEmptyPieces)
{
	TArray<FString> Pieces;
	EXPECT_EQ(FString(TEXT(",Map,,Mod,")).ParseIntoArray(Pieces, TEXT(","), false), 5);
	ExpectUnits(Pieces[0], u"");
	ExpectUnits(Pieces[1], u"Map");
	ExpectUnits(Pieces[2], u"");
	ExpectUnits(Pieces[3], u"Mod");
	ExpectUnits(Pieces[4], u"");

	EXPECT_EQ(FString(TEXT(",Map,,Mod,")).ParseIntoArray(Pieces, TEXT(","), true), 2);
	ExpectUnits(Pieces[1], u"Mod");

	EXPECT_EQ(FString().ParseIntoArray(Pieces, TEXT(","), false), 0);
	EXPECT_EQ(FString(TEXT("a::b")).ParseIntoArray(Pieces, TEXT("::"), true), 2);
	ExpectUnits(Pieces[1], u"b");
}

TEST(StringTests, ParseIntoArrayLinesSplitsEveryKindOfBreak)
{
	TArray<FString> Lines;
	FString(TEXT("one\r\ntwo\nthree\rfour\r\n\r\nfive")).ParseIntoArrayLines(Lines);
	ASSERT_EQ(Lines.Num(), 5);
	ExpectUnits(Lines[3], u"four");
	ExpectUnits(Lines[4], u"five");

	FString(TEXT("a\n\nb\n")).ParseIntoArrayLines(Lines, false);
	ASSERT_EQ(Lines.Num(), 3);
	ExpectUnits(Lines[1], u"");
}

TEST(StringTests, QuotesTrimmedAndEscaped)
{
	ExpectUnits(FString(TEXT("\"Title\"")).TrimQuotes(), u"Title");
	ExpectUnits(FString(TEXT("\"Title")).TrimQuotes(), u"Title");
	ExpectUnits(FString(TEXT("Title\"")).TrimQuotes(), u"Title");
	ExpectUnits(FString(TEXT("\"")).TrimQuotes(), u"");
	ExpectUnits(FString(TEXT("\"\"\"")).TrimQuotes(), u"\"");
	ExpectUnits(FString(TEXT("say \"hi\"")).ReplaceQuotesWithEscapedQuotes(), u"say \\\"hi\\\"");
	ExpectUnits(FString(TEXT("already \\\"ok")).ReplaceQuotesWithEscapedQuotes(), u"already \\\\\"ok");
}

TEST(StringTests, NumericTextAndFromInt)
{
	EXPECT_TRUE(FString(TEXT("123")).IsNumeric());
	EXPECT_TRUE(FString(TEXT("-1.5")).IsNumeric());
	EXPECT_TRUE(FString(TEXT("+7")).IsNumeric());
	EXPECT_FALSE(FString().IsNumeric());
	EXPECT_FALSE(FString(TEXT("-")).IsNumeric());
	EXPECT_FALSE(FString(TEXT("1.2.3")).IsNumeric());
	EXPECT_FALSE(FString(TEXT("12a")).IsNumeric());
	EXPECT_FALSE(FString(TEXT(" 12")).IsNumeric());
	ExpectUnits(FString::FromInt(-2147483647 - 1), u"-2147483648");
	ExpectUnits(FString::FromInt(0), u"0");
}

TEST(StringTests, Utf8ConversionReplacesInvalidInputAndRoundTrips)
{
	const std::string Valid = "Mods/Île \xF0\x9F\x8E\xAE";
	const FString Wide = FString::FromUtf8(Valid);
	EXPECT_EQ(Wide.Len(), 11); // the emoji takes a surrogate pair
	EXPECT_EQ(Wide.ToUtf8(), Valid);

	// Stray continuation byte, truncated sequence, overlong form, encoded surrogate, byte FF.
	ExpectUnits(FString::FromUtf8("a\x80" "b"), u"a\uFFFDb");
	ExpectUnits(FString::FromUtf8("a\xE2\x82"), u"a\uFFFD");
	ExpectUnits(FString::FromUtf8("\xC0\xAF"), u"\uFFFD\uFFFD");
	ExpectUnits(FString::FromUtf8("\xED\xA0\x80z"), u"\uFFFDz");
	ExpectUnits(FString::FromUtf8(std::string("x\0y\xFF", 4)), std::u16string(u"x\0y\uFFFD", 4));

	// ASCII runs of every length up to two words, between whole, broken and stray sequences: each piece
	// decodes the same inside a long text as alone.
	const std::string Pieces[] = {"\xC3\x8E", "\xE2\x82\xAC", "\xF0\x9F\x8E\xAE", "\x80", "\xFF", "\xE2\x82"};
	std::string Long;
	std::u16string Expected;
	for (int Round = 0; Round < 120; ++Round)
	{
		const std::string Ascii(static_cast<size_t>(Round % 19), static_cast<char>('!' + Round % 90));
		const std::string& Piece = Pieces[Round % 6];
		Long += Ascii + Piece;
		Expected += FString::FromUtf8(Ascii).GetStd() + FString::FromUtf8(Piece).GetStd();
	}
	EXPECT_EQ(FString::FromUtf8(Long).GetStd(), Expected);

	// A lone surrogate on the way out becomes U+FFFD.
	const std::u16string Lone = {u'a', char16_t(0xD800), u'b'};
	EXPECT_EQ(FString(Lone).ToUtf8(), "a\xEF\xBF\xBD" "b");
}

TEST(StringTests, NativeBytesComeBackExactlyWhateverTheyAre)
{
	// Invalid bytes escape one by one; what is valid UTF-8 reads as it always does.
	ExpectUnits(FString::FromNative("Caf\xE9"), u"Caf\xDCE9");
	ExpectUnits(FString::FromNative("\xE2\x82\xAC \xE2\x82 x"), u"\u20AC \xDCE2\xDC82 x");
	ExpectUnits(FString::FromNative("\xED\xA0\x80"), u"\xDCED\xDCA0\xDC80"); // an encoded surrogate
	ExpectUnits(FString::FromNative("\xF0\x9F\x98\x80\xC0\xAF"), u"\U0001F600\xDCC0\xDCAF");
	// Shown to a user the escapes read as replacement characters, never as bytes of another encoding.
	EXPECT_EQ(FString::FromNative("Caf\xE9").ToUtf8(), "Caf\xEF\xBF\xBD");
	// A lone surrogate that no byte escapes to still leaves as U+FFFD.
	EXPECT_EQ(FString(std::u16string(u"\xD800|\xDC7F")).ToNative(), "\xEF\xBF\xBD|\xEF\xBF\xBD");

	std::mt19937 Random(7);
	for (int Round = 0; Round < 20000; ++Round)
	{
		std::string Bytes(Random() % 12, '\0');
		for (char& Byte : Bytes)
		{
			// Mostly bytes around the UTF-8 boundaries, so that sequences are often nearly right.
			static const unsigned char Picks[] = {'a', '/', 0x7F, 0x80, 0xBF, 0xC2, 0xDF, 0xE0, 0xED, 0xEF, 0xF0, 0xF4, 0xF5, 0xFF};
			Byte = static_cast<char>(Random() % 3 == 0 ? Random() % 256 : Picks[Random() % sizeof(Picks)]);
		}
		const FString Name = FString::FromNative(Bytes);
		ASSERT_EQ(Name.ToNative(), Bytes) << "round " << Round;
		const std::string Valid = FString::FromUtf8(Bytes).ToUtf8();
		ASSERT_EQ(FString::FromNative(Valid).GetStd(), FString::FromUtf8(Valid).GetStd());
	}
}
