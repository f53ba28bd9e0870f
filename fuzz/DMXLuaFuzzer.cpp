// kest_fuzz: turns its input bytes (fuzz/DMXFuzzFormat.h) into a sequence of calls of the module's
// three Lua globals and of every handle method, against a fresh headless editor holding a small
// fixture scene, and checks after every call that:
// - a Lua error is one the module may give: sol2's argument error, the byte-table float error, the
//   very value a script metamethod raised, or "not enough memory";
// - a call that succeeds answers exactly one value, of the kind the method answers;
// - no undo transaction is left open and the Lua stack is back where it was.
// Anything else is printed and ends the process with abort(), so that libFuzzer keeps the input.
// The sanitizers report memory and undefined-behaviour faults on their own.
//
// A summary of what was called and which error kinds were seen is printed at exit.

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "DMXFuzzFormat.h"
#include "Editor.h"
#include "Editor/TransBuffer.h"
#include "KestDMXRunner.h"
#include "UObject/HeadlessObjectRegistry.h"
#include "host/VorlithLua.h"

using namespace KestFuzz;

namespace
{
	// Lua allocations, with a ceiling that a program can lower for the duration of a call.
	struct FFuzzAllocator
	{
		size_t Used = 0;
		size_t Limit = SIZE_MAX;
	};
	FFuzzAllocator* ActiveAllocator = nullptr;

	void* FuzzAllocate(void* UserData, void* Block, size_t OldSize, size_t NewSize)
	{
		FFuzzAllocator& Allocator = *static_cast<FFuzzAllocator*>(UserData);
		OldSize = Block == nullptr ? 0 : OldSize;
		if (NewSize == 0)
		{
			std::free(Block);
			Allocator.Used -= OldSize;
			return nullptr;
		}
		if (NewSize > OldSize && Allocator.Used - OldSize + NewSize > Allocator.Limit)
		{
			return nullptr;
		}
		void* Resized = std::realloc(Block, NewSize);
		Allocator.Used = Resized != nullptr ? Allocator.Used - OldSize + NewSize : Allocator.Used;
		return Resized;
	}

	enum class EOutcome : uint8_t
	{
		Answered,
		ArgumentError,
		ByteFloatError,
		RaisedTable,
		RaisedString,
		OutOfMemory,
		Count,
	};
	const char* const OutcomeNames[] = {"answered", "argument error", "byte-table float error", "raised table", "raised string", "not enough memory"};
	const char* const FormNames[] = {"colon", "dot", "self value", "coroutine"};

	const char ByteFloatMessage[] = "stack index -1, expected number, received number: not a numeric type that fits exactly an integer (number maybe has significant decimals)";
	const char UniqueErrorText[] = "kest_fuzz: the error a script metamethod raised";

	using FCount = unsigned long long;
	struct FFuzzStats
	{
		FCount Inputs = 0, Statements = 0, Calls = 0, ReentrantCalls = 0, Undos = 0, Redos = 0, LimitedCalls = 0;
		std::map<std::string, FCount> CallsByTarget;
		FCount CallsByForm[static_cast<int>(ECallForm::Count)] = {};
		FCount Outcomes[static_cast<int>(EOutcome::Count)] = {};
		// Error kinds: the outcome, and for sol2's messages the text before the first ':'.
		std::map<std::string, FCount> ErrorKinds;
	};
	FFuzzStats Stats;

	void CountErrorKind(const std::string& Kind)
	{
		const bool bRoom = Stats.ErrorKinds.size() < 400 || Stats.ErrorKinds.count(Kind) != 0;
		++Stats.ErrorKinds[bRoom ? Kind : "(other kinds)"];
	}

	void PrintSummary()
	{
		if (Stats.Inputs == 0)
		{
			return;
		}
		std::fprintf(stderr, "\n== kest_fuzz summary ==\ninputs %llu, statements %llu, calls %llu, reentrant calls %llu, undo %llu, redo %llu, calls under a memory ceiling %llu\ncalls by target:\n",
			Stats.Inputs, Stats.Statements, Stats.Calls, Stats.ReentrantCalls, Stats.Undos, Stats.Redos, Stats.LimitedCalls);
		for (const auto& [Target, Count] : Stats.CallsByTarget)
		{
			std::fprintf(stderr, "  %-36s %llu\n", Target.c_str(), Count);
		}
		const auto PrintCounts = [](const char* Title, const char* const* Names, const FCount* Counts, int Num)
		{
			std::fprintf(stderr, "%s", Title);
			for (int Index = 0; Index < Num; ++Index)
			{
				std::fprintf(stderr, " %s %llu;", Names[Index], Counts[Index]);
			}
		};
		PrintCounts("calls by form:", FormNames, Stats.CallsByForm, static_cast<int>(ECallForm::Count));
		PrintCounts("\noutcomes:", OutcomeNames, Stats.Outcomes, static_cast<int>(EOutcome::Count));
		std::fprintf(stderr, "\ndistinct error kinds: %zu\n", Stats.ErrorKinds.size());
		for (const auto& [Kind, Count] : Stats.ErrorKinds)
		{
			std::fprintf(stderr, "  %8llu  %s\n", Count, Kind.c_str());
		}
	}

	// Reads the input; past its end every byte is 0.
	struct FInputReader
	{
		const uint8_t* Data = nullptr;
		size_t Size = 0;
		size_t Position = 0;

		bool IsAtEnd() const { return Position >= Size; }
		uint8_t Byte() { return Position < Size ? Data[Position++] : 0; }
		uint64_t Bits64()
		{
			uint64_t Value = 0;
			for (int Shift = 0; Shift < 64; Shift += 8)
			{
				Value |= static_cast<uint64_t>(Byte()) << Shift;
			}
			return Value;
		}
	};

	std::string ToBytes(lua_State* S, int Index)
	{
		size_t Length = 0;
		const char* Text = lua_tolstring(S, Index, &Length);
		return std::string(Text, Length);
	}

	// ---- Functions the program's values carry ----

	int DoNothing(lua_State* L)
	{
		return 0;
	}

	int ReentrantBudget = 0;

	// Calls the module while the module is reading a params table: the callee and its arguments are
	// the upvalues from 3 on. An error of the inner call travels out through the outer one.
	void CallModule(lua_State* L)
	{
		--ReentrantBudget;
		++Stats.ReentrantCalls;
		int NumArgs = 0;
		while (NumArgs < 250 && lua_type(L, lua_upvalueindex(4 + NumArgs)) != LUA_TNONE)
		{
			++NumArgs;
		}
		luaL_checkstack(L, NumArgs + 2, "kest_fuzz reentrant call");
		const int Top = lua_gettop(L);
		for (int Index = 0; Index <= NumArgs; ++Index)
		{
			lua_pushvalue(L, lua_upvalueindex(3 + Index));
		}
		lua_call(L, NumArgs, 0);
		if (lua_gettop(L) != Top)
		{
			std::fprintf(stderr, "kest_fuzz: a reentrant call left the stack at %d instead of %d\n", lua_gettop(L), Top);
			std::abort();
		}
	}

	// The __index of a script metatable. Upvalues: the EMetaVariant, the value answered or raised,
	// then for RaiseOnKey the key that raises and the answer for other keys, for Reentrant the callee
	// and its arguments.
	int ScriptIndex(lua_State* L)
	{
		const EMetaVariant Variant = static_cast<EMetaVariant>(lua_tointeger(L, lua_upvalueindex(1)));
		if (Variant == EMetaVariant::Collect)
		{
			lua_gc(L, LUA_GCCOLLECT);
		}
		else if (Variant == EMetaVariant::Reentrant && ReentrantBudget > 0)
		{
			CallModule(L);
		}
		const bool bOtherKey = Variant == EMetaVariant::RaiseOnKey && !lua_rawequal(L, 2, lua_upvalueindex(3));
		const bool bRaise = !bOtherKey && (Variant == EMetaVariant::RaiseTable || Variant == EMetaVariant::RaiseString || Variant == EMetaVariant::RaiseOnKey);
		lua_pushvalue(L, lua_upvalueindex(bOtherKey ? 4 : 2));
		return bRaise ? lua_error(L) : 1;
	}

	// "stack index N, expected T, received U", with a userdata's __name text shown as such.
	std::string DescribeArgumentError(const std::string& Message)
	{
		const std::string Head = Message.substr(0, Message.find(':'));
		const size_t Received = Head.find(", received ");
		if (Received == std::string::npos)
		{
			return Head;
		}
		const char* const TypeNames[] = {"no value", "nil", "boolean", "number", "string", "table", "function", "userdata", "thread", "lightuserdata"};
		const bool bTypeName = std::find(std::begin(TypeNames), std::end(TypeNames), Head.substr(Received + 11)) != std::end(TypeNames);
		return bTypeName ? Head : Head.substr(0, Received) + ", received a userdata's __name";
	}

	struct FHandleSlot
	{
		int Ref = LUA_NOREF;
		EHandleKind Kind = EHandleKind::Library;
	};

	// One input being run.
	struct FProgram
	{
		lua_State* L = nullptr;
		FInputReader In;
		std::vector<FHandleSlot> Handles;
		int ErrorTableRef = LUA_NOREF;
		int ErrorStringRef = LUA_NOREF;
		int ValueBudget = 2000;
		uint32_t Headroom = 0;
		int StatementIndex = 0;
		std::string CurrentCall;

		void Check(bool bHolds, const char* What, std::string_view Detail = {})
		{
			if (!bHolds)
			{
				std::fprintf(stderr, "\n==== kest_fuzz oracle violation ====\nstatement %d: %s\n%s\n%.*s\n", StatementIndex, CurrentCall.c_str(), What, static_cast<int>(Detail.size()), Detail.data());
				std::abort();
			}
		}

		void PushRef(int Ref) { lua_rawgeti(L, LUA_REGISTRYINDEX, Ref); }
		void PushHandle(int Slot) { PushRef(Handles[static_cast<size_t>(Slot) % Handles.size()].Ref); }

		// Reads a callee and pushes its function and, for a method, its handle after it.
		const FCallTarget& PushCallee(bool bGlobal, std::string& OutName)
		{
			if (bGlobal)
			{
				const FCallTarget& Global = Globals[In.Byte() % std::size(Globals)];
				OutName = Global.Name;
				lua_getglobal(L, Global.Name);
				return Global;
			}
			const FHandleSlot& Handle = Handles[In.Byte() % Handles.size()];
			const FHandleMethods& Kind = HandleMethods[static_cast<int>(Handle.Kind)];
			const FCallTarget& Method = Kind.Methods[In.Byte() % Kind.Count];
			OutName = std::string(Kind.KindName) + ":" + Method.Name;
			PushRef(Handle.Ref);
			lua_getfield(L, -1, Method.Name);
			lua_insert(L, -2);
			return Method;
		}

		// ---- Values ----

		void PushValue(int Depth)
		{
			Check(lua_checkstack(L, 16) != 0, "harness: the Lua stack cannot grow");
			if (Depth > MaxDepth || --ValueBudget < 0)
			{
				lua_pushnil(L);
				return;
			}
			PushTagged(static_cast<EValueTag>(In.Byte() % static_cast<int>(EValueTag::Count)), Depth);
		}

		void PushList(char ItemKind, int Depth)
		{
			const int Count = In.Byte() % 16;
			lua_createtable(L, Count, 0);
			for (int Index = 1; Index <= Count; ++Index)
			{
				PushTyped(ItemKind, Depth + 1);
				lua_rawseti(L, -2, Index);
			}
		}

		// Reads (key index, value) pairs into the table at Table; typed, each value of its key's kind.
		void ReadParamsInto(int Table, int Depth, bool bTyped)
		{
			for (int Entry = In.Byte() % 16; Entry > 0; --Entry)
			{
				const int Key = In.Byte() % NumKeys;
				lua_pushstring(L, Keys[Key]);
				PushTyped(bTyped ? KeyKinds[Key] : 'v', Depth + 1);
				lua_rawset(L, Table);
			}
		}

		// A userdata, or a table with params content, with the metatable of the variant read first.
		void PushWithMetatable(bool bUserdata, int Depth, bool bTypedParams)
		{
			const EMetaVariant Variant = static_cast<EMetaVariant>(In.Byte() % static_cast<int>(EMetaVariant::Count));
			if (bUserdata)
			{
				std::memset(lua_newuserdatauv(L, 16, 1), 0xA5, 16);
			}
			else
			{
				lua_newtable(L);
			}
			const int Object = lua_gettop(L);
			if (Variant != EMetaVariant::None)
			{
				lua_newtable(L);
				const char* Field = "__index";
				if (Variant == EMetaVariant::IndexTable)
				{
					// Only a table: an __index of another type is the script's broken metatable, and
					// Lua's own indexing error for it is not the module's.
					PushValue(Depth + 1);
					if (lua_type(L, -1) != LUA_TTABLE)
					{
						lua_pop(L, 1);
						lua_newtable(L);
					}
				}
				else if (Variant == EMetaVariant::OddName)
				{
					PushValue(Depth + 1);
					lua_setfield(L, Object + 1, "__name");
					lua_pushboolean(L, 0);
					Field = "__metatable";
				}
				else
				{
					PushScriptIndex(Variant, Object + 2, Depth);
				}
				lua_setfield(L, Object + 1, Field);
				lua_setmetatable(L, Object);
			}
			if (!bUserdata)
			{
				ReadParamsInto(Object, Depth, bTypedParams);
			}
		}

		// Pushes the ScriptIndex closure of the variant, its upvalues from stack index First.
		void PushScriptIndex(EMetaVariant Variant, int First, int Depth)
		{
			lua_pushinteger(L, static_cast<int>(Variant));
			switch (Variant)
			{
			case EMetaVariant::RaiseTable: PushRef(ErrorTableRef); break;
			case EMetaVariant::RaiseString: PushRef(ErrorStringRef); break;
			case EMetaVariant::RaiseOnKey:
				PushRef(ErrorTableRef);
				lua_pushstring(L, Keys[In.Byte() % NumKeys]);
				PushValue(Depth + 1);
				break;
			case EMetaVariant::Reentrant:
			{
				// argc, answer, global or method, callee, colon or dot, arguments
				const int Argc = In.Byte() % 4;
				PushValue(Depth + 1);
				const bool bGlobal = In.Byte() % 2 == 0;
				std::string Name;
				PushCallee(bGlobal, Name);
				const bool bDot = In.Byte() % 2 != 0;
				if (bDot && !bGlobal)
				{
					lua_pop(L, 1);
				}
				for (int Arg = 0; Arg < Argc; ++Arg)
				{
					PushValue(Depth + 1);
				}
				break;
			}
			default: PushValue(Depth + 1); break;
			}
			lua_pushcclosure(L, &ScriptIndex, lua_gettop(L) - First + 1);
		}

		void PushHugeList(int Depth)
		{
			const int Low = In.Byte();
			const int RawCount = Low | In.Byte() << 8;
			const EHugeFill Fill = static_cast<EHugeFill>(In.Byte() % static_cast<int>(EHugeFill::Count));
			lua_newtable(L);
			const int List = lua_gettop(L);
			if (Fill == EHugeFill::Value)
			{
				PushValue(Depth + 1);
			}
			// Tables as entries become modes, functions or cell attributes, each of which the engine
			// names uniquely among its siblings (quadratic): keep those lists to a size a script
			// could mean.
			const bool bTableEntries = Fill == EHugeFill::EmptyTables || (Fill == EHugeFill::Value && lua_type(L, -1) == LUA_TTABLE);
			const int Count = bTableEntries ? std::min(RawCount, MaxHugeTables) : RawCount;
			for (int Index = 1; Index <= Count; ++Index)
			{
				switch (Fill)
				{
				case EHugeFill::Index: lua_pushinteger(L, Index); break;
				case EHugeFill::Byte: lua_pushinteger(L, Index % 256); break;
				case EHugeFill::HalfFloat: lua_pushnumber(L, Index + 0.5); break;
				case EHugeFill::Value: lua_pushvalue(L, List + 1); break;
				case EHugeFill::Words: lua_pushstring(L, Words[static_cast<uint8_t>(Index) % NumWords]); break;
				default: lua_newtable(L); break;
				}
				lua_rawseti(L, List, Index);
			}
			lua_settop(L, List);
		}

		// A value whose tag is known: reads only the tag's payload. Items: the kind of a List's items;
		// Params and MetaTable content is typed unless it is 'v'.
		void PushTagged(EValueTag Tag, int Depth, char Items = 'v')
		{
			using enum EValueTag;
			switch (Tag)
			{
			case False:
			case True: lua_pushboolean(L, Tag == True); break;
			case SmallInt: lua_pushinteger(L, static_cast<int8_t>(In.Byte())); break;
			case EdgeInt: lua_pushinteger(L, EdgeInts[In.Byte() % std::size(EdgeInts)]); break;
			case RawInt: lua_pushinteger(L, static_cast<lua_Integer>(In.Bits64())); break;
			case EdgeFloat: lua_pushnumber(L, EdgeFloats[In.Byte() % std::size(EdgeFloats)]); break;
			case RawFloat: lua_pushnumber(L, std::bit_cast<double>(In.Bits64())); break;
			case Word: lua_pushstring(L, Words[In.Byte() % NumWords]); break;
			case RawString:
			case WordWithTail:
			case LongWord:
			{
				const char* Prefix = Tag == RawString ? "" : Words[In.Byte() % NumWords];
				std::string Text;
				for (int Repeat = Tag == LongWord ? (In.Byte() + 1) * 64 : 1; Repeat > 0; --Repeat)
				{
					Text += Prefix;
				}
				for (int Length = Tag == LongWord ? 0 : In.Byte(); Length > 0; --Length)
				{
					Text.push_back(static_cast<char>(In.Byte()));
				}
				lua_pushlstring(L, Text.data(), Text.size());
				break;
			}
			case List: PushList(Items, Depth); break;
			case Params:
				lua_newtable(L);
				ReadParamsInto(lua_gettop(L), Depth, Items != 'v');
				break;
			case Map:
				lua_newtable(L);
				for (int Entry = In.Byte() % 8; Entry > 0; --Entry)
				{
					PushValue(Depth + 1);
					PushValue(Depth + 1);
					const bool bBadKey = lua_isnil(L, -2) || (lua_type(L, -2) == LUA_TNUMBER && std::isnan(lua_tonumber(L, -2)));
					if (bBadKey)
					{
						lua_pop(L, 2);
					}
					else
					{
						lua_rawset(L, -3);
					}
				}
				break;
			case Userdata:
			case MetaTable: PushWithMetatable(Tag == Userdata, Depth, Items != 'v'); break;
			case Handle: PushHandle(In.Byte()); break;
			case HugeList: PushHugeList(Depth); break;
			case DeepChain:
			{
				const char* Key = Keys[In.Byte() % NumKeys];
				const int ChainDepth = (In.Byte() * 16) % (MaxDeepChain + 1);
				PushValue(Depth + 1);
				for (int Level = 0; Level < ChainDepth; ++Level)
				{
					lua_createtable(L, 1, 1);
					lua_insert(L, -2);
					lua_pushvalue(L, -1);
					lua_rawseti(L, -3, 1);
					lua_setfield(L, -2, Key);
				}
				break;
			}
			case Function:
				switch (In.Byte() % 3)
				{
				case 0: lua_pushcfunction(L, &DoNothing); break;
				case 1: lua_getglobal(L, "dmx_library"); break;
				default: PushHandle(0); lua_getfield(L, -1, "info"); lua_remove(L, -2); break;
				}
				break;
			case Thread: lua_newthread(L); break;
			case LightUserdata: lua_pushlightuserdata(L, &Stats); break;
			default: lua_pushnil(L); break;
			}
		}

		// A value of a typed-mode kind (DMXFuzzFormat.h), a selector byte picking one of the kind's
		// forms; 'v' is any value.
		void PushTyped(char Kind, int Depth)
		{
			if (Kind == 'v')
			{
				return PushValue(Depth);
			}
			Check(lua_checkstack(L, 16) != 0, "harness: the Lua stack cannot grow");
			if (Depth > MaxDepth || ValueBudget <= 0)
			{
				--ValueBudget;
				lua_pushnil(L);
				return;
			}
			const uint8_t Selector = In.Byte() % 16;
			if (Selector == TypedEscape)
			{
				PushValue(Depth);
				return;
			}
			--ValueBudget;
			using enum EValueTag;
			switch (Kind)
			{
			case 's': PushTagged(Selector < 10 ? Word : Selector < 12 ? RawString : Selector < 14 ? WordWithTail : LongWord, Depth); break;
			case 'n': PushTagged(Selector < 6 ? SmallInt : Selector < 10 ? EdgeInt : Selector < 13 ? EdgeFloat : Selector == 13 ? RawInt : RawFloat, Depth); break;
			case 'i': PushTagged(Selector < 8 ? SmallInt : Selector < 13 ? EdgeInt : RawInt, Depth); break;
			case 'b': lua_pushboolean(L, Selector % 2); break;
			case 't': PushTagged(Selector < 10 ? Params : Selector < 12 ? MetaTable : Selector == 12 ? Userdata : Selector == 13 ? Map : Handle, Depth, 't'); break;
			case 'y': PushTagged(Selector < 10 ? List : Selector < 12 ? HugeList : Selector == 12 ? Map : Selector == 13 ? Userdata : List, Depth, Selector < 10 ? 'i' : 'v'); break;
			case 'L': PushTagged(Selector < 12 ? List : Selector == 12 ? HugeList : Selector == 13 ? Userdata : Map, Depth, Selector < 12 ? 's' : 'v'); break;
			case 'M': PushTagged(Selector < 12 ? List : Selector == 12 ? HugeList : Selector == 13 ? Userdata : List, Depth, Selector < 12 ? 't' : 'v'); break;
			default: lua_pushnil(L); break;
			}
		}

		// ---- Checks of an answer ----

		int RawGetField(int Table, const char* Key)
		{
			lua_pushstring(L, Key);
			return lua_rawget(L, Table);
		}

		void ExpectPlainTable(int Index)
		{
			Check(lua_type(L, Index) == LUA_TTABLE, "an answer that is not a table", luaL_typename(L, Index));
			Check(!lua_getmetatable(L, Index), "an answer with a metatable");
		}

		void ExpectValidField(int Table)
		{
			Check(RawGetField(Table, "valid") == LUA_TBOOLEAN, "an answer without a boolean \"valid\"");
			lua_pop(L, 1);
		}

		void ExpectByteTable(int Table)
		{
			ExpectPlainTable(Table);
			const lua_Integer Length = static_cast<lua_Integer>(lua_rawlen(L, Table));
			lua_Integer Entries = 0;
			lua_pushnil(L);
			while (lua_next(L, Table) != 0)
			{
				++Entries;
				const bool bKeyOk = lua_isinteger(L, -2) && lua_tointeger(L, -2) >= 1 && lua_tointeger(L, -2) <= Length;
				const bool bValueOk = lua_isinteger(L, -1) && lua_tointeger(L, -1) >= 0 && lua_tointeger(L, -1) <= 255;
				Check(bKeyOk && bValueOk, "a byte table holding something other than bytes at 1..n");
				lua_pop(L, 1);
			}
			Check(Entries == Length, "a byte table with holes");
		}

		// Every table the module answers is either a record (string keys only) or a list (keys 1..n
		// without holes), holds no metatable, and so are the tables inside it; where a record reports
		// "<what>_count" next to a list, the count is the list's length.
		void ExpectRecordsAndLists(int Table, int Depth)
		{
			ExpectPlainTable(Table);
			Check(Depth <= 8, "an answer nesting tables deeper than any the module builds");
			lua_Integer IntegerKeys = 0;
			lua_Integer NameKeys = 0;
			lua_pushnil(L);
			while (lua_next(L, Table) != 0)
			{
				const bool bIndex = lua_isinteger(L, -2) && lua_tointeger(L, -2) >= 1;
				Check(bIndex || lua_type(L, -2) == LUA_TSTRING, "an answer holding a key that is neither a name nor a list index");
				++(bIndex ? IntegerKeys : NameKeys);
				if (lua_type(L, -1) == LUA_TTABLE)
				{
					ExpectRecordsAndLists(lua_gettop(L), Depth + 1);
				}
				lua_pop(L, 1);
			}
			Check(IntegerKeys == 0 || (NameKeys == 0 && IntegerKeys == static_cast<lua_Integer>(lua_rawlen(L, Table))), "an answer holding a list with holes or mixed with names");
			static const char* const CountedLists[][2] = {
				{"component_count", "components"}, {"fixture_type_count", "fixture_types"}, {"fixture_patch_count", "fixture_patches"},
				{"mode_count", "modes"}, {"function_count", "functions"}, {"cell_attribute_count", "cell_attributes"}, {"tag_count", "tags"},
				{"attribute_default_count", "attribute_defaults"}, {"attribute_channel_count", "attribute_channels"},
				{"attribute_signal_format_count", "attribute_signal_formats"},
			};
			for (int Pair = 0; NameKeys != 0 && Pair < static_cast<int>(std::size(CountedLists)); ++Pair)
			{
				const int CountType = RawGetField(Table, CountedLists[Pair][0]);
				const int ListType = RawGetField(Table, CountedLists[Pair][1]);
				const bool bDiffers = CountType == LUA_TNUMBER && ListType == LUA_TTABLE && lua_tointeger(L, -2) != static_cast<lua_Integer>(lua_rawlen(L, -1));
				Check(!bDiffers, "a count differing from the length of its list", CountedLists[Pair][0]);
				lua_pop(L, 2);
			}
		}

		// Answer: a letter of FCallTarget. IdentityKey: for a handle, the field that holds the bytes of
		// IdentityArgument, the global's string argument.
		void CheckAnswer(char Answer, int Result, const char* IdentityKey, const std::string* IdentityArgument)
		{
			const int Type = lua_type(L, Result);
			const bool bInteger = lua_isinteger(L, Result) != 0;
			switch (Answer)
			{
			case 'h':
				ExpectPlainTable(Result);
				ExpectValidField(Result);
				if (IdentityKey != nullptr)
				{
					const bool bEcho = RawGetField(Result, IdentityKey) == LUA_TSTRING && IdentityArgument != nullptr && ToBytes(L, -1) == *IdentityArgument;
					Check(bEcho, "a handle whose identity field is not the argument's bytes", IdentityKey);
					lua_pop(L, 1);
				}
				break;
			case 'r':
				ExpectRecordsAndLists(Result, 0);
				ExpectValidField(Result);
				break;
			case 'o':
				if (Type != LUA_TNIL)
				{
					ExpectRecordsAndLists(Result, 0);
				}
				break;
			case 'y': ExpectByteTable(Result); break;
			case 'B': Check(Type == LUA_TBOOLEAN, "an answer that is not a boolean", luaL_typename(L, Result)); break;
			case 'i': Check(bInteger, "an answer that is not an integer", luaL_typename(L, Result)); break;
			default: Check(Type == LUA_TNUMBER && !bInteger, "an answer that is not a float", luaL_typename(L, Result)); break;
			}
		}

		EOutcome ClassifyError(int ErrorIndex)
		{
			EOutcome Outcome = EOutcome::Count;
			for (const EOutcome Raised : {EOutcome::RaisedTable, EOutcome::RaisedString})
			{
				PushRef(Raised == EOutcome::RaisedTable ? ErrorTableRef : ErrorStringRef);
				Outcome = lua_rawequal(L, ErrorIndex, -1) ? Raised : Outcome;
				lua_pop(L, 1);
			}
			const bool bString = lua_type(L, ErrorIndex) == LUA_TSTRING;
			const std::string Message = bString ? ToBytes(L, ErrorIndex) : std::string();
			if (Outcome == EOutcome::Count)
			{
				Check(bString, "an unexpected error value", luaL_typename(L, ErrorIndex));
				Outcome = Message == "not enough memory" ? EOutcome::OutOfMemory
					: Message.rfind(ByteFloatMessage, 0) == 0 ? EOutcome::ByteFloatError
					: Message.rfind("stack index ", 0) == 0 ? EOutcome::ArgumentError : EOutcome::Count;
				Check(Outcome != EOutcome::Count, "an unexpected Lua error", Message);
			}
			CountErrorKind(Outcome == EOutcome::ArgumentError ? "argument error: " + DescribeArgumentError(Message) : OutcomeNames[static_cast<int>(Outcome)]);
			return Outcome;
		}

		// ---- Statements ----

		void RunCall(bool bGlobal)
		{
			const int Base = lua_gettop(L);
			std::string Target;
			// The callee is read first; whether the handle goes with it depends on the form read next.
			const FCallTarget& Callee = PushCallee(bGlobal, Target);
			const ECallForm Form = static_cast<ECallForm>(In.Byte() % static_cast<int>(ECallForm::Count));
			if (!bGlobal && (Form == ECallForm::Dot || Form == ECallForm::SelfValue))
			{
				lua_pop(L, 1);
			}
			const uint8_t ArgcByte = In.Byte();
			if (Form == ECallForm::SelfValue)
			{
				PushValue(0);
			}
			const bool bTyped = (ArgcByte & FreeArgsFlag) == 0;
			for (const char* Kind = bTyped ? Callee.Signature : ""; *Kind != 0; ++Kind)
			{
				PushTyped(*Kind, 0);
			}
			const int NumAnyValues = bTyped ? (ArgcByte & 1) : (ArgcByte & ~FreeArgsFlag) % (MaxArgs + 1);
			for (int Arg = 0; Arg < NumAnyValues; ++Arg)
			{
				PushValue(0);
			}
			const int NumArgs = lua_gettop(L) - Base - 1;

			CurrentCall = Target + " (" + FormNames[static_cast<int>(Form)] + ", " + std::to_string(NumArgs) + " arguments, headroom " + std::to_string(Headroom) + ")";
			++Stats.Calls;
			++Stats.CallsByTarget[Target];
			++Stats.CallsByForm[static_cast<int>(Form)];
			ReentrantBudget = 200;

			lua_State* Coroutine = Form == ECallForm::Coroutine ? lua_newthread(L) : nullptr;
			if (Coroutine != nullptr)
			{
				lua_insert(L, Base + 1);
				lua_xmove(L, Coroutine, NumArgs + 1);
			}
			const int ResultBase = Coroutine != nullptr ? Base + 1 : Base;
			lua_State* ArgState = Coroutine != nullptr ? Coroutine : L;
			const int FirstArg = Coroutine != nullptr ? 2 : Base + 2;
			const int GlobalIndex = bGlobal ? static_cast<int>(&Callee - Globals) : 0;
			const char* const IdentityKeys[] = {"path", "actor", nullptr};
			const bool bHasIdentityArgument = bGlobal && NumArgs >= 1 && lua_type(ArgState, FirstArg) == LUA_TSTRING;
			const std::string IdentityArgument = bHasIdentityArgument ? ToBytes(ArgState, FirstArg) : std::string();
			if (Headroom != 0)
			{
				++Stats.LimitedCalls;
				lua_gc(L, LUA_GCCOLLECT);
				CurrentCall += " under a memory ceiling";
				ActiveAllocator->Limit = ActiveAllocator->Used + Headroom;
			}
			int NumResults = 0;
			const int Status = Coroutine != nullptr ? lua_resume(Coroutine, L, NumArgs, &NumResults) : lua_pcall(L, NumArgs, LUA_MULTRET, 0);
			ActiveAllocator->Limit = SIZE_MAX;
			Check(Status != LUA_YIELD, "the call yielded");
			if (Coroutine != nullptr)
			{
				lua_xmove(Coroutine, L, Status == LUA_OK ? NumResults : 1);
			}

			NumResults = lua_gettop(L) - ResultBase;
			EOutcome Outcome = EOutcome::Answered;
			if (Status == LUA_OK)
			{
				Check(NumResults == 1, "a call answered other than one value", std::to_string(NumResults));
				CheckAnswer(Callee.Answer, ResultBase + 1, bGlobal ? IdentityKeys[GlobalIndex] : nullptr, bHasIdentityArgument ? &IdentityArgument : nullptr);
				if (bGlobal && Handles.size() < static_cast<size_t>(MaxHandles))
				{
					lua_pushvalue(L, ResultBase + 1);
					Handles.push_back({luaL_ref(L, LUA_REGISTRYINDEX), static_cast<EHandleKind>(GlobalIndex)});
				}
			}
			else
			{
				Check(NumResults >= 1, "a failed call left no error value");
				Outcome = ClassifyError(lua_gettop(L));
			}
			++Stats.Outcomes[static_cast<int>(Outcome)];

			const int OpenTransactions = GEditor != nullptr && GEditor->Trans != nullptr ? GEditor->Trans->GetActiveCount() : -1;
			Check(OpenTransactions == 0, "an undo transaction is still open", std::to_string(OpenTransactions));
			lua_settop(L, Base);
		}

		void Run()
		{
			lua_newtable(L);
			lua_pushboolean(L, 1);
			lua_setfield(L, -2, "kest_fuzz_error");
			ErrorTableRef = luaL_ref(L, LUA_REGISTRYINDEX);
			lua_pushstring(L, UniqueErrorText);
			ErrorStringRef = luaL_ref(L, LUA_REGISTRYINDEX);
			const int Base = lua_gettop(L);
			for (const FInitialHandle& Initial : InitialHandles)
			{
				lua_getglobal(L, Globals[static_cast<int>(Initial.Kind)].Name);
				if (Initial.Argument != nullptr)
				{
					lua_pushstring(L, Initial.Argument);
				}
				const bool bOpened = lua_pcall(L, Initial.Argument != nullptr ? 1 : 0, 1, 0) == LUA_OK && lua_type(L, -1) == LUA_TTABLE;
				Check(bOpened, "harness: could not open the initial handles");
				Handles.push_back({luaL_ref(L, LUA_REGISTRYINDEX), Initial.Kind});
			}

			for (StatementIndex = 0; StatementIndex < MaxStatements && !In.IsAtEnd(); ++StatementIndex)
			{
				++Stats.Statements;
				CurrentCall = "statement start";
				Check(lua_gettop(L) == Base, "the Lua stack moved between statements", std::to_string(lua_gettop(L) - Base));
				const EOp Op = DecodeOp(In.Byte());
				switch (Op)
				{
				case EOp::CallGlobal:
				case EOp::CallMethod: RunCall(Op == EOp::CallGlobal); break;
				case EOp::Undo: Stats.Undos += GEditor->UndoTransaction() ? 1 : 0; break;
				case EOp::Redo: Stats.Redos += GEditor->RedoTransaction() ? 1 : 0; break;
				case EOp::CollectGarbage: lua_gc(L, LUA_GCCOLLECT); break;
				case EOp::MemoryHeadroom: Headroom = MemoryHeadrooms[In.Byte() % NumMemoryHeadrooms]; break;
				}
			}
		}
	};

	const char SetupScript[] = R"lua(
assert(editor.create_library("/Game/DMX/FuzzLib"))
assert(editor.create_library("/Game/DMX/Other"))
local lib = dmx_library("/Game/DMX/FuzzLib")
assert(lib:add("fixture_type", { name = "Spot", category = "Spot", modes = {
	{ name = "Basic", functions = {
		{ attribute = "Dimmer", name = "Dim", data_type = "16bit", default_value = 3 },
		{ attribute = "Pan", name = "Pan", physical_from = -270, physical_to = 270 },
	} },
	{ name = "Pixel", functions = { { attribute = "Dimmer" } }, matrix = { enabled = true, x_cells = 2, y_cells = 2,
		first_cell_channel = 3, distribution = "TopLeftToBottom",
		cell_attributes = { { attribute = "Red" }, { attribute = "Green", data_type = "16bit" } } } },
} }))
assert(lib:add("fixture_type", { name = "Wash", modes = { { name = "Std", functions = { { attribute = "Color" } } } } }))
assert(lib:add("fixture_type", { name = "Dup" }))
assert(lib:add("fixture_type", { name = "Dup2" }))
assert(lib:configure("fixture_type", "Dup2", { name = "DUP" }))
assert(lib:add("fixture_type", { name = "Gone" }))
assert(lib:add("fixture_patch", { name = "Spot1", fixture_type = "Spot", universe = 1, starting_channel = 1, tags = { "front" } }))
assert(lib:add("fixture_patch", { name = "Front", fixture_type = "Wash", universe = 2, starting_channel = 10 }))
assert(lib:add("fixture_patch", { name = "Wash1", fixture_type = "Wash", universe = 2, starting_channel = 100, active_mode_index = 3 }))
assert(lib:add("fixture_patch", { name = "Front2", fixture_type = "Spot", universe = 3, active_mode_index = 1 }))
assert(lib:configure("fixture_patch", "Front2", { name = "FRONT" }))
assert(lib:add("fixture_patch", { name = "Orphan", fixture_type = "Gone" }))
assert(lib:remove("fixture_type", "Gone"))
local other = dmx_library("/Game/DMX/Other")
assert(other:add("fixture_type", { name = "Pixel", modes = { { matrix = { enabled = true, x_cells = 4 } } } }))
assert(other:add("fixture_patch", { name = "OtherPatch", fixture_type = "Pixel" }))
assert(editor.spawn_actor("StageLeft", "Stage Left"))
assert(editor.spawn_actor("Bare"))
assert(editor.spawn_actor("Rig", "Truss Rig"))
assert(dmx_component("StageLeft"):add({ library = "/Game/DMX/FuzzLib", fixture_patch = "Spot1", receive = true }))
assert(dmx_component("Rig"):add({ name = "DMX2", library = "/Game/DMX/FuzzLib", fixture_patch = "Front" }))
assert(dmx_component("Rig"):add({ name = "DMX3", library = "/Game/DMX/Other", fixture_patch = "OtherPatch" }))
)lua";
}

extern "C" int LLVMFuzzerInitialize(int* Argc, char*** Argv)
{
	std::atexit(&PrintSummary);
	return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
	++Stats.Inputs;
	FFuzzAllocator Allocator;
	{
		FKestDMXSession Session(FHeadlessEditorOptions(), &FuzzAllocate, &Allocator);
		std::string Error;
		if (!Session.RunScript(SetupScript, "kest_fuzz_setup", Error))
		{
			std::fprintf(stderr, "kest_fuzz: the scene could not be set up: %s\n", Error.c_str());
			std::abort();
		}
		ActiveAllocator = &Allocator;
		FProgram Program;
		Program.L = Session.GetLua().GetState().lua_state();
		Program.In = {Data, Size, 0};
		Program.Run();
	}
	ActiveAllocator = nullptr;
	FHeadlessObjectRegistry::Get().Warnings.Reset();
	return 0;
}
