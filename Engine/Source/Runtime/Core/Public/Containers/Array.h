#pragma once

#include "CoreTypes.h"
#include "HAL/PlatformMemory.h"

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <new>
#include <iterator>
#include <utility>
#include <vector>

// Gives TArray its storage: from the heap, or for a large array a block of its own from the system, so that
// doubling an array of a million entries does not stall on faulting in its fresh pages one by one.
template <typename T>
struct TArrayAllocator
{
	using value_type = T;

	TArrayAllocator() = default;
	template <typename U>
	TArrayAllocator(const TArrayAllocator<U>&)
	{
	}

	T* allocate(size_t Count)
	{
		if (Count * sizeof(T) < FPlatformMemory::LargeBlockBytes)
		{
			return std::allocator<T>().allocate(Count);
		}
		if (void* Block = FPlatformMemory::AllocateLargeBlock(Count * sizeof(T)))
		{
			return static_cast<T*>(Block);
		}
		throw std::bad_alloc();
	}
	void deallocate(T* Items, size_t Count)
	{
		if (Count * sizeof(T) < FPlatformMemory::LargeBlockBytes)
		{
			std::allocator<T>().deallocate(Items, Count);
			return;
		}
		FPlatformMemory::FreeLargeBlock(Items, Count * sizeof(T));
	}

	template <typename U>
	bool operator==(const TArrayAllocator<U>&) const
	{
		return true;
	}
};

// The engine's dynamic array: contiguous storage, signed 32-bit counts, indices checked in every build.
template <typename T>
class TArray
{
public:
	using ElementType = T;

	TArray() = default;
	TArray(std::initializer_list<T> Init) : Items(Init) {}
	TArray(const T* Ptr, int32 Count) : Items(Ptr, Ptr + Count) {}

	int32 Num() const { return static_cast<int32>(Items.size()); }
	bool IsEmpty() const { return Items.empty(); }
	bool IsValidIndex(int32 Index) const { return Index >= 0 && Index < Num(); }
	int32 Max() const { return static_cast<int32>(Items.capacity()); }

	T& operator[](int32 Index)
	{
		check(IsValidIndex(Index));
		return Items[static_cast<size_t>(Index)];
	}
	const T& operator[](int32 Index) const
	{
		check(IsValidIndex(Index));
		return Items[static_cast<size_t>(Index)];
	}

	T* GetData() { return Items.data(); }
	const T* GetData() const { return Items.data(); }

	T& Last(int32 IndexFromEnd = 0) { return (*this)[Num() - 1 - IndexFromEnd]; }
	const T& Last(int32 IndexFromEnd = 0) const { return (*this)[Num() - 1 - IndexFromEnd]; }
	T& Top() { return Last(); }

	int32 Add(const T& Item)
	{
		Items.push_back(Item);
		return Num() - 1;
	}
	int32 Add(T&& Item)
	{
		Items.push_back(std::move(Item));
		return Num() - 1;
	}
	template <typename... ArgsType>
	int32 Emplace(ArgsType&&... Args)
	{
		Items.emplace_back(std::forward<ArgsType>(Args)...);
		return Num() - 1;
	}
	int32 AddUnique(const T& Item)
	{
		const int32 Found = Find(Item);
		return Found != INDEX_NONE ? Found : Add(Item);
	}
	int32 AddDefaulted(int32 Count = 1)
	{
		const int32 First = Num();
		Items.resize(Items.size() + static_cast<size_t>(Count));
		return First;
	}
	int32 AddZeroed(int32 Count = 1) { return AddDefaulted(Count); }
	int32 AddUninitialized(int32 Count = 1) { return AddDefaulted(Count); }

	void Insert(const T& Item, int32 Index)
	{
		check(Index >= 0 && Index <= Num());
		Items.insert(Items.begin() + Index, Item);
	}

	void Append(const TArray& Other) { Items.insert(Items.end(), Other.Items.begin(), Other.Items.end()); }
	// Moves Other's elements to the end and empties Other, which keeps its room for reuse.
	void Append(TArray&& Other)
	{
		Items.insert(Items.end(), std::make_move_iterator(Other.Items.begin()), std::make_move_iterator(Other.Items.end()));
		Other.Items.clear();
	}
	void Append(const T* Ptr, int32 Count) { Items.insert(Items.end(), Ptr, Ptr + Count); }

	void RemoveAt(int32 Index, int32 Count = 1)
	{
		check(Count >= 0 && Index >= 0 && Index + Count <= Num());
		Items.erase(Items.begin() + Index, Items.begin() + Index + Count);
	}

	// Removes every element equal to Item; returns how many went.
	int32 Remove(const T& Item)
	{
		return RemoveAll([&Item](const T& Element) { return Element == Item; });
	}

	template <typename PredicateType>
	int32 RemoveAll(PredicateType Predicate)
	{
		const size_t Before = Items.size();
		Items.erase(std::remove_if(Items.begin(), Items.end(), Predicate), Items.end());
		return static_cast<int32>(Before - Items.size());
	}

	// Empties the array; with no slack the storage is given back too.
	void Empty(int32 Slack = 0)
	{
		Items.clear();
		if (Slack <= 0)
		{
			Items.shrink_to_fit();
		}
		else
		{
			Items.reserve(static_cast<size_t>(Slack));
		}
	}
	void Reset() { Items.clear(); }
	void Reserve(int32 Count) { Items.reserve(static_cast<size_t>(Count)); }
	void SetNum(int32 Count) { Items.resize(static_cast<size_t>(Count)); }
	void SetNumZeroed(int32 Count) { Items.resize(static_cast<size_t>(Count)); }
	T Pop()
	{
		T Result = std::move(Last());
		Items.pop_back();
		return Result;
	}

	int32 Find(const T& Item) const
	{
		for (int32 Index = 0; Index < Num(); ++Index)
		{
			if (Items[static_cast<size_t>(Index)] == Item)
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
		for (int32 Index = 0; Index < Num(); ++Index)
		{
			if (Predicate(Items[static_cast<size_t>(Index)]))
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
		return Index == INDEX_NONE ? nullptr : &Items[static_cast<size_t>(Index)];
	}
	template <typename PredicateType>
	bool ContainsByPredicate(PredicateType Predicate) const
	{
		return IndexOfByPredicate(Predicate) != INDEX_NONE;
	}

	void Sort() { std::sort(Items.begin(), Items.end()); }
	template <typename PredicateType>
	void Sort(PredicateType Predicate)
	{
		std::sort(Items.begin(), Items.end(), Predicate);
	}

	bool operator==(const TArray& Other) const { return Items == Other.Items; }
	bool operator!=(const TArray& Other) const { return Items != Other.Items; }

	auto begin() { return Items.begin(); }
	auto end() { return Items.end(); }
	auto begin() const { return Items.begin(); }
	auto end() const { return Items.end(); }

	// Access to the standard container for code at the platform edge.
	std::vector<T, TArrayAllocator<T>>& GetStd() { return Items; }
	const std::vector<T, TArrayAllocator<T>>& GetStd() const { return Items; }

private:
	std::vector<T, TArrayAllocator<T>> Items;
};
