#include "JsonTestUtils.h"
#include "TestKit.h"

#include <gtest/gtest.h>

#include <cmath>

// A compact document written out: arrays of numbers, words and nulls stay on one line, other arrays and objects open
// on their own; strings escape what JSON must, numbers print with 17 digits. What was written reads back to the
// same text, members in order.
TEST(JsonWriterTests, LayoutOfEveryKindOfMemberAndItsWayBack)
{
	const FParseResult Root =
		ParseJson(u"{\"n\":[1,2],\"s\":[\"x\",3],\"e\":[],\"o\":{},\"b\":[true,false],\"z\":[null,null],\"d\":0.1,\"t\":true,"
				  u"\"u\":null,\"objs\":[{\"k\":\"v\"},{\"k\":\"v\"}],\"escapes\":\"q\\\"\\\\\\t\\n\\r\\b\\f\\u0001/\u00E9\\uD83D\\uDE00\","
				  u"\"whole\":1.0,\"alpha\":-1234.5678e-3,\"big\":9007199254740993}");
	ASSERT_TRUE(Root.bOk) << Root.Error;
	const std::u16string Text = WriteJson(Root.Object);
	EXPECT_EQ(ToUtf16Bytes(Text), ReadGolden("json-every-kind-of-member.json"));
	const FParseResult Back = ParseJson(Text);
	ASSERT_TRUE(Back.bOk) << Back.Error;
	EXPECT_EQ(WriteJson(Back.Object), Text);
	EXPECT_EQ(WriteJson(MakeShared<FJsonObject>()), u"{\r\n}");
}

// The two documents the fuzz target exempts from its round trip. A number too large for a double reads as
// infinity, and the writer's "%.17g" form of it is no JSON token; a member with an empty name reads, but the
// writer needs a name.
TEST(JsonWriterTests, WhatCannotMakeTheRoundTrip)
{
	const FParseResult Read = ParseJson(u"{\"n\":1.5e501}");
	ASSERT_TRUE(Read.bOk) << Read.Error;
	EXPECT_TRUE(std::isinf(Read.Object->GetNumberField(TEXT("n"))));
	const std::u16string Written = WriteJson(Read.Object);
	EXPECT_EQ(Written, u"{\r\n\t\"n\": inf\r\n}");
	EXPECT_EQ(ParseJson(Written).Error, TEXT("Invalid Json Token. Line: 2 Ch: 7"));

	const FParseResult Unnamed = ParseJson(u"{\"\":1}");
	ASSERT_TRUE(Unnamed.bOk) << Unnamed.Error;
	EXPECT_DEATH(WriteJson(Unnamed.Object), "CanWriteValueWithoutIdentifier");
}
