#include "JsonTestUtils.h"
#include "TestKit.h"

#include <gtest/gtest.h>

// The first error with the line and the character where it stood; a root that is no object fails without a
// message of the reader's. An odd last byte is half a unit: inside a string the input ends there, after the root
// it is one more unit.
TEST(JsonReaderTests, FailuresCarryTheirMessageAndPosition)
{
	const std::pair<std::u16string, const char*> Cases[] = {
		{u"", "Improperly formatted. Line: 1 Ch: 0"},
		{u"   \n  ", "Invalid Json Token. Line: 2 Ch: 2"},
		{u"{\"a\":1,}", "String token expected, but not found. Line: 1 Ch: 8"},
		{u"{\"a\":1} x", "Unexpected additional input found. Line: 1 Ch: 8"},
		{u"{\"a\":truth}", "Invalid Json Token. Check that your member names have quotes around them! Line: 1 Ch: 10"},
		{u"{\"a\":xyz}", "Invalid Json Token. Line: 1 Ch: 6"},
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
		{u"{\"a\":e1}", "Poorly formed Json Number Token. Line: 1 Ch: 6"},
		{u"{\"a\":01}", "Poorly formed Json Number Token. Line: 1 Ch: 7"},
		{u"{\"a\":-}", "Poorly formed Json Number Token. Line: 1 Ch: 6"},
		{u"{\"a\":1.}", "Poorly formed Json Number Token. Line: 1 Ch: 7"},
		{u"{\"a\":.5}", "Poorly formed Json Number Token. Line: 1 Ch: 6"},
		{u"{\"a\":+1}", "Poorly formed Json Number Token. Line: 1 Ch: 6"},
		{u"{\"a\":1e}", "Poorly formed Json Number Token. Line: 1 Ch: 7"},
		{u"{\"a\":1e+}", "Poorly formed Json Number Token. Line: 1 Ch: 8"},
		{u"{\"a\":--1}", "Poorly formed Json Number Token. Line: 1 Ch: 7"},
		{u"{\"a\":1.2.3}", "Poorly formed Json Number Token. Line: 1 Ch: 9"},
		{u"[]", ""},
		{u"[{\"a\":1}]", ""},
	};
	for (const auto& [Text, Expected] : Cases)
	{
		const FParseResult Result = ParseJson(Text);
		EXPECT_FALSE(Result.bOk) << Expected;
		EXPECT_EQ(Result.Error, FString(Expected)) << FString(Text);
	}
	EXPECT_EQ(ParseJsonBytes(ToUtf16Bytes(u"{\"a\":\"xy") + "A").Error, FString(TEXT("String Token Abruptly Ended. Line: 1 Ch: 9")));
	EXPECT_EQ(ParseJsonBytes(ToUtf16Bytes(u"{\"a\":1}") + "@").Error, FString(TEXT("Unexpected additional input found. Line: 1 Ch: 7")));
}

// Words in any letter case, a comma before an array's end, blanks after the root; a repeated member keeps its first
// place and its last value; "\u0000" adds nothing. What was read, written out, is the golden file.
TEST(JsonReaderTests, AWellFormedDocumentReadsAsWritten)
{
	const FParseResult Result = ParseJson(
		u"{\"z\":\"1\",\"esc\":\"\\u0041\\u0000\\uD83D\\uDE00\\/\\\"\\\\\\b\\f\\n\\r\\t\",\"raw\":\"x\ty\nz\u00E9\",\"t\":tRuE,"
		u"\"T\":TRUE,\"f\":False,\"nul\":NULL,\"arr\":[1,2,],\"e\":{},\"z\":\"3\",\"n\":[-0.5e+3,0,0e5,10E2,1.25,-7,2e-2]}\r\n\t \n");
	ASSERT_TRUE(Result.bOk) << Result.Error;
	EXPECT_EQ(ToUtf16Bytes(WriteJson(Result.Object)), ReadGolden("json-lenient-document-read.json"));
	EXPECT_EQ(WriteJson(ParseJson(u"{}").Object), u"{\r\n}");
	EXPECT_EQ(Result.Object->GetStringField(TEXT("esc")).GetStd(),
			  (std::u16string{u'A', 0xD83D, 0xDE00, u'/', u'"', u'\\', 8, 12, 10, 13, 9}));
}

TEST(JsonReaderTests, AMillionLevelsDeepIsReadWithoutExhaustingTheStack)
{
	const size_t Depth = 1000000;
	FParseResult Result = ParseJson(u"{\"deep\":" + std::u16string(Depth, u'[') + std::u16string(Depth, u']') + u"}");
	ASSERT_TRUE(Result.bOk) << Result.Error;
	EXPECT_EQ(Result.Object->GetArrayField(TEXT("deep")).Num(), 1);
	Result.Object.Reset(); // releasing the nested values must not recurse either

	std::u16string Objects;
	for (size_t Level = 0; Level < Depth; ++Level)
	{
		Objects += u"{\"a\":";
	}
	Result = ParseJson(Objects + u"1" + std::u16string(Depth, u'}'));
	ASSERT_TRUE(Result.bOk) << Result.Error;
	EXPECT_TRUE(Result.Object->GetObjectField(TEXT("a")));
	Result.Object.Reset();

	// Unclosed nesting is rejected at the end of the input.
	EXPECT_EQ(ParseJson(std::u16string(Depth, u'[')).Error, FString(TEXT("Improperly formatted. Line: 1 Ch: 1000000")));
}

TEST(JsonReaderTests, LongDocumentsReadTheSameAcrossEveryBlockBoundary)
{
	// Numbers and words end at every offset of the blocks the reader takes from the stream; each must come
	// back whole, and a line count must run on across the blocks.
	std::u16string Text = u"{";
	for (int Index = 0; Index < 20000; ++Index)
	{
		Text += FString::Printf(TEXT("%s\"k%d\":"), Index > 0 ? TEXT(",\n") : TEXT(""), Index).GetStd();
		Text += Index % 3 == 0 ? (Index % 2 ? u"true" : u"false") : FString::Printf(TEXT("%d.5"), Index).GetStd();
	}
	const FParseResult Result = ParseJson(Text + u"}");
	ASSERT_TRUE(Result.bOk) << Result.Error;
	for (int Index = 0; Index < 20000; ++Index)
	{
		const FString Key = FString::Printf(TEXT("k%d"), Index);
		const double Value = Index % 3 == 0 ? (Index % 2 ? 1.0 : 0.0) : Index + 0.5;
		ASSERT_EQ(Result.Object->GetField(Key)->AsNumber(), Value) << Index;
	}
	EXPECT_EQ(ParseJson(Text + u"@}").Error, FString(TEXT("Invalid Json Token. Line: 20000 Ch: 17")));
}
