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

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
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

	void* FuzzAllocate(void* UserData, void* Block, size_t OldSize, size_t NewSize)
	{
		FFuzzAllocator& Allocator = *static_cast<FFuzzAllocator*>(UserData);
		if (Block == nullptr)
		{
			OldSize = 0;
		}
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
		if (Resized != nullptr)
		{
			Allocator.Used = Allocator.Used - OldSize + NewSize;
		}
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

	const char ByteFloatMessage[] = "stack index -1, expected number, received number: not a numeric type that fits exactly an integer (number maybe has significant decimals)";
	const char UniqueErrorText[] = "kest_fuzz: the error a script metamethod raised";

	struct FFuzzStats
	{
		uint64_t Inputs = 0;
		uint64_t Statements = 0;
		uint64_t Calls = 0;
		uint64_t ReentrantCalls = 0;
		uint64_t Undos = 0;
		uint64_t Redos = 0;
		uint64_t LimitedCalls = 0;
		std::map<std::string, uint64_t> CallsByTarget;
		uint64_t CallsByForm[static_cast<int>(ECallForm::Count)] = {};
		uint64_t Outcomes[static_cast<int>(EOutcome::Count)] = {};
		// Error kinds: the outcome, and for sol2's messages the text before the first ':'.
		std::map<std::string, uint64_t> ErrorKinds;
	};
	FFuzzStats Stats;

	void CountErrorKind(const std::string& Kind)
	{
		if (Stats.ErrorKinds.size() < 400 || Stats.ErrorKinds.count(Kind) != 0)
		{
			++Stats.ErrorKinds[Kind];
		}
		else
		{
			++Stats.ErrorKinds["(other kinds)"];
		}
	}

	void PrintSummary()
	{
		if (Stats.Inputs == 0)
		{
			return;
		}
		std::fprintf(stderr, "\n== kest_fuzz summary ==\ninputs %llu, statements %llu, calls %llu, reentrant calls %llu, undo %llu, redo %llu, calls under a memory ceiling %llu\n",
			static_cast<unsigned long long>(Stats.Inputs), static_cast<unsigned long long>(Stats.Statements), static_cast<unsigned long long>(Stats.Calls),
			static_cast<unsigned long long>(Stats.ReentrantCalls), static_cast<unsigned long long>(Stats.Undos), static_cast<unsigned long long>(Stats.Redos),
			static_cast<unsigned long long>(Stats.LimitedCalls));
		std::fprintf(stderr, "calls by target:\n");
		for (const auto& [Target, Count] : Stats.CallsByTarget)
		{
			std::fprintf(stderr, "  %-36s %llu\n", Target.c_str(), static_cast<unsigned long long>(Count));
		}
		const char* const FormNames[] = {"colon", "dot", "self value", "coroutine"};
		std::fprintf(stderr, "calls by form:");
		for (int Form = 0; Form < static_cast<int>(ECallForm::Count); ++Form)
		{
			std::fprintf(stderr, " %s %llu;", FormNames[Form], static_cast<unsigned long long>(Stats.CallsByForm[Form]));
		}
		std::fprintf(stderr, "\noutcomes:");
		for (int Outcome = 0; Outcome < static_cast<int>(EOutcome::Count); ++Outcome)
		{
			std::fprintf(stderr, " %s %llu;", OutcomeNames[Outcome], static_cast<unsigned long long>(Stats.Outcomes[Outcome]));
		}
		std::fprintf(stderr, "\ndistinct error kinds: %zu\n", Stats.ErrorKinds.size());
		for (const auto& [Kind, Count] : Stats.ErrorKinds)
		{
			std::fprintf(stderr, "  %8llu  %s\n", static_cast<unsigned long long>(Count), Kind.c_str());
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

	// ---- Metamethods and functions the program's values carry ----

	int DoNothing(lua_State* L)
	{
		return 0;
	}

	int AnswerUpvalue(lua_State* L)
	{
		lua_pushvalue(L, lua_upvalueindex(1));
		return 1;
	}

	int RaiseUpvalue(lua_State* L)
	{
		lua_pushvalue(L, lua_upvalueindex(1));
		return lua_error(L);
	}

	// Upvalues: key, error value, answer.
	int RaiseOnKey(lua_State* L)
	{
		if (lua_rawequal(L, 2, lua_upvalueindex(1)))
		{
			lua_pushvalue(L, lua_upvalueindex(2));
			return lua_error(L);
		}
		lua_pushvalue(L, lua_upvalueindex(3));
		return 1;
	}

	int CollectAndAnswer(lua_State* L)
	{
		lua_gc(L, LUA_GCCOLLECT);
		lua_pushvalue(L, lua_upvalueindex(1));
		return 1;
	}

	int ReentrantBudget = 0;
	FFuzzAllocator* ActiveAllocator = nullptr;

	// Upvalues: answer, callee, its arguments. Calls the module while the module is reading a
	// params table; an error of the inner call travels out through the outer one.
	int CallModuleAndAnswer(lua_State* L)
	{
		if (ReentrantBudget > 0)
		{
			--ReentrantBudget;
			++Stats.ReentrantCalls;
			int NumArgs = 0;
			while (NumArgs < 250 && lua_type(L, lua_upvalueindex(3 + NumArgs)) != LUA_TNONE)
			{
				++NumArgs;
			}
			luaL_checkstack(L, NumArgs + 2, "kest_fuzz reentrant call");
			const int Top = lua_gettop(L);
			for (int Index = 0; Index <= NumArgs; ++Index)
			{
				lua_pushvalue(L, lua_upvalueindex(2 + Index));
			}
			// The inner call's arguments are not known to pass sol2's checks, and sol2 cannot raise
			// its argument error when Lua is out of memory (see the memory ceiling in RunCall).
			const size_t Limit = ActiveAllocator->Limit;
			ActiveAllocator->Limit = SIZE_MAX;
			lua_call(L, NumArgs, 0);
			ActiveAllocator->Limit = Limit;
			if (lua_gettop(L) != Top)
			{
				std::fprintf(stderr, "kest_fuzz: a reentrant call left the stack at %d instead of %d\n", lua_gettop(L), Top);
				std::abort();
			}
		}
		lua_pushvalue(L, lua_upvalueindex(1));
		return 1;
	}

	struct FHandleSlot
	{
		int Ref = LUA_NOREF;
		EHandleKind Kind = EHandleKind::Library;
	};

	// The method a choice byte picks on a handle of the kind, and its arguments after the handle.
	const char* GetMethodName(EHandleKind Kind, uint8_t Choice, const char*& OutSignature)
	{
		switch (Kind)
		{
		case EHandleKind::Library:
			OutSignature = LibrarySignatures[Choice % 4];
			return LibraryMethods[Choice % 4];
		case EHandleKind::Component:
			OutSignature = ComponentSignatures[Choice % 3];
			return ComponentMethods[Choice % 3];
		case EHandleKind::Subsystem:
			OutSignature = SubsystemSignatures[Choice % 4];
			return SubsystemMethods[Choice % 4];
		}
		OutSignature = "";
		return "info";
	}

	// One input being run.
	struct FProgram
	{
		lua_State* L = nullptr;
		FFuzzAllocator* Allocator = nullptr;
		FInputReader In;
		std::vector<FHandleSlot> Handles;
		int ErrorTableRef = LUA_NOREF;
		int ErrorStringRef = LUA_NOREF;
		int ValueBudget = 2000;
		uint32_t Headroom = 0;
		int StatementIndex = 0;
		std::string CurrentCall;

		[[noreturn]] void Fail(const char* What, const std::string& Detail)
		{
			std::fprintf(stderr, "\n==== kest_fuzz oracle violation ====\nstatement %d: %s\n%s\n%s\n", StatementIndex, CurrentCall.c_str(), What, Detail.c_str());
			std::abort();
		}

		void PushErrorTable() { lua_rawgeti(L, LUA_REGISTRYINDEX, ErrorTableRef); }
		void PushErrorString() { lua_rawgeti(L, LUA_REGISTRYINDEX, ErrorStringRef); }

		void PushHandle(int Slot)
		{
			lua_rawgeti(L, LUA_REGISTRYINDEX, Handles[static_cast<size_t>(Slot) % Handles.size()].Ref);
		}

		// Pushes the function a (sub-)call calls and, for a method, its handle after it; answers the
		// number of values pushed after the function (the caller pops the handle for the dot form).
		int PushCallee(bool bGlobal, std::string& OutName, const char** OutSignature = nullptr)
		{
			const char* Signature = "";
			if (OutSignature == nullptr)
			{
				OutSignature = &Signature;
			}
			if (bGlobal)
			{
				const int Global = In.Byte() % 3;
				OutName = GlobalNames[Global];
				*OutSignature = GlobalSignatures[Global];
				lua_getglobal(L, GlobalNames[Global]);
				return 0;
			}
			const size_t Slot = In.Byte() % Handles.size();
			const FHandleSlot& Handle = Handles[Slot];
			const char* Method = GetMethodName(Handle.Kind, In.Byte(), *OutSignature);
			const char* const KindNames[] = {"library", "component", "subsystem"};
			OutName = std::string(KindNames[static_cast<int>(Handle.Kind)]) + ":" + Method;
			lua_rawgeti(L, LUA_REGISTRYINDEX, Handle.Ref);
			lua_getfield(L, -1, Method);
			lua_insert(L, -2);
			return 1;
		}

		void PushWord(uint8_t Choice)
		{
			lua_pushstring(L, Words[Choice % NumWords]);
		}

		void ReadRawStringPayload(std::string& Out)
		{
			const int Length = In.Byte();
			for (int Index = 0; Index < Length; ++Index)
			{
				Out.push_back(static_cast<char>(In.Byte()));
			}
		}

		// Reads (key index, value) pairs into the table at TableIndex.
		void ReadParamsInto(int TableIndex, int Depth)
		{
			const int Count = In.Byte() % 16;
			for (int Entry = 0; Entry < Count; ++Entry)
			{
				lua_pushstring(L, Keys[In.Byte() % NumKeys]);
				PushValue(Depth + 1);
				lua_rawset(L, TableIndex);
			}
		}

		void PushReentrantCall(int Depth)
		{
			const int Argc = In.Byte() % 4;
			const int Base = lua_gettop(L);
			PushValue(Depth + 1);
			const bool bGlobal = (In.Byte() % 2) == 0;
			std::string Name;
			const int HandleArgs = PushCallee(bGlobal, Name);
			const bool bColon = (In.Byte() % 2) == 0;
			if (HandleArgs == 1 && !bColon)
			{
				lua_pop(L, 1);
			}
			for (int Arg = 0; Arg < Argc; ++Arg)
			{
				PushValue(Depth + 1);
			}
			lua_pushcclosure(L, &CallModuleAndAnswer, lua_gettop(L) - Base);
		}

		// Pushes a metatable for the variant, or nothing (answers false).
		bool PushMetatable(EMetaVariant Variant, int Depth)
		{
			if (Variant == EMetaVariant::None)
			{
				return false;
			}
			lua_newtable(L);
			const int Metatable = lua_gettop(L);
			switch (Variant)
			{
			case EMetaVariant::IndexTable:
				// Only a table: an __index of another type is the script's broken metatable, and Lua's
				// own indexing error for it is not the module's.
				PushValue(Depth + 1);
				if (lua_type(L, -1) != LUA_TTABLE)
				{
					lua_pop(L, 1);
					lua_newtable(L);
				}
				lua_setfield(L, Metatable, "__index");
				break;
			case EMetaVariant::IndexReturns:
				PushValue(Depth + 1);
				lua_pushcclosure(L, &AnswerUpvalue, 1);
				lua_setfield(L, Metatable, "__index");
				break;
			case EMetaVariant::RaiseTable:
				PushErrorTable();
				lua_pushcclosure(L, &RaiseUpvalue, 1);
				lua_setfield(L, Metatable, "__index");
				break;
			case EMetaVariant::RaiseString:
				PushErrorString();
				lua_pushcclosure(L, &RaiseUpvalue, 1);
				lua_setfield(L, Metatable, "__index");
				break;
			case EMetaVariant::RaiseOnKey:
				lua_pushstring(L, Keys[In.Byte() % NumKeys]);
				PushErrorTable();
				PushValue(Depth + 1);
				lua_pushcclosure(L, &RaiseOnKey, 3);
				lua_setfield(L, Metatable, "__index");
				break;
			case EMetaVariant::Reentrant:
				PushReentrantCall(Depth);
				lua_setfield(L, Metatable, "__index");
				break;
			case EMetaVariant::Collect:
				PushValue(Depth + 1);
				lua_pushcclosure(L, &CollectAndAnswer, 1);
				lua_setfield(L, Metatable, "__index");
				break;
			case EMetaVariant::OddName:
				PushValue(Depth + 1);
				lua_setfield(L, Metatable, "__name");
				lua_pushboolean(L, 0);
				lua_setfield(L, Metatable, "__metatable");
				break;
			default:
				break;
			}
			return true;
		}

		void PushHugeList(int Depth)
		{
			int Count = In.Byte();
			Count |= In.Byte() << 8;
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
			if (bTableEntries && Count > MaxHugeTables)
			{
				Count = MaxHugeTables;
			}
			for (int Index = 1; Index <= Count; ++Index)
			{
				switch (Fill)
				{
				case EHugeFill::Index: lua_pushinteger(L, Index); break;
				case EHugeFill::Byte: lua_pushinteger(L, Index % 256); break;
				case EHugeFill::HalfFloat: lua_pushnumber(L, Index + 0.5); break;
				case EHugeFill::Value: lua_pushvalue(L, List + 1); break;
				case EHugeFill::Words: PushWord(static_cast<uint8_t>(Index)); break;
				default: lua_newtable(L); break;
				}
				lua_rawseti(L, List, Index);
			}
			lua_settop(L, List);
		}

		void PushValue(int Depth)
		{
			if (!lua_checkstack(L, 16))
			{
				Fail("harness", "the Lua stack cannot grow");
			}
			if (Depth > MaxDepth || --ValueBudget < 0)
			{
				lua_pushnil(L);
				return;
			}
			PushTagged(static_cast<EValueTag>(In.Byte() % static_cast<int>(EValueTag::Count)), Depth);
		}

		// A value whose tag is known: reads only the tag's payload.
		void PushTagged(EValueTag Tag, int Depth)
		{
			switch (Tag)
			{
			case EValueTag::Nil:
				lua_pushnil(L);
				break;
			case EValueTag::False:
				lua_pushboolean(L, 0);
				break;
			case EValueTag::True:
				lua_pushboolean(L, 1);
				break;
			case EValueTag::SmallInt:
				lua_pushinteger(L, static_cast<int8_t>(In.Byte()));
				break;
			case EValueTag::EdgeInt:
				lua_pushinteger(L, EdgeInts[In.Byte() % (sizeof(EdgeInts) / sizeof(EdgeInts[0]))]);
				break;
			case EValueTag::RawInt:
				lua_pushinteger(L, static_cast<lua_Integer>(In.Bits64()));
				break;
			case EValueTag::EdgeFloat:
				lua_pushnumber(L, EdgeFloats[In.Byte() % (sizeof(EdgeFloats) / sizeof(EdgeFloats[0]))]);
				break;
			case EValueTag::RawFloat:
			{
				const uint64_t Bits = In.Bits64();
				double Value;
				std::memcpy(&Value, &Bits, sizeof(Value));
				lua_pushnumber(L, Value);
				break;
			}
			case EValueTag::Word:
				PushWord(In.Byte());
				break;
			case EValueTag::RawString:
			{
				std::string Text;
				ReadRawStringPayload(Text);
				lua_pushlstring(L, Text.data(), Text.size());
				break;
			}
			case EValueTag::List:
			{
				const int Count = In.Byte() % 16;
				lua_createtable(L, Count, 0);
				const int List = lua_gettop(L);
				for (int Index = 1; Index <= Count; ++Index)
				{
					PushValue(Depth + 1);
					lua_rawseti(L, List, Index);
				}
				break;
			}
			case EValueTag::Params:
			{
				lua_newtable(L);
				ReadParamsInto(lua_gettop(L), Depth);
				break;
			}
			case EValueTag::Map:
			{
				const int Count = In.Byte() % 8;
				lua_newtable(L);
				const int Map = lua_gettop(L);
				for (int Entry = 0; Entry < Count; ++Entry)
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
						lua_rawset(L, Map);
					}
				}
				break;
			}
			case EValueTag::Userdata:
			{
				const EMetaVariant Variant = static_cast<EMetaVariant>(In.Byte() % static_cast<int>(EMetaVariant::Count));
				void* Block = lua_newuserdatauv(L, 16, 1);
				std::memset(Block, 0xA5, 16);
				if (PushMetatable(Variant, Depth))
				{
					lua_setmetatable(L, -2);
				}
				break;
			}
			case EValueTag::MetaTable:
			{
				const EMetaVariant Variant = static_cast<EMetaVariant>(In.Byte() % static_cast<int>(EMetaVariant::Count));
				lua_newtable(L);
				const int Table = lua_gettop(L);
				if (PushMetatable(Variant, Depth))
				{
					lua_setmetatable(L, Table);
				}
				ReadParamsInto(Table, Depth);
				break;
			}
			case EValueTag::Handle:
				PushHandle(In.Byte());
				break;
			case EValueTag::HugeList:
				PushHugeList(Depth);
				break;
			case EValueTag::DeepChain:
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
			case EValueTag::Function:
			{
				const int Choice = In.Byte() % 3;
				if (Choice == 0)
				{
					lua_pushcfunction(L, &DoNothing);
				}
				else if (Choice == 1)
				{
					lua_getglobal(L, "dmx_library");
				}
				else
				{
					PushHandle(0);
					lua_getfield(L, -1, "info");
					lua_remove(L, -2);
				}
				break;
			}
			case EValueTag::Thread:
				lua_newthread(L);
				break;
			case EValueTag::LightUserdata:
				lua_pushlightuserdata(L, &Stats);
				break;
			case EValueTag::WordWithTail:
			{
				std::string Text = Words[In.Byte() % NumWords];
				ReadRawStringPayload(Text);
				lua_pushlstring(L, Text.data(), Text.size());
				break;
			}
			case EValueTag::LongWord:
			{
				const std::string Word = Words[In.Byte() % NumWords];
				const int Repeats = (In.Byte() + 1) * 64;
				std::string Text;
				for (int Index = 0; Index < Repeats; ++Index)
				{
					Text += Word;
				}
				lua_pushlstring(L, Text.data(), Text.size());
				break;
			}
			default:
				lua_pushnil(L);
				break;
			}
		}

		// ---- Typed mode (DMXFuzzFormat.h) ----

		void PushTypedList(char ItemKind, int Depth)
		{
			const int Count = In.Byte() % 16;
			lua_createtable(L, Count, 0);
			const int List = lua_gettop(L);
			for (int Index = 1; Index <= Count; ++Index)
			{
				PushTyped(ItemKind, Depth + 1);
				lua_rawseti(L, List, Index);
			}
		}

		void ReadTypedParamsInto(int TableIndex, int Depth)
		{
			const int Count = In.Byte() % 16;
			for (int Entry = 0; Entry < Count; ++Entry)
			{
				const int Key = In.Byte() % NumKeys;
				lua_pushstring(L, Keys[Key]);
				PushTyped(KeyKinds[Key], Depth + 1);
				lua_rawset(L, TableIndex);
			}
		}

		void PushTyped(char Kind, int Depth)
		{
			if (!lua_checkstack(L, 16))
			{
				Fail("harness", "the Lua stack cannot grow");
			}
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
			switch (Kind)
			{
			case 's':
				PushTagged(Selector < 10 ? EValueTag::Word : Selector < 12 ? EValueTag::RawString : Selector < 14 ? EValueTag::WordWithTail : EValueTag::LongWord, Depth);
				break;
			case 'n':
				PushTagged(Selector < 6 ? EValueTag::SmallInt : Selector < 10 ? EValueTag::EdgeInt : Selector < 13 ? EValueTag::EdgeFloat : Selector == 13 ? EValueTag::RawInt : EValueTag::RawFloat, Depth);
				break;
			case 'i':
				PushTagged(Selector < 8 ? EValueTag::SmallInt : Selector < 13 ? EValueTag::EdgeInt : EValueTag::RawInt, Depth);
				break;
			case 'b':
				lua_pushboolean(L, Selector % 2);
				break;
			case 't':
				if (Selector < 10)
				{
					lua_newtable(L);
					ReadTypedParamsInto(lua_gettop(L), Depth);
				}
				else if (Selector < 12)
				{
					const EMetaVariant Variant = static_cast<EMetaVariant>(In.Byte() % static_cast<int>(EMetaVariant::Count));
					lua_newtable(L);
					const int Table = lua_gettop(L);
					if (PushMetatable(Variant, Depth))
					{
						lua_setmetatable(L, Table);
					}
					ReadTypedParamsInto(Table, Depth);
				}
				else
				{
					PushTagged(Selector == 12 ? EValueTag::Userdata : Selector == 13 ? EValueTag::Map : EValueTag::Handle, Depth);
				}
				break;
			case 'y':
				if (Selector < 10)
				{
					PushTypedList('i', Depth);
				}
				else
				{
					PushTagged(Selector < 12 ? EValueTag::HugeList : Selector == 12 ? EValueTag::Map : Selector == 13 ? EValueTag::Userdata : EValueTag::List, Depth);
				}
				break;
			case 'L':
			case 'M':
				if (Selector < 12)
				{
					PushTypedList(Kind == 'L' ? 's' : 't', Depth);
				}
				else
				{
					PushTagged(Selector == 12 ? EValueTag::HugeList : Selector == 13 ? EValueTag::Userdata : Kind == 'L' ? EValueTag::Map : EValueTag::List, Depth);
				}
				break;
			default:
				lua_pushnil(L);
				break;
			}
		}

		// ---- Checks of an answer ----

		int RawGetField(int Table, const char* Key)
		{
			lua_pushstring(L, Key);
			return lua_rawget(L, Table);
		}

		void ExpectPlainTable(int Index, const char* What)
		{
			if (lua_type(L, Index) != LUA_TTABLE)
			{
				Fail(What, std::string("answered a ") + luaL_typename(L, Index));
			}
			if (lua_getmetatable(L, Index))
			{
				Fail(What, "answered a table with a metatable");
			}
		}

		void ExpectValidField(int Table, const char* What)
		{
			if (RawGetField(Table, "valid") != LUA_TBOOLEAN)
			{
				Fail(What, "the answer has no boolean \"valid\"");
			}
			lua_pop(L, 1);
		}

		void ExpectByteTable(int Table, const char* What)
		{
			ExpectPlainTable(Table, What);
			const lua_Integer Length = static_cast<lua_Integer>(lua_rawlen(L, Table));
			lua_Integer Entries = 0;
			lua_pushnil(L);
			while (lua_next(L, Table) != 0)
			{
				++Entries;
				const bool bKeyOk = lua_isinteger(L, -2) && lua_tointeger(L, -2) >= 1 && lua_tointeger(L, -2) <= Length;
				const bool bValueOk = lua_isinteger(L, -1) && lua_tointeger(L, -1) >= 0 && lua_tointeger(L, -1) <= 255;
				if (!bKeyOk || !bValueOk)
				{
					Fail(What, "the byte table holds something other than bytes at 1..n");
				}
				lua_pop(L, 1);
			}
			if (Entries != Length)
			{
				Fail(What, "the byte table has holes");
			}
		}

		// Every table the module answers is either a record (string keys only) or a list (keys 1..n
		// without holes), holds no metatable, and so are the tables inside it.
		void ExpectRecordsAndLists(int Table, const char* What, int Depth)
		{
			ExpectPlainTable(Table, What);
			if (Depth > 8)
			{
				Fail(What, "the answer nests tables deeper than any the module builds");
			}
			lua_Integer IntegerKeys = 0;
			lua_Integer OtherKeys = 0;
			lua_pushnil(L);
			while (lua_next(L, Table) != 0)
			{
				if (lua_isinteger(L, -2) && lua_tointeger(L, -2) >= 1)
				{
					++IntegerKeys;
				}
				else if (lua_type(L, -2) == LUA_TSTRING)
				{
					++OtherKeys;
				}
				else
				{
					Fail(What, "the answer holds a key that is neither a name nor a list index");
				}
				if (lua_type(L, -1) == LUA_TTABLE)
				{
					ExpectRecordsAndLists(lua_gettop(L), What, Depth + 1);
				}
				lua_pop(L, 1);
			}
			if (IntegerKeys != 0 && (OtherKeys != 0 || IntegerKeys != static_cast<lua_Integer>(lua_rawlen(L, Table))))
			{
				Fail(What, "the answer holds a list with holes or mixed with names");
			}
			static const char* const CountedLists[][2] = {
				{"component_count", "components"}, {"fixture_type_count", "fixture_types"}, {"fixture_patch_count", "fixture_patches"},
				{"mode_count", "modes"}, {"function_count", "functions"}, {"cell_attribute_count", "cell_attributes"}, {"tag_count", "tags"},
				{"attribute_default_count", "attribute_defaults"}, {"attribute_channel_count", "attribute_channels"},
				{"attribute_signal_format_count", "attribute_signal_formats"},
			};
			if (OtherKeys != 0)
			{
				for (const auto& Pair : CountedLists)
				{
					ExpectCount(Table, Pair[0], Pair[1], What);
				}
			}
		}

		// Where a table reports "<what>_count" next to a list, the count is the list's length.
		void ExpectCount(int Table, const char* CountKey, const char* ListKey, const char* What)
		{
			const int CountType = RawGetField(Table, CountKey);
			const int ListType = RawGetField(Table, ListKey);
			if (CountType == LUA_TNUMBER && ListType == LUA_TTABLE && lua_tointeger(L, -2) != static_cast<lua_Integer>(lua_rawlen(L, -1)))
			{
				Fail(What, std::string("\"") + CountKey + "\" differs from the length of \"" + ListKey + "\"");
			}
			lua_pop(L, 2);
		}

		void CheckAnswer(const std::string& Target, int Result, const std::string* IdentityArgument)
		{
			const char* What = Target.c_str();
			const int Type = lua_type(L, Result);
			if (Target.rfind("dmx_", 0) == 0)
			{
				ExpectPlainTable(Result, What);
				ExpectValidField(Result, What);
				const char* IdentityKey = Target == "dmx_library" ? "path" : Target == "dmx_component" ? "actor" : nullptr;
				if (IdentityKey != nullptr)
				{
					size_t Length = 0;
					const char* Text = RawGetField(Result, IdentityKey) == LUA_TSTRING ? lua_tolstring(L, -1, &Length) : nullptr;
					if (Text == nullptr || IdentityArgument == nullptr || std::string(Text, Length) != *IdentityArgument)
					{
						Fail(What, std::string("the handle's \"") + IdentityKey + "\" is not the argument's bytes");
					}
					lua_pop(L, 1);
				}
			}
			else if (Target == "library:info" || Target == "component:info")
			{
				ExpectValidField(Result, What);
				ExpectRecordsAndLists(Result, What, 0);
			}
			else if (Target == "library:add" || Target == "component:add" || Target == "component:configure")
			{
				if (Type != LUA_TNIL)
				{
					ExpectRecordsAndLists(Result, What, 0);
				}
			}
			else if (Target == "library:configure" || Target == "library:remove")
			{
				if (Type != LUA_TBOOLEAN)
				{
					Fail(What, std::string("answered a ") + luaL_typename(L, Result) + " instead of a boolean");
				}
			}
			else if (Target == "subsystem:int_to_bytes" || Target == "subsystem:normalized_to_bytes")
			{
				ExpectByteTable(Result, What);
			}
			else if (Target == "subsystem:bytes_to_int")
			{
				if (!lua_isinteger(L, Result))
				{
					Fail(What, "did not answer an integer");
				}
			}
			else if (Target == "subsystem:bytes_to_normalized")
			{
				if (Type != LUA_TNUMBER || lua_isinteger(L, Result))
				{
					Fail(What, "did not answer a float");
				}
			}
		}

		// "stack index N, expected T, received U", with a userdata's __name text shown as such.
		static std::string DescribeArgumentError(const std::string& Message)
		{
			const std::string Head = Message.substr(0, Message.find(':'));
			const size_t Received = Head.find(", received ");
			if (Received == std::string::npos)
			{
				return Head;
			}
			const std::string Actual = Head.substr(Received + 11);
			const char* const TypeNames[] = {"no value", "nil", "boolean", "number", "string", "table", "function", "userdata", "thread", "lightuserdata"};
			for (const char* TypeName : TypeNames)
			{
				if (Actual == TypeName)
				{
					return Head;
				}
			}
			return Head.substr(0, Received) + ", received a userdata's __name";
		}

		EOutcome ClassifyError(int ErrorIndex)
		{
			PushErrorTable();
			const bool bRaisedTable = lua_rawequal(L, ErrorIndex, -1) != 0;
			lua_pop(L, 1);
			if (bRaisedTable)
			{
				CountErrorKind("raised table");
				return EOutcome::RaisedTable;
			}
			PushErrorString();
			const bool bRaisedString = lua_rawequal(L, ErrorIndex, -1) != 0;
			lua_pop(L, 1);
			if (bRaisedString)
			{
				CountErrorKind("raised string");
				return EOutcome::RaisedString;
			}
			if (lua_type(L, ErrorIndex) != LUA_TSTRING)
			{
				Fail("an unexpected error value", std::string("a ") + luaL_typename(L, ErrorIndex));
			}
			size_t Length = 0;
			const char* Text = lua_tolstring(L, ErrorIndex, &Length);
			const std::string Message(Text, Length);
			if (Message == "not enough memory")
			{
				CountErrorKind("not enough memory");
				return EOutcome::OutOfMemory;
			}
			if (Message.rfind(ByteFloatMessage, 0) == 0)
			{
				CountErrorKind("byte-table float error");
				return EOutcome::ByteFloatError;
			}
			if (Message.rfind("stack index ", 0) == 0)
			{
				CountErrorKind("argument error: " + DescribeArgumentError(Message));
				return EOutcome::ArgumentError;
			}
			Fail("an unexpected Lua error", Message);
		}

		// ---- Statements ----

		// Whether sol2's argument checks let the call through. sol2 formats its argument error (and
		// the byte-table float error) in a noexcept function, which ends the process when Lua runs
		// out of memory there; so the memory ceiling is only applied to calls that pass the checks.
		bool PassesArgumentChecks(const std::string& Signature, int FirstArg, int NumArgs, lua_State* S)
		{
			// s string, t table or userdata, i integer, n number, b boolean, y byte table
			for (size_t Param = 0; Param < Signature.size(); ++Param)
			{
				const int Index = FirstArg + static_cast<int>(Param);
				if (static_cast<int>(Param) >= NumArgs)
				{
					return false;
				}
				const int Type = lua_type(S, Index);
				bool bPasses = false;
				switch (Signature[Param])
				{
				case 's': bPasses = Type == LUA_TSTRING; break;
				case 't':
				case 'L':
				case 'M':
					bPasses = Type == LUA_TTABLE || Type == LUA_TUSERDATA;
					break;
				case 'i': bPasses = lua_isinteger(S, Index) != 0; break;
				case 'n': bPasses = Type == LUA_TNUMBER; break;
				case 'b': bPasses = Type == LUA_TBOOLEAN; break;
				case 'y':
					bPasses = Type == LUA_TUSERDATA || (Type == LUA_TTABLE && !HoldsFloat(S, Index));
					break;
				default: break;
				}
				if (!bPasses)
				{
					return false;
				}
			}
			return true;
		}

		static bool HoldsFloat(lua_State* S, int Table)
		{
			bool bFloat = false;
			lua_pushnil(S);
			while (lua_next(S, Table) != 0)
			{
				bFloat = bFloat || (lua_type(S, -1) == LUA_TNUMBER && !lua_isinteger(S, -1));
				lua_pop(S, 1);
			}
			return bFloat;
		}

		// sol2 takes registry references in noexcept constructors; with free slots in the registry
		// taking one allocates nothing, so running out of memory cannot reach them.
		void ReserveRegistrySlots()
		{
			int Refs[512];
			for (int& Ref : Refs)
			{
				lua_pushboolean(L, 1);
				Ref = luaL_ref(L, LUA_REGISTRYINDEX);
			}
			for (int Index = 511; Index >= 0; --Index)
			{
				luaL_unref(L, LUA_REGISTRYINDEX, Refs[Index]);
			}
		}

		void RunCall(bool bGlobal)
		{
			const int Base = lua_gettop(L);
			std::string Target;
			// The callee is read first; whether the handle goes with it depends on the form read next.
			const char* Signature = "";
			const int HandleArgs = PushCallee(bGlobal, Target, &Signature);
			const ECallForm Form = static_cast<ECallForm>(In.Byte() % static_cast<int>(ECallForm::Count));
			int NumArgs = HandleArgs;
			if (HandleArgs == 1 && (Form == ECallForm::Dot || Form == ECallForm::SelfValue))
			{
				lua_pop(L, 1);
				NumArgs = 0;
			}
			const uint8_t ArgcByte = In.Byte();
			if (Form == ECallForm::SelfValue)
			{
				PushValue(0);
				++NumArgs;
			}
			if ((ArgcByte & FreeArgsFlag) == 0)
			{
				for (const char* Kind = Signature; *Kind != 0; ++Kind)
				{
					PushTyped(*Kind, 0);
					++NumArgs;
				}
				if ((ArgcByte & 1) != 0)
				{
					PushValue(0);
					++NumArgs;
				}
			}
			else
			{
				const int Argc = (ArgcByte & ~FreeArgsFlag) % (MaxArgs + 1);
				for (int Arg = 0; Arg < Argc; ++Arg)
				{
					PushValue(0);
					++NumArgs;
				}
			}
			const std::string FullSignature = (bGlobal ? std::string() : std::string("t")) + Signature;

			const char* const FormNames[] = {"colon", "dot", "self value", "coroutine"};
			CurrentCall = Target + " (" + FormNames[static_cast<int>(Form)] + ", " + std::to_string(NumArgs) + " arguments, headroom " + std::to_string(Headroom) + ")";
			++Stats.Calls;
			++Stats.CallsByTarget[Target];
			++Stats.CallsByForm[static_cast<int>(Form)];
			ReentrantBudget = 200;

			int Status = LUA_OK;
			int ResultBase = Base;
			lua_State* Coroutine = nullptr;
			if (Form == ECallForm::Coroutine)
			{
				Coroutine = lua_newthread(L);
				lua_insert(L, Base + 1);
				ResultBase = Base + 1;
				lua_xmove(L, Coroutine, NumArgs + 1);
			}
			const int FirstArg = Coroutine ? 2 : Base + 2;
			// The identity field of a handle must echo the argument's bytes.
			std::string IdentityArgument;
			lua_State* ArgState = Coroutine ? Coroutine : L;
			const bool bHasIdentityArgument = bGlobal && NumArgs >= 1 && lua_type(ArgState, FirstArg) == LUA_TSTRING;
			if (bHasIdentityArgument)
			{
				size_t Length = 0;
				const char* Text = lua_tolstring(ArgState, FirstArg, &Length);
				IdentityArgument.assign(Text, Length);
			}
			if (Headroom != 0 && PassesArgumentChecks(FullSignature, FirstArg, NumArgs, Coroutine ? Coroutine : L))
			{
				++Stats.LimitedCalls;
				ReserveRegistrySlots();
				lua_gc(L, LUA_GCCOLLECT);
				CurrentCall += " under a memory ceiling";
				Allocator->Limit = Allocator->Used + Headroom;
			}
			if (Coroutine != nullptr)
			{
				int NumResults = 0;
				Status = lua_resume(Coroutine, L, NumArgs, &NumResults);
				Allocator->Limit = SIZE_MAX;
				if (Status == LUA_OK)
				{
					lua_xmove(Coroutine, L, NumResults);
				}
				else if (Status == LUA_YIELD)
				{
					Fail("the call yielded", "");
				}
				else
				{
					lua_xmove(Coroutine, L, 1);
				}
			}
			else
			{
				Status = lua_pcall(L, NumArgs, LUA_MULTRET, 0);
				Allocator->Limit = SIZE_MAX;
			}

			const int NumResults = lua_gettop(L) - ResultBase;
			EOutcome Outcome = EOutcome::Answered;
			if (Status == LUA_OK)
			{
				if (NumResults != 1)
				{
					Fail("a call answered other than one value", std::to_string(NumResults) + " values");
				}
				CheckAnswer(Target, ResultBase + 1, bHasIdentityArgument ? &IdentityArgument : nullptr);
				if (bGlobal && lua_type(L, ResultBase + 1) == LUA_TTABLE && Handles.size() < static_cast<size_t>(MaxHandles))
				{
					const EHandleKind Kind = Target == "dmx_library" ? EHandleKind::Library : Target == "dmx_component" ? EHandleKind::Component : EHandleKind::Subsystem;
					lua_pushvalue(L, ResultBase + 1);
					Handles.push_back({luaL_ref(L, LUA_REGISTRYINDEX), Kind});
				}
			}
			else
			{
				if (NumResults < 1)
				{
					Fail("a failed call left no error value", "");
				}
				Outcome = ClassifyError(lua_gettop(L));
			}
			++Stats.Outcomes[static_cast<int>(Outcome)];

			if (GEditor == nullptr || GEditor->Trans == nullptr || GEditor->Trans->GetActiveCount() != 0)
			{
				Fail("an undo transaction is still open", std::to_string(GEditor && GEditor->Trans ? GEditor->Trans->GetActiveCount() : -1));
			}
			lua_settop(L, Base);
		}

		void MakeInitialHandles()
		{
			for (const FInitialHandle& Initial : InitialHandles)
			{
				const int Base = lua_gettop(L);
				lua_getglobal(L, GlobalNames[static_cast<int>(Initial.Kind)]);
				int NumArgs = 0;
				if (Initial.Argument != nullptr)
				{
					lua_pushstring(L, Initial.Argument);
					NumArgs = 1;
				}
				if (lua_pcall(L, NumArgs, 1, 0) != LUA_OK || lua_type(L, -1) != LUA_TTABLE)
				{
					Fail("harness", "could not open the initial handles");
				}
				Handles.push_back({luaL_ref(L, LUA_REGISTRYINDEX), Initial.Kind});
				lua_settop(L, Base);
			}
		}

		void Run()
		{
			lua_newtable(L);
			lua_pushboolean(L, 1);
			lua_setfield(L, -2, "kest_fuzz_error");
			ErrorTableRef = luaL_ref(L, LUA_REGISTRYINDEX);
			lua_pushstring(L, UniqueErrorText);
			ErrorStringRef = luaL_ref(L, LUA_REGISTRYINDEX);
			MakeInitialHandles();

			const int Base = lua_gettop(L);
			for (StatementIndex = 0; StatementIndex < MaxStatements && !In.IsAtEnd(); ++StatementIndex)
			{
				++Stats.Statements;
				CurrentCall = "statement start";
				if (lua_gettop(L) != Base)
				{
					Fail("the Lua stack moved between statements", std::to_string(lua_gettop(L)) + " instead of " + std::to_string(Base));
				}
				switch (DecodeOp(In.Byte()))
				{
				case EOp::CallGlobal:
					RunCall(true);
					break;
				case EOp::CallMethod:
					RunCall(false);
					break;
				case EOp::Undo:
					Stats.Undos += GEditor->UndoTransaction() ? 1 : 0;
					break;
				case EOp::Redo:
					Stats.Redos += GEditor->RedoTransaction() ? 1 : 0;
					break;
				case EOp::CollectGarbage:
					lua_gc(L, LUA_GCCOLLECT);
					break;
				case EOp::MemoryHeadroom:
					Headroom = MemoryHeadrooms[In.Byte() % NumMemoryHeadrooms];
					break;
				}
			}
		}
	};

	// The scene every input starts from: two libraries with fixture types (modes, functions, a
	// matrix), patches with duplicate names and one whose fixture type is gone, and three actors,
	// two of them with DMX components.
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
		Program.Allocator = &Allocator;
		Program.In.Data = Data;
		Program.In.Size = Size;
		Program.Run();
	}
	ActiveAllocator = nullptr;
	FHeadlessObjectRegistry::Get().Warnings.Reset();
	return 0;
}
