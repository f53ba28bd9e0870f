// UObject: named objects with an outer, a class and flags. Objects live until the headless engine
// shuts down (there is no garbage collection inside a session); one created inside a transaction
// that is later undone is marked as garbage until it is redone.
#pragma once

#include "CoreMinimal.h"
#include "Misc/ITransaction.h"
#include "UObject/ObjectMacros.h"
#include "UObject/Class.h"
#include "UObject/HeadlessStateArchive.h"

class UPackage;

class UObject
{
public:
	typedef UObject ThisClass;

	UObject() = default;
	virtual ~UObject() = default;
	UObject(const UObject&) = delete;
	UObject& operator=(const UObject&) = delete;

	static UClass* StaticClass();

	UClass* GetClass() const { return ClassPrivate; }
	FName GetFName() const { return NamePrivate; }
	FString GetName() const { return NamePrivate.ToString(); }
	UObject* GetOuter() const { return OuterPrivate; }
	UPackage* GetOutermost() const;
	UPackage* GetPackage() const { return GetOutermost(); }
	// The full object path: "/Game/DMX/Stage.Stage", subobjects after ":" ("...Stage:Entity").
	FString GetPathName(const UObject* StopOuter = nullptr) const;
	FString GetFullName() const;

	bool IsA(const UClass* SomeBase) const { return ClassPrivate && ClassPrivate->IsChildOf(SomeBase); }
	template <typename T>
	bool IsA() const { return IsA(T::StaticClass()); }
	bool IsIn(const UObject* SomeOuter) const;

	bool HasAnyFlags(EObjectFlags Flags) const { return (uint32(ObjectFlags) & uint32(Flags)) != 0; }
	void SetFlags(EObjectFlags Flags) { ObjectFlags = EObjectFlags(uint32(ObjectFlags) | uint32(Flags)); }
	void ClearFlags(EObjectFlags Flags) { ObjectFlags = EObjectFlags(uint32(ObjectFlags) & ~uint32(Flags)); }
	EObjectFlags GetFlags() const { return ObjectFlags; }
	bool IsTemplate() const { return HasAnyFlags(RF_ClassDefaultObject | RF_ArchetypeObject); }
	bool IsValidLowLevelFast(bool = true) const { return ClassPrivate != nullptr; }
	bool IsValidLowLevel() const { return ClassPrivate != nullptr; }
	bool IsGarbage() const { return bGarbage; }
	// A garbage object is invisible to lookups, so its name is free again.
	void MarkAsGarbage();
	void ClearGarbage() { bGarbage = false; }

	// Renames the object (and optionally moves it to another outer). Fails when the new name is
	// taken. Marks the object first (Modify, recorded in an open transaction), as editor builds do,
	// unless REN_NonTransactional; REN_DoNotDirty keeps the package clean; REN_Test only answers
	// whether the name is free.
	virtual bool Rename(const TCHAR* NewName = nullptr, UObject* NewOuter = nullptr, uint32 Flags = REN_None);

	// Records the object into the open transaction (once per transaction) when it is transactional;
	// answers whether it was recorded. Marks the package dirty when asked.
	virtual bool Modify(bool bAlwaysMarkDirty = true);
	bool MarkPackageDirty() const;

	virtual void PostInitProperties() {}
	virtual void PostLoad() {}
	// Called on each object an undo or redo restored.
	virtual void PostEditUndo() {}

	// Lists the state the undo buffer saves and restores.
	virtual void SerializeHeadlessState(FHeadlessStateArchive& Ar);

private:
	friend UObject* StaticConstructObjectHeadless(UClass*, UObject*, FName, EObjectFlags);
	friend class FHeadlessObjectRegistry;

	// Changes name and outer together, keeping the registry's name index right.
	void SetNameAndOuter(FName NewName, UObject* NewOuter);

	FName NamePrivate;
	UObject* OuterPrivate = nullptr;
	// Creation order, which lookups among objects of the same outer and name follow.
	uint64 RegistrationSerial = 0;
	UClass* ClassPrivate = nullptr;
	EObjectFlags ObjectFlags = RF_NoFlags;
	bool bGarbage = false;
};

typedef UObject UObjectBase;
typedef UObject UObjectBaseUtility;

template <typename T>
inline T* Cast(UObject* Object)
{
	return (Object && Object->IsA<T>()) ? static_cast<T*>(Object) : nullptr;
}

template <typename T>
inline const T* Cast(const UObject* Object)
{
	return (Object && Object->IsA<T>()) ? static_cast<const T*>(Object) : nullptr;
}

template <typename T>
inline T* CastChecked(UObject* Object)
{
	T* Result = Cast<T>(Object);
	check(Result != nullptr);
	return Result;
}

inline bool IsValid(const UObject* Object)
{
	return Object != nullptr && !Object->IsGarbage();
}
