#include <algorithm>
#include <new>
#include "UObject/Object.h"
#include "UObject/HeadlessObjectRegistry.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"
#include "Misc/PackageName.h"

ITransaction* GUndo = nullptr;
bool GIsTransacting = false;

UClass* UObject::StaticClass()
{
	static UClass Class(TEXT("Object"), nullptr, []() -> UObject* { return new UObject(); });
	return &Class;
}

IMPLEMENT_HEADLESS_CLASS(UPackage, UObject, "Package")

void UPackage::SerializeHeadlessState(FHeadlessStateArchive& Ar)
{
	Super::SerializeHeadlessState(Ar);
}

void UPackage::SetDirtyFlag(bool bInIsDirty)
{
	if (!bInIsDirty && !GIsTransacting)
	{
		++SaveCount;
	}
	bDirty = bInIsDirty;
}

void UObject::SerializeHeadlessState(FHeadlessStateArchive& Ar)
{
	FName Name = NamePrivate;
	UObject* Outer = OuterPrivate;
	Ar << Name << Outer;
	if (Ar.IsLoading())
	{
		SetNameAndOuter(Name, Outer);
	}
}

void UObject::SetNameAndOuter(FName NewName, UObject* NewOuter)
{
	if (NewOuter == OuterPrivate && NewName.ToString().Equals(NamePrivate.ToString()))
	{
		return;
	}
	FHeadlessObjectRegistry& Registry = FHeadlessObjectRegistry::Get();
	const bool bIndexed = RegistrationSerial != 0;
	if (bIndexed)
	{
		Registry.Unindex(this);
	}
	NamePrivate = NewName;
	OuterPrivate = NewOuter;
	if (bIndexed)
	{
		Registry.Index(this);
	}
}

void UObject::MarkAsGarbage()
{
	if (!bGarbage && RegistrationSerial != 0)
	{
		FHeadlessObjectRegistry::Get().NoteNameFreed(OuterPrivate, NamePrivate);
	}
	bGarbage = true;
}

UPackage* UObject::GetOutermost() const
{
	const UObject* Object = this;
	while (Object->OuterPrivate)
	{
		Object = Object->OuterPrivate;
	}
	return const_cast<UPackage*>(Cast<UPackage>(Object));
}

bool UObject::IsIn(const UObject* SomeOuter) const
{
	for (const UObject* Outer = OuterPrivate; Outer; Outer = Outer->OuterPrivate)
	{
		if (Outer == SomeOuter)
		{
			return true;
		}
	}
	return false;
}

FString UObject::GetPathName(const UObject* StopOuter) const
{
	if (this == StopOuter)
	{
		return FString(TEXT("None"));
	}
	if (!OuterPrivate || OuterPrivate == StopOuter)
	{
		return GetName();
	}
	FString Result = OuterPrivate->GetPathName(StopOuter);
	// Objects directly inside a package follow a '.', subobjects of those a ':'.
	const bool bOuterIsTopLevelObject = OuterPrivate->OuterPrivate && OuterPrivate->OuterPrivate->IsA<UPackage>();
	Result += bOuterIsTopLevelObject ? TEXT(":") : TEXT(".");
	Result += GetName();
	return Result;
}

FString UObject::GetFullName() const
{
	return (ClassPrivate ? ClassPrivate->GetName() : FString(TEXT("None"))) + TEXT(" ") + GetPathName();
}

bool UObject::Rename(const TCHAR* NewName, UObject* NewOuter, uint32 Flags)
{
	UObject* TargetOuter = NewOuter ? NewOuter : OuterPrivate;
	const FName TargetName = NewName ? FName(NewName) : MakeUniqueObjectName(TargetOuter, ClassPrivate);
	UObject* Existing = StaticFindObjectFast(nullptr, TargetOuter, TargetName);
	if (Existing && Existing != this)
	{
		return false;
	}
	if (Flags & REN_Test)
	{
		return true;
	}
	// Editor builds mark the object before renaming it, through any override of Modify.
	if (!(Flags & REN_NonTransactional))
	{
		Modify(!(Flags & REN_DoNotDirty));
	}
	SetNameAndOuter(TargetName, TargetOuter);
	return true;
}

bool UObject::Modify(bool bAlwaysMarkDirty)
{
	bool bSaved = false;
	if (GUndo && HasAnyFlags(RF_Transactional))
	{
		// Saved first, so that the transaction sees the package's dirty flag from before the step.
		GUndo->SaveObject(this);
		if (bAlwaysMarkDirty)
		{
			MarkPackageDirty();
		}
		bSaved = true;
	}
	if (!bSaved && bAlwaysMarkDirty)
	{
		MarkPackageDirty();
	}
	return bSaved;
}

bool UObject::MarkPackageDirty() const
{
	for (const UObject* Object = this; Object; Object = Object->OuterPrivate)
	{
		if (Object->HasAnyFlags(RF_Transient))
		{
			return true;
		}
	}
	UPackage* Package = GetOutermost();
	if (!Package)
	{
		return true;
	}
	if (GIsTransacting)
	{
		return false;
	}
	if (!Package->IsDirty())
	{
		Package->SetDirtyFlag(true);
	}
	return true;
}

FHeadlessObjectRegistry& FHeadlessObjectRegistry::Get()
{
	static FHeadlessObjectRegistry Registry;
	return Registry;
}

void FHeadlessObjectRegistry::Register(UObject* Object)
{
	std::unique_ptr<UObject> Owned(Object);
	// Room first, so that nothing after the index can fail; growing geometrically keeps it linear.
	if (Objects.size() == Objects.capacity())
	{
		Objects.reserve(std::max<size_t>(64, Objects.capacity() * 2));
	}
	Object->RegistrationSerial = NextSerial++;
	Index(Object);
	Objects.push_back(std::move(Owned));
}

void FHeadlessObjectRegistry::CountAllocation()
{
	if (AllocationsBeforeFailure >= 0 && AllocationsBeforeFailure-- == 0)
	{
		throw std::bad_alloc();
	}
}

void FHeadlessObjectRegistry::Index(UObject* Object)
{
	std::vector<UObject*>& Bucket = ObjectsByOuterAndName[FOuterAndName{Object->OuterPrivate, Object->NamePrivate}];
	auto Position = Bucket.end();
	while (Position != Bucket.begin() && (*(Position - 1))->RegistrationSerial > Object->RegistrationSerial)
	{
		--Position;
	}
	Bucket.insert(Position, Object);
}

void FHeadlessObjectRegistry::Unindex(UObject* Object)
{
	const FOuterAndName Key{Object->OuterPrivate, Object->NamePrivate};
	auto Found = ObjectsByOuterAndName.find(Key);
	if (Found == ObjectsByOuterAndName.end())
	{
		return;
	}
	std::vector<UObject*>& Bucket = Found->second;
	Bucket.erase(std::remove(Bucket.begin(), Bucket.end(), Object), Bucket.end());
	if (Bucket.empty())
	{
		ObjectsByOuterAndName.erase(Found);
	}
	if (!Object->bGarbage)
	{
		NoteNameFreed(Key.Outer, Key.Name);
	}
}

void FHeadlessObjectRegistry::NoteNameFreed(const UObject* Outer, FName Name)
{
	if (Name.GetNumber() == NAME_NO_NUMBER_INTERNAL)
	{
		return;
	}
	auto Hint = FirstFreeNumberHints.find(FOuterAndText{Outer, Name.GetPlainNameString()});
	if (Hint != FirstFreeNumberHints.end())
	{
		Hint->second = FMath::Min(Hint->second, NAME_INTERNAL_TO_EXTERNAL(Name.GetNumber()));
	}
}

UObject* FHeadlessObjectRegistry::FindObject(const UClass* Class, const UObject* Outer, FName Name, bool bExactClass) const
{
	const auto Found = ObjectsByOuterAndName.find(FOuterAndName{Outer, Name});
	if (Found == ObjectsByOuterAndName.end())
	{
		return nullptr;
	}
	for (UObject* Object : Found->second)
	{
		if (Object->IsGarbage())
		{
			continue;
		}
		if (Class && (bExactClass ? Object->GetClass() != Class : !Object->IsA(Class)))
		{
			continue;
		}
		return Object;
	}
	return nullptr;
}

FName FHeadlessObjectRegistry::FindUnusedNumberedName(const UObject* Outer, const FString& Base, int32 Start)
{
	int32& Hint = FirstFreeNumberHints.try_emplace(FOuterAndText{Outer, Base}, 0).first->second;
	const bool bFromHint = Start <= Hint;
	for (int32 Number = bFromHint ? Hint : Start;; ++Number)
	{
		const FName Candidate(Base + TEXT("_") + FString::FromInt(Number));
		if (!FindObject(nullptr, Outer, Candidate, false))
		{
			if (bFromHint)
			{
				Hint = Number;
			}
			return Candidate;
		}
	}
}

void FHeadlessObjectRegistry::DestroyAll()
{
	std::vector<std::unique_ptr<UObject>> Doomed = std::move(Objects);
	Objects.clear();
	ObjectsByOuterAndName.clear();
	FirstFreeNumberHints.clear();
	// Newest first, so that objects leave any list of their own kind from its end.
	while (!Doomed.empty())
	{
		Doomed.pop_back();
	}
	FailingLoads.Empty();
	FailingNewObjects.Empty();
	Warnings.Reset();
	PackageLoader = nullptr;
}

UObject* StaticConstructObjectHeadless(UClass* Class, UObject* Outer, FName Name, EObjectFlags Flags)
{
	if (!Class || !Class->HasFactory())
	{
		return nullptr;
	}
	TMap<FString, int32>& FailingNewObjects = FHeadlessObjectRegistry::Get().FailingNewObjects;
	if (int32* FailuresLeft = FailingNewObjects.Find(Class->GetName()))
	{
		if (--*FailuresLeft <= 0)
		{
			FailingNewObjects.Remove(Class->GetName());
		}
		return nullptr;
	}
	if (!Name.IsNone() && StaticFindObjectFast(nullptr, Outer, Name))
	{
		FHeadlessObjectRegistry::Get().Warnings.Add(FString(TEXT("NewObject: an object named ")) + Name.ToString() + TEXT(" already exists in its outer"));
		return nullptr;
	}
	UObject* Object = Class->CreateInstance();
	Object->ClassPrivate = Class;
	Object->OuterPrivate = Outer;
	Object->NamePrivate = Name.IsNone() ? MakeUniqueObjectName(Outer, Class) : Name;
	Object->ObjectFlags = Flags;
	FHeadlessObjectRegistry::Get().Register(Object);
	if (GUndo && Object->HasAnyFlags(RF_Transactional))
	{
		try
		{
			GUndo->RecordCreatedObject(Object);
		}
		catch (...)
		{
			// An object the step could not record would outlive its undo: it never comes to be.
			Object->MarkAsGarbage();
			throw;
		}
	}
	Object->PostInitProperties();
	return Object;
}

UObject* StaticFindObjectFast(UClass* Class, UObject* InOuter, FName InName, bool bExactClass)
{
	return FHeadlessObjectRegistry::Get().FindObject(Class, InOuter, InName, bExactClass);
}

UObject* StaticFindObject(UClass* Class, UObject* InOuter, const TCHAR* Name)
{
	return StaticFindObjectFast(Class, InOuter, FName(Name));
}

FName MakeUniqueObjectName(UObject* Outer, const UClass* Class, FName BaseName)
{
	const FString Base = BaseName.IsNone() ? (Class ? Class->GetName() : FString(TEXT("Object"))) : BaseName.GetPlainNameString();
	return FHeadlessObjectRegistry::Get().FindUnusedNumberedName(Outer, Base, BaseName.IsNone() ? 0 : NAME_INTERNAL_TO_EXTERNAL(BaseName.GetNumber()) + 1);
}

UPackage* FindPackage(UObject* InOuter, const TCHAR* PackageName)
{
	return Cast<UPackage>(StaticFindObjectFast(UPackage::StaticClass(), InOuter, FName(PackageName)));
}

UPackage* CreatePackage(const TCHAR* PackageName)
{
	if (UPackage* Existing = FindPackage(nullptr, PackageName))
	{
		return Existing;
	}
	return NewObject<UPackage>(nullptr, UPackage::StaticClass(), FName(PackageName), RF_Public);
}

namespace
{
	UObject* LoadObjectAtPath(UClass* Class, const FString& Path)
	{
		FString PackageName = Path;
		FString ObjectName;
		int32 Dot = Path.Find(TEXT("."), ESearchCase::CaseSensitive);
		const int32 Colon = Path.Find(TEXT(":"), ESearchCase::CaseSensitive);
		if (Dot == INDEX_NONE || (Colon != INDEX_NONE && Colon < Dot))
		{
			Dot = Colon;
		}
		if (Dot != INDEX_NONE)
		{
			PackageName = Path.Left(Dot);
			ObjectName = Path.Mid(Dot + 1);
		}
		if (PackageName.IsEmpty() || ObjectName.IsEmpty())
		{
			return nullptr;
		}
		FHeadlessObjectRegistry& Registry = FHeadlessObjectRegistry::Get();
		UPackage* Package = FindPackage(nullptr, *PackageName);
		if (!Package && Registry.PackageLoader)
		{
			Package = Registry.PackageLoader(PackageName);
		}
		if (!Package)
		{
			return nullptr;
		}
		// Nested paths ("Outer.Inner" or "Outer:Inner") walk down from the package.
		UObject* Outer = Package;
		UObject* Found = nullptr;
		FString Rest = ObjectName;
		for (;;)
		{
			int32 Split = INDEX_NONE;
			for (int32 Index = 0; Index < Rest.Len(); ++Index)
			{
				if (Rest[Index] == u'.' || Rest[Index] == u':')
				{
					Split = Index;
					break;
				}
			}
			const FString Part = Split == INDEX_NONE ? Rest : Rest.Left(Split);
			if (Part.IsEmpty())
			{
				return nullptr;
			}
			Found = StaticFindObjectFast(Split == INDEX_NONE ? Class : nullptr, Outer, FName(Part));
			if (!Found || Split == INDEX_NONE)
			{
				return Found;
			}
			Outer = Found;
			Rest = Rest.Mid(Split + 1);
		}
	}
}

UObject* StaticLoadObject(UClass* Class, UObject* InOuter, FStringView Name, FStringView Filename, uint32 LoadFlags, UPackageMap* Sandbox,
	bool bAllowObjectReconciliation, const FLinkerInstancingContext* InstancingContext)
{
	(void)InOuter;
	(void)Filename;
	(void)Sandbox;
	(void)bAllowObjectReconciliation;
	(void)InstancingContext;
	FHeadlessObjectRegistry& Registry = FHeadlessObjectRegistry::Get();
	const FString Path(Name);
	UObject* Result = nullptr;
	if (!Registry.FailingLoads.Contains(Path))
	{
		Result = LoadObjectAtPath(Class, Path);
		if (!Result && Path.Find(TEXT("."), ESearchCase::CaseSensitive) == INDEX_NONE)
		{
			Result = LoadObjectAtPath(Class, Path + TEXT(".") + FPackageName::GetShortName(Path));
		}
	}
	if (Result && Result->IsGarbage())
	{
		Result = nullptr;
	}
	if (!Result && (LoadFlags & (LOAD_Quiet | LOAD_NoWarn)) == 0)
	{
		Registry.Warnings.Add(FString(TEXT("LogUObjectGlobals: Warning: Failed to find object '")) + (Class ? Class->GetName() : FString(TEXT("Object"))) + TEXT(" ") + Path + TEXT("'"));
	}
	return Result;
}

FString FPackageName::GetShortName(const FString& LongName)
{
	int32 Slash = INDEX_NONE;
	LongName.FindLastChar(u'/', Slash);
	return Slash == INDEX_NONE ? LongName : LongName.Mid(Slash + 1);
}

FString FPackageName::GetShortName(const UPackage* Package)
{
	return Package ? GetShortName(Package->GetName()) : FString();
}

FString FPackageName::ObjectPathToPackageName(const FString& ObjectPath)
{
	int32 Dot = INDEX_NONE;
	return ObjectPath.FindChar(u'.', Dot) ? ObjectPath.Left(Dot) : ObjectPath;
}
