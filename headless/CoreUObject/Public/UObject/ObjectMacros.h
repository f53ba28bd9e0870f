// Reflection markers compile to nothing here; each headless class declares its class object with
// DECLARE_HEADLESS_CLASS and defines it with IMPLEMENT_HEADLESS_CLASS.
#pragma once

#include "CoreTypes.h"

#define UCLASS(...)
#define USTRUCT(...)
#define UENUM(...)
#define UPROPERTY(...)
#define UFUNCTION(...)
#define UMETA(...)
#define GENERATED_BODY(...)
#define GENERATED_UCLASS_BODY(...)
#define GENERATED_USTRUCT_BODY(...)
#define COREUOBJECT_API
#define ENGINE_API
#define UNREALED_API

enum EObjectFlags : uint32
{
	RF_NoFlags = 0x0,
	RF_Public = 0x1,
	RF_Standalone = 0x2,
	RF_MarkAsNative = 0x4,
	RF_Transactional = 0x8,
	RF_ClassDefaultObject = 0x10,
	RF_ArchetypeObject = 0x20,
	RF_Transient = 0x40,
};

inline EObjectFlags operator|(EObjectFlags A, EObjectFlags B) { return EObjectFlags(uint32(A) | uint32(B)); }

enum ELoadFlags : uint32
{
	LOAD_None = 0x0,
	LOAD_NoWarn = 0x2,
	LOAD_Quiet = 0x2000,
	LOAD_NoRedirects = 0x200000,
};

// Options for UObject::Rename.
#define REN_None (0x0000)
#define REN_ForceNoResetLoaders (0x0001)
#define REN_Test (0x0002)
#define REN_DoNotDirty (0x0004)
#define REN_DontCreateRedirectors (0x0010)
#define REN_NonTransactional (0x0020)

namespace EInternalObjectFlags
{
	enum Type
	{
		None = 0,
		Garbage = 1,
	};
}

class UClass;
class FHeadlessStateArchive;

#define DECLARE_HEADLESS_CLASS(TClass, TSuperClass) \
public: \
	typedef TSuperClass Super; \
	typedef TClass ThisClass; \
	static UClass* StaticClass(); \
	virtual void SerializeHeadlessState(FHeadlessStateArchive& Ar) override; \
private:

#define IMPLEMENT_HEADLESS_CLASS(TClass, TSuperClass, ClassName) \
	UClass* TClass::StaticClass() \
	{ \
		static UClass Class(TEXT(ClassName), TSuperClass::StaticClass(), []() -> UObject* { return new TClass(); }); \
		return &Class; \
	}

#define IMPLEMENT_HEADLESS_ABSTRACT_CLASS(TClass, TSuperClass, ClassName) \
	UClass* TClass::StaticClass() \
	{ \
		static UClass Class(TEXT(ClassName), TSuperClass::StaticClass(), nullptr); \
		return &Class; \
	}
