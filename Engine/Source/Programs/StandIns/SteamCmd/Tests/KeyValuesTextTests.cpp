#include "KeyValuesText.h"

#include <gtest/gtest.h>

namespace
{
	FString Describe(const FKeyValues& Entry)
	{
		if (!Entry.bIsBlock)
		{
			return Entry.Key + TEXT("=") + Entry.Value;
		}
		FString Text = Entry.Key + TEXT("{");
		for (const FKeyValues& Child : Entry.Children)
		{
			Text += Describe(Child) + TEXT(";");
		}
		return Text + TEXT("}");
	}
}

// An item file as authors and SteamCMD write them: comments, bare words, escapes, a nested block, keys in any
// letter case; and it comes back the same after SteamCMD's rewrite.
TEST(KeyValuesTextTests, AnItemFileReadAndWrittenBack)
{
	const FString Text = TEXT("// made by hand\n"
							  "\"WorkshopItem\"\n"
							  "{\n"
							  "\tappid 1296880 [$WIN32]\n"
							  "\t\"contentfolder\" \"C:\\\\Kit\\\\Out\" // the cooked tree\n"
							  "\t\"title\"\t\"Say \\\"hi\\\"\\tthere\"\n"
							  "\t\"description\" \"two\\nlines and a raw\nbreak\"\n"
							  "\t\"odd\" \"C:\\Kit\"\n"
							  "\t\"metadata\"\n\t{\n\t\t\"tags\" \"\"\n\t}\n"
							  "}\n");
	FKeyValues Root;
	FString Error;
	ASSERT_TRUE(FKeyValuesText::Parse(Text, Root, Error)) << Error;
	ASSERT_EQ(Root.Children.size(), 1u);
	EXPECT_EQ(Describe(Root.Children[0]), FString(TEXT("WorkshopItem{appid=1296880;contentfolder=C:\\Kit\\Out;title=Say \"hi\"\tthere;"
														"description=two\nlines and a raw\nbreak;odd=C:\\Kit;metadata{tags=;};}")));
	const FKeyValues* Item = Root.FindChild(TEXT("workshopitem"));
	ASSERT_NE(Item, nullptr);
	ASSERT_NE(Item->FindChild(TEXT("APPID")), nullptr);
	EXPECT_EQ(Item->FindChild(TEXT("publishedfileid")), nullptr);

	const FString Written = FKeyValuesText::Write(Root);
	EXPECT_EQ(Written, FString(TEXT("\"WorkshopItem\"\n"
									"{\n"
									"\t\"appid\"\t\t\"1296880\"\n"
									"\t\"contentfolder\"\t\t\"C:\\\\Kit\\\\Out\"\n"
									"\t\"title\"\t\t\"Say \\\"hi\\\"\\tthere\"\n"
									"\t\"description\"\t\t\"two\\nlines and a raw\\nbreak\"\n"
									"\t\"odd\"\t\t\"C:\\\\Kit\"\n"
									"\t\"metadata\"\n"
									"\t{\n"
									"\t\t\"tags\"\t\t\"\"\n"
									"\t}\n"
									"}\n")));
	FKeyValues Again;
	ASSERT_TRUE(FKeyValuesText::Parse(Written, Again, Error)) << Error;
	EXPECT_EQ(Describe(Again.Children[0]), Describe(Root.Children[0]));
}

TEST(KeyValuesTextTests, BrokenTextIsRefusedWithItsLine)
{
	struct FCase
	{
		const TCHAR* Text;
		const TCHAR* Error;
	};
	for (const FCase& Case : {FCase{TEXT("\"a\"\n{\n\t\"b\" \"c\"\n"), TEXT("line 4: the text ends inside a block")},
							  FCase{TEXT("\"a\" \"b\"\n}\n"), TEXT("line 2: a closing brace without its block")},
							  FCase{TEXT("\"a\"\n{\n\t\"title\" \"open\n}\n"), TEXT("line 3: a quoted text that is never closed")},
							  FCase{TEXT("\"a\"\n{\n\t\"key\"\n}\n"), TEXT("line 4: the key \"key\" has no value")},
							  FCase{TEXT("{\n}\n"), TEXT("line 1: a block without a key")}})
	{
		FKeyValues Root;
		FString Error;
		EXPECT_FALSE(FKeyValuesText::Parse(Case.Text, Root, Error)) << FString(Case.Text);
		EXPECT_EQ(Error, FString(Case.Error)) << FString(Case.Text);
	}
}
