-- dmx_component(actor):configure(component, params): one undo step per call on an existing component.

local LIB = "/Game/DMX/Rig"
local TITLE = "Vorlith: Configure DMX Component"
assert(editor.create_library(LIB))
local lib = dmx_library(LIB)
assert(lib:add("fixture_type", { name = "Wash" }))
assert(lib:add("fixture_patch", { name = "Wash1", fixture_type = "Wash", universe = 4, starting_channel = 33 }))
assert(editor.spawn_actor("Boom"))
local h = dmx_component("Boom")
assert(h:add({}) and h:add({ name = "Second" }).component_count == 2)

local function steps() return #editor.undo_history() end
local function second(info) for _, c in ipairs(info.components) do if c.name == "Second" then return c end end end

-- A component the actor lacks: nil, no step, nothing created.
local base = steps()
assert(h:configure("Missing", { library = LIB, fixture_patch = "Wash1" }) == nil, "nil for a missing component")
assert(steps() == base and h:info().component_count == 2, "no step, no component")

-- Patch and receive in one step; the component is matched ignoring case and "name" is ignored.
local c = second(h:configure("second", { name = "X", library = LIB, fixture_patch = "WASH1", receive = false }))
assert(c and c.fixture_patch == "Wash1" and c.universe == 4 and c.receive_dmx_from_patch == false, "configured")
assert(steps() == base + 1 and editor.undo_history()[base + 1] == TITLE and editor.transaction_depth() == 0, "one step")

-- The empty name acts on the first component; a call that changes nothing is still a step.
local info = h:configure("", { library = true, receive = 0 })
assert(info.components[1].name == "DMXComponent" and info.components[1].fixture_patch == "", "first component")
assert(steps() == base + 2, "step for no change")

-- Undo restores the patch and receive state; redo applies them again.
assert(editor.undo() and editor.undo(), "undo both")
c = second(h:info())
assert(c.fixture_patch == "" and c.receive_dmx_from_patch == true and h:info().component_count == 2, "undone")
assert(editor.redo())
assert(second(h:info()).fixture_patch == "Wash1", "redone")

-- A params metamethod that raises: the error reaches the script and the step is closed.
local raising = setmetatable({}, { __index = function(_, key) if key == "receive" then error("params exploded") end end })
local ok, err = pcall(function() return h:configure("Second", raising) end)
assert(not ok and tostring(err):find("params exploded", 1, true) and editor.transaction_depth() == 0, tostring(err))
