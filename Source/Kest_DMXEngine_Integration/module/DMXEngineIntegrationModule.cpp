#include "module/DMXEngineIntegrationModule.h"

#include "Modules/ModuleManager.h"
#include "host/VorlithExtensionRegistrar.h"
#include "host/LuaBindingRegistry.h"
#include "library/DMXLibraryHandle.h"
#include "component/DMXComponentHandle.h"
#include "conversion/DMXSubsystemHandle.h"

namespace
{
	const TCHAR* ExtensionId = TEXT("vorlith.dmx_engine");

	void BindDMXEngineLua(sol::state& Lua, FLuaSessionData& Session)
	{
		(void)Session;
		Lua.set_function("dmx_library", [](const std::string& Path, sol::this_state S) -> sol::object
		{
			return OpenDMXLibraryHandle(Path, S);
		});
		Lua.set_function("dmx_component", [](const std::string& Actor, sol::this_state S) -> sol::object
		{
			return OpenDMXComponentHandle(Actor, S);
		});
		Lua.set_function("dmx_subsystem", [](sol::this_state S) -> sol::object
		{
			return OpenDMXSubsystemHandle(S);
		});
	}

	TArray<FLuaFunctionDoc> MakeFunctionDocs()
	{
		TArray<FLuaFunctionDoc> Docs;
		Docs.Add({TEXT("dmx_library(path)"), TEXT("Open a DMX Library authoring handle"), TEXT("handle")});
		Docs.Add({TEXT("dmx_library(path):add('fixture_type'|'fixture_patch', params)"), TEXT("Create a fixture type or fixture patch in a DMX Library"), TEXT("info")});
		Docs.Add({TEXT("dmx_library(path):configure('fixture_type'|'fixture_patch', name, params)"), TEXT("Configure a fixture type or fixture patch"), TEXT("true or false")});
		Docs.Add({TEXT("dmx_library(path):remove('fixture_type'|'fixture_patch', name)"), TEXT("Remove a fixture type or fixture patch"), TEXT("true or false")});
		Docs.Add({TEXT("dmx_library(path):info()"), TEXT("Inspect fixture type, mode, function, matrix, patch, and derived attribute-map state"), TEXT("table")});
		Docs.Add({TEXT("dmx_component(actor):add(params)"), TEXT("Add or reuse a UDMXComponent on an actor and assign a fixture patch"), TEXT("info")});
		Docs.Add({TEXT("dmx_component(actor):configure(component, params)"), TEXT("Configure UDMXComponent fixture patch and receive state"), TEXT("info")});
		Docs.Add({TEXT("dmx_component(actor):info()"), TEXT("Inspect actor UDMXComponent assignment state"), TEXT("table")});
		Docs.Add({TEXT("dmx_subsystem()"), TEXT("Open deterministic UDMXSubsystem conversion helpers"), TEXT("handle")});
		return Docs;
	}
}

void FKestDMXEngineIntegrationModule::StartupModule()
{
	FVorlithExtensionRegistrar& Registrar = FVorlithExtensionRegistrar::Get();
	{
		FVorlithExtensionDescriptor Descriptor;
		Descriptor.Id = ExtensionId;
		Descriptor.DisplayName = TEXT("DMX Engine");
		Descriptor.ModuleName = TEXT("Kest_DMXEngine_Integration");
		Descriptor.Author = TEXT("Kest");
		Descriptor.Version = TEXT("0.1.0");
		Descriptor.Keyword = TEXT("dmx");
		Descriptor.Description = TEXT("Author DMX Library fixture types and fixture patches from Lua.");
		Descriptor.bExperimental = false;
		Descriptor.Tags = {TEXT("lua"), TEXT("dmx"), TEXT("fixtures"), TEXT("library")};
		Descriptor.bProvidesLuaBindings = true;
		Registrar.RegisterExtension(Descriptor);
	}

	FLuaBindingRegistry& Registry = FLuaBindingRegistry::Get();
	TDelegate<void(sol::state&, FLuaSessionData&)> Binder = TDelegate<void(sol::state&, FLuaSessionData&)>::CreateStatic(&BindDMXEngineLua);
	TArray<FLuaFunctionDoc> Docs = MakeFunctionDocs();
	BindingHandle = Registry.RegisterOwned(FString(ExtensionId), TEXT("DMXEngine"), MoveTemp(Docs), MoveTemp(Binder));
}

void FKestDMXEngineIntegrationModule::ShutdownModule()
{
	FLuaBindingRegistry::Get().Unregister(BindingHandle.BindingId);
	FVorlithExtensionRegistrar::Get().UnregisterExtension(FString(ExtensionId));
}

IMPLEMENT_MODULE(FKestDMXEngineIntegrationModule, Kest_DMXEngine_Integration)
