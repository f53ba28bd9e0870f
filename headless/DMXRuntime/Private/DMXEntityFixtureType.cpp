#include "Library/DMXEntityFixtureType.h"

#include "DMXConversions.h"
#include "DMXRuntimeMath.h"
#include "DMXRuntimeUtils.h"
#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityReference.h"
#include "Library/DMXLibrary.h"
#include "UObject/UObjectGlobals.h"

using UE::DMX::Private::WrapToInt32;

IMPLEMENT_HEADLESS_CLASS(UDMXEntityFixtureType, UDMXEntity, "DMXEntityFixtureType")

namespace
{
	int32 AddChannels(int32 Channel, int64 Delta)
	{
		return WrapToInt32(static_cast<int64>(Channel) + Delta);
	}

	TSet<FString> GetModeNames(const TArray<FDMXFixtureMode>& Modes, int32 ExcludedIndex = INDEX_NONE)
	{
		TSet<FString> Names;
		for (int32 Index = 0; Index < Modes.Num(); ++Index)
		{
			if (Index != ExcludedIndex)
			{
				Names.Add(Modes[Index].ModeName);
			}
		}
		return Names;
	}

	TSet<FString> GetFunctionNames(const FDMXFixtureMode& Mode, int32 ExcludedIndex = INDEX_NONE)
	{
		TSet<FString> Names;
		for (int32 Index = 0; Index < Mode.Functions.Num(); ++Index)
		{
			if (Index != ExcludedIndex)
			{
				Names.Add(Mode.Functions[Index].FunctionName);
			}
		}
		return Names;
	}
}

void UDMXEntityFixtureType::SerializeHeadlessState(FHeadlessStateArchive& Ar)
{
	Super::SerializeHeadlessState(Ar);
	Ar << DMXCategory << Modes;
#if WITH_EDITORONLY_DATA
	Ar << bExportGeneratedGDTF << bShowOnlyLatestGDTFModeRevisions << bFixtureMatrixEnabled_DEPRECATED;
#endif
}

UDMXEntityFixtureType* UDMXEntityFixtureType::CreateFixtureTypeInLibrary(FDMXEntityFixtureTypeConstructionParams ConstructionParams, const FString& DesiredName,
	bool bMarkDMXLibraryDirty)
{
	UDMXLibrary* DMXLibrary = ConstructionParams.ParentDMXLibrary.Get();
	if (!ensureMsgf(IsValid(DMXLibrary), TEXT("Cannot create a fixture type without a valid DMX library")))
	{
		return nullptr;
	}

	if (bMarkDMXLibraryDirty)
	{
		DMXLibrary->Modify();
	}

	const FString EntityName = FDMXRuntimeUtils::FindUniqueEntityName(DMXLibrary, UDMXEntityFixtureType::StaticClass(), DesiredName);

	UDMXEntityFixtureType* NewFixtureType = NewObject<UDMXEntityFixtureType>(DMXLibrary, UDMXEntityFixtureType::StaticClass(), NAME_None, RF_Transactional);
	if (!NewFixtureType)
	{
		return nullptr;
	}
	NewFixtureType->SetName(EntityName);
	NewFixtureType->DMXCategory = ConstructionParams.DMXCategory;
	NewFixtureType->Modes = ConstructionParams.Modes;

	GetOnFixtureTypeChanged().Broadcast(NewFixtureType);

	return NewFixtureType;
}

void UDMXEntityFixtureType::RemoveFixtureTypeFromLibrary(FDMXEntityFixtureTypeRef FixtureTypeRef)
{
	UDMXEntityFixtureType* FixtureType = FixtureTypeRef.GetFixtureType();
	if (!FixtureType)
	{
		return;
	}
	UDMXLibrary* DMXLibrary = FixtureType->GetParentLibrary();
	if (!DMXLibrary)
	{
		return;
	}

	for (UDMXEntityFixturePatch* FixturePatch : DMXLibrary->GetEntitiesTypeCast<UDMXEntityFixturePatch>())
	{
		if (FixturePatch->GetFixtureType() == FixtureType)
		{
			// Not recorded: undoing the removal brings the type back, but not the patches' reference to it.
			FixturePatch->SetFixtureType(nullptr);
		}
	}

	DMXLibrary->Modify();
	FixtureType->Modify();
	FixtureType->Destroy();
}

FDMXOnFixtureTypeChangedDelegate& UDMXEntityFixtureType::GetOnFixtureTypeChanged()
{
	static FDMXOnFixtureTypeChangedDelegate OnFixtureTypeChanged;
	return OnFixtureTypeChanged;
}

void UDMXEntityFixtureType::BroadcastFixtureTypeChanged()
{
	UDMXEntityFixturePatch::HandleFixtureTypeChanged(this);
	GetOnFixtureTypeChanged().Broadcast(this);
}

bool UDMXEntityFixtureType::Modify(bool bAlwaysMarkDirty)
{
	if (UDMXLibrary* DMXLibrary = GetParentLibrary())
	{
		return DMXLibrary->Modify(bAlwaysMarkDirty) && Super::Modify(bAlwaysMarkDirty);
	}
	return Super::Modify(bAlwaysMarkDirty);
}

void UDMXEntityFixtureType::PostEditUndo()
{
	Super::PostEditUndo();

	// PostEditChange with an empty, non-interactive event.
	for (int32 ModeIndex = 0; ModeIndex < Modes.Num(); ++ModeIndex)
	{
		AlignFunctionChannels(ModeIndex);
		UpdateChannelSpan(ModeIndex);
	}
	BroadcastFixtureTypeChanged();

	BroadcastFixtureTypeChanged();
}

int32 UDMXEntityFixtureType::AddMode(FString BaseModeName)
{
	FDMXFixtureMode NewMode;
	NewMode.ModeName = FDMXRuntimeUtils::GenerateUniqueNameFromExisting(GetModeNames(Modes), BaseModeName);
	return Modes.Add(NewMode);
}

void UDMXEntityFixtureType::SetModeName(int32 InModeIndex, const FString& InDesiredModeName, FString& OutUniqueModeName)
{
	if (!ensureMsgf(Modes.IsValidIndex(InModeIndex), TEXT("Invalid mode index")))
	{
		return;
	}

	OutUniqueModeName = FDMXRuntimeUtils::GenerateUniqueNameFromExisting(GetModeNames(Modes, InModeIndex), InDesiredModeName);
	Modes[InModeIndex].ModeName = OutUniqueModeName;
}

void UDMXEntityFixtureType::RemoveModes(const TArray<int32>& ModeIndicesToDelete)
{
	int32 NumRemoved = 0;
	for (const int32 ModeIndex : ModeIndicesToDelete)
	{
		const int32 AdjustedIndex = ModeIndex - NumRemoved;
		if (ensureMsgf(Modes.IsValidIndex(AdjustedIndex), TEXT("Invalid mode index")))
		{
			Modes.RemoveAt(AdjustedIndex);
			++NumRemoved;
		}
	}
}

void UDMXEntityFixtureType::SetFixtureMatrixEnabled(int32 ModeIndex, bool bEnableMatrix)
{
	if (!ensureMsgf(Modes.IsValidIndex(ModeIndex), TEXT("Invalid mode index")))
	{
		return;
	}

	FDMXFixtureMode& Mode = Modes[ModeIndex];
	if (Mode.bFixtureMatrixEnabled == bEnableMatrix)
	{
		return;
	}

	Mode.bFixtureMatrixEnabled = bEnableMatrix;
	Mode.FixtureMatrixConfig.XCells = FMath::Max(Mode.FixtureMatrixConfig.XCells, 1);
	Mode.FixtureMatrixConfig.YCells = FMath::Max(Mode.FixtureMatrixConfig.YCells, 1);

	AlignFunctionChannels(ModeIndex);
	UpdateChannelSpan(ModeIndex);
}

void UDMXEntityFixtureType::AlignFunctionChannels(int32 InModeIndex)
{
	if (!ensureMsgf(Modes.IsValidIndex(InModeIndex), TEXT("Invalid mode index")))
	{
		return;
	}

	FDMXFixtureMode& Mode = Modes[InModeIndex];
	FDMXFixtureMatrix& Matrix = Mode.FixtureMatrixConfig;

	int32 NextChannel = 1;
	bool bMatrixPlaced = !Mode.bFixtureMatrixEnabled;
	for (FDMXFixtureFunction& Function : Mode.Functions)
	{
		if (!bMatrixPlaced && (Matrix.FirstCellChannel <= NextChannel || Matrix.FirstCellChannel <= Function.Channel))
		{
			Matrix.FirstCellChannel = NextChannel;
			NextChannel = AddChannels(NextChannel, Matrix.GetNumChannels());
			bMatrixPlaced = true;
		}

		Function.Channel = NextChannel;
		NextChannel = AddChannels(Function.GetLastChannel(), 1);
	}
}

void UDMXEntityFixtureType::UpdateChannelSpan(int32 ModeIndex)
{
	if (!ensureMsgf(Modes.IsValidIndex(ModeIndex), TEXT("Invalid mode index")))
	{
		return;
	}

	FDMXFixtureMode& Mode = Modes[ModeIndex];
	if (!Mode.bAutoChannelSpan)
	{
		return;
	}

	// The matrix counts whether it is enabled or not.
	const FDMXFixtureMatrix& Matrix = Mode.FixtureMatrixConfig;
	int64 LowestChannel = Matrix.FirstCellChannel;
	int64 HighestChannel = static_cast<int64>(Matrix.FirstCellChannel) + Matrix.GetNumChannels() - 1;
	for (const FDMXFixtureFunction& Function : Mode.Functions)
	{
		LowestChannel = FMath::Min<int64>(LowestChannel, Function.Channel);
		HighestChannel = FMath::Max<int64>(HighestChannel, static_cast<int64>(Function.Channel) + Function.GetNumChannels() - 1);
	}

	Mode.ChannelSpan = WrapToInt32(FMath::Max<int64>(HighestChannel - LowestChannel + 1, 0));
}

int32 UDMXEntityFixtureType::GetNextFreeChannel(const FDMXFixtureMode& Mode)
{
	const int32 LastFunctionChannel = Mode.Functions.Num() > 0 ? Mode.Functions.Last().GetLastChannel() : 0;
	const int32 LastMatrixChannel = Mode.bFixtureMatrixEnabled ? Mode.FixtureMatrixConfig.GetLastChannel() : 0;
	return AddChannels(FMath::Max(LastFunctionChannel, LastMatrixChannel), 1);
}

int32 UDMXEntityFixtureType::AddFunction(int32 InModeIndex)
{
	if (!ensureMsgf(Modes.IsValidIndex(InModeIndex), TEXT("Invalid mode index")))
	{
		return INDEX_NONE;
	}

	FDMXFixtureMode& Mode = Modes[InModeIndex];

	FDMXFixtureFunction NewFunction;
	NewFunction.FunctionName = FDMXRuntimeUtils::GenerateUniqueNameFromExisting(GetFunctionNames(Mode), FString(TEXT("Function")));
	NewFunction.Channel = GetNextFreeChannel(Mode);

	const int32 NewFunctionIndex = Mode.Functions.Add(NewFunction);
	UpdateChannelSpan(InModeIndex);

	return NewFunctionIndex;
}

int32 UDMXEntityFixtureType::InsertFunction(int32 InModeIndex, int32 InInsertAtIndex, FDMXFixtureFunction& InOutNewFunction)
{
	if (!ensureMsgf(Modes.IsValidIndex(InModeIndex), TEXT("Invalid mode index")))
	{
		return INDEX_NONE;
	}

	FDMXFixtureMode& Mode = Modes[InModeIndex];
	InOutNewFunction.FunctionName = FDMXRuntimeUtils::GenerateUniqueNameFromExisting(GetFunctionNames(Mode), InOutNewFunction.FunctionName);

	int32 NewFunctionIndex = INDEX_NONE;
	if (Mode.Functions.IsValidIndex(InInsertAtIndex))
	{
		// Appended at the very end of the channel range first, then moved to its place. The caller's
		// struct keeps this temporary channel.
		InOutNewFunction.Channel = INT32_MAX;
		const int32 AppendedIndex = Mode.Functions.Add(InOutNewFunction);
		ReorderFunction(InModeIndex, AppendedIndex, InInsertAtIndex);
		NewFunctionIndex = InInsertAtIndex;
	}
	else
	{
		InOutNewFunction.Channel = GetNextFreeChannel(Mode);
		NewFunctionIndex = Mode.Functions.Add(InOutNewFunction);
	}

	UpdateChannelSpan(InModeIndex);
	return NewFunctionIndex;
}

void UDMXEntityFixtureType::ReorderFunction(int32 ModeIndex, int32 FunctionToReorderIndex, int32 InsertAtIndex)
{
	if (!ensureMsgf(Modes.IsValidIndex(ModeIndex), TEXT("Invalid mode index")))
	{
		return;
	}

	FDMXFixtureMode& Mode = Modes[ModeIndex];
	if (!ensure(Mode.Functions.IsValidIndex(FunctionToReorderIndex)) || !ensure(Mode.Functions.IsValidIndex(InsertAtIndex)))
	{
		return;
	}
	if (FunctionToReorderIndex == InsertAtIndex)
	{
		return;
	}

	FDMXFixtureMatrix& Matrix = Mode.FixtureMatrixConfig;
	FDMXFixtureFunction MovedFunction = Mode.Functions[FunctionToReorderIndex];
	const FDMXFixtureFunction& TargetFunction = Mode.Functions[InsertAtIndex];
	const int32 MovedSize = MovedFunction.GetNumChannels();

	if (FunctionToReorderIndex > InsertAtIndex)
	{
		// Backwards: the moved function takes the target's channel, everything in between moves up.
		const int32 AffectedFirst = TargetFunction.Channel;
		const int32 AffectedLast = MovedFunction.GetLastChannel();
		if (Mode.bFixtureMatrixEnabled && Matrix.FirstCellChannel >= AffectedFirst && Matrix.FirstCellChannel <= AffectedLast)
		{
			Matrix.FirstCellChannel = AddChannels(Matrix.FirstCellChannel, MovedSize);
		}

		MovedFunction.Channel = TargetFunction.Channel;
		for (int32 Index = InsertAtIndex; Index < FunctionToReorderIndex; ++Index)
		{
			Mode.Functions[Index].Channel = AddChannels(Mode.Functions[Index].Channel, MovedSize);
		}
	}
	else
	{
		// Forwards: the moved function ends where the target ends, everything in between moves down.
		const int32 AffectedFirst = MovedFunction.Channel;
		const int32 AffectedLast = TargetFunction.GetLastChannel();
		if (Mode.bFixtureMatrixEnabled && Matrix.FirstCellChannel >= AffectedFirst && Matrix.FirstCellChannel <= AffectedLast)
		{
			Matrix.FirstCellChannel = AddChannels(Matrix.FirstCellChannel, -MovedSize);
		}

		MovedFunction.Channel = AddChannels(TargetFunction.Channel, static_cast<int64>(TargetFunction.GetNumChannels()) - MovedSize);
		for (int32 Index = FunctionToReorderIndex + 1; Index <= InsertAtIndex; ++Index)
		{
			Mode.Functions[Index].Channel = AddChannels(Mode.Functions[Index].Channel, -MovedSize);
		}
	}

	Mode.Functions.RemoveAt(FunctionToReorderIndex);
	Mode.Functions.Insert(MovedFunction, InsertAtIndex);
}

void UDMXEntityFixtureType::SetFunctionName(int32 InModeIndex, int32 InFunctionIndex, const FString& InDesiredFunctionName, FString& OutUniqueFunctionName)
{
	if (!ensureMsgf(Modes.IsValidIndex(InModeIndex) && Modes[InModeIndex].Functions.IsValidIndex(InFunctionIndex), TEXT("Invalid mode or function index")))
	{
		return;
	}

	FDMXFixtureMode& Mode = Modes[InModeIndex];
	OutUniqueFunctionName = FDMXRuntimeUtils::GenerateUniqueNameFromExisting(GetFunctionNames(Mode, InFunctionIndex), InDesiredFunctionName);
	Mode.Functions[InFunctionIndex].FunctionName = OutUniqueFunctionName;
}

void UDMXEntityFixtureType::RemoveFunctions(int32 ModeIndex, TArray<int32> FunctionIndicesToDelete)
{
	if (!ensureMsgf(Modes.IsValidIndex(ModeIndex), TEXT("Invalid mode index")))
	{
		return;
	}

	FDMXFixtureMode& Mode = Modes[ModeIndex];
	FDMXFixtureMatrix& Matrix = Mode.FixtureMatrixConfig;

	FunctionIndicesToDelete.Sort([](int32 A, int32 B) { return A > B; });
	int32 PreviousIndex = INDEX_NONE;
	for (const int32 FunctionIndex : FunctionIndicesToDelete)
	{
		if (FunctionIndex == PreviousIndex || !Mode.Functions.IsValidIndex(FunctionIndex))
		{
			continue;
		}
		PreviousIndex = FunctionIndex;

		const FDMXFixtureFunction RemovedFunction = Mode.Functions[FunctionIndex];
		const int32 RemovedSize = RemovedFunction.GetNumChannels();
		for (int32 Index = FunctionIndex + 1; Index < Mode.Functions.Num(); ++Index)
		{
			Mode.Functions[Index].Channel = AddChannels(Mode.Functions[Index].Channel, -RemovedSize);
		}
		if (Mode.bFixtureMatrixEnabled && Matrix.FirstCellChannel >= RemovedFunction.GetLastChannel())
		{
			Matrix.FirstCellChannel = AddChannels(Matrix.FirstCellChannel, -RemovedSize);
		}

		Mode.Functions.RemoveAt(FunctionIndex);
	}

	UpdateChannelSpan(ModeIndex);
}

void UDMXEntityFixtureType::AddCellAttribute(int32 ModeIndex)
{
	if (!ensureMsgf(Modes.IsValidIndex(ModeIndex), TEXT("Invalid mode index")))
	{
		return;
	}

	FDMXFixtureCellAttribute NewCellAttribute;
	const TArray<FName> PredefinedAttributes = FDMXAttributeName::GetPredefinedValues();
	if (PredefinedAttributes.Num() > 0)
	{
		NewCellAttribute.Attribute = PredefinedAttributes[0];
	}

	// Disabled and enabled again, so that the channels are laid out with the new cell attribute.
	SetFixtureMatrixEnabled(ModeIndex, false);
	Modes[ModeIndex].FixtureMatrixConfig.CellAttributes.Add(NewCellAttribute);
	SetFixtureMatrixEnabled(ModeIndex, true);
	UpdateChannelSpan(ModeIndex);
}

void UDMXEntityFixtureType::RemoveCellAttribute(int32 ModeIndex, int32 CellAttributeIndex)
{
	if (!ensureMsgf(Modes.IsValidIndex(ModeIndex) && Modes[ModeIndex].FixtureMatrixConfig.CellAttributes.IsValidIndex(CellAttributeIndex),
			TEXT("Invalid mode or cell attribute index")))
	{
		return;
	}

	SetFixtureMatrixEnabled(ModeIndex, false);
	Modes[ModeIndex].FixtureMatrixConfig.CellAttributes.RemoveAt(CellAttributeIndex);
	SetFixtureMatrixEnabled(ModeIndex, true);
	UpdateChannelSpan(ModeIndex);
}

void UDMXEntityFixtureType::FunctionValueToBytes(const FDMXFixtureFunction& InFunction, uint32 InValue, uint8* OutBytes)
{
	IntToBytes(InFunction.DataType, InFunction.bUseLSBMode, InValue, OutBytes);
}

void UDMXEntityFixtureType::IntToBytes(EDMXFixtureSignalFormat InSignalFormat, bool bUseLSB, uint32 InValue, uint8* OutBytes)
{
	const uint8 NumBytes = FDMXConversions::GetSizeOfSignalFormat(InSignalFormat);
	const uint32 Value = FDMXConversions::ClampValueBySignalFormat(InValue, InSignalFormat);
	if (NumBytes == 1)
	{
		OutBytes[0] = static_cast<uint8>(Value);
		return;
	}

	// Byte 0 is the least significant one.
	for (uint32 ByteIndex = 0; ByteIndex < NumBytes; ++ByteIndex)
	{
		const uint8 Byte = ByteIndex < 4 ? static_cast<uint8>((Value >> (8u * ByteIndex)) & 0xFFu) : 0;
		OutBytes[bUseLSB ? ByteIndex : NumBytes - 1u - ByteIndex] = Byte;
	}
}

uint32 UDMXEntityFixtureType::BytesToFunctionValue(const FDMXFixtureFunction& InFunction, const uint8* InBytes)
{
	return BytesToInt(InFunction.DataType, InFunction.bUseLSBMode, InBytes);
}

uint32 UDMXEntityFixtureType::BytesToInt(EDMXFixtureSignalFormat InSignalFormat, bool bUseLSB, const uint8* InBytes)
{
	const uint8 NumBytes = FDMXConversions::GetSizeOfSignalFormat(InSignalFormat);
	uint32 Value = 0;
	for (uint32 ByteIndex = 0; ByteIndex < NumBytes && ByteIndex < 4; ++ByteIndex)
	{
		const uint8 Byte = InBytes[bUseLSB ? ByteIndex : NumBytes - 1u - ByteIndex];
		Value |= static_cast<uint32>(Byte) << (8u * ByteIndex);
	}
	return Value;
}

void UDMXEntityFixtureType::FunctionNormalizedValueToBytes(const FDMXFixtureFunction& InFunction, float InValue, uint8* OutBytes)
{
	NormalizedValueToBytes(InFunction.DataType, InFunction.bUseLSBMode, InValue, OutBytes);
}

void UDMXEntityFixtureType::NormalizedValueToBytes(EDMXFixtureSignalFormat InSignalFormat, bool bUseLSB, float InValue, uint8* OutBytes)
{
	const float Normalized = FMath::Clamp(InValue, 0.0f, 1.0f);

	// Scaled in float and truncated. 32 bit at 1.0 gives 2^32 in float, which saturates here.
	const float Scaled = static_cast<float>(FDMXConversions::GetSignalFormatMaxValue(InSignalFormat)) * Normalized;
	const uint32 IntValue = UE::DMX::Private::TruncateToUInt32(static_cast<double>(Scaled));

	IntToBytes(InSignalFormat, bUseLSB, IntValue, OutBytes);
}

float UDMXEntityFixtureType::BytesToFunctionNormalizedValue(const FDMXFixtureFunction& InFunction, const uint8* InBytes)
{
	return BytesToNormalizedValue(InFunction.DataType, InFunction.bUseLSBMode, InBytes);
}

float UDMXEntityFixtureType::BytesToNormalizedValue(EDMXFixtureSignalFormat InSignalFormat, bool bUseLSB, const uint8* InBytes)
{
	const uint32 Value = BytesToInt(InSignalFormat, bUseLSB, InBytes);
	return static_cast<float>(Value) / static_cast<float>(FDMXConversions::GetSignalFormatMaxValue(InSignalFormat));
}
