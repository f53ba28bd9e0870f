// The module manager: modules register an initializer with IMPLEMENT_MODULE; LoadModule creates
// the module object with new and starts it, UnloadModule shuts it down and deletes it.
#pragma once

#include <map>
#include <memory>
#include <string>
#include "CoreTypes.h"
#include "Containers/UnrealString.h"
#include "UObject/NameTypes.h"
#include "Modules/ModuleInterface.h"

typedef IModuleInterface* (*FInitializeModuleFunctionPtr)();

// One static entry per module linked into the program, naming the module and the function that
// creates its module object.
struct FModuleInitializerEntry
{
	FModuleInitializerEntry(const TCHAR* InName, FInitializeModuleFunctionPtr InFunction);
	~FModuleInitializerEntry();

	static FInitializeModuleFunctionPtr FindModule(const TCHAR* Name);

	const TCHAR* Name;
	FInitializeModuleFunctionPtr InitializeFunction;
	FModuleInitializerEntry* Next;
	static FModuleInitializerEntry* First;
};

class FModuleManager
{
public:
	static FModuleManager& Get();

	IModuleInterface* LoadModule(const FName ModuleName);
	IModuleInterface& LoadModuleChecked(const FName ModuleName);
	bool UnloadModule(const FName ModuleName);
	bool IsModuleLoaded(const FName ModuleName) const;
	IModuleInterface* GetModule(const FName ModuleName) const;
	// Shuts down and deletes every loaded module, most recently loaded first.
	void UnloadModulesAtShutdown();

	template <typename TModuleInterface>
	static TModuleInterface& LoadModuleChecked(const FName ModuleName)
	{
		return static_cast<TModuleInterface&>(Get().LoadModuleChecked(ModuleName));
	}

private:
	struct FLoaded
	{
		FString Name;
		std::unique_ptr<IModuleInterface> Module;
	};
	std::vector<FLoaded> Loaded;
};

#define IMPLEMENT_MODULE(ModuleImplClass, ModuleName) \
	static IModuleInterface* InitializeModule_##ModuleName() \
	{ \
		return new ModuleImplClass(); \
	} \
	static FModuleInitializerEntry ModuleInitializerEntry_##ModuleName(TEXT(#ModuleName), &InitializeModule_##ModuleName); \
	extern "C" DLLEXPORT void ThisIsAnUnrealEngineModule() {}
