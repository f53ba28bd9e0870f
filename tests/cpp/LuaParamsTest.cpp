#include <gtest/gtest.h>

#include <limits>
#include "module/DMXEngineTransactions.h"
#include "module/DMXLuaParams.h"

TEST(FLuaParamsTest, IntegersTruncateTowardZeroThenClampMaxBeforeMin)
{
	sol::state Lua;
	sol::table Params = Lua.script("return {a = 2.9, b = -2.9, big = 1e12, nan = 0/0, neg = -1e12, s = '5', i = 7}");
	const struct
	{
		const char* Key;
		int32 Default, Min, Max, Expected;
	} Cases[] = {
		{"a", 0, -100, 100, 2}, {"b", 0, -100, 100, -2}, {"big", 0, 1, 512, 1}, {"nan", 0, 1, 512, 1}, {"neg", 0, 0, 512, 0},
		// Not a number: the default, clamped all the same. With Min above Max the minimum wins.
		{"s", 9, 0, 512, 9}, {"absent", 600, 1, 512, 512}, {"absent", -5, 1, 512, 1}, {"i", 0, 10, 5, 10},
	};
	for (const auto& Case : Cases)
	{
		EXPECT_EQ(GetIntParam(Params, Case.Key, Case.Default, Case.Min, Case.Max), Case.Expected) << Case.Key;
	}
	EXPECT_EQ(TruncateToInt32(2147483647.9), 2147483647);
	EXPECT_EQ(TruncateToInt32(-2147483648.9), INT32_MIN);
	EXPECT_EQ(TruncateToInt32(2147483648.0), INT32_MIN);
	EXPECT_EQ(TruncateToInt32(std::numeric_limits<double>::infinity()), INT32_MIN);
}

TEST(FLuaParamsTest, OnlyTheExactLuaTypeCountsAndTextsStopAtTheFirstNul)
{
	sol::state Lua;
	sol::table Params = Lua.script("return {one = 1, t = 'true', yes = true, n = 3, str = 'x', f = 0.5, nul = 'ab\\0cd', u = 'Sp\\xC3\\xB6t'}");
	EXPECT_TRUE(GetBoolParam(Params, "one", true) && !GetBoolParam(Params, "t", false) && GetBoolParam(Params, "yes", false));
	EXPECT_EQ(ConvertEngineText(GetStringParam(Params, "n", TEXT("dflt")) + GetStringParam(Params, "str", TEXT("dflt"))), "dfltx");
	EXPECT_EQ(GetNumberParam(Params, "f", 9.0) + GetNumberParam(Params, "n", 9.0) + GetNumberParam(Params, "str", 90.0), 93.5);
	EXPECT_TRUE(GetStringParam(Params, "nul", TEXT("")).Equals(FString(TEXT("ab"))));
	EXPECT_TRUE(GetStringParam(Params, "u", TEXT("")).Equals(FString(TEXT("Sp\u00F6t"))));
	EXPECT_TRUE(ConvertLuaText(std::string("x\0y", 3)).Equals(FString(TEXT("x"))));
	const TCHAR WithNul[] = {u'a', 0, u'b'};
	EXPECT_EQ(ConvertEngineText(FString(3, WithNul)), "a");
	EXPECT_EQ(ConvertEngineText(FString()), "");
}

TEST(FLuaParamsTest, UserdataParamsAreReadThroughTheirMetatable)
{
	sol::state Lua;
	lua_State* L = Lua.lua_state();
	lua_newuserdatauv(L, 8, 0);
	sol::table Metatable = Lua.script("return {__index = function(self, key) if key == 'universe' then return 4 end end}");
	Metatable.push(L);
	lua_setmetatable(L, -2);
	sol::table Params(L, -1);
	lua_pop(L, 1);
	EXPECT_EQ(GetIntParam(Params, "universe", 1, 0, 100), 4);
	EXPECT_EQ(GetParamType(Params, "other"), LUA_TNIL);
	EXPECT_EQ(GetIntParam(Params, "other", 3, 0, 10), 3);
}

TEST(FLuaParamsTest, AnErrorRaisedByAMetamethodReachesTheCallerUnchanged)
{
	sol::state Lua;
	Lua.open_libraries(sol::lib::base);
	lua_State* L = Lua.lua_state();
	const int Top = lua_gettop(L);
	Lua.set_function("read", [](sol::table P) { return GetIntParam(P, "universe", 1, 0, 10); });
	sol::protected_function_result Result = Lua.safe_script(
		"local err = {code = 42}\n"
		"local ok, got = pcall(read, setmetatable({}, {__index = function() error(err) end}))\n"
		"assert(not ok and rawequal(got, err))\n"
		"return 1",
		sol::script_pass_on_error);
	EXPECT_TRUE(Result.valid());
	EXPECT_EQ(lua_gettop(L), Top + 1);
}

TEST(DMXEngineTransactionsTest, TitlesAreLocalisableTextsOfTheModuleNamespace)
{
	const std::pair<EDMXEngineTransaction, const char*> Expected[] = {
		{EDMXEngineTransaction::AddDMXEntity, "AddDMXEntity Vorlith: Add DMX Library Entity"},
		{EDMXEngineTransaction::ConfigureDMXEntity, "ConfigureDMXEntity Vorlith: Configure DMX Library Entity"},
		{EDMXEngineTransaction::RemoveDMXEntity, "RemoveDMXEntity Vorlith: Remove DMX Library Entity"},
		{EDMXEngineTransaction::AddDMXComponent, "AddDMXComponent Vorlith: Add DMX Component"},
		{EDMXEngineTransaction::ConfigureDMXComponent, "ConfigureDMXComponent Vorlith: Configure DMX Component"},
	};
	for (const auto& [Transaction, KeyAndTitle] : Expected)
	{
		const FText Title = GetDMXEngineTransactionTitle(Transaction);
		EXPECT_EQ(ConvertEngineText(Title.GetNamespace() + TEXT(" ") + Title.GetKey() + TEXT(" ") + Title.ToString()), std::string("Kest_DMXEngine ") + KeyAndTitle);
	}
}
