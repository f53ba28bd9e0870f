#include "VorlithHostRecorder.h"
#include "VorlithLuaSession.h"
#include "host/VorLuaActor.h"
#include "Engine/World.h"
#include "GameFramework/Actor.h"

#include <fstream>
#include <sstream>

FVorlithHostRecorder& FVorlithHostRecorder::Get()
{
	static FVorlithHostRecorder Recorder;
	return Recorder;
}

void FVorlithHostRecorder::Reset()
{
	Extensions.Reset();
	Bindings.Reset();
	Events.Reset();
	bRefuseRegistrations = false;
}

FVorlithExtensionRegistrar& FVorlithExtensionRegistrar::Get()
{
	static FVorlithExtensionRegistrar Registrar;
	return Registrar;
}

void FVorlithExtensionRegistrar::RegisterExtension(const FVorlithExtensionDescriptor& Descriptor)
{
	FVorlithHostRecorder& Recorder = FVorlithHostRecorder::Get();
	Recorder.Events.Add(FString(TEXT("RegisterExtension ")) + Descriptor.Id);
	if (!Recorder.bRefuseRegistrations)
	{
		Recorder.Extensions.Add(Descriptor);
	}
}

bool FVorlithExtensionRegistrar::UnregisterExtension(const FString& ExtensionId)
{
	FVorlithHostRecorder& Recorder = FVorlithHostRecorder::Get();
	Recorder.Events.Add(FString(TEXT("UnregisterExtension ")) + ExtensionId);
	for (int32 Index = 0; Index < Recorder.Extensions.Num(); ++Index)
	{
		if (Recorder.Extensions[Index].Id.Equals(ExtensionId))
		{
			Recorder.Extensions.RemoveAt(Index);
			return true;
		}
	}
	return false;
}

FLuaBindingRegistry& FLuaBindingRegistry::Get()
{
	static FLuaBindingRegistry Registry;
	return Registry;
}

FVorlithExtensionHandle FLuaBindingRegistry::RegisterOwned(const FString& OwnerId, const FString& Category, TArray<FLuaFunctionDoc> Docs,
	TDelegate<void(sol::state&, FLuaSessionData&)> Binder)
{
	FVorlithHostRecorder& Recorder = FVorlithHostRecorder::Get();
	Recorder.Events.Add(FString(TEXT("RegisterOwned ")) + OwnerId + TEXT(" ") + Category);
	FVorlithExtensionHandle Handle;
	Handle.OwnerId = OwnerId;
	Handle.Category = Category;
	if (Recorder.bRefuseRegistrations)
	{
		return Handle;
	}
	Handle.BindingId = FGuid::NewGuid();
	Recorder.Bindings.Add(FVorlithRegisteredBinding{Handle.BindingId, OwnerId, Category, MoveTemp(Docs), MoveTemp(Binder)});
	return Handle;
}

bool FLuaBindingRegistry::Unregister(const FGuid& BindingId)
{
	FVorlithHostRecorder& Recorder = FVorlithHostRecorder::Get();
	Recorder.Events.Add(FString(TEXT("Unregister ")) + BindingId.ToString());
	for (int32 Index = 0; Index < Recorder.Bindings.Num(); ++Index)
	{
		if (Recorder.Bindings[Index].BindingId == BindingId)
		{
			Recorder.Bindings.RemoveAt(Index);
			return true;
		}
	}
	return false;
}

AActor* VorLuaActor::FindByNameOrLabel(UWorld* World, const FString& NameOrLabel)
{
	if (!World || NameOrLabel.IsEmpty())
	{
		return nullptr;
	}
	// An object name wins over a label; both compare ignoring case, the first actor in level order wins.
	for (AActor* Actor : World->GetActors())
	{
		if (IsValid(Actor) && Actor->GetName() == NameOrLabel)
		{
			return Actor;
		}
	}
	for (AActor* Actor : World->GetActors())
	{
		if (IsValid(Actor) && Actor->GetActorLabel(true) == NameOrLabel)
		{
			return Actor;
		}
	}
	return nullptr;
}

FVorlithLuaSession::FVorlithLuaSession(lua_Alloc Allocator, void* AllocatorData)
{
	State = Allocator ? std::make_unique<sol::state>(sol::default_at_panic, Allocator, AllocatorData) : std::make_unique<sol::state>();
	State->open_libraries();
	SessionData.SessionId = FGuid::NewGuid();
	SessionData.SessionName = TEXT("headless");
	// Copy first: a binder may not change the registry, but the host must not depend on that.
	const TArray<FVorlithRegisteredBinding> Bindings = FVorlithHostRecorder::Get().Bindings;
	for (const FVorlithRegisteredBinding& Binding : Bindings)
	{
		Binding.Binder.ExecuteIfBound(*State, SessionData);
	}
}

FVorlithLuaSession::~FVorlithLuaSession() = default;

bool FVorlithLuaSession::RunScript(const std::string& Code, const std::string& ChunkName, std::string& OutError)
{
	sol::protected_function_result Result = State->safe_script(Code, sol::script_pass_on_error, "@" + ChunkName);
	if (Result.valid())
	{
		return true;
	}
	sol::error Error = Result;
	OutError = Error.what();
	return false;
}

bool FVorlithLuaSession::RunFile(const std::string& Path, std::string& OutError)
{
	std::ifstream File(Path, std::ios::binary);
	if (!File)
	{
		OutError = "cannot open " + Path;
		return false;
	}
	std::stringstream Buffer;
	Buffer << File.rdbuf();
	return RunScript(Buffer.str(), Path, OutError);
}
