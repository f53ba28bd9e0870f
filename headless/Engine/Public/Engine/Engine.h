#pragma once

#include <memory>
#include "UObject/Object.h"
#include "Subsystems/EngineSubsystem.h"
#include "Subsystems/SubsystemCollection.h"
#include "Engine/World.h"

struct FWorldContext
{
	EWorldType::Type WorldType = EWorldType::None;
	FName ContextHandle;

	UWorld* World() const { return ThisCurrentWorld; }
	void SetCurrentWorld(UWorld* World) { ThisCurrentWorld = World; }

private:
	UWorld* ThisCurrentWorld = nullptr;
};

class UEngine : public UObject
{
	DECLARE_HEADLESS_CLASS(UEngine, UObject)

public:
	UEngine();
	~UEngine() override;

	template <typename TSubsystemClass>
	TSubsystemClass* GetEngineSubsystem() const
	{
		return EngineSubsystemCollection.GetSubsystem<TSubsystemClass>(TSubsystemClass::StaticClass());
	}

	FWorldContext& CreateNewWorldContext(EWorldType::Type WorldType);
	const TArray<FWorldContext*>& GetWorldContexts() const { return WorldList; }

	FSubsystemCollection<UEngineSubsystem> EngineSubsystemCollection;

protected:
	TArray<FWorldContext*> WorldList;
};

extern UEngine* GEngine;
