// Owns every object the headless engine creates, and the packages that hold them. Tests and tools
// use it to start from an empty world and to look at what a script changed.
#pragma once

#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>
#include "UObject/Object.h"

class FHeadlessObjectRegistry
{
public:
	static FHeadlessObjectRegistry& Get();

	void Register(UObject* Object);
	// Allocations of the editor's undo buffer, for fault injection: after this many more succeed the
	// next one throws std::bad_alloc (once); negative, none fail. CountAllocation is called by the
	// buffer before each allocation it makes.
	int32 AllocationsBeforeFailure = -1;
	void CountAllocation();

	// The first live object (not garbage) in the outer with the name (ignoring case), in creation
	// order, of the class when one is given (or exactly that class). Constant time for the usual
	// handful of objects sharing a name.
	UObject* FindObject(const UClass* Class, const UObject* Outer, FName Name, bool bExactClass) const;
	// The first of Base_Start, Base_Start+1, ... that no live object in the outer is named.
	FName FindUnusedNumberedName(const UObject* Outer, const FString& Base, int32 Start);
	// Told by objects whose name or outer is about to change, or that became garbage.
	void Unindex(UObject* Object);
	void Index(UObject* Object);
	void NoteNameFreed(const UObject* Outer, FName Name);
	// Destroys every object; called when the headless editor shuts down.
	void DestroyAll();
	template <typename FuncType>
	void ForEachObject(FuncType Func) const
	{
		for (const std::unique_ptr<UObject>& Object : Objects)
		{
			Func(Object.get());
		}
	}
	int32 Num() const { return static_cast<int32>(Objects.size()); }

	// Package loader consulted by StaticLoadObject for packages that are not in memory; answers the
	// package it loaded or null. The runner installs one that reads a project folder.
	std::function<UPackage*(const FString& PackageName)> PackageLoader;
	// Object paths that fail to load, for fault injection.
	TSet<FString> FailingLoads;
	// Fault injection for object creation: the class name (without prefix, "DMXComponent") mapped
	// to how many of the next NewObject calls for exactly that class answer null.
	TMap<FString, int32> FailingNewObjects;
	// Warnings the engine would write to its log (a failed load, a failed ensure).
	TArray<FString> Warnings;

	static void SetName(UObject* Object, FName Name) { Object->SetNameAndOuter(Name, Object->OuterPrivate); }
	static void SetOuter(UObject* Object, UObject* Outer) { Object->SetNameAndOuter(Object->NamePrivate, Outer); }

private:
	struct FOuterAndName
	{
		const UObject* Outer;
		FName Name;
		bool operator==(const FOuterAndName& Other) const { return Outer == Other.Outer && Name == Other.Name; }
	};
	struct FOuterAndText
	{
		const UObject* Outer;
		FString Text;
		bool operator==(const FOuterAndText& Other) const { return Outer == Other.Outer && Text == Other.Text; }
	};
	struct FKeyHash
	{
		size_t operator()(const FOuterAndName& Key) const { return std::hash<const void*>()(Key.Outer) ^ (size_t(GetTypeHash(Key.Name)) * 0x9E3779B97F4A7C15ull); }
		size_t operator()(const FOuterAndText& Key) const { return std::hash<const void*>()(Key.Outer) ^ (size_t(GetTypeHash(Key.Text)) * 0x9E3779B97F4A7C15ull); }
	};

	std::vector<std::unique_ptr<UObject>> Objects;
	uint64 NextSerial = 1;
	// Every object by outer and name (garbage too), each list in creation order.
	std::unordered_map<FOuterAndName, std::vector<UObject*>, FKeyHash> ObjectsByOuterAndName;
	// Per outer and base name (ignoring case): every Base_N below the number is taken by a live object.
	std::unordered_map<FOuterAndText, int32, FKeyHash> FirstFreeNumberHints;
};
