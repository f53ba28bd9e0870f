-- dmx_component(actor): finding the actor, the "actor" echo, argument checks and info().

local function expect_argument_error(fn, what)
	local ok, err = pcall(fn)
	assert(not ok and tostring(err):find("stack index", 1, true), what .. ": " .. tostring(err))
end

assert(editor.spawn_actor("StageLeft_Spot", "Front Spot"))

-- The empty string and an unknown actor: an invalid handle whose methods answer their failure value.
for _, name in ipairs({ "", "Nobody" }) do
	local h = dmx_component(name)
	assert(h.valid == false and h.actor == name, "invalid handle for '" .. name .. "'")
	local info = h:info()
	assert(info.valid == false and info.component_count == 0 and next(info.components) == nil, "invalid info")
	assert(info.actor_label == nil and info.actor_name == nil, "no actor fields")
	assert(h:add({}) == nil and h:configure("", {}) == nil, "add/configure answer nil")
end
assert(#editor.undo_history() == 0, "an invalid handle records nothing")

-- Found by label in other letter case: "actor" is the script's text, info the actor's own label and name.
local h = dmx_component("front SPOT")
assert(h.valid == true and h.actor == "front SPOT", "found by label, echo as given")
local info = h:info()
assert(info.actor_label == "Front Spot" and info.actor_name == "StageLeft_Spot", "label and name")
assert(info.component_count == 0 and #info.components == 0, "no components yet")

-- An actor without a label reports the default one. (Spawned only now: a lookup that fails by name
-- makes labels for every actor it walks.)
assert(editor.spawn_actor("Par_2"))
assert(dmx_component("Par_2"):info().actor_label == "Actor2", "default label")

-- The lookup text ends at the first NUL; "actor" keeps every byte.
local withNul = dmx_component("Par_2\0junk")
assert(withNul.valid == true and withNul.actor == "Par_2\0junk", "NUL handling")

expect_argument_error(function() return dmx_component(5) end, "number actor")
expect_argument_error(function() return dmx_component() end, "missing actor")
expect_argument_error(function() return h:add(nil) end, "nil params")
expect_argument_error(function() return h.add({}) end, "dot call")
expect_argument_error(function() return h:configure(nil, {}) end, "nil component")
expect_argument_error(function() return h:configure(1, {}) end, "number component")
assert(h:info().component_count == 0 and #editor.undo_history() == 0, "refused calls change nothing")
