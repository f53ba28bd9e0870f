// Finding a DMX Library from a script's path, and its fixture types and patches by name.
#pragma once

#include "CoreMinimal.h"

class UDMXLibrary;
class UDMXEntityFixtureType;
class UDMXEntityFixturePatch;

// The DMX Library at the package or object path, loaded if need be; null for an empty path, a
// path that names nothing, or an object that is not a DMX Library.
UDMXLibrary* LoadDMXLibrary(const FString& Path);

// A path holding a dot is taken as an object path as it stands; a package path gets the asset's
// short name appended ("/Game/DMX/Stage" -> "/Game/DMX/Stage.Stage").
FString MakeLibraryObjectPath(const FString& Path);

// The first fixture type of the library, in library order, whose name equals Name ignoring case.
UDMXEntityFixtureType* FindFixtureTypeByName(const UDMXLibrary* Library, const FString& Name);

// The first fixture patch of the library, in library order, whose name equals Name ignoring case.
UDMXEntityFixturePatch* FindFixturePatchByName(const UDMXLibrary* Library, const FString& Name);
