// Owns every object the headless engine creates, and the packages that hold them. Tests and tools
// use it to start from an empty world and to look at what a script changed.
#pragma once

#include <functional>
#include <memory>
#include <vector>
#include "UObject/Object.h"

class FHeadlessObjectRegistry
{
public:
	static FHeadlessObjectRegistry& Get();

	void Register(UObject* Object);
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

	static void SetName(UObject* Object, FName Name) { Object->NamePrivate = Name; }
	static void SetOuter(UObject* Object, UObject* Outer) { Object->OuterPrivate = Outer; }

private:
	std::vector<std::unique_ptr<UObject>> Objects;
};
