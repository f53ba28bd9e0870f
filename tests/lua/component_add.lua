-- dmx_component(actor):add(params): create or reuse a component, assign a patch, set the receive state.

local LIB = "/Game/DMX/Stage"
assert(editor.create_library(LIB))
local lib = dmx_library(LIB)
assert(lib:add("fixture_type", { name = "Spot" }))
assert(lib:add("fixture_patch", { name = "Spot1", fixture_type = "Spot", universe = 2, starting_channel = 17 }))
assert(lib:add("fixture_patch", { name = "Spot2", fixture_type = "Spot", universe = 3, starting_channel = 5 }))
assert(editor.spawn_actor("Truss"))
local h = dmx_component("Truss")

local function first(info)
	assert(info and info.valid and info.component_count == #info.components, "info table")
	return info.components[1]
end

-- An empty params table creates "DMXComponent", registered, receiving, without a patch.
local c = first(h:add({}))
assert(c.name == "DMXComponent" and c.registered == true and c.receive_dmx_from_patch == true, "created")
assert(c.tick_enabled == false, "nobody listens, so no tick")
assert(c.fixture_patch == "" and c.fixture_type == "" and c.universe == 0 and c.starting_channel == 0, "no patch")

-- Reuse: the same name, other letter case, a non-string name (the default).
for _, params in ipairs({ {}, { name = "dmxcomponent" }, { name = 42 } }) do
	assert(h:add(params).component_count == 1, "reused")
end

-- Patch by name ignoring case, also through the object path.
c = first(h:add({ library = LIB, fixture_patch = "spot1" }))
assert(c.fixture_patch == "Spot1" and c.fixture_type == "Spot" and c.universe == 2 and c.starting_channel == 17, "patch set")
c = first(h:add({ library = LIB .. ".Stage", fixture_patch = "SPOT2" }))
assert(c.fixture_patch == "Spot2" and c.universe == 3, "object path")

-- Non-string "library" and non-boolean "receive" leave the state alone; a boolean is applied.
c = first(h:add({ library = 7, fixture_patch = "Spot1", receive = 1 }))
assert(c.fixture_patch == "Spot2" and c.receive_dmx_from_patch == true, "ignored keys")
c = first(h:add({ receive = false }))
assert(c.receive_dmx_from_patch == false and c.fixture_patch == "Spot2", "receive false, patch kept")

-- A patch the library lacks, or a library that does not load, hands the engine no patch; the info
-- table still comes back. (What the engine then reports for the component's patch is its own.)
for _, params in ipairs({ { library = LIB, fixture_patch = "Nope" }, { library = "/Game/DMX/Missing" } }) do
	assert(first(h:add(params)).receive_dmx_from_patch == false, "answered, receive untouched")
end

-- A second name creates a second component; the empty name then reuses the first.
local info = h:add({ name = "Backup", library = LIB, fixture_patch = "Spot1", receive = false })
assert(info.component_count == 2, "second component")
for _, entry in ipairs(info.components) do
	if entry.name == "Backup" then
		assert(entry.fixture_patch == "Spot1" and entry.registered, "created with its patch")
	end
end
local firstName = info.components[1].name
info = h:add({ name = "", receive = true })
assert(info.component_count == 2 and info.components[1].name == firstName, "empty name reuses")
assert(info.components[1].receive_dmx_from_patch == true, "the first one was changed")

-- With no component, the empty name creates one under a name the engine picks; a userdata params
-- (read through its metatable, no "name") then gives "DMXComponent".
assert(editor.spawn_actor("Bare"))
info = dmx_component("Bare"):add({ name = "" })
assert(info.component_count == 1 and info.components[1].name ~= "", "engine-made name")
assert(dmx_component("Bare"):add(io.stdout).component_count == 2, "userdata params")
