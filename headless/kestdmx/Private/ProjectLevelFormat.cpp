// The level file: "format": "kestdmx-level", "version": 1 and the editor level's "actors" in level
// order, each with its DMX components and the patch each one references.
#include "ProjectFileFormats.h"
#include "KestDMXText.h"
#include "ProjectJson.h"

#include <unordered_map>

#include "Engine/World.h"
#include "Game/DMXComponent.h"
#include "GameFramework/Actor.h"
#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXLibrary.h"
#include "UObject/UObjectGlobals.h"
#include "UObject/UnrealType.h"

namespace
{
	const char* const LevelFormat = "kestdmx-level";
	const int64 LevelVersion = 1;

	bool GetReceiveDMXFromPatch(const UDMXComponent* Component)
	{
		const FBoolProperty* ReceiveProperty = FindFProperty<FBoolProperty>(UDMXComponent::StaticClass(), TEXT("bReceiveDMXFromPatch"));
		return ReceiveProperty != nullptr && ReceiveProperty->GetPropertyValue_InContainer(Component);
	}

	FProjectJson WriteComponent(const UDMXComponent* Component)
	{
		FProjectJson Out;
		Out["name"] = ToUTF8(Component->GetName());
		// The engine saves the reference's library and id, not the patch it caches: a reference
		// cleared with SetFixturePatch(nullptr) still answers its old patch from the cache, but saves
		// none.
		UDMXEntityFixturePatch* FixturePatch = Component->GetFixturePatch();
		const UDMXLibrary* Library = FixturePatch != nullptr ? FixturePatch->GetParentLibrary() : nullptr;
		if (Library != nullptr && Component->FixturePatchRef == FDMXEntityFixturePatchRef(FixturePatch))
		{
			FProjectJson PatchOut;
			PatchOut["library"] = ToUTF8(Library->GetPathName());
			PatchOut["name"] = ToUTF8(FixturePatch->Name);
			PatchOut["id"] = WriteGuid(FixturePatch->GetID());
			Out["fixture_patch"] = std::move(PatchOut);
		}
		else
		{
			Out["fixture_patch"] = nullptr;
		}
		Out["receive_dmx_from_patch"] = GetReceiveDMXFromPatch(Component);
		return Out;
	}

	// The libraries components use, each looked up once and its patches indexed, so reading a level
	// stays linear in its size.
	struct FPatchIndex
	{
		UDMXLibrary* Library = nullptr;
		std::unordered_map<std::string, UDMXEntityFixturePatch*> ById;
		std::unordered_map<std::string, UDMXEntityFixturePatch*> ByName;
	};
	using FPatchIndexes = std::unordered_map<std::string, FPatchIndex>;

	const FPatchIndex& FindPatchIndex(FPatchIndexes& Indexes, const FString& LibraryPath)
	{
		const std::string Key = ToUTF8(LibraryPath);
		const auto Found = Indexes.find(Key);
		if (Found != Indexes.end())
		{
			return Found->second;
		}
		FPatchIndex& Index = Indexes[Key];
		Index.Library = LoadObject<UDMXLibrary>(nullptr, FStringView(*LibraryPath, static_cast<size_t>(LibraryPath.Len())), {}, LOAD_NoWarn);
		if (Index.Library != nullptr)
		{
			for (UDMXEntityFixturePatch* FixturePatch : Index.Library->GetEntitiesTypeCast<UDMXEntityFixturePatch>())
			{
				Index.ById.emplace(ToUTF8(FixturePatch->GetID().ToString()), FixturePatch);
				Index.ByName.emplace(ToUTF8(FixturePatch->Name), FixturePatch);
			}
		}
		return Index;
	}

	// The patch by id or, in a hand-written file without an id, by name (the first of that name in
	// library order). A reference the engine cannot resolve is no patch: null, with a warning.
	UDMXEntityFixturePatch* FindSavedFixturePatch(FPatchIndexes& Indexes, const FProjectJson& In, const FProjectJsonPath& Where,
		std::vector<std::string>& OutWarnings)
	{
		const FString LibraryPath = ReadString(In, Where, "library");
		const FPatchIndex& Index = FindPatchIndex(Indexes, LibraryPath);
		const std::string Missing = "; the component is loaded without a fixture patch";
		if (Index.Library == nullptr)
		{
			OutWarnings.push_back(DescribeAt(Where.At("library"), "no DMX Library at " + ToUTF8(LibraryPath) + Missing));
			return nullptr;
		}
		if (In.contains("id"))
		{
			const FGuid Id = ReadGuid(In, Where, "id");
			const auto Found = Index.ById.find(ToUTF8(Id.ToString()));
			if (Found == Index.ById.end())
			{
				OutWarnings.push_back(DescribeAt(Where.At("id"), ToUTF8(LibraryPath) + " has no fixture patch with id "
					+ ToUTF8(Id.ToString(EGuidFormats::DigitsWithHyphens)) + Missing));
				return nullptr;
			}
			return Found->second;
		}
		const std::string Name = ToUTF8(ReadString(In, Where, "name"));
		const auto Found = Index.ByName.find(Name);
		if (Found == Index.ByName.end())
		{
			OutWarnings.push_back(DescribeAt(Where.At("name"), ToUTF8(LibraryPath) + " has no fixture patch named \"" + Name + "\"" + Missing));
			return nullptr;
		}
		return Found->second;
	}

	void ReadComponent(AActor* Actor, FPatchIndexes& Indexes, const FProjectJson& In, const FProjectJsonPath& Where, std::vector<std::string>& OutWarnings)
	{
		const FName ComponentName(ReadString(In, Where, "name"));
		if (ComponentName.IsNone())
		{
			throw FProjectFileError(Where.At("name"), "must name the component (not empty, not None)");
		}
		const FProjectJson& PatchIn = ReadField(In, Where, "fixture_patch");
		const FProjectJsonPath PatchAt = Where.At("fixture_patch");
		UDMXEntityFixturePatch* FixturePatch = PatchIn.is_null() ? nullptr : FindSavedFixturePatch(Indexes, CheckObject(PatchIn, PatchAt), PatchAt, OutWarnings);
		const bool bReceive = ReadBool(In, Where, "receive_dmx_from_patch");

		UDMXComponent* Component = NewObject<UDMXComponent>(Actor, UDMXComponent::StaticClass(), ComponentName, RF_Transactional);
		if (Component == nullptr)
		{
			throw FProjectFileError(Where.At("name"), "another component of the actor has the name \"" + ToUTF8(ComponentName.ToString())
				+ "\" (names ignore letter case)");
		}
		// As the editor makes them: instance components, registered.
		Actor->AddInstanceComponent(Component);
		Component->RegisterComponent();
		Component->SetFixturePatch(FixturePatch);
		Component->SetReceiveDMXFromPatch(bReceive);
	}

	void ReadActor(UWorld* World, FPatchIndexes& Indexes, const FProjectJson& In, const FProjectJsonPath& Where, std::vector<std::string>& OutWarnings)
	{
		const FName ActorName(ReadString(In, Where, "name"));
		if (ActorName.IsNone())
		{
			throw FProjectFileError(Where.At("name"), "must name the actor (not empty, not None)");
		}
		const FString Label = ReadString(In, Where, "label");
		const FProjectJson& ComponentsIn = ReadList(In, Where, "dmx_components");
		AActor* Actor = World->SpawnActor(AActor::StaticClass(), ActorName);
		if (Actor == nullptr)
		{
			// The engine spawns no second object of a name in one outer.
			throw FProjectFileError(Where.At("name"), "another actor of the level has the name \"" + ToUTF8(ActorName.ToString())
				+ "\" (names ignore letter case)");
		}
		Actor->SetActorLabel(Label, false);
		const FProjectJsonPath ComponentsAt = Where.At("dmx_components");
		for (size_t Index = 0; Index < ComponentsIn.size(); ++Index)
		{
			const FProjectJsonPath ComponentAt = ComponentsAt.At(Index);
			ReadComponent(Actor, Indexes, CheckObject(ComponentsIn[Index], ComponentAt), ComponentAt, OutWarnings);
		}
	}
}

std::string WriteProjectLevelFile(const UWorld* World)
{
	FProjectJson Out;
	Out["format"] = LevelFormat;
	Out["version"] = LevelVersion;
	FProjectJson Actors = FProjectJson::array();
	for (const AActor* Actor : World->GetActors())
	{
		if (Actor == nullptr || Actor->IsGarbage())
		{
			continue;
		}
		FProjectJson ActorOut;
		ActorOut["name"] = ToUTF8(Actor->GetName());
		ActorOut["label"] = ToUTF8(Actor->GetActorLabel(false));
		FProjectJson Components = FProjectJson::array();
		TArray<UDMXComponent*> DMXComponents;
		Actor->GetComponents(DMXComponents);
		for (const UDMXComponent* Component : DMXComponents)
		{
			if (Component != nullptr && !Component->IsGarbage())
			{
				Components.push_back(WriteComponent(Component));
			}
		}
		ActorOut["dmx_components"] = std::move(Components);
		Actors.push_back(std::move(ActorOut));
	}
	Out["actors"] = std::move(Actors);
	return DumpProjectJson(Out);
}

bool ReadProjectLevelFile(UWorld* World, const std::string& Text, std::vector<std::string>& OutWarnings, std::string& OutError)
{
	try
	{
		const FProjectJson In = ParseProjectJson(Text);
		CheckProjectFileFormat(In, LevelFormat, LevelVersion);
		const FProjectJsonPath Root;
		const FProjectJson& ActorsIn = ReadList(In, Root, "actors");
		const FProjectJsonPath ActorsAt = Root.At("actors");
		FPatchIndexes Indexes;
		for (size_t Index = 0; Index < ActorsIn.size(); ++Index)
		{
			const FProjectJsonPath ActorAt = ActorsAt.At(Index);
			ReadActor(World, Indexes, CheckObject(ActorsIn[Index], ActorAt), ActorAt, OutWarnings);
		}
		return true;
	}
	catch (const FProjectFileError& Error)
	{
		OutError = Error.what();
	}
	catch (const nlohmann::json::exception& Error)
	{
		OutError = Error.what();
	}
	return false;
}
