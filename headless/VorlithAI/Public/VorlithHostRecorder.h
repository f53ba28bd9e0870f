// What the headless assistant host keeps of the extensions and Lua bindings registered with it,
// open to tests and tools.
#pragma once

#include "CoreMinimal.h"
#include "host/VorlithExtensionRegistrar.h"
#include "host/LuaBindingRegistry.h"

struct FVorlithRegisteredBinding
{
	FGuid BindingId;
	FString OwnerId;
	FString Category;
	TArray<FLuaFunctionDoc> Docs;
	FLuaBinderDelegate Binder;
};

class FVorlithHostRecorder
{
public:
	static FVorlithHostRecorder& Get();

	// Forgets every registration and event, and accepts registrations again.
	void Reset();

	// Extensions registered now, in registration order (the host's own copies).
	TArray<FVorlithExtensionDescriptor> Extensions;
	// Bindings registered now, in registration order.
	TArray<FVorlithRegisteredBinding> Bindings;
	// Every call the host received, in order: "RegisterExtension <id>", "RegisterOwned <owner> <category>",
	// "Unregister <guid>", "UnregisterExtension <id>".
	TArray<FString> Events;
	// When set, the host refuses registrations: extensions are not kept and RegisterOwned answers a
	// handle whose binding id is the zero GUID.
	bool bRefuseRegistrations = false;
};
