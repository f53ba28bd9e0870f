// References to library entities by library and id, with a weak cache of the entity.
#pragma once

#include "CoreMinimal.h"
#include "UObject/ObjectPtr.h"
#include "UObject/WeakObjectPtrTemplates.h"
#include "Library/DMXEntity.h"

class UDMXLibrary;
class UDMXEntityFixtureType;
class UDMXEntityFixturePatch;

USTRUCT(meta = (DisplayName = "DMX Entity Reference"))
struct DMXRUNTIME_API FDMXEntityReference
{
	GENERATED_BODY()

	FDMXEntityReference();
	FDMXEntityReference(UDMXEntity* InEntity);

	// A non-null entity: takes its library, id and class and caches it. Null: invalidates the id and
	// forgets the cached entity, so the reference resolves to nothing (the library is kept).
	void SetEntity(UDMXEntity* NewEntity);

	// The cached entity while it lives (even one destroyed but not yet collected); otherwise the
	// library's entity with the id, if it is of the reference's entity class.
	UDMXEntity* GetEntity() const;

	TSubclassOf<UDMXEntity> GetEntityType() const { return EntityType; }

	// The reflected fields for the undo buffer. The cache is not one: a restored reference resolves
	// afresh from its library and id.
	void SerializeHeadlessState(FHeadlessStateArchive& Ar);

	// Library and id only.
	bool operator==(const FDMXEntityReference& Other) const;
	bool operator!=(const FDMXEntityReference& Other) const { return !(*this == Other); }

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "DMX")
	TObjectPtr<UDMXLibrary> DMXLibrary;

	UPROPERTY()
	bool bDisplayLibraryPicker;

protected:
	UPROPERTY()
	TSubclassOf<UDMXEntity> EntityType;

private:
	UPROPERTY()
	FGuid EntityId;

	mutable TWeakObjectPtr<UDMXEntity> CachedEntity;
};

USTRUCT(BlueprintType, meta = (DisplayName = "DMX Fixture Type Ref"))
struct DMXRUNTIME_API FDMXEntityFixtureTypeRef : public FDMXEntityReference
{
	GENERATED_BODY()

	FDMXEntityFixtureTypeRef();
	// Implicit on purpose. A null type leaves the entity class unset.
	FDMXEntityFixtureTypeRef(UDMXEntityFixtureType* InFixtureType);

	UDMXEntityFixtureType* GetFixtureType() const;
};

USTRUCT(BlueprintType, meta = (DisplayName = "DMX Fixture Patch Ref"))
struct DMXRUNTIME_API FDMXEntityFixturePatchRef : public FDMXEntityReference
{
	GENERATED_BODY()

	FDMXEntityFixturePatchRef();
	// Implicit on purpose. A null patch leaves the entity class unset.
	FDMXEntityFixturePatchRef(UDMXEntityFixturePatch* InFixturePatch);

	UDMXEntityFixturePatch* GetFixturePatch() const;
};
