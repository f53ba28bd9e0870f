#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include "module/DMXLuaParams.h"
#include "module/DMXEngineTransactions.h"

namespace
{
	class FLuaParamsTest : public ::testing::Test
	{
	protected:
		void SetUp() override { Lua.open_libraries(); }

		sol::table Eval(const char* Code) { return Lua.script(Code); }

		sol::state Lua;
	};
}

TEST_F(FLuaParamsTest, IntegersTruncateTowardZeroThenClampMaxBeforeMin)
{
	sol::table Params = Eval("return {a = 2.9, b = -2.9, big = 1e12, nan = 0/0, neg = -1e12, s = '5', i = 7}");
	EXPECT_EQ(GetIntParam(Params, "a", 0, -100, 100), 2);
	EXPECT_EQ(GetIntParam(Params, "b", 0, -100, 100), -2);
	EXPECT_EQ(GetIntParam(Params, "big", 0, 1, 512), 1);
	EXPECT_EQ(GetIntParam(Params, "nan", 0, 1, 512), 1);
	EXPECT_EQ(GetIntParam(Params, "neg", 0, 0, 512), 0);
	EXPECT_EQ(GetIntParam(Params, "s", 9, 0, 512), 9);
	EXPECT_EQ(GetIntParam(Params, "absent", 600, 1, 512), 512);
	EXPECT_EQ(GetIntParam(Params, "absent", -5, 1, 512), 1);
	// With Min above Max the minimum wins.
	EXPECT_EQ(GetIntParam(Params, "i", 0, 10, 5), 10);
	EXPECT_EQ(TruncateToInt32(2147483647.9), 2147483647);
	EXPECT_EQ(TruncateToInt32(-2147483648.9), INT32_MIN);
	EXPECT_EQ(TruncateToInt32(2147483648.0), INT32_MIN);
	EXPECT_EQ(TruncateToInt32(std::numeric_limits<double>::infinity()), INT32_MIN);
}

TEST_F(FLuaParamsTest, OnlyTheExactLuaTypeCounts)
{
	sol::table Params = Eval("return {one = 1, t = 'true', yes = true, n = 3, str = 'x', f = 0.5}");
	EXPECT_TRUE(GetBoolParam(Params, "one", true));
	EXPECT_FALSE(GetBoolParam(Params, "t", false));
	EXPECT_TRUE(GetBoolParam(Params, "yes", false));
	EXPECT_EQ(GetStringParam(Params, "n", TEXT("dflt")), FString(TEXT("dflt")));
	EXPECT_EQ(GetStringParam(Params, "str", TEXT("dflt")), FString(TEXT("x")));
	EXPECT_EQ(GetNumberParam(Params, "f", 9.0), 0.5);
	EXPECT_EQ(GetNumberParam(Params, "n", 9.0), 3.0);
	EXPECT_EQ(GetNumberParam(Params, "str", 9.0), 9.0);
}

TEST_F(FLuaParamsTest, TextsStopAtTheFirstNul)
{
	sol::table Params = Eval("return {s = 'ab\\0cd', u = 'Sp\\xC3\\xB6t'}");
	EXPECT_TRUE(GetStringParam(Params, "s", TEXT("")).Equals(FString(TEXT("ab"))));
	EXPECT_TRUE(GetStringParam(Params, "u", TEXT("")).Equals(FString(TEXT("Sp\u00F6t"))));
	EXPECT_TRUE(ConvertLuaText(std::string("x\0y", 3)).Equals(FString(TEXT("x"))));
	const TCHAR WithNul[] = {u'a', 0, u'b'};
	EXPECT_EQ(ConvertEngineText(FString(3, WithNul)), std::string("a"));
	EXPECT_EQ(ConvertEngineText(FString()), std::string());
}

TEST_F(FLuaParamsTest, UserdataParamsAreReadThroughTheirMetatable)
{
	lua_State* L = Lua.lua_state();
	lua_newuserdatauv(L, 8, 0);
	sol::table Metatable = Eval("return {__index = function(self, key) if key == 'universe' then return 4 end end}");
	Metatable.push(L);
	lua_setmetatable(L, -2);
	sol::table Params(L, -1);
	lua_pop(L, 1);
	EXPECT_EQ(Params.get_type(), sol::type::userdata);
	EXPECT_EQ(GetIntParam(Params, "universe", 1, 0, 100), 4);
	EXPECT_EQ(GetParamType(Params, "other"), LUA_TNIL);
	EXPECT_EQ(GetIntParam(Params, "other", 3, 0, 10), 3);
}

TEST_F(FLuaParamsTest, AnErrorRaisedByAMetamethodReachesTheCallerUnchanged)
{
	sol::table Params = Eval("return setmetatable({}, {__index = function() error({code = 42}) end})");
	lua_State* L = Lua.lua_state();
	const int Top = lua_gettop(L);
	Lua.set_function("read", [](sol::table P) { return GetIntParam(P, "universe", 1, 0, 10); });
	Lua["params"] = Params;
	sol::protected_function_result Result = Lua.safe_script(
		"local ok, err = pcall(read, params)\n"
		"assert(not ok and type(err) == 'table' and err.code == 42)\n"
		"return 1",
		sol::script_pass_on_error);
	EXPECT_TRUE(Result.valid());
	EXPECT_EQ(lua_gettop(L), Top + 1);
}

TEST(DMXEngineTransactionsTest, TitlesAreLocalisableTextsOfTheModuleNamespace)
{
	const struct
	{
		EDMXEngineTransaction Transaction;
		const TCHAR* Key;
		const TCHAR* Title;
	} Expected[] = {
		{EDMXEngineTransaction::AddDMXEntity, TEXT("AddDMXEntity"), TEXT("Vorlith: Add DMX Library Entity")},
		{EDMXEngineTransaction::ConfigureDMXEntity, TEXT("ConfigureDMXEntity"), TEXT("Vorlith: Configure DMX Library Entity")},
		{EDMXEngineTransaction::RemoveDMXEntity, TEXT("RemoveDMXEntity"), TEXT("Vorlith: Remove DMX Library Entity")},
		{EDMXEngineTransaction::AddDMXComponent, TEXT("AddDMXComponent"), TEXT("Vorlith: Add DMX Component")},
		{EDMXEngineTransaction::ConfigureDMXComponent, TEXT("ConfigureDMXComponent"), TEXT("Vorlith: Configure DMX Component")},
	};
	for (const auto& Entry : Expected)
	{
		const FText Title = GetDMXEngineTransactionTitle(Entry.Transaction);
		EXPECT_TRUE(Title.ToString().Equals(FString(Entry.Title)));
		EXPECT_TRUE(Title.GetNamespace().Equals(FString(TEXT("Kest_DMXEngine"))));
		EXPECT_TRUE(Title.GetKey().Equals(FString(Entry.Key)));
	}
}
