#pragma once

#include "CoreMinimal.h"
#include "UObject/ObjectMacros.h"

class UObject;
class FProperty;

// The class object of a headless class: its name without prefix, its super class, a factory for
// new instances (none for abstract classes) and its reflected properties.
class UClass
{
public:
	typedef UObject* (*FFactory)();

	UClass(const TCHAR* InName, UClass* InSuper, FFactory InFactory) : Name(InName), SuperClass(InSuper), Factory(InFactory) {}

	FString GetName() const { return Name; }
	FName GetFName() const { return FName(Name); }
	UClass* GetSuperClass() const { return SuperClass; }
	bool IsChildOf(const UClass* Other) const
	{
		for (const UClass* Class = this; Class; Class = Class->SuperClass)
		{
			if (Class == Other)
			{
				return true;
			}
		}
		return false;
	}
	template <typename T>
	bool IsChildOf() const { return IsChildOf(T::StaticClass()); }
	bool HasFactory() const { return Factory != nullptr; }
	UObject* CreateInstance() const { return Factory ? Factory() : nullptr; }

	void AddProperty(FProperty* Property) { Properties.Add(Property); }
	const TArray<FProperty*>& GetOwnProperties() const { return Properties; }

private:
	FString Name;
	UClass* SuperClass;
	FFactory Factory;
	TArray<FProperty*> Properties;
};

typedef UClass UStruct;

template <typename T>
class TSubclassOf
{
public:
	TSubclassOf() = default;
	TSubclassOf(UClass* InClass) : Class(InClass) {}
	UClass* Get() const { return Class; }
	operator UClass*() const { return Class; }
	UClass* operator->() const { return Class; }
	UClass* operator*() const { return Class; }
	bool operator==(const TSubclassOf& Other) const { return Class == Other.Class; }

private:
	UClass* Class = nullptr;
};
