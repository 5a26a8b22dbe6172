#pragma once

#include "CoreTypes.h"
#include "HAL/PlatformMemory.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

// The engine's dynamic array: contiguous storage, signed 32-bit counts, indices checked in every build.
//
// Small arrays live on the heap. Past a few megabytes the storage is a block of its own from the system, in
// address space reserved for it to grow into, so that a log of a million lines grows in place: doubling by
// moving every element into fresh pages stalled a frame for tens of milliseconds where first touches of a
// page are slow (Wine), and the fresh pages are now touched only as elements arrive.
template <typename T>
class TArray
{
public:
	using ElementType = T;

	TArray() = default;
	TArray(std::initializer_list<T> Init) { Append(Init.begin(), static_cast<int32>(Init.size())); }
	TArray(const T* Ptr, int32 Count) { Append(Ptr, Count); }
	TArray(const TArray& Other) { Append(Other.Data, Other.ArrayNum); }
	TArray(TArray&& Other) noexcept : Data(Other.Data), ArrayNum(Other.ArrayNum), ArrayMax(Other.ArrayMax)
	{
		Other.Data = nullptr;
		Other.ArrayNum = 0;
		Other.ArrayMax = 0;
	}
	TArray& operator=(const TArray& Other)
	{
		if (this != &Other)
		{
			Reset();
			Append(Other.Data, Other.ArrayNum);
		}
		return *this;
	}
	TArray& operator=(TArray&& Other) noexcept
	{
		if (this != &Other)
		{
			Release();
			std::swap(Data, Other.Data);
			std::swap(ArrayNum, Other.ArrayNum);
			std::swap(ArrayMax, Other.ArrayMax);
		}
		return *this;
	}
	~TArray() { Release(); }

	int32 Num() const { return ArrayNum; }
	bool IsEmpty() const { return ArrayNum == 0; }
	bool IsValidIndex(int32 Index) const { return Index >= 0 && Index < ArrayNum; }
	int32 Max() const { return ArrayMax; }

	T& operator[](int32 Index)
	{
		check(IsValidIndex(Index));
		return Data[Index];
	}
	const T& operator[](int32 Index) const
	{
		check(IsValidIndex(Index));
		return Data[Index];
	}

	T* GetData() { return Data; }
	const T* GetData() const { return Data; }

	T& Last(int32 IndexFromEnd = 0) { return (*this)[ArrayNum - 1 - IndexFromEnd]; }
	const T& Last(int32 IndexFromEnd = 0) const { return (*this)[ArrayNum - 1 - IndexFromEnd]; }
	T& Top() { return Last(); }

	int32 Add(const T& Item) { return Emplace(Item); }
	int32 Add(T&& Item) { return Emplace(std::move(Item)); }
	template <typename... ArgsType>
	int32 Emplace(ArgsType&&... Args)
	{
		if (ArrayNum == ArrayMax)
		{
			// Made before the storage moves: the arguments may refer to an element of this array.
			T Made(std::forward<ArgsType>(Args)...);
			Reallocate(GrownMax(ArrayNum + int64(1)));
			::new (static_cast<void*>(Data + ArrayNum)) T(std::move(Made));
			return ArrayNum++;
		}
		::new (static_cast<void*>(Data + ArrayNum)) T(std::forward<ArgsType>(Args)...);
		return ArrayNum++;
	}
	int32 AddUnique(const T& Item)
	{
		const int32 Found = Find(Item);
		return Found != INDEX_NONE ? Found : Add(Item);
	}
	int32 AddDefaulted(int32 Count = 1)
	{
		check(Count >= 0);
		const int32 First = ArrayNum;
		SetNum(ArrayNum + Count);
		return First;
	}
	int32 AddZeroed(int32 Count = 1) { return AddDefaulted(Count); }
	int32 AddUninitialized(int32 Count = 1) { return AddDefaulted(Count); }

	void Insert(const T& Item, int32 Index)
	{
		check(Index >= 0 && Index <= ArrayNum);
		Emplace(Item);
		std::rotate(Data + Index, Data + ArrayNum - 1, Data + ArrayNum);
	}

	void Append(const TArray& Other) { Append(Other.Data, Other.ArrayNum); }
	// Moves Other's elements to the end and empties Other, which keeps its room for reuse.
	void Append(TArray&& Other)
	{
		check(&Other != this);
		ReserveGrowing(Other.ArrayNum);
		std::uninitialized_move(Other.Data, Other.Data + Other.ArrayNum, Data + ArrayNum);
		ArrayNum += Other.ArrayNum;
		Other.Reset();
	}
	void Append(const T* Ptr, int32 Count)
	{
		check(Count >= 0);
		if (Count == 0)
		{
			return;
		}
		if (Ptr >= Data && Ptr < Data + ArrayNum && ArrayNum + int64(Count) > ArrayMax)
		{
			// Growing may move the elements being copied: copy them out first.
			TArray Copied(Ptr, Count);
			Append(std::move(Copied));
			return;
		}
		ReserveGrowing(Count);
		std::uninitialized_copy(Ptr, Ptr + Count, Data + ArrayNum);
		ArrayNum += Count;
	}

	void RemoveAt(int32 Index, int32 Count = 1)
	{
		check(Count >= 0 && Index >= 0 && int64(Index) + Count <= ArrayNum);
		std::move(Data + Index + Count, Data + ArrayNum, Data + Index);
		ShrinkTo(ArrayNum - Count);
	}

	// Removes every element equal to Item; returns how many went.
	int32 Remove(const T& Item)
	{
		return RemoveAll([&Item](const T& Element) { return Element == Item; });
	}

	template <typename PredicateType>
	int32 RemoveAll(PredicateType Predicate)
	{
		const int32 Before = ArrayNum;
		ShrinkTo(static_cast<int32>(std::remove_if(Data, Data + ArrayNum, Predicate) - Data));
		return Before - ArrayNum;
	}

	// Empties the array; with no slack the storage is given back too.
	void Empty(int32 Slack = 0)
	{
		Reset();
		if (Slack <= 0)
		{
			Release();
		}
		else
		{
			Reserve(Slack);
		}
	}
	void Reset() { ShrinkTo(0); }
	void Reserve(int32 Count)
	{
		if (Count > ArrayMax)
		{
			Reallocate(Count);
		}
	}
	// Grows with value-initialised elements (zeroes for plain types) or drops elements from the end.
	void SetNum(int32 Count)
	{
		check(Count >= 0);
		if (Count <= ArrayNum)
		{
			ShrinkTo(Count);
			return;
		}
		ReserveGrowing(Count - ArrayNum);
		std::uninitialized_value_construct(Data + ArrayNum, Data + Count);
		ArrayNum = Count;
	}
	void SetNumZeroed(int32 Count) { SetNum(Count); }
	T Pop()
	{
		T Result = std::move(Last());
		ShrinkTo(ArrayNum - 1);
		return Result;
	}

	int32 Find(const T& Item) const
	{
		for (int32 Index = 0; Index < ArrayNum; ++Index)
		{
			if (Data[Index] == Item)
			{
				return Index;
			}
		}
		return INDEX_NONE;
	}
	bool Contains(const T& Item) const { return Find(Item) != INDEX_NONE; }

	template <typename PredicateType>
	int32 IndexOfByPredicate(PredicateType Predicate) const
	{
		for (int32 Index = 0; Index < ArrayNum; ++Index)
		{
			if (Predicate(Data[Index]))
			{
				return Index;
			}
		}
		return INDEX_NONE;
	}
	template <typename PredicateType>
	const T* FindByPredicate(PredicateType Predicate) const
	{
		const int32 Index = IndexOfByPredicate(Predicate);
		return Index == INDEX_NONE ? nullptr : Data + Index;
	}
	template <typename PredicateType>
	bool ContainsByPredicate(PredicateType Predicate) const
	{
		return IndexOfByPredicate(Predicate) != INDEX_NONE;
	}

	void Sort() { std::sort(Data, Data + ArrayNum); }
	template <typename PredicateType>
	void Sort(PredicateType Predicate)
	{
		std::sort(Data, Data + ArrayNum, Predicate);
	}

	bool operator==(const TArray& Other) const
	{
		return ArrayNum == Other.ArrayNum && std::equal(Data, Data + ArrayNum, Other.Data);
	}
	bool operator!=(const TArray& Other) const { return !(*this == Other); }

	T* begin() { return Data; }
	T* end() { return Data + ArrayNum; }
	const T* begin() const { return Data; }
	const T* end() const { return Data + ArrayNum; }

private:
	static size_t BytesFor(int32 Count) { return static_cast<size_t>(Count) * sizeof(T); }
	static bool IsLarge(int32 Count) { return BytesFor(Count) >= FPlatformMemory::LargeBlockBytes; }

	static T* AllocateItems(int32 Count)
	{
		if (!IsLarge(Count))
		{
			return std::allocator<T>().allocate(static_cast<size_t>(Count));
		}
		if (void* Block = FPlatformMemory::AllocateLargeBlock(BytesFor(Count)))
		{
			return static_cast<T*>(Block);
		}
		throw std::bad_alloc();
	}
	static void FreeItems(T* Items, int32 Count)
	{
		if (!Items)
		{
			return;
		}
		if (!IsLarge(Count))
		{
			std::allocator<T>().deallocate(Items, static_cast<size_t>(Count));
			return;
		}
		FPlatformMemory::FreeLargeBlock(Items, BytesFor(Count));
	}

	// Room for at least Wanted elements: doubling, so that adding one at a time costs constant time each.
	int32 GrownMax(int64 Wanted) const
	{
		constexpr int64 Limit = std::numeric_limits<int32>::max();
		if (Wanted > Limit)
		{
			throw std::bad_alloc();
		}
		return static_cast<int32>(std::min(Limit, std::max<int64>({Wanted, int64(ArrayMax) * 2, 4})));
	}

	// Makes the storage NewMax long. A large block grows in place while its reserved address space lasts, and
	// nothing moves then; otherwise the elements move to new storage, or stay where they were if that throws.
	void Reallocate(int32 NewMax)
	{
		if (Data && IsLarge(ArrayMax) && FPlatformMemory::GrowLargeBlock(Data, BytesFor(ArrayMax), BytesFor(NewMax)))
		{
			ArrayMax = NewMax;
			return;
		}
		T* NewData = AllocateItems(NewMax);
		try
		{
			RelocateInto(NewData);
		}
		catch (...)
		{
			FreeItems(NewData, NewMax);
			throw;
		}
		FreeItems(Data, ArrayMax);
		Data = NewData;
		ArrayMax = NewMax;
	}
	void RelocateInto(T* NewData)
	{
		if constexpr (std::is_nothrow_move_constructible_v<T> || !std::is_copy_constructible_v<T>)
		{
			std::uninitialized_move(Data, Data + ArrayNum, NewData);
		}
		else
		{
			std::uninitialized_copy(Data, Data + ArrayNum, NewData);
		}
		std::destroy(Data, Data + ArrayNum);
	}
	void ReserveGrowing(int32 Extra)
	{
		if (ArrayNum + int64(Extra) > ArrayMax)
		{
			Reallocate(GrownMax(ArrayNum + int64(Extra)));
		}
	}

	void ShrinkTo(int32 Count)
	{
		std::destroy(Data + Count, Data + ArrayNum);
		ArrayNum = Count;
	}
	void Release()
	{
		ShrinkTo(0);
		FreeItems(Data, ArrayMax);
		Data = nullptr;
		ArrayMax = 0;
	}

	T* Data = nullptr;
	int32 ArrayNum = 0;
	int32 ArrayMax = 0;
};
