// An entity of a DMX library (fixture type or fixture patch). Entities are created with their
// library as outer and register themselves with it on creation.
#pragma once

#include "CoreMinimal.h"
#include "Library/DMXObjectBase.h"
#include "UObject/WeakObjectPtrTemplates.h"

class UDMXLibrary;

UCLASS(abstract, meta = (DisplayName = "DMX Entity"))
class DMXRUNTIME_API UDMXEntity : public UDMXObjectBase
{
	DECLARE_HEADLESS_CLASS(UDMXEntity, UDMXObjectBase)

public:
	// Gives the entity a fresh random id.
	UDMXEntity();

	// Registers the entity with its outer library. An entity whose outer is not a library is a
	// fatal error (class defaults and archetypes excepted).
	virtual void PostInitProperties() override;

	FString GetDisplayName() const { return Name; }

	// Renames the object to a unique object name made from the new name, then stores the new name
	// verbatim. The display name itself is not made unique.
	void SetName(const FString& InNewName);

	// Takes the entity out of its library: unregisters it, forgets the library, zeroes the id and
	// renames it "Destroyed_Entity". Does nothing for an entity without a library.
	void Destroy();

	// Entities are valid unless a subclass says otherwise; the base leaves the reason untouched.
	virtual bool IsValidEntity(FText& /*OutReason*/) const { return true; }
	virtual bool IsValidEntity() const
	{
		FText Reason;
		return IsValidEntity(Reason);
	}

	void SetParentLibrary(UDMXLibrary* InParent);
	UDMXLibrary* GetParentLibrary() const;

	const FGuid& GetID() const { return Id; }
	// Gives the entity a new random id.
	void RefreshID();
	// Copies the id of another entity.
	void ReplicateID(UDMXEntity* Other);
	// Takes a saved id as it stands; for readers of saved libraries.
	void SetIDFromSaved(const FGuid& InId) { Id = InId; }

	UPROPERTY(EditAnywhere, BlueprintReadOnly, Category = "Entity Properties", meta = (DisplayName = "Name"))
	FString Name;

protected:
	UPROPERTY()
	TWeakObjectPtr<UDMXLibrary> ParentLibrary;

	UPROPERTY(DuplicateTransient)
	FGuid Id;
};
