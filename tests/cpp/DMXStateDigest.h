// A canonical dump of everything the module can change: every DMX Library in memory and the
// editor level's actors with their components. Used to check that undo and redo restore a state
// exactly. Each line describes one thing; the lines that a fixture type's change can leave stale
// on its patches (active mode and what the patch caches) carry that type's id as a tag, so a
// comparison can leave them out where the engine is known to refresh them later.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <set>
#include <sstream>
#include <string>
#include <vector>
#include "Engine/World.h"
#include "Game/DMXComponent.h"
#include "GameFramework/Actor.h"
#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXLibrary.h"
#include "UObject/HeadlessObjectRegistry.h"
#include "UObject/UnrealType.h"

namespace DMXStateDigest
{
	struct FLine
	{
		// Empty, or the id of the fixture type whose changes this line follows.
		std::string Tag;
		std::string Text;
	};
	using FDigest = std::vector<FLine>;

	// ASCII goes straight through (most of a digest is ASCII); anything else through the engine.
	inline std::string ToUTF8(const FString& Text)
	{
		std::string Out;
		Out.reserve(static_cast<size_t>(Text.Len()));
		const TCHAR* Chars = *Text;
		for (int32 Index = 0; Index < Text.Len(); ++Index)
		{
			if (Chars[Index] >= 0x80)
			{
				FTCHARToUTF8 Converted(Chars, Text.Len());
				return Converted.Get() ? std::string(Converted.Get(), static_cast<size_t>(Converted.Length())) : std::string();
			}
			Out.push_back(static_cast<char>(Chars[Index]));
		}
		return Out;
	}

	inline FString ToEngine(const std::string& Text)
	{
		FUTF8ToTCHAR Converted(Text.c_str(), static_cast<int32>(Text.size()));
		return FString(Converted.Length(), Converted.Get());
	}

	inline std::string Quote(const FString& Text)
	{
		return "\"" + ToUTF8(Text) + "\"";
	}

	inline std::string DescribeObject(const UObject* Object)
	{
		if (Object == nullptr)
		{
			return "null";
		}
		return ToUTF8(Object->GetPathName()) + (Object->IsGarbage() ? " (garbage)" : "");
	}

	inline std::string GuidText(const FGuid& Guid)
	{
		char Text[40];
		std::snprintf(Text, sizeof(Text), "%08X%08X%08X%08X", Guid.A, Guid.B, Guid.C, Guid.D);
		return Text;
	}

	inline void DescribeMode(std::ostringstream& Out, const FDMXFixtureMode& Mode)
	{
		Out << " mode " << Quote(Mode.ModeName) << " auto " << Mode.bAutoChannelSpan << " span " << Mode.ChannelSpan << " matrix " << Mode.bFixtureMatrixEnabled;
		for (const FDMXFixtureFunction& Function : Mode.Functions)
		{
			Out << " [fn " << Quote(Function.Attribute.Name.ToString()) << " " << Quote(Function.FunctionName) << " " << Quote(Function.Description)
				<< " " << Function.DefaultValue << " ch " << Function.Channel << " fmt " << int(Function.DataType) << " lsb " << Function.bUseLSBMode
				<< " unit " << int(Function.GetPhysicalUnit()) << " " << Function.GetPhysicalFrom() << ".." << Function.GetPhysicalTo()
				<< " def " << Function.GetPhysicalDefaultValue() << "]";
		}
		const FDMXFixtureMatrix& Matrix = Mode.FixtureMatrixConfig;
		Out << " [matrix " << Matrix.FirstCellChannel << " " << Matrix.XCells << "x" << Matrix.YCells << " dist " << int(Matrix.PixelMappingDistribution);
		for (const FDMXFixtureCellAttribute& Cell : Matrix.CellAttributes)
		{
			Out << " {" << Quote(Cell.Attribute.Name.ToString()) << " " << Quote(Cell.Description) << " " << Cell.DefaultValue << " fmt "
				<< int(Cell.DataType) << " lsb " << Cell.bUseLSBMode << "}";
		}
		Out << "]";
	}

	// What the patch derives from its type, mode and channel: the cache and everything read from it.
	inline std::string DescribePatchDerived(const UDMXEntityFixturePatch* Patch)
	{
		std::ostringstream Out;
		Out << std::hexfloat;
		FText Reason;
		const bool bValid = Patch->IsValidEntity(Reason);
		Out << "  derived mode " << Patch->GetActiveModeIndex() << " span " << Patch->GetChannelSpan() << " end " << Patch->GetEndingChannel()
			<< " valid " << bValid << " " << Quote(Reason.ToString()) << " defaults";
		const TMap<FDMXAttributeName, int32> Defaults = Patch->GetAttributeDefaultMap();
		for (const auto& Pair : Defaults)
		{
			Out << " " << Quote(Pair.Key.Name.ToString()) << "=" << Pair.Value;
		}
		Out << " channels";
		for (const auto& Pair : Patch->GetAttributeChannelAssignments())
		{
			Out << " " << Quote(Pair.Key.Name.ToString()) << "=" << Pair.Value;
		}
		Out << " formats";
		for (const auto& Pair : Patch->GetAttributeSignalFormats())
		{
			Out << " " << Quote(Pair.Key.Name.ToString()) << "=" << int(Pair.Value);
		}
		Out << " raw";
		TMap<int32, uint8> Raw = Patch->ConvertAttributeMapToRawMap(Defaults);
		std::vector<std::pair<int32, int>> Sorted;
		for (const auto& Pair : Raw)
		{
			Sorted.emplace_back(Pair.Key, int(Pair.Value));
		}
		std::sort(Sorted.begin(), Sorted.end());
		for (const auto& [Channel, Value] : Sorted)
		{
			Out << " " << Channel << ":" << Value;
		}
		return Out.str();
	}

	inline void AddEntity(FDigest& Digest, const UDMXLibrary* Library, const UDMXEntity* Entity)
	{
		std::ostringstream Out;
		Out << std::hexfloat;
		Out << " entity " << DescribeObject(Entity);
		if (Entity == nullptr)
		{
			Digest.push_back({std::string(), Out.str()});
			return;
		}
		Out << " class " << ToUTF8(Entity->GetClass()->GetName()) << " name " << Quote(Entity->Name) << " id " << GuidText(Entity->GetID())
			<< " library " << (Entity->GetParentLibrary() == Library ? "own" : DescribeObject(Entity->GetParentLibrary()))
			<< " transactional " << Entity->HasAnyFlags(RF_Transactional);
		if (const UDMXEntityFixtureType* FixtureType = Cast<UDMXEntityFixtureType>(Entity))
		{
			Out << " category " << Quote(FixtureType->DMXCategory.Name.ToString()) << " gdtf " << FixtureType->bExportGeneratedGDTF
				<< FixtureType->bShowOnlyLatestGDTFModeRevisions << " modes " << FixtureType->Modes.Num();
			for (const FDMXFixtureMode& Mode : FixtureType->Modes)
			{
				DescribeMode(Out, Mode);
			}
			Digest.push_back({std::string(), Out.str()});
		}
		else if (const UDMXEntityFixturePatch* Patch = Cast<UDMXEntityFixturePatch>(Entity))
		{
			const UDMXEntityFixtureType* FixtureType = Patch->GetFixtureType();
			Out << " type " << DescribeObject(FixtureType) << " universe " << Patch->GetUniverseID() << " start " << Patch->GetStartingChannel()
				<< " fixture_id " << Patch->GetFixtureID() << " mvr " << GuidText(Patch->GetMVRFixtureUUID()) << " receive " << Patch->bReceiveDMXInEditor
				<< " color " << Patch->EditorColor.R << " " << Patch->EditorColor.G << " " << Patch->EditorColor.B << " " << Patch->EditorColor.A << " tags";
			for (const FName& Tag : Patch->CustomTags)
			{
				Out << " " << Quote(Tag.ToString());
			}
			Digest.push_back({std::string(), Out.str()});
			Digest.push_back({FixtureType ? GuidText(FixtureType->GetID()) : std::string(), DescribePatchDerived(Patch)});
		}
		else
		{
			Digest.push_back({std::string(), Out.str()});
		}
	}

	inline void AddLibrary(FDigest& Digest, UDMXLibrary* Library)
	{
		Digest.push_back({std::string(), "library " + DescribeObject(Library) + " entities " + std::to_string(Library->GetEntities().Num())});
		for (const UDMXEntity* Entity : Library->GetEntities())
		{
			AddEntity(Digest, Library, Entity);
		}
		// Entities the library no longer lists (removed ones stay alive, renamed) are part of the
		// state too: an undo brings them back.
		std::vector<const UDMXEntity*> Outside;
		FHeadlessObjectRegistry::Get().ForEachObject([Library, &Outside](UObject* Object)
		{
			const UDMXEntity* Entity = Cast<UDMXEntity>(Object);
			if (Entity != nullptr && !Entity->IsGarbage() && Entity->GetOuter() == Library && !Library->GetEntities().Contains(const_cast<UDMXEntity*>(Entity)))
			{
				Outside.push_back(Entity);
			}
		});
		std::sort(Outside.begin(), Outside.end(), [](const UDMXEntity* A, const UDMXEntity* B) { return ToUTF8(A->GetName()) < ToUTF8(B->GetName()); });
		for (const UDMXEntity* Entity : Outside)
		{
			Digest.push_back({std::string(), " outside"});
			AddEntity(Digest, Library, Entity);
		}
	}

	// The reference as stored: library, entity class and which entity its id names.
	inline std::string DescribePatchReference(const FDMXEntityFixturePatchRef& Reference)
	{
		std::ostringstream Out;
		Out << "ref library " << DescribeObject(Reference.DMXLibrary) << " class "
			<< (Reference.GetEntityType().Get() ? ToUTF8(Reference.GetEntityType().Get()->GetName()) : std::string("none"))
			<< " picker " << Reference.bDisplayLibraryPicker << " id ";
		FDMXEntityFixturePatchRef Cleared;
		Cleared.DMXLibrary = Reference.DMXLibrary;
		if (Reference == Cleared)
		{
			Out << "zero";
		}
		else
		{
			std::string Named = "unmatched";
			if (UDMXLibrary* Library = Reference.DMXLibrary)
			{
				for (UDMXEntity* Entity : Library->GetEntities())
				{
					UDMXEntityFixturePatch* Patch = Cast<UDMXEntityFixturePatch>(Entity);
					if (Patch != nullptr && Reference == FDMXEntityFixturePatchRef(Patch))
					{
						Named = DescribeObject(Patch);
						break;
					}
				}
			}
			Out << Named;
		}
		Out << " resolves " << DescribeObject(Reference.GetFixturePatch());
		return Out.str();
	}

	inline void AddComponent(FDigest& Digest, const AActor* Actor, const UActorComponent* Component)
	{
		std::ostringstream Out;
		Out << "  component " << DescribeObject(Component);
		if (Component != nullptr && !Component->IsGarbage())
		{
			Out << " class " << ToUTF8(Component->GetClass()->GetName()) << " owner " << (Component->GetOwner() == Actor)
				<< " registered " << Component->IsRegistered() << " world " << (Component->GetWorld() == Actor->GetWorld())
				<< " tick " << Component->IsComponentTickEnabled() << " creation " << int(Component->CreationMethod)
				<< " transactional " << Component->HasAnyFlags(RF_Transactional);
			if (const UDMXComponent* DMXComponent = Cast<UDMXComponent>(Component))
			{
				const FBoolProperty* Receive = FindFProperty<FBoolProperty>(UDMXComponent::StaticClass(), TEXT("bReceiveDMXFromPatch"));
				Out << " receive " << (Receive != nullptr && Receive->GetPropertyValue_InContainer(DMXComponent)) << " "
					<< DescribePatchReference(DMXComponent->FixturePatchRef);
			}
		}
		Digest.push_back({std::string(), Out.str()});
	}

	inline void AddLevel(FDigest& Digest, const UWorld* World)
	{
		Digest.push_back({std::string(), "level " + DescribeObject(World->GetCurrentLevel()) + " actors " + std::to_string(World->GetActors().Num())});
		for (const AActor* Actor : World->GetActors())
		{
			std::ostringstream Out;
			Out << " actor " << DescribeObject(Actor);
			if (Actor != nullptr)
			{
				Out << " label " << Quote(Actor->GetActorLabel(false)) << " instance";
				for (const UActorComponent* Component : Actor->GetInstanceComponents())
				{
					Out << " " << DescribeObject(Component);
				}
			}
			Digest.push_back({std::string(), Out.str()});
			if (Actor != nullptr)
			{
				for (const UActorComponent* Component : Actor->GetComponents())
				{
					AddComponent(Digest, Actor, Component);
				}
			}
		}
	}

	// Every DMX Library alive (by path) and the level.
	inline FDigest TakeDigest(const UWorld* World)
	{
		std::vector<UDMXLibrary*> Libraries;
		FHeadlessObjectRegistry::Get().ForEachObject([&Libraries](UObject* Object)
		{
			if (UDMXLibrary* Library = Cast<UDMXLibrary>(Object); Library != nullptr && !Library->IsGarbage())
			{
				Libraries.push_back(Library);
			}
		});
		std::sort(Libraries.begin(), Libraries.end(), [](UDMXLibrary* A, UDMXLibrary* B) { return ToUTF8(A->GetPathName()) < ToUTF8(B->GetPathName()); });
		FDigest Digest;
		for (UDMXLibrary* Library : Libraries)
		{
			AddLibrary(Digest, Library);
		}
		AddLevel(Digest, World);
		return Digest;
	}

	inline std::string ToText(const FDigest& Digest)
	{
		std::string Text;
		for (const FLine& Line : Digest)
		{
			Text += (Line.Tag.empty() ? std::string() : "<" + Line.Tag + "> ") + Line.Text + "\n";
		}
		return Text;
	}

	// Equal line for line; lines tagged with one of the loose types are left out on both sides.
	inline ::testing::AssertionResult DigestsMatch(const FDigest& Expected, const FDigest& Actual, const std::set<std::string>& LooseTypes = {})
	{
		const auto IsLoose = [&LooseTypes](const FLine& Line) { return !Line.Tag.empty() && LooseTypes.count(Line.Tag) != 0; };
		const auto LinesMatch = [&IsLoose](const FLine& A, const FLine& B)
		{
			return (IsLoose(A) && IsLoose(B)) || (A.Tag == B.Tag && A.Text == B.Text);
		};
		if (Expected.size() == Actual.size())
		{
			bool bSame = true;
			for (size_t Index = 0; Index < Expected.size() && bSame; ++Index)
			{
				bSame = LinesMatch(Expected[Index], Actual[Index]);
			}
			if (bSame)
			{
				return ::testing::AssertionSuccess();
			}
		}
		// Name the lines that differ, with the entity or actor line above each for context.
		::testing::AssertionResult Failure = ::testing::AssertionFailure();
		Failure << "states differ (" << Expected.size() << " lines expected, " << Actual.size() << " found)";
		const size_t Common = std::min(Expected.size(), Actual.size());
		int Shown = 0;
		for (size_t Index = 0; Index < Common && Shown < 6; ++Index)
		{
			if (!LinesMatch(Expected[Index], Actual[Index]))
			{
				Failure << "\n@" << Index << (Index > 0 ? "\n  above:    " + Expected[Index - 1].Text : std::string())
					<< "\n  expected: <" << Expected[Index].Tag << "> " << Expected[Index].Text << "\n  actual:   <" << Actual[Index].Tag << "> " << Actual[Index].Text;
				++Shown;
			}
		}
		for (size_t Index = Common; Index < std::max(Expected.size(), Actual.size()) && Shown < 8; ++Index, ++Shown)
		{
			Failure << "\n@" << Index << (Index < Expected.size() ? " only expected: " + Expected[Index].Text : " only found: " + Actual[Index].Text);
		}
		return Failure;
	}
}
