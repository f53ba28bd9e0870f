// Base of every object of a DMX library: the library itself and its entities.
#pragma once

#include "CoreMinimal.h"
#include "UObject/Object.h"

#ifndef DMXRUNTIME_API
#define DMXRUNTIME_API
#endif

UCLASS(abstract)
class DMXRUNTIME_API UDMXObjectBase : public UObject
{
	DECLARE_HEADLESS_CLASS(UDMXObjectBase, UObject)
};
