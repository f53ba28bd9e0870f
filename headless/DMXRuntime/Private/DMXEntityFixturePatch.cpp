#include "Library/DMXEntityFixturePatch.h"

#include <algorithm>
#include <unordered_set>
#include <vector>
#include "DMXConversions.h"
#include "DMXProtocolSettings.h"
#include "DMXRuntimeMath.h"
#include "DMXRuntimeUtils.h"
#include "Library/DMXLibrary.h"
#include "UObject/HeadlessObjectRegistry.h"
#include "UObject/UObjectGlobals.h"

#define LOCTEXT_NAMESPACE "DMXEntityFixturePatch"

using UE::DMX::Private::WrapToInt32;

IMPLEMENT_HEADLESS_CLASS(UDMXEntityFixturePatch, UDMXEntity, "DMXEntityFixturePatch")

namespace
{
	// Every patch that exists, so that a fixture type change reaches the patches of that type. Never
	// destroyed: patches still alive when the program exits remove themselves from it afterwards.
	std::unordered_set<UDMXEntityFixturePatch*>& GetAllFixturePatches()
	{
		static std::unordered_set<UDMXEntityFixturePatch*>* FixturePatches = new std::unordered_set<UDMXEntityFixturePatch*>();
		return *FixturePatches;
	}

	// Calls the function for each cached function that lies within the channel span.
	template <typename FunctionType>
	void ForEachFunctionWithinSpan(const FDMXEntityFixturePatchCache& Cache, FunctionType&& Func)
	{
		for (const FDMXFixtureFunction& Function : Cache.GetFunctions())
		{
			if (Function.GetLastChannel() <= Cache.GetChannelSpan())
			{
				Func(Function);
			}
		}
	}
}

FDMXEntityFixturePatchCache::FDMXEntityFixturePatchCache(int32 InStartingChannel, const FDMXFixtureMode* InActiveModePtr, const FDMXFixtureMatrix* InFixtureMatrixPtr)
	: StartingChannel(InStartingChannel)
	, DataIndex(WrapToInt32(static_cast<int64>(InStartingChannel) - 1))
{
	const bool bValidChannel = static_cast<int64>(InStartingChannel) - 1 >= 0 && static_cast<int64>(InStartingChannel) - 1 <= 511;
	const bool bHasContent = InActiveModePtr && !(InFixtureMatrixPtr && InActiveModePtr->Functions.Num() == 0 && InFixtureMatrixPtr->CellAttributes.Num() == 0);
	if (!bValidChannel || !bHasContent)
	{
		return;
	}

	Functions = InActiveModePtr->Functions;

	// The functions are taken to follow each other without gaps.
	int64 Size = 0;
	for (const FDMXFixtureFunction& Function : Functions)
	{
		Size += Function.GetNumChannels();
	}

	if (InFixtureMatrixPtr && InFixtureMatrixPtr->CellAttributes.Num() > 0)
	{
		bHasMatrix = true;
		FixtureMatrix = *InFixtureMatrixPtr;

		int64 CellSize = 0;
		for (const FDMXFixtureCellAttribute& CellAttribute : FixtureMatrix.CellAttributes)
		{
			CellSize += CellAttribute.GetNumChannels();
		}
		const int64 NumCells = static_cast<int64>(FixtureMatrix.XCells) * FixtureMatrix.YCells;
		Size = FMath::Max<int64>(Size, static_cast<int64>(FixtureMatrix.FirstCellChannel) - 1) + NumCells * CellSize;
	}

	if (!InActiveModePtr->bAutoChannelSpan)
	{
		Size = FMath::Max<int64>(Size, InActiveModePtr->ChannelSpan);
	}

	// The span is not limited to the universe: a patch may run past channel 512.
	DataSize = WrapToInt32(Size);
}

UDMXEntityFixturePatch::UDMXEntityFixturePatch()
	: UniverseID(1)
	, ParentFixtureTypeTemplate(nullptr)
	, ActiveMode(0)
{
	GetAllFixturePatches().insert(this);
}

UDMXEntityFixturePatch::~UDMXEntityFixturePatch()
{
	GetAllFixturePatches().erase(this);
}

void UDMXEntityFixturePatch::SerializeHeadlessState(FHeadlessStateArchive& Ar)
{
	Super::SerializeHeadlessState(Ar);
	Ar << CustomTags << UniverseID << StartingChannel << ParentFixtureTypeTemplate << ActiveMode << FixtureID << MVRFixtureUUID;
#if WITH_EDITORONLY_DATA
	Ar << EditorColor << bReceiveDMXInEditor;
#endif
}

UDMXEntityFixturePatch* UDMXEntityFixturePatch::CreateFixturePatchInLibrary(FDMXEntityFixturePatchConstructionParams ConstructionParams, const FString& DesiredName,
	bool bMarkDMXLibraryDirty)
{
	UDMXEntityFixtureType* FixtureType = ConstructionParams.FixtureTypeRef.GetFixtureType();
	if (!FixtureType)
	{
		return nullptr;
	}

	UDMXLibrary* DMXLibrary = FixtureType->GetParentLibrary();
	if (!ensureMsgf(DMXLibrary, TEXT("Cannot create a fixture patch for a fixture type that is not in a DMX library")))
	{
		return nullptr;
	}

	const FString EntityName = FDMXRuntimeUtils::FindUniqueEntityName(DMXLibrary, UDMXEntityFixturePatch::StaticClass(), DesiredName);

	// Registers itself with the library (before the library is marked below).
	UDMXEntityFixturePatch* NewFixturePatch = NewObject<UDMXEntityFixturePatch>(DMXLibrary, UDMXEntityFixturePatch::StaticClass(), NAME_None, RF_Transactional);
	if (!NewFixturePatch)
	{
		return nullptr;
	}

	if (bMarkDMXLibraryDirty)
	{
		DMXLibrary->Modify();
	}

	NewFixturePatch->SetName(EntityName);
	NewFixturePatch->SetFixtureType(FixtureType);
	NewFixturePatch->SetUniverseID(ConstructionParams.UniverseID);
	NewFixturePatch->SetStartingChannel(ConstructionParams.StartingAddress);
	NewFixturePatch->SetActiveModeIndex(ConstructionParams.ActiveMode);

	const FGuid& DesiredMVRFixtureUUID = ConstructionParams.MVRFixtureUUID;
	if (DesiredMVRFixtureUUID.IsValid())
	{
		TArray<UDMXEntityFixturePatch*> OtherFixturePatches = DMXLibrary->GetEntitiesTypeCast<UDMXEntityFixturePatch>();
		OtherFixturePatches.Remove(NewFixturePatch);
		const bool bUUIDInUse = OtherFixturePatches.ContainsByPredicate([&DesiredMVRFixtureUUID](const UDMXEntityFixturePatch* Other)
		{
			return Other->MVRFixtureUUID == DesiredMVRFixtureUUID;
		});
		if (bUUIDInUse)
		{
			FHeadlessObjectRegistry::Get().Warnings.Add(FString(TEXT("LogDMXRuntime: Error: Cannot create fixture patch '")) + EntityName
				+ TEXT("' with MVR Fixture UUID ") + DesiredMVRFixtureUUID.ToString() + TEXT(", the UUID is already in use. A new UUID was generated."));
			ensureAlways(false);
			NewFixturePatch->MVRFixtureUUID = FGuid::NewGuid();
		}
		else
		{
			NewFixturePatch->MVRFixtureUUID = DesiredMVRFixtureUUID;
		}
	}
	else
	{
		NewFixturePatch->MVRFixtureUUID = FGuid::NewGuid();
	}

	NewFixturePatch->GenerateFixtureID();

#if WITH_EDITORONLY_DATA
	// The colour of the first other patch of the same fixture type.
	const UDMXEntityFixturePatch* PatchOfSameType = nullptr;
	for (UDMXEntity* Entity : DMXLibrary->GetIndexedEntitiesOfClass(UDMXEntityFixturePatch::StaticClass()))
	{
		const UDMXEntityFixturePatch* Other = static_cast<const UDMXEntityFixturePatch*>(Entity);
		if (Other != NewFixturePatch && Other->GetFixtureType() == FixtureType)
		{
			PatchOfSameType = Other;
			break;
		}
	}
	NewFixturePatch->EditorColor = PatchOfSameType ? PatchOfSameType->EditorColor : FLinearColor::MakeRandomColor();
#endif

	GetOnFixturePatchChanged().Broadcast(NewFixturePatch);

	return NewFixturePatch;
}

void UDMXEntityFixturePatch::RemoveFixturePatchFromLibrary(FDMXEntityFixturePatchRef FixturePatchRef)
{
	UDMXEntityFixturePatch* FixturePatch = FixturePatchRef.GetFixturePatch();
	if (!FixturePatch)
	{
		return;
	}
	if (UDMXLibrary* DMXLibrary = FixturePatch->GetParentLibrary())
	{
		DMXLibrary->Modify();
		FixturePatch->Modify();
		FixturePatch->Destroy();
	}
}

FDMXOnFixturePatchChangedDelegate& UDMXEntityFixturePatch::GetOnFixturePatchChanged()
{
	static FDMXOnFixturePatchChangedDelegate OnFixturePatchChanged;
	return OnFixturePatchChanged;
}

void UDMXEntityFixturePatch::PostInitProperties()
{
	Super::PostInitProperties();
	RebuildCache();
}

bool UDMXEntityFixturePatch::Modify(bool bAlwaysMarkDirty)
{
	if (UDMXLibrary* DMXLibrary = GetParentLibrary())
	{
		return DMXLibrary->Modify(bAlwaysMarkDirty) && Super::Modify(bAlwaysMarkDirty);
	}
	return Super::Modify(bAlwaysMarkDirty);
}

void UDMXEntityFixturePatch::PostEditUndo()
{
	Super::PostEditUndo();
	RebuildCache();
	GetOnFixturePatchChanged().Broadcast(this);
}

void UDMXEntityFixturePatch::HandleFixtureTypeChanged(const UDMXEntityFixtureType* ChangedFixtureType)
{
	// Copied: rebuilding a cache never creates or destroys patches, but stay safe anyway. Each patch
	// only rebuilds its own cache, so the order does not matter.
	const std::vector<UDMXEntityFixturePatch*> FixturePatches(GetAllFixturePatches().begin(), GetAllFixturePatches().end());
	for (UDMXEntityFixturePatch* FixturePatch : FixturePatches)
	{
		if (FixturePatch->ParentFixtureTypeTemplate == ChangedFixtureType)
		{
			FixturePatch->ValidateActiveMode();
			FixturePatch->RebuildCache();
		}
	}
}

bool UDMXEntityFixturePatch::IsValidEntity(FText& OutReason) const
{
	OutReason = FText::GetEmpty();

	if (ParentFixtureTypeTemplate == nullptr)
	{
		OutReason = LOCTEXT("InvalidReason_NullParentTemplate", "Fixture Type is null");
	}
	else if (static_cast<int64>(StartingChannel) + GetChannelSpan() - 1 > 512)
	{
		OutReason = FText::Format(LOCTEXT("InvalidReason_ChannelOverflow", "Channels range overflows max channel address ({0})"), FText::AsNumber(512));
	}
	else if (ParentFixtureTypeTemplate->Modes.Num() == 0)
	{
		OutReason = FText::Format(
			LOCTEXT("InvalidReason_NoModesDefined", "'{0}' cannot be assigned as its parent Fixture Type '{1}' does not define any Modes."),
			FText::FromString(GetDisplayName()), FText::FromString(ParentFixtureTypeTemplate->GetDisplayName()));
	}
	else if (!ParentFixtureTypeTemplate->Modes.IsValidIndex(ActiveMode))
	{
		OutReason = FText::Format(
			LOCTEXT("InvalidReason_NoActiveModes", "'{0}' cannot be assigned as its parent Fixture Type '{1}' does no longer contain Active Mode."),
			FText::FromString(GetDisplayName()), FText::FromString(ParentFixtureTypeTemplate->GetDisplayName()));
	}
	else if (ParentFixtureTypeTemplate->Modes[ActiveMode].Functions.Num() == 0
		&& ParentFixtureTypeTemplate->Modes[ActiveMode].FixtureMatrixConfig.CellAttributes.Num() == 0)
	{
		OutReason = FText::Format(
			LOCTEXT("InvalidReason_NoFunctionsDefined", "'{0}' cannot be assigned as its parent Fixture Type '{1}' does not define any Functions in the Active Mode."),
			FText::FromString(GetDisplayName()), FText::FromString(ParentFixtureTypeTemplate->GetDisplayName()));
	}
	else if (GetChannelSpan() == 0)
	{
		OutReason = FText::Format(
			LOCTEXT("InvalidReason_ParentChannelSpanIsZero", "'{0}' cannot be assigned as its parent Fixture Type '{1}' overrides channel span with 0."),
			FText::FromString(GetDisplayName()), FText::FromString(ParentFixtureTypeTemplate->GetDisplayName()));
	}

	return OutReason.IsEmpty();
}

int32 UDMXEntityFixturePatch::GetChannelSpan() const
{
	return Cache.GetChannelSpan();
}

int32 UDMXEntityFixturePatch::GetEndingChannel() const
{
	return WrapToInt32(static_cast<int64>(GetStartingChannel()) + GetChannelSpan() - 1);
}

void UDMXEntityFixturePatch::SetStartingChannel(int32 NewStartingChannel)
{
	if (NewStartingChannel == StartingChannel)
	{
		return;
	}
	StartingChannel = NewStartingChannel;
	RebuildCache();
}

void UDMXEntityFixturePatch::SetUniverseID(int32 NewUniverseID)
{
	UniverseID = NewUniverseID;
	RebuildCache();
}

bool UDMXEntityFixturePatch::SetActiveModeIndex(int32 NewActiveModeIndex)
{
	if (IsValid(ParentFixtureTypeTemplate) && ParentFixtureTypeTemplate->Modes.IsValidIndex(NewActiveModeIndex))
	{
		ActiveMode = NewActiveModeIndex;
		RebuildCache();
		return true;
	}
	return false;
}

void UDMXEntityFixturePatch::SetFixtureType(UDMXEntityFixtureType* NewFixtureType)
{
	if (!IsValid(NewFixtureType))
	{
		ParentFixtureTypeTemplate = nullptr;
	}
	else if (NewFixtureType != ParentFixtureTypeTemplate.Get())
	{
		ParentFixtureTypeTemplate = NewFixtureType;
		ActiveMode = NewFixtureType->Modes.Num() > 0 ? 0 : INDEX_NONE;
	}

	RebuildCache();
}

const FDMXFixtureMode* UDMXEntityFixturePatch::GetActiveMode() const
{
	if (ParentFixtureTypeTemplate && ParentFixtureTypeTemplate->IsValidLowLevelFast() && ParentFixtureTypeTemplate->Modes.IsValidIndex(ActiveMode))
	{
		return &ParentFixtureTypeTemplate->Modes[ActiveMode];
	}
	return nullptr;
}

const FDMXFixtureMatrix* UDMXEntityFixturePatch::GetFixtureMatrix() const
{
	const FDMXFixtureMode* Mode = GetActiveMode();
	return Mode && Mode->bFixtureMatrixEnabled ? &Mode->FixtureMatrixConfig : nullptr;
}

void UDMXEntityFixturePatch::ValidateActiveMode()
{
	if (ParentFixtureTypeTemplate && ParentFixtureTypeTemplate->Modes.Num() > 0)
	{
		ActiveMode = FMath::Clamp(ActiveMode, 0, ParentFixtureTypeTemplate->Modes.Num() - 1);
	}
	else
	{
		ActiveMode = INDEX_NONE;
	}
}

void UDMXEntityFixturePatch::RebuildCache()
{
	Cache = FDMXEntityFixturePatchCache(GetStartingChannel(), GetActiveMode(), GetFixtureMatrix());
}

void UDMXEntityFixturePatch::GenerateFixtureID(int32 DesiredFixtureID)
{
	const int32 OldID = FixtureID;
	FixtureID = FindNewFixtureID(DesiredFixtureID);
	if (UDMXLibrary* DMXLibrary = GetParentLibrary())
	{
		DMXLibrary->HandleFixtureIDChanged(this, OldID, FixtureID);
	}
}

void UDMXEntityFixturePatch::SetFixtureIDFromSaved(int32 InFixtureID)
{
	const int32 OldID = FixtureID;
	FixtureID = InFixtureID;
	if (UDMXLibrary* DMXLibrary = GetParentLibrary())
	{
		DMXLibrary->HandleFixtureIDChanged(this, OldID, FixtureID);
	}
}

int32 UDMXEntityFixturePatch::FindNewFixtureID(int32 DesiredFixtureID) const
{
	UDMXLibrary* DMXLibrary = GetParentLibrary();
	if (!DMXLibrary)
	{
		return 1;
	}

	// The library counts its patches' IDs, so the common answers need no walk over every patch.
	if (DesiredFixtureID > 0 && DMXLibrary->CountFixturePatchesWithID(DesiredFixtureID, this) == 0)
	{
		return DesiredFixtureID;
	}

	// The patch with the highest ID, this patch counting as 0; the first of equals wins. When some
	// other patch holds a positive ID, that patch is the highest and the answer is one more.
	int32 HighestOtherID = 0;
	if (DMXLibrary->FindHighestFixtureID(HighestOtherID, this) && HighestOtherID > 0)
	{
		return WrapToInt32(static_cast<int64>(HighestOtherID) + 1);
	}

	const UDMXEntityFixturePatch* HighestPatch = nullptr;
	int32 HighestID = 0;
	for (const UDMXEntityFixturePatch* FixturePatch : DMXLibrary->GetEntitiesTypeCast<UDMXEntityFixturePatch>())
	{
		const int32 ProjectedID = FixturePatch == this ? 0 : FixturePatch->FixtureID;
		if (!HighestPatch || ProjectedID > HighestID)
		{
			HighestPatch = FixturePatch;
			HighestID = ProjectedID;
		}
	}
	return HighestPatch ? WrapToInt32(static_cast<int64>(HighestPatch->FixtureID) + 1) : 1;
}

TMap<FDMXAttributeName, int32> UDMXEntityFixturePatch::GetAttributeDefaultMap() const
{
	TMap<FDMXAttributeName, int32> Result;
	ForEachFunctionWithinSpan(Cache, [&Result](const FDMXFixtureFunction& Function)
	{
		Result.Add(Function.Attribute, static_cast<int32>(Function.DefaultValue));
	});
	return Result;
}

TMap<FDMXAttributeName, int32> UDMXEntityFixturePatch::GetAttributeChannelAssignments() const
{
	TMap<FDMXAttributeName, int32> Result;
	ForEachFunctionWithinSpan(Cache, [this, &Result](const FDMXFixtureFunction& Function)
	{
		Result.Add(Function.Attribute, WrapToInt32(static_cast<int64>(Function.Channel) + StartingChannel - 1));
	});
	return Result;
}

TMap<FDMXAttributeName, EDMXFixtureSignalFormat> UDMXEntityFixturePatch::GetAttributeSignalFormats() const
{
	TMap<FDMXAttributeName, EDMXFixtureSignalFormat> Result;
	ForEachFunctionWithinSpan(Cache, [&Result](const FDMXFixtureFunction& Function)
	{
		Result.Add(Function.Attribute, Function.DataType);
	});
	return Result;
}

TArray<FDMXAttributeName> UDMXEntityFixturePatch::GetAllAttributesInActiveMode() const
{
	TArray<FDMXAttributeName> Result;
	ForEachFunctionWithinSpan(Cache, [&Result](const FDMXFixtureFunction& Function)
	{
		Result.Add(Function.Attribute);
	});
	return Result;
}

TMap<FDMXAttributeName, FDMXFixtureFunction> UDMXEntityFixturePatch::GetAttributeFunctionsMap() const
{
	TMap<FDMXAttributeName, FDMXFixtureFunction> Result;
	ForEachFunctionWithinSpan(Cache, [&Result](const FDMXFixtureFunction& Function)
	{
		Result.Add(Function.Attribute, Function);
	});
	return Result;
}

bool UDMXEntityFixturePatch::ContainsAttribute(FDMXAttributeName FunctionAttribute) const
{
	return Cache.GetFunctions().ContainsByPredicate([&FunctionAttribute](const FDMXFixtureFunction& Function)
	{
		return Function.Attribute == FunctionAttribute;
	});
}

TMap<int32, uint8> UDMXEntityFixturePatch::ConvertAttributeMapToRawMap(const TMap<FDMXAttributeName, int32>& FunctionMap) const
{
	TMap<int32, uint8> RawMap;
	for (const TPair<FDMXAttributeName, int32>& Pair : FunctionMap)
	{
		const FDMXFixtureFunction* Function = Cache.GetFunctions().FindByPredicate([&Pair](const FDMXFixtureFunction& Candidate)
		{
			return Candidate.Attribute == Pair.Key;
		});
		if (!Function || Function->GetLastChannel() > Cache.GetChannelSpan())
		{
			continue;
		}

		const int64 FirstChannel = static_cast<int64>(Function->Channel) + StartingChannel - 1;
		const uint8 NumBytes = FDMXConversions::GetSizeOfSignalFormat(Function->DataType);
		const uint32 Value = FDMXConversions::ClampValueBySignalFormat(static_cast<uint32>(FMath::Max(0, Pair.Value)), Function->DataType);

		TArray<uint8> Bytes;
		Bytes.SetNumZeroed(NumBytes);
		UDMXEntityFixtureType::FunctionValueToBytes(*Function, Value, Bytes.GetData());

		for (int32 ByteIndex = 0; ByteIndex < NumBytes; ++ByteIndex)
		{
			RawMap.Add(WrapToInt32(FirstChannel + ByteIndex), Bytes[ByteIndex]);
		}
	}
	return RawMap;
}

bool UDMXEntityFixturePatch::IsTickable() const
{
	return OnFixturePatchReceivedDMX.IsBound() || OnFixturePatchReceivedDMXNative.IsBound();
}

bool UDMXEntityFixturePatch::IsTickableInEditor() const
{
#if WITH_EDITORONLY_DATA
	return IsTickable() && (bReceiveDMXInEditor || GetDefault<UDMXProtocolSettings>()->bAllFixturePatchesReceiveDMXInEditor);
#else
	return false;
#endif
}

#undef LOCTEXT_NAMESPACE
