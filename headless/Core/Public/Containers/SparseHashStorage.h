// Storage shared by TSet and TMap: a sparse array of elements whose free slots are reused,
// most recently freed first, plus a hash index. Iteration walks the sparse array, which gives
// the engine's order: insertion order until removals leave holes that later additions fill.
#pragma once

#include <optional>
#include <unordered_map>
#include <vector>
#include "CoreTypes.h"

template <typename ElementType>
class TSparseHashStorage
{
public:
	int32 Num() const { return Count; }

	template <typename KeyType, typename KeyOfFn>
	int32 FindIndex(const KeyType& Key, uint32 Hash, KeyOfFn KeyOf) const
	{
		const auto Range = Index.equal_range(Hash);
		for (auto It = Range.first; It != Range.second; ++It)
		{
			if (KeyOf(*Elements[static_cast<size_t>(It->second)]) == Key)
			{
				return It->second;
			}
		}
		return INDEX_NONE;
	}

	int32 AddNew(ElementType&& Element, uint32 Hash)
	{
		int32 Slot;
		if (!FreeSlots.empty())
		{
			Slot = FreeSlots.back();
			FreeSlots.pop_back();
			Elements[static_cast<size_t>(Slot)].emplace(std::move(Element));
			Hashes[static_cast<size_t>(Slot)] = Hash;
		}
		else
		{
			Slot = static_cast<int32>(Elements.size());
			Elements.emplace_back(std::move(Element));
			Hashes.push_back(Hash);
		}
		Index.emplace(Hash, Slot);
		++Count;
		return Slot;
	}

	void RemoveAtSlot(int32 Slot)
	{
		const uint32 Hash = Hashes[static_cast<size_t>(Slot)];
		const auto Range = Index.equal_range(Hash);
		for (auto It = Range.first; It != Range.second; ++It)
		{
			if (It->second == Slot)
			{
				Index.erase(It);
				break;
			}
		}
		Elements[static_cast<size_t>(Slot)].reset();
		FreeSlots.push_back(Slot);
		--Count;
	}

	void Empty()
	{
		Elements.clear();
		Hashes.clear();
		FreeSlots.clear();
		Index.clear();
		Count = 0;
	}

	ElementType& At(int32 Slot) { return *Elements[static_cast<size_t>(Slot)]; }
	const ElementType& At(int32 Slot) const { return *Elements[static_cast<size_t>(Slot)]; }

	template <typename Owner, typename ValueType>
	class TIterator
	{
	public:
		TIterator(Owner* InStorage, size_t InSlot) : Storage(InStorage), Slot(InSlot) { Skip(); }
		ValueType& operator*() const { return *Storage->Elements[Slot]; }
		ValueType* operator->() const { return &*Storage->Elements[Slot]; }
		TIterator& operator++()
		{
			++Slot;
			Skip();
			return *this;
		}
		bool operator!=(const TIterator& Other) const { return Slot != Other.Slot; }
		bool operator==(const TIterator& Other) const { return Slot == Other.Slot; }

	private:
		void Skip()
		{
			while (Slot < Storage->Elements.size() && !Storage->Elements[Slot].has_value())
			{
				++Slot;
			}
		}
		Owner* Storage;
		size_t Slot;
	};

	using FIterator = TIterator<TSparseHashStorage, ElementType>;
	using FConstIterator = TIterator<const TSparseHashStorage, const ElementType>;

	FIterator begin() { return FIterator(this, 0); }
	FIterator end() { return FIterator(this, Elements.size()); }
	FConstIterator begin() const { return FConstIterator(this, 0); }
	FConstIterator end() const { return FConstIterator(this, Elements.size()); }

private:
	std::vector<std::optional<ElementType>> Elements;
	std::vector<uint32> Hashes;
	std::vector<int32> FreeSlots;
	std::unordered_multimap<uint32, int32> Index;
	int32 Count = 0;
};
