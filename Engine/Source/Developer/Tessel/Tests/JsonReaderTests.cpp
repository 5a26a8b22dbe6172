#include "JsonTestUtils.h"

#include <gtest/gtest.h>

namespace
{
	// Every notation the reader reports for the text, and the message it ends with.
	TArray<EJsonNotation> Notations(const std::u16string& Text, FString* OutError = nullptr)
	{
		TArray<uint8> Bytes = ToUtf16Bytes(Text);
		FMemoryArchive Archive(Bytes, true);
		JsonReader Reader(&Archive);
		TArray<EJsonNotation> Seen;
		EJsonNotation Notation;
		int32 Guard = 0;
		while (Reader.ReadNext(Notation) && ++Guard < 1000)
		{
			Seen.Add(Notation);
		}
		if (OutError)
		{
			*OutError = Reader.GetErrorMessage();
		}
		return Seen;
	}
}

TEST(JsonReaderTests, FailuresCarryTheirMessageAndPosition)
{
	struct FCase
	{
		std::u16string Text;
		const char* Expected;
	};
	const FCase Cases[] = {
		{u"", "Improperly formatted. Line: 1 Ch: 0"},
		{u"   \n  ", "Invalid Json Token. Line: 2 Ch: 2"},
		{u"{\"a\":1,}", "String token expected, but not found. Line: 1 Ch: 8"},
		{u"{\"a\":1} x", "Unexpected additional input found. Line: 1 Ch: 8"},
		{u"{\"a\":truth}", "Invalid Json Token. Check that your member names have quotes around them! Line: 1 Ch: 10"},
		{u"{\"a\":xyz}", "Invalid Json Token. Line: 1 Ch: 6"},
		{u"{\"a\":e1}", "Poorly formed Json Number Token. Line: 1 Ch: 6"},
		{u"{\"a\":01}", "Poorly formed Json Number Token. Line: 1 Ch: 7"},
		{u"{\"a\":\"x\\q\"}", "Bad Json escaped char. Line: 1 Ch: 9"},
		{u"{\"a\":\"\\u00G1\"}", "Invalid Hexadecimal digit parsed. Line: 1 Ch: 11"},
		{u"{\"a\":\"abc", "String Token Abruptly Ended. Line: 1 Ch: 9"},
		{u"{\"a\":\"abc\\", "String Token Abruptly Ended. Line: 1 Ch: 10"},
		{u"{\"a\":\"", "String Token Abruptly Ended. Line: 1 Ch: 6"},
		{u"]", "Open Curly or Square Brace token expected, but not found. Line: 1 Ch: 1"},
		{u"\"root\"", "Open Curly or Square Brace token expected, but not found. Line: 1 Ch: 6"},
		{u"[1,,2]", "Unknown Error Occurred Line: 1 Ch: 4"},
		{u"{\"a\":,}", "Unknown Error Occurred Line: 1 Ch: 6"},
		{u"[1 2]", "Comma token expected, but not found. Line: 1 Ch: 4"},
		{u"{\"a\":1\n \"b\":2}", "Comma token expected, but not found. Line: 2 Ch: 4"},
		{u"{\"a\" 1}", "Colon token expected, but not found. Line: 1 Ch: 6"},
		{u"{1:2}", "String token expected, but not found. Line: 1 Ch: 2"},
		{std::u16string(u"{\0}", 3), "Invalid Json Token. Line: 1 Ch: 2"},
		{u"\uFEFF{}", "Invalid Json Token. Line: 1 Ch: 1"},
		{u"{\"a\":1", "Improperly formatted. Line: 1 Ch: 6"},
		{u"{\"a\":\"x\ty\nz\",\"b\":nope}", "Invalid Json Token. Check that your member names have quotes around them! Line: 1 Ch: 21"},
		{u"{\r\r\r 5}", "String token expected, but not found. Line: 1 Ch: 6"},
		{u"{\"a\":-}", "Poorly formed Json Number Token. Line: 1 Ch: 6"},
	};
	for (const FCase& Case : Cases)
	{
		const FParseResult Result = ParseJson(Case.Text);
		EXPECT_FALSE(Result.bOk) << Case.Expected;
		EXPECT_EQ(Result.Error, FString(Case.Expected));
	}
}

TEST(JsonReaderTests, NumbersFollowTheAutomaton)
{
	const std::pair<const char16_t*, double> Good[] = {
		{u"-0.5e+3", -500.0}, {u"0", 0.0}, {u"0e5", 0.0}, {u"10E2", 1000.0}, {u"1.25", 1.25}, {u"-7", -7.0}, {u"2e-2", 0.02},
	};
	for (const auto& [Text, Value] : Good)
	{
		const FParseResult Result = ParseJson(u"{\"n\":" + std::u16string(Text) + u"}");
		ASSERT_TRUE(Result.bOk) << Result.Error;
		EXPECT_DOUBLE_EQ(Result.Object->GetNumberField(TEXT("n")), Value);
	}
	for (const char16_t* Bad : {u"01", u"-", u"1.", u".5", u"+1", u"1e", u"1e+", u"--1", u"1.2.3"})
	{
		const FParseResult Result = ParseJson(u"{\"n\":" + std::u16string(Bad) + u"}");
		EXPECT_FALSE(Result.bOk);
		EXPECT_TRUE(Result.Error.StartsWith(TEXT("Poorly formed Json Number Token.")));
	}
}

TEST(JsonReaderTests, StringsEscapesAndRawControlCharacters)
{
	const FParseResult Result = ParseJson(u"{\"a\":\"\\u0041\\u0000\\uD83D\\uDE00\\/\\\"\\\\\\b\\f\\n\\r\\t\","
										  u"\"raw\":\"x\ty\nz\u00E9\"}");
	ASSERT_TRUE(Result.bOk) << Result.Error;
	const std::u16string Expected = {u'A', 0xD83D, 0xDE00, u'/', u'"', u'\\', 8, 12, 10, 13, 9};
	EXPECT_EQ(Result.Object->GetStringField(TEXT("a")).GetStd(), Expected);
	EXPECT_EQ(Result.Object->GetStringField(TEXT("raw")).GetStd(), u"x\ty\nz\u00E9");
}

TEST(JsonReaderTests, LenientWordsTrailingArrayCommaAndBlanksAfterTheRoot)
{
	const FParseResult Result =
		ParseJson(u"{\"t\":tRuE,\"T\":TRUE,\"f\":False,\"n\":NULL,\"arr\":[1,2,],\"e\":{}}\r\n\t \n");
	ASSERT_TRUE(Result.bOk) << Result.Error;
	EXPECT_TRUE(Result.Object->GetBoolField(TEXT("t")));
	EXPECT_TRUE(Result.Object->GetBoolField(TEXT("T")));
	EXPECT_FALSE(Result.Object->GetBoolField(TEXT("f")));
	EXPECT_TRUE(Result.Object->HasField(TEXT("f")));
	EXPECT_EQ(Result.Object->GetField(TEXT("n"))->Type, EJson::Null);
	EXPECT_EQ(Result.Object->GetArrayField(TEXT("arr")).Num(), 2);
	ASSERT_TRUE(Result.Object->GetObjectField(TEXT("e")));
	EXPECT_EQ(Result.Object->GetObjectField(TEXT("e"))->Values.Num(), 0);
}

TEST(JsonReaderTests, RootMustBeAnObjectForTheDocument)
{
	FString Error;
	const TArray<EJsonNotation> Steps = Notations(u"[]", &Error);
	EXPECT_EQ(Steps, (TArray<EJsonNotation>{EJsonNotation::ArrayStart, EJsonNotation::ArrayEnd}));
	EXPECT_TRUE(Error.IsEmpty());
	EXPECT_FALSE(ParseJson(u"[]").bOk);
	EXPECT_FALSE(ParseJson(u"[{\"a\":1}]").bOk);

	const FParseResult Empty = ParseJson(u"{}");
	ASSERT_TRUE(Empty.bOk);
	EXPECT_EQ(Empty.Object->Values.Num(), 0);
}

TEST(JsonReaderTests, AfterAnErrorReadingStaysOver)
{
	TArray<uint8> Bytes = ToUtf16Bytes(u"{\"a\" 1}");
	FMemoryArchive Archive(Bytes, true);
	JsonReader Reader(&Archive);
	EJsonNotation Notation;
	ASSERT_TRUE(Reader.ReadNext(Notation));
	EXPECT_EQ(Notation, EJsonNotation::ObjectStart);
	ASSERT_TRUE(Reader.ReadNext(Notation));
	EXPECT_EQ(Notation, EJsonNotation::Error);
	const FString First = Reader.GetErrorMessage();
	EXPECT_FALSE(Reader.ReadNext(Notation));
	EXPECT_EQ(Notation, EJsonNotation::Error);
	EXPECT_EQ(Reader.GetErrorMessage(), First);

	JsonReader NoStream(nullptr);
	EXPECT_TRUE(NoStream.ReadNext(Notation));
	EXPECT_EQ(NoStream.GetErrorMessage(), FString(TEXT("Null Stream Line: 1 Ch: 0")));
}

TEST(JsonReaderTests, DuplicateMembersAndMemberOrder)
{
	const FParseResult Result = ParseJson(u"{\"z\":\"1\",\"a\":\"2\",\"z\":\"3\"}");
	ASSERT_TRUE(Result.bOk);
	TArray<FString> Keys;
	Result.Object->Values.GetKeys(Keys);
	EXPECT_EQ(Keys, (TArray<FString>{TEXT("z"), TEXT("a")}));
	EXPECT_EQ(Result.Object->GetStringField(TEXT("z")), FString(TEXT("3")));
}

TEST(JsonReaderTests, MismatchedClosersNeitherCrashNorHang)
{
	for (const char16_t* Text : {u"[}", u"{\"a\":[1,}]}", u"{\"a\":[}}", u"{\"a\":]}", u"[[}]", u"{\"a\":{]}", u"}{", u"]]]"})
	{
		const FParseResult Result = ParseJson(Text);
		if (Result.bOk)
		{
			// Whatever was built must be safe to walk and to write.
			EXPECT_FALSE(WriteJson(Result.Object).empty());
		}
	}
}

TEST(JsonReaderTests, AMillionLevelsDeepIsReadWithoutExhaustingTheStack)
{
	const size_t Depth = 1000000;
	std::u16string Arrays = u"{\"deep\":" + std::u16string(Depth, u'[') + std::u16string(Depth, u']') + u"}";
	FParseResult Result = ParseJson(Arrays);
	ASSERT_TRUE(Result.bOk) << Result.Error;
	EXPECT_EQ(Result.Object->GetArrayField(TEXT("deep")).Num(), 1);
	Result.Object.Reset(); // releasing the nested values must not recurse either

	std::u16string Objects;
	for (size_t Level = 0; Level < Depth; ++Level)
	{
		Objects += u"{\"a\":";
	}
	Objects += u"1" + std::u16string(Depth, u'}');
	Result = ParseJson(Objects);
	ASSERT_TRUE(Result.bOk) << Result.Error;
	EXPECT_TRUE(Result.Object->GetObjectField(TEXT("a")));
	Result.Object.Reset();

	// Unclosed nesting is rejected at the end of the input.
	EXPECT_EQ(ParseJson(std::u16string(Depth, u'[')).Error, FString(TEXT("Improperly formatted. Line: 1 Ch: 1000000")));
}

TEST(JsonReaderTests, OddByteCountEndsInsteadOfLooping)
{
	// Half a unit at the end of a string: the reader must reach the end of the input and stop.
	TArray<uint8> Bytes = ToUtf16Bytes(u"{\"a\":\"xy");
	Bytes.Add(0x41);
	FMemoryArchive Archive(Bytes, true);
	TSharedRef<JsonReader> Reader = MakeShared<JsonReader>(&Archive);
	TSharedPtr<FJsonObject> Object;
	EXPECT_FALSE(JsonSerializer::Deserialize(Reader, Object));
	EXPECT_TRUE(Reader->GetErrorMessage().StartsWith(TEXT("String Token Abruptly Ended.")));
}

TEST(JsonReaderTests, LongDocumentsReadTheSameAcrossEveryBlockBoundary)
{
	// Numbers and words end at every offset of the blocks the reader takes from the stream; each must come
	// back whole, and a line count must run on across the blocks.
	std::u16string Text = u"{";
	for (int Index = 0; Index < 20000; ++Index)
	{
		const std::u16string Key = FString::Printf(TEXT("k%d"), Index).GetStd();
		Text += (Index > 0 ? u",\n\"" : u"\"") + Key + u"\":";
		Text += Index % 3 == 0 ? (Index % 2 ? u"true" : u"false") : FString::Printf(TEXT("%d.5"), Index).GetStd();
	}
	Text += u"}";
	const FParseResult Result = ParseJson(Text);
	ASSERT_TRUE(Result.bOk) << Result.Error;
	for (int Index = 0; Index < 20000; ++Index)
	{
		const FString Key = FString::Printf(TEXT("k%d"), Index);
		if (Index % 3 == 0)
		{
			ASSERT_EQ(Result.Object->GetBoolField(Key), Index % 2 == 1) << Index;
		}
		else
		{
			ASSERT_EQ(Result.Object->GetNumberField(Key), Index + 0.5) << Index;
		}
	}

	const FParseResult Broken = ParseJson(Text.substr(0, Text.size() - 1) + u"@}");
	EXPECT_EQ(Broken.Error, FString(TEXT("Invalid Json Token. Line: 20000 Ch: 17")));

	// A stray odd byte after the root is read as a unit of its own, as it always was.
	TArray<uint8> Bytes = ToUtf16Bytes(u"{\"a\":1}");
	Bytes.Add('@');
	FMemoryArchive Archive(Bytes, true);
	TSharedRef<JsonReader> Reader = MakeShared<JsonReader>(&Archive);
	TSharedPtr<FJsonObject> Object;
	EXPECT_FALSE(JsonSerializer::Deserialize(Reader, Object));
	EXPECT_EQ(Reader->GetErrorMessage(), FString(TEXT("Unexpected additional input found. Line: 1 Ch: 7")));
}
