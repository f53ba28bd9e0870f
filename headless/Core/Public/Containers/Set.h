#pragma once

#include "Containers/SparseHashStorage.h"
#include "Containers/Array.h"
#include "Templates/TypeHash.h"

// TSet: unique elements found by GetTypeHash and operator==, iterated in the engine's order.
template <typename InElementType>
class TSet
{
public:
	TSet() = default;
	TSet(std::initializer_list<InElementType> InitList)
	{
		for (const InElementType& Element : InitList)
		{
			Add(Element);
		}
	}

	int32 Num() const { return Storage.Num(); }
	bool IsEmpty() const { return Storage.Num() == 0; }

	void Add(const InElementType& Element)
	{
		const uint32 Hash = GetTypeHash(Element);
		if (Storage.FindIndex(Element, Hash, KeyOf) == INDEX_NONE)
		{
			InElementType Copy(Element);
			Storage.AddNew(std::move(Copy), Hash);
		}
	}
	bool Contains(const InElementType& Element) const { return Storage.FindIndex(Element, GetTypeHash(Element), KeyOf) != INDEX_NONE; }
	const InElementType* Find(const InElementType& Element) const
	{
		const int32 Slot = Storage.FindIndex(Element, GetTypeHash(Element), KeyOf);
		return Slot == INDEX_NONE ? nullptr : &Storage.At(Slot);
	}
	int32 Remove(const InElementType& Element)
	{
		const int32 Slot = Storage.FindIndex(Element, GetTypeHash(Element), KeyOf);
		if (Slot == INDEX_NONE)
		{
			return 0;
		}
		Storage.RemoveAtSlot(Slot);
		return 1;
	}
	void Empty() { Storage.Empty(); }
	TArray<InElementType> Array() const
	{
		TArray<InElementType> Result;
		for (const InElementType& Element : Storage)
		{
			Result.Add(Element);
		}
		return Result;
	}

	auto begin() { return Storage.begin(); }
	auto end() { return Storage.end(); }
	auto begin() const { return Storage.begin(); }
	auto end() const { return Storage.end(); }

private:
	static const InElementType& KeyOf(const InElementType& Element) { return Element; }
	TSparseHashStorage<InElementType> Storage;
};
