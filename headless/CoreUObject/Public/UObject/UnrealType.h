// Reflected properties, as far as the headless engine models them: boolean properties found by
// name on a class (and its super classes), read and written through the class's accessors.
#pragma once

#include <functional>
#include "UObject/Object.h"

class FProperty
{
public:
	FProperty(UClass* InOwner, const TCHAR* InName) : Owner(InOwner), Name(InName) {}
	virtual ~FProperty() = default;
	FName GetFName() const { return Name; }
	FString GetName() const { return Name.ToString(); }
	UClass* GetOwnerClass() const { return Owner; }

private:
	UClass* Owner;
	FName Name;
};

class FBoolProperty : public FProperty
{
public:
	typedef std::function<bool(const void* Container)> FGetter;
	typedef std::function<void(void* Container, bool Value)> FSetter;

	FBoolProperty(UClass* InOwner, const TCHAR* InName, FGetter InGetter, FSetter InSetter)
		: FProperty(InOwner, InName), Getter(std::move(InGetter)), Setter(std::move(InSetter))
	{
	}

	bool GetPropertyValue_InContainer(const void* Container, int32 ArrayIndex = 0) const
	{
		(void)ArrayIndex;
		return Getter(Container);
	}
	void SetPropertyValue_InContainer(void* Container, bool Value, int32 ArrayIndex = 0) const
	{
		(void)ArrayIndex;
		Setter(Container, Value);
	}

private:
	FGetter Getter;
	FSetter Setter;
};

enum class EFieldIterationFlags : uint8
{
	None = 0,
	IncludeSuper = 1,
	Default = IncludeSuper,
};

template <typename T>
T* FindFProperty(const UStruct* Owner, FName FieldName, EFieldIterationFlags IterationFlags = EFieldIterationFlags::Default)
{
	if (FieldName.IsNone())
	{
		return nullptr;
	}
	for (const UClass* Class = Owner; Class; Class = Class->GetSuperClass())
	{
		for (FProperty* Property : Class->GetOwnProperties())
		{
			if (Property->GetFName() == FieldName)
			{
				if (T* Typed = dynamic_cast<T*>(Property))
				{
					return Typed;
				}
			}
		}
		if (IterationFlags == EFieldIterationFlags::None)
		{
			break;
		}
	}
	return nullptr;
}
