-- add(): fixture type defaults, modes, functions and matrices; fixture patch defaults, clamps, tags and colour.

assert(editor.create_library("/Game/DMX/Add"))
local H = dmx_library("/Game/DMX/Add")
local function Find(List, Name)
	for _, Item in ipairs(List) do
		if Item.name == Name then
			return Item
		end
	end
	error("no entity " .. Name)
end
local function TypeInfo(Name) return Find(H:info().fixture_types, Name) end
local function PatchInfo(Name) return Find(H:info().fixture_patches, Name) end
local function Modes(Name, ModeList) assert(H:add("fixture_type", {name = Name, modes = ModeList})); return TypeInfo(Name).modes end

-- Type defaults: one mode "Mode" as the engine adds it, category None, engine-made unique names.
local Plain = H:add("fixture_type", {})
assert(Plain.name == "FixtureType" and Plain.mode_count == 1)
local Info = TypeInfo("FixtureType")
assert(Info.category == "None" and Info.modes[1].name == "Mode" and Info.modes[1].channel_span == 0)
assert(H:add("fixture_type", {name = 7, category = true}).name == "FixtureType_1", "wrong types fall back")
assert(H:add("fixture_type", io.stdout).name == "FixtureType_2", "userdata params read through its metatable")
assert(H:add("fixture_type", {name = "Movers", category = "Moving Head"}) and TypeInfo("Movers").category == "Moving Head")

-- "modes": {} gives none, a userdata none; non-table entries are skipped; mode names are made unique.
assert(H:add("fixture_type", {name = "Empty", modes = {}}).mode_count == 0)
assert(H:add("fixture_type", {name = "UserdataModes", modes = io.stdout}).mode_count == 0)
local M = Modes("Skip", {{name = "A"}, "x", 4, {name = "a"}, {}})
assert(#M == 3 and M[1].name == "A" and M[2].name == "a_1" and M[2].index == 1 and M[3].name == "Mode")
assert(M[3].channel_span == 1, "an empty mode table still updates the span (the disabled matrix counts)")

-- Channel spans clamp to 0..512; a manual span survives; only a boolean switches auto span.
M = Modes("Spans", {{auto_channel_span = false, channel_span = -5}, {auto_channel_span = false, channel_span = 600.7},
	{auto_channel_span = 1, channel_span = 40}})
assert(M[1].channel_span == 0 and M[2].channel_span == 512 and M[3].auto_channel_span == true and M[3].channel_span == 1)

-- Functions: non-tables skipped, data type words, 32-bit truncation, unique names, consecutive channels.
M = Modes("Funcs", {{functions = {5,
	{attribute = "Dimmer", name = "Dim", description = "main", data_type = "16BIT", default_value = 255.9, use_lsb = true},
	{attribute = "Pan", name = "Dim", data_type = "E64Bit", default_value = 4294967295},
	{data_type = "24bit"}, {data_type = "e32bit", default_value = -7.9}, {}}}, {functions = io.stdout}})
local F = M[1].functions
assert(#F == 5 and M[1].function_count == 5 and M[1].channel_span == 11 and M[2].function_count == 0)
assert(F[1].attribute == "Dimmer" and F[1].description == "main" and F[1].data_type == "E16Bit" and F[1].default_value == 255 and F[1].use_lsb)
assert(F[2].name == "Dim_1" and F[2].data_type == "E8Bit" and F[2].default_value == -2147483648 and F[2].use_lsb == false)
assert(F[3].attribute == "None" and F[3].name == "Function" and F[3].description == "" and F[3].data_type == "E24Bit")
assert(F[4].data_type == "E32Bit" and F[4].default_value == -7 and F[5].name == "Function_2")
assert(F[1].channel == 1 and F[2].channel == 3 and F[3].channel == 4 and F[4].channel == 7 and F[5].channel == 11)

-- Physical keys: either end of the range alone sets it (rescaling the default); the default clamps to the range.
F = Modes("Physical", {{functions = {{default_value = 200}, {default_value = 200, physical_to = 255}, {default_value = 200, physical_from = 10},
	{default_value = 200, physical_default_value = "5"}, {physical_default_value = 0.5}, {physical_default_value = 0.5, physical_to = 100},
	{physical_default_value = 0.5, data_type = "16bit"}, {physical_default_value = 7}}}})[1].functions
local Defaults = {}
for I, Fn in ipairs(F) do Defaults[I] = Fn.default_value end
assert(table.concat(Defaults, ",") == "200,0,0,200,127,127,32767,255", table.concat(Defaults, ","))

-- Matrix keys: clamps, the six distribution words in any case, cell attributes; enabling moves the functions.
M = Modes("Matrix", {{matrix = {}},
	{matrix = {enabled = true, x_cells = 0, y_cells = 600, first_cell_channel = -4, distribution = "TOPLEFTTOBOTTOM"}},
	{matrix = {x_cells = 4.9, y_cells = "3", distribution = "Top Left To Bottom", cell_attributes = {}}},
	{matrix = {distribution = "TopRightToAntiClockwise", cell_attributes = {{attribute = "Red"}, 7,
		{attribute = "Green", description = "g", data_type = "16bit", default_value = 300.5, use_lsb = true}}}},
	{matrix = {enabled = "yes", distribution = "bottomrighttoclockwise", cell_attributes = io.stdout}},
	{matrix = {enabled = true}, functions = {{attribute = "Dimmer"}}}, {matrix = io.stdout}})
assert(M[1].matrix_enabled == false and M[1].matrix_x_cells == 1 and M[1].cell_attributes[1].attribute == "Red")
assert(M[2].matrix_enabled and M[2].matrix_x_cells == 1 and M[2].matrix_y_cells == 512 and M[2].matrix_first_cell_channel == 1)
assert(M[2].matrix_distribution == "TopLeftToBottom" and M[2].channel_span == 512)
assert(M[3].matrix_x_cells == 4 and M[3].matrix_y_cells == 1 and M[3].matrix_distribution == "TopLeftToRight")
assert(M[3].cell_attribute_count == 0 and M[3].channel_span == 0)
local Cells = M[4].cell_attributes
assert(M[4].matrix_distribution == "TopLeftToRight", "names outside the six change nothing")
assert(#Cells == 2 and Cells[1].data_type == "E8Bit" and Cells[2].description == "g" and Cells[2].data_type == "E16Bit")
assert(Cells[2].default_value == 300 and Cells[2].use_lsb == true)
assert(M[5].matrix_enabled == false and M[5].matrix_distribution == "BottomRightToClockwise" and M[5].cell_attribute_count == 0)
assert(M[6].matrix_first_cell_channel == 1 and M[6].functions[1].channel == 2, "enabling the matrix moves the functions behind it")
assert(M[7].matrix_x_cells == 1 and M[7].cell_attribute_count == 1, "a userdata matrix gives nothing")

-- A metamethod that rebuilds the very modes being filled does not upset the call.
local Hits = 0
local Meddler = setmetatable({}, {__index = function(_, K)
	if K == "name" then
		Hits = Hits + 1
		for _ = 1, 20 do assert(H:configure("fixture_type", "Meddled", {modes = {{}, {}, {}, {}, {}, {}}})) end
		assert(H:configure("fixture_type", "Meddled", {modes = {}}))
	end
end})
assert(H:add("fixture_type", {name = "Meddled", modes = {{}}}))
assert(H:configure("fixture_type", "Meddled", {modes = {{functions = {Meddler, Meddler}, matrix = Meddler}, {name = "Last"}}}))
assert(Hits == 2 and TypeInfo("Meddled").mode_count == 1 and TypeInfo("Meddled").modes[1].name == "Last")

-- Patch defaults; the answer holds name, channel_span and ending_channel only.
assert(H:add("fixture_type", {name = "Spot", modes = {{functions = {{attribute = "Dimmer", data_type = "16bit"}, {attribute = "Pan"}}},
	{functions = {{attribute = "Dimmer"}}}}}))
local P = H:add("fixture_patch", {fixture_type = "sPoT"})
local Keys = 0
for _ in pairs(P) do Keys = Keys + 1 end
assert(P.name == "FixturePatch" and P.channel_span == 3 and P.ending_channel == 3 and Keys == 3)
Info = PatchInfo("FixturePatch")
assert(Info.fixture_type == "Spot" and Info.universe == 1 and Info.starting_channel == 1 and Info.active_mode_index == 0)
assert(Info.receive_dmx_in_editor == false and Info.tag_count == 0)

-- Clamps after truncation; out-of-range numbers end at the lower bound; a mode the type lacks is the engine's call.
H:add("fixture_patch", {fixture_type = "Spot", name = "Low", starting_channel = 0, universe = -3, active_mode_index = -1})
Info = PatchInfo("Low")
assert(Info.starting_channel == 1 and Info.universe == 0 and Info.active_mode_index == 0)
P = H:add("fixture_patch", {fixture_type = "Spot", name = "High", starting_channel = 513, universe = 1e12, active_mode_index = 1.9})
Info = PatchInfo("High")
assert(Info.starting_channel == 512 and Info.universe == 0 and Info.active_mode_index == 1 and P.ending_channel == 512)
P = H:add("fixture_patch", {fixture_type = "Spot", name = "Over", starting_channel = 511.99, universe = "3", active_mode_index = 7})
assert(P.ending_channel == 513 and PatchInfo("Over").universe == 1 and PatchInfo("Over").active_mode_index == 0)
P = H:add("fixture_patch", {fixture_type = "Empty", name = "NoModes"})
assert(P.channel_span == 0 and P.ending_channel == 0 and PatchInfo("NoModes").active_mode_index == -1)
assert(H:add("fixture_patch", {fixture_type = "Wash"}) == nil and H:add("fixture_patch", {fixture_type = 5}) == nil, "no such type")

-- Tags: strings only, in order, "" as None; a userdata list none. Receive: booleans only.
H:add("fixture_patch", {fixture_type = "Spot", name = "Tagged", tags = {"a", 5, "b", true, "", "a"}, receive_dmx_in_editor = 1})
Info = PatchInfo("Tagged")
assert(table.concat(Info.tags, ",") == "a,b,None,a" and Info.tag_count == 4 and Info.receive_dmx_in_editor == false)
H:add("fixture_patch", {fixture_type = "Spot", name = "Rx", tags = io.stdout, receive_dmx_in_editor = true})
assert(PatchInfo("Rx").tag_count == 0 and PatchInfo("Rx").receive_dmx_in_editor == true)

-- Colour: given components only, unclamped, narrowed to float; the rest is the engine's (shared by patches of a type).
assert(H:add("fixture_type", {name = "Par"}))
H:add("fixture_patch", {fixture_type = "Par", name = "Par1", editor_color = {r = 0.25, g = 0.5, b = 0.75, a = 1}})
H:add("fixture_patch", {fixture_type = "Par", name = "Par2", editor_color = {r = 2.5, g = "1", a = -1}})
H:add("fixture_patch", {fixture_type = "Par", name = "Par3", editor_color = {r = 0.1}})
Info = PatchInfo("Par2")
assert(Info.editor_color_r == 2.5 and Info.editor_color_g == 0.5 and Info.editor_color_b == 0.75 and Info.editor_color_a == -1)
assert(math.abs(PatchInfo("Par3").editor_color_r - 0.1) < 1e-7 and PatchInfo("Par3").editor_color_r ~= 0.1)
assert(H:configure("fixture_patch", "Par2", {editor_color = io.stdout}) and PatchInfo("Par2").editor_color_r == 2.5)

-- A metamethod that raises: the error reaches the script unchanged and the step is closed.
local Ok, Err = pcall(H.add, H, "fixture_patch", setmetatable({}, {__index = function(_, K)
	if K == "fixture_type" then return "Par" end
	if K == "name" then error("boom") end
end}))
assert(not Ok and tostring(Err):find("boom", 1, true) and editor.transaction_depth() == 0)
