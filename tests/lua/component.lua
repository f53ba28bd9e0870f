-- dmx_component(actor): actor lookup, add (create or reuse), configure, info, and their undo steps.

local LIB = "/Game/DMX/Stage"
assert(editor.create_library(LIB))
local lib = dmx_library(LIB)
assert(lib:add("fixture_type", { name = "Spot" }))
assert(lib:add("fixture_patch", { name = "Spot1", fixture_type = "Spot", universe = 2, starting_channel = 17 }))
assert(lib:add("fixture_patch", { name = "Spot2", fixture_type = "Spot", universe = 3, starting_channel = 5 }))
assert(editor.spawn_actor("Truss", "Front Truss"))

local function history() return table.concat(editor.undo_history(), "|") end
local function steps() return #editor.undo_history() end
local function named(info, name) for _, c in ipairs(info.components) do if c.name == name then return c end end end
local function argument_error(fn)
	local ok, err = pcall(fn)
	assert(not ok and tostring(err):find("stack index", 1, true), tostring(err))
end
local base = steps()

-- The empty string and an unknown actor: invalid handles whose methods answer their failure value.
for _, name in ipairs({ "", "Nobody" }) do
	local h = dmx_component(name)
	assert(h.valid == false and h.actor == name, "invalid handle for '" .. name .. "'")
	local info = h:info()
	assert(info.valid == false and info.component_count == 0 and next(info.components) == nil and info.actor_name == nil)
	assert(h:add({}) == nil and h:configure("", {}) == nil, "add/configure answer nil")
end

-- Found by label in other letter case: "actor" echoes the script's text, info the actor's own.
local h = dmx_component("front TRUSS")
assert(h.valid == true and h.actor == "front TRUSS", "found by label")
local info = h:info()
assert(info.actor_label == "Front Truss" and info.actor_name == "Truss" and info.component_count == 0 and #info.components == 0)

argument_error(function() return dmx_component(5) end)
argument_error(function() return h:add(nil) end)
argument_error(function() return h.add({}) end)
argument_error(function() return h:configure(nil, {}) end)
argument_error(function() return h:configure(1, {}) end)
assert(steps() == base and h:info().component_count == 0, "invalid handles and refused calls record nothing")

-- A creating add: "DMXComponent", registered, receiving, no patch ("" and 0), no listener so no tick.
local c = h:add({}).components[1]
assert(c.name == "DMXComponent" and c.registered == true and c.receive_dmx_from_patch == true and c.tick_enabled == false)
assert(c.fixture_patch == "" and c.fixture_type == "" and c.universe == 0 and c.starting_channel == 0, "no patch")
local created = history()
assert(steps() == base + 1 and editor.undo_history()[base + 1] == "Vorlith: Add DMX Component", "one step")

-- Reusing adds (the default name in any case, a non-string name) apply patch and receive but record nothing.
for _, params in ipairs({ {}, { name = "dmxcomponent" }, { name = 42 } }) do
	assert(h:add(params).component_count == 1, "reused")
end
c = h:add({ library = LIB, fixture_patch = "spot1" }).components[1]
assert(c.fixture_patch == "Spot1" and c.fixture_type == "Spot" and c.universe == 2 and c.starting_channel == 17, "patch by name")
c = h:add({ library = LIB .. ".Stage", fixture_patch = "SPOT2", receive = false }).components[1]
assert(c.fixture_patch == "Spot2" and c.universe == 3 and c.receive_dmx_from_patch == false, "object path, receive off")
c = h:add({ library = 7, fixture_patch = "Spot1", receive = 1 }).components[1]
assert(c.fixture_patch == "Spot2" and c.receive_dmx_from_patch == false, "non-string library, non-boolean receive ignored")
-- A patch the library lacks, or a library that does not load, clears the patch; receive is untouched.
for _, params in ipairs({ { library = LIB, fixture_patch = "Nope" }, { library = "/Game/DMX/Missing" } }) do
	assert(h:add(params).components[1].receive_dmx_from_patch == false)
end
assert(history() == created, "reusing adds record nothing")

-- Undo removes the component and nothing else; redo brings it back with its later state.
assert(h:add({ library = LIB, fixture_patch = "Spot2" }))
assert(editor.undo() and h:info().component_count == 0 and steps() == base, "undo removes it")
assert(lib:info().fixture_patch_count == 2, "the library is untouched")
assert(editor.redo())
c = h:info().components[1]
assert(c.name == "DMXComponent" and c.registered and c.fixture_patch == "Spot2" and c.receive_dmx_from_patch == false, "redone")

-- A second name creates a second component; the empty name then reuses the first.
info = h:add({ name = "Backup", library = LIB, fixture_patch = "Spot1" })
assert(info.component_count == 2 and named(info, "Backup").fixture_patch == "Spot1")
info = h:add({ name = "", receive = true })
assert(info.component_count == 2 and info.components[1].name == "DMXComponent" and info.components[1].receive_dmx_from_patch)

-- configure: nil and no step for a component the actor lacks; otherwise one step, name matched ignoring case.
base = steps()
assert(h:configure("Missing", { library = LIB, fixture_patch = "Spot1" }) == nil and steps() == base)
c = named(h:configure("backup", { name = "X", library = LIB, fixture_patch = "SPOT2", receive = false }), "Backup")
assert(c.fixture_patch == "Spot2" and c.universe == 3 and c.receive_dmx_from_patch == false, "configured")
assert(steps() == base + 1 and editor.undo_history()[base + 1] == "Vorlith: Configure DMX Component")
info = h:configure("", { library = true, receive = 0 })
assert(info.components[1].name == "DMXComponent" and steps() == base + 2, "empty name: the first; no change is still a step")
assert(editor.undo() and editor.undo())
c = named(h:info(), "Backup")
assert(c.fixture_patch == "Spot1" and c.receive_dmx_from_patch == true, "undone")

-- With no component, the empty name creates one under a name the engine picks; userdata params has no "name".
assert(editor.spawn_actor("Bare"))
info = dmx_component("Bare"):add({ name = "" })
assert(info.component_count == 1 and info.components[1].name ~= "", "engine-made name")
assert(dmx_component("Bare"):add(io.stdout).component_count == 2, "userdata params")
