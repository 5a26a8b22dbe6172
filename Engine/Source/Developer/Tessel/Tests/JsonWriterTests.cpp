#include "JsonTestUtils.h"
#include "TestKit.h"

#include <gtest/gtest.h>

#include <cmath>

// Arrays of numbers, words and nulls stay on one line, other arrays and objects open on their own; strings escape
// what JSON must, numbers print with 17 digits. What was written reads back to the same text, members in order.
TEST(JsonWriterTests, LayoutOfEveryKindOfMemberAndItsWayBack)
{
	TSharedPtr<FJsonObject> Root = MakeShared<FJsonObject>();
	Root->SetArrayField(TEXT("n"), {MakeShared<FJsonValueNumber>(1), MakeShared<FJsonValueNumber>(2)});
	Root->SetArrayField(TEXT("s"), {MakeShared<FJsonValueString>(TEXT("x")), MakeShared<FJsonValueNumber>(3)});
	Root->SetArrayField(TEXT("e"), {});
	Root->SetObjectField(TEXT("o"), MakeShared<FJsonObject>());
	Root->SetArrayField(TEXT("b"), {MakeShared<FJsonValueBoolean>(true), MakeShared<FJsonValueBoolean>(false)});
	Root->SetArrayField(TEXT("z"), {MakeShared<FJsonValueNull>(), MakeShared<FJsonValueNull>()});
	Root->SetNumberField(TEXT("d"), 0.1);
	Root->SetBoolField(TEXT("t"), true);
	Root->SetField(TEXT("u"), MakeShared<FJsonValueNull>());
	TSharedPtr<FJsonObject> Inner = MakeShared<FJsonObject>();
	Inner->SetStringField(TEXT("k"), TEXT("v"));
	Root->SetArrayField(TEXT("objs"), {MakeShared<FJsonValueObject>(Inner), MakeShared<FJsonValueObject>(Inner)});
	Root->SetStringField(TEXT("escapes"), FString(std::u16string{u'q', u'"', u'\\', 9, 10, 13, 8, 12, 1, u'/', 0x00E9, 0xD83D, 0xDE00}));
	Root->SetNumberField(TEXT("whole"), 1.0);
	Root->SetNumberField(TEXT("alpha"), -1234.5678e-3);
	Root->SetNumberField(TEXT("big"), 9007199254740993.0);

	bool bClosed = false;
	const std::u16string Text = WriteJson(Root, &bClosed);
	EXPECT_TRUE(bClosed);
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
