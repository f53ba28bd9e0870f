// The Lua API the module installs (and the headless editor's own "editor" global), described once:
// every global, method and argument, every params table with its keys, types, defaults, ranges and
// accepted texts, and every result table. `kestdmx check` reads params against it and `kestdmx stubs`
// writes editor definitions from it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// The Lua type a key or argument is read as. Table accepts a table or a full userdata (a userdata
// is read through its metatable); List is a Table whose values are walked, each an Entry.
enum class EKestLuaType
{
	Nil,
	Boolean,
	Number,
	Integer,
	String,
	Table,
	List,
	Function,
};

// A set of texts a key accepts, compared ignoring letter case. Rejected are texts that look as if
// they should work but change nothing (names of the engine's enumeration that scripts cannot set).
struct FKestTextSet
{
	std::string Alias;
	std::string Doc;
	std::vector<std::string> Accepted;
	std::vector<std::string> Rejected;
	// What each accepted text selects, by position; empty when each text selects itself.
	std::vector<std::string> Values;

	bool Accepts(std::string_view Text) const;
	bool Rejects(std::string_view Text) const;
	// The value an accepted text selects (the enumerator's name); empty for a text not accepted.
	std::string GetValue(std::string_view Text) const;
};

// What the module uses when a key is absent or of another Lua type.
enum class EKestDefault
{
	// The value in Literal (a Lua literal: "\"FixtureType\"", "1", "false", "\"\"").
	Fixed,
	// The setting keeps the value it has.
	Current,
	// Nothing is applied.
	None,
};

struct FKestField
{
	std::string Name;
	EKestLuaType Type = EKestLuaType::Nil;
	// The type written into the editor definitions ("integer", "DMXModeParams[]", "DMXDataType").
	std::string LuaType;
	std::string Doc;

	// Params keys only.
	EKestDefault Default = EKestDefault::None;
	std::string Literal;
	// Integer keys: the number is truncated toward zero to 32 bits, then clamped to Min..Max.
	long long Min = 0;
	long long Max = 0;
	// String keys whose text is parsed; empty for free text.
	std::string TextSet;
	// Table keys: the class of the table; List keys: the class of each table entry.
	std::string Class;
	// List keys: the Lua type an entry must have to count (Table or String); others are skipped.
	EKestLuaType EntryType = EKestLuaType::Nil;
	// The key is read only when this other key holds a string.
	std::string Requires;
	// Other spellings people use for this key, for suggestions.
	std::vector<std::string> Synonyms;

	// Result fields only: the key can be missing (nil) in a result.
	bool bOptional = false;
};

// A params table or a result table.
struct FKestClass
{
	std::string Name;
	std::string Doc;
	std::vector<FKestField> Fields;
	bool bParams = false;

	const FKestField* FindField(std::string_view FieldName) const;
};

// One argument of a global or method (the handle of a method call is not listed).
struct FKestArgument
{
	std::string Name;
	EKestLuaType Type = EKestLuaType::Nil;
	std::string LuaType;
	std::string Doc;
	bool bOptional = false;
	// String arguments that are parsed.
	std::string TextSet;
	// List arguments: the entries that count (integers), and the range they are clamped to.
	EKestLuaType EntryType = EKestLuaType::Nil;
	long long Min = 0;
	long long Max = 0;
};

// A params class selected by the kind argument ("fixture_type" or "fixture_patch").
struct FKestKindParams
{
	std::string Kind;
	std::string ParamsClass;
	std::string ResultType;
};

struct FKestFunction
{
	std::string Name;
	std::string Doc;
	// The documentation record the module registers with the host, when it documents this function.
	std::string DocSignature;
	std::vector<FKestArgument> Arguments;
	// The argument that selects the params class, and the classes per kind (library add, configure).
	std::string KindArgument;
	std::vector<FKestKindParams> Kinds;
	// The params class of a params argument that does not depend on a kind (component add, configure).
	std::string ParamsClass;
	std::string ResultType;
	std::string ResultDoc;
	// Called with ':' on a handle (the handle comes first).
	bool bMethod = false;
};

// A global: a function answering a handle table with fields and methods, or (the editor global) a
// table of functions.
struct FKestGlobal
{
	std::string Name;
	FKestFunction Opener;
	std::string HandleClass;
	std::string HandleDoc;
	std::vector<FKestField> HandleFields;
	std::vector<FKestFunction> Functions;
	bool bTableOfFunctions = false;
	// Installed by the headless editor only; the real editor has no such global.
	bool bHeadlessOnly = false;

	const FKestFunction* FindFunction(std::string_view FunctionName) const;
};

struct FKestSchema
{
	std::vector<FKestGlobal> Globals;
	std::vector<FKestClass> Classes;
	std::vector<FKestTextSet> TextSets;

	const FKestGlobal* FindGlobal(std::string_view Name) const;
	const FKestClass* FindClass(std::string_view Name) const;
	const FKestTextSet* FindTextSet(std::string_view Alias) const;
};

// The one schema of the Lua API.
const FKestSchema& GetKestDMXSchema();

// Parts of the schema, each built in its own file.
std::vector<FKestTextSet> MakeKestDMXTextSets();
std::vector<FKestClass> MakeKestDMXParamsClasses();
std::vector<FKestClass> MakeKestDMXResultClasses();
std::vector<FKestGlobal> MakeKestDMXGlobals();

// Lower case, for comparing texts ignoring ASCII letter case as the engine does.
std::string ToLowerASCII(std::string_view Text);
