#pragma once

#include "UObject/Object.h"

class AActor;
class UWorld;

enum class EComponentCreationMethod : uint8
{
	Native,
	SimpleConstructionScript,
	UserConstructionScript,
	Instance,
};

enum ETickingGroup
{
	TG_PrePhysics,
	TG_DuringPhysics,
	TG_PostPhysics,
};

struct FActorComponentTickFunction
{
	enum class ETickState : uint8
	{
		Disabled,
		Enabled,
		CoolingDown,
	};

	bool bCanEverTick = false;
	bool bStartWithTickEnabled = true;
	ETickingGroup TickGroup = TG_DuringPhysics;
	ETickState TickState = ETickState::Enabled;

	bool IsTickFunctionEnabled() const { return TickState != ETickState::Disabled; }
	void SetTickFunctionEnable(bool bInEnabled) { TickState = bInEnabled ? ETickState::Enabled : ETickState::Disabled; }
};

class UActorComponent : public UObject
{
	DECLARE_HEADLESS_CLASS(UActorComponent, UObject)

public:
	// A component made with an actor as outer becomes one of the actor's owned components.
	void PostInitProperties() override;

	AActor* GetOwner() const;
	UWorld* GetWorld() const;

	// Registers the component with its owner's world: sets the world and runs OnRegister.
	void RegisterComponent();
	void UnregisterComponent();
	bool IsRegistered() const { return bRegistered; }

	virtual bool IsComponentTickEnabled() const { return PrimaryComponentTick.IsTickFunctionEnabled(); }
	virtual void SetComponentTickEnabled(bool bEnabled);

	FActorComponentTickFunction PrimaryComponentTick;
	bool bTickInEditor = false;
	EComponentCreationMethod CreationMethod = EComponentCreationMethod::Native;

protected:
	virtual void OnRegister() {}
	virtual void OnUnregister() {}

private:
	bool bRegistered = false;
	UWorld* WorldPrivate = nullptr;
};
