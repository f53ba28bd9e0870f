// The check session's wrappers around dmx_library, dmx_component and dmx_subsystem and around the
// methods of the handles they answer. A wrapper reads the arguments (raw, in a protected call with
// the collector paused, so no script code runs), calls the module's function with the very same
// values, lets its results and errors through as they are, and then compares what was asked with
// what the engine holds. Engine objects are found again after every call, never kept across it.
#include "KestDMXCheckCall.h"

#include <exception>
#include <memory>

#include "KestDMXRunner.h"
#include "host/VorlithLua.h"

namespace
{
	// Upvalues of every wrapper.
	const int OriginalUpvalue = 1;
	const int LogUpvalue = 2;
	const int GlobalUpvalue = 3;
	const int FunctionUpvalue = 4;
	const int HandleUpvalue = 5;

	// Stack room the wrappers need besides the call's own values.
	const int WrapperStackRoom = 8;

	using FKestProtectedWork = std::function<void(lua_State* L, int FirstValue, int ValueCount)>;

	struct FProtectedCall
	{
		FKestProtectedWork* Work = nullptr;
		int ValueCount = 0;
		bool bDone = false;
	};

	int RunProtectedWork(lua_State* L)
	{
		FProtectedCall* Call = static_cast<FProtectedCall*>(lua_touserdata(L, 1));
		try
		{
			(*Call->Work)(L, 2, Call->ValueCount);
			Call->bDone = true;
		}
		catch (const std::exception&)
		{
			// Out of memory or a text the JSON library refuses: this call goes unchecked. Lua's own
			// errors are not std::exceptions and reach lua_pcall.
		}
		return 0;
	}

	// Runs Work on copies of the values at First..First+Count-1 in protected mode with the collector
	// paused, so no finalizer runs while the check reads tables and no error reaches the script.
	// Answers whether Work ran to its end; the stack is left as it was.
	bool RunProtected(lua_State* L, int First, int Count, FKestProtectedWork Work)
	{
		if (!lua_checkstack(L, Count + WrapperStackRoom))
		{
			return false;
		}
		const int Top = lua_gettop(L);
		const int GCState = lua_gc(L, LUA_GCISRUNNING);
		if (GCState == 1)
		{
			lua_gc(L, LUA_GCSTOP);
		}
		FProtectedCall Call;
		Call.Work = &Work;
		Call.ValueCount = Count;
		lua_pushcfunction(L, &RunProtectedWork);
		lua_pushlightuserdata(L, &Call);
		for (int Index = 0; Index < Count; ++Index)
		{
			lua_pushvalue(L, First + Index);
		}
		lua_pcall(L, Count + 1, 0, 0);
		lua_settop(L, Top);
		if (GCState == 1)
		{
			lua_gc(L, LUA_GCRESTART);
		}
		return Call.bDone;
	}

	// Calls the module's function (upvalue 1) with the wrapper's arguments; its results replace them.
	int CallOriginal(lua_State* L)
	{
		lua_pushvalue(L, lua_upvalueindex(OriginalUpvalue));
		lua_insert(L, 1);
		lua_call(L, lua_gettop(L) - 1, LUA_MULTRET);
		return lua_gettop(L);
	}

	// The innermost line of a script file on the stack (through pcall and C functions).
	FKestCheckSite FindCallSite(lua_State* L, FKestCheckLog& Log)
	{
		lua_Debug Info;
		for (int Level = 1; lua_getstack(L, Level, &Info) != 0; ++Level)
		{
			if (lua_getinfo(L, "Sl", &Info) != 0 && Info.currentline > 0 && Info.source != nullptr && Info.source[0] == '@')
			{
				FKestCheckSite Site;
				Site.File = Info.source + 1;
				Site.Line = Info.currentline;
				Log.LastSite = Site;
				return Site;
			}
		}
		return Log.LastSite;
	}

	std::string DescribeArgumentForCall(lua_State* L, int Index)
	{
		switch (lua_type(L, Index))
		{
		case LUA_TSTRING:
		{
			size_t Length = 0;
			const char* Text = lua_tolstring(L, Index, &Length);
			return QuoteText(std::string(Text, Length));
		}
		case LUA_TNUMBER: return FormatLuaNumber(L, Index);
		case LUA_TBOOLEAN: return lua_toboolean(L, Index) ? "true" : "false";
		case LUA_TTABLE: return "{...}";
		case LUA_TNIL: return "nil";
		default: return luaL_typename(L, Index);
		}
	}

	// dmx_library("/Game/DMX/Stage"):add("fixture_patch", {...}), from the arguments as given.
	std::string DescribeCall(lua_State* L, int First, int Count, const std::string& Prefix)
	{
		std::string Text = Prefix + "(";
		for (int Index = 0; Index < Count; ++Index)
		{
			Text += (Index == 0 ? "" : ", ") + DescribeArgumentForCall(L, First + Index);
		}
		return Text + ")";
	}

	// The arguments of a function as the schema lists them; a params argument is read against the
	// class its kind selects.
	std::vector<FKestAsked> ReadArguments(lua_State* L, int First, int Count, const FKestFunction& Function, FKestCheckCall& Call)
	{
		const FKestSchema& Schema = GetKestDMXSchema();
		std::vector<FKestAsked> Arguments;
		for (size_t Index = 0; Index < Function.Arguments.size(); ++Index)
		{
			const FKestArgument& Argument = Function.Arguments[Index];
			const int LuaIndex = First + static_cast<int>(Index);
			const bool bPresent = static_cast<int>(Index) < Count;
			const FKestClass* ParamsClass = nullptr;
			if (Argument.Name == "params" && !Function.ParamsClass.empty())
			{
				ParamsClass = Schema.FindClass(Function.ParamsClass);
			}
			else if (Argument.Name == "params" && !Arguments.empty())
			{
				const std::optional<std::string> Kind = Arguments.front().GetString();
				for (const FKestKindParams& KindParams : Function.Kinds)
				{
					if (Kind && ToLowerASCII(*Kind) == KindParams.Kind)
					{
						ParamsClass = Schema.FindClass(KindParams.ParamsClass);
					}
				}
			}
			if (!bPresent)
			{
				FKestAsked Missing;
				Missing.Path = Argument.Name;
				Arguments.push_back(Missing);
			}
			else if (ParamsClass != nullptr)
			{
				Arguments.push_back(ReadAskedParams(L, LuaIndex, *ParamsClass, std::string(), Call));
			}
			else
			{
				Arguments.push_back(ReadAskedArgument(L, LuaIndex, Argument, Call));
			}
		}
		return Arguments;
	}

	int WrapMethod(lua_State* L);

	// Puts a wrapper in place of each method of a handle the module just made.
	void WrapHandleMethods(lua_State* L, int HandleIndex, FKestCheckLog& Log, const FKestGlobal& Global, int LogHandle)
	{
		for (const FKestFunction& Function : Global.Functions)
		{
			lua_pushlstring(L, Function.Name.data(), Function.Name.size());
			lua_pushvalue(L, -1);
			lua_rawget(L, HandleIndex);
			if (lua_type(L, -1) != LUA_TFUNCTION)
			{
				lua_pop(L, 2);
				continue;
			}
			lua_pushlightuserdata(L, &Log);
			lua_pushlightuserdata(L, const_cast<FKestGlobal*>(&Global));
			lua_pushlightuserdata(L, const_cast<FKestFunction*>(&Function));
			lua_pushinteger(L, LogHandle);
			lua_pushcclosure(L, &WrapMethod, 5);
			lua_rawset(L, HandleIndex);
		}
	}

	int WrapOpener(lua_State* L)
	{
		FKestCheckLog& Log = *static_cast<FKestCheckLog*>(lua_touserdata(L, lua_upvalueindex(LogUpvalue)));
		const FKestGlobal& Global = *static_cast<const FKestGlobal*>(lua_touserdata(L, lua_upvalueindex(GlobalUpvalue)));
		if (!Log.bActive || !lua_checkstack(L, WrapperStackRoom))
		{
			return CallOriginal(L);
		}
		const int ArgumentCount = lua_gettop(L);
		FKestCheckCall Call(Log, FindCallSite(L, Log));
		std::vector<FKestAsked> Arguments;
		RunProtected(L, 1, ArgumentCount, [&](lua_State* InL, int First, int Count)
		{
			Call.Site.Call = DescribeCall(InL, First, Count, Global.Name);
			Arguments = ReadArguments(InL, First, Count, Global.Opener, Call);
		});

		const int ResultCount = CallOriginal(L);

		RunProtected(L, 1, ResultCount, [&](lua_State* InL, int First, int Count)
		{
			if (Count < 1 || lua_type(InL, First) != LUA_TTABLE)
			{
				return;
			}
			FKestCheckHandle Handle;
			Handle.Global = Global.Name;
			Handle.Argument = Arguments.empty() ? std::string() : Arguments.front().GetString().value_or(std::string());
			lua_pushliteral(InL, "valid");
			lua_rawget(InL, First);
			Handle.bValid = lua_toboolean(InL, -1) != 0;
			lua_pop(InL, 1);
			const FKestAsked NoArgument;
			const FKestAsked& Argument = Arguments.empty() ? NoArgument : Arguments.front();
			if (Global.Name == "dmx_library")
			{
				CheckLibraryOpened(Call, Argument, Handle);
			}
			else if (Global.Name == "dmx_component")
			{
				CheckComponentOpened(Call, Argument, Handle);
			}
			else
			{
				CheckSubsystemOpened(Call, Handle.bValid);
			}
			Log.Handles.push_back(Handle);
			WrapHandleMethods(InL, First, Log, Global, static_cast<int>(Log.Handles.size()) - 1);
		});
		Call.Finish();
		return ResultCount;
	}

	int WrapMethod(lua_State* L)
	{
		FKestCheckLog& Log = *static_cast<FKestCheckLog*>(lua_touserdata(L, lua_upvalueindex(LogUpvalue)));
		const FKestGlobal& Global = *static_cast<const FKestGlobal*>(lua_touserdata(L, lua_upvalueindex(GlobalUpvalue)));
		const FKestFunction& Function = *static_cast<const FKestFunction*>(lua_touserdata(L, lua_upvalueindex(FunctionUpvalue)));
		const lua_Integer HandleIndex = lua_tointeger(L, lua_upvalueindex(HandleUpvalue));
		if (!Log.bActive || !lua_checkstack(L, WrapperStackRoom) || HandleIndex < 0 || HandleIndex >= static_cast<lua_Integer>(Log.Handles.size()))
		{
			return CallOriginal(L);
		}
		// A copy: calls made while this one runs may add handles to the log.
		const FKestCheckHandle Handle = Log.Handles[static_cast<size_t>(HandleIndex)];
		const int ArgumentCount = lua_gettop(L);
		FKestCheckCall Call(Log, FindCallSite(L, Log));
		std::vector<FKestAsked> Arguments;
		std::shared_ptr<FKestLibraryCallState> Before;
		RunProtected(L, 1, ArgumentCount, [&](lua_State* InL, int First, int Count)
		{
			const std::string Prefix = Global.Name + "(" + (Global.Name == "dmx_subsystem" ? std::string() : QuoteText(Handle.Argument)) + "):" + Function.Name;
			Call.Site.Call = DescribeCall(InL, First + 1, Count - 1, Prefix);
			Arguments = ReadArguments(InL, First + 1, Count - 1, Function, Call);
			if (Global.Name == "dmx_library")
			{
				Before = PrepareLibraryMethodCheck(Call, Handle, Function.Name, Arguments);
			}
		});

		const int ResultCount = CallOriginal(L);

		RunProtected(L, 1, ResultCount, [&](lua_State* InL, int First, int Count)
		{
			const FKestCallResults Results{InL, First, Count};
			if (Global.Name == "dmx_library")
			{
				CheckLibraryMethod(Call, Handle, Function.Name, Arguments, Before.get(), Results);
			}
			else if (Global.Name == "dmx_component")
			{
				CheckComponentMethod(Call, Handle, Function.Name, Arguments, Results);
			}
			else
			{
				CheckSubsystemMethod(Call, Handle, Function.Name, Arguments, Results);
			}
		});
		Call.Finish();
		return ResultCount;
	}
}

void FKestCheckCall::Report(const std::string& Code, const std::string& Key, const std::string& Message, nlohmann::json Given, nlohmann::json Used)
{
	FKestCheckFinding Finding;
	Finding.File = Site.File;
	Finding.Line = Site.Line;
	Finding.Code = Code;
	Finding.Message = Message;
	Finding.Call = Site.Call;
	Finding.Key = Key;
	Finding.Given = std::move(Given);
	Finding.Used = std::move(Used);
	Findings.push_back(std::move(Finding));
}

bool FKestCheckCall::HasFinding(const std::function<bool(const FKestCheckFinding&)>& Test) const
{
	for (const FKestCheckFinding& Finding : Findings)
	{
		if (Test(Finding))
		{
			return true;
		}
	}
	return false;
}

void FKestCheckCall::Finish()
{
	Log.Findings.insert(Log.Findings.end(), Findings.begin(), Findings.end());
	Findings.clear();
}

void InstallKestDMXCheck(FKestDMXSession& Session, FKestCheckLog& Log)
{
	lua_State* L = Session.GetLua().GetState().lua_state();
	const FKestSchema& Schema = GetKestDMXSchema();
	for (const FKestGlobal& Global : Schema.Globals)
	{
		if (Global.bTableOfFunctions)
		{
			continue;
		}
		lua_getglobal(L, Global.Name.c_str());
		if (lua_type(L, -1) != LUA_TFUNCTION)
		{
			lua_pop(L, 1);
			continue;
		}
		lua_pushlightuserdata(L, &Log);
		lua_pushlightuserdata(L, const_cast<FKestGlobal*>(&Global));
		lua_pushcclosure(L, &WrapOpener, 3);
		lua_setglobal(L, Global.Name.c_str());
	}
}
