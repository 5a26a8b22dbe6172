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
		Index.emplace(Key, Pairs.Num());
		Pairs.Add(PairType{Key, Value});
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
		auto It = Index.find(Key);
		return It == Index.end() ? nullptr : &Pairs[It->second].Value;
	}
	const ValueType* Find(const KeyType& Key) const
	{
		auto It = Index.find(Key);
		return It == Index.end() ? nullptr : &Pairs[It->second].Value;
	}
	// The value of Key, or a default value when it is absent.
	ValueType FindRef(const KeyType& Key) const
	{
		const ValueType* Found = Find(Key);
		return Found ? *Found : ValueType();
	}
	bool Contains(const KeyType& Key) const { return Index.find(Key) != Index.end(); }

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
		auto It = Index.find(Key);
		if (It == Index.end())
		{
			return 0;
		}
		const int32 Removed = It->second;
		Pairs.RemoveAt(Removed);
		Index.erase(It);
		for (auto& Entry : Index)
		{
			if (Entry.second > Removed)
			{
				--Entry.second;
			}
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
	struct FKeyHash
	{
		size_t operator()(const KeyType& Key) const { return static_cast<size_t>(GetTypeHash(Key)); }
	};

	TArray<PairType> Pairs;
	std::unordered_map<KeyType, int32, FKeyHash> Index;
};
