#include "CoreMinimal.h"

#include <gtest/gtest.h>

TEST(ParseTests, ParamMatchesWholeSwitchesOnly)
{
	const TCHAR* Line = TEXT("Orrery -MODASDLC -Other=1 /flag -modasdlcX");
	EXPECT_TRUE(FParse::Param(Line, TEXT("modasdlc")));
	EXPECT_TRUE(FParse::Param(Line, TEXT("flag")));
	EXPECT_FALSE(FParse::Param(TEXT("-modasdlcX"), TEXT("modasdlc")));
	EXPECT_FALSE(FParse::Param(TEXT("modasdlc"), TEXT("modasdlc")));
	EXPECT_FALSE(FParse::Param(TEXT("x-modasdlc"), TEXT("modasdlc")));
	EXPECT_FALSE(FParse::Param(TEXT(""), TEXT("modasdlc")));
}

TEST(ParseTests, TextValueStopsAtBlankOrCommaUnlessQuoted)
{
	FString Value = TEXT("untouched");
	EXPECT_FALSE(FParse::Value(TEXT("-Other=1"), TEXT("ModTitle="), Value));
	EXPECT_EQ(Value, FString(TEXT("untouched")));

	EXPECT_TRUE(FParse::Value(TEXT("-ModTitle=Islands,Extra -x"), TEXT("ModTitle="), Value));
	EXPECT_EQ(Value, FString(TEXT("Islands")));
	EXPECT_TRUE(FParse::Value(TEXT("-modtitle=Two Words"), TEXT("ModTitle="), Value));
	EXPECT_EQ(Value, FString(TEXT("Two")));
	EXPECT_TRUE(FParse::Value(TEXT("-ModTitle=\"Island, Pack\" -y"), TEXT("ModTitle="), Value));
	EXPECT_EQ(Value, FString(TEXT("Island, Pack")));
	EXPECT_TRUE(FParse::Value(TEXT("-ModTitle= -y"), TEXT("ModTitle="), Value));
	EXPECT_EQ(Value, FString());
	EXPECT_TRUE(FParse::Value(TEXT("-ModTitle=Isle)Two,Three"), TEXT("ModTitle="), Value));
	EXPECT_EQ(Value, FString(TEXT("Isle)Two"))) << "only a comma ends the value";
	EXPECT_TRUE(FParse::Value(TEXT("-Path=a,b"), TEXT("Path="), Value, false));
	EXPECT_EQ(Value, FString(TEXT("a,b")));

	// "Title=" must not be found inside "ModTitle=".
	EXPECT_FALSE(FParse::Value(TEXT("-ModTitle=x"), TEXT("Title="), Value));
}

TEST(ParseTests, SignedSixtyFourBitValue)
{
	int64 Id = 123456789;
	EXPECT_FALSE(FParse::Value(TEXT("-modasdlc"), TEXT("SetModID="), Id));
	EXPECT_EQ(Id, 123456789);
	EXPECT_TRUE(FParse::Value(TEXT("-SetModID=9876543210123"), TEXT("SetModID="), Id));
	EXPECT_EQ(Id, 9876543210123LL);
	EXPECT_TRUE(FParse::Value(TEXT("-SetModID=-42"), TEXT("SetModID="), Id));
	EXPECT_EQ(Id, -42);
	EXPECT_TRUE(FParse::Value(TEXT("-SetModID=12abc"), TEXT("SetModID="), Id));
	EXPECT_EQ(Id, 12);
	EXPECT_TRUE(FParse::Value(TEXT("-SetModID=abc"), TEXT("SetModID="), Id));
	EXPECT_EQ(Id, 0);
}

TEST(ParseTests, CommandLineIsKeptAsSet)
{
	FCommandLine::Set(TEXT("-modasdlc -SetModID=5"));
	EXPECT_TRUE(FParse::Param(FCommandLine::Get(), TEXT("modasdlc")));
	FCommandLine::Set(FString());
	EXPECT_FALSE(FParse::Param(FCommandLine::Get(), TEXT("modasdlc")));
}

TEST(ParseTests, GuidsAreRandomAndPrintAsThirtyTwoUpperHexDigits)
{
	const FGuid First = FGuid::NewGuid();
	const FGuid Second = FGuid::NewGuid();
	EXPECT_NE(First, Second);
	const FString Text = First.ToString(EGuidFormats::Digits);
	ASSERT_EQ(Text.Len(), 32);
	for (TCHAR Unit : Text)
	{
		EXPECT_TRUE((Unit >= u'0' && Unit <= u'9') || (Unit >= u'A' && Unit <= u'F')) << Text;
	}
	EXPECT_EQ(FGuid(0x1, 0xABCDEF12, 0, 0xFFFFFFFF).ToString(), FString(TEXT("00000001ABCDEF1200000000FFFFFFFF")));
	FGuid Parsed;
	ASSERT_TRUE(FGuid::Parse(Text, Parsed));
	EXPECT_EQ(Parsed, First);
}
