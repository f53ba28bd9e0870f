#include "Engine/Engine.h"
#include "Engine/World.h"
#include "GameFramework/Actor.h"
#include "Components/ActorComponent.h"
#include "Subsystems/EngineSubsystem.h"
#include "Subsystems/SubsystemCollection.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

UEngine* GEngine = nullptr;

IMPLEMENT_HEADLESS_CLASS(USubsystem, UObject, "Subsystem")
IMPLEMENT_HEADLESS_CLASS(UDynamicSubsystem, USubsystem, "DynamicSubsystem")
IMPLEMENT_HEADLESS_CLASS(UEngineSubsystem, UDynamicSubsystem, "EngineSubsystem")
IMPLEMENT_HEADLESS_CLASS(UEngine, UObject, "Engine")
IMPLEMENT_HEADLESS_CLASS(ULevel, UObject, "Level")
IMPLEMENT_HEADLESS_CLASS(UWorld, UObject, "World")
IMPLEMENT_HEADLESS_CLASS(AActor, UObject, "Actor")
IMPLEMENT_HEADLESS_CLASS(UActorComponent, UObject, "ActorComponent")

void USubsystem::SerializeHeadlessState(FHeadlessStateArchive& Ar) { Super::SerializeHeadlessState(Ar); }
void UDynamicSubsystem::SerializeHeadlessState(FHeadlessStateArchive& Ar) { Super::SerializeHeadlessState(Ar); }
void UEngineSubsystem::SerializeHeadlessState(FHeadlessStateArchive& Ar) { Super::SerializeHeadlessState(Ar); }
void UEngine::SerializeHeadlessState(FHeadlessStateArchive& Ar) { Super::SerializeHeadlessState(Ar); }

void ULevel::SerializeHeadlessState(FHeadlessStateArchive& Ar)
{
	Super::SerializeHeadlessState(Ar);
	Ar << Actors;
}

void UWorld::SerializeHeadlessState(FHeadlessStateArchive& Ar)
{
	Super::SerializeHeadlessState(Ar);
	Ar << WorldType << PersistentLevel;
}

void AActor::SerializeHeadlessState(FHeadlessStateArchive& Ar)
{
	Super::SerializeHeadlessState(Ar);
	Ar << ActorLabel << OwnedComponents << InstanceComponents;
}

void UActorComponent::SerializeHeadlessState(FHeadlessStateArchive& Ar)
{
	Super::SerializeHeadlessState(Ar);
	Ar << PrimaryComponentTick << bTickInEditor << CreationMethod << bRegistered << WorldPrivate;
}

namespace
{
	TArray<UClass*>& RegisteredSubsystemClasses()
	{
		static TArray<UClass*> Classes;
		return Classes;
	}
}

void FSubsystemCollectionBase::RegisterSubsystemClass(UClass* SubsystemClass)
{
	RegisteredSubsystemClasses().AddUnique(SubsystemClass);
}

void FSubsystemCollectionBase::Initialize(UObject* NewOuter, const TArray<UClass*>& ExcludedClasses)
{
	Outer = NewOuter;
	for (UClass* Class : RegisteredSubsystemClasses())
	{
		if (!Class->IsChildOf(BaseType) || ExcludedClasses.Contains(Class))
		{
			continue;
		}
		USubsystem* Subsystem = NewObject<USubsystem>(NewOuter, Class);
		if (Subsystem && Subsystem->ShouldCreateSubsystem(NewOuter))
		{
			Subsystems.Add(Subsystem);
			Subsystem->Initialize(*this);
		}
	}
}

void FSubsystemCollectionBase::Deinitialize()
{
	for (int32 Index = Subsystems.Num() - 1; Index >= 0; --Index)
	{
		Subsystems[Index]->Deinitialize();
	}
	Subsystems.Reset();
	Outer = nullptr;
}

USubsystem* FSubsystemCollectionBase::GetSubsystemInternal(UClass* SubsystemClass) const
{
	if (!ensure(SubsystemClass))
	{
		return nullptr;
	}
	for (USubsystem* Subsystem : Subsystems)
	{
		if (Subsystem->GetClass() == SubsystemClass)
		{
			return Subsystem;
		}
	}
	for (USubsystem* Subsystem : Subsystems)
	{
		if (Subsystem->IsA(SubsystemClass))
		{
			return Subsystem;
		}
	}
	return nullptr;
}

UEngine::UEngine() = default;

UEngine::~UEngine()
{
	for (FWorldContext* Context : WorldList)
	{
		delete Context;
	}
}

FWorldContext& UEngine::CreateNewWorldContext(EWorldType::Type WorldType)
{
	FWorldContext* Context = new FWorldContext();
	Context->WorldType = WorldType;
	WorldList.Add(Context);
	return *Context;
}

UWorld* UWorld::CreateWorld(EWorldType::Type InWorldType, const TCHAR* WorldName)
{
	UPackage* Package = CreatePackage(*(FString(TEXT("/Game/Maps/")) + WorldName));
	UWorld* World = NewObject<UWorld>(Package, UWorld::StaticClass(), FName(WorldName), RF_Public | RF_Transactional);
	World->WorldType = InWorldType;
	World->PersistentLevel = NewObject<ULevel>(World, ULevel::StaticClass(), FName(TEXT("PersistentLevel")), RF_Transactional);
	return World;
}

AActor* UWorld::SpawnActor(UClass* Class, FName Name)
{
	AActor* Actor = NewObject<AActor>(PersistentLevel, Class ? Class : AActor::StaticClass(), Name, RF_Transactional);
	if (Actor)
	{
		PersistentLevel->Actors.Add(Actor);
	}
	return Actor;
}

ULevel* AActor::GetLevel() const
{
	return Cast<ULevel>(GetOuter());
}

UWorld* AActor::GetWorld() const
{
	ULevel* Level = GetLevel();
	return Level ? Cast<UWorld>(Level->GetOuter()) : nullptr;
}

FString AActor::GetDefaultActorLabel() const
{
	FString Label = GetClass()->GetName();
	if (Label.EndsWith(FString(TEXT("_C")), ESearchCase::CaseSensitive))
	{
		Label = Label.LeftChop(2);
	}
	const int32 Number = GetFName().GetNumber();
	if (Number != NAME_NO_NUMBER_INTERNAL)
	{
		Label.AppendInt(NAME_INTERNAL_TO_EXTERNAL(Number));
	}
	return Label;
}

const FString& AActor::GetActorLabel(bool bCreateIfNone) const
{
	if (ActorLabel.IsEmpty() && bCreateIfNone)
	{
		ActorLabel = GetDefaultActorLabel();
	}
	return ActorLabel;
}

void AActor::SetActorLabel(const FString& NewActorLabel, bool bMarkDirty)
{
	const FString Trimmed = NewActorLabel.TrimStartAndEnd();
	if (!Trimmed.Equals(ActorLabel, ESearchCase::CaseSensitive))
	{
		Modify(bMarkDirty);
		ActorLabel = Trimmed;
	}
}

void AActor::AddInstanceComponent(UActorComponent* Component)
{
	if (Component)
	{
		Component->CreationMethod = EComponentCreationMethod::Instance;
		InstanceComponents.AddUnique(Component);
	}
}

void AActor::RemoveInstanceComponent(UActorComponent* Component)
{
	InstanceComponents.Remove(Component);
}

void AActor::AddOwnedComponent(UActorComponent* Component)
{
	if (Component)
	{
		OwnedComponents.AddUnique(Component);
	}
}

void AActor::RemoveOwnedComponent(UActorComponent* Component)
{
	OwnedComponents.Remove(Component);
}

void UActorComponent::PostInitProperties()
{
	Super::PostInitProperties();
	if (AActor* Owner = GetOwner())
	{
		Owner->AddOwnedComponent(this);
	}
}

AActor* UActorComponent::GetOwner() const
{
	for (UObject* Outer = GetOuter(); Outer; Outer = Outer->GetOuter())
	{
		if (AActor* Actor = Cast<AActor>(Outer))
		{
			return Actor;
		}
	}
	return nullptr;
}

UWorld* UActorComponent::GetWorld() const
{
	if (WorldPrivate)
	{
		return WorldPrivate;
	}
	AActor* Owner = GetOwner();
	return Owner ? Owner->GetWorld() : nullptr;
}

void UActorComponent::RegisterComponent()
{
	AActor* Owner = GetOwner();
	UWorld* World = Owner ? Owner->GetWorld() : nullptr;
	if (!ensure(World) || bRegistered)
	{
		return;
	}
	WorldPrivate = World;
	bRegistered = true;
	OnRegister();
}

void UActorComponent::UnregisterComponent()
{
	if (bRegistered)
	{
		OnUnregister();
		bRegistered = false;
		WorldPrivate = nullptr;
	}
}

void UActorComponent::SetComponentTickEnabled(bool bEnabled)
{
	if (PrimaryComponentTick.bCanEverTick && !IsTemplate())
	{
		PrimaryComponentTick.SetTickFunctionEnable(bEnabled);
	}
}
