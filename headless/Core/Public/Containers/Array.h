// TArray: a contiguous array with the engine's interface. Index checks are engine assertions.
#pragma once

#include <algorithm>
#include <initializer_list>
#include <vector>
#include "CoreTypes.h"

template <typename InElementType, typename InAllocator = void>
class TArray
{
public:
	typedef InElementType ElementType;
	typedef int32 SizeType;

	TArray() = default;
	TArray(std::initializer_list<InElementType> InitList) : Data(InitList) {}
	TArray(const InElementType* Ptr, int32 Count) : Data(Ptr, Ptr + Count) {}
	template <typename OtherAllocator>
	TArray(const TArray<InElementType, OtherAllocator>& Other) : Data(Other.begin(), Other.end()) {}
	TArray(const TArray&) = default;
	TArray(TArray&&) noexcept = default;
	TArray& operator=(const TArray&) = default;
	TArray& operator=(TArray&&) noexcept = default;

	int32 Num() const { return static_cast<int32>(Data.size()); }
	bool IsEmpty() const { return Data.empty(); }
	bool IsValidIndex(int32 Index) const { return Index >= 0 && Index < Num(); }
	int32 Max() const { return static_cast<int32>(Data.capacity()); }

	InElementType* GetData() { return Data.data(); }
	const InElementType* GetData() const { return Data.data(); }

	InElementType& operator[](int32 Index)
	{
		check(IsValidIndex(Index));
		return Data[static_cast<size_t>(Index)];
	}
	const InElementType& operator[](int32 Index) const
	{
		check(IsValidIndex(Index));
		return Data[static_cast<size_t>(Index)];
	}
	InElementType& Last(int32 IndexFromTheEnd = 0) { return (*this)[Num() - 1 - IndexFromTheEnd]; }
	const InElementType& Last(int32 IndexFromTheEnd = 0) const { return (*this)[Num() - 1 - IndexFromTheEnd]; }

	int32 Add(const InElementType& Item)
	{
		Data.push_back(Item);
		return Num() - 1;
	}
	int32 Add(InElementType&& Item)
	{
		Data.push_back(std::move(Item));
		return Num() - 1;
	}
	template <typename... ArgsType>
	int32 Emplace(ArgsType&&... Args)
	{
		Data.emplace_back(std::forward<ArgsType>(Args)...);
		return Num() - 1;
	}
	InElementType& AddDefaulted_GetRef()
	{
		Data.emplace_back();
		return Data.back();
	}
	int32 AddDefaulted(int32 Count = 1)
	{
		const int32 First = Num();
		Data.resize(Data.size() + static_cast<size_t>(Count));
		return First;
	}
	int32 AddZeroed(int32 Count = 1)
	{
		const int32 First = Num();
		Data.resize(Data.size() + static_cast<size_t>(Count), InElementType());
		return First;
	}
	int32 AddUnique(const InElementType& Item)
	{
		const int32 Existing = Find(Item);
		return Existing != INDEX_NONE ? Existing : Add(Item);
	}
	void Append(const TArray& Other) { Data.insert(Data.end(), Other.Data.begin(), Other.Data.end()); }
	int32 Insert(const InElementType& Item, int32 Index)
	{
		check(Index >= 0 && Index <= Num());
		Data.insert(Data.begin() + Index, Item);
		return Index;
	}
	void RemoveAt(int32 Index, int32 Count = 1)
	{
		check(Index >= 0 && Count >= 0 && Index + Count <= Num());
		Data.erase(Data.begin() + Index, Data.begin() + Index + Count);
	}
	int32 Remove(const InElementType& Item)
	{
		const size_t Before = Data.size();
		Data.erase(std::remove(Data.begin(), Data.end(), Item), Data.end());
		return static_cast<int32>(Before - Data.size());
	}
	int32 RemoveSingle(const InElementType& Item)
	{
		const int32 Index = Find(Item);
		if (Index == INDEX_NONE)
		{
			return 0;
		}
		RemoveAt(Index);
		return 1;
	}
	template <typename Predicate>
	int32 RemoveAll(Predicate Pred)
	{
		const size_t Before = Data.size();
		Data.erase(std::remove_if(Data.begin(), Data.end(), Pred), Data.end());
		return static_cast<int32>(Before - Data.size());
	}
	void Empty(int32 Slack = 0)
	{
		Data.clear();
		if (Slack > 0)
		{
			Data.reserve(static_cast<size_t>(Slack));
		}
		else
		{
			Data.shrink_to_fit();
		}
	}
	void Reset(int32 NewSize = 0)
	{
		Data.clear();
		if (NewSize > 0)
		{
			Data.reserve(static_cast<size_t>(NewSize));
		}
	}
	void Reserve(int32 Count) { Data.reserve(static_cast<size_t>(Count)); }
	void SetNum(int32 NewNum) { Data.resize(static_cast<size_t>(NewNum)); }
	void SetNumZeroed(int32 NewNum) { Data.resize(static_cast<size_t>(NewNum), InElementType()); }

	int32 Find(const InElementType& Item) const
	{
		const auto It = std::find(Data.begin(), Data.end(), Item);
		return It == Data.end() ? INDEX_NONE : static_cast<int32>(It - Data.begin());
	}
	bool Find(const InElementType& Item, int32& OutIndex) const
	{
		OutIndex = Find(Item);
		return OutIndex != INDEX_NONE;
	}
	bool Contains(const InElementType& Item) const { return Find(Item) != INDEX_NONE; }
	template <typename Predicate>
	const InElementType* FindByPredicate(Predicate Pred) const
	{
		const auto It = std::find_if(Data.begin(), Data.end(), Pred);
		return It == Data.end() ? nullptr : &*It;
	}
	template <typename Predicate>
	bool ContainsByPredicate(Predicate Pred) const { return FindByPredicate(Pred) != nullptr; }

	void Sort() { std::sort(Data.begin(), Data.end()); }
	template <typename Predicate>
	void Sort(Predicate Pred) { std::sort(Data.begin(), Data.end(), Pred); }
	template <typename Predicate>
	void StableSort(Predicate Pred) { std::stable_sort(Data.begin(), Data.end(), Pred); }

	bool operator==(const TArray& Other) const { return Data == Other.Data; }
	bool operator!=(const TArray& Other) const { return Data != Other.Data; }

	auto begin() { return Data.begin(); }
	auto end() { return Data.end(); }
	auto begin() const { return Data.begin(); }
	auto end() const { return Data.end(); }

private:
	std::vector<InElementType> Data;
};

template <int32 NumInlineElements>
class TInlineAllocator
{
};
