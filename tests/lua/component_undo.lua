-- Undo of dmx_component(actor):add: only the creation of a component is a step.

local LIB = "/Game/DMX/Hall"
local TITLE = "Vorlith: Add DMX Component"
assert(editor.create_library(LIB))
local lib = dmx_library(LIB)
assert(lib:add("fixture_type", { name = "Beam" }))
assert(lib:add("fixture_patch", { name = "Beam1", fixture_type = "Beam" }))
assert(lib:add("fixture_patch", { name = "Beam2", fixture_type = "Beam", starting_channel = 9 }))
assert(editor.spawn_actor("Rail"))
local function history() return editor.undo_history() end
local base = #history()

-- A creating add is one step under its title; a reusing add records nothing, whatever it changes.
local h = dmx_component("Rail")
assert(h:add({ library = LIB, fixture_patch = "Beam1", receive = false }).component_count == 1)
assert(#history() == base + 1 and history()[base + 1] == TITLE, "one step for the creation")
local c = h:add({ library = LIB, fixture_patch = "Beam2", receive = true }).components[1]
assert(c.fixture_patch == "Beam2" and c.receive_dmx_from_patch == true, "reuse applied")
assert(#history() == base + 1, "reuse is not a step")

-- Undo removes the component; the next undo is no longer this call's.
assert(editor.undo() and h:info().component_count == 0 and #history() == base, "undo removes it")
assert(h:configure("", {}) == nil, "nothing left to configure")

-- Redo brings it back registered, with the state it had when it was undone.
assert(editor.redo())
c = h:info().components[1]
assert(c and c.name == "DMXComponent" and c.registered, "back")
assert(c.fixture_patch == "Beam2" and c.receive_dmx_from_patch == true, "later changes come back with it")
assert(#history() == base + 1)
