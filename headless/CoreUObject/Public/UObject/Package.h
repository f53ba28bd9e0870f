#pragma once

#include "UObject/Object.h"

class UPackage : public UObject
{
	DECLARE_HEADLESS_CLASS(UPackage, UObject)

public:
	// Clearing the flag outside an undo or redo counts as a save (saving and loading do it).
	void SetDirtyFlag(bool bInIsDirty);
	bool IsDirty() const { return bDirty; }
	// How often the package was saved (or loaded) in this session; undo and redo leave the dirty
	// flag of a package saved since the step alone.
	uint32 GetSaveCount() const { return SaveCount; }

private:
	bool bDirty = false;
	uint32 SaveCount = 0;
};

// Finds the package in memory or makes a new empty one.
UPackage* CreatePackage(const TCHAR* PackageName);
UPackage* FindPackage(UObject* InOuter, const TCHAR* PackageName);
