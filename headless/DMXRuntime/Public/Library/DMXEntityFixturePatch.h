// Fixture patches: a fixture type in one of its modes, patched to a universe and starting channel.
#pragma once

#include "CoreMinimal.h"
#include "DMXAttribute.h"
#include "DMXProtocolTypes.h"
#include "Library/DMXEntity.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXEntityReference.h"
#include "UObject/ObjectPtr.h"

class UDMXEntityFixturePatch;

// Normalized (0..1) values per attribute, as received by a patch.
USTRUCT(BlueprintType)
struct DMXRUNTIME_API FDMXNormalizedAttributeValueMap
{
	GENERATED_BODY()

	UPROPERTY(BlueprintReadWrite, Category = "DMX")
	TMap<FDMXAttributeName, float> Map;
};

typedef TMulticastDelegate<UDMXEntityFixturePatch*, const FDMXNormalizedAttributeValueMap&> FDMXOnFixturePatchReceivedDMXDelegate;
typedef TMulticastDelegate<const UDMXEntityFixturePatch*> FDMXOnFixturePatchChangedDelegate;

USTRUCT(BlueprintType, meta = (DisplayName = "DMX Entity Fixture Patch Construction Params"))
struct DMXRUNTIME_API FDMXEntityFixturePatchConstructionParams
{
	GENERATED_BODY()

	UPROPERTY(VisibleDefaultsOnly, BlueprintReadWrite, Category = "DMX")
	FDMXEntityFixtureTypeRef FixtureTypeRef;

	UPROPERTY(EditAnywhere, BlueprintReadOnly, Category = "DMX")
	int32 ActiveMode = 0;

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "DMX", meta = (ClampMin = 0))
	int32 UniverseID = 1;

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "DMX", meta = (ClampMin = 1, ClampMax = 512, UIMin = 1, UIMax = 512))
	int32 StartingAddress = 1;

	// Zero: a new one is generated.
	FGuid MVRFixtureUUID;
};

// What a patch derives from its starting channel and active mode: the functions and the channel
// span. Rebuilt whenever one of them changes.
class DMXRUNTIME_API FDMXEntityFixturePatchCache
{
public:
	FDMXEntityFixturePatchCache() = default;
	// The matrix is given only when the mode's matrix is enabled.
	FDMXEntityFixturePatchCache(int32 InStartingChannel, const FDMXFixtureMode* InActiveModePtr, const FDMXFixtureMatrix* InFixtureMatrixPtr);

	// The channels the patch occupies: the sum of the functions' sizes (they are taken to follow
	// each other), plus the matrix; at least the mode's span when it is not automatic. 0 when the
	// starting channel is outside 1..512 or there is no mode.
	int32 GetChannelSpan() const { return DataSize; }
	const TArray<FDMXFixtureFunction>& GetFunctions() const { return Functions; }
	int32 GetStartingChannel() const { return StartingChannel; }
	// Starting channel - 1: the index of the first channel in a universe's data.
	int32 GetDataIndex() const { return DataIndex; }
	// The copied matrix when one with cell attributes was given, otherwise null.
	const FDMXFixtureMatrix* GetFixtureMatrix() const { return bHasMatrix ? &FixtureMatrix : nullptr; }

private:
	int32 StartingChannel = 0;
	int32 DataIndex = INDEX_NONE;
	int32 DataSize = 0;
	TArray<FDMXFixtureFunction> Functions;
	bool bHasMatrix = false;
	FDMXFixtureMatrix FixtureMatrix;
};

UCLASS(BlueprintType, Blueprintable, meta = (DisplayName = "DMX Fixture Patch"))
class DMXRUNTIME_API UDMXEntityFixturePatch : public UDMXEntity
{
	DECLARE_HEADLESS_CLASS(UDMXEntityFixturePatch, UDMXEntity)

public:
	UDMXEntityFixturePatch();
	virtual ~UDMXEntityFixturePatch() override;

	// Creates a patch of the params' fixture type in that type's library: unique name among the
	// library's patches, the type, universe, starting channel and mode of the params, an MVR UUID,
	// the next fixture ID and an editor colour. Answers null without a fixture type or library.
	UFUNCTION(BlueprintCallable, Category = "DMX")
	static UDMXEntityFixturePatch* CreateFixturePatchInLibrary(FDMXEntityFixturePatchConstructionParams ConstructionParams, const FString& DesiredName = TEXT(""),
		bool bMarkDMXLibraryDirty = true);

	// Marks the library and the patch for undo and destroys the patch.
	UFUNCTION(BlueprintCallable, Category = "DMX")
	static void RemoveFixturePatchFromLibrary(FDMXEntityFixturePatchRef FixturePatchRef);

	static FDMXOnFixturePatchChangedDelegate& GetOnFixturePatchChanged();

	// Registers with the library and builds the cache.
	virtual void PostInitProperties() override;
	// Marks the library first; the patch itself is recorded only when the library was.
	virtual bool Modify(bool bAlwaysMarkDirty = true) override;
	// Rebuilds the cache.
	virtual void PostEditUndo() override;

	using UDMXEntity::IsValidEntity;
	// The first problem of: no fixture type, channels beyond 512, no modes, no active mode, no
	// functions or cell attributes in the active mode, a zero channel span.
	virtual bool IsValidEntity(FText& OutReason) const override;

	// Channels

	// 0 when the cache is invalid (no type or mode, starting channel outside 1..512).
	UFUNCTION(BlueprintPure, Category = "DMX|Fixture Patch")
	int32 GetChannelSpan() const;

	// Starting channel + span - 1, not clamped.
	UFUNCTION(BlueprintPure, Category = "DMX|Fixture Patch")
	int32 GetEndingChannel() const;

	UFUNCTION(BlueprintCallable, Category = "DMX|Fixture Patch")
	int32 GetStartingChannel() const { return StartingChannel; }

	// Not clamped.
	UFUNCTION(BlueprintCallable, Category = "DMX|Fixture Patch")
	void SetStartingChannel(int32 NewStartingChannel);

	UFUNCTION(BlueprintCallable, Category = "DMX|Fixture Patch")
	int32 GetUniverseID() const { return UniverseID; }

	// Not clamped.
	UFUNCTION(BlueprintCallable, Category = "DMX|Fixture Patch")
	void SetUniverseID(int32 NewUniverseID);

	// Type and mode

	int32 GetActiveModeIndex() const { return ActiveMode; }

	// Sets the mode when the type has a mode of that index; otherwise answers false and changes nothing.
	bool SetActiveModeIndex(int32 NewActiveModeIndex);

	// Null or invalid: no type (the mode index stays). Another type: its first mode, or INDEX_NONE
	// when it has none. Always rebuilds the cache.
	UFUNCTION(BlueprintCallable, Category = "DMX|Fixture Patch")
	void SetFixtureType(UDMXEntityFixtureType* NewFixtureType);

	UDMXEntityFixtureType* GetFixtureType() const { return ParentFixtureTypeTemplate; }

	const FDMXFixtureMode* GetActiveMode() const;

	// Clamps the active mode into the type's modes, or INDEX_NONE when it has none.
	void ValidateActiveMode();

	void RebuildCache();

	// Identification

	int32 GetFixtureID() const { return FixtureID; }

	// The desired ID when it is positive and no other patch of the library uses it; otherwise one
	// more than the highest ID of the other patches (1 without a library or other patches).
	void GenerateFixtureID(int32 DesiredFixtureID = -1);

	const FGuid& GetMVRFixtureUUID() const { return MVRFixtureUUID; }

	// Take saved values as they stand, without validation and without rebuilding the cache; for
	// readers of saved libraries, which call RebuildCache once everything is set.
	void SetFixtureTypeFromSaved(UDMXEntityFixtureType* InFixtureType) { ParentFixtureTypeTemplate = InFixtureType; }
	void SetActiveModeFromSaved(int32 InActiveMode) { ActiveMode = InActiveMode; }
	void SetFixtureIDFromSaved(int32 InFixtureID);
	void SetMVRFixtureUUIDFromSaved(const FGuid& InMVRFixtureUUID) { MVRFixtureUUID = InMVRFixtureUUID; }

	const TArray<FName>& GetCustomTags() const { return CustomTags; }

	// Attribute maps of the active mode's functions that lie within the channel span (matrix cells
	// are not included). Empty when the cache is invalid.

	UFUNCTION(BlueprintPure, Category = "DMX|Fixture Patch")
	TMap<FDMXAttributeName, int32> GetAttributeDefaultMap() const;

	// Absolute channels: function channel + starting channel - 1.
	UFUNCTION(BlueprintPure, Category = "DMX|Fixture Patch")
	TMap<FDMXAttributeName, int32> GetAttributeChannelAssignments() const;

	UFUNCTION(BlueprintPure, Category = "DMX|Fixture Patch")
	TMap<FDMXAttributeName, EDMXFixtureSignalFormat> GetAttributeSignalFormats() const;

	TArray<FDMXAttributeName> GetAllAttributesInActiveMode() const;

	TMap<FDMXAttributeName, FDMXFixtureFunction> GetAttributeFunctionsMap() const;

	// Whether a cached function has the attribute (no span check).
	bool ContainsAttribute(FDMXAttributeName FunctionAttribute) const;

	// The bytes of each attribute's value on the absolute channels of its function: negative values
	// become 0, values above the format's maximum the maximum.
	UFUNCTION(BlueprintPure, Category = "DMX|Fixture Patch")
	TMap<int32, uint8> ConvertAttributeMapToRawMap(const TMap<FDMXAttributeName, int32>& FunctionMap) const;

	// Whether anyone listens for received DMX.
	bool IsTickable() const;
	// Whether anyone listens and the patch (or the project) receives DMX in the editor.
	bool IsTickableInEditor() const;

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Fixture Patch")
	TArray<FName> CustomTags;

#if WITH_EDITORONLY_DATA
	UPROPERTY(EditAnywhere, BlueprintReadOnly, Category = "Fixture Patch")
	FLinearColor EditorColor = FLinearColor(1.0f, 0.0f, 1.0f);

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "Fixture Patch")
	bool bReceiveDMXInEditor = false;
#endif

	UPROPERTY(BlueprintAssignable, Category = "Fixture Patch")
	FDMXOnFixturePatchReceivedDMXDelegate OnFixturePatchReceivedDMX;

	FDMXOnFixturePatchReceivedDMXDelegate OnFixturePatchReceivedDMXNative;

protected:
	UPROPERTY(EditAnywhere, BlueprintReadOnly, Category = "Fixture Patch", meta = (ClampMin = 0))
	int32 UniverseID;

	UPROPERTY(EditAnywhere, BlueprintReadOnly, Category = "Fixture Patch", meta = (ClampMin = 1, ClampMax = 512, UIMin = 1, UIMax = 512))
	int32 StartingChannel = 0;

	UPROPERTY(EditAnywhere, BlueprintReadOnly, BlueprintSetter = SetFixtureType, Category = "Fixture Patch")
	TObjectPtr<UDMXEntityFixtureType> ParentFixtureTypeTemplate;

	UPROPERTY(EditAnywhere, BlueprintReadOnly, Category = "Fixture Patch")
	int32 ActiveMode = INDEX_NONE;

	UPROPERTY(VisibleAnywhere, BlueprintReadOnly, Category = "Fixture Patch")
	int32 FixtureID = 0;

	UPROPERTY()
	FGuid MVRFixtureUUID;

private:
	// The ID GenerateFixtureID gives.
	int32 FindNewFixtureID(int32 DesiredFixtureID) const;
	friend class UDMXEntityFixtureType;

	// Refreshes the patches of a fixture type that changed.
	static void HandleFixtureTypeChanged(const UDMXEntityFixtureType* ChangedFixtureType);

	// The active mode's matrix when it is enabled.
	const FDMXFixtureMatrix* GetFixtureMatrix() const;

	FDMXEntityFixturePatchCache Cache;
};
