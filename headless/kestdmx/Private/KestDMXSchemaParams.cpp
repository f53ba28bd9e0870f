// The params tables of the module's methods: every key it reads, with the Lua type it reads it as,
// what it uses instead, and its range or accepted texts. Keep in step with the module's params
// readers; FSchemaAgreementTest reads them back through a recording table.
#include "KestDMXSchema.h"

#include <climits>

namespace
{
	const long long MaxChannel = 512;

	FKestField MakeKey(const char* Name, EKestLuaType Type, const char* LuaType, EKestDefault Default, const char* Literal, const char* Doc)
	{
		FKestField Field;
		Field.Name = Name;
		Field.Type = Type;
		Field.LuaType = LuaType;
		Field.Default = Default;
		Field.Literal = Literal;
		Field.Doc = Doc;
		return Field;
	}

	FKestField StringKey(const char* Name, EKestDefault Default, const char* Literal, const char* Doc)
	{
		return MakeKey(Name, EKestLuaType::String, "string", Default, Literal, Doc);
	}

	FKestField TextKey(const char* Name, const char* TextSet, EKestDefault Default, const char* Literal, const char* Doc)
	{
		FKestField Field = MakeKey(Name, EKestLuaType::String, TextSet, Default, Literal, Doc);
		Field.TextSet = TextSet;
		return Field;
	}

	FKestField NumberKey(const char* Name, EKestDefault Default, const char* Literal, const char* Doc)
	{
		return MakeKey(Name, EKestLuaType::Number, "number", Default, Literal, Doc);
	}

	FKestField IntegerKey(const char* Name, long long Min, long long Max, EKestDefault Default, const char* Literal, const char* Doc)
	{
		FKestField Field = MakeKey(Name, EKestLuaType::Integer, "integer", Default, Literal, Doc);
		Field.Min = Min;
		Field.Max = Max;
		return Field;
	}

	FKestField BooleanKey(const char* Name, EKestDefault Default, const char* Literal, const char* Doc)
	{
		return MakeKey(Name, EKestLuaType::Boolean, "boolean", Default, Literal, Doc);
	}

	FKestField TableKey(const char* Name, const char* Class, const char* Doc)
	{
		FKestField Field = MakeKey(Name, EKestLuaType::Table, Class, EKestDefault::None, "", Doc);
		Field.Class = Class;
		return Field;
	}

	FKestField TableListKey(const char* Name, const char* Class, const char* Doc)
	{
		FKestField Field = MakeKey(Name, EKestLuaType::List, "", EKestDefault::None, "", Doc);
		Field.LuaType = std::string(Class) + "[]";
		Field.Class = Class;
		Field.EntryType = EKestLuaType::Table;
		return Field;
	}

	FKestField WithSynonyms(FKestField Field, std::vector<std::string> Synonyms)
	{
		Field.Synonyms = std::move(Synonyms);
		return Field;
	}

	FKestClass MakeClass(const char* Name, const char* Doc, std::vector<FKestField> Fields)
	{
		FKestClass Class;
		Class.Name = Name;
		Class.Doc = Doc;
		Class.Fields = std::move(Fields);
		Class.bParams = true;
		return Class;
	}

	std::vector<FKestField> MakeFunctionKeys()
	{
		return {
			WithSynonyms(StringKey("attribute", EKestDefault::Fixed, "\"\"", "Attribute name, such as \"Dimmer\" or \"Pan\""), {"attr"}),
			WithSynonyms(StringKey("name", EKestDefault::Fixed, "\"Function\"", "Function name; the engine makes it unique within the mode"), {"function_name"}),
			StringKey("description", EKestDefault::Fixed, "\"\"", "Description"),
			WithSynonyms(IntegerKey("default_value", INT_MIN, INT_MAX, EKestDefault::Fixed, "0",
				"Default DMX value, truncated to a 32-bit integer; replaced when a physical default or range is given"), {"default", "value"}),
			WithSynonyms(IntegerKey("channel", 1, MaxChannel, EKestDefault::Fixed, "1",
				"Channel within the mode, 1..512; the engine then lines the functions up one after another"), {"starting_channel", "offset", "address"}),
			WithSynonyms(TextKey("data_type", "DMXDataType", EKestDefault::Fixed, "\"E8Bit\"",
				"Signal format; an unknown text keeps 8 bit"), {"signal_format", "format", "type", "datatype", "bits", "size"}),
			WithSynonyms(BooleanKey("use_lsb", EKestDefault::Fixed, "false", "Least significant byte first"), {"lsb", "use_lsb_mode", "lsb_mode"}),
			WithSynonyms(NumberKey("physical_default_value", EKestDefault::None, "",
				"Physical default, applied before the range: with physical_from or physical_to it is a place in the range, 0..1 (0.5 is the middle); sets default_value"),
				{"physical_default"}),
			WithSynonyms(NumberKey("physical_from", EKestDefault::None, "",
				"Lower end of the physical range (0 when only physical_to is given); rescales default_value"), {"physical_min"}),
			WithSynonyms(NumberKey("physical_to", EKestDefault::None, "",
				"Upper end of the physical range (1 when only physical_from is given); rescales default_value"), {"physical_max"}),
		};
	}

	std::vector<FKestField> MakeCellAttributeKeys()
	{
		return {
			WithSynonyms(StringKey("attribute", EKestDefault::Fixed, "\"\"", "Attribute name, such as \"Red\""), {"attr", "name"}),
			StringKey("description", EKestDefault::Fixed, "\"\"", "Description"),
			WithSynonyms(IntegerKey("default_value", INT_MIN, INT_MAX, EKestDefault::Fixed, "0", "Default DMX value, truncated to a 32-bit integer"), {"default", "value"}),
			WithSynonyms(TextKey("data_type", "DMXDataType", EKestDefault::Fixed, "\"E8Bit\"", "Signal format; an unknown text keeps 8 bit"),
				{"signal_format", "format", "type", "datatype", "bits", "size"}),
			WithSynonyms(BooleanKey("use_lsb", EKestDefault::Fixed, "false", "Least significant byte first"), {"lsb", "use_lsb_mode", "lsb_mode"}),
		};
	}

	std::vector<FKestField> MakeMatrixKeys()
	{
		return {
			WithSynonyms(BooleanKey("enabled", EKestDefault::Current, "", "Whether the mode has a pixel matrix (default: as it is)"), {"enable", "matrix_enabled"}),
			WithSynonyms(IntegerKey("x_cells", 1, MaxChannel, EKestDefault::Current, "", "Cells across, 1..512"), {"x", "cells_x", "columns", "width", "matrix_x_cells"}),
			WithSynonyms(IntegerKey("y_cells", 1, MaxChannel, EKestDefault::Current, "", "Cells down, 1..512"), {"y", "cells_y", "rows", "height", "matrix_y_cells"}),
			WithSynonyms(IntegerKey("first_cell_channel", 1, MaxChannel, EKestDefault::Current, "", "Channel of the first cell within the mode, 1..512"),
				{"channel", "first_channel", "matrix_first_cell_channel"}),
			WithSynonyms(TextKey("distribution", "DMXDistribution", EKestDefault::Current, "",
				"Pixel mapping distribution; only the six names of the alias change it"), {"pixel_mapping_distribution", "matrix_distribution", "order"}),
			WithSynonyms(TableListKey("cell_attributes", "DMXCellAttributeParams", "Replaces the attributes of every cell"), {"cells", "attributes", "cell_attribute"}),
		};
	}

	std::vector<FKestField> MakeModeKeys()
	{
		return {
			WithSynonyms(StringKey("name", EKestDefault::Fixed, "\"Mode\"", "Mode name; the engine makes it unique within the fixture type"), {"mode_name"}),
			WithSynonyms(BooleanKey("auto_channel_span", EKestDefault::Fixed, "true", "Whether the span follows the functions and matrix"), {"auto_span"}),
			WithSynonyms(IntegerKey("channel_span", 0, MaxChannel, EKestDefault::Current, "", "Channel span, 0..512; kept only when auto_channel_span is false"),
				{"span", "channels", "channel_count"}),
			WithSynonyms(TableListKey("functions", "DMXFunctionParams", "Replaces the mode's functions, in list order"), {"function", "channels_list"}),
			WithSynonyms(TableKey("matrix", "DMXMatrixParams", "The mode's pixel matrix"), {"fixture_matrix", "pixel_matrix"}),
		};
	}

	std::vector<FKestField> MakeEditorColorKeys()
	{
		return {
			WithSynonyms(NumberKey("r", EKestDefault::Current, "", "Red, unclamped"), {"red"}),
			WithSynonyms(NumberKey("g", EKestDefault::Current, "", "Green, unclamped"), {"green"}),
			WithSynonyms(NumberKey("b", EKestDefault::Current, "", "Blue, unclamped"), {"blue"}),
			WithSynonyms(NumberKey("a", EKestDefault::Current, "", "Alpha, unclamped"), {"alpha"}),
		};
	}

	// The patch keys add and configure share; they differ in what an absent key means.
	std::vector<FKestField> MakeFixturePatchKeys(bool bConfigure)
	{
		const EKestDefault Absent = bConfigure ? EKestDefault::Current : EKestDefault::Fixed;
		FKestField Tags = MakeKey("tags", EKestLuaType::List, "string[]", EKestDefault::None, "", "Replaces the patch's tags with the strings of the list");
		Tags.EntryType = EKestLuaType::String;
		return {
			WithSynonyms(StringKey("fixture_type", bConfigure ? EKestDefault::Current : EKestDefault::Fixed, bConfigure ? "" : "\"\"",
				bConfigure ? "Name of a fixture type of the library (ignoring case); a name that matches none is skipped"
					: "Name of a fixture type of the library (ignoring case); without a match nothing is created"),
				{"type", "fixture", "fixturetype", "fixture_type_name"}),
			WithSynonyms(IntegerKey("active_mode_index", 0, INT_MAX, Absent, bConfigure ? "" : "0",
				"Mode of the fixture type, counted from 0; the engine refuses an index the type has no mode for"),
				{"mode", "mode_index", "active_mode", "activemode"}),
			WithSynonyms(IntegerKey("universe", 0, INT_MAX, Absent, bConfigure ? "" : "1", "Universe, 0..2147483647"),
				{"universe_id", "universeid", "uni"}),
			WithSynonyms(IntegerKey("starting_channel", 1, MaxChannel, Absent, bConfigure ? "" : "1", "First channel, 1..512"),
				{"channel", "start", "address", "start_channel", "dmx_address", "starting_address"}),
			WithSynonyms(StringKey("name", bConfigure ? EKestDefault::Current : EKestDefault::Fixed, bConfigure ? "" : "\"FixturePatch\"",
				bConfigure ? "Renames the patch as given (no uniqueness check)" : "Patch name; the engine makes it unique in the library"),
				{"patch_name"}),
			WithSynonyms(Tags, {"tag"}),
			WithSynonyms(BooleanKey("receive_dmx_in_editor", EKestDefault::Current, bConfigure ? "" : "false", "Whether the patch receives DMX in the editor"),
				{"receive", "receive_dmx"}),
			WithSynonyms(TableKey("editor_color", "DMXEditorColorParams", "Colour in the editor; components not given keep their value"),
				{"editor_colour", "color", "colour"}),
		};
	}
}

std::vector<FKestClass> MakeKestDMXParamsClasses()
{
	std::vector<FKestClass> Classes;
	Classes.push_back(MakeClass("DMXFixtureTypeParams", "Params of dmx_library(path):add(\"fixture_type\", params)", {
		WithSynonyms(StringKey("name", EKestDefault::Fixed, "\"FixtureType\"", "Fixture type name; the engine makes it unique in the library"), {"type_name"}),
		WithSynonyms(StringKey("category", EKestDefault::Fixed, "\"\"", "Fixture category, such as \"Moving Head\""), {"dmx_category", "kind", "type"}),
		WithSynonyms(TableListKey("modes", "DMXModeParams", "The fixture type's modes; without it the type has one mode \"Mode\""), {"mode"}),
	}));
	Classes.push_back(MakeClass("DMXFixtureTypeConfigureParams", "Params of dmx_library(path):configure(\"fixture_type\", name, params); only keys given change anything", {
		WithSynonyms(StringKey("name", EKestDefault::Current, "", "Renames the fixture type as given (no uniqueness check)"), {"type_name"}),
		WithSynonyms(StringKey("category", EKestDefault::Current, "", "Fixture category"), {"dmx_category", "kind", "type"}),
		WithSynonyms(TableListKey("modes", "DMXModeParams", "Replaces every mode; {} leaves the type without modes"), {"mode"}),
	}));
	Classes.push_back(MakeClass("DMXModeParams", "One mode of a fixture type", MakeModeKeys()));
	Classes.push_back(MakeClass("DMXFunctionParams", "One function of a mode", MakeFunctionKeys()));
	Classes.push_back(MakeClass("DMXMatrixParams", "The pixel matrix of a mode; keys not given keep their value", MakeMatrixKeys()));
	Classes.push_back(MakeClass("DMXCellAttributeParams", "One attribute of every matrix cell", MakeCellAttributeKeys()));
	Classes.push_back(MakeClass("DMXFixturePatchParams", "Params of dmx_library(path):add(\"fixture_patch\", params)", MakeFixturePatchKeys(false)));
	Classes.push_back(MakeClass("DMXFixturePatchConfigureParams", "Params of dmx_library(path):configure(\"fixture_patch\", name, params); only keys given change anything",
		MakeFixturePatchKeys(true)));
	Classes.push_back(MakeClass("DMXEditorColorParams", "A linear colour; components not given keep their value", MakeEditorColorKeys()));

	FKestField FixturePatch = WithSynonyms(StringKey("fixture_patch", EKestDefault::Fixed, "\"\"",
		"Name of a fixture patch of that library (ignoring case); read only with library; no match clears the patch"), {"patch", "fixture", "fixturepatch"});
	FixturePatch.Requires = "library";
	FKestField Library = WithSynonyms(StringKey("library", EKestDefault::None, "",
		"Path of a DMX Library; when given, the component's patch is set (cleared when the library or patch is not found)"), {"lib", "library_path", "path", "dmx_library"});
	FKestField Receive = WithSynonyms(BooleanKey("receive", EKestDefault::Current, "", "Whether the component receives DMX from its patch"),
		{"receive_dmx", "receive_dmx_from_patch", "enabled"});
	Classes.push_back(MakeClass("DMXComponentAddParams", "Params of dmx_component(actor):add(params)", {
		WithSynonyms(StringKey("name", EKestDefault::Fixed, "\"DMXComponent\"", "Component to reuse (ignoring case; \"\" takes the first) or create"),
			{"component", "component_name"}),
		Library, FixturePatch, Receive,
	}));
	Classes.push_back(MakeClass("DMXComponentConfigureParams", "Params of dmx_component(actor):configure(component, params)", {Library, FixturePatch, Receive}));
	return Classes;
}
