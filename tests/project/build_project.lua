-- Builds a small project for `kestdmx run --project DIR`: two libraries, actors with DMX components.
-- check_project.lua, run afterwards on the same folder, expects exactly this. When KESTDMX_SNAPSHOT
-- names a file, everything the inspection reports is written there for check_project.lua to compare.

assert(editor.create_library("/Game/DMX/Stage"), "Stage is new")
assert(editor.create_library("/Game/DMX/Floor/Pars"), "Pars is new")
local stage = dmx_library("/Game/DMX/Stage")
local pars = dmx_library("/Game/DMX/Floor/Pars")

assert(stage:add("fixture_type", {
	name = "Spot",
	category = "Moving Head",
	modes = {
		{
			name = "Standard 16bit",
			functions = {
				{attribute = "Pan", name = "Pan", data_type = "16bit", physical_from = -270, physical_to = 270},
				{attribute = "Tilt", name = "Tilt", data_type = "16bit", use_lsb = true},
				{attribute = "Dimmer", name = "Dimmer", default_value = 200, description = "master \"dim\""},
			},
		},
		{name = "Basic", functions = {{attribute = "Dimmer", name = "Dimmer"}}},
	},
}), "Spot")
assert(stage:add("fixture_type", {
	name = "LED Bar",
	category = "Matrix/Pixel Bar",
	modes = {
		{
			name = "8 Pixel RGB",
			functions = {{attribute = "Dimmer", name = "Master", default_value = 255}},
			matrix = {
				enabled = true, x_cells = 8, y_cells = 1, first_cell_channel = 2, distribution = "TopLeftToBottom",
				cell_attributes = {{attribute = "Red"}, {attribute = "Green", default_value = 9}, {attribute = "Blue"}},
			},
		},
	},
}), "LED Bar")
assert(stage:add("fixture_patch", {
	name = "Spot 1", fixture_type = "Spot", universe = 1, starting_channel = 1,
	tags = {"truss", "stage-left"}, editor_color = {r = 0.2, g = 0.4, b = 1.0, a = 0.5},
}), "Spot 1")
assert(stage:add("fixture_patch", {name = "Spot 2", fixture_type = "Spot", universe = 1, starting_channel = 17}), "Spot 2")
assert(stage:configure("fixture_patch", "Spot 2", {active_mode_index = 1}), "Spot 2 to Basic")
assert(stage:add("fixture_patch", {
	name = "Bar 1", fixture_type = "LED Bar", universe = 2, starting_channel = 100, receive_dmx_in_editor = true,
}), "Bar 1")

assert(pars:add("fixture_type", {name = "Par", modes = {{name = "1ch", functions = {{attribute = "Dimmer", name = "Dimmer"}}}}}), "Par")
assert(pars:add("fixture_patch", {name = "Par 1", fixture_type = "Par", universe = 5, starting_channel = 512}), "Par 1")

assert(editor.spawn_actor("Truss", "Truss A"))
assert(editor.spawn_actor("Floor"))
assert(dmx_component("Truss A"):add({library = "/Game/DMX/Stage", fixture_patch = "Spot 1", receive = false}))
assert(dmx_component("Truss A"):add({name = "Second", library = "/Game/DMX/Floor/Pars", fixture_patch = "Par 1"}))
assert(dmx_component("Floor"):add({name = "Spare"}))

-- Written as Lua source: keys sorted, numbers with their exact value and kind.
local function serialize(value, out)
	local kind = type(value)
	if kind == "table" then
		local keys = {}
		for key in pairs(value) do keys[#keys + 1] = key end
		table.sort(keys, function(a, b) return tostring(a) < tostring(b) end)
		out[#out + 1] = "{"
		for _, key in ipairs(keys) do
			out[#out + 1] = "[" .. string.format("%q", key) .. "]="
			serialize(value[key], out)
			out[#out + 1] = ","
		end
		out[#out + 1] = "}"
	elseif kind == "string" or kind == "number" then
		out[#out + 1] = string.format("%q", value)
	else
		out[#out + 1] = tostring(value)
	end
end

local snapshot_file = os.getenv("KESTDMX_SNAPSHOT")
if snapshot_file then
	local out = {"return "}
	serialize({
		stage = stage:info(),
		pars = pars:info(),
		truss = dmx_component("Truss"):info(),
		floor = dmx_component("Floor"):info(),
	}, out)
	local file = assert(io.open(snapshot_file, "w"))
	file:write(table.concat(out), "\n")
	file:close()
end
