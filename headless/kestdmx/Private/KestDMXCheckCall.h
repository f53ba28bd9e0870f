// What the check session's wrappers share: one observed call, with its findings and the arguments
// as the script gave them, read raw (no metamethod runs, nothing is called) against the schema.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>
#include "KestDMXCheck.h"
#include "KestDMXSchema.h"

struct lua_State;

// One value of the arguments as given: a scalar, a params table with its known keys, or a list with
// its entries. Keys the table does not hold are recorded too (absent), so look-ups never fail.
struct FKestAsked
{
	std::string Path;
	// The raw Lua type given; LUA_TNIL when absent.
	int LuaType = 0;
	// Given with a type the module reads for it.
	bool bCounts = false;
	// Absent here, but the table has an __index, so the module may have read something else.
	bool bUncertain = false;
	// A userdata: the module reads it through its metatable, which the check does not run.
	bool bOpaque = false;
	nlohmann::json Given;
	// The value the module takes from it, after its default, truncation and clamp; null when the
	// setting keeps its current value or nothing is applied.
	nlohmann::json Used;
	std::map<std::string, FKestAsked> Keys;
	std::vector<FKestAsked> Entries;

	const FKestAsked& operator[](const std::string& Key) const;
	std::optional<std::string> GetString() const;
	std::optional<double> GetNumber() const;
};

// One call of a wrapped global or method.
struct FKestCheckCall
{
	FKestCheckLog& Log;
	FKestCheckSite Site;
	std::vector<FKestCheckFinding> Findings;
	// The keys suggested for misspelled ones ("did you mean ...").
	std::vector<std::string> SuggestedKeys;

	FKestCheckCall(FKestCheckLog& InLog, FKestCheckSite InSite) : Log(InLog), Site(std::move(InSite)) {}

	void Report(const std::string& Code, const std::string& Key, const std::string& Message, nlohmann::json Given = nullptr, nlohmann::json Used = nullptr);
	bool HasFinding(const std::function<bool(const FKestCheckFinding&)>& Test) const;
	// Hands the findings to the log.
	void Finish();
};

// Reads the params value at Index against the class: unknown keys (with the closest known key),
// keys of another type, texts that change nothing, numbers truncated or clamped, list entries
// skipped. Absent keys read as nil; a userdata is recorded as opaque and not walked.
FKestAsked ReadAskedParams(lua_State* L, int Index, const FKestClass& Class, const std::string& Path, FKestCheckCall& Call);

// Reads one argument that is not a params table: its type, and for a text argument whether its
// text changes anything.
FKestAsked ReadAskedArgument(lua_State* L, int Index, const FKestArgument& Argument, FKestCheckCall& Call);

// For a key the class does not have: the closest key it has, or the key of which it is another
// spelling, or a key of a table below ("matrix.x_cells", "modes[n].functions") the script may have
// put at the wrong level; empty when none is close.
std::string SuggestParamsKey(const FKestClass& Class, const std::string& Key);

// The closest of the candidates to a misspelled text (letter case, '_' and '-' aside, then by edit
// distance); empty when none is close.
std::string SuggestClosest(const std::string& Text, const std::vector<std::string>& Candidates);

// "the string \"2\"", "the number 2.5", "true", "a table": the Lua value at Index, as a message says it.
std::string DescribeLuaValue(lua_State* L, int Index);
// A number with up to 14 digits.
std::string FormatCheckNumber(double Value);
// An integer as written, a float with up to 14 digits.
std::string FormatLuaNumber(lua_State* L, int Index);
// A Lua string literal of the text, as a message quotes it.
std::string QuoteText(const std::string& Text);
// The JSON text of a UTF-8 string that may not be valid UTF-8.
nlohmann::json MakeJsonText(const std::string& Text);

// Analyses of calls, per global; each runs after the call returned and sees its results.
struct FKestCallResults
{
	lua_State* L = nullptr;
	int First = 0;
	int Count = 0;
};
void CheckLibraryOpened(FKestCheckCall& Call, const FKestAsked& Path, FKestCheckHandle& Handle);
void CheckComponentOpened(FKestCheckCall& Call, const FKestAsked& Actor, FKestCheckHandle& Handle);
void CheckSubsystemOpened(FKestCheckCall& Call, bool bValid);

// A library method: before the call (what the engine holds that the call may change) and after it.
struct FKestLibraryCallState;
std::shared_ptr<FKestLibraryCallState> PrepareLibraryMethodCheck(FKestCheckCall& Call, const FKestCheckHandle& Handle, const std::string& Method,
	const std::vector<FKestAsked>& Arguments);
void CheckLibraryMethod(FKestCheckCall& Call, const FKestCheckHandle& Handle, const std::string& Method, const std::vector<FKestAsked>& Arguments,
	const FKestLibraryCallState* Before, const FKestCallResults& Results);

void CheckComponentMethod(FKestCheckCall& Call, const FKestCheckHandle& Handle, const std::string& Method, const std::vector<FKestAsked>& Arguments,
	const FKestCallResults& Results);
void CheckSubsystemMethod(FKestCheckCall& Call, const FKestCheckHandle& Handle, const std::string& Method, const std::vector<FKestAsked>& Arguments,
	const FKestCallResults& Results);
