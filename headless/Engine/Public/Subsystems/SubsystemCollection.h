// A collection of subsystems of one base class, created for one outer (the engine, a world...).
// Subsystem classes announce themselves with FSubsystemCollectionBase::RegisterSubsystemClass,
// standing in for the engine's discovery of every class derived from the base.
#pragma once

#include "Subsystems/Subsystem.h"

class FSubsystemCollectionBase
{
public:
	explicit FSubsystemCollectionBase(UClass* InBaseType) : BaseType(InBaseType) {}
	virtual ~FSubsystemCollectionBase() = default;

	// Creates one instance of every registered subclass of the base type, except the excluded ones.
	void Initialize(UObject* NewOuter, const TArray<UClass*>& ExcludedClasses = {});
	void Deinitialize();
	USubsystem* GetSubsystemInternal(UClass* SubsystemClass) const;

	static void RegisterSubsystemClass(UClass* SubsystemClass);

private:
	UClass* BaseType;
	UObject* Outer = nullptr;
	TArray<USubsystem*> Subsystems;
};

template <typename TBaseType>
class FSubsystemCollection : public FSubsystemCollectionBase
{
public:
	FSubsystemCollection() : FSubsystemCollectionBase(TBaseType::StaticClass()) {}

	template <typename TSubsystemClass>
	TSubsystemClass* GetSubsystem(UClass* SubsystemClass) const
	{
		return static_cast<TSubsystemClass*>(GetSubsystemInternal(SubsystemClass));
	}
};
