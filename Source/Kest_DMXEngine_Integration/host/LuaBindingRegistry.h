// Host module VorlithAI: the registry of Lua binding callbacks. Every Lua session the assistant
// opens calls each registered binder once with the session's state.
#pragma once

#include "CoreMinimal.h"
#include "host/VorlithLua.h"

#ifndef VORLITHAI_API
#define VORLITHAI_API
#endif

struct FLuaFunctionDoc
{
	FString Signature;
	FString Description;
	FString Returns;
};

struct FLuaSessionData
{
	FGuid SessionId;
	FString SessionName;
};

struct FVorlithExtensionHandle
{
	FGuid BindingId;
	FString OwnerId;
	FString Category;
};

typedef TDelegate<void(sol::state&, FLuaSessionData&)> FLuaBinderDelegate;

class VORLITHAI_API FLuaBindingRegistry
{
public:
	static FLuaBindingRegistry& Get();

	FVorlithExtensionHandle RegisterOwned(const FString& OwnerId, const FString& Category, TArray<FLuaFunctionDoc> Docs,
		TDelegate<void(sol::state&, FLuaSessionData&)> Binder);
	bool Unregister(const FGuid& BindingId);
};
