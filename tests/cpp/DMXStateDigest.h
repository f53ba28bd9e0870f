// A canonical dump of everything the module can change: every DMX Library in memory, with the entities
// it no longer lists (undo brings them back), and the editor level's actors and components; floats
// exactly. What a patch derives from its fixture type is a line tagged with that type, so a comparison
// can leave it out where the engine is known to refresh it later; that line and the patch's reference
// to its type are also tagged with the patch, for where the engine clears the reference outside a step.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>
#include "Engine/World.h"
#include "Game/DMXComponent.h"
#include "GameFramework/Actor.h"
#include "KestDMXText.h"
#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXLibrary.h"
#include "UObject/HeadlessObjectRegistry.h"
#include "UObject/UnrealType.h"

namespace DMXStateDigest
{
	// Tag: empty, or the fixture type whose changes the line follows. Patch: empty, or the patch whose
	// link to its fixture type the line shows.
	struct FLine
	{
		std::string Tag, Text, Patch = {};
	};
	using FDigest = std::vector<FLine>;

	using ::ToUTF8;

	// Appended rather than "\"" + text: gcc 12 at -O3 warns falsely (-Wrestrict) about a literal plus a
	// temporary string.
	inline std::string Quote(const FString& Text)
	{
		std::string Quoted = "\"";
		Quoted += ToUTF8(Text);
		Quoted += '"';
		return Quoted;
	}
	inline std::string Quote(const FName& Name) { return Quote(Name.ToString()); }
	inline std::string GuidText(const FGuid& Guid)
	{
		char Text[40];
		std::snprintf(Text, sizeof(Text), "%08X%08X%08X%08X", Guid.A, Guid.B, Guid.C, Guid.D);
		return Text;
	}

	// Names the fixture type object itself, which keeps its identity when it is removed and renamed.
	inline std::string TypeTag(const UDMXEntityFixtureType* FixtureType) { return FixtureType ? std::to_string(reinterpret_cast<uintptr_t>(FixtureType)) : ""; }
	inline std::string PatchTag(const UDMXEntityFixturePatch* Patch) { return "patch " + std::to_string(reinterpret_cast<uintptr_t>(Patch)); }

	inline std::string DescribeObject(const UObject* Object)
	{
		return Object ? ToUTF8(Object->GetPathName()) + (Object->IsGarbage() ? " (garbage)" : "") : "null";
	}

	// Live objects of class T that Keep accepts, by path.
	template <typename T, typename KeepFn>
	std::vector<T*> FindLiveObjects(KeepFn&& Keep)
	{
		std::vector<T*> Found;
		FHeadlessObjectRegistry::Get().ForEachObject([&Found, &Keep](UObject* Object)
		{
			if (T* Typed = Cast<T>(Object); Typed != nullptr && !Typed->IsGarbage() && Keep(Typed))
			{
				Found.push_back(Typed);
			}
		});
		std::sort(Found.begin(), Found.end(), [](T* A, T* B) { return ToUTF8(A->GetPathName()) < ToUTF8(B->GetPathName()); });
		return Found;
	}

	inline void DescribeMode(std::ostream& Out, const FDMXFixtureMode& Mode)
	{
		Out << " mode " << Quote(Mode.ModeName) << " auto " << Mode.bAutoChannelSpan << " span " << Mode.ChannelSpan << " matrix " << Mode.bFixtureMatrixEnabled;
		for (const FDMXFixtureFunction& Function : Mode.Functions)
		{
			Out << " [fn " << Quote(Function.Attribute.Name) << " " << Quote(Function.FunctionName) << " " << Quote(Function.Description)
				<< " " << Function.DefaultValue << " ch " << Function.Channel << " fmt " << int(Function.DataType) << " lsb " << Function.bUseLSBMode
				<< " unit " << int(Function.GetPhysicalUnit()) << " " << Function.GetPhysicalFrom() << ".." << Function.GetPhysicalTo()
				<< " def " << Function.GetPhysicalDefaultValue() << "]";
		}
		const FDMXFixtureMatrix& Matrix = Mode.FixtureMatrixConfig;
		Out << " [matrix " << Matrix.FirstCellChannel << " " << Matrix.XCells << "x" << Matrix.YCells << " dist " << int(Matrix.PixelMappingDistribution);
		for (const FDMXFixtureCellAttribute& Cell : Matrix.CellAttributes)
		{
			Out << " {" << Quote(Cell.Attribute.Name) << " " << Quote(Cell.Description) << " " << Cell.DefaultValue << " fmt " << int(Cell.DataType)
				<< " lsb " << Cell.bUseLSBMode << "}";
		}
		Out << "]";
	}

	// The modes as an undo or redo that restores their type leaves them: each mode's functions aligned
	// and its span recomputed (the editor's PostEditChange). Types are described this way, so that a
	// state compares equal with what undo or redo gives back for it.
	inline TArray<FDMXFixtureMode> RealignModes(const TArray<FDMXFixtureMode>& Modes)
	{
		// Made once, outside any library, and never registered: only its mode helpers are used.
		static UDMXEntityFixtureType* const Scratch = static_cast<UDMXEntityFixtureType*>(UDMXEntityFixtureType::StaticClass()->CreateInstance());
		Scratch->Modes = Modes;
		for (int32 ModeIndex = 0; ModeIndex < Scratch->Modes.Num(); ++ModeIndex)
		{
			Scratch->AlignFunctionChannels(ModeIndex);
			Scratch->UpdateChannelSpan(ModeIndex);
		}
		return Scratch->Modes;
	}

	// What the patch derives from its type, mode and channel: the cache and everything read from it.
	inline std::string DescribePatchDerived(const UDMXEntityFixturePatch* Patch)
	{
		std::ostringstream Out;
		FText Reason;
		const bool bValid = Patch->IsValidEntity(Reason);
		Out << "  derived mode " << Patch->GetActiveModeIndex() << " span " << Patch->GetChannelSpan() << " end " << Patch->GetEndingChannel()
			<< " valid " << bValid << " " << Quote(Reason.ToString());
		const auto PutMap = [&Out](const char* Label, const auto& Map)
		{
			Out << " " << Label;
			for (const auto& Pair : Map)
			{
				Out << " " << Quote(Pair.Key.Name) << "=" << int64(Pair.Value);
			}
		};
		const TMap<FDMXAttributeName, int32> Defaults = Patch->GetAttributeDefaultMap();
		PutMap("defaults", Defaults);
		PutMap("channels", Patch->GetAttributeChannelAssignments());
		PutMap("formats", Patch->GetAttributeSignalFormats());
		std::map<int32, int> Raw;
		for (const auto& Pair : Patch->ConvertAttributeMapToRawMap(Defaults))
		{
			Raw[Pair.Key] = Pair.Value;
		}
		Out << " raw";
		for (const auto& [Channel, Value] : Raw)
		{
			Out << " " << Channel << ":" << Value;
		}
		return Out.str();
	}

	inline void AddEntity(FDigest& Digest, const UDMXLibrary* Library, const UDMXEntity* Entity)
	{
		std::ostringstream Out;
		Out << std::hexfloat << " entity " << DescribeObject(Entity);
		if (Entity != nullptr)
		{
			Out << " class " << ToUTF8(Entity->GetClass()->GetName()) << " name " << Quote(Entity->Name) << " id " << GuidText(Entity->GetID())
				<< " library " << (Entity->GetParentLibrary() == Library ? "own" : DescribeObject(Entity->GetParentLibrary()))
				<< " transactional " << Entity->HasAnyFlags(RF_Transactional);
		}
		if (const UDMXEntityFixtureType* FixtureType = Cast<UDMXEntityFixtureType>(Entity))
		{
			Out << " category " << Quote(FixtureType->DMXCategory.Name) << " gdtf " << FixtureType->bExportGeneratedGDTF
				<< FixtureType->bShowOnlyLatestGDTFModeRevisions << " modes " << FixtureType->Modes.Num();
			for (const FDMXFixtureMode& Mode : RealignModes(FixtureType->Modes))
			{
				DescribeMode(Out, Mode);
			}
		}
		const UDMXEntityFixturePatch* Patch = Cast<UDMXEntityFixturePatch>(Entity);
		if (Patch != nullptr)
		{
			const FLinearColor& Color = Patch->EditorColor;
			Out << " universe " << Patch->GetUniverseID() << " start " << Patch->GetStartingChannel()
				<< " fixture_id " << Patch->GetFixtureID() << " mvr " << GuidText(Patch->GetMVRFixtureUUID()) << " receive " << Patch->bReceiveDMXInEditor
				<< " color " << Color.R << " " << Color.G << " " << Color.B << " " << Color.A << " tags";
			for (const FName& Tag : Patch->CustomTags)
			{
				Out << " " << Quote(Tag);
			}
		}
		Digest.push_back({std::string(), Out.str()});
		if (Patch != nullptr)
		{
			Digest.push_back({std::string(), "  type " + DescribeObject(Patch->GetFixtureType()), PatchTag(Patch)});
			Digest.push_back({TypeTag(Patch->GetFixtureType()), DescribePatchDerived(Patch), PatchTag(Patch)});
		}
	}

	// The reference as stored (library, entity class, which listed patch its id names) and what it resolves to.
	inline std::string DescribePatchReference(const FDMXEntityFixturePatchRef& Reference)
	{
		FDMXEntityFixturePatchRef Cleared;
		Cleared.DMXLibrary = Reference.DMXLibrary;
		std::string Named = Reference == Cleared ? "zero" : "unmatched";
		for (int32 Index = 0; Reference.DMXLibrary && Named == "unmatched" && Index < Reference.DMXLibrary->GetEntities().Num(); ++Index)
		{
			UDMXEntityFixturePatch* Patch = Cast<UDMXEntityFixturePatch>(Reference.DMXLibrary->GetEntities()[Index]);
			Named = Patch != nullptr && Reference == FDMXEntityFixturePatchRef(Patch) ? DescribeObject(Patch) : Named;
		}
		// Resolved afresh from library and id, as a restored reference is: a reference cache that still
		// holds a removed patch is not state that undo gives back.
		FHeadlessStateArchive Saved = FHeadlessStateArchive::ForSaving();
		const_cast<FDMXEntityFixturePatchRef&>(Reference).SerializeHeadlessState(Saved);
		FDMXEntityFixturePatchRef Fresh;
		FHeadlessStateArchive Restored = FHeadlessStateArchive::ForLoading(Saved.TakeValues());
		Fresh.SerializeHeadlessState(Restored);
		const UClass* Class = Reference.GetEntityType().Get();
		return "ref library " + DescribeObject(Reference.DMXLibrary) + " class " + (Class ? ToUTF8(Class->GetName()) : std::string("none"))
			+ " picker " + std::to_string(Reference.bDisplayLibraryPicker) + " id " + Named + " resolves " + DescribeObject(Fresh.GetFixturePatch());
	}

	inline void AddLevel(FDigest& Digest, const UWorld* World)
	{
		const FBoolProperty* Receive = FindFProperty<FBoolProperty>(UDMXComponent::StaticClass(), TEXT("bReceiveDMXFromPatch"));
		Digest.push_back({std::string(), "level " + DescribeObject(World->GetCurrentLevel()) + " actors " + std::to_string(World->GetActors().Num())});
		for (const AActor* Actor : World->GetActors())
		{
			std::ostringstream Out;
			Out << " actor " << DescribeObject(Actor) << " label " << Quote(Actor->GetActorLabel(false));
			for (const UActorComponent* Component : Actor->GetInstanceComponents())
			{
				Out << " instance " << DescribeObject(Component);
			}
			for (const UActorComponent* Component : Actor->GetComponents())
			{
				Out << "\n  component " << DescribeObject(Component);
				if (Component == nullptr || Component->IsGarbage())
				{
					continue;
				}
				Out << " class " << ToUTF8(Component->GetClass()->GetName()) << " owner " << (Component->GetOwner() == Actor)
					<< " registered " << Component->IsRegistered() << " world " << (Component->GetWorld() == Actor->GetWorld())
					<< " tick " << Component->IsComponentTickEnabled() << " creation " << int(Component->CreationMethod)
					<< " transactional " << Component->HasAnyFlags(RF_Transactional);
				if (const UDMXComponent* DMXComponent = Cast<UDMXComponent>(Component))
				{
					Out << " receive " << (Receive != nullptr && Receive->GetPropertyValue_InContainer(DMXComponent)) << " "
						<< DescribePatchReference(DMXComponent->FixturePatchRef);
				}
			}
			Digest.push_back({std::string(), Out.str()});
		}
	}

	inline FDigest TakeDigest(const UWorld* World)
	{
		FDigest Digest;
		for (UDMXLibrary* Library : FindLiveObjects<UDMXLibrary>([](UDMXLibrary*) { return true; }))
		{
			Digest.push_back({std::string(), "library " + DescribeObject(Library) + " entities " + std::to_string(Library->GetEntities().Num())});
			for (const UDMXEntity* Entity : Library->GetEntities())
			{
				AddEntity(Digest, Library, Entity);
			}
			for (UDMXEntity* Entity : FindLiveObjects<UDMXEntity>([Library](UDMXEntity* Entity)
				{ return Entity->GetOuter() == Library && !Library->GetEntities().Contains(Entity); }))
			{
				Digest.push_back({std::string(), " outside"});
				AddEntity(Digest, Library, Entity);
			}
		}
		AddLevel(Digest, World);
		return Digest;
	}

	// Equal line for line (tags name objects of this session only, so they count only for this);
	// lines tagged with one of the loose types or patches are left out on both sides.
	inline ::testing::AssertionResult DigestsMatch(const FDigest& Expected, const FDigest& Actual, const std::set<std::string>& Loose = {})
	{
		const auto IsLoose = [&Loose](const FLine& Line)
		{
			return (!Line.Tag.empty() && Loose.count(Line.Tag) != 0) || (!Line.Patch.empty() && Loose.count(Line.Patch) != 0);
		};
		size_t Index = 0;
		while (Index < std::min(Expected.size(), Actual.size()) && ((IsLoose(Expected[Index]) && IsLoose(Actual[Index])) || Expected[Index].Text == Actual[Index].Text))
		{
			++Index;
		}
		if (Index == Expected.size() && Index == Actual.size())
		{
			return ::testing::AssertionSuccess();
		}
		const auto Show = [](const FDigest& Digest, size_t At) { return At < Digest.size() ? Digest[At].Text : std::string("(none)"); };
		return ::testing::AssertionFailure() << "states differ at line " << Index << (Index > 0 ? "\n  after:    " + Expected[Index - 1].Text : std::string())
			<< "\n  expected: " << Show(Expected, Index) << "\n  actual:   " << Show(Actual, Index);
	}
}
