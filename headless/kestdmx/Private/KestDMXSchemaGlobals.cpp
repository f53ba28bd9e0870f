// The globals scripts call, their handles' methods and arguments, and the documentation records the
// module registers for them; also the headless editor's "editor" global.
#include "KestDMXSchema.h"

namespace
{
	FKestArgument Argument(const char* Name, EKestLuaType Type, const char* LuaType, const char* Doc, bool bOptional = false)
	{
		FKestArgument Result;
		Result.Name = Name;
		Result.Type = Type;
		Result.LuaType = LuaType;
		Result.Doc = Doc;
		Result.bOptional = bOptional;
		return Result;
	}

	FKestArgument TextArgument(const char* Name, const char* TextSet, const char* Doc)
	{
		FKestArgument Result = Argument(Name, EKestLuaType::String, TextSet, Doc);
		Result.TextSet = TextSet;
		return Result;
	}

	FKestFunction Function(const char* Name, const char* Doc, const char* DocSignature, std::vector<FKestArgument> Arguments, const char* ResultType, const char* ResultDoc)
	{
		FKestFunction Result;
		Result.Name = Name;
		Result.Doc = Doc;
		Result.DocSignature = DocSignature;
		Result.Arguments = std::move(Arguments);
		Result.ResultType = ResultType;
		Result.ResultDoc = ResultDoc;
		return Result;
	}

	FKestFunction Method(const char* Name, const char* Doc, const char* DocSignature, std::vector<FKestArgument> Arguments, const char* ResultType, const char* ResultDoc)
	{
		FKestFunction Result = Function(Name, Doc, DocSignature, std::move(Arguments), ResultType, ResultDoc);
		Result.bMethod = true;
		return Result;
	}

	FKestField HandleField(const char* Name, const char* LuaType, const char* Doc)
	{
		FKestField Result;
		Result.Name = Name;
		Result.LuaType = LuaType;
		Result.Doc = Doc;
		return Result;
	}

	FKestGlobal MakeLibraryGlobal()
	{
		FKestGlobal Global;
		Global.Name = "dmx_library";
		Global.Opener = Function("dmx_library", "Open a DMX Library authoring handle", "dmx_library(path)",
			{Argument("path", EKestLuaType::String, "string", "Package path (/Game/DMX/Stage) or object path (/Game/DMX/Stage.Stage)")},
			"DMXLibraryHandle", "A handle; valid is false when the path names no DMX Library");
		Global.HandleClass = "DMXLibraryHandle";
		Global.HandleDoc = "A DMX Library, resolved once when the handle was made";
		Global.HandleFields = {
			HandleField("valid", "boolean", "Whether the path resolved to a DMX Library"),
			HandleField("path", "string", "The path exactly as given"),
		};
		const FKestArgument Kind = TextArgument("kind", "DMXEntityKind", "What the method acts on (letter case is ignored)");
		const FKestArgument Name = Argument("name", EKestLuaType::String, "string", "Name of the entity (ignoring case; the first match)");

		Global.Functions.push_back(Method("info", "Inspect fixture type, mode, function, matrix, patch, and derived attribute-map state", "dmx_library(path):info()",
			{}, "DMXLibraryInfo", "The inspection table"));

		FKestFunction Add = Method("add", "Create a fixture type or fixture patch in a DMX Library", "dmx_library(path):add('fixture_type'|'fixture_patch', params)",
			{Kind, Argument("params", EKestLuaType::Table, "table", "The entity's settings")}, "", "What was made, or nil");
		Add.KindArgument = "kind";
		Add.Kinds = {{"fixture_type", "DMXFixtureTypeParams", "DMXFixtureTypeAddResult"}, {"fixture_patch", "DMXFixturePatchParams", "DMXFixturePatchAddResult"}};
		Global.Functions.push_back(Add);

		FKestFunction Configure = Method("configure", "Configure a fixture type or fixture patch",
			"dmx_library(path):configure('fixture_type'|'fixture_patch', name, params)",
			{Kind, Name, Argument("params", EKestLuaType::Table, "table", "The settings to change")}, "boolean", "Whether the entity was found");
		Configure.KindArgument = "kind";
		Configure.Kinds = {{"fixture_type", "DMXFixtureTypeConfigureParams", "boolean"}, {"fixture_patch", "DMXFixturePatchConfigureParams", "boolean"}};
		Global.Functions.push_back(Configure);

		FKestFunction Remove = Method("remove", "Remove a fixture type or fixture patch", "dmx_library(path):remove('fixture_type'|'fixture_patch', name)",
			{Kind, Name}, "boolean", "Whether an entity was removed");
		Remove.KindArgument = "kind";
		Global.Functions.push_back(Remove);
		return Global;
	}

	FKestGlobal MakeComponentGlobal()
	{
		FKestGlobal Global;
		Global.Name = "dmx_component";
		Global.Opener = Function("dmx_component", "Open a handle on an actor of the editor world, found by object name or label (ignoring case)", "",
			{Argument("actor", EKestLuaType::String, "string", "Object name or label of the actor")},
			"DMXComponentHandle", "A handle; valid is false when no actor has that name or label");
		Global.HandleClass = "DMXComponentHandle";
		Global.HandleDoc = "An actor of the editor world, resolved once when the handle was made";
		Global.HandleFields = {
			HandleField("valid", "boolean", "Whether the actor was found"),
			HandleField("actor", "string", "The argument exactly as given"),
		};
		Global.Functions.push_back(Method("info", "Inspect actor UDMXComponent assignment state", "dmx_component(actor):info()", {}, "DMXComponentInfo",
			"The actor's DMX components"));
		FKestFunction Add = Method("add", "Add or reuse a UDMXComponent on an actor and assign a fixture patch", "dmx_component(actor):add(params)",
			{Argument("params", EKestLuaType::Table, "DMXComponentAddParams", "Component name, patch and receive state")}, "DMXComponentInfo|nil",
			"The actor's DMX components, or nil");
		Add.ParamsClass = "DMXComponentAddParams";
		Global.Functions.push_back(Add);
		FKestFunction Configure = Method("configure", "Configure UDMXComponent fixture patch and receive state", "dmx_component(actor):configure(component, params)",
			{Argument("component", EKestLuaType::String, "string", "Name of a DMX component of the actor (ignoring case); \"\" takes the first"),
				Argument("params", EKestLuaType::Table, "DMXComponentConfigureParams", "Patch and receive state")},
			"DMXComponentInfo|nil", "The actor's DMX components, or nil when the component is not found");
		Configure.ParamsClass = "DMXComponentConfigureParams";
		Global.Functions.push_back(Configure);
		return Global;
	}

	FKestGlobal MakeSubsystemGlobal()
	{
		FKestGlobal Global;
		Global.Name = "dmx_subsystem";
		Global.Opener = Function("dmx_subsystem", "Open deterministic UDMXSubsystem conversion helpers", "dmx_subsystem()", {}, "DMXSubsystemHandle",
			"A handle; valid is false without the engine's DMX subsystem");
		Global.HandleClass = "DMXSubsystemHandle";
		Global.HandleDoc = "The engine's DMX value conversions";
		Global.HandleFields = {HandleField("valid", "boolean", "Whether the engine's DMX subsystem was found")};
		const FKestArgument DataType = TextArgument("data_type", "DMXDataType", "Signal format; any other text converts as 8 bit");
		const FKestArgument UseLSB = Argument("use_lsb", EKestLuaType::Boolean, "boolean", "Least significant byte first");
		FKestArgument Bytes = Argument("bytes", EKestLuaType::List, "integer[]",
			"Bytes 0..255, walked in table order; integers are clamped to 0..255, other values skipped, a float raises an error");
		Bytes.EntryType = EKestLuaType::Integer;
		Bytes.Max = 255;
		Global.Functions.push_back(Method("int_to_bytes", "Convert a whole number to the bytes of a signal format (works without the subsystem)", "",
			{Argument("value", EKestLuaType::Integer, "integer", "Whole number; it is clamped to the format's maximum"), DataType, UseLSB},
			"integer[]", "The bytes"));
		Global.Functions.push_back(Method("bytes_to_int", "Convert bytes to a whole number", "", {Bytes, UseLSB}, "integer",
			"The number; 0 without the subsystem"));
		Global.Functions.push_back(Method("normalized_to_bytes", "Convert a value 0..1 to the bytes of a signal format", "",
			{Argument("value", EKestLuaType::Number, "number", "Value, clamped to 0..1"), DataType, UseLSB}, "integer[]",
			"The bytes; {} without the subsystem"));
		Global.Functions.push_back(Method("bytes_to_normalized", "Convert bytes to a value 0..1", "", {Bytes, UseLSB}, "number",
			"The value; 0 without the subsystem"));
		return Global;
	}

	FKestGlobal MakeEditorGlobal()
	{
		FKestGlobal Global;
		Global.Name = "editor";
		Global.bTableOfFunctions = true;
		Global.bHeadlessOnly = true;
		Global.HandleClass = "HeadlessEditor";
		Global.HandleDoc = "Scene set-up and checks of the headless editor (kestdmx only; the real editor has no such global)";
		const FKestArgument Path = Argument("path", EKestLuaType::String, "string", "Package path (/Game/DMX/Stage) or object path");
		Global.Functions = {
			Function("create_library", "Create an empty DMX Library asset at a package path", "",
				{Argument("path", EKestLuaType::String, "string", "Package path, such as /Game/DMX/Stage")}, "boolean",
				"false when the package exists or the path is not a valid package path"),
			Function("spawn_actor", "Spawn an actor in the editor world", "",
				{Argument("name", EKestLuaType::String, "string", "Object name"), Argument("label", EKestLuaType::String, "string", "Label", true)},
				"boolean", "false when an actor of that name exists"),
			Function("undo", "Undo the last step", "", {}, "boolean", "Whether a step was undone"),
			Function("redo", "Redo the last undone step", "", {}, "boolean", "Whether a step was redone"),
			Function("undo_history", "The titles of the steps that can be undone, oldest first", "", {}, "string[]", "The titles"),
			Function("transaction_depth", "The number of open transactions", "", {}, "integer", "0 outside any call"),
			Function("dirty_packages", "The names of the packages marked dirty, sorted", "", {}, "string[]", "The package names"),
			Function("library_report", "The text report of a library, as kestdmx inspect prints it", "", {Path}, "string|nil",
				"The report, or nil when the path does not resolve"),
			Function("fail_next", "Make the next creations of an object of exactly that class answer null", "",
				{Argument("class", EKestLuaType::String, "string", "\"DMXComponent\", \"DMXEntityFixtureType\" or \"DMXEntityFixturePatch\""),
					Argument("count", EKestLuaType::Integer, "integer", "How many (default 1; 0 clears)", true)},
				"nil", ""),
			Function("fail_load", "Make loading an object path fail", "",
				{Argument("object_path", EKestLuaType::String, "string", "Object path, such as /Game/DMX/Stage.Stage"),
					Argument("fail", EKestLuaType::Boolean, "boolean", "false to load again (default true)", true)},
				"nil", ""),
		};
		return Global;
	}
}

std::vector<FKestGlobal> MakeKestDMXGlobals()
{
	return {MakeLibraryGlobal(), MakeComponentGlobal(), MakeSubsystemGlobal(), MakeEditorGlobal()};
}
