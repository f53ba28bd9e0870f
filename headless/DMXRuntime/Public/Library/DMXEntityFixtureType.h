// Fixture types: their modes, functions and pixel matrices, and the helpers that edit them.
#pragma once

#include "CoreMinimal.h"
#include "DMXAttribute.h"
#include "DMXProtocolTypes.h"
#include "GDTF/AttributeDefinitions/DMXGDTFPhysicalUnit.h"
#include "Library/DMXEntity.h"
#include "UObject/ObjectPtr.h"

class UDMXLibrary;
struct FDMXEntityFixtureTypeRef;

UENUM(BlueprintType, DisplayName = "DMX Pixel Mapping Distribution")
enum class EDMXPixelMappingDistribution : uint8
{
	TopLeftToRight,
	TopLeftToBottom,
	TopLeftToClockwise,
	TopLeftToAntiClockwise,
	TopRightToLeft,
	BottomLeftToTop,
	TopRightToAntiClockwise,
	BottomLeftToClockwise,
	BottomLeftToRight,
	TopRightToBottom,
	BottomLeftAntiClockwise,
	TopRightToClockwise,
	BottomRightToLeft,
	BottomRightToTop,
	BottomRightToClockwise,
	BottomRightToAntiClockwise,
};

// One function of a mode: an attribute carried by 1 to 4 consecutive channels.
USTRUCT(BlueprintType, meta = (DisplayName = "DMX Fixture Function"))
struct DMXRUNTIME_API FDMXFixtureFunction
{
	GENERATED_BODY()

	FDMXFixtureFunction();

	uint8 GetNumChannels() const { return static_cast<uint8>(static_cast<uint8>(DataType) + 1); }

	// Channel + GetNumChannels() - 1, not clamped. Wraps around past INT32_MAX.
	int32 GetLastChannel() const;

#if WITH_EDITOR
	double GetPhysicalDefaultValue() const { return PhysicalDefaultValue; }
	EDMXGDTFPhysicalUnit GetPhysicalUnit() const { return PhysicalUnit; }
	double GetPhysicalFrom() const { return PhysicalFrom; }
	double GetPhysicalTo() const { return PhysicalTo; }

	// Sets the unit only; the range and the default value stay.
	void SetPhysicalUnit(EDMXGDTFPhysicalUnit NewPhysicalUnit) { PhysicalUnit = NewPhysicalUnit; }

	// Clamps the value into the physical range and sets DefaultValue to the matching position of
	// the signal format's range (truncated).
	void SetPhysicalDefaultValue(double InPhysicalDefaultValue);

	// Sets the range (unvalidated) and moves the physical default so that it keeps its relative
	// position, which also recomputes DefaultValue.
	void SetPhysicalValueRange(double InPhysicalFrom, double InPhysicalTo);

	// Derives the physical default from DefaultValue, rounded to 0.01. DefaultValue is not changed.
	void UpdatePhysicalDefaultValue();

	// Takes saved physical values as they stand (no clamping, DefaultValue untouched); for readers
	// of saved libraries.
	void SetPhysicalPropertiesFromSaved(EDMXGDTFPhysicalUnit InUnit, double InFrom, double InTo, double InDefaultValue)
	{
		PhysicalUnit = InUnit;
		PhysicalFrom = InFrom;
		PhysicalTo = InTo;
		PhysicalDefaultValue = InDefaultValue;
	}

	static FName GetPhysicalDefaultValuePropertyName() { return FName(TEXT("PhysicalDefaultValue")); }
	static FName GetPhysicalUnitPropertyName() { return FName(TEXT("PhysicalUnit")); }
	static FName GetPhysicalFromPropertyName() { return FName(TEXT("PhysicalFrom")); }
	static FName GetPhysicalToPropertyName() { return FName(TEXT("PhysicalTo")); }
#endif

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "DMX")
	FDMXAttributeName Attribute;

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "DMX")
	FString FunctionName;

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "DMX")
	FString Description;

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "DMX")
	int64 DefaultValue = 0;

	UPROPERTY(VisibleAnywhere, BlueprintReadWrite, Category = "DMX")
	int32 Channel = 1;

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "DMX")
	EDMXFixtureSignalFormat DataType = EDMXFixtureSignalFormat::E8Bit;

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "DMX")
	bool bUseLSBMode = false;

#if WITH_EDITORONLY_DATA
	UPROPERTY()
	int32 ChannelOffset_DEPRECATED = 0;
#endif

private:
#if WITH_EDITORONLY_DATA
	UPROPERTY(Transient)
	double PhysicalDefaultValue = 0.0;

	UPROPERTY()
	EDMXGDTFPhysicalUnit PhysicalUnit = EDMXGDTFPhysicalUnit::None;

	UPROPERTY()
	double PhysicalFrom = 0.0;

	UPROPERTY()
	double PhysicalTo = 1.0;
#endif
};

// One attribute of every cell of a fixture matrix.
USTRUCT(BlueprintType, meta = (DisplayName = "DMX Fixture Cell Attribute"))
struct DMXRUNTIME_API FDMXFixtureCellAttribute
{
	GENERATED_BODY()

	FDMXFixtureCellAttribute();

	uint8 GetNumChannels() const { return static_cast<uint8>(static_cast<uint8>(DataType) + 1); }

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "DMX")
	FDMXAttributeName Attribute;

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "DMX")
	FString Description;

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "DMX")
	int64 DefaultValue;

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "DMX")
	EDMXFixtureSignalFormat DataType;

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "DMX")
	bool bUseLSBMode;
};

// The pixel matrix of a mode: XCells x YCells cells, each carrying the cell attributes.
USTRUCT(BlueprintType, meta = (DisplayName = "DMX Fixture Matrix"))
struct DMXRUNTIME_API FDMXFixtureMatrix
{
	GENERATED_BODY()

	// One cell attribute, "Red", 8 bit.
	FDMXFixtureMatrix();

	// Cells x the channels of all cell attributes; 0 without attributes.
	int32 GetNumChannels() const;

	// FirstCellChannel + GetNumChannels() - 1; FirstCellChannel when there are no cells.
	int32 GetLastChannel() const;

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "DMX")
	TArray<FDMXFixtureCellAttribute> CellAttributes;

	UPROPERTY(VisibleAnywhere, BlueprintReadWrite, Category = "DMX", meta = (ClampMin = "1", ClampMax = "512"))
	int32 FirstCellChannel = 1;

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "DMX", meta = (ClampMin = "1", ClampMax = "512"))
	int32 XCells = 1;

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "DMX", meta = (ClampMin = "1", ClampMax = "512"))
	int32 YCells = 1;

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "DMX")
	EDMXPixelMappingDistribution PixelMappingDistribution = EDMXPixelMappingDistribution::TopLeftToRight;
};

USTRUCT(BlueprintType, meta = (DisplayName = "DMX Fixture Mode"))
struct DMXRUNTIME_API FDMXFixtureMode
{
	GENERATED_BODY()

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "DMX")
	FString ModeName;

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "DMX")
	TArray<FDMXFixtureFunction> Functions;

	// When set, UpdateChannelSpan derives ChannelSpan from the functions and the matrix.
	UPROPERTY(EditAnywhere, Category = "DMX")
	bool bAutoChannelSpan = true;

	// Not clamped in code; the 4..512 range is the editor's.
	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "DMX", meta = (ClampMin = "4", ClampMax = "512", EditCondition = "!bAutoChannelSpan"))
	int32 ChannelSpan = 0;

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "DMX")
	bool bFixtureMatrixEnabled = false;

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "DMX")
	FDMXFixtureMatrix FixtureMatrixConfig;
};

USTRUCT(BlueprintType, meta = (DisplayName = "DMX Entity Fixture Type Construction Params"))
struct DMXRUNTIME_API FDMXEntityFixtureTypeConstructionParams
{
	GENERATED_BODY()

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "DMX")
	TObjectPtr<UDMXLibrary> ParentDMXLibrary = nullptr;

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "DMX")
	FDMXFixtureCategory DMXCategory;

	UPROPERTY(EditAnywhere, BlueprintReadWrite, Category = "DMX")
	TArray<FDMXFixtureMode> Modes;
};

class UDMXEntityFixtureType;

// Broadcast whenever a fixture type was created or changed as a whole (e.g. by an undo).
typedef TMulticastDelegate<const UDMXEntityFixtureType*> FDMXOnFixtureTypeChangedDelegate;

// None of the mode, function and matrix helpers marks the type for undo or broadcasts a change;
// callers do. An invalid mode index fires an ensure and changes nothing.
UCLASS(BlueprintType, Blueprintable, meta = (DisplayName = "DMX Fixture Type"))
class DMXRUNTIME_API UDMXEntityFixtureType : public UDMXEntity
{
	DECLARE_HEADLESS_CLASS(UDMXEntityFixtureType, UDMXEntity)

public:
	// Creates a fixture type in the params' library, with a name made unique among the library's
	// fixture types and the params' category and modes copied verbatim.
	UFUNCTION(BlueprintCallable, Category = "DMX|Fixture Type")
	static UDMXEntityFixtureType* CreateFixtureTypeInLibrary(FDMXEntityFixtureTypeConstructionParams ConstructionParams, const FString& DesiredName = TEXT(""),
		bool bMarkDMXLibraryDirty = true);

	// Clears the type of the library's patches that use it (they stay in the library) and destroys it.
	UFUNCTION(BlueprintCallable, Category = "DMX|Fixture Type")
	static void RemoveFixtureTypeFromLibrary(FDMXEntityFixtureTypeRef FixtureTypeRef);

	static FDMXOnFixtureTypeChangedDelegate& GetOnFixtureTypeChanged();

	// With a library: marks the library first, and the type only when the library was recorded.
	virtual bool Modify(bool bAlwaysMarkDirty = true) override;
	// As the editor's PostEditChange after an undo or redo: every mode gets AlignFunctionChannels
	// then UpdateChannelSpan, and the change is broadcast (twice: once for the property change, once
	// for the undo), so that the type's patches rebuild.
	virtual void PostEditUndo() override;

	// Modes

	// Appends a default mode named uniquely after the base name and answers its index. The channel
	// span is left at 0.
	int32 AddMode(FString BaseModeName = FString(TEXT("Mode")));

	// Names the mode, unique among the other modes; the name is also written to the out parameter.
	void SetModeName(int32 InModeIndex, const FString& InDesiredModeName, FString& OutUniqueModeName);

	// Removes the modes in the order given, lowering each index by the number of modes already
	// removed (so the indices are meant in ascending order).
	void RemoveModes(const TArray<int32>& ModeIndicesToDelete);

	// Enables or disables the mode's matrix, then aligns channels and updates the span. Setting the
	// current state does nothing. Never adds or removes functions or cell attributes.
	void SetFixtureMatrixEnabled(int32 ModeIndex, bool bEnableMatrix);

	// Lays the functions out one after another from channel 1, placing an enabled matrix in front
	// of the first function at or after its first cell channel. Does not update the span.
	void AlignFunctionChannels(int32 InModeIndex);

	// With auto channel span: the span from the lowest to the highest channel of the functions and
	// the matrix. The matrix counts even when it is disabled.
	void UpdateChannelSpan(int32 ModeIndex);

	// Functions

	// Appends a function named uniquely after "Function", after the last function (and an enabled
	// matrix); updates the span and answers the index.
	int32 AddFunction(int32 InModeIndex);

	// Inserts the function, renamed uniquely within the mode (the caller's struct gets the name).
	// At a valid index it takes the channel of the function it displaces and shifts the following
	// ones; the caller's Channel is left at INT32_MAX. Otherwise it is appended after the last
	// function (and an enabled matrix), which also goes to the caller's Channel. Updates the span.
	int32 InsertFunction(int32 InModeIndex, int32 InInsertAtIndex, FDMXFixtureFunction& InOutNewFunction);

	// Moves a function to another index, moving channels with it. Does not update the span.
	void ReorderFunction(int32 ModeIndex, int32 FunctionToReorderIndex, int32 InsertAtIndex);

	// Names the function, unique among the mode's other functions.
	void SetFunctionName(int32 InModeIndex, int32 InFunctionIndex, const FString& InDesiredFunctionName, FString& OutUniqueFunctionName);

	// Removes the functions, highest index first, closing the channel gaps; updates the span.
	void RemoveFunctions(int32 ModeIndex, TArray<int32> FunctionIndicesToDelete);

	// Matrix

	// Adds a cell attribute of the first predefined attribute. Leaves the matrix enabled.
	void AddCellAttribute(int32 ModeIndex);

	// Removes a cell attribute. Leaves the matrix enabled.
	void RemoveCellAttribute(int32 ModeIndex, int32 CellAttributeIndex);

	// Byte conversions. MSB order puts the most significant byte first; LSB order the least.

	static void FunctionValueToBytes(const FDMXFixtureFunction& InFunction, uint32 InValue, uint8* OutBytes);
	// Clamps to the format's maximum and writes GetSizeOfSignalFormat bytes.
	static void IntToBytes(EDMXFixtureSignalFormat InSignalFormat, bool bUseLSB, uint32 InValue, uint8* OutBytes);

	static uint32 BytesToFunctionValue(const FDMXFixtureFunction& InFunction, const uint8* InBytes);
	static uint32 BytesToInt(EDMXFixtureSignalFormat InSignalFormat, bool bUseLSB, const uint8* InBytes);

	static void FunctionNormalizedValueToBytes(const FDMXFixtureFunction& InFunction, float InValue, uint8* OutBytes);
	// Clamps to 0..1, scales to the format's maximum in float and truncates.
	static void NormalizedValueToBytes(EDMXFixtureSignalFormat InSignalFormat, bool bUseLSB, float InValue, uint8* OutBytes);

	static float BytesToFunctionNormalizedValue(const FDMXFixtureFunction& InFunction, const uint8* InBytes);
	static float BytesToNormalizedValue(EDMXFixtureSignalFormat InSignalFormat, bool bUseLSB, const uint8* InBytes);

	UPROPERTY(EditAnywhere, BlueprintReadOnly, Category = "Fixture Settings")
	FDMXFixtureCategory DMXCategory;

	UPROPERTY(EditAnywhere, BlueprintReadOnly, Category = "Fixture Settings")
	TArray<FDMXFixtureMode> Modes;

#if WITH_EDITORONLY_DATA
	UPROPERTY(EditAnywhere, Category = "Fixture Settings")
	bool bExportGeneratedGDTF = false;

	UPROPERTY()
	bool bShowOnlyLatestGDTFModeRevisions = true;

	UPROPERTY()
	bool bFixtureMatrixEnabled_DEPRECATED = false;
#endif

private:
	// Tells the fixture patches that use the type, then the delegate's listeners, that it changed.
	void BroadcastFixtureTypeChanged();

	// The channel after the last function and, if enabled, the matrix.
	static int32 GetNextFreeChannel(const FDMXFixtureMode& Mode);
};
