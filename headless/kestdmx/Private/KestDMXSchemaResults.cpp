// The tables the module answers: add results, the library inspection table, the component info
// table. Keep in step with the module's table builders; FSchemaAgreementTest compares real answers.
#include "KestDMXSchema.h"

namespace
{
	FKestField Field(const char* Name, const char* LuaType, const char* Doc, bool bOptional = false)
	{
		FKestField Result;
		Result.Name = Name;
		Result.LuaType = LuaType;
		Result.Doc = Doc;
		Result.bOptional = bOptional;
		return Result;
	}

	FKestClass MakeClass(const char* Name, const char* Doc, std::vector<FKestField> Fields)
	{
		FKestClass Class;
		Class.Name = Name;
		Class.Doc = Doc;
		Class.Fields = std::move(Fields);
		return Class;
	}
}

std::vector<FKestClass> MakeKestDMXResultClasses()
{
	std::vector<FKestClass> Classes;
	Classes.push_back(MakeClass("DMXFixtureTypeAddResult", "What add(\"fixture_type\", ...) made", {
		Field("name", "string", "The name the engine settled on"),
		Field("mode_count", "integer", "Number of modes"),
	}));
	Classes.push_back(MakeClass("DMXFixturePatchAddResult", "What add(\"fixture_patch\", ...) made", {
		Field("name", "string", "The name the engine settled on"),
		Field("channel_span", "integer", "Channels the patch takes"),
		Field("ending_channel", "integer", "Last channel of the patch"),
	}));

	Classes.push_back(MakeClass("DMXLibraryInfo", "The whole library as it stands; just valid (false) when the handle holds no library", {
		Field("valid", "boolean", "Whether the handle holds a library"),
		Field("path", "string", "Object path of the library", true),
		Field("entity_count", "integer", "Entities of every class", true),
		Field("fixture_type_count", "integer", "Number of fixture types", true),
		Field("fixture_patch_count", "integer", "Number of fixture patches", true),
		Field("fixture_types", "DMXFixtureTypeInfo[]", "Fixture types in library order", true),
		Field("fixture_patches", "DMXFixturePatchInfo[]", "Fixture patches in library order", true),
	}));
	Classes.push_back(MakeClass("DMXFixtureTypeInfo", "A fixture type", {
		Field("name", "string", "Name"),
		Field("category", "string", "Fixture category"),
		Field("mode_count", "integer", "Number of modes"),
		Field("modes", "DMXModeInfo[]", "Modes in order"),
	}));
	Classes.push_back(MakeClass("DMXModeInfo", "A mode of a fixture type, with its matrix flattened", {
		Field("index", "integer", "Position among the type's modes, counted from 0"),
		Field("name", "string", "Name"),
		Field("function_count", "integer", "Number of functions"),
		Field("auto_channel_span", "boolean", "Whether the span follows the functions and matrix"),
		Field("channel_span", "integer", "Channel span as stored"),
		Field("matrix_enabled", "boolean", "Whether the pixel matrix is on"),
		Field("matrix_x_cells", "integer", "Cells across"),
		Field("matrix_y_cells", "integer", "Cells down"),
		Field("matrix_first_cell_channel", "integer", "Channel of the first cell"),
		Field("matrix_num_channels", "integer", "Channels of all cells"),
		Field("matrix_last_channel", "integer", "Last channel of the matrix"),
		Field("matrix_distribution", "DMXDistributionName", "Pixel mapping distribution"),
		Field("functions", "DMXFunctionInfo[]", "Functions in order"),
		Field("cell_attributes", "DMXCellAttributeInfo[]", "Attributes of every cell"),
		Field("cell_attribute_count", "integer", "Number of cell attributes"),
	}));
	Classes.push_back(MakeClass("DMXFunctionInfo", "A function of a mode", {
		Field("name", "string", "Name"),
		Field("attribute", "string", "Attribute name"),
		Field("description", "string", "Description"),
		Field("default_value", "integer", "Default DMX value"),
		Field("channel", "integer", "First channel within the mode"),
		Field("last_channel", "integer", "Last channel within the mode"),
		Field("data_type", "DMXSignalFormatName", "Signal format"),
		Field("num_channels", "integer", "Channels the function takes"),
		Field("use_lsb", "boolean", "Least significant byte first"),
	}));
	Classes.push_back(MakeClass("DMXCellAttributeInfo", "An attribute of every matrix cell", {
		Field("attribute", "string", "Attribute name"),
		Field("description", "string", "Description"),
		Field("default_value", "integer", "Default DMX value"),
		Field("data_type", "DMXSignalFormatName", "Signal format"),
		Field("num_channels", "integer", "Channels per cell for this attribute"),
		Field("use_lsb", "boolean", "Least significant byte first"),
	}));
	Classes.push_back(MakeClass("DMXFixturePatchInfo", "A fixture patch with the attribute maps the engine derives for its mode", {
		Field("name", "string", "Name"),
		Field("fixture_type", "string", "Fixture type name; \"\" without one"),
		Field("universe", "integer", "Universe"),
		Field("starting_channel", "integer", "First channel"),
		Field("ending_channel", "integer", "Last channel"),
		Field("channel_span", "integer", "Channels the patch takes"),
		Field("active_mode_index", "integer", "Mode, counted from 0"),
		Field("fixture_id", "integer", "Fixture ID"),
		Field("mvr_fixture_uuid", "string", "MVR fixture UUID, 32 hexadecimal digits"),
		Field("valid", "boolean", "Whether the engine finds the patch valid"),
		Field("validity_reason", "string", "Why not; \"\" when valid"),
		Field("receive_dmx_in_editor", "boolean", "Whether the patch receives DMX in the editor"),
		Field("editor_color_r", "number", "Red of the editor colour"),
		Field("editor_color_g", "number", "Green of the editor colour"),
		Field("editor_color_b", "number", "Blue of the editor colour"),
		Field("editor_color_a", "number", "Alpha of the editor colour"),
		Field("tags", "string[]", "Tags in order"),
		Field("tag_count", "integer", "Number of tags"),
		Field("attribute_default_count", "integer", "Entries of attribute_defaults"),
		Field("attribute_defaults", "DMXAttributeDefault[]", "Default value per attribute"),
		Field("attribute_channel_count", "integer", "Entries of attribute_channels"),
		Field("attribute_channels", "DMXAttributeChannel[]", "Absolute channel per attribute"),
		Field("attribute_signal_format_count", "integer", "Entries of attribute_signal_formats"),
		Field("attribute_signal_formats", "DMXAttributeSignalFormat[]", "Signal format per attribute"),
		Field("default_raw_channels", "DMXRawChannel[]", "The bytes of the default values, by channel"),
	}));
	Classes.push_back(MakeClass("DMXAttributeDefault", "", {Field("attribute", "string", "Attribute name"), Field("value", "integer", "Default value")}));
	Classes.push_back(MakeClass("DMXAttributeChannel", "", {Field("attribute", "string", "Attribute name"), Field("channel", "integer", "Absolute channel")}));
	Classes.push_back(MakeClass("DMXAttributeSignalFormat", "", {Field("attribute", "string", "Attribute name"), Field("data_type", "DMXSignalFormatName", "Signal format")}));
	Classes.push_back(MakeClass("DMXRawChannel", "", {Field("channel", "integer", "Absolute channel"), Field("value", "integer", "Byte, 0..255")}));

	Classes.push_back(MakeClass("DMXComponentInfo", "The DMX components of an actor", {
		Field("valid", "boolean", "Whether the handle holds an actor"),
		Field("actor_label", "string", "The actor's label", true),
		Field("actor_name", "string", "The actor's object name", true),
		Field("component_count", "integer", "Number of DMX components"),
		Field("components", "DMXComponentEntry[]", "DMX components in order"),
	}));
	Classes.push_back(MakeClass("DMXComponentEntry", "One DMX component", {
		Field("name", "string", "Object name"),
		Field("registered", "boolean", "Whether it is registered with the world"),
		Field("receive_dmx_from_patch", "boolean", "Whether it receives DMX from its patch"),
		Field("tick_enabled", "boolean", "Whether it ticks"),
		Field("fixture_patch", "string", "Patch name; \"\" without one"),
		Field("fixture_type", "string", "The patch's fixture type; \"\" without one"),
		Field("universe", "integer", "The patch's universe; 0 without a patch"),
		Field("starting_channel", "integer", "The patch's first channel; 0 without a patch"),
	}));
	return Classes;
}
