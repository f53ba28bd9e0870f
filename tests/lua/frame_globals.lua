-- The three globals and sol2's argument errors; the headless editor's own helpers and library report.

local function expect_error(text, fn, ...)
	local ok, err = pcall(fn, ...)
	assert(not ok and tostring(err):find(text, 1, true), "expected '" .. text .. "', got " .. tostring(err))
end

expect_error("stack index 1, expected string, received number", dmx_library, 5)
expect_error("stack index 1, expected string, received no value", dmx_library)
expect_error("stack index 1, expected string, received nil", dmx_component, nil)
expect_error("stack index 1, expected table, received string", dmx_library("/Game/Nope").add, "fixture_type", {})
expect_error("stack index 1, expected table, received string", dmx_library("/Game/Nope").remove, "fixture_type", "x")
expect_error("attempt to call a nil value (global 'nope')", function() nope() end) -- luacheck: ignore 113
-- Every argument error, whichever check refused it, ends with the binding's signature.
for _, call in ipairs({
	function() return dmx_library(5) end,
	function() return dmx_component(nil) end,
	function() return dmx_library("/Game/Nope"):remove("fixture_type", 7) end,
	function() return dmx_library("/Game/Nope"):add("fixture_type", 7) end,
	function() return dmx_subsystem():int_to_bytes(1, "8bit", nil) end,
	function() return dmx_subsystem():int_to_bytes(2.5, "8bit", false) end,
}) do
	local ok, err = pcall(call)
	assert(not ok and err:match("^stack index %d+, expected %a+, received [%a ]+: .*%(bad argument into '.+%)'%)$"), err)
end

-- An unresolved path still answers a fresh handle, echoing the exact bytes given.
local odd = "/Game/\0weird\255"
assert(dmx_library(odd).valid == false and dmx_library(odd).path == odd)
assert(dmx_library("") ~= dmx_library(""))

-- The editor global.
assert(editor.transaction_depth() == 0 and editor.undo() == false and editor.redo() == false and #editor.undo_history() == 0)
assert(editor.spawn_actor("Spot_1", "Stage Left Spot") == true)
assert(editor.spawn_actor("spot_1") == false, "actor names are unique ignoring case")
assert(editor.create_library("/Game/DMX/Stage") == true and editor.create_library("/Game/DMX/Stage") == false)
assert(editor.create_library("not a path") == false)
local dirty = editor.dirty_packages()
assert(#dirty == 2 and dirty[1] == "/Game/DMX/Stage" and dirty[2] == "/Game/Maps/Untitled", table.concat(dirty, ","))

-- editor.library_report: types, then patches by universe and channel, with validity and overlaps.
assert(editor.library_report("/Game/DMX/Nowhere") == nil)
local lib = dmx_library("/Game/DMX/Stage")
assert(lib:add("fixture_type", { name = "Wash", category = "Moving Head", modes = {
	{ name = "Basic", functions = { { attribute = "Dimmer" }, { attribute = "Pan", name = "Pan", data_type = "E16Bit", use_lsb = true } } } } }))
assert(lib:add("fixture_type", { name = "Blank", modes = {} }))
for _, p in ipairs({ { "Front", "Wash", 2, 5 }, { "Side", "Wash", 2, 7 }, { "Back", "Wash", 2, 1 }, { "Late", "Wash", 1, 511 }, { "Void", "Blank", 1, 1 } }) do
	assert(lib:add("fixture_patch", { name = p[1], fixture_type = p[2], universe = p[3], starting_channel = p[4] }))
end
local report = editor.library_report("/Game/DMX/Stage")
assert(report == editor.library_report("/Game/DMX/Stage.Stage"), "package and object path give the same report")
local function at(pattern)
	local pos = report:find(pattern)
	assert(pos, "no '" .. pattern .. "' in:\n" .. report)
	return pos
end
at("^DMX Library /Game/DMX/Stage%.Stage\n")
at("  Wash %[Moving Head%]")
at("ch 2%-3 +Pan +Pan +16 bit LSB")
at("  Blank %[None%]: no modes")
assert(at("universe 1\n") < at("universe 2\n") and at("ch 1%-3 +Back") < at("ch 5%-7 +Front") and at("ch 5%-7 +Front") < at("ch 7%-9 +Side"))
at("Late[^\n]*\n[^\n]*INVALID: Channels range overflows max channel address %(512%)")
at("Front[^\n]*\n[^\n]*OVERLAPS: Side")
at("\n5 patches in 2 universes, 2 invalid, 2 overlapping\n?$")
