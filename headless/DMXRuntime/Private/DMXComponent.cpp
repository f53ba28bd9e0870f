#include "Game/DMXComponent.h"

#include "DMXProtocolSettings.h"
#include "Engine/World.h"
#include "UObject/UnrealType.h"

IMPLEMENT_HEADLESS_CLASS(UDMXComponent, UActorComponent, "DMXComponent")

// Reflects the component's properties on its class.
struct FDMXComponentReflection
{
	FDMXComponentReflection()
	{
		UClass* Class = UDMXComponent::StaticClass();
		static FBoolProperty ReceiveDMXFromPatchProperty(Class, TEXT("bReceiveDMXFromPatch"),
			[](const void* Container) { return static_cast<const UDMXComponent*>(Container)->bReceiveDMXFromPatch; },
			[](void* Container, bool bValue) { static_cast<UDMXComponent*>(Container)->bReceiveDMXFromPatch = bValue; });
		Class->AddProperty(&ReceiveDMXFromPatchProperty);
	}
};

namespace
{
	const FDMXComponentReflection DMXComponentReflection;
}

UDMXComponent::UDMXComponent()
	: bReceiveDMXFromPatch(true)
{
	PrimaryComponentTick.bCanEverTick = true;
	PrimaryComponentTick.bStartWithTickEnabled = true;
	PrimaryComponentTick.TickGroup = TG_PrePhysics;
	bTickInEditor = true;
}

void UDMXComponent::SerializeHeadlessState(FHeadlessStateArchive& Ar)
{
	Super::SerializeHeadlessState(Ar);
	FixturePatchRef.SerializeHeadlessState(Ar);
	Ar << bReceiveDMXFromPatch;
}

UDMXEntityFixturePatch* UDMXComponent::GetFixturePatch() const
{
	return FixturePatchRef.GetFixturePatch();
}

void UDMXComponent::SetFixturePatch(UDMXEntityFixturePatch* InFixturePatch)
{
	if (InFixturePatch == GetFixturePatch())
	{
		return;
	}

	FixturePatchRef.SetEntity(InFixturePatch);
	SetupReceiveDMXBinding();
	UpdateTickEnabled();
}

void UDMXComponent::SetReceiveDMXFromPatch(bool bReceive)
{
	bReceiveDMXFromPatch = bReceive;
	SetupReceiveDMXBinding();
	UpdateTickEnabled();
}

void UDMXComponent::PostEditUndo()
{
	Super::PostEditUndo();
	SetupReceiveDMXBinding();
	UpdateTickEnabled();
}

void UDMXComponent::SetupReceiveDMXBinding()
{
	// The headless engine receives no DMX, so there is nothing to bind to: the patch never
	// broadcasts received values.
}

void UDMXComponent::UpdateTickEnabled()
{
	const UDMXEntityFixturePatch* FixturePatch = GetFixturePatch();

	bool bTickEnabled = OnDMXComponentTick.IsBound() && bReceiveDMXFromPatch && FixturePatch;
#if WITH_EDITORONLY_DATA
	if (bTickEnabled && IsInEditorWorld())
	{
		bTickEnabled = FixturePatch->bReceiveDMXInEditor || GetDefault<UDMXProtocolSettings>()->bAllFixturePatchesReceiveDMXInEditor;
	}
#endif

	SetComponentTickEnabled(bTickEnabled);
}

void UDMXComponent::OnRegister()
{
	Super::OnRegister();
	SetupReceiveDMXBinding();
	UpdateTickEnabled();
}

bool UDMXComponent::IsInEditorWorld() const
{
	const UWorld* World = GetWorld();
	return !World || (World->WorldType != EWorldType::Game && World->WorldType != EWorldType::PIE && World->WorldType != EWorldType::GamePreview);
}
