-- When the engine fails a call: the module's failure answers, and the undo steps they leave.

local LIB = "/Game/DMX/Faults"
local OBJECT = LIB .. ".Faults"
assert(editor.create_library(LIB))
local lib = dmx_library(LIB)
assert(lib:add("fixture_type", { name = "Spot" }))
assert(lib:add("fixture_patch", { name = "Spot1", fixture_type = "Spot", universe = 2 }))
assert(editor.spawn_actor("Truss"))

local function steps() return #editor.undo_history() end
local function last_step() local h = editor.undo_history(); return h[#h] end
local report = editor.library_report(LIB)

-- The engine creates no entity: nil, and exactly one closed step, which undoes and redoes to nothing.
for _, case in ipairs({
	{ class = "DMXEntityFixtureType", kind = "fixture_type", params = { name = "Wash", modes = { { name = "M" } } } },
	{ class = "DMXEntityFixturePatch", kind = "fixture_patch", params = { name = "Wash1", fixture_type = "spot", tags = { "t" } } },
}) do
	local base = steps()
	editor.fail_next(case.class)
	assert(lib:add(case.kind, case.params) == nil and editor.transaction_depth() == 0, case.kind .. ": nil")
	assert(steps() == base + 1 and last_step() == "Vorlith: Add DMX Library Entity", case.kind .. ": one step")
	assert(editor.library_report(LIB) == report, case.kind .. ": nothing was made")
	assert(editor.undo() and editor.redo() and editor.library_report(LIB) == report, case.kind .. ": undo/redo change nothing")
	assert(lib:add(case.kind, case.params).name == case.params.name, case.kind .. ": the next creation works")
	assert(editor.undo() and editor.library_report(LIB) == report)
end

-- The engine creates no component: nil, a step for each attempt, and neither patch nor receive applied.
local truss = dmx_component("Truss")
local base = steps()
editor.fail_next("DMXComponent", 2)
assert(truss:add({ library = LIB, fixture_patch = "Spot1", receive = false }) == nil and editor.transaction_depth() == 0)
assert(truss:add({ name = "Other" }) == nil and truss:info().component_count == 0)
assert(steps() == base + 2 and last_step() == "Vorlith: Add DMX Component", "a step for each attempt")
assert(editor.undo() and editor.undo() and truss:info().component_count == 0)
local info = truss:add({ library = LIB, fixture_patch = "Spot1", receive = false })
assert(info.component_count == 1 and info.components[1].fixture_patch == "Spot1" and info.components[1].receive_dmx_from_patch == false)

-- A library that does not load: the handle is not valid, whichever path form, and its methods
-- answer their failure values without a step.
editor.fail_load(OBJECT)
base = steps()
for _, path in ipairs({ LIB, OBJECT }) do
	local failing = dmx_library(path)
	assert(failing.valid == false and failing.path == path, path .. ": not valid")
	assert(failing:add("fixture_type", { name = "X" }) == nil and failing:configure("fixture_patch", "Spot1", { universe = 9 }) == false)
	assert(failing:remove("fixture_patch", "Spot1") == false and next(failing:info(), next(failing:info())) == nil)
end
assert(steps() == base and editor.transaction_depth() == 0, "no step")
-- The handle made while the library loaded still works: it resolved the library once.
assert(lib:configure("fixture_patch", "Spot1", { universe = 3 }) == true and editor.undo())

-- A component whose "library" does not load still answers the actor's info: add (reusing, so no step)
-- and configure (its step).
info = truss:add({ library = LIB, fixture_patch = "Spot1", receive = true })
assert(info.valid and info.component_count == 1 and info.components[1].receive_dmx_from_patch == true and steps() == base)
info = truss:configure("", { library = OBJECT, fixture_patch = "Spot1", receive = false })
assert(info.component_count == 1 and info.components[1].receive_dmx_from_patch == false)
assert(steps() == base + 1 and last_step() == "Vorlith: Configure DMX Component")
assert(editor.undo() and truss:info().components[1].receive_dmx_from_patch == true, "one undo")

editor.fail_load(OBJECT, false)
assert(dmx_library(LIB).valid, "loading works again once the fault is taken away")
