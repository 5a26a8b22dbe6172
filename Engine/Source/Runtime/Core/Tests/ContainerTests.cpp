#include "CoreMinimal.h"

#include <gtest/gtest.h>

TEST(ContainerTests, MapKeepsInsertionOrderAcrossReplaceAndRemove)
{
	TMap<FString, int32> Map;
	Map.Add(TEXT("zeta"), 1);
	Map.Add(TEXT("alpha"), 2);
	Map.Add(TEXT("mid"), 3);
	Map.Add(TEXT("zeta"), 10); // replacing keeps the first place
	Map.Remove(TEXT("alpha"));
	Map.Add(TEXT("alpha"), 4); // re-added keys go to the end

	TArray<FString> Keys;
	Map.GetKeys(Keys);
	ASSERT_EQ(Keys.Num(), 3);
	EXPECT_EQ(Keys[0], FString(TEXT("zeta")));
	EXPECT_EQ(Keys[1], FString(TEXT("mid")));
	EXPECT_EQ(Keys[2], FString(TEXT("alpha")));
	EXPECT_EQ(Map[TEXT("zeta")], 10);
	EXPECT_EQ(Map.FindRef(TEXT("mid")), 3);
	EXPECT_EQ(Map.FindRef(TEXT("absent")), 0);
	EXPECT_EQ(Map.Find(TEXT("ZETA")), nullptr); // keys are exact
}

TEST(ContainerTests, ArrayRemovesAndClosesUp)
{
	TArray<int32> Items{1, 2, 3, 2, 4};
	EXPECT_EQ(Items.Remove(2), 2);
	EXPECT_EQ(Items, (TArray<int32>{1, 3, 4}));
	Items.RemoveAt(0);
	EXPECT_EQ(Items[0], 3);
	EXPECT_EQ(Items.Find(4), 1);
	EXPECT_FALSE(Items.IsValidIndex(2));
	Items.Empty();
	EXPECT_EQ(Items.Num(), 0);
}

TEST(ContainerTests, ArrayIndexOutOfRangeStopsTheProgram)
{
	TArray<int32> Items{1};
	EXPECT_DEATH((void)Items[1], "IsValidIndex");
}

TEST(ContainerTests, SharedPointersConvertAndShare)
{
	struct FBase
	{
		virtual ~FBase() = default;
		int32 Value = 1;
	};
	struct FDerived : FBase
	{
	};
	TSharedRef<FDerived> Ref = MakeShared<FDerived>();
	TSharedPtr<FBase> Ptr = Ref;
	EXPECT_TRUE(Ptr.IsValid());
	EXPECT_EQ(Ptr.Get(), static_cast<FBase*>(&Ref.Get()));
	EXPECT_EQ(Ref.use_count(), 2);
	Ptr.Reset();
	EXPECT_FALSE(Ptr.IsValid());
	TSharedPtr<FBase> Null;
	EXPECT_DEATH((void)Null.ToSharedRef(), "IsValid");
}

TEST(ContainerTests, ArrayGrowsShrinksAndMovesAcrossTheLargeBlockSize)
{
	// Past a few megabytes the storage comes from the system in blocks of its own; every way in and out of
	// such a block must keep the elements and give the block back whole (the sanitizer build would see
	// a block freed with the wrong size or touched beyond its end).
	const int32 Large = static_cast<int32>(FPlatformMemory::LargeBlockBytes / sizeof(FString)) + 1000;
	TArray<FString> Lines;
	for (int32 Index = 0; Index < Large; ++Index)
	{
		Lines.Emplace(FString::Printf(TEXT("line %d"), Index));
	}
	TArray<FString> Copy = Lines;
	TArray<FString> Moved = MoveTemp(Lines);
	EXPECT_EQ(Copy.Num(), Large);
	EXPECT_EQ(Moved.Num(), Large);
	EXPECT_EQ(Moved[Large - 1], FString::Printf(TEXT("line %d"), Large - 1));
	EXPECT_EQ(Copy[12345], FString(TEXT("line 12345")));

	TArray<FString> Small = {TEXT("a"), TEXT("b")};
	Small.Append(MoveTemp(Copy));
	EXPECT_EQ(Small.Num(), Large + 2);
	EXPECT_EQ(Small[2], FString(TEXT("line 0")));
	EXPECT_EQ(Copy.Num(), 0);
	Small.RemoveAt(0);
	EXPECT_EQ(Small[0], FString(TEXT("b")));
	Small.Empty();
	EXPECT_EQ(Small.Num(), 0);
	Small.Add(TEXT("again"));
	EXPECT_EQ(Small[0], FString(TEXT("again")));
}
