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

void UObject::SerializeHeadlessState(FHeadlessStateArchive& Ar)
{
	Ar << NamePrivate << OuterPrivate;
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
	(void)Flags;
	UObject* TargetOuter = NewOuter ? NewOuter : OuterPrivate;
	const FName TargetName = NewName ? FName(NewName) : MakeUniqueObjectName(TargetOuter, ClassPrivate);
	UObject* Existing = StaticFindObjectFast(nullptr, TargetOuter, TargetName);
	if (Existing && Existing != this)
	{
		return false;
	}
	NamePrivate = TargetName;
	OuterPrivate = TargetOuter;
	return true;
}

bool UObject::Modify(bool bAlwaysMarkDirty)
{
	bool bSaved = false;
	if (GUndo && HasAnyFlags(RF_Transactional))
	{
		if (bAlwaysMarkDirty)
		{
			MarkPackageDirty();
		}
		GUndo->SaveObject(this);
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
	Objects.emplace_back(Object);
}

void FHeadlessObjectRegistry::DestroyAll()
{
	std::vector<std::unique_ptr<UObject>> Doomed = std::move(Objects);
	Objects.clear();
	Doomed.clear();
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
		GUndo->RecordCreatedObject(Object);
	}
	Object->PostInitProperties();
	return Object;
}

UObject* StaticFindObjectFast(UClass* Class, UObject* InOuter, FName InName, bool bExactClass)
{
	UObject* Found = nullptr;
	FHeadlessObjectRegistry::Get().ForEachObject([&](UObject* Object)
	{
		if (Found || Object->GetOuter() != InOuter || Object->IsGarbage() || !(Object->GetFName() == InName))
		{
			return;
		}
		if (Class && (bExactClass ? Object->GetClass() != Class : !Object->IsA(Class)))
		{
			return;
		}
		Found = Object;
	});
	return Found;
}

UObject* StaticFindObject(UClass* Class, UObject* InOuter, const TCHAR* Name)
{
	return StaticFindObjectFast(Class, InOuter, FName(Name));
}

FName MakeUniqueObjectName(UObject* Outer, const UClass* Class, FName BaseName)
{
	const FString Base = BaseName.IsNone() ? (Class ? Class->GetName() : FString(TEXT("Object"))) : BaseName.GetPlainNameString();
	for (int32 Number = BaseName.IsNone() ? 0 : NAME_INTERNAL_TO_EXTERNAL(BaseName.GetNumber()) + 1;; ++Number)
	{
		const FName Candidate(Base + TEXT("_") + FString::FromInt(Number));
		if (!StaticFindObjectFast(nullptr, Outer, Candidate))
		{
			return Candidate;
		}
	}
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
