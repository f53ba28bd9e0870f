// The byte format that kest_fuzz turns into Lua calls. Every byte string is a valid program: a byte
// that runs out reads as 0, and every choice is taken modulo the number of choices. The inputs of
// fuzz/corpus and the entries of fuzz/dmx.dict are written in it.
//
// Program: up to MaxStatements statements, each starting with an operation byte (DecodeOp).
//   call global:  op, global, form, argc, [self value when form is SelfValue], args...
//   call method:  op, slot, method, form, argc, [self value], args...
//   (argc: typed or free arguments, see "Typed mode" below)
//   undo / redo / collect garbage: op
//   memory headroom: op, headroom index (MemoryHeadrooms)
// Value: a tag byte (EValueTag) and its payload, see the comments of EValueTag.
#pragma once

#include <cstdint>
#include <limits>

namespace KestFuzz
{
	enum class EOp : uint8_t
	{
		CallGlobal,
		CallMethod,
		Undo,
		Redo,
		CollectGarbage,
		MemoryHeadroom,
	};

	// Calls get most of the operation byte's values, so that random bytes mostly call something.
	inline EOp DecodeOp(uint8_t Byte)
	{
		const uint8_t Choice = Byte % 16;
		if (Choice < 3)
		{
			return EOp::CallGlobal;
		}
		if (Choice < 12)
		{
			return EOp::CallMethod;
		}
		if (Choice == 12)
		{
			return EOp::Undo;
		}
		if (Choice == 13)
		{
			return EOp::Redo;
		}
		return Choice == 14 ? EOp::CollectGarbage : EOp::MemoryHeadroom;
	}
	// How the function is called.
	enum class ECallForm : uint8_t
	{
		Colon,      // h:method(args): the handle first
		Dot,        // h.method(args): no handle
		SelfValue,  // h.method(value, args): a value of the program in the handle's place
		Coroutine,  // h:method(args), resumed inside a fresh coroutine
		Count,
	};

	enum class EValueTag : uint8_t
	{
		Nil,
		False,
		True,
		SmallInt,     // 1 byte, signed
		EdgeInt,      // 1 byte: index into EdgeInts
		RawInt,       // 8 bytes, little endian
		EdgeFloat,    // 1 byte: index into EdgeFloats
		RawFloat,     // 8 bytes, the IEEE bits, little endian
		Word,         // 1 byte: index into Words
		RawString,    // 1 byte length, then that many bytes
		List,         // 1 byte count (mod 16), then that many values at 1..n
		Params,       // 1 byte count (mod 16), then that many (1 byte key index into Keys, value)
		Map,          // 1 byte count (mod 8), then that many (key value, value); nil and NaN keys are dropped
		Userdata,     // 1 byte variant (EMetaVariant), then its payload
		MetaTable,    // 1 byte variant (EMetaVariant), then its payload, then a Params value for the raw content
		Handle,       // 1 byte: slot of the handle pool
		HugeList,     // 2 bytes count, 1 byte fill (EHugeFill), then the fill value when the fill is Value
		DeepChain,    // 1 byte key index into Keys, 1 byte depth (x16), then the innermost value
		Function,     // 1 byte: 0 a C function doing nothing, 1 the global dmx_library, 2 a method of slot 0
		Thread,       // a new coroutine
		LightUserdata,
		WordWithTail, // 1 byte word index, then a RawString payload appended to the word
		LongWord,     // 1 byte word index, 1 byte repeat count (x64)
		Count,
	};

	// What the metatable of a Userdata or MetaTable value does.
	enum class EMetaVariant : uint8_t
	{
		None,          // no metatable (a MetaTable value then is a plain table)
		IndexTable,    // __index = the value that follows when it is a table, else an empty table
		IndexReturns,  // __index = function answering the value that follows, for every key
		RaiseTable,    // __index raises the program's unique error table
		RaiseString,   // __index raises the program's unique error string
		RaiseOnKey,    // 1 byte key index: __index raises the unique table for that key, else answers the value that follows
		Reentrant,     // __index calls the module (a sub-call, see below) and answers the value that follows
		OddName,       // __name = the value that follows, __index = nil, __metatable = false
		Collect,       // __index runs a full garbage collection and answers the value that follows
		Count,
	};
	// Reentrant payload: argc (mod 4), answered value, target (0 global, 1 method), global | slot+method,
	// form (0 colon, 1 dot), args.

	enum class EHugeFill : uint8_t
	{
		Index,        // the integer i
		Byte,         // i % 256
		HalfFloat,    // i + 0.5
		Value,        // one value of the program, repeated (count capped at MaxHugeTables for a table)
		Words,        // Words[i % n]
		EmptyTables,  // a new empty table per entry (count capped at MaxHugeTables)
		Count,
	};

	constexpr int MaxStatements = 48;
	constexpr int MaxDepth = 6;
	constexpr int MaxHugeTables = 64;
	constexpr int MaxDeepChain = 255 * 16;
	constexpr int MaxArgs = 6;

	constexpr int64_t EdgeInts[] = {
		0, 1, -1, 2, 3, 7, 255, 256, 300, 511, 512, 513, 600, 65535, 65536, 16777215, 16777216,
		2147483647, -2147483647 - 1, 2147483648LL, -2147483649LL, 4294967295LL, 4294967296LL,
		(1LL << 32) | 7, std::numeric_limits<int64_t>::max(), std::numeric_limits<int64_t>::min(),
		std::numeric_limits<int64_t>::max() - 1, -2, -3, -4, -5, 1000000000000LL,
	};

	constexpr double EdgeFloats[] = {
		0.0, -0.0, 0.5, 1.0, -1.0, 2.5, 2.9, -2.9, 3.0, 255.9, 1e12, -1e12, 1e308, -1e308,
		std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
		std::numeric_limits<double>::quiet_NaN(), -std::numeric_limits<double>::quiet_NaN(),
		std::numeric_limits<double>::denorm_min(), std::numeric_limits<double>::max(),
		std::numeric_limits<double>::lowest(), std::numeric_limits<double>::epsilon(),
		2147483647.5, 2147483648.0, -2147483648.0, -2147483649.0, 4294967295.0, 9.2233720368547758e18,
		0.999999, 1.0000001, 1e-300, 512.0,
	};

	// Texts scripts use: kinds, entity, component and actor names of the fixture scene, data types,
	// distributions, paths, and malformed text.
	inline const char* const Words[] = {
		"fixture_type", "fixture_patch", "FIXTURE_TYPE", "Fixture_Patch", "fixture", "",
		"Spot", "spot", "Wash", "Pixel", "Dup", "DUP", "Spot1", "Front", "FRONT", "Wash1", "OtherPatch",
		"DMXComponent", "dmxcomponent", "DMX2", "DMX3", "Missing",
		"StageLeft", "Stage Left", "Bare", "Rig", "Truss Rig", "stageleft",
		"8bit", "E16Bit", "16BIT", "24bit", "e32bit", "E64Bit", "9bit",
		"TopLeftToRight", "TopLeftToBottom", "TOPLEFTTOCLOCKWISE", "TopLeftToAntiClockwise", "TopRightToLeft",
		"BottomLeftToTop", "BottomRightToClockwise", "Top Left To Bottom",
		"/Game/DMX/FuzzLib", "/Game/DMX/FuzzLib.FuzzLib", "/Game/DMX/Other", "/Game/DMX/Missing",
		"/Game/My.Folder/FuzzLib", "/Game/DMX/FuzzLib.Other", "/Engine/Transient.EditorEngine", "/Game/DMX/", "/", ".",
		"Dimmer", "Pan", "Tilt", "Red", "Color", "Mode", "FixtureType", "FixturePatch", "front",
		"\xff\xfe", "\xc3", "\xed\xa0\x80", "\xc0\xaf", "\xf0\x9f\x92\xa1", "Sp\xc3\xb6t", "a\x01\x7f",
		"1", "3", "true", "nil", " ", "%s%d%n", "\x1b[31m",
	};
	constexpr int NumWords = static_cast<int>(sizeof(Words) / sizeof(Words[0]));

	// Every key a params table of the module may hold.
	inline const char* const Keys[] = {
		"name", "category", "modes", "fixture_type", "active_mode_index", "universe", "starting_channel",
		"tags", "receive_dmx_in_editor", "editor_color", "r", "g", "b", "a", "auto_channel_span",
		"channel_span", "functions", "matrix", "attribute", "description", "default_value", "channel",
		"data_type", "use_lsb", "physical_default_value", "physical_from", "physical_to", "enabled",
		"x_cells", "y_cells", "first_cell_channel", "distribution", "cell_attributes", "library",
		"fixture_patch", "receive", "valid", "x",
	};
	constexpr int NumKeys = static_cast<int>(sizeof(Keys) / sizeof(Keys[0]));
	// The kind of value each key takes in typed mode (see ETypedKind), one letter per key of Keys.
	constexpr char KeyKinds[] = "ssMsnnnLbtnnnnbnMtssnnsbnnnbnnnsMssbbn";
	static_assert(sizeof(KeyKinds) - 1 == sizeof(Keys) / sizeof(Keys[0]), "one kind per key");

	// Typed mode (argc byte with its high bit clear): the arguments follow the called function's
	// signature, each read as a value of its kind: a selector byte (mod 16) picks one of the kind's
	// forms below and is followed by that form's payload (as for the value tag named); selector 15
	// escapes to any value (a full tagged value follows). The low bit of the argc byte adds one more
	// argument of any kind at the end. With the high bit set (free mode) the argc byte gives the
	// number of arguments in its low seven bits (mod MaxArgs + 1), each any value.
	//   s string:     0-9 Word, 10-11 RawString, 12-13 WordWithTail, 14 LongWord
	//   n number:     0-5 SmallInt, 6-9 EdgeInt, 10-12 EdgeFloat, 13 RawInt, 14 RawFloat
	//   i integer:    0-7 SmallInt, 8-12 EdgeInt, 13-14 RawInt
	//   b boolean:    even false, odd true, no payload
	//   t params:     0-9 typed params (count mod 16, then key index and a value of the key's kind),
	//                 10-11 MetaTable (variant, its payload, typed params), 12 Userdata, 13 Map, 14 Handle
	//   y byte table: 0-9 list (count mod 16) of i values, 10-11 HugeList, 12 Map, 13 Userdata, 14 List
	//   L string list: 0-11 list (count mod 16) of s values, 12 HugeList, 13 Userdata, 14 Map
	//   M params list: 0-11 list (count mod 16) of t values, 12 HugeList, 13 Userdata, 14 List
	constexpr uint8_t FreeArgsFlag = 0x80;
	constexpr uint8_t TypedEscape = 15;

	// A function a program calls: its name, its arguments (after the handle, for a method) in the
	// letters of typed mode, and the answer it gives: h a handle, r a record with "valid", o nil or
	// records and lists, B a boolean, y a byte table, i an integer, f a float.
	struct FCallTarget
	{
		const char* Name;
		const char* Signature;
		char Answer;
	};
	// The global a byte picks (mod 3); each answers a handle of the EHandleKind of the same index.
	inline const FCallTarget Globals[] = {{"dmx_library", "s", 'h'}, {"dmx_component", "s", 'h'}, {"dmx_subsystem", "", 'h'}};

	enum class EHandleKind : uint8_t
	{
		Library,
		Component,
		Subsystem,
	};
	// The methods of each kind of handle, one picked by a byte (mod Count).
	struct FHandleMethods
	{
		const char* KindName;
		int Count;
		FCallTarget Methods[4];
	};
	inline const FHandleMethods HandleMethods[] = {
		{"library", 4, {{"info", "", 'r'}, {"add", "st", 'o'}, {"configure", "sst", 'B'}, {"remove", "ss", 'B'}}},
		{"component", 3, {{"info", "", 'r'}, {"add", "t", 'o'}, {"configure", "st", 'o'}}},
		{"subsystem", 4, {{"int_to_bytes", "isb", 'y'}, {"bytes_to_int", "yb", 'i'}, {"normalized_to_bytes", "nsb", 'y'}, {"bytes_to_normalized", "yb", 'f'}}},
	};

	// The handles every program starts with, in slots from 0 on; handles answered by the program's
	// own global calls follow, up to MaxHandles.
	struct FInitialHandle
	{
		EHandleKind Kind;
		const char* Argument;
	};
	inline const FInitialHandle InitialHandles[] = {
		{EHandleKind::Library, "/Game/DMX/FuzzLib"},
		{EHandleKind::Library, "/Game/DMX/FuzzLib.FuzzLib"},
		{EHandleKind::Library, "/Game/DMX/Other"},
		{EHandleKind::Library, "/Game/DMX/Missing"},
		{EHandleKind::Component, "StageLeft"},
		{EHandleKind::Component, "Truss Rig"},
		{EHandleKind::Component, "Bare"},
		{EHandleKind::Component, "Missing"},
		{EHandleKind::Subsystem, nullptr},
	};
	constexpr int MaxHandles = 32;

	// Extra room the Lua allocator grants during a call, in bytes; 0 means no limit.
	constexpr uint32_t MemoryHeadrooms[] = {0, 1, 64, 256, 1024, 4096, 16384, 65536};
	constexpr int NumMemoryHeadrooms = static_cast<int>(sizeof(MemoryHeadrooms) / sizeof(MemoryHeadrooms[0]));
}
