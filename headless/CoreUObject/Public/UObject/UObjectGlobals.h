#pragma once

#include <string_view>
#include "UObject/Object.h"
#include "UObject/Package.h"

class UPackageMap;
struct FLinkerInstancingContext;
typedef std::u16string_view FStringView;

// Creates an object of the class with the outer, name (NAME_None: a unique name is made) and flags.
// Answers null when another object of that name already lives in the outer.
UObject* StaticConstructObjectHeadless(UClass* Class, UObject* Outer, FName Name, EObjectFlags Flags);

template <typename T>
T* NewObject(UObject* Outer, UClass* Class, FName Name = NAME_None, EObjectFlags Flags = RF_NoFlags)
{
	return static_cast<T*>(StaticConstructObjectHeadless(Class ? Class : T::StaticClass(), Outer, Name, Flags));
}

template <typename T>
T* NewObject(UObject* Outer = nullptr)
{
	return NewObject<T>(Outer, T::StaticClass());
}

template <typename T>
T* NewObject(UObject* Outer, FName Name, EObjectFlags Flags = RF_NoFlags)
{
	return NewObject<T>(Outer, T::StaticClass(), Name, Flags);
}

UObject* StaticFindObjectFast(UClass* Class, UObject* InOuter, FName InName, bool bExactClass = false);
UObject* StaticFindObject(UClass* Class, UObject* InOuter, const TCHAR* Name);

// Finds the object of the class at the path, loading its package first when it is not in memory.
UObject* StaticLoadObject(UClass* Class, UObject* InOuter, FStringView Name, FStringView Filename = {}, uint32 LoadFlags = LOAD_None,
	UPackageMap* Sandbox = nullptr, bool bAllowObjectReconciliation = true, const FLinkerInstancingContext* InstancingContext = nullptr);

template <typename T>
T* LoadObject(UObject* Outer, FStringView Name, FStringView Filename = {}, uint32 LoadFlags = LOAD_None, UPackageMap* Sandbox = nullptr)
{
	return static_cast<T*>(StaticLoadObject(T::StaticClass(), Outer, Name, Filename, LoadFlags, Sandbox));
}

FName MakeUniqueObjectName(UObject* Outer, const UClass* Class, FName BaseName = NAME_None);

template <typename T>
const T* GetDefault()
{
	static T* Default = []()
	{
		T* Object = new T();
		Object->SetFlags(RF_ClassDefaultObject);
		return Object;
	}();
	return Default;
}
