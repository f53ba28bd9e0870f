#pragma once

#include "CoreMinimal.h"
#include "Modules/ModuleInterface.h"
#include "host/LuaBindingRegistry.h"

// Registers the DMX Engine extension and its Lua binding with the assistant host while loaded.
class FKestDMXEngineIntegrationModule : public IModuleInterface
{
public:
	virtual void StartupModule() override;
	virtual void ShutdownModule() override;

private:
	FVorlithExtensionHandle BindingHandle;
};
