#pragma once

#include "UObject/Object.h"

class FSubsystemCollectionBase;

class USubsystem : public UObject
{
	DECLARE_HEADLESS_CLASS(USubsystem, UObject)

public:
	virtual bool ShouldCreateSubsystem(UObject* Outer) const { (void)Outer; return true; }
	virtual void Initialize(FSubsystemCollectionBase& Collection) { (void)Collection; }
	virtual void Deinitialize() {}
};

class UDynamicSubsystem : public USubsystem
{
	DECLARE_HEADLESS_CLASS(UDynamicSubsystem, USubsystem)
};
