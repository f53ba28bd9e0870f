// The API schema that check and stubs work from agrees with the module: the params keys it reads
// (recorded through __index), the nine documentation records it registers, the tables it answers,
// the texts it parses, and the editor global the headless host installs. The stubs written from
// the schema are Lua and name only types they define.
#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <set>
#include <string>
#include "KestDMXRunner.h"
#include "KestDMXSchema.h"
#include "KestDMXStubs.h"
#include "KestDMXText.h"
#include "VorlithHostRecorder.h"
#include "inspection/DMXEnumText.h"
#include "library/DMXFixtureModeParams.h"

namespace
{
	std::set<std::string> GetFieldNames(const FKestClass& Class)
	{
		std::set<std::string> Names;
		for (const FKestField& Field : Class.Fields)
		{
			Names.insert(Field.Name);
		}
		return Names;
	}

	std::string Join(const std::set<std::string>& Names)
	{
		std::string Text;
		for (const std::string& Name : Names)
		{
			Text += (Text.empty() ? "" : ", ") + Name;
		}
		return Text;
	}

	// The schema's classes as a Lua table: for each params class, its keys that hold a table
	// ({kind = "table" or "list", class = ...}) or a list of strings ({kind = "strings"}).
	sol::table MakeLuaClasses(sol::state& Lua)
	{
		sol::table Classes = Lua.create_table();
		for (const FKestClass& Class : GetKestDMXSchema().Classes)
		{
			sol::table Fields = Lua.create_table();
			for (const FKestField& Field : Class.Fields)
			{
				const bool bStrings = Field.Type == EKestLuaType::List && Field.EntryType == EKestLuaType::String;
				const std::string Kind = bStrings ? "strings" : Field.Type == EKestLuaType::List ? "list" : Field.Type == EKestLuaType::Table ? "table" : "value";
				Fields[Field.Name] = Lua.create_table_with("kind", Kind, "class", Field.Class);
			}
			Classes[Class.Name] = Fields;
		}
		return Classes;
	}

	// Every key of the table is a field (or method) of the class, every field that is not optional
	// is there, and the tables under class-typed fields are checked the same way.
	void ExpectTableOfClass(const sol::table& Table, const std::string& ClassName, const std::string& Where)
	{
		const FKestSchema& Schema = GetKestDMXSchema();
		const FKestClass* Class = Schema.FindClass(ClassName);
		ASSERT_NE(Class, nullptr) << ClassName;
		std::set<std::string> Present;
		for (const auto& [Key, Value] : Table)
		{
			const std::string Name = Key.as<std::string>();
			Present.insert(Name);
			const FKestField* Field = Class->FindField(Name);
			ASSERT_NE(Field, nullptr) << Where << "." << Name << " is not in " << ClassName;
			std::string Type = Field->LuaType;
			const bool bList = Type.size() > 2 && Type.compare(Type.size() - 2, 2, "[]") == 0;
			Type = bList ? Type.substr(0, Type.size() - 2) : Type;
			if (Schema.FindClass(Type) == nullptr)
			{
				continue;
			}
			const sol::table Nested = Value.as<sol::table>();
			if (!bList)
			{
				ExpectTableOfClass(Nested, Type, Where + "." + Name);
				continue;
			}
			for (size_t Index = 1; Index <= Nested.size(); ++Index)
			{
				ExpectTableOfClass(Nested[Index], Type, Where + "." + Name + "[" + std::to_string(Index) + "]");
			}
		}
		for (const FKestField& Field : Class->Fields)
		{
			EXPECT_TRUE(Field.bOptional || Present.count(Field.Name) == 1) << Where << " lacks " << Field.Name;
		}
	}

	void ExpectHandleOfGlobal(const sol::table& Handle, const FKestGlobal& Global)
	{
		std::set<std::string> Keys;
		for (const auto& [Key, Value] : Handle)
		{
			Keys.insert(Key.as<std::string>());
		}
		std::set<std::string> Expected;
		for (const FKestField& Field : Global.HandleFields)
		{
			Expected.insert(Field.Name);
		}
		for (const FKestFunction& Function : Global.Functions)
		{
			Expected.insert(Function.Name);
		}
		EXPECT_EQ(Join(Keys), Join(Expected)) << Global.Name;
	}

	std::vector<const FKestFunction*> GetAllFunctions()
	{
		std::vector<const FKestFunction*> Functions;
		for (const FKestGlobal& Global : GetKestDMXSchema().Globals)
		{
			if (!Global.bTableOfFunctions)
			{
				Functions.push_back(&Global.Opener);
			}
			for (const FKestFunction& Function : Global.Functions)
			{
				Functions.push_back(&Function);
			}
		}
		return Functions;
	}
}

// Every key the module reads is in the schema, and every key of the schema is read: each method is
// called with params that record the keys asked of them and answer nested params where the schema
// has them.
TEST(FSchemaAgreementTest, ParamsKeysAreExactlyTheKeysTheModuleReads)
{
	FKestDMXSession Session;
	sol::state& Lua = Session.GetLua().GetState();
	Lua["schema_classes"] = MakeLuaClasses(Lua);
	const sol::table Reads = Lua.script(R"lua(
local Reads = {}
local Samples = {fixture_type = "Spot", library = "/Game/DMX/Stage", fixture_patch = "Spot1"}
local function Proxy(Class)
	Reads[Class] = Reads[Class] or {}
	return setmetatable({}, {__index = function(_, Key)
		Reads[Class][Key] = true
		local Field = schema_classes[Class][Key]
		if Field == nil then return nil end
		if Field.kind == "table" then return Proxy(Field.class) end
		if Field.kind == "list" then return {Proxy(Field.class)} end
		if Field.kind == "strings" then return {"tag"} end
		return Samples[Key]
	end})
end
assert(editor.create_library("/Game/DMX/Stage") and editor.spawn_actor("Truss"))
local L = dmx_library("/Game/DMX/Stage")
assert(L:add("fixture_type", {name = "Spot"}) and L:add("fixture_patch", {name = "Spot1", fixture_type = "Spot"}))
assert(L:add("fixture_type", Proxy("DMXFixtureTypeParams")))
assert(L:configure("fixture_type", "Spot", Proxy("DMXFixtureTypeConfigureParams")))
assert(L:add("fixture_patch", Proxy("DMXFixturePatchParams")))
assert(L:configure("fixture_patch", "Spot1", Proxy("DMXFixturePatchConfigureParams")))
assert(dmx_component("Truss"):add(Proxy("DMXComponentAddParams")))
assert(dmx_component("Truss"):configure("", Proxy("DMXComponentConfigureParams")))
return Reads
)lua");
	int Compared = 0;
	for (const FKestClass& Class : GetKestDMXSchema().Classes)
	{
		if (!Class.bParams)
		{
			continue;
		}
		const sol::optional<sol::table> ClassReads = Reads[Class.Name];
		ASSERT_TRUE(ClassReads.has_value()) << "no method read " << Class.Name;
		std::set<std::string> Read;
		for (const auto& [Key, Value] : *ClassReads)
		{
			Read.insert(Key.as<std::string>());
		}
		EXPECT_EQ(Join(Read), Join(GetFieldNames(Class))) << Class.Name;
		++Compared;
	}
	EXPECT_EQ(Compared, 11);
}

// The nine records the module registers are the schema's documented functions, word for word, and
// the stubs give each under its description; every other function is stubbed too.
TEST(FSchemaAgreementTest, DocumentedFunctionsAreInTheSchemaAndStubbed)
{
	FKestDMXSession Session;
	const TArray<FVorlithRegisteredBinding>& Bindings = FVorlithHostRecorder::Get().Bindings;
	ASSERT_EQ(Bindings.Num(), 1);
	ASSERT_EQ(Bindings[0].Docs.Num(), 9);
	const std::string Stubs = FormatLuaLSDefinitions();
	std::set<std::string> Documented;
	for (const FLuaFunctionDoc& Doc : Bindings[0].Docs)
	{
		const std::string Signature = ToUTF8(Doc.Signature);
		Documented.insert(Signature);
		const FKestFunction* Found = nullptr;
		for (const FKestFunction* Function : GetAllFunctions())
		{
			Found = Function->DocSignature == Signature ? Function : Found;
		}
		ASSERT_NE(Found, nullptr) << Signature << " is not in the schema";
		EXPECT_EQ(Found->Doc, ToUTF8(Doc.Description)) << Signature;
		const size_t Description = Stubs.find("---" + Found->Doc + "\n");
		ASSERT_NE(Description, std::string::npos) << Signature;
		const size_t Declaration = Stubs.find("\nfunction ", Description);
		ASSERT_NE(Declaration, std::string::npos);
		const std::string Line = Stubs.substr(Declaration + 1, Stubs.find('\n', Declaration + 1) - Declaration - 1);
		EXPECT_TRUE(std::regex_search(Line, std::regex("[:. ]" + Found->Name + "\\("))) << Signature << " is declared as " << Line;
	}
	for (const FKestFunction* Function : GetAllFunctions())
	{
		EXPECT_TRUE(Function->DocSignature.empty() || Documented.count(Function->DocSignature) == 1) << Function->DocSignature << " is documented nowhere";
		EXPECT_TRUE(std::regex_search(Stubs, std::regex("\nfunction ([A-Za-z_]+[:.])?" + Function->Name + "\\("))) << Function->Name << " is not stubbed";
	}
}

// The handles, add results, inspection tables and component info the module answers, and the
// editor global, have exactly the schema's keys.
TEST(FSchemaAgreementTest, AnswersHaveTheSchemaKeys)
{
	FKestDMXSession Session;
	sol::state& Lua = Session.GetLua().GetState();
	const sol::table Answers = Lua.script(R"lua(
assert(editor.create_library("/Game/DMX/Stage") and editor.spawn_actor("Truss"))
local L = dmx_library("/Game/DMX/Stage")
local Type = L:add("fixture_type", {name = "Bar", modes = {{functions = {{attribute = "Dimmer"}, {attribute = "Pan", data_type = "16bit"}},
	matrix = {enabled = true, x_cells = 2, cell_attributes = {{attribute = "Red"}}}}}})
local Patch = L:add("fixture_patch", {name = "Bar1", fixture_type = "Bar", tags = {"floor"}})
local C = dmx_component("Truss")
return {library = L, missing = dmx_library("/Game/Nope"), type = Type, patch = Patch, info = L:info(), missing_info = dmx_library("/Game/Nope"):info(),
	component = C, component_info = C:add({library = "/Game/DMX/Stage", fixture_patch = "Bar1"}), missing_component_info = dmx_component("Nobody"):info(),
	subsystem = dmx_subsystem()}
)lua");
	const FKestSchema& Schema = GetKestDMXSchema();
	ExpectHandleOfGlobal(Answers["library"], *Schema.FindGlobal("dmx_library"));
	ExpectHandleOfGlobal(Answers["missing"], *Schema.FindGlobal("dmx_library"));
	ExpectHandleOfGlobal(Answers["component"], *Schema.FindGlobal("dmx_component"));
	ExpectHandleOfGlobal(Answers["subsystem"], *Schema.FindGlobal("dmx_subsystem"));
	ExpectTableOfClass(Answers["type"], "DMXFixtureTypeAddResult", "type");
	ExpectTableOfClass(Answers["patch"], "DMXFixturePatchAddResult", "patch");
	ExpectTableOfClass(Answers["info"], "DMXLibraryInfo", "info");
	ExpectTableOfClass(Answers["missing_info"], "DMXLibraryInfo", "missing_info");
	ExpectTableOfClass(Answers["component_info"], "DMXComponentInfo", "component_info");
	ExpectTableOfClass(Answers["missing_component_info"], "DMXComponentInfo", "missing_component_info");
	const sol::table Patches = Answers["info"]["fixture_patches"];
	ASSERT_EQ(Patches.size(), 1u);
	EXPECT_GT(sol::table(Patches[1]["attribute_defaults"]).size(), 0u) << "the attribute lists were compared with entries";

	std::set<std::string> EditorFunctions;
	for (const auto& [Key, Value] : Lua["editor"].get<sol::table>())
	{
		EditorFunctions.insert(Key.as<std::string>());
	}
	std::set<std::string> Expected;
	for (const FKestFunction& Function : Schema.FindGlobal("editor")->Functions)
	{
		Expected.insert(Function.Name);
	}
	EXPECT_EQ(Join(EditorFunctions), Join(Expected));
}

// The data-type and distribution texts of the schema are exactly those the module's parsers take
// (and the texts info() reports are exactly those it writes).
TEST(FSchemaAgreementTest, TextSetsAreTheModuleParsersTexts)
{
	const FKestSchema& Schema = GetKestDMXSchema();
	const FKestTextSet& DataTypes = *Schema.FindTextSet("DMXDataType");
	for (const std::string& Text : DataTypes.Accepted)
	{
		for (const std::string& Spelling : {Text, ToLowerASCII(Text)})
		{
			const EDMXFixtureSignalFormat Parsed = ParseSignalFormat(ToEngine(Spelling), static_cast<EDMXFixtureSignalFormat>(7));
			EXPECT_EQ(DataTypes.GetValue(Spelling), SignalFormatToText(Parsed)) << Spelling;
			EXPECT_NE(static_cast<int>(Parsed), 7) << Spelling;
		}
	}
	for (const char* Text : {"16-bit", "E64Bit", "8 bit", "", "bit16"})
	{
		EXPECT_FALSE(DataTypes.Accepts(Text)) << Text;
		EXPECT_EQ(static_cast<int>(ParseSignalFormat(ToEngine(Text), EDMXFixtureSignalFormat::E24Bit)), 2) << Text;
	}

	const FKestTextSet& Distributions = *Schema.FindTextSet("DMXDistribution");
	const EDMXPixelMappingDistribution Current = static_cast<EDMXPixelMappingDistribution>(15);
	for (const std::string& Text : Distributions.Accepted)
	{
		EXPECT_EQ(Text, PixelMappingDistributionToText(ParsePixelMappingDistribution(ToEngine(ToLowerASCII(Text)), Current)));
	}
	EXPECT_EQ(Distributions.Accepted.size() + Distributions.Rejected.size(), 16u) << "every name of the engine's enumeration is in one list";
	for (const std::string& Text : Distributions.Rejected)
	{
		EXPECT_EQ(ParsePixelMappingDistribution(ToEngine(Text), Current), Current) << Text;
	}

	std::set<std::string> Written;
	for (int Value = 0; Value < 256; ++Value)
	{
		Written.insert(PixelMappingDistributionToText(static_cast<EDMXPixelMappingDistribution>(Value)));
	}
	const std::vector<std::string>& Reported = Schema.FindTextSet("DMXDistributionName")->Accepted;
	EXPECT_EQ(Join(Written), Join(std::set<std::string>(Reported.begin(), Reported.end())));
	std::set<std::string> Formats;
	for (int Value = 0; Value < 256; ++Value)
	{
		Formats.insert(SignalFormatToText(static_cast<EDMXFixtureSignalFormat>(Value)));
	}
	const std::vector<std::string>& FormatNames = Schema.FindTextSet("DMXSignalFormatName")->Accepted;
	EXPECT_EQ(Join(Formats), Join(std::set<std::string>(FormatNames.begin(), FormatNames.end())));
}

// The definitions load as Lua and name no type they do not define; the luacheck configuration is
// Lua that declares exactly the globals and the editor global's functions.
TEST(FSchemaAgreementTest, StubsAreLuaAndComplete)
{
	const std::string Stubs = FormatLuaLSDefinitions();
	sol::state Lua;
	Lua.open_libraries(sol::lib::base, sol::lib::string, sol::lib::table);
	EXPECT_TRUE(Lua.load(Stubs).valid());

	std::set<std::string> Defined = {"string", "number", "integer", "boolean", "table", "nil"};
	const std::regex Definition("---@(class|alias) ([A-Za-z]+)");
	for (std::sregex_iterator It(Stubs.begin(), Stubs.end(), Definition), End; It != End; ++It)
	{
		Defined.insert((*It)[2]);
	}
	const std::regex Use("---@(field|param|return) (?:[a-z_]+\\??\\s)?([A-Za-z\"_|\\[\\]]+)");
	int Uses = 0;
	for (std::sregex_iterator It(Stubs.begin(), Stubs.end(), Use), End; It != End; ++It, ++Uses)
	{
		std::string Types = (*It)[2];
		std::regex Part("[A-Za-z]+|\"[a-z_]+\"");
		for (std::sregex_iterator P(Types.begin(), Types.end(), Part), PEnd; P != PEnd; ++P)
		{
			const std::string Name = (*P)[0];
			EXPECT_TRUE(Name.front() == '"' || Defined.count(Name) == 1) << Name << " in " << (*It)[0];
		}
	}
	EXPECT_GT(Uses, 150);

	sol::state Config;
	Config.open_libraries(sol::lib::base);
	Config.script(FormatLuacheckConfig());
	EXPECT_EQ(Config["std"].get<std::string>(), "lua54");
	std::set<std::string> Globals;
	std::set<std::string> EditorFields;
	for (const auto& [Key, Value] : Config["read_globals"].get<sol::table>())
	{
		if (Key.is<std::string>())
		{
			Globals.insert(Key.as<std::string>());
			for (const auto& [Index, Field] : Value.as<sol::table>()["fields"].get<sol::table>())
			{
				EditorFields.insert(Field.as<std::string>());
			}
		}
		else
		{
			Globals.insert(Value.as<std::string>());
		}
	}
	EXPECT_EQ(Join(Globals), "dmx_component, dmx_library, dmx_subsystem, editor");
	std::set<std::string> Expected;
	for (const FKestFunction& Function : GetKestDMXSchema().FindGlobal("editor")->Functions)
	{
		Expected.insert(Function.Name);
	}
	EXPECT_EQ(Join(EditorFields), Join(Expected));
}
