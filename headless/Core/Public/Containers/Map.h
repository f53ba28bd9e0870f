#pragma once

#include "Containers/SparseHashStorage.h"
#include "Containers/Array.h"
#include "Templates/TypeHash.h"

template <typename KeyType, typename ValueType>
struct TPair
{
	KeyType Key;
	ValueType Value;
};

// TMap: keys found by GetTypeHash and operator==; Add on an existing key replaces the value in
// place; iteration follows the engine's sparse-array order.
template <typename InKeyType, typename InValueType>
class TMap
{
public:
	typedef TPair<InKeyType, InValueType> ElementType;

	int32 Num() const { return Storage.Num(); }
	bool IsEmpty() const { return Storage.Num() == 0; }

	InValueType& Add(const InKeyType& Key, const InValueType& Value)
	{
		const uint32 Hash = GetTypeHash(Key);
		const int32 Slot = Storage.FindIndex(Key, Hash, KeyOf);
		if (Slot != INDEX_NONE)
		{
			Storage.At(Slot).Key = Key;
			Storage.At(Slot).Value = Value;
			return Storage.At(Slot).Value;
		}
		return Storage.At(Storage.AddNew(ElementType{Key, Value}, Hash)).Value;
	}
	InValueType& FindOrAdd(const InKeyType& Key)
	{
		if (InValueType* Existing = Find(Key))
		{
			return *Existing;
		}
		return Add(Key, InValueType());
	}
	InValueType* Find(const InKeyType& Key)
	{
		const int32 Slot = Storage.FindIndex(Key, GetTypeHash(Key), KeyOf);
		return Slot == INDEX_NONE ? nullptr : &Storage.At(Slot).Value;
	}
	const InValueType* Find(const InKeyType& Key) const
	{
		const int32 Slot = Storage.FindIndex(Key, GetTypeHash(Key), KeyOf);
		return Slot == INDEX_NONE ? nullptr : &Storage.At(Slot).Value;
	}
	InValueType FindRef(const InKeyType& Key) const
	{
		const InValueType* Value = Find(Key);
		return Value ? *Value : InValueType();
	}
	bool Contains(const InKeyType& Key) const { return Find(Key) != nullptr; }
	int32 Remove(const InKeyType& Key)
	{
		const int32 Slot = Storage.FindIndex(Key, GetTypeHash(Key), KeyOf);
		if (Slot == INDEX_NONE)
		{
			return 0;
		}
		Storage.RemoveAtSlot(Slot);
		return 1;
	}
	void Empty() { Storage.Empty(); }
	template <typename Allocator>
	int32 GetKeys(TArray<InKeyType, Allocator>& OutKeys) const
	{
		OutKeys.Reset();
		for (const ElementType& Pair : Storage)
		{
			OutKeys.Add(Pair.Key);
		}
		return OutKeys.Num();
	}
	InValueType& operator[](const InKeyType& Key)
	{
		InValueType* Value = Find(Key);
		check(Value != nullptr);
		return *Value;
	}

	auto begin() { return Storage.begin(); }
	auto end() { return Storage.end(); }
	auto begin() const { return Storage.begin(); }
	auto end() const { return Storage.end(); }

private:
	static const InKeyType& KeyOf(const ElementType& Element) { return Element.Key; }
	TSparseHashStorage<ElementType> Storage;
};
