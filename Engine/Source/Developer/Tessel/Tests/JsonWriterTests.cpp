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

TEST(JsonWriterTests, CloseTellsWhetherTheDocumentIsComplete)
{
	TArray<uint8> Bytes;
	FMemoryArchive Archive(Bytes, false);
	JsonWriter Writer(&Archive, 0);
	EXPECT_TRUE(Writer.Close());
	Writer.WriteObjectStart();
	Writer.WriteArrayStart(TEXT("a"));
	EXPECT_FALSE(Writer.Close());
	Writer.WriteArrayEnd();
	EXPECT_FALSE(Writer.Close());
	Writer.WriteObjectEnd();
	EXPECT_TRUE(Writer.Close());
}

// What an older or hand-edited Mods.db gives where a string is expected.
TEST(JsonWriterTests, AccessorsOfTheWrongKindGiveEmptyResults)
{
	const FParseResult Parsed = ParseJson(u"{\"num\":5,\"text\":\"12.5\",\"yes\":true,\"arr\":[1],\"obj\":{},\"nil\":null}");
	ASSERT_TRUE(Parsed.bOk);
	const FJsonObject& Object = *Parsed.Object;
	EXPECT_EQ(Object.GetStringField(TEXT("num")), FString(TEXT("5")));
	EXPECT_EQ(Object.GetStringField(TEXT("yes")), FString(TEXT("true")));
	EXPECT_EQ(Object.GetStringField(TEXT("arr")), FString());
	EXPECT_EQ(Object.GetStringField(TEXT("missing")), FString());
	EXPECT_EQ(Object.GetNumberField(TEXT("text")), 12.5);
	EXPECT_EQ(Object.GetArrayField(TEXT("obj")).Num(), 0);
	EXPECT_FALSE(Object.GetObjectField(TEXT("arr")));
	EXPECT_FALSE(Object.GetField(TEXT("nil"))->AsObject());
	FString Out = TEXT("kept");
	EXPECT_FALSE(Object.TryGetStringField(TEXT("obj"), Out) || Object.TryGetStringField(TEXT("nil"), Out) ||
				 Object.TryGetStringField(TEXT("missing"), Out));
	EXPECT_EQ(Out, FString(TEXT("kept")));
	EXPECT_TRUE(Object.TryGetStringField(TEXT("num"), Out));
	EXPECT_EQ(Out, FString(TEXT("5")));
}

// A number too large for a double reads as infinity, and the writer's "%.17g" form of it is no JSON token: such a
// document can't make the round trip, which is why the fuzz target exempts it.
TEST(JsonWriterTests, AnOverflowingNumberReadsAsInfinityAndDoesNotReadBack)
{
	const FParseResult Read = ParseJson(u"{\"n\":1.5e501}");
	ASSERT_TRUE(Read.bOk) << Read.Error;
	EXPECT_TRUE(std::isinf(Read.Object->GetNumberField(TEXT("n"))));
	const std::u16string Written = WriteJson(Read.Object);
	EXPECT_EQ(Written, u"{\r\n\t\"n\": inf\r\n}");
	EXPECT_EQ(ParseJson(Written).Error, TEXT("Invalid Json Token. Line: 2 Ch: 7"));
}
