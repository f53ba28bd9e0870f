-- When the engine fails a call: the module's failure answers, and the undo steps they leave.

local LIB = "/Game/DMX/Faults"
local OBJECT = LIB .. ".Faults"
assert(editor.create_library(LIB))
local lib = dmx_library(LIB)
assert(lib:add("fixture_type", { name = "Spot" }))
assert(lib:add("fixture_patch", { name = "Spot1", fixture_type = "Spot", universe = 2 }))
assert(editor.spawn_actor("Truss"))

local function history() return editor.undo_history() end
local function last_step() local steps = history(); return steps[#steps] end
local report = editor.library_report(LIB)

-- The engine creates no entity: nil, and exactly one step, which undoes and redoes to nothing.
for _, case in ipairs({
	{ class = "DMXEntityFixtureType", kind = "fixture_type", params = { name = "Wash", modes = { { name = "M" } } } },
	{ class = "DMXEntityFixturePatch", kind = "fixture_patch", params = { name = "Wash1", fixture_type = "spot", tags = { "t" } } },
}) do
	local base = #history()
	editor.fail_next(case.class)
	assert(lib:add(case.kind, case.params) == nil, case.kind .. ": nil when the engine creates nothing")
	assert(editor.transaction_depth() == 0, case.kind .. ": the step is closed")
	assert(#history() == base + 1 and last_step() == "Vorlith: Add DMX Library Entity", case.kind .. ": one step")
	assert(editor.library_report(LIB) == report, case.kind .. ": nothing was made")
	assert(editor.undo() and editor.library_report(LIB) == report, case.kind .. ": undo changes nothing")
	assert(editor.redo() and editor.library_report(LIB) == report, case.kind .. ": redo changes nothing")
	-- The engine refused once: the same call now creates the entity.
	local made = lib:add(case.kind, case.params)
	assert(made and made.name == case.params.name, case.kind .. ": the next creation works")
	assert(editor.undo() and editor.library_report(LIB) == report)
end

-- The engine creates no component: nil, its step stays, and neither patch nor receive is applied.
local truss = dmx_component("Truss")
local base = #history()
editor.fail_next("DMXComponent", 2)
assert(truss:add({ library = LIB, fixture_patch = "Spot1", receive = false }) == nil, "nil without a component")
assert(editor.transaction_depth() == 0)
assert(#history() == base + 1 and last_step() == "Vorlith: Add DMX Component", "the creation step stays")
assert(truss:info().component_count == 0, "no component")
assert(truss:add({ name = "Other" }) == nil, "the second refusal")
assert(#history() == base + 2, "a step for each attempt")
assert(editor.undo() and editor.undo() and #history() == base and truss:info().component_count == 0, "the steps undo to nothing")
local info = truss:add({ library = LIB, fixture_patch = "Spot1", receive = false })
assert(info and info.component_count == 1 and info.components[1].fixture_patch == "Spot1", "created once the engine agrees")
assert(info.components[1].receive_dmx_from_patch == false)

-- A library that does not load: the handle is not valid, whichever path form, and its methods
-- answer their failure values without a step.
editor.fail_load(OBJECT)
for _, path in ipairs({ LIB, OBJECT }) do
	local failing = dmx_library(path)
	assert(failing.valid == false and failing.path == path, path .. ": not valid")
	base = #history()
	assert(failing:add("fixture_type", { name = "X" }) == nil, path .. ": add answers nil")
	assert(failing:configure("fixture_patch", "Spot1", { universe = 9 }) == false, path .. ": configure answers false")
	assert(failing:remove("fixture_patch", "Spot1") == false, path .. ": remove answers false")
	local failed_info = failing:info()
	assert(failed_info.valid == false and next(failed_info, next(failed_info)) == nil, path .. ": info holds valid only")
	assert(#history() == base and editor.transaction_depth() == 0, path .. ": no step")
end
-- The handle made while the library loaded still works: it resolved the library once.
assert(lib:configure("fixture_patch", "Spot1", { universe = 3 }) == true)
assert(editor.undo())

-- A component whose "library" does not load gets its patch cleared, and the call still answers the
-- actor's info: add (reusing, so no step) and configure (its step).
base = #history()
info = truss:add({ library = LIB, fixture_patch = "Spot1", receive = true })
assert(info and info.valid and info.component_count == 1, "add answers the info table")
assert(info.components[1].receive_dmx_from_patch == true, "receive is applied all the same")
assert(#history() == base, "a reusing add records nothing")
info = truss:configure("", { library = OBJECT, fixture_patch = "Spot1", receive = false })
assert(info and info.component_count == 1 and info.components[1].receive_dmx_from_patch == false, "configure answers the info table")
assert(#history() == base + 1 and last_step() == "Vorlith: Configure DMX Component")
assert(editor.undo() and truss:info().components[1].receive_dmx_from_patch == true, "one undo")

-- Loading works again once the fault is taken away.
editor.fail_load(OBJECT, false)
assert(dmx_library(LIB).valid)
