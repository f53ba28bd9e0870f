#pragma once

#include "UObject/Object.h"

class UPackage : public UObject
{
	DECLARE_HEADLESS_CLASS(UPackage, UObject)

public:
	void SetDirtyFlag(bool bInIsDirty) { bDirty = bInIsDirty; }
	bool IsDirty() const { return bDirty; }

private:
	bool bDirty = false;
};

// Finds the package in memory or makes a new empty one.
UPackage* CreatePackage(const TCHAR* PackageName);
UPackage* FindPackage(UObject* InOuter, const TCHAR* PackageName);
