// The library file: "format": "kestdmx-dmx-library", "version": 1 and "entities" in library order,
// fixture types and patches with every field the engine keeps.
#include "ProjectFileFormats.h"
#include "KestDMXText.h"
#include "ProjectJson.h"

#include <unordered_map>
#include <utility>

#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXLibrary.h"
#include "Misc/PackageName.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

namespace
{
	const char* const LibraryFormat = "kestdmx-dmx-library";
	const int64 LibraryVersion = 1;

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

	struct FGuidHash
	{
		size_t operator()(const FGuid& Guid) const
		{
			return std::hash<uint64>()(((uint64(Guid.A) << 32) | Guid.B) * 0x9E3779B97F4A7C15ull ^ ((uint64(Guid.C) << 32) | Guid.D));
		}
	};

	// Writing

	template <size_t Count>
	FProjectJson WriteEnumName(const char* const (&Names)[Count], uint8 Value, const char* What)
	{
		if (Value >= Count)
		{
			// A value no load would take back: the save fails instead of writing it.
			throw FProjectFileError(std::string(What) + " " + std::to_string(Value) + " has no name");
		}
		return Names[Value];
	}

	// The signal format as its width in bits: 8, 16, 24 or 32.
	FProjectJson WriteSignalFormat(EDMXFixtureSignalFormat Format)
	{
		if (static_cast<uint8>(Format) > static_cast<uint8>(EDMXFixtureSignalFormat::E32Bit))
		{
			throw FProjectFileError("signal format " + std::to_string(static_cast<int>(Format)) + " has no width");
		}
		return 8 * (static_cast<int>(Format) + 1);
	}

	FProjectJson WriteFunction(const FDMXFixtureFunction& Function)
	{
		FProjectJson Out;
		Out["attribute"] = WriteName(Function.Attribute.Name);
		Out["function_name"] = ToUTF8(Function.FunctionName);
		Out["description"] = ToUTF8(Function.Description);
		Out["default_value"] = Function.DefaultValue;
		Out["channel"] = Function.Channel;
		Out["signal_format"] = WriteSignalFormat(Function.DataType);
		Out["lsb"] = Function.bUseLSBMode;
		Out["physical_unit"] = WriteEnumName(PhysicalUnitNames, static_cast<uint8>(Function.GetPhysicalUnit()), "physical unit");
		Out["physical_from"] = WriteDouble(Function.GetPhysicalFrom());
		Out["physical_to"] = WriteDouble(Function.GetPhysicalTo());
		Out["physical_default"] = WriteDouble(Function.GetPhysicalDefaultValue());
		return Out;
	}

	FProjectJson WriteCellAttribute(const FDMXFixtureCellAttribute& CellAttribute)
	{
		FProjectJson Out;
		Out["attribute"] = WriteName(CellAttribute.Attribute.Name);
		Out["description"] = ToUTF8(CellAttribute.Description);
		Out["default_value"] = CellAttribute.DefaultValue;
		Out["signal_format"] = WriteSignalFormat(CellAttribute.DataType);
		Out["lsb"] = CellAttribute.bUseLSBMode;
		return Out;
	}

	FProjectJson WriteMode(const FDMXFixtureMode& Mode)
	{
		FProjectJson Out;
		Out["name"] = ToUTF8(Mode.ModeName);
		Out["auto_channel_span"] = Mode.bAutoChannelSpan;
		Out["channel_span"] = Mode.ChannelSpan;
		FProjectJson Functions = FProjectJson::array();
		for (const FDMXFixtureFunction& Function : Mode.Functions)
		{
			Functions.push_back(WriteFunction(Function));
		}
		Out["functions"] = std::move(Functions);
		Out["matrix_enabled"] = Mode.bFixtureMatrixEnabled;
		const FDMXFixtureMatrix& Matrix = Mode.FixtureMatrixConfig;
		FProjectJson MatrixOut;
		MatrixOut["first_cell_channel"] = Matrix.FirstCellChannel;
		MatrixOut["x_cells"] = Matrix.XCells;
		MatrixOut["y_cells"] = Matrix.YCells;
		MatrixOut["pixel_mapping_distribution"] = WriteEnumName(DistributionNames, static_cast<uint8>(Matrix.PixelMappingDistribution), "pixel mapping distribution");
		FProjectJson CellAttributes = FProjectJson::array();
		for (const FDMXFixtureCellAttribute& CellAttribute : Matrix.CellAttributes)
		{
			CellAttributes.push_back(WriteCellAttribute(CellAttribute));
		}
		MatrixOut["cell_attributes"] = std::move(CellAttributes);
		Out["matrix"] = std::move(MatrixOut);
		return Out;
	}

	FProjectJson WriteEntityHeader(const char* Kind, const UDMXEntity* Entity)
	{
		FProjectJson Out;
		Out["kind"] = Kind;
		Out["name"] = ToUTF8(Entity->Name);
		Out["object"] = ToUTF8(Entity->GetName());
		Out["id"] = WriteGuid(Entity->GetID());
		return Out;
	}

	FProjectJson WriteFixtureType(const UDMXEntityFixtureType* FixtureType)
	{
		FProjectJson Out = WriteEntityHeader("fixture_type", FixtureType);
		Out["category"] = WriteName(FixtureType->DMXCategory.Name);
		Out["export_generated_gdtf"] = FixtureType->bExportGeneratedGDTF;
		Out["show_only_latest_gdtf_mode_revisions"] = FixtureType->bShowOnlyLatestGDTFModeRevisions;
		FProjectJson Modes = FProjectJson::array();
		for (const FDMXFixtureMode& Mode : FixtureType->Modes)
		{
			Modes.push_back(WriteMode(Mode));
		}
		Out["modes"] = std::move(Modes);
		return Out;
	}

	FProjectJson WriteFixturePatch(const UDMXEntityFixturePatch* FixturePatch)
	{
		FProjectJson Out = WriteEntityHeader("fixture_patch", FixturePatch);
		if (const UDMXEntityFixtureType* FixtureType = FixturePatch->GetFixtureType())
		{
			FProjectJson TypeOut;
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
		FProjectJson Tags = FProjectJson::array();
		for (const FName& Tag : FixturePatch->CustomTags)
		{
			Tags.push_back(WriteName(Tag));
		}
		Out["tags"] = std::move(Tags);
		const FLinearColor& Color = FixturePatch->EditorColor;
		Out["editor_color"] = FProjectJson::array({WriteDouble(Color.R), WriteDouble(Color.G), WriteDouble(Color.B), WriteDouble(Color.A)});
		Out["receive_dmx_in_editor"] = FixturePatch->bReceiveDMXInEditor;
		return Out;
	}

	// Reading

	EDMXFixtureSignalFormat ReadSignalFormat(const FProjectJson& In, const FProjectJsonPath& Where, const char* Key)
	{
		const int64 Bits = ReadInteger(In, Where, Key, 8, 32);
		if (Bits % 8 != 0)
		{
			throw FProjectFileError(Where.At(Key), "must be 8, 16, 24 or 32, not " + std::to_string(Bits));
		}
		return static_cast<EDMXFixtureSignalFormat>(Bits / 8 - 1);
	}

	int32 ReadChannel(const FProjectJson& In, const FProjectJsonPath& Where, const char* Key)
	{
		return static_cast<int32>(ReadInteger(In, Where, Key, 1, INT32_MAX));
	}

	FDMXFixtureFunction ReadFunction(const FProjectJson& In, const FProjectJsonPath& Where)
	{
		FDMXFixtureFunction Function;
		Function.Attribute.Name = ReadName(In, Where, "attribute");
		Function.FunctionName = ReadString(In, Where, "function_name");
		Function.Description = ReadString(In, Where, "description");
		Function.DefaultValue = ReadInteger(In, Where, "default_value", INT64_MIN, INT64_MAX);
		Function.Channel = ReadChannel(In, Where, "channel");
		Function.DataType = ReadSignalFormat(In, Where, "signal_format");
		Function.bUseLSBMode = ReadBool(In, Where, "lsb");
		const EDMXGDTFPhysicalUnit Unit = static_cast<EDMXGDTFPhysicalUnit>(ReadEnumName(PhysicalUnitNames, In, Where, "physical_unit"));
		Function.SetPhysicalPropertiesFromSaved(Unit, ReadDouble(In, Where, "physical_from"), ReadDouble(In, Where, "physical_to"),
			ReadDouble(In, Where, "physical_default"));
		return Function;
	}

	FDMXFixtureCellAttribute ReadCellAttribute(const FProjectJson& In, const FProjectJsonPath& Where)
	{
		FDMXFixtureCellAttribute CellAttribute;
		CellAttribute.Attribute.Name = ReadName(In, Where, "attribute");
		CellAttribute.Description = ReadString(In, Where, "description");
		CellAttribute.DefaultValue = ReadInteger(In, Where, "default_value", INT64_MIN, INT64_MAX);
		CellAttribute.DataType = ReadSignalFormat(In, Where, "signal_format");
		CellAttribute.bUseLSBMode = ReadBool(In, Where, "lsb");
		return CellAttribute;
	}

	FDMXFixtureMode ReadMode(const FProjectJson& In, const FProjectJsonPath& Where)
	{
		FDMXFixtureMode Mode;
		Mode.ModeName = ReadString(In, Where, "name");
		Mode.bAutoChannelSpan = ReadBool(In, Where, "auto_channel_span");
		Mode.ChannelSpan = static_cast<int32>(ReadInteger(In, Where, "channel_span", 0, INT32_MAX));
		const FProjectJson& FunctionsIn = ReadList(In, Where, "functions");
		const FProjectJsonPath FunctionsAt = Where.At("functions");
		for (size_t Index = 0; Index < FunctionsIn.size(); ++Index)
		{
			const FProjectJsonPath FunctionAt = FunctionsAt.At(Index);
			Mode.Functions.Add(ReadFunction(CheckObject(FunctionsIn[Index], FunctionAt), FunctionAt));
		}
		Mode.bFixtureMatrixEnabled = ReadBool(In, Where, "matrix_enabled");

		const FProjectJson& MatrixIn = ReadObject(In, Where, "matrix");
		const FProjectJsonPath MatrixAt = Where.At("matrix");
		FDMXFixtureMatrix& Matrix = Mode.FixtureMatrixConfig;
		Matrix.FirstCellChannel = ReadChannel(MatrixIn, MatrixAt, "first_cell_channel");
		Matrix.XCells = static_cast<int32>(ReadInteger(MatrixIn, MatrixAt, "x_cells", 0, INT32_MAX));
		Matrix.YCells = static_cast<int32>(ReadInteger(MatrixIn, MatrixAt, "y_cells", 0, INT32_MAX));
		Matrix.PixelMappingDistribution = static_cast<EDMXPixelMappingDistribution>(ReadEnumName(DistributionNames, MatrixIn, MatrixAt, "pixel_mapping_distribution"));
		Matrix.CellAttributes.Reset();
		const FProjectJson& CellsIn = ReadList(MatrixIn, MatrixAt, "cell_attributes");
		const FProjectJsonPath CellsAt = MatrixAt.At("cell_attributes");
		for (size_t Index = 0; Index < CellsIn.size(); ++Index)
		{
			const FProjectJsonPath CellAt = CellsAt.At(Index);
			Matrix.CellAttributes.Add(ReadCellAttribute(CheckObject(CellsIn[Index], CellAt), CellAt));
		}
		return Mode;
	}

	void ReadFixtureType(UDMXEntityFixtureType* FixtureType, const FProjectJson& In, const FProjectJsonPath& Where)
	{
		FixtureType->DMXCategory.Name = ReadName(In, Where, "category");
		FixtureType->bExportGeneratedGDTF = ReadBool(In, Where, "export_generated_gdtf");
		FixtureType->bShowOnlyLatestGDTFModeRevisions = ReadBool(In, Where, "show_only_latest_gdtf_mode_revisions");
		FixtureType->Modes.Reset();
		const FProjectJson& ModesIn = ReadList(In, Where, "modes");
		const FProjectJsonPath ModesAt = Where.At("modes");
		for (size_t Index = 0; Index < ModesIn.size(); ++Index)
		{
			const FProjectJsonPath ModeAt = ModesAt.At(Index);
			FixtureType->Modes.Add(ReadMode(CheckObject(ModesIn[Index], ModeAt), ModeAt));
		}
	}

	// The library's entities by id, and its fixture types by name (the first of a name), for patches.
	struct FEntityIndex
	{
		std::unordered_map<FGuid, std::pair<UDMXEntity*, size_t>, FGuidHash> ById;
		std::unordered_map<std::string, UDMXEntityFixtureType*> TypesByName;
	};

	// The fixture type by id or, in a hand-written file without an id, by name; null (with a warning)
	// when the library has no such type, as the engine leaves a reference it cannot resolve.
	UDMXEntityFixtureType* FindSavedFixtureType(const FEntityIndex& Index, const FProjectJson& In, const FProjectJsonPath& Where, std::vector<std::string>& OutWarnings)
	{
		UDMXEntityFixtureType* FixtureType = nullptr;
		std::string Wanted;
		if (In.contains("id"))
		{
			const FGuid Id = ReadGuid(In, Where, "id");
			const auto It = Index.ById.find(Id);
			FixtureType = It != Index.ById.end() ? Cast<UDMXEntityFixtureType>(It->second.first) : nullptr;
			Wanted = "with id " + ToUTF8(Id.ToString(EGuidFormats::DigitsWithHyphens));
		}
		else
		{
			const std::string Name = ToUTF8(ReadString(In, Where, "name"));
			const auto It = Index.TypesByName.find(Name);
			FixtureType = It != Index.TypesByName.end() ? It->second : nullptr;
			Wanted = "named \"" + Name + "\"";
		}
		if (FixtureType == nullptr)
		{
			OutWarnings.push_back(DescribeAt(Where, "the library has no fixture type " + Wanted + "; the patch is loaded without one"));
		}
		return FixtureType;
	}

	void ReadFixturePatch(const FEntityIndex& Index, UDMXEntityFixturePatch* FixturePatch, const FProjectJson& In, const FProjectJsonPath& Where,
		std::vector<std::string>& OutWarnings)
	{
		UDMXEntityFixtureType* FixtureType = nullptr;
		const FProjectJson& TypeIn = ReadField(In, Where, "fixture_type");
		if (!TypeIn.is_null())
		{
			const FProjectJsonPath TypeAt = Where.At("fixture_type");
			FixtureType = FindSavedFixtureType(Index, CheckObject(TypeIn, TypeAt), TypeAt, OutWarnings);
		}
		const int32 ActiveMode = static_cast<int32>(ReadInteger(In, Where, "active_mode", INDEX_NONE, INT32_MAX));
		if (FixtureType != nullptr && !FixtureType->Modes.IsValidIndex(ActiveMode) && !(ActiveMode == INDEX_NONE && FixtureType->Modes.IsEmpty()))
		{
			// The engine leaves a patch's mode as it is when its type loses modes, so a save can hold
			// this; the patch comes back the same, without an active mode.
			OutWarnings.push_back(DescribeAt(Where.At("active_mode"), "fixture type \"" + ToUTF8(FixtureType->Name) + "\" has no mode "
				+ std::to_string(ActiveMode) + " (it has " + std::to_string(FixtureType->Modes.Num()) + "); the patch has no active mode until one is set"));
		}
		FixturePatch->SetUniverseID(static_cast<int32>(ReadInteger(In, Where, "universe", INT32_MIN, INT32_MAX)));
		FixturePatch->SetStartingChannel(ReadChannel(In, Where, "starting_channel"));
		FixturePatch->SetFixtureTypeFromSaved(FixtureType);
		FixturePatch->SetActiveModeFromSaved(ActiveMode);
		FixturePatch->SetFixtureIDFromSaved(static_cast<int32>(ReadInteger(In, Where, "fixture_id", INT32_MIN, INT32_MAX)));
		FixturePatch->SetMVRFixtureUUIDFromSaved(ReadGuid(In, Where, "mvr_fixture_uuid"));
		FixturePatch->CustomTags.Reset();
		const FProjectJson& TagsIn = ReadList(In, Where, "tags");
		const FProjectJsonPath TagsAt = Where.At("tags");
		for (size_t TagIndex = 0; TagIndex < TagsIn.size(); ++TagIndex)
		{
			FixturePatch->CustomTags.Add(CheckName(TagsIn[TagIndex], TagsAt.At(TagIndex)));
		}
		const FProjectJson& ColorIn = ReadList(In, Where, "editor_color");
		const FProjectJsonPath ColorAt = Where.At("editor_color");
		if (ColorIn.size() != 4)
		{
			throw FProjectFileError(ColorAt, "must list four numbers (red, green, blue, alpha), not " + std::to_string(ColorIn.size()));
		}
		FixturePatch->EditorColor = FLinearColor(CheckFloat(ColorIn[0], ColorAt.At(size_t(0))), CheckFloat(ColorIn[1], ColorAt.At(size_t(1))),
			CheckFloat(ColorIn[2], ColorAt.At(size_t(2))), CheckFloat(ColorIn[3], ColorAt.At(size_t(3))));
		FixturePatch->bReceiveDMXInEditor = ReadBool(In, Where, "receive_dmx_in_editor");
		FixturePatch->RebuildCache();
	}

	UClass* ReadEntityClass(const FProjectJson& In, const FProjectJsonPath& Where)
	{
		const FProjectJson& Kind = ReadField(In, Where, "kind");
		if (Kind == "fixture_type")
		{
			return UDMXEntityFixtureType::StaticClass();
		}
		if (Kind == "fixture_patch")
		{
			return UDMXEntityFixturePatch::StaticClass();
		}
		throw FProjectFileError(Where.At("kind"), "must be \"fixture_type\" or \"fixture_patch\", not " + Kind.dump());
	}

	UDMXLibrary* ReadLibrary(const FString& PackageName, const FProjectJson& In, std::vector<std::string>& OutWarnings)
	{
		CheckProjectFileFormat(In, LibraryFormat, LibraryVersion);
		const FProjectJsonPath Root;
		const FProjectJson& EntitiesIn = ReadList(In, Root, "entities");
		if (FindPackage(nullptr, *PackageName) != nullptr)
		{
			throw FProjectFileError("the package " + ToUTF8(PackageName) + " is already loaded (package names ignore letter case)");
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
		const FProjectJsonPath EntitiesAt = Root.At("entities");
		FEntityIndex Index;
		std::vector<std::pair<UDMXEntityFixturePatch*, size_t>> FixturePatches;
		for (size_t EntityIndex = 0; EntityIndex < EntitiesIn.size(); ++EntityIndex)
		{
			const FProjectJsonPath EntityAt = EntitiesAt.At(EntityIndex);
			const FProjectJson& EntityIn = CheckObject(EntitiesIn[EntityIndex], EntityAt);
			UClass* Class = ReadEntityClass(EntityIn, EntityAt);
			const FName ObjectName(ReadString(EntityIn, EntityAt, "object"));
			if (ObjectName.IsNone())
			{
				throw FProjectFileError(EntityAt.At("object"), "must name the entity's object (not empty, not None)");
			}
			const FGuid Id = ReadGuid(EntityIn, EntityAt, "id");
			if (!Id.IsValid())
			{
				throw FProjectFileError(EntityAt.At("id"), "must not be the zero GUID, which no entity has");
			}
			UDMXEntity* Entity = NewObject<UDMXEntity>(Library, Class, ObjectName, RF_Transactional);
			if (Entity == nullptr)
			{
				throw FProjectFileError(EntityAt.At("object"), "another entity of the library has the object name \"" + ToUTF8(ObjectName.ToString())
					+ "\" (object names ignore letter case)");
			}
			const auto [It, bNewId] = Index.ById.emplace(Id, std::make_pair(Entity, EntityIndex));
			if (!bNewId)
			{
				throw FProjectFileError(EntityAt.At("id"), "entities[" + std::to_string(It->second.second) + "] has the same id");
			}
			Entity->Name = ReadString(EntityIn, EntityAt, "name");
			Entity->SetIDFromSaved(Id);
			if (UDMXEntityFixtureType* FixtureType = Cast<UDMXEntityFixtureType>(Entity))
			{
				ReadFixtureType(FixtureType, EntityIn, EntityAt);
				Index.TypesByName.emplace(ToUTF8(FixtureType->Name), FixtureType);
			}
			else
			{
				FixturePatches.emplace_back(Cast<UDMXEntityFixturePatch>(Entity), EntityIndex);
			}
		}
		for (const auto& [FixturePatch, EntityIndex] : FixturePatches)
		{
			ReadFixturePatch(Index, FixturePatch, EntitiesIn[EntityIndex], EntitiesAt.At(EntityIndex), OutWarnings);
		}
		return Library;
	}
}

std::string WriteProjectLibraryFile(const UDMXLibrary* Library)
{
	FProjectJson Out;
	Out["format"] = LibraryFormat;
	Out["version"] = LibraryVersion;
	FProjectJson Entities = FProjectJson::array();
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
	return DumpProjectJson(Out);
}

UDMXLibrary* ReadProjectLibraryFile(const FString& PackageName, const std::string& Text, std::vector<std::string>& OutWarnings, std::string& OutError)
{
	try
	{
		return ReadLibrary(PackageName, ParseProjectJson(Text), OutWarnings);
	}
	catch (const FProjectFileError& Error)
	{
		OutError = Error.what();
	}
	catch (const nlohmann::json::exception& Error)
	{
		OutError = Error.what();
	}
	return nullptr;
}
