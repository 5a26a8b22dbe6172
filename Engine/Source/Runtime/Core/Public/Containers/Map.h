#pragma once

#include "Containers/Array.h"

#include <unordered_map>
#include <utility>

template <typename KeyType, typename ValueType>
struct TPair
{
	KeyType Key;
	ValueType Value;
};

// A map that keeps its pairs in the order in which their keys were first added: documents built from it are
// written in that order. Keys need GetTypeHash and operator==.
template <typename KeyType, typename ValueType>
class TMap
{
public:
	using PairType = TPair<KeyType, ValueType>;

	int32 Num() const { return Pairs.Num(); }
	bool IsEmpty() const { return Pairs.IsEmpty(); }

	// Sets the value of Key; an existing key keeps its place in the order.
	ValueType& Add(const KeyType& Key, const ValueType& Value)
	{
		if (ValueType* Existing = Find(Key))
		{
			*Existing = Value;
			return *Existing;
		}
		Pairs.Add(PairType{Key, Value});
		if (Pairs.Num() == LinearLimit + 1)
		{
			for (int32 Position = 0; Position < Pairs.Num(); ++Position)
			{
				Index.emplace(Pairs[Position].Key, Position);
			}
		}
		else if (UsesIndex())
		{
			Index.emplace(Key, Pairs.Num() - 1);
		}
		return Pairs.Last().Value;
	}
	ValueType& Emplace(const KeyType& Key, ValueType Value) { return Add(Key, std::move(Value)); }

	ValueType& FindOrAdd(const KeyType& Key)
	{
		if (ValueType* Existing = Find(Key))
		{
			return *Existing;
		}
		return Add(Key, ValueType());
	}

	ValueType* Find(const KeyType& Key)
	{
		const int32 Position = IndexOf(Key);
		return Position < 0 ? nullptr : &Pairs[Position].Value;
	}
	const ValueType* Find(const KeyType& Key) const
	{
		const int32 Position = IndexOf(Key);
		return Position < 0 ? nullptr : &Pairs[Position].Value;
	}
	// The value of Key, or a default value when it is absent.
	ValueType FindRef(const KeyType& Key) const
	{
		const ValueType* Found = Find(Key);
		return Found ? *Found : ValueType();
	}
	bool Contains(const KeyType& Key) const { return IndexOf(Key) >= 0; }

	ValueType& operator[](const KeyType& Key)
	{
		ValueType* Found = Find(Key);
		check(Found != nullptr);
		return *Found;
	}
	const ValueType& operator[](const KeyType& Key) const
	{
		const ValueType* Found = Find(Key);
		check(Found != nullptr);
		return *Found;
	}

	int32 Remove(const KeyType& Key)
	{
		const int32 Removed = IndexOf(Key);
		if (Removed < 0)
		{
			return 0;
		}
		if (UsesIndex())
		{
			Index.erase(Key);
			for (auto& Entry : Index)
			{
				if (Entry.second > Removed)
				{
					--Entry.second;
				}
			}
		}
		Pairs.RemoveAt(Removed);
		if (!UsesIndex())
		{
			Index.clear();
		}
		return 1;
	}

	void Empty()
	{
		Pairs.Empty();
		Index.clear();
	}

	void GetKeys(TArray<KeyType>& OutKeys) const
	{
		for (const PairType& Pair : Pairs)
		{
			OutKeys.Add(Pair.Key);
		}
	}

	auto begin() { return Pairs.begin(); }
	auto end() { return Pairs.end(); }
	auto begin() const { return Pairs.begin(); }
	auto end() const { return Pairs.end(); }

private:
	// A small map is searched pair by pair, which beats hashing; the index is built once it grows past this.
	// A document's objects are mostly small and many: one hash table each was most of the cost of reading
	// a large one.
	static constexpr int32 LinearLimit = 16;
	bool UsesIndex() const { return Pairs.Num() > LinearLimit; }
	int32 IndexOf(const KeyType& Key) const
	{
		if (!UsesIndex())
		{
			for (int32 Position = 0; Position < Pairs.Num(); ++Position)
			{
				if (Pairs[Position].Key == Key)
				{
					return Position;
				}
			}
			return -1;
		}
		auto It = Index.find(Key);
		return It == Index.end() ? -1 : It->second;
	}

	struct FKeyHash
	{
		size_t operator()(const KeyType& Key) const { return static_cast<size_t>(GetTypeHash(Key)); }
	};

	TArray<PairType> Pairs;
	std::unordered_map<KeyType, int32, FKeyHash> Index;
};
