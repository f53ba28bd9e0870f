// Host module VorlithAI: the registry of extensions shown in the assistant's extension list.
#pragma once

#include "CoreMinimal.h"

#ifndef VORLITHAI_API
#define VORLITHAI_API
#endif

struct FVorlithExtensionDescriptor
{
	FString Id;
	FString DisplayName;
	FString ModuleName;
	FString Author;
	FString Version;
	// Short keyword under which the assistant groups the extension's help.
	FString Keyword;
	FString Description;
	bool bExperimental = true;
	bool bRequiresEditorRestart = false;
	bool bProvidesLuaBindings = false;
	TArray<FString> Tags;
};

class VORLITHAI_API FVorlithExtensionRegistrar
{
public:
	static FVorlithExtensionRegistrar& Get();

	// The registrar keeps its own copy of the descriptor.
	void RegisterExtension(const FVorlithExtensionDescriptor& Descriptor);
	bool UnregisterExtension(const FString& ExtensionId);
};
