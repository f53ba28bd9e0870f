#include "Modules/ModuleManager.h"

FModuleInitializerEntry* FModuleInitializerEntry::First = nullptr;

FModuleInitializerEntry::FModuleInitializerEntry(const TCHAR* InName, FInitializeModuleFunctionPtr InFunction)
	: Name(InName), InitializeFunction(InFunction), Next(First)
{
	First = this;
}

FModuleInitializerEntry::~FModuleInitializerEntry()
{
	for (FModuleInitializerEntry** Link = &First; *Link; Link = &(*Link)->Next)
	{
		if (*Link == this)
		{
			*Link = Next;
			break;
		}
	}
}

FInitializeModuleFunctionPtr FModuleInitializerEntry::FindModule(const TCHAR* Name)
{
	for (FModuleInitializerEntry* Entry = First; Entry; Entry = Entry->Next)
	{
		if (FCString::Stricmp(Entry->Name, Name) == 0)
		{
			return Entry->InitializeFunction;
		}
	}
	return nullptr;
}

FModuleManager& FModuleManager::Get()
{
	static FModuleManager Manager;
	return Manager;
}

IModuleInterface* FModuleManager::LoadModule(const FName ModuleName)
{
	if (IModuleInterface* Existing = GetModule(ModuleName))
	{
		return Existing;
	}
	const FString Name = ModuleName.ToString();
	const FInitializeModuleFunctionPtr Initialize = FModuleInitializerEntry::FindModule(*Name);
	if (!Initialize)
	{
		return nullptr;
	}
	Loaded.push_back(FLoaded{Name, std::unique_ptr<IModuleInterface>(Initialize())});
	IModuleInterface* Module = Loaded.back().Module.get();
	Module->StartupModule();
	return Module;
}

IModuleInterface& FModuleManager::LoadModuleChecked(const FName ModuleName)
{
	IModuleInterface* Module = LoadModule(ModuleName);
	check(Module != nullptr);
	return *Module;
}

bool FModuleManager::UnloadModule(const FName ModuleName)
{
	for (auto It = Loaded.begin(); It != Loaded.end(); ++It)
	{
		if (It->Name == ModuleName.ToString())
		{
			std::unique_ptr<IModuleInterface> Module = std::move(It->Module);
			Loaded.erase(It);
			Module->PreUnloadCallback();
			Module->ShutdownModule();
			return true;
		}
	}
	return false;
}

bool FModuleManager::IsModuleLoaded(const FName ModuleName) const
{
	return GetModule(ModuleName) != nullptr;
}

IModuleInterface* FModuleManager::GetModule(const FName ModuleName) const
{
	const FString Name = ModuleName.ToString();
	for (const FLoaded& Entry : Loaded)
	{
		if (Entry.Name == Name)
		{
			return Entry.Module.get();
		}
	}
	return nullptr;
}

void FModuleManager::UnloadModulesAtShutdown()
{
	while (!Loaded.empty())
	{
		UnloadModule(FName(Loaded.back().Name));
	}
}
