// A component that binds an actor to a fixture patch.
#pragma once

#include "CoreMinimal.h"
#include "Components/ActorComponent.h"
#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityReference.h"

typedef TMulticastDelegate<UDMXEntityFixturePatch*, const FDMXNormalizedAttributeValueMap&> FDMXComponentFixturePatchReceivedSignature;
typedef TMulticastDelegate<float> FDMXOnDMXComponentTickSignature;

UCLASS(ClassGroup = (DMX), meta = (BlueprintSpawnableComponent), HideCategories = ("Variable", "Sockets", "Activation", "Cooking", "ComponentReplication", "Collision", "ComponentTick"))
class DMXRUNTIME_API UDMXComponent : public UActorComponent
{
	DECLARE_HEADLESS_CLASS(UDMXComponent, UActorComponent)

public:
	// Receives from its patch by default; ticks (also in the editor) while someone listens to OnDMXComponentTick.
	UDMXComponent();

	UFUNCTION(BlueprintPure, Category = "DMX")
	UDMXEntityFixturePatch* GetFixturePatch() const;

	// Points the component at the patch (null included); the current patch changes nothing. Does
	// not mark the component for undo.
	UFUNCTION(BlueprintCallable, Category = "DMX")
	void SetFixturePatch(UDMXEntityFixturePatch* InFixturePatch);

	// Does not mark the component for undo.
	UFUNCTION(BlueprintCallable, Category = "DMX", meta = (DisplayName = "Set Receive DMX From Patch"))
	void SetReceiveDMXFromPatch(bool bReceive);

	virtual void PostEditUndo() override;

	UPROPERTY(BlueprintReadOnly, EditAnywhere, Category = "DMX", Meta = (ShowOnlyInnerProperties))
	FDMXEntityFixturePatchRef FixturePatchRef;

	UPROPERTY(BlueprintAssignable, Category = "DMX")
	FDMXComponentFixturePatchReceivedSignature OnFixturePatchReceived;

	UPROPERTY(BlueprintAssignable, Category = "DMX", Meta = (DisplayName = "On DMX Component Tick"))
	FDMXOnDMXComponentTickSignature OnDMXComponentTick;

protected:
	// Reflected as a bool property of the class, so it can be read by name.
	UPROPERTY(BlueprintReadOnly, EditAnywhere, AdvancedDisplay, Category = "DMX", Meta = (DisplayPriority = 0))
	bool bReceiveDMXFromPatch;

	// Binds to the patch's received-DMX delegate when the component should receive from it.
	void SetupReceiveDMXBinding();

	// Enables the tick only while someone listens to OnDMXComponentTick, the component receives
	// from a patch and, in the editor, the patch (or the project) receives DMX in the editor.
	void UpdateTickEnabled();

	virtual void OnRegister() override;

private:
	friend struct FDMXComponentReflection;

	// Whether the component's world is an editor world (or it has none) rather than a game or play-in-editor one.
	bool IsInEditorWorld() const;
};
