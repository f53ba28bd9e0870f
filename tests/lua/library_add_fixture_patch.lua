-- add("fixture_patch"): type lookup, defaults and clamps, tags, colour, receive flag, read order.

assert(editor.create_library("/Game/DMX/Patches"))
local H = dmx_library("/Game/DMX/Patches")

assert(H:add("fixture_type", {name = "Spot", modes = {
	{name = "Basic", functions = {{attribute = "Dimmer", data_type = "16bit"}, {attribute = "Pan"}}},
	{name = "Ext", functions = {{attribute = "Dimmer"}}},
}}).mode_count == 2)
assert(H:add("fixture_type", {name = "Hollow", modes = {}}))

local function PatchInfo(Name)
	for _, Patch in ipairs(H:info().fixture_patches) do
		if Patch.name == Name then
			return Patch
		end
	end
	error("no fixture patch " .. Name)
end

-- Defaults and the answer's fields.
local P = H:add("fixture_patch", {fixture_type = "sPoT"})
assert(P.name == "FixturePatch" and P.channel_span == 3 and P.ending_channel == 3)
local Info = PatchInfo("FixturePatch")
assert(Info.fixture_type == "Spot" and Info.universe == 1 and Info.starting_channel == 1 and Info.active_mode_index == 0)
assert(Info.receive_dmx_in_editor == false and Info.tag_count == 0 and #Info.tags == 0)
local Key = {"name", "channel_span", "ending_channel"}
local Count = 0
for K in pairs(P) do Count = Count + 1 end
assert(Count == #Key, "no other keys in the answer")

-- Clamps: truncation first, out-of-range numbers end at the lower bound.
P = H:add("fixture_patch", {fixture_type = "Spot", name = "Low", starting_channel = 0, universe = -3, active_mode_index = -1})
Info = PatchInfo("Low")
assert(Info.starting_channel == 1 and Info.universe == 0 and Info.active_mode_index == 0)
P = H:add("fixture_patch", {fixture_type = "Spot", name = "High", starting_channel = 513, universe = 1e12, active_mode_index = 1.9})
Info = PatchInfo("High")
assert(Info.starting_channel == 512 and Info.universe == 0 and Info.active_mode_index == 1)
assert(P.channel_span == 1 and P.ending_channel == 512, "the answer reflects mode 1")
P = H:add("fixture_patch", {fixture_type = "Spot", name = "Over", starting_channel = 511.99, universe = "3", active_mode_index = 7})
Info = PatchInfo("Over")
assert(P.ending_channel == 513 and Info.universe == 1, "string universe is not a number; the end is not clamped")
assert(Info.active_mode_index == 0, "a mode the type lacks is left to the engine, which keeps mode 0")
P = H:add("fixture_patch", {fixture_type = "Hollow", name = "NoModes"})
assert(P.channel_span == 0 and P.ending_channel == 0 and PatchInfo("NoModes").active_mode_index == -1)

-- Unknown types make nothing.
local Before = H:info().fixture_patch_count
assert(H:add("fixture_patch", {fixture_type = "Wash", name = "X"}) == nil)
assert(H:add("fixture_patch", {fixture_type = 5, name = "X"}) == nil)
assert(H:info().fixture_patch_count == Before)

-- Tags: string entries only, in order; "" becomes the None name; a userdata list empties them.
H:add("fixture_patch", {fixture_type = "Spot", name = "Tagged", tags = {"a", 5, "b", true, "", "a"}})
Info = PatchInfo("Tagged")
assert(Info.tag_count == 4 and Info.tags[1] == "a" and Info.tags[2] == "b" and Info.tags[3] == "None" and Info.tags[4] == "a")
H:add("fixture_patch", {fixture_type = "Spot", name = "Untagged", tags = io.stdout})
assert(PatchInfo("Untagged").tag_count == 0)

-- Receive flag: booleans only.
H:add("fixture_patch", {fixture_type = "Spot", name = "Rx", receive_dmx_in_editor = true})
H:add("fixture_patch", {fixture_type = "Spot", name = "NoRx", receive_dmx_in_editor = 1})
assert(PatchInfo("Rx").receive_dmx_in_editor == true and PatchInfo("NoRx").receive_dmx_in_editor == false)

-- Colour: given components only, unclamped; the rest is what the engine gave the new patch (the
-- colour of an earlier patch of the same type).
assert(H:add("fixture_type", {name = "Par"}))
H:add("fixture_patch", {fixture_type = "Par", name = "Par1", editor_color = {r = 0.25, g = 0.5, b = 0.75, a = 1}})
H:add("fixture_patch", {fixture_type = "Par", name = "Par2", editor_color = {r = 2.5, g = "1", a = -1}})
local C1, C2 = PatchInfo("Par1"), PatchInfo("Par2")
assert(C1.editor_color_r == 0.25 and C1.editor_color_g == 0.5 and C1.editor_color_b == 0.75 and C1.editor_color_a == 1)
assert(C2.editor_color_r == 2.5 and C2.editor_color_g == 0.5 and C2.editor_color_b == 0.75 and C2.editor_color_a == -1)
H:add("fixture_patch", {fixture_type = "Par", name = "Par3", editor_color = {r = 0.1}})
assert(H:configure("fixture_patch", "Par2", {editor_color = io.stdout}))
assert(PatchInfo("Par2").editor_color_r == 2.5 and PatchInfo("Par2").editor_color_a == -1, "userdata colour gives nothing")
assert(math.abs(PatchInfo("Par3").editor_color_r - 0.1) < 1e-7, "narrowed to float")

-- Keys are read in a fixed order, each through the table's metamethods.
local Reads = {}
local Logged = setmetatable({}, {__index = function(_, K)
	Reads[#Reads + 1] = K
	if K == "fixture_type" then return "Par" end
	if K == "editor_color" then
		return setmetatable({}, {__index = function(_, C) Reads[#Reads + 1] = "color." .. C end})
	end
end})
assert(H:add("fixture_patch", Logged).name == "FixturePatch_1")
assert(table.concat(Reads, " ") == "fixture_type active_mode_index universe starting_channel name tags "
	.. "receive_dmx_in_editor editor_color color.a color.b color.g color.r", table.concat(Reads, " "))

Reads = {}
local TypeParams = setmetatable({}, {__index = function(_, K)
	Reads[#Reads + 1] = K
	if K == "modes" then return {setmetatable({}, {__index = function(_, M)
		Reads[#Reads + 1] = "mode." .. M
		if M == "functions" then return {setmetatable({}, {__index = function(_, F) Reads[#Reads + 1] = "fn." .. F end})} end
		if M == "matrix" then return setmetatable({}, {__index = function(_, X) Reads[#Reads + 1] = "mx." .. X end}) end
	end})} end
end})
assert(H:add("fixture_type", TypeParams).mode_count == 1)
assert(table.concat(Reads, " ") == "category name modes mode.name mode.auto_channel_span mode.channel_span mode.functions "
	.. "fn.attribute fn.name fn.description fn.default_value fn.channel fn.data_type fn.use_lsb "
	.. "fn.physical_default_value fn.physical_from fn.physical_to mode.matrix "
	.. "mx.enabled mx.x_cells mx.y_cells mx.first_cell_channel mx.distribution mx.cell_attributes", table.concat(Reads, " "))

-- A metamethod that raises: the error reaches the script unchanged and the step is closed.
local Ok, Err = pcall(H.add, H, "fixture_patch", setmetatable({}, {__index = function(_, K)
	if K == "fixture_type" then return "Par" end
	if K == "name" then error("boom") end
end}))
assert(not Ok and tostring(Err):find("boom", 1, true) and editor.transaction_depth() == 0)
