#include "KestDMXProject.h"
#include "KestDMXText.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <nlohmann/json.hpp>

#include "Engine/World.h"
#include "Game/DMXComponent.h"
#include "GameFramework/Actor.h"
#include "HeadlessEditor.h"
#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXLibrary.h"
#include "Misc/PackageName.h"
#include "UObject/HeadlessObjectRegistry.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"
#include "UObject/UnrealType.h"

namespace
{
	// Keys keep the order they are written in, so the files read top to bottom like the editor shows them.
	using FJson = nlohmann::ordered_json;

	const char* const LibraryFormat = "kestdmx-dmx-library";
	const char* const LevelFormat = "kestdmx-level";
	const int FormatVersion = 1;
	const char* const LibraryExtension = ".dmxlib.json";
	const char* const LevelExtension = ".level.json";
	const TCHAR* const LevelPackageName = TEXT("/Game/Maps/Untitled");
	const TCHAR* const GamePrefix = TEXT("/Game/");

	// A problem with the content of a file; the caller adds the file's name.
	struct FProjectFileError : std::runtime_error
	{
		using std::runtime_error::runtime_error;
	};

	// Names

	FJson WriteName(const FName& Name)
	{
		return Name.IsNone() ? FJson(nullptr) : FJson(ToUTF8(Name.ToString()));
	}

	FName ReadName(const FJson& Value)
	{
		return Value.is_null() ? FName() : FName(ToEngine(Value.get<std::string>()));
	}

	FString ReadString(const FJson& Object, const char* Key)
	{
		return ToEngine(Object.at(Key).get<std::string>());
	}

	FJson WriteGuid(const FGuid& Guid)
	{
		return ToUTF8(Guid.ToString(EGuidFormats::DigitsWithHyphens));
	}

	FGuid ReadGuid(const FJson& Object, const char* Key)
	{
		const std::string Text = Object.at(Key).get<std::string>();
		FGuid Guid;
		if (!FGuid::Parse(ToEngine(Text), Guid))
		{
			throw FProjectFileError("\"" + std::string(Key) + "\" is not a GUID: " + Text);
		}
		return Guid;
	}

	// Enumerations, by the names of their enumerators

	const char* const PhysicalUnitNames[] =
	{
		"None", "Percent", "Length", "Mass", "Time", "Temperature", "LuminousIntensity", "Angle", "Force", "Frequency",
		"Current", "Voltage", "Power", "Energy", "Area", "Volume", "Speed", "Acceleration", "AngularSpeed", "AngularAccc",
		"WaveLength", "ColorComponent",
	};

	const char* const DistributionNames[] =
	{
		"TopLeftToRight", "TopLeftToBottom", "TopLeftToClockwise", "TopLeftToAntiClockwise",
		"TopRightToLeft", "BottomLeftToTop", "TopRightToAntiClockwise", "BottomLeftToClockwise",
		"BottomLeftToRight", "TopRightToBottom", "BottomLeftAntiClockwise", "TopRightToClockwise",
		"BottomRightToLeft", "BottomRightToTop", "BottomRightToClockwise", "BottomRightToAntiClockwise",
	};

	template <size_t Count>
	FJson WriteEnum(const char* const (&Names)[Count], uint8 Value)
	{
		// A value without a name (none is expected) is kept as its number.
		return Value < Count ? FJson(Names[Value]) : FJson(Value);
	}

	template <size_t Count>
	uint8 ReadEnum(const char* const (&Names)[Count], const FJson& Object, const char* Key)
	{
		const FJson& Value = Object.at(Key);
		if (Value.is_number_unsigned())
		{
			return Value.get<uint8>();
		}
		const std::string Text = Value.get<std::string>();
		for (size_t Index = 0; Index < Count; ++Index)
		{
			if (Text == Names[Index])
			{
				return static_cast<uint8>(Index);
			}
		}
		throw FProjectFileError("\"" + std::string(Key) + "\" has an unknown value: " + Text);
	}

	// The signal format as its width in bits: 8, 16, 24 or 32.
	FJson WriteSignalFormat(EDMXFixtureSignalFormat Format)
	{
		return 8 * (static_cast<int>(Format) + 1);
	}

	EDMXFixtureSignalFormat ReadSignalFormat(const FJson& Object, const char* Key)
	{
		const int Bits = Object.at(Key).get<int>();
		if (Bits != 8 && Bits != 16 && Bits != 24 && Bits != 32)
		{
			throw FProjectFileError("\"" + std::string(Key) + "\" must be 8, 16, 24 or 32, not " + std::to_string(Bits));
		}
		return static_cast<EDMXFixtureSignalFormat>(Bits / 8 - 1);
	}

	// Fixture types

	FJson WriteFunction(const FDMXFixtureFunction& Function)
	{
		FJson Out;
		Out["attribute"] = WriteName(Function.Attribute.Name);
		Out["function_name"] = ToUTF8(Function.FunctionName);
		Out["description"] = ToUTF8(Function.Description);
		Out["default_value"] = Function.DefaultValue;
		Out["channel"] = Function.Channel;
		Out["signal_format"] = WriteSignalFormat(Function.DataType);
		Out["lsb"] = Function.bUseLSBMode;
		Out["physical_unit"] = WriteEnum(PhysicalUnitNames, static_cast<uint8>(Function.GetPhysicalUnit()));
		Out["physical_from"] = Function.GetPhysicalFrom();
		Out["physical_to"] = Function.GetPhysicalTo();
		Out["physical_default"] = Function.GetPhysicalDefaultValue();
		return Out;
	}

	FDMXFixtureFunction ReadFunction(const FJson& In)
	{
		FDMXFixtureFunction Function;
		Function.Attribute.Name = ReadName(In.at("attribute"));
		Function.FunctionName = ReadString(In, "function_name");
		Function.Description = ReadString(In, "description");
		Function.DefaultValue = In.at("default_value").get<int64>();
		Function.Channel = In.at("channel").get<int32>();
		Function.DataType = ReadSignalFormat(In, "signal_format");
		Function.bUseLSBMode = In.at("lsb").get<bool>();
		Function.SetPhysicalPropertiesFromSaved(static_cast<EDMXGDTFPhysicalUnit>(ReadEnum(PhysicalUnitNames, In, "physical_unit")),
			In.at("physical_from").get<double>(), In.at("physical_to").get<double>(), In.at("physical_default").get<double>());
		return Function;
	}

	FJson WriteCellAttribute(const FDMXFixtureCellAttribute& CellAttribute)
	{
		FJson Out;
		Out["attribute"] = WriteName(CellAttribute.Attribute.Name);
		Out["description"] = ToUTF8(CellAttribute.Description);
		Out["default_value"] = CellAttribute.DefaultValue;
		Out["signal_format"] = WriteSignalFormat(CellAttribute.DataType);
		Out["lsb"] = CellAttribute.bUseLSBMode;
		return Out;
	}

	FDMXFixtureCellAttribute ReadCellAttribute(const FJson& In)
	{
		FDMXFixtureCellAttribute CellAttribute;
		CellAttribute.Attribute.Name = ReadName(In.at("attribute"));
		CellAttribute.Description = ReadString(In, "description");
		CellAttribute.DefaultValue = In.at("default_value").get<int64>();
		CellAttribute.DataType = ReadSignalFormat(In, "signal_format");
		CellAttribute.bUseLSBMode = In.at("lsb").get<bool>();
		return CellAttribute;
	}

	FJson WriteMode(const FDMXFixtureMode& Mode)
	{
		FJson Out;
		Out["name"] = ToUTF8(Mode.ModeName);
		Out["auto_channel_span"] = Mode.bAutoChannelSpan;
		Out["channel_span"] = Mode.ChannelSpan;
		FJson Functions = FJson::array();
		for (const FDMXFixtureFunction& Function : Mode.Functions)
		{
			Functions.push_back(WriteFunction(Function));
		}
		Out["functions"] = std::move(Functions);
		Out["matrix_enabled"] = Mode.bFixtureMatrixEnabled;
		const FDMXFixtureMatrix& Matrix = Mode.FixtureMatrixConfig;
		FJson MatrixOut;
		MatrixOut["first_cell_channel"] = Matrix.FirstCellChannel;
		MatrixOut["x_cells"] = Matrix.XCells;
		MatrixOut["y_cells"] = Matrix.YCells;
		MatrixOut["pixel_mapping_distribution"] = WriteEnum(DistributionNames, static_cast<uint8>(Matrix.PixelMappingDistribution));
		FJson CellAttributes = FJson::array();
		for (const FDMXFixtureCellAttribute& CellAttribute : Matrix.CellAttributes)
		{
			CellAttributes.push_back(WriteCellAttribute(CellAttribute));
		}
		MatrixOut["cell_attributes"] = std::move(CellAttributes);
		Out["matrix"] = std::move(MatrixOut);
		return Out;
	}

	FDMXFixtureMode ReadMode(const FJson& In)
	{
		FDMXFixtureMode Mode;
		Mode.ModeName = ReadString(In, "name");
		Mode.bAutoChannelSpan = In.at("auto_channel_span").get<bool>();
		Mode.ChannelSpan = In.at("channel_span").get<int32>();
		for (const FJson& Function : In.at("functions"))
		{
			Mode.Functions.Add(ReadFunction(Function));
		}
		Mode.bFixtureMatrixEnabled = In.at("matrix_enabled").get<bool>();
		const FJson& MatrixIn = In.at("matrix");
		FDMXFixtureMatrix& Matrix = Mode.FixtureMatrixConfig;
		Matrix.FirstCellChannel = MatrixIn.at("first_cell_channel").get<int32>();
		Matrix.XCells = MatrixIn.at("x_cells").get<int32>();
		Matrix.YCells = MatrixIn.at("y_cells").get<int32>();
		Matrix.PixelMappingDistribution = static_cast<EDMXPixelMappingDistribution>(ReadEnum(DistributionNames, MatrixIn, "pixel_mapping_distribution"));
		Matrix.CellAttributes.Reset();
		for (const FJson& CellAttribute : MatrixIn.at("cell_attributes"))
		{
			Matrix.CellAttributes.Add(ReadCellAttribute(CellAttribute));
		}
		return Mode;
	}

	FJson WriteEntityHeader(const char* Kind, const UDMXEntity* Entity)
	{
		FJson Out;
		Out["kind"] = Kind;
		Out["name"] = ToUTF8(Entity->Name);
		Out["object"] = ToUTF8(Entity->GetName());
		Out["id"] = WriteGuid(Entity->GetID());
		return Out;
	}

	FJson WriteFixtureType(const UDMXEntityFixtureType* FixtureType)
	{
		FJson Out = WriteEntityHeader("fixture_type", FixtureType);
		Out["category"] = WriteName(FixtureType->DMXCategory.Name);
		Out["export_generated_gdtf"] = FixtureType->bExportGeneratedGDTF;
		Out["show_only_latest_gdtf_mode_revisions"] = FixtureType->bShowOnlyLatestGDTFModeRevisions;
		FJson Modes = FJson::array();
		for (const FDMXFixtureMode& Mode : FixtureType->Modes)
		{
			Modes.push_back(WriteMode(Mode));
		}
		Out["modes"] = std::move(Modes);
		return Out;
	}

	void ReadFixtureType(UDMXEntityFixtureType* FixtureType, const FJson& In)
	{
		FixtureType->DMXCategory.Name = ReadName(In.at("category"));
		FixtureType->bExportGeneratedGDTF = In.at("export_generated_gdtf").get<bool>();
		FixtureType->bShowOnlyLatestGDTFModeRevisions = In.at("show_only_latest_gdtf_mode_revisions").get<bool>();
		FixtureType->Modes.Reset();
		for (const FJson& Mode : In.at("modes"))
		{
			FixtureType->Modes.Add(ReadMode(Mode));
		}
	}

	// Fixture patches

	FJson WriteFixturePatch(const UDMXEntityFixturePatch* FixturePatch)
	{
		FJson Out = WriteEntityHeader("fixture_patch", FixturePatch);
		if (const UDMXEntityFixtureType* FixtureType = FixturePatch->GetFixtureType())
		{
			FJson TypeOut;
			TypeOut["name"] = ToUTF8(FixtureType->Name);
			TypeOut["id"] = WriteGuid(FixtureType->GetID());
			Out["fixture_type"] = std::move(TypeOut);
		}
		else
		{
			Out["fixture_type"] = nullptr;
		}
		Out["universe"] = FixturePatch->GetUniverseID();
		Out["starting_channel"] = FixturePatch->GetStartingChannel();
		Out["active_mode"] = FixturePatch->GetActiveModeIndex();
		Out["fixture_id"] = FixturePatch->GetFixtureID();
		Out["mvr_fixture_uuid"] = WriteGuid(FixturePatch->GetMVRFixtureUUID());
		FJson Tags = FJson::array();
		for (const FName& Tag : FixturePatch->CustomTags)
		{
			Tags.push_back(WriteName(Tag));
		}
		Out["tags"] = std::move(Tags);
		const FLinearColor& Color = FixturePatch->EditorColor;
		Out["editor_color"] = FJson::array({Color.R, Color.G, Color.B, Color.A});
		Out["receive_dmx_in_editor"] = FixturePatch->bReceiveDMXInEditor;
		return Out;
	}

	// The fixture type by id or, in a hand-written file without an id, by name.
	UDMXEntityFixtureType* FindSavedFixtureType(UDMXLibrary* Library, const FJson& In)
	{
		if (In.contains("id"))
		{
			return Cast<UDMXEntityFixtureType>(Library->FindEntity(ReadGuid(In, "id")));
		}
		const FString Name = ReadString(In, "name");
		for (UDMXEntityFixtureType* FixtureType : Library->GetEntitiesTypeCast<UDMXEntityFixtureType>())
		{
			if (FixtureType->Name.Equals(Name, ESearchCase::CaseSensitive))
			{
				return FixtureType;
			}
		}
		return nullptr;
	}

	void ReadFixturePatch(UDMXLibrary* Library, UDMXEntityFixturePatch* FixturePatch, const FJson& In)
	{
		UDMXEntityFixtureType* FixtureType = nullptr;
		const FJson& TypeIn = In.at("fixture_type");
		if (!TypeIn.is_null())
		{
			FixtureType = FindSavedFixtureType(Library, TypeIn);
			if (FixtureType == nullptr)
			{
				throw FProjectFileError("fixture patch \"" + ToUTF8(FixturePatch->Name) + "\" uses a fixture type that is not in the library");
			}
		}
		FixturePatch->SetUniverseID(In.at("universe").get<int32>());
		FixturePatch->SetStartingChannel(In.at("starting_channel").get<int32>());
		FixturePatch->SetFixtureTypeFromSaved(FixtureType);
		FixturePatch->SetActiveModeFromSaved(In.at("active_mode").get<int32>());
		FixturePatch->SetFixtureIDFromSaved(In.at("fixture_id").get<int32>());
		FixturePatch->SetMVRFixtureUUIDFromSaved(ReadGuid(In, "mvr_fixture_uuid"));
		FixturePatch->CustomTags.Reset();
		for (const FJson& Tag : In.at("tags"))
		{
			FixturePatch->CustomTags.Add(ReadName(Tag));
		}
		const FJson& Color = In.at("editor_color");
		if (!Color.is_array() || Color.size() != 4)
		{
			throw FProjectFileError("\"editor_color\" must be a list of four numbers (red, green, blue, alpha)");
		}
		FixturePatch->EditorColor = FLinearColor(Color[0].get<float>(), Color[1].get<float>(), Color[2].get<float>(), Color[3].get<float>());
		FixturePatch->bReceiveDMXInEditor = In.at("receive_dmx_in_editor").get<bool>();
		FixturePatch->RebuildCache();
	}

	// Libraries

	FJson WriteLibrary(const UDMXLibrary* Library)
	{
		FJson Out;
		Out["format"] = LibraryFormat;
		Out["version"] = FormatVersion;
		FJson Entities = FJson::array();
		for (const UDMXEntity* Entity : Library->GetEntities())
		{
			if (const UDMXEntityFixtureType* FixtureType = Cast<UDMXEntityFixtureType>(Entity))
			{
				Entities.push_back(WriteFixtureType(FixtureType));
			}
			else if (const UDMXEntityFixturePatch* FixturePatch = Cast<UDMXEntityFixturePatch>(Entity))
			{
				Entities.push_back(WriteFixturePatch(FixturePatch));
			}
		}
		Out["entities"] = std::move(Entities);
		return Out;
	}

	void CheckFormat(const FJson& In, const char* Format)
	{
		if (!In.is_object() || !In.contains("format") || In.at("format") != Format)
		{
			throw FProjectFileError(std::string("not a file of format \"") + Format + "\"");
		}
		if (In.at("version").get<int>() != FormatVersion)
		{
			throw FProjectFileError("unsupported version " + In.at("version").dump());
		}
	}

	UDMXLibrary* ReadLibrary(const FString& PackageName, const FJson& In)
	{
		CheckFormat(In, LibraryFormat);
		if (FindPackage(nullptr, *PackageName) != nullptr)
		{
			throw FProjectFileError("the package " + ToUTF8(PackageName) + " is already loaded");
		}
		UPackage* Package = CreatePackage(*PackageName);
		const FName AssetName(FPackageName::GetShortName(PackageName));
		UDMXLibrary* Library = NewObject<UDMXLibrary>(Package, UDMXLibrary::StaticClass(), AssetName, RF_Public | RF_Standalone | RF_Transactional);
		if (Library == nullptr)
		{
			throw FProjectFileError("the library object could not be created");
		}

		// Entities are created in file order, which is library order; patches find their fixture
		// types once every entity exists, as a patch may come before its type.
		std::vector<std::pair<UDMXEntityFixturePatch*, const FJson*>> FixturePatches;
		for (const FJson& EntityIn : In.at("entities"))
		{
			const std::string Kind = EntityIn.at("kind").get<std::string>();
			UClass* Class = nullptr;
			if (Kind == "fixture_type")
			{
				Class = UDMXEntityFixtureType::StaticClass();
			}
			else if (Kind == "fixture_patch")
			{
				Class = UDMXEntityFixturePatch::StaticClass();
			}
			else
			{
				throw FProjectFileError("unknown entity kind \"" + Kind + "\"");
			}
			const FName ObjectName(ReadString(EntityIn, "object"));
			UDMXEntity* Entity = NewObject<UDMXEntity>(Library, Class, ObjectName, RF_Transactional);
			if (Entity == nullptr)
			{
				throw FProjectFileError("two entities share the object name " + ToUTF8(ObjectName.ToString()));
			}
			Entity->Name = ReadString(EntityIn, "name");
			Entity->SetIDFromSaved(ReadGuid(EntityIn, "id"));
			if (UDMXEntityFixtureType* FixtureType = Cast<UDMXEntityFixtureType>(Entity))
			{
				ReadFixtureType(FixtureType, EntityIn);
			}
			else
			{
				FixturePatches.emplace_back(Cast<UDMXEntityFixturePatch>(Entity), &EntityIn);
			}
		}
		for (const auto& [FixturePatch, PatchIn] : FixturePatches)
		{
			ReadFixturePatch(Library, FixturePatch, *PatchIn);
		}
		return Library;
	}

	UDMXLibrary* FindLibraryInPackage(const UPackage* Package)
	{
		UDMXLibrary* Found = nullptr;
		FHeadlessObjectRegistry::Get().ForEachObject([Package, &Found](UObject* Object)
		{
			if (Found == nullptr && Object->GetOuter() == Package && !Object->IsGarbage())
			{
				Found = Cast<UDMXLibrary>(Object);
			}
		});
		return Found;
	}

	// The level

	bool GetReceiveDMXFromPatch(const UDMXComponent* Component)
	{
		const FBoolProperty* ReceiveProperty = FindFProperty<FBoolProperty>(UDMXComponent::StaticClass(), TEXT("bReceiveDMXFromPatch"));
		return ReceiveProperty != nullptr && ReceiveProperty->GetPropertyValue_InContainer(Component);
	}

	FJson WriteLevel(const UWorld* World)
	{
		FJson Out;
		Out["format"] = LevelFormat;
		Out["version"] = FormatVersion;
		FJson Actors = FJson::array();
		for (const AActor* Actor : World->GetActors())
		{
			if (Actor == nullptr || Actor->IsGarbage())
			{
				continue;
			}
			FJson ActorOut;
			ActorOut["name"] = ToUTF8(Actor->GetName());
			ActorOut["label"] = ToUTF8(Actor->GetActorLabel(false));
			FJson Components = FJson::array();
			TArray<UDMXComponent*> DMXComponents;
			Actor->GetComponents(DMXComponents);
			for (const UDMXComponent* Component : DMXComponents)
			{
				if (Component == nullptr || Component->IsGarbage())
				{
					continue;
				}
				FJson ComponentOut;
				ComponentOut["name"] = ToUTF8(Component->GetName());
				// The engine saves the reference's library and id, not the patch it caches: a
				// reference cleared with SetFixturePatch(nullptr) still answers its old patch
				// from the cache, but saves none.
				UDMXEntityFixturePatch* FixturePatch = Component->GetFixturePatch();
				const UDMXLibrary* Library = FixturePatch != nullptr ? FixturePatch->GetParentLibrary() : nullptr;
				if (Library != nullptr && Component->FixturePatchRef == FDMXEntityFixturePatchRef(FixturePatch))
				{
					FJson PatchOut;
					PatchOut["library"] = ToUTF8(Library->GetPathName());
					PatchOut["name"] = ToUTF8(FixturePatch->Name);
					PatchOut["id"] = WriteGuid(FixturePatch->GetID());
					ComponentOut["fixture_patch"] = std::move(PatchOut);
				}
				else
				{
					ComponentOut["fixture_patch"] = nullptr;
				}
				ComponentOut["receive_dmx_from_patch"] = GetReceiveDMXFromPatch(Component);
				Components.push_back(std::move(ComponentOut));
			}
			ActorOut["dmx_components"] = std::move(Components);
			Actors.push_back(std::move(ActorOut));
		}
		Out["actors"] = std::move(Actors);
		return Out;
	}

	// The patch by id or, in a hand-written file without an id, by name.
	UDMXEntityFixturePatch* FindSavedFixturePatch(const FJson& In)
	{
		const FString LibraryPath = ReadString(In, "library");
		UDMXLibrary* Library = LoadObject<UDMXLibrary>(nullptr, FStringView(*LibraryPath, static_cast<size_t>(LibraryPath.Len())));
		if (Library == nullptr)
		{
			throw FProjectFileError("no DMX Library at " + ToUTF8(LibraryPath));
		}
		UDMXEntityFixturePatch* FixturePatch = nullptr;
		if (In.contains("id"))
		{
			FixturePatch = Cast<UDMXEntityFixturePatch>(Library->FindEntity(ReadGuid(In, "id")));
		}
		else
		{
			const FString Name = ReadString(In, "name");
			for (UDMXEntityFixturePatch* Candidate : Library->GetEntitiesTypeCast<UDMXEntityFixturePatch>())
			{
				if (Candidate->Name.Equals(Name, ESearchCase::CaseSensitive))
				{
					FixturePatch = Candidate;
					break;
				}
			}
		}
		if (FixturePatch == nullptr)
		{
			throw FProjectFileError("no fixture patch " + In.dump() + " in " + ToUTF8(LibraryPath));
		}
		return FixturePatch;
	}

	void ReadLevel(UWorld* World, const FJson& In)
	{
		CheckFormat(In, LevelFormat);
		for (const FJson& ActorIn : In.at("actors"))
		{
			const FName ActorName(ReadString(ActorIn, "name"));
			if (ActorName.IsNone() || StaticFindObjectFast(nullptr, World->GetCurrentLevel(), ActorName) != nullptr)
			{
				throw FProjectFileError("the actor name \"" + ToUTF8(ActorName.ToString()) + "\" is empty or taken");
			}
			AActor* Actor = World->SpawnActor(AActor::StaticClass(), ActorName);
			if (Actor == nullptr)
			{
				throw FProjectFileError("the actor " + ToUTF8(ActorName.ToString()) + " could not be spawned");
			}
			Actor->SetActorLabel(ReadString(ActorIn, "label"), false);
			for (const FJson& ComponentIn : ActorIn.at("dmx_components"))
			{
				const FName ComponentName(ReadString(ComponentIn, "name"));
				UDMXComponent* Component = NewObject<UDMXComponent>(Actor, UDMXComponent::StaticClass(), ComponentName, RF_Transactional);
				if (Component == nullptr)
				{
					throw FProjectFileError("two components of " + ToUTF8(ActorName.ToString()) + " share the name " + ToUTF8(ComponentName.ToString()));
				}
				Actor->AddInstanceComponent(Component);
				Component->RegisterComponent();
				const FJson& PatchIn = ComponentIn.at("fixture_patch");
				Component->SetFixturePatch(PatchIn.is_null() ? nullptr : FindSavedFixturePatch(PatchIn));
				Component->SetReceiveDMXFromPatch(ComponentIn.at("receive_dmx_from_patch").get<bool>());
			}
		}
	}

	// Files

	FJson ReadJsonFile(const std::filesystem::path& File)
	{
		std::ifstream Stream(File, std::ios::binary);
		if (!Stream)
		{
			throw FProjectFileError("cannot be read");
		}
		std::ostringstream Text;
		Text << Stream.rdbuf();
		if (Stream.bad())
		{
			throw FProjectFileError("cannot be read");
		}
		return FJson::parse(Text.str());
	}

	// Runs a reader over a file, turning every problem into an error that names the file.
	template <typename FuncType>
	bool ReadProjectFile(const std::filesystem::path& File, std::string& OutError, FuncType&& Reader)
	{
		try
		{
			Reader(ReadJsonFile(File));
			return true;
		}
		catch (const nlohmann::json::exception& Error)
		{
			OutError = File.string() + ": " + Error.what();
		}
		catch (const FProjectFileError& Error)
		{
			OutError = File.string() + ": " + Error.what();
		}
		return false;
	}

	void SetAllPackagesClean()
	{
		FHeadlessObjectRegistry::Get().ForEachObject([](UObject* Object)
		{
			if (UPackage* Package = Cast<UPackage>(Object))
			{
				Package->SetDirtyFlag(false);
			}
		});
	}
}

std::string GetProjectFileForPackage(const std::string& ProjectDir, const FString& PackageName)
{
	const FString Prefix(GamePrefix);
	if (!PackageName.StartsWith(Prefix, ESearchCase::CaseSensitive) || PackageName.Len() <= Prefix.Len())
	{
		return std::string();
	}
	const bool bLevel = PackageName.Equals(FString(LevelPackageName), ESearchCase::CaseSensitive);
	const std::string Relative = ToUTF8(PackageName.Mid(Prefix.Len())) + (bLevel ? LevelExtension : LibraryExtension);
	return (std::filesystem::path(ProjectDir) / "Content" / Relative).string();
}

std::vector<FString> FindProjectLibraryPackages(const std::string& ProjectDir)
{
	std::vector<FString> Packages;
	const std::filesystem::path Content = std::filesystem::path(ProjectDir) / "Content";
	std::error_code Error;
	if (!std::filesystem::is_directory(Content, Error))
	{
		return Packages;
	}
	const std::string Extension = LibraryExtension;
	for (auto It = std::filesystem::recursive_directory_iterator(Content, Error); !Error && It != std::filesystem::recursive_directory_iterator(); It.increment(Error))
	{
		const std::string Relative = It->path().lexically_relative(Content).generic_string();
		if (It->is_regular_file() && Relative.size() > Extension.size() && Relative.compare(Relative.size() - Extension.size(), Extension.size(), Extension) == 0)
		{
			Packages.push_back(FString(GamePrefix) + ToEngine(Relative.substr(0, Relative.size() - Extension.size())));
		}
	}
	std::sort(Packages.begin(), Packages.end(), [](const FString& A, const FString& B) { return A.Compare(B, ESearchCase::CaseSensitive) < 0; });
	return Packages;
}

bool LoadKestDMXProject(const std::string& ProjectDir, FHeadlessEditor& Editor, std::string& OutError)
{
	if (!std::filesystem::is_directory(ProjectDir))
	{
		OutError = "no such project folder: " + ProjectDir;
		return false;
	}
	for (const FString& PackageName : FindProjectLibraryPackages(ProjectDir))
	{
		const std::string File = GetProjectFileForPackage(ProjectDir, PackageName);
		if (!FPackageName::IsValidLongPackageName(PackageName))
		{
			OutError = File + ": " + ToUTF8(PackageName) + " is not a valid package name";
			return false;
		}
		if (!ReadProjectFile(File, OutError, [&PackageName](const FJson& In) { ReadLibrary(PackageName, In); }))
		{
			return false;
		}
	}
	UWorld* World = Editor.GetEditorWorld();
	const std::string LevelFile = GetProjectFileForPackage(ProjectDir, World->GetPackage()->GetName());
	if (!LevelFile.empty() && std::filesystem::exists(LevelFile))
	{
		if (!ReadProjectFile(LevelFile, OutError, [World](const FJson& In) { ReadLevel(World, In); }))
		{
			return false;
		}
	}
	SetAllPackagesClean();
	return true;
}

bool SaveKestDMXProject(const std::string& ProjectDir, FHeadlessEditor& Editor, std::string& OutError, std::vector<std::string>* OutSavedFiles)
{
	struct FPendingFile
	{
		std::string Path;
		std::string Text;
		UPackage* Package = nullptr;
	};
	std::vector<FPendingFile> Pending;

	// Every file's text is made before anything is written, so a package that cannot be saved
	// leaves the project as it was.
	UWorld* World = Editor.GetEditorWorld();
	for (const FString& PackageName : Editor.GetDirtyPackageNames())
	{
		UPackage* Package = FindPackage(nullptr, *PackageName);
		if (Package == nullptr)
		{
			continue;
		}
		const bool bLevel = Package == World->GetPackage();
		const UDMXLibrary* Library = bLevel ? nullptr : FindLibraryInPackage(Package);
		if (!bLevel && Library == nullptr)
		{
			// Nothing in it that belongs in the project.
			continue;
		}
		FPendingFile File;
		File.Path = GetProjectFileForPackage(ProjectDir, PackageName);
		File.Package = Package;
		if (File.Path.empty())
		{
			OutError = "cannot save " + ToUTF8(PackageName) + ": only packages under /Game/ have a place in the project";
			return false;
		}
		try
		{
			File.Text = (bLevel ? WriteLevel(World) : WriteLibrary(Library)).dump(1, '\t') + "\n";
		}
		catch (const nlohmann::json::exception& Error)
		{
			OutError = File.Path + ": " + Error.what();
			return false;
		}
		Pending.push_back(std::move(File));
	}

	std::vector<std::string> Written;
	const auto RemoveWritten = [&Written]()
	{
		for (const std::string& Temporary : Written)
		{
			std::error_code Ignored;
			std::filesystem::remove(Temporary, Ignored);
		}
	};
	for (const FPendingFile& File : Pending)
	{
		const std::string Temporary = File.Path + ".tmp";
		std::error_code Error;
		std::filesystem::create_directories(std::filesystem::path(File.Path).parent_path(), Error);
		std::ofstream Stream(Temporary, std::ios::binary | std::ios::trunc);
		if (Stream)
		{
			Written.push_back(Temporary);
			Stream << File.Text;
			Stream.close();
		}
		if (Error || !Stream)
		{
			OutError = Temporary + ": cannot be written";
			RemoveWritten();
			return false;
		}
	}
	for (size_t Index = 0; Index < Pending.size(); ++Index)
	{
		std::error_code Error;
		std::filesystem::rename(Written[Index], Pending[Index].Path, Error);
		if (Error)
		{
			OutError = Pending[Index].Path + ": cannot be replaced: " + Error.message();
			RemoveWritten();
			return false;
		}
		Pending[Index].Package->SetDirtyFlag(false);
		if (OutSavedFiles != nullptr)
		{
			OutSavedFiles->push_back(Pending[Index].Path);
		}
	}
	return true;
}
