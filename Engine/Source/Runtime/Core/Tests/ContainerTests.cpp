#include "CoreMinimal.h"

#include <gtest/gtest.h>

#include <stdexcept>

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

// A map searches pair by pair while it is small and by hash once it is large; it must hold the same across
// growing past that size and shrinking back under it.
TEST(ContainerTests, MapFindsEveryKeyAsItGrowsAndShrinks)
{
	TMap<FString, int32> Map;
	auto Key = [](int32 Number) { return FString::Printf(TEXT("key%d"), Number); };
	for (int32 Number = 0; Number < 40; ++Number)
	{
		Map.Add(Key(Number), Number);
		for (int32 Earlier = 0; Earlier <= Number; ++Earlier)
		{
			ASSERT_EQ(Map.FindRef(Key(Earlier)), Earlier) << "after adding " << Number;
		}
		ASSERT_FALSE(Map.Contains(Key(Number + 1)));
	}
	// Removing from the front shifts every later pair; each must still be found at its new place.
	for (int32 Number = 0; Number < 35; ++Number)
	{
		ASSERT_EQ(Map.Remove(Key(Number)), 1);
		ASSERT_EQ(Map.Remove(Key(Number)), 0);
		for (int32 Later = Number + 1; Later < 40; ++Later)
		{
			ASSERT_EQ(Map.FindRef(Key(Later)), Later) << "after removing " << Number;
		}
	}
	Map.Add(Key(7), 70);
	TArray<FString> Keys;
	Map.GetKeys(Keys);
	EXPECT_EQ(Keys, (TArray<FString>{Key(35), Key(36), Key(37), Key(38), Key(39), Key(7)}));
	EXPECT_EQ(Map[Key(7)], 70);
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

TEST(ContainerTests, ALargeArrayGrowsInPlaceAndMovesOnlyPastItsReservedSpace)
{
	// Once large, adding one at a time must not move the elements again: a moved log of a million lines
	// stalls a frame. Every element written is read back, so pages not made usable would fault here.
	TArray<int64> Numbers;
	const int32 Large = static_cast<int32>(FPlatformMemory::LargeBlockBytes / sizeof(int64)) + 1;
	for (int32 Index = 0; Index < Large; ++Index)
	{
		Numbers.Add(Index);
	}
	const int64* Block = Numbers.GetData();
	int32 Moves = 0;
	for (int32 Index = Large; Index < Large * 6; ++Index)
	{
		Numbers.Add(Index);
		Moves += Numbers.GetData() != Block;
		Block = Numbers.GetData();
	}
	EXPECT_EQ(Moves, 0);
	EXPECT_GE(Numbers.Max(), Large * 6);
	for (int32 Index = 0; Index < Numbers.Num(); Index += 4099)
	{
		ASSERT_EQ(Numbers[Index], Index);
	}
	EXPECT_EQ(Numbers.Last(), Large * 6 - 1);

	// Room beyond the reserve: the storage moves, and keeps what it held. Reserving touches no page.
	TArray<uint8> Bytes;
	Bytes.Add(7);
	const int32 PastReserve = static_cast<int32>(FPlatformMemory::LargeBlockReserveBytes) + 4096;
	Bytes.Reserve(PastReserve / 2);
	const uint8* Reserved = Bytes.GetData();
	Bytes.Reserve(PastReserve);
	EXPECT_NE(Bytes.GetData(), Reserved);
	Bytes.Reserve(PastReserve + 1);
	Bytes.Add(8);
	EXPECT_EQ(Bytes, (TArray<uint8>{7, 8}));
	Bytes.Empty();
	EXPECT_EQ(Bytes.Max(), 0);
}

namespace
{
	template <typename T, typename... ArgsType>
	void FillToCapacity(TArray<T>& Items, const ArgsType&... Args)
	{
		while (Items.Num() < Items.Max())
		{
			Items.Emplace(Args...);
		}
	}

	// An element that can only be copied (it has no move): growth copies, and copies can be made to fail.
	struct FFragile
	{
		static inline int32 CopiesLeft = 1000;
		FString Name;
		explicit FFragile(const TCHAR* InName) : Name(InName) {}
		FFragile(const FFragile& Other) : Name(Other.Name)
		{
			if (--CopiesLeft < 0)
			{
				throw std::runtime_error("copy refused");
			}
		}
		FFragile& operator=(const FFragile&) = default;
	};
}

TEST(ContainerTests, AddingAnElementOfTheSameArrayWhileItGrowsCopiesItFirst)
{
	// The sanitizer build sees a read of freed storage if the growth frees the element being copied.
	TArray<FString> Names{TEXT("first"), TEXT("second")};
	FillToCapacity(Names, TEXT("filler"));
	Names.Add(Names[0]);
	EXPECT_EQ(Names.Last(), FString(TEXT("first")));
	FillToCapacity(Names, TEXT("filler"));
	Names.Insert(Names[1], 0);
	EXPECT_EQ(Names[0], FString(TEXT("second")));
	EXPECT_EQ(Names[2], FString(TEXT("second")));
	FillToCapacity(Names, TEXT("filler"));
	const int32 Before = Names.Num();
	Names.Append(Names);
	ASSERT_EQ(Names.Num(), Before * 2);
	EXPECT_EQ(Names[Before], FString(TEXT("second")));
	EXPECT_EQ(Names.Last(), Names[Before - 1]);
}

TEST(ContainerTests, ArrayKeepsItsElementsWhenACopyThrowsWhileGrowing)
{
	// A copy that throws while the storage moves leaves the array as it was, with nothing leaked (the
	// sanitizer build checks for leaks).
	TArray<FFragile> Items;
	Items.Emplace(TEXT("a"));
	Items.Emplace(TEXT("b"));
	FillToCapacity(Items, TEXT("x"));
	const int32 Full = Items.Num();
	FFragile::CopiesLeft = 1;
	EXPECT_THROW(Items.Emplace(TEXT("c")), std::runtime_error);
	ASSERT_EQ(Items.Num(), Full);
	EXPECT_EQ(Items[1].Name, FString(TEXT("b")));
	FFragile::CopiesLeft = 1000;
	Items.Emplace(TEXT("c"));
	EXPECT_EQ(Items[0].Name, FString(TEXT("a")));
	EXPECT_EQ(Items.Last().Name, FString(TEXT("c")));
}

TEST(ContainerTests, ArrayGrowsWithZeroesAndHoldsElementsThatCannotBeCopied)
{
	TArray<int32> Counts{7, 8, 9};
	Counts.SetNum(1);
	Counts.SetNum(3); // the storage still holds 8 and 9: new elements must be zero all the same
	EXPECT_EQ(Counts, (TArray<int32>{7, 0, 0}));
	EXPECT_EQ(Counts.AddZeroed(2), 3);
	EXPECT_EQ(Counts[4], 0);

	TArray<TUniquePtr<FString>> Owned;
	for (int32 Index = 0; Index < 40; ++Index)
	{
		Owned.Add(MakeUnique<FString>(FString::Printf(TEXT("%d"), Index)));
	}
	Owned.RemoveAt(0, 10);
	TUniquePtr<FString> Taken = Owned.Pop();
	EXPECT_EQ(*Taken, FString(TEXT("39")));
	EXPECT_EQ(*Owned[0], FString(TEXT("10")));
	EXPECT_EQ(Owned.RemoveAll([](const TUniquePtr<FString>& Item) { return Item->Len() == 2; }), 29);
	EXPECT_EQ(Owned.Num(), 0);
}
