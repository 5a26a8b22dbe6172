#include "JsonTestUtils.h"

#include <gtest/gtest.h>

#include <cmath>

TEST(JsonWriterTests, LayoutOfEveryKindOfMember)
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

	bool bClosed = false;
	const std::u16string Text = WriteJson(Root, &bClosed);
	EXPECT_TRUE(bClosed);
	EXPECT_EQ(Text, u"{\r\n"
					u"\t\"n\": [ 1, 2 ],\r\n"
					u"\t\"s\": [\r\n\t\t\"x\",\r\n\t\t3 ],\r\n"
					u"\t\"e\": [],\r\n"
					u"\t\"o\":\r\n\t{\r\n\t},\r\n"
					u"\t\"b\": [ true, false ],\r\n"
					u"\t\"z\": [ null, null ],\r\n"
					u"\t\"d\": 0.10000000000000001,\r\n"
					u"\t\"t\": true,\r\n"
					u"\t\"u\": null,\r\n"
					u"\t\"objs\": [\r\n\t\t{\r\n\t\t\t\"k\": \"v\"\r\n\t\t},\r\n\t\t{\r\n\t\t\t\"k\": \"v\"\r\n\t\t}\r\n\t]\r\n"
					u"}");
}

TEST(JsonWriterTests, EmptyRootAndEscapes)
{
	EXPECT_EQ(WriteJson(MakeShared<FJsonObject>()), u"{\r\n}");

	TSharedPtr<FJsonObject> Root = MakeShared<FJsonObject>();
	const std::u16string Raw = {u'q', u'"', u'\\', 9, 10, 13, 8, 12, 1, u'/', 0x00E9, 0xD83D, 0xDE00};
	Root->SetStringField(TEXT("s"), FString(Raw));
	Root->SetNumberField(TEXT("whole"), 1.0);
	EXPECT_EQ(WriteJson(Root), u"{\r\n\t\"s\": \"q\\\"\\\\\\t\\n\\r\\b\\f\x01/\u00E9\U0001F600\",\r\n\t\"whole\": 1\r\n}");
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

TEST(JsonWriterTests, MisuseIsAnAssertion)
{
	TArray<uint8> Bytes;
	FMemoryArchive Archive(Bytes, false);
	EXPECT_DEATH(
		{
			JsonWriter Writer(&Archive, 0);
			Writer.WriteObjectStart();
			Writer.WriteValue(TEXT("no name"));
		},
		"CanWriteValueWithoutIdentifier\\(\\)");
	EXPECT_DEATH(
		{
			JsonWriter Writer(&Archive, 0);
			Writer.WriteArrayStart();
			Writer.WriteValue(TEXT("k"), TEXT("v"));
		},
		"Stack.Top\\(\\) == EJson::Object");
	EXPECT_DEATH(
		{
			JsonWriter Writer(&Archive, 0);
			Writer.WriteObjectStart();
			Writer.WriteArrayEnd();
		},
		"Stack.Top\\(\\) == EJson::Array");
}

TEST(JsonWriterTests, WrittenDocumentsReadBackEqualInOrder)
{
	// A document of every kind, members deliberately out of alphabetical order, strings with every escape.
	TSharedPtr<FJsonObject> Root = MakeShared<FJsonObject>();
	Root->SetStringField(TEXT("zeta"), TEXT("Île \"quoted\" \\ back\ttab\r\nline"));
	Root->SetNumberField(TEXT("alpha"), -1234.5678e-3);
	Root->SetNumberField(TEXT("big"), 9007199254740993.0);
	Root->SetBoolField(TEXT("flag"), false);
	TSharedPtr<FJsonObject> Nested = MakeShared<FJsonObject>();
	Nested->SetArrayField(TEXT("mixed"), {MakeShared<FJsonValueString>(TEXT("")), MakeShared<FJsonValueNumber>(0),
										  MakeShared<FJsonValueBoolean>(true), MakeShared<FJsonValueNull>(),
										  MakeShared<FJsonValueArray>(TArray<TSharedPtr<FJsonValue>>{})});
	Root->SetObjectField(TEXT("nested"), Nested);

	const std::u16string Text = WriteJson(Root);
	const FParseResult Back = ParseJson(Text);
	ASSERT_TRUE(Back.bOk) << Back.Error;
	EXPECT_EQ(WriteJson(Back.Object), Text);

	TArray<FString> Keys;
	Back.Object->Values.GetKeys(Keys);
	EXPECT_EQ(Keys, (TArray<FString>{TEXT("zeta"), TEXT("alpha"), TEXT("big"), TEXT("flag"), TEXT("nested")}));
	EXPECT_EQ(Back.Object->GetStringField(TEXT("zeta")), Root->GetStringField(TEXT("zeta")));
	EXPECT_EQ(Back.Object->GetNumberField(TEXT("alpha")), Root->GetNumberField(TEXT("alpha")));
	EXPECT_EQ(Back.Object->GetNumberField(TEXT("big")), 9007199254740992.0);
	EXPECT_EQ(Back.Object->GetObjectField(TEXT("nested"))->GetArrayField(TEXT("mixed")).Num(), 5);
}

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
	EXPECT_FALSE(Object.TryGetStringField(TEXT("obj"), Out));
	EXPECT_FALSE(Object.TryGetStringField(TEXT("nil"), Out));
	EXPECT_FALSE(Object.TryGetStringField(TEXT("missing"), Out));
	EXPECT_EQ(Out, FString(TEXT("kept")));
	EXPECT_TRUE(Object.TryGetStringField(TEXT("num"), Out));
	EXPECT_EQ(Out, FString(TEXT("5")));
}

// A number too large for a double reads as infinity, and the writer's "%.17g" form of it is no JSON token: such a
// document can't make the round trip, which is why the fuzz target exempts it.
TEST(JsonWriterTests, AnOverflowingNumberReadsAsInfinityAndDoesNotReadBack)
{
	const FParseResult Read = ParseJson(u"{\"n\":1.5e501}");
	ASSERT_TRUE(Read.bOk) << Read.Error.ToUtf8();
	EXPECT_TRUE(std::isinf(Read.Object->GetNumberField(TEXT("n"))));

	const std::u16string Written = WriteJson(Read.Object);
	EXPECT_EQ(Written, u"{\r\n\t\"n\": inf\r\n}");
	const FParseResult Again = ParseJson(Written);
	EXPECT_FALSE(Again.bOk);
	EXPECT_EQ(Again.Error, TEXT("Invalid Json Token. Line: 2 Ch: 7"));
}
