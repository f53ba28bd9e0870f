// A check session changes nothing a script can see: the same scripts give the same handles, results
// and errors (the very values a metamethod raised), the same engine state and undo history with and
// without the check's wrappers; and a plain session (what `run` uses) has no wrappers at all.
#include <gtest/gtest.h>

#include <string>
#include "DMXStateDigest.h"
#include "Editor.h"
#include "Editor/TransBuffer.h"
#include "KestDMXCheck.h"
#include "KestDMXRunner.h"

namespace
{
	// Writes every answer (count and values, tables in full with their keys sorted) and every error
	// into the global transcript.
	const char* const Recorder = R"lua(
local Lines = {}
local Seen
local function Dump(Value, Depth)
	local Kind = type(Value)
	if Kind == "string" then return string.format("%q", Value) end
	if Kind ~= "table" then return Kind == "number" and math.type(Value) .. ":" .. tostring(Value) or (Kind == "boolean" or Kind == "nil") and tostring(Value) or Kind end
	if Seen[Value] or Depth > 8 then return "<table seen>" end
	Seen[Value] = true
	local Keys = {}
	for Key in pairs(Value) do Keys[#Keys + 1] = Key end
	table.sort(Keys, function(A, B) return tostring(A) < tostring(B) end)
	local Parts = {}
	for _, Key in ipairs(Keys) do Parts[#Parts + 1] = tostring(Key) .. "=" .. Dump(Value[Key], Depth + 1) end
	return "{" .. table.concat(Parts, ",") .. "}"
end
function record(Label, ...)
	Seen = {}
	local Parts = {}
	for Index = 1, select("#", ...) do Parts[#Parts + 1] = Dump((select(Index, ...)), 0) end
	Lines[#Lines + 1] = Label .. " [" .. select("#", ...) .. "] " .. table.concat(Parts, " ")
end
function try(Label, Fn, ...) record(Label, pcall(Fn, ...)) end
function transcript() return table.concat(Lines, "\n") end
)lua";

	// Every kind of call: answers, failures, sol2's argument errors, errors raised by metamethods,
	// calls made from inside a call, from a finalizer and from a coroutine, userdata params.
	const char* const Calls = R"lua(
assert(editor.create_library("/Game/DMX/Stage") and editor.spawn_actor("Truss", "Truss Left"))
local L = dmx_library("/Game/DMX/Stage")
record("handle", L)
record("bad handle", dmx_library("/Game/DMX/Nope"), dmx_library(""))
try("add type", L.add, L, "fixture_type", {name = "Spot", category = "Moving Head", modes = {{name = "A", functions = {
	{attribute = "Pan", data_type = "16-bit", default_value = 2.5, physical_from = -270, physical_to = 270}, {name = "x"}, "skip"},
	matrix = {enabled = true, x_cells = 0, distribution = "TopLeftToRight", cell_attributes = {{attribute = "Red"}}}}, {name = "a"}}})
try("add again", L.add, L, "fixture_type", {name = "Spot", modes = io.stdout})
try("add patch", L.add, L, "fixture_patch", {name = "P", fixture_type = "spot", universe = "2", startingchannel = 10, tags = {"a", 5}, editor_color = {r = 2}})
try("add patch 2", L.add, L, "fixture_patch", {name = "P", fixture_type = "Spot", starting_channel = 600, active_mode_index = 9})
try("add missing type", L.add, L, "fixture_patch", {fixture_type = "Nope"})
try("bad kind", L.add, L, "fixture", {})
try("dot call", L.add, "fixture_type", {})
try("nil params", L.add, L, "fixture_type", nil)
try("number name", L.remove, L, "fixture_type", 7)
try("raises string", L.add, L, "fixture_patch", setmetatable({fixture_type = "Spot"}, {__index = function(_, Key) if Key == "universe" then error("boom " .. Key) end end}))
local Raised = {}
try("raises table", L.configure, L, "fixture_type", "Spot", setmetatable({}, {__index = function() error(Raised) end}))
record("same table raised", select(2, pcall(L.configure, L, "fixture_type", "Spot", setmetatable({}, {__index = function() error(Raised) end}))) == Raised)
try("reentrant", L.add, L, "fixture_patch", setmetatable({fixture_type = "Spot"}, {__index = function(_, Key)
	if Key == "name" then return L:add("fixture_type", {name = "Inner"}).name end end}))
try("remove during configure", L.configure, L, "fixture_type", "Spot", {modes = {setmetatable({}, {__index = function(_, Key)
	if Key == "functions" then L:remove("fixture_type", "Spot") end end})}})
try("userdata params", L.add, L, "fixture_type", io.stdout)
try("configure", L.configure, L, "fixture_patch", "p", {universe = 3, fixture_type = "Inner", name = "P"})
try("remove", L.remove, L, "fixture_patch", "P_1")
try("remove none", L.remove, L, "fixture_patch", "P_1")
try("coroutine", coroutine.wrap(function() return L:add("fixture_type", {name = "Co"}) end))
local Finalized = setmetatable({}, {__gc = function() record("finalizer", L:add("fixture_type", {name = "FromGC"})) end})
Finalized = nil
collectgarbage()
collectgarbage()
try("info", L.info, L)
local C = dmx_component("Truss Left")
record("component handle", C, dmx_component("Nobody"))
try("component add", C.add, C, {library = "/Game/DMX/Stage", fixture_patch = "P", receive = true})
try("component configure", C.configure, C, "dmx", {library = "/Game/DMX/Nope", name = 3})
try("component configure none", C.configure, C, "Other", {})
try("component info", C.info, C)
local S = dmx_subsystem()
record("subsystem handle", S)
try("int to bytes", S.int_to_bytes, S, -1, "16 bit", false)
try("int to bytes float", S.int_to_bytes, S, 2.5, "8bit", false)
try("bytes to int", S.bytes_to_int, S, {1, 2, 300, "x", -4}, true)
try("bytes float", S.bytes_to_int, S, {1.0}, false)
try("normalized", S.normalized_to_bytes, S, 1.5, "24bit", true)
try("bytes to normalized", S.bytes_to_normalized, S, {255, 255}, false)
record("history", editor.undo_history(), editor.transaction_depth())
)lua";

	struct FOutcome
	{
		std::string Transcript;
		std::vector<std::string> State;
		std::vector<std::string> History;
	};

	FOutcome RunCalls(bool bChecked)
	{
		FOutcome Outcome;
		FKestCheckLog Log;
		FKestDMXSession Session;
		if (bChecked)
		{
			InstallKestDMXCheck(Session, Log);
		}
		std::string Error;
		EXPECT_TRUE(Session.RunScript(Recorder, "recorder", Error)) << Error;
		EXPECT_TRUE(Session.RunScript(Calls, "calls.lua", Error)) << Error;
		Outcome.Transcript = Session.GetLua().GetState()["transcript"]();
		for (const DMXStateDigest::FLine& Line : DMXStateDigest::TakeDigest(Session.GetEditor().GetEditorWorld()))
		{
			Outcome.State.push_back(Line.Text);
		}
		for (const FText& Title : GEditor->Trans->GetUndoTitles())
		{
			Outcome.History.push_back(DMXStateDigest::ToUTF8(Title.ToString()));
		}
		if (bChecked)
		{
			EXPECT_GT(Log.Findings.size(), 20u) << "the calls above are meant to be full of mistakes";
		}
		Log.bActive = false;
		return Outcome;
	}
}

TEST(FCheckPassThroughTest, ScriptsSeeTheSameValuesErrorsAndState)
{
	const FOutcome Plain = RunCalls(false);
	const FOutcome Checked = RunCalls(true);
	ASSERT_FALSE(Plain.Transcript.empty());
	EXPECT_NE(Plain.Transcript.find("raises string [2] false \"calls.lua:17: boom universe\""), std::string::npos) << Plain.Transcript;
	EXPECT_NE(Plain.Transcript.find("same table raised [1] true"), std::string::npos) << Plain.Transcript;
	EXPECT_NE(Plain.Transcript.find("finalizer [1] {mode_count=integer:1,name=\"FromGC\"}"), std::string::npos) << Plain.Transcript;
	EXPECT_EQ(Checked.Transcript, Plain.Transcript);
	EXPECT_EQ(Checked.State, Plain.State);
	EXPECT_EQ(Checked.History, Plain.History);
}

// `run` uses a plain session: the globals are the module's own functions, not the check's wrappers
// (whose first upvalue is the function they wrap).
TEST(FCheckPassThroughTest, PlainSessionsAreNotWrapped)
{
	const char* const Probe = R"lua(
local Wrapped = 0
for _, Name in ipairs({"dmx_library", "dmx_component", "dmx_subsystem"}) do
	local _, First = debug.getupvalue(_G[Name], 1)
	Wrapped = Wrapped + (type(First) == "function" and 1 or 0)
	local Handle = _G[Name]("x")
	local _, Method = debug.getupvalue(Handle.info or Handle.int_to_bytes, 1)
	Wrapped = Wrapped + (type(Method) == "function" and 1 or 0)
end
return Wrapped
)lua";
	for (const bool bChecked : {false, true})
	{
		FKestCheckLog Log;
		FKestDMXSession Session;
		if (bChecked)
		{
			InstallKestDMXCheck(Session, Log);
		}
		const int Wrapped = Session.GetLua().GetState().script(Probe);
		EXPECT_EQ(Wrapped, bChecked ? 6 : 0);
		Log.bActive = false;
	}
}
